#pragma once

namespace lumo {

class AppSettings;
class MainWindow;
class NotificationCenter;

/// Gives a window its commands that work on the shown sheet as a whole: find and replace with
/// the find bar above the sheet, go to line, copy the sheet with its answers, export and print.
void installSheetCommands(MainWindow* window, AppSettings* settings, NotificationCenter* notifications);

} // namespace lumo
