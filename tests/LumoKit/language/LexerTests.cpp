#include <gtest/gtest.h>

#include <charconv>
#include <string>
#include <vector>

#include "LumoKit/language/Lexer.h"
#include "support/EngineTestSupport.h"

using namespace lumo;
using namespace lumo::test;

namespace {

// Tokens as one compact line: numbers bare, then "id:", "str:", "#", "op:" and punctuation.
std::string describe(const std::vector<Token>& tokens) {
    static const char* const punctuation[] = {"", "", "", "", "", "(", ")", "[", "]", ",", "eof"};
    std::string out;
    for (const Token& token : tokens) {
        out += out.empty() ? "" : " ";
        char buffer[400];
        switch (token.kind) {
        case Token::Kind::number:
            out.append(
                buffer,
                std::to_chars(buffer, buffer + sizeof buffer, token.number, std::chars_format::fixed).ptr);
            break;
        case Token::Kind::identifier:
            out += "id:" + token.text;
            break;
        case Token::Kind::string:
            out += "str:" + token.text;
            break;
        case Token::Kind::ref:
            out += "#" + std::to_string(token.ref);
            break;
        case Token::Kind::op:
            out += "op:" + token.text;
            break;
        default:
            out += punctuation[static_cast<int>(token.kind)];
        }
    }
    return out;
}

std::vector<std::int64_t> starts(const std::vector<Token>& tokens) {
    std::vector<std::int64_t> out;
    for (const Token& token : tokens)
        out.push_back(token.start);
    return out;
}

std::string lexError(std::string_view text) {
    return messageOf([&] { tokenize(text); });
}

struct Case {
    const char* input;
    const char* expected;
};

} // namespace

