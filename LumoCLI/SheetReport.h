#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "LumoKit/sheet/DocumentEvaluator.h"
#include "LumoKit/values/ValueFormatter.h"

namespace lumo::cli {

/// One evaluated sheet: its name, its lines and one result per line.
struct EvaluatedSheet {
    std::string name;
    std::vector<std::string> lines;
    std::vector<LineResult> results;
};

enum class Colour { off, on };
enum class Headings { off, on };

/// The answer-column text of a result, exactly as the app formats it ("" for blank lines).
std::string answerText(const LineResult& result, const EvaluationOptions& options, Grouping grouping);

/// Lines with their answers right-aligned in a column, aligned by display width.
void writeText(std::ostream& out, const std::vector<EvaluatedSheet>& sheets, const EvaluationOptions& options,
               Grouping grouping, Colour colour, Headings headings);

/// JSON Lines: one object per line of every sheet, in order.
void writeJsonLines(std::ostream& out, const std::vector<EvaluatedSheet>& sheets,
                    const EvaluationOptions& options, Grouping grouping);

/// A few rows of text that sketch a plot under its line.
std::vector<std::string> sketchPlot(const PlotSpec& plot, const EvaluationOptions& options);

} // namespace lumo::cli
