#pragma once

#include <QAbstractButton>

#include "LumoUI/keypad/KeyDefinition.h"
#include "LumoUI/settings/AppSettings.h"

namespace lumo {

/// The measures of the keypad at one of its sizes.
struct KeypadMetrics {
    int keyWidth = 60;
    int keyHeight = 46;
    int spacing = 6;
    int margin = 10;
    /// Pixel size of a key's label.
    int fontPixels = 18;

    static KeypadMetrics forSize(KeypadSizeSetting size);
    /// The width of a row of `keys` keys with their spacing, without the margins.
    int rowWidth(int keys) const { return keys * keyWidth + (keys - 1) * spacing; }
    /// The keypad's width: five keys and the margins.
    int panelWidth() const { return rowWidth(5) + 2 * margin; }
};

/// One key: a rounded face in the colour of its family, lighter under the mouse and darker
/// while pressed, with its label scaled down to fit. Keys never take the keyboard focus, so
/// the caret stays in the sheet.
class KeyButton : public QAbstractButton {
    Q_OBJECT

public:
    KeyButton(KeyDefinition key, const KeypadMetrics& metrics, QWidget* parent = nullptr);

    const KeyDefinition& key() const { return m_key; }
    void setMetrics(const KeypadMetrics& metrics);
    /// Relabels the tooltip and the accessible name in the language in force.
    void retranslate();
    /// Shows the key lifted, while it is dragged to another place.
    void setLifted(bool lifted);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    KeyDefinition m_key;
    KeypadMetrics m_metrics;
    bool m_hovered = false;
    bool m_lifted = false;
};

} // namespace lumo
