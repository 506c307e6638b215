#include "LumoUI/store/DocumentStore.h"

#include <QCoreApplication>
#include <QDir>

#include "LumoKit/document/BuiltinDocuments.h"
#include "LumoUI/persistence/DocumentFile.h"
#include "LumoUI/settings/NotificationCenter.h"
#include "LumoUI/store/LaunchArguments.h"
#include "LumoUI/store/StoreTexts.h"

namespace lumo {

// MARK: - Creation

DocumentStore::Options DocumentStore::optionsForLaunch(const QStringList& arguments,
                                                       const AppSettings* settings) {
    return storeOptionsForLaunch(arguments, settings);
}

QString DocumentStore::defaultStorageDirectory() {
    return lumo::defaultStorageDirectory();
}

DocumentStore::DocumentStore(Options options, NotificationCenter* notifications, UndoCenter* undoCenter,
                             AppSettings* settings, QObject* parent)
    : QObject(parent), m_edits(options.clock),
      m_router(new ResultRouter(m_edits.document(), options.evaluation, this)),
      m_keyLayouts(settings, notifications), m_notifications(notifications),
      m_undoCenter(undoCenter ? undoCenter : new UndoCenter(this)) {
    connect(m_router, &ResultRouter::resultsChanged, this, &DocumentStore::resultsChanged);
    connect(m_router, &ResultRouter::idle, this, &DocumentStore::evaluationIdle);
    // A closed window no longer counts for the undo availability.
    connect(m_router, &ResultRouter::sessionClosed, this, &DocumentStore::refreshUndoAvailability);

    LumoDocument loaded;
    bool starter = false;
    switch (options.source) {
    case Source::sample:
        loaded = sampleDocument(now());
        break;
    case Source::starter:
        loaded = starterDocument(now());
        starter = true;
        break;
    case Source::file: {
        DocumentPersistence::Options where;
        if (!options.storageDirectory.isEmpty()) {
            QDir().mkpath(options.storageDirectory);
            where.localFile = QDir(options.storageDirectory).filePath(QLatin1String(documentFile::fileName));
        }
        where.cloudFolder = options.cloudFolder;
        where.saveDelay = options.saveDelay;
        where.mergeDelay = options.mergeDelay;
        m_persistence = new DocumentPersistence(
            where, [this] { return m_edits.document(); }, this);
        connect(m_persistence, &DocumentPersistence::saved, this, &DocumentStore::saved);
        connect(m_persistence, &DocumentPersistence::saveFailed, this, &DocumentStore::saveFailed);
        connect(m_persistence, &DocumentPersistence::remoteCopiesArrived, this, &DocumentStore::mergeRemote);
        connect(m_persistence, &DocumentPersistence::remoteChecked, this, &DocumentStore::remoteChecked);
        connect(m_persistence, &DocumentPersistence::remoteCopyMissing, this, [this] {
            // Upload the user's document so other devices see it; an untouched starter document
            // stays local, since every device has its own.
            if (!m_edits.isUntouchedStarter())
                m_persistence->save();
        });
        if (std::optional<LumoDocument> local = m_persistence->loadLocal(now())) {
            loaded = std::move(*local);
        } else {
            loaded = starterDocument(now());
            starter = true;
        }
        break;
    }
    }

    m_edits.setUntouchedStarter(starter);
    m_edits.replace(loaded.normalized(now()));
    // Duplicates removed at load leave tombstones that the other devices should learn of.
    if (document() != loaded && !starter)
        scheduleSave();

    refreshResults();
    if (document().selectedSheetID)
        m_edits.startHistory(*document().selectedSheetID);
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
    m_notifications->observe(notification::undo, this, [this] { undo(); });
    m_notifications->observe(notification::redo, this, [this] { redo(); });
    m_notifications->observe(notification::clearSheet, this, [this](const QVariant& payload) {
        // The command may name the sheet; otherwise it means the active window's sheet.
        std::optional<Uuid> target = Uuid::fromString(payload.toString().toStdString());
        if (!target)
            target = activeSheetID();
        if (!target)
            target = document().selectedSheetID;
        if (target)
            requestClearSheet(*target);
    });
    m_notifications->observe(notification::languageChanged, this, [this] { languageChanged(); });
    m_notifications->observe(notification::keyLayoutChanged, this, [this] { reconcileKeyLayouts(); });
}

// MARK: - Lookup

QString DocumentStore::storageURL() const {
    return m_persistence ? m_persistence->localFile() : QString();
}

const std::optional<QByteArray>& DocumentStore::lastSyncedData() const {
    static const std::optional<QByteArray> none;
    return m_persistence ? m_persistence->lastSyncedData() : none;
}

void DocumentStore::setCloudFolder(const QString& folder) {
    if (m_persistence)
        m_persistence->setCloudFolder(folder);
}

const Sheet* DocumentStore::sheet(const Uuid& id) const {
    return m_edits.sheet(id);
}

const std::vector<LineResult>& DocumentStore::results() const {
    return m_router->results();
}

SheetSession* DocumentStore::activeSession() const {
    return m_router->activeSession();
}

std::optional<Uuid> DocumentStore::activeSheetID() const {
    const SheetSession* active = m_router->activeSession();
    return active ? active->sheetID() : std::nullopt;
}

// MARK: - Editing

void DocumentStore::updateText(const Uuid& sheetID, const std::string& text, StepBreak stepBreak) {
    const Uuid id = resolved(sheetID);
    if (const Sheet* target = sheet(id);
        target && m_edits.setContent(id, {text, target->lockedLines}, stepBreak))
        changed();
}

void DocumentStore::setLockedLines(const Uuid& sheetID, const std::vector<std::int64_t>& lines) {
    const Uuid id = resolved(sheetID);
    if (const Sheet* target = sheet(id); target && m_edits.setContent(id, {target->text, lines}))
        changed();
}

void DocumentStore::updateContent(const Uuid& sheetID, const std::string& text,
                                  const std::vector<std::int64_t>& lockedLines) {
    if (m_edits.setContent(resolved(sheetID), {text, lockedLines}))
        changed();
}

Uuid DocumentStore::resolved(const Uuid& id) const {
    Uuid current = id;
    // A twin may itself have been removed as a duplicate later. The chain is short and acyclic,
    // but a bound keeps a damaged map from hanging the editor.
    for (std::size_t step = 0; step <= m_twins.size() && !sheet(current); ++step) {
        const auto twin = m_twins.find(current);
        if (twin == m_twins.end())
            break;
        current = twin->second;
    }
    return current;
}

Uuid DocumentStore::addSheet() {
    const Uuid id = m_edits.appendSheet(storeTexts::numberedSheetName(document().sheets.size() + 1));
    showInActiveSession(id);
    changed();
    return id;
}

std::optional<Uuid> DocumentStore::duplicateSheet(const Uuid& sheetID) {
    const Sheet* original = sheet(sheetID);
    if (!original)
        return std::nullopt;
    const std::optional<Uuid> id = m_edits.duplicateSheet(sheetID, storeTexts::copyName(original->name));
    showInActiveSession(*id);
    changed();
    return id;
}

void DocumentStore::renameSheet(const Uuid& sheetID, const std::string& name) {
    if (m_edits.renameSheet(sheetID, name))
        changed();
}

void DocumentStore::moveSheet(const Uuid& sheetID, int toIndex) {
    if (m_edits.moveSheet(sheetID, toIndex))
        changed();
}

void DocumentStore::deleteSheet(const Uuid& sheetID) {
    const std::optional<Uuid> neighbour = m_edits.deleteSheet(sheetID, storeTexts::newSheetName());
    if (!neighbour)
        return;
    if (m_pendingClearSheetID == sheetID)
        cancelClearSheet();
    for (SheetSession* session : m_router->liveSessions()) {
        if (session->sheetID() == sheetID)
            session->assignSheet(*neighbour);
    }
    changed();
}

void DocumentStore::selectSheet(const Uuid& sheetID) {
    if (!sheet(sheetID))
        return;
    m_edits.select(sheetID);
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
    m_clearSheetPrompt = storeTexts::clearSheetPrompt();
    emit clearSheetPromptChanged();
}

void DocumentStore::confirmClearSheet() {
    const std::optional<Uuid> target = m_pendingClearSheetID;
    m_pendingClearSheetID.reset();
    m_clearSheetPrompt.reset();
    emit clearSheetPromptChanged();
    // Locks go with the text: they would otherwise hold lines that no longer exist.
    if (target && m_edits.setContent(*target, SheetSnapshot{}))
        changed();
}

void DocumentStore::cancelClearSheet() {
    if (!m_pendingClearSheetID && !m_clearSheetPrompt)
        return;
    m_pendingClearSheetID.reset();
    m_clearSheetPrompt.reset();
    emit clearSheetPromptChanged();
}

void DocumentStore::eraseAllContent() {
    const Uuid id = m_edits.eraseAll(storeTexts::newSheetName());
    cancelClearSheet();
    for (SheetSession* session : m_router->liveSessions())
        session->assignSheet(id);
    changed();
}

std::string DocumentStore::eraseAllContentTitle() {
    return storeTexts::eraseAllContentTitle();
}

std::string DocumentStore::eraseAllContentMessage() {
    return storeTexts::eraseAllContentMessage();
}

std::string DocumentStore::eraseAllContentButton() {
    return storeTexts::eraseAllContentButton();
}

// MARK: - Undo

void DocumentStore::undo() {
    if (const std::optional<Uuid> target = activeSheetID(); target && m_edits.undo(*target))
        changed();
}

void DocumentStore::redo() {
    if (const std::optional<Uuid> target = activeSheetID(); target && m_edits.redo(*target))
        changed();
}

void DocumentStore::refreshUndoAvailability() {
    if (!m_undoCenter)
        return;
    const std::optional<Uuid> shown = activeSheetID();
    if (!shown || !sheet(*shown)) {
        m_undoCenter->setAvailability(false, false);
        return;
    }
    m_undoCenter->setAvailability(m_edits.canUndo(*shown), m_edits.canRedo(*shown));
}

// MARK: - Sessions and results

void DocumentStore::registerSession(SheetSession* session) {
    m_router->registerSession(session);
}

void DocumentStore::setActiveSession(SheetSession* session) {
    m_router->setActiveSession(session);
    refreshUndoAvailability();
}

void DocumentStore::showSheet(SheetSession* session, const Uuid& sheetID) {
    if (!session || !sheet(sheetID))
        return;
    session->assignSheet(sheetID);
    if (session == m_router->activeSession() && m_edits.select(sheetID)) {
        scheduleSave();
        emit documentChanged();
    }
    refreshResults();
    refreshUndoAvailability();
}

void DocumentStore::showInActiveSession(const Uuid& sheetID) {
    if (SheetSession* active = m_router->activeSession())
        active->assignSheet(sheetID);
}

void DocumentStore::repairSessions() {
    for (SheetSession* session : m_router->liveSessions()) {
        if (!session->sheetID() || sheet(*session->sheetID()))
            continue;
        const Uuid twin = resolved(*session->sheetID());
        session->assignSheet(sheet(twin) ? std::optional(twin) : document().selectedSheetID);
    }
}

bool DocumentStore::isEvaluating() const {
    return m_router->isEvaluating();
}

bool DocumentStore::waitForIdle(std::chrono::milliseconds timeout) {
    return m_router->waitForIdle(timeout);
}

void DocumentStore::refreshResults() {
    m_router->refresh();
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
    LumoDocument merged = document();
    if (copies.cloud && m_edits.isUntouchedStarter()) {
        // A device joining with nothing but the tutorial takes the user's document as it is
        // rather than adding the tutorial to it.
        merged = cappedAt(*copies.cloud, mergedAt);
        if (document().keyLayoutsUpdatedAt > merged.keyLayoutsUpdatedAt) {
            merged.keyLayouts = document().keyLayouts;
            merged.keyLayoutsUpdatedAt = document().keyLayoutsUpdatedAt;
        }
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
    // A sheet of this device that the other device removed as a duplicate arrives as a
    // deletion; an editor still showing it types on into the twin that stays.
    for (const auto& [removed, twin] : twinsRemoved(document(), normalized.document))
        m_twins[removed] = twin;
    // Remote content makes this someone's document: a language switch must not replace it.
    m_edits.setUntouchedStarter(false);
    if (normalized.document == document())
        return;
    m_edits.replace(std::move(normalized.document));

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
    if (!m_edits.isUntouchedStarter())
        return;
    LumoDocument starter = starterDocument(now());
    starter.keyLayouts = document().keyLayouts;
    starter.keyLayoutsUpdatedAt = document().keyLayoutsUpdatedAt;
    m_edits.replace(starter.normalized(now()));
    m_edits.clearHistories();
    cancelClearSheet();
    repairSessions();
    refreshResults();
    refreshUndoAvailability();
    emit documentChanged();
}

void DocumentStore::reconcileKeyLayouts() {
    std::optional<KeyLayoutBridge::DatedLayouts> newer = m_keyLayouts.reconcile(document(), now());
    if (!newer)
        return;
    m_edits.setKeyLayouts(std::move(newer->layouts), newer->updatedAt);
    scheduleSave();
    emit documentChanged();
}

} // namespace lumo
