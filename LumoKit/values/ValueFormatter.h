#pragma once

#include <string>

#include "LumoKit/base/EvaluationOptions.h"
#include "LumoKit/values/Value.h"

namespace lumo {

enum class Grouping { none, grouped };

/// The answer column's text for a value. Never depends on the process locale; the options
/// give the maximum of fraction digits.
struct ValueFormatter {
    static std::string format(const Value& value, const EvaluationOptions& options,
                              Grouping grouping = Grouping::grouped);
    static std::string formatNumber(double number, const EvaluationOptions& options,
                                    Grouping grouping = Grouping::grouped);
    /// Rounds to 13 significant digits; large and tiny magnitudes are returned unchanged.
    static double roundSignificant(double number);

    /// The process-wide default maximum of fraction digits (10 at start), which
    /// EvaluationOptions::current() takes; the settings and the command line set it.
    static int maxFractionDigits();
    static void setMaxFractionDigits(int digits);
};

} // namespace lumo
