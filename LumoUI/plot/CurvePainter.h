#pragma once

#include <QPointF>
#include <QRectF>

#include <cstddef>
#include <optional>
#include <span>

#include "LumoKit/sheet/PlotDescription.h"
#include "LumoUI/plot/AxisTicks.h"

class QPainter;

namespace lumo {

struct PlotStyle;

/// The functions drawn together on one pair of axes; each is a curve description.
using CurveSet = std::span<const PlotSpec* const>;

/// Where a set of curves lands inside a chart area: the axes' ranges and ticks, and the
/// rectangle inside the tick labels where values are drawn.
class CurveFrame {
public:
    CurveFrame(CurveSet curves, const QRectF& body, const PlotStyle& style);

    const QRectF& area() const { return m_area; }
    PlotRange xRange() const { return m_x; }
    PlotRange yRange() const { return m_y; }
    const AxisTicks& xTicks() const { return m_xTicks; }
    const AxisTicks& yTicks() const { return m_yTicks; }

    QPointF toPixel(double x, double y) const;
    double xAt(qreal pixel) const;

private:
    QRectF m_area;
    PlotRange m_x;
    PlotRange m_y;
    AxisTicks m_xTicks;
    AxisTicks m_yTicks;
};

/// The point of a curve under the pointer: the sample nearest to the pointer's x on the
/// function whose value there is nearest to the pointer's y.
struct CurveHover {
    std::size_t curve = 0;
    double x = 0;
    double y = 0;
};

std::optional<CurveHover> curveHoverAt(const CurveFrame& frame, CurveSet curves, const QPointF& pointer);

/// Grid, axes with their tick labels, and every function in its own colour. A curve is drawn
/// piece by piece, so it breaks where it has no value.
void paintCurves(QPainter& painter, const CurveFrame& frame, CurveSet curves, const PlotStyle& style);

/// A guide at the hovered point and a read-out of its x and y.
void paintCurveHover(QPainter& painter, const CurveFrame& frame, CurveSet curves, const CurveHover& hover,
                     const PlotStyle& style);

} // namespace lumo
