#include "LumoUI/editor/CalcTextView.h"

#include <QAbstractTextDocumentLayout>
#include <QApplication>
#include <QClipboard>
#include <QKeyEvent>
#include <QMenu>
#include <QMimeData>
#include <QPainter>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextLayout>

#include <algorithm>
#include <cmath>
#include <utility>

#include "LumoKit/base/Language.h"
#include "LumoKit/editing/LineEditor.h"
#include "LumoUI/editor/DecorationOverlay.h"
#include "LumoUI/editor/PlotLayer.h"
#include "LumoUI/editor/ResultColumnHandle.h"
#include "LumoUI/editor/SheetTextLayout.h"
#include "LumoUI/editor/TextPositions.h"
#include "LumoUI/editor/TextRewrites.h"
#include "LumoUI/plot/PlotStyle.h"
#include "LumoUI/settings/AppSettings.h"

namespace lumo {

namespace {

// Presence of this data on a block marks its line as locked; it travels with the block when
// lines above are inserted or removed.
class LockedLineData : public QTextBlockUserData {};

constexpr int leftInset = 14;
constexpr int indentWidth = 4;

bool isLocked(const QTextBlock& block) {
    return block.isValid() && dynamic_cast<LockedLineData*>(block.userData()) != nullptr;
}

QColor mix(const QColor& a, const QColor& b, qreal amount) {
    return QColor::fromRgbF(float(a.redF() + (b.redF() - a.redF()) * amount),
                            float(a.greenF() + (b.greenF() - a.greenF()) * amount),
                            float(a.blueF() + (b.blueF() - a.blueF()) * amount));
}

} // namespace

// Groups the document changes of one user action into one edited() signal.
class CalcTextView::EditGroup {
public:
    explicit EditGroup(CalcTextView* view) : m_view(view) { ++m_view->m_editDepth; }
    ~EditGroup() {
        if (--m_view->m_editDepth == 0 && m_view->m_pendingEdit) {
            m_view->m_pendingEdit = false;
            emit m_view->edited();
        }
    }
    EditGroup(const EditGroup&) = delete;
    EditGroup& operator=(const EditGroup&) = delete;

private:
    CalcTextView* m_view;
};

CalcTextView::CalcTextView(AppSettings* settings, QWidget* parent)
    : QPlainTextEdit(parent), m_settings(settings) {
    auto* layout = new SheetTextLayout(document());
    document()->setDocumentLayout(layout);
    document()->setUndoRedoEnabled(false);
    document()->setDocumentMargin(6);
    setLineWrapMode(QPlainTextEdit::WidgetWidth);
    setFrameShape(QFrame::NoFrame);
    setCenterOnScroll(false);
    setTabChangesFocus(false);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    // The margin left of the text is part of the paper, not of the window.
    setAutoFillBackground(true);

    // The overlay lies under the text, which is drawn on a transparent viewport: it paints the
    // paper, the caret's band and the answer column, and a long answer may run on to the left
    // over the paper of its row where the row's text leaves room.
    m_overlay = new DecorationOverlay(this);
    m_overlay->lower();
    viewport()->setAutoFillBackground(false);
    m_handle = new ResultColumnHandle(settings, this);
    m_handle->raise();
    m_plots = new PlotLayer(this);
    layout->setBandHeights(
        [this](const QTextBlock& block) { return m_plots->bandHeight(block.blockNumber()); });
    // Hovering a curve reads out its values, so the viewport follows the pointer.
    viewport()->setMouseTracking(true);

    connect(this, &QPlainTextEdit::updateRequest, this, &CalcTextView::updateOverlayArea);
    connect(document(), &QTextDocument::contentsChange, this, &CalcTextView::contentsChanged);
    // The overlay under the text draws the faint band behind the caret's line, which ties the
    // text to its answer across the gap; a band drawn by the text itself would hide an answer
    // that runs on over the paper.
    connect(this, &QPlainTextEdit::cursorPositionChanged, m_overlay, &DecorationOverlay::caretLineChanged);
    connect(verticalScrollBar(), &QScrollBar::rangeChanged, this, [this] { relayout(); });
    setAppearance(Appearance::dark);
    relayout();
}

CalcTextView::~CalcTextView() = default;

// MARK: - Results and locks

void CalcTextView::setResults(SharedResults results) {
    m_results = std::move(results);
    m_answers.assign(m_results->size(), std::nullopt);
    m_plots->resultsChanged();
    m_overlay->resultsChanged();
}

bool CalcTextView::showsPlots() const {
    return m_plots->showsPlots();
}

void CalcTextView::setShowsPlots(bool shows) {
    m_plots->setShowsPlots(shows);
}

qreal CalcTextView::bandHeight(int line) const {
    return m_plots->bandHeight(line);
}

const std::optional<LineAnswer>& CalcTextView::answer(int line) const {
    static const std::optional<LineAnswer> none;
    if (line < 0 || std::size_t(line) >= m_results->size())
        return none;
    auto& cached = m_answers[std::size_t(line)];
    if (!cached)
        cached = lineAnswer((*m_results)[std::size_t(line)]);
    return *cached;
}

void CalcTextView::setLockedLines(const std::vector<std::int64_t>& lines) {
    if (lines == lockedLines())
        return;
    for (QTextBlock block = document()->begin(); block.isValid() && m_lockCount > 0; block = block.next()) {
        if (isLocked(block)) {
            block.setUserData(nullptr);
            --m_lockCount;
        }
    }
    m_lockCount = 0;
    for (std::int64_t line : lines) {
        QTextBlock block = document()->findBlockByNumber(int(line));
        if (block.isValid() && !isLocked(block)) {
            block.setUserData(new LockedLineData);
            ++m_lockCount;
        }
    }
    m_overlay->update();
}

std::vector<std::int64_t> CalcTextView::lockedLines() const {
    std::vector<std::int64_t> lines;
    if (m_lockCount == 0)
        return lines;
    for (QTextBlock block = document()->begin(); block.isValid(); block = block.next()) {
        if (isLocked(block))
            lines.push_back(block.blockNumber());
    }
    return lines;
}

bool CalcTextView::isLineLocked(int line) const {
    return m_lockCount > 0 && isLocked(document()->findBlockByNumber(line));
}

bool CalcTextView::touchesLockedLine(int from, int to) const {
    if (m_lockCount == 0)
        return false;
    // A line is touched by any position from its start to its end, both included: typing at
    // either end changes it, and so does joining it with a neighbour.
    QTextBlock block = document()->findBlock(std::max(0, from));
    const QTextBlock last = document()->findBlock(std::max(0, to));
    while (block.isValid()) {
        if (isLocked(block))
            return true;
        if (block == last)
            break;
        block = block.next();
    }
    return false;
}

bool CalcTextView::refuseIfLocked(int from, int to) {
    if (!touchesLockedLine(std::min(from, to), std::max(from, to)))
        return false;
    QApplication::beep();
    emit editRefused();
    return true;
}

// MARK: - Text changes

void CalcTextView::contentsChanged(int, int, int) {
    m_overlay->textChanged();
    if (m_quiet)
        return;
    m_pendingEdit = true;
    if (m_editDepth == 0) {
        m_pendingEdit = false;
        emit edited();
    }
}

void CalcTextView::replaceTextQuietly(const QString& text) {
    const QString current = toPlainText();
    if (current == text)
        return;
    // Only the middle that differs is replaced, so the caret, the scroll position, the colours
    // and the locks of untouched lines stay as they are.
    qsizetype prefix = 0;
    const qsizetype shorter = std::min(current.size(), text.size());
    while (prefix < shorter && current[prefix] == text[prefix])
        ++prefix;
    qsizetype suffix = 0;
    while (suffix < shorter - prefix &&
           current[current.size() - 1 - suffix] == text[text.size() - 1 - suffix])
        ++suffix;
    if (prefix > 0 && current[prefix - 1].isHighSurrogate())
        --prefix;
    if (suffix > 0 && current[current.size() - suffix].isLowSurrogate())
        --suffix;

    m_quiet = true;
    QTextCursor cursor(document());
    cursor.setPosition(int(prefix));
    cursor.setPosition(int(current.size() - suffix), QTextCursor::KeepAnchor);
    cursor.insertText(text.mid(prefix, text.size() - suffix - prefix));
    m_quiet = false;
}

void CalcTextView::setTextWhole(const QString& text) {
    m_quiet = true;
    m_lockCount = 0;
    setPlainText(text);
    m_quiet = false;
    m_hoveredResultLine.reset();
    m_pressedResultLine.reset();
}

bool CalcTextView::insertAtSelection(const QString& text) {
    QTextCursor cursor = textCursor();
    if (refuseIfLocked(cursor.selectionStart(), cursor.selectionEnd()))
        return false;
    EditGroup group(this);
    cursor.insertText(text);
    setTextCursor(cursor);
    return true;
}

void CalcTextView::replaceAllAsOneEdit(const QString& text, int caret) {
    {
        EditGroup group(this);
        const std::vector<std::int64_t> locks = lockedLines();
        const int lineCountBefore = blockCount();
        m_quiet = true;
        replaceTextQuietly(text);
        m_quiet = false;
        // A rewrite of the whole text that keeps the number of lines keeps the locks in place.
        if (blockCount() == lineCountBefore)
            setLockedLines(locks);
        m_pendingEdit = true;
    }
    QTextCursor cursor = textCursor();
    cursor.setPosition(std::clamp(caret, 0, document()->characterCount() - 1));
    setTextCursor(cursor);
    ensureCursorVisible();
}

void CalcTextView::cut() {
    const QTextCursor cursor = textCursor();
    if (!cursor.hasSelection() || refuseIfLocked(cursor.selectionStart(), cursor.selectionEnd()))
        return;
    EditGroup group(this);
    QPlainTextEdit::cut();
}

void CalcTextView::paste() {
    EditGroup group(this);
    QPlainTextEdit::paste();
}

void CalcTextView::deleteSelection() {
    QTextCursor cursor = textCursor();
    if (!cursor.hasSelection() || refuseIfLocked(cursor.selectionStart(), cursor.selectionEnd()))
        return;
    EditGroup group(this);
    cursor.removeSelectedText();
}

void CalcTextView::insertFromMimeData(const QMimeData* source) {
    // Qt 6.4's text control reads the first format without checking that there is one, so an
    // empty clipboard (nothing copied yet on a fresh X session) would crash the paste.
    if (!source || source->formats().isEmpty())
        return;
    const QTextCursor cursor = textCursor();
    if (refuseIfLocked(cursor.selectionStart(), cursor.selectionEnd()))
        return;
    EditGroup group(this);
    QPlainTextEdit::insertFromMimeData(source);
}

// MARK: - Keys

std::optional<std::pair<int, int>> CalcTextView::editRangeOf(QKeyEvent* event) const {
    const QTextCursor cursor = textCursor();
    const int start = cursor.selectionStart();
    const int end = cursor.selectionEnd();
    const bool deletes = event == QKeySequence::Delete || event == QKeySequence::DeleteEndOfWord ||
                         event == QKeySequence::DeleteEndOfLine ||
                         event == QKeySequence::DeleteCompleteLine ||
                         event == QKeySequence::DeleteStartOfWord || event->key() == Qt::Key_Backspace ||
                         event == QKeySequence::Cut;
    if (deletes && !cursor.hasSelection()) {
        // Without a selection a deletion reaches one step beyond the caret, or the whole line.
        QTextCursor probe = cursor;
        if (event == QKeySequence::DeleteCompleteLine)
            return std::pair{cursor.block().position(),
                             cursor.block().position() + cursor.block().length() - 1};
        if (event->key() == Qt::Key_Backspace || event == QKeySequence::DeleteStartOfWord)
            probe.movePosition(event->key() == Qt::Key_Backspace ? QTextCursor::PreviousCharacter
                                                                 : QTextCursor::PreviousWord);
        else
            probe.movePosition(event == QKeySequence::Delete ? QTextCursor::NextCharacter
                                                             : QTextCursor::EndOfBlock);
        if (probe.position() == cursor.position() && event != QKeySequence::Delete)
            probe.movePosition(QTextCursor::NextCharacter);
        return std::pair{std::min(probe.position(), start), std::max(probe.position(), end)};
    }
    if (deletes || event == QKeySequence::Paste || event->key() == Qt::Key_Return ||
        event->key() == Qt::Key_Enter || event->key() == Qt::Key_Tab)
        return std::pair{start, end};
    const QString text = event->text();
    if (!text.isEmpty() && text.front().isPrint())
        return std::pair{start, end};
    return std::nullopt;
}

bool CalcTextView::handleIndentationKeys(QKeyEvent* event) {
    const Qt::KeyboardModifiers modifiers = event->modifiers() & ~Qt::KeypadModifier;
    QTextCursor cursor = textCursor();
    if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) &&
        (modifiers == Qt::NoModifier || modifiers == Qt::ShiftModifier)) {
        // The indentation comes from the text up to the caret, as the line will be cut there.
        const QTextBlock block = cursor.block();
        const QString head = block.text().left(cursor.selectionStart() - block.position());
        const std::string indent = LineEditor::newlineIndent(head.toStdString(), head.size());
        insertAtSelection(u'\n' + QString::fromStdString(indent));
        ensureCursorVisible();
        return true;
    }
    if (event->key() == Qt::Key_Tab && modifiers == Qt::NoModifier) {
        insertAtSelection(QString(indentWidth, u' '));
        return true;
    }
    if (event->key() == Qt::Key_Backspace && modifiers == Qt::NoModifier && !cursor.hasSelection()) {
        const int column = cursor.positionInBlock();
        const QString head = cursor.block().text().left(column);
        const bool inIndentation =
            column > 0 && std::all_of(head.begin(), head.end(), [](QChar c) { return c == u' '; });
        if (!inIndentation)
            return false;
        // Back to the previous multiple of four, as if the indentation were made of tabs.
        const int target = (column - 1) / indentWidth * indentWidth;
        if (refuseIfLocked(cursor.position() - (column - target), cursor.position()))
            return true;
        EditGroup group(this);
        cursor.movePosition(QTextCursor::Left, QTextCursor::KeepAnchor, column - target);
        cursor.removeSelectedText();
        setTextCursor(cursor);
        return true;
    }
    return false;
}

