#include "LumoKit/base/Unicode.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include <utf8proc.h>

namespace lumo::unicode {

namespace {

constexpr char32_t replacementCharacter = 0xFFFD;

// Decodes one scalar at the start of text; returns its byte length (at least 1).
std::size_t decodeOne(std::string_view text, char32_t& scalar) {
    utf8proc_int32_t cp = 0;
    auto length = utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
                                   static_cast<utf8proc_ssize_t>(text.size()), &cp);
    if (length <= 0) {
        scalar = replacementCharacter;
        return 1;
    }
    scalar = static_cast<char32_t>(cp);
    return static_cast<std::size_t>(length);
}

template <typename Map> std::string mapScalars(std::string_view text, Map map) {
    std::string out;
    out.reserve(text.size());
    // ASCII maps to ASCII, so such text needs no decoding.
    if (isAscii(text)) {
        for (char c : text)
            out += static_cast<char>(map(static_cast<utf8proc_int32_t>(c)));
        return out;
    }
    for (char32_t c : decode(text))
        out += encode(static_cast<char32_t>(map(static_cast<utf8proc_int32_t>(c))));
    return out;
}

// Calls visit with the byte offset of each grapheme cluster's start. Between two ASCII
// characters other than CR LF there is always a break, and no rule looks back across one,
// so segmentation starts afresh there; mostly-ASCII text then needs few lookups.
template <typename Visit> void forEachClusterStart(std::string_view text, Visit visit) {
    utf8proc_int32_t state = 0;
    char32_t previous = 0;
    for (std::size_t offset = 0; offset < text.size();) {
        const auto byte = static_cast<unsigned char>(text[offset]);
        if (byte < 0x80 && previous < 0x80 && !(previous == U'\r' && byte == '\n')) {
            visit(offset);
            state = 0;
            previous = byte;
            ++offset;
            continue;
        }
        char32_t c;
        const std::size_t length = decodeOne(text.substr(offset), c);
        if (offset == 0 || utf8proc_grapheme_break_stateful(static_cast<utf8proc_int32_t>(previous),
                                                            static_cast<utf8proc_int32_t>(c), &state))
            visit(offset);
        offset += length;
        previous = c;
    }
}

// The trim of a text with invalid bytes: each becomes U+FFFD.
std::string trimAndRepair(std::string_view text) {
    std::u32string scalars = decode(text);
    std::size_t begin = 0, end = scalars.size();
    while (begin < end && isWhitespace(scalars[begin]))
        ++begin;
    while (end > begin && isWhitespace(scalars[end - 1]))
        --end;
    return encode(std::u32string_view(scalars).substr(begin, end - begin));
}

} // namespace

bool isAscii(std::string_view text) {
    // Eight bytes at a time: every line is asked this several times on its way to an answer.
    std::size_t i = 0;
    for (; i + 8 <= text.size(); i += 8) {
        std::uint64_t word;
        std::memcpy(&word, text.data() + i, 8);
        if (word & 0x8080808080808080u)
            return false;
    }
    for (; i < text.size(); ++i) {
        if (static_cast<unsigned char>(text[i]) >= 0x80)
            return false;
    }
    return true;
}

std::u32string decode(std::string_view text) {
    std::u32string out;
    out.reserve(text.size());
    while (!text.empty()) {
        char32_t c;
        text.remove_prefix(decodeOne(text, c));
        out.push_back(c);
    }
    return out;
}

std::size_t decodeFirst(std::string_view text, char32_t& scalar) {
    if (static_cast<unsigned char>(text.front()) < 0x80) {
        scalar = static_cast<char32_t>(text.front());
        return 1;
    }
    return decodeOne(text, scalar);
}

std::string encode(char32_t scalar) {
    utf8proc_uint8_t buffer[4];
    if (!utf8proc_codepoint_valid(static_cast<utf8proc_int32_t>(scalar)))
        scalar = replacementCharacter;
    auto n = utf8proc_encode_char(static_cast<utf8proc_int32_t>(scalar), buffer);
    return std::string(reinterpret_cast<const char*>(buffer), static_cast<std::size_t>(n));
}

std::string encode(std::u32string_view scalars) {
    std::string out;
    out.reserve(scalars.size());
    for (char32_t c : scalars)
        out += encode(c);
    return out;
}

