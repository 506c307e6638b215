#include "LumoKit/values/builtins/BuiltinCall.h"

#include <cmath>

namespace lumo {

namespace {

void flattenInto(const std::vector<Value>& args, std::vector<Value>& out) {
    for (const Value& arg : args) {
        if (arg.isList()) {
            flattenInto(arg.items(), out);
        } else {
            out.push_back(arg);
        }
    }
}

} // namespace

void failCannotTake(const std::string& fn, const Value& value) {
    throw CalcError(MessageKind::cannotTake, {fn, kindName(value)});
}

Value numberArgument(const std::string& fn, const Value& value) {
    if (!value.isNumber())
        failCannotTake(fn, value);
    return withoutPercent(value);
}

double plainArgument(const std::string& fn, const Value& value) {
    const Value number = numberArgument(fn, value);
    if (number.unit)
        throw CalcError(MessageKind::cannotTakeUnit, {fn});
    return number.number;
}

Value numberIn(double number, const UnitRef& unit) {
    return unit ? Value::withUnit(number, unit) : Value::plain(number);
}

bool isWhole(double number) {
    return std::isfinite(number) && number == std::round(number);
}

std::vector<Value> flattened(const std::vector<Value>& args) {
    std::vector<Value> out;
    flattenInto(args, out);
    return out;
}

} // namespace lumo
