#pragma once

#include <QPointer>
#include <QWidget>

#include <optional>
#include <string>
#include <vector>

#include "LumoUI/keypad/KeyButton.h"

class QLabel;
class QToolButton;

namespace lumo {

/// One group of an arranged tab: its title, a button that opens its catalog, and its shown
/// keys in rows.
///
/// A key dragged with the mouse follows it while the others make room; let go inside the
/// section it takes the place it was dropped on, let go on the catalog button it is hidden.
/// A plain click presses the key (keyPressed()).
class KeySection : public QWidget {
    Q_OBJECT

public:
    KeySection(std::string groupID, const std::vector<const KeyDefinition*>& keys,
               const KeypadMetrics& metrics, int columns, QWidget* parent = nullptr);

    const std::string& groupID() const { return m_groupID; }
    QList<KeyButton*> keyButtons() const { return m_buttons; }
    KeyButton* keyButton(const std::string& keyID) const;
    QToolButton* catalogButton() const { return m_catalogButton; }
    void setTitle(const QString& title);
    void retranslate();

    QSize sizeHint() const override;
    /// Any width will do: the keys share what there is.
    QSize minimumSizeHint() const override { return {0, sizeHint().height()}; }

signals:
    void keyPressed(const lumo::KeyDefinition& key);
    void moveRequested(const std::string& keyID, int toIndex);
    void hideRequested(const std::string& keyID);
    void catalogRequested();
    void contextMenuRequested(const std::string& keyID, const QPoint& globalPosition);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    QRect slot(int index) const;
    int slotAt(const QPoint& position) const;
    int gridTop() const;
    void layoutKeys();
    void finishDrag(const QPoint& globalPosition);

    std::string m_groupID;
    KeypadMetrics m_metrics;
    int m_columns;
    QLabel* m_title = nullptr;
    QToolButton* m_catalogButton = nullptr;
    QList<KeyButton*> m_buttons;

    // The drag under way: the key, where the mouse went down, where on the key it holds it,
    // and the slot it would take.
    QPointer<KeyButton> m_pressed;
    QPoint m_pressAt;
    QPoint m_grabOffset;
    bool m_dragging = false;
    int m_target = -1;
};

} // namespace lumo
