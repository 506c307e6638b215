// Sign, magnitude and rounding.

#include <charconv>
#include <cmath>

#include "LumoKit/values/builtins/BuiltinCall.h"

namespace lumo {

namespace {

constexpr double largestExactInteger = 9007199254740992.0; // 2^53

// Removes the binary noise that scaling adds (1.005 × 100 is 100.49999999999999), so that
// the rounding sees the decimal figure the user wrote. Locale-independent on purpose.
double toFifteenDigits(double x) {
    char buffer[64];
    const auto written = std::to_chars(buffer, buffer + sizeof buffer, x, std::chars_format::general, 15);
    double clean = x;
    std::from_chars(buffer, written.ptr, clean);
    return clean;
}

int digitsArgument(const std::string& fn, const Value& value) {
    const Value number = numberArgument(fn, value);
    if (number.unit)
        throw CalcError(MessageKind::digitsWithUnit);
    if (!isWhole(number.number) || std::fabs(number.number) > 15)
        throw CalcError(MessageKind::digitsOutOfRange);
    return static_cast<int>(number.number);
}

double roundTo(double x, int digits, double (*rounding)(double)) {
    if (digits == 0)
        return rounding(x);
    const double scale = std::pow(10.0, std::abs(digits));
    if (digits < 0)
        return rounding(toFifteenDigits(x / scale)) * scale;
    const double scaled = x * scale;
    // Past 2^53 a double has no fraction left to round away.
    if (!std::isfinite(scaled) || std::fabs(scaled) >= largestExactInteger)
        return x;
    return rounding(toFifteenDigits(scaled)) / scale;
}

// round(value) or round(value, digits); negative digits round to tens, hundreds …
template <double (*rounding)(double)> Value roundingFunction(const BuiltinCall& call) {
    Value x = numberArgument(call.name, call.args[0]);
    const int digits = call.args.size() == 2 ? digitsArgument(call.name, call.args[1]) : 0;
    x.number = roundTo(x.number, digits, rounding);
    return x;
}

double halfAway(double x) {
    return std::round(x);
}
double down(double x) {
    return std::floor(x);
}
double up(double x) {
    return std::ceil(x);
}
double towardZero(double x) {
    return std::trunc(x);
}

} // namespace

Value absolute(const BuiltinCall& call) {
    Value x = numberArgument(call.name, call.args.front());
    x.number = std::fabs(x.number);
    return x;
}

Value signOf(const BuiltinCall& call) {
    const double x = numberArgument(call.name, call.args.front()).number;
    if (std::isnan(x))
        return Value::plain(x); // refused as not finite by the dispatcher
    return Value::plain(x > 0 ? 1 : (x < 0 ? -1 : 0));
}

Value roundHalfAway(const BuiltinCall& call) {
    return roundingFunction<halfAway>(call);
}

Value roundDown(const BuiltinCall& call) {
    return roundingFunction<down>(call);
}

Value roundUp(const BuiltinCall& call) {
    return roundingFunction<up>(call);
}

Value roundTowardZero(const BuiltinCall& call) {
    return roundingFunction<towardZero>(call);
}

} // namespace lumo
