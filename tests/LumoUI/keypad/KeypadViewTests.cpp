// The keypad beside a real editor, pressed with the mouse: each key's notification, what it
// does to the text and where it leaves the caret; catalogs, dragging, sizes and languages.

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QToolButton>

#include "LumoUI/editor/EditorFixture.h"
#include "LumoUI/keypad/ArrangedTab.h"
#include "LumoUI/keypad/CatalogPanel.h"
#include "LumoUI/keypad/KeyLayoutStore.h"
#include "LumoUI/keypad/KeypadView.h"
#include "LumoUI/keypad/KeySection.h"
#include "LumoUI/store/UndoCenter.h"

using namespace lumo;
using namespace lumo::test;

namespace {

constexpr QChar caretMark = u'|';

class KeypadTest : public EditorFixture {
protected:
    void SetUp() override {
        EditorFixture::SetUp();
        layouts = new KeyLayoutStore(settings, notifications);
        // Beside the sheet, as in a window.
        host = new QWidget;
        auto* row = new QHBoxLayout(host);
        keypad = new KeypadView(session, settings, notifications, layouts, host);
        row->addWidget(keypad);
        host->resize(420, 640);
        host->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(host));
    }
    void TearDown() override {
        delete host;
        delete layouts;
        EditorFixture::TearDown();
    }

    /// Puts a text in the sheet with the caret where "|" is.
    void start(const QString& marked) {
        const int caret = int(marked.indexOf(caretMark));
        QString text = marked;
        text.remove(caret, 1);
        documents->updateText(*session->sheetID(), text.toStdString());
        QTextCursor cursor = view->textCursor();
        cursor.setPosition(caret);
        view->setTextCursor(cursor);
    }
    /// The sheet's text with "|" at the caret.
    QString marked() const {
        QString text = view->toPlainText();
        return text.insert(view->textCursor().position(), caretMark);
    }
    void click(QAbstractButton* button) {
        ASSERT_NE(button, nullptr);
        QTest::mouseClick(button, Qt::LeftButton);
    }
    KeyButton* shownKey(KeyKind kind, const std::string& group, const std::string& key) {
        keypad->showTab(kind == KeyKind::functions ? KeypadView::Tab::functions : KeypadView::Tab::units);
        KeySection* section = keypad->arrangedTab(kind)->section(group);
        return section ? section->keyButton(key) : nullptr;
    }
    std::vector<std::string> shownIDs(KeyKind kind, const std::string& group) const {
        std::vector<std::string> ids;
        for (KeyButton* button : keypad->arrangedTab(kind)->section(group)->keyButtons())
            ids.push_back(button->key().id);
        return ids;
    }
    /// Drags a key with the mouse, in steps, to a point of another widget. The key follows the
    /// mouse, so every step is placed in screen coordinates.
    void drag(KeyButton* key, QWidget* onto, QPoint at) {
        const QPoint from = key->mapToGlobal(key->rect().center());
        const QPoint to = onto->mapToGlobal(at);
        QTest::mousePress(key, Qt::LeftButton, Qt::NoModifier, key->mapFromGlobal(from));
        for (int step = 1; step <= 6; ++step)
            QTest::mouseMove(key, key->mapFromGlobal(from + (to - from) * step / 6));
        QTest::mouseRelease(key, Qt::LeftButton, Qt::NoModifier, key->mapFromGlobal(to));
        QApplication::processEvents();
    }

    KeyLayoutStore* layouts = nullptr;
    QWidget* host = nullptr;
    KeypadView* keypad = nullptr;
};

