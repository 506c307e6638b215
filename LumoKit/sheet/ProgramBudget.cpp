#include "LumoKit/sheet/ProgramBudget.h"

#include "LumoKit/base/CalcError.h"

namespace lumo {

namespace {

// Reading the clock costs more than a step, so it is read only this often.
constexpr std::int64_t clockInterval = 256;

} // namespace

ProgramBudget::ProgramBudget(BudgetLimits limits)
    : m_limits(limits), m_startedAt(std::chrono::steady_clock::now()) {}

void ProgramBudget::takeStep() {
    if (exhausted())
        throwStopped();
    ++m_steps;
    if (m_steps > m_limits.maxSteps)
        stop(MessageKind::tooManySteps);
    if (m_steps % clockInterval == 0 && !checkClock())
        throwStopped();
}

void ProgramBudget::enterCall() {
    if (exhausted())
        throwStopped();
    ++m_calls;
    if (m_calls % clockInterval == 0 && !checkClock())
        throwStopped();
    ++m_depth;
    if (m_depth > m_limits.maxDepth) {
        --m_depth;
        throw CalcError(MessageKind::callsTooDeep);
    }
}

void ProgramBudget::leaveCall() {
    if (m_depth > 0)
        --m_depth;
}

bool ProgramBudget::checkClock() {
    if (exhausted())
        return false;
    if (elapsedSeconds() >= m_limits.maxSeconds)
        m_stop = MessageKind::takingTooLong;
    return !exhausted();
}

double ProgramBudget::elapsedSeconds() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - m_startedAt).count();
}

void ProgramBudget::stop(MessageKind reason) {
    m_stop = reason;
    throwStopped();
}

void ProgramBudget::throwStopped() const {
    throw CalcError(stopMessage());
}

} // namespace lumo
