#pragma once

#include <cstddef>
#include <vector>

#include "LumoKit/base/EvaluationOptions.h"
#include "LumoKit/sheet/LineContext.h"
#include "LumoKit/sheet/LineResult.h"

namespace lumo {

/// A run as it stood at the start of one line of plain lines (no defs, loops or ifs above,
/// and no calls), kept with the sheet's parses. The lines above such a line read only each
/// other, so a later run whose lines above are the same, under the same options, may start
/// there instead of at the top: typing into one line of a long sheet runs only from that line.
struct RunCheckpoint {
    std::size_t line = 0; // 0-based; the lines above it are done
    EvaluationOptions options;
    SheetState state;
    std::vector<LineResult> results; // of the lines above
};

} // namespace lumo
