#include "LumoUI/store/NamedValues.h"

#include "LumoKit/values/ValueFormatter.h"

namespace lumo {

std::vector<NamedValue> namedValues(const std::vector<LineResult>& results) {
    std::vector<NamedValue> values;
    for (std::size_t line = 0; line < results.size(); ++line) {
        const LineResult& result = results[line];
        if (!result.name || result.name->empty())
            continue;
        const LineOutcome& outcome = result.outcome;
        // Formatted as the answer column formats it, so the two never disagree.
        if (outcome.kind == LineOutcome::Kind::value)
            values.push_back(
                {*result.name,
                 ValueFormatter::format(outcome.value, EvaluationOptions::current(), Grouping::grouped),
                 false, int(line)});
        else if (outcome.kind == LineOutcome::Kind::failure)
            values.push_back({*result.name, outcome.message(), true, int(line)});
        // Plot, comment and blank lines have no answer to show beside a name.
    }
    return values;
}

} // namespace lumo
