#pragma once

namespace lumo {

class AppSettings;
class DocumentStore;
class MainWindow;
class NotificationCenter;

/// Gives a window its sheet tab bar, its sidebar of sheets and its named values, shown as the
/// settings say and following them as they change, and installs the View menu's Named Values.
void installSheetList(MainWindow* window, DocumentStore* store, AppSettings* settings,
                      NotificationCenter* notifications);

} // namespace lumo
