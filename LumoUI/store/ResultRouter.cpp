#include "LumoUI/store/ResultRouter.h"

#include <QEventLoop>
#include <QtDebug>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <exception>
#include <utility>

#include "LumoKit/sheet/DocumentEvaluator.h"
#include "LumoUI/store/DocumentStore.h"
#include "LumoUI/store/SheetSession.h"

namespace lumo {

ResultRouter::ResultRouter(const LumoDocument& document, StoreEvaluation mode, QObject* parent)
    : QObject(parent), m_document(document), m_mode(mode) {
    // Two workers let a second shown sheet go ahead while one runs to its time budget.
    m_workers.setMaxThreadCount(std::clamp(QThread::idealThreadCount(), 1, 2));
}

ResultRouter::~ResultRouter() {
    m_workers.clear();
    m_workers.waitForDone();
}

void ResultRouter::registerSession(SheetSession* session) {
    m_sessions.removeAll(nullptr);
    m_sessions.append(session);
    session->assignSheet(m_document.selectedSheetID);
    if (m_document.selectedSheetID) {
        if (m_mode == StoreEvaluation::synchronous) {
            if (const Sheet* selected = findSheet(*m_document.selectedSheetID))
                session->assignResults(
                    shareResults(evaluate(prepareRun(*selected), *takeParseCache(selected->id))));
            else
                session->assignResults(noResults());
        } else {
            session->assignResults(publishedResults(*m_document.selectedSheetID));
            m_heldSheet[session] = *m_document.selectedSheetID;
            start(*m_document.selectedSheetID);
        }
    }
    // A closed window no longer counts for the results.
    connect(session, &QObject::destroyed, this, [this, session] {
        m_heldSheet.erase(session);
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

const Sheet* ResultRouter::findSheet(const Uuid& sheetID) const {
    const auto& sheets = m_document.sheets;
    const auto found =
        std::find_if(sheets.begin(), sheets.end(), [&](const Sheet& s) { return s.id == sheetID; });
    return found == sheets.end() ? nullptr : &*found;
}

std::optional<Uuid> ResultRouter::shownSheetID() const {
    return m_activeSession ? m_activeSession->sheetID() : m_document.selectedSheetID;
}

ResultRouter::Run ResultRouter::prepareRun(const Sheet& target) const {
    // Each run takes the settings as they are when it starts.
    Run run{target.id, 0, target.text, {}, EvaluationOptions::current()};
    for (const Sheet& other : m_document.sheets) {
        if (other.id != target.id)
            run.others.push_back(SharedSheet{other.name, other.text});
    }
    return run;
}

ResultRouter::ParseCache ResultRouter::takeParseCache(const Uuid& sheetID) {
    ParseCache& slot = m_parseCaches[sheetID];
    if (!slot)
        slot = std::make_shared<SheetParseCache>();
    // A synchronous run gives the cache back as soon as it is done, so it can stay in place.
    if (m_mode == StoreEvaluation::synchronous)
        return slot;
    return std::exchange(slot, nullptr);
}

void ResultRouter::returnParseCache(const Uuid& sheetID, ParseCache cache) {
    ParseCache& slot = m_parseCaches[sheetID];
    if (!slot)
        slot = std::move(cache);
}

std::vector<LineResult> ResultRouter::evaluate(const Run& run, SheetParseCache& cache) {
    try {
        return DocumentEvaluator::evaluate(run.text, run.others, run.options, cache);
    } catch (const std::exception& error) {
        // The evaluator reports failures per line; anything escaping it is a bug, not the user's.
        qWarning().noquote() << "Lumo: evaluation failed:" << error.what();
        return {};
    }
}

void ResultRouter::refresh() {
    if (m_mode == StoreEvaluation::synchronous)
        refreshNow();
    else
        refreshInBackground();
}

void ResultRouter::refreshNow() {
    std::unordered_map<Uuid, SharedResults> evaluated;
    const auto resultsOf = [&](const Uuid& id) -> const SharedResults& {
        auto found = evaluated.find(id);
        if (found == evaluated.end()) {
            const Sheet* target = findSheet(id);
            found = evaluated
                        .emplace(id, target ? shareResults(evaluate(prepareRun(*target), *takeParseCache(id)))
                                            : noResults())
                        .first;
        }
        return found->second;
    };
    for (SheetSession* session : liveSessions()) {
        if (session->sheetID())
            session->assignResults(resultsOf(*session->sheetID()));
    }
    const std::optional<Uuid> shown = shownSheetID();
    m_results = shown ? resultsOf(*shown) : noResults();
    emit resultsChanged();
}

void ResultRouter::refreshInBackground() {
    // Runs and results of deleted sheets are forgotten; a run still on its way is then dropped.
    std::erase_if(m_generations, [this](const auto& entry) { return !findSheet(entry.first); });
    std::erase_if(m_published, [this](const auto& entry) { return !findSheet(entry.first); });
    std::erase_if(m_parseCaches, [this](const auto& entry) { return !findSheet(entry.first); });

    // A session that now shows another sheet drops the results it held at once, rather than
    // showing one sheet's answers beside another's text until the run is back.
    std::vector<Uuid> shownSheets;
    const auto show = [&](const Uuid& id) {
        if (std::find(shownSheets.begin(), shownSheets.end(), id) == shownSheets.end())
            shownSheets.push_back(id);
    };
    for (SheetSession* session : liveSessions()) {
        if (!session->sheetID())
            continue;
        const Uuid id = *session->sheetID();
        show(id);
        if (const auto held = m_heldSheet.find(session); held == m_heldSheet.end() || held->second != id) {
            m_heldSheet[session] = id;
            session->assignResults(publishedResults(id));
        }
    }
    const std::optional<Uuid> shown = shownSheetID();
    if (shown)
        show(*shown);
    if (shown != m_resultsSheet) {
        m_resultsSheet = shown;
        m_results = shown ? publishedResults(*shown) : noResults();
        emit resultsChanged();
    }
    for (const Uuid& id : shownSheets)
        start(id);
}

SharedResults ResultRouter::publishedResults(const Uuid& sheetID) const {
    const auto found = m_published.find(sheetID);
    return found == m_published.end() ? noResults() : found->second;
}

void ResultRouter::start(const Uuid& sheetID) {
    const Sheet* target = findSheet(sheetID);
    if (!target)
        return;
    Generation& latest = m_generations[sheetID];
    if (!latest)
        latest = std::make_shared<std::atomic<std::uint64_t>>(0);
    Run run = prepareRun(*target);
    run.generation = ++*latest;
    ++m_runsInFlight;
    m_workers.start([this, run = std::move(run), latest, cache = takeParseCache(sheetID)]() {
        std::vector<LineResult> results;
        // A run superseded while it waited for a worker has nothing worth computing.
        if (latest->load() == run.generation)
            results = evaluate(run, *cache);
        QMetaObject::invokeMethod(
            this,
            [this, sheetID = run.sheetID, generation = run.generation, results = std::move(results),
             cache]() mutable { deliver(sheetID, generation, std::move(results), std::move(cache)); },
            Qt::QueuedConnection);
    });
}

void ResultRouter::deliver(const Uuid& sheetID, std::uint64_t generation, std::vector<LineResult> delivered,
                           ParseCache cache) {
    --m_runsInFlight;
    if (findSheet(sheetID))
        returnParseCache(sheetID, std::move(cache));
    const auto latest = m_generations.find(sheetID);
    if (latest != m_generations.end() && latest->second->load() == generation && findSheet(sheetID)) {
        const SharedResults results = shareResults(std::move(delivered));
        for (SheetSession* session : liveSessions()) {
            if (session->sheetID() == sheetID) {
                m_heldSheet[session] = sheetID;
                session->assignResults(results);
            }
        }
        if (shownSheetID() == sheetID) {
            m_resultsSheet = sheetID;
            m_results = results;
            emit resultsChanged();
        }
        m_published[sheetID] = results;
    }
    if (m_runsInFlight == 0)
        emit idle();
}

bool ResultRouter::waitForIdle(std::chrono::milliseconds timeout) {
    if (!isEvaluating())
        return true;
    QEventLoop loop;
    QTimer deadline;
    deadline.setSingleShot(true);
    connect(&deadline, &QTimer::timeout, &loop, &QEventLoop::quit);
    connect(this, &ResultRouter::idle, &loop, &QEventLoop::quit);
    deadline.start(timeout);
    loop.exec();
    return !isEvaluating();
}

} // namespace lumo
