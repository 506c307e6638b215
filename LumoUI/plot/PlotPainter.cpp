#include "LumoUI/plot/PlotPainter.h"

#include <QPainter>

#include <vector>

#include "LumoKit/base/Language.h"
#include "LumoUI/plot/BarChartPainter.h"
#include "LumoUI/plot/PlotCard.h"
#include "LumoUI/plot/PlotStyle.h"
#include "LumoUI/plot/SurfacePainter.h"

namespace lumo {

namespace {

bool hasSomethingToDraw(const PlotSpec& description) {
    switch (description.kind) {
    case PlotSpec::Kind::curve:
        return !description.segments.empty();
    case PlotSpec::Kind::bars:
        return !description.bars.empty();
    case PlotSpec::Kind::surface:
        return !description.surface.empty();
    }
    return false;
}

} // namespace

void paintPlot(QPainter& painter, const QRectF& rect, const PlotSpec& description, const PlotStyle& style,
               const PlotView& view) {
    const PlotCard card = PlotCard::layout(rect, style);
    card.paintBackground(painter, style);
    card.paintTitle(painter, QString::fromStdString(description.title), style);
    if (!hasSomethingToDraw(description)) {
        paintPlotMessage(painter, card.body,
                         QString::fromStdString(L10n::pick("描けるものがありません", "Nothing to draw")),
                         style);
        return;
    }
    switch (description.kind) {
    case PlotSpec::Kind::curve: {
        const PlotSpec* curves[] = {&description};
        paintCurves(painter, CurveFrame(curves, card.body, style), curves, style);
        break;
    }
    case PlotSpec::Kind::bars:
        paintBarChart(painter, card.body, description, style);
        break;
    case PlotSpec::Kind::surface:
        paintSurface(painter, card.body, description, style, view.surfaceAngle);
        break;
    }
}

void paintCurvePlot(QPainter& painter, const QRectF& rect, CurveSet curves, const PlotStyle& style) {
    const PlotCard card = PlotCard::layout(rect, style);
    card.paintBackground(painter, style);
    std::vector<PlotCard::LegendEntry> legend;
    for (std::size_t i = 0; i < curves.size(); ++i)
        legend.push_back({QString::fromStdString(curves[i]->title), style.series[i % style.series.size()]});
    const qreal legendWidth = card.paintLegend(painter, legend, style);
    // With a legend, the legend names the functions and the title stays empty.
    if (curves.size() == 1)
        card.paintTitle(painter, QString::fromStdString(curves.front()->title), style, legendWidth);
    if (!curves.empty())
        paintCurves(painter, CurveFrame(curves, card.body, style), curves, style);
}

CurveFrame curveFrameFor(const QRectF& rect, const PlotSpec& description, const PlotStyle& style) {
    const PlotSpec* curves[] = {&description};
    return CurveFrame(curves, PlotCard::layout(rect, style).body, style);
}

} // namespace lumo
