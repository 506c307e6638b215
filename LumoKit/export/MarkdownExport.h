#pragma once

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

#include "LumoKit/export/SheetAnswers.h"

namespace lumo {

/// The file name of the image that shows the plot of a sheet's line (0-based index), or ""
/// when the plot is to be named by its title only.
using PlotImageNamer = std::function<std::string(std::size_t sheetIndex, std::size_t line)>;

/// Each sheet as a heading and a table of its lines and their answers, both as code so that
/// they read exactly as in the sheet. Blank lines are left out; a plot line shows its image
/// when `imageName` names one, otherwise its title. Headers follow the options' language.
void writeMarkdown(std::ostream& out, const std::vector<EvaluatedSheet>& sheets,
                   const EvaluationOptions& options, Grouping grouping, const PlotImageNamer& imageName = {});

/// Text as one Markdown code span that survives a table cell: the fence grows past any run of
/// backticks inside, and "|" is escaped.
std::string markdownCode(const std::string& text);

} // namespace lumo
