#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMenu>
#include <QMimeData>
#include <QToolButton>
#include <QTreeWidget>

#include <string>
#include <vector>

#include "LumoCalc/dialogs/ConfirmationDialog.h"
#include "LumoCalc/sheets/NamedValuesPanel.h"
#include "LumoCalc/sheets/SheetSidebar.h"
#include "LumoCalc/sheets/SheetTabs.h"
#include "LumoUI/settings/NotificationCenter.h"
#include "LumoUI/store/SheetListModel.h"
#include "ShellTestSupport.h"

namespace lumo::test {
namespace {

class SheetViews : public ShellTest {
protected:
    MainWindow* window = nullptr;
    SheetTabBar* tabs = nullptr;
    QListView* sidebar = nullptr;
    NamedValuesPanel* namedValues = nullptr;

    void open() {
        launch();
        window = m_app->windows().first();
        window->resize(980, 680);
        tabs = window->findChild<SheetTabBar*>();
        sidebar = window->findChild<SheetSidebar*>()->list();
        namedValues = window->findChild<NamedValuesPanel*>();
        ASSERT_TRUE(tabs && sidebar && namedValues);
        ASSERT_TRUE(QTest::qWaitForWindowExposed(window));
    }
    const std::vector<Sheet>& sheets() const { return m_app->store()->document().sheets; }
    std::vector<std::string> names() const {
        std::vector<std::string> all;
        for (const Sheet& sheet : sheets())
            all.push_back(sheet.name);
        return all;
    }
    QPoint rowCentre(int row) const { return sidebar->visualRect(sidebar->model()->index(row, 0)).center(); }
    std::optional<Uuid> shown() const { return window->session()->sheetID(); }

