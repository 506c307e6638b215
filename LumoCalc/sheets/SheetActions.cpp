#include "LumoCalc/sheets/SheetActions.h"

#include <algorithm>

#include <QMenu>
#include <QTimer>
#include <QWidget>

#include "LumoCalc/dialogs/ConfirmationDialog.h"
#include "LumoCalc/text/Bilingual.h"
#include "LumoUI/settings/NotificationCenter.h"
#include "LumoUI/store/DocumentStore.h"
#include "LumoUI/store/SheetSession.h"

namespace lumo {

SheetActions::SheetActions(DocumentStore* store, SheetSession* session, NotificationCenter* notifications,
                           QWidget* window)
    : QObject(window), m_store(store), m_session(session), m_notifications(notifications), m_window(window) {}

ConfirmationDialog* SheetActions::deleteConfirmation() const {
    return m_confirmation;
}

QString SheetActions::nameOf(const Uuid& sheetID) const {
    const Sheet* sheet = m_store ? m_store->sheet(sheetID) : nullptr;
    return sheet ? QString::fromStdString(sheet->name) : QString();
}

void SheetActions::show(const Uuid& sheetID) {
    if (m_store && m_session && m_session->sheetID() != sheetID)
        m_store->showSheet(m_session, sheetID);
}

void SheetActions::showNeighbour(int step) {
    if (!m_store || !m_session || !m_session->sheetID())
        return;
    const std::vector<Sheet>& sheets = m_store->document().sheets;
    const auto shown = std::find_if(sheets.begin(), sheets.end(),
                                    [&](const Sheet& sheet) { return sheet.id == *m_session->sheetID(); });
    if (shown == sheets.end() || sheets.size() < 2)
        return;
    const auto count = std::ptrdiff_t(sheets.size());
    const std::ptrdiff_t index = ((shown - sheets.begin() + step) % count + count) % count;
    show(sheets[std::size_t(index)].id);
}

void SheetActions::addSheet() {
    // The window adds it as its New Sheet command does, with the caret in the new sheet.
    emit newSheetRequested();
}

void SheetActions::duplicate(const Uuid& sheetID) {
    if (!m_store || !m_session)
        return;
    m_session->activate();
    m_store->duplicateSheet(sheetID);
}

void SheetActions::askToDelete(const Uuid& sheetID) {
    if (!m_store || !m_store->sheet(sheetID) || m_confirmation)
        return;
    const QString name = nameOf(sheetID);
    m_confirmation = new ConfirmationDialog(
        pickText("「" + name.toStdString() + "」を削除しますか？", "Delete “" + name.toStdString() + "”?"),
        pickText("このシートはほかの端末からも消えます。元に戻すことはできません。",
                 "The sheet will disappear from your other devices too. This can’t be undone."),
        pickText("削除", "Delete"), ConfirmationDialog::Kind::destructive, m_window);
    connect(m_confirmation, &ConfirmationDialog::confirmed, this, [this, sheetID] {
        if (m_store)
            m_store->deleteSheet(sheetID);
    });
    // The sheet may go away on another device while the question is open.
    connect(m_store, &DocumentStore::documentChanged, m_confirmation, [this, sheetID] {
        if (m_confirmation && m_store && !m_store->sheet(sheetID))
            m_confirmation->close();
    });
    m_confirmation->open();
}

void SheetActions::clear(const Uuid& sheetID) {
    if (!m_session || !m_notifications)
        return;
    m_session->activate();
    m_notifications->post(QString::fromLatin1(notification::clearSheet),
                          QString::fromStdString(sheetID.toString()));
}

QMenu* SheetActions::contextMenu(const Uuid& sheetID, const std::function<void()>& rename, QWidget* parent) {
    auto* menu = new QMenu(parent);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->addAction(pickText("新規シート", "New Sheet"), this, &SheetActions::addSheet);
    menu->addAction(pickText("複製", "Duplicate"), this, [this, sheetID] { duplicate(sheetID); });
    // Renaming starts once the menu is gone and the focus has gone back where it was, so that
    // the name editor keeps it.
    menu->addAction(pickText("名前を変更", "Rename"), this,
                    [parent, rename] { QTimer::singleShot(0, parent, rename); });
    menu->addSeparator();
    menu->addAction(pickText("シートを消去", "Clear Sheet"), this, [this, sheetID] { clear(sheetID); });
    menu->addAction(pickText("削除", "Delete"), this, [this, sheetID] { askToDelete(sheetID); });
    return menu;
}

} // namespace lumo
