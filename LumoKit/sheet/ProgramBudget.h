#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

#include "LumoKit/base/Messages.h"

namespace lumo {

/// The limits of one run.
struct BudgetLimits {
    std::int64_t maxSteps = 200000;
    int maxDepth = 40;
    double maxSeconds = 0.15;
};

/// The step, depth and time limits of one run. Once the step or time limit is passed the
/// budget stays exhausted, so everything that asks it afterwards fails at once.
class ProgramBudget {
public:
    explicit ProgramBudget(BudgetLimits limits = {});

    /// One pass of a loop. Throws CalcError past the step limit, or when the clock (read on
    /// every 256th step) shows the time is up; either exhausts the budget.
    void takeStep();
    /// One more active function call. Throws CalcError past the depth limit (the call alone
    /// fails), or when the budget is exhausted. Reads the clock on every 256th call, so that
    /// recursion without loops is bounded in time too.
    void enterCall();
    void leaveCall();
    /// Reads the clock; exhausts the budget when the time is up. True while time remains.
    bool checkClock();

    bool exhausted() const { return m_stop.has_value(); }
    /// Why the run stopped (too many steps, or out of time); only while exhausted.
    Message stopMessage() const { return m_stop.value_or(MessageKind::tooManySteps); }

    const BudgetLimits& limits() const { return m_limits; }
    std::int64_t steps() const { return m_steps; }
    int depth() const { return m_depth; }
    double elapsedSeconds() const;

private:
    [[noreturn]] void stop(MessageKind reason);
    [[noreturn]] void throwStopped() const;

    BudgetLimits m_limits;
    std::int64_t m_steps = 0;
    int m_depth = 0;
    std::int64_t m_calls = 0;
    std::chrono::steady_clock::time_point m_startedAt;
    std::optional<MessageKind> m_stop;
};

} // namespace lumo
