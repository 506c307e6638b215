#include "LumoCalc/window/SheetListWiring.h"

#include <algorithm>

#include <QAction>
#include <QSplitter>

#include "LumoCalc/sheets/NamedValuesPanel.h"
#include "LumoCalc/sheets/SheetActions.h"
#include "LumoCalc/sheets/SheetSidebar.h"
#include "LumoCalc/sheets/SheetTabs.h"
#include "LumoCalc/window/MainWindow.h"
#include "LumoUI/settings/AppSettings.h"
#include "LumoUI/store/DocumentStore.h"
#include "LumoUI/store/SheetListModel.h"
#include "LumoUI/store/SheetSession.h"

namespace lumo {

namespace {

// The column beside the editor: the list of sheets above the named values. It is there while
// either of them is.
class SideColumn : public QSplitter {
public:
    SideColumn(SheetSidebar* sheets, NamedValuesPanel* namedValues, int width)
        : QSplitter(Qt::Vertical), m_sheets(sheets), m_namedValues(namedValues), m_width(width) {
        setObjectName(QStringLiteral("sideColumn"));
        setChildrenCollapsible(false);
        addWidget(sheets);
        addWidget(namedValues);
        setStretchFactor(0, 3);
        setStretchFactor(1, 2);
    }

    void apply(SheetListStyle style, bool showsNamedValues) {
        m_sheets->setVisible(style != SheetListStyle::tabs);
        m_namedValues->setVisible(showsNamedValues);
        setVisible(m_sheets->isVisibleTo(this) || m_namedValues->isVisibleTo(this));
    }

    // The editor takes the window's stretch, so the column opens at this width.
    QSize sizeHint() const override { return {m_width, QSplitter::sizeHint().height()}; }

private:
    SheetSidebar* m_sheets;
    NamedValuesPanel* m_namedValues;
    int m_width;
};

constexpr int minimumSideWidth = 150;
constexpr int defaultSideWidth = 220;
constexpr int maximumSideWidth = 600;

} // namespace

void installSheetList(MainWindow* window, DocumentStore* store, AppSettings* settings,
                      NotificationCenter* notifications) {
    auto* model = new SheetListModel(store, window);
    auto* actions = new SheetActions(store, window->session(), notifications, window);
    QObject::connect(actions, &SheetActions::newSheetRequested, window,
                     [window] { window->perform(Command::newSheet); });
    // A sheet dropped on this window's list, from wherever it came, is shown here.
    QObject::connect(model, &SheetListModel::sheetDropped, actions, &SheetActions::show);

    auto* tabs = new SheetTabs(model, actions, notifications);
    const int width =
        settings ? settings->viewPreference(QLatin1String(sideColumnWidthKey), defaultSideWidth).toInt()
                 : defaultSideWidth;
    auto* column = new SideColumn(new SheetSidebar(model, actions, notifications),
                                  new NamedValuesPanel(window->session(), notifications),
                                  std::clamp(width, minimumSideWidth, maximumSideWidth));
    column->setMinimumWidth(minimumSideWidth);
    window->setSheetTabs(tabs);
    window->setSheetSidebar(column);
    window->setCommandHandler(Command::nextSheet, [actions](bool) { actions->showNeighbour(1); });
    window->setCommandHandler(Command::previousSheet, [actions](bool) { actions->showNeighbour(-1); });

    const auto apply = [tabs, column, window, settings] {
        const SheetListStyle style = settings ? settings->sheetListStyle() : SheetListStyle::both;
        const bool showsNamedValues = settings ? settings->showsNamedValues() : true;
        tabs->setVisible(style != SheetListStyle::sidebar);
        column->apply(style, showsNamedValues);
        if (QAction* item = window->action(Command::showNamedValues))
            item->setChecked(showsNamedValues);
    };
    apply();
    if (!settings)
        return;
    QObject::connect(settings, &AppSettings::sheetListStyleChanged, column, apply);
    QObject::connect(settings, &AppSettings::showsNamedValuesChanged, column, apply);
    window->setCommandHandler(Command::showNamedValues,
                              [settings = QPointer<AppSettings>(settings)](bool checked) {
                                  if (settings)
                                      settings->setShowsNamedValues(checked);
                              });
}

} // namespace lumo
