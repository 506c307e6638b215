#pragma once

#include <QPointer>
#include <QWidget>

namespace lumo {

class AppSettings;
class CalcTextView;
class NotificationCenter;
class SheetSession;

/// The editor of the sheet a session shows: the text view with its answer column, bound to the
/// session's sheet and results through the document store. It applies the keypad's editing
/// notifications to the text and keeps each sheet's caret and scroll position for the run.
///
/// Menus act on textView() for cut, copy, paste and select all; undo, redo and clearing are
/// posted notifications that the document store handles.
class SheetEditor : public QWidget {
    Q_OBJECT

public:
    /// The view preference that shows or hides the plots under plot lines; on by default.
    static constexpr auto showGraphKey = "lumo.showGraph";
    static constexpr bool showsGraphByDefault = true;

    SheetEditor(SheetSession* session, AppSettings* settings, NotificationCenter* notifications,
                QWidget* parent = nullptr);
    ~SheetEditor() override;

    CalcTextView* textView() const;
    /// Puts the answer of the caret's line on the clipboard; nothing when the line has none.
    void copyAnswerAtCaret();
    /// Turns the selected lines, or the caret's line, into comments or back; one undo step.
    void toggleComments();

protected:
    void changeEvent(QEvent* event) override;

private:
    class Coordinator;
    Coordinator* m_coordinator = nullptr;
    CalcTextView* m_textView = nullptr;
};

} // namespace lumo
