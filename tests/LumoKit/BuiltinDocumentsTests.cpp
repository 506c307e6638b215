#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "BuiltinDocuments.h"
#include "SheetEvaluator.h"
#include "Unicode.h"

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

std::vector<std::string> firstLines(const std::string& text, std::size_t count) {
    std::vector<std::string> lines = unicode::splitLines(text);
    lines.resize(std::min(count, lines.size()));
    return lines;
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
        const std::vector<LineResult> results = DocumentEvaluator::evaluate(sheets[i].text, others);
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
        std::string trip;
        std::string graphs;
        std::string intro;
    } editions[] = {
        {AppLanguage::english,
         {"Getting Started", "Monthly Budget", "Trip Estimate", "Graphs", "Long Sheet"},
         "rent = 820 USD\nutilities = 124 USD\nrent + utilities\n",
         "flights = 340 USD\nhotel = 180 USD\nflights + hotel\n",
         "// Write an expression and it becomes a curve\nplot(x^2 - 3x)\n\n// A list turns straight into "
         "bars\n"
         "sales = [420, 610, 380, 540]\nchart(sales)\n",
         "// Type, and the answer appears on the right\n1200 × 35\n+ 10%\n\n"
         "// Names and units work in your calculations\nwidth = 120 mm\ndepth = 300 mm\n"
         "area = width × depth\n36 kN / area in N/mm2\n\n// Mix time and speed freely\n2 h + 30 min\n"
         "100 km/h × 2 h\n\n// Put numbers in a list and add them up\nprices = [4800, 12000, "
         "3200]\nsum(prices)\n"},
        {AppLanguage::japanese,
         {"はじめてのシート", "家計", "旅行の見積もり", "グラフ", "長いシート"},
         "家賃 = 82000円\n光熱費 = 12400円\n家賃 + 光熱費\n",
         "交通費 = 34000円\n宿 = 18000円\n交通費 + 宿\n",
         "// 式を書くと、その場で曲線になります\nplot(x^2 - 3x)\n\n// 表はそのまま棒グラフにできます\n"
         "売上 = [420, 610, 380, 540]\nchart(売上)\n",
         "// 打つとすぐ右に答えが出ます\n1200 × 35\n+ 10%\n\n// 名前と単位は、そのまま計算に使えます\n"
         "梁幅 = 120 mm\n梁せい = 300 mm\n断面積 = 梁幅 × 梁せい\n36 kN / 断面積 in N/mm2\n\n"
         "// 時間や速さも混ぜられます\n2 h + 30 min\n100 km/h × 2 h\n\n// 表にして、まとめて集計もできます\n"
         "価格 = [4800, 12000, 3200]\nsum(価格)\n"},
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
            const char digit = static_cast<char>('1' + i);
            EXPECT_EQ(sheet.id, Uuid::fromString(std::string(8, digit) + "-" + std::string(4, digit) + "-" +
                                                 std::string(4, digit) + "-" + std::string(4, digit) + "-" +
                                                 std::string(12, digit)));
            EXPECT_EQ(sheet.name, edition.names[i]);
            EXPECT_EQ(sheet.updatedAt, buildTime);
            EXPECT_TRUE(sheet.lockedLines.empty());
        }
        EXPECT_EQ(document.sheets[0].text, edition.intro);
        EXPECT_EQ(document.sheets[1].text, edition.budget);
        EXPECT_EQ(document.sheets[2].text, edition.trip);
        EXPECT_EQ(document.sheets[3].text, edition.graphs);
        EXPECT_EQ(document.sheets[4].text, longSheet);
        EXPECT_EQ(document.selectedSheetID, document.sheets[0].id);
        EXPECT_TRUE(document.deletedSheets.empty() && document.keyLayouts.empty());
        EXPECT_FALSE(document.keyLayoutsUpdatedAt || document.sheetOrderUpdatedAt);
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
        std::vector<std::string> englishStart;
        std::vector<std::string> japaneseStart;
        std::vector<std::string> headings;
    } sheets[] = {
        {"Getting Started",
         "はじめてのシート",
         {"// Welcome. Type an expression and the answer appears on the right.",
          "// Lines beginning with // are notes and are not calculated."},
         {"// ようこそ。ここは「打つと、その行の右に答えが出る」計算用紙です",
          "// この行のように // で始めた行はメモになり、計算しません"},
         {"// ■ Try typing", "// ■ Start a line with an operator to continue the line above",
          "// ■ Name a value and use it anywhere", "// ■ sum totals everything since the last blank line",
          "// ■ prev is the line above; #3 is the answer on line 3",
          "// ■ Lists in [ ] and text in \" \" work too"}},
        {"Units",
         "単位",
         {"// Write a unit after a number and it carries through to the answer"},
         {},
         {"// ■ Multiplying and dividing builds compound units", "// ■ Converting", "// ■ Same kinds add up",
          "// ■ Units that cancel out disappear"}},
        {"Lists, Text & Graphs",
         "表・文字・グラフ",
         {"// ■ Numbers in [ ] make a list", "prices = [4800, 12000, 3200, 9600]", "sum(prices)"},
         {},
         {"// ■ Numbers in [ ] make a list", "// ■ Pick an item (counting from 0; -1 is the last)",
          "// ■ Sorting and counting", "// ■ + joins on the end, × repeats", "// ■ Quotes make text",
          "// ■ str( ) turns a number into text so it can join",
          "// ■ List and text lines stay out of the running sum", "// ■ A list becomes a bar chart",
          "// ■ An expression becomes a curve",
          "// ■ Use y as well and it is drawn on three axes: x, y and z"}},
        {"Loops & Functions",
         "くり返しと関数",
         {"// The syntax is Python's: end a line with : and indent the next line.",
          "// Pressing ⏎ indents for you."},
         {"// 書き方は Python と同じです。行の終わりに : を付けて、次の行を字下げします",
          "// ⏎ を押すと字下げは自動で入ります"},
         {"// ■ If", "// ■ Repeat", "// ■ Write your own function (callable from other sheets too)",
          "// ■ Take a list apart and run each item through it"}},
    };
    for (std::size_t i = 0; i < 4; ++i) {
        const auto& expected = sheets[i];
        EXPECT_EQ(english[i].name, expected.englishName);
        EXPECT_EQ(japanese[i].name, expected.japaneseName);
        EXPECT_EQ(firstLines(english[i].text, expected.englishStart.size()), expected.englishStart);
        EXPECT_EQ(firstLines(japanese[i].text, expected.japaneseStart.size()), expected.japaneseStart);
        EXPECT_EQ(headingsOf(english[i].text), expected.headings) << expected.englishName;
        EXPECT_EQ(headingsOf(japanese[i].text).size(), expected.headings.size()) << expected.japaneseName;
        EXPECT_EQ(english[i].updatedAt, buildTime);
    }

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

TEST(BuiltinDocuments, TwoStartersConverge) {
    const LanguageGuard guard;
    L10n::setCurrent(AppLanguage::english);
    // Two devices each start with their own tutorial, a few seconds apart.
    const LumoDocument local = starterDocument(buildTime).normalized(buildTime);
    const LumoDocument remote = starterDocument(Timestamp{buildTime.seconds + 5}).normalized(buildTime);
    const Timestamp syncTime{buildTime.seconds + 60};

    const LumoDocument here = local.merged(remote, syncTime).normalized(syncTime);
    const LumoDocument there = remote.merged(local, syncTime).normalized(syncTime);
    ASSERT_EQ(here.sheets.size(), 4u);
    EXPECT_EQ(here.sheets, local.sheets) << "the earlier tutorial is kept on both devices";
    EXPECT_EQ(there.sheets, here.sheets);
    EXPECT_EQ(here.deletedSheets.size(), 4u);
    for (const Sheet& sheet : remote.sheets)
        EXPECT_EQ(here.deletedSheets.at(sheet.id.toString()), syncTime);

    // The tombstones keep the removed copies away when the devices sync again.
    EXPECT_EQ(here.merged(remote, syncTime).normalized(syncTime).sheets, local.sheets);
}
