#include <QAccessible>
#include <QClipboard>
#include <QInputMethodEvent>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QScrollBar>
#include <QSignalSpy>

#include "EditorFixture.h"
#include "LumoUI/editor/DecorationOverlay.h"
#include "LumoUI/editor/NameLineDialog.h"
#include "LumoUI/editor/ResultColumnHandle.h"

using namespace lumo;
using namespace lumo::test;

namespace {

using SheetEditorTest = EditorFixture;

TEST_F(SheetEditorTest, AnswersSitBesideTheFirstRowOfTheirLines) {
    const QString longLine =
        QStringLiteral("1 + 2 + 3 + 4 + 5 + 6 + 7 + 8 + 9 + 10 + 11 + 12 + 13 + 14 + 15 + 16 + 17 + "
                       "18 + 19 + 20 + 21 + 22 + 23 + 24 + 25 + 26 + 27 + 28 + 29 + 30");
    typeLines({"price = 1200", "// a note", "", longLine, "price * 3", "税込 = price * 1.1", "2 +"});
    ASSERT_EQ(session->results().size(), 7u);

    const QTextBlock wrapped = view->document()->findBlockByNumber(3);
    ASSERT_GT(wrapped.layout()->lineCount(), 1) << "the long line should wrap";
    const QRect viewport = view->viewport()->geometry();
    const QRect overlay = view->overlay()->geometry();
    for (int line : {0, 3, 4, 5}) {
        const QRectF answer = view->answerRect(line);
        ASSERT_FALSE(answer.isEmpty()) << "line " << line;
        // The caret at the line's start marks its first row, independently of the column.
        const QRect start = view->cursorRect(QTextCursor(view->document()->findBlockByNumber(line)));
        EXPECT_NEAR(answer.center().y(), start.center().y(), 2) << "line " << line;
        EXPECT_GE(overlay.x() + answer.left(), viewport.right()) << "line " << line;
        EXPECT_LE(overlay.x() + answer.right(), view->width()) << "line " << line;
    }
    // Comment and blank lines show nothing; the line after the wrapped one is below all its rows.
    EXPECT_TRUE(view->answerRect(1).isEmpty());
    EXPECT_TRUE(view->answerRect(2).isEmpty());
    const QRect lastRow = view->cursorRect(QTextCursor(wrapped.document()->findBlockByNumber(4)));
    EXPECT_GT(view->answerRect(4).top(), view->answerRect(3).bottom());
    EXPECT_NEAR(view->answerRect(4).center().y(), lastRow.center().y(), 2);
    EXPECT_TRUE(view->answer(6)->isFailure());
    EXPECT_EQ(view->answer(4)->text, "3,600");
}

TEST_F(SheetEditorTest, ALongAnswerRunsOnOverThePaperOfItsRowAndIsCutWhereTextFillsIt) {
    settings->setResultColumnWidth(84);
    const QString list = QStringLiteral("[1200, 34500, 678000, 9100000, 12345678]");
    typeLines({"xs = " + list, "xs", "xs * 2 + xs * 3 + xs * 4 + xs * 5 + xs * 6 + xs * 7 + xs * 8", "2 +",
               "sum("});
    const QRect viewport = view->viewport()->geometry();
    const QPoint overlay = view->overlay()->pos();
    // Where each line's first row of text ends, in the view's coordinates.
    const auto textEnd = [&](int line) {
        const QTextBlock block = view->document()->findBlockByNumber(line);
        return viewport.x() + view->firstRowRect(line).left() +
               block.layout()->lineAt(0).naturalTextRect().right();
    };
    struct Case {
        int line;
        bool whole; // shown without "…"
    };
    const Case cases[] = {{1, true}, {2, false}, {3, true}};
    for (const Case& c : cases) {
        const QRectF answer = view->answerRect(c.line).translated(overlay);
        EXPECT_EQ(!view->overlay()->shownText(c.line).endsWith(u'…'), c.whole) << c.line;
        EXPECT_GT(answer.left(), textEnd(c.line) + 10)
            << "the answer stays clear of its text, line " << c.line;
        if (c.whole) {
            EXPECT_LT(answer.left(), viewport.right()) << "line " << c.line << " runs on over the paper";
        }
    }

    // Over the paper the answer answers the pointer as it does in the column.
    const QRectF answer = view->answerRect(1).translated(overlay);
    const QPoint onPaper = QPoint(int(answer.left()) + 8, int(answer.center().y())) - viewport.topLeft();
    QTest::mouseMove(view->viewport(), onPaper);
    EXPECT_EQ(view->viewport()->cursor().shape(), Qt::PointingHandCursor);
    QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, onPaper);
    const QStringList lines = view->toPlainText().split(u'\n');
    EXPECT_EQ(lines.value(1), "a = xs");
    EXPECT_EQ(lines.value(4), "sum(a");
}

