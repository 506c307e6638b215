#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "LumoKit/base/Unicode.h"
#include "LumoKit/document/BuiltinDocuments.h"
#include "LumoKit/sheet/DocumentEvaluator.h"

using namespace lumo;

namespace {

const Timestamp buildTime{1738314900};

std::vector<std::string> headingsOf(const std::string& text) {
    std::vector<std::string> headings;
    for (const std::string& line : unicode::splitLines(text)) {
        if (line.rfind("// ■ ", 0) == 0)
            headings.push_back(line);
    }
    return headings;
}

// Evaluates every sheet the way the document store does (the other sheets in tab order)
// and lists each line that fails, with its sheet, line number and message.
std::vector<std::string> failingLines(const std::vector<Sheet>& sheets) {
    std::vector<std::string> failures;
    for (std::size_t i = 0; i < sheets.size(); ++i) {
        std::vector<SharedSheet> others;
        for (std::size_t j = 0; j < sheets.size(); ++j) {
            if (j != i)
                others.push_back(SharedSheet{sheets[j].name, sheets[j].text});
        }
        const std::vector<std::string> lines = unicode::splitLines(sheets[i].text);
        const std::vector<LineResult> results =
            DocumentEvaluator::evaluate(sheets[i].text, others, EvaluationOptions::current());
        for (std::size_t line = 0; line < results.size(); ++line) {
            if (results[line].outcome.kind == LineOutcome::Kind::failure)
                failures.push_back(sheets[i].name + ":" + std::to_string(line + 1) + " " +
                                   (line < lines.size() ? lines[line] : "") + " → " +
                                   results[line].outcome.message);
        }
    }
    return failures;
}

class LanguageGuard {
public:
    ~LanguageGuard() {
        L10n::setCurrent(AppLanguage::system);
        L10n::setPreferredLanguagesProvider(nullptr);
    }
};

} // namespace

TEST(BuiltinDocuments, SampleDocument) {
    const LanguageGuard guard;
    const struct {
        AppLanguage language;
        std::vector<std::string> names;
        std::string budget;
    } editions[] = {
        {AppLanguage::english,
         {"Getting Started", "Monthly Budget", "Trip Estimate", "Graphs", "Long Sheet"},
         "rent = 820 USD\nutilities = 124 USD\nrent + utilities\n"},
        {AppLanguage::japanese,
         {"はじめてのシート", "家計", "旅行の見積もり", "グラフ", "長いシート"},
         "家賃 = 82000円\n光熱費 = 12400円\n家賃 + 光熱費\n"},
    };
    std::string longSheet;
    for (int n = 100; n <= 4000; n += 100)
        longSheet += std::to_string(n) + "\n";

    for (const auto& edition : editions) {
        L10n::setCurrent(edition.language);
        const LumoDocument document = sampleDocument(buildTime);
        ASSERT_EQ(document.sheets.size(), 5u);
        for (std::size_t i = 0; i < 5; ++i) {
            const Sheet& sheet = document.sheets[i];
            EXPECT_EQ(sheet.id.toString().substr(0, 8), std::string(8, static_cast<char>('1' + i)));
            EXPECT_EQ(sheet.name, edition.names[i]);
            EXPECT_EQ(sheet.updatedAt, buildTime);
        }
        EXPECT_EQ(document.sheets[1].text, edition.budget);
        EXPECT_EQ(document.sheets[4].text, longSheet);
        EXPECT_EQ(document.selectedSheetID, document.sheets[0].id);
        EXPECT_TRUE(document.deletedSheets.empty() && document.keyLayouts.empty());
        EXPECT_EQ(sampleDocument(buildTime), document) << "fixed content and identifiers";
    }
}

TEST(BuiltinDocuments, TutorialOutline) {
    const LanguageGuard guard;
    const std::vector<Sheet> english = tutorialSheets(AppLanguage::english, buildTime);
    const std::vector<Sheet> japanese = tutorialSheets(AppLanguage::japanese, buildTime);
    ASSERT_EQ(english.size(), 4u);
    ASSERT_EQ(japanese.size(), 4u);

    const struct {
        const char* englishName;
        const char* japaneseName;
        std::size_t headings;
    } sheets[] = {
        {"Getting Started", "はじめてのシート", 6},
        {"Units", "単位", 4},
        {"Lists, Text & Graphs", "表・文字・グラフ", 10},
        {"Loops & Functions", "くり返しと関数", 4},
    };
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(english[i].name, sheets[i].englishName);
        EXPECT_EQ(japanese[i].name, sheets[i].japaneseName);
        EXPECT_EQ(headingsOf(english[i].text).size(), sheets[i].headings) << sheets[i].englishName;
        EXPECT_EQ(headingsOf(japanese[i].text).size(), sheets[i].headings) << sheets[i].japaneseName;
        EXPECT_EQ(english[i].updatedAt, buildTime);
    }
    EXPECT_EQ(unicode::splitLines(english[0].text)[0],
              "// Welcome. Type an expression and the answer appears on the right.");
    EXPECT_EQ(unicode::splitLines(japanese[0].text)[0],
              "// ようこそ。ここは「打つと、その行の右に答えが出る」計算用紙です");

    // Fresh identifiers at every build, distinct within the document.
    const std::vector<Sheet> again = tutorialSheets(AppLanguage::english, buildTime);
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_NE(again[i].id, english[i].id);
        EXPECT_NE(english[i].id, english[(i + 1) % 4].id);
    }
}

TEST(BuiltinDocuments, EditionFollowsLanguage) {
    const LanguageGuard guard;
    const struct {
        AppLanguage setting;
        std::vector<std::string> preferred;
        const char* firstName;
    } cases[] = {
        {AppLanguage::japanese, {"en-US"}, "はじめてのシート"},
        {AppLanguage::english, {"ja-JP"}, "Getting Started"},
        {AppLanguage::system, {"ja-JP", "en-US"}, "はじめてのシート"},
        {AppLanguage::system, {"ja"}, "はじめてのシート"},
        {AppLanguage::system, {"en-JP", "ja-JP"}, "Getting Started"},
        {AppLanguage::system, {}, "Getting Started"},
    };
    for (const auto& c : cases) {
        L10n::setPreferredLanguagesProvider([&] { return c.preferred; });
        L10n::setCurrent(c.setting);
        EXPECT_EQ(tutorialSheets(c.setting, buildTime).at(0).name, c.firstName);
        const LumoDocument starter = starterDocument(buildTime);
        EXPECT_EQ(starter.sheets.at(0).name, c.firstName);
        EXPECT_EQ(starter.selectedSheetID, starter.sheets.at(0).id);
        EXPECT_EQ(sampleDocument(buildTime).sheets.at(0).name, c.firstName);
    }
}

// Every example line is product content that the user sees calculated: none may fail,
// in either edition, whichever language the messages are in.
TEST(BuiltinDocuments, EveryLineCalculates) {
    const LanguageGuard guard;
    for (AppLanguage language : {AppLanguage::english, AppLanguage::japanese}) {
        L10n::setCurrent(language);
        EXPECT_EQ(failingLines(tutorialSheets(language, buildTime)), std::vector<std::string>{});
        EXPECT_EQ(failingLines(sampleDocument(buildTime).sheets), std::vector<std::string>{});
    }
}
