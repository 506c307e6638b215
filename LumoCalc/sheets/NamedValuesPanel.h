#pragma once

#include <QPointer>
#include <QWidget>

#include <vector>

#include "LumoUI/settings/NotificationCenter.h"
#include "LumoUI/store/NamedValues.h"
#include "LumoUI/store/SheetSession.h"

class QLabel;
class QTreeWidget;
class QTreeWidgetItem;

namespace lumo {

/// The named lines of the window's sheet with their answers, as they come in from evaluation.
/// Clicking a name inserts it at the caret as a named value, so that clicking several names after
/// a number adds them up.
class NamedValuesPanel : public QWidget {
    Q_OBJECT

public:
    NamedValuesPanel(SheetSession* session, NotificationCenter* notifications, QWidget* parent = nullptr);

    QTreeWidget* list() const { return m_list; }
    const std::vector<NamedValue>& values() const { return m_values; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void fitNameColumn();
    void refresh();
    void retranslate();
    void insert(QTreeWidgetItem* item);

    QPointer<SheetSession> m_session;
    QPointer<NotificationCenter> m_notifications;
    QLabel* m_title = nullptr;
    QLabel* m_placeholder = nullptr;
    QTreeWidget* m_list = nullptr;
    std::vector<NamedValue> m_values;
};

} // namespace lumo