void CalcTextView::keyPressEvent(QKeyEvent* event) {
    if (event == QKeySequence::Undo) {
        emit undoRequested();
        return;
    }
    if (event == QKeySequence::Redo) {
        emit redoRequested();
        return;
    }
    if (event->keyCombination() == QKeyCombination(Qt::ControlModifier | Qt::ShiftModifier, Qt::Key_C)) {
        emit copyAnswerRequested(caretLine());
        return;
    }
    if (event == QKeySequence::Cut) {
        cut();
        return;
    }
    if (event == QKeySequence::Paste) {
        paste();
        return;
    }
    if (isReadOnly())
        return QPlainTextEdit::keyPressEvent(event);
    if (handleIndentationKeys(event))
        return;
    const std::optional<std::pair<int, int>> range = editRangeOf(event);
    if (range && refuseIfLocked(range->first, range->second))
        return;

    const QTextBlock block = textCursor().block();
    const int blockNumber = block.blockNumber();
    const QString lineBefore = block.text();
    EditGroup group(this);
    QPlainTextEdit::keyPressEvent(event);
    const QString typed = event->text();
    const bool digitTyped = typed.size() == 1 && typed.front().isDigit() && typed.front().unicode() < 128;
    const bool deleted = event->key() == Qt::Key_Backspace || event->key() == Qt::Key_Delete;
    if ((digitTyped || deleted) && m_settings && m_settings->groupsDigits() &&
        textCursor().blockNumber() == blockNumber)
        regroupAfterEdit(lineBefore, blockNumber);
}

