#pragma once

#include <QPointer>
#include <QScrollArea>

#include <string>

#include "LumoUI/keypad/KeyButton.h"
#include "LumoUI/keypad/KeyCatalog.h"

class QVBoxLayout;

namespace lumo {

class KeyLayoutStore;
class KeySection;

/// The function or unit tab: one section per group with the keys the user keeps there, in the
/// user's order. Dragging and hiding keys changes the arrangement in the key layout store, and
/// every arrangement the store announces (from here or from another device) is shown.
class ArrangedTab : public QScrollArea {
    Q_OBJECT

public:
    ArrangedTab(KeyKind kind, KeyLayoutStore* layouts, const KeypadMetrics& metrics,
                QWidget* parent = nullptr);

    KeyKind kind() const { return m_kind; }
    QList<KeySection*> sections() const;
    KeySection* section(const std::string& groupID) const;
    /// The unit tab's "in" key; null on the function tab.
    KeyButton* conversionKey() const { return m_conversion; }

    void setMetrics(const KeypadMetrics& metrics);
    /// Builds the sections again from the store's arrangement, in the language in force.
    void rebuild();

signals:
    void keyPressed(const lumo::KeyDefinition& key);
    void catalogRequested(const std::string& groupID);

private:
    void moveKey(const std::string& groupID, const std::string& keyID, int toIndex);
    void hideKey(const std::string& groupID, const std::string& keyID);
    void showContextMenu(const std::string& groupID, const std::string& keyID, const QPoint& globalPosition);

    KeyKind m_kind;
    QPointer<KeyLayoutStore> m_layouts;
    KeypadMetrics m_metrics;
    QWidget* m_content = nullptr;
    KeyButton* m_conversion = nullptr;
};

} // namespace lumo
