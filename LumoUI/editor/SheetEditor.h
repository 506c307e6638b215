#pragma once

#include <QPointer>
#include <QWidget>

namespace lumo {

class AppSettings;
class CalcTextView;
class NotificationCenter;
class SheetSession;

/// Edits the sheet of one session: its text, kept in step with the document store.
class SheetEditor : public QWidget {
    Q_OBJECT

public:
    SheetEditor(SheetSession* session, AppSettings* settings, NotificationCenter* notifications,
                QWidget* parent = nullptr);

    CalcTextView* textView() const { return m_textView; }
    /// Puts the answer of the caret's line on the clipboard.
    void copyAnswerAtCaret();

private:
    void showSessionText();
    void sendTextToStore();

    QPointer<SheetSession> m_session;
    CalcTextView* m_textView = nullptr;
    bool m_applyingStoreText = false;
};

} // namespace lumo
