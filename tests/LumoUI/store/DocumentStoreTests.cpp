#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QSettings>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>

#include "LumoKit/document/DocumentJson.h"
#include "LumoUI/persistence/DocumentFile.h"
#include "LumoUI/settings/AppSettings.h"
#include "LumoUI/settings/NotificationCenter.h"
#include "LumoUI/store/DocumentStore.h"
#include "LumoUI/store/SheetSession.h"
#include "LumoUI/store/UndoCenter.h"
#include "support/QtTestSupport.h"
#include "support/StoreTestSupport.h"

using namespace lumo;
using namespace lumo::test;
using namespace std::chrono_literals;

namespace {

const auto* const qtEnvironment =
    testing::AddGlobalTestEnvironment(new test::QtEnvironment("DocumentStoreTests"));

QStringList capturedLog;

void captureLog(QtMsgType, const QMessageLogContext&, const QString& message) {
    capturedLog.append(message);
}

// One device: its own local folder, sharing a cloud folder with the others.
struct Device {
    QTemporaryDir local;
    std::unique_ptr<DocumentStore> store;

    Device(const QString& cloud, FakeClock& clock, const std::optional<LumoDocument>& seed = std::nullopt) {
        if (seed)
            writeDocument(QDir(local.path()).filePath("document.json"), *seed);
        store = std::make_unique<DocumentStore>(test::syncingOptions(local.path(), cloud, clock.function()),
                                                nullptr, nullptr, nullptr);
    }
    const Sheet* sheet(const Uuid& id) const { return store->sheet(id); }
};

DocumentStore::Options memoryOptions(FakeClock& clock) {
    DocumentStore::Options options;
    options.clock = clock.function();
    return options;
}

} // namespace

TEST(DocumentStoreSync, TwoStarterDocumentsCollapseIntoOneSetOfTutorialSheets) {
    QTemporaryDir cloud;
    FakeClock clock;
    Device a(cloud.path(), clock);
    Device b(cloud.path(), clock);
    ASSERT_TRUE(a.store->usingStarterDocument());
    const std::vector<std::string> tutorial = sortedNames(a.store->document());
    ASSERT_EQ(tutorial.size(), 4u);

    // Both are touched before they first sync: the tutorial sheets are merged, not adopted.
    a.store->addSheet();
    b.store->addSheet();
    auto expected = tutorial;
    expected.push_back("Sheet 5");
    std::sort(expected.begin(), expected.end());
    // The copies that went away leave tombstones, so the removal reaches every device. Of each
    // pair of twins the smaller identifier stays: when all five that stay are b's, b's sheets
    // match before b has merged anything (one run in 32), so the test waits for the tombstones too.
    EXPECT_TRUE(waitUntil([&] {
        return sameSheets(a.store->document(), b.store->document()) &&
               sortedNames(b.store->document()) == expected && b.store->document().deletedSheets.size() == 5u;
    })) << b.store->document().deletedSheets.size()
        << " tombstones";
}

TEST(DocumentStoreSync, ConflictCopiesAreMergedAndRemoved) {
    QTemporaryDir cloud;
    FakeClock clock;
    const QDir documents(QDir(cloud.path()).filePath("Documents"));
    const char* copies[] = {"document (conflicted copy 2024-05-01).json",
                            "document.sync-conflict-20240501-101010-ABCDEFG.json", "document (1).json"};
    int n = 0;
    for (const char* name : copies) {
        LumoDocument copy;
        copy.sheets = {{Uuid::random(), "copy " + std::to_string(++n), "", Timestamp{clock.seconds}, {}}};
        writeDocument(documents.filePath(name), copy);
    }
    ASSERT_TRUE(
        documentFile::writeAtomically(documents.filePath("document (2).json"), "{ half written").isEmpty());
    ASSERT_TRUE(documentFile::writeAtomically(documents.filePath("documents.json"), "{}").isEmpty());

    Device device(cloud.path(), clock, baseDocument(Timestamp{clock.seconds}));
    ASSERT_TRUE(waitUntil([&] {
        return std::none_of(std::begin(copies), std::end(copies),
                            [&](const char* name) { return documents.exists(name); });
    }));
    const auto names = sortedNames(device.store->document());
    EXPECT_EQ(names, (std::vector<std::string>{"X", "Y", "copy 1", "copy 2", "copy 3"}));
    // What does not decode, and what is not a copy of the document, stays.
    EXPECT_TRUE(documents.exists("document (2).json"));
    EXPECT_TRUE(documents.exists("documents.json"));
    EXPECT_EQ(sortedNames(readDocument(documents.filePath("document.json"))), names);
}

