#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "LumoKit/language/Parser.h"
#include "LumoKit/values/Value.h"

namespace lumo {

class Evaluator;

/// The built-in function names in the engine's order (sqrt … lcm).
const std::vector<std::string>& builtinFunctionNames();
/// Exact, case-sensitive membership.
bool isBuiltinFunction(std::string_view name);

/// Dispatches a call: a built-in is evaluated with its own argument rules; any other name
/// is asked of the evaluator's context (user functions). Throws CalcError.
Value callFunction(const std::string& name, const std::vector<ExprPtr>& args, const Evaluator& evaluator);

} // namespace lumo
