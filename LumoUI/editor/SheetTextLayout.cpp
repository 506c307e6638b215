#include "LumoUI/editor/SheetTextLayout.h"

#include <QTextBlock>

namespace lumo {

SheetTextLayout::SheetTextLayout(QTextDocument* document) : QPlainTextDocumentLayout(document) {}

qreal SheetTextLayout::bandHeight(const QTextBlock&) const {
    return 0;
}

QRectF SheetTextLayout::blockBoundingRect(const QTextBlock& block) const {
    QRectF rect = QPlainTextDocumentLayout::blockBoundingRect(block);
    if (const qreal band = bandHeight(block); band > 0 && rect.isValid())
        rect.setHeight(rect.height() + band);
    return rect;
}

} // namespace lumo