TEST_F(KeypadTest, EveryNumberKeyPostsItsNotificationAndEditsTheText) {
    struct Case {
        const char* key;
        const char* notification;
        const char* before;
        const char* after;
    };
    const Case cases[] = {
        {"7", "lumo.insertSnippet", "|", "7|"},
        {"00", "lumo.insertSnippet", "1|", "100|"},
        {".", "lumo.insertSnippet", "1|", "1.|"},
        {"+", "lumo.insertSnippet", "1|", "1+|"},
        {"×", "lumo.insertSnippet", "2|", "2 × |"},
        // Where the sign goes is LineEditor's rule; inside a note it is plain text.
        {"×", "lumo.insertSnippet", "// a|", "// a×|"},
        {"÷", "lumo.insertSnippet", "8|", "8÷|"},
        {"(", "lumo.insertSnippet", "|", "(|"},
        {")", "lumo.insertSnippet", "(1|", "(1)|"},
        {"%", "lumo.insertSnippet", "+ 10|", "+ 10%|"},
        {"^", "lumo.insertSnippet", "2|", "2^|"},
        {"=", "lumo.insertSnippet", "price|", "price = |"},
        {"sign", "lumo.toggleSign", "a = 12|", "a = -12|"},
        {"delete", "lumo.deleteBackward", "12|", "1|"},
        {"return", "lumo.insertSnippet", "if x > 1:|", "if x > 1:\n    |"},
        {"up", "lumo.moveCursor", "12\n3|", "1|2\n3"},
        {"down", "lumo.moveCursor", "1|2\n3", "12\n3|"},
        {"left", "lumo.moveCursor", "12|", "1|2"},
        {"right", "lumo.moveCursor", "|12", "1|2"},
        {"lineStart", "lumo.moveCursor", "1\n23|", "1\n|23"},
        {"lineEnd", "lumo.moveCursor", "1|2\n3", "12|\n3"},
    };
    QSignalSpy posted(notifications, &NotificationCenter::posted);
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.key) + " on " + c.before);
        start(QString::fromUtf8(c.before));
        posted.clear();
        click(keypad->numberKey(c.key));
        ASSERT_EQ(posted.size(), 1);
        EXPECT_EQ(posted.front().front().toString(), QString::fromLatin1(c.notification));
        EXPECT_EQ(marked(), QString::fromUtf8(c.after));
    }
}

TEST_F(KeypadTest, UndoAndRedoKeysFollowTheHistory) {
    UndoCenter* undo = documents->undoCenter();
    typeText(QStringLiteral("12"));
    advanceClock(5);
    ASSERT_TRUE(undo->canUndo());
    EXPECT_TRUE(keypad->numberKey("undo")->isEnabled());
    EXPECT_FALSE(keypad->numberKey("redo")->isEnabled());

    QSignalSpy posted(notifications, &NotificationCenter::posted);
    click(keypad->numberKey("undo"));
    EXPECT_EQ(posted.front().front().toString(), QStringLiteral("lumo.undo"));
    EXPECT_EQ(text(), "");
    EXPECT_TRUE(keypad->numberKey("redo")->isEnabled());
    click(keypad->numberKey("redo"));
    EXPECT_EQ(posted.back().front().toString(), QStringLiteral("lumo.redo"));
    EXPECT_EQ(text(), "12");
}

TEST_F(KeypadTest, FunctionAndUnitKeysInsertSnippetsWithTheCaretInside) {
    struct Case {
        KeyKind kind;
        const char* group;
        const char* key;
        const char* before;
        const char* after;
    };
    const Case cases[] = {
        {KeyKind::functions, "arithmetic", "sqrt", "2 × |", "2 × sqrt(|)"},
        {KeyKind::functions, "lists", "[]", "a = |", "a = [|]"},
        {KeyKind::functions, "text", "\"\"", "|", "\"|\""},
        {KeyKind::functions, "plots", "plot", "|", "plot(|)"},
        {KeyKind::functions, "programs", "if", "|", "if |:\n    "},
        {KeyKind::functions, "programs", "for", "|", "for i in |:\n    "},
        {KeyKind::functions, "programs", "def", "|", "def |():\n    "},
        {KeyKind::functions, "programs", "else", "|", "else:\n    |"},
        // A block inside a block keeps the outer indentation on its body's line.
        {KeyKind::functions, "programs", "while", "def f(x):\n    |", "def f(x):\n    while |:\n        "},
        {KeyKind::units, "length", "mm", "120|", "120 mm|"},
        {KeyKind::units, "length", "in", "3|", "3 inch|"},
        {KeyKind::units, "area", "畳", "6 |", "6 畳|"},
        {KeyKind::units, "currency", "円", "82000|", "82000 円|"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.key);
        start(QString::fromUtf8(c.before));
        click(shownKey(c.kind, c.group, c.key));
        EXPECT_EQ(marked(), QString::fromUtf8(c.after));
    }
    start(QStringLiteral("5 km|"));
    click(keypad->arrangedTab(KeyKind::units)->conversionKey());
    EXPECT_EQ(marked(), QStringLiteral("5 km in |"));
}

