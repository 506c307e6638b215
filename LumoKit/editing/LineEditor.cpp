#include "LumoKit/editing/LineEditor.h"

#include <algorithm>
#include <array>

#include "LumoKit/base/Unicode.h"
#include "LumoKit/language/Keywords.h"
#include "LumoKit/language/Lexer.h"

namespace lumo {

namespace {

constexpr std::array<std::pair<CursorMove, std::string_view>, 6> cursorMoveNames{{
    {CursorMove::up, "up"},
    {CursorMove::down, "down"},
    {CursorMove::left, "left"},
    {CursorMove::right, "right"},
    {CursorMove::lineStart, "lineStart"},
    {CursorMove::lineEnd, "lineEnd"},
}};

std::int64_t clampCaret(std::int64_t caret, std::int64_t length) {
    return std::clamp<std::int64_t>(caret, 0, length);
}

// The text as the text view stores it: UTF-16 code units, plus the offsets at which its
// grapheme clusters begin (and the text's length as the last entry), so that moves never
// split an emoji or a composed character.
struct Utf16Text {
    std::u16string units;
    std::vector<std::int64_t> boundaries;

    explicit Utf16Text(std::string_view text) {
        boundaries.push_back(0);
        for (const auto& cluster : unicode::graphemes(text)) {
            for (char32_t c : unicode::decode(cluster)) {
                if (c >= 0x10000) {
                    units.push_back(static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10)));
                    units.push_back(static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF)));
                } else {
                    units.push_back(static_cast<char16_t>(c));
                }
            }
            boundaries.push_back(length());
        }
    }

    std::int64_t length() const { return static_cast<std::int64_t>(units.size()); }
    bool isNewline(std::int64_t i) const { return units[static_cast<std::size_t>(i)] == u'\n'; }

    // Start of the cluster that contains offset i (i < length).
    std::int64_t clusterStart(std::int64_t i) const {
        return *(std::upper_bound(boundaries.begin(), boundaries.end(), i) - 1);
    }
    // End of the cluster that contains offset i (i < length).
    std::int64_t clusterEnd(std::int64_t i) const {
        return *std::upper_bound(boundaries.begin(), boundaries.end(), i);
    }

    // The line containing offset p: [start, end), the end including the line's newline.
    std::pair<std::int64_t, std::int64_t> lineRange(std::int64_t p) const {
        std::int64_t start = p;
        while (start > 0 && !isNewline(start - 1))
            --start;
        std::int64_t end = p;
        while (end < length() && !isNewline(end))
            ++end;
        if (end < length())
            ++end;
        return {start, end};
    }
};

// Keeps the column in UTF-16 units on the target line; a shorter line puts the caret at its end.
std::int64_t snapToLine(const Utf16Text& text, std::int64_t lineStart, std::int64_t column) {
    auto [s, e] = text.lineRange(lineStart);
    if (e > s && text.isNewline(e - 1))
        --e;
    std::int64_t t = std::min(e, s + column);
    if (t < 1 || t >= text.length())
        return t;
    return text.clusterStart(t);
}

std::int64_t moveDown(const Utf16Text& text, std::int64_t p, std::int64_t lineStart, std::int64_t lineEnd) {
    auto length = text.length();
    if (lineEnd >= length) {
        // Only a text ending in a newline has an empty last line below to go to.
        if (length == 0 || !text.isNewline(length - 1) || p >= length)
            return p;
        return length;
    }
    return snapToLine(text, lineEnd, p - lineStart);
}

// The first scalar stands for the whole cluster, as with a letter carrying combining marks.
char32_t leadingScalar(std::string_view cluster) {
    auto scalars = unicode::decode(cluster);
    return scalars.empty() ? 0 : scalars.front();
}

bool isWordCharacter(std::string_view cluster) {
    char32_t c = leadingScalar(cluster);
    return c == U'_' || unicode::isLetter(c) || unicode::isNumber(c);
}

// Any script's digits, as the sign key reads a number: 12, １２, 3万5000, 1,234.5.
bool isNumberCharacter(std::string_view cluster) {
    return cluster == "." || cluster == "," || lexer::isNumeralUnit(cluster) ||
           keywords::startsWithNumeral(cluster);
}

std::string join(const std::vector<std::string>& clusters) {
    std::string out;
    for (const auto& c : clusters)
        out += c;
    return out;
}

bool isBlank(char32_t c) {
    return c == U' ' || c == U'\t' || c == U'\u3000';
}

} // namespace

const std::vector<CursorMove>& allCursorMoves() {
    static const std::vector<CursorMove> moves = [] {
        std::vector<CursorMove> all;
        for (const auto& [move, name] : cursorMoveNames)
            all.push_back(move);
        return all;
    }();
    return moves;
}

std::string_view rawValue(CursorMove move) {
    for (const auto& [candidate, name] : cursorMoveNames)
        if (candidate == move)
            return name;
    return {};
}

