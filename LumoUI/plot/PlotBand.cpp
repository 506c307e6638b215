#include "LumoUI/plot/PlotBand.h"

#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace lumo {

namespace {

// The band is this many text lines high, and a card at most this many lines wide.
constexpr qreal bandLines = 12.5;
constexpr qreal cardLines = 34;

} // namespace

qreal PlotBand::height(const QFont& textFont) {
    return std::round(QFontMetricsF(textFont).lineSpacing() * bandLines);
}

QRectF PlotBand::cardRect(const QRectF& band, const QFont& textFont) {
    const qreal line = QFontMetricsF(textFont).lineSpacing();
    const qreal width = std::min(band.width(), std::round(line * cardLines));
    return QRectF(band.left(), band.top() + std::round(line * 0.25), std::max<qreal>(0, width),
                  std::max<qreal>(0, band.height() - std::round(line * 0.75)));
}

const QPixmap& PlotDrawingCache::drawing(int line, const std::shared_ptr<const PlotSpec>& description,
                                         QSize size, qreal devicePixelRatio, const PlotView& view) {
    Entry& entry = m_entries[line];
    // A new evaluation brings new descriptions; one equal to the drawn one needs no drawing.
    const bool sameDescription = entry.description && description &&
                                 (entry.description == description || *entry.description == *description);
    if (sameDescription && entry.size == size && entry.devicePixelRatio == devicePixelRatio &&
        entry.view == view && !entry.pixmap.isNull()) {
        entry.description = description;
        return entry.pixmap;
    }
    entry.description = description;
    entry.size = size;
    entry.devicePixelRatio = devicePixelRatio;
    entry.view = view;
    QPixmap pixmap(QSize(std::max(1, int(std::ceil(size.width() * devicePixelRatio))),
                         std::max(1, int(std::ceil(size.height() * devicePixelRatio)))));
    pixmap.setDevicePixelRatio(devicePixelRatio);
    pixmap.fill(m_style.paper);
    if (description) {
        QPainter painter(&pixmap);
        paintPlot(painter, QRectF(QPointF(0, 0), QSizeF(size)), *description, m_style, view);
    }
    entry.pixmap = pixmap;
    ++m_drawCount;
    return entry.pixmap;
}

void PlotDrawingCache::setStyle(const PlotStyle& style) {
    m_style = style;
    m_entries.clear();
}

void PlotDrawingCache::dropFrom(int count) {
    m_entries.erase(m_entries.lower_bound(count), m_entries.end());
}

} // namespace lumo
