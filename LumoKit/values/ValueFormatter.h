#pragma once

#include <string>

#include "LumoKit/values/Value.h"

namespace lumo {

enum class Grouping { none, grouped };

/// The answer column's text for a value. Never depends on the process locale.
namespace ValueFormatter {

/// The process-wide maximum of fraction digits (10 at start).
int maxFractionDigits();
void setMaxFractionDigits(int digits);

std::string format(const Value& value, Grouping grouping);
std::string formatNumber(double number, Grouping grouping);
/// Rounds to 13 significant digits; large and tiny magnitudes are returned unchanged.
double roundSignificant(double number);

} // namespace ValueFormatter
} // namespace lumo