std::optional<CursorMove> cursorMoveFromRaw(std::string_view raw) {
    for (const auto& [move, name] : cursorMoveNames)
        if (name == raw)
            return move;
    return std::nullopt;
}

std::int64_t LineEditor::move(CursorMove kind, std::string_view text, std::int64_t caret) {
    Utf16Text t(text);
    auto length = t.length();
    auto p = clampCaret(caret, length);
    auto [ls, le] = t.lineRange(p);
    switch (kind) {
    case CursorMove::left:
        return p < 1 ? 0 : t.clusterStart(p - 1);
    case CursorMove::right:
        return p >= length ? length : t.clusterEnd(p);
    case CursorMove::lineStart:
        return ls;
    case CursorMove::lineEnd:
        return (le > ls && t.isNewline(le - 1)) ? le - 1 : le;
    case CursorMove::up:
        return ls < 1 ? p : snapToLine(t, t.lineRange(ls - 1).first, p - ls);
    case CursorMove::down:
        return moveDown(t, p, ls, le);
    }
    return p;
}

std::string LineEditor::newlineIndent(std::string_view text, std::int64_t caret) {
    auto end = unicode::byteOffsetOfUtf16(text, static_cast<std::size_t>(std::max<std::int64_t>(caret, 0)));
    auto newline = text.substr(0, end).rfind('\n');
    auto start = newline == std::string_view::npos ? 0 : newline + 1;
    auto line = text.substr(start, end - start);

    std::u32string indent;
    for (char32_t c : unicode::decode(line)) {
        if (!isBlank(c))
            break;
        indent.push_back(c);
    }
    std::string result = unicode::encode(indent);
    auto trimmed = unicode::trim(line);
    if (trimmed.ends_with(":") || trimmed.ends_with("："))
        result += "    ";
    return result;
}

SignToggle LineEditor::toggleSign(std::string_view text, std::int64_t caret) {
    auto clusters = unicode::graphemes(text);
    auto p = clampCaret(caret, static_cast<std::int64_t>(clusters.size()));
    auto at = [&](std::int64_t i) -> const std::string& { return clusters[static_cast<std::size_t>(i)]; };

    std::int64_t k = p;
    while (k > 0 && isNumberCharacter(at(k - 1)))
        --k;
    if (k == p) {
        clusters.insert(clusters.begin() + p, "-");
        return {join(clusters), p + 1};
    }
    // A "-" counts as a sign only where an operand can't precede it; after an operand
    // (5-3) it is a subtraction and stays.
    bool signedNumber =
        k > 0 && at(k - 1) == "-" && (k == 1 || at(k - 2) == " " || at(k - 2) == "\n" || at(k - 2) == "(");
    if (signedNumber) {
        clusters.erase(clusters.begin() + (k - 1));
        return {join(clusters), p - 1};
    }
    clusters.insert(clusters.begin() + k, "-");
    return {join(clusters), p + 1};
}

std::string LineEditor::snippetSpacing(std::string_view snippet, std::string_view text, std::int64_t caret,
                                       SnippetRole role) {
    auto clusters = unicode::graphemes(text);
    auto p = clampCaret(caret, static_cast<std::int64_t>(clusters.size()));
    auto snippetClusters = unicode::graphemes(snippet);
    bool joinsWord = !snippetClusters.empty() && isWordCharacter(snippetClusters.front()) && p > 0 &&
                     isWordCharacter(clusters[static_cast<std::size_t>(p - 1)]);
    if (!joinsWord)
        return std::string(snippet);
    return (role == SnippetRole::namedValue ? " + " : " ") + std::string(snippet);
}

std::string LineEditor::snippetSpacing(const InsertSnippet& snippet, std::string_view text,
                                       std::int64_t caret) {
    return snippetSpacing(snippet.text, text, caret,
                          snippet.isNamedValue ? SnippetRole::namedValue : SnippetRole::plain);
}

std::string LineEditor::multiplySign(std::string_view text, std::int64_t caret) {
    auto clusters = unicode::graphemes(text);
    auto p = clampCaret(caret, static_cast<std::int64_t>(clusters.size()));
    auto lineStart = p;
    while (lineStart > 0 && clusters[static_cast<std::size_t>(lineStart - 1)] != "\n")
        --lineStart;
    std::string beforeCaretOnLine;
    for (auto i = lineStart; i < p; ++i)
        beforeCaretOnLine += clusters[static_cast<std::size_t>(i)];
    // The sign inside a note would only be noise in the text, so nothing is inserted there.
    if (beforeCaretOnLine.find(keywords::noteMarker) != std::string::npos)
        return {};
    if (p == 0)
        return "× ";
    const auto& previous = clusters[static_cast<std::size_t>(p - 1)];
    return (previous == " " || previous == "\n" || previous == "\t") ? "× " : " × ";
}

} // namespace lumo
