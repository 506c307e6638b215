#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace lumo {

/// One token of a line. `start` is a character (grapheme cluster) index into the normalised
/// text; for `ref` it is deliberately the index just after the last digit.
struct Token {
    enum class Kind { number, identifier, string, ref, op, lparen, rparen, lbracket, rbracket, comma, eof };

    Kind kind = Kind::eof;
    std::int64_t start = 0;
    double number = 0;    // payload of `number`
    std::int64_t ref = 0; // payload of `ref`
    std::string text;     // payload of `identifier`, `string` and `op`

    bool operator==(const Token&) const = default;

    static Token makeNumber(double value, std::int64_t start);
    static Token makeString(std::string content, std::int64_t start);
    static Token makeRef(std::int64_t line, std::int64_t start);
    static Token make(Kind kind, std::int64_t start);
};

/// The scanner's character classes, for code that must read text exactly as the lexer does
/// (the syntax colouring). Each takes one character (grapheme cluster) as UTF-8.
namespace lexer {
enum class NameDigits { allowed, notAllowed };
enum class QuoteClass { none, doubleQuote, singleQuote };

bool isAsciiDigit(std::string_view character);
/// A letter, "_" or one of the signs ° ¥ ￥ $ € ℃ ℉.
bool startsName(std::string_view character);
/// Letters, "_", the signs, superscript digits, and ASCII digits when allowed.
bool continuesName(std::string_view character, NameDigits digits);
/// Names that begin with a sign ($5, ¥1200) are not continued by ASCII digits.
bool isNameSign(std::string_view character);
QuoteClass quoteClassOf(std::string_view character);
} // namespace lexer

/// The first pass: full-width forms, typographic signs and quotes rewritten outside quotes.
std::string normalize(std::string_view text);

/// Normalises and scans one line into tokens ending with exactly one `eof`.
/// Throws CalcError for an unusable character, a non-finite number or an unclosed text.
std::vector<Token> tokenize(std::string_view text);

} // namespace lumo