std::vector<std::string> graphemes(std::string_view text) {
    std::vector<std::string> clusters;
    utf8proc_int32_t state = 0;
    char32_t previous = 0;
    bool first = true;
    while (!text.empty()) {
        char32_t c;
        auto length = decodeOne(text, c);
        if (first || utf8proc_grapheme_break_stateful(static_cast<utf8proc_int32_t>(previous),
                                                      static_cast<utf8proc_int32_t>(c), &state)) {
            clusters.emplace_back();
        }
        // Invalid bytes are kept as U+FFFD so that every cluster is valid UTF-8.
        if (c == replacementCharacter && length == 1 && static_cast<unsigned char>(text[0]) >= 0x80)
            clusters.back() += encode(c);
        else
            clusters.back().append(text.substr(0, length));
        text.remove_prefix(length);
        previous = c;
        first = false;
    }
    return clusters;
}

std::vector<std::size_t> graphemeBoundaries(std::string_view text) {
    std::vector<std::size_t> boundaries;
    boundaries.reserve(text.size() + 1);
    forEachClusterStart(text, [&boundaries](std::size_t offset) { boundaries.push_back(offset); });
    boundaries.push_back(text.size());
    return boundaries;
}

std::size_t graphemeCount(std::string_view text) {
    std::size_t count = 0;
    forEachClusterStart(text, [&count](std::size_t) { ++count; });
    return count;
}

bool isLetter(char32_t c) {
    switch (utf8proc_category(static_cast<utf8proc_int32_t>(c))) {
    case UTF8PROC_CATEGORY_LU:
    case UTF8PROC_CATEGORY_LL:
    case UTF8PROC_CATEGORY_LT:
    case UTF8PROC_CATEGORY_LM:
    case UTF8PROC_CATEGORY_LO:
        return true;
    default:
        return false;
    }
}

bool isNumber(char32_t c) {
    switch (utf8proc_category(static_cast<utf8proc_int32_t>(c))) {
    case UTF8PROC_CATEGORY_ND:
    case UTF8PROC_CATEGORY_NL:
    case UTF8PROC_CATEGORY_NO:
        return true;
    default:
        return false;
    }
}

bool isWhitespace(char32_t c) {
    // Unicode's White_Space property: the separators (Zs, Zl, Zp) plus the C0/C1 spacing controls.
    // Among ASCII only the space is a separator, which spares the lookup for most text.
    if (c < 0x80)
        return c == U' ' || (c >= 0x09 && c <= 0x0D);
    switch (utf8proc_category(static_cast<utf8proc_int32_t>(c))) {
    case UTF8PROC_CATEGORY_ZS:
    case UTF8PROC_CATEGORY_ZL:
    case UTF8PROC_CATEGORY_ZP:
        return true;
    default:
        break;
    }
    return (c >= 0x09 && c <= 0x0D) || c == 0x85;
}

std::string toLower(std::string_view text) {
    return mapScalars(text, utf8proc_tolower);
}

std::string toUpper(std::string_view text) {
    return mapScalars(text, utf8proc_toupper);
}

std::string nfc(std::string_view text) {
    // utf8proc refuses invalid UTF-8, so repair it first.
    std::string valid = encode(decode(text));
    utf8proc_uint8_t* result = utf8proc_NFC(reinterpret_cast<const utf8proc_uint8_t*>(valid.c_str()));
    if (!result)
        return valid;
    std::string out(reinterpret_cast<const char*>(result));
    std::free(result);
    return out;
}

std::size_t displayWidth(std::string_view text) {
    std::size_t width = 0;
    for (char32_t c : decode(text)) {
        int w = utf8proc_charwidth(static_cast<utf8proc_int32_t>(c));
        width += w > 0 ? static_cast<std::size_t>(w) : 0;
    }
    return width;
}

std::string trim(std::string_view text) {
    if (isAscii(text)) {
        std::size_t begin = 0, end = text.size();
        while (begin < end && isWhitespace(static_cast<unsigned char>(text[begin])))
            ++begin;
        while (end > begin && isWhitespace(static_cast<unsigned char>(text[end - 1])))
            --end;
        return std::string(text.substr(begin, end - begin));
    }
    // Other valid text is cut in place; text with invalid bytes is repaired on the way.
    std::size_t begin = std::string_view::npos, end = 0;
    for (std::size_t offset = 0; offset < text.size();) {
        char32_t c;
        const std::size_t length = decodeFirst(text.substr(offset), c);
        if (length == 1 && c == replacementCharacter)
            return trimAndRepair(text);
        if (!isWhitespace(c)) {
            begin = std::min(begin, offset);
            end = offset + length;
        }
        offset += length;
    }
    if (begin == std::string_view::npos)
        return {};
    return std::string(text.substr(begin, end - begin));
}

