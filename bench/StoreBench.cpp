// The document store's cost of one keystroke in a long sheet: updateText records the undo step
// and evaluates the sheet again for the window that shows it. The store lives in memory, so no
// file is written; the median over the repetitions is the number to watch (a few milliseconds).
#include <benchmark/benchmark.h>

#include <string>

#include "bench/BenchHarness.h"
#include "bench/UniqueCorpus.h"
#include "LumoKit/base/HeapPolicy.h"
#include "LumoUI/store/DocumentStore.h"
#include "LumoUI/store/SheetSession.h"

using namespace lumo;

namespace {

using namespace lumo::bench;

// Measured as lumo-calc runs its store: with the heap kept between runs.
[[maybe_unused]] const bool heapKept = (lumo::keepHeapBetweenRuns(), true);

// Where a typed digit lands: the end of the typed line in the block nearest the middle.
std::size_t typingPosition(const std::string& text, int lines) {
    const int blockSize = static_cast<int>(std::size(everydayLines));
    const int target = lines / 2 / blockSize * blockSize + typedLine;
    std::size_t position = 0;
    for (int line = 0; line < target; ++line)
        position = text.find('\n', position) + 1;
    return text.find('\n', position);
}

// A digit typed at `at` and deleted in turn keeps the sheet the same size from one keystroke
// to the next.
void typeAndDelete(benchmark::State& state, std::string text, std::size_t at) {
    DocumentStore::Options options;
    options.source = DocumentStore::Source::starter;
    DocumentStore store(options, nullptr, nullptr, nullptr);
    SheetSession session(&store);
    session.activate();
    const Uuid sheetID = *session.sheetID();
    store.updateText(sheetID, text);
    bool typed = false;
    for (auto _ : state) {
        if (typed)
            text.erase(at, 1);
        else
            text.insert(at, 1, '7');
        typed = !typed;
        store.updateText(sheetID, text);
        benchmark::DoNotOptimize(store.results().data());
    }
    state.SetLabel(std::to_string(store.results().size()) + " results");
}

void keystrokeIntoSheet(benchmark::State& state) {
    const int lines = static_cast<int>(state.range(0));
    const std::string text = everydaySheet(lines) + '\n';
    typeAndDelete(state, text, typingPosition(text, lines));
}
BENCHMARK(keystrokeIntoSheet)
    ->Arg(1000)
    ->Unit(benchmark::kMillisecond)
    ->Repetitions(9)
    ->DisplayAggregatesOnly(true);

// The same keystroke into a sheet of unique lines, at the start of the first line from the
// given percentage of the lines on that starts with a number. Near the top every line below
// runs again; the middle is the figure to quote.
void keystrokeIntoUniqueSheet(benchmark::State& state) {
    const int lines = static_cast<int>(state.range(0));
    const std::string text = bench::uniqueSheet(lines);
    std::size_t at = 0;
    for (int line = 0; line < lines * state.range(1) / 100; ++line)
        at = text.find('\n', at) + 1;
    while (at < text.size() && !(text[at] >= '1' && text[at] <= '9'))
        at = text.find('\n', at) + 1;
    typeAndDelete(state, text, at);
}
BENCHMARK(keystrokeIntoUniqueSheet)
    ->Args({1000, 50})
    ->Args({10000, 50})
    ->Args({10000, 1})
    ->Unit(benchmark::kMillisecond)
    ->Repetitions(9)
    ->DisplayAggregatesOnly(true);

} // namespace
