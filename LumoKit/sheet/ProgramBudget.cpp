#include "LumoKit/sheet/ProgramBudget.h"

#include "LumoKit/base/Language.h"

namespace lumo {

namespace {

// Reading the clock costs more than a step, so it is read only this often.
constexpr std::int64_t clockInterval = 256;

std::string tooManyStepsMessage() {
    return L10n::pick("繰り返しが多すぎます", "Too many loop steps");
}

std::string tooLongMessage() {
    return L10n::pick("繰り返しに時間がかかりすぎます", "The loop is taking too long");
}

} // namespace

ProgramBudget::ProgramBudget(BudgetLimits limits) : m_limits(limits), m_startedAt(m_limits.clock()) {}

void ProgramBudget::takeStep() {
    if (exhausted())
        throwStopped();
    ++m_steps;
    if (m_steps > m_limits.maxSteps)
        stop(tooManyStepsMessage());
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
        throw CalcError(L10n::pick("関数の呼び出しが深すぎます", "Function calls are nested too deeply"));
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
        m_stopMessage = tooLongMessage();
    return !exhausted();
}

double ProgramBudget::elapsedSeconds() const {
    return std::chrono::duration<double>(m_limits.clock() - m_startedAt).count();
}

void ProgramBudget::stop(std::string message) {
    m_stopMessage = std::move(message);
    throwStopped();
}

void ProgramBudget::throwStopped() const {
    throw CalcError(stopMessage());
}

} // namespace lumo
