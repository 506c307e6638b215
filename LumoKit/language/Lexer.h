#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace lumo {

/// A stretch of a line, in characters (grapheme clusters) of its normalised text, end
/// excluded: the unit of Token::start. Two 32-bit indices, since every node of a parsed tree
/// carries one.
struct SourceRange {
    std::uint32_t begin = 0;
    std::uint32_t end = 0;

    bool operator==(const SourceRange&) const = default;
};

/// One token of a line. `start` is a character (grapheme cluster) index into the normalised
/// text; for `ref` it is deliberately the index just after the last digit.
struct Token {
    enum class Kind { number, identifier, string, ref, op, lparen, rparen, lbracket, rbracket, comma, eof };

    Kind kind = Kind::eof;
    std::uint32_t length = 0; // characters read: ending at `start` for `ref`, beginning there otherwise
    std::int64_t start = 0;
    double number = 0;    // payload of `number`
    std::int64_t ref = 0; // payload of `ref`
    std::string text;     // payload of `identifier`, `string` and `op`

    bool operator==(const Token&) const = default;

    /// Every character the token was read from: for `ref`, the "#" and the digits.
    SourceRange range() const {
        const std::int64_t first = kind == Kind::ref ? start - length : start;
        const auto begin = static_cast<std::uint32_t>(first);
        return {begin, begin + length};
    }

    static Token make(Kind kind, std::int64_t start);
};

/// The scanner's character classes, for code that must read text exactly as the lexer does
/// (the syntax colouring). Each takes one character (grapheme cluster) as UTF-8.
namespace lexer {
enum class NameDigits { allowed, notAllowed };
enum class QuoteClass { none, doubleQuote, singleQuote };

bool isAsciiDigit(std::string_view character);
/// A number starts at an ASCII digit, or at "." followed by one.
bool startsNumber(std::string_view character, std::string_view next);
/// 千, 万, 億 and 兆, which scale the number written before them (3万5000).
bool isNumeralUnit(std::string_view character);
/// A letter, "_" or one of the signs ° ¥ ￥ $ € ℃ ℉.
bool startsName(std::string_view character);
/// Letters, "_", the signs, superscript digits, and ASCII digits when allowed.
bool continuesName(std::string_view character, NameDigits digits);
/// Names that begin with a sign ($5, ¥1200) are not continued by ASCII digits.
bool isNameSign(std::string_view character);
QuoteClass quoteClassOf(std::string_view character);
} // namespace lexer

/// A line's normalised text, to be cut by the ranges that tokens and parsed trees carry.
class SourceText {
public:
    explicit SourceText(std::string_view line);

    /// The number of characters.
    std::size_t size() const;
    /// The character at `index`, or an empty view past the end.
    std::string_view at(std::size_t index) const;
    /// The text of the characters in `range`, cut to the line's end.
    std::string_view slice(SourceRange range) const;

private:
    std::size_t offset(std::size_t index) const;

    std::string m_text;
    std::vector<std::size_t> m_offsets; // of each character and the end; empty when characters are bytes
};

/// The first pass: full-width forms, typographic signs and quotes rewritten outside quotes.
std::string normalize(std::string_view text);

/// A line's tokens, scanned one at a time as they are asked for, so that a reader of the line
/// holds only the tokens it is looking at, however long the line. The text must outlive the
/// stream: ASCII lines are read in place.
class TokenStream {
public:
    explicit TokenStream(std::string_view text);
    ~TokenStream();
    // The scanner reads the normalised text in place.
    TokenStream(const TokenStream&) = delete;
    TokenStream& operator=(const TokenStream&) = delete;

    /// The next token; `eof` once the line is read, and on every call after that. Throws
    /// CalcError for an unusable character, a non-finite number or an unclosed text.
    Token next();
    /// The same, written over `out`, whose text's storage is reused.
    void next(Token& out);

    /// Room for the scanner, which is defined with the lexer.
    static constexpr std::size_t scannerSize = 192;

private:
    // The scanner for the line's kind of text: one byte per character, or grapheme clusters.
    template <class S> S& scannerAs();

    std::string m_normalized; // the normalised line, when normalising changed it
    alignas(std::max_align_t) std::byte m_scannerStorage[scannerSize];
    bool m_bytesAreCharacters = true;
    bool m_failed = false;
};

/// Normalises and scans one line into tokens ending with exactly one `eof`.
/// Throws CalcError for an unusable character, a non-finite number or an unclosed text.
std::vector<Token> tokenize(std::string_view text);

} // namespace lumo
