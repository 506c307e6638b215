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
    outcome.m_detail = std::make_shared<const PlotSpec>(std::move(plot));
    return outcome;
}

LineOutcome LineOutcome::makeFailure(const Message& message, Language language) {
    LineOutcome outcome;
    outcome.kind = Kind::failure;
    outcome.m_detail = std::make_shared<const std::string>(message.text(language));
    outcome.failure = message.kind();
    return outcome;
}

const std::string& LineOutcome::message() const {
    static const std::string none;
    return kind == Kind::failure && m_detail ? *static_cast<const std::string*>(m_detail.get()) : none;
}

LineOutcome LineOutcome::makeComment() {
    LineOutcome outcome;
    outcome.kind = Kind::comment;
    return outcome;
}

} // namespace lumo
