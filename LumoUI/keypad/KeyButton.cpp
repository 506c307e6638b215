#include "LumoUI/keypad/KeyButton.h"

#include <QEnterEvent>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>

namespace lumo {

namespace {

QColor blend(const QColor& from, const QColor& to, double amount) {
    const auto mix = [amount](double a, double b) { return a + (b - a) * amount; };
    return QColor::fromRgbF(float(mix(from.redF(), to.redF())), float(mix(from.greenF(), to.greenF())),
                            float(mix(from.blueF(), to.blueF())), float(mix(from.alphaF(), to.alphaF())));
}

bool isDark(const QPalette& palette) {
    return palette.color(QPalette::Window).lightness() < 128;
}

struct Face {
    QColor fill;
    QColor text;
};

// Colours from the palette, so that keys follow light and dark: digits on the lightest face,
// operators tinted with the accent, editing keys a step darker than the window.
Face faceFor(KeyStyle style, const QPalette& palette) {
    const bool dark = isDark(palette);
    const QColor window = palette.color(QPalette::Window);
    const QColor base = palette.color(QPalette::Base);
    const QColor button = palette.color(QPalette::Button);
    const QColor text = palette.color(QPalette::ButtonText);
    const QColor accent = palette.color(QPalette::Highlight);
    const QColor accentText = dark ? blend(accent, Qt::white, 0.45) : blend(accent, Qt::black, 0.2);
    switch (style) {
    case KeyStyle::digit:
        return {dark ? blend(button, Qt::white, 0.10) : base, text};
    case KeyStyle::operation:
        return {blend(dark ? button : base, accent, dark ? 0.30 : 0.16), accentText};
    case KeyStyle::control:
        return {blend(window, text, dark ? 0.10 : 0.09), text};
    case KeyStyle::function:
    case KeyStyle::unit:
        return {dark ? blend(button, Qt::white, 0.04) : blend(base, window, 0.5), text};
    case KeyStyle::namedValue:
        return {blend(dark ? button : base, accent, dark ? 0.42 : 0.24), dark ? Qt::white : accentText};
    }
    return {button, text};
}

} // namespace

KeypadMetrics KeypadMetrics::forSize(KeypadSizeSetting size) {
    switch (size) {
    case KeypadSizeSetting::small:
        return {44, 34, 5, 8, 14};
    case KeypadSizeSetting::medium:
        return {52, 40, 6, 9, 16};
    case KeypadSizeSetting::large:
        return {60, 46, 6, 10, 18};
    }
    return {};
}

KeyButton::KeyButton(KeyDefinition key, const KeypadMetrics& metrics, QWidget* parent)
    : QAbstractButton(parent), m_key(std::move(key)), m_metrics(metrics) {
    setFocusPolicy(Qt::NoFocus);
    setAttribute(Qt::WA_Hover);
    setText(QString::fromStdString(m_key.label));
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    retranslate();
}

void KeyButton::setMetrics(const KeypadMetrics& metrics) {
    m_metrics = metrics;
    updateGeometry();
    update();
}

void KeyButton::retranslate() {
    setToolTip(m_key.toolTip());
    setAccessibleName(m_key.name.text());
    setAccessibleDescription(m_key.description == m_key.name ? QString() : m_key.description.text());
}

void KeyButton::setLifted(bool lifted) {
    m_lifted = lifted;
    update();
}

QSize KeyButton::sizeHint() const {
    return {m_metrics.keyWidth, m_metrics.keyHeight};
}

void KeyButton::enterEvent(QEnterEvent* event) {
    m_hovered = true;
    update();
    QAbstractButton::enterEvent(event);
}

void KeyButton::leaveEvent(QEvent* event) {
    m_hovered = false;
    update();
    QAbstractButton::leaveEvent(event);
}

void KeyButton::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QPalette& colors = palette();
    Face face = faceFor(m_key.style, colors);
    const bool dark = isDark(colors);
    // Hover and press move the face towards the label's colour: lighter on dark, darker on light.
    if (isDown())
        face.fill = blend(face.fill, face.text, 0.22);
    else if (m_hovered && isEnabled())
        face.fill = blend(face.fill, face.text, 0.08);
    if (!isEnabled()) {
        face.text = blend(face.text, face.fill, 0.6);
        face.fill = blend(face.fill, colors.color(QPalette::Window), 0.5);
    }

    const QRectF area = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -1.5);
    const qreal radius = std::min<qreal>(area.height() / 4, 9);
    QPainterPath shape;
    shape.addRoundedRect(area, radius, radius);
    // A faint edge below the key gives it depth without a heavy border.
    painter.fillPath(shape.translated(0, 1),
                     blend(colors.color(QPalette::Window), Qt::black, dark ? 0.45 : 0.14));
    painter.fillPath(shape, face.fill);
    if (m_lifted) {
        painter.setPen(QPen(colors.color(QPalette::Highlight), 2));
        painter.drawPath(shape);
    } else {
        painter.setPen(QPen(blend(face.fill, face.text, dark ? 0.14 : 0.12), 1));
        painter.drawPath(shape);
    }

    // The label at the keypad's size, shrunk until it fits the face.
    QFont labelFont = font();
    labelFont.setPixelSize(m_key.style == KeyStyle::digit ? m_metrics.fontPixels + 2 : m_metrics.fontPixels);
    const int room = width() - 8;
    for (int pixels = labelFont.pixelSize(); pixels > 8; --pixels) {
        labelFont.setPixelSize(pixels);
        if (QFontMetrics(labelFont).horizontalAdvance(text()) <= room)
            break;
    }
    painter.setFont(labelFont);
    painter.setPen(face.text);
    painter.drawText(area, Qt::AlignCenter | Qt::TextSingleLine, text());
}

} // namespace lumo
