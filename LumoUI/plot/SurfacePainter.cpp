#include "LumoUI/plot/SurfacePainter.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QPolygonF>

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <utility>

#include "LumoKit/sheet/PlotDescription.h"
#include "LumoUI/plot/AxisTicks.h"
#include "LumoUI/plot/PlotStyle.h"
#include "LumoUI/plot/SurfaceProjection.h"

namespace lumo {

namespace {

using BoxPoint = SurfaceProjection::BoxPoint;
constexpr double floorZ = -SurfaceProjection::boxHalfHeight;
constexpr double ceilingZ = SurfaceProjection::boxHalfHeight;

QColor mix(const QColor& a, const QColor& b, double amount) {
    return QColor::fromRgbF(float(a.redF() + (b.redF() - a.redF()) * amount),
                            float(a.greenF() + (b.greenF() - a.greenF()) * amount),
                            float(a.blueF() + (b.blueF() - a.blueF()) * amount));
}

QColor shaded(const QColor& colour, double light) {
    const double factor = 0.6 + 0.4 * light;
    return QColor::fromRgbF(float(colour.redF() * factor), float(colour.greenF() * factor),
                            float(colour.blueF() * factor));
}

double boxCoordinate(double value, PlotRange range) {
    return -1 + 2 * (value - range.low) / (range.high - range.low);
}

// The floor and the walls that stand behind the surface at this angle, with grid lines at the
// ticks, so the eye can read heights against them.
void paintBackPanes(QPainter& painter, const SurfaceProjection& projection, const AxisTicks& xTicks,
                    const AxisTicks& yTicks, const AxisTicks& zTicks, const PlotSpec& description,
                    const PlotStyle& style) {
    const PlotRange xRange = drawableRange(description.xRange);
    const PlotRange yRange = drawableRange(description.yRange);
    QColor pane = style.grid;
    pane.setAlphaF(0.35f);
    const auto polygon = [&](std::initializer_list<BoxPoint> points) {
        QPolygonF shape;
        for (const BoxPoint& point : points)
            shape << projection.toScreen(point);
        return shape;
    };
    painter.setPen(Qt::NoPen);
    painter.setBrush(pane);
    painter.drawPolygon(polygon({{-1, -1, floorZ}, {1, -1, floorZ}, {1, 1, floorZ}, {-1, 1, floorZ}}));

    painter.setPen(QPen(style.grid, 1));
    for (double value : xTicks.values) {
        const double x = boxCoordinate(value, xRange);
        painter.drawLine(projection.toScreen({x, -1, floorZ}), projection.toScreen({x, 1, floorZ}));
    }
    for (double value : yTicks.values) {
        const double y = boxCoordinate(value, yRange);
        painter.drawLine(projection.toScreen({-1, y, floorZ}), projection.toScreen({1, y, floorZ}));
    }
    // The two walls whose middles lie beyond the box's centre.
    for (const auto& [x, y] :
         std::initializer_list<std::pair<double, double>>{{1, 0}, {-1, 0}, {0, 1}, {0, -1}}) {
        if (projection.depthOf({x, y, 0}) <= 0)
            continue;
        const BoxPoint a = x != 0 ? BoxPoint{x, -1, 0} : BoxPoint{-1, y, 0};
        const BoxPoint b = x != 0 ? BoxPoint{x, 1, 0} : BoxPoint{1, y, 0};
        painter.setPen(Qt::NoPen);
        painter.setBrush(pane);
        painter.drawPolygon(
            polygon({{a.x, a.y, floorZ}, {b.x, b.y, floorZ}, {b.x, b.y, ceilingZ}, {a.x, a.y, ceilingZ}}));
        painter.setPen(QPen(style.grid, 1));
        for (double value : zTicks.values) {
            const double z = projection.boxZ(value);
            painter.drawLine(projection.toScreen({a.x, a.y, z}), projection.toScreen({b.x, b.y, z}));
        }
    }
    painter.setPen(QPen(style.axis, 1));
    painter.setBrush(Qt::NoBrush);
    painter.drawPolygon(polygon({{-1, -1, floorZ}, {1, -1, floorZ}, {1, 1, floorZ}, {-1, 1, floorZ}}));
}

void paintFaces(QPainter& painter, const SurfaceProjection& projection, const PlotStyle& style) {
    QPen mesh(style.mesh, 0.7);
    mesh.setJoinStyle(Qt::BevelJoin);
    painter.setPen(mesh);
    for (const SurfaceProjection::Face& face : projection.faces()) {
        const QColor colour = face.height < 0.5
                                  ? mix(style.surfaceLow, style.surfaceMiddle, face.height * 2)
                                  : mix(style.surfaceMiddle, style.surfaceHigh, face.height * 2 - 1);
        painter.setBrush(shaded(colour, face.light));
        painter.drawConvexPolygon(face.corners.data(), face.cornerCount);
    }
}

void drawLabel(QPainter& painter, const QPointF& at, const QString& text, Qt::Alignment alignment,
               const QFontMetricsF& metrics) {
    const qreal width = metrics.horizontalAdvance(text) + 2;
    const qreal height = metrics.height();
    QRectF box(at.x() - width / 2, at.y() - height / 2, width, height);
    if (alignment & Qt::AlignRight)
        box.moveRight(at.x());
    else if (alignment & Qt::AlignLeft)
        box.moveLeft(at.x());
    painter.drawText(box, Qt::AlignCenter | Qt::TextSingleLine, text);
}

// Tick labels along the floor edges nearer to the viewer and up the corner farthest left.
void paintAxes(QPainter& painter, const SurfaceProjection& projection, const AxisTicks& xTicks,
               const AxisTicks& yTicks, const AxisTicks& zTicks, const PlotSpec& description,
               const PlotStyle& style) {
    const QFontMetricsF metrics(style.labelFont());
    painter.setFont(style.labelFont());
    const PlotRange xRange = drawableRange(description.xRange);
    const PlotRange yRange = drawableRange(description.yRange);
    const QPointF centre = projection.toScreen({0, 0, floorZ});
    const auto outward = [&](const QPointF& point, qreal distance) {
        QPointF away = point - centre;
        const qreal length = std::hypot(away.x(), away.y());
        return length > 0 ? point + away / length * distance : point;
    };
    const auto alignFor = [&](const QPointF& point) {
        const qreal dx = point.x() - centre.x();
        if (std::abs(dx) < metrics.height())
            return Qt::AlignHCenter;
        return dx < 0 ? Qt::AlignRight : Qt::AlignLeft;
    };

    // The ground edges nearer to the viewer carry the x and y labels.
    const double yEdge = projection.depthOf({0, 1, floorZ}) < projection.depthOf({0, -1, floorZ}) ? 1 : -1;
    const double xEdge = projection.depthOf({1, 0, floorZ}) < projection.depthOf({-1, 0, floorZ}) ? 1 : -1;
    const qreal gap = metrics.height() * 0.55;
    painter.setPen(style.mutedText);
    for (double value : xTicks.values) {
        const QPointF at = outward(projection.toScreen({boxCoordinate(value, xRange), yEdge, floorZ}), gap);
        drawLabel(painter, at, tickLabel(value, xTicks.step, std::nullopt), alignFor(at), metrics);
    }
    for (double value : yTicks.values) {
        const QPointF at = outward(projection.toScreen({xEdge, boxCoordinate(value, yRange), floorZ}), gap);
        drawLabel(painter, at, tickLabel(value, yTicks.step, std::nullopt), alignFor(at), metrics);
    }
    QFont nameFont = style.labelFont();
    nameFont.setItalic(true);
    nameFont.setWeight(QFont::DemiBold);
    painter.setFont(nameFont);
    painter.setPen(style.text);
    const QPointF xName = outward(projection.toScreen({0, yEdge, floorZ}), gap + metrics.height() * 1.25);
    drawLabel(painter, xName, QStringLiteral("x"), Qt::AlignHCenter, metrics);
    const QPointF yName = outward(projection.toScreen({xEdge, 0, floorZ}), gap + metrics.height() * 1.25);
    drawLabel(painter, yName, QStringLiteral("y"), Qt::AlignHCenter, metrics);

    // The upright axis stands at the corner drawn farthest left.
    BoxPoint corner{-1, -1, floorZ};
    for (const BoxPoint candidate :
         {BoxPoint{1, -1, floorZ}, BoxPoint{1, 1, floorZ}, BoxPoint{-1, 1, floorZ}})
        if (projection.toScreen(candidate).x() < projection.toScreen(corner).x())
            corner = candidate;
    painter.setPen(QPen(style.axis, 1));
    const QPointF bottom = projection.toScreen({corner.x, corner.y, floorZ});
    const QPointF top = projection.toScreen({corner.x, corner.y, ceilingZ});
    painter.drawLine(bottom, top);
    painter.setFont(style.labelFont());
    painter.setPen(style.mutedText);
    const qreal tick = metrics.height() * 0.3;
    for (double value : zTicks.values) {
        const QPointF at = projection.toScreen({corner.x, corner.y, projection.boxZ(value)});
        // The floor's corner belongs to the ground axes' labels.
        if (bottom.y() - at.y() < metrics.height() * 0.8)
            continue;
        painter.setPen(QPen(style.axis, 1));
        painter.drawLine(at, at - QPointF(tick, 0));
        painter.setPen(style.mutedText);
        drawLabel(painter, at - QPointF(tick + metrics.height() * 0.25, 0),
                  tickLabel(value, zTicks.step, description.unitLabel), Qt::AlignRight, metrics);
    }
    painter.setFont(nameFont);
    painter.setPen(style.text);
    drawLabel(painter, top - QPointF(0, metrics.height() * 0.9), QStringLiteral("z"), Qt::AlignHCenter,
              metrics);
}

} // namespace

void paintSurface(QPainter& painter, const QRectF& body, const PlotSpec& description, const PlotStyle& style,
                  double angleDegrees) {
    painter.save();
    const QFontMetricsF metrics(style.labelFont());
    const PlotRange zRange = drawableRange(description.zRange.value_or(PlotRange{0, 1}));
    // About one z tick per two lines of the box's height.
    const qreal boxHeight = (body.height() - metrics.height() * 3.3) * 0.45;
    const AxisTicks zTicks =
        AxisTicks::inside(zRange, std::clamp(int(boxHeight / (metrics.height() * 1.6)), 4, 6));
    qreal zLabels = 0;
    for (double value : zTicks.values)
        zLabels = std::max(zLabels,
                           metrics.horizontalAdvance(tickLabel(value, zTicks.step, description.unitLabel)));
    // Room for the tick labels around the box: the widest z label on the left, a label and an
    // axis name below, and the z axis's name above.
    const qreal side = std::max(zLabels + metrics.height(), metrics.height() * 3.2);
    const QRectF box =
        body.adjusted(side, metrics.height() * 1.1, -metrics.height() * 2.4, -metrics.height() * 2.2);
    const SurfaceProjection projection(description, box, angleDegrees);
    const AxisTicks xTicks = AxisTicks::inside(drawableRange(description.xRange), 4);
    const AxisTicks yTicks = AxisTicks::inside(drawableRange(description.yRange), 4);

    painter.setRenderHint(QPainter::Antialiasing, true);
    paintBackPanes(painter, projection, xTicks, yTicks, zTicks, description, style);
    paintFaces(painter, projection, style);
    paintAxes(painter, projection, xTicks, yTicks, zTicks, description, style);
    painter.restore();
}

} // namespace lumo
