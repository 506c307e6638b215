#pragma once

#include <optional>
#include <string>
#include <vector>

#include "LumoKit/sheet/LineResult.h"
#include "LumoKit/values/ValueFormatter.h"

namespace lumo {

/// One evaluated sheet as the exports see it: its name, its lines and one result per line.
struct EvaluatedSheet {
    std::string name;
    std::vector<std::string> lines;
    std::vector<LineResult> results;
};

/// The answer column's text of a result: the formatted value or the failure's message, and
/// "" for lines that show nothing there (blank, comment and plot lines).
std::string answerText(const LineResult& result, const EvaluationOptions& options, Grouping grouping);

/// The display text of a number answer's unit ("mm²", "%" for a percent); "" for a plain
/// number and for anything that is not a number.
std::string answerUnit(const Value& value);

/// A number as plain decimal text for other programs: no grouping, a point as the separator,
/// and as many digits as it takes to read back the same double. Exponent form only outside
/// 1e-7 … 1e21; "" for NaN and the infinities.
std::string plainNumber(double number);

/// The plain number of a result whose answer is a number; nothing for every other line.
std::optional<double> answerNumber(const LineResult& result);

} // namespace lumo
