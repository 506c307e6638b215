#include <gtest/gtest.h>

#include <QAbstractItemModelTester>
#include <QDir>
#include <QMimeData>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <memory>
#include <string>
#include <vector>

#include "LumoKit/document/DocumentJson.h"
#include "LumoUI/persistence/DocumentFile.h"
#include "LumoUI/store/DocumentStore.h"
#include "LumoUI/store/SheetListModel.h"
#include "LumoUI/store/SheetSession.h"
#include "support/QtTestSupport.h"
#include "support/StoreTestSupport.h"

using namespace lumo;
using lumo::test::startSeconds;
using lumo::test::writeDocument;
using namespace std::chrono_literals;

namespace {

const auto* const qtEnvironment =
    testing::AddGlobalTestEnvironment(new test::QtEnvironment("SheetListModelTests"));

const Uuid sheetA = *Uuid::fromString("BBBBBBBB-0000-4000-8000-00000000000A");
const Uuid sheetB = *Uuid::fromString("BBBBBBBB-0000-4000-8000-00000000000B");
const Uuid sheetC = *Uuid::fromString("BBBBBBBB-0000-4000-8000-00000000000C");

LumoDocument threeSheets() {
    LumoDocument document;
    document.sheets = {{sheetA, "A", "1\n", Timestamp{startSeconds}, {}},
                       {sheetB, "B", "2\n", Timestamp{startSeconds}, {}},
                       {sheetC, "C", "3\n", Timestamp{startSeconds}, {}}};
    document.selectedSheetID = sheetA;
    return document;
}

std::vector<std::string> namesIn(const QAbstractItemModel& model) {
    std::vector<std::string> names;
    for (int row = 0; row < model.rowCount(); ++row)
        names.push_back(model.index(row, 0).data().toString().toStdString());
    return names;
}

std::vector<std::string> namesIn(const LumoDocument& document) {
    std::vector<std::string> names;
    for (const Sheet& sheet : document.sheets)
        names.push_back(sheet.name);
    return names;
}

// A store on the three sheets, with two windows' models on it, each checked by a tester.
struct SheetList : testing::Test {
    QTemporaryDir local;
    QTemporaryDir cloud;
    double seconds = startSeconds + 1;
    std::unique_ptr<DocumentStore> store;
    std::unique_ptr<SheetSession> session;
    std::unique_ptr<SheetListModel> model;
    std::unique_ptr<SheetListModel> otherWindow;
    std::vector<std::unique_ptr<QAbstractItemModelTester>> testers;

    QString cloudFile() const { return QDir(cloud.path()).filePath("Documents/document.json"); }

    void SetUp() override {
        writeDocument(QDir(local.path()).filePath("document.json"), threeSheets());
        writeDocument(cloudFile(), threeSheets());
        store = std::make_unique<DocumentStore>(
            test::syncingOptions(
                local.path(), cloud.path(), [this] { return Timestamp{seconds}; }, 20ms, 20ms),
            nullptr, nullptr, nullptr);
        session = std::make_unique<SheetSession>(store.get());
        session->activate();
        model = std::make_unique<SheetListModel>(store.get());
        otherWindow = std::make_unique<SheetListModel>(store.get());
        for (SheetListModel* checked : {model.get(), otherWindow.get()})
            testers.push_back(std::make_unique<QAbstractItemModelTester>(
                checked, QAbstractItemModelTester::FailureReportingMode::Fatal));
    }
    void TearDown() override { testers.clear(); }
};

} // namespace

TEST_F(SheetList, RenamesTrimmedAndRefusesEmptyNames) {
    struct Case {
        QString typed;
        bool accepted;
        std::string expected;
    };
    const Case cases[] = {
        {"Budget", true, "Budget"},     {"  Trip to Kyoto \t", true, "Trip to Kyoto"},
        {"見積もり", true, "見積もり"}, {"", false, "見積もり"},
        {"   ", false, "見積もり"},
    };
    for (const Case& c : cases) {
        QSignalSpy renamed(otherWindow.get(), &QAbstractItemModel::dataChanged);
        EXPECT_EQ(model->setData(model->index(1), c.typed), c.accepted) << c.typed.toStdString();
        EXPECT_EQ(store->sheet(sheetB)->name, c.expected);
        // The other window's list shows the new name at once.
        EXPECT_EQ(otherWindow->index(1).data().toString().toStdString(), c.expected);
        EXPECT_EQ(renamed.count(), c.accepted ? 1 : 0);
    }
    EXPECT_EQ(namesIn(*model), (std::vector<std::string>{"A", "見積もり", "C"}));
}

