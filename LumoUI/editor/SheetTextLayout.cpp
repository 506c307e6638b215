#include "LumoUI/editor/SheetTextLayout.h"

#include <QTextBlock>

#include <utility>

namespace lumo {

SheetTextLayout::SheetTextLayout(QTextDocument* document) : QPlainTextDocumentLayout(document) {}

void SheetTextLayout::setBandHeights(BandHeights heights) {
    m_bandHeights = std::move(heights);
    bandsChanged();
}

qreal SheetTextLayout::bandHeight(const QTextBlock& block) const {
    return m_bandHeights ? m_bandHeights(block) : 0;
}

void SheetTextLayout::bandsChanged() {
    // The bounding rectangles are asked for afresh on every use, so announcing the change is
    // all it takes: the view recomputes its scroll range and paints everything again.
    emit documentSizeChanged(documentSize());
    emit update(QRectF());
}

QRectF SheetTextLayout::blockBoundingRect(const QTextBlock& block) const {
    QRectF rect = QPlainTextDocumentLayout::blockBoundingRect(block);
    if (const qreal band = bandHeight(block); band > 0 && rect.isValid())
        rect.setHeight(rect.height() + band);
    return rect;
}

} // namespace lumo
