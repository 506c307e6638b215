#pragma once

#include <QByteArray>
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

/// Where the document lives on disk and in the cloud folder, and how it gets there: a
/// debounced save that encodes and writes on a background thread, and a debounced read of the
/// cloud copy (with the sync client's conflict copies) after it changed.
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
    /// Starts a save at once, still on the background thread.
    void save();
    /// Saves pending or failed changes synchronously and waits for writes in progress; for
    /// quitting.
    void flush();
    /// Whether some change has not been written successfully yet.
    bool hasUnsavedChanges() const { return m_savedGeneration < m_changeGeneration; }

    QString localFile() const { return m_options.localFile; }
    CloudSync* cloud() const { return m_cloud; }
    /// The bytes last read from or written to the document file.
    const std::optional<QByteArray>& lastSyncedData() const { return m_lastSyncedData; }

signals:
    void saved();
    void saveFailed(const QString& error);
    /// Decoded copies that differ from what was last synced: the cloud copy and any conflict
    /// copies. The receiver merges them and calls save(); conflict copies are removed once that
    /// save has succeeded.
    void remoteCopiesArrived(const std::vector<lumo::LumoDocument>& copies);
    /// The cloud folder holds no copy of the document (the folder is new, or the copy was
    /// removed there).
    void remoteCopyMissing();
    /// The cloud folder was looked at after a change, whether or not anything was merged.
    void remoteChecked();

private:
    struct WriteResult {
        std::uint64_t generation = 0;
        QByteArray bytes;
        QString error;
    };

    void startSave();
    /// Runs on the writer thread, so it is given everything it needs.
    static WriteResult write(const LumoDocument& document, std::uint64_t generation, const QString& localFile,
                             const QString& cloudFile);
    QString cloudFile() const;
    void finishSave(const WriteResult& result);
    void checkRemote();

    Options m_options;
    DocumentSource m_source;
    QPointer<CloudSync> m_cloud;
    QTimer m_saveTimer;
    QTimer m_mergeTimer;
    // One thread, so writes land in the order they were started.
    QThreadPool m_writer;
    int m_writesInFlight = 0;
    bool m_checkAfterWrites = false;
    std::uint64_t m_changeGeneration = 0;
    std::uint64_t m_savedGeneration = 0;
    std::optional<QByteArray> m_lastSyncedData;
    QStringList m_mergedConflictCopies;
    std::uint64_t m_conflictCopiesGeneration = 0;
};

} // namespace lumo
