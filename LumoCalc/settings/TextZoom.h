#pragma once

namespace lumo {

class AppSettings;
class MainWindow;

/// Zoom In and Zoom Out step the text size through its four sizes, and Actual Size brings back
/// the standard one, for every window at once.
/// Each is disabled at its end of the steps.
void installTextZoom(MainWindow* window, AppSettings* settings);

} // namespace lumo
