#include "LumoUI/editor/SheetEditorCoordinator.h"

#include <QApplication>
#include <QClipboard>
#include <QKeyEvent>
#include <QScrollBar>
#include <QTimer>

#include <algorithm>

#include "LumoKit/editing/LineEditor.h"
#include "LumoKit/sheet/Naming.h"
#include "LumoUI/editor/CalcTextView.h"
#include "LumoUI/editor/NameLineDialog.h"
#include "LumoUI/editor/SheetHighlighter.h"
#include "LumoUI/editor/TextPositions.h"
#include "LumoUI/editor/TextRewrites.h"
#include "LumoUI/settings/AppSettings.h"
#include "LumoUI/settings/NotificationCenter.h"
#include "LumoUI/settings/ViewStyle.h"
#include "LumoUI/store/DocumentStore.h"
#include "LumoUI/store/SheetSession.h"

namespace lumo {

namespace {

SyntaxColorOverrides toOverrides(const QMap<QString, QString>& colors) {
    SyntaxColorOverrides overrides;
    for (auto entry = colors.begin(); entry != colors.end(); ++entry)
        overrides[entry.key().toStdString()] = entry.value().toStdString();
    return overrides;
}

} // namespace

SheetEditor::Coordinator::Coordinator(SheetEditor* parent, SheetSession* session, AppSettings* settings,
                                      NotificationCenter* notifications, CalcTextView* textView)
    : QObject(parent), m_parent(parent), m_session(session), m_settings(settings),
      m_notifications(notifications), m_textView(textView) {
    m_highlighter = new SheetHighlighter(textView->document());

    connect(textView, &CalcTextView::edited, this, &Coordinator::textEdited);
    connect(textView, &CalcTextView::answerClicked, this, &Coordinator::insertAnswer);
    connect(textView, &CalcTextView::copyAnswerRequested, this, &Coordinator::copyAnswer);
    connect(textView, &CalcTextView::nameRequested, this, &Coordinator::requestName);
    connect(textView, &CalcTextView::lockToggled, this, &Coordinator::toggleLock);
    connect(textView, &CalcTextView::undoRequested, this, [this] {
        if (m_notifications)
            m_notifications->post(notification::undo);
        else if (store())
            store()->undo();
    });
    connect(textView, &CalcTextView::redoRequested, this, [this] {
        if (m_notifications)
            m_notifications->post(notification::redo);
        else if (store())
            store()->redo();
    });
    if (m_session) {
        connect(m_session, &SheetSession::sheetIDChanged, this, &Coordinator::sheetChanged);
        connect(m_session, &SheetSession::resultsChanged, this, &Coordinator::resultsChanged);
    }
    if (DocumentStore* documents = store())
        connect(documents, &DocumentStore::documentChanged, this, &Coordinator::documentChanged);
    if (m_settings) {
        connect(m_settings, &AppSettings::appearanceChanged, this, &Coordinator::applyAppearance);
        connect(m_settings, &AppSettings::textSizeChanged, this, &Coordinator::applyTextSize);
        connect(m_settings, &AppSettings::viewPreferenceChanged, this,
                [this](const QString& key, const QVariant& value) {
                    if (key == QLatin1String(showGraphKey) && m_textView)
                        m_textView->setShowsPlots(value.toBool());
                });
        textView->setShowsPlots(
            m_settings->viewPreference(QLatin1String(showGraphKey), showsGraphByDefault).toBool());
    }
    observeNotifications();
    applyTextSize();
    applyAppearance();
    sheetChanged();
}

SheetEditor::Coordinator::~Coordinator() {
    for (const QMetaObject::Connection& observer :
         {m_snippetObserver, m_widthObserver, m_colorObserver, m_deleteObserver, m_signObserver,
          m_moveObserver, m_caretObserver})
        NotificationCenter::remove(observer);
}

DocumentStore* SheetEditor::Coordinator::store() const {
    return m_session ? m_session->store() : nullptr;
}

bool SheetEditor::Coordinator::isActiveEditor() const {
    // Editing commands go to the editor of the key window only.
    DocumentStore* documents = store();
    return !documents || !documents->activeSession() || documents->activeSession() == m_session;
}

void SheetEditor::Coordinator::observeNotifications() {
    if (!m_notifications)
        return;
    m_snippetObserver = m_notifications->observe(notification::insertSnippet, this,
                                                 [this](const QVariant& payload) { insertSnippet(payload); });
    m_widthObserver = m_notifications->observe(notification::resultWidthChanged, this, [this] {
        if (m_textView)
            m_textView->relayout();
    });
    m_colorObserver =
        m_notifications->observe(notification::syntaxColorsChanged, this, [this] { applyAppearance(); });
    m_deleteObserver =
        m_notifications->observe(notification::deleteBackward, this, [this] { deleteBackward(); });
    m_signObserver = m_notifications->observe(notification::toggleSign, this, [this] { toggleSign(); });
    m_moveObserver = m_notifications->observe(notification::moveCursor, this,
                                              [this](const QVariant& payload) { moveCursor(payload); });
    m_caretObserver = m_notifications->observe(notification::setCaret, this,
                                               [this](const QVariant& payload) { setCaret(payload); });
}

// MARK: - Binding to the store

void SheetEditor::Coordinator::sheetChanged() {
    if (!m_textView || !m_session)
        return;
    const std::optional<Uuid> sheetID = m_session->sheetID();
    if (sheetID == m_shownSheetID && sheetID)
        return;
    if (m_shownSheetID) {
        const QTextCursor cursor = m_textView->textCursor();
        m_viewStates[*m_shownSheetID] =
            ViewState{cursor.anchor(), cursor.position(), m_textView->verticalScrollBar()->value()};
    }
    m_shownSheetID = sheetID;
    const Sheet* sheet = sheetID && store() ? store()->sheet(*sheetID) : nullptr;
    m_textView->setTextWhole(sheet ? QString::fromStdString(sheet->text) : QString());
    m_textView->setLockedLines(sheet ? sheet->lockedLines : std::vector<std::int64_t>{});
    m_textView->setResults(m_session->sharedResults());

    const auto found = sheetID ? m_viewStates.find(*sheetID) : m_viewStates.end();
    if (found != m_viewStates.end()) {
        const ViewState state = found->second;
        const int last = m_textView->document()->characterCount() - 1;
        QTextCursor cursor = m_textView->textCursor();
        cursor.setPosition(std::clamp(state.anchor, 0, last));
        cursor.setPosition(std::clamp(state.position, 0, last), QTextCursor::KeepAnchor);
        m_textView->setTextCursor(cursor);
        m_textView->verticalScrollBar()->setValue(state.scroll);
        // The scroll range is known only once the text is laid out.
        QTimer::singleShot(0, m_textView, [view = m_textView, scroll = state.scroll] {
            if (view)
                view->verticalScrollBar()->setValue(scroll);
        });
    } else {
        // A sheet opens where the user adds to it; the tutorial is shown from its top all the
        // same, so that it is read from its first line, and the first key typed goes below it.
        m_textView->moveCursor(QTextCursor::End);
        if (store() && store()->usingStarterDocument()) {
            m_textView->verticalScrollBar()->setValue(0);
            QTimer::singleShot(0, m_textView, [view = m_textView] {
                if (view)
                    view->verticalScrollBar()->setValue(0);
            });
        }
    }
}

void SheetEditor::Coordinator::resultsChanged() {
    if (m_textView && m_session)
        m_textView->setResults(m_session->sharedResults());
}

void SheetEditor::Coordinator::documentChanged() {
    if (m_pushing || !m_textView || !m_shownSheetID || !store())
        return;
    const Sheet* sheet = store()->sheet(*m_shownSheetID);
    if (!sheet)
        return;
    // Undo, redo, another window on the same sheet or a merged copy changed the text.
    const QString text = QString::fromStdString(sheet->text);
    if (m_textView->document()->characterCount() - 1 != text.size() || m_textView->toPlainText() != text)
        m_textView->replaceTextQuietly(text);
    m_textView->setLockedLines(sheet->lockedLines);
}

void SheetEditor::Coordinator::textEdited() {
    if (!m_textView || !m_shownSheetID || !store())
        return;
    m_pushing = true;
    store()->updateContent(*m_shownSheetID, m_textView->toPlainText().toStdString(),
                           m_textView->lockedLines());
    m_pushing = false;
}

// MARK: - Appearance

void SheetEditor::Coordinator::applyAppearance() {
    if (!m_textView)
        return;
    // The editor's own palette, not the application's: it is the one whose changes reach the
    // editor, so "auto" settles on what the editor was last told.
    const Appearance appearance = ViewStyle::appearance(
        m_settings ? m_settings->appearance() : AppearanceSetting::automatic, m_parent->palette());
    const SyntaxColorOverrides colors =
        m_settings ? toOverrides(m_settings->syntaxColors()) : SyntaxColorOverrides{};
    m_textView->setSyntaxColors(colors);
    m_textView->setAppearance(appearance);
    m_highlighter->setColors(colors, appearance);
}

void SheetEditor::Coordinator::applyTextSize() {
    if (!m_textView)
        return;
    m_textView->setFont(ViewStyle::sheetFont(m_textView->font(), m_settings ? m_settings->textSize()
                                                                            : TextSizeSetting::standard));
}

// MARK: - Answers

void SheetEditor::Coordinator::copyAnswer(int line) {
    if (!m_textView)
        return;
    const std::optional<LineAnswer>& answer = m_textView->answer(line);
    if (answer && !answer->isFailure())
        QApplication::clipboard()->setText(answer->text);
}

bool SheetEditor::Coordinator::refuseIfAnyLocked(const QString& before, const QString& after) {
    if (!m_textView->hasLockedLines())
        return false;
    const QStringList oldLines = before.split(u'\n');
    const QStringList newLines = after.split(u'\n');
    for (qsizetype i = 0; i < oldLines.size(); ++i) {
        if (m_textView->isLineLocked(int(i)) && (i >= newLines.size() || oldLines[i] != newLines[i])) {
            QApplication::beep();
            emit m_textView->editRefused();
            return true;
        }
    }
    return false;
}

void SheetEditor::Coordinator::toggleComments() {
    if (!m_textView)
        return;
    const QTextCursor cursor = m_textView->textCursor();
    const auto [first, last] = m_textView->selectedLines();
    // Read before the rewrite, which replaces every block.
    const QTextBlock firstBlock = m_textView->document()->findBlockByNumber(first);
    const int start = firstBlock.position();
    const QString oldLine = firstBlock.text();
    const QString before = m_textView->toPlainText();
    const QString after = textRewrites::toggleComments(before, first, last);
    if (after == before || refuseIfAnyLocked(before, after))
        return;
    const QStringList lines = after.split(u'\n');
    if (cursor.hasSelection()) {
        // The lines stay selected, whole, so that toggling again undoes the toggle.
        int end = start;
        for (int line = first; line <= last; ++line)
            end += int(lines[line].size()) + (line < last ? 1 : 0);
        m_textView->replaceAllAsOneEdit(after, end);
        QTextCursor selection = m_textView->textCursor();
        selection.setPosition(start);
        selection.setPosition(end, QTextCursor::KeepAnchor);
        m_textView->setTextCursor(selection);
        return;
    }
    // The caret keeps its place in the line's content.
    const QString& newLine = lines[first];
    const int column = cursor.position() - start;
    const int indent = int(textRewrites::indentation(oldLine));
    const int moved =
        column < indent ? column : std::max(indent, column + int(newLine.size() - oldLine.size()));
    m_textView->replaceAllAsOneEdit(after, start + std::min(moved, int(newLine.size())));
}

void SheetEditor::Coordinator::insertAnswer(int line) {
    if (!m_textView)
        return;
    const std::optional<LineAnswer>& answer = m_textView->answer(line);
    if (!answer || answer->isFailure())
        return;
    QTextCursor cursor = m_textView->textCursor();
    if (m_textView->isLineLocked(cursor.blockNumber())) {
        QApplication::beep();
        emit m_textView->editRefused();
        return;
    }
    const QString before = m_textView->toPlainText();
    QString text = before;
    int start = cursor.selectionStart();
    int end = cursor.selectionEnd();

    QString name = answer->name;
    const QTextBlock named = m_textView->document()->findBlockByNumber(line);
    if (name.isEmpty() && named.isValid()) {
        // The line gets a short name first, so that the reference stays valid when lines move.
        name = textRewrites::unusedLineName(text, line);
        const QString renamed = textRewrites::nameLine(named.text(), name);
        const int added = int(renamed.size() - named.text().size());
        text.replace(named.position(), named.text().size(), renamed);
        if (start >= named.position())
            start += added;
        if (end >= named.position())
            end += added;
    }
    const int lineStart = int(text.lastIndexOf(u'\n', std::max(0, start - 1)) + 1);
    const QString head = start > 0 ? text.mid(lineStart, start - lineStart) : QString();
    const std::string spaced =
        LineEditor::snippetSpacing(name.toStdString(), head.toStdString(),
                                   textPositions::characterIndex(head, int(head.size())), SnippetRole::plain);
    QString insertion = QString::fromStdString(spaced);
    // A reference never sticks to what precedes it, except after a blank, an opening bracket or
    // at a line's start: "sum(" takes "sum(a", not "sum( a".
    static const QString opening = QStringLiteral("([（［");
    if (!head.isEmpty() && !head.back().isSpace() && !opening.contains(head.back()) &&
        !insertion.startsWith(u' '))
        insertion.prepend(u' ');
    text.replace(start, end - start, insertion);
    if (refuseIfAnyLocked(before, text))
        return;
    m_textView->replaceAllAsOneEdit(text, start + int(insertion.size()));
    m_textView->setFocus();
}

void SheetEditor::Coordinator::requestName(int line) {
    if (!m_textView)
        return;
    const QTextBlock block = m_textView->document()->findBlockByNumber(line);
    if (!block.isValid())
        return;
    const std::optional<LineAnswer>& answer = m_textView->answer(line);
    const QString oldName = answer ? answer->name : QString();
    const QString text = m_textView->toPlainText();
    const auto purpose = oldName.isEmpty() ? NameLineDialog::Purpose::name : NameLineDialog::Purpose::rename;
    const QString proposed = oldName.isEmpty() ? textRewrites::unusedLineName(text, line) : oldName;
    auto* dialog = new NameLineDialog(
        purpose, block.text(), proposed,
        [view = m_textView, line](const QString& name) -> std::optional<QString> {
            if (!view)
                return std::nullopt;
            const std::optional<std::string> refusal =
                validateLineName(name.toStdString(), view->toPlainText().toStdString(), std::size_t(line));
            return refusal ? std::optional<QString>(QString::fromStdString(*refusal)) : std::nullopt;
        },
        m_parent);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    if (m_notifications)
        m_notifications->observe(notification::languageChanged, dialog, [dialog] { dialog->relabel(); });
    connect(dialog, &QDialog::accepted, this,
            [this, dialog, line, oldName] { rename(line, oldName, dialog->name()); });
    dialog->open();
}

void SheetEditor::Coordinator::rename(int line, const QString& oldName, const QString& newName) {
    if (!m_textView || newName.isEmpty() || newName == oldName)
        return;
    const QString before = m_textView->toPlainText();
    QString text;
    if (oldName.isEmpty()) {
        QStringList lines = before.split(u'\n');
        if (line >= lines.size())
            return;
        lines[line] = textRewrites::nameLine(lines[line], newName);
        text = lines.join(u'\n');
    } else {
        text = textRewrites::renameIdentifier(before, oldName, newName);
    }
    if (text == before || refuseIfAnyLocked(before, text))
        return;
    // The caret keeps its line and its place relative to the line's end when the line changed
    // before it.
    const QTextCursor cursor = m_textView->textCursor();
    const int caretLine = cursor.blockNumber();
    const QString oldLine = cursor.block().text();
    const QString newLine = text.split(u'\n').value(caretLine);
    int column = cursor.positionInBlock();
    qsizetype same = 0;
    while (same < oldLine.size() && same < newLine.size() && oldLine[same] == newLine[same])
        ++same;
    if (column > same)
        column = std::max(int(same), column + int(newLine.size() - oldLine.size()));
    int lineStart = 0;
    for (int i = 0; i < caretLine; ++i)
        lineStart = int(text.indexOf(u'\n', lineStart)) + 1;
    m_textView->replaceAllAsOneEdit(text, lineStart + column);
}

void SheetEditor::Coordinator::toggleLock(int line) {
    if (!m_textView)
        return;
    std::vector<std::int64_t> locks = m_textView->lockedLines();
    const auto found = std::find(locks.begin(), locks.end(), line);
    if (found != locks.end())
        locks.erase(found);
    else
        locks.insert(std::upper_bound(locks.begin(), locks.end(), line), line);
    m_textView->setLockedLines(locks);
    if (m_shownSheetID && store()) {
        m_pushing = true;
        store()->setLockedLines(*m_shownSheetID, locks);
        m_pushing = false;
    }
}

// MARK: - Keypad commands

void SheetEditor::Coordinator::insertSnippet(const QVariant& payload) {
    if (!m_textView || !isActiveEditor())
        return;
    InsertSnippet snippet;
    if (payload.canConvert<QVariantMap>() && payload.typeId() == QMetaType::QVariantMap) {
        const QVariantMap fields = payload.toMap();
        snippet.text = fields.value(QStringLiteral("text")).toString().toStdString();
        snippet.caretBack = fields.value(QStringLiteral("caretBack")).toLongLong();
        snippet.isNamedValue = fields.value(QStringLiteral("isNamedValue")).toBool();
    } else {
        snippet.text = payload.toString().toStdString();
    }
    m_textView->setFocus();
    if (snippet.text == "\n") {
        QKeyEvent press(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, QStringLiteral("\r"));
        QApplication::sendEvent(m_textView, &press);
        return;
    }
    const QTextCursor cursor = m_textView->textCursor();
    const QString line = cursor.block().text();
    const QString head = line.left(cursor.selectionStart() - cursor.block().position());
    const int headCharacters = textPositions::characterIndex(head, int(head.size()));
    if (snippet.text == "×") {
        // The sign is spaced by what precedes it; inside a note it goes in as it is.
        const std::string sign = LineEditor::multiplySign(head.toStdString(), headCharacters);
        if (!sign.empty())
            snippet.text = sign;
    }
    // Digits go on with the number before the caret, as typed ones do; words are spaced apart.
    const bool isNumeral =
        !snippet.text.empty() && std::all_of(snippet.text.begin(), snippet.text.end(),
                                             [](char c) { return (c >= '0' && c <= '9') || c == '.'; });
    const QString spaced = QString::fromStdString(
        isNumeral ? snippet.text : LineEditor::snippetSpacing(snippet, head.toStdString(), headCharacters));
    // The caret lands before the last `caretBack` characters of the snippet.
    const int characters = textPositions::characterIndex(spaced, int(spaced.size()));
    const int tailStart = textPositions::utf16Offset(
        spaced, std::max(0, characters - int(std::max<std::int64_t>(0, snippet.caretBack))));
    QString before = spaced.left(tailStart);
    QString after = spaced.mid(tailStart);
    // The lines of a snippet (a block with its body) keep the indentation of the line it goes into.
    qsizetype indentLength = 0;
    while (indentLength < line.size() &&
           (line[indentLength] == u' ' || line[indentLength] == u'\t' || line[indentLength] == QChar(0x3000)))
        ++indentLength;
    if (indentLength > 0) {
        const QString newline = QStringLiteral("\n") + line.left(indentLength);
        before.replace(u'\n', newline);
        after.replace(u'\n', newline);
    }
    if (!m_textView->insertAtSelection(before + after))
        return;
    if (!after.isEmpty()) {
        QTextCursor moved = m_textView->textCursor();
        moved.setPosition(moved.position() - int(after.size()));
        m_textView->setTextCursor(moved);
    }
}

void SheetEditor::Coordinator::deleteBackward() {
    if (!m_textView || !isActiveEditor())
        return;
    // The keypad's delete key behaves as the keyboard's: locks, indentation and digit groups.
    QKeyEvent press(QEvent::KeyPress, Qt::Key_Backspace, Qt::NoModifier);
    QApplication::sendEvent(m_textView, &press);
}

void SheetEditor::Coordinator::toggleSign() {
    if (!m_textView || !isActiveEditor())
        return;
    QTextCursor cursor = m_textView->textCursor();
    const QTextBlock block = cursor.block();
    const QString line = block.text();
    const int column = cursor.position() - block.position();
    const SignToggle toggled =
        LineEditor::toggleSign(line.toStdString(), textPositions::characterIndex(line, column));
    const QString newLine = QString::fromStdString(toggled.text);
    if (newLine == line)
        return;
    if (m_textView->isLineLocked(block.blockNumber())) {
        QApplication::beep();
        emit m_textView->editRefused();
        return;
    }
    const int lineStart = block.position();
    cursor.setPosition(lineStart);
    cursor.setPosition(lineStart + int(line.size()), QTextCursor::KeepAnchor);
    m_textView->setTextCursor(cursor);
    if (!m_textView->insertAtSelection(newLine))
        return;
    cursor = m_textView->textCursor();
    cursor.setPosition(lineStart + textPositions::utf16Offset(newLine, int(toggled.caret)));
    m_textView->setTextCursor(cursor);
}

void SheetEditor::Coordinator::moveCursor(const QVariant& payload) {
    if (!m_textView || !isActiveEditor())
        return;
    const std::optional<CursorMove> kind = cursorMoveFromRaw(payload.toString().toStdString());
    if (!kind)
        return;
    const std::int64_t caret =
        LineEditor::move(*kind, m_textView->toPlainText().toStdString(), m_textView->textCursor().position());
    QTextCursor cursor = m_textView->textCursor();
    cursor.setPosition(int(caret));
    m_textView->setTextCursor(cursor);
    m_textView->ensureCursorVisible();
}

void SheetEditor::Coordinator::setCaret(const QVariant& payload) {
    if (!m_textView || !isActiveEditor())
        return;
    bool ok = false;
    const int position = payload.toInt(&ok);
    if (!ok)
        return;
    QTextCursor cursor = m_textView->textCursor();
    cursor.setPosition(std::clamp(position, 0, m_textView->document()->characterCount() - 1));
    m_textView->setTextCursor(cursor);
    m_textView->ensureCursorVisible();
    m_textView->setFocus();
}

} // namespace lumo
