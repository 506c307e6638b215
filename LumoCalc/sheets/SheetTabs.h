#pragma once

#include <QPointer>
#include <QTabBar>
#include <QWidget>

#include <optional>

#include "LumoKit/document/Uuid.h"
#include "LumoUI/store/SheetListModel.h"

class QLineEdit;
class QToolButton;

namespace lumo {

class SheetActions;
class SheetListModel;
class NotificationCenter;

/// The tab bar of the window's sheets: one tab per row of the sheet list model, the window's
/// sheet current. Tabs are dragged with the sheet's identifier, so they can be dropped on this
/// bar, the sidebar or another window's list; a double-click renames in place.
class SheetTabBar : public QTabBar {
    Q_OBJECT

public:
    SheetTabBar(SheetListModel* model, SheetActions* actions, QWidget* parent = nullptr);

    /// Opens the name editor over a tab.
    void startRenaming(int index);
    QLineEdit* nameEditor() const { return m_nameEditor; }
    /// The place a drop at `position` (in this bar) puts a sheet, counted before the drop.
    int dropRow(const QPoint& position) const;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void rebuild();
    void showCurrentSheet();
    void finishRenaming();

    QPointer<SheetListModel> m_model;
    QPointer<SheetActions> m_actions;
    QLineEdit* m_nameEditor = nullptr;
    std::optional<Uuid> m_renaming;
    QPoint m_pressPosition;
    int m_pressedTab = -1;
    // Where a drag hovering over the bar would land, for the marker; -1 without one.
    int m_dropMarker = -1;
    bool m_rebuilding = false;
};

/// The tab bar with its button for a new sheet.
class SheetTabs : public QWidget {
    Q_OBJECT

public:
    SheetTabs(SheetListModel* model, SheetActions* actions, NotificationCenter* notifications,
              QWidget* parent = nullptr);

    SheetTabBar* tabBar() const { return m_tabBar; }
    QToolButton* addButton() const { return m_addButton; }

private:
    void retranslate();

    SheetTabBar* m_tabBar = nullptr;
    QToolButton* m_addButton = nullptr;
};

} // namespace lumo
