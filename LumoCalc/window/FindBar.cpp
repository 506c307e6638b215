#include "LumoCalc/window/FindBar.h"

#include <QBoxLayout>
#include <QCheckBox>
#include <QEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>
#include <QToolButton>

#include <algorithm>

#include "LumoCalc/text/Bilingual.h"
#include "LumoUI/editor/CalcTextView.h"
#include "LumoUI/store/DocumentStore.h"
#include "LumoUI/store/SheetSession.h"

namespace lumo {

namespace {

QString matchCount(int count) {
    if (L10n::isEnglish())
        return count == 1 ? QStringLiteral("1 match") : QStringLiteral("%1 matches").arg(count);
    return QStringLiteral("%1 件").arg(count);
}

QString replacedMessage(int replaced, int skipped) {
    if (L10n::isEnglish()) {
        QString message = replaced == 1 ? QStringLiteral("Replaced 1 match")
                                        : QStringLiteral("Replaced %1 matches").arg(replaced);
        if (skipped > 0)
            message += skipped == 1 ? QStringLiteral("; 1 in a locked line was left alone")
                                    : QStringLiteral("; %1 in locked lines were left alone").arg(skipped);
        return message;
    }
    QString message = QStringLiteral("%1 か所を置き換えました").arg(replaced);
    if (skipped > 0)
        message += QStringLiteral("（ロックされた行の %1 か所はそのままです）").arg(skipped);
    return message;
}

} // namespace

FindBar::FindBar(SheetSession* session, CalcTextView* textView, QWidget* parent)
    : QWidget(parent), m_session(session), m_textView(textView) {
    setObjectName(QStringLiteral("findBar"));
    setAutoFillBackground(true);
    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(8, 4, 8, 4);
    rows->setSpacing(4);

    auto* findRow = new QHBoxLayout;
    m_findField = new QLineEdit(this);
    m_findField->setObjectName(QStringLiteral("findField"));
    m_findField->setClearButtonEnabled(true);
    m_previous = new QToolButton(this);
    m_previous->setArrowType(Qt::UpArrow);
    m_next = new QToolButton(this);
    m_next->setArrowType(Qt::DownArrow);
    m_count = new QLabel(this);
    m_count->setObjectName(QStringLiteral("findCount"));
    m_matchCase = new QCheckBox(this);
    m_wholeWord = new QCheckBox(this);
    m_allSheets = new QCheckBox(this);
    m_close = new QToolButton(this);
    m_close->setText(QStringLiteral("✕"));
    m_close->setAutoRaise(true);
    findRow->addWidget(m_findField, 1);
    findRow->addWidget(m_previous);
    findRow->addWidget(m_next);
    findRow->addWidget(m_count);
    findRow->addWidget(m_matchCase);
    findRow->addWidget(m_wholeWord);
    findRow->addWidget(m_allSheets);
    findRow->addWidget(m_close);
    rows->addLayout(findRow);

    m_replaceRow = new QWidget(this);
    auto* replaceRow = new QHBoxLayout(m_replaceRow);
    replaceRow->setContentsMargins(0, 0, 0, 0);
    m_replaceField = new QLineEdit(m_replaceRow);
    m_replaceField->setObjectName(QStringLiteral("replaceField"));
    m_replace = new QPushButton(m_replaceRow);
    m_replaceAll = new QPushButton(m_replaceRow);
    m_status = new QLabel(m_replaceRow);
    m_status->setObjectName(QStringLiteral("findStatus"));
    // The report of a Replace All can be long: it gets more of the row than the field.
    m_status->setWordWrap(true);
    replaceRow->addWidget(m_replaceField, 2);
    replaceRow->addWidget(m_replace);
    replaceRow->addWidget(m_replaceAll);
    replaceRow->addWidget(m_status, 3);
    rows->addWidget(m_replaceRow);

    // The buttons act without taking the focus from the fields.
    for (QWidget* button :
         {static_cast<QWidget*>(m_previous), static_cast<QWidget*>(m_next), static_cast<QWidget*>(m_close),
          static_cast<QWidget*>(m_replace), static_cast<QWidget*>(m_replaceAll)})
        button->setFocusPolicy(Qt::NoFocus);
    m_replace->setAutoDefault(false);
    m_replaceAll->setAutoDefault(false);

    m_findField->installEventFilter(this);
    m_replaceField->installEventFilter(this);
    connect(m_findField, &QLineEdit::textEdited, this, &FindBar::searchAsTyped);
    connect(m_previous, &QToolButton::clicked, this, &FindBar::findPrevious);
    connect(m_next, &QToolButton::clicked, this, &FindBar::findNext);
    connect(m_close, &QToolButton::clicked, this, &FindBar::dismiss);
    connect(m_replace, &QPushButton::clicked, this, &FindBar::replaceCurrent);
    connect(m_replaceAll, &QPushButton::clicked, this, &FindBar::replaceAll);
    for (QCheckBox* box : {m_matchCase, m_wholeWord, m_allSheets})
        connect(box, &QCheckBox::toggled, this, &FindBar::updateCount);
    if (m_textView) {
        connect(m_textView, &QPlainTextEdit::textChanged, this, &FindBar::updateCount);
        connect(m_textView, &QPlainTextEdit::selectionChanged, this, &FindBar::updateCount);
    }
    if (m_session) {
        connect(m_session, &SheetSession::sheetIDChanged, this, &FindBar::updateCount);
        if (DocumentStore* store = m_session->store())
            connect(store, &DocumentStore::documentChanged, this, &FindBar::updateCount);
    }
    retranslate();
    hide();
}

void FindBar::retranslate() {
    m_findField->setPlaceholderText(pickText("検索", "Find"));
    m_replaceField->setPlaceholderText(pickText("置き換える文字", "Replace with"));
    m_previous->setToolTip(pickText("前を検索（Shift+F3）", "Find Previous (Shift+F3)"));
    m_next->setToolTip(pickText("次を検索（F3）", "Find Next (F3)"));
    m_close->setToolTip(pickText("閉じる（Esc）", "Close (Esc)"));
    m_matchCase->setText(pickText("大文字と小文字を区別", "Match case"));
    m_wholeWord->setText(pickText("単語単位", "Whole word"));
    m_allSheets->setText(pickText("すべてのシート", "In all sheets"));
    m_replace->setText(pickText("置換", "Replace"));
    m_replaceAll->setText(pickText("すべて置換", "Replace All"));
    // The count keeps its room as it changes, so the options beside it stay put.
    const QFontMetrics metrics = m_count->fontMetrics();
    m_count->setMinimumWidth(std::max({metrics.horizontalAdvance(pickText("見つかりません", "No matches")),
                                       metrics.horizontalAdvance(pickText("000 件中 000 件目", "000 of 000")),
                                       metrics.horizontalAdvance(pickText("000 件", "000 matches"))}) +
                             4);
    updateCount();
}

void FindBar::changeEvent(QEvent* event) {
    if (event->type() == QEvent::LanguageChange)
        retranslate();
    QWidget::changeEvent(event);
}

void FindBar::open(Mode mode) {
    retranslate();
    m_replaceRow->setVisible(mode == Mode::replace);
    setStatus({});
    if (m_textView) {
        const QString selected = m_textView->textCursor().selectedText();
        // A selection within one line is what the user wants to find; QTextCursor marks line
        // breaks in a selection with the paragraph separator.
        if (!selected.isEmpty() && !selected.contains(QChar::ParagraphSeparator))
            m_findField->setText(selected);
    }
    show();
    m_findField->setFocus(Qt::ShortcutFocusReason);
    m_findField->selectAll();
    updateCount();
}

void FindBar::dismiss() {
    hide();
    updateCount(); // clears the count and the marks
    if (m_textView)
        m_textView->setFocus(Qt::OtherFocusReason);
}

void FindBar::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape) {
        dismiss();
        return;
    }
    QWidget::keyPressEvent(event);
}

