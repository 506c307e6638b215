#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <absl/container/inlined_vector.h>

#include "LumoKit/base/EvaluationOptions.h"
#include "LumoKit/values/Value.h"

namespace lumo {

struct ParsedLine;

/// A line's last answer with everything its evaluation read from the sheet: the names (the
/// sheet words among them) and the line answers, each with what it read, in order. Evaluation
/// is a pure function of the parse, the options and these reads, so when every read gives the
/// same value again the answer is the same. A line that called a function gets no memo: a call
/// runs program lines and spends the run's budget.
struct LineMemo {
    struct Read {
        std::string name;      // empty for a line answer
        std::int64_t line = 0; // for a line answer, 1-based
        std::optional<Value> value;
    };

    const ParsedLine* parse = nullptr; // what was evaluated
    EvaluationOptions options;
    bool canContinue = false; // whether the line's text starts like a continuation
    // Most lines read one name or none: held inside, that read costs no second visit to memory.
    absl::InlinedVector<Read, 1> reads;
    Value answer;
};

} // namespace lumo
