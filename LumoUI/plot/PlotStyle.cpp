#include "LumoUI/plot/PlotStyle.h"

namespace lumo {

namespace {

QColor fromRgba(std::uint32_t rgba) {
    return QColor(int(rgba >> 24) & 0xFF, int(rgba >> 16) & 0xFF, int(rgba >> 8) & 0xFF);
}

QColor mix(const QColor& a, const QColor& b, qreal amount) {
    return QColor::fromRgbF(float(a.redF() + (b.redF() - a.redF()) * amount),
                            float(a.greenF() + (b.greenF() - a.greenF()) * amount),
                            float(a.blueF() + (b.blueF() - a.blueF()) * amount));
}

} // namespace

PlotStyle PlotStyle::make(Appearance appearance, const SyntaxColorOverrides& userColors,
                          const QFont& textFont) {
    const bool dark = appearance == Appearance::dark;
    const auto syntax = [&](SyntaxKind kind) { return fromRgba(Theme::color(kind, appearance, userColors)); };
    // The paper of the text view; the plot's card is a shade apart from it.
    const QColor paper = dark ? QColor(0x1C, 0x1C, 0x1F) : QColor(0xFD, 0xFC, 0xF9);
    const QColor ink = syntax(SyntaxKind::number);

    PlotStyle style;
    style.paper = paper;
    style.background = mix(paper, ink, dark ? 0.045 : 0.022);
    style.border = mix(paper, ink, dark ? 0.14 : 0.10);
    style.text = ink;
    style.mutedText = mix(paper, ink, 0.58);
    style.axis = mix(paper, ink, 0.42);
    style.grid = mix(paper, ink, dark ? 0.12 : 0.085);
    style.zeroLine = mix(paper, ink, 0.55);
    style.failure = dark ? QColor(0xFF, 0x85, 0x7A) : QColor(0xC0, 0x39, 0x2B);
    style.series = {syntax(SyntaxKind::name), syntax(SyntaxKind::quoted), syntax(SyntaxKind::unit),
                    syntax(SyntaxKind::function), syntax(SyntaxKind::keyword)};
    style.negative = syntax(SyntaxKind::keyword);
    style.surfaceLow = syntax(SyntaxKind::name);
    style.surfaceHigh = syntax(SyntaxKind::quoted);
    style.mesh = mix(paper, ink, dark ? 0.30 : 0.38);
    style.mesh.setAlphaF(0.55f);
    style.font = textFont;
    return style;
}

QFont PlotStyle::titleFont() const {
    QFont title = font;
    if (title.pointSizeF() > 0)
        title.setPointSizeF(title.pointSizeF() * 0.93);
    title.setWeight(QFont::DemiBold);
    return title;
}

QFont PlotStyle::labelFont() const {
    QFont label = font;
    if (label.pointSizeF() > 0)
        label.setPointSizeF(label.pointSizeF() * 0.78);
    else if (label.pixelSize() > 0)
        label.setPixelSize(std::max(8, int(label.pixelSize() * 0.78)));
    return label;
}

} // namespace lumo
