#pragma once

#include <QPlainTextEdit>
#include <QPointer>
#include <QTextBlock>

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "LumoKit/editing/SyntaxHighlighter.h"
#include "LumoKit/sheet/LineResult.h"
#include "LumoUI/editor/LineAnswer.h"
#include "LumoUI/find/TextSearch.h"
#include "LumoUI/settings/Theme.h"
#include "LumoUI/store/SharedResults.h"

namespace lumo {

class AppSettings;
class DecorationOverlay;
class PlotLayer;
class ResultColumnHandle;

/// The calculation text view: plain text on the left, each line's answer in a column on the
/// right. It takes the typing rules of the sheet (indentation, four-space tabs, digit groups,
/// locked lines) and tells its owner about every edit through edited(), once per user action.
///
/// Undo and redo are not the text control's: the view asks for them with undoRequested() and
/// redoRequested(), and the sheet's history answers by changing the text.
class CalcTextView : public QPlainTextEdit {
    Q_OBJECT

public:
    /// Gap between the text's layout width and the column, and the margin right of it.
    static constexpr int columnGap = 18;
    static constexpr int columnInset = 8;

    CalcTextView(AppSettings* settings, QWidget* parent = nullptr);
    ~CalcTextView() override;

    DecorationOverlay* overlay() const { return m_overlay; }
    ResultColumnHandle* columnHandle() const { return m_handle; }
    PlotLayer* plots() const { return m_plots; }

    /// Whether plot lines show their plots in a band under them ("lumo.showGraph").
    bool showsPlots() const;
    void setShowsPlots(bool shows);
    /// The room under a line taken by its plot, in pixels; zero for other lines.
    qreal bandHeight(int line) const;

    /// The per-line results, matched to lines by index; there may be more or fewer than lines
    /// while an evaluation is under way.
    void setResults(SharedResults results);
    const std::vector<LineResult>& results() const { return *m_results; }
    /// The answer of a line, formatted once per set of results.
    const std::optional<LineAnswer>& answer(int line) const;

    void setLockedLines(const std::vector<std::int64_t>& lines);
    std::vector<std::int64_t> lockedLines() const;
    bool isLineLocked(int line) const;
    bool hasLockedLines() const { return m_lockCount > 0; }

    /// Replaces the text with as small an edit as possible, keeping the caret where it was
    /// relative to the text around it; no edited() is sent.
    void replaceTextQuietly(const QString& text);
    /// Sets the whole text (another sheet); no edited() is sent.
    void setTextWhole(const QString& text);

    /// Inserts text at the selection by the sheet's editing rules; refused with a beep when
    /// the selection touches a locked line. Returns whether the text went in.
    bool insertAtSelection(const QString& text);
    /// Replaces the whole text as one edit and puts the caret at `caret`.
    void replaceAllAsOneEdit(const QString& text, int caret);

    /// The width of the answer column, as the settings hold it.
    double columnWidth() const;
    /// Where the column starts inside the overlay, and where the text's layout ends.
    int columnLeftInOverlay() const;
    /// The first visual row of a line, in viewport (and overlay) coordinates; empty when the
    /// line does not exist.
    QRectF firstRowRect(int line) const;
    /// The rectangle of a line's answer inside the overlay; empty when it has none.
    QRectF answerRect(int line) const;
    /// The line whose answer lies under a point of the overlay.
    std::optional<int> answerLineAt(const QPointF& overlayPoint) const;
    /// Calls `visit(block, firstRow)` for each line that intersects the rows top…bottom.
    template <typename Visit> void forEachVisibleLine(qreal top, qreal bottom, Visit visit) const;

    std::optional<int> hoveredResultLine() const { return m_hoveredResultLine; }
    std::optional<int> pressedResultLine() const { return m_pressedResultLine; }
    void setHoveredResultLine(std::optional<int> line);
    void setPressedResultLine(std::optional<int> line);
    int caretLine() const;
    /// The first and last line the selection covers, or the caret's line twice. A selection that
    /// ends at the start of a line leaves that line out.
    std::pair<int, int> selectedLines() const;

    /// Colours and appearance of the text and column.
    void setAppearance(Appearance appearance);
    Appearance appearance() const { return m_appearance; }
    /// The user's syntax colours, which the plots borrow.
    void setSyntaxColors(const SyntaxColorOverrides& colors);

    /// Recomputes the text's layout width and the column's place; called when the width setting
    /// or the view's size changes.
    void relayout();

    /// Builds the right-click menu for a point in the viewport or on an answer.
    QMenu* createContextMenu(std::optional<int> answerLine, int textLine);

    /// Marks the find bar's matches in the text, every one of them up to a cap; an empty list
    /// clears them.
    void showSearchMatches(const QList<TextMatch>& matches);
    /// How many matches are marked at most: a sheet of thousands would slow every repaint.
    static constexpr int markedMatchLimit = 2000;

public slots:
    /// Cutting, pasting and deleting a selection that touches a locked line are refused.
    void cut();
    void paste();
    void deleteSelection();

signals:
    /// The user changed the text (typing, paste, cut, an input-method commit, a command).
    void edited();
    /// An edit was refused because it would change a locked line.
    void editRefused();
    void undoRequested();
    void redoRequested();
    void answerClicked(int line);
    void copyAnswerRequested(int line);
    void nameRequested(int line);
    void lockToggled(int line);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void inputMethodEvent(QInputMethodEvent* event) override;
    void insertFromMimeData(const QMimeData* source) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;
    bool event(QEvent* event) override;
    bool viewportEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    friend class DecorationOverlay;
    friend class PlotLayer;
    class EditGroup;

    bool touchesLockedLine(int from, int to) const;
    bool refuseIfLocked(int from, int to);
    bool handleIndentationKeys(QKeyEvent* event);
    std::optional<std::pair<int, int>> editRangeOf(QKeyEvent* event) const;
    void regroupAfterEdit(const QString& lineBefore, int blockNumber);
    void contentsChanged(int position, int removed, int added);
    void updateOverlayArea(const QRect& rect, int dy);
    QPointF viewportToOverlay(const QPointF& point) const;
    bool passToAnswer(QMouseEvent* event);
    void markSearchMatches();
    void updatePlotStyle();

    QPointer<AppSettings> m_settings;
    DecorationOverlay* m_overlay = nullptr;
    ResultColumnHandle* m_handle = nullptr;
    PlotLayer* m_plots = nullptr;
    SyntaxColorOverrides m_syntaxColors;
    SharedResults m_results = noResults();
    QList<TextMatch> m_searchMatches;
    QList<QTextEdit::ExtraSelection> m_searchMarks;
    mutable std::vector<std::optional<std::optional<LineAnswer>>> m_answers;
    int m_lockCount = 0;
    std::optional<int> m_hoveredResultLine;
    std::optional<int> m_pressedResultLine;
    Appearance m_appearance = Appearance::dark;
    int m_editDepth = 0;
    bool m_pendingEdit = false;
    bool m_quiet = false;
};

template <typename Visit> void CalcTextView::forEachVisibleLine(qreal top, qreal bottom, Visit visit) const {
    QTextBlock block = firstVisibleBlock();
    const QPointF offset = contentOffset();
    while (block.isValid()) {
        const QRectF geometry = blockBoundingGeometry(block).translated(offset);
        if (geometry.top() > bottom)
            break;
        if (block.isVisible() && geometry.bottom() >= top)
            visit(block, geometry);
        block = block.next();
    }
}

} // namespace lumo
