#include "LumoUI/editor/TextPositions.h"

#include <algorithm>

#include "LumoKit/base/Unicode.h"

namespace lumo::textPositions {

std::string toEngine(const QString& text) {
    return text.toStdString();
}

QString fromEngine(const std::string& text) {
    return QString::fromStdString(text);
}

int characterIndex(const QString& text, int utf16Offset) {
    const int clamped = std::clamp(utf16Offset, 0, int(text.size()));
    const std::string utf8 = text.left(clamped).toStdString();
    return int(unicode::graphemeCount(utf8));
}

int utf16Offset(const QString& text, int characterIndex) {
    if (characterIndex <= 0)
        return 0;
    const std::string utf8 = text.toStdString();
    const std::vector<std::size_t> boundaries = unicode::graphemeBoundaries(utf8);
    // The last boundary is the text's size, so an index past the end lands there.
    const std::size_t index = std::min<std::size_t>(std::size_t(characterIndex), boundaries.size() - 1);
    return int(unicode::utf16OffsetOfByte(utf8, boundaries[index]));
}

} // namespace lumo::textPositions
