#include "LumoUI/editor/SheetEditor.h"

#include <QEvent>
#include <QVBoxLayout>

#include "LumoUI/editor/CalcTextView.h"
#include "LumoUI/editor/SheetEditorCoordinator.h"

namespace lumo {

SheetEditor::SheetEditor(SheetSession* session, AppSettings* settings, NotificationCenter* notifications,
                         QWidget* parent)
    : QWidget(parent) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    m_textView = new CalcTextView(settings, this);
    layout->addWidget(m_textView);
    setFocusProxy(m_textView);
    m_coordinator = new Coordinator(this, session, settings, notifications, m_textView);
}

SheetEditor::~SheetEditor() = default;

CalcTextView* SheetEditor::textView() const {
    return m_textView;
}

void SheetEditor::copyAnswerAtCaret() {
    m_coordinator->copyAnswer(m_textView->caretLine());
}

void SheetEditor::toggleComments() {
    m_coordinator->toggleComments();
}

void SheetEditor::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    // An automatic appearance follows the system's palette.
    if (m_coordinator && (event->type() == QEvent::PaletteChange || event->type() == QEvent::ThemeChange))
        m_coordinator->applyAppearance();
}

} // namespace lumo