void CalcTextView::regroupAfterEdit(const QString& lineBefore, int blockNumber) {
    QTextCursor cursor = textCursor();
    const QTextBlock block = document()->findBlockByNumber(blockNumber);
    const std::optional<textRewrites::LineRewrite> rewrite =
        textRewrites::regroupDigits(lineBefore, block.text(), cursor.positionInBlock());
    if (!rewrite)
        return;
    // Only the number changes; replacing the differing middle keeps the rest of the line's
    // colours and avoids touching anything else.
    const QString current = block.text();
    qsizetype prefix = 0;
    while (prefix < current.size() && prefix < rewrite->line.size() &&
           current[prefix] == rewrite->line[prefix])
        ++prefix;
    qsizetype suffix = 0;
    while (suffix < current.size() - prefix && suffix < rewrite->line.size() - prefix &&
           current[current.size() - 1 - suffix] == rewrite->line[rewrite->line.size() - 1 - suffix])
        ++suffix;
    cursor.setPosition(block.position() + int(prefix));
    cursor.setPosition(block.position() + int(current.size() - suffix), QTextCursor::KeepAnchor);
    cursor.insertText(rewrite->line.mid(prefix, rewrite->line.size() - suffix - prefix));
    cursor.setPosition(block.position() + rewrite->caret);
    setTextCursor(cursor);
}

