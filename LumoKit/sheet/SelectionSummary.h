#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "LumoKit/sheet/LineResult.h"

namespace lumo {

/// What the answers of a run of lines add up to, for the selection's summary: how many of them
/// are numbers, and their sum and average when they can be added together (no percentages,
/// units of one dimension).
struct SelectionSummary {
    std::size_t count = 0;
    std::optional<Value> sum;
    std::optional<Value> average;
};

/// The summary of lines `first` to `last` of a sheet's results; lines past the end are ignored.
SelectionSummary summarize(const std::vector<LineResult>& results, std::size_t first, std::size_t last);

} // namespace lumo
