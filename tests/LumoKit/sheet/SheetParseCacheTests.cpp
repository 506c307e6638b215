#include <gtest/gtest.h>

#include <random>

#include "LumoKit/sheet/DocumentEvaluator.h"
#include "LumoKit/sheet/RunCheckpoint.h"
#include "LumoKit/sheet/SheetParseCache.h"
#include "support/SheetTestSupport.h"

using namespace lumo;
using namespace lumo::test;

TEST(SheetParseCache, RunsWithACacheAnswerAsFreshRuns) {
    // One cache through a sequence of edits: every answer must be the one a run without a
    // cache gives, whatever changed above a line, in another sheet or in the language.
    const struct Step {
        std::string text;
        std::vector<SharedSheet> others;
        Language language;
    } steps[] = {
        {"x = 2\nx × 3\n* 2\n#2 + 1", {}, Language::english},
        {"x = 5\nx × 3\n* 2\n#2 + 1", {}, Language::english}, // a name above changed
        {"\nx × 3\n* 2\n#2 + 1", {}, Language::english},      // now undefined
        {"x = 1\n\n* 2\nf(x)", {{"Lib", "def f(v):\n  return v + 1"}}, Language::english},
        {"x = 1\n\n* 2\nf(x)", {{"Lib", "def f(v):\n  return v × 10"}}, Language::english},
        {"x = 1\n\n* 2\nf(x)\n(1 +", {}, Language::english},
        {"x = 1\n\n* 2\nf(x)\n(1 +", {}, Language::japanese}, // messages follow the language
        {"for i in range(3):\n  x = i\nx", {}, Language::english},
    };
    SheetParseCache cache;
    for (const auto& step : steps) {
        const EvaluationOptions options = sheetOptions(step.language);
        const auto cached =
            showResults(DocumentEvaluator::evaluate(step.text, step.others, options, cache), options);
        const auto fresh = showResults(DocumentEvaluator::evaluate(step.text, step.others, options), options);
        EXPECT_EQ(cached, fresh) << step.text;
    }
}

TEST(SheetParseCache, KeepsOnlyTheLastRunsLines) {
    SheetParseCache cache;
    DocumentEvaluator::evaluate("1 + 1\n2 + 2\n3 + 3", {}, sheetOptions(), cache);
    EXPECT_EQ(cache.size(), 3u);
    DocumentEvaluator::evaluate("1 + 1\n2 + 25\n3 + 3", {}, sheetOptions(), cache);
    EXPECT_EQ(cache.size(), 3u);
    const ParsedLine* parsed = &cache.parsed("1 + 1");
    EXPECT_EQ(&cache.parsed("1 + 1"), parsed); // the same parse, not a new one
}

TEST(SheetParseCache, KeepsParsesOfLinesThatMovedAndDropsTheRest) {
    // Edits that move lines: the parse of "a = 1" must be the same object throughout, and only
    // the texts of the latest run stay, however far the lines moved.
    const struct Step {
        std::string text;
        std::size_t distinctTexts;
    } steps[] = {
        {"a = 1\n2\n3\n4\n5\n6\n7\n8\nsum", 9},
        {"0\na = 1\n2\n3\n4\n5\n6\n7\n8\nsum", 10}, // a line inserted above
        {"0\na = 1\n8\nsum", 4},                    // more lines deleted than are looked ahead
        {"sum\n8\na = 1\n0", 4},                    // the order reversed
        {"a = 1\na = 1\nsum\nsum", 2},              // repeated texts share their parse
    };
    SheetParseCache cache;
    DocumentEvaluator::evaluate(steps[0].text, {}, sheetOptions(), cache);
    const ParsedLine* first = &cache.parsed("a = 1");
    for (const auto& step : steps) {
        const auto cached = DocumentEvaluator::evaluate(step.text, {}, sheetOptions(), cache);
        EXPECT_EQ(cache.size(), step.distinctTexts) << step.text;
        EXPECT_EQ(showResults(cached, sheetOptions()),
                  showResults(DocumentEvaluator::evaluate(step.text, {}, sheetOptions()), sheetOptions()));
        EXPECT_EQ(&cache.parsed("a = 1"), first) << step.text;
    }
}

