#include "LumoUI/store/ResultRouter.h"

#include <QtDebug>

#include <algorithm>
#include <exception>
#include <optional>
#include <unordered_map>

#include "LumoUI/store/DocumentStore.h"
#include "LumoUI/store/SheetSession.h"

namespace lumo {

ResultRouter::ResultRouter(const LumoDocument& document, QObject* parent)
    : QObject(parent), m_document(document) {}

void ResultRouter::registerSession(SheetSession* session) {
    m_sessions.removeAll(nullptr);
    m_sessions.append(session);
    session->assignSheet(m_document.selectedSheetID);
    if (m_document.selectedSheetID)
        session->assignResults(evaluate(*m_document.selectedSheetID));
    // A closed window no longer counts for the results.
    connect(session, &QObject::destroyed, this, [this] {
        refresh();
        emit sessionClosed();
    });
}

void ResultRouter::setActiveSession(SheetSession* session) {
    m_activeSession = session;
    refresh();
}

QList<SheetSession*> ResultRouter::liveSessions() const {
    QList<SheetSession*> live;
    for (const QPointer<SheetSession>& session : m_sessions) {
        if (session)
            live.append(session);
    }
    return live;
}

std::vector<LineResult> ResultRouter::evaluate(const Uuid& sheetID) const {
    const auto& sheets = m_document.sheets;
    const auto target =
        std::find_if(sheets.begin(), sheets.end(), [&](const Sheet& s) { return s.id == sheetID; });
    if (target == sheets.end())
        return {};
    std::vector<SharedSheet> others;
    for (const Sheet& other : sheets) {
        if (other.id != sheetID)
            others.push_back(SharedSheet{other.name, other.text});
    }
    try {
        return DocumentEvaluator::evaluate(target->text, others);
    } catch (const std::exception& error) {
        // The evaluator reports failures per line; anything escaping it is a bug, not the user's.
        qWarning().noquote() << "Lumo: evaluation failed:" << error.what();
        return {};
    }
}

void ResultRouter::refresh() {
    std::unordered_map<Uuid, std::vector<LineResult>> evaluated;
    const auto resultsOf = [&](const Uuid& id) -> const std::vector<LineResult>& {
        auto found = evaluated.find(id);
        if (found == evaluated.end())
            found = evaluated.emplace(id, evaluate(id)).first;
        return found->second;
    };
    for (SheetSession* session : liveSessions()) {
        if (session->sheetID())
            session->assignResults(resultsOf(*session->sheetID()));
    }
    std::optional<Uuid> shown = m_activeSession ? m_activeSession->sheetID() : m_document.selectedSheetID;
    m_results = shown ? resultsOf(*shown) : std::vector<LineResult>{};
    emit resultsChanged();
}

} // namespace lumo
