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
        AppLanguage language;
    } steps[] = {
        {"x = 2\nx × 3\n* 2\n#2 + 1", {}, AppLanguage::english},
        {"x = 5\nx × 3\n* 2\n#2 + 1", {}, AppLanguage::english}, // a name above changed
        {"\nx × 3\n* 2\n#2 + 1", {}, AppLanguage::english},      // now undefined
        {"x = 1\n\n* 2\nf(x)", {{"Lib", "def f(v):\n  return v + 1"}}, AppLanguage::english},
        {"x = 1\n\n* 2\nf(x)", {{"Lib", "def f(v):\n  return v × 10"}}, AppLanguage::english},
        {"x = 1\n\n* 2\nf(x)\n(1 +", {}, AppLanguage::english},
        {"x = 1\n\n* 2\nf(x)\n(1 +", {}, AppLanguage::japanese}, // messages follow the language
        {"for i in range(3):\n  x = i\nx", {}, AppLanguage::english},
    };
    SheetParseCache cache;
    for (const auto& step : steps) {
        L10n::setCurrent(step.language);
        const auto cached = showResults(DocumentEvaluator::evaluate(step.text, step.others, cache));
        const auto fresh = showResults(DocumentEvaluator::evaluate(step.text, step.others));
        EXPECT_EQ(cached, fresh) << step.text;
    }
    L10n::setCurrent(AppLanguage::system);
}

TEST(SheetParseCache, KeepsOnlyTheLastRunsLines) {
    SheetParseCache cache;
    DocumentEvaluator::evaluate("1 + 1\n2 + 2\n3 + 3", {}, cache);
    EXPECT_EQ(cache.size(), 3u);
    DocumentEvaluator::evaluate("1 + 1\n2 + 25\n3 + 3", {}, cache);
    EXPECT_EQ(cache.size(), 3u);
    const auto parsed = cache.parsed("1 + 1");
    EXPECT_EQ(cache.parsed("1 + 1"), parsed); // the same parse, not a new one
}