void CalcTextView::inputMethodEvent(QInputMethodEvent* event) {
    const bool changesText = !event->commitString().isEmpty() || event->replacementLength() > 0;
    const QTextCursor cursor = textCursor();
    const bool composing = !event->preeditString().isEmpty();
    if ((changesText || composing) && touchesLockedLine(cursor.selectionStart(), cursor.selectionEnd())) {
        // The composition is dropped as a whole so that no half-typed text stays on the line.
        if (changesText) {
            QApplication::beep();
            emit editRefused();
        }
        QInputMethodEvent cleared;
        QPlainTextEdit::inputMethodEvent(&cleared);
        return;
    }
    if (!changesText) {
        // Composition only redraws its line; the text itself is unchanged until the commit.
        const bool wasQuiet = std::exchange(m_quiet, true);
        QPlainTextEdit::inputMethodEvent(event);
        m_quiet = wasQuiet;
        return;
    }
    EditGroup group(this);
    QPlainTextEdit::inputMethodEvent(event);
}

bool CalcTextView::event(QEvent* event) {
    if (event->type() == QEvent::ShortcutOverride) {
        // Undo and redo belong to the window's commands, which ask the sheet's history.
        auto* key = static_cast<QKeyEvent*>(event);
        if (key == QKeySequence::Undo || key == QKeySequence::Redo) {
            event->ignore();
            return false;
        }
    }
    return QPlainTextEdit::event(event);
}

