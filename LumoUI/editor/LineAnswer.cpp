#include "LumoUI/editor/LineAnswer.h"

#include "LumoKit/values/ValueFormatter.h"

namespace lumo {

QString answerText(const Value& value) {
    return QString::fromStdString(
        ValueFormatter::format(value, EvaluationOptions::current(), Grouping::grouped));
}

std::optional<LineAnswer> lineAnswer(const LineResult& result) {
    const QString name = result.name ? QString::fromStdString(*result.name) : QString();
    switch (result.outcome.kind) {
    case LineOutcome::Kind::value:
        return LineAnswer{LineAnswer::Kind::value, answerText(result.outcome.value), name};
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
