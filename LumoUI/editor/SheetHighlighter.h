#pragma once

#include <QSyntaxHighlighter>
#include <QTextCharFormat>

#include <array>

#include "LumoKit/editing/SyntaxHighlighter.h"

namespace lumo {

/// Colours each line of the text view by the engine's own classification of its pieces, with
/// the user's colours or the theme's for the current appearance.
class SheetHighlighter : public QSyntaxHighlighter {
    Q_OBJECT

public:
    explicit SheetHighlighter(QTextDocument* document);

    /// Takes new colours and recolours the whole text when they differ from the current ones.
    void setColors(const SyntaxColorOverrides& userColors, Appearance appearance);
    QColor color(SyntaxKind kind) const;

protected:
    void highlightBlock(const QString& text) override;

private:
    std::array<QTextCharFormat, 8> m_formats;
    std::array<QRgb, 8> m_colors{};
};

} // namespace lumo