// MARK: - Menu

QMenu* CalcTextView::createContextMenu(std::optional<int> answerLine, int textLine) {
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    const auto pick = [](const char* japanese, const char* english) {
        return QString::fromStdString(L10n::pick(japanese, english));
    };
    const int line = answerLine.value_or(textLine);
    const std::optional<LineAnswer>& lineAnswer = answer(line);
    if (answerLine) {
        const bool named = lineAnswer && !lineAnswer->name.isEmpty();
        QAction* name = menu->addAction(named ? pick("名前を変える…", "Rename…")
                                              : pick("名前を付ける…", "Name This Line…"),
                                        this, [this, line] { emit nameRequested(line); });
        name->setData(line);
        name->setObjectName(QStringLiteral("nameLine"));
    }
    if (lineAnswer && !lineAnswer->isFailure()) {
        QAction* copyAnswer = menu->addAction(pick("答えをコピー", "Copy Answer"), this,
                                              [this, line] { emit copyAnswerRequested(line); });
        copyAnswer->setObjectName(QStringLiteral("copyAnswer"));
        if (!answerLine)
            copyAnswer->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_C));
    }
    QAction* lock = menu->addAction(isLineLocked(line) ? pick("ロックを解除", "Unlock Line")
                                                       : pick("行をロック", "Lock Line"),
                                    this, [this, line] { emit lockToggled(line); });
    lock->setObjectName(QStringLiteral("toggleLock"));
    if (answerLine)
        return menu;

    menu->addSeparator();
    const QTextCursor cursor = textCursor();
    const bool selection = cursor.hasSelection();
    const bool locked = touchesLockedLine(cursor.selectionStart(), cursor.selectionEnd());
    const auto add = [&](const QString& text, QKeySequence::StandardKey key, bool enabled, auto slot) {
        QAction* action = menu->addAction(text, this, slot);
        action->setShortcut(key);
        action->setEnabled(enabled);
        return action;
    };
    add(pick("取り消す", "Undo"), QKeySequence::Undo, true, [this] { emit undoRequested(); });
    add(pick("やり直す", "Redo"), QKeySequence::Redo, true, [this] { emit redoRequested(); });
    menu->addSeparator();
    add(pick("カット", "Cut"), QKeySequence::Cut, selection && !locked, [this] { cut(); });
    add(pick("コピー", "Copy"), QKeySequence::Copy, selection, [this] { copy(); });
    add(pick("ペースト", "Paste"), QKeySequence::Paste, canPaste() && !locked, [this] { paste(); });
    add(pick("削除", "Delete"), QKeySequence::Delete, selection && !locked, [this] { deleteSelection(); });
    menu->addSeparator();
    add(pick("すべてを選択", "Select All"), QKeySequence::SelectAll, !document()->isEmpty(),
        [this] { selectAll(); });
    return menu;
}

