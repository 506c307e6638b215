#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "LumoKit/base/CalcError.h"
#include "LumoKit/base/EvaluationOptions.h"
#include "LumoKit/base/Unicode.h"
#include "LumoKit/sheet/DocumentEvaluator.h"
#include "LumoKit/sheet/ProgramRunner.h"
#include "LumoKit/values/ValueFormatter.h"

namespace lumo::test {

/// One line's result as the tests spell it: the formatted answer, "! message" for a failure,
/// "plot: title" for a plot, "//" for a note and "" for a blank.
inline std::string showResult(const LineResult& result, const EvaluationOptions& options = {}) {
    switch (result.outcome.kind) {
    case LineOutcome::Kind::value:
        return ValueFormatter::format(result.outcome.value, options, Grouping::none);
    case LineOutcome::Kind::plot:
        return "plot: " + result.outcome.plot()->title;
    case LineOutcome::Kind::failure:
        return "! " + result.outcome.message();
    case LineOutcome::Kind::comment:
        return "//";
    case LineOutcome::Kind::blank:
        break;
    }
    return "";
}

inline std::vector<std::string> showResults(const std::vector<LineResult>& results,
                                            const EvaluationOptions& options = {}) {
    std::vector<std::string> shown;
    for (const auto& result : results)
        shown.push_back(showResult(result, options));
    return shown;
}

/// The options of a sheet run in the given language, otherwise the defaults.
inline EvaluationOptions sheetOptions(Language language = Language::english) {
    EvaluationOptions options;
    options.language = language;
    return options;
}

/// The shown results of a sheet, evaluated in the given language.
inline std::vector<std::string> sheetAnswers(const std::string& text,
                                             const std::vector<SharedSheet>& others = {},
                                             Language language = Language::english) {
    const EvaluationOptions options = sheetOptions(language);
    return showResults(DocumentEvaluator::evaluate(text, others, options), options);
}

/// The shown results of one sheet run alone under the given limits, in English.
inline std::vector<std::string> runAnswers(const std::string& text, BudgetLimits limits) {
    const EvaluationOptions options = sheetOptions();
    return showResults(ProgramRunner(unicode::splitLines(text), {}, options, limits).run(), options);
}

/// A sheet's text and the result every line must show.
struct SheetCase {
    std::string text;
    std::vector<std::string> expected;
};

inline void expectSheets(const std::vector<SheetCase>& cases, const std::vector<SharedSheet>& others = {},
                         Language language = Language::english) {
    for (const auto& c : cases)
        EXPECT_EQ(sheetAnswers(c.text, others, language), c.expected) << c.text;
}

} // namespace lumo::test
