#pragma once

#include <QColor>
#include <QFont>

#include <array>

#include "LumoUI/settings/Theme.h"

namespace lumo {

/// The colours and fonts a plot is drawn with. Everything a painter needs comes from here, so
/// the same description draws alike in the editor, in a copied image and in an export.
struct PlotStyle {
    QColor paper;      ///< the page the card stands on (the text view's background)
    QColor background; ///< the plot's own card behind the axes
    QColor border;     ///< the card's outline
    QColor text;       ///< title, tick labels, legend
    QColor mutedText;  ///< axis captions and the hover read-out's secondary text
    QColor axis;       ///< axis lines and tick marks
    QColor grid;       ///< grid lines at the ticks
    QColor zeroLine;   ///< the line at zero across bars and curves
    QColor failure;    ///< a message drawn in place of a plot
    /// One colour per function of a curve, in turn; bars take the first.
    std::array<QColor, 5> series;
    QColor negative; ///< bars below zero
    /// Heights of a surface run from the low colour through the middle one to the high one.
    QColor surfaceLow;
    QColor surfaceMiddle;
    QColor surfaceHigh;
    QColor mesh; ///< the lines of a surface's grid
    QFont font;  ///< tick labels and legend; the title is set a little larger

    /// The colours of an appearance, with the user's syntax colours for the series (names,
    /// functions, units, keywords and quoted text lend theirs), and the text view's font.
    static PlotStyle make(Appearance appearance, const SyntaxColorOverrides& userColors = {},
                          const QFont& textFont = QFont());

    /// The title's font: the text font, a little larger and heavier.
    QFont titleFont() const;
    /// The tick labels' font: a little smaller than the text.
    QFont labelFont() const;
};

} // namespace lumo
