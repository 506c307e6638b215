#include "LumoUI/export/SheetExport.h"

#include <QDir>
#include <QFileInfo>
#include <QPdfWriter>
#include <QSaveFile>
#include <QUrl>

#include <sstream>

#include "LumoKit/base/Language.h"
#include "LumoKit/base/Unicode.h"
#include "LumoKit/export/CsvExport.h"
#include "LumoKit/export/MarkdownExport.h"
#include "LumoKit/export/TextExport.h"
#include "LumoKit/sheet/DocumentEvaluator.h"
#include "LumoUI/plot/PlotImage.h"
#include "LumoUI/plot/PlotStyle.h"

namespace lumo {

namespace {

// The size plots get in a Markdown export, in device-independent pixels, drawn at twice the
// density so they stay sharp on high-density screens.
constexpr QSize plotImageSize(640, 320);

QString text(const char* japanese, const char* english) {
    return QString::fromStdString(L10n::pick(japanese, english));
}

QString writeFile(const QString& path, const std::string& contents) {
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(contents.data(), qint64(contents.size())) < 0 ||
        !file.commit())
        return text("「%1」に書き出せませんでした: %2", "Couldn’t write “%1”: %2")
            .arg(QDir::toNativeSeparators(path), file.errorString());
    return {};
}

QString exportMarkdown(const EvaluatedSheet& sheet, const QString& path, const EvaluationOptions& options,
                       const PrintLook& look) {
    const QDir folder = QFileInfo(path).absoluteDir();
    const PlotStyle style = PlotStyle::make(look.appearance, look.colors, QFont(look.fontFamily));
    for (std::size_t i = 0; i < sheet.results.size(); ++i) {
        const LineOutcome& outcome = sheet.results[i].outcome;
        if (outcome.kind != LineOutcome::Kind::plot)
            continue;
        const QString image = folder.filePath(plotImageName(path, i));
        if (!renderPlotImage(*outcome.plot(), plotImageSize, style, {}, 2).save(image, "PNG"))
            return text("「%1」に書き出せませんでした", "Couldn’t write “%1”")
                .arg(QDir::toNativeSeparators(image));
    }
    std::ostringstream out;
    writeMarkdown(out, {sheet}, options, Grouping::grouped, [&](std::size_t, std::size_t line) {
        return QString::fromLatin1(QUrl::toPercentEncoding(plotImageName(path, line))).toStdString();
    });
    return writeFile(path, out.str());
}

} // namespace

const std::vector<ExportFormat>& allExportFormats() {
    static const std::vector<ExportFormat> formats{ExportFormat::text, ExportFormat::markdown,
                                                   ExportFormat::csv, ExportFormat::pdf};
    return formats;
}

QString suffixOf(ExportFormat format) {
    switch (format) {
    case ExportFormat::text:
        return QStringLiteral("txt");
    case ExportFormat::markdown:
        return QStringLiteral("md");
    case ExportFormat::csv:
        return QStringLiteral("csv");
    case ExportFormat::pdf:
        return QStringLiteral("pdf");
    }
    return QStringLiteral("txt");
}

QString fileFilterOf(ExportFormat format) {
    switch (format) {
    case ExportFormat::text:
        return text("答えつきテキスト (*.txt)", "Plain Text with Answers (*.txt)");
    case ExportFormat::markdown:
        return text("Markdown の表 (*.md)", "Markdown Table (*.md)");
    case ExportFormat::csv:
        return text("CSV (*.csv)", "CSV (*.csv)");
    case ExportFormat::pdf:
        return text("PDF (*.pdf)", "PDF (*.pdf)");
    }
    return {};
}

EvaluatedSheet evaluatedSheet(const Sheet& sheet, const std::vector<LineResult>& results) {
    return EvaluatedSheet{sheet.name, unicode::splitLines(sheet.text), results};
}

EvaluatedSheet evaluateSheet(const LumoDocument& document, const Uuid& sheetID,
                             const EvaluationOptions& options) {
    std::vector<SharedSheet> others;
    const Sheet* shown = nullptr;
    for (const Sheet& sheet : document.sheets) {
        if (sheet.id == sheetID)
            shown = &sheet;
        else
            others.push_back({sheet.name, sheet.text});
    }
    if (!shown)
        return {};
    return evaluatedSheet(*shown, DocumentEvaluator::evaluate(shown->text, others, options));
}

QString plotImageName(const QString& markdownPath, std::size_t line) {
    return QStringLiteral("%1-%2.png").arg(QFileInfo(markdownPath).completeBaseName()).arg(line + 1);
}

QString exportSheet(const EvaluatedSheet& sheet, ExportFormat format, const QString& path,
                    const EvaluationOptions& options, const PrintLook& look) {
    std::ostringstream out;
    switch (format) {
    case ExportFormat::text:
        writeText(out, {sheet}, options, Grouping::grouped, TextLayout{});
        return writeFile(path, out.str());
    case ExportFormat::csv:
        writeCsv(out, {sheet}, options, Grouping::grouped);
        return writeFile(path, out.str());
    case ExportFormat::markdown:
        return exportMarkdown(sheet, path, options, look);
    case ExportFormat::pdf: {
        QPdfWriter writer(path);
        writer.setTitle(QString::fromStdString(sheet.name));
        writer.setCreator(QStringLiteral("Lumo"));
        writer.setPageSize(QPageSize(QPageSize::A4));
        writer.setPageMargins(QMarginsF(15, 15, 15, 15), QPageLayout::Millimeter);
        writer.setResolution(600);
        if (printSheet(writer, sheet, options, look) == 0)
            return text("「%1」に書き出せませんでした", "Couldn’t write “%1”")
                .arg(QDir::toNativeSeparators(path));
        return {};
    }
    }
    return {};
}

} // namespace lumo