TEST_F(KeypadTest, NamedValuesBecomeKeysThatAddThemselves) {
    start(QStringLiteral("price = 1200\nqty = 3\nbroken = 1 +\nprice|"));
    QStringList names;
    for (KeyButton* key : keypad->namedValueKeys())
        names.append(QString::fromStdString(key->key().label));
    EXPECT_EQ(names, (QStringList{"price", "qty"})) << "failing lines give no key";
    EXPECT_TRUE(keypad->namedValueKeys().front()->isVisible());

    QSignalSpy posted(notifications, &NotificationCenter::posted);
    click(keypad->namedValueKeys().at(1));
    EXPECT_TRUE(posted.front().at(1).toMap().value("isNamedValue").toBool());
    EXPECT_EQ(marked(), QStringLiteral("price = 1200\nqty = 3\nbroken = 1 +\nprice + qty|"));

    start(QStringLiteral("1 + 2|"));
    EXPECT_TRUE(keypad->namedValueKeys().isEmpty());
}

TEST_F(KeypadTest, TooltipsNameTheKeyAndItsShortcut) {
    const std::pair<KeyButton*, QString> cases[] = {
        {keypad->numberKey("7"), "Digit 7 (7)"},
        {keypad->numberKey("delete"), "Delete (Backspace)"},
        {keypad->numberKey("lineStart"), "Start of line (Home)"},
        {keypad->numberKey("undo"),
         "Undo (" + QKeySequence(QKeySequence::Undo).toString(QKeySequence::NativeText) + ")"},
        {keypad->numberKey("sign"), "Change sign"},
        {shownKey(KeyKind::functions, "arithmetic", "sqrt"), "Square root"},
        {shownKey(KeyKind::units, "length", "mm"), "1 mm = 0.001 m; also ミリ"},
    };
    for (const auto& [key, tip] : cases) {
        ASSERT_NE(key, nullptr);
        EXPECT_EQ(key->toolTip(), tip);
    }
}

TEST_F(KeypadTest, DraggingAKeyReordersItsSectionAndIsStored) {
    KeyButton* mm = shownKey(KeyKind::units, "length", "mm");
    KeySection* length = keypad->arrangedTab(KeyKind::units)->section("length");
    ASSERT_EQ(shownIDs(KeyKind::units, "length").at(3), "km");
    const QPoint kmSlot = length->keyButton("km")->geometry().center();
    drag(mm, length, kmSlot);

    const std::vector<std::string> order = shownIDs(KeyKind::units, "length");
    EXPECT_EQ(std::vector<std::string>(order.begin(), order.begin() + 4),
              (std::vector<std::string>{"cm", "m", "km", "mm"}));
    EXPECT_EQ(settings->keyLayouts().at("units").at("length").at(3), "mm");
    EXPECT_EQ(documents->document().keyLayouts.at("units").at("length").at(3), "mm");
    EXPECT_EQ(text(), "") << "a drag types nothing";

    // Let go on the catalog button, the key leaves the tab.
    length = keypad->arrangedTab(KeyKind::units)->section("length");
    drag(length->keyButton("cm"), length, length->catalogButton()->geometry().center());
    EXPECT_EQ(shownIDs(KeyKind::units, "length").front(), "m");
    EXPECT_FALSE(layouts->arrangement(KeyKind::units).isShown("length", "cm"));
}

