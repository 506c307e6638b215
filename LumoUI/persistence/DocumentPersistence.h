#pragma once

#include <QByteArray>
#include <QElapsedTimer>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QThreadPool>
#include <QTimer>

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "LumoKit/document/Document.h"
#include "LumoUI/persistence/CloudSync.h"

namespace lumo {

/// What a look at the cloud folder found, for the store to merge.
struct RemoteCopies {
    /// The copy both sides last had in common: what the cloud file held when this device last read
    /// or wrote it (the local file at start). Nothing when that is unknown.
    std::optional<LumoDocument> base;
    /// The cloud copy, when it changed since it was last read or written and decodes.
    std::optional<LumoDocument> cloud;
    /// Copies that the sync client put beside it, oldest name first.
    std::vector<LumoDocument> conflictCopies;
};

/// Where the document lives on disk and in the cloud folder, and how it gets there: a
/// debounced save that encodes and writes on a background thread, and a debounced read of the
/// cloud copy (with the sync client's conflict copies) after it changed.
///
/// A save never replaces a cloud copy it has not merged: just before writing, the writer checks
/// that the cloud file still holds the bytes last read or written, and otherwise writes nothing,
/// reads the cloud copy, has it merged and saves again. The cloud copy leaves out the selected
/// sheet, which is this device's own state, and each file is written only when its bytes change,
/// so a selection or a merge that changes nothing sends nothing to the other devices.
class DocumentPersistence : public QObject {
    Q_OBJECT

public:
    static constexpr std::chrono::milliseconds defaultSaveDelay{400};
    static constexpr std::chrono::milliseconds defaultMergeDelay{300};

    struct Options {
        /// The local "document.json"; empty when nothing is saved locally.
        QString localFile;
        /// The folder kept in step by a sync client; empty when there is no cloud copy.
        QString cloudFolder;
        std::chrono::milliseconds saveDelay = defaultSaveDelay;
        std::chrono::milliseconds mergeDelay = defaultMergeDelay;
    };

    /// However often changes come, a save starts at most this many save delays after the first
    /// change that has not been saved.
    static constexpr int maximumSaveDelays = 5;

    using DocumentSource = std::function<LumoDocument()>;

    /// `source` is asked for the document, on the calling thread, when a save starts.
    DocumentPersistence(Options options, DocumentSource source, QObject* parent = nullptr);
    /// Waits for writes in progress; does not save pending changes (call flush() for that).
    ~DocumentPersistence() override;

    /// The local document, or nothing when the file is missing, unreadable or has no sheets.
    /// A file that exists but cannot be read or decoded is moved aside first, never overwritten.
    std::optional<LumoDocument> loadLocal(Timestamp now);

    /// Saves after the save delay unless another change comes first.
    void scheduleSave();
    /// Starts a save at once, still on the background thread (after a save in progress).
    void save();
    /// Saves pending or failed changes synchronously and waits for writes in progress; for
    /// quitting.
    void flush();
    /// Whether some change has not been written successfully yet.
    bool hasUnsavedChanges() const { return m_savedGeneration < m_changeGeneration; }

    QString localFile() const { return m_options.localFile; }
    /// Moves the cloud copy to `folder` (empty: no cloud copy) while running. Writes to the old
    /// folder finish first. What the new folder already holds is merged by the dates alone, since
    /// it has nothing in common with this device yet; a folder without a copy gets one.
    void setCloudFolder(const QString& folder);
    QString cloudFolder() const { return m_options.cloudFolder; }
    CloudSync* cloud() const { return m_cloud; }
    /// The bytes last read from or written to the cloud file (the local file's at start).
    const std::optional<QByteArray>& lastSyncedData() const { return m_lastSyncedData; }

signals:
    /// A save wrote at least one of the files.
    void saved();
    void saveFailed(const QString& error);
    /// Decoded copies that differ from what was last synced: the cloud copy and any conflict
    /// copies. The receiver merges them before returning (a direct connection); the merged
    /// document is then saved, and conflict copies are removed once that save has succeeded.
    void remoteCopiesArrived(const lumo::RemoteCopies& copies);
    /// The cloud folder holds no copy of the document (the folder is new, or the copy was
    /// removed there).
    void remoteCopyMissing();
    /// The cloud folder was looked at after a change, whether or not anything was merged.
    void remoteChecked();

private:
    struct WriteJob {
        LumoDocument document;
        std::uint64_t generation = 0;
        QString localFile;
        QString cloudFile;
        /// What the cloud file must still hold for the write to replace it.
        std::optional<QByteArray> expectedCloudBytes;
        std::optional<QByteArray> localBytes;
    };
    struct WriteResult {
        std::uint64_t generation = 0;
        QByteArray localBytes;
        std::optional<QByteArray> cloudBytes;
        /// The document as the cloud file now holds it.
        LumoDocument cloudDocument;
        /// The cloud file changed since it was last read; nothing was written.
        bool cloudChanged = false;
        bool wrote = false;
        QString error;
    };
    enum class WriteMode { checked, localOnly };

    void startSave();
    void watchCloudFolder();
    WriteJob makeJob(WriteMode mode);
    /// Runs on the writer thread, so it is given everything it needs.
    static WriteResult write(const WriteJob& job);
    QString cloudFile() const;
    void finishSave(const WriteResult& result);
    void checkRemote();
    /// Reads the cloud folder and hands what changed to the store; true when something was merged.
    bool readRemote();

    Options m_options;
    DocumentSource m_source;
    QPointer<CloudSync> m_cloud;
    QTimer m_saveTimer;
    QTimer m_mergeTimer;
    // One thread, so writes land in the order they were started.
    QThreadPool m_writer;
    QElapsedTimer m_unsavedSince;
    int m_writesInFlight = 0;
    bool m_saveAfterWrites = false;
    bool m_checkAfterWrites = false;
    std::uint64_t m_changeGeneration = 0;
    std::uint64_t m_savedGeneration = 0;
    std::optional<QByteArray> m_lastSyncedData;
    std::optional<LumoDocument> m_syncedDocument;
    std::optional<QByteArray> m_localBytes;
    QStringList m_mergedConflictCopies;
    std::uint64_t m_conflictCopiesGeneration = 0;
};

} // namespace lumo