TEST(DocumentStoreSync, AFolderChosenWhileRunningIsUsedAtOnce) {
    FakeClock clock;
    Device device(QString(), clock, baseDocument(Timestamp{clock.seconds}));
    clock.seconds += 10;
    device.store->updateText(sheetX, "1\nnewer here\n");

    QTemporaryDir empty;
    device.store->setCloudFolder(empty.path());
    const QString uploaded = QDir(empty.path()).filePath("Documents/document.json");
    ASSERT_TRUE(waitUntil([&] { return QFile::exists(uploaded); }));
    EXPECT_TRUE(sameSheets(readDocument(uploaded), device.store->document()));

    // A folder that already holds an older copy from elsewhere: nothing in common, so the dates
    // decide, and the newer text here is not replaced by the stale one there.
    QTemporaryDir used;
    LumoDocument elsewhere = baseDocument(Timestamp{clock.seconds - 5});
    elsewhere.sheets[0].text = "1\nolder there\n";
    elsewhere.sheets.push_back({Uuid::random(), "Z", "from elsewhere\n", Timestamp{clock.seconds - 5}, {}});
    const QString shared = QDir(used.path()).filePath("Documents/document.json");
    writeDocument(shared, elsewhere);
    device.store->setCloudFolder(used.path());
    ASSERT_TRUE(waitUntil([&] { return device.store->document().sheets.size() == 3; }));
    EXPECT_EQ(device.sheet(sheetX)->text, "1\nnewer here\n");
    ASSERT_TRUE(waitUntil([&] { return sameSheets(readDocument(shared), device.store->document()); }));

    // Stopping leaves the last folder as it was.
    device.store->setCloudFolder(QString());
    clock.seconds += 10;
    device.store->updateText(sheetY, "2\nlocal only\n");
    device.store->flush();
    const LumoDocument left = readDocument(shared);
    EXPECT_EQ(left.sheets.size(), 3u);
    EXPECT_TRUE(std::none_of(left.sheets.begin(), left.sheets.end(),
                             [](const Sheet& sheet) { return sheet.text == "2\nlocal only\n"; }));
}

TEST(DocumentStoreSaving, TwoEditsApartGiveOneSaveAfterTheSecond) {
    QTemporaryDir local;
    DocumentStore::Options options; // the production delays
    options.storageDirectory = local.path();
    DocumentStore store(options, nullptr, nullptr, nullptr);
    const Uuid id = store.document().sheets.front().id;
    int saves = 0;
    QObject::connect(&store, &DocumentStore::saved, [&] { ++saves; });

    // Wide margins on the late side: a busy machine delays timers, never fires them early.
    store.updateText(id, "1\n");
    runFor(200);
    EXPECT_EQ(saves, 0);
    QElapsedTimer sinceSecond;
    sinceSecond.start();
    store.updateText(id, "1\n2\n");
    ASSERT_TRUE(waitUntil([&] { return saves == 1; }));
    EXPECT_GE(sinceSecond.elapsed(), 390);
    EXPECT_LT(sinceSecond.elapsed(), 2000);
    runFor(500);
    EXPECT_EQ(saves, 1);
    EXPECT_EQ(readDocument(store.storageURL()).sheets.front().text, "1\n2\n");
}