TEST_F(KeypadTest, CatalogsListEveryKeyShowAndHideAndAreRemembered) {
    keypad->showTab(KeypadView::Tab::functions);
    click(keypad->arrangedTab(KeyKind::functions)->section("trigonometry")->catalogButton());
    CatalogPanel* catalog = keypad->catalog();
    ASSERT_NE(catalog, nullptr);
    EXPECT_EQ(settings->viewPreference("lumo.keypadPanel", {}).toString(),
              QStringLiteral("functions.trigonometry"));

    // Pressing a key in the catalog types it.
    start(QStringLiteral("|"));
    click(catalog->keyButton("atan"));
    EXPECT_EQ(marked(), QStringLiteral("atan(|)"));

    // Unchecking takes the key off the tab; checking puts it back, last.
    click(catalog->shownBox("sin"));
    EXPECT_FALSE(layouts->arrangement(KeyKind::functions).isShown("trigonometry", "sin"));
    click(keypad->catalog()->shownBox("sin"));
    EXPECT_EQ(shownIDs(KeyKind::functions, "trigonometry").back(), "sin");

    // Another keypad opens on the same catalog; going back closes it for both.
    {
        KeypadView second(session, settings, notifications, layouts);
        ASSERT_NE(second.catalog(), nullptr);
        EXPECT_EQ(second.catalog()->groupID(), "trigonometry");
        EXPECT_EQ(second.currentTab(), KeypadView::Tab::functions);
    }
    click(keypad->catalog()->resetButton());
    EXPECT_TRUE(layouts->arrangement(KeyKind::functions).isDefault());
    click(keypad->catalog()->backButton());
    EXPECT_EQ(keypad->catalog(), nullptr);
    EXPECT_EQ(settings->viewPreference("lumo.keypadPanel", {}).toString(), QString());
}

TEST_F(KeypadTest, AnArrangementFromElsewhereIsShownAtOnce) {
    KeyArrangement arrangement = layouts->arrangement(KeyKind::units);
    arrangement.move("area", "畳", 0);
    arrangement.hide("area", "坪");
    // Another window's keypad, or a merge, writes the settings and posts the change.
    settings->setKeyLayouts({{"units", arrangement.panels()}}, Timestamp::now());
    notifications->post(notification::keyLayoutChanged);
    EXPECT_EQ(shownIDs(KeyKind::units, "area").front(), "畳");
    const auto area = shownIDs(KeyKind::units, "area");
    EXPECT_EQ(std::count(area.begin(), area.end(), "坪"), 0);
}

TEST_F(KeypadTest, TheSizeSettingSizesTheKeypad) {
    int previousWidth = 0;
    for (KeypadSizeSetting size :
         {KeypadSizeSetting::small, KeypadSizeSetting::medium, KeypadSizeSetting::large}) {
        settings->setKeypadSize(size);
        QApplication::processEvents();
        const KeypadMetrics metrics = KeypadMetrics::forSize(size);
        EXPECT_EQ(keypad->width(), metrics.panelWidth());
        EXPECT_EQ(keypad->numberKey("7")->height(), metrics.keyHeight);
        keypad->showTab(KeypadView::Tab::units);
        QApplication::processEvents();
        EXPECT_EQ(keypad->arrangedTab(KeyKind::units)->section("length")->keyButton("mm")->height(),
                  metrics.keyHeight);
        EXPECT_GT(keypad->width(), previousWidth);
        previousWidth = keypad->width();
        keypad->showTab(KeypadView::Tab::numbers);
    }
}

TEST_F(KeypadTest, TheLanguageRelabelsTabsSectionsAndTooltips) {
    settings->setLanguage(AppLanguage::japanese);
    EXPECT_EQ(keypad->tabButton(KeypadView::Tab::units)->text(), QStringLiteral("単位"));
    EXPECT_EQ(keypad->numberKey("delete")->toolTip(), QStringLiteral("1 文字消す (Backspace)"));
    keypad->showTab(KeypadView::Tab::functions);
    EXPECT_EQ(keypad->arrangedTab(KeyKind::functions)->section("trigonometry")->findChild<QLabel*>()->text(),
              QStringLiteral("三角関数"));
    settings->setLanguage(AppLanguage::english);
    EXPECT_EQ(keypad->tabButton(KeypadView::Tab::units)->text(), QStringLiteral("Units"));
}

} // namespace
