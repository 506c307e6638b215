#include <gtest/gtest.h>

#include "LumoKit/base/Unicode.h"

using namespace lumo;

TEST(Unicode, GraphemeClusters) {
    struct Case {
        std::string text;
        std::size_t count;
    };
    const Case cases[] = {
        {"", 0},
        {"e\u0301", 1},                                    // e + combining acute
        {"\U0001F468\u200D\U0001F469\u200D\U0001F467", 1}, // family emoji (ZWJ sequence)
        {"\U0001F1EF\U0001F1F5", 1},                       // flag
        {"税込", 2},
        {"\xff\xfe", 2}, // invalid bytes become one character each
        // ASCII next to other characters: marks and joiners still attach, pairs still pair.
        {"ab\u0301c", 3},
        {"a\r\nb\r\r", 5},
        {"1\U0001F1EF\U0001F1F5\U0001F1EF\U0001F1F5", 3},
        {"\U0001F1EFx\U0001F1F5", 3},
        {"\U0001F468\u200Da", 2},
        {"x\xff\u0301", 2},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(unicode::graphemeCount(c.text), c.count) << c.text;
        const auto clusters = unicode::graphemes(c.text);
        EXPECT_EQ(clusters.size(), c.count) << c.text;
        // Boundaries locate the same clusters in the text itself.
        const auto boundaries = unicode::graphemeBoundaries(c.text);
        ASSERT_EQ(boundaries.size(), c.count + 1) << c.text;
        for (std::size_t i = 0; i < c.count && c.text.find('\xff') == std::string::npos; ++i)
            EXPECT_EQ(c.text.substr(boundaries[i], boundaries[i + 1] - boundaries[i]), clusters[i]) << c.text;
    }
}

TEST(Unicode, CaseTrimAndNormalisation) {
    EXPECT_EQ(unicode::toLower("TOTAL Äb"), "total äb");
    EXPECT_EQ(unicode::toUpper("c"), "C");
    const std::pair<std::string, std::string> trims[] = {
        {"\u3000 a b \t", "a b"},
        {"\u00A0x\u2028", "x"},
        {" \t\u3000", ""},
        {"a\xff ", "a\uFFFD"}, // invalid bytes are repaired
    };
    for (const auto& [text, trimmed] : trims)
        EXPECT_EQ(unicode::trim(text), trimmed) << text;
    // The view is read from both ends; a broken sequence at either end is kept, not a space.
    const std::pair<std::string, std::string> viewTrims[] = {
        {"\u3000 日本 \u3000", "日本"}, {"x\u3000\x80 ", "x\u3000\x80"}, {" \u3000\x80", "\x80"},
        {" \xE3\x80", "\xE3\x80"},      {"x\u2028\u00A0", "x"},
    };
    for (const auto& [text, trimmed] : viewTrims)
        EXPECT_EQ(unicode::trimView(text), trimmed) << text;
    EXPECT_TRUE(unicode::isAscii("twelve bytes"));
    EXPECT_FALSE(unicode::isAscii("eight by\u00e9"));
    EXPECT_FALSE(unicode::isAscii("\u00e9ight bytes"));
    EXPECT_EQ(unicode::nfc("e\u0301"), "\u00e9");
}

TEST(Unicode, Utf16Offsets) {
    std::string text = "a\U0001F600b"; // the emoji takes two UTF-16 units and four bytes
    EXPECT_EQ(unicode::utf16Length(text), 4u);
    EXPECT_EQ(unicode::byteOffsetOfUtf16(text, 3), 5u);
    EXPECT_EQ(unicode::utf16OffsetOfByte(text, 5), 3u);
    EXPECT_EQ(unicode::byteOffsetOfUtf16(text, 99), text.size());
}

TEST(Unicode, SplitLines) {
    EXPECT_EQ(unicode::splitLines(""), std::vector<std::string>{""});
    EXPECT_EQ(unicode::splitLines("a\n"), (std::vector<std::string>{"a", ""}));
    EXPECT_EQ(unicode::splitLines("a\nb"), (std::vector<std::string>{"a", "b"}));
}

TEST(Unicode, ValidUtf8IsWhatDecodingAcceptsWhole) {
    const struct {
        std::string text;
        bool valid;
    } cases[] = {
        {"", true},
        {"plain ascii, longer than eight bytes", true},
        {"82000円 × 1.1", true},
        {"\xF0\x9F\x98\x80 and \xF4\x8F\xBF\xBF", true}, // U+1F600, U+10FFFF
        {"\xEF\xBF\xBD", true},                          // U+FFFD written out
        {"\xC0\xAF", false},                             // overlong "/"
        {"\xE0\x80\xAF", false},                         // overlong, three bytes
        {"\xED\xA0\x80", false},                         // a surrogate
        {"\xF4\x90\x80\x80", false},                     // past U+10FFFF
        {"abcdefgh\xE5\x86", false},                     // cut short at the end
        {"\xE5\x86x", false},                            // cut short by ASCII
        {"1234567\xE5\x86", false},                      // cut short after ASCII in one word
        {"12345\xC0\xAF"
         "90",
         false},         // overlong after ASCII in one word
        {"\x80", false}, // a lone continuation byte
        {"\xFF", false},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(unicode::isValidUtf8(c.text), c.valid) << c.text;
        // A valid text is its own repair; an invalid one is not.
        EXPECT_EQ(unicode::repairUtf8(c.text) == c.text, c.valid) << c.text;
    }
}
