#pragma once

#include <memory>
#include <optional>
#include <string>

#include "LumoKit/base/Messages.h"
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
    Value value;                                 // for `value`
    std::shared_ptr<const PlotSpec> plot;        // for `plot`; shared, so that results stay small
    std::string message;                         // for `failure`, in the run's language
    MessageKind failure = MessageKind::verbatim; // for `failure`: which message it is

    static LineOutcome makeValue(Value value);
    static LineOutcome makePlot(PlotSpec plot);
    static LineOutcome makeFailure(const Message& message, Language language);
    static LineOutcome makeComment();
};

/// One result per line of a sheet, in line order.
struct LineResult {
    LineOutcome outcome;
    std::optional<std::string> name;
};

} // namespace lumo
