#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QContextMenuEvent>
#include <QMenu>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

#include "LumoKit/base/Language.h"
#include "LumoUI/editor/CalcTextView.h"
#include "LumoUI/editor/SheetEditor.h"
#include "LumoUI/settings/AppSettings.h"
#include "LumoUI/settings/NotificationCenter.h"
#include "LumoUI/store/DocumentStore.h"
#include "LumoUI/store/SheetSession.h"
#include "support/QtTestSupport.h"

namespace lumo::test {

/// The visible child of `owner` of that kind (the menu a right click opened, a dialog), or null.
template <class Widget> Widget* visibleChild(QWidget* owner) {
    for (Widget* child : owner->findChildren<Widget*>()) {
        if (child->isVisible())
            return child;
    }
    return nullptr;
}

inline QMenu* openMenu(QWidget* owner) {
    return visibleChild<QMenu>(owner);
}

/// The texts of a menu's items, separators left out.
inline QStringList menuLabels(const QMenu* menu) {
    QStringList texts;
    for (const QAction* action : menu->actions()) {
        if (!action->isSeparator())
            texts << action->text();
    }
    return texts;
}

/// A context menu asked for at `at`, as a right click asks for it.
inline void rightClick(QWidget* widget, QPoint at) {
    QContextMenuEvent event(QContextMenuEvent::Mouse, at, widget->mapToGlobal(at));
    QApplication::sendEvent(widget, &event);
}

/// One QApplication for every GUI test program, with a fixed font.
inline const auto* const widgetEnvironment = ::testing::AddGlobalTestEnvironment(
    new ApplicationEnvironment<QApplication>("EditorTests", QFont(QStringLiteral("DejaVu Sans"), 11)));

/// A window-sized editor on a fresh document whose settings and data live in a temporary
/// folder. A failing test leaves a picture of the editor in "failed-screenshots".
class EditorFixture : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(m_folder.isValid());
        QApplication::setEffectEnabled(Qt::UI_AnimateMenu, false);
        m_store = std::make_unique<QSettings>(m_folder.filePath(QStringLiteral("settings.ini")),
                                              QSettings::IniFormat);
        notifications = new NotificationCenter;
        settings = new AppSettings(*m_store, notifications);
        settings->setLanguage(AppLanguage::english);
        settings->setAppearance(AppearanceSetting::light);
        settings->acceptTerms();
        settings->setGroupsDigits(false);
        DocumentStore::Options options;
        options.source = DocumentStore::Source::file;
        options.storageDirectory = m_folder.filePath(QStringLiteral("data"));
        options.clock = [this] { return Timestamp{m_seconds}; };
        documents = new DocumentStore(options, notifications, nullptr, settings);
        session = new SheetSession(documents);
        session->activate();
        documents->updateText(*session->sheetID(), "");
        editor = new SheetEditor(session, settings, notifications);
        editor->resize(900, 500);
        editor->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(editor));
        view = editor->textView();
        view->setFocus();
    }

    void TearDown() override {
        if (HasFailure() && editor)
            saveFailureScreenshot(editor);
        delete editor;
        delete session;
        delete documents;
        delete settings;
        delete notifications;
        L10n::setCurrent(AppLanguage::english);
    }

    /// Types text key by key; characters beyond ASCII arrive as keys that carry their text.
    void typeText(const QString& text) {
        for (QChar c : text) {
            if (c.unicode() < 128)
                QTest::keyClick(view, c.toLatin1());
            else
                QTest::sendKeyEvent(QTest::Click, view, Qt::Key_unknown, QString(c), Qt::NoModifier);
        }
    }

    /// Types lines as a person would, pressing return between them.
    void typeLines(const QStringList& lines) {
        for (qsizetype i = 0; i < lines.size(); ++i) {
            if (i > 0)
                QTest::keyClick(view, Qt::Key_Return);
            typeText(lines[i]);
        }
        QApplication::processEvents();
    }

    /// Moves the store's clock on, so that the next edit starts a new undo step.
    void advanceClock(double seconds) { m_seconds += seconds; }

    std::string text() const { return view->toPlainText().toStdString(); }
    int textLength() const { return int(view->toPlainText().size()); }
    std::string sheetText() const { return documents->sheet(*session->sheetID())->text; }

    /// Puts the caret at the end of a line.
    void caretToLineEnd(int line) {
        QTextCursor cursor(view->document()->findBlockByNumber(line));
        cursor.movePosition(QTextCursor::EndOfBlock);
        view->setTextCursor(cursor);
    }

    /// A point of the overlay in the middle of a line's answer.
    QPoint answerPoint(int line) const { return view->answerRect(line).center().toPoint(); }

    NotificationCenter* notifications = nullptr;
    AppSettings* settings = nullptr;
    DocumentStore* documents = nullptr;
    SheetSession* session = nullptr;
    SheetEditor* editor = nullptr;
    CalcTextView* view = nullptr;

private:
    QTemporaryDir m_folder;
    std::unique_ptr<QSettings> m_store;
    double m_seconds = 1'700'000'000;
};

} // namespace lumo::test
