#include "LumoUI/editor/LineAnswer.h"

#include "LumoKit/values/ValueFormatter.h"

namespace lumo {

std::optional<LineAnswer> lineAnswer(const LineResult& result) {
    const QString name = result.name ? QString::fromStdString(*result.name) : QString();
    switch (result.outcome.kind) {
    case LineOutcome::Kind::value:
        return LineAnswer{LineAnswer::Kind::value,
                          QString::fromStdString(ValueFormatter::format(
                              result.outcome.value, EvaluationOptions::current(), Grouping::grouped)),
                          name};
    case LineOutcome::Kind::failure:
        return LineAnswer{LineAnswer::Kind::failure, QString::fromStdString(result.outcome.message()), name};
    case LineOutcome::Kind::plot:
    case LineOutcome::Kind::blank:
    case LineOutcome::Kind::comment:
        break;
    }
    return std::nullopt;
}

} // namespace lumo
