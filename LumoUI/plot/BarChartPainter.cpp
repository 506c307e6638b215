#include "LumoUI/plot/BarChartPainter.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

#include "LumoKit/sheet/PlotDescription.h"
#include "LumoUI/plot/AxisTicks.h"
#include "LumoUI/plot/PlotStyle.h"

namespace lumo {

namespace {

// A bar fills this share of its slot; the rest is the gap to its neighbours.
constexpr qreal barShare = 0.64;

// A bar with its top (or, for a negative value, its bottom) corners rounded.
QPainterPath barPath(const QRectF& bar, qreal radius, bool negative) {
    radius = std::min({radius, bar.width() / 2, bar.height()});
    QPainterPath path;
    if (radius <= 0.5) {
        path.addRect(bar);
        return path;
    }
    const qreal diameter = 2 * radius;
    if (!negative) {
        path.moveTo(bar.bottomLeft());
        path.lineTo(bar.left(), bar.top() + radius);
        path.arcTo(QRectF(bar.left(), bar.top(), diameter, diameter), 180, -90);
        path.lineTo(bar.right() - radius, bar.top());
        path.arcTo(QRectF(bar.right() - diameter, bar.top(), diameter, diameter), 90, -90);
        path.lineTo(bar.bottomRight());
    } else {
        path.moveTo(bar.topLeft());
        path.lineTo(bar.right(), bar.top());
        path.lineTo(bar.right(), bar.bottom() - radius);
        path.arcTo(QRectF(bar.right() - diameter, bar.bottom() - diameter, diameter, diameter), 0, -90);
        path.lineTo(bar.left() + radius, bar.bottom());
        path.arcTo(QRectF(bar.left(), bar.bottom() - diameter, diameter, diameter), 270, -90);
    }
    path.closeSubpath();
    return path;
}

// Text centred on x at a fixed baseline: labels in different scripts (a fallback font for 円)
// still stand on one line.
void drawCentred(QPainter& painter, qreal x, qreal baseline, const QString& text,
                 const QFontMetricsF& metrics) {
    painter.drawText(QPointF(x - metrics.horizontalAdvance(text) / 2, baseline), text);
}

} // namespace

void paintBarChart(QPainter& painter, const QRectF& body, const PlotSpec& description,
                   const PlotStyle& style) {
    painter.save();
    const QFont font = style.labelFont();
    const QFontMetricsF metrics(font);
    painter.setFont(font);
    const qreal line = metrics.height();

    const PlotRange range = drawableRange(description.yRange);
    const int rows = std::clamp(int(body.height() / (line * 2.1)), 2, 8);
    const AxisTicks ticks = AxisTicks::inside(range, rows);
    qreal labelWidth = 0;
    for (double value : ticks.values)
        labelWidth = std::max(labelWidth,
                              metrics.horizontalAdvance(tickLabel(value, ticks.step, description.unitLabel)));
    // Values below the lowest bar need a line of room too, so a negative value never meets the labels.
    const QRectF area(body.left() + std::ceil(labelWidth + line * 0.6), body.top() + line * 0.3,
                      std::max<qreal>(1, body.width() - std::ceil(labelWidth + line * 0.6)),
                      std::max<qreal>(1, body.height() - line * 1.6 - line * 0.3));
    const auto yOf = [&](double value) {
        return area.bottom() - (value - range.low) / (range.high - range.low) * area.height();
    };

    painter.setRenderHint(QPainter::Antialiasing, false);
    for (double value : ticks.values) {
        const qreal y = std::round(yOf(value)) + 0.5;
        painter.setPen(QPen(style.grid, 1));
        painter.drawLine(QPointF(area.left(), y), QPointF(area.right(), y));
        painter.setPen(style.mutedText);
        painter.drawText(QRectF(area.left() - line * 0.4 - 400, y - line, 400, 2 * line),
                         Qt::AlignRight | Qt::AlignVCenter | Qt::TextSingleLine,
                         tickLabel(value, ticks.step, description.unitLabel));
    }

    const std::size_t count = description.bars.size();
    const qreal slot = area.width() / qreal(std::max<std::size_t>(1, count));
    const qreal barWidth = std::min(slot * barShare, line * 4.5);
    const qreal zero = yOf(std::clamp(0.0, range.low, range.high));
    // Every value is written only when the widest of them fits its slot; otherwise none is.
    qreal widestValue = 0;
    for (const PlotBar& bar : description.bars)
        widestValue =
            std::max(widestValue, metrics.horizontalAdvance(valueLabel(bar.value, description.unitLabel)));
    const bool writeValues = widestValue <= slot - line * 0.2;

    for (std::size_t i = 0; i < count; ++i) {
        const PlotBar& bar = description.bars[i];
        const qreal middle = area.left() + slot * (qreal(i) + 0.5);
        const qreal end = yOf(bar.value);
        const bool negative = bar.value < 0;
        const QRectF shape(middle - barWidth / 2, std::min(end, zero), barWidth, std::abs(end - zero));
        painter.setRenderHint(QPainter::Antialiasing, true);
        painter.setPen(Qt::NoPen);
        painter.setBrush(negative ? style.negative : style.series[0]);
        if (shape.height() >= 0.5)
            painter.drawPath(barPath(shape, line * 0.22, negative));

        if (writeValues) {
            painter.setPen(style.text);
            const qreal baseline = negative ? shape.bottom() + line * 0.15 + metrics.ascent()
                                            : shape.top() - line * 0.15 - metrics.descent();
            drawCentred(painter, middle, baseline, valueLabel(bar.value, description.unitLabel), metrics);
        }
        painter.setPen(style.mutedText);
        const QString label =
            metrics.elidedText(QString::fromStdString(bar.label), Qt::ElideRight, slot - line * 0.2);
        drawCentred(painter, middle, body.bottom() - metrics.descent() - line * 0.1, label, metrics);
    }

    // The zero line goes over the bars' feet, so rising and falling bars share one base.
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setPen(QPen(style.zeroLine, 1));
    const qreal zeroY = std::round(zero) + 0.5;
    painter.drawLine(QPointF(area.left(), zeroY), QPointF(area.right(), zeroY));
    painter.setPen(QPen(style.axis, 1));
    painter.drawLine(QPointF(std::round(area.left()) + 0.5, area.top()),
                     QPointF(std::round(area.left()) + 0.5, area.bottom()));
    painter.restore();
}

} // namespace lumo
