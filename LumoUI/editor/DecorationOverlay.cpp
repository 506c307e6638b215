#include "LumoUI/editor/DecorationOverlay.h"

#include <QApplication>
#include <QDrag>
#include <QMenu>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QTextBlock>
#include <QToolTip>

#include <algorithm>
#include <cmath>

#include "LumoUI/editor/CalcTextView.h"
#include "LumoUI/editor/OverlayAccessible.h"

namespace lumo {

namespace {

constexpr qreal chipPadding = 6;
constexpr qreal lockMarkWidth = 16;
// The least paper left between a line's text and an answer that runs on beside it.
constexpr qreal textClearance = 28;

QColor blend(const QColor& a, const QColor& b, qreal amount) {
    return QColor::fromRgbF(float(a.redF() + (b.redF() - a.redF()) * amount),
                            float(a.greenF() + (b.greenF() - a.greenF()) * amount),
                            float(a.blueF() + (b.blueF() - a.blueF()) * amount));
}

} // namespace

DecorationOverlay::DecorationOverlay(CalcTextView* owner) : QWidget(owner), m_owner(owner) {
    setMouseTracking(true);
    setAutoFillBackground(false);
    setAttribute(Qt::WA_OpaquePaintEvent);
    OverlayAccessible::install();
}

void DecorationOverlay::resultsChanged() {
    update();
}

void DecorationOverlay::textChanged() {
    // Lines may have moved under the pointer.
    if (m_owner) {
        m_owner->m_hoveredResultLine.reset();
        m_owner->m_pressedResultLine.reset();
    }
}

void DecorationOverlay::caretLineChanged() {
    if (!m_owner)
        return;
    const int line = m_owner->caretLine();
    if (line == m_caretLine)
        return;
    // Only the rows of the old and new caret lines need painting again.
    for (int changed : {m_caretLine, line}) {
        const QRectF row = m_owner->firstRowRect(changed);
        if (!row.isEmpty()) {
            const QTextBlock block = m_owner->document()->findBlockByNumber(changed);
            const QRectF geometry =
                m_owner->blockBoundingGeometry(block).translated(m_owner->contentOffset());
            update(QRect(0, int(std::floor(geometry.top())), width(), int(std::ceil(geometry.height())) + 1));
        }
    }
    m_caretLine = line;
}

QFont DecorationOverlay::answerFont(bool failure) const {
    QFont font = m_owner->font();
    if (failure)
        font.setPointSizeF(font.pointSizeF() * 0.86);
    else
        font.setWeight(QFont::DemiBold);
    return font;
}

int DecorationOverlay::maximumAnswerWidth(int line) const {
    const int lockRoom = m_owner->isLineLocked(line) ? int(lockMarkWidth) : 0;
    return std::max(0, int(std::lround(m_owner->columnWidth())) - lockRoom) + roomLeftOfColumn(line);
}

// The paper between the end of the line's first row and the column, less a gap that keeps a
// long answer clear of the text it answers; the column itself is the lock mark's when the line
// is locked, so a locked line's answer stays inside it.
int DecorationOverlay::roomLeftOfColumn(int line) const {
    if (m_owner->isLineLocked(line))
        return 0;
    const QTextBlock block = m_owner->document()->findBlockByNumber(line);
    const QTextLayout* layout = block.isValid() ? block.layout() : nullptr;
    if (!layout || layout->lineCount() == 0)
        return 0;
    const qreal left = m_owner->blockBoundingGeometry(block).translated(m_owner->contentOffset()).left();
    const qreal textEnd = left + layout->lineAt(0).naturalTextRect().right() + textClearance;
    return std::max(0, int(m_owner->columnLeftInOverlay() - textEnd));
}

QRectF DecorationOverlay::answerRect(int line, const QRectF& firstRow) const {
    if (!m_owner || firstRow.isEmpty())
        return {};
    const std::optional<LineAnswer>& answer = m_owner->answer(line);
    if (!answer)
        return {};
    const QFontMetricsF metrics(answerFont(answer->isFailure()));
    const qreal natural = metrics.horizontalAdvance(answer->text) + 2 * chipPadding;
    const qreal chip = std::min<qreal>(natural, maximumAnswerWidth(line));
    const qreal right = width() - CalcTextView::columnInset;
    return QRectF(right - chip, firstRow.top(), chip, firstRow.height());
}

QString DecorationOverlay::shownText(int line) const {
    const std::optional<LineAnswer>& answer = m_owner ? m_owner->answer(line) : std::nullopt;
    if (!answer)
        return {};
    const QFontMetrics metrics(answerFont(answer->isFailure()));
    return metrics.elidedText(answer->text, Qt::ElideRight, maximumAnswerWidth(line) - int(2 * chipPadding));
}

void DecorationOverlay::paintEvent(QPaintEvent* event) {
    if (!m_owner)
        return;
    QPainter painter(this);
    const QColor base = palette().color(QPalette::Base);
    const QColor text = palette().color(QPalette::Text);
    painter.fillRect(event->rect(), base);
    // The column itself is a shade apart from the paper, with the gap in the paper's colour.
    const QRectF column(m_owner->columnLeftInOverlay() - 4, 0, width() - m_owner->columnLeftInOverlay() + 4,
                        height());
    painter.fillRect(column, blend(base, text, m_owner->appearance() == Appearance::dark ? 0.035 : 0.025));

    const QRect area = event->rect();
    m_owner->forEachVisibleLine(
        area.top(), area.bottom() + 1,
        [&](const QTextBlock& block, const QRectF& geometry) { paintLine(painter, block, geometry); });
}

void DecorationOverlay::paintLine(QPainter& painter, const QTextBlock& block, const QRectF& geometry) {
    const int line = block.blockNumber();
    const QTextLayout* layout = block.layout();
    QRectF row(0, geometry.top(), width(), geometry.height());
    if (layout && layout->lineCount() > 0) {
        const QTextLine first = layout->lineAt(0);
        row = QRectF(0, geometry.top() + first.y(), width(), first.height());
    }
    // The caret's band covers the line's rows, not the plot under them nor the margin below the
    // last line, as the text control's own band does.
    if (line == m_owner->caretLine()) {
        qreal height = geometry.height() - m_owner->bandHeight(line);
        if (layout && layout->lineCount() > 0) {
            const QTextLine last = layout->lineAt(layout->lineCount() - 1);
            height = std::min(height, last.y() + last.height());
        }
        // A tint rather than a colour, so that the band still reads over the column's shade.
        QColor band = palette().color(QPalette::Text);
        band.setAlphaF(m_owner->appearance() == Appearance::dark ? 0.045f : 0.036f);
        painter.fillRect(QRectF(0, geometry.top(), width(), height), band);
    }
    if (m_owner->isLineLocked(line))
        paintLockMark(painter, row);

    const std::optional<LineAnswer>& answer = m_owner->answer(line);
    if (!answer)
        return;
    const QRectF chip = answerRect(line, row);
    const bool dark = m_owner->appearance() == Appearance::dark;
    const QColor text = palette().color(QPalette::Text);
    if (!answer->isFailure() &&
        (m_owner->hoveredResultLine() == line || m_owner->pressedResultLine() == line)) {
        const QColor accent = dark ? QColor(0x6F, 0xA0, 0xFF) : QColor(0x2F, 0x6F, 0xED);
        QColor fill = accent;
        fill.setAlphaF(m_owner->pressedResultLine() == line ? 0.34f : 0.16f);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(fill);
        painter.drawRoundedRect(chip.adjusted(0, 1, 0, -1), 5, 5);
    }
    QColor ink = text;
    if (answer->isFailure())
        ink = dark ? QColor(0xFF, 0x85, 0x7A) : QColor(0xC0, 0x39, 0x2B);
    painter.setFont(answerFont(answer->isFailure()));
    painter.setPen(ink);
    const QRectF inner = chip.adjusted(chipPadding, 0, -chipPadding, 0);
    // The answer shares the text's baseline when it is set in the same size.
    painter.drawText(inner, Qt::AlignRight | Qt::AlignVCenter | Qt::TextSingleLine, shownText(line));
}

void DecorationOverlay::paintLockMark(QPainter& painter, const QRectF& row) const {
    // A small padlock drawn as lines, so it looks the same in every font.
    const qreal size = std::min<qreal>(row.height() * 0.5, 11);
    const qreal x = m_owner->columnLeftInOverlay() + 2;
    const qreal y = row.center().y() - size / 2;
    QColor ink = palette().color(QPalette::Text);
    ink.setAlphaF(0.55f);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(ink, 1.3));
    painter.setBrush(Qt::NoBrush);
    const QRectF body(x, y + size * 0.42, size, size * 0.58);
    QPainterPath shackle;
    shackle.moveTo(x + size * 0.22, body.top());
    shackle.lineTo(x + size * 0.22, y + size * 0.22);
    shackle.arcTo(QRectF(x + size * 0.22, y, size * 0.56, size * 0.44), 180, -180);
    shackle.lineTo(x + size * 0.78, body.top());
    painter.drawPath(shackle);
    painter.setBrush(ink);
    painter.drawRoundedRect(body, 1.5, 1.5);
    painter.restore();
}

