#include "ValueFormatter.h"

#include <atomic>

namespace lumo::ValueFormatter {

namespace {
std::atomic<int> g_maxFractionDigits{10};
}

int maxFractionDigits() { return g_maxFractionDigits.load(); }
void setMaxFractionDigits(int digits) { g_maxFractionDigits.store(digits); }
std::string format(const Value&, Grouping) { return {}; }
std::string formatNumber(double number, Grouping) { return std::to_string(number); }
double roundSignificant(double number) { return number; }

} // namespace lumo::ValueFormatter
