#include "LumoKit/sheet/LineResult.h"

namespace lumo {

LineOutcome LineOutcome::makeValue(Value value) {
    LineOutcome outcome;
    outcome.kind = Kind::value;
    outcome.value = std::move(value);
    return outcome;
}

LineOutcome LineOutcome::makePlot(PlotSpec plot) {
    LineOutcome outcome;
    outcome.kind = Kind::plot;
    outcome.plot = std::move(plot);
    return outcome;
}

LineOutcome LineOutcome::makeFailure(const Message& message, Language language) {
    LineOutcome outcome;
    outcome.kind = Kind::failure;
    outcome.message = message.text(language);
    outcome.failure = message.kind();
    return outcome;
}

LineOutcome LineOutcome::makeComment() {
    LineOutcome outcome;
    outcome.kind = Kind::comment;
    return outcome;
}

} // namespace lumo