TEST_F(SheetList, DragCarriesTheSheetAndADropMovesIt) {
    struct Case {
        int dragged;
        int droppedAt; // the row the drop lands before; -1 drops past the end
        std::vector<std::string> expected;
    };
    const Case cases[] = {
        {0, 2, {"B", "A", "C"}}, {0, -1, {"A", "C", "B"}},
        {2, 0, {"B", "A", "C"}}, {1, 1, {"B", "A", "C"}}, // dropped where it already is
        {1, 2, {"B", "A", "C"}},
    };
    for (const Case& c : cases) {
        const Uuid dragged = *model->sheetID(c.dragged);
        std::unique_ptr<QMimeData> data(model->mimeData({model->index(c.dragged)}));
        ASSERT_TRUE(data);
        EXPECT_TRUE(data->hasFormat("application/x-lumo-sheet-id"));
        EXPECT_EQ(data->data("application/x-lumo-sheet-id").toStdString(), dragged.toString());

        const std::optional<Timestamp> orderBefore = store->document().sheetOrderUpdatedAt;
        seconds += 10;
        // Dropped on the other window's list: the sheet moves in the one document both show.
        QSignalSpy dropped(otherWindow.get(), &SheetListModel::sheetDropped);
        EXPECT_TRUE(otherWindow->canDropMimeData(data.get(), Qt::MoveAction, c.droppedAt, 0, {}));
        otherWindow->dropMimeData(data.get(), Qt::MoveAction, c.droppedAt, 0, {});
        EXPECT_EQ(dropped.count(), 1);
        EXPECT_EQ(namesIn(store->document()), c.expected);
        EXPECT_EQ(namesIn(*model), c.expected);
        EXPECT_EQ(namesIn(*otherWindow), c.expected);
        const bool moved = store->document().sheetOrderUpdatedAt != orderBefore;
        EXPECT_EQ(moved, store->document().sheetOrderUpdatedAt == Timestamp{seconds}) << c.dragged;
        // The selection follows the moved sheet.
        EXPECT_EQ(*model->sheetID(model->rowOf(dragged)), dragged);
    }

    QMimeData foreign;
    foreign.setText("A");
    QMimeData unknown;
    unknown.setData("application/x-lumo-sheet-id", QByteArray::fromStdString(Uuid::random().toString()));
    for (const QMimeData* refused : {&foreign, &unknown})
        EXPECT_FALSE(model->canDropMimeData(refused, Qt::MoveAction, 0, 0, {}));
}

// The copy's name in each language is the store's test.
TEST_F(SheetList, FollowsDuplicatesAndDeletions) {
    const std::optional<Uuid> copy = store->duplicateSheet(sheetA);
    ASSERT_TRUE(copy);
    EXPECT_EQ(model->rowOf(*copy), 1);
    EXPECT_EQ(model->index(1).data().toString().toStdString(), "A Copy");
    EXPECT_EQ(session->sheetID(), copy);

    // The window showing the deleted sheet shows its neighbour.
    store->deleteSheet(*copy);
    EXPECT_EQ(model->rowOf(*copy), -1);
    EXPECT_EQ(namesIn(*otherWindow), (std::vector<std::string>{"A", "B", "C"}));
    EXPECT_EQ(session->sheetID(), sheetB);
}

TEST_F(SheetList, ARemoteMergeReordersAndDeletesWhileAWindowShowsASheet) {
    store->showSheet(session.get(), sheetB);
    ASSERT_TRUE(store->waitForIdle());
    const QPersistentModelIndex shown = model->indexOf(sheetB);

    // Another device moved C to the front and deleted A.
    LumoDocument remote = threeSheets();
    std::swap(remote.sheets[0], remote.sheets[2]);
    remote.sheets.erase(remote.sheets.begin() + 2);
    remote.deletedSheets[sheetA.toString()] = Timestamp{startSeconds + 30};
    remote.sheetOrderUpdatedAt = Timestamp{startSeconds + 30};
    QSignalSpy merged(store.get(), &DocumentStore::remoteMerged);
    writeDocument(cloudFile(), remote);
    ASSERT_TRUE(merged.wait(4000));

    EXPECT_EQ(namesIn(*model), (std::vector<std::string>{"C", "B"}));
    EXPECT_EQ(namesIn(*otherWindow), (std::vector<std::string>{"C", "B"}));
    EXPECT_EQ(session->sheetID(), sheetB);
    // The row the window had selected is the same sheet, moved rather than rebuilt.
    ASSERT_TRUE(shown.isValid());
    EXPECT_EQ(shown.row(), 1);
    EXPECT_EQ(shown.data(SheetListModel::sheetIDRole).toString().toStdString(), sheetB.toString());
}
