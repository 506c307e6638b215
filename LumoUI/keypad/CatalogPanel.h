#pragma once

#include <QWidget>

#include <string>

#include "LumoUI/keypad/KeyArrangement.h"
#include "LumoUI/keypad/KeyButton.h"

class QCheckBox;
class QLabel;
class QPushButton;
class QToolButton;
class QVBoxLayout;

namespace lumo {

/// The catalog of one group: every key with its one-line description, and a check box that
/// puts it on the tab or takes it off. Pressing a key here types it like the tab's key does.
class CatalogPanel : public QWidget {
    Q_OBJECT

public:
    CatalogPanel(const KeyGroup& group, const KeyArrangement& arrangement, const KeypadMetrics& metrics,
                 QWidget* parent = nullptr);

    const std::string& groupID() const { return m_groupID; }
    KeyButton* keyButton(const std::string& keyID) const;
    QCheckBox* shownBox(const std::string& keyID) const;
    QToolButton* backButton() const { return m_back; }
    QPushButton* resetButton() const { return m_reset; }

signals:
    void keyPressed(const lumo::KeyDefinition& key);
    void shownChanged(const std::string& keyID, bool shown);
    void resetRequested();
    void closeRequested();

private:
    struct Row {
        KeyButton* key;
        QLabel* description;
        QCheckBox* shown;
    };

    std::string m_groupID;
    QToolButton* m_back = nullptr;
    QLabel* m_title = nullptr;
    QPushButton* m_reset = nullptr;
    std::vector<Row> m_rows;
};

} // namespace lumo
