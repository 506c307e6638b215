#pragma once

#include <QFrame>
#include <QList>
#include <QPointer>

#include <map>
#include <optional>
#include <string>

#include "LumoUI/keypad/KeyButton.h"
#include "LumoUI/keypad/KeyCatalog.h"

class QAbstractButton;
class QButtonGroup;
class QHBoxLayout;
class QScrollArea;
class QStackedWidget;

namespace lumo {

class AppSettings;
class ArrangedTab;
class CatalogPanel;
class KeyLayoutStore;
class NotificationCenter;
class SheetSession;

/// The on-screen keypad beside a sheet: the number, function and unit tabs, the catalogs of
/// the function and unit groups, and a row of keys for the sheet's named values.
///
/// A key only posts the "lumo." notification it stands for; the sheet's editor (or the
/// document store, for undo and redo) acts on it. The keypad follows "lumo.keypadSize",
/// remembers the open catalog in "lumo.keypadPanel" and relabels itself when the language
/// changes.
class KeypadView : public QFrame {
    Q_OBJECT

public:
    enum class Tab { numbers, functions, units };

    /// `session` gives the named values and the undo availability; any pointer may be null.
    KeypadView(SheetSession* session, AppSettings* settings, NotificationCenter* notifications,
               KeyLayoutStore* layouts, QWidget* parent = nullptr);

    Tab currentTab() const;
    void showTab(Tab tab);
    QAbstractButton* tabButton(Tab tab) const;

    KeyButton* numberKey(const std::string& id) const;
    ArrangedTab* arrangedTab(KeyKind kind) const;
    /// The catalog shown now, if any.
    CatalogPanel* catalog() const;
    void openCatalog(KeyKind kind, const std::string& groupID);
    void closeCatalog();
    QList<KeyButton*> namedValueKeys() const;

    const KeypadMetrics& metrics() const { return m_metrics; }

    /// Posts what a key stands for.
    void press(const KeyDefinition& key);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void buildTabs();
    void buildNumberPad();
    void applySize();
    void retranslate();
    void updateUndoKeys();
    void updateNamedValues();
    void restorePanel();

    QPointer<SheetSession> m_session;
    QPointer<AppSettings> m_settings;
    QPointer<NotificationCenter> m_notifications;
    QPointer<KeyLayoutStore> m_layouts;
    KeypadMetrics m_metrics;

    QButtonGroup* m_tabGroup = nullptr;
    std::map<Tab, QAbstractButton*> m_tabButtons;
    QScrollArea* m_namesArea = nullptr;
    QWidget* m_names = nullptr;
    QHBoxLayout* m_namesRow = nullptr;
    QStackedWidget* m_pages = nullptr;
    QWidget* m_numberPage = nullptr;
    std::map<std::string, KeyButton*> m_numberKeys;
    ArrangedTab* m_functionTab = nullptr;
    ArrangedTab* m_unitTab = nullptr;
    QPointer<CatalogPanel> m_catalog;
    std::optional<KeyKind> m_catalogKind;
};

} // namespace lumo
