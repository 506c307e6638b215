#pragma once

#include <QPoint>
#include <QPointer>
#include <QWidget>

#include <optional>

class QTextBlock;

namespace lumo {

class CalcTextView;

/// The answer column beside the text: each line's answer at the height of the line's first
/// visual row, failures in their own colour, a lock mark for locked lines. Only the lines in
/// view are painted. Answers react to the pointer: clicking inserts a reference to the line,
/// dragging carries the answer's text out, right-clicking offers naming and locking.
class DecorationOverlay : public QWidget {
    Q_OBJECT

public:
    explicit DecorationOverlay(CalcTextView* owner);

    CalcTextView* owner() const { return m_owner; }
    /// Where a line's answer is drawn, given the line's first row; empty when it has none.
    QRectF answerRect(int line, const QRectF& firstRow) const;
    /// The text shown for a line, elided to the column when it does not fit.
    QString shownText(int line) const;

    void resultsChanged();
    void textChanged();
    void caretLineChanged();

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    bool event(QEvent* event) override;

private:
    QFont answerFont(bool failure) const;
    int roomLeftOfColumn(int line) const;
    int maximumAnswerWidth(int line) const;
    void paintLine(QPainter& painter, const QTextBlock& block, const QRectF& firstRow);
    void paintLockMark(QPainter& painter, const QRectF& firstRow) const;
    void startDrag(int line);

    QPointer<CalcTextView> m_owner;
    QPoint m_pressPoint;
    int m_caretLine = -1;
};

} // namespace lumo