TEST(DocumentStoreSaving, TheStoresOwnWriteTriggersNoMerge) {
    QTemporaryDir local;
    QTemporaryDir cloud;
    DocumentStore::Options options; // the production delays
    options.storageDirectory = local.path();
    options.cloudFolder = cloud.path();
    DocumentStore store(options, nullptr, nullptr, nullptr);
    int checks = 0;
    int merges = 0;
    QObject::connect(&store, &DocumentStore::remoteChecked, [&] { ++checks; });
    QObject::connect(&store, &DocumentStore::remoteMerged, [&] { ++merges; });
    ASSERT_TRUE(waitUntil([&] { return checks == 1; })); // the look at start

    store.updateText(store.document().sheets.front().id, "own\n");
    ASSERT_TRUE(waitUntil([&] { return checks >= 2; }));
    EXPECT_EQ(merges, 0);
    EXPECT_EQ(store.lastSyncedData(),
              documentFile::read(QDir(cloud.path()).filePath("Documents/document.json")));
}

TEST(DocumentStoreSaving, AnUnusableLocalFileIsMovedAsideNotLost) {
    FakeClock clock;
    DocumentStore::Options options = memoryOptions(clock);
    options.saveDelay = 10ms;
    const QString stamp = QDateTime::fromSecsSinceEpoch(qint64(clock.seconds)).toString("yyyyMMdd-HHmmss");
    const QString aside = "document.unreadable-" + stamp + ".json";
    int saves = 0;
    // Bytes that do not decode, and a document without sheets (the starter would replace it).
    for (const QByteArray& unusable :
         {QByteArray("{\"sheets\": [ truncated"),
          QByteArray(R"({"sheets": [], "keyLayouts": {"units": {"main": ["mm"]}}, "deletedSheets": {}})")}) {
        QTemporaryDir local;
        ASSERT_TRUE(
            documentFile::writeAtomically(QDir(local.path()).filePath("document.json"), unusable).isEmpty());
        capturedLog.clear();
        const auto previous = qInstallMessageHandler(captureLog);
        options.storageDirectory = local.path();
        DocumentStore store(options, nullptr, nullptr, nullptr);
        qInstallMessageHandler(previous);

        EXPECT_TRUE(store.usingStarterDocument());
        EXPECT_EQ(QDir(local.path()).entryList({"document.unreadable-*.json"}), QStringList{aside});
        EXPECT_TRUE(capturedLog.join("\n").contains(aside));
        QObject::connect(&store, &DocumentStore::saved, [&] { ++saves; });
        store.updateText(store.document().sheets.front().id, "new\n");
        ASSERT_TRUE(waitUntil([&, before = saves] { return saves == before + 1; }));
        EXPECT_EQ(documentFile::read(QDir(local.path()).filePath(aside)), unusable);
    }

    // What cannot even be read (a folder in the file's place, since root reads every file) is
    // set aside as well, and the next save goes through.
    QTemporaryDir blocked;
    ASSERT_TRUE(QDir(blocked.path()).mkpath("document.json/kept"));
    options.storageDirectory = blocked.path();
    DocumentStore store(options, nullptr, nullptr, nullptr);
    EXPECT_TRUE(store.usingStarterDocument());
    EXPECT_TRUE(QDir(blocked.path()).exists(aside + "/kept"));
    QObject::connect(&store, &DocumentStore::saved, [&] { ++saves; });
    store.updateText(store.document().sheets.front().id, "new\n");
    ASSERT_TRUE(waitUntil([&] { return saves == 3; }, 1000));
}

// Retrying is DocumentPersistence's; the store logs the failure and keeps the text.
TEST(DocumentStoreSaving, AFailedSaveIsLoggedAndTheTextKept) {
    QTemporaryDir root;
    // A folder beneath a regular file can never be created, even by root.
    ASSERT_TRUE(documentFile::writeAtomically(root.filePath("blocker"), "x").isEmpty());
    FakeClock clock;
    DocumentStore::Options options = memoryOptions(clock);
    options.storageDirectory = QDir(root.filePath("blocker")).filePath("Lumo");
    options.saveDelay = 10ms;
    // The log line is not translated: an English interface still logs it as it stands.
    L10n::setCurrent(AppLanguage::english);
    capturedLog.clear();
    const auto previous = qInstallMessageHandler(captureLog);
    DocumentStore store(options, nullptr, nullptr, nullptr);
    int failures = 0;
    QObject::connect(&store, &DocumentStore::saveFailed, [&] { ++failures; });
    const Uuid id = store.document().sheets.front().id;

    store.updateText(id, "kept in memory\n");
    const bool failed = waitUntil([&] { return failures == 1; });
    qInstallMessageHandler(previous);

    EXPECT_TRUE(failed);
    EXPECT_TRUE(capturedLog.join("\n").startsWith("Lumo: 保存に失敗しました"));
    EXPECT_EQ(store.sheet(id)->text, "kept in memory\n");
}

