#include "LumoUI/editor/SheetEditor.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QTextBlock>
#include <QVBoxLayout>

#include "LumoKit/values/ValueFormatter.h"
#include "LumoUI/editor/CalcTextView.h"
#include "LumoUI/store/DocumentStore.h"
#include "LumoUI/store/SheetSession.h"

namespace lumo {

CalcTextView::CalcTextView(QWidget* parent) : QPlainTextEdit(parent) {
    // Undo belongs to the document store, which keeps one history per sheet for every window.
    document()->setUndoRedoEnabled(false);
}

SheetEditor::SheetEditor(SheetSession* session, AppSettings*, NotificationCenter*, QWidget* parent)
    : QWidget(parent), m_session(session), m_textView(new CalcTextView(this)) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_textView);
    setFocusProxy(m_textView);
    showSessionText();
    connect(m_textView, &QPlainTextEdit::textChanged, this, &SheetEditor::sendTextToStore);
    if (m_session) {
        connect(m_session, &SheetSession::sheetIDChanged, this, &SheetEditor::showSessionText);
        if (DocumentStore* store = m_session->store())
            connect(store, &DocumentStore::documentChanged, this, &SheetEditor::showSessionText);
    }
}

void SheetEditor::showSessionText() {
    if (!m_session || !m_session->store() || !m_session->sheetID())
        return;
    const Sheet* sheet = m_session->store()->sheet(*m_session->sheetID());
    const QString text = sheet ? QString::fromStdString(sheet->text) : QString();
    if (text == m_textView->toPlainText())
        return;
    const int caret = m_textView->textCursor().position();
    m_applyingStoreText = true;
    m_textView->setPlainText(text);
    QTextCursor cursor = m_textView->textCursor();
    cursor.setPosition(std::min(caret, int(text.size())));
    m_textView->setTextCursor(cursor);
    m_applyingStoreText = false;
}

void SheetEditor::sendTextToStore() {
    if (m_applyingStoreText || !m_session || !m_session->store() || !m_session->sheetID())
        return;
    m_session->store()->updateText(*m_session->sheetID(), m_textView->toPlainText().toStdString());
}

void SheetEditor::copyAnswerAtCaret() {
    if (!m_session)
        return;
    const std::size_t line = std::size_t(m_textView->textCursor().blockNumber());
    const auto& results = m_session->results();
    if (line >= results.size() || results[line].outcome.kind != LineOutcome::Kind::value)
        return;
    const std::string answer = ValueFormatter::format(results[line].outcome.value, Grouping::grouped);
    QGuiApplication::clipboard()->setText(QString::fromStdString(answer));
}

} // namespace lumo
