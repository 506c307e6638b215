#include "LumoCalc/settings/TextZoom.h"

#include <QAction>
#include <QPointer>

#include "LumoCalc/window/MainWindow.h"
#include "LumoUI/settings/AppSettings.h"
#include "LumoUI/settings/ViewStyle.h"

namespace lumo {

void installTextZoom(MainWindow* window, AppSettings* settings) {
    if (!settings)
        return;
    const QPointer<AppSettings> guarded(settings);
    window->setCommandHandler(Command::zoomIn, [guarded](bool) {
        if (guarded)
            guarded->setTextSize(ViewStyle::larger(guarded->textSize()));
    });
    window->setCommandHandler(Command::zoomOut, [guarded](bool) {
        if (guarded)
            guarded->setTextSize(ViewStyle::smaller(guarded->textSize()));
    });
    window->setCommandHandler(Command::actualSize, [guarded](bool) {
        if (guarded)
            guarded->setTextSize(TextSizeSetting::standard);
    });
    const auto updateEnds = [window](TextSizeSetting size) {
        window->action(Command::zoomIn)->setEnabled(ViewStyle::larger(size) != size);
        window->action(Command::zoomOut)->setEnabled(ViewStyle::smaller(size) != size);
        window->action(Command::actualSize)->setEnabled(size != TextSizeSetting::standard);
    };
    QObject::connect(settings, &AppSettings::textSizeChanged, window, updateEnds);
    updateEnds(settings->textSize());
}

} // namespace lumo
