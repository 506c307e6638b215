#include "LumoUI/persistence/DocumentPersistence.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QtDebug>

#include <exception>

#include "LumoKit/document/DocumentJson.h"
#include "LumoUI/persistence/CloudSync.h"
#include "LumoUI/persistence/DocumentFile.h"

namespace lumo {

namespace {

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

    if (!m_options.cloudFolder.isEmpty()) {
        m_cloud = new CloudSync(m_options.cloudFolder, this);
        connect(m_cloud, &CloudSync::remoteChanged, &m_mergeTimer, qOverload<>(&QTimer::start));
    }
}

DocumentPersistence::~DocumentPersistence() {
    m_writer.waitForDone();
}

std::optional<LumoDocument> DocumentPersistence::loadLocal(Timestamp now) {
    if (m_options.localFile.isEmpty())
        return std::nullopt;
    const std::optional<QByteArray> bytes = DocumentFile::read(m_options.localFile);
    std::optional<LumoDocument> document = bytes ? decodeBytes(*bytes) : std::nullopt;
    if (!document) {
        // A file that is there but cannot be read is set aside like one that cannot be decoded:
        // the next save would otherwise replace it.
        if (!QFileInfo::exists(m_options.localFile))
            return std::nullopt;
        const char* problem = bytes ? "could not decode" : "could not read";
        const auto when = QDateTime::fromSecsSinceEpoch(qint64(now.seconds));
        const QString aside = DocumentFile::moveAside(m_options.localFile, when);
        if (aside.isEmpty())
            qWarning().noquote() << "Lumo:" << problem << m_options.localFile
                                 << "and could not move it aside";
        else
            qWarning().noquote() << "Lumo:" << problem << m_options.localFile << "- moved it to" << aside;
        return std::nullopt;
    }
    if (document->sheets.empty())
        return std::nullopt;
    m_lastSyncedData = *bytes;
    return document;
}

void DocumentPersistence::scheduleSave() {
    ++m_changeGeneration;
    m_saveTimer.start();
}

void DocumentPersistence::save() {
    ++m_changeGeneration;
    m_saveTimer.stop();
    startSave();
}

void DocumentPersistence::startSave() {
    if (m_options.localFile.isEmpty() && !m_cloud)
        return;
    ++m_writesInFlight;
    const std::uint64_t generation = m_changeGeneration;
    m_writer.start(
        [this, document = m_source(), generation, localFile = m_options.localFile, cloud = cloudFile()] {
            WriteResult result = write(document, generation, localFile, cloud);
            QMetaObject::invokeMethod(
                this, [this, result] { finishSave(result); }, Qt::QueuedConnection);
        });
}

QString DocumentPersistence::cloudFile() const {
    return m_cloud ? m_cloud->fileURL() : QString();
}

DocumentPersistence::WriteResult DocumentPersistence::write(const LumoDocument& document,
                                                            std::uint64_t generation,
                                                            const QString& localFile,
                                                            const QString& cloudFile) {
    WriteResult result;
    result.generation = generation;
    try {
        const std::string encoded = encodeDocument(document);
        result.bytes = QByteArray(encoded.data(), qsizetype(encoded.size()));
    } catch (const std::exception& error) {
        result.error = QString::fromUtf8(error.what());
        return result;
    }
    // Both copies are attempted, so a full local disk does not also hold back the cloud copy.
    QStringList errors;
    for (const QString& path : {localFile, cloudFile}) {
        if (path.isEmpty())
            continue;
        if (QString error = DocumentFile::writeAtomically(path, result.bytes); !error.isEmpty())
            errors.append(error);
    }
    result.error = errors.join(QStringLiteral("; "));
    return result;
}

void DocumentPersistence::finishSave(const WriteResult& result) {
    --m_writesInFlight;
    if (!result.error.isEmpty()) {
        qWarning().noquote() << "Lumo: 保存に失敗しました" << result.error;
        emit saveFailed(result.error);
    } else {
        m_lastSyncedData = result.bytes;
        m_savedGeneration = std::max(m_savedGeneration, result.generation);
        if (result.generation >= m_conflictCopiesGeneration) {
            for (const QString& copy : std::as_const(m_mergedConflictCopies))
                QFile::remove(copy);
            m_mergedConflictCopies.clear();
        }
        emit saved();
    }
    if (m_writesInFlight == 0 && m_checkAfterWrites) {
        m_checkAfterWrites = false;
        checkRemote();
    }
}

void DocumentPersistence::flush() {
    m_saveTimer.stop();
    m_writer.waitForDone();
    // Deliver the completions of the writes just finished before deciding what is unsaved.
    QCoreApplication::sendPostedEvents(this, QEvent::MetaCall);
    if (!hasUnsavedChanges() || (m_options.localFile.isEmpty() && !m_cloud))
        return;
    ++m_writesInFlight;
    finishSave(write(m_source(), m_changeGeneration, m_options.localFile, cloudFile()));
}

void DocumentPersistence::checkRemote() {
    if (!m_cloud)
        return;
    // Until our own write has landed, the cloud file may hold bytes we have not recorded yet.
    if (m_writesInFlight > 0) {
        m_checkAfterWrites = true;
        return;
    }
    std::vector<LumoDocument> copies;
    const std::optional<QByteArray> bytes = DocumentFile::read(m_cloud->fileURL());
    if (bytes && bytes != m_lastSyncedData) {
        m_lastSyncedData = *bytes;
        if (std::optional<LumoDocument> remote = decodeBytes(*bytes))
            copies.push_back(std::move(*remote));
    }
    QStringList mergedCopies;
    for (const QString& path : m_cloud->conflictCopies()) {
        // A copy that does not decode may still be arriving; it is looked at again next time.
        const std::optional<QByteArray> copyBytes = DocumentFile::read(path);
        std::optional<LumoDocument> copy = copyBytes ? decodeBytes(*copyBytes) : std::nullopt;
        if (!copy)
            continue;
        copies.push_back(std::move(*copy));
        mergedCopies.append(path);
    }
    if (!copies.empty())
        emit remoteCopiesArrived(copies);
    else if (!bytes)
        emit remoteCopyMissing();
    if (!mergedCopies.isEmpty()) {
        m_mergedConflictCopies.append(mergedCopies);
        m_conflictCopiesGeneration = m_changeGeneration;
    }
    emit remoteChecked();
}

} // namespace lumo
