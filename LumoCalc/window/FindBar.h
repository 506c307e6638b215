#pragma once

#include <QPointer>
#include <QWidget>

#include <optional>

#include "LumoKit/document/Uuid.h"
#include "LumoUI/find/TextSearch.h"

class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QToolButton;

namespace lumo {

class CalcTextView;
class SheetSession;

/// The find and replace bar above a window's sheet. It searches the sheet the window shows, or
/// every sheet of the document in tab order, moving the window from sheet to sheet; it shows
/// where the current match stands among all of them. Replacements go to the document store as
/// undoable edits, one undo step per sheet for Replace All, and never touch a locked line.
class FindBar : public QWidget {
    Q_OBJECT

public:
    FindBar(SheetSession* session, CalcTextView* textView, QWidget* parent = nullptr);

    enum class Mode { find, replace };
    /// Shows the bar with the find field focused, taking a selection of one line as the pattern.
    void open(Mode mode);
    /// Hides the bar and gives the focus back to the text.
    void dismiss();

    void findNext();
    void findPrevious();
    void replaceCurrent();
    void replaceAll();
    /// Relabels the bar in the language in force.
    void retranslate();

    QLineEdit* findField() const { return m_findField; }
    QLineEdit* replaceField() const { return m_replaceField; }
    QCheckBox* matchCaseBox() const { return m_matchCase; }
    QCheckBox* wholeWordBox() const { return m_wholeWord; }
    QCheckBox* allSheetsBox() const { return m_allSheets; }
    QPushButton* replaceButton() const { return m_replace; }
    QPushButton* replaceAllButton() const { return m_replaceAll; }
    /// "3 of 12", or how many matches there are when the selection is on none.
    QLabel* countLabel() const { return m_count; }
    /// What the last replacement did.
    QLabel* statusLabel() const { return m_status; }

protected:
    void keyPressEvent(QKeyEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    // A match somewhere in the document.
    struct Hit {
        Uuid sheetID;
        TextMatch match;
    };
    enum class Direction { forward, backward };

    SearchQuery query() const;
    std::vector<Uuid> sheetsInScope() const;
    QList<Hit> allHits() const;
    std::optional<int> currentHitIndex(const QList<Hit>& hits) const;
    void step(Direction direction);
    void showHit(const Hit& hit);
    void searchAsTyped();
    void updateCount();
    /// Marks in the text the matches on the sheet it shows.
    void markMatches(const QList<Hit>& hits);
    void setStatus(const QString& text);

    QPointer<SheetSession> m_session;
    QPointer<CalcTextView> m_textView;
    QLineEdit* m_findField = nullptr;
    QLineEdit* m_replaceField = nullptr;
    QWidget* m_replaceRow = nullptr;
    QCheckBox* m_matchCase = nullptr;
    QCheckBox* m_wholeWord = nullptr;
    QCheckBox* m_allSheets = nullptr;
    QLabel* m_count = nullptr;
    QLabel* m_status = nullptr;
    QToolButton* m_previous = nullptr;
    QToolButton* m_next = nullptr;
    QToolButton* m_close = nullptr;
    QPushButton* m_replace = nullptr;
    QPushButton* m_replaceAll = nullptr;
};

} // namespace lumo
