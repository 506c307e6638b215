// Roots, logarithms and exponentials.

#include <cmath>

#include "LumoKit/values/builtins/BuiltinCall.h"

namespace lumo {

namespace {

double onlyPlainArgument(const BuiltinCall& call) {
    return plainArgument(call.name, call.args.front());
}

template <double (*function)(double)> Value logarithm(const BuiltinCall& call) {
    const double x = onlyPlainArgument(call);
    // The message names log for every base: it is the word users know the family by.
    if (x <= 0)
        throw CalcError(MessageKind::logOfNonPositive);
    return Value::plain(function(x));
}

double lnOf(double x) {
    return std::log(x);
}
double log10Of(double x) {
    return std::log10(x);
}
double log2Of(double x) {
    return std::log2(x);
}

} // namespace

Value squareRoot(const BuiltinCall& call) {
    const double x = onlyPlainArgument(call);
    if (x < 0)
        throw CalcError(MessageKind::negativeSquareRoot);
    return Value::plain(std::sqrt(x));
}

Value cubeRoot(const BuiltinCall& call) {
    return Value::plain(std::cbrt(onlyPlainArgument(call)));
}

Value naturalLogarithm(const BuiltinCall& call) {
    return logarithm<lnOf>(call);
}

Value commonLogarithm(const BuiltinCall& call) {
    return logarithm<log10Of>(call);
}

Value binaryLogarithm(const BuiltinCall& call) {
    return logarithm<log2Of>(call);
}

Value exponential(const BuiltinCall& call) {
    return Value::plain(std::exp(onlyPlainArgument(call)));
}

} // namespace lumo
