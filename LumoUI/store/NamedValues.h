#pragma once

#include <string>
#include <vector>

#include "LumoKit/sheet/LineResult.h"

namespace lumo {

/// A named line of a sheet as the named-values list shows it.
struct NamedValue {
    std::string name;
    /// The answer as the answer column shows it, or the line's failure message.
    std::string answer;
    bool isFailure = false;
    /// The line's zero-based index in its sheet.
    int line = 0;

    bool operator==(const NamedValue&) const = default;
};

/// Every named line of a sheet's results that has an answer, in line order. A name given to
/// several lines appears once per line, since each line's answer is what the column shows there.
std::vector<NamedValue> namedValues(const std::vector<LineResult>& results);

} // namespace lumo
