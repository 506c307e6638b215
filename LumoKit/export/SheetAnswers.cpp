#include "LumoKit/export/SheetAnswers.h"

#include <charconv>
#include <cmath>

namespace lumo {

std::string answerText(const LineResult& result, const EvaluationOptions& options, Grouping grouping) {
    switch (result.outcome.kind) {
    case LineOutcome::Kind::value:
        return ValueFormatter::format(result.outcome.value, options, grouping);
    case LineOutcome::Kind::failure:
        return result.outcome.message();
    case LineOutcome::Kind::plot:
    case LineOutcome::Kind::blank:
    case LineOutcome::Kind::comment:
        return "";
    }
    return "";
}

std::string answerUnit(const Value& value) {
    if (!value.isNumber())
        return "";
    if (value.isPercent())
        return "%";
    return value.unit ? value.unit->display : "";
}

std::string plainNumber(double number) {
    if (!std::isfinite(number))
        return "";
    if (number == 0)
        return "0"; // also for -0, as the answer column shows it
    const double magnitude = std::fabs(number);
    // Fixed notation where it stays readable; beyond that the exponent keeps the text short.
    const auto format =
        magnitude >= 1e-7 && magnitude < 1e21 ? std::chars_format::fixed : std::chars_format::scientific;
    char buffer[400];
    const auto written = std::to_chars(buffer, buffer + sizeof buffer, number, format);
    return std::string(buffer, written.ptr);
}

std::optional<double> answerNumber(const LineResult& result) {
    if (result.outcome.kind != LineOutcome::Kind::value || !result.outcome.value.isNumber())
        return std::nullopt;
    return result.outcome.value.number;
}

} // namespace lumo
