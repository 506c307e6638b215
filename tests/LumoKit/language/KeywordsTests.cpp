#include <gtest/gtest.h>

#include "LumoKit/base/CalcError.h"
#include "LumoKit/language/Keywords.h"
#include "LumoKit/language/Parser.h"
#include "LumoKit/sheet/Program.h"

using namespace lumo;

TEST(Keywords, NoteRuleIsTheProgramsRule) {
    const struct {
        const char* line;
        bool note;
    } cases[] = {
        {"// note", true}, {"＃ メモ", true},  {"# note", true}, {"#", true},       {"#x", true},
        {"#3", false},     {"#３ + 1", false}, {"#³", false},    {"1 // 2", false}, {"/ 2", false},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(keywords::isNoteText(c.line), c.note) << c.line;
        EXPECT_EQ(Program::makeRow(0, c.line).kind == Program::Row::Kind::comment, c.note) << c.line;
    }
}

TEST(Keywords, ReservedWordsAreNeverNames) {
    std::vector<std::string_view> words(keywords::statementWords.begin(), keywords::statementWords.end());
    words.insert(words.end(), keywords::conversionWords.begin(), keywords::conversionWords.end());
    words.insert(words.end(), keywords::expressionWords.begin(), keywords::expressionWords.end());
    words.insert(words.end(), keywords::truthWords.begin(), keywords::truthWords.end());
    for (const auto word : words) {
        EXPECT_TRUE(keywords::isReservedWord(word)) << word;
        try {
            EXPECT_NE(parseStatement(std::string(word) + " = 1").name, std::string(word));
        } catch (const CalcError&) {
        }
    }
    EXPECT_FALSE(keywords::isReservedWord("range"));
    EXPECT_FALSE(keywords::isReservedWord("iff"));
}
