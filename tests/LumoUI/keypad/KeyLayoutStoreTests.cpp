// The key layout store with real settings files and document stores: an arrangement goes to
// settings, into the document, through the cloud folder to another device, and back.

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <functional>
#include <memory>

#include "LumoKit/document/DocumentJson.h"
#include "LumoUI/keypad/KeyLayoutStore.h"
#include "LumoUI/persistence/DocumentFile.h"
#include "LumoUI/settings/AppSettings.h"
#include "LumoUI/settings/NotificationCenter.h"
#include "LumoUI/store/DocumentStore.h"
#include "support/QtTestSupport.h"
#include "support/StoreTestSupport.h"

using namespace lumo;
using namespace lumo::test;
using namespace std::chrono_literals;

namespace {

const auto* const qtEnvironment =
    testing::AddGlobalTestEnvironment(new test::QtEnvironment("KeyLayoutStoreTests"));

// One machine: its settings file, its document folder, its clock, and the application's
// long-lived objects built on them.
struct Device {
    QTemporaryDir folder;
    double seconds = startSeconds;
    std::unique_ptr<QSettings> settingsFile;
    std::unique_ptr<NotificationCenter> notifications;
    std::unique_ptr<AppSettings> settings;
    std::unique_ptr<DocumentStore> documents;
    std::unique_ptr<KeyLayoutStore> layouts;
    int layoutPosts = 0;

    QString settingsPath() const { return folder.filePath(QStringLiteral("settings.ini")); }
    QString dataPath() const { return folder.filePath(QStringLiteral("data")); }

    void start(const QString& cloudFolder = {}) {
        settingsFile = std::make_unique<QSettings>(settingsPath(), QSettings::IniFormat);
        notifications = std::make_unique<NotificationCenter>();
        notifications->observe(notification::keyLayoutChanged, notifications.get(),
                               [this] { ++layoutPosts; });
        settings = std::make_unique<AppSettings>(*settingsFile, notifications.get());
        documents = std::make_unique<DocumentStore>(
            test::syncingOptions(dataPath(), cloudFolder, [this] { return Timestamp{seconds}; }),
            notifications.get(), nullptr, settings.get());
        layouts = std::make_unique<KeyLayoutStore>(settings.get(), notifications.get(),
                                                   [this] { return Timestamp{seconds}; });
    }
    void stop() {
        if (documents)
            documents->flush();
        layouts.reset();
        documents.reset();
        settings.reset();
        notifications.reset();
        settingsFile.reset();
    }
    ~Device() { stop(); }

