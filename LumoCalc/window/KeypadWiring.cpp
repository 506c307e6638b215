#include "LumoCalc/window/KeypadWiring.h"

#include <QAction>
#include <QPointer>

#include "LumoCalc/window/MainWindow.h"
#include "LumoUI/keypad/KeyLayoutStore.h"
#include "LumoUI/keypad/KeypadView.h"
#include "LumoUI/settings/AppSettings.h"

namespace lumo {

namespace {

constexpr auto showKeypadKey = "lumo.showKeypad";

MainWindow::Side windowSide(KeypadSide side) {
    return side == KeypadSide::left ? MainWindow::Side::left : MainWindow::Side::right;
}

} // namespace

void installKeypad(MainWindow* window, QObject* owner, AppSettings* settings,
                   NotificationCenter* notifications) {
    if (!window || !settings)
        return;
    auto* layouts =
        owner ? owner->findChild<KeyLayoutStore*>(QString(), Qt::FindDirectChildrenOnly) : nullptr;
    if (!layouts)
        layouts = new KeyLayoutStore(settings, notifications, {}, owner);

    auto* keypad = new KeypadView(window->session(), settings, notifications, layouts);
    window->setKeypad(keypad, windowSide(settings->keypadSide()));
    // A desktop is typed on first; the keypad waits until it is asked for.
    const bool shown = settings->viewPreference(QLatin1String(showKeypadKey), false).toBool();
    keypad->setVisible(shown);
    window->action(Command::showKeypad)->setChecked(shown);

    const QPointer<KeypadView> weakKeypad(keypad);
    const QPointer<AppSettings> weakSettings(settings);
    window->setCommandHandler(Command::showKeypad, [window, weakKeypad, weakSettings](bool checked) {
        if (weakSettings)
            weakSettings->setViewPreference(QLatin1String(showKeypadKey), checked);
        if (!weakKeypad)
            return;
        weakKeypad->setVisible(checked);
        if (checked)
            window->makeRoomForEditor();
    });
    QObject::connect(settings, &AppSettings::keypadSideChanged, keypad,
                     [window, keypad](KeypadSide side) { window->setKeypad(keypad, windowSide(side)); });
}

} // namespace lumo
