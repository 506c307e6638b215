#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace lumo {

/// The "#RRGGBB" colour text format.
namespace HexColor {

/// Writes an opaque 0xRRGGBBAA colour as "#" and six upper-case hex digits (alpha dropped).
std::string format(std::uint32_t rgba);
/// Reads "#RRGGBB" or "RRGGBB" (surrounding white space allowed) as 0xRRGGBBFF.
std::optional<std::uint32_t> parse(std::string_view text);

/// A colour's sRGB components in 0 … 1.
struct Components {
    double red = 0, green = 0, blue = 0, alpha = 1;
    bool operator==(const Components&) const = default;
};
Components components(std::uint32_t rgba);

} // namespace HexColor

} // namespace lumo
