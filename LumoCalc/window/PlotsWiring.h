#pragma once

namespace lumo {

class AppSettings;
class MainWindow;

/// View ▸ Show Plots: its check mark follows "lumo.showGraph" in every window, and choosing it
/// shows or hides the plots of every editor.
void installPlotCommands(MainWindow* window, AppSettings* settings);

} // namespace lumo
