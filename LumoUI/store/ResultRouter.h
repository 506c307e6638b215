#pragma once

#include <QList>
#include <QObject>
#include <QPointer>

#include <vector>

#include "LumoKit/document/Document.h"
#include "LumoKit/sheet/DocumentEvaluator.h"

namespace lumo {

class SheetSession;

/// The sessions (one per window) registered with the store, which of them is active, and the
/// results each one shows. Every shown sheet is evaluated again on refresh(), since a change
/// may reach other sheets through cross-sheet functions.
class ResultRouter : public QObject {
    Q_OBJECT

public:
    /// `document` is the store's and outlives the router.
    explicit ResultRouter(const LumoDocument& document, QObject* parent = nullptr);

    /// Shows the document's selected sheet in the session, with its results.
    void registerSession(SheetSession* session);
    void setActiveSession(SheetSession* session);
    SheetSession* activeSession() const { return m_activeSession; }
    /// The registered sessions that still exist.
    QList<SheetSession*> liveSessions() const;

    /// The results of the sheet the active session shows (the selected sheet without one).
    const std::vector<LineResult>& results() const { return m_results; }

    /// Evaluates every shown sheet and hands each session its sheet's results.
    void refresh();

signals:
    void resultsChanged();
    /// A registered session was destroyed; the results have been refreshed already.
    void sessionClosed();

private:
    std::vector<LineResult> evaluate(const Uuid& sheetID) const;

    const LumoDocument& m_document;
    QList<QPointer<SheetSession>> m_sessions;
    QPointer<SheetSession> m_activeSession;
    std::vector<LineResult> m_results;
};

} // namespace lumo
