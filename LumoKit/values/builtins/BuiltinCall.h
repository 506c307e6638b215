#pragma once

#include <string>
#include <vector>

#include "LumoKit/base/CalcError.h"
#include "LumoKit/base/EvaluationOptions.h"
#include "LumoKit/values/Value.h"

namespace lumo {

/// One call of a built-in function, its argument count already checked against the table.
struct BuiltinCall {
    const std::string& name;
    const std::vector<Value>& args;
    const EvaluationOptions& options;
};

using BuiltinFunction = Value (*)(const BuiltinCall& call);

// The argument checks the families share. Each throws CalcError naming the function.

[[noreturn]] void failCannotTake(const std::string& fn, const Value& value);
/// A number argument with a percent made its fraction; any unit is kept.
Value numberArgument(const std::string& fn, const Value& value);
/// A number argument without a unit.
double plainArgument(const std::string& fn, const Value& value);
Value numberIn(double number, const UnitRef& unit);
bool isWhole(double number);
/// Values and lists alike, nested lists item by item.
std::vector<Value> flattened(const std::vector<Value>& args);

// The families, one file each.

// Roots, logarithms and exponentials (Exponentials.cpp)
Value squareRoot(const BuiltinCall& call);
Value cubeRoot(const BuiltinCall& call);
Value naturalLogarithm(const BuiltinCall& call);
Value commonLogarithm(const BuiltinCall& call);
Value binaryLogarithm(const BuiltinCall& call);
Value exponential(const BuiltinCall& call);

// Sign, magnitude and rounding (Rounding.cpp)
Value absolute(const BuiltinCall& call);
Value signOf(const BuiltinCall& call);
Value roundHalfAway(const BuiltinCall& call);
Value roundDown(const BuiltinCall& call);
Value roundUp(const BuiltinCall& call);
Value roundTowardZero(const BuiltinCall& call);

// Aggregates (Aggregates.cpp)
Value minimum(const BuiltinCall& call);
Value maximum(const BuiltinCall& call);
Value sumOf(const BuiltinCall& call);
Value averageOf(const BuiltinCall& call);

// Lists and texts (ListsAndTexts.cpp)
Value lengthOf(const BuiltinCall& call);
Value textOf(const BuiltinCall& call);
Value listOf(const BuiltinCall& call);
Value sortOf(const BuiltinCall& call);
Value reverseOf(const BuiltinCall& call);

// Trigonometry (Trigonometry.cpp)
Value sine(const BuiltinCall& call);
Value cosine(const BuiltinCall& call);
Value tangent(const BuiltinCall& call);
Value arcsine(const BuiltinCall& call);
Value arccosine(const BuiltinCall& call);
Value arctangent(const BuiltinCall& call);

// Two-argument arithmetic and whole numbers (Arithmetic.cpp)
Value powerOf(const BuiltinCall& call);
Value remainderOf(const BuiltinCall& call);
Value hypotenuse(const BuiltinCall& call);
Value greatestCommonDivisor(const BuiltinCall& call);
Value leastCommonMultiple(const BuiltinCall& call);

} // namespace lumo
