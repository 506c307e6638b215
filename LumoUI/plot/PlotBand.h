#pragma once

#include <QFont>
#include <QPixmap>
#include <QRectF>

#include <map>
#include <memory>

#include "LumoKit/sheet/PlotDescription.h"
#include "LumoUI/plot/PlotPainter.h"
#include "LumoUI/plot/PlotStyle.h"

namespace lumo {

/// The room a plot takes under its line in the text.
namespace PlotBand {

/// The band's height for the text's font: about a dozen lines, so plots grow with the text.
qreal height(const QFont& textFont);
/// Where the plot's card goes inside a band as wide as the text: the card keeps a margin
/// above and below, and is no wider than it reads well.
QRectF cardRect(const QRectF& band, const QFont& textFont);

} // namespace PlotBand

/// The drawings of the plots in a text view, kept per line between paints. A line's drawing is
/// made again only when its description, its size, its view or the style changes, so scrolling
/// and typing elsewhere only copy pixels.
class PlotDrawingCache {
public:
    /// The drawing of `description` for `line` at `size` (device-independent pixels).
    const QPixmap& drawing(int line, const std::shared_ptr<const PlotSpec>& description, QSize size,
                           qreal devicePixelRatio, const PlotView& view);

    /// New colours or fonts: every drawing is made again when next asked for.
    void setStyle(const PlotStyle& style);
    const PlotStyle& style() const { return m_style; }

    /// Forgets the drawings of lines from `count` on (the text got shorter).
    void dropFrom(int count);
    void clear() { m_entries.clear(); }

    /// How many drawings were made since the cache was created.
    int drawCount() const { return m_drawCount; }

private:
    struct Entry {
        std::shared_ptr<const PlotSpec> description;
        QSize size;
        qreal devicePixelRatio = 1;
        PlotView view;
        QPixmap pixmap;
    };

    PlotStyle m_style = PlotStyle::make(Appearance::light);
    std::map<int, Entry> m_entries;
    int m_drawCount = 0;
};

} // namespace lumo
