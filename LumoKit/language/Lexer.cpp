#include "LumoKit/language/Lexer.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <new>
#include <unordered_map>
#include <unordered_set>

#include "LumoKit/base/CalcError.h"
#include "LumoKit/base/Unicode.h"
#include "LumoKit/values/Units.h"

namespace lumo {

Token Token::make(Kind kind, std::int64_t start) {
    Token token;
    token.kind = kind;
    token.start = start;
    return token;
}

namespace {

// ---------------------------------------------------------------------------------------------
// Normalisation
// ---------------------------------------------------------------------------------------------

using lexer::QuoteClass;

QuoteClass quoteClassOf(char32_t c) {
    switch (c) {
    case U'"':
    case U'\uFF02':
    case U'\u201C':
    case U'\u201D':
        return QuoteClass::doubleQuote;
    case U'\'':
    case U'\u2018':
    case U'\u2019':
        return QuoteClass::singleQuote;
    default:
        return QuoteClass::none;
    }
}

const char* asciiQuote(QuoteClass quoteClass) {
    return quoteClass == QuoteClass::singleQuote ? "'" : "\"";
}

// What a character outside quotes is written as; characters not in the map are copied.
const std::unordered_map<char32_t, std::string_view>& normalizationMap() {
    static const std::unordered_map<char32_t, std::string_view> map = [] {
        std::unordered_map<char32_t, std::string_view> m;
        // Full-width forms that become their ASCII counterparts (code point minus 0xFEE0).
        static constexpr std::string_view ascii =
            "!\"#$%&'()*+,-./"
            "0123456789:;<=>?@ABCDEFGHIJKLMNOPQRSTUVWXYZ[\\]^_`abcdefghijklmnopqrstuvwxyz{|}~";
        auto fullWidth = [&](char32_t first, char32_t last) {
            for (char32_t c = first; c <= last; ++c)
                m.emplace(c, ascii.substr(c - 0xFEE0 - U'!', 1));
        };
        fullWidth(0xFF10, 0xFF19); // digits
        fullWidth(0xFF21, 0xFF3A); // upper-case letters
        fullWidth(0xFF41, 0xFF5A); // lower-case letters
        for (char32_t c : {0xFF01, 0xFF03, 0xFF05, 0xFF1A, 0xFF3B, 0xFF3D, 0xFF3E})
            fullWidth(c, c);
        fullWidth(0xFF08, 0xFF0F);
        fullWidth(0xFF1C, 0xFF1E);

        for (char32_t c : {U'\u00D7', U'\u00B7', U'\u2022', U'\u22C5'})
            m.emplace(c, "*");
        m.emplace(U'\u00F7', "/");
        for (char32_t c : {U'\u2212', U'\u2013', U'\u2014'})
            m.emplace(c, "-");
        m.emplace(U'\u2260', "!=");
        m.emplace(U'\u2264', "<=");
        m.emplace(U'\u2266', "<=");
        m.emplace(U'\u2265', ">=");
        m.emplace(U'\u2267', ">=");
        for (char32_t c : {U'\u21D2', U'\u27A1', U'\u25B6'})
            m.emplace(c, "\u2192");
        m.emplace(U'\u3001', ",");
        m.emplace(U'\u3010', "[");
        m.emplace(U'\u3014', "[");
        m.emplace(U'\u3011', "]");
        m.emplace(U'\u3015', "]");
        m.emplace(U'\u3000', " ");
        return m;
    }();
    return map;
}

// The end of the run of ASCII other than quotes that starts at `from`.
std::size_t plainAsciiEnd(std::string_view text, std::size_t from) {
    for (; from < text.size(); ++from) {
        const auto byte = static_cast<unsigned char>(text[from]);
        if (byte >= 0x80 || byte == '"' || byte == '\'')
            break;
    }
    return from;
}

using unicode::isAscii;

// ---------------------------------------------------------------------------------------------
// Characters of the normalised text
// ---------------------------------------------------------------------------------------------

// Whether each byte of a text is one character (grapheme cluster): in ASCII it is, except in
// a CR LF pair. Such text needs no table of where its characters begin.
bool bytesAreCharacters(std::string_view text) {
    return isAscii(text) && text.find("\r\n") == std::string_view::npos;
}

// The normalised line when each byte is one character: most lines are ASCII, and the scanner
// asks for nearly every character more than once, so this case is compiled on its own.
class ByteCharacters {
public:
    explicit ByteCharacters(std::string_view text) : m_text(text) {}

