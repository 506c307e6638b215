// Any bytes, split into lines, must evaluate into one result per line within the run budget.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "LumoKit/base/Unicode.h"
#include "LumoKit/sheet/ProgramRunner.h"

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
    return 0;
}
