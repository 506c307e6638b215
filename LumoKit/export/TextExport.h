#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "LumoKit/export/SheetAnswers.h"

namespace lumo {

/// How the text export shows a plot line: a summary of its ranges followed by a few rows
/// that sketch it (for a terminal), or its title alone (for the clipboard and files).
enum class PlotLines { sketch, title };
enum class Colour { off, on };
enum class Headings { off, on };

struct TextLayout {
    PlotLines plots = PlotLines::title;
    Colour colour = Colour::off;
    /// A "== name ==" line before each sheet.
    Headings headings = Headings::off;
};

/// Each line followed by its answer, the answers right-aligned in one column by display width;
/// failures are marked with "!" after the line.
void writeText(std::ostream& out, const std::vector<EvaluatedSheet>& sheets, const EvaluationOptions& options,
               Grouping grouping, const TextLayout& layout);

/// The text export of one sheet, as Copy Sheet with Answers puts it on the clipboard.
std::string sheetWithAnswers(const EvaluatedSheet& sheet, const EvaluationOptions& options,
                             Grouping grouping);

/// A few rows of text that sketch a plot under its line.
std::vector<std::string> sketchPlot(const PlotSpec& plot, const EvaluationOptions& options);

/// The plot's kind as one word ("curve", "bars", "surface"), as the exports and the JSON name it.
const char* plotKindWord(PlotSpec::Kind kind);

/// The kind of plot and its ranges on one line: "[curve] x -10…10, y -2.25…130".
std::string plotSummary(const PlotSpec& plot, const EvaluationOptions& options);

} // namespace lumo
