#include "LumoCalc/app/AppPalette.h"

namespace lumo::appPalette {

namespace {

struct PaletteColours {
    QColor window, windowText, base, alternateBase, text, button, buttonText, highlight, highlightedText,
        link, placeholder, disabledText, toolTipBase, toolTipText, mid, dark, shadow;
};

QPalette makePalette(const PaletteColours& c) {
    QPalette palette;
    palette.setColor(QPalette::Window, c.window);
    palette.setColor(QPalette::WindowText, c.windowText);
    palette.setColor(QPalette::Base, c.base);
    palette.setColor(QPalette::AlternateBase, c.alternateBase);
    palette.setColor(QPalette::Text, c.text);
    palette.setColor(QPalette::Button, c.button);
    palette.setColor(QPalette::ButtonText, c.buttonText);
    palette.setColor(QPalette::BrightText, Qt::white);
    palette.setColor(QPalette::Highlight, c.highlight);
    palette.setColor(QPalette::HighlightedText, c.highlightedText);
    palette.setColor(QPalette::Link, c.link);
    palette.setColor(QPalette::LinkVisited, c.link);
    palette.setColor(QPalette::PlaceholderText, c.placeholder);
    palette.setColor(QPalette::ToolTipBase, c.toolTipBase);
    palette.setColor(QPalette::ToolTipText, c.toolTipText);
    palette.setColor(QPalette::Light, c.button.lighter(130));
    palette.setColor(QPalette::Midlight, c.button.lighter(115));
    palette.setColor(QPalette::Mid, c.mid);
    palette.setColor(QPalette::Dark, c.dark);
    palette.setColor(QPalette::Shadow, c.shadow);
    for (auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, c.disabledText);
    palette.setColor(QPalette::Disabled, QPalette::Highlight, c.mid);
    return palette;
}

} // namespace

QPalette lightPalette() {
    return makePalette({
        .window = QColor(0xf3, 0xf3, 0xf5),
        .windowText = QColor(0x1d, 0x1d, 0x1f),
        .base = QColor(0xff, 0xff, 0xff),
        .alternateBase = QColor(0xf5, 0xf6, 0xf8),
        .text = QColor(0x1d, 0x1d, 0x1f),
        .button = QColor(0xf0, 0xf0, 0xf2),
        .buttonText = QColor(0x1d, 0x1d, 0x1f),
        .highlight = QColor(0x2f, 0x6f, 0xd6),
        .highlightedText = QColor(0xff, 0xff, 0xff),
        .link = QColor(0x1a, 0x5f, 0xb4),
        .placeholder = QColor(0x8a, 0x8a, 0x8e),
        .disabledText = QColor(0xa0, 0xa0, 0xa4),
        .toolTipBase = QColor(0xff, 0xff, 0xf0),
        .toolTipText = QColor(0x1d, 0x1d, 0x1f),
        .mid = QColor(0xc4, 0xc4, 0xc8),
        .dark = QColor(0x9a, 0x9a, 0x9e),
        .shadow = QColor(0x50, 0x50, 0x54),
    });
}

QPalette darkPalette() {
    return makePalette({
        .window = QColor(0x26, 0x28, 0x2c),
        .windowText = QColor(0xe6, 0xe6, 0xe8),
        .base = QColor(0x1c, 0x1d, 0x21),
        .alternateBase = QColor(0x24, 0x26, 0x2b),
        .text = QColor(0xe8, 0xe8, 0xea),
        .button = QColor(0x33, 0x36, 0x3b),
        .buttonText = QColor(0xe6, 0xe6, 0xe8),
        .highlight = QColor(0x3a, 0x78, 0xd8),
        .highlightedText = QColor(0xff, 0xff, 0xff),
        .link = QColor(0x6c, 0xb6, 0xff),
        .placeholder = QColor(0x80, 0x82, 0x88),
        .disabledText = QColor(0x6a, 0x6c, 0x72),
        .toolTipBase = QColor(0x33, 0x36, 0x3b),
        .toolTipText = QColor(0xe6, 0xe6, 0xe8),
        .mid = QColor(0x45, 0x48, 0x4e),
        .dark = QColor(0x18, 0x19, 0x1c),
        .shadow = QColor(0x0a, 0x0a, 0x0c),
    });
}

QPalette paletteFor(AppearanceSetting setting, const QPalette& system) {
    switch (setting) {
    case AppearanceSetting::light:
        return lightPalette();
    case AppearanceSetting::dark:
        return darkPalette();
    case AppearanceSetting::automatic:
        break;
    }
    return system;
}

bool isDark(const QPalette& palette) {
    return palette.color(QPalette::Window).lightness() < 128;
}

} // namespace lumo::appPalette
