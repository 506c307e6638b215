#include "LumoKit/base/EvaluationOptions.h"

#include <algorithm>
#include <atomic>

namespace lumo {

namespace {

std::atomic<bool> g_degrees{false};
std::atomic<int> g_maxFractionDigits{10};

// Beyond this, doubles have no more decimal digits to show.
constexpr int fractionDigitsCeiling = 20;

} // namespace

EvaluationOptions EvaluationOptions::current() {
    EvaluationOptions options;
    options.language = L10n::resolved();
    options.angles = AngleMode::degrees() ? AngleUnit::degrees : AngleUnit::radians;
    options.maxFractionDigits = FractionDigits::maximum();
    return options;
}

bool AngleMode::degrees() {
    return g_degrees.load(std::memory_order_relaxed);
}

void AngleMode::setDegrees(bool degrees) {
    g_degrees.store(degrees, std::memory_order_relaxed);
}

int FractionDigits::maximum() {
    return g_maxFractionDigits.load(std::memory_order_relaxed);
}

void FractionDigits::setMaximum(int digits) {
    g_maxFractionDigits.store(std::clamp(digits, 0, fractionDigitsCeiling), std::memory_order_relaxed);
}

} // namespace lumo
