#include "LumoUI/settings/Theme.h"

#include <algorithm>
#include <array>

#include "LumoUI/settings/HexColor.h"

namespace lumo::Theme {

namespace {

struct KindColors {
    SyntaxKind kind;
    std::uint32_t light;
    std::uint32_t dark;
};

constexpr std::array<KindColors, 8> defaultColors{{
    {SyntaxKind::number, 0x1B1A18FF, 0xE9E9ECFF},
    {SyntaxKind::operatorMark, 0x9A948AFF, 0x6F6F7AFF},
    {SyntaxKind::name, 0x2F6FEDFF, 0x6FA0FFFF},
    {SyntaxKind::unit, 0x0E8A64FF, 0x46C79BFF},
    {SyntaxKind::function, 0x8B5CF6FF, 0xB295FFFF},
    {SyntaxKind::keyword, 0xC2185BFF, 0xFF8FB4FF},
    {SyntaxKind::quoted, 0xB4551AFF, 0xE8A15FFF},
    {SyntaxKind::comment, 0xA8A296FF, 0x66666FFF},
}};

} // namespace

std::uint32_t paperColor(Appearance appearance) {
    return appearance == Appearance::dark ? 0x1C1C1FFF : 0xFDFCF9FF;
}

std::uint32_t inkColor(Appearance appearance) {
    return appearance == Appearance::dark ? 0xE9E9ECFF : 0x1B1A18FF;
}

std::uint32_t defaultColor(SyntaxKind kind, Appearance appearance) {
    const auto entry = std::find_if(defaultColors.begin(), defaultColors.end(),
                                    [kind](const KindColors& colors) { return colors.kind == kind; });
    return appearance == Appearance::dark ? entry->dark : entry->light;
}

std::string colorKey(SyntaxKind kind, Appearance appearance) {
    return std::string(rawValue(kind)) + (appearance == Appearance::dark ? ".dark" : ".light");
}

std::uint32_t color(SyntaxKind kind, Appearance appearance, const SyntaxColorOverrides& userColors) {
    if (auto entry = userColors.find(colorKey(kind, appearance)); entry != userColors.end())
        if (auto parsed = HexColor::parse(entry->second))
            return *parsed;
    // The default goes through the same text form as a user's entry, so both are read alike.
    return HexColor::parse(HexColor::format(defaultColor(kind, appearance)))
        .value_or(defaultColor(kind, appearance));
}

} // namespace lumo::Theme
