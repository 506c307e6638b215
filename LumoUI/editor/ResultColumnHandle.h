#pragma once

#include <QPointer>
#include <QWidget>

#include <optional>

namespace lumo {

class AppSettings;

/// The answer column's size rules, in device-independent pixels.
namespace ResultColumn {
inline constexpr double minimumWidth = 84;
inline constexpr double maximumWidth = 560;
inline constexpr double defaultWidth = 180;

/// A requested width kept within the bounds; with a known available width the text keeps at
/// least 150 of it. `available` ≤ 0 means unknown.
double clampedWidth(double requested, double available);
/// The width the text is laid out in beside a column of `columnWidth` in a view of `viewWidth`.
double textLayoutWidth(double viewWidth, double columnWidth);
} // namespace ResultColumn

/// The draggable left edge of the answer column. Dragging it sideways resizes the column; each
/// width that differs noticeably from the stored one is stored in the settings, which announce
/// it with "lumo.resultWidthChanged".
class ResultColumnHandle : public QWidget {
    Q_OBJECT

public:
    ResultColumnHandle(AppSettings* settings, QWidget* parent);

    /// The width available to the whole editor, for the clamp.
    void setAvailable(double available) { m_available = available; }
    double available() const { return m_available; }
    /// Requests a column width: clamps it and stores it when it changed by more than half a pixel.
    void requestWidth(double width);
    bool isHovering() const { return m_hovering; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;

private:
    QPointer<AppSettings> m_settings;
    double m_available = 0;
    double m_startX = 0; // where a drag began, in screen coordinates
    std::optional<double> m_startWidth;
    bool m_hovering = false;
};

} // namespace lumo