void DecorationOverlay::mousePressEvent(QMouseEvent* event) {
    if (!m_owner || event->button() != Qt::LeftButton)
        return QWidget::mousePressEvent(event);
    const std::optional<int> line = m_owner->answerLineAt(event->position());
    m_pressPoint = event->position().toPoint();
    if (line && !m_owner->answer(*line)->isFailure())
        m_owner->setPressedResultLine(line);
}

void DecorationOverlay::mouseMoveEvent(QMouseEvent* event) {
    if (!m_owner)
        return;
    if (const std::optional<int> pressed = m_owner->pressedResultLine()) {
        if ((event->position().toPoint() - m_pressPoint).manhattanLength() >=
            QApplication::startDragDistance()) {
            startDrag(*pressed);
            m_owner->setPressedResultLine(std::nullopt);
        }
        return;
    }
    std::optional<int> line = m_owner->answerLineAt(event->position());
    if (line && m_owner->answer(*line)->isFailure())
        line.reset();
    m_owner->setHoveredResultLine(line);
    setCursor(line ? Qt::PointingHandCursor : Qt::ArrowCursor);
}

void DecorationOverlay::mouseReleaseEvent(QMouseEvent* event) {
    if (!m_owner)
        return;
    const std::optional<int> pressed = m_owner->pressedResultLine();
    m_owner->setPressedResultLine(std::nullopt);
    if (pressed && event->button() == Qt::LeftButton && m_owner->answerLineAt(event->position()) == pressed)
        emit m_owner->answerClicked(*pressed);
}