    const KeyArrangement& functions() const { return layouts->arrangement(KeyKind::functions); }
};

// The function tab with the trigonometry keys reversed and sqrt in the catalog.
KeyArrangement rearranged() {
    KeyArrangement arrangement(KeyCatalog::functionGroups());
    arrangement.move("trigonometry", "sin", 5);
    arrangement.move("trigonometry", "cos", 4);
    arrangement.hide("arithmetic", "sqrt");
    return arrangement;
}

KeyArrangement unitsWithTsuboFirst() {
    KeyArrangement arrangement(KeyCatalog::unitGroups());
    arrangement.move("area", "坪", 0);
    return arrangement;
}

TEST(KeyLayoutStore, ARearrangedTabRoundTripsThroughSettingsAndTheDocument) {
    Device device;
    device.start();
    ASSERT_TRUE(device.functions().isDefault());
    QSignalSpy changes(device.layouts.get(), &KeyLayoutStore::arrangementChanged);

    device.seconds += 60;
    device.layouts->setArrangement(KeyKind::functions, rearranged());
    EXPECT_EQ(changes.size(), 1);
    EXPECT_EQ(device.layoutPosts, 1);
    // Settings hold the arrangement and its time, and so does the document.
    EXPECT_EQ(device.settings->keyLayouts().at("functions"), rearranged().panels());
    EXPECT_EQ(device.settings->keyLayoutsUpdatedAt(), Timestamp{startSeconds + 60});
    EXPECT_EQ(device.documents->document().keyLayouts.at("functions"), rearranged().panels());
    EXPECT_EQ(device.documents->document().keyLayoutsUpdatedAt, Timestamp{startSeconds + 60});
    // Storing the same arrangement again changes nothing.
    device.layouts->setArrangement(KeyKind::functions, rearranged());
    EXPECT_EQ(device.layoutPosts, 1);
    device.stop();

    // The next run reads it back from settings.
    device.start();
    EXPECT_EQ(device.functions(), rearranged());
    EXPECT_FALSE(device.layouts->arrangement(KeyKind::functions).isShown("arithmetic", "sqrt"));
    device.stop();

    // A machine with fresh settings gets it from the document.
    Device other;
    ASSERT_TRUE(QDir().mkpath(other.dataPath()));
    ASSERT_TRUE(QFile::copy(QDir(device.dataPath()).filePath("document.json"),
                            QDir(other.dataPath()).filePath("document.json")));
    other.start();
    EXPECT_EQ(other.functions(), rearranged());
    EXPECT_EQ(other.settings->keyLayouts().at("functions"), rearranged().panels());
}

TEST(KeyLayoutStore, ResetGoesBackToTheDefaultsAndTravelsAsAChange) {
    Device device;
    device.start();
    device.seconds += 10;
    device.layouts->setArrangement(KeyKind::functions, rearranged());
    device.layouts->setArrangement(KeyKind::units, unitsWithTsuboFirst());
    device.seconds += 10;
    device.layouts->reset(KeyKind::functions);
    EXPECT_TRUE(device.functions().isDefault());
    EXPECT_EQ(device.layouts->arrangement(KeyKind::units), unitsWithTsuboFirst());
    const KeyLayouts stored = device.settings->keyLayouts();
    EXPECT_EQ(stored.count("functions"), 0u);
    EXPECT_EQ(stored.count("units"), 1u);
    EXPECT_EQ(device.documents->document().keyLayouts, stored);
    EXPECT_EQ(device.documents->document().keyLayoutsUpdatedAt, Timestamp{startSeconds + 20});
}

TEST(KeyLayoutStore, LayoutsFromANewerVersionKeepWhatTheyDoNotKnow) {
    Device device;
    device.start();
    KeyLayouts stored;
    stored["functions"]["trigonometry"] = {"sin", "sinh", "tan", "cos"};
    stored["functions"]["quantum"] = {"bra", "ket"};
    stored["shapes"]["main"] = {"circle"};
    device.settings->setKeyLayouts(stored, Timestamp{startSeconds + 5});
    device.notifications->post(notification::keyLayoutChanged);

    const auto shown = device.functions().shownKeys("trigonometry");
    ASSERT_EQ(shown.size(), 6u);
    // The keys it did not mention come back after their default neighbours.
    std::vector<std::string> ids;
    for (const KeyDefinition* key : shown)
        ids.push_back(key->id);
    EXPECT_EQ(ids, (std::vector<std::string>{"sin", "tan", "asin", "acos", "atan", "cos"}));
    EXPECT_EQ(device.functions().shownKeys("arithmetic").front()->id, "sqrt");

    device.seconds += 60;
    KeyArrangement changed = device.functions();
    changed.move("trigonometry", "cos", 0);
    device.layouts->setArrangement(KeyKind::functions, changed);
    const KeyLayouts after = device.settings->keyLayouts();
    EXPECT_EQ(after.at("functions").at("trigonometry"),
              (std::vector<std::string>{"cos", "sin", "sinh", "tan", "asin", "acos", "atan"}));
    EXPECT_EQ(after.at("functions").at("quantum"), (std::vector<std::string>{"bra", "ket"}));
    EXPECT_EQ(after.at("shapes").at("main"), std::vector<std::string>{"circle"});
}

struct TwoDevices : testing::Test {
    QTemporaryDir cloud;
    Device a;
    Device b;

    // Both devices and the cloud folder start from the same document.
    void SetUp() override {
        LumoDocument document;
        document.sheets = {{Uuid::random(), "Sheet", "1 + 2\n", Timestamp{startSeconds}, {}}};
        writeDocument(QDir(cloud.path()).filePath("Documents/document.json"), document);
        writeDocument(QDir(a.dataPath()).filePath("document.json"), document);
        writeDocument(QDir(b.dataPath()).filePath("document.json"), document);
        a.start(cloud.path());
        b.start(cloud.path());
        runFor(150);
    }
    void setClocks(double seconds) { a.seconds = b.seconds = startSeconds + seconds; }
};

TEST_F(TwoDevices, AnArrangementMadeOnOneAppearsOnTheOther) {
    QSignalSpy changesOnB(b.layouts.get(), &KeyLayoutStore::arrangementChanged);
    setClocks(30);
    a.layouts->setArrangement(KeyKind::units, unitsWithTsuboFirst());
    ASSERT_TRUE(waitUntil([&] { return b.layouts->arrangement(KeyKind::units) == unitsWithTsuboFirst(); }));
    EXPECT_GE(changesOnB.size(), 1);
    EXPECT_EQ(b.settings->keyLayoutsUpdatedAt(), Timestamp{startSeconds + 30});
    EXPECT_TRUE(b.functions().isDefault());
}

// Dates decide as Document's merge rule says; here the later one wins although it was made first.
TEST_F(TwoDevices, TheLaterArrangementWinsOnBoth) {
    KeyArrangement fromA = rearranged();
    fromA.move("rounding", "floor", 0);
    KeyArrangement fromB = rearranged();
    fromB.move("rounding", "round", 0);
    setClocks(400);
    a.layouts->setArrangement(KeyKind::functions, fromA);
    setClocks(300);
    b.layouts->setArrangement(KeyKind::functions, fromB);
    // Both clocks go on past both changes before the copies meet.
    setClocks(410);
    EXPECT_TRUE(waitUntil([&] { return a.functions() == fromA && b.functions() == fromA; }));
    EXPECT_EQ(b.documents->document().keyLayoutsUpdatedAt, Timestamp{startSeconds + 400});
}

} // namespace
