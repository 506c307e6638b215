#pragma once

#include <QString>

#include <string>

namespace lumo::textPositions {

/// The one bridge between the engine's positions and the text view's: the engine counts
/// user-perceived characters (grapheme clusters) in UTF-8 text, Qt counts UTF-16 code units.

std::string toEngine(const QString& text);
QString fromEngine(const std::string& text);

/// The number of grapheme clusters that begin before `utf16Offset` (clamped to the text).
int characterIndex(const QString& text, int utf16Offset);
/// The UTF-16 offset at which character `index` begins (the text's length past its end).
int utf16Offset(const QString& text, int characterIndex);

} // namespace lumo::textPositions
