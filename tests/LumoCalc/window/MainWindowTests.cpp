#include <QClipboard>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QSet>
#include <QSignalSpy>
#include <QStatusBar>
#include <QTextBlock>
#include <QTextBrowser>

#include <functional>

#include "LumoCalc/dialogs/HelpWindow.h"
#include "ShellTestSupport.h"

namespace lumo::test {
namespace {

class Window : public ShellTest {};

QTextCursor caretOnLine(MainWindow* window, int line) {
    QTextCursor cursor(window->editor()->textView()->document()->findBlockByNumber(line));
    window->editor()->textView()->setTextCursor(cursor);
    return cursor;
}

// Quit, help and new window are pressed in the other shell tests.
TEST_F(Window, ShortcutsRunTheirCommands) {
    struct Case {
        const char* name;
        QKeySequence keys;
        std::function<void(Application&, MainWindow*)> check;
    };
    const Case cases[] = {
        {"new sheet", QKeySequence(Qt::CTRL | Qt::Key_T),
         [](Application& app, MainWindow* window) {
             EXPECT_EQ(app.store()->document().sheets.size(), 6u);
             EXPECT_EQ(window->session()->sheetID(), app.store()->document().sheets.back().id);
             EXPECT_EQ(window->windowTitle(), QStringLiteral("Sheet 6 — Lumo"));
             EXPECT_TRUE(textOf(window).isEmpty());
             EXPECT_TRUE(window->editor()->textView()->hasFocus()) << "the caret is in the new sheet's text";
         }},
        {"close window", QKeySequence(Qt::CTRL | Qt::Key_W),
         [](Application& app, MainWindow*) {
             QCoreApplication::processEvents();
             EXPECT_TRUE(app.windows().isEmpty());
         }},
        {"select all", QKeySequence(Qt::CTRL | Qt::Key_A),
         [](Application&, MainWindow* window) {
             EXPECT_EQ(window->editor()->textView()->textCursor().selectedText().size(),
                       textOf(window).size());
         }},
        {"next sheet", QKeySequence(Qt::CTRL | Qt::Key_Tab),
         [](Application& app, MainWindow* window) {
             EXPECT_EQ(window->session()->sheetID(), app.store()->document().sheets.at(1).id);
             EXPECT_EQ(window->windowTitle(), QStringLiteral("Monthly Budget — Lumo"));
         }},
        {"previous sheet goes round to the last", QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Backtab),
         [](Application& app, MainWindow* window) {
             EXPECT_EQ(window->session()->sheetID(), app.store()->document().sheets.back().id);
         }},
        {"toggle comment", QKeySequence(Qt::CTRL | Qt::Key_Slash),
         [](Application&, MainWindow* window) {
             EXPECT_EQ(window->editor()->textView()->document()->findBlockByNumber(1).text(),
                       QStringLiteral("// 1200 × 35"));
         }},
        {"copy answer", QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_C),
         [](Application&, MainWindow*) {
             EXPECT_EQ(QGuiApplication::clipboard()->text(), QStringLiteral("42,000"));
         }},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Application& app = launch();
        MainWindow* window = app.windows().value(0);
        activate(window);
        QGuiApplication::clipboard()->clear();
        // The caret sits on "1200 × 35" of the sample's first sheet.
        caretOnLine(window, 1);
        const QKeyCombination key = c.keys[0];
        QTest::keyClick(window->editor()->textView(), key.key(), key.keyboardModifiers());
        c.check(app, window);
        m_app.reset();
    }
}

TEST_F(Window, TheStatusBarAddsUpTheSelectedAnswers) {
    Application& app = launch();
    MainWindow* window = app.windows().value(0);
    activate(window);
    CalcTextView* text = window->editor()->textView();
    const auto summary = [window] { return window->findChild<QLabel*>(QStringLiteral("selectionSummary")); };
    ASSERT_NE(summary(), nullptr);
    EXPECT_FALSE(window->statusBar()->isVisible()) << "nothing selected, no bar";

    // From "1200 × 35" (42,000) down through "+ 10%" (46,200), as a person drags.
    QTextCursor selection = caretOnLine(window, 1);
    selection.movePosition(QTextCursor::Down, QTextCursor::KeepAnchor);
    selection.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
    text->setTextCursor(selection);
    EXPECT_TRUE(window->statusBar()->isVisible());
    EXPECT_EQ(summary()->text(), QStringLiteral("2 answers · sum 88,200 · average 44,100"));

    app.settings()->setLanguage(AppLanguage::japanese);
    EXPECT_EQ(summary()->text(), QStringLiteral("答え 2 個 · 合計 88,200 · 平均 44,100"));

    // One answer is nothing to add up.
    caretOnLine(window, 1);
    EXPECT_FALSE(window->statusBar()->isVisible());
}