bool FindBar::eventFilter(QObject* watched, QEvent* event) {
    // Return in the find field goes to the next match (with Shift, the previous one), in the
    // replace field it replaces the current match.
    if (event->type() == QEvent::KeyPress) {
        auto* key = static_cast<QKeyEvent*>(event);
        if (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) {
            if (watched == m_replaceField)
                replaceCurrent();
            else if (key->modifiers() & Qt::ShiftModifier)
                findPrevious();
            else
                findNext();
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

SearchQuery FindBar::query() const {
    return SearchQuery{m_findField->text(),
                       m_matchCase->isChecked() ? SearchQuery::Case::sensitive
                                                : SearchQuery::Case::insensitive,
                       m_wholeWord->isChecked() ? SearchQuery::Words::whole : SearchQuery::Words::anywhere};
}

std::vector<Uuid> FindBar::sheetsInScope() const {
    std::vector<Uuid> sheets;
    if (!m_session || !m_session->sheetID())
        return sheets;
    DocumentStore* store = m_session->store();
    if (!m_allSheets->isChecked() || !store) {
        sheets.push_back(*m_session->sheetID());
        return sheets;
    }
    for (const Sheet& sheet : store->document().sheets)
        sheets.push_back(sheet.id);
    return sheets;
}

QList<FindBar::Hit> FindBar::allHits() const {
    QList<Hit> hits;
    const SearchQuery search = query();
    if (search.isEmpty() || !m_session)
        return hits;
    DocumentStore* store = m_session->store();
    for (const Uuid& id : sheetsInScope()) {
        // The shown sheet is searched in the view, whose positions the selection uses.
        QString text;
        if (id == m_session->sheetID() && m_textView)
            text = m_textView->toPlainText();
        else if (const Sheet* sheet = store ? store->sheet(id) : nullptr)
            text = QString::fromStdString(sheet->text);
        for (const TextMatch& match : findMatches(text, search))
            hits.append(Hit{id, match});
    }
    return hits;
}

std::optional<int> FindBar::currentHitIndex(const QList<Hit>& hits) const {
    if (!m_textView || !m_session)
        return std::nullopt;
    const QTextCursor cursor = m_textView->textCursor();
    for (int i = 0; i < hits.size(); ++i) {
        const Hit& hit = hits[i];
        if (hit.sheetID == m_session->sheetID() && hit.match.start == cursor.selectionStart() &&
            hit.match.start + hit.match.length == cursor.selectionEnd())
            return i;
    }
    return std::nullopt;
}

void FindBar::findNext() {
    step(Direction::forward);
}

void FindBar::findPrevious() {
    step(Direction::backward);
}

void FindBar::step(Direction direction) {
    if (!isVisible())
        open(Mode::find);
    const QList<Hit> hits = allHits();
    if (hits.isEmpty() || !m_textView || !m_session) {
        updateCount();
        return;
    }
    const std::vector<Uuid> sheets = sheetsInScope();
    const auto orderOf = [&](const Uuid& id) {
        return int(std::find(sheets.begin(), sheets.end(), id) - sheets.begin());
    };
    const int current = m_session->sheetID() ? orderOf(*m_session->sheetID()) : -1;
    const QTextCursor cursor = m_textView->textCursor();
    if (direction == Direction::forward) {
        for (const Hit& hit : hits) {
            const int order = orderOf(hit.sheetID);
            if ((order == current && hit.match.start >= cursor.selectionEnd()) || order > current)
                return showHit(hit);
        }
        return showHit(hits.first());
    }
    for (auto hit = hits.rbegin(); hit != hits.rend(); ++hit) {
        const int order = orderOf(hit->sheetID);
        if ((order == current && hit->match.start + hit->match.length <= cursor.selectionStart()) ||
            order < current)
            return showHit(*hit);
    }
    showHit(hits.last());
}

void FindBar::showHit(const Hit& hit) {
    if (!m_textView || !m_session)
        return;
    if (m_session->sheetID() != hit.sheetID)
        m_session->showSheet(hit.sheetID);
    QTextCursor cursor(m_textView->document());
    cursor.setPosition(hit.match.start);
    cursor.setPosition(hit.match.start + hit.match.length, QTextCursor::KeepAnchor);
    m_textView->setTextCursor(cursor);
    m_textView->ensureCursorVisible();
    // A sheet just shown restores its scroll position once laid out; the match wins.
    QTimer::singleShot(0, m_textView, [view = m_textView] {
        if (view)
            view->ensureCursorVisible();
    });
    updateCount();
}

void FindBar::searchAsTyped() {
    setStatus({});
    if (!m_textView || query().isEmpty()) {
        updateCount();
        return;
    }
    // Each typed character looks again from where the current match starts.
    QTextCursor cursor = m_textView->textCursor();
    cursor.setPosition(cursor.selectionStart());
    m_textView->setTextCursor(cursor);
    findNext();
}

void FindBar::replaceCurrent() {
    if (!m_session || !m_textView || !m_session->sheetID())
        return;
    DocumentStore* store = m_session->store();
    const QList<Hit> hits = allHits();
    const std::optional<int> index = currentHitIndex(hits);
    if (!index || !store) {
        findNext();
        return;
    }
    const TextMatch match = hits[*index].match;
    if (m_textView->isLineLocked(match.line)) {
        setStatus(
            pickText("ロックされた行なので置き換えません", "That line is locked, so it was left alone"));
        findNext();
        return;
    }
    const QString replacement = m_replaceField->text();
    QString text = m_textView->toPlainText();
    text.replace(match.start, match.length, replacement);
    store->updateText(*m_session->sheetID(), text.toStdString(), StepBreak::always);
    QTextCursor cursor = m_textView->textCursor();
    cursor.setPosition(std::min(match.start + int(replacement.size()), int(text.size())));
    m_textView->setTextCursor(cursor);
    setStatus({});
    findNext();
}

void FindBar::replaceAll() {
    if (!m_session || query().isEmpty())
        return;
    DocumentStore* store = m_session->store();
    if (!store)
        return;
    int replaced = 0;
    int skipped = 0;
    for (const Uuid& id : sheetsInScope()) {
        const Sheet* sheet = store->sheet(id);
        if (!sheet)
            continue;
        const Replacement result = replaceMatches(QString::fromStdString(sheet->text), query(),
                                                  m_replaceField->text(), sheet->lockedLines);
        replaced += result.replaced;
        skipped += result.skipped;
        // One undo step per sheet, whatever the size of the change.
        if (result.replaced > 0)
            store->updateText(id, result.text.toStdString(), StepBreak::always);
    }
    setStatus(replacedMessage(replaced, skipped));
    updateCount();
}

void FindBar::updateCount() {
    if (!isVisible() || query().isEmpty()) {
        m_count->clear();
        markMatches({});
        return;
    }
    const QList<Hit> hits = allHits();
    markMatches(hits);
    if (hits.isEmpty()) {
        m_count->setText(pickText("見つかりません", "No matches"));
        return;
    }
    if (const std::optional<int> index = currentHitIndex(hits)) {
        m_count->setText(L10n::isEnglish()
                             ? QStringLiteral("%1 of %2").arg(*index + 1).arg(hits.size())
                             : QStringLiteral("%2 件中 %1 件目").arg(*index + 1).arg(hits.size()));
        return;
    }
    m_count->setText(matchCount(int(hits.size())));
}

void FindBar::markMatches(const QList<Hit>& hits) {
    if (!m_textView)
        return;
    QList<TextMatch> shown;
    const std::optional<Uuid> sheet = m_session ? m_session->sheetID() : std::nullopt;
    for (const Hit& hit : hits) {
        if (hit.sheetID == sheet)
            shown.append(hit.match);
    }
    m_textView->showSearchMatches(shown);
}

void FindBar::setStatus(const QString& text) {
    m_status->setText(text);
}

} // namespace lumo
