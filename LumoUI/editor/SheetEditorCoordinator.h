#pragma once

#include <QObject>
#include <QPointer>

#include <map>
#include <optional>

#include "LumoKit/document/Document.h"
#include "LumoUI/editor/SheetEditor.h"

namespace lumo {

class DocumentStore;
class SheetHighlighter;

/// Links a text view to its session's sheet: the text and locks go to the store after every
/// edit, results and outside changes come back, and the keypad's editing notifications act on
/// the text. One per editor, owned by it.
class SheetEditor::Coordinator : public QObject {
    Q_OBJECT

public:
    Coordinator(SheetEditor* parent, SheetSession* session, AppSettings* settings,
                NotificationCenter* notifications, CalcTextView* textView);
    ~Coordinator() override;

    void copyAnswer(int line);
    void toggleComments();
    void applyAppearance();

private:
    // Where the user was in a sheet, kept while the application runs.
    struct ViewState {
        int anchor = 0;
        int position = 0;
        int scroll = 0;
    };

    DocumentStore* store() const;
    bool isActiveEditor() const;
    void observeNotifications();
    void sheetChanged();
    void resultsChanged();
    void documentChanged();
    void textEdited();
    void applyTextSize();

    void insertAnswer(int line);
    void requestName(int line);
    void rename(int line, const QString& oldName, const QString& newName);
    void toggleLock(int line);
    bool refuseIfAnyLocked(const QString& before, const QString& after);

    void insertSnippet(const QVariant& payload);
    void deleteBackward();
    void toggleSign();
    void moveCursor(const QVariant& payload);
    void setCaret(const QVariant& payload);

    SheetEditor* m_parent;
    QPointer<SheetSession> m_session;
    QPointer<AppSettings> m_settings;
    QPointer<NotificationCenter> m_notifications;
    QPointer<CalcTextView> m_textView;
    SheetHighlighter* m_highlighter = nullptr;
    std::optional<Uuid> m_shownSheetID;
    QMetaObject::Connection m_snippetObserver;
    QMetaObject::Connection m_widthObserver;
    QMetaObject::Connection m_colorObserver;
    QMetaObject::Connection m_deleteObserver;
    QMetaObject::Connection m_signObserver;
    QMetaObject::Connection m_moveObserver;
    QMetaObject::Connection m_caretObserver;
    std::map<Uuid, ViewState> m_viewStates;
    bool m_pushing = false;
};

} // namespace lumo
