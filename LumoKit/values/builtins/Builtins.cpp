#include "LumoKit/values/builtins/Builtins.h"

#include <cmath>
#include <limits>

#include "LumoKit/values/builtins/BuiltinCall.h"

namespace lumo {

namespace {

// How many arguments a function takes, and what it says to any other count.
struct Arity {
    std::size_t least;
    std::size_t most;
    MessageKind otherwise;
};

constexpr std::size_t any = std::numeric_limits<std::size_t>::max();
constexpr Arity one{1, 1, MessageKind::needsOneArgument};
constexpr Arity rounding{1, 2, MessageKind::roundingUsage};
// The aggregates take any number of values and lists; they say so when nothing is left.
constexpr Arity values{0, any, MessageKind::needsValues};

struct Builtin {
    std::string_view name;
    Arity arity;
    BuiltinFunction function;
};

// In the engine's order; the catalogs and the name checks list them this way.
constexpr Builtin builtins[] = {
    {"sqrt", one, squareRoot},
    {"cbrt", one, cubeRoot},
    {"abs", one, absolute},
    {"sign", one, signOf},
    {"round", rounding, roundHalfAway},
    {"floor", rounding, roundDown},
    {"ceil", rounding, roundUp},
    {"trunc", rounding, roundTowardZero},
    {"min", values, minimum},
    {"max", values, maximum},
    {"sum", values, sumOf},
    {"avg", values, averageOf},
    {"average", values, averageOf},
    {"len", {1, 1, MessageKind::lenUsage}, lengthOf},
    {"str", one, textOf},
    {"list", one, listOf},
    {"sort", one, sortOf},
    {"reverse", {1, 1, MessageKind::reverseUsage}, reverseOf},
    {"ln", one, naturalLogarithm},
    {"log", one, commonLogarithm},
    {"log2", one, binaryLogarithm},
    {"log10", one, commonLogarithm},
    {"exp", one, exponential},
    {"sin", one, sine},
    {"cos", one, cosine},
    {"tan", one, tangent},
    {"asin", one, arcsine},
    {"acos", one, arccosine},
    {"atan", one, arctangent},
    {"pow", {2, 2, MessageKind::powUsage}, powerOf},
    {"mod", {2, 2, MessageKind::modUsage}, remainderOf},
    {"hypot", {2, 2, MessageKind::hypotUsage}, hypotenuse},
    {"gcd", {2, 2, MessageKind::integerPairUsage}, greatestCommonDivisor},
    {"lcm", {2, 2, MessageKind::integerPairUsage}, leastCommonMultiple},
};

const Builtin* findBuiltin(std::string_view name) {
    for (const Builtin& builtin : builtins) {
        if (builtin.name == name)
            return &builtin;
    }
    return nullptr;
}

} // namespace

const std::vector<std::string>& builtinFunctionNames() {
    static const std::vector<std::string> names = [] {
        std::vector<std::string> list;
        for (const Builtin& builtin : builtins)
            list.emplace_back(builtin.name);
        return list;
    }();
    return names;
}

bool isBuiltinFunction(std::string_view name) {
    return findBuiltin(name) != nullptr;
}

std::optional<Value> callBuiltin(const std::string& name, const std::vector<Value>& args,
                                 const EvaluationOptions& options) {
    const Builtin* builtin = findBuiltin(name);
    if (!builtin)
        return std::nullopt;
    if (args.size() < builtin->arity.least || args.size() > builtin->arity.most)
        throw CalcError(builtin->arity.otherwise, {name});
    const Value result = builtin->function(BuiltinCall{name, args, options});
    if (result.isNumber() && !std::isfinite(result.number))
        throw CalcError(MessageKind::cannotCalculate);
    return result;
}

} // namespace lumo
