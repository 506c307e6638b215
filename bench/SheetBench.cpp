// Whole sheets from scratch on unique lines: time per line and memory per line, from 100 to
// 100,000 lines, so that the cost stays linear. Every allocation of the process is counted
// here, which is why these figures live apart from EngineBench's.
#include <benchmark/benchmark.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <malloc.h>
#include <new>
#include <string>
#include <vector>

#include "bench/UniqueCorpus.h"
#include "LumoKit/base/HeapPolicy.h"
#include "LumoKit/sheet/DocumentEvaluator.h"
#include "LumoKit/sheet/SheetParseCache.h"

namespace {

// Measured as the desktop application runs sheets: with the heap kept between runs.
[[maybe_unused]] const bool heapKept = (lumo::keepHeapBetweenRuns(), true);

std::atomic<std::size_t> s_heapInUse{0};
std::atomic<std::size_t> s_heapPeak{0};

void noteAllocated(void* pointer) {
    if (!pointer)
        throw std::bad_alloc();
    const std::size_t now = s_heapInUse.fetch_add(malloc_usable_size(pointer), std::memory_order_relaxed) +
                            malloc_usable_size(pointer);
    std::size_t peak = s_heapPeak.load(std::memory_order_relaxed);
    while (now > peak && !s_heapPeak.compare_exchange_weak(peak, now, std::memory_order_relaxed)) {
    }
}

void noteFreed(void* pointer) {
    if (pointer)
        s_heapInUse.fetch_sub(malloc_usable_size(pointer), std::memory_order_relaxed);
}

} // namespace

void* operator new(std::size_t size) {
    void* pointer = std::malloc(size);
    noteAllocated(pointer);
    return pointer;
}
void* operator new[](std::size_t size) {
    void* pointer = std::malloc(size);
    noteAllocated(pointer);
    return pointer;
}
// Arenas ask for aligned blocks, so the aligned forms are counted as well.
void* operator new(std::size_t size, std::align_val_t alignment) {
    void* pointer = std::aligned_alloc(static_cast<std::size_t>(alignment),
                                       (size + static_cast<std::size_t>(alignment) - 1) &
                                           ~(static_cast<std::size_t>(alignment) - 1));
    noteAllocated(pointer);
    return pointer;
}
void operator delete(void* pointer, std::align_val_t) noexcept {
    noteFreed(pointer);
    std::free(pointer);
}
void operator delete(void* pointer, std::size_t, std::align_val_t) noexcept {
    noteFreed(pointer);
    std::free(pointer);
}
void operator delete(void* pointer) noexcept {
    noteFreed(pointer);
    std::free(pointer);
}
void operator delete[](void* pointer) noexcept {
    noteFreed(pointer);
    std::free(pointer);
}
void operator delete(void* pointer, std::size_t) noexcept {
    noteFreed(pointer);
    std::free(pointer);
}
void operator delete[](void* pointer, std::size_t) noexcept {
    noteFreed(pointer);
    std::free(pointer);
}

using namespace lumo;

