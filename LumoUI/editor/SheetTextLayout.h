#pragma once

#include <QPlainTextDocumentLayout>

namespace lumo {

/// The text view's document layout. It can reserve a band of room under a line (for a plot
/// drawn there), which the line's bounding rectangle then includes, so every geometry the view
/// and its answer column read from the layout already accounts for it.
class SheetTextLayout : public QPlainTextDocumentLayout {
    Q_OBJECT

public:
    explicit SheetTextLayout(QTextDocument* document);

    /// Room under a line, in pixels; zero by default.
    virtual qreal bandHeight(const QTextBlock& block) const;

    QRectF blockBoundingRect(const QTextBlock& block) const override;
};

} // namespace lumo