void DecorationOverlay::leaveEvent(QEvent*) {
    if (m_owner)
        m_owner->setHoveredResultLine(std::nullopt);
}

void DecorationOverlay::contextMenuEvent(QContextMenuEvent* event) {
    if (!m_owner)
        return;
    const std::optional<int> answerLine = m_owner->answerLineAt(event->pos());
    const int textLine = m_owner->cursorForPosition(QPoint(0, event->pos().y())).blockNumber();
    m_owner->createContextMenu(answerLine, textLine)->popup(event->globalPos());
}

void DecorationOverlay::wheelEvent(QWheelEvent* event) {
    if (m_owner)
        m_owner->wheelEvent(event);
}

bool DecorationOverlay::event(QEvent* event) {
    if (event->type() == QEvent::ToolTip && m_owner) {
        auto* help = static_cast<QHelpEvent*>(event);
        const std::optional<int> line = m_owner->answerLineAt(help->pos());
        if (!line) {
            QToolTip::hideText();
            event->ignore();
            return true;
        }
        const LineAnswer& answer = *m_owner->answer(*line);
        const QString tip =
            answer.name.isEmpty() ? answer.text : answer.name + QStringLiteral(" = ") + answer.text;
        QToolTip::showText(help->globalPos(), tip, this,
                           answerRect(*line, m_owner->firstRowRect(*line)).toRect());
        return true;
    }
    return QWidget::event(event);
}

void DecorationOverlay::startDrag(int line) {
    const std::optional<LineAnswer>& answer = m_owner->answer(line);
    if (!answer)
        return;
    auto* data = new QMimeData;
    data->setText(answer->text);
    auto* drag = new QDrag(this);
    drag->setMimeData(data);
    drag->exec(Qt::CopyAction);
}

} // namespace lumo
