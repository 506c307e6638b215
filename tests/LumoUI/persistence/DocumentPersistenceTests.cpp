#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <memory>
#include <string>

#include "LumoKit/document/DocumentJson.h"
#include "LumoUI/persistence/DocumentFile.h"
#include "LumoUI/persistence/DocumentPersistence.h"
#include "support/FileFailureSupport.h"
#include "support/QtTestSupport.h"

using namespace lumo;
using lumo::test::waitUntil;
using namespace std::chrono_literals;

namespace {

const auto* const qtEnvironment =
    testing::AddGlobalTestEnvironment(new test::QtEnvironment("DocumentPersistenceTests"));

LumoDocument documentWith(const std::string& text) {
    LumoDocument document;
    document.sheets.push_back(Sheet{Uuid::random(), "S", text, Timestamp{1'700'000'000}, {}});
    document.selectedSheetID = document.sheets.front().id;
    return document;
}

QByteArray bytesOf(const LumoDocument& document) {
    return QByteArray::fromStdString(encodeDocument(document));
}

} // namespace

// The ways a write can fail are DocumentFile's tests; any of them leaves the change pending.
TEST(DocumentPersistence, AFailedSaveKeepsTheChangeUntilASaveSucceeds) {
    QTemporaryDir folder;
    const QString path = folder.filePath("document.json");
    const LumoDocument before = documentWith("1 + 1\n");
    ASSERT_TRUE(documentFile::writeAtomically(path, bytesOf(before)).isEmpty());

    LumoDocument current = documentWith(std::string(5000, '7') + "\n");
    DocumentPersistence::Options options;
    options.localFile = path;
    options.saveDelay = 10ms;
    DocumentPersistence persistence(options, [&] { return current; });
    int failures = 0;
    int saves = 0;
    QObject::connect(&persistence, &DocumentPersistence::saveFailed, [&] { ++failures; });
    QObject::connect(&persistence, &DocumentPersistence::saved, [&] { ++saves; });
    {
        test::FileSizeLimit limit(2000);
        persistence.save();
        ASSERT_TRUE(waitUntil([&] { return failures == 1; }));
    }
    EXPECT_TRUE(persistence.hasUnsavedChanges());
    EXPECT_EQ(documentFile::read(path), bytesOf(before)) << "the saved file is untouched";

    // The next change is saved once the folder takes writes again.
    current = documentWith("2 + 2\n");
    persistence.scheduleSave();
    ASSERT_TRUE(waitUntil([&] { return saves == 1; }));
    EXPECT_FALSE(persistence.hasUnsavedChanges());
    EXPECT_EQ(documentFile::read(path), bytesOf(current));
}

TEST(DocumentPersistence, ACloudCopyReplacedWhileArrivingIsMergedOnlyOnceComplete) {
    struct Case {
        const char* what;
        QString fileName;
    };
    const Case cases[] = {
        {"the cloud copy", "document.json"},
        {"a conflict copy", "document (conflicted copy).json"},
    };
    for (const Case& c : cases) {
        QTemporaryDir cloud;
        DocumentPersistence::Options options;
        options.cloudFolder = cloud.path();
        options.mergeDelay = 10ms;
        DocumentPersistence persistence(options, [] { return documentWith(""); });
        int checks = 0;
        std::vector<LumoDocument> arrived;
        QObject::connect(&persistence, &DocumentPersistence::remoteChecked, [&] { ++checks; });
        QObject::connect(&persistence, &DocumentPersistence::remoteCopiesArrived,
                         [&](const RemoteCopies& copies) {
                             arrived = copies.conflictCopies;
                             if (copies.cloud)
                                 arrived.push_back(*copies.cloud);
                         });
        ASSERT_TRUE(waitUntil([&] { return checks == 1; })) << c.what;

        // The first look finds the copy half-written; then the whole copy replaces it.
        const QString path = QDir(persistence.cloud()->directory()).filePath(c.fileName);
        const LumoDocument remote = documentWith("remote\n");
        const QByteArray complete = bytesOf(remote);
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(complete.left(complete.size() / 2));
        file.close();
        ASSERT_TRUE(waitUntil([&] { return checks >= 2; })) << c.what;
        EXPECT_TRUE(arrived.empty()) << c.what;
        EXPECT_TRUE(QFile::exists(path)) << c.what << ": a copy still arriving is not removed";

        ASSERT_TRUE(documentFile::writeAtomically(path, complete).isEmpty());
        ASSERT_TRUE(waitUntil([&] { return !arrived.empty(); })) << c.what;
        ASSERT_EQ(arrived.size(), 1u) << c.what;
        EXPECT_EQ(arrived.front(), remote) << c.what;
    }
}