namespace {

// Counters: µs per line, the heap's peak during a run and what the results keep, per line.
void uniqueSheet(benchmark::State& state) {
    const auto lines = static_cast<int>(state.range(0));
    const std::string text = bench::uniqueSheet(lines);
    std::size_t peakPerRun = 0;
    std::size_t keptPerRun = 0;
    for (auto _ : state) {
        const std::size_t before = s_heapInUse.load();
        s_heapPeak.store(before);
        auto results = DocumentEvaluator::evaluate(text, {}, EvaluationOptions{});
        keptPerRun = s_heapInUse.load() - before;
        peakPerRun = s_heapPeak.load() - before;
        benchmark::DoNotOptimize(results.data());
    }
    state.counters["us_per_line"] =
        benchmark::Counter(static_cast<double>(lines) * 1e-6,
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
    state.counters["peak_B_per_line"] = static_cast<double>(peakPerRun) / lines;
    state.counters["kept_B_per_line"] = static_cast<double>(keptPerRun) / lines;
}
BENCHMARK(uniqueSheet)->Arg(100)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

// The engine's share of a keystroke: a run with the parse cache of the run before, after one
// digit was typed into a number at the given percentage of the sheet's text (alternately typed
// and deleted, so each run sees a change). Lines above the keystroke cost less than lines
// below it, so the middle is the figure to quote; near the top and the bottom bound it.
void uniqueSheetAfterKeystroke(benchmark::State& state) {
    const auto lines = static_cast<int>(state.range(0));
    const std::string text = bench::uniqueSheet(lines);
    std::size_t at = text.size() * static_cast<std::size_t>(state.range(1)) / 100;
    while (at < text.size() && !(text[at] >= '0' && text[at] <= '9'))
        ++at;
    std::string typed = text;
    typed.insert(at, 1, '7');
    SheetParseCache cache;
    DocumentEvaluator::evaluate(text, {}, EvaluationOptions{}, cache);
    bool withDigit = false;
    for (auto _ : state) {
        withDigit = !withDigit;
        auto results = DocumentEvaluator::evaluate(withDigit ? typed : text, {}, EvaluationOptions{}, cache);
        benchmark::DoNotOptimize(results.data());
    }
    state.counters["us_per_line"] =
        benchmark::Counter(static_cast<double>(lines) * 1e-6,
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(uniqueSheetAfterKeystroke)
    ->Args({1000, 50})
    ->Args({10000, 1})
    ->Args({10000, 50})
    ->Args({10000, 99})
    ->Unit(benchmark::kMillisecond);

// One long line of the given size in bytes, made of one term repeated: a flat chain of numbers
// (1+1+…), of names (a+a+…), of signed numbers (1+-1+…), of units (1m+1m+…), of products or
// powers, or a written list ([1,1,…], which is refused once it has 100,000 items but is read
// whole first). Time and
// the heap's peak are per input byte, and must stay flat from 100 kB to 10 MB.
void longLine(benchmark::State& state) {
    const auto bytes = static_cast<std::size_t>(state.range(0));
    struct Shape {
        const char* label;
        const char* head;
        const char* term;
        const char* tail;
    };
    static constexpr Shape shapes[] = {
        {"1+1+…", "1", "+1", ""},
        {"a+a+…", "a = 1\na", "+a", ""},
        {"1+-1+…", "1", "+-1", ""},
        {"1m+1m+…", "1m", "+1m", ""},
        {"[1,1,…]", "[1", ",1", "]"},
        {"1%+1%+…", "1%", "+1%", ""},
        {"(1)+(1)+…", "(1)", "+(1)", ""},
        {"max(1)+max(1)+…", "max(1)", "+max(1)", ""},
        {"#1+#1+…", "1\n#1", "+#1", ""},
        {"[[1],[1],…]", "[[1]", ",[1]", "]"},
        {"-a-a-…", "a = 1\n-a", "-a", ""},
        {"1*2+1*2+…", "1*2", "+1*2", ""},
        {"2^2+2^2+…", "2^2", "+2^2", ""},
        {"[[1,1],[1,1],…]", "[[1,1]", ",[1,1]", "]"},
        {"1m^2+1m^2+…", "1m^2", "+1m^2", ""},
    };
    const Shape& shape = shapes[state.range(1)];
    std::string text;
    text.reserve(bytes + 8);
    text = shape.head;
    const std::size_t term = std::strlen(shape.term);
    while (text.size() + term + std::strlen(shape.tail) <= bytes)
        text += shape.term;
    text += shape.tail;
    std::size_t peakPerRun = 0;
    for (auto _ : state) {
        const std::size_t before = s_heapInUse.load();
        s_heapPeak.store(before);
        auto results = DocumentEvaluator::evaluate(text, {}, EvaluationOptions{});
        peakPerRun = s_heapPeak.load() - before;
        benchmark::DoNotOptimize(results.data());
    }
    state.SetLabel(shape.label);
    state.counters["ns_per_byte"] =
        benchmark::Counter(static_cast<double>(text.size()) * 1e-9,
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
    state.counters["peak_B_per_byte"] = static_cast<double>(peakPerRun) / static_cast<double>(text.size());
}
BENCHMARK(longLine)
    ->ArgsProduct({{100000, 1000000, 10000000}, {0}})
    ->ArgsProduct({{10000000}, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14}})
    ->Unit(benchmark::kMillisecond);

} // namespace
