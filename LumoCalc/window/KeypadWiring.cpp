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

    // Every window follows the preference, as with the plots; the handler only records it.
    window->setCommandHandler(Command::showKeypad,
                              [settings = QPointer<AppSettings>(settings)](bool checked) {
                                  if (settings)
                                      settings->setViewPreference(QLatin1String(showKeypadKey), checked);
                              });
    QObject::connect(settings, &AppSettings::viewPreferenceChanged, keypad,
                     [window, keypad](const QString& key, const QVariant& value) {
                         if (key != QLatin1String(showKeypadKey))
                             return;
                         const bool shown = value.toBool();
                         window->action(Command::showKeypad)->setChecked(shown);
                         keypad->setVisible(shown);
                         if (shown)
                             window->makeRoomForEditor();
                     });
    QObject::connect(settings, &AppSettings::keypadSideChanged, keypad,
                     [window, keypad](KeypadSide side) { window->setKeypad(keypad, windowSide(side)); });
}

} // namespace lumo