TEST_F(SheetEditorTest, ClickingAnAnswerInsertsItsNameAtTheCaret) {
    struct Case {
        QStringList lines;
        int clicked;
        const char* expected;
    };
    const Case cases[] = {
        {{"price = 1200", "3 *"}, 0, "price = 1200\n3 * price"},
        {{"price = 1200", "3"}, 0, "price = 1200\n3 price"},
        {{"1200", "3 * "}, 0, "a = 1200\n3 * a"},
        {{"4 * 5", "tax = 0.1", "1 +"}, 0, "a = 4 * 5\ntax = 0.1\n1 + a"},
        {{"1200", "max(2,"}, 0, "a = 1200\nmax(2, a"},
        {{"1200", "[2, 3] + ["}, 0, "a = 1200\n[2, 3] + [a"},
    };
    for (const Case& c : cases) {
        view->selectAll();
        QTest::keyClick(view, Qt::Key_Delete);
        typeLines(c.lines);
        const std::string before = sheetText();
        const QPoint at = answerPoint(c.clicked);
        QTest::mouseMove(view->overlay(), at);
        EXPECT_EQ(view->overlay()->cursor().shape(), Qt::PointingHandCursor);
        QTest::mouseClick(view->overlay(), Qt::LeftButton, {}, at);
        EXPECT_EQ(text(), c.expected);
        EXPECT_EQ(sheetText(), c.expected);
        EXPECT_EQ(view->textCursor().position(), textLength()) << "the caret follows the reference";
        // Naming and inserting are one step of the sheet's history.
        notifications->post(notification::undo);
        EXPECT_EQ(sheetText(), before) << c.expected;
        EXPECT_EQ(text(), before);
    }
}

TEST_F(SheetEditorTest, TheTutorialIsShownFromItsTopAndEverySheetTakesTypingAtItsEnd) {
    DocumentStore::Options options;
    options.source = DocumentStore::Source::starter;
    DocumentStore tutorial(options, nullptr, nullptr, settings);
    ASSERT_TRUE(tutorial.usingStarterDocument());
    SheetSession reader(&tutorial);
    SheetEditor opened(&reader, settings, nullptr);
    opened.resize(600, 200);
    opened.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&opened));
    ASSERT_GT(opened.textView()->verticalScrollBar()->maximum(), 0) << "the tutorial is longer than the view";
    QApplication::processEvents();
    EXPECT_EQ(opened.textView()->verticalScrollBar()->value(), 0);
    EXPECT_EQ(opened.textView()->textCursor().position(), opened.textView()->toPlainText().size())
        << "what the user types goes below the tutorial";

    // The fixture's document is the user's: another of its sheets opens at its end.
    const Uuid other = documents->document().sheets.at(1).id;
    ASSERT_NE(other, *session->sheetID());
    session->showSheet(other);
    QApplication::processEvents();
    EXPECT_EQ(view->textCursor().position(), textLength());
}

