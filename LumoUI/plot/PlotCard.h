#pragma once

#include <QColor>
#include <QRectF>
#include <QString>

#include <vector>

class QPainter;

namespace lumo {

struct PlotStyle;

/// The card a plot is drawn on: a rounded panel with the title in a header row and the chart
/// below it. Every measure follows the style's font, so the card grows with the text size.
struct PlotCard {
    QRectF frame;  ///< the whole card
    QRectF header; ///< title on the left, legend on the right
    QRectF body;   ///< where the chart goes

    static PlotCard layout(const QRectF& rect, const PlotStyle& style);

    void paintBackground(QPainter& painter, const PlotStyle& style) const;
    /// The title, elided to the room the legend leaves.
    void paintTitle(QPainter& painter, const QString& title, const PlotStyle& style,
                    qreal legendWidth = 0) const;

    struct LegendEntry {
        QString name;
        QColor colour;
    };
    /// A legend at the right of the header; returns its width, so the title stays clear of it.
    qreal paintLegend(QPainter& painter, const std::vector<LegendEntry>& entries,
                      const PlotStyle& style) const;
};

/// A message in place of a chart, e.g. for a description without anything to draw.
void paintPlotMessage(QPainter& painter, const QRectF& rect, const QString& message, const PlotStyle& style);

} // namespace lumo