void CalcTextView::contextMenuEvent(QContextMenuEvent* event) {
    if (m_plots->contextMenu(event))
        return;
    const int line = cursorForPosition(event->pos()).blockNumber();
    createContextMenu(answerLineAt(viewportToOverlay(event->pos())), line)->popup(event->globalPos());
}

bool CalcTextView::viewportEvent(QEvent* event) {
    if (event->type() == QEvent::ToolTip) {
        auto* help = static_cast<QHelpEvent*>(event);
        const QPoint at = viewportToOverlay(help->pos()).toPoint();
        if (answerLineAt(at)) {
            QHelpEvent moved(QEvent::ToolTip, at, help->globalPos());
            return QCoreApplication::sendEvent(m_overlay, &moved);
        }
    }
    return QPlainTextEdit::viewportEvent(event);
}

// MARK: - Geometry

double CalcTextView::columnWidth() const {
    return m_settings ? m_settings->resultColumnWidth() : ResultColumn::defaultWidth;
}

int CalcTextView::columnLeftInOverlay() const {
    return m_overlay->width() - columnInset - int(std::lround(columnWidth()));
}

void CalcTextView::relayout() {
    const int column = int(std::lround(columnWidth()));
    const int textWidth = int(std::lround(ResultColumn::textLayoutWidth(width(), column)));
    const QScrollBar* bar = verticalScrollBar();
    const int available = contentsRect().width() - (bar->isVisibleTo(this) ? bar->width() : 0);
    const int viewportWidth = textWidth + 2 * int(document()->documentMargin());
    const int right = std::max(column + columnGap + columnInset, available - leftInset - viewportWidth);
    if (viewportMargins() != QMargins(leftInset, 0, right, 0)) {
        setViewportMargins(leftInset, 0, right, 0);
        // The text control lays its text out again only when the whole view is resized, not
        // when the viewport alone changes width.
        QResizeEvent resize(size(), QSize(-1, -1));
        QPlainTextEdit::resizeEvent(&resize);
    }
    const QRect area = viewport()->geometry();
    m_overlay->setGeometry(area.left(), area.top(), area.width() + right, area.height());
    m_handle->setAvailable(width());
    m_handle->setGeometry(m_overlay->x() + columnLeftInOverlay() - columnGap / 2, area.top(), columnGap,
                          area.height());
    m_handle->raise();
    m_overlay->update();
}

