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
    double number = 0;   // payload of `number`
    std::int64_t ref = 0; // payload of `ref`
    std::string text;    // payload of `identifier`, `string` and `op`

    bool operator==(const Token&) const = default;

    static Token makeNumber(double value, std::int64_t start);
    static Token makeIdentifier(std::string name, std::int64_t start);
    static Token makeString(std::string content, std::int64_t start);
    static Token makeRef(std::int64_t line, std::int64_t start);
    static Token makeOp(std::string op, std::int64_t start);
    static Token make(Kind kind, std::int64_t start);
};

/// The first pass: full-width forms, typographic signs and quotes rewritten outside quotes.
std::string normalize(std::string_view text);

/// Normalises and scans one line into tokens ending with exactly one `eof`.
/// Throws CalcError for an unusable character, a non-finite number or an unclosed text.
std::vector<Token> tokenize(std::string_view text);

} // namespace lumo
