#include "LumoKit/editing/SyntaxHighlighter.h"

#include <array>
#include <unordered_set>

#include "LumoKit/base/Language.h"
#include "LumoKit/base/Unicode.h"
#include "LumoKit/language/Keywords.h"
#include "LumoKit/language/Lexer.h"
#include "LumoKit/values/builtins/Builtins.h"
#include "LumoKit/values/Units.h"

namespace lumo {

namespace {

struct KindInfo {
    SyntaxKind kind;
    std::string_view raw;
    std::string_view japanese;
    std::string_view english;
};

constexpr std::array<KindInfo, 8> kindTable{{
    {SyntaxKind::number, "number", "数字", "Numbers"},
    {SyntaxKind::operatorMark, "operatorMark", "演算子", "Operators"},
    {SyntaxKind::name, "name", "名前の付いた値", "Named values"},
    {SyntaxKind::unit, "unit", "単位", "Units"},
    {SyntaxKind::function, "function", "関数", "Functions"},
    {SyntaxKind::keyword, "keyword", "if / for / def", "if / for / def"},
    {SyntaxKind::quoted, "quoted", "文字", "Text"},
    {SyntaxKind::comment, "comment", "コメント", "Comments"},
}};

const KindInfo& info(SyntaxKind kind) {
    return kindTable[static_cast<std::size_t>(kind)];
}

using lexer::continuesName;
using lexer::isAsciiDigit;
using lexer::isNameSign;
using lexer::startsName;
using Digits = lexer::NameDigits;
using QuoteClass = lexer::QuoteClass;

QuoteClass quoteClass(std::string_view c) {
    return lexer::quoteClassOf(c);
}

// Looser than the lexer's number, so that 1,234.5 and 3万5000 are coloured whole while typed.
bool continuesNumber(std::string_view c) {
    return isAsciiDigit(c) || c == "." || c == "," || lexer::isNumeralUnit(c);
}

bool isOperatorMark(std::string_view c) {
    static const std::unordered_set<std::string_view> marks{"+", "-", "*", "/", "^", "%", "=", "×",
                                                            "÷", "→", "(", ")", ",", "·", "[", "]"};
    return marks.contains(c);
}

SyntaxKind wordKind(const std::string& word) {
    if (keywords::isProgramWord(word))
        return SyntaxKind::keyword;
    if (isBuiltinFunction(unicode::toLower(word)))
        return SyntaxKind::function;
    if (isKnownUnit(word))
        return SyntaxKind::unit;
    return SyntaxKind::name;
}

// A note line, as sheet evaluation treats it: "//", "＃", or "#" not followed by a digit.
bool isNoteLine(std::string_view line) {
    return keywords::isNoteText(unicode::trim(line));
}

// Walks one line's grapheme clusters, keeping the UTF-16 offset of each.
class LineScanner {
public:
    explicit LineScanner(std::string_view line) : m_chars(unicode::graphemes(line)) {
        m_offsets.reserve(m_chars.size() + 1);
        std::int64_t offset = 0;
        m_offsets.push_back(0);
        for (const auto& c : m_chars) {
            offset += static_cast<std::int64_t>(unicode::utf16Length(c));
            m_offsets.push_back(offset);
        }
    }

    std::vector<SyntaxRange> scan() {
        while (m_i < m_chars.size()) {
            if (startsNote(m_i)) {
                emit(m_i, m_chars.size(), SyntaxKind::comment);
                break;
            }
            if (!(scanQuoted() || scanNumber() || scanName() || scanOperator()))
                ++m_i;
        }
        return std::move(m_ranges);
    }

private:
    std::string_view at(std::size_t i) const {
        return i < m_chars.size() ? std::string_view(m_chars[i]) : "";
    }

    // Whether a note starts at character i. The marker is ASCII: one character per byte.
    bool startsNote(std::size_t i) const {
        for (std::size_t k = 0; k < keywords::noteMarker.size(); ++k) {
            if (at(i + k) != keywords::noteMarker.substr(k, 1))
                return false;
        }
        return true;
    }

    void emit(std::size_t from, std::size_t to, SyntaxKind kind) {
        m_ranges.push_back({m_offsets[from], m_offsets[to] - m_offsets[from], kind});
        m_i = to;
    }

    // An unclosed quote is left uncoloured and the rest of the line is classified as usual,
    // so that the line's names and numbers stay readable while the text is being typed.
    bool scanQuoted() {
        auto opening = quoteClass(at(m_i));
        if (opening == QuoteClass::none)
            return false;
        for (std::size_t j = m_i + 1; j < m_chars.size(); ++j) {
            if (at(j) == "\\") {
                ++j;
                continue;
            }
            if (quoteClass(at(j)) == opening) {
                emit(m_i, j + 1, SyntaxKind::quoted);
                return true;
            }
        }
        return false;
    }

    bool scanNumber() {
        if (!lexer::startsNumber(at(m_i), at(m_i + 1)))
            return false;
        std::size_t end = m_i + 1;
        while (end < m_chars.size() && continuesNumber(at(end)))
            ++end;
        emit(m_i, end, SyntaxKind::number);
        return true;
    }

    bool scanName() {
        if (!startsName(at(m_i)))
            return false;
        Digits digits = isNameSign(at(m_i)) ? Digits::notAllowed : Digits::allowed;
        std::size_t end = m_i + 1;
        while (continuesName(at(end), digits))
            ++end;
        // A per-part such as km/h belongs to the word only when the whole is a unit.
        if (at(end) == "/") {
            std::size_t partEnd = end + 1;
            while (continuesName(at(partEnd), Digits::allowed))
                ++partEnd;
            if (partEnd > end + 1 && isKnownUnit(slice(m_i, partEnd)))
                end = partEnd;
        }
        emit(m_i, end, wordKind(slice(m_i, end)));
        return true;
    }

    bool scanOperator() {
        if (!isOperatorMark(at(m_i)))
            return false;
        emit(m_i, m_i + 1, SyntaxKind::operatorMark);
        return true;
    }

    std::string slice(std::size_t from, std::size_t to) const {
        std::string out;
        for (auto i = from; i < to; ++i)
            out += m_chars[i];
        return out;
    }

    std::vector<std::string> m_chars;
    std::vector<std::int64_t> m_offsets;
    std::vector<SyntaxRange> m_ranges;
    std::size_t m_i = 0;
};

} // namespace

const std::vector<SyntaxKind>& allSyntaxKinds() {
    static const std::vector<SyntaxKind> kinds = [] {
        std::vector<SyntaxKind> all;
        for (const auto& entry : kindTable)
            all.push_back(entry.kind);
        return all;
    }();
    return kinds;
}

std::string_view rawValue(SyntaxKind kind) {
    return info(kind).raw;
}

std::optional<SyntaxKind> syntaxKindFromRaw(std::string_view raw) {
    for (const auto& entry : kindTable)
        if (entry.raw == raw)
            return entry.kind;
    return std::nullopt;
}

std::string title(SyntaxKind kind) {
    return L10n::pick(info(kind).japanese, info(kind).english);
}

std::vector<SyntaxRange> highlightLine(std::string_view line) {
    if (isNoteLine(line))
        return {{0, static_cast<std::int64_t>(unicode::utf16Length(line)), SyntaxKind::comment}};
    return LineScanner(line).scan();
}

} // namespace lumo