void CalcTextView::resizeEvent(QResizeEvent* event) {
    QPlainTextEdit::resizeEvent(event);
    relayout();
}

void CalcTextView::changeEvent(QEvent* event) {
    QPlainTextEdit::changeEvent(event);
    if (event->type() == QEvent::FontChange) {
        updatePlotStyle();
        m_plots->fontChanged();
        relayout();
    }
}

// MARK: - Plots

void CalcTextView::paintEvent(QPaintEvent* event) {
    QPlainTextEdit::paintEvent(event);
    // Plots go over the text's paper in the bands the layout left free under their lines.
    QPainter painter(viewport());
    m_plots->paint(painter, event->rect());
}

void CalcTextView::mousePressEvent(QMouseEvent* event) {
    if (!m_plots->mousePress(event) && !passToAnswer(event))
        QPlainTextEdit::mousePressEvent(event);
}

void CalcTextView::mouseMoveEvent(QMouseEvent* event) {
    if (!m_plots->mouseMove(event) && !passToAnswer(event))
        QPlainTextEdit::mouseMoveEvent(event);
}

void CalcTextView::mouseReleaseEvent(QMouseEvent* event) {
    if (!m_plots->mouseRelease(event) && !passToAnswer(event))
        QPlainTextEdit::mouseReleaseEvent(event);
}

void CalcTextView::mouseDoubleClickEvent(QMouseEvent* event) {
    if (!m_plots->mousePress(event) && !passToAnswer(event))
        QPlainTextEdit::mouseDoubleClickEvent(event);
}

void CalcTextView::leaveEvent(QEvent* event) {
    m_plots->pointerLeft();
    if (m_hoveredResultLine)
        setHoveredResultLine(std::nullopt);
    QPlainTextEdit::leaveEvent(event);
}

QPointF CalcTextView::viewportToOverlay(const QPointF& point) const {
    return point + QPointF(viewport()->pos() - m_overlay->pos());
}

// A long answer runs on over the text's paper, where the viewport gets the pointer: there the
// pointer acts on the answer as it does in the column, from the press to the release.
bool CalcTextView::passToAnswer(QMouseEvent* event) {
    const QPointF at = viewportToOverlay(event->position());
    const bool pressing = m_pressedResultLine.has_value() && event->type() != QEvent::MouseButtonPress;
    const bool over = pressing || answerLineAt(at).has_value();
    if (!over) {
        if (m_hoveredResultLine && event->type() == QEvent::MouseMove) {
            setHoveredResultLine(std::nullopt);
            viewport()->setCursor(Qt::IBeamCursor);
        }
        return false;
    }
    const QEvent::Type type =
        event->type() == QEvent::MouseButtonDblClick ? QEvent::MouseButtonPress : event->type();
    QMouseEvent moved(type, at, event->scenePosition(), event->globalPosition(), event->button(),
                      event->buttons(), event->modifiers(), event->pointingDevice());
    QCoreApplication::sendEvent(m_overlay, &moved);
    viewport()->setCursor(m_hoveredResultLine || m_pressedResultLine ? Qt::PointingHandCursor
                                                                     : Qt::IBeamCursor);
    return true;
}

void CalcTextView::setSyntaxColors(const SyntaxColorOverrides& colors) {
    if (colors == m_syntaxColors)
        return;
    m_syntaxColors = colors;
    updatePlotStyle();
}

void CalcTextView::updatePlotStyle() {
    if (m_plots)
        m_plots->setStyle(PlotStyle::make(m_appearance, m_syntaxColors, font()));
}

QRectF CalcTextView::firstRowRect(int line) const {
    const QTextBlock block = document()->findBlockByNumber(line);
    if (!block.isValid() || !block.isVisible())
        return {};
    const QRectF geometry = blockBoundingGeometry(block).translated(contentOffset());
    const QTextLayout* layout = block.layout();
    if (!layout || layout->lineCount() == 0)
        return QRectF(geometry.left(), geometry.top(), geometry.width(), fontMetrics().height());
    const QTextLine first = layout->lineAt(0);
    return QRectF(geometry.left(), geometry.top() + first.y(), geometry.width(), first.height());
}

