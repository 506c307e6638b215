#pragma once

#include <string>

#include "LumoKit/values/Value.h"

namespace lumo {

enum class Grouping { none, grouped };

/// The answer column's text for a value. Never depends on the process locale.
struct ValueFormatter {

    /// The process-wide maximum of fraction digits (10 at start).
    static int maxFractionDigits();
    static void setMaxFractionDigits(int digits);

    static std::string format(const Value& value, Grouping grouping);
    static std::string formatNumber(double number, Grouping grouping);
    /// Rounds to 13 significant digits; large and tiny magnitudes are returned unchanged.
    static double roundSignificant(double number);
};
} // namespace lumo
