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

/// What one line came to. A sheet keeps one per line, so it stays small: a plot's description
/// or a failure's text, which no answer has, is held behind one shared pointer.
struct LineOutcome {
    enum class Kind { value, plot, failure, blank, comment };

    Kind kind = Kind::blank;
    MessageKind failure = MessageKind::verbatim; // for `failure`: which message it is
    Value value;                                 // for `value`

    /// The plot of a `plot` line; null for any other.
    const PlotSpec* plot() const {
        return kind == Kind::plot ? static_cast<const PlotSpec*>(m_detail.get()) : nullptr;
    }
    /// The same plot, shared with this outcome, for keeping beyond it.
    std::shared_ptr<const PlotSpec> sharedPlot() const {
        return kind == Kind::plot ? std::static_pointer_cast<const PlotSpec>(m_detail) : nullptr;
    }
    /// The message of a `failure`, in the run's language; empty for any other kind.
    const std::string& message() const;

    static LineOutcome makeValue(Value value);
    static LineOutcome makePlot(PlotSpec plot);
    static LineOutcome makeFailure(const Message& message, Language language);
    static LineOutcome makeComment();

private:
    std::shared_ptr<const void> m_detail; // the PlotSpec of a plot, the std::string of a failure
};

/// One result per line of a sheet, in line order.
struct LineResult {
    LineOutcome outcome;
    std::optional<std::string> name;
};
static_assert(sizeof(LineResult) <= 88, "a sheet keeps a result per line");

} // namespace lumo