QRectF CalcTextView::answerRect(int line) const {
    return m_overlay->answerRect(line, firstRowRect(line));
}

std::optional<int> CalcTextView::answerLineAt(const QPointF& point) const {
    std::optional<int> found;
    forEachVisibleLine(point.y(), point.y(), [&](const QTextBlock& block, const QRectF&) {
        const int line = block.blockNumber();
        if (!found && answerRect(line).contains(point))
            found = line;
    });
    return found;
}

int CalcTextView::caretLine() const {
    return textCursor().blockNumber();
}

std::pair<int, int> CalcTextView::selectedLines() const {
    const QTextCursor cursor = textCursor();
    const QTextBlock first = document()->findBlock(cursor.selectionStart());
    QTextBlock last = document()->findBlock(cursor.selectionEnd());
    if (last != first && last.position() == cursor.selectionEnd())
        last = last.previous();
    return {first.blockNumber(), last.blockNumber()};
}

void CalcTextView::setHoveredResultLine(std::optional<int> line) {
    if (line == m_hoveredResultLine)
        return;
    m_hoveredResultLine = line;
    m_overlay->update();
}

void CalcTextView::setPressedResultLine(std::optional<int> line) {
    if (line == m_pressedResultLine)
        return;
    m_pressedResultLine = line;
    m_overlay->update();
}

void CalcTextView::updateOverlayArea(const QRect& rect, int dy) {
    if (dy != 0)
        m_overlay->scroll(0, dy);
    else
        m_overlay->update(0, rect.y(), m_overlay->width(), rect.height());
}

// MARK: - Appearance

void CalcTextView::setAppearance(Appearance appearance) {
    m_appearance = appearance;
    const bool dark = appearance == Appearance::dark;
    QPalette colors = palette();
    const QColor base = QColor::fromRgba(Theme::paperColor(appearance) >> 8 | 0xFF000000u);
    const QColor text = QColor::fromRgba(Theme::inkColor(appearance) >> 8 | 0xFF000000u);
    colors.setColor(QPalette::Base, base);
    colors.setColor(QPalette::Window, base);
    colors.setColor(QPalette::Text, text);
    colors.setColor(QPalette::WindowText, text);
    colors.setColor(QPalette::PlaceholderText, mix(base, text, 0.4));
    colors.setColor(QPalette::Highlight, dark ? QColor(0x3A, 0x5A, 0x9A) : QColor(0xB8, 0xD3, 0xFF));
    colors.setColor(QPalette::HighlightedText, text);
    colors.setColor(QPalette::AlternateBase, mix(base, text, dark ? 0.045 : 0.035));
    setPalette(colors);
    viewport()->setPalette(colors);
    m_overlay->setPalette(colors);
    m_handle->setPalette(colors);
    updatePlotStyle();
    markSearchMatches();
    m_overlay->update();
}

void CalcTextView::showSearchMatches(const QList<TextMatch>& matches) {
    if (matches == m_searchMatches)
        return;
    m_searchMatches = matches;
    markSearchMatches();
}

void CalcTextView::markSearchMatches() {
    // Amber, as find marks are in most editors, dimmed on dark paper so the text stays legible.
    const QColor mark =
        m_appearance == Appearance::dark ? QColor(0x6E, 0x55, 0x14) : QColor(0xFF, 0xE0, 0x85);
    m_searchMarks.clear();
    const int length = document()->characterCount();
    for (const TextMatch& match : m_searchMatches) {
        if (m_searchMarks.size() == markedMatchLimit || match.start + match.length >= length)
            break;
        QTextEdit::ExtraSelection marked;
        marked.format.setBackground(mark);
        marked.cursor = QTextCursor(document());
        marked.cursor.setPosition(match.start);
        marked.cursor.setPosition(match.start + match.length, QTextCursor::KeepAnchor);
        m_searchMarks.append(marked);
    }
    setExtraSelections(m_searchMarks);
}

} // namespace lumo
