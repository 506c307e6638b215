#pragma once

class QObject;

namespace lumo {

class AppSettings;
class MainWindow;
class NotificationCenter;

/// Puts a keypad beside the window's sheet, on the side the settings ask for, and gives it the
/// View menu's Show Keypad command, remembered in "lumo.showKeypad" and followed by every window.
/// The windows share one key layout store, a child of `owner` made by the first call.
void installKeypad(MainWindow* window, QObject* owner, AppSettings* settings,
                   NotificationCenter* notifications);

} // namespace lumo
