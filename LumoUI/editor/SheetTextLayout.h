#pragma once

#include <QPlainTextDocumentLayout>

#include <functional>

namespace lumo {

/// The text view's document layout. It can reserve a band of room under a line (for a plot
/// drawn there), which the line's bounding rectangle then includes, so every geometry the view
/// and its answer column read from the layout already accounts for it.
class SheetTextLayout : public QPlainTextDocumentLayout {
    Q_OBJECT

public:
    explicit SheetTextLayout(QTextDocument* document);

    /// Says how much room goes under each line, in pixels; without one there is none.
    using BandHeights = std::function<qreal(const QTextBlock& block)>;
    void setBandHeights(BandHeights heights);

    /// Room under a line, in pixels; zero by default.
    qreal bandHeight(const QTextBlock& block) const;

    /// The heights that setBandHeights() gives changed: the view's scroll range and painting
    /// follow.
    void bandsChanged();

    QRectF blockBoundingRect(const QTextBlock& block) const override;

private:
    BandHeights m_bandHeights;
};

} // namespace lumo
