#pragma once

#include <memory>
#include <vector>

#include "LumoKit/sheet/LineResult.h"

namespace lumo {

/// One run's results, shared by everything that shows them (the store, every window on the
/// sheet, the editor) rather than copied to each: a run of a long sheet holds thousands.
/// Never null; results are replaced, never changed.
using SharedResults = std::shared_ptr<const std::vector<LineResult>>;

/// Results taken over from one run.
inline SharedResults shareResults(std::vector<LineResult> results) {
    return std::make_shared<const std::vector<LineResult>>(std::move(results));
}

/// The results of no run, shared by all who have none.
inline const SharedResults& noResults() {
    static const SharedResults none = shareResults({});
    return none;
}

} // namespace lumo
