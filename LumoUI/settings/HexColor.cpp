#include "LumoUI/settings/HexColor.h"

#include <cstdio>

#include "LumoKit/base/Unicode.h"

namespace lumo::HexColor {

std::string format(std::uint32_t rgba) {
    char buffer[8];
    std::snprintf(buffer, sizeof buffer, "#%02X%02X%02X", (rgba >> 24) & 0xFF, (rgba >> 16) & 0xFF,
                  (rgba >> 8) & 0xFF);
    return buffer;
}

std::optional<std::uint32_t> parse(std::string_view text) {
    std::string trimmed = unicode::trim(text);
    std::string_view digits = trimmed;
    if (digits.starts_with('#'))
        digits.remove_prefix(1);
    if (digits.size() != 6)
        return std::nullopt;
    std::uint32_t rgb = 0;
    for (char c : digits) {
        int value = (c >= '0' && c <= '9')   ? c - '0'
                    : (c >= 'a' && c <= 'f') ? c - 'a' + 10
                    : (c >= 'A' && c <= 'F') ? c - 'A' + 10
                                             : -1;
        if (value < 0)
            return std::nullopt;
        rgb = rgb << 4 | static_cast<std::uint32_t>(value);
    }
    return rgb << 8 | 0xFF;
}

Components components(std::uint32_t rgba) {
    auto byte = [rgba](int shift) { return static_cast<double>((rgba >> shift) & 0xFF) / 255.0; };
    return {byte(24), byte(16), byte(8), 1.0};
}

} // namespace lumo::HexColor