TEST(DocumentStoreEditing, NamesAndPromptsInBothLanguages) {
    struct Case {
        AppLanguage language;
        std::string added;
        std::string duplicated;
        std::string promptStart;
        std::string erasedName;
    };
    const Case cases[] = {
        {AppLanguage::english, "Sheet 2", "Y Copy",
         "Only this sheet is cleared; your other sheets are untouched. You can undo it (↩︎ or ⌘Z).",
         "New Sheet"},
        {AppLanguage::japanese, "シート 2", "Y のコピー", "このシートだけを消去します。", "新しいシート"},
    };
    for (const Case& c : cases) {
        L10n::setCurrent(c.language);
        FakeClock clock;
        DocumentStore::Options options = memoryOptions(clock);
        options.source = DocumentStore::Source::file; // no folders: nothing is read or saved
        DocumentStore store(options, nullptr, nullptr, nullptr);
        store.eraseAllContent();
        EXPECT_EQ(store.document().sheets.front().name, c.erasedName);
        store.renameSheet(store.document().sheets.front().id, "Y");
        EXPECT_EQ(store.sheet(store.addSheet())->name, c.added);
        const auto copy = store.duplicateSheet(store.document().sheets.front().id);
        ASSERT_TRUE(copy);
        EXPECT_EQ(store.sheet(*copy)->name, c.duplicated);
        EXPECT_EQ(store.document().sheets[1].id, *copy); // right after the original
        store.requestClearSheet(*copy);
        ASSERT_TRUE(store.clearSheetPrompt());
        EXPECT_EQ(store.clearSheetPrompt()->rfind(c.promptStart, 0), 0u) << *store.clearSheetPrompt();
    }
    L10n::setCurrent(AppLanguage::english);
}

TEST(DocumentStoreEditing, OrderDeletionAndErasureBookkeeping) {
    FakeClock clock;
    DocumentStore store(memoryOptions(clock), nullptr, nullptr, nullptr);
    const std::vector<Sheet> tutorial = store.document().sheets;

    clock.seconds += 5;
    store.addSheet();
    EXPECT_FALSE(store.document().sheetOrderUpdatedAt); // adding is not reordering
    store.moveSheet(tutorial[0].id, 99);
    EXPECT_EQ(store.document().sheets.back().id, tutorial[0].id);
    // Changes within one second are still told apart, by milliseconds.
    const auto second = [](const std::optional<Timestamp>& time) {
        return time ? std::floor(time->seconds) : -1;
    };
    EXPECT_EQ(second(store.document().sheetOrderUpdatedAt), clock.seconds);

    clock.seconds += 5;
    store.deleteSheet(tutorial[1].id);
    EXPECT_EQ(second(store.document().deletedSheets.at(tutorial[1].id.toString())), clock.seconds);
    EXPECT_EQ(second(store.document().sheetOrderUpdatedAt), clock.seconds - 5);

    clock.seconds += 5;
    store.eraseAllContent();
    ASSERT_EQ(store.document().sheets.size(), 1u);
    EXPECT_EQ(store.document().selectedSheetID, store.document().sheets.front().id);
    EXPECT_EQ(store.document().deletedSheets.size(), 5u);
    EXPECT_EQ(second(store.document().deletedSheets.at(tutorial[0].id.toString())), clock.seconds);

    // Deleting the last sheet never leaves the document empty.
    store.deleteSheet(store.document().sheets.front().id);
    ASSERT_EQ(store.document().sheets.size(), 1u);
    EXPECT_EQ(store.document().sheets.front().name, "New Sheet");
}

