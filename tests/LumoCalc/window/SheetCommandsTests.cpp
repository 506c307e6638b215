#include <QClipboard>
#include <QDialogButtonBox>
#include <QFile>
#include <QFileDialog>
#include <QInputDialog>
#include <QPointer>
#include <QPrintPreviewDialog>
#include <QPrintPreviewWidget>
#include <QSpinBox>
#include <QTextBlock>

#include "LumoUI/export/SheetExport.h"
#include "ShellTestSupport.h"

namespace lumo::test {
namespace {

class SheetCommands : public ShellTest {
protected:
    MainWindow* openWindow() {
        MainWindow* window = launch().windows().first();
        activate(window);
        return window;
    }
    static QByteArray recording(const char* name) {
        QFile file(QStringLiteral(LUMO_TEST_DATA_DIR "/export/") + QLatin1String(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    QTemporaryDir m_files;
};

TEST_F(SheetCommands, GoToLineMovesTheCaret) {
    MainWindow* window = openWindow();
    QTest::keyClick(window->editor()->textView(), Qt::Key_G, Qt::ControlModifier);
    auto* dialog = window->findChild<QInputDialog*>(QStringLiteral("goToLineDialog"));
    ASSERT_NE(dialog, nullptr);
    ASSERT_TRUE(dialog->isVisible());
    EXPECT_EQ(dialog->intMaximum(), 18) << "the sample's first sheet has 18 lines";
    auto* field = dialog->findChild<QSpinBox*>();
    ASSERT_NE(field, nullptr);
    QTest::keyClick(field, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(field, QStringLiteral("12"));
    QTest::keyClick(field, Qt::Key_Return);
    CalcTextView* text = window->editor()->textView();
    EXPECT_EQ(text->textCursor().blockNumber(), 11);
    EXPECT_EQ(text->textCursor().block().text(), QStringLiteral("2 h + 30 min"));
    EXPECT_TRUE(text->hasFocus());
}

// The clipboard gets what the text export writes, aligned as the lumo tool prints it.
TEST_F(SheetCommands, CopySheetWithAnswers) {
    MainWindow* window = openWindow();
    QGuiApplication::clipboard()->clear();
    window->perform(Command::copySheetWithAnswers);
    const QByteArray expected = recording("getting-started-en.txt");
    ASSERT_FALSE(expected.isEmpty());
    EXPECT_EQ(QGuiApplication::clipboard()->text().toStdString(), expected.toStdString());
}

TEST_F(SheetCommands, ExportThroughTheSaveDialog) {
    MainWindow* window = openWindow();
    struct Case {
        ExportFormat format;
        QString typedName;
        QString written;
        QByteArray startsWith;
    };
    const Case cases[] = {
        {ExportFormat::csv, QStringLiteral("first"), QStringLiteral("first.csv"),
         "line,name,answer,unit,number\r\n"},
        {ExportFormat::pdf, QStringLiteral("second"), QStringLiteral("second.pdf"), "%PDF"},
        {ExportFormat::markdown, QStringLiteral("third.md"), QStringLiteral("third.md"),
         "# Getting Started\n"},
        // A suffix the user types wins over the chosen filter.
        {ExportFormat::text, QStringLiteral("fourth.csv"), QStringLiteral("fourth.csv"), "line,name"},
    };
    for (const Case& c : cases) {
        window->perform(Command::exportSheet);
        QPointer<QFileDialog> dialog = window->findChild<QFileDialog*>(QStringLiteral("exportDialog"));
        ASSERT_NE(dialog, nullptr);
        ASSERT_TRUE(dialog->isVisible());
        EXPECT_EQ(dialog->nameFilters().size(), 4);
        dialog->selectNameFilter(fileFilterOf(c.format));
        emit dialog->filterSelected(fileFilterOf(c.format));
        dialog->setDirectory(m_files.path());
        dialog->selectFile(c.typedName);
        auto* buttons = dialog->findChild<QDialogButtonBox*>();
        ASSERT_NE(buttons, nullptr);
        QPushButton* save = buttons->button(QDialogButtonBox::Save);
        ASSERT_TRUE(save && save->isEnabled());
        QTest::mouseClick(save, Qt::LeftButton);
        QCoreApplication::processEvents();
        QFile written(m_files.filePath(c.written));
        ASSERT_TRUE(written.open(QIODevice::ReadOnly)) << c.written.toStdString();
        EXPECT_TRUE(written.readAll().startsWith(c.startsWith)) << c.written.toStdString();
        delete dialog.data();
    }
    EXPECT_EQ(recording("getting-started-en.md"), [&] {
        QFile file(m_files.filePath(QStringLiteral("third.md")));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }());
}

TEST_F(SheetCommands, PrintShowsAPreviewOfThePages) {
    MainWindow* window = openWindow();
    QTest::keyClick(window->editor()->textView(), Qt::Key_P, Qt::ControlModifier);
    auto* dialog = window->findChild<QPrintPreviewDialog*>(QStringLiteral("printPreview"));
    ASSERT_NE(dialog, nullptr);
    EXPECT_TRUE(dialog->isVisible());
    auto* preview = dialog->findChild<QPrintPreviewWidget*>();
    ASSERT_NE(preview, nullptr);
    preview->updatePreview();
    EXPECT_EQ(preview->pageCount(), 1);
    dialog->reject();
}

} // namespace
} // namespace lumo::test
