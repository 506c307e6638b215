#include "LumoKit/language/Keywords.h"

#include "LumoKit/base/Unicode.h"

namespace lumo::keywords {

bool startsWithNumeral(std::string_view text) {
    if (text.empty())
        return false;
    char32_t first = 0;
    unicode::decodeFirst(text, first);
    return unicode::isNumber(first);
}

bool isNoteText(std::string_view trimmed) {
    if (trimmed.starts_with(noteMarker) || trimmed.starts_with("＃"))
        return true;
    return trimmed.starts_with('#') && !startsWithNumeral(trimmed.substr(1));
}

} // namespace lumo::keywords
