#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>

#include "LumoCalc/window/FindBar.h"
#include "LumoUI/editor/CalcTextView.h"
#include "ShellTestSupport.h"

namespace lumo::test {
namespace {

// The sample document's sheets, by their place in the tab order.
constexpr std::size_t gettingStarted = 0;
constexpr std::size_t monthlyBudget = 1;
constexpr std::size_t tripEstimate = 2;

class Find : public ShellTest {
protected:
    MainWindow* openWindow() {
        MainWindow* window = launch().windows().first();
        activate(window);
        bar = window->findChild<FindBar*>();
        return window;
    }
    void press(MainWindow* window, QKeySequence keys) {
        QWidget* focused = QApplication::focusWidget() ? QApplication::focusWidget() : window;
        QTest::keyClick(focused, keys[0].key(), keys[0].keyboardModifiers());
    }
    Uuid sheetAt(std::size_t index) const { return m_app->store()->document().sheets.at(index).id; }
    QString selection(MainWindow* window) const {
        return window->editor()->textView()->textCursor().selectedText();
    }

    FindBar* bar = nullptr;
};

TEST_F(Find, MovesThroughTheMatchesOfAllSheets) {
    MainWindow* window = openWindow();
    ASSERT_NE(bar, nullptr);
    EXPECT_FALSE(bar->isVisible());
    press(window, QKeySequence(Qt::CTRL | Qt::Key_F));
    ASSERT_TRUE(bar->isVisible());
    EXPECT_TRUE(bar->findField()->hasFocus());

    QTest::keyClicks(bar->findField(), QStringLiteral("usd"));
    EXPECT_EQ(bar->countLabel()->text(), QStringLiteral("No matches")) << "the shown sheet has none";
    EXPECT_EQ(window->session()->sheetID(), sheetAt(gettingStarted));

    QTest::mouseClick(bar->allSheetsBox(), Qt::LeftButton);
    ASSERT_TRUE(bar->allSheetsBox()->isChecked());
    EXPECT_EQ(bar->countLabel()->text(), QStringLiteral("4 matches"));
    QTest::mouseClick(bar->findField(), Qt::LeftButton);

    struct Step {
        QKeySequence keys;
        std::size_t sheet;
        QString count;
    };
    const Step steps[] = {
        {QKeySequence(Qt::Key_Return), monthlyBudget, QStringLiteral("1 of 4")},
        {QKeySequence(Qt::Key_F3), monthlyBudget, QStringLiteral("2 of 4")},
        {QKeySequence(Qt::Key_F3), tripEstimate, QStringLiteral("3 of 4")},
        {QKeySequence(Qt::Key_F3), tripEstimate, QStringLiteral("4 of 4")},
        {QKeySequence(Qt::Key_F3), monthlyBudget, QStringLiteral("1 of 4")},
        {QKeySequence(Qt::SHIFT | Qt::Key_F3), tripEstimate, QStringLiteral("4 of 4")},
        {QKeySequence(Qt::SHIFT | Qt::Key_Return), tripEstimate, QStringLiteral("3 of 4")},
    };
    for (const Step& step : steps) {
        press(window, step.keys);
        EXPECT_EQ(window->session()->sheetID(), sheetAt(step.sheet)) << step.keys.toString().toStdString();
        EXPECT_EQ(bar->countLabel()->text(), step.count) << step.keys.toString().toStdString();
        EXPECT_EQ(selection(window), QStringLiteral("USD"));
    }

    // Matching case finds nothing for the lower-case pattern.
    QTest::mouseClick(bar->matchCaseBox(), Qt::LeftButton);
    EXPECT_EQ(bar->countLabel()->text(), QStringLiteral("No matches"));

    press(window, QKeySequence(Qt::Key_Escape));
    EXPECT_FALSE(bar->isVisible());
    EXPECT_TRUE(window->editor()->textView()->hasFocus()) << "the focus goes back to the text";
}

TEST_F(Find, ReplaceAllSkipsLockedLinesAndUndoesPerSheet) {
    MainWindow* window = openWindow();
    DocumentStore* store = m_app->store();
    const std::string budgetBefore = store->sheet(sheetAt(monthlyBudget))->text;
    const std::string tripBefore = store->sheet(sheetAt(tripEstimate))->text;
    store->setLockedLines(sheetAt(monthlyBudget), {1});
    window->session()->showSheet(sheetAt(monthlyBudget));
    // A space typed just before: the replacements must not join its undo step.
    CalcTextView* text = window->editor()->textView();
    QTest::keyClick(text, Qt::Key_End, Qt::ControlModifier);
    QTest::keyClick(text, Qt::Key_Space);
    const std::string budgetTyped = budgetBefore + " ";
    ASSERT_EQ(store->sheet(sheetAt(monthlyBudget))->text, budgetTyped);

    press(window, QKeySequence(Qt::CTRL | Qt::Key_H));
    ASSERT_TRUE(bar->replaceField()->isVisible());
    QTest::keyClicks(bar->findField(), QStringLiteral("USD"));
    QTest::mouseClick(bar->allSheetsBox(), Qt::LeftButton);
    QTest::keyClicks(bar->replaceField(), QStringLiteral("EUR"));
    QTest::mouseClick(bar->replaceAllButton(), Qt::LeftButton);

    EXPECT_EQ(bar->statusLabel()->text(),
              QStringLiteral("Replaced 3 matches; 1 in a locked line was left alone"));
    EXPECT_EQ(store->sheet(sheetAt(monthlyBudget))->text,
              "rent = 820 EUR\nutilities = 124 USD\nrent + utilities\n ");
    EXPECT_EQ(store->sheet(sheetAt(tripEstimate))->text,
              "flights = 340 EUR\nhotel = 180 EUR\nflights + hotel\n");
    EXPECT_EQ(textOf(window).toStdString(), store->sheet(sheetAt(monthlyBudget))->text);

    // Each sheet takes its replacements back in one step, although they changed no length.
    press(window, QKeySequence(Qt::Key_Escape));
    press(window, QKeySequence::Undo);
    EXPECT_EQ(store->sheet(sheetAt(monthlyBudget))->text, budgetTyped);
    EXPECT_EQ(textOf(window).toStdString(), budgetTyped);
    EXPECT_EQ(store->sheet(sheetAt(tripEstimate))->text,
              "flights = 340 EUR\nhotel = 180 EUR\nflights + hotel\n");
    window->session()->showSheet(sheetAt(tripEstimate));
    press(window, QKeySequence::Undo);
    EXPECT_EQ(store->sheet(sheetAt(tripEstimate))->text, tripBefore);
}

TEST_F(Find, ReplaceOneAtATimeStopsAtALockedLine) {
    MainWindow* window = openWindow();
    DocumentStore* store = m_app->store();
    store->setLockedLines(sheetAt(monthlyBudget), {1});
    window->session()->showSheet(sheetAt(monthlyBudget));
    press(window, QKeySequence(Qt::CTRL | Qt::Key_H));
    QTest::keyClicks(bar->findField(), QStringLiteral("USD"));
    EXPECT_EQ(bar->countLabel()->text(), QStringLiteral("1 of 2"));
    QTest::keyClicks(bar->replaceField(), QStringLiteral("EUR"));

    QTest::keyClick(bar->replaceField(), Qt::Key_Return);
    EXPECT_EQ(store->sheet(sheetAt(monthlyBudget))->text,
              "rent = 820 EUR\nutilities = 124 USD\nrent + utilities\n");
    EXPECT_EQ(bar->countLabel()->text(), QStringLiteral("1 of 1")) << "the next match is selected";

    QTest::mouseClick(bar->replaceButton(), Qt::LeftButton);
    EXPECT_EQ(store->sheet(sheetAt(monthlyBudget))->text,
              "rent = 820 EUR\nutilities = 124 USD\nrent + utilities\n");
    EXPECT_EQ(bar->statusLabel()->text(), QStringLiteral("That line is locked, so it was left alone"));
}

TEST_F(Find, MarksTheMatchesOfTheShownSheetWhileOpen) {
    MainWindow* window = openWindow();
    CalcTextView* view = window->editor()->textView();
    const auto marked = [view] {
        QStringList texts;
        for (const QTextEdit::ExtraSelection& selection : view->extraSelections()) {
            if (selection.cursor.hasSelection())
                texts << selection.cursor.selectedText();
        }
        return texts;
    };
    window->session()->showSheet(sheetAt(monthlyBudget));
    press(window, QKeySequence(Qt::CTRL | Qt::Key_F));
    QTest::keyClicks(bar->findField(), QStringLiteral("rent"));
    EXPECT_EQ(marked(), QStringList({"rent", "rent"}));

    // The marks follow the text as it is typed.
    view->setFocus();
    view->moveCursor(QTextCursor::End);
    QTest::keyClicks(view, QStringLiteral("Rent"));
    EXPECT_EQ(marked(), QStringList({"rent", "rent", "Rent"}));
    QTest::mouseClick(bar->matchCaseBox(), Qt::LeftButton);
    EXPECT_EQ(marked(), QStringList({"rent", "rent"}));

    window->session()->showSheet(sheetAt(gettingStarted));
    EXPECT_EQ(marked(), QStringList()) << "another sheet's matches are not marked here";
    window->session()->showSheet(sheetAt(monthlyBudget));
    press(window, QKeySequence(Qt::Key_Escape));
    EXPECT_EQ(marked(), QStringList()) << "closing the bar clears the marks";
}

TEST_F(Find, CountsAndReplacementsReadInJapanese) {
    MainWindow* window =
        launch({QStringLiteral("-lumoFixture")}, Terms::accepted, AppLanguage::japanese).windows().first();
    activate(window);
    bar = window->findChild<FindBar*>();
    press(window, QKeySequence(Qt::CTRL | Qt::Key_H));
    QTest::keyClicks(bar->findField(), QStringLiteral("mm"));
    EXPECT_EQ(bar->countLabel()->text(), QStringLiteral("3 件中 1 件目"));
    QTest::keyClicks(bar->replaceField(), QStringLiteral("cm"));
    QTest::mouseClick(bar->replaceAllButton(), Qt::LeftButton);
    EXPECT_EQ(bar->statusLabel()->text(), QStringLiteral("3 か所を置き換えました"));
}

} // namespace
} // namespace lumo::test
