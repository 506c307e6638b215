#pragma once

#include <string_view>

namespace lumo {

/// The bytes of a text file from LumoKit/document/resources/, compiled into the library, by its
/// file name ("tutorial-units.en.txt"). Throws std::out_of_range for a name with no such file.
std::string_view builtinText(std::string_view fileName);

} // namespace lumo
