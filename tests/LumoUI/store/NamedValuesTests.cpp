#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "LumoKit/base/Language.h"
#include "LumoKit/sheet/DocumentEvaluator.h"
#include "LumoUI/store/NamedValues.h"

using namespace lumo;

namespace {

std::vector<NamedValue> namedValuesOf(const std::string& text) {
    return namedValues(DocumentEvaluator::evaluate(text, {}, EvaluationOptions::current()));
}

} // namespace

TEST(NamedValues, ListsNamedLinesWithTheirAnswers) {
    L10n::setCurrent(AppLanguage::english);
    struct Case {
        std::string text;
        std::vector<NamedValue> expected;
    };
    const Case cases[] = {
        {"", {}},
        {"1 + 2\n# note\n\n", {}},
        // Answers are grouped as the answer column groups them, and carry their units.
        {"price = 1200\ntax = price * 10%\n", {{"price", "1,200", false, 0}, {"tax", "120", false, 1}}},
        {"w = 120 mm\n2 * w\n", {{"w", "120 mm", false, 0}}},
        // A name given again is listed at each of its lines, with that line's answer.
        {"a = 1\na = a + 1\n", {{"a", "1", false, 0}, {"a", "2", false, 1}}},
        // A named line that fails shows its message instead of an answer.
        {"a = 1\nb = nothing + 1\n", {{"a", "1", false, 0}, {"b", "", true, 1}}},
        // Plot lines have no answer to show.
        {"f = plot(x, 0, 1)\nc = 3\n", {{"c", "3", false, 1}}},
    };
    for (const Case& c : cases) {
        std::vector<NamedValue> actual = namedValuesOf(c.text);
        // The failure's wording belongs to the engine; that there is one is what counts here.
        for (NamedValue& value : actual) {
            if (value.isFailure) {
                EXPECT_FALSE(value.answer.empty()) << c.text;
                value.answer.clear();
            }
        }
        EXPECT_EQ(actual, c.expected) << c.text;
    }
}
