#include "LumoUI/persistence/DocumentPersistence.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QtDebug>

#include <exception>

#include "LumoKit/document/DocumentJson.h"
#include "LumoUI/persistence/CloudSync.h"
#include "LumoUI/persistence/DocumentFile.h"

namespace lumo {

namespace {

// In the temporary folder, so that no sync client copies it to other machines.
QString lockFilePath(const QString& cloudFile) {
    const QByteArray key =
        QCryptographicHash::hash(QFileInfo(cloudFile).absoluteFilePath().toUtf8(), QCryptographicHash::Sha1)
            .toHex()
            .left(16);
    return QDir::temp().filePath(QStringLiteral("lumo-cloud-") + QString::fromLatin1(key) +
                                 QStringLiteral(".lock"));
}

std::optional<LumoDocument> decodeBytes(const QByteArray& bytes) {
    try {
        return decodeDocument(std::string_view(bytes.constData(), std::size_t(bytes.size())));
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

} // namespace

DocumentPersistence::DocumentPersistence(Options options, DocumentSource source, QObject* parent)
    : QObject(parent), m_options(std::move(options)), m_source(std::move(source)) {
    m_writer.setMaxThreadCount(1);
    // Coarse timers may fire 5% early; the delays are part of the behaviour, so they are precise.
    m_saveTimer.setTimerType(Qt::PreciseTimer);
    m_mergeTimer.setTimerType(Qt::PreciseTimer);
    m_saveTimer.setSingleShot(true);
    m_saveTimer.setInterval(m_options.saveDelay);
    connect(&m_saveTimer, &QTimer::timeout, this, &DocumentPersistence::startSave);
    m_mergeTimer.setSingleShot(true);
    m_mergeTimer.setInterval(m_options.mergeDelay);
    connect(&m_mergeTimer, &QTimer::timeout, this, &DocumentPersistence::checkRemote);

    watchCloudFolder();
}

void DocumentPersistence::watchCloudFolder() {
    if (m_options.cloudFolder.isEmpty())
        return;
    m_cloud = new CloudSync(m_options.cloudFolder, this);
    connect(m_cloud, &CloudSync::remoteChanged, &m_mergeTimer, qOverload<>(&QTimer::start));
}

void DocumentPersistence::setCloudFolder(const QString& folder) {
    if (folder == m_options.cloudFolder)
        return;
    // A write started for the old folder must not record its bytes as the new folder's.
    while (m_writesInFlight > 0) {
        m_writer.waitForDone();
        QCoreApplication::sendPostedEvents(this, QEvent::MetaCall);
    }
    m_mergeTimer.stop();
    delete m_cloud;
    m_options.cloudFolder = folder;
    m_lastSyncedData.reset();
    m_syncedDocument.reset();
    m_mergedConflictCopies.clear();
    watchCloudFolder();
}

DocumentPersistence::~DocumentPersistence() {
    m_writer.waitForDone();
}

std::optional<LumoDocument> DocumentPersistence::loadLocal(Timestamp now) {
    if (m_options.localFile.isEmpty())
        return std::nullopt;
    const std::optional<QByteArray> bytes = documentFile::read(m_options.localFile);
    std::optional<LumoDocument> document = bytes ? decodeBytes(*bytes) : std::nullopt;
    if (document && !document->sheets.empty()) {
        m_lastSyncedData = *bytes;
        m_syncedDocument = document;
        m_localBytes = *bytes;
        return document;
    }
    // A file that is there but cannot be used is set aside, so that the starter document's first
    // save does not replace it. A file without sheets still holds tombstones and key layouts.
    if (!QFileInfo::exists(m_options.localFile))
        return std::nullopt;
    const char* problem = !bytes ? "could not read" : document ? "found no sheets in" : "could not decode";
    const auto when = QDateTime::fromSecsSinceEpoch(qint64(now.seconds));
    const QString aside = documentFile::moveAside(m_options.localFile, when);
    if (aside.isEmpty())
        qWarning().noquote() << "Lumo:" << problem << m_options.localFile << "and could not move it aside";
    else
        qWarning().noquote() << "Lumo:" << problem << m_options.localFile << "- moved it to" << aside;
    return std::nullopt;
}

void DocumentPersistence::scheduleSave() {
    ++m_changeGeneration;
    if (!m_saveTimer.isActive())
        m_unsavedSince.start();
    // Changes that never pause for a whole delay would otherwise put the save off for ever.
    const auto longest = m_options.saveDelay * maximumSaveDelays;
    const auto left =
        std::chrono::milliseconds(std::max<qint64>(0, longest.count() - m_unsavedSince.elapsed()));
    m_saveTimer.start(std::min(m_options.saveDelay, left));
}

void DocumentPersistence::save() {
    ++m_changeGeneration;
    m_saveTimer.stop();
    startSave();
}

void DocumentPersistence::startSave() {
    if (m_options.localFile.isEmpty() && !m_cloud)
        return;
    // One write at a time, so each knows what the one before left in the cloud file.
    if (m_writesInFlight > 0) {
        m_saveAfterWrites = true;
        return;
    }
    ++m_writesInFlight;
    m_writer.start([this, job = makeJob(WriteMode::checked)] {
        WriteResult result = write(job);
        QMetaObject::invokeMethod(
            this, [this, result] { finishSave(result); }, Qt::QueuedConnection);
    });
}

DocumentPersistence::WriteJob DocumentPersistence::makeJob(WriteMode mode) {
    WriteJob job;
    job.document = m_source();
    job.generation = m_changeGeneration;
    job.localFile = m_options.localFile;
    job.cloudFile = mode == WriteMode::checked ? cloudFile() : QString();
    job.expectedCloudBytes = m_lastSyncedData;
    job.localBytes = m_localBytes;
    return job;
}

QString DocumentPersistence::cloudFile() const {
    return m_cloud ? m_cloud->fileURL() : QString();
}

DocumentPersistence::WriteResult DocumentPersistence::write(const WriteJob& job) {
    WriteResult result;
    result.generation = job.generation;
    result.cloudDocument = job.document;
    // The selected sheet is this device's own: the other devices keep theirs.
    result.cloudDocument.selectedSheetID.reset();
    QByteArray cloudBytes;
    try {
        const std::string local = encodeDocument(job.document);
        result.localBytes = QByteArray(local.data(), qsizetype(local.size()));
        const std::string cloud =
            job.cloudFile.isEmpty() ? std::string() : encodeDocument(result.cloudDocument);
        cloudBytes = QByteArray(cloud.data(), qsizetype(cloud.size()));
    } catch (const std::exception& error) {
        result.error = QString::fromUtf8(error.what());
        return result;
    }
    QStringList errors;
    if (!job.cloudFile.isEmpty()) {
        // Another process on this machine may share the folder; between the check and the replace
        // nobody else may write. Sync clients keep copies from other machines apart by themselves.
        QLockFile lock(lockFilePath(job.cloudFile));
        lock.setStaleLockTime(std::chrono::seconds(30));
        lock.lock();
        const std::optional<QByteArray> onDisk = documentFile::read(job.cloudFile);
        if (onDisk != job.expectedCloudBytes && onDisk != cloudBytes) {
            // Another device wrote in the meantime: its copy is merged before anything is written,
            // the local file included, which must never get ahead of what the cloud file held.
            result.cloudChanged = true;
            return result;
        }
        if (onDisk != cloudBytes) {
            if (QString error = documentFile::writeAtomically(job.cloudFile, cloudBytes); !error.isEmpty())
                errors.append(error);
            else
                result.wrote = true;
        }
        if (errors.isEmpty())
            result.cloudBytes = cloudBytes;
    }
    // The local file is attempted even when the cloud copy failed, so a full cloud disk does not
    // also hold back the local copy.
    if (!job.localFile.isEmpty() && job.localBytes != result.localBytes) {
        if (QString error = documentFile::writeAtomically(job.localFile, result.localBytes); !error.isEmpty())
            errors.append(error);
        else
            result.wrote = true;
    }
    result.error = errors.join(QStringLiteral("; "));
    return result;
}

void DocumentPersistence::finishSave(const WriteResult& result) {
    --m_writesInFlight;
    if (result.cloudChanged) {
        m_checkAfterWrites = false;
        checkRemote();
        // What arrived may not decode; the document is saved either way.
        startSave();
        return;
    }
    if (result.cloudBytes) {
        m_lastSyncedData = result.cloudBytes;
        m_syncedDocument = result.cloudDocument;
    }
    if (!result.error.isEmpty()) {
        // One fixed text in every interface language, so that the log can be searched for it.
        qWarning().noquote() << "Lumo: 保存に失敗しました" << result.error;
        emit saveFailed(result.error);
    } else {
        m_localBytes = result.localBytes;
        m_savedGeneration = std::max(m_savedGeneration, result.generation);
        if (result.generation >= m_conflictCopiesGeneration) {
            for (const QString& copy : std::as_const(m_mergedConflictCopies))
                QFile::remove(copy);
            m_mergedConflictCopies.clear();
        }
        if (result.wrote)
            emit saved();
    }
    if (m_writesInFlight > 0)
        return;
    if (m_saveAfterWrites) {
        m_saveAfterWrites = false;
        startSave();
    } else if (m_checkAfterWrites) {
        m_checkAfterWrites = false;
        checkRemote();
    }
}

void DocumentPersistence::flush() {
    m_saveTimer.stop();
    m_writer.waitForDone();
    // Deliver the completions of the writes just finished before deciding what is unsaved.
    QCoreApplication::sendPostedEvents(this, QEvent::MetaCall);
    m_writer.waitForDone();
    QCoreApplication::sendPostedEvents(this, QEvent::MetaCall);
    m_saveAfterWrites = false;
    if (!hasUnsavedChanges() || (m_options.localFile.isEmpty() && !m_cloud))
        return;
    // A copy that keeps arriving while quitting is not waited for: the local file is written.
    constexpr int attempts = 3;
    for (int attempt = 1;; ++attempt) {
        const WriteResult result =
            write(makeJob(attempt < attempts ? WriteMode::checked : WriteMode::localOnly));
        if (!result.cloudChanged) {
            ++m_writesInFlight;
            m_checkAfterWrites = false;
            finishSave(result);
            return;
        }
        readRemote();
    }
}

void DocumentPersistence::checkRemote() {
    if (!m_cloud)
        return;
    // Until our own write has landed, the cloud file may hold bytes we have not recorded yet.
    if (m_writesInFlight > 0) {
        m_checkAfterWrites = true;
        return;
    }
    if (readRemote())
        save();
    emit remoteChecked();
}

bool DocumentPersistence::readRemote() {
    RemoteCopies copies;
    copies.base = m_syncedDocument;
    const std::optional<QByteArray> bytes = documentFile::read(m_cloud->fileURL());
    if (bytes && bytes != m_lastSyncedData) {
        m_lastSyncedData = *bytes;
        copies.cloud = decodeBytes(*bytes);
    } else if (!bytes) {
        // The copy was removed there: the next save puts it back.
        m_lastSyncedData.reset();
    }
    QStringList mergedCopies;
    for (const QString& path : m_cloud->conflictCopies()) {
        // A copy that does not decode may still be arriving; it is looked at again next time.
        const std::optional<QByteArray> copyBytes = documentFile::read(path);
        std::optional<LumoDocument> copy = copyBytes ? decodeBytes(*copyBytes) : std::nullopt;
        if (!copy)
            continue;
        copies.conflictCopies.push_back(std::move(*copy));
        mergedCopies.append(path);
    }
    const bool merging = copies.cloud || !copies.conflictCopies.empty();
    if (merging)
        emit remoteCopiesArrived(copies);
    else if (!bytes)
        emit remoteCopyMissing();
    if (copies.cloud)
        m_syncedDocument = std::move(copies.cloud);
    if (!mergedCopies.isEmpty()) {
        m_mergedConflictCopies.append(mergedCopies);
        m_conflictCopiesGeneration = m_changeGeneration + 1;
    }
    return merging;
}

} // namespace lumo
