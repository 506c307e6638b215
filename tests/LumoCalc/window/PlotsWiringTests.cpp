#include "LumoUI/editor/PlotLayer.h"
#include "ShellTestSupport.h"

using namespace lumo;
using namespace lumo::test;

namespace {

using PlotsMenu = ShellTest;

TEST_F(PlotsMenu, ShowPlotsHidesThePlotsOfEveryWindowAndIsRemembered) {
    Application& app = launch();
    MainWindow* first = app.windows().value(0);
    MainWindow* second = app.openWindow();
    // The sample's plots are drawn in both windows.
    for (MainWindow* window : {first, second}) {
        EXPECT_TRUE(window->action(Command::showPlots)->isChecked());
        EXPECT_TRUE(window->editor()->textView()->showsPlots());
    }

    first->action(Command::showPlots)->trigger();
    for (MainWindow* window : {first, second}) {
        EXPECT_FALSE(window->action(Command::showPlots)->isChecked());
        EXPECT_FALSE(window->editor()->textView()->showsPlots());
        EXPECT_TRUE(window->editor()->textView()->plots()->plotBoxes().empty());
    }
    EXPECT_FALSE(app.settings()->viewPreference(QStringLiteral("lumo.showGraph"), true).toBool());

    // A window opened now starts with the plots hidden too.
    MainWindow* third = app.openWindow();
    EXPECT_FALSE(third->action(Command::showPlots)->isChecked());
    EXPECT_FALSE(third->editor()->textView()->showsPlots());

    second->action(Command::showPlots)->trigger();
    for (MainWindow* window : {first, second, third})
        EXPECT_TRUE(window->editor()->textView()->showsPlots());
}

} // namespace
