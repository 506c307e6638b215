#pragma once

namespace lumo {

class MainWindow;
class NotificationCenter;

/// Shows, in the window's status bar, what the answers of the selected lines add up to: how
/// many are numbers, their sum and their average. The bar is there only while a selection holds
/// two or more such answers.
void installSelectionStatus(MainWindow* window, NotificationCenter* notifications);

} // namespace lumo
