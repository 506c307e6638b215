#pragma once

#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "LumoKit/document/Document.h"
#include "LumoKit/document/SheetHistory.h"
#include "LumoKit/sheet/DocumentEvaluator.h"
#include "LumoKit/document/ThreeWayMerge.h"
#include "LumoUI/persistence/DocumentPersistence.h"
#include "LumoUI/store/SheetSession.h"
#include "LumoUI/store/UndoCenter.h"

namespace lumo {

class AppSettings;
class NotificationCenter;

/// The one owner of the user's document while the application runs: it loads it, evaluates
/// the sheets that windows show, records undo history, saves shortly after every change and
/// merges the copies that arrive from other devices through the cloud folder.
///
/// Key layouts: the keypad keeps them in settings ("lumo.keyLayout.<kind>" and
/// "lumo.keyLayout.updatedAt") and posts "lumo.keyLayoutChanged". The store then compares the
/// change times: newer layouts in settings are copied into the document, newer layouts in the
/// document (from another device) are written to settings and announced with the same
/// notification, which the store then finds already in step.
class DocumentStore : public QObject {
    Q_OBJECT

public:
    enum class Source {
        file,    ///< the local file, or the starter document when there is none
        sample,  ///< in memory with the sample document ("-lumoFixture")
        starter, ///< in memory with the starter document ("-lumoStarter")
    };

    struct Options {
        Source source = Source::file;
        /// The folder of the local "document.json"; empty when nothing is saved locally.
        QString storageDirectory;
        /// The folder kept in step by a sync client; empty when there is no cloud copy.
        QString cloudFolder;
        std::chrono::milliseconds saveDelay = DocumentPersistence::defaultSaveDelay;
        std::chrono::milliseconds mergeDelay = DocumentPersistence::defaultMergeDelay;
        /// The store's notion of now; the system clock when empty.
        std::function<Timestamp()> clock;
    };

    /// The application's options: the launch arguments choose the source, the local file lives
    /// in the user's data folder under "Lumo", and the cloud folder is LUMO_CLOUD_DIR when set,
    /// otherwise the "lumo.cloudFolder" setting.
    static Options optionsForLaunch(const QStringList& arguments, const AppSettings* settings);
    static QString defaultStorageDirectory();

    /// Loads the document and installs the observers. Every pointer may be null: without
    /// notifications nothing is observed, without an undo centre one of its own is used,
    /// without settings key layouts are not bridged.
    DocumentStore(Options options, NotificationCenter* notifications, UndoCenter* undoCenter,
                  AppSettings* settings, QObject* parent = nullptr);
    /// Saves pending changes synchronously.
    ~DocumentStore() override;

    const LumoDocument& document() const { return m_document; }
    /// The results of the sheet the active session shows (the selected sheet without one).
    const std::vector<LineResult>& results() const { return m_results; }
    bool usingStarterDocument() const { return m_usingStarterDocument; }
    /// The local "document.json"; empty for an in-memory store or without a storage folder.
    QString storageURL() const;
    const std::optional<QByteArray>& lastSyncedData() const;
    const Sheet* sheet(const Uuid& id) const;
    UndoCenter* undoCenter() const { return m_undoCenter; }

    void updateText(const Uuid& sheetID, const std::string& text);
    void setLockedLines(const Uuid& sheetID, const std::vector<std::int64_t>& lines);
    /// Appends an empty "Sheet n" / "シート n" and shows it in the active session.
    Uuid addSheet();
    /// Inserts a copy after the original and shows it; nothing for an unknown sheet.
    std::optional<Uuid> duplicateSheet(const Uuid& sheetID);
    void renameSheet(const Uuid& sheetID, const std::string& name);
    void moveSheet(const Uuid& sheetID, int toIndex);
    void deleteSheet(const Uuid& sheetID);
    /// Makes a sheet the document's selection and the active session's sheet.
    void selectSheet(const Uuid& sheetID);

    /// Asks for confirmation before clearing a sheet: sets clearSheetPrompt().
    void requestClearSheet(const Uuid& sheetID);
    /// Empties the pending sheet as an undoable change.
    void confirmClearSheet();
    void cancelClearSheet();
    const std::optional<std::string>& clearSheetPrompt() const { return m_clearSheetPrompt; }
    const std::optional<Uuid>& pendingClearSheetID() const { return m_pendingClearSheetID; }

    /// Replaces every sheet by one empty sheet; the deletions reach the other devices.
    void eraseAllContent();
    static std::string eraseAllContentTitle();
    static std::string eraseAllContentMessage();
    static std::string eraseAllContentButton();

    /// Undo and redo on the active session's sheet.
    void undo();
    void redo();

    void registerSession(SheetSession* session);
    void setActiveSession(SheetSession* session);
    SheetSession* activeSession() const { return m_activeSession; }
    void showSheet(SheetSession* session, const Uuid& sheetID);

    /// Writes pending changes at once; the application calls it when it quits.
    void flush();

signals:
    void documentChanged();
    void resultsChanged();
    void clearSheetPromptChanged();
    void saved();
    void saveFailed(const QString& error);
    /// A remote copy was merged in.
    void remoteMerged();
    /// The cloud folder was looked at after a change (merged or not).
    void remoteChecked();

private:
    // A time stamp for a change: later than every time in the document, even when another
    // device's clock is ahead of this one's.
    Timestamp now() const;
    // The sheet an edit meant: a sheet that a merge removed as a duplicate lives on in its twin.
    Uuid resolved(const Uuid& id) const;
    SheetHistory::TimePoint historyTime() const;
    Sheet* findSheet(const Uuid& id);
    int indexOf(const Uuid& id) const;
    SheetHistory& history(const Sheet& sheet);
    QList<SheetSession*> liveSessions() const;

    void applyContent(Sheet& sheet, SheetSnapshot snapshot);
    Sheet* activeSheet();
    void restore(Sheet& target, std::optional<SheetSnapshot> snapshot);
    void changed();
    void scheduleSave();
    std::vector<LineResult> evaluate(const Uuid& sheetID) const;
    void refreshResults();
    void refreshUndoAvailability();
    void repairSessions();
    void showInActiveSession(const Uuid& sheetID);
    Sheet makeEmptySheet(std::string name) const;

    void observeNotifications();
    void mergeRemote(const RemoteCopies& copies);
    void languageChanged();
    void reconcileKeyLayouts();

    std::function<Timestamp()> m_clock;
    mutable HybridClock m_hybridClock;
    std::unordered_map<Uuid, Uuid> m_twins;
    LumoDocument m_document;
    std::vector<LineResult> m_results;
    DocumentPersistence* m_persistence = nullptr;
    QPointer<NotificationCenter> m_notifications;
    QPointer<UndoCenter> m_undoCenter;
    QPointer<AppSettings> m_settings;
    bool m_usingStarterDocument = false;
    std::unordered_map<Uuid, SheetHistory> m_histories;
    std::optional<std::string> m_clearSheetPrompt;
    std::optional<Uuid> m_pendingClearSheetID;
    QList<QPointer<SheetSession>> m_sessions;
    QPointer<SheetSession> m_activeSession;
};

} // namespace lumo
