#include "LumoUI/plot/PlotStyle.h"

#include <algorithm>
#include <cmath>

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

// A font of the same family, sized by points or by pixels as the original is.
QFont scaledFont(const QFont& font, qreal factor) {
    QFont scaled = font;
    if (font.pointSizeF() > 0)
        scaled.setPointSizeF(font.pointSizeF() * factor);
    else if (font.pixelSize() > 0)
        scaled.setPixelSize(std::max(8, int(std::lround(font.pixelSize() * factor))));
    return scaled;
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
    // On light paper the faces are a little paler than the text colours, so shading keeps
    // them bright.
    style.surfaceLow = mix(syntax(SyntaxKind::name), paper, dark ? 0 : 0.2);
    style.surfaceMiddle = mix(syntax(SyntaxKind::unit), paper, dark ? 0 : 0.2);
    style.surfaceHigh = mix(syntax(SyntaxKind::quoted), paper, dark ? 0 : 0.2);
    // Seams a shade darker than the faces, so the mesh reads without washing the colours out.
    style.mesh = QColor(0, 0, 0);
    style.mesh.setAlphaF(dark ? 0.38f : 0.14f);
    style.font = textFont;
    return style;
}

QFont PlotStyle::titleFont() const {
    QFont title = scaledFont(font, 0.93);
    title.setWeight(QFont::DemiBold);
    return title;
}

QFont PlotStyle::labelFont() const {
    return scaledFont(font, 0.8);
}

} // namespace lumo