TEST_F(SheetEditorTest, DraggingTheColumnEdgeResizesWithinBounds) {
    typeLines({"1200 * 3"});
    int announced = 0;
    notifications->observe(notification::resultWidthChanged, editor, [&] { ++announced; });
    ResultColumnHandle* handle = view->columnHandle();
    EXPECT_EQ(handle->cursor().shape(), Qt::SizeHorCursor);
    const QPoint grip = handle->rect().center();
    const int textWidthBefore = view->viewport()->width();

    struct Step {
        int dx;
        double expected;
    };
    // The editor is 900 wide: the column may grow to 900 - 150 = 750, capped at 560.
    const Step steps[] = {{-100, 280}, {+250, 84}, {-500, 560}, {-1000, 560}, {+440, 120}};
    for (const Step& step : steps) {
        // The handle moves with the edge while the pointer moves on the screen.
        const QPointF start = handle->mapToGlobal(QPointF(grip));
        const QPointF end = start + QPointF(step.dx, 0);
        const auto send = [&](QEvent::Type type, QPointF global, Qt::MouseButton button,
                              Qt::MouseButtons buttons) {
            QMouseEvent event(type, handle->mapFromGlobal(global), global, button, buttons, {});
            QApplication::sendEvent(handle, &event);
        };
        send(QEvent::MouseButtonPress, start, Qt::LeftButton, Qt::LeftButton);
        send(QEvent::MouseMove, (start + end) / 2, Qt::NoButton, Qt::LeftButton);
        send(QEvent::MouseMove, end, Qt::NoButton, Qt::LeftButton);
        send(QEvent::MouseButtonRelease, end, Qt::LeftButton, Qt::NoButton);
        EXPECT_DOUBLE_EQ(settings->resultColumnWidth(), step.expected) << step.dx;
    }
    EXPECT_GE(announced, 5);
    EXPECT_EQ(settings->viewPreference("lumo.resultColumnWidth", 0).toDouble(), 120);
    EXPECT_NE(view->viewport()->width(), textWidthBefore);
    EXPECT_LE(view->overlay()->width(), view->width());
    EXPECT_NEAR(view->answerRect(0).right() + view->overlay()->x(),
                view->overlay()->geometry().right() - CalcTextView::columnInset, 2);
}

TEST_F(SheetEditorTest, NamingAndRenamingThroughTheDialog) {
    typeLines({"1200", "2 * 3", "\"1200\" // 1200"});
    rightClick(view->overlay(), answerPoint(1));
    QMenu* menu = openMenu(view);
    ASSERT_TRUE(menu);
    EXPECT_EQ(menuLabels(menu).front(), "Name This Line…");
    menu->actions().front()->trigger();
    menu->close();
    NameLineDialog* dialog = visibleChild<NameLineDialog>(editor);
    ASSERT_TRUE(dialog);

    // Which names are refused is the naming rule's test; a refused name keeps the dialog open.
    dialog->nameField()->clear();
    QTest::keyClicks(dialog->nameField(), "Sqrt");
    QTest::keyClick(dialog->nameField(), Qt::Key_Return);
    EXPECT_TRUE(dialog->isVisible());
    EXPECT_EQ(dialog->refusal(), "“Sqrt” is a function name and can’t be used");
    dialog->nameField()->clear();
    QTest::keyClicks(dialog->nameField(), "area");
    QTest::keyClick(dialog->nameField(), Qt::Key_Return);
    EXPECT_FALSE(dialog->isVisible());
    EXPECT_EQ(text(), "1200\narea = 2 * 3\n\"1200\" // 1200");

    typeLines({"", "area * 2 + \"area\" // area"});
    rightClick(view->overlay(), answerPoint(1));
    menu = openMenu(view);
    ASSERT_TRUE(menu);
    EXPECT_EQ(menuLabels(menu).front(), "Rename…");
    menu->actions().front()->trigger();
    menu->close();
    dialog = visibleChild<NameLineDialog>(editor);
    ASSERT_TRUE(dialog);
    EXPECT_EQ(dialog->nameField()->text(), "area");
    dialog->nameField()->clear();
    QTest::keyClicks(dialog->nameField(), "size");
    advanceClock(2);
    QTest::keyClick(dialog->nameField(), Qt::Key_Return);
    EXPECT_EQ(text(), "1200\nsize = 2 * 3\n\"1200\" // 1200\nsize * 2 + \"area\" // area");
    notifications->post(notification::undo);
    EXPECT_EQ(text(), "1200\narea = 2 * 3\n\"1200\" // 1200\narea * 2 + \"area\" // area");
}

