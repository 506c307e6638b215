#include "LumoUI/plot/AxisTicks.h"

#include <algorithm>
#include <cmath>

#include "LumoKit/values/Units.h"
#include "LumoKit/values/ValueFormatter.h"

namespace lumo {

namespace {

// The steps between ticks, as multiples of a power of ten.
constexpr double roundSteps[] = {1, 2, 2.5, 5, 10};

// The number of fraction digits that writes every multiple of `step` exactly.
int fractionDigits(double step) {
    int digits = 0;
    double scaled = step;
    while (digits < 12 && std::abs(scaled - std::round(scaled)) > 1e-9 * std::max(1.0, std::abs(scaled))) {
        scaled *= 10;
        ++digits;
    }
    return digits;
}

QString withUnit(double value, int digits, const std::optional<std::string>& unitLabel) {
    EvaluationOptions options = EvaluationOptions::current();
    options.maxFractionDigits = digits;
    Value shown = Value::plain(value);
    if (unitLabel && *unitLabel == "%")
        shown = Value::percent(value);
    else if (unitLabel)
        if (UnitRef unit = UnitRegistry::shared().find(*unitLabel))
            shown = Value::withUnit(value, unit);
    std::string text = ValueFormatter::format(shown, options, Grouping::grouped);
    // A label the unit table does not know is still shown, after a space.
    if (unitLabel && !shown.unit && !shown.isPercent())
        text += " " + *unitLabel;
    return QString::fromStdString(text);
}

} // namespace

AxisTicks AxisTicks::inside(PlotRange range, int count) {
    AxisTicks ticks;
    range = drawableRange(range);
    const double span = range.high - range.low;
    const double rough = span / std::max(1, count);
    const double magnitude = std::pow(10.0, std::floor(std::log10(rough)));
    ticks.step = magnitude * 10;
    for (double multiple : roundSteps) {
        if (multiple * magnitude >= rough * 0.999) {
            ticks.step = multiple * magnitude;
            break;
        }
    }
    // Ticks are counted in whole steps from zero, so 0 is exact and sums do not drift.
    const auto first = static_cast<long long>(std::ceil(range.low / ticks.step - 1e-9));
    const auto last = static_cast<long long>(std::floor(range.high / ticks.step + 1e-9));
    for (long long i = first; i <= last && ticks.values.size() < 64; ++i)
        ticks.values.push_back(double(i) * ticks.step);
    return ticks;
}

PlotRange drawableRange(PlotRange range) {
    if (!std::isfinite(range.low) || !std::isfinite(range.high))
        return {-1, 1};
    if (range.high > range.low &&
        range.high - range.low > 1e-12 * std::max(std::abs(range.low), std::abs(range.high)))
        return range;
    const double middle = (range.low + range.high) / 2;
    const double half = middle == 0 ? 1 : std::abs(middle) * 0.1;
    return {middle - half, middle + half};
}

PlotRange paddedRange(PlotRange range, double share) {
    range = drawableRange(range);
    const double pad = (range.high - range.low) * share;
    return {range.low - pad, range.high + pad};
}

QString tickLabel(double value, double step, const std::optional<std::string>& unitLabel) {
    // A tick that lands on zero by arithmetic (3 × 0.1 − 0.3) is written as 0.
    if (std::abs(value) < std::abs(step) * 1e-9)
        value = 0;
    return withUnit(value, fractionDigits(step), unitLabel);
}

QString valueLabel(double value, const std::optional<std::string>& unitLabel) {
    return withUnit(value, EvaluationOptions::current().maxFractionDigits, unitLabel);
}

} // namespace lumo
