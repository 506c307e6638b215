#pragma once

#include <QString>

#include <optional>

#include "LumoKit/sheet/LineResult.h"

namespace lumo {

/// What the answer column shows for one line: the formatted value or the failure's message.
struct LineAnswer {
    enum class Kind { value, failure };

    Kind kind = Kind::value;
    QString text;
    /// The line's name when it has one, for the tooltip and the naming menu.
    QString name;

    bool isFailure() const { return kind == Kind::failure; }
};

/// A value as the answer column writes it.
QString answerText(const Value& value);

/// Nothing for blank, comment and plot lines, which have no answer in the column.
std::optional<LineAnswer> lineAnswer(const LineResult& result);

} // namespace lumo
