#include <gtest/gtest.h>

#include "LumoKit/base/Unicode.h"
#include "LumoKit/editing/SyntaxHighlighter.h"

using namespace lumo;

namespace {

using Piece = std::pair<std::string, SyntaxKind>;

// The coloured pieces of a line as texts, which reads far better than offsets.
std::vector<Piece> pieces(const std::string& line) {
    std::vector<Piece> out;
    for (const auto& r : highlightLine(line)) {
        auto from = unicode::byteOffsetOfUtf16(line, static_cast<std::size_t>(r.offset));
        auto to = unicode::byteOffsetOfUtf16(line, static_cast<std::size_t>(r.offset + r.length));
        out.emplace_back(line.substr(from, to - from), r.kind);
    }
    return out;
}

} // namespace

TEST(SyntaxHighlighter, ClassifiesPiecesOfALine) {
    using enum SyntaxKind;
    struct Case {
        std::string line;
        std::vector<Piece> expected;
    };
    const Case cases[] = {
        {"a = 12 mm", {{"a", name}, {"=", operatorMark}, {"12", number}, {"mm", unit}}},
        {"price × 1,234.5", {{"price", name}, {"×", operatorMark}, {"1,234.5", number}}},
        {"3万5000円 ÷ .5", {{"3万5000", number}, {"円", unit}, {"÷", operatorMark}, {".5", number}}},
        {"SQRT(2)", {{"SQRT", function}, {"(", operatorMark}, {"2", number}, {")", operatorMark}}},
        {"if x > 1:", {{"if", keyword}, {"x", name}, {"1", number}}},
        {"for i in range(3):",
         {{"for", keyword},
          {"i", name},
          {"in", keyword},
          {"range", keyword},
          {"(", operatorMark},
          {"3", number},
          {")", operatorMark}}},
        {"true and not False", {{"true", name}, {"and", keyword}, {"not", keyword}, {"False", keyword}}},
        {"100 km/h → m/s", {{"100", number}, {"km/h", unit}, {"→", operatorMark}, {"m/s", unit}}},
        {"a/b", {{"a", name}, {"/", operatorMark}, {"b", name}}},
        {"x2 + $5 m²", {{"x2", name}, {"+", operatorMark}, {"$", unit}, {"5", number}, {"m²", unit}}},
        {"\"a // b\" + 1", {{"\"a // b\"", quoted}, {"+", operatorMark}, {"1", number}}},
        {"“hi\" + 'x’", {{"“hi\"", quoted}, {"+", operatorMark}, {"'x’", quoted}}},
        {"\"a\\\"b\" c", {{"\"a\\\"b\"", quoted}, {"c", name}}},
        {"\"open x", {{"open", name}, {"x", name}}},
        {"x = 2 // note", {{"x", name}, {"=", operatorMark}, {"2", number}, {"// note", comment}}},
        {"＃ メモ", {{"＃ メモ", comment}}},
        {" # heading 1", {{" # heading 1", comment}}},
        {"#3 * 2", {{"3", number}, {"*", operatorMark}, {"2", number}}},
        {"", {}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(pieces(c.line), c.expected) << c.line;
}

TEST(SyntaxHighlighter, RangesCountUtf16Units) {
    using enum SyntaxKind;
    // The family emoji takes 8 UTF-16 units, a flag 4, e + U+0301 2.
    EXPECT_EQ(highlightLine("👩‍👩‍👧 1 🇯🇵 e\u0301x 2"),
              (std::vector<SyntaxRange>{{9, 1, number}, {16, 3, name}, {20, 1, number}}));
}
