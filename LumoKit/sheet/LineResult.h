#pragma once

#include <optional>
#include <string>

#include "LumoKit/sheet/PlotDescription.h"
#include "LumoKit/values/Value.h"

namespace lumo {

/// Another sheet of the same document, as a run sees it.
struct SharedSheet {
    std::string name;
    std::string text;
};

/// What one line came to.
struct LineOutcome {
    enum class Kind { value, plot, failure, blank, comment };

    Kind kind = Kind::blank;
    Value value;         // for `value`
    PlotSpec plot;       // for `plot`
    std::string message; // for `failure`

    static LineOutcome makeValue(Value value);
    static LineOutcome makePlot(PlotSpec plot);
    static LineOutcome makeFailure(std::string message);
    static LineOutcome makeComment();
};

/// One result per line of a sheet, in line order.
struct LineResult {
    LineOutcome outcome;
    std::optional<std::string> name;
};

} // namespace lumo
