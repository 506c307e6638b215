#include "LumoUI/editor/SheetHighlighter.h"

namespace lumo {

SheetHighlighter::SheetHighlighter(QTextDocument* document) : QSyntaxHighlighter(document) {
    setColors({}, Appearance::dark);
}

void SheetHighlighter::setColors(const SyntaxColorOverrides& userColors, Appearance appearance) {
    std::array<QRgb, 8> colors{};
    for (SyntaxKind kind : allSyntaxKinds()) {
        const std::uint32_t rgba = Theme::color(kind, appearance, userColors);
        colors[std::size_t(kind)] =
            qRgb(int(rgba >> 24) & 0xFF, int(rgba >> 16) & 0xFF, int(rgba >> 8) & 0xFF);
    }
    if (colors == m_colors && m_formats[0].foreground().style() != Qt::NoBrush)
        return;
    m_colors = colors;
    for (SyntaxKind kind : allSyntaxKinds()) {
        QTextCharFormat format;
        format.setForeground(QColor(m_colors[std::size_t(kind)]));
        m_formats[std::size_t(kind)] = format;
    }
    if (document())
        rehighlight();
}

QColor SheetHighlighter::color(SyntaxKind kind) const {
    return QColor(m_colors[std::size_t(kind)]);
}

void SheetHighlighter::highlightBlock(const QString& text) {
    if (text.isEmpty())
        return;
    for (const SyntaxRange& range : highlightLine(text.toStdString()))
        setFormat(int(range.offset), int(range.length), m_formats[std::size_t(range.kind)]);
}

} // namespace lumo
