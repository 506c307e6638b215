#include "ShellTestSupport.h"

#include "LumoUI/keypad/KeyButton.h"
#include "LumoUI/keypad/KeypadView.h"

#include <QScreen>

namespace lumo::test {
namespace {

using KeypadWindow = ShellTest;

KeypadView* keypadOf(MainWindow* window) {
    return window->findChild<KeypadView*>();
}

TEST_F(KeypadWindow, ShowKeypadShowsHidesAndIsRemembered) {
    Application& app = launch();
    MainWindow* window = app.windows().value(0);
    KeypadView* keypad = keypadOf(window);
    ASSERT_NE(keypad, nullptr);
    QAction* show = window->action(Command::showKeypad);
    EXPECT_FALSE(keypad->isVisible()) << "a desktop starts without the keypad";
    EXPECT_FALSE(show->isChecked());

    show->trigger();
    EXPECT_TRUE(keypad->isVisible());
    EXPECT_TRUE(app.settings()->viewPreference("lumo.showKeypad", false).toBool());
    // Every window follows, its menu's check mark included.
    MainWindow* second = app.openWindow();
    EXPECT_TRUE(keypadOf(second)->isVisible());
    second->action(Command::showKeypad)->trigger();
    for (MainWindow* each : {window, second}) {
        EXPECT_FALSE(keypadOf(each)->isVisible());
        EXPECT_FALSE(each->action(Command::showKeypad)->isChecked());
    }
    show->trigger();
    m_app.reset();

    Application& again = launch();
    window = again.windows().value(0);
    EXPECT_TRUE(keypadOf(window)->isVisible());
    EXPECT_TRUE(window->action(Command::showKeypad)->isChecked());
    window->action(Command::showKeypad)->trigger();
    EXPECT_FALSE(keypadOf(window)->isVisible());
    EXPECT_FALSE(again.settings()->viewPreference("lumo.showKeypad", true).toBool());
}

TEST_F(KeypadWindow, ShowingTheKeypadWidensANarrowWindowWithinItsScreen) {
    Application& app = launch();
    MainWindow* window = app.windows().value(0);
    const QRect screen = window->screen()->availableGeometry();
    window->setGeometry(screen.right() - 600, screen.top() + 40, 600, 400);
    activate(window);
    window->action(Command::showKeypad)->trigger();
    QApplication::processEvents();
    // The sheet, the list of sheets and the keypad want more than this small screen has.
    EXPECT_EQ(window->frameGeometry().width(), screen.width()) << "as wide as the screen allows";
    EXPECT_GE(window->frameGeometry().left(), screen.left());
    EXPECT_LE(window->frameGeometry().right(), screen.right())
        << "the window grows to the left, not off the screen";
    EXPECT_EQ(window->height(), 400);
}

TEST_F(KeypadWindow, TheSideSettingMovesTheKeypad) {
    Application& app = launch();
    MainWindow* window = app.windows().value(0);
    window->action(Command::showKeypad)->trigger();
    const auto x = [window](QWidget* widget) { return widget->mapTo(window, QPoint(0, 0)).x(); };
    for (KeypadSide side : {KeypadSide::left, KeypadSide::right, KeypadSide::left}) {
        app.settings()->setKeypadSide(side);
        QApplication::processEvents();
        KeypadView* keypad = keypadOf(window);
        EXPECT_EQ(x(keypad) < x(window->editor()), side == KeypadSide::left) << rawValue(side).toStdString();
        EXPECT_EQ(keypad->width(), keypad->metrics().panelWidth());
    }
}

TEST_F(KeypadWindow, KeysTypeIntoTheirOwnWindow) {
    Application& app = launch();
    MainWindow* first = app.windows().value(0);
    app.store()->updateText(*first->session()->sheetID(), "");
    MainWindow* second = app.openWindow();
    app.store()->selectSheet(app.store()->document().sheets.at(1).id);
    app.store()->updateText(*second->session()->sheetID(), "");
    for (MainWindow* window : {first, second})
        window->action(Command::showKeypad)->trigger();

    // The first window's keypad, pressed while the second window was the active one.
    QTest::mouseClick(keypadOf(first)->numberKey("4"), Qt::LeftButton);
    QTest::mouseClick(keypadOf(first)->numberKey("2"), Qt::LeftButton);
    app.store()->waitForIdle();
    EXPECT_EQ(textOf(first), QStringLiteral("42"));
    EXPECT_EQ(textOf(second), QString());
}

} // namespace
} // namespace lumo::test
