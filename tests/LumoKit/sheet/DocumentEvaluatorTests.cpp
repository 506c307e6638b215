#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "LumoKit/sheet/DocumentEvaluator.h"
#include "LumoKit/sheet/SelectionSummary.h"
#include "LumoKit/values/ValueFormatter.h"
#include "support/SheetTestSupport.h"

using namespace lumo;
using namespace lumo::test;

namespace {

const std::string mixed = "! Units of different kinds are mixed, so they can’t be summed";

} // namespace

TEST(DocumentEvaluator, LinesMatchTheEditor) {
    expectSheets({
        {"", {""}},
        {"1\n", {"1", ""}},
        {"\n\n", {"", "", ""}},
        {"  \t\n2", {"", "2"}},
    });
}

TEST(DocumentEvaluator, PrevSumAndTotal) {
    expectSheets({
        {"sum\nprev", {"0", "0"}},
        {"prev", {"! prev is not defined"}},
        {"10 m\n20 cm\nsum", {"10 m", "20 cm", "10.2 m"}},
        {"10 m\n2 kg\nsum", {"10 m", "2 kg", mixed}},
        {"10 m\n2 kg\n\n5\nsum\ntotal", {"10 m", "2 kg", "", "5", "5", mixed}},
        // An argument named sum hides the mixed sum inside its function.
        {"10 m\n2 kg\ndef f(sum):\n    sum\n    return sum\nf(3)\nsum",
         {"10 m", "2 kg", "", "3", "3", "3", mixed}},
        {"1\n2\n\n3\nsubtotal\n小計\n合計", {"1", "2", "", "3", "3", "6", "15"}},
        {"4\nans\n前 + 1", {"4", "4", "5"}},
        // A failing line is skipped by prev, sum and total.
        {"1\n1 +\n2\nsum\nprev", {"1", "! The expression ends in the middle", "2", "3", "3"}},
        // Lists and texts are shown but not added up.
        {"2\n[1, 2]\n\"a\"\nsum\nprev", {"2", "[1, 2]", "\"a\"", "2", "2"}},
        // Sum, Total and TOTAL are ordinary names when read.
        {"Sum", {"! Sum is not defined"}},
        {"10%\n50\nsum", {"10%", "50", "50.1"}},
    });
}

TEST(DocumentEvaluator, BuiltinWordsCannotBeNames) {
    expectSheets({
        {"total = 3\ntotal", {"! “total” is a built-in word and can’t be used as a name", "0"}},
        {"前 = 3", {"! “前” is a built-in word and can’t be used as a name"}},
        {"Total = 3\nTotal",
         {"! “Total” is a built-in word and can’t be used as a name", "! Total is not defined"}},
        {"SUBTOTAL = 1", {"! “SUBTOTAL” is a built-in word and can’t be used as a name"}},
    });
    expectSheets({{"ans = 1", {"! 「ans」はもともとある言葉なので名前に使えません"}},
                  {"1 m\n1 kg\nsum", {"1 m", "1 kg", "! 種類の違う単位が混ざっていて合計できません"}}},
                 {}, Language::japanese);
}

TEST(DocumentEvaluator, TrailingEqualsAndContinuation) {
    expectSheets({
        {"1200 × 35 =", {"42000"}},
        {"2 + 3 = = ＝", {"5"}},
        {"x = 4 ＝\nx", {"4", "4"}},
        {"100\n× 2\n- 5\n-5", {"100", "200", "195", "-5"}},
        {"100\n* 2\n/ 4\n^ 2\n÷ 5\n／ 5\n＊ 3", {"100", "200", "50", "2500", "500", "100", "300"}},
        {"100\n+ 10%", {"100", "110"}},
        {"100\n+10", {"100", "10"}},
        {"100\n－ 1\n＋ 2", {"100", "99", "101"}},
        {"× 2", {"! “*” isn’t used correctly here"}},
    });
}

TEST(DocumentEvaluator, NamesLineReferencesAndFailures) {
    expectSheets({
        {"price = 1200\nprice × 2\n#2 + 1", {"1200", "2400", "2401"}},
        {"#2\n5", {"! #2 not found", "5"}},
        {"a = 1\na = a +\na", {"1", "! The expression ends in the middle", "1"}},
        {"a = 1\na = nope\na", {"1", "! nope is not defined", "1"}},
        {"// note\n# note\n#\n＃ note\n#1", {"//", "//", "//", "//", "! #1 not found"}},
    });
}

TEST(DocumentEvaluator, LineResultsCarryNames) {
    const auto results =
        DocumentEvaluator::evaluate("price = 1200\nbad = 1 +\n3\nplot(x)", {}, sheetOptions());
    ASSERT_EQ(results.size(), 4u);
    EXPECT_EQ(results[0].name, "price");
    EXPECT_EQ(results[1].name, std::nullopt); // the parse failed, so no name is known
    EXPECT_EQ(results[1].outcome.failure, MessageKind::endsInTheMiddle);
    EXPECT_EQ(results[2].name, std::nullopt);
    EXPECT_EQ(results[3].outcome.kind, LineOutcome::Kind::plot);
}

TEST(DocumentEvaluator, PlotLinesChangeNothing) {
    expectSheets({
        {"5\nplot(x^2)\nprev\nsum", {"5", "plot: plot(x^2)", "5", "10"}},
        {"chart([1, 2])\n#1", {"plot: chart([1, 2])", "! #1 not found"}},
    });
}