TEST(DocumentStoreEditing, UndoRedoAndClearThroughNotifications) {
    FakeClock clock;
    NotificationCenter center;
    UndoCenter undoCenter;
    DocumentStore store(memoryOptions(clock), &center, &undoCenter, nullptr);
    auto session = std::make_unique<SheetSession>(&store);
    const Uuid id = *session->sheetID();
    const std::string original = store.sheet(id)->text;

    session->activate();
    store.updateText(id, original + "1\n");
    store.setLockedLines(id, {0});
    EXPECT_TRUE(undoCenter.canUndo());
    EXPECT_FALSE(store.usingStarterDocument());

    center.post(notification::undo);
    EXPECT_TRUE(store.sheet(id)->lockedLines.empty());
    center.post(notification::undo);
    EXPECT_EQ(store.sheet(id)->text, original);
    center.post(notification::redo);

    center.post(notification::clearSheet);
    ASSERT_EQ(store.pendingClearSheetID(), id);
    store.cancelClearSheet();
    EXPECT_FALSE(store.clearSheetPrompt());
    center.post(notification::clearSheet);
    store.confirmClearSheet();
    EXPECT_EQ(store.sheet(id)->text, "");
    EXPECT_EQ(session->results().size(), store.results().size());
    center.post(notification::undo);
    EXPECT_EQ(store.sheet(id)->text, original + "1\n");
}

TEST(DocumentStoreEditing, UndoAvailabilityFollowsTheActiveWindowAndItsSheet) {
    FakeClock clock;
    NotificationCenter center;
    UndoCenter undoCenter;
    DocumentStore store(memoryOptions(clock), &center, &undoCenter, nullptr);
    auto first = std::make_unique<SheetSession>(&store);
    auto second = std::make_unique<SheetSession>(&store);
    const Uuid a = *first->sheetID();
    const std::string original = store.sheet(a)->text;
    std::optional<Uuid> b;
    // Keys 0.3 s apart, from the middle of a second: one step, since grouping uses the precise
    // time and not the whole seconds kept in the file.
    const auto typeKeys = [&](const std::string& keys) {
        clock.seconds += 0.5;
        for (std::size_t typed = 1; typed <= keys.size(); ++typed, clock.seconds += 0.3)
            store.updateText(a, original + keys.substr(0, typed));
    };
    struct Step {
        const char* what;
        std::function<void()> act;
        bool canUndo;
        bool canRedo;
    };
    const Step steps[] = {
        {"first window becomes key", [&] { first->activate(); }, false, false},
        {"types three keys", [&] { typeKeys("123"); }, true, false},
        {"one undo takes all three", [&] { center.post(notification::undo); }, false, true},
        {"redo", [&] { center.post(notification::redo); }, true, false},
        {"a new sheet is shown", [&] { b = store.addSheet(); }, false, false},
        {"back to the edited sheet", [&] { first->showSheet(a); }, true, false},
        {"the other window shows the new sheet", [&] { second->showSheet(*b); }, true, false},
        {"the other window becomes key", [&] { second->activate(); }, false, false},
        {"its undo leaves the edited sheet alone", [&] { center.post(notification::undo); }, false, false},
        {"the edited sheet is selected there", [&] { store.selectSheet(a); }, true, false},
        {"the key window closes", [&] { second.reset(); }, false, false},
    };
    for (const Step& step : steps) {
        step.act();
        EXPECT_EQ(undoCenter.canUndo(), step.canUndo) << step.what;
        EXPECT_EQ(undoCenter.canRedo(), step.canRedo) << step.what;
    }
    EXPECT_EQ(store.sheet(a)->text, original + "123");
}

TEST(DocumentStoreEditing, AnUntouchedStarterDocumentFollowsTheLanguage) {
    FakeClock clock;
    NotificationCenter center;
    DocumentStore::Options options = memoryOptions(clock);
    options.source = DocumentStore::Source::starter;
    DocumentStore store(options, &center, nullptr, nullptr);
    SheetSession session(&store);
    ASSERT_EQ(store.document().sheets.front().name, "Getting Started");

    L10n::setCurrent(AppLanguage::japanese);
    center.post(notification::languageChanged);
    EXPECT_EQ(store.document().sheets.front().name, "はじめてのシート");
    EXPECT_EQ(session.sheetID(), store.document().selectedSheetID);

    store.updateText(*session.sheetID(), "1");
    L10n::setCurrent(AppLanguage::english);
    center.post(notification::languageChanged);
    EXPECT_EQ(store.document().sheets.front().name, "はじめてのシート");
}