TEST_F(SheetEditorTest, TogglingCommentsTakesTheCaretsLineOrTheSelectedLinesInOneStep) {
    typeLines({"a = 1200", "a * 3", "7"});
    const std::string original = text();
    QTextCursor caret(view->document()->findBlockByNumber(1));
    caret.movePosition(QTextCursor::EndOfBlock);
    view->setTextCursor(caret);
    editor->toggleComments();
    EXPECT_EQ(text(), "a = 1200\n// a * 3\n7");
    EXPECT_EQ(sheetText(), text());
    EXPECT_EQ(view->textCursor().position(), int(std::string_view("a = 1200\n// a * 3").size()))
        << "the caret stays after the same character";
    notifications->post(notification::undo);
    EXPECT_EQ(sheetText(), original);

    // A selection that ends at the start of a line leaves that line alone, and stays selected.
    QTextCursor selection(view->document());
    selection.setPosition(2);
    selection.setPosition(view->document()->findBlockByNumber(2).position(), QTextCursor::KeepAnchor);
    view->setTextCursor(selection);
    editor->toggleComments();
    EXPECT_EQ(text(), "// a = 1200\n// a * 3\n7");
    EXPECT_EQ(view->textCursor().selectedText(), QStringLiteral("// a = 1200\u2029// a * 3"));
    editor->toggleComments();
    EXPECT_EQ(text(), original);
}

TEST_F(SheetEditorTest, PastingAnEmptyClipboardChangesNothing) {
    typeLines({"1200 * 3"});
    const std::string before = text();
    // What a fresh X session's clipboard holds before anything is copied: no format at all.
    QApplication::clipboard()->setMimeData(new QMimeData);
    QTest::keySequence(view, QKeySequence::Paste);
    EXPECT_EQ(text(), before);
    QApplication::clipboard()->setText("+ 1");
    QTest::keySequence(view, QKeySequence::Paste);
    EXPECT_EQ(text(), before + "+ 1");
}

