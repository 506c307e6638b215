#pragma once

#include <QList>
#include <QObject>
#include <QPointer>
#include <QThreadPool>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "LumoKit/base/EvaluationOptions.h"
#include "LumoKit/document/Document.h"
#include "LumoKit/sheet/LineResult.h"
#include "LumoKit/sheet/SheetParseCache.h"
#include "LumoUI/store/SharedResults.h"
#include "LumoUI/store/StoreOptions.h"

namespace lumo {

class SheetSession;

/// The sessions (one per window) registered with the store, which of them is active, and the
/// results each one shows. Every shown sheet is evaluated again on refresh(), since a change
/// may reach other sheets through cross-sheet functions.
///
/// In the background mode each refresh starts a run per shown sheet on a worker thread. A run
/// gets copies of the texts it reads, the evaluation options as the settings are when it
/// starts, and its sheet's generation number: when it finishes,
/// its results are published on the main thread only if no later run of that sheet has been
/// started since, and a run that is already superseded when its turn comes does not evaluate.
class ResultRouter : public QObject {
    Q_OBJECT

public:
    /// `document` is the store's and outlives the router.
    ResultRouter(const LumoDocument& document, StoreEvaluation mode, QObject* parent = nullptr);
    /// Waits for the run in progress; results still on their way are dropped.
    ~ResultRouter() override;

    /// Shows the document's selected sheet in the session, with its results.
    void registerSession(SheetSession* session);
    void setActiveSession(SheetSession* session);
    SheetSession* activeSession() const { return m_activeSession; }
    /// The registered sessions that still exist.
    QList<SheetSession*> liveSessions() const;

    /// The results of the sheet the active session shows (the selected sheet without one).
    const std::vector<LineResult>& results() const { return *m_results; }

    /// Evaluates every shown sheet and hands each session its sheet's results.
    void refresh();

    /// Whether some run has not reported back yet.
    bool isEvaluating() const { return m_runsInFlight > 0; }
    /// Runs the event loop until every run has reported back; false after the timeout.
    bool waitForIdle(std::chrono::milliseconds timeout);

signals:
    void resultsChanged();
    /// A registered session was destroyed; the results have been refreshed already.
    void sessionClosed();
    /// The last run in flight has reported back.
    void idle();

private:
    using Generation = std::shared_ptr<std::atomic<std::uint64_t>>;
    using ParseCache = std::shared_ptr<SheetParseCache>;

    /// Everything one run reads, copied from the document when it starts.
    struct Run {
        Uuid sheetID;
        std::uint64_t generation = 0;
        std::string text;
        std::vector<SharedSheet> others;
        EvaluationOptions options;
    };

    const Sheet* findSheet(const Uuid& sheetID) const;
    std::optional<Uuid> shownSheetID() const;
    Run prepareRun(const Sheet& target) const;
    static std::vector<LineResult> evaluate(const Run& run, SheetParseCache& cache);
    /// Hands out a sheet's parse cache to one run; a run that finds it out gets a fresh one.
    ParseCache takeParseCache(const Uuid& sheetID);
    void returnParseCache(const Uuid& sheetID, ParseCache cache);

    void refreshNow();
    void refreshInBackground();
    void start(const Uuid& sheetID);
    void deliver(const Uuid& sheetID, std::uint64_t generation, std::vector<LineResult> results,
                 ParseCache cache);
    /// The latest published results of a sheet, or none yet.
    SharedResults publishedResults(const Uuid& sheetID) const;

    const LumoDocument& m_document;
    const StoreEvaluation m_mode;
    QList<QPointer<SheetSession>> m_sessions;
    QPointer<SheetSession> m_activeSession;
    SharedResults m_results = noResults();
    // Each sheet's line parses, kept from one run to the next; answers are never kept.
    std::unordered_map<Uuid, ParseCache> m_parseCaches;

    // Background mode only: the sheet whose results each session and results() hold, the latest
    // run of each sheet, and what the last publication of each sheet gave.
    std::unordered_map<const SheetSession*, Uuid> m_heldSheet;
    std::optional<Uuid> m_resultsSheet;
    std::unordered_map<Uuid, Generation> m_generations;
    std::unordered_map<Uuid, SharedResults> m_published;
    int m_runsInFlight = 0;
    QThreadPool m_workers;
};

} // namespace lumo
