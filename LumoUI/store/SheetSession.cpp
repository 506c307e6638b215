#include "LumoUI/store/SheetSession.h"

#include "LumoUI/store/DocumentStore.h"

namespace lumo {

SheetSession::SheetSession(DocumentStore* store, QObject* parent) : QObject(parent), m_store(store) {
    if (m_store)
        m_store->registerSession(this);
}

void SheetSession::showSheet(const Uuid& sheetID) {
    if (m_store)
        m_store->showSheet(this, sheetID);
}

void SheetSession::activate() {
    if (m_store)
        m_store->setActiveSession(this);
}

void SheetSession::assignSheet(std::optional<Uuid> sheetID) {
    if (sheetID == m_sheetID)
        return;
    m_sheetID = sheetID;
    emit sheetIDChanged();
}

void SheetSession::assignResults(SharedResults results) {
    m_results = std::move(results);
    emit resultsChanged();
}

} // namespace lumo
