#include "LumoKit/sheet/SelectionSummary.h"

#include "LumoKit/base/CalcError.h"

namespace lumo {

SelectionSummary summarize(const std::vector<LineResult>& results, std::size_t first, std::size_t last) {
    SelectionSummary summary;
    bool addable = true;
    Value sum;
    for (std::size_t line = first; line <= last && line < results.size(); ++line) {
        const LineOutcome& outcome = results[line].outcome;
        if (outcome.kind != LineOutcome::Kind::value || !outcome.value.isNumber())
            continue;
        // A percentage changes what it is added to; it has no place in a plain total.
        addable = addable && !outcome.value.isPercent();
        if (addable) {
            try {
                if (summary.count == 0)
                    sum = outcome.value;
                else
                    addInto(sum, outcome.value);
            } catch (const CalcError&) {
                addable = false; // 1 m and 1 kg: counted, never summed
            }
        }
        ++summary.count;
    }
    if (addable && summary.count > 0) {
        summary.average = divide(sum, Value::plain(double(summary.count)));
        summary.sum = std::move(sum);
    }
    return summary;
}

} // namespace lumo
