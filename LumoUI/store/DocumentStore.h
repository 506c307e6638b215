#pragma once

#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "LumoKit/document/Document.h"
#include "LumoKit/document/ThreeWayMerge.h"
#include "LumoKit/sheet/LineResult.h"
#include "LumoUI/persistence/DocumentPersistence.h"
#include "LumoUI/store/EditableDocument.h"
#include "LumoUI/store/KeyLayoutBridge.h"
#include "LumoUI/store/ResultRouter.h"
#include "LumoUI/store/SheetSession.h"
#include "LumoUI/store/StoreOptions.h"
#include "LumoUI/store/UndoCenter.h"

namespace lumo {

class AppSettings;
class NotificationCenter;

/// The one owner of the user's document while the application runs: it loads it, evaluates
/// the sheets that windows show, records undo history, saves shortly after every change and
/// merges the copies that arrive from other devices through the cloud folder.
///
/// The work is shared out: EditableDocument dates each edit and keeps the undo histories,
/// ResultRouter evaluates the shown sheets and hands each session its results, and
/// KeyLayoutBridge keeps the keypad's layouts in settings and in the document in step.
class DocumentStore : public QObject {
    Q_OBJECT

public:
    using Source = StoreSource;
    using Options = DocumentStoreOptions;

    /// The application's options; see storeOptionsForLaunch().
    static Options optionsForLaunch(const QStringList& arguments, const AppSettings* settings);
    static QString defaultStorageDirectory();

    /// Loads the document and installs the observers. Every pointer may be null: without
    /// notifications nothing is observed, without an undo centre one of its own is used,
    /// without settings key layouts are not bridged.
    DocumentStore(Options options, NotificationCenter* notifications, UndoCenter* undoCenter,
                  AppSettings* settings, QObject* parent = nullptr);
    /// Saves pending changes synchronously.
    ~DocumentStore() override;

    const LumoDocument& document() const { return m_edits.document(); }
    /// The results of the sheet the active session shows (the selected sheet without one).
    /// With background evaluation they are the latest published ones.
    const std::vector<LineResult>& results() const;
    /// Whether a background evaluation has not reported back yet; never with synchronous
    /// evaluation.
    bool isEvaluating() const;
    /// Runs the event loop until every background evaluation has reported back (and the
    /// latest results are published); false after the timeout.
    bool waitForIdle(std::chrono::milliseconds timeout = std::chrono::seconds(10));
    bool usingStarterDocument() const { return m_edits.isUntouchedStarter(); }
    /// The local "document.json"; empty for an in-memory store or without a storage folder.
    QString storageURL() const;
    const std::optional<QByteArray>& lastSyncedData() const;
    /// Keeps the cloud copy in `folder` from now on (empty: nowhere); see
    /// DocumentPersistence::setCloudFolder(). Does nothing for a store that saves nothing.
    void setCloudFolder(const QString& folder);
    const Sheet* sheet(const Uuid& id) const;
    UndoCenter* undoCenter() const { return m_undoCenter; }

    /// A new text for a sheet; StepBreak::always makes it an undo step of its own whatever its
    /// size (a replacement made by a command rather than typed).
    void updateText(const Uuid& sheetID, const std::string& text,
                    StepBreak stepBreak = StepBreak::whenNeeded);
    void setLockedLines(const Uuid& sheetID, const std::vector<std::int64_t>& lines);
    /// Text and locks together, as one change: an edit that moves locked lines.
    void updateContent(const Uuid& sheetID, const std::string& text,
                       const std::vector<std::int64_t>& lockedLines);
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
    SheetSession* activeSession() const;
    void showSheet(SheetSession* session, const Uuid& sheetID);

    /// Writes pending changes at once; the application calls it when it quits.
    void flush();

signals:
    void documentChanged();
    /// The active session's sheet has new results (see results()).
    void resultsChanged();
    /// The last background evaluation in flight has reported back.
    void evaluationIdle();
    void clearSheetPromptChanged();
    void saved();
    void saveFailed(const QString& error);
    /// A remote copy was merged in.
    void remoteMerged();
    /// The cloud folder was looked at after a change (merged or not).
    void remoteChecked();

private:
    Timestamp now() const { return m_edits.now(); }
    // The sheet an edit meant: a sheet that a merge removed as a duplicate lives on in its twin.
    Uuid resolved(const Uuid& id) const;
    std::optional<Uuid> activeSheetID() const;
    void changed();
    void scheduleSave();
    void refreshResults();
    void refreshUndoAvailability();
    void repairSessions();
    void showInActiveSession(const Uuid& sheetID);

    void observeNotifications();
    void mergeRemote(const RemoteCopies& copies);
    void languageChanged();
    void reconcileKeyLayouts();

    EditableDocument m_edits;
    std::unordered_map<Uuid, Uuid> m_twins;
    ResultRouter* m_router = nullptr;
    KeyLayoutBridge m_keyLayouts;
    DocumentPersistence* m_persistence = nullptr;
    QPointer<NotificationCenter> m_notifications;
    QPointer<UndoCenter> m_undoCenter;
    std::optional<std::string> m_clearSheetPrompt;
    std::optional<Uuid> m_pendingClearSheetID;
};

} // namespace lumo
