#pragma once

#include <iosfwd>
#include <vector>

#include "LumoKit/export/SheetAnswers.h"

namespace lumo::cli {

/// JSON Lines: one object per line of every sheet, in order. A number answer also carries
/// its plain number and its unit.
void writeJsonLines(std::ostream& out, const std::vector<EvaluatedSheet>& sheets,
                    const EvaluationOptions& options, Grouping grouping);

} // namespace lumo::cli
