#pragma once

#include <QString>
#include <QStringList>

#include <vector>

#include "LumoKit/document/Document.h"
#include "LumoKit/export/SheetAnswers.h"
#include "LumoUI/export/SheetPrinter.h"

namespace lumo {

enum class ExportFormat { text, markdown, csv, pdf };

/// Every format, in the order the save dialog offers them.
const std::vector<ExportFormat>& allExportFormats();
/// The file name suffix without the dot: "txt", "md", "csv", "pdf".
QString suffixOf(ExportFormat format);
/// The save dialog's filter, in the current language: "Markdown (*.md)".
QString fileFilterOf(ExportFormat format);

/// A sheet with its results, as the exports take it.
EvaluatedSheet evaluatedSheet(const Sheet& sheet, const std::vector<LineResult>& results);
/// A sheet of the document evaluated now, with the other sheets in tab order, so that an
/// export never carries the answers of an older text.
EvaluatedSheet evaluateSheet(const LumoDocument& document, const Uuid& sheetID,
                             const EvaluationOptions& options);

/// The files a Markdown export writes beside the .md file: one PNG per plot, named after the
/// file and the plot's line ("budget-6.png" for line 6 of "budget.md").
QString plotImageName(const QString& markdownPath, std::size_t line);

/// Writes a sheet with its answers to `path` in a format; a Markdown export also writes its
/// plots' images beside the file. Answers are the answer column's texts. Returns an error
/// message for the user, or an empty string when everything was written.
QString exportSheet(const EvaluatedSheet& sheet, ExportFormat format, const QString& path,
                    const EvaluationOptions& options, const PrintLook& look);

} // namespace lumo
