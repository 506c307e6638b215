// Any bytes, split into lines, must evaluate into one result per line within the run budget,
// and a run that keeps what the run before it kept must answer as a fresh run does.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "LumoKit/base/Unicode.h"
#include "LumoKit/sheet/ProgramRunner.h"
#include "LumoKit/sheet/SheetParseCache.h"

namespace {

bool stoppedByBudget(const lumo::LineResult& result) {
    return result.outcome.failure == lumo::MessageKind::tooManySteps ||
           result.outcome.failure == lumo::MessageKind::takingTooLong;
}

bool same(const lumo::LineResult& a, const lumo::LineResult& b) {
    return a.outcome.kind == b.outcome.kind && a.outcome.message() == b.outcome.message() &&
           a.name == b.name &&
           (a.outcome.kind != lumo::LineOutcome::Kind::value || a.outcome.value == b.outcome.value);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string text(reinterpret_cast<const char*>(data), size);
    // A second sheet exercises functions shared across sheets; split at the first form feed.
    std::vector<lumo::SharedSheet> others;
    if (auto split = text.find('\f'); split != std::string::npos) {
        others.push_back({"other", text.substr(split + 1)});
        text.resize(split);
    }
    // A smaller budget than the editor's keeps each run short, so the fuzzer tries more inputs;
    // the limits are enforced by the same code either way.
    // The length picks the options, so that both languages and angle units are exercised.
    lumo::EvaluationOptions options;
    options.language = size % 2 == 0 ? lumo::Language::japanese : lumo::Language::english;
    options.angles = size % 4 < 2 ? lumo::AngleUnit::radians : lumo::AngleUnit::degrees;
    auto lines = lumo::unicode::splitLines(text);
    auto results = lumo::ProgramRunner(lines, others, options, lumo::BudgetLimits{20000, 40, 0.01}).run();
    if (results.size() != lines.size())
        std::abort();

    // The same sheet through a cache that has seen it without its middle line. How far a run
    // gets within its time depends on the machine, so only runs that the budget never
    // stopped are compared.
    lumo::SheetParseCache cache;
    auto shorter = lines;
    shorter.erase(shorter.begin() + static_cast<std::ptrdiff_t>(shorter.size() / 2));
    const lumo::BudgetLimits limits{20000, 40, 0.01};
    lumo::ProgramRunner(shorter, others, options, limits, &cache).run();
    const auto cached = lumo::ProgramRunner(lines, others, options, limits, &cache).run();
    const bool stopped = std::any_of(results.begin(), results.end(), stoppedByBudget) ||
                         std::any_of(cached.begin(), cached.end(), stoppedByBudget);
    if (!stopped && !std::equal(results.begin(), results.end(), cached.begin(), cached.end(), same))
        std::abort();
    return 0;
}