TEST(Lexer, NormalizeRewritesOutsideQuotesOnly) {
    const Case cases[] = {
        {"１２３＋４", "123+4"},
        {"ＡＺａｚ（）［］＾％！＃．／：＜＝＞，－＊", "AZaz()[]^%!#./:<=>,-*"},
        {"＄＆＇；？＠＼", "＄＆＇；？＠＼"},
        {"3×4÷2·1•2⋅3", "3*4/2*1*2*3"},
        {"a−b–c—d―e", "a-b-c-d―e"},
        {"a≠b ≤≦ ≥≧", "a!=b <=<= >=>="},
        {"⇒➡▶→", "→→→→"},
        {"、【】〔〕　", ",[][] "},
        {"“a×b”×２", "\"a×b\"*2"},
        {"“a\" \"b”", "\"a\" \"b\""},
        {"'a“b' 'it\\’s' ×", "'a“b' 'it\\’s' *"},
        {"“a\\”b” ×", "\"a\\”b\" *"},
        {"a\xff×\"\xfe\"", "a\uFFFD*\"\uFFFD\""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(normalize(c.input), c.expected) << c.input;
}

TEST(Lexer, TokenKindsAndPayloads) {
    const Case cases[] = {
        {"", "eof"},
        {"１２３＋４", "123 op:+ 4 eof"},
        {"3×4÷2 a≠b x ≧ 1", "3 op:* 4 op:/ 2 id:a op:!= id:b id:x op:>= 1 eof"},
        {"a==b<=c>=d<e>f=g:h",
         "id:a op:== id:b op:<= id:c op:>= id:d op:< id:e op:> id:f op:= id:g op:: id:h eof"},
        {"+-*/%^→", "op:+ op:- op:* op:/ op:% op:^ op:→ eof"},
        {"f(【1、2】)", "id:f ( [ 1 , 2 ] ) eof"},
        // Numbers: grouping, points, exponents.
        {"1,234.5", "1234.5 eof"},
        {"1,23 1,2345 1,234,5", "1 , 23 1 , 2345 1234 , 5 eof"},
        {"max(1,234)", "id:max ( 1234 ) eof"},
        {".5+0.25", "0.5 op:+ 0.25 eof"},
        {"1.2.3", "0 eof"},
        {"1e3 2E-3 1e+2", "1000 0.002 100 eof"},
        {"1e 2e+x 1e-400 1e5.5", "1 id:e 2 id:e op:+ id:x 0 100000 0.5 eof"},
        // Japanese numeral units.
        {"1億2000万 3万5000 1億2000万5", "120000000 35000 120000005 eof"},
        {"1.5万 1千万 3万円", "15000 1000 id:万 30000 id:円 eof"},
        // References.
        {"#3 * 2 #99999999999999999999", "#3 op:* 2 #0 eof"},
        // Names, signs and units.
        {"°C ¥ ￥ € ℃ ℉ m² x2 _a1", "id:°C id:¥ id:￥ id:€ id:℃ id:℉ id:m² id:x2 id:_a1 eof"},
        {"km/h N/mm2 N/mm²", "id:km/h id:N/mm2 id:N/mm² eof"},
        {"a/b km/", "id:a op:/ id:b id:km op:/ eof"},
        {"の3000 の 3000", "id:の3000 id:の 3000 eof"},
        {"if x in True", "id:if id:x id:in id:True eof"},
        // Texts.
        {"“hi” “a\"", "str:hi str:a eof"},
        {"'a\\\"b'", "str:a\"b eof"},
        {"\"a\\nb\\tc\\\\d\\q\"", "str:a\nb\tc\\dq eof"},
        {"'say \"x\"'", "str:say \"x\" eof"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(describe(tokenize(c.input)), c.expected) << c.input;
}

TEST(Lexer, StartsCountCharactersOfTheNormalisedText) {
    struct StartCase {
        const char* input;
        std::vector<std::int64_t> expected;
    };
    const StartCase cases[] = {
        {"", {0}},
        {"#3 * 2", {2, 3, 5, 6}},
        {"a≠b", {0, 1, 3, 4}}, // ≠ becomes two characters
        {"日本 + 1", {0, 3, 5, 6}},
        {"e\u0301+1", {0, 1, 2, 3}}, // a letter with a combining accent is one character
        {"a\r\nb", {0, 2, 3}},       // CR LF is one character
        {"“ab” x", {0, 5, 6}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(starts(tokenize(c.input)), c.expected) << c.input;
}

TEST(Lexer, RangesCoverEachTokensCharacters) {
    struct RangeCase {
        const char* input;
        std::vector<std::string> expected; // the text of each token's range, eof last
    };
    const RangeCase cases[] = {
        {"#12 * km/h", {"#12", "*", "km/h", ""}}, // a ref's range starts at "#", unlike its start
        {"a≠b", {"a", "!=", "b", ""}},
        {"“ab” + 1,234", {"\"ab\"", "+", "1,234", ""}},
        {"3万5000円（x）", {"3万5000", "円", "(", "x", ")", ""}},
        {"e\u0301 >= 1e3", {"e\u0301", ">=", "1e3", ""}},
    };
    for (const auto& c : cases) {
        const SourceText source(c.input);
        std::vector<std::string> texts;
        for (const Token& token : tokenize(c.input))
            texts.emplace_back(source.slice(token.range()));
        EXPECT_EQ(texts, c.expected) << c.input;
    }
}

TEST(Lexer, Failures) {
    const Case cases[] = {
        {"5!", "The character “!” can’t be used"},
        {"1.", "The character “.” can’t be used"},
        {"#", "The character “#” can’t be used"},
        {"＄5", "The character “＄” can’t be used"},
        {"\x01", "The character “\x01” can’t be used"},
        {"\xff", "The character “\uFFFD” can’t be used"},
        {"👍🏽", "The character “👍🏽” can’t be used"},
        {"1e400", "The number is too large"},
        {"1e308万", "The number is too large"},
        {"\"abc", "Missing closing \""},
        {"'abc", "Missing closing '"},
        {"\"abc\\\" \\", "Missing closing \""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(lexError(c.input), c.expected) << c.input;
}

TEST(Lexer, LongLinesEndInTokens) {
    EXPECT_THROW(tokenize(std::string(100000, '7')), CalcError);
    EXPECT_EQ(tokenize("'" + std::string(100000, 'x') + "'")[0].text.size(), 100000u);
    EXPECT_EQ(tokenize(std::string(100000, '(')).size(), 100001u);
}