TEST_F(SheetEditorTest, LockedLinesRefuseEveryEdit) {
    typeLines({"a1 = 10", "b1 = 20", "c1 = 30"});
    view->lockToggled(1);
    ASSERT_TRUE(view->isLineLocked(1));
    EXPECT_EQ(documents->sheet(*session->sheetID())->lockedLines, std::vector<std::int64_t>{1});
    QSignalSpy refused(view, &CalcTextView::editRefused);
    const std::string original = text();

    const auto placeCaret = [&](int line, int column, int selectTo = -1) {
        QTextCursor cursor(view->document()->findBlockByNumber(line));
        cursor.setPosition(cursor.position() + column);
        if (selectTo >= 0)
            cursor.setPosition(selectTo, QTextCursor::KeepAnchor);
        view->setTextCursor(cursor);
    };
    struct Attempt {
        const char* what;
        int line, column, selectTo; // where the caret is, and the selection's end or -1
        std::function<void()> act;
    };
    QApplication::clipboard()->setText("99");
    const Attempt attempts[] = {
        {"typing", 1, 3, -1, [&] { typeText("5"); }},
        {"typing at the end", 1, 7, -1, [&] { typeText("5"); }},
        {"backspace joining the next line", 2, 0, -1, [&] { QTest::keyClick(view, Qt::Key_Backspace); }},
        {"delete joining from above", 0, 7, -1, [&] { QTest::keyClick(view, Qt::Key_Delete); }},
        {"paste", 1, 2, -1, [&] { QTest::keySequence(view, QKeySequence::Paste); }},
        {"cut across", 0, 3, 12, [&] { QTest::keySequence(view, QKeySequence::Cut); }},
        {"return inside", 1, 2, -1, [&] { QTest::keyClick(view, Qt::Key_Return); }},
        {"an input-method commit", 1, 2, -1,
         [&] {
             QInputMethodEvent commit;
             commit.setCommitString("五");
             QApplication::sendEvent(view, &commit);
         }},
        {"an answer", 1, 7, -1,
         [&] { QTest::mouseClick(view->overlay(), Qt::LeftButton, {}, answerPoint(0)); }},
        {"commenting out", 0, 0, 20, [&] { editor->toggleComments(); }},
    };
    for (const Attempt& attempt : attempts) {
        const qsizetype before = refused.size();
        placeCaret(attempt.line, attempt.column, attempt.selectTo);
        attempt.act();
        EXPECT_EQ(text(), original) << attempt.what;
        EXPECT_EQ(refused.size(), before + 1) << attempt.what;
    }
    EXPECT_EQ(sheetText(), original);

    // Lines inserted and removed above take the lock along with its text.
    placeCaret(0, 0);
    typeText("x0 = 1");
    QTest::keyClick(view, Qt::Key_Return);
    EXPECT_TRUE(view->isLineLocked(2));
    EXPECT_EQ(documents->sheet(*session->sheetID())->lockedLines, std::vector<std::int64_t>{2});
    placeCaret(1, 0, 0);
    QTest::keyClick(view, Qt::Key_Backspace);
    EXPECT_EQ(text(), "a1 = 10\nb1 = 20\nc1 = 30");
    EXPECT_EQ(documents->sheet(*session->sheetID())->lockedLines, std::vector<std::int64_t>{1});
    placeCaret(2, 7);
    typeText("0");
    EXPECT_EQ(text(), "a1 = 10\nb1 = 20\nc1 = 300") << "other lines stay editable";
}

TEST_F(SheetEditorTest, TypingRules) {
    struct Case {
        const char* typed; // "\n" presses return, "\t" tab, "\b" backspace
        const char* expected;
    };
    const Case cases[] = {
        {"1234567", "1,234,567"},
        {"x = 12345 * 2", "x = 12,345 * 2"},
        {"12345\b", "1,234"},
        {"\"1234567\"", "\"1234567\""},
        {"for i in range(3):\ni", "for i in range(3):\n    i"},
        {"\t\tx\n", "        x\n        "},
        {"\t\t  \b\b", "    "},
        {"\t\t \b", "        "},
        {"\t\b", ""},
    };
    settings->setGroupsDigits(true);
    for (const Case& c : cases) {
        view->selectAll();
        QTest::keyClick(view, Qt::Key_Delete);
        for (const char* key = c.typed; *key; ++key) {
            if (*key == '\n')
                QTest::keyClick(view, Qt::Key_Return);
            else if (*key == '\t')
                QTest::keyClick(view, Qt::Key_Tab);
            else if (*key == '\b')
                QTest::keyClick(view, Qt::Key_Backspace);
            else
                typeText(QString(QChar(*key)));
        }
        EXPECT_EQ(text(), c.expected) << c.typed;
        EXPECT_EQ(view->textCursor().position(), textLength()) << c.typed;
    }
}

