#include "LumoUI/plot/CurvePainter.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>
#include <limits>

#include "LumoUI/plot/PlotStyle.h"

namespace lumo {

namespace {

// Room above and below the highest and lowest value, as a share of the value range.
constexpr double verticalPadding = 0.06;

PlotRange joinedX(CurveSet curves) {
    PlotRange range{std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()};
    for (const PlotSpec* curve : curves) {
        range.low = std::min(range.low, curve->xRange.low);
        range.high = std::max(range.high, curve->xRange.high);
    }
    return range;
}

PlotRange joinedY(CurveSet curves) {
    PlotRange range{std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()};
    for (const PlotSpec* curve : curves) {
        range.low = std::min(range.low, curve->yRange.low);
        range.high = std::max(range.high, curve->yRange.high);
    }
    return range;
}

std::optional<std::string> unitOf(CurveSet curves) {
    return curves.empty() ? std::nullopt : curves.front()->unitLabel;
}

qreal widestLabel(const AxisTicks& ticks, const std::optional<std::string>& unit,
                  const QFontMetricsF& metrics) {
    qreal widest = 0;
    for (double value : ticks.values)
        widest = std::max(widest, metrics.horizontalAdvance(tickLabel(value, ticks.step, unit)));
    return widest;
}

} // namespace

CurveFrame::CurveFrame(CurveSet curves, const QRectF& body, const PlotStyle& style) {
    const QFontMetricsF metrics(style.labelFont());
    m_x = drawableRange(joinedX(curves));
    m_y = paddedRange(joinedY(curves), verticalPadding);
    // About one tick per five lines of height and one per eight label widths across.
    const int rows = std::clamp(int(body.height() / (metrics.height() * 2.1)), 2, 8);
    m_yTicks = AxisTicks::inside(m_y, rows);
    const qreal left = std::ceil(widestLabel(m_yTicks, unitOf(curves), metrics) + metrics.height() * 0.6);
    const qreal bottom = std::ceil(metrics.height() * 1.5);
    // Half a label of room on the right, so the last x label is not cut at the card's edge.
    const qreal right = std::ceil(metrics.horizontalAdvance(tickLabel(m_x.high, 1, std::nullopt)) / 2 + 2);
    m_area = QRectF(body.left() + left, body.top() + metrics.height() * 0.3,
                    std::max<qreal>(1, body.width() - left - right),
                    std::max<qreal>(1, body.height() - bottom - metrics.height() * 0.3));
    const qreal sample =
        metrics.horizontalAdvance(tickLabel(m_x.high, (m_x.high - m_x.low) / 8, std::nullopt));
    const int columns =
        std::clamp(int(m_area.width() / std::max<qreal>(sample * 2.2, metrics.height() * 4)), 2, 12);
    m_xTicks = AxisTicks::inside(m_x, columns);
}

QPointF CurveFrame::toPixel(double x, double y) const {
    const double u = (x - m_x.low) / (m_x.high - m_x.low);
    const double v = (y - m_y.low) / (m_y.high - m_y.low);
    // Far-off values (a curve near an asymptote) are held at a distance the painter copes with.
    const double limit = 1e5;
    return QPointF(m_area.left() + std::clamp(u, -limit, limit) * m_area.width(),
                   m_area.bottom() - std::clamp(v, -limit, limit) * m_area.height());
}

double CurveFrame::xAt(qreal pixel) const {
    return m_x.low + (pixel - m_area.left()) / m_area.width() * (m_x.high - m_x.low);
}

std::optional<CurveHover> curveHoverAt(const CurveFrame& frame, CurveSet curves, const QPointF& pointer) {
    if (!frame.area().adjusted(-2, -2, 2, 2).contains(pointer))
        return std::nullopt;
    const double x = frame.xAt(pointer.x());
    // A sample belongs to the pointer when it lies within one sample step of its x.
    std::optional<CurveHover> best;
    qreal bestDistance = std::numeric_limits<qreal>::infinity();
    for (std::size_t index = 0; index < curves.size(); ++index) {
        for (const auto& segment : curves[index]->segments) {
            if (segment.size() < 2 || x < segment.front().x || x > segment.back().x)
                continue;
            const auto after =
                std::lower_bound(segment.begin(), segment.end(), x,
                                 [](const PlotPoint& point, double at) { return point.x < at; });
            auto nearest = after;
            if (after == segment.end() || (after != segment.begin() && x - (after - 1)->x < after->x - x))
                nearest = after - 1;
            const qreal distance = std::abs(frame.toPixel(nearest->x, nearest->y).y() - pointer.y());
            if (distance < bestDistance) {
                bestDistance = distance;
                best = CurveHover{index, nearest->x, nearest->y};
            }
        }
    }
    return best;
}

void paintCurves(QPainter& painter, const CurveFrame& frame, CurveSet curves, const PlotStyle& style) {
    painter.save();
    const QRectF area = frame.area();
    const QFont font = style.labelFont();
    const QFontMetricsF metrics(font);
    painter.setFont(font);

    // Grid and tick labels.
    painter.setRenderHint(QPainter::Antialiasing, false);
    const auto& xTicks = frame.xTicks();
    const auto& yTicks = frame.yTicks();
    for (double value : yTicks.values) {
        const qreal y = std::round(frame.toPixel(0, value).y()) + 0.5;
        painter.setPen(QPen(style.grid, 1));
        painter.drawLine(QPointF(area.left(), y), QPointF(area.right(), y));
        painter.setPen(style.mutedText);
        const QRectF label(area.left() - metrics.height() * 0.4 - 400, y - metrics.height(), 400,
                           2 * metrics.height());
        painter.drawText(label, Qt::AlignRight | Qt::AlignVCenter | Qt::TextSingleLine,
                         tickLabel(value, yTicks.step, unitOf(curves)));
    }
    for (double value : xTicks.values) {
        const qreal x = std::round(frame.toPixel(value, 0).x()) + 0.5;
        painter.setPen(QPen(style.grid, 1));
        painter.drawLine(QPointF(x, area.top()), QPointF(x, area.bottom()));
        painter.setPen(style.axis);
        painter.drawLine(QPointF(x, area.bottom()), QPointF(x, area.bottom() + metrics.height() * 0.25));
        painter.setPen(style.mutedText);
        const QRectF label(x - 200, area.bottom() + metrics.height() * 0.3, 400, metrics.height());
        painter.drawText(label, Qt::AlignHCenter | Qt::AlignTop | Qt::TextSingleLine,
                         tickLabel(value, xTicks.step, std::nullopt));
    }
    // The axes through zero, when zero is in view, and the frame's left and bottom edges.
    painter.setPen(QPen(style.zeroLine, 1));
    const PlotRange xRange = frame.xRange();
    const PlotRange yRange = frame.yRange();
    if (yRange.low < 0 && yRange.high > 0) {
        const qreal y = std::round(frame.toPixel(0, 0).y()) + 0.5;
        painter.drawLine(QPointF(area.left(), y), QPointF(area.right(), y));
    }
    if (xRange.low < 0 && xRange.high > 0) {
        const qreal x = std::round(frame.toPixel(0, 0).x()) + 0.5;
        painter.drawLine(QPointF(x, area.top()), QPointF(x, area.bottom()));
    }
    painter.setPen(QPen(style.axis, 1));
    const qreal bottom = std::round(area.bottom()) + 0.5;
    const qreal left = std::round(area.left()) + 0.5;
    painter.drawLine(QPointF(left, bottom), QPointF(std::round(area.right()) + 0.5, bottom));
    painter.drawLine(QPointF(left, std::round(area.top())), QPointF(left, bottom));

    // The curves, clipped to the frame; each piece is its own path, so gaps stay open.
    painter.setRenderHint(QPainter::Antialiasing, true);
    painter.setClipRect(area.adjusted(-1, -2, 1, 2));
    const qreal width = std::max<qreal>(1.8, metrics.height() * 0.13);
    for (std::size_t index = 0; index < curves.size(); ++index) {
        QPainterPath path;
        for (const auto& segment : curves[index]->segments) {
            if (segment.size() < 2)
                continue;
            path.moveTo(frame.toPixel(segment.front().x, segment.front().y));
            for (std::size_t i = 1; i < segment.size(); ++i)
                path.lineTo(frame.toPixel(segment[i].x, segment[i].y));
        }
        painter.setPen(QPen(style.series[index % style.series.size()], width, Qt::SolidLine, Qt::RoundCap,
                            Qt::RoundJoin));
        painter.setBrush(Qt::NoBrush);
        painter.drawPath(path);
    }
    painter.restore();
}

void paintCurveHover(QPainter& painter, const CurveFrame& frame, CurveSet curves, const CurveHover& hover,
                     const PlotStyle& style) {
    if (hover.curve >= curves.size())
        return;
    painter.save();
    const QRectF area = frame.area();
    const QPointF point = frame.toPixel(hover.x, hover.y);
    const QColor colour = style.series[hover.curve % style.series.size()];
    painter.setClipRect(area.adjusted(-6, -6, 6, 6));
    painter.setRenderHint(QPainter::Antialiasing, false);
    QColor guide = style.axis;
    guide.setAlphaF(0.7f);
    painter.setPen(QPen(guide, 1, Qt::DashLine));
    const qreal x = std::round(point.x()) + 0.5;
    painter.drawLine(QPointF(x, area.top()), QPointF(x, area.bottom()));

    painter.setRenderHint(QPainter::Antialiasing, true);
    const QFontMetricsF metrics(style.labelFont());
    const qreal radius = metrics.height() * 0.24;
    painter.setPen(QPen(style.background, 2));
    painter.setBrush(colour);
    if (area.adjusted(-1, -1, 1, 1).contains(point))
        painter.drawEllipse(point, radius, radius);

    // The read-out sits beside the point, on whichever side has room.
    const double xStep = frame.xTicks().step / 100;
    const double yStep = frame.yTicks().step / 100;
    const QString text = QStringLiteral("x = %1    y = %2")
                             .arg(tickLabel(hover.x, xStep, std::nullopt),
                                  tickLabel(hover.y, yStep, curves[hover.curve]->unitLabel));
    painter.setFont(style.labelFont());
    const qreal padding = metrics.height() * 0.35;
    const QSizeF size(metrics.horizontalAdvance(text) + 2 * padding, metrics.height() + padding);
    QPointF corner(x + metrics.height() * 0.6, area.top() + metrics.height() * 0.3);
    if (corner.x() + size.width() > area.right())
        corner.setX(x - metrics.height() * 0.6 - size.width());
    const QRectF box(corner, size);
    painter.setClipping(false);
    QColor fill = style.background;
    fill.setAlphaF(0.94f);
    painter.setPen(QPen(style.border, 1));
    painter.setBrush(fill);
    painter.drawRoundedRect(box, padding, padding);
    painter.setPen(style.text);
    painter.drawText(box, Qt::AlignCenter | Qt::TextSingleLine, text);
    painter.restore();
}

} // namespace lumo
