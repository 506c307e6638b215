#include <gtest/gtest.h>

#include "LumoKit/base/Language.h"
#include "LumoUI/editor/ResultColumnHandle.h"
#include "LumoUI/editor/TextRewrites.h"

using namespace lumo;
using textRewrites::LineRewrite;

namespace {

// "|" marks the caret in these lines.
std::pair<QString, int> withCaret(const char* marked) {
    QString text = QString::fromUtf8(marked);
    const int caret = int(text.indexOf(u'|'));
    text.remove(caret, 1);
    return {text, caret};
}

TEST(TextRewrites, RegroupsTheNumberBeingTyped) {
    struct Case {
        const char* before;
        const char* after;    // with the caret
        const char* expected; // with the caret; empty when nothing changes
    };
    const Case cases[] = {
        {"123", "1234|", "1,234|"},
        {"1,234", "1,2345|", "12,345|"},
        {"x = 99,999", "x = 99,9999|", "x = 999,999|"},
        {"1,234", "1,29|34", "12,9|34"},
        {"12,345", "12,34|", "1,234|"}, // deleting a digit regroups what is left
        {"1234.5", "12345|.5", "12,345|.5"},
        {"1.234", "1.2345|", ""},   // digits after the point are never grouped
        {"f(1,23", "f(1,234|", ""}, // grouping the user did not ask for is kept
        {"#123", "#1234|", ""},     // a line reference
        {"\"123", "\"1234|\"", ""}, // quoted text
        {"// 123", "// 1234|", ""}, // a comment
        {"3万500", "3万5000|", ""}, // Japanese numerals
        {"0123", "01234|", ""},     // a leading zero
        {"1e123", "1e1234|", ""},   // an exponent
        {"12 + 345", "12 + 3456|", "12 + 3,456|"},
        {"1|234", "12|234", "12|,234"},
    };
    for (const Case& c : cases) {
        const auto [after, caret] = withCaret(c.after);
        const std::optional<LineRewrite> rewrite =
            textRewrites::regroupDigits(QString::fromUtf8(c.before).remove(u'|'), after, caret);
        if (*c.expected == '\0') {
            EXPECT_FALSE(rewrite) << c.after << " became " << rewrite->line.toStdString();
            continue;
        }
        const auto [expected, expectedCaret] = withCaret(c.expected);
        ASSERT_TRUE(rewrite) << c.after;
        EXPECT_EQ(rewrite->line, expected) << c.after;
        EXPECT_EQ(rewrite->caret, expectedCaret) << c.after;
    }
}

TEST(TextRewrites, RenamesWordsOnly) {
    struct Case {
        const char* text;
        const char* expected;
    };
    const Case cases[] = {
        {"a = 3\nb = a * 2", "cost = 3\nb = cost * 2"},
        {"a = 3\n\"a\" + a", "cost = 3\n\"a\" + cost"},
        {"a = 3\nab + a // a is here", "cost = 3\nab + cost // a is here"},
        {"a = 3\nfor i in range(a):\n    i + a", "cost = 3\nfor i in range(cost):\n    i + cost"},
        {"a=3\na2 + a", "cost=3\na2 + cost"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(textRewrites::renameIdentifier(QString::fromUtf8(c.text), "a", "cost"),
                  QString::fromUtf8(c.expected))
            << c.text;
}

TEST(TextRewrites, ProposesShortUnusedNames) {
    L10n::setCurrent(AppLanguage::english);
    struct Case {
        const char* text;
        int line;
        const char* expected;
    };
    const Case cases[] = {
        {"1200\n3", 0, "a"},
        {"a = 1\n2", 1, "b"},                         // taken by a line
        {"for a in range(3):\n    b + a\n5", 2, "c"}, // taken by a loop, and used
    };
    for (const Case& c : cases)
        EXPECT_EQ(textRewrites::unusedLineName(QString::fromUtf8(c.text), c.line),
                  QString::fromUtf8(c.expected))
            << c.text;
    EXPECT_EQ(textRewrites::nameLine("    1200 * 3", "b"), "    b = 1200 * 3");
}

TEST(TextRewrites, TogglesCommentsOnWholeLines) {
    struct Case {
        const char* text;
        int first;
        int last;
        const char* expected;
    };
    const Case cases[] = {
        {"1 + 2\n3", 0, 0, "// 1 + 2\n3"},
        {"// 1 + 2\n3", 0, 0, "1 + 2\n3"},
        {"//1 + 2", 0, 0, "1 + 2"}, // no space after the marker
        {"for i in range(2):\n    i * 2", 1, 1, "for i in range(2):\n    // i * 2"}, // after the indent
        {"a = 1\n\nb = 2", 0, 2, "// a = 1\n\n// b = 2"},                            // blank lines stay blank
        {"// a = 1\nb = 2", 0, 1, "// // a = 1\n// b = 2"}, // one calculation: all become comments
        {"// a = 1\n  // b = 2", 0, 1, "a = 1\n  b = 2"},
        {"\n  \n", 0, 2, "\n  \n"},        // nothing to toggle
        {"x = 1\n2", 5, 9, "x = 1\n// 2"}, // clamped to the text
    };
    for (const Case& c : cases)
        EXPECT_EQ(textRewrites::toggleComments(QString::fromUtf8(c.text), c.first, c.last),
                  QString::fromUtf8(c.expected))
            << c.text;
}

TEST(ResultColumn, ClampsAndLaysOut) {
    struct Case {
        double requested, available, expected;
    };
    const Case cases[] = {
        {50, 0, 84},     {84, 0, 84},    {84.5, 0, 84.5},  {600, 0, 560},    {600, -1, 560},
        {400, 500, 350}, {400, 200, 84}, {300, 1000, 300}, {900, 2000, 560},
    };
    for (const Case& c : cases)
        EXPECT_DOUBLE_EQ(ResultColumn::clampedWidth(c.requested, c.available), c.expected)
            << c.requested << " in " << c.available;
    EXPECT_DOUBLE_EQ(ResultColumn::textLayoutWidth(1000, 180), 1000 - 50 - 180 - 18 - 24);
    EXPECT_DOUBLE_EQ(ResultColumn::textLayoutWidth(300, 180), 160);
}

} // namespace