TEST_F(SheetEditorTest, InputMethodCompositionIsOneEdit) {
    typeLines({"price = 1200"});
    QTest::keyClick(view, Qt::Key_Return);
    QSignalSpy edits(view, &CalcTextView::edited);
    for (const char* preedit : {"ぜ", "ぜい", "ぜいこ"}) {
        QInputMethodEvent composing(QString::fromUtf8(preedit), {});
        QApplication::sendEvent(view, &composing);
    }
    EXPECT_EQ(edits.size(), 0) << "composition does not change the sheet";
    EXPECT_EQ(text(), "price = 1200\n");
    QInputMethodEvent commit;
    commit.setCommitString(QString::fromUtf8("税込"));
    QApplication::sendEvent(view, &commit);
    EXPECT_EQ(edits.size(), 1);
    typeText(" = price * 1.1");
    EXPECT_EQ(sheetText(), "price = 1200\n税込 = price * 1.1");
    EXPECT_EQ(view->answer(1)->text, "1,320");
}

TEST_F(SheetEditorTest, TheLanguageSwitchedLiveRelabelsTheMenusAndAnOpenDialog) {
    typeLines({"1200", "a2 = 3"});
    const auto labelsAt = [&](QWidget* on, QPoint at) {
        rightClick(on, at);
        QMenu* menu = openMenu(view);
        const QStringList texts = menu ? menuLabels(menu) : QStringList{};
        if (menu)
            menu->close();
        return texts;
    };
    EXPECT_EQ(labelsAt(view->overlay(), answerPoint(0)),
              QStringList({"Name This Line…", "Copy Answer", "Lock Line"}));
    settings->setLanguage(AppLanguage::japanese);
    EXPECT_EQ(labelsAt(view->overlay(), answerPoint(0)),
              QStringList({"名前を付ける…", "答えをコピー", "行をロック"}));
    EXPECT_EQ(labelsAt(view->overlay(), answerPoint(1)).front(), "名前を変える…");
    EXPECT_TRUE(labelsAt(view->viewport(), QPoint(20, 5)).contains("すべてを選択"));

    // A naming dialog left open follows too, its refusal included.
    settings->setLanguage(AppLanguage::english);
    rightClick(view->overlay(), answerPoint(0));
    QMenu* menu = openMenu(view);
    ASSERT_TRUE(menu);
    menu->actions().front()->trigger();
    menu->close();
    NameLineDialog* dialog = visibleChild<NameLineDialog>(editor);
    ASSERT_TRUE(dialog);
    dialog->nameField()->clear();
    QTest::keyClicks(dialog->nameField(), "2x");
    QTest::keyClick(dialog->nameField(), Qt::Key_Return);
    settings->setLanguage(AppLanguage::japanese);
    EXPECT_EQ(dialog->windowTitle(), "この行に名前を付ける");
    EXPECT_EQ(dialog->refusal(), "名前には文字と数字だけが使えます（先頭は文字）");
    dialog->reject();
    settings->setLanguage(AppLanguage::english);
}

TEST_F(SheetEditorTest, AnswersAreAccessibleObjectsTiedToTheirLines) {
    typeLines({"price = 1200", "// a note", "price * 3", "2 +"});
    QAccessibleInterface* column = QAccessible::queryAccessibleInterface(view->overlay());
    ASSERT_TRUE(column);
    ASSERT_EQ(column->childCount(), 3);
    struct Expected {
        int line;
        const char* description;
    };
    const Expected expected[] = {{0, "Line 1: price = 1200"}, {2, "Line 3: price * 3"}, {3, "Line 4: 2 +"}};
    for (int i = 0; i < 3; ++i) {
        QAccessibleInterface* answer = column->child(i);
        ASSERT_TRUE(answer);
        EXPECT_EQ(answer->text(QAccessible::Name), view->answer(expected[i].line)->text);
        EXPECT_FALSE(answer->text(QAccessible::Name).isEmpty());
        EXPECT_EQ(answer->text(QAccessible::Description), QString::fromUtf8(expected[i].description));
        EXPECT_EQ(answer->parent(), column);
        EXPECT_EQ(column->indexOfChild(answer), i);
        const QRect global = answer->rect();
        EXPECT_EQ(column->childAt(global.center().x(), global.center().y()), answer);
    }
    EXPECT_EQ(column->child(0)->text(QAccessible::Name), "1,200");
}

} // namespace
