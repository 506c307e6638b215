#pragma once

#include <QObject>
#include <QPointF>
#include <QRectF>
#include <QString>

#include <map>
#include <optional>
#include <vector>

#include "LumoUI/plot/CurvePainter.h"
#include "LumoUI/plot/PlotBand.h"

class QContextMenuEvent;
class QImage;
class QMouseEvent;
class QPainter;

namespace lumo {

class CalcTextView;

/// The plots of a text view: the band of room under each plot line, the drawings painted in
/// those bands after the text, and what the pointer does over them (hovering a curve reads out
/// its point, dragging a surface sideways turns it, right-clicking copies or saves the image).
///
/// Plots are matched to lines by index, like the answers.
class PlotLayer : public QObject {
    Q_OBJECT

public:
    /// A plot drawn in view: its card, in viewport coordinates, and its title.
    struct PlotBox {
        QRectF rect;
        QString title;
        int line = 0;
    };

    /// A surface being turned by dragging: whose, where the drag began and the angle then.
    struct Rotating {
        QString title;
        QPointF start;
        double startAngle = 0;
    };

    /// Degrees of turn per pixel dragged sideways.
    static constexpr double degreesPerPixel = 0.6;

    explicit PlotLayer(CalcTextView* owner);

    bool showsPlots() const { return m_showsPlots; }
    void setShowsPlots(bool shows);

    /// The room reserved under a line, in pixels.
    qreal bandHeight(int line) const;
    /// The band under a line in viewport coordinates; empty when the line shows no plot.
    QRectF bandRect(int line) const;
    /// The plot's card inside its band.
    QRectF cardRect(int line) const;

    /// The plots in view, with their cards.
    std::vector<PlotBox> plotBoxes() const { return boxesIn(0, qreal(viewportHeight())); }
    const std::optional<Rotating>& rotating() const { return m_rotating; }
    /// The turn of a surface, kept per title for the run.
    double surfaceAngle(const QString& title) const;
    /// The point of a curve that the pointer hovers and its line, read out over the plot.
    std::optional<std::pair<int, CurveHover>> hoveredPoint() const { return m_hover; }

    /// The plot of a line as an image of its card's size, sharp for the screen it is on.
    QImage plotImage(int line) const;
    /// Writes a line's plot as a PNG file; false when it could not be written.
    bool savePlotImage(int line, const QString& path) const;
    void copyPlotImage(int line) const;

    /// How many plot drawings were made, to check that unchanged plots are not drawn again.
    int drawCount() const { return m_cache.drawCount(); }

    /// New results, font, colours or width: the bands and drawings follow.
    void resultsChanged();
    void fontChanged();
    void setStyle(const PlotStyle& style);

    void paint(QPainter& painter, const QRect& exposed);

    /// Pointer events over the viewport; true when a plot took them.
    bool mousePress(QMouseEvent* event);
    bool mouseMove(QMouseEvent* event);
    bool mouseRelease(QMouseEvent* event);
    void pointerLeft();
    bool contextMenu(QContextMenuEvent* event);

private:
    const PlotSpec* descriptionOf(int line) const;
    std::vector<PlotBox> boxesIn(qreal top, qreal bottom) const;
    int viewportHeight() const;
    std::optional<int> plotLineAt(const QPointF& point) const;
    void updateBands();
    void updateCursor(std::optional<int> line);
    void repaintLine(int line);

    CalcTextView* m_owner;
    PlotDrawingCache m_cache;
    std::vector<qreal> m_bands;
    std::optional<Rotating> m_rotating;
    std::optional<int> m_rotatingLine;
    std::map<QString, double> m_angles;
    std::optional<std::pair<int, CurveHover>> m_hover;
    bool m_showsPlots = true;
};

} // namespace lumo