    std::size_t size() const { return m_text.size(); }

    /// The character at i, or an empty view past the end.
    std::string_view at(std::size_t i) const {
        if (i >= m_text.size())
            return {};
        return {m_text.data() + i, 1};
    }

    /// The text of characters [from, to).
    std::string_view slice(std::size_t from, std::size_t to) const { return m_text.substr(from, to - from); }

private:
    std::string_view m_text;
};

// The normalised line as a sequence of grapheme clusters.
class ClusterCharacters {
public:
    explicit ClusterCharacters(std::string_view text)
        : m_text(text), m_offsets(unicode::graphemeBoundaries(text)) {}

    std::size_t size() const { return m_offsets.size() - 1; }

    /// The character at i, or an empty view past the end.
    std::string_view at(std::size_t i) const {
        if (i >= size())
            return {};
        return {m_text.data() + m_offsets[i], m_offsets[i + 1] - m_offsets[i]};
    }

    /// The text of characters [from, to).
    std::string_view slice(std::size_t from, std::size_t to) const {
        return m_text.substr(m_offsets[from], m_offsets[to] - m_offsets[from]);
    }

private:
    std::string_view m_text;
    std::vector<std::size_t> m_offsets; // where each character begins, and the end
};

// ---------------------------------------------------------------------------------------------
// Character classes
// ---------------------------------------------------------------------------------------------

bool isAsciiDigit(std::string_view c) {
    return c.size() == 1 && c[0] >= '0' && c[0] <= '9';
}

// Whether a character is the given ASCII one; the scanner asks this for nearly every character.
bool isChar(std::string_view c, char ascii) {
    return c.size() == 1 && c[0] == ascii;
}

// The numeral rule: a number starts at an ASCII digit, or at "." followed by one. The next
// character is asked for only after a ".".
template <typename NextCharacter> bool startsNumber(std::string_view c, NextCharacter next) {
    return isAsciiDigit(c) || (isChar(c, '.') && isAsciiDigit(next()));
}

char32_t firstScalar(std::string_view c) {
    char32_t scalar;
    unicode::decodeFirst(c, scalar);
    return scalar;
}

using lexer::NameDigits;

// The character classes of the scanner, built once. utf8proc's answers for the ASCII range are
// kept in a table: most lines are ASCII, and these checks run for every character.
class CharClasses {
public:
    static const CharClasses& shared() {
        static const CharClasses classes;
        return classes;
    }

    bool isWhitespace(std::string_view c) const {
        if (c.size() == 1)
            return has(c[0], whitespace);
        return !c.empty() && unicode::isWhitespace(firstScalar(c));
    }

    bool startsName(std::string_view c) const {
        if (c.size() == 1)
            return has(c[0], letter | underscore | sign);
        return !c.empty() && (unicode::isLetter(firstScalar(c)) || m_signs.count(c) > 0);
    }

    bool continuesName(std::string_view c, NameDigits digits) const {
        if (c.size() == 1)
            return has(c[0], letter | underscore | sign) ||
                   (digits == NameDigits::allowed && has(c[0], digit));
        return !c.empty() &&
               (unicode::isLetter(firstScalar(c)) || m_signs.count(c) > 0 || m_superscripts.count(c) > 0);
    }

