#pragma once

#include <QRectF>

#include "LumoKit/sheet/PlotDescription.h"
#include "LumoUI/plot/CurvePainter.h"

class QPainter;

namespace lumo {

struct PlotStyle;

/// How a plot is looked at besides its description: the turn of a surface.
struct PlotView {
    static constexpr double defaultSurfaceAngle = 35;

    /// The turn of a surface about its upright axis, in degrees.
    double surfaceAngle = defaultSurfaceAngle;

    bool operator==(const PlotView&) const = default;
};

/// Draws a plot description on its card, filling `rect`: the title and the curve, the bars or
/// the surface the description holds.
void paintPlot(QPainter& painter, const QRectF& rect, const PlotSpec& description, const PlotStyle& style,
               const PlotView& view = {});

/// Several functions on one pair of axes, each in its own colour, with a legend of their
/// titles when there is more than one.
void paintCurvePlot(QPainter& painter, const QRectF& rect, CurveSet curves, const PlotStyle& style);

/// Where a curve drawn by paintPlot() into `rect` puts its values, to find the point under the
/// pointer.
CurveFrame curveFrameFor(const QRectF& rect, const PlotSpec& description, const PlotStyle& style);

} // namespace lumo
