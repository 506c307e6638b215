#include <gtest/gtest.h>

#include "LumoKit/editing/LineEditor.h"

using namespace lumo;
using namespace std::string_literals;

namespace {

// UTF-16 lengths: the family emoji is 8 units, a flag 4, e + U+0301 2, a kanji 1.
constexpr const char* family = "👩‍👩‍👧";
constexpr const char* flag = "🇯🇵";

} // namespace

TEST(LineEditor, Move) {
    struct Case {
        CursorMove kind;
        std::string text;
        std::int64_t caret, expected;
    };
    using enum CursorMove;
    const Case cases[] = {
        {left, "", 0, 0},
        {left, "ab", -5, 0},
        {left, "ab", 99, 1},
        {left, "a"s + family, 9, 1},
        {left, "a"s + flag + "b", 5, 1},
        {left, "ae\u0301", 3, 1},
        {left, "ae\u0301", 2, 1},
        {right, "ab", 99, 2},
        {right, "a"s + family + "b", 1, 9},
        {right, "e\u0301x", 0, 2},
        {lineStart, "ab\ncd", 4, 3},
        {lineStart, "ab\n", 3, 3},
        {lineEnd, "ab\ncd", 0, 2},
        {lineEnd, "ab\ncd", 3, 5},
        {lineEnd, "ab\n", 3, 3},
        {up, "ab\ncd", 1, 1},
        {up, "ab\nwxyz", 7, 2},
        {up, "ab\n\ncd", 6, 3},
        {up, "\nab", 2, 0},
        {up, "a"s + family + "\nxyz", 12, 1},
        {down, "ab\ncd", 1, 4},
        {down, "ab\ncd", 4, 4},
        {down, "ab\n", 1, 3},
        {down, "ab\n", 3, 3},
        {down, "abcd\nxy\n", 3, 7},
        {down, "abc\nxy", 3, 6},
        {down, "ab\nx"s + family, 2, 4},
        {down, "abc\n"s + flag, 3, 4},
    };
    for (const auto& c : cases)
        EXPECT_EQ(LineEditor::move(c.kind, c.text, c.caret), c.expected)
            << rawValue(c.kind) << " in \"" << c.text << "\" from " << c.caret;
}

TEST(LineEditor, NewlineIndent) {
    struct Case {
        std::string text;
        std::int64_t caret;
        std::string expected;
    };
    const Case cases[] = {
        {"abc", 3, ""},           {"  x = 1", 7, "  "},
        {"if x > 1:", 9, "    "}, {"\tdef f(x)：  ", 12, "\t    "},
        {"　　a", 3, "　　"},     {" \t　x:", 5, " \t　    "},
        {"if x:\n  y", 9, "  "},  {"if x:\ny", 5, "    "},
        {"if x: y", 5, "    "},   {"  ab", 1, " "},
        {"if x:", -3, ""},        {"if x:", 99, "    "},
        {"計算:", 3, "    "},     {family + ":"s, 9, "    "},
        {family + ":"s, 8, ""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(LineEditor::newlineIndent(c.text, c.caret), c.expected) << c.text << " at " << c.caret;
}

TEST(LineEditor, ToggleSign) {
    struct Case {
        std::string text;
        std::int64_t caret;
        SignToggle expected;
    };
    const Case cases[] = {
        {"a = 12", 6, {"a = -12", 7}},
        {"a = -12", 7, {"a = 12", 6}},
        {"5-3", 3, {"5--3", 4}},
        {"", 0, {"-", 1}},
        {"x + ", 4, {"x + -", 5}},
        {"3万", 2, {"-3万", 3}},
        {"1,234.5", 7, {"-1,234.5", 8}},
        {"-7", 2, {"7", 1}},
        {"a\n-7", 4, {"a\n7", 3}},
        {"12", 1, {"-12", 2}},
        {family + " 5"s, 3, {family + " -5"s, 4}},
        {flag + "12"s, 3, {flag + "-12"s, 4}},
        {"x = １２", 6, {"x = -１２", 7}},
        {"e\u0301 3", 3, {"e\u0301 -3", 4}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(LineEditor::toggleSign(c.text, c.caret), c.expected) << c.text << " at " << c.caret;
}

TEST(LineEditor, SnippetSpacing) {
    struct Case {
        std::string snippet, text;
        std::int64_t caret;
        SnippetRole role;
        std::string expected;
    };
    using enum SnippetRole;
    const Case cases[] = {
        {"price", "a", 1, plain, " price"},
        {"price", "a", 1, namedValue, " + price"},
        {"price", "a ", 2, namedValue, "price"},
        {"(", "a", 1, plain, "("},
        {"sqrt(", "", 0, plain, "sqrt("},
        {"_x", "a", 1, plain, " _x"},
        {"x", "a", 0, plain, "x"},
        {"x", "ab", 99, plain, " x"},
        {"x", "e\u0301", 1, plain, " x"},
        {"x", family, 1, plain, "x"},
        {"", "a", 1, plain, ""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(LineEditor::snippetSpacing(c.snippet, c.text, c.caret, c.role), c.expected)
            << c.snippet << " after " << c.text;
    EXPECT_EQ(LineEditor::snippetSpacing(InsertSnippet{"total", 0, true}, "5", 1), " + total");
}

TEST(LineEditor, MultiplySign) {
    struct Case {
        std::string text;
        std::int64_t caret;
        std::string expected;
    };
    const Case cases[] = {
        {"", 0, "× "},      {"3", 1, " × "},         {"3 ", 2, "× "},
        {"3\n", 2, "× "},   {"3", -2, "× "},         {"// note 3", 9, ""},
        {"a // b", 99, ""}, {"3 // note", 1, " × "}, {"// note\n3", 9, " × "},
        {"/ /x", 4, " × "}, {"計算", 2, " × "},      {family, 1, " × "},
    };
    for (const auto& c : cases)
        EXPECT_EQ(LineEditor::multiplySign(c.text, c.caret), c.expected) << c.text << " at " << c.caret;
}