namespace {

// Everything a result holds, compared exactly: a kept answer must be the very value a fresh
// run works out, not one that merely prints the same.
std::string exactly(const LineResult& result) {
    std::string out = std::to_string(int(result.outcome.kind)) + "|" + result.name.value_or("-") + "|" +
                      result.outcome.message() + "|" + std::to_string(int(result.outcome.failure));
    if (result.outcome.kind == LineOutcome::Kind::value) {
        char bits[40];
        std::snprintf(bits, sizeof bits, "%a", result.outcome.value.number);
        out += "|" + showResult(result, sheetOptions()) + "|" + bits;
    }
    return out;
}

} // namespace

TEST(SheetParseCache, KeptAnswersAreNeverStaleThroughRandomEdits) {
    // Lines that read every kind of input a line can read: names defined above and redefined,
    // sums of blocks and of the sheet (units mixed in some), the previous answer, continuations,
    // line references, another sheet's function, loops, ifs and failures.
    const std::vector<std::string> pieces{
        "a = 3",
        "a = 4 mm",
        "b = a × 2",
        "b",
        "a + b",
        "sum",
        "total",
        "prev",
        "+ 10%",
        "* 2",
        "#1 + #2",
        "#3 × 2",
        "5 kg",
        "2 m",
        "120 mm × 300 mm",
        "",
        "// a note",
        "c = f(2)",
        "f(a)",
        "g(1)",
        "x",
        "x = 7",
        "sin(30)",
        "[1, 2, 3][1]",
        "\"text\"",
        "if a > 3:",
        "  a = 1",
        "for i in range(3):",
        "  b = i",
        "c + 1",
        "big = [1, 2, 3, 4, 5, 6, 7, 8] * 10",
        "big = [1, 2, 3, 4, 5, 6, 7, 9] * 10",
        "big[7] + a",
        "ans × 3",
        "小計",
        "sum in m",
        "a in cm",
        "(1 +",
        "10 / 0",
    };
    // Functions that read nothing of their caller, so only the call tells their lines apart.
    const std::vector<std::string> libraries{"def f(v):\n  return v + 1", "def f(v):\n  return 1",
                                             "def f(v):\n  return 2\ndef g(v):\n  return 3",
                                             "def g(v):\n  return v"};
    std::mt19937 random(2024);
    auto pick = [&](const auto& from) { return from[random() % from.size()]; };

    std::vector<std::string> lines;
    for (int i = 0; i < 12; ++i)
        lines.push_back(pick(pieces));
    std::vector<SharedSheet> others{{"Lib", pick(libraries)}};
    EvaluationOptions options = sheetOptions();
    SheetParseCache cache;
    int checkpoints = 0; // runs that left a line for the next run to start at
    for (int step = 0; step < 600; ++step) {
        switch (random() % 8) {
        case 0:
            lines.insert(lines.begin() + long(random() % (lines.size() + 1)), pick(pieces));
            break;
        case 1:
            if (lines.size() > 1)
                lines.erase(lines.begin() + long(random() % lines.size()));
            break;
        case 2:
            others[0].text = pick(libraries);
            break;
        case 3:
            options.angles = options.angles == AngleUnit::degrees ? AngleUnit::radians : AngleUnit::degrees;
            break;
        case 4:
            options.language = options.language == Language::english ? Language::japanese : Language::english;
            break;
        default:
            lines[random() % lines.size()] = pick(pieces);
        }
        std::string text;
        for (const std::string& line : lines)
            text += line + "\n";
        const auto cached = DocumentEvaluator::evaluate(text, others, options, cache);
        const auto fresh = DocumentEvaluator::evaluate(text, others, options);
        ASSERT_EQ(cached.size(), fresh.size());
        for (std::size_t i = 0; i < fresh.size(); ++i)
            ASSERT_EQ(exactly(cached[i]), exactly(fresh[i])) << "step " << step << ", line " << i + 1 << "\n"
                                                             << text;
        checkpoints += cache.checkpoint() != nullptr;
        // Two parses per line at most (as written and continued), and the library's few.
        ASSERT_LE(cache.size(), 2 * lines.size() + 4) << "step " << step;
    }
    EXPECT_GT(checkpoints, 200);
}