    // Sends a drag carrying `sheet` over `target` and drops it at `position`, as the window system
    // delivers a drag from this or another window.
    static void dropSheet(QWidget* target, const Uuid& sheet, QPoint position) {
        QMimeData data;
        data.setData(QString::fromLatin1(SheetListModel::sheetIDMimeType),
                     QByteArray::fromStdString(sheet.toString()));
        QDragEnterEvent enter(position, Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(target, &enter);
        QDragMoveEvent move(position, Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(target, &move);
        QDropEvent drop(position, Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(target, &drop);
    }

    // Opens a view's context menu over `position` and chooses `item`.
    static void chooseFromContextMenu(QWidget* target, QPoint position, const QString& item) {
        QContextMenuEvent event(QContextMenuEvent::Mouse, position, target->mapToGlobal(position));
        QApplication::sendEvent(target, &event);
        auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        ASSERT_TRUE(menu);
        for (QAction* action : menu->actions()) {
            if (action->text() == item) {
                menu->close();
                action->trigger();
                return;
            }
        }
        FAIL() << "no menu item " << item.toStdString();
    }
};

TEST_F(SheetViews, ClickingATabOrARowShowsThatSheetInBothViews) {
    open();
    struct Case {
        const char* view;
        int row;
    };
    for (const Case c : {Case{"tabs", 2}, Case{"sidebar", 4}, Case{"tabs", 0}, Case{"sidebar", 1}}) {
        if (std::string(c.view) == "tabs")
            QTest::mouseClick(tabs, Qt::LeftButton, {}, tabs->tabRect(c.row).center());
        else
            QTest::mouseClick(sidebar->viewport(), Qt::LeftButton, {}, rowCentre(c.row));
        QCoreApplication::processEvents();
        EXPECT_EQ(shown(), sheets()[std::size_t(c.row)].id) << c.view << c.row;
        EXPECT_EQ(tabs->currentIndex(), c.row);
        EXPECT_EQ(sidebar->currentIndex().row(), c.row);
        EXPECT_TRUE(sidebar->selectionModel()->isSelected(sidebar->currentIndex()));
    }
    // Adding a sheet elsewhere keeps this window's sheet current in both views.
    m_app->store()->duplicateSheet(sheets()[0].id);
    window->session()->showSheet(sheets()[1].id);
    EXPECT_EQ(tabs->count(), 6);
    EXPECT_EQ(tabs->currentIndex(), 1);
    EXPECT_EQ(sidebar->currentIndex().row(), 1);
}

TEST_F(SheetViews, DoubleClickRenamesInPlace) {
    open();
    struct Case {
        const char* view;
        QString typed;
        std::string expected;
    };
    const Case cases[] = {
        {"tabs", "  Rent  ", "Rent"}, {"sidebar", "Utilities", "Utilities"}, {"tabs", "   ", "Utilities"},
        {"sidebar", "", "Utilities"}, {"tab menu", "Savings", "Savings"},
    };
    const auto visibleEditor = [](QWidget* view) -> QLineEdit* {
        for (QLineEdit* editor : view->findChildren<QLineEdit*>()) {
            if (editor->isVisible())
                return editor;
        }
        return nullptr;
    };
    for (const Case& c : cases) {
        const std::string way = c.view;
        if (way == "tabs")
            QTest::mouseDClick(tabs, Qt::LeftButton, {}, tabs->tabRect(1).center());
        else if (way == "sidebar")
            QTest::mouseDClick(sidebar->viewport(), Qt::LeftButton, {}, rowCentre(1));
        else
            chooseFromContextMenu(tabs, tabs->tabRect(1).center(), "Rename");
        QCoreApplication::processEvents();
        QLineEdit* editor = visibleEditor(way.starts_with("tab") ? static_cast<QWidget*>(tabs) : sidebar);
        ASSERT_TRUE(editor) << c.view;
        editor->selectAll();
        QTest::keyClick(editor, Qt::Key_Backspace);
        QTest::keyClicks(editor, c.typed);
        QTest::keyClick(editor, Qt::Key_Return);
        // The list's editor hands its text over once the key has been handled.
        QCoreApplication::processEvents();
        EXPECT_EQ(sheets()[1].name, c.expected) << c.view << " " << c.typed.toStdString();
        EXPECT_EQ(tabs->tabText(1).toStdString(), c.expected);
    }
}

TEST_F(SheetViews, ADroppedSheetMovesAndIsShownInTheWindowItWasDroppedOn) {
    open();
    MainWindow* other = m_app->openWindow();
    const Uuid trip = sheets()[2].id;
    // Dragged from the other window onto this one's tab bar, before the first tab.
    dropSheet(tabs, trip, tabs->tabRect(0).topLeft() + QPoint(3, 3));
    EXPECT_EQ(names(), (std::vector<std::string>{"Trip Estimate", "Getting Started", "Monthly Budget",
                                                 "Graphs", "Long Sheet"}));
    EXPECT_TRUE(m_app->store()->document().sheetOrderUpdatedAt.has_value());
    EXPECT_EQ(shown(), trip);
    EXPECT_EQ(tabs->currentIndex(), 0);
    // And past the end of the other window's sidebar.
    QListView* otherList = other->findChild<SheetSidebar*>()->list();
    dropSheet(otherList->viewport(), trip, QPoint(20, otherList->viewport()->height() - 4));
    EXPECT_EQ(names(), (std::vector<std::string>{"Getting Started", "Monthly Budget", "Graphs", "Long Sheet",
                                                 "Trip Estimate"}));
    EXPECT_EQ(other->session()->sheetID(), trip);
    EXPECT_EQ(tabs->tabText(4), QStringLiteral("Trip Estimate"));
}

TEST_F(SheetViews, DeleteAsksNamingTheSheetAndThenShowsItsNeighbour) {
    for (const AppLanguage language : {AppLanguage::english, AppLanguage::japanese}) {
        open();
        m_app->settings()->setLanguage(language);
        const bool english = language == AppLanguage::english;
        const Uuid second = sheets()[1].id;
        const QString name = QString::fromStdString(sheets()[1].name);
        QTest::mouseClick(tabs, Qt::LeftButton, {}, tabs->tabRect(1).center());

        for (const bool confirm : {false, true}) {
            // From the tab's menu, or with the Delete key in the sidebar.
            if (english) {
                chooseFromContextMenu(tabs, tabs->tabRect(1).center(), "Delete");
            } else {
                sidebar->setFocus();
                QTest::keyClick(sidebar, Qt::Key_Delete);
            }
            auto* question = window->findChild<ConfirmationDialog*>();
            ASSERT_TRUE(question);
            EXPECT_EQ(question->windowTitle(),
                      english ? "Delete “" + name + "”?" : "「" + name + "」を削除しますか？");
            QTest::mouseClick(confirm ? question->confirmButton() : question->cancelButton(), Qt::LeftButton);
            QCoreApplication::processEvents();
            EXPECT_EQ(m_app->store()->sheet(second) != nullptr, !confirm);
        }
        EXPECT_TRUE(m_app->store()->document().deletedSheets.contains(second.toString()));
        EXPECT_EQ(shown(), sheets()[1].id) << "the sheet that took its place";
        EXPECT_EQ(tabs->count(), 4);
        EXPECT_EQ(tabs->currentIndex(), 1);
        m_app.reset();
    }
}

TEST_F(SheetViews, ContextMenuAddsDuplicatesAndClearsSheets) {
    open();
    QTest::mouseClick(tabs, Qt::LeftButton, {}, tabs->tabRect(1).center());
    chooseFromContextMenu(sidebar->viewport(), rowCentre(0), "Duplicate");
    EXPECT_EQ(sheets()[1].name, "Getting Started Copy");
    EXPECT_EQ(shown(), sheets()[1].id);

    chooseFromContextMenu(tabs, tabs->tabRect(0).center(), "New Sheet");
    EXPECT_EQ(sheets().back().name, "Sheet 7");
    EXPECT_EQ(shown(), sheets().back().id);

    chooseFromContextMenu(sidebar->viewport(), rowCentre(0), "Clear Sheet");
    EXPECT_EQ(m_app->store()->pendingClearSheetID(), sheets()[0].id);
}

TEST_F(SheetViews, ViewsFollowTheListStyleAndNamedValuesSettings) {
    open();
    auto* column = window->findChild<QWidget*>(QStringLiteral("sideColumn"));
    QAction* namedValuesItem = window->action(Command::showNamedValues);
    ASSERT_TRUE(column && namedValuesItem);
    struct Case {
        SheetListStyle style;
        bool namedValues;
        bool tabsShown, sidebarShown, columnShown;
    };
    const Case cases[] = {
        {SheetListStyle::both, true, true, true, true},
        {SheetListStyle::tabs, true, true, false, true},
        {SheetListStyle::tabs, false, true, false, false},
        {SheetListStyle::sidebar, false, false, true, true},
    };
    for (const Case& c : cases) {
        m_app->settings()->setSheetListStyle(c.style);
        // The View menu's item and the setting stay in step whichever of them changes.
        if (namedValuesItem->isChecked() != c.namedValues)
            namedValuesItem->trigger();
        EXPECT_EQ(m_app->settings()->showsNamedValues(), c.namedValues);
        EXPECT_EQ(tabs->isVisible(), c.tabsShown);
        EXPECT_EQ(sidebar->isVisible(), c.sidebarShown);
        EXPECT_EQ(namedValues->isVisible(), c.namedValues);
        EXPECT_EQ(column->isVisible(), c.columnShown);
    }
    m_app->settings()->setShowsNamedValues(true);
    EXPECT_TRUE(namedValuesItem->isChecked());
    EXPECT_TRUE(namedValues->isVisible());
}

TEST_F(SheetViews, NamedValuesFollowEvaluationAndClickingANameTypesIt) {
    open();
    const auto listed = [this] {
        std::vector<std::pair<std::string, std::string>> rows;
        QTreeWidget* list = namedValues->list();
        for (int row = 0; row < list->topLevelItemCount(); ++row)
            rows.emplace_back(list->topLevelItem(row)->text(0).toStdString(),
                              list->topLevelItem(row)->text(1).toStdString());
        return rows;
    };
    using Rows = std::vector<std::pair<std::string, std::string>>;
    EXPECT_EQ(listed().size(), 4u) << "the sample's first sheet names four values";

    window->perform(Command::newSheet);
    m_app->store()->waitForIdle();
    EXPECT_TRUE(listed().empty());
    EXPECT_TRUE(window->findChild<QLabel*>(QStringLiteral("namedValuesPlaceholder"))->isVisible());
    for (const char* line : {"rent = 1200", "food = 300"}) {
        type(window, line);
        QTest::keyClick(window->editor()->textView(), Qt::Key_Return);
    }
    type(window, "10");
    // Results arrive from the background evaluation.
    ASSERT_TRUE(QTest::qWaitFor([&] { return listed().size() == 2; }));
    EXPECT_EQ(listed(), (Rows{{"rent", "1,200"}, {"food", "300"}}));

    QTreeWidget* list = namedValues->list();
    for (int row : {0, 1})
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {},
                          list->visualItemRect(list->topLevelItem(row)).center());
    EXPECT_EQ(textOf(window), QStringLiteral("rent = 1,200\nfood = 300\n10 + rent + food"));
    m_app->store()->waitForIdle();
    EXPECT_EQ(window->session()->results().back().outcome.kind, LineOutcome::Kind::value);
}

TEST_F(SheetViews, EveryLabelFollowsTheLanguage) {
    open();
    const auto labels = [this] {
        return std::vector<QString>{window->findChild<SheetSidebar*>()->findChild<QLabel*>()->text(),
                                    namedValues->findChild<QLabel*>()->text(),
                                    window->findChild<SheetTabs*>()->addButton()->toolTip()};
    };
    EXPECT_EQ(labels(), (std::vector<QString>{"Sheets", "Named Values", "New Sheet"}));
    m_app->settings()->setLanguage(AppLanguage::japanese);
    EXPECT_EQ(labels(), (std::vector<QString>{"シート", "名前付きの値", "新規シート"}));
}

} // namespace
} // namespace lumo::test