std::string_view trimView(std::string_view text) {
    // Most lines start and end with a visible ASCII character: nothing to trim, nothing to decode.
    const auto visibleAscii = [](char c) { return c > ' ' && c < 0x7F; };
    if (!text.empty() && visibleAscii(text.front()) && visibleAscii(text.back()))
        return text;
    // Only the ends are read: forwards over leading spaces, backwards over trailing ones.
    std::size_t begin = 0;
    while (begin < text.size()) {
        char32_t c;
        const std::size_t length = decodeFirst(text.substr(begin), c);
        if (!isWhitespace(c))
            break;
        begin += length;
    }
    std::size_t end = text.size();
    while (end > begin) {
        std::size_t start = end - 1;
        while (start > begin && (static_cast<unsigned char>(text[start]) & 0xC0) == 0x80)
            --start;
        char32_t c;
        // A sequence that isn't one whole scalar holds an invalid byte, which is not a space.
        if (decodeFirst(text.substr(start, end - start), c) != end - start || !isWhitespace(c))
            break;
        end = start;
    }
    return text.substr(begin, end - begin);
}

// Checked byte by byte against the table of well-formed sequences (no overlong forms, no
// surrogates, nothing past U+10FFFF) instead of decoding: a sheet's whole text is checked on
// every run.
bool isValidUtf8(std::string_view text) {
    const auto* p = reinterpret_cast<const unsigned char*>(text.data());
    const auto* const end = p + text.size();
    while (p < end) {
        if (end - p >= 8) {
            std::uint64_t word;
            std::memcpy(&word, p, 8);
            const std::uint64_t high = word & 0x8080808080808080u;
            if (!high) {
                p += 8;
                continue;
            }
            // Straight to the first byte outside ASCII (the word was read little-endian).
            if constexpr (std::endian::native == std::endian::little)
                p += std::countr_zero(high) / 8;
        }
        const unsigned char lead = *p;
        if (lead < 0x80) {
            ++p;
            continue;
        }
        std::ptrdiff_t length = 0;
        unsigned char low = 0x80, high = 0xBF; // the range of the second byte
        if (lead >= 0xC2 && lead <= 0xDF) {
            length = 2;
        } else if (lead >= 0xE0 && lead <= 0xEF) {
            length = 3;
            low = lead == 0xE0 ? 0xA0 : 0x80;
            high = lead == 0xED ? 0x9F : 0xBF;
        } else if (lead >= 0xF0 && lead <= 0xF4) {
            length = 4;
            low = lead == 0xF0 ? 0x90 : 0x80;
            high = lead == 0xF4 ? 0x8F : 0xBF;
        } else {
            return false;
        }
        if (end - p < length || p[1] < low || p[1] > high)
            return false;
        for (std::ptrdiff_t i = 2; i < length; ++i) {
            if ((p[i] & 0xC0) != 0x80)
                return false;
        }
        p += length;
    }
    return true;
}

std::string repairUtf8(std::string_view text) {
    return encode(decode(text));
}

std::size_t utf16Length(std::string_view text) {
    return utf16OffsetOfByte(text, text.size());
}

std::size_t byteOffsetOfUtf16(std::string_view text, std::size_t utf16Offset) {
    std::size_t bytes = 0, units = 0;
    while (bytes < text.size() && units < utf16Offset) {
        char32_t c;
        bytes += decodeOne(text.substr(bytes), c);
        units += c > 0xFFFF ? 2 : 1;
    }
    return bytes;
}

std::size_t utf16OffsetOfByte(std::string_view text, std::size_t byteOffset) {
    std::size_t bytes = 0, units = 0;
    byteOffset = std::min(byteOffset, text.size());
    while (bytes < byteOffset) {
        char32_t c;
        bytes += decodeOne(text.substr(bytes), c);
        units += c > 0xFFFF ? 2 : 1;
    }
    return units;
}

std::vector<std::string> splitLines(std::string_view text) {
    std::vector<std::string> lines;
    std::size_t start = 0;
    while (true) {
        auto newline = text.find('\n', start);
        if (newline == std::string_view::npos) {
            lines.emplace_back(text.substr(start));
            return lines;
        }
        lines.emplace_back(text.substr(start, newline - start));
        start = newline + 1;
    }
}

} // namespace lumo::unicode
