#include "Naming.h"

namespace lumo {

bool isBuiltinWord(std::string_view) { return false; }

std::optional<std::string> validateLineName(std::string_view, std::string_view, std::size_t) {
    return std::nullopt;
}

std::optional<std::string> nameClash(std::string_view) { return std::nullopt; }

} // namespace lumo
