#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace lumo {

/// Whether `name` may name line `lineIndex` (0-based) of `sheetText`. Nothing when it may;
/// otherwise the message explaining why not, in the current language. The line being named
/// is left out of the search for an existing definition, so keeping a line's name is allowed.
std::optional<std::string> validateLineName(std::string_view name, std::string_view sheetText,
                                            std::size_t lineIndex);

/// Whether `name` clashes with something the language already defines (a built-in function,
/// a constant, one of the sheet's own words such as sum or 合計, a unit). Nothing when it doesn't.
std::optional<std::string> nameClash(std::string_view name);

} // namespace lumo
