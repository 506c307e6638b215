// Engine speed: typical lines, whole sheets, plot lines and the budget's worst case.
#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "LumoKit/language/Lexer.h"
#include "LumoKit/language/Parser.h"
#include "LumoKit/sheet/DocumentEvaluator.h"
#include "LumoKit/values/Evaluator.h"
#include "LumoKit/values/ValueFormatter.h"

using namespace lumo;

namespace {

const std::vector<std::string>& typicalLines() {
    static const std::vector<std::string> lines = {
        "1200 × 35 + 10%",                    // arithmetic and percent
        "(3.5 + 2) * 4 / 7 - 1",              // plain arithmetic
        "120 mm × 300 mm",                    // units
        "36 kN / (120 mm × 300 mm) in N/mm2", // compound units and conversion
        "2 h + 30 min",                       // alignment
        "5 km in m",                          // conversion
        "sqrt(2) * sin(pi / 4)",              // functions
        "[4800, 12000, 3200][1]",             // lists
    };
    return lines;
}

// A context that knows a few names, standing in for a sheet's earlier lines.
class NamesContext : public EvalContext {
public:
    std::optional<Value> valueOf(const std::string& name) override {
        if (name == "price")
            return Value::plain(1200);
        if (name == "qty")
            return Value::plain(35);
        return std::nullopt;
    }
    std::optional<Value> answerOnLine(std::int64_t) override { return std::nullopt; }
    std::optional<Value> callUserFunction(const std::string&, const std::vector<Value>&) override {
        return std::nullopt;
    }
};

void lexTypicalLine(benchmark::State& state) {
    const auto& line = typicalLines()[static_cast<std::size_t>(state.range(0))];
    for (auto _ : state)
        benchmark::DoNotOptimize(tokenize(line));
    state.SetLabel(line);
}
BENCHMARK(lexTypicalLine)->DenseRange(0, 7);

void parseTypicalLine(benchmark::State& state) {
    const auto& line = typicalLines()[static_cast<std::size_t>(state.range(0))];
    for (auto _ : state)
        benchmark::DoNotOptimize(parseStatement(line));
    state.SetLabel(line);
}
BENCHMARK(parseTypicalLine)->DenseRange(0, 7);

void evaluateTypicalLine(benchmark::State& state) {
    const auto& line = typicalLines()[static_cast<std::size_t>(state.range(0))];
    for (auto _ : state) {
        auto statement = parseStatement(line);
        benchmark::DoNotOptimize(Evaluator(EvaluationOptions{}).evaluate(*statement.expr));
    }
    state.SetLabel(line);
}
BENCHMARK(evaluateTypicalLine)->DenseRange(0, 7);

void evaluateNamedLine(benchmark::State& state) {
    NamesContext context;
    for (auto _ : state) {
        auto statement = parseStatement("total = price × qty + 10%");
        benchmark::DoNotOptimize(Evaluator(EvaluationOptions{}, &context).evaluate(*statement.expr));
    }
}
BENCHMARK(evaluateNamedLine);

void formatAnswer(benchmark::State& state) {
    Value value = Value::plain(1234567.891);
    for (auto _ : state)
        benchmark::DoNotOptimize(ValueFormatter::format(value, EvaluationOptions{}, Grouping::grouped));
}
BENCHMARK(formatAnswer);

// A representative sheet: names, units, sums after blank lines, continuation lines,
// a loop and a def, and a function from another sheet.
std::string representativeSheet(int lines) {
    static const char* block[] = {
        "width = 120 mm",
        "depth = 300 mm",
        "area = width × depth",
        "36 kN / area in N/mm2",
        "rent = 82000円",
        "rent × 12",
        "+ 10%",
        "2 h + 30 min",
        "100 km/h × 2 h",
        "prices = [4800, 12000, 3200]",
        "sum(prices)",
        "double(21)",
        "sum",
        "",
        "// a note",
        "def sq(v):",
        "    return v × v",
        "sq(12)",
        "for i in range(3):",
        "    i × 2",
    };
    std::string text;
    int written = 0;
    while (written < lines) {
        for (const char* line : block) {
            if (written++ == lines)
                break;
            text += line;
            text += '\n';
        }
    }
    return text;
}

void evaluateSheet(benchmark::State& state) {
    std::string text = representativeSheet(static_cast<int>(state.range(0)));
    std::vector<SharedSheet> others{{"Library", "def double(v):\n    return v × 2\n"}};
    for (auto _ : state)
        benchmark::DoNotOptimize(DocumentEvaluator::evaluate(text, others, EvaluationOptions{}));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(evaluateSheet)->Arg(100)->Arg(1000)->Arg(10000)->Unit(benchmark::kMicrosecond);

void plotLine(benchmark::State& state) {
    const char* line = state.range(0) == 0 ? "plot(x^2 - 3x)" : "plot(sin(x) * cos(y))";
    for (auto _ : state)
        benchmark::DoNotOptimize(DocumentEvaluator::evaluate(line, {}, EvaluationOptions{}));
    state.SetLabel(state.range(0) == 0 ? "curve, 241 points" : "surface, 441 points");
}
BENCHMARK(plotLine)->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond);

// The worst case: an endless loop must stop at the run budget (0.15 s) plus a little.
void endlessLoop(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(
            DocumentEvaluator::evaluate("n = 0\nwhile True:\n    n = n + 1\n", {}, EvaluationOptions{}));
}
BENCHMARK(endlessLoop)->Unit(benchmark::kMillisecond)->Iterations(5);

} // namespace
