#include <QFile>
#include <QSignalSpy>
#include <QSplitter>

#include <functional>

#include "LumoCalc/dialogs/ConfirmationDialog.h"
#include "LumoCalc/dialogs/HelpWindow.h"
#include "LumoCalc/dialogs/TermsDialog.h"
#include "LumoCalc/settings/SettingsWindow.h"
#include "LumoCalc/window/Commands.h"
#include "LumoCalc/window/MainWindow.h"
#include "LumoUI/persistence/DocumentFile.h"
#include "ShellTestSupport.h"

namespace lumo::test {
namespace {

class Shell : public ShellTest {};

TEST_F(Shell, TermsComeFirstUntilAccepted) {
    struct Case {
        const char* answer;
        std::function<void(TermsDialog*)> give;
        bool opensWindow;
    };
    const Case cases[] = {
        {"return key", [](TermsDialog* terms) { QTest::keyClick(terms, Qt::Key_Return); }, true},
        {"accept", [](TermsDialog* terms) { QTest::mouseClick(terms->acceptButton(), Qt::LeftButton); },
         true},
        {"decline", [](TermsDialog* terms) { QTest::mouseClick(terms->declineButton(), Qt::LeftButton); },
         false},
        {"escape key", [](TermsDialog* terms) { QTest::keyClick(terms, Qt::Key_Escape); }, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.answer);
        Application& app = launch({QStringLiteral("-lumoFixture")}, Terms::notAccepted);
        QSignalSpy quitting(&app, &Application::quitting);
        TermsDialog* terms = app.termsDialog();
        ASSERT_NE(terms, nullptr);
        ASSERT_TRUE(QTest::qWaitForWindowExposed(terms));
        EXPECT_TRUE(app.windows().isEmpty()) << "nothing comes before the terms";
        c.give(terms);
        QCoreApplication::processEvents();
        EXPECT_EQ(app.windows().size(), c.opensWindow ? 1 : 0);
        EXPECT_EQ(quitting.size(), c.opensWindow ? 0 : 1);
        m_app.reset();

        // The next start shows the terms again only when they were declined.
        QSettings store(settingsFile(), QSettings::IniFormat);
        EXPECT_EQ(AppSettings(store, nullptr).hasAcceptedTerms(), c.opensWindow);
        store.remove(QStringLiteral("lumo.acceptedTermsVersion"));
    }
}

TEST_F(Shell, TermsFollowTheLanguageChosenOnThem) {
    Application& app = launch({QStringLiteral("-lumoFixture")}, Terms::notAccepted);
    TermsDialog* terms = app.termsDialog();
    ASSERT_NE(terms, nullptr);
    EXPECT_EQ(terms->acceptButton()->text(), QStringLiteral("Accept"));
    EXPECT_TRUE(TermsDialog::termsHtml().contains(QStringLiteral("No warranty")));
    app.settings()->setLanguage(AppLanguage::japanese);
    EXPECT_EQ(terms->acceptButton()->text(), QStringLiteral("同意する"));
    EXPECT_TRUE(TermsDialog::termsHtml().contains(QStringLiteral("保証しないこと")));
}

TEST_F(Shell, ClosingHelpOrSettingsHandsTheKeyboardBackToTheWindow) {
    Application& app = launch();
    MainWindow* window = app.windows().value(0);
    ASSERT_NE(window, nullptr);
    struct Case {
        const char* name;
        QKeySequence keys;
        std::function<QWidget*()> opened;
    };
    const Case cases[] = {
        {"help", QKeySequence(Qt::Key_F1), [&] { return static_cast<QWidget*>(app.helpWindow()); }},
        {"settings", QKeySequence(Qt::CTRL | Qt::Key_Comma),
         [&] { return static_cast<QWidget*>(app.settingsWindow()); }},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        activate(window);
        QTest::keySequence(window, c.keys);
        QWidget* side = c.opened();
        ASSERT_NE(side, nullptr);
        ASSERT_TRUE(QTest::qWaitForWindowActive(side));
        side->close();
        EXPECT_TRUE(QTest::qWaitFor([&] { return QApplication::activeWindow() == window; }, 2000));
    }

    // The application's commands work from either of them as from the main window.
    QTest::keySequence(window, QKeySequence(Qt::CTRL | Qt::Key_Comma));
    ASSERT_TRUE(QTest::qWaitForWindowActive(app.settingsWindow()));
    QTest::keySequence(app.settingsWindow(), QKeySequence(Qt::Key_F1));
    ASSERT_TRUE(QTest::qWaitForWindowActive(app.helpWindow()));
    QTest::keySequence(app.helpWindow(), QKeySequence(Qt::CTRL | Qt::Key_N));
    EXPECT_EQ(app.windows().size(), 2);
    app.helpWindow()->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(app.helpWindow()));
    QSignalSpy quitting(&app, &Application::quitting);
    QTest::keySequence(app.helpWindow(), shortcutsFor(commandDefinition(Command::quit)).value(0));
    EXPECT_EQ(quitting.size(), 1);
}

TEST_F(Shell, PendingSaveIsWrittenOnQuitAndOnDeactivation) {
    const std::pair<const char*, std::function<void(Application&, MainWindow*)>> triggers[] = {
        {"quit command",
         [](Application&, MainWindow* window) { QTest::keyClick(window, Qt::Key_Q, Qt::ControlModifier); }},
        {"last window closed",
         [](Application& app, MainWindow* window) {
             window->close();
             QCoreApplication::processEvents();
             EXPECT_TRUE(app.isQuitting()) << "closing the last window quits";
         }},
        {"another window activated", [](Application& app, MainWindow*) { activate(app.openWindow()); }},
    };
    for (const auto& [what, trigger] : triggers) {
        SCOPED_TRACE(what);
        QDir(dataDirectory()).removeRecursively();
        Application& app = launch({});
        MainWindow* window = app.windows().value(0);
        ASSERT_NE(window, nullptr);
        activate(window);
        window->editor()->textView()->selectAll();
        type(window, QStringLiteral("2 + 3"));
        trigger(app, window);
        // Well before the save delay has passed, the text is on disk.
        QFile saved(QDir(dataDirectory()).filePath(QLatin1String(documentFile::fileName)));
        ASSERT_TRUE(saved.open(QIODevice::ReadOnly));
        EXPECT_TRUE(saved.readAll().contains("2 + 3"));
        m_app.reset();
    }
}

TEST_F(Shell, TheWindowAndItsSideColumnComeBackAsTheyWereLeft) {
    const auto sideColumn = [](MainWindow* window) {
        return window->findChild<QWidget*>(QStringLiteral("sideColumn"));
    };
    Application& app = launch();
    MainWindow* window = app.windows().value(0);
    window->resize(1000, 640);
    activate(window);
    auto* splitter = qobject_cast<QSplitter*>(sideColumn(window)->parentWidget());
    ASSERT_NE(splitter, nullptr);
    QList<int> sizes = splitter->sizes();
    const int index = splitter->indexOf(sideColumn(window));
    sizes[index + 1] += sizes[index] - 310;
    sizes[index] = 310;
    splitter->setSizes(sizes);
    ASSERT_EQ(sideColumn(window)->width(), 310);
    QTest::keyClick(window, Qt::Key_Q, Qt::ControlModifier);
    m_app.reset();

    Application& again = launch();
    MainWindow* reopened = again.windows().value(0);
    activate(reopened);
    EXPECT_EQ(reopened->size(), QSize(1000, 640));
    EXPECT_EQ(sideColumn(reopened)->width(), 310);
}

// Which window's sheet undo is available for is the store's rule; here the keys reach it.
TEST_F(Shell, UndoFollowsTheActiveWindow) {
    Application& app = launch();
    MainWindow* first = app.windows().value(0);
    activate(first);
    const QString original = textOf(first);
    first->editor()->textView()->moveCursor(QTextCursor::End);
    type(first, QStringLiteral("7 × 6"));

    // The second window shows another sheet, which has nothing to undo.
    QTest::keyClick(first, Qt::Key_N, Qt::ControlModifier);
    ASSERT_EQ(app.windows().size(), 2);
    MainWindow* second = app.windows().value(1);
    activate(second);
    QTest::keyClick(second, Qt::Key_T, Qt::ControlModifier);
    QTest::keyClick(second->editor()->textView(), Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(textOf(first), original + QStringLiteral("7 × 6")) << "undo in one window left the other alone";

    activate(first);
    QTest::keyClick(first->editor()->textView(), Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(textOf(first), original);
    QTest::keyClick(first->editor()->textView(), Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(textOf(first), original + QStringLiteral("7 × 6"));
}

TEST_F(Shell, TwoWindowsOnOneSheetShowEachOthersTyping) {
    Application& app = launch();
    MainWindow* first = app.windows().value(0);
    MainWindow* second = app.openWindow();
    ASSERT_EQ(first->session()->sheetID(), second->session()->sheetID());

    activate(first);
    first->editor()->textView()->moveCursor(QTextCursor::End);
    type(first, QStringLiteral("12 × 3"));
    EXPECT_EQ(textOf(second), textOf(first));

    activate(second);
    second->editor()->textView()->moveCursor(QTextCursor::End);
    QTest::keyClick(second->editor()->textView(), Qt::Key_Return);
    type(second, QStringLiteral("40 + 2"));
    EXPECT_EQ(textOf(first), textOf(second));
    EXPECT_TRUE(textOf(first).endsWith(QStringLiteral("12 × 3\n40 + 2")));
}

TEST_F(Shell, DestructiveCommandsAskFirst) {
    enum class Asked { clearSheet, eraseAll };
    struct Case {
        Asked command;
        bool confirm;
    };
    const Case cases[] = {
        {Asked::clearSheet, true},
        {Asked::clearSheet, false},
        {Asked::eraseAll, true},
        {Asked::eraseAll, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(int(c.command) * 2 + int(c.confirm));
        Application& app = launch();
        MainWindow* window = app.windows().value(0);
        activate(window);
        const std::size_t sheets = app.store()->document().sheets.size();
        const QString before = textOf(window);
        ASSERT_FALSE(before.isEmpty());

        window->action(c.command == Asked::clearSheet ? Command::clearSheet : Command::eraseAllContent)
            ->trigger();
        ConfirmationDialog* dialog = app.confirmation();
        ASSERT_NE(dialog, nullptr);
        if (c.command == Asked::eraseAll)
            EXPECT_EQ(dialog->buttonRole(dialog->confirmButton()), QMessageBox::DestructiveRole);
        else
            EXPECT_EQ(dialog->informativeText(), QString::fromStdString(*app.store()->clearSheetPrompt()));
        EXPECT_EQ(dialog->defaultButton(), dialog->cancelButton()) << "Return must not destroy anything";
        QTest::mouseClick(c.confirm ? dialog->confirmButton() : dialog->cancelButton(), Qt::LeftButton);
        QCoreApplication::processEvents();

        EXPECT_EQ(textOf(window).isEmpty(), c.confirm);
        const bool erased = c.confirm && c.command == Asked::eraseAll;
        EXPECT_EQ(app.store()->document().sheets.size(), erased ? 1u : sheets);
        EXPECT_FALSE(app.store()->clearSheetPrompt().has_value());
        if (c.confirm && c.command == Asked::clearSheet) {
            activate(window);
            QTest::keyClick(window, Qt::Key_Z, Qt::ControlModifier);
            EXPECT_EQ(textOf(window), before) << "clearing a sheet is undoable";
        }
        m_app.reset();
    }
}

} // namespace
} // namespace lumo::test
