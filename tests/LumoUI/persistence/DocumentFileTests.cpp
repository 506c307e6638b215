#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <atomic>
#include <thread>

#include "LumoUI/persistence/DocumentFile.h"
#include "support/FileFailureSupport.h"

using namespace lumo;

namespace {

const QByteArray original = R"({"sheets": []})";

// A folder holding only a saved "document.json".
struct SavedDocument {
    QTemporaryDir folder;
    QString path = folder.filePath("document.json");

    SavedDocument() { EXPECT_TRUE(documentFile::writeAtomically(path, original).isEmpty()); }
    QStringList entries() const {
        return QDir(folder.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
    }
};

} // namespace

TEST(DocumentFile, AWriteThatFailsHalfWayLeavesTheOldFile) {
    struct Case {
        const char* what;
        qsizetype size;
    };
    // The first fits the write buffer and fails when it is flushed; the second fails in write().
    const Case cases[] = {{"fails on commit", 4000}, {"fails while writing", 400000}};
    for (const Case& c : cases) {
        SavedDocument saved;
        QString error;
        {
            test::FileSizeLimit limit(1000);
            error = documentFile::writeAtomically(saved.path, QByteArray(c.size, 'x'));
        }
        EXPECT_TRUE(error.startsWith(saved.path)) << c.what << ": " << error.toStdString();
        EXPECT_EQ(documentFile::read(saved.path), original) << c.what;
        EXPECT_EQ(saved.entries(), QStringList{"document.json"})
            << c.what << ": no half-written file is left";
    }
}

TEST(DocumentFile, AReadOnlyFolderRefusesTheWriteAndKeepsTheFile) {
    SavedDocument saved;
    ASSERT_TRUE(QFile::setPermissions(saved.folder.path(), QFile::ReadOwner | QFile::ExeOwner));
    struct Case {
        const char* what;
        QString path;
    };
    const Case cases[] = {
        {"replacing the file", saved.path},
        {"a new file", saved.folder.filePath("other.json")},
        {"a file in a new subfolder", saved.folder.filePath("Documents/document.json")},
    };
    {
        test::PermissionChecksApply asAnyUser;
        for (const Case& c : cases) {
            const QString error = documentFile::writeAtomically(c.path, "new");
            EXPECT_TRUE(error.startsWith(c.path)) << c.what << ": " << error.toStdString();
        }
        EXPECT_EQ(documentFile::read(saved.path), original);
    }
    QFile::setPermissions(saved.folder.path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    EXPECT_EQ(saved.entries(), QStringList{"document.json"});
}

TEST(DocumentFile, AFileReplacedWhileReadingIsReadWhole) {
    // Two versions of different lengths: a read that mixed them or caught one half-written
    // would match neither.
    SavedDocument saved;
    const QByteArray longer(300000, 'a');
    const QByteArray shorter(100000, 'b');
    std::atomic<bool> done = false;
    std::thread replacer([&] {
        for (int i = 0; i < 100; ++i)
            documentFile::writeAtomically(saved.path, i % 2 ? shorter : longer);
        done = true;
    });
    int reads = 0;
    int torn = 0;
    while (!done) {
        const std::optional<QByteArray> bytes = documentFile::read(saved.path);
        ++reads;
        if (!bytes || (*bytes != longer && *bytes != shorter && *bytes != original))
            ++torn;
    }
    replacer.join();
    EXPECT_GT(reads, 0);
    EXPECT_EQ(torn, 0) << "of " << reads << " reads";
}
