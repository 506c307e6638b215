#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lumo {

/// What a piece of a line is, for colouring. Raw values equal the case names.
enum class SyntaxKind { number, operatorMark, name, unit, function, keyword, quoted, comment };

/// Every case, in the order the settings screen lists them.
const std::vector<SyntaxKind>& allSyntaxKinds();
std::string_view rawValue(SyntaxKind kind);
/// The case for a raw value; nothing for any other text.
std::optional<SyntaxKind> syntaxKindFromRaw(std::string_view raw);
/// The title shown in the settings list, in the current language.
std::string title(SyntaxKind kind);

/// One coloured stretch of a line, in UTF-16 code units (the text view's unit).
struct SyntaxRange {
    std::int64_t offset = 0;
    std::int64_t length = 0;
    SyntaxKind kind = SyntaxKind::number;

    bool operator==(const SyntaxRange&) const = default;
};

/// Classifies one line (without its newline) into coloured ranges, in order and without
/// overlaps. Characters outside every range keep the default text colour.
std::vector<SyntaxRange> highlightLine(std::string_view line);

/// Light or dark appearance of the interface.
enum class Appearance { light, dark };

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

/// The user's syntax colours: "<raw value>.light" / "<raw value>.dark" → hex colour text.
using SyntaxColorOverrides = std::map<std::string, std::string>;

/// The application's colour constants.
namespace Theme {

/// The built-in colour of a kind, as 0xRRGGBBFF.
std::uint32_t defaultColor(SyntaxKind kind, Appearance appearance);
/// The key of a kind's entry in the user's colours, e.g. "quoted.light".
std::string colorKey(SyntaxKind kind, Appearance appearance);
/// The colour to draw a kind with: the user's entry when it parses, otherwise the default.
std::uint32_t color(SyntaxKind kind, Appearance appearance, const SyntaxColorOverrides& userColors);

} // namespace Theme

} // namespace lumo