    /// Names that begin with a sign ($5, ¥1200) are not continued by digits.
    bool isSign(std::string_view c) const { return c.size() == 1 ? has(c[0], sign) : m_signs.count(c) > 0; }

private:
    enum Flag : std::uint8_t { whitespace = 1, letter = 2, digit = 4, underscore = 8, sign = 16 };

    CharClasses() {
        for (char32_t c = 0; c < 128; ++c) {
            std::uint8_t flags = 0;
            if (unicode::isWhitespace(c))
                flags |= whitespace;
            if (unicode::isLetter(c))
                flags |= letter;
            m_ascii[c] = flags;
        }
        for (char c = '0'; c <= '9'; ++c)
            m_ascii[static_cast<std::size_t>(c)] |= digit;
        m_ascii['_'] |= underscore;
        m_ascii['$'] |= sign;
    }

    // A single-byte character of valid UTF-8 is ASCII.
    bool has(char c, int flags) const { return (m_ascii[static_cast<unsigned char>(c) & 0x7F] & flags) != 0; }

    std::array<std::uint8_t, 128> m_ascii{};
    // Signs that may start and continue a name, so that °C, ¥1200 and € read as units.
    std::unordered_set<std::string_view> m_signs{"\u00B0", "\u00A5", "\uFFE5", "\u20AC", "\u2103", "\u2109"};
    // Superscripts continue a name (m²); there is no superscript zero or minus among them.
    std::unordered_set<std::string_view> m_superscripts{"\u00B9", "\u00B2", "\u00B3", "\u2074", "\u2075",
                                                        "\u2076", "\u2077", "\u2078", "\u2079"};
};

// The Japanese numeral units that scale the number before them.
double japaneseFactorOf(std::string_view c) {
    static const std::unordered_map<std::string_view, double> factors{
        {"\u5343", 1e3}, {"\u4E07", 1e4}, {"\u5104", 1e8}, {"\u5146", 1e12}};
    auto found = factors.find(c);
    return found == factors.end() ? 0 : found->second;
}

// Asked after every number, so the common answer (not a three-byte character) is found inline.
double japaneseFactor(std::string_view c) {
    return c.size() == 3 ? japaneseFactorOf(c) : 0;
}

// ---------------------------------------------------------------------------------------------
// Messages
// ---------------------------------------------------------------------------------------------

[[noreturn]] void failUnusableCharacter(std::string_view c) {
    throw CalcError(MessageKind::unusableCharacter, {std::string(c)});
}

[[noreturn]] void failNumberTooLarge() {
    throw CalcError(MessageKind::numberTooLarge);
}

[[noreturn]] void failUnclosedText(std::string_view quote) {
    throw CalcError(MessageKind::unclosedText, {std::string(quote)});
}

// ---------------------------------------------------------------------------------------------
// Number conversion
// ---------------------------------------------------------------------------------------------

// For a literal that from_chars reports as out of range: whether it is too large (rather than
// too small, which reads as 0). Only the sign of the decimal magnitude matters here.
bool exceedsDoubleRange(std::string_view literal) {
    constexpr long long cap = 1'000'000'000;
    auto ePos = literal.find_first_of("eE");
    std::string_view mantissa = literal.substr(0, ePos);
    long long magnitude = 0;
    auto point = mantissa.find('.');
    std::string_view whole = mantissa.substr(0, point);
    auto firstNonZero = whole.find_first_not_of('0');
    if (firstNonZero != std::string_view::npos) {
        magnitude = std::min<long long>(cap, static_cast<long long>(whole.size() - firstNonZero));
    } else if (point != std::string_view::npos) {
        std::string_view fraction = mantissa.substr(point + 1);
        auto leading = fraction.find_first_not_of('0');
        magnitude = -std::min<long long>(
            cap, static_cast<long long>(leading == std::string_view::npos ? fraction.size() : leading));
    }
    if (ePos != std::string_view::npos) {
        std::string_view exponent = literal.substr(ePos + 1);
        bool negative = !exponent.empty() && exponent[0] == '-';
        if (!exponent.empty() && (exponent[0] == '-' || exponent[0] == '+'))
            exponent.remove_prefix(1);
        long long value = 0;
        for (char digit : exponent)
            value = std::min(cap, value * 10 + (digit - '0'));
        magnitude += negative ? -value : value;
    }
    return magnitude > 0;
}

// Converts a gathered literal; anything that isn't one whole decimal literal is 0.
double convertLiteral(std::string_view literal) {
    // Whole numbers of up to 15 digits are exact in a double; most literals are such.
    if (literal.size() <= 15 &&
        std::all_of(literal.begin(), literal.end(), [](char c) { return c >= '0' && c <= '9'; })) {
        std::int64_t whole = 0;
        for (char digit : literal)
            whole = whole * 10 + (digit - '0');
        return static_cast<double>(whole);
    }
    double value = 0;
    const char* end = literal.data() + literal.size();
    auto [ptr, ec] = std::from_chars(literal.data(), end, value);
    if (ptr != end)
        return 0;
    if (ec == std::errc::result_out_of_range)
        return exceedsDoubleRange(literal) ? std::numeric_limits<double>::infinity() : 0.0;
    return ec == std::errc() ? value : 0.0;
}

} // namespace

// ---------------------------------------------------------------------------------------------
// Scanner
// ---------------------------------------------------------------------------------------------

// Reads tokens off the normalised text, one character (as `Characters` cuts them) at a time.
template <class Characters> class Scanner {
public:
    explicit Scanner(std::string_view normalized) : m_chars(normalized) {}

    /// Scans the next token into `out`, or `eof` once the line is read. Whitespace yields no
    /// token, so characters are scanned until one is made. The token is written in place, so
    /// a reader that keeps its slots reuses their texts' storage.
    void next(Token& out) {
        m_out = &out;
        m_ready = false;
        while (!m_ready && m_i < m_chars.size())
            scanOne();
        if (!m_ready)
            emit(Token::Kind::eof, position(m_chars.size()));
        m_out = nullptr;
    }

private:
    static std::int64_t position(std::size_t i) { return static_cast<std::int64_t>(i); }
    static std::uint32_t charactersBetween(std::size_t from, std::size_t to) {
        return static_cast<std::uint32_t>(to - from);
    }
    std::string_view at(std::size_t i) const { return m_chars.at(i); }

    void scanOne() {
        std::string_view c = at(m_i);
        const char ascii = c.size() == 1 ? c[0] : '\0'; // NUL stands for every other character here
        if (m_classes.isWhitespace(c)) {
            ++m_i;
        } else if (ascii == '"' || ascii == '\'') {
            scanText(c);
        } else if (ascii == '#' && isAsciiDigit(at(m_i + 1))) {
            scanRef();
        } else if (startsNumber(c, [this] { return at(m_i + 1); })) {
            scanNumber();
        } else if (m_classes.startsName(c)) {
            scanName();
        } else if (!scanPunctuation(c)) {
            failUnusableCharacter(c);
        }
    }

    void scanText(std::string_view quote) {
        const std::size_t start = m_i++;
        std::string content;
        while (m_i < m_chars.size()) {
            std::string_view c = at(m_i);
            if (c == quote) {
                ++m_i;
                Token& token = emit(Token::Kind::string, position(start));
                token.text = std::move(content);
                token.length = charactersBetween(start, m_i);
                return;
            }
            if (isChar(c, '\\') && m_i + 1 < m_chars.size()) {
                std::string_view escaped = at(m_i + 1);
                if (isChar(escaped, 'n'))
                    content += '\n';
                else if (isChar(escaped, 't'))
                    content += '\t';
                else
                    content += escaped;
                m_i += 2;
                continue;
            }
            if (isChar(c, '\\'))
                break; // a backslash with nothing after it can't close the text
            content += c;
            ++m_i;
        }
        failUnclosedText(quote);
    }

    void scanRef() {
        const std::size_t hash = m_i++;
        std::int64_t line = 0;
        bool overflow = false;
        while (isAsciiDigit(at(m_i))) {
            int digit = at(m_i)[0] - '0';
            if (line > (std::numeric_limits<std::int64_t>::max() - digit) / 10)
                overflow = true;
            else
                line = line * 10 + digit;
            ++m_i;
        }
        // The start is deliberately the index just after the digits.
        Token& token = emit(Token::Kind::ref, position(m_i));
        token.ref = overflow ? 0 : line;
        token.length = charactersBetween(hash, m_i);
    }

    // Digits with grouping commas and points, then at most one exponent.
    double scanPlainNumber() {
        // Most numbers are a few digits standing alone: exact as a double, read at once.
        std::size_t end = m_i;
        std::int64_t whole = 0;
        while (end - m_i < 15 && isAsciiDigit(at(end))) {
            whole = whole * 10 + (at(end)[0] - '0');
            ++end;
        }
        const std::string_view after = at(end);
        if (end > m_i && !isAsciiDigit(after) && !isChar(after, '.') && !isChar(after, ',') &&
            !isChar(after, 'e') && !isChar(after, 'E')) {
            m_i = end;
            return static_cast<double>(whole);
        }
        m_literal.clear();
        for (;;) {
            std::string_view c = at(m_i);
            if (isAsciiDigit(c)) {
                m_literal += c[0];
                ++m_i;
            } else if (isChar(c, ',') && isGroupingComma()) {
                ++m_i;
            } else if (isChar(c, '.') && isAsciiDigit(at(m_i + 1))) {
                m_literal += '.';
                ++m_i;
            } else {
                break;
            }
        }
        scanExponent();
        return convertLiteral(m_literal);
    }

    // A comma followed by exactly three digits groups digits.
    bool isGroupingComma() const {
        return isAsciiDigit(at(m_i + 1)) && isAsciiDigit(at(m_i + 2)) && isAsciiDigit(at(m_i + 3)) &&
               !isAsciiDigit(at(m_i + 4));
    }

    void scanExponent() {
        std::string_view e = at(m_i);
        if (!isChar(e, 'e') && !isChar(e, 'E'))
            return;
        std::string_view next = at(m_i + 1);
        const bool signedExponent = (isChar(next, '+') || isChar(next, '-')) && isAsciiDigit(at(m_i + 2));
        if (!signedExponent && !isAsciiDigit(next))
            return;
        m_literal += 'e';
        ++m_i;
        if (signedExponent) {
            m_literal += next[0];
            ++m_i;
        }
        while (isAsciiDigit(at(m_i))) {
            m_literal += at(m_i)[0];
            ++m_i;
        }
    }

    void scanNumber() {
        const std::size_t start = m_i;
        double total = 0;
        for (;;) {
            double plain = scanPlainNumber();
            double factor = japaneseFactor(at(m_i));
            if (factor == 0) {
                total += plain;
                break;
            }
            total += plain * factor;
            ++m_i;
            if (!isAsciiDigit(at(m_i)))
                break;
        }
        if (!std::isfinite(total))
            failNumberTooLarge();
        Token& token = emit(Token::Kind::number, position(start));
        token.number = total;
        token.length = charactersBetween(start, m_i);
    }

    void scanName() {
        const std::size_t start = m_i;
        const NameDigits digits = m_classes.isSign(at(m_i)) ? NameDigits::notAllowed : NameDigits::allowed;
        ++m_i;
        while (m_classes.continuesName(at(m_i), digits))
            ++m_i;
        std::size_t end = m_i;
        // A per-part such as km/h or N/mm² belongs to the name only when the whole is a unit.
        if (isChar(at(end), '/')) {
            std::size_t partEnd = end + 1;
            while (m_classes.continuesName(at(partEnd), NameDigits::allowed))
                ++partEnd;
            if (partEnd > end + 1 && isKnownUnit(m_chars.slice(start, partEnd)))
                end = partEnd;
        }
        m_i = end;
        pushText(Token::Kind::identifier, start, end, m_chars.slice(start, end));
    }

    bool scanPunctuation(std::string_view c) {
        if (c.size() != 1)
            return c == "\u2192" && pushOp(c, 1);
        switch (c[0]) {
        case '=':
        case '<':
        case '>':
        case '!':
            if (isChar(at(m_i + 1), '='))
                return pushOp(m_chars.slice(m_i, m_i + 2), 2);
            return c[0] != '!' && pushOp(c, 1);
        case '(':
            return push(Token::Kind::lparen);
        case ')':
            return push(Token::Kind::rparen);
        case '[':
            return push(Token::Kind::lbracket);
        case ']':
            return push(Token::Kind::rbracket);
        case ',':
            return push(Token::Kind::comma);
        case '+':
        case '-':
        case '*':
        case '/':
        case '%':
        case '^':
        case ':':
            return pushOp(c, 1);
        default:
            return false;
        }
    }

    bool push(Token::Kind kind) {
        emit(kind, position(m_i)).length = 1;
        ++m_i;
        return true;
    }

    bool pushOp(std::string_view op, std::size_t length) {
        pushText(Token::Kind::op, m_i, m_i + length, op);
        m_i += length;
        return true;
    }

    // Tokens with text are built in place, so the text is copied once.
    void pushText(Token::Kind kind, std::size_t start, std::size_t end, std::string_view text) {
        Token& token = emit(kind, position(start));
        token.length = charactersBetween(start, end);
        token.text = text;
    }

    // The slot with every field cleared but the text's storage.
    Token& emit(Token::Kind kind, std::int64_t start) {
        Token& token = *m_out;
        token.kind = kind;
        token.start = start;
        token.length = 0;
        token.number = 0;
        token.ref = 0;
        token.text.clear();
        m_ready = true;
        return token;
    }

    const CharClasses& m_classes = CharClasses::shared();
    Characters m_chars;
    std::size_t m_i = 0;
    Token* m_out = nullptr; // where the token being scanned goes
    bool m_ready = false;   // whether a token has been made
    std::string m_literal;  // reused buffer for number literals
};

namespace lexer {

bool isAsciiDigit(std::string_view character) {
    return lumo::isAsciiDigit(character);
}

bool startsNumber(std::string_view character, std::string_view next) {
    return lumo::startsNumber(character, [next] { return next; });
}

bool isNumeralUnit(std::string_view character) {
    return japaneseFactor(character) != 0;
}

bool startsName(std::string_view character) {
    return CharClasses::shared().startsName(character);
}

bool continuesName(std::string_view character, NameDigits digits) {
    return CharClasses::shared().continuesName(character, digits);
}

bool isNameSign(std::string_view character) {
    return CharClasses::shared().isSign(character);
}

QuoteClass quoteClassOf(std::string_view character) {
    return character.empty() ? QuoteClass::none : lumo::quoteClassOf(firstScalar(character));
}

} // namespace lexer

SourceText::SourceText(std::string_view line) : m_text(normalize(line)) {
    if (!bytesAreCharacters(m_text))
        m_offsets = unicode::graphemeBoundaries(m_text);
}

std::size_t SourceText::size() const {
    return m_offsets.empty() ? m_text.size() : m_offsets.size() - 1;
}

std::size_t SourceText::offset(std::size_t index) const {
    return m_offsets.empty() ? index : m_offsets[index];
}

std::string_view SourceText::at(std::size_t index) const {
    if (index >= size())
        return {};
    return std::string_view(m_text).substr(offset(index), offset(index + 1) - offset(index));
}

std::string_view SourceText::slice(SourceRange range) const {
    const std::size_t end = std::min<std::size_t>(range.end, size());
    const std::size_t begin = std::min<std::size_t>(range.begin, end);
    return std::string_view(m_text).substr(offset(begin), offset(end) - offset(begin));
}

std::string normalize(std::string_view text) {
    if (isAscii(text))
        return std::string(text); // no ASCII character is rewritten

    const auto& map = normalizationMap();
    std::string out;
    out.reserve(text.size());
    QuoteClass open = QuoteClass::none;
    bool escaped = false;
    for (std::size_t offset = 0; offset < text.size();) {
        if (open == QuoteClass::none) {
            // ASCII other than quotes is never rewritten, so such runs are copied whole.
            const std::size_t end = plainAsciiEnd(text, offset);
            out.append(text.substr(offset, end - offset));
            offset = end;
            if (offset == text.size())
                break;
        }
        char32_t c;
        const std::size_t length = unicode::decodeFirst(text.substr(offset), c);
        // A scalar is copied as written; an invalid byte becomes U+FFFD.
        const std::string_view written = text.substr(offset, length);
        const auto copy = [&] {
            if (length == 1 && c >= 0x80)
                out += unicode::encode(c);
            else
                out += written;
        };
        offset += length;
        if (open != QuoteClass::none) {
            if (escaped) {
                escaped = false;
            } else if (c == U'\\') {
                escaped = true;
            } else if (quoteClassOf(c) == open) {
                out += asciiQuote(open);
                open = QuoteClass::none;
                continue;
            }
            copy();
            continue;
        }
        if (QuoteClass quoteClass = quoteClassOf(c); quoteClass != QuoteClass::none) {
            out += asciiQuote(quoteClass);
            open = quoteClass;
            continue;
        }
        if (c < 0x80) {
            out += static_cast<char>(c);
            continue;
        }
        if (auto mapped = map.find(c); mapped != map.end())
            out += mapped->second;
        else
            copy();
    }
    return out;
}

namespace {

using ByteScanner = Scanner<ByteCharacters>;
using ClusterScanner = Scanner<ClusterCharacters>;

// Every line is read through a stream, so its scanner lives inside it rather than on the heap.
template <class S>
constexpr bool fitsStream = sizeof(S) <= TokenStream::scannerSize && alignof(S) <= alignof(std::max_align_t);
static_assert(fitsStream<ByteScanner> && fitsStream<ClusterScanner>);

} // namespace

TokenStream::TokenStream(std::string_view text) {
    // Normalisation leaves ASCII text as it is, so such a line is scanned in place.
    if (!isAscii(text)) {
        m_normalized = normalize(text);
        text = m_normalized;
    }
    m_bytesAreCharacters = bytesAreCharacters(text);
    if (m_bytesAreCharacters)
        new (m_scannerStorage) ByteScanner(text);
    else
        new (m_scannerStorage) ClusterScanner(text);
}

TokenStream::~TokenStream() {
    if (m_bytesAreCharacters)
        scannerAs<ByteScanner>().~ByteScanner();
    else
        scannerAs<ClusterScanner>().~ClusterScanner();
}

template <class S> S& TokenStream::scannerAs() {
    return *std::launder(reinterpret_cast<S*>(m_scannerStorage));
}

void TokenStream::next(Token& out) {
    // After a character that can't be read, the rest of the line is not read either: the
    // first such character is the one a line reports.
    if (m_failed) {
        out = Token::make(Token::Kind::eof, 0);
        return;
    }
    try {
        if (m_bytesAreCharacters)
            scannerAs<ByteScanner>().next(out);
        else
            scannerAs<ClusterScanner>().next(out);
    } catch (const CalcError&) {
        m_failed = true;
        throw;
    }
}

Token TokenStream::next() {
    Token token;
    next(token);
    return token;
}

std::vector<Token> tokenize(std::string_view text) {
    TokenStream stream(text);
    std::vector<Token> tokens;
    tokens.reserve(16);
    do
        tokens.push_back(stream.next());
    while (tokens.back().kind != Token::Kind::eof);
    return tokens;
}

} // namespace lumo
