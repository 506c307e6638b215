#include "LumoCalc/window/PlotsWiring.h"

#include <QAction>
#include <QPointer>

#include "LumoCalc/window/MainWindow.h"
#include "LumoUI/editor/SheetEditor.h"
#include "LumoUI/settings/AppSettings.h"

namespace lumo {

void installPlotCommands(MainWindow* window, AppSettings* settings) {
    QAction* item = window->action(Command::showPlots);
    if (!item || !settings)
        return;
    const QString key = QLatin1String(SheetEditor::showGraphKey);
    item->setChecked(settings->viewPreference(key, SheetEditor::showsGraphByDefault).toBool());
    // The editors follow the preference themselves; the handler only records the choice.
    window->setCommandHandler(Command::showPlots,
                              [settings = QPointer<AppSettings>(settings), key](bool checked) {
                                  if (settings)
                                      settings->setViewPreference(key, checked);
                              });
    QObject::connect(settings, &AppSettings::viewPreferenceChanged, item,
                     [item, key](const QString& changed, const QVariant& value) {
                         if (changed == key)
                             item->setChecked(value.toBool());
                     });
}

} // namespace lumo