TEST(DocumentStoreEditing, KeyLayoutsOfALoadedDocumentMeetTheSettings) {
    // The newer arrangement wins when a document loads. Newer layouts in the document reach
    // settings, are announced once, and another store follows; older ones leave settings be.
    // (The way from the keypad into the document is proven with the key layout store.)
    const KeyLayouts inSettings{{"functions", {{"main", {"sin", "cos"}}}}};
    const KeyLayouts inDocument{{"units", {{"length", {"mm"}}}}};
    const struct Case {
        double documentAt;
        bool documentWins;
    } cases[] = {{200, true}, {50, false}};
    for (const Case& c : cases) {
        QTemporaryDir dir;
        QSettings ini(dir.filePath("settings.ini"), QSettings::IniFormat);
        NotificationCenter center;
        AppSettings settings(ini, &center);
        FakeClock clock;
        DocumentStore store(memoryOptions(clock), &center, nullptr, &settings);
        settings.setKeyLayouts(inSettings, Timestamp{100});
        int announced = 0;
        center.observe(notification::keyLayoutChanged, &center, [&] { ++announced; });

        QTemporaryDir local;
        LumoDocument saved = baseDocument(Timestamp{clock.seconds});
        saved.keyLayouts = inDocument;
        saved.keyLayoutsUpdatedAt = Timestamp{c.documentAt};
        writeDocument(QDir(local.path()).filePath("document.json"), saved);
        DocumentStore::Options options = memoryOptions(clock);
        options.storageDirectory = local.path();
        DocumentStore loaded(options, &center, nullptr, &settings);

        const KeyLayouts& winner = c.documentWins ? inDocument : inSettings;
        EXPECT_EQ(settings.keyLayouts(), winner) << c.documentAt;
        EXPECT_EQ(settings.keyLayoutsUpdatedAt(), Timestamp{c.documentWins ? c.documentAt : 100.0})
            << c.documentAt;
        EXPECT_EQ(announced, c.documentWins ? 1 : 0) << c.documentAt;
        if (c.documentWins) {
            EXPECT_EQ(store.document().keyLayouts, inDocument); // the other store followed the announcement
        }
        EXPECT_EQ(loaded.document().keyLayouts, winner) << c.documentAt;
    }
}

TEST(DocumentStoreEditing, LaunchOptions) {
    QTemporaryDir dir;
    QSettings ini(dir.filePath("settings.ini"), QSettings::IniFormat);
    AppSettings settings(ini, nullptr);
    settings.setCloudFolder("/from/settings");
    struct Case {
        QStringList arguments;
        const char* environment; // LUMO_CLOUD_DIR, or null when unset
        DocumentStore::Source source;
        QString cloud;
    };
    const Case cases[] = {
        {{"lumo"}, nullptr, DocumentStore::Source::file, "/from/settings"},
        {{"lumo"}, "/from/environment", DocumentStore::Source::file, "/from/environment"},
        {{"lumo"}, "", DocumentStore::Source::file, ""},
        {{"lumo", "-lumoStarter"}, nullptr, DocumentStore::Source::starter, ""},
        {{"lumo", "-lumoFixture", "-lumoStarter"}, nullptr, DocumentStore::Source::sample, ""},
    };
    for (const Case& c : cases) {
        if (c.environment)
            qputenv("LUMO_CLOUD_DIR", c.environment);
        else
            qunsetenv("LUMO_CLOUD_DIR");
        const auto options = DocumentStore::optionsForLaunch(c.arguments, &settings);
        EXPECT_EQ(options.source, c.source) << c.arguments.join(' ').toStdString();
        EXPECT_EQ(options.cloudFolder, c.cloud);
        EXPECT_EQ(options.storageDirectory.isEmpty(), c.source != DocumentStore::Source::file);
    }
    qunsetenv("LUMO_CLOUD_DIR");
}