TEST(DocumentEvaluator, LinesInLoopsShowTheLastPassAndStayOutOfSums) {
    expectSheets({
        {"1\nfor i in range(3):\n    i * 10\nsum\ntotal", {"1", "", "20", "1", "2"}},
        {"for i in range(3):\n    i\n    × 2", {"", "2", "4"}},
    });
}

TEST(DocumentEvaluator, PrepareLine) {
    struct Case {
        std::string text;
        bool hasPrevious;
        std::string expected;
    };
    const Case cases[] = {
        {"- 5", true, "prev - 5"},   {"- 5", false, "- 5"}, {"-5", true, "-5"},
        {"× 2 =", true, "prev × 2"}, {"3 ==", true, "3"},   {"+", true, "+"},
        {"^2", true, "prev ^2"},     {"＝", false, ""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(prepareLine(c.text, c.hasPrevious), c.expected) << c.text;
}

// A run is a function of its text, the other sheets and its options: runs with different options
// at once on several threads each get their single-threaded answer, while the process-wide
// defaults change under them.
TEST(DocumentEvaluator, RunsWithDifferentOptionsAtOnceOnAnyThread) {
    const std::vector<SharedSheet> others{{"Library", "def half(v):\n    return v / 2\n"}};
    const std::string sheets[] = {
        "sin(30)\nasin(1)\n1 / 3\nstr(2 / 3)\nhalf(7)\n5 / 0\nx + 1\n10 m\n2 kg\nsum",
        "for i in range(4):\n    cos(60 * i)\nacos(0)\n[1, 2][5]\n1 m to kg\nround(2 / 7, 3)\nrange(0)",
        "total = 0\nfor n in [1, 2, 3]:\n    total = total + n / 3\ntotal\nsqrt(-1)\nhalf(1, 2)\nplot(x^2)",
    };
    const EvaluationOptions options[] = {
        {Language::english, AngleUnit::radians, 10},
        {Language::japanese, AngleUnit::degrees, 3},
        {Language::english, AngleUnit::degrees, 0},
        {Language::japanese, AngleUnit::radians, 15},
    };
    // Ample time, so that a slow machine (or a sanitizer) never stops a run early.
    const auto answers = [&others](const std::string& text, const EvaluationOptions& options) {
        return showResults(
            ProgramRunner(unicode::splitLines(text), others, options, BudgetLimits{200000, 40, 600.0}).run(),
            options);
    };
    struct Run {
        const std::string* text;
        EvaluationOptions options;
        std::vector<std::string> expected;
    };
    std::vector<Run> runs;
    for (const auto& text : sheets) {
        for (const auto& option : options)
            runs.push_back({&text, option, answers(text, option)});
    }
    // The options matter to every sheet, so equal answers below are not a coincidence.
    EXPECT_NE(runs[0].expected, runs[1].expected);
    EXPECT_NE(runs[4].expected, runs[6].expected);

    std::atomic<bool> done{false};
    std::atomic<int> mismatches{0};
    std::vector<std::thread> threads;
    for (const Run& run : runs) {
        threads.emplace_back([&run, &answers, &mismatches] {
            for (int i = 0; i < 20; ++i) {
                if (answers(*run.text, run.options) != run.expected)
                    ++mismatches;
            }
        });
    }
    std::thread settings([&done] {
        for (int i = 0; !done; ++i) {
            L10n::setCurrent(i % 2 == 0 ? AppLanguage::japanese : AppLanguage::english);
            AngleMode::setDegrees(i % 2 == 0);
            ValueFormatter::setMaxFractionDigits(i % 16);
        }
    });
    for (auto& thread : threads)
        thread.join();
    done = true;
    settings.join();
    L10n::setCurrent(AppLanguage::system);
    AngleMode::setDegrees(false);
    ValueFormatter::setMaxFractionDigits(10);
    EXPECT_EQ(mismatches, 0);
}

TEST(SelectionSummary, AddsUpTheSelectedAnswersThatAreNumbers) {
    struct Case {
        const char* text;
        std::size_t first, last;
        std::size_t count;
        const char* sum; // "" when the answers can't be added together
        const char* average;
    };
    const Case cases[] = {
        {"1\n2\n3", 0, 2, 3, "6", "2"},
        {"1\n2\n3", 1, 9, 2, "5", "2.5"}, // lines past the end are ignored
        {"1 m\n20 cm", 0, 1, 2, "1.2 m", "0.6 m"},
        {"// note\n4\n\n'text'\n1 +\n[1, 2]\n6", 0, 6, 2, "10", "5"},
        {"1 m\n1 kg", 0, 1, 2, "", ""},
        {"100\n10%", 0, 1, 2, "", ""},
        {"'a'\n'b'", 0, 1, 0, "", ""},
    };
    const EvaluationOptions options = sheetOptions();
    for (const Case& c : cases) {
        const SelectionSummary summary =
            summarize(DocumentEvaluator::evaluate(c.text, {}, options), c.first, c.last);
        EXPECT_EQ(summary.count, c.count) << c.text;
        const auto shown = [&](const std::optional<Value>& value) {
            return value ? ValueFormatter::format(*value, options, Grouping::grouped) : std::string();
        };
        EXPECT_EQ(shown(summary.sum), c.sum) << c.text;
        EXPECT_EQ(shown(summary.average), c.average) << c.text;
    }
}
