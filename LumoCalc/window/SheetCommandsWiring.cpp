#include "LumoCalc/window/SheetCommandsWiring.h"

#include <QApplication>
#include <QClipboard>
#include <QFileDialog>
#include <QFileInfo>
#include <QInputDialog>
#include <QMessageBox>
#include <QPrinter>
#include <QPrintPreviewDialog>
#include <QStandardPaths>
#include <QTextBlock>

#include "LumoCalc/text/Bilingual.h"
#include "LumoCalc/window/FindBar.h"
#include "LumoCalc/window/MainWindow.h"
#include "LumoKit/export/TextExport.h"
#include "LumoUI/editor/CalcTextView.h"
#include "LumoUI/editor/SheetEditor.h"
#include "LumoUI/export/SheetExport.h"
#include "LumoUI/settings/AppSettings.h"
#include "LumoUI/settings/NotificationCenter.h"
#include "LumoUI/store/DocumentStore.h"
#include "LumoUI/store/SheetSession.h"

namespace lumo {

namespace {

// The shown sheet, evaluated now; nothing when the window shows none.
std::optional<EvaluatedSheet> shownSheet(MainWindow* window) {
    SheetSession* session = window->session();
    DocumentStore* store = session->store();
    if (!store || !session->sheetID() || !store->sheet(*session->sheetID()))
        return std::nullopt;
    return evaluateSheet(store->document(), *session->sheetID(), EvaluationOptions::current());
}

PrintLook printLook(MainWindow* window, AppSettings* settings) {
    PrintLook look;
    // Paper is light whatever the screen shows.
    look.appearance = Appearance::light;
    if (settings) {
        const QMap<QString, QString>& colors = settings->syntaxColors();
        for (auto entry = colors.begin(); entry != colors.end(); ++entry)
            look.colors[entry.key().toStdString()] = entry.value().toStdString();
    }
    look.fontFamily = window->editor()->textView()->font().family();
    return look;
}

void copySheetWithAnswers(MainWindow* window) {
    if (const std::optional<EvaluatedSheet> sheet = shownSheet(window))
        QGuiApplication::clipboard()->setText(QString::fromStdString(
            sheetWithAnswers(*sheet, EvaluationOptions::current(), Grouping::grouped)));
}

void goToLine(MainWindow* window) {
    CalcTextView* text = window->editor()->textView();
    auto* dialog = new QInputDialog(window);
    dialog->setObjectName(QStringLiteral("goToLineDialog"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setInputMode(QInputDialog::IntInput);
    const int lines = text->document()->blockCount();
    dialog->setWindowTitle(pickText("行へ移動", "Go to Line"));
    dialog->setLabelText(pickText("行番号（1〜%1）:", "Line number (1–%1):").arg(lines));
    dialog->setIntRange(1, lines);
    dialog->setIntValue(text->textCursor().blockNumber() + 1);
    dialog->setOkButtonText(pickText("移動", "Go"));
    dialog->setCancelButtonText(pickText("キャンセル", "Cancel"));
    QObject::connect(dialog, &QInputDialog::intValueSelected, text, [text](int line) {
        QTextCursor cursor(text->document()->findBlockByNumber(line - 1));
        text->setTextCursor(cursor);
        text->centerCursor();
        text->setFocus(Qt::OtherFocusReason);
    });
    dialog->open();
}

void showFailure(MainWindow* window, const QString& message) {
    auto* box = new QMessageBox(QMessageBox::Warning, pickText("書き出せませんでした", "Export Failed"),
                                message, QMessageBox::Ok, window);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
}

// The format a chosen file is written in: its suffix when that names one, else the filter.
ExportFormat formatFor(const QString& path, const QString& filter) {
    const QString suffix = QFileInfo(path).suffix().toLower();
    for (ExportFormat format : allExportFormats()) {
        if (suffix == suffixOf(format))
            return format;
    }
    for (ExportFormat format : allExportFormats()) {
        if (filter == fileFilterOf(format))
            return format;
    }
    return ExportFormat::text;
}

void exportSheet(MainWindow* window, AppSettings* settings) {
    const std::optional<EvaluatedSheet> sheet = shownSheet(window);
    if (!sheet)
        return;
    auto* dialog = new QFileDialog(window, pickText("シートを書き出す", "Export Sheet"));
    dialog->setObjectName(QStringLiteral("exportDialog"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    if (QGuiApplication::platformName() == QLatin1String("offscreen"))
        dialog->setOption(QFileDialog::DontUseNativeDialog);
    QStringList filters;
    for (ExportFormat format : allExportFormats())
        filters << fileFilterOf(format);
    dialog->setNameFilters(filters);
    dialog->setDirectory(QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation));
    dialog->setDefaultSuffix(suffixOf(ExportFormat::text));
    dialog->selectFile(QString::fromStdString(sheet->name) + QStringLiteral(".txt"));
    QObject::connect(dialog, &QFileDialog::filterSelected, dialog, [dialog](const QString& filter) {
        const QString suffix = suffixOf(formatFor({}, filter));
        dialog->setDefaultSuffix(suffix);
        // The name follows the format, as it does in other applications' save panels.
        const QStringList chosen = dialog->selectedFiles();
        if (!chosen.isEmpty())
            dialog->selectFile(QFileInfo(chosen.first()).completeBaseName() + QLatin1Char('.') + suffix);
    });
    QObject::connect(
        dialog, &QFileDialog::fileSelected, window, [window, settings, dialog](const QString& path) {
            const std::optional<EvaluatedSheet> current = shownSheet(window);
            if (!current)
                return;
            const QString error = exportSheet(*current, formatFor(path, dialog->selectedNameFilter()), path,
                                              EvaluationOptions::current(), printLook(window, settings));
            if (!error.isEmpty())
                showFailure(window, error);
        });
    dialog->open();
}

void print(MainWindow* window, AppSettings* settings) {
    if (!shownSheet(window))
        return;
    auto* dialog = new QPrintPreviewDialog(window);
    dialog->setObjectName(QStringLiteral("printPreview"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowTitle(pickText("印刷プレビュー", "Print Preview"));
    QPrinter* printer = dialog->printer();
    printer->setPageMargins(QMarginsF(15, 15, 15, 15), QPageLayout::Millimeter);
    QObject::connect(
        dialog, &QPrintPreviewDialog::paintRequested, window, [window, settings](QPrinter* target) {
            if (const std::optional<EvaluatedSheet> sheet = shownSheet(window)) {
                target->setDocName(QString::fromStdString(sheet->name));
                printSheet(*target, *sheet, EvaluationOptions::current(), printLook(window, settings));
            }
        });
    dialog->open();
}

} // namespace

void installSheetCommands(MainWindow* window, AppSettings* settings, NotificationCenter* notifications) {
    auto* bar = new FindBar(window->session(), window->editor()->textView(), window);
    if (notifications)
        notifications->observe(notification::languageChanged, bar, [bar] { bar->retranslate(); });
    window->setBarAboveSheet(bar);
    window->setCommandHandler(Command::find, [bar](bool) { bar->open(FindBar::Mode::find); });
    window->setCommandHandler(Command::replace, [bar](bool) { bar->open(FindBar::Mode::replace); });
    window->setCommandHandler(Command::findNext, [bar](bool) { bar->findNext(); });
    window->setCommandHandler(Command::findPrevious, [bar](bool) { bar->findPrevious(); });
    window->setCommandHandler(Command::goToLine, [window](bool) { goToLine(window); });
    window->setCommandHandler(Command::copySheetWithAnswers,
                              [window](bool) { copySheetWithAnswers(window); });
    window->setCommandHandler(Command::exportSheet,
                              [window, settings](bool) { exportSheet(window, settings); });
    window->setCommandHandler(Command::print, [window, settings](bool) { print(window, settings); });
}

} // namespace lumo
