#pragma once

#include <QListView>
#include <QPointer>
#include <QWidget>

#include "LumoUI/store/SheetListModel.h"

class QLabel;
class QToolButton;

namespace lumo {

class NotificationCenter;
class SheetActions;
class SheetListModel;

/// The list of sheets beside the editor, on the same model as the tab bar. The window's sheet is
/// the current row; rows are renamed in place (double-click or F2) and reordered by drag.
class SheetSidebar : public QWidget {
    Q_OBJECT

public:
    SheetSidebar(SheetListModel* model, SheetActions* actions, NotificationCenter* notifications,
                 QWidget* parent = nullptr);

    QListView* list() const { return m_list; }
    QToolButton* addButton() const { return m_addButton; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void showCurrentSheet();
    void retranslate();

    QPointer<SheetListModel> m_model;
    QPointer<SheetActions> m_actions;
    QLabel* m_title = nullptr;
    QToolButton* m_addButton = nullptr;
    QListView* m_list = nullptr;
    bool m_following = false;
};

} // namespace lumo
