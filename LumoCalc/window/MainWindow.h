#pragma once

#include <QMainWindow>
#include <QPointer>

#include <functional>
#include <map>

#include "LumoCalc/window/Commands.h"

class QAction;
class QBoxLayout;
class QMenu;
class QSplitter;

namespace lumo {

class AppSettings;
class DocumentStore;
class NotificationCenter;
class SheetEditor;
class SheetSession;

/// One window of the application: a sheet of the shared document in its own session, with the
/// menu bar. The sheet editor sits in the middle of a splitter that keeps a place on either
/// side for the sheet list and the keypad, and a row above it for the sheet tabs.
///
/// Commands that concern the whole application (a new window, quitting, help, erasing
/// everything) are handed to whoever owns the windows through commandRequested().
class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    MainWindow(DocumentStore* store, AppSettings* settings, NotificationCenter* notifications,
               QWidget* parent = nullptr);
    ~MainWindow() override;

    SheetSession* session() const { return m_session; }
    SheetEditor* editor() const { return m_editor; }
    QAction* action(Command command) const;
    QList<QMenu*> menus() const { return m_menus; }

    /// Runs a command as its menu item would.
    void perform(Command command);

    /// Gives a command to a feature of the window (the find bar, the plots, the keypad…), which
    /// then runs it in place of perform()'s own handling. A checkable command's handler gets
    /// the new check state.
    using CommandHandler = std::function<void(bool checked)>;
    void setCommandHandler(Command command, CommandHandler handler);

    /// Places for the views that later come beside the editor; each takes ownership.
    void setSheetTabs(QWidget* tabs);
    void setSheetSidebar(QWidget* sidebar);
    /// The width the user gave the sidebar, or 0 while it is hidden.
    int sidebarWidth() const;
    /// A bar between the sheet tabs and the editor (the find bar); takes ownership.
    void setBarAboveSheet(QWidget* bar);
    enum class Side { left, right };
    void setKeypad(QWidget* keypad, Side side);
    /// Widens the window, as far as its screen allows, when the panels beside the editor would
    /// leave the sheet too narrow to read. A maximised or full-screen window keeps its size.
    void makeRoomForEditor();

signals:
    /// A command for the application rather than this window.
    void commandRequested(lumo::Command command);
    /// The window was closed and is about to go away.
    void closed();

protected:
    void changeEvent(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void buildMenus();
    void retranslate();
    void updateTitle();
    void updateEditActions();

    QPointer<DocumentStore> m_store;
    QPointer<NotificationCenter> m_notifications;
    SheetSession* m_session = nullptr;
    SheetEditor* m_editor = nullptr;
    QBoxLayout* m_column = nullptr;
    QBoxLayout* m_topRow = nullptr;
    QSplitter* m_splitter = nullptr;
    QPointer<QWidget> m_sidebar;
    QPointer<QWidget> m_keypad;
    std::map<Command, QAction*> m_actions;
    std::map<Command, CommandHandler> m_handlers;
    QList<QMenu*> m_menus;
};

} // namespace lumo
