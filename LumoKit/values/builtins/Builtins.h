#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "LumoKit/base/EvaluationOptions.h"
#include "LumoKit/values/Value.h"

namespace lumo {

/// The built-in function names in the engine's order (sqrt … lcm).
const std::vector<std::string>& builtinFunctionNames();
/// Exact, case-sensitive membership.
bool isBuiltinFunction(std::string_view name);

/// Calls the built-in function `name` with evaluated arguments, by its own argument rules;
/// nothing when no built-in has that name. Throws CalcError.
std::optional<Value> callBuiltin(const std::string& name, const std::vector<Value>& args,
                                 const EvaluationOptions& options);

} // namespace lumo