TEST_F(Window, EditMenuWorksOnTheText) {
    Application& app = launch();
    MainWindow* window = app.windows().value(0);
    activate(window);
    QTextCursor line = caretOnLine(window, 1);
    line.select(QTextCursor::LineUnderCursor);
    window->editor()->textView()->setTextCursor(line);
    ASSERT_TRUE(window->action(Command::cut)->isEnabled());

    window->action(Command::cut)->trigger();
    EXPECT_EQ(QGuiApplication::clipboard()->text(), QStringLiteral("1200 × 35"));
    EXPECT_FALSE(textOf(window).contains(QStringLiteral("1200 × 35")));
    EXPECT_FALSE(window->action(Command::copy)->isEnabled()) << "nothing left selected to copy";
    window->action(Command::paste)->trigger();
    window->action(Command::paste)->trigger();
    EXPECT_TRUE(textOf(window).contains(QStringLiteral("1200 × 351200 × 35")));
    // The edits reached the document, so undo works on them.
    EXPECT_TRUE(window->action(Command::undo)->isEnabled());
}

TEST_F(Window, NoTwoCommandsShareAKey) {
    Application& app = launch();
    MainWindow* window = app.windows().value(0);
    QSet<QString> seen;
    for (const CommandDefinition& definition : allCommands()) {
        for (const QKeySequence& key : window->action(definition.command)->shortcuts()) {
            EXPECT_FALSE(seen.contains(key.toString())) << key.toString().toStdString();
            seen.insert(key.toString());
        }
    }
}

TEST_F(Window, TitleFollowsTheSheet) {
    Application& app = launch();
    MainWindow* window = app.windows().value(0);
    DocumentStore* store = app.store();
    const Uuid first = store->document().sheets[0].id;
    const Uuid second = store->document().sheets[1].id;
    EXPECT_EQ(window->windowTitle(), QStringLiteral("Getting Started — Lumo"));

    store->renameSheet(first, "Beams");
    EXPECT_EQ(window->windowTitle(), QStringLiteral("Beams — Lumo"));
    window->session()->showSheet(second);
    EXPECT_EQ(window->windowTitle(), QStringLiteral("Monthly Budget — Lumo"));
    store->deleteSheet(second);
    EXPECT_EQ(window->windowTitle(), QStringLiteral("Trip Estimate — Lumo"))
        << "the neighbour takes its place";
}

TEST_F(Window, EveryLabelFollowsTheLanguage) {
    Application& app = launch();
    activate(app.openWindow());
    QTest::keyClick(app.windows().value(1), Qt::Key_F1);
    ASSERT_NE(app.helpWindow(), nullptr);
    for (AppLanguage language : {AppLanguage::japanese, AppLanguage::english}) {
        SCOPED_TRACE(std::string(rawValue(language)));
        app.settings()->setLanguage(language);
        const bool japanese = language == AppLanguage::japanese;
        for (MainWindow* window : app.windows()) {
            const QList<QMenu*> menus = window->menus();
            ASSERT_EQ(std::size_t(menus.size()), menuBarLayout().size());
            for (qsizetype index = 0; index < menus.size(); ++index) {
                const Bilingual& title = menuBarLayout()[std::size_t(index)].title;
                EXPECT_EQ(menus[index]->title(),
                          QString::fromUtf8(japanese ? title.japanese : title.english));
            }
            for (const CommandDefinition& definition : allCommands()) {
                EXPECT_EQ(window->action(definition.command)->text(),
                          QString::fromUtf8(japanese ? definition.label.japanese : definition.label.english));
            }
        }
        EXPECT_EQ(app.helpWindow()->windowTitle(),
                  japanese ? QStringLiteral("Lumo ヘルプ") : QStringLiteral("Lumo Help"));
        EXPECT_EQ(app.helpWindow()->browser()->toPlainText().contains(QStringLiteral("はじめてのシート")),
                  japanese);
    }
}

// The keypad's other side is the keypad's own test.
TEST_F(Window, SheetListAndKeypadTakeTheirSides) {
    Application& app = launch();
    MainWindow* window = app.windows().value(0);
    auto* tabs = new QLabel(QStringLiteral("tabs"));
    auto* sidebar = new QLabel(QStringLiteral("sidebar"));
    auto* keypad = new QLabel(QStringLiteral("keypad"));
    window->setSheetTabs(tabs);
    window->setSheetSidebar(sidebar);
    window->setKeypad(keypad, MainWindow::Side::left);
    QTest::qWait(0);
    auto inWindow = [window](QWidget* widget) { return widget->mapTo(window, QPoint(0, 0)); };
    EXPECT_LT(inWindow(tabs).y(), inWindow(window->editor()).y());
    EXPECT_LT(inWindow(sidebar).x(), inWindow(window->editor()).x());
    EXPECT_LT(inWindow(keypad).x(), inWindow(window->editor()).x());
    EXPECT_GT(window->editor()->width(), window->width() / 3) << "the editor keeps most of the width";
}

} // namespace
} // namespace lumo::test
