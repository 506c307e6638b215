#include <gtest/gtest.h>

#include "LumoKit/sheet/DocumentEvaluator.h"
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
    const auto parsed = cache.parsed("1 + 1");
    EXPECT_EQ(cache.parsed("1 + 1"), parsed); // the same parse, not a new one
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
    const auto first = cache.parsed("a = 1");
    for (const auto& step : steps) {
        const auto cached = DocumentEvaluator::evaluate(step.text, {}, sheetOptions(), cache);
        EXPECT_EQ(cache.size(), step.distinctTexts) << step.text;
        EXPECT_EQ(showResults(cached, sheetOptions()),
                  showResults(DocumentEvaluator::evaluate(step.text, {}, sheetOptions()), sheetOptions()));
        EXPECT_EQ(cache.parsed("a = 1"), first) << step.text;
    }
}
