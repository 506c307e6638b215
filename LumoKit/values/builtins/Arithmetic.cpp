// pow, mod and hypot, and the whole-number functions gcd and lcm.

#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>
#include <utility>

#include "LumoKit/values/builtins/BuiltinCall.h"

namespace lumo {

namespace {

constexpr double largestExactInteger = 9007199254740992.0; // 2^53

std::uint64_t integerArgument(const std::string& fn, const Value& value) {
    const double x = plainArgument(fn, value);
    if (!isWhole(x))
        throw CalcError(MessageKind::integerPairUsage, {fn});
    if (std::fabs(x) > largestExactInteger)
        throw CalcError(MessageKind::tooLargeFor, {fn});
    return static_cast<std::uint64_t>(std::fabs(x));
}

std::pair<std::uint64_t, std::uint64_t> integerPair(const BuiltinCall& call) {
    const std::uint64_t a = integerArgument(call.name, call.args[0]);
    return {a, integerArgument(call.name, call.args[1])};
}

} // namespace

Value powerOf(const BuiltinCall& call) {
    return power(call.args[0], call.args[1]);
}

Value remainderOf(const BuiltinCall& call) {
    const AlignedNumbers aligned =
        alignUnits(numberArgument(call.name, call.args[0]), numberArgument(call.name, call.args[1]));
    if (aligned.right == 0)
        throw CalcError(MessageKind::modByZero);
    return numberIn(std::fmod(aligned.left, aligned.right), aligned.unit);
}

Value hypotenuse(const BuiltinCall& call) {
    const AlignedNumbers aligned =
        alignUnits(numberArgument(call.name, call.args[0]), numberArgument(call.name, call.args[1]));
    return numberIn(std::hypot(aligned.left, aligned.right), aligned.unit);
}

// gcd(0, n) is n, but gcd(0, 0) has no greatest divisor.
Value greatestCommonDivisor(const BuiltinCall& call) {
    const auto [a, b] = integerPair(call);
    if (a == 0 && b == 0)
        throw CalcError(MessageKind::zeroNotUsable);
    return Value::plain(static_cast<double>(std::gcd(a, b)));
}

// Zero has no positive multiple, so any zero is refused.
Value leastCommonMultiple(const BuiltinCall& call) {
    const auto [a, b] = integerPair(call);
    if (a == 0 || b == 0)
        throw CalcError(MessageKind::zeroNotUsable);
    std::uint64_t result = 0;
    const bool overflow = __builtin_mul_overflow(a / std::gcd(a, b), b, &result);
    if (overflow || result > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()))
        throw CalcError(MessageKind::lcmTooLarge);
    return Value::plain(static_cast<double>(result));
}

} // namespace lumo
