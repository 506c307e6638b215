#include "LumoUI/settings/ViewStyle.h"

#include <array>

namespace lumo::ViewStyle {

namespace {

struct SizeStep {
    TextSizeSetting size;
    qreal points;
};

// In order from the smallest, so zooming is a step along the table.
constexpr std::array<SizeStep, 4> sizes{{
    {TextSizeSetting::small, 12},
    {TextSizeSetting::standard, 14},
    {TextSizeSetting::large, 17},
    {TextSizeSetting::xlarge, 20},
}};

std::size_t indexOf(TextSizeSetting size) {
    for (std::size_t index = 0; index < sizes.size(); ++index) {
        if (sizes[index].size == size)
            return index;
    }
    return 1;
}

} // namespace

qreal pointSize(TextSizeSetting size) {
    return sizes[indexOf(size)].points;
}

QFont sheetFont(const QFont& base, TextSizeSetting size) {
    QFont font = base;
    font.setPointSizeF(pointSize(size));
    return font;
}

TextSizeSetting larger(TextSizeSetting size) {
    const std::size_t index = indexOf(size);
    return index + 1 < sizes.size() ? sizes[index + 1].size : size;
}

TextSizeSetting smaller(TextSizeSetting size) {
    const std::size_t index = indexOf(size);
    return index > 0 ? sizes[index - 1].size : size;
}

bool isDark(const QPalette& palette) {
    return palette.color(QPalette::Window).lightness() < 128;
}

Appearance appearance(AppearanceSetting setting, const QPalette& palette) {
    switch (setting) {
    case AppearanceSetting::light:
        return Appearance::light;
    case AppearanceSetting::dark:
        return Appearance::dark;
    case AppearanceSetting::automatic:
        break;
    }
    return isDark(palette) ? Appearance::dark : Appearance::light;
}

} // namespace lumo::ViewStyle
