#include "LumoUI/plot/PlotCard.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

#include "LumoUI/plot/PlotStyle.h"

namespace lumo {

namespace {

qreal unitOf(const PlotStyle& style) {
    return QFontMetricsF(style.font).height();
}

} // namespace

PlotCard PlotCard::layout(const QRectF& rect, const PlotStyle& style) {
    const qreal unit = unitOf(style);
    const qreal padding = std::round(unit * 0.55);
    PlotCard card;
    card.frame = rect.adjusted(0.5, 0.5, -0.5, -0.5);
    const QRectF inner = card.frame.adjusted(padding, padding * 0.7, -padding, -padding * 0.6);
    const qreal headerHeight = std::ceil(QFontMetricsF(style.titleFont()).height() * 1.25);
    card.header = QRectF(inner.left(), inner.top(), inner.width(), headerHeight);
    card.body = QRectF(inner.left(), card.header.bottom() + padding * 0.3, inner.width(),
                       std::max<qreal>(0, inner.bottom() - card.header.bottom() - padding * 0.3));
    return card;
}

void PlotCard::paintBackground(QPainter& painter, const PlotStyle& style) const {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(style.border, 1));
    painter.setBrush(style.background);
    const qreal radius = std::min<qreal>(10, unitOf(style) * 0.5);
    painter.drawRoundedRect(frame, radius, radius);
    painter.restore();
}

void PlotCard::paintTitle(QPainter& painter, const QString& title, const PlotStyle& style,
                          qreal legendWidth) const {
    painter.save();
    painter.setFont(style.titleFont());
    painter.setPen(style.text);
    const QFontMetricsF metrics(style.titleFont());
    const qreal room =
        std::max<qreal>(0, header.width() - legendWidth - (legendWidth > 0 ? unitOf(style) : 0));
    painter.drawText(QRectF(header.left(), header.top(), room, header.height()),
                     Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                     metrics.elidedText(title, Qt::ElideRight, room));
    painter.restore();
}

qreal PlotCard::paintLegend(QPainter& painter, const std::vector<LegendEntry>& entries,
                            const PlotStyle& style) const {
    if (entries.size() < 2)
        return 0;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    const QFont font = style.labelFont();
    const QFontMetricsF metrics(font);
    const qreal swatch = metrics.height() * 0.9;
    const qreal gap = metrics.height() * 0.45;
    const qreal maxName = header.width() * 0.45 / qreal(entries.size());
    qreal x = header.right();
    for (auto entry = entries.rbegin(); entry != entries.rend(); ++entry) {
        const QString name = metrics.elidedText(entry->name, Qt::ElideRight, maxName);
        const qreal nameWidth = metrics.horizontalAdvance(name);
        x -= nameWidth;
        painter.setFont(font);
        painter.setPen(style.text);
        painter.drawText(QRectF(x, header.top(), nameWidth + 1, header.height()),
                         Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, name);
        x -= gap * 0.5 + swatch;
        const qreal middle = header.center().y();
        painter.setPen(QPen(entry->colour, 2.5, Qt::SolidLine, Qt::RoundCap));
        painter.drawLine(QPointF(x, middle), QPointF(x + swatch, middle));
        x -= gap * 1.5;
    }
    painter.restore();
    return header.right() - x;
}

void paintPlotMessage(QPainter& painter, const QRectF& rect, const QString& message, const PlotStyle& style) {
    painter.save();
    painter.setFont(style.font);
    painter.setPen(style.failure);
    painter.drawText(rect, Qt::AlignCenter | Qt::TextWordWrap, message);
    painter.restore();
}

} // namespace lumo
