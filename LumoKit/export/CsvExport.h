#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "LumoKit/export/SheetAnswers.h"

namespace lumo {

/// One row per line that is not blank: the line, its name, its answer as the answer column
/// shows it (a plot's title for a plot line), the answer's unit, and its number in plain form
/// for other programs. Several sheets get a first column with the sheet's name. The header
/// row follows the options' language; rows end in CRLF and fields are quoted when they must be.
void writeCsv(std::ostream& out, const std::vector<EvaluatedSheet>& sheets, const EvaluationOptions& options,
              Grouping grouping);

/// One CSV field, quoted when it holds a comma, a quote, a line break or edge spaces.
std::string csvField(const std::string& text);

} // namespace lumo
