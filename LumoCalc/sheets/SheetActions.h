#pragma once

#include <QObject>
#include <QPointer>

#include <functional>

#include "LumoCalc/dialogs/ConfirmationDialog.h"
#include "LumoKit/document/Uuid.h"
#include "LumoUI/settings/NotificationCenter.h"
#include "LumoUI/store/DocumentStore.h"
#include "LumoUI/store/SheetSession.h"

class QMenu;
class QWidget;

namespace lumo {

/// What a window's sheet list does to a sheet, shared by its tab bar and its sidebar: show it in
/// the window, add, duplicate, delete (after asking) and clear sheets, and the context menu that
/// offers these.
class SheetActions : public QObject {
    Q_OBJECT

public:
    SheetActions(DocumentStore* store, SheetSession* session, NotificationCenter* notifications,
                 QWidget* window);

    SheetSession* session() const { return m_session; }

    void show(const Uuid& sheetID);
    /// Shows the sheet `step` places after the shown one in the document's order, going round.
    void showNeighbour(int step);
    void addSheet();
    void duplicate(const Uuid& sheetID);
    /// Asks first, naming the sheet; the window then shows a neighbouring sheet.
    void askToDelete(const Uuid& sheetID);
    void clear(const Uuid& sheetID);

    /// The context menu of a sheet; `rename` starts editing its name in the view that asked.
    QMenu* contextMenu(const Uuid& sheetID, const std::function<void()>& rename, QWidget* parent);
    /// The delete confirmation being asked, if any.
    ConfirmationDialog* deleteConfirmation() const;

    /// The name of a sheet, for a text asking about it.
    QString nameOf(const Uuid& sheetID) const;

signals:
    /// New Sheet was chosen; the window runs its own command.
    void newSheetRequested();

private:
    QPointer<DocumentStore> m_store;
    QPointer<SheetSession> m_session;
    QPointer<NotificationCenter> m_notifications;
    QPointer<QWidget> m_window;
    QPointer<ConfirmationDialog> m_confirmation;
};

} // namespace lumo
