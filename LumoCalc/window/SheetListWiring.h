#pragma once

namespace lumo {

class AppSettings;
class DocumentStore;
class MainWindow;
class NotificationCenter;

/// The view preference that keeps the width of the column beside the editor.
inline constexpr auto sideColumnWidthKey = "lumo.sideColumnWidth";

/// Gives a window its sheet tab bar, its sidebar of sheets and its named values, shown as the
/// settings say and following them as they change, and installs the View menu's Named Values.
/// The column starts as wide as the user last left it.
void installSheetList(MainWindow* window, DocumentStore* store, AppSettings* settings,
                      NotificationCenter* notifications);

} // namespace lumo
