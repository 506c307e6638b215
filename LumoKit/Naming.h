#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace lumo {

/// The eight words sheet evaluation gives a meaning of its own: prev, ans, 前, sum,
/// subtotal, 小計, total, 合計 (exact spelling).
bool isBuiltinWord(std::string_view name);

/// Whether `name` may name line `lineIndex` (0-based) of `sheetText`. Nothing when it may;
/// otherwise the message explaining why not, in the current language. The line being named
/// is left out of the search for an existing definition, so keeping a line's name is allowed.
std::optional<std::string> validateLineName(std::string_view name, std::string_view sheetText,
                                            std::size_t lineIndex);

/// Whether `name` clashes with something the language already defines (a built-in function,
/// a constant, a built-in word of the sheet, a unit). Nothing when it doesn't.
std::optional<std::string> nameClash(std::string_view name);

} // namespace lumo
