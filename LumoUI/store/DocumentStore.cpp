#include "LumoUI/store/DocumentStore.h"

#include <QCoreApplication>
#include <QDir>
#include <QStandardPaths>
#include <QtDebug>

#include <algorithm>
#include <exception>
#include <limits>

#include "LumoKit/base/Language.h"
#include "LumoKit/document/BuiltinDocuments.h"
#include "LumoUI/persistence/DocumentFile.h"
#include "LumoUI/settings/AppSettings.h"
#include "LumoUI/settings/NotificationCenter.h"
#include "LumoUI/store/SheetSession.h"
#include "LumoUI/store/UndoCenter.h"

namespace lumo {

namespace {

std::string newSheetName() {
    return L10n::pick("新しいシート", "New Sheet");
}

// A missing time counts as the distant past.
double secondsOrDistantPast(const std::optional<Timestamp>& time) {
    return time ? time->seconds : -std::numeric_limits<double>::infinity();
}

} // namespace

// MARK: - Creation

DocumentStore::Options DocumentStore::optionsForLaunch(const QStringList& arguments,
                                                       const AppSettings* settings) {
    Options options;
    if (arguments.contains(QLatin1String("-lumoFixture"))) {
        options.source = Source::sample;
        return options;
    }
    if (arguments.contains(QLatin1String("-lumoStarter"))) {
        options.source = Source::starter;
        return options;
    }
    options.storageDirectory = defaultStorageDirectory();
    if (qEnvironmentVariableIsSet("LUMO_CLOUD_DIR"))
        options.cloudFolder = qEnvironmentVariable("LUMO_CLOUD_DIR");
    else if (settings)
        options.cloudFolder = settings->cloudFolder();
    return options;
}

QString DocumentStore::defaultStorageDirectory() {
    const QString base = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    return base.isEmpty() ? QString() : QDir(base).filePath(QStringLiteral("Lumo"));
}

DocumentStore::DocumentStore(Options options, NotificationCenter* notifications, UndoCenter* undoCenter,
                             AppSettings* settings, QObject* parent)
    : QObject(parent), m_clock(options.clock ? options.clock : &Timestamp::now),
      m_notifications(notifications), m_undoCenter(undoCenter ? undoCenter : new UndoCenter(this)),
      m_settings(settings) {
    switch (options.source) {
    case Source::sample:
        m_document = sampleDocument(now());
        break;
    case Source::starter:
        m_document = starterDocument(now());
        m_usingStarterDocument = true;
        break;
    case Source::file: {
        DocumentPersistence::Options where;
        if (!options.storageDirectory.isEmpty()) {
            QDir().mkpath(options.storageDirectory);
            where.localFile = QDir(options.storageDirectory).filePath(QLatin1String(DocumentFile::fileName));
        }
        where.cloudFolder = options.cloudFolder;
        where.saveDelay = options.saveDelay;
        where.mergeDelay = options.mergeDelay;
        m_persistence = new DocumentPersistence(
            where, [this] { return m_document; }, this);
        connect(m_persistence, &DocumentPersistence::saved, this, &DocumentStore::saved);
        connect(m_persistence, &DocumentPersistence::saveFailed, this, &DocumentStore::saveFailed);
        connect(m_persistence, &DocumentPersistence::remoteCopiesArrived, this, &DocumentStore::mergeRemote);
        connect(m_persistence, &DocumentPersistence::remoteChecked, this, &DocumentStore::remoteChecked);
        connect(m_persistence, &DocumentPersistence::remoteCopyMissing, this, [this] {
            // Upload the user's document so other devices see it; an untouched starter document
            // stays local, since every device has its own.
            if (!m_usingStarterDocument)
                m_persistence->save();
        });
        if (std::optional<LumoDocument> loaded = m_persistence->loadLocal(now())) {
            m_document = std::move(*loaded);
        } else {
            m_document = starterDocument(now());
            m_usingStarterDocument = true;
        }
        break;
    }
    }

    m_hybridClock.observe(m_document);
    const LumoDocument loaded = m_document;
    m_document = m_document.normalized(now());
    // Duplicates removed at load leave tombstones that the other devices should learn of.
    if (m_document != loaded && !m_usingStarterDocument)
        scheduleSave();

    refreshResults();
    if (const Sheet* selected = m_document.selectedSheetID ? sheet(*m_document.selectedSheetID) : nullptr)
        history(*selected);
    refreshUndoAvailability();
    observeNotifications();
    reconcileKeyLayouts();
}

DocumentStore::~DocumentStore() {
    flush();
}

void DocumentStore::observeNotifications() {
    if (auto* application = QCoreApplication::instance())
        connect(application, &QCoreApplication::aboutToQuit, this, &DocumentStore::flush);
    if (!m_notifications)
        return;
    m_notifications->observe(Notification::undo, this, [this] { undo(); });
    m_notifications->observe(Notification::redo, this, [this] { redo(); });
    m_notifications->observe(Notification::clearSheet, this, [this](const QVariant& payload) {
        // The command may name the sheet; otherwise it means the active window's sheet.
        std::optional<Uuid> target = Uuid::fromString(payload.toString().toStdString());
        if (!target && m_activeSession)
            target = m_activeSession->sheetID();
        if (!target)
            target = m_document.selectedSheetID;
        if (target)
            requestClearSheet(*target);
    });
    m_notifications->observe(Notification::languageChanged, this, [this] { languageChanged(); });
    m_notifications->observe(Notification::keyLayoutChanged, this, [this] { reconcileKeyLayouts(); });
}

// MARK: - Lookup

QString DocumentStore::storageURL() const {
    return m_persistence ? m_persistence->localFile() : QString();
}

const std::optional<QByteArray>& DocumentStore::lastSyncedData() const {
    static const std::optional<QByteArray> none;
    return m_persistence ? m_persistence->lastSyncedData() : none;
}

const Sheet* DocumentStore::sheet(const Uuid& id) const {
    const int index = indexOf(id);
    return index < 0 ? nullptr : &m_document.sheets[std::size_t(index)];
}

Sheet* DocumentStore::findSheet(const Uuid& id) {
    const int index = indexOf(id);
    return index < 0 ? nullptr : &m_document.sheets[std::size_t(index)];
}

int DocumentStore::indexOf(const Uuid& id) const {
    const auto& sheets = m_document.sheets;
    const auto found = std::find_if(sheets.begin(), sheets.end(), [&](const Sheet& s) { return s.id == id; });
    return found == sheets.end() ? -1 : int(found - sheets.begin());
}

SheetHistory& DocumentStore::history(const Sheet& sheet) {
    return m_histories.try_emplace(sheet.id, SheetSnapshot{sheet.text, sheet.lockedLines}).first->second;
}

Timestamp DocumentStore::now() const {
    return m_hybridClock.tick(m_clock());
}

Uuid DocumentStore::resolved(const Uuid& id) const {
    Uuid current = id;
    // A twin may itself have been removed as a duplicate later; the chain is short and acyclic,
    // but a bound keeps a damaged map from hanging the editor.
    for (std::size_t step = 0; step <= m_twins.size() && !sheet(current); ++step) {
        const auto twin = m_twins.find(current);
        if (twin == m_twins.end())
            break;
        current = twin->second;
    }
    return current;
}

SheetHistory::TimePoint DocumentStore::historyTime() const {
    // Undo steps are grouped within fractions of a second, so the history gets the precise time.
    using namespace std::chrono;
    return system_clock::time_point(
        duration_cast<system_clock::duration>(duration<double>(m_clock().seconds)));
}

QList<SheetSession*> DocumentStore::liveSessions() const {
    QList<SheetSession*> live;
    for (const QPointer<SheetSession>& session : m_sessions) {
        if (session)
            live.append(session);
    }
    return live;
}

Sheet DocumentStore::makeEmptySheet(std::string name) const {
    return Sheet{Uuid::random(), std::move(name), {}, now(), {}};
}

// MARK: - Editing

void DocumentStore::updateText(const Uuid& sheetID, const std::string& text) {
    if (Sheet* target = findSheet(resolved(sheetID)))
        applyContent(*target, SheetSnapshot{text, target->lockedLines});
}

void DocumentStore::setLockedLines(const Uuid& sheetID, const std::vector<std::int64_t>& lines) {
    if (Sheet* target = findSheet(resolved(sheetID)))
        applyContent(*target, SheetSnapshot{target->text, lines});
}

void DocumentStore::applyContent(Sheet& sheet, SheetSnapshot snapshot) {
    if (sheet.text == snapshot.text && sheet.lockedLines == snapshot.lockedLines)
        return;
    // The history starts from the content before this change.
    SheetHistory& sheetHistory = history(sheet);
    sheet.text = snapshot.text;
    sheet.lockedLines = snapshot.lockedLines;
    sheet.updatedAt = now();
    if (!sheetHistory.matches(sheet.text, sheet.lockedLines))
        sheetHistory.record(std::move(snapshot), historyTime());
    m_usingStarterDocument = false;
    changed();
}

Uuid DocumentStore::addSheet() {
    const std::string number = std::to_string(m_document.sheets.size() + 1);
    Sheet added = makeEmptySheet(L10n::pick("シート " + number, "Sheet " + number));
    const Uuid id = added.id;
    m_document.sheets.push_back(std::move(added));
    m_document.selectedSheetID = id;
    m_usingStarterDocument = false;
    showInActiveSession(id);
    changed();
    return id;
}

std::optional<Uuid> DocumentStore::duplicateSheet(const Uuid& sheetID) {
    const int index = indexOf(sheetID);
    if (index < 0)
        return std::nullopt;
    Sheet copy = m_document.sheets[std::size_t(index)];
    copy.id = Uuid::random();
    copy.name = L10n::pick(copy.name + " のコピー", copy.name + " Copy");
    copy.updatedAt = now();
    const Uuid id = copy.id;
    m_document.sheets.insert(m_document.sheets.begin() + index + 1, std::move(copy));
    m_document.selectedSheetID = id;
    m_usingStarterDocument = false;
    showInActiveSession(id);
    changed();
    return id;
}

void DocumentStore::renameSheet(const Uuid& sheetID, const std::string& name) {
    Sheet* target = findSheet(sheetID);
    if (!target || target->name == name)
        return;
    target->name = name;
    target->updatedAt = now();
    m_usingStarterDocument = false;
    changed();
}

void DocumentStore::moveSheet(const Uuid& sheetID, int toIndex) {
    const int from = indexOf(sheetID);
    if (from < 0)
        return;
    auto& sheets = m_document.sheets;
    const int to = std::clamp(toIndex, 0, int(sheets.size()) - 1);
    if (to == from)
        return;
    Sheet moved = std::move(sheets[std::size_t(from)]);
    sheets.erase(sheets.begin() + from);
    sheets.insert(sheets.begin() + to, std::move(moved));
    m_document.sheetOrderUpdatedAt = now();
    m_usingStarterDocument = false;
    changed();
}

void DocumentStore::deleteSheet(const Uuid& sheetID) {
    const int index = indexOf(sheetID);
    if (index < 0)
        return;
    auto& sheets = m_document.sheets;
    sheets.erase(sheets.begin() + index);
    m_document.deletedSheets[sheetID.toString()] = now();
    m_histories.erase(sheetID);
    if (sheets.empty())
        sheets.push_back(makeEmptySheet(newSheetName()));
    // The neighbour that takes the deleted sheet's place is shown instead.
    const Uuid neighbour = sheets[std::size_t(std::min(index, int(sheets.size()) - 1))].id;
    if (m_document.selectedSheetID == sheetID || !m_document.selectedSheetID ||
        !sheet(*m_document.selectedSheetID))
        m_document.selectedSheetID = neighbour;
    if (m_pendingClearSheetID == sheetID)
        cancelClearSheet();
    m_usingStarterDocument = false;
    for (SheetSession* session : liveSessions()) {
        if (session->sheetID() == sheetID)
            session->assignSheet(neighbour);
    }
    changed();
}

void DocumentStore::selectSheet(const Uuid& sheetID) {
    if (!sheet(sheetID))
        return;
    m_document.selectedSheetID = sheetID;
    showInActiveSession(sheetID);
    refreshResults();
    refreshUndoAvailability();
    scheduleSave();
    emit documentChanged();
}

void DocumentStore::requestClearSheet(const Uuid& sheetID) {
    if (!sheet(sheetID))
        return;
    m_pendingClearSheetID = sheetID;
    // clang-format off
    m_clearSheetPrompt = L10n::pick(
        "このシートだけを消去します。ほかのシートはそのまま残ります。元に戻すこともできます（↩︎ または ⌘Z）。",
        "Only this sheet is cleared; your other sheets are untouched. You can undo it (↩︎ or ⌘Z).");
    // clang-format on
    emit clearSheetPromptChanged();
}

void DocumentStore::confirmClearSheet() {
    const std::optional<Uuid> target = m_pendingClearSheetID;
    m_pendingClearSheetID.reset();
    m_clearSheetPrompt.reset();
    emit clearSheetPromptChanged();
    // Locks go with the text: they would otherwise hold lines that no longer exist.
    if (Sheet* cleared = target ? findSheet(*target) : nullptr)
        applyContent(*cleared, SheetSnapshot{});
}

void DocumentStore::cancelClearSheet() {
    if (!m_pendingClearSheetID && !m_clearSheetPrompt)
        return;
    m_pendingClearSheetID.reset();
    m_clearSheetPrompt.reset();
    emit clearSheetPromptChanged();
}

void DocumentStore::eraseAllContent() {
    const Timestamp erasedAt = now();
    for (const Sheet& erased : m_document.sheets)
        m_document.deletedSheets[erased.id.toString()] = erasedAt;
    Sheet fresh = makeEmptySheet(newSheetName());
    const Uuid id = fresh.id;
    m_document.sheets = {std::move(fresh)};
    m_document.selectedSheetID = id;
    m_histories.clear();
    cancelClearSheet();
    m_usingStarterDocument = false;
    for (SheetSession* session : liveSessions())
        session->assignSheet(id);
    changed();
}

std::string DocumentStore::eraseAllContentTitle() {
    return L10n::pick("全ての内容を消去しますか？", "Erase All Content?");
}

std::string DocumentStore::eraseAllContentMessage() {
    return L10n::pick("すべてのシートが消え、元に戻せません。他の端末からも消えます。",
                      "All sheets will be deleted. This can’t be undone, and they will disappear from your "
                      "other devices too.");
}

std::string DocumentStore::eraseAllContentButton() {
    return L10n::pick("全ての内容を消去", "Erase All Content");
}

// MARK: - Undo

void DocumentStore::undo() {
    if (Sheet* target = activeSheet())
        restore(*target, history(*target).undo());
}

void DocumentStore::redo() {
    if (Sheet* target = activeSheet())
        restore(*target, history(*target).redo());
}

Sheet* DocumentStore::activeSheet() {
    return m_activeSession && m_activeSession->sheetID() ? findSheet(*m_activeSession->sheetID()) : nullptr;
}

// Puts back the content of an undo or redo step; without a step there is nothing to do.
void DocumentStore::restore(Sheet& target, std::optional<SheetSnapshot> snapshot) {
    if (!snapshot)
        return;
    target.text = std::move(snapshot->text);
    target.lockedLines = std::move(snapshot->lockedLines);
    target.updatedAt = now();
    m_usingStarterDocument = false;
    changed();
}

void DocumentStore::refreshUndoAvailability() {
    if (!m_undoCenter)
        return;
    const Sheet* shown =
        m_activeSession && m_activeSession->sheetID() ? sheet(*m_activeSession->sheetID()) : nullptr;
    if (!shown) {
        m_undoCenter->setAvailability(false, false);
        return;
    }
    const SheetHistory& sheetHistory = history(*shown);
    m_undoCenter->setAvailability(sheetHistory.canUndo(), sheetHistory.canRedo());
}

// MARK: - Sessions and results

void DocumentStore::registerSession(SheetSession* session) {
    m_sessions.removeAll(nullptr);
    m_sessions.append(session);
    session->assignSheet(m_document.selectedSheetID);
    if (m_document.selectedSheetID)
        session->assignResults(evaluate(*m_document.selectedSheetID));
    // A closed window no longer counts for the results and the undo availability.
    connect(session, &QObject::destroyed, this, [this] {
        refreshResults();
        refreshUndoAvailability();
    });
}

void DocumentStore::setActiveSession(SheetSession* session) {
    m_activeSession = session;
    refreshResults();
    refreshUndoAvailability();
}

void DocumentStore::showSheet(SheetSession* session, const Uuid& sheetID) {
    if (!session || !sheet(sheetID))
        return;
    session->assignSheet(sheetID);
    if (session == m_activeSession && m_document.selectedSheetID != sheetID) {
        m_document.selectedSheetID = sheetID;
        scheduleSave();
        emit documentChanged();
    }
    refreshResults();
    refreshUndoAvailability();
}

void DocumentStore::showInActiveSession(const Uuid& sheetID) {
    if (m_activeSession)
        m_activeSession->assignSheet(sheetID);
}

void DocumentStore::repairSessions() {
    for (SheetSession* session : liveSessions()) {
        if (!session->sheetID())
            session->assignSheet(m_document.selectedSheetID);
        else if (!sheet(*session->sheetID())) {
            const Uuid twin = resolved(*session->sheetID());
            session->assignSheet(sheet(twin) ? std::optional(twin) : m_document.selectedSheetID);
        }
    }
}

std::vector<LineResult> DocumentStore::evaluate(const Uuid& sheetID) const {
    const Sheet* target = sheet(sheetID);
    if (!target)
        return {};
    std::vector<SharedSheet> others;
    for (const Sheet& other : m_document.sheets) {
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

void DocumentStore::refreshResults() {
    // Every shown sheet is evaluated again, since a change may reach other sheets through
    // cross-sheet functions.
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

// MARK: - Saving and merging

void DocumentStore::changed() {
    refreshResults();
    refreshUndoAvailability();
    scheduleSave();
    emit documentChanged();
}

void DocumentStore::scheduleSave() {
    if (m_persistence)
        m_persistence->scheduleSave();
}

void DocumentStore::flush() {
    if (m_persistence)
        m_persistence->flush();
}

void DocumentStore::mergeRemote(const RemoteCopies& copies) {
    const Timestamp mergedAt = now();
    LumoDocument merged = m_document;
    if (copies.cloud && m_usingStarterDocument) {
        // A device joining with nothing but the tutorial takes the user's document as it is
        // rather than adding the tutorial to it.
        merged = cappedAt(*copies.cloud, mergedAt);
        merged.selectedSheetID = copies.cloud->selectedSheetID;
        merged.keyLayouts = m_document.keyLayoutsUpdatedAt > merged.keyLayoutsUpdatedAt
                                ? m_document.keyLayouts
                                : merged.keyLayouts;
        merged.keyLayoutsUpdatedAt = std::max(m_document.keyLayoutsUpdatedAt, merged.keyLayoutsUpdatedAt);
    } else if (copies.cloud) {
        merged =
            threeWayMerged(merged, *copies.cloud, copies.base ? &*copies.base : nullptr, mergedAt).document;
    }
    // Copies the sync client set aside have no known common ancestor: the dates decide.
    for (const LumoDocument& copy : copies.conflictCopies)
        merged = threeWayMerged(merged, copy, nullptr, mergedAt).document;
    NormalizedDocument normalized = normalizedWithTwins(merged, mergedAt);
    for (const auto& [removed, twin] : normalized.twins)
        m_twins[removed] = twin;
    m_hybridClock.observe(normalized.document);
    const bool changed = normalized.document != m_document;
    m_document = std::move(normalized.document);
    // Remote content makes this someone's document: a language switch must not replace it.
    m_usingStarterDocument = false;
    if (!changed)
        return;

    std::erase_if(m_histories, [this](const auto& entry) { return !sheet(entry.first); });
    if (m_pendingClearSheetID && !sheet(*m_pendingClearSheetID))
        cancelClearSheet();
    repairSessions();
    refreshResults();
    refreshUndoAvailability();
    reconcileKeyLayouts();
    emit documentChanged();
    emit remoteMerged();
}

void DocumentStore::languageChanged() {
    if (!m_usingStarterDocument)
        return;
    LumoDocument starter = starterDocument(now());
    starter.keyLayouts = m_document.keyLayouts;
    starter.keyLayoutsUpdatedAt = m_document.keyLayoutsUpdatedAt;
    m_document = starter.normalized(now());
    m_histories.clear();
    cancelClearSheet();
    repairSessions();
    refreshResults();
    refreshUndoAvailability();
    emit documentChanged();
}

void DocumentStore::reconcileKeyLayouts() {
    if (!m_settings)
        return;
    const KeyLayouts stored = m_settings->keyLayouts();
    const std::optional<Timestamp> storedAt = m_settings->keyLayoutsUpdatedAt();
    const double storedTime = secondsOrDistantPast(storedAt);
    const double documentTime = secondsOrDistantPast(m_document.keyLayoutsUpdatedAt);
    if (documentTime > storedTime) {
        // Newer layouts came with the document: the keypad learns of them like of its own.
        m_settings->setKeyLayouts(m_document.keyLayouts, m_document.keyLayoutsUpdatedAt);
        if (m_notifications)
            m_notifications->post(Notification::keyLayoutChanged);
        return;
    }
    if (storedTime == documentTime && stored == m_document.keyLayouts)
        return;
    // Layouts written without a change time are dated now, in settings too.
    const Timestamp changedAt = storedTime > documentTime ? *storedAt : now();
    if (!storedAt || storedTime == documentTime)
        m_settings->setKeyLayouts(stored, changedAt);
    m_document.keyLayouts = stored;
    m_document.keyLayoutsUpdatedAt = changedAt;
    scheduleSave();
    emit documentChanged();
}

} // namespace lumo
