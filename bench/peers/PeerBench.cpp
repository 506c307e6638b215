// Times Lumo's engine and libqalculate in-process on the same lines (start-up excluded)
// and prints nanoseconds per line. Reads the lines from lines.tsv.
#include <algorithm>
#include <chrono>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include <libqalculate/qalculate.h>

#include "LumoKit/language/Parser.h"
#include "LumoKit/values/Evaluator.h"
#include "LumoKit/values/ValueFormatter.h"

namespace {

struct PeerLine {
    std::string kind, lumo, qalculate, mathjs;
};

std::vector<PeerLine> readLines(const std::string& path) {
    std::vector<PeerLine> lines;
    std::ifstream in(path);
    std::string row;
    while (std::getline(in, row)) {
        if (row.empty() || row[0] == '#')
            continue;
        std::istringstream fields(row);
        PeerLine line;
        std::getline(fields, line.kind, '\t');
        std::getline(fields, line.lumo, '\t');
        std::getline(fields, line.qalculate, '\t');
        std::getline(fields, line.mathjs, '\t');
        lines.push_back(line);
    }
    return lines;
}

class NamesContext : public lumo::EvalContext {
public:
    std::optional<lumo::Value> valueOf(const std::string& name) override {
        if (name == "price")
            return lumo::Value::plain(1200);
        if (name == "qty")
            return lumo::Value::plain(35);
        return std::nullopt;
    }
    std::optional<lumo::Value> answerOnLine(std::int64_t) override { return std::nullopt; }
    std::optional<lumo::Value> callUserFunction(const std::string&,
                                                const std::vector<lumo::Value>&) override {
        return std::nullopt;
    }
};

// Median nanoseconds per call of body over several rounds.
template <typename Body> double nanosecondsPerCall(Body body, int callsPerRound) {
    std::vector<double> rounds;
    for (int round = 0; round < 7; ++round) {
        auto start = std::chrono::steady_clock::now();
        for (int i = 0; i < callsPerRound; ++i)
            body();
        auto elapsed = std::chrono::steady_clock::now() - start;
        rounds.push_back(std::chrono::duration<double, std::nano>(elapsed).count() / callsPerRound);
    }
    std::sort(rounds.begin(), rounds.end());
    return rounds[rounds.size() / 2];
}

} // namespace

int main(int argc, char** argv) {
    std::string path = argc > 1 ? argv[1] : "bench/peers/lines.tsv";
    auto lines = readLines(path);

    auto* calculator = new Calculator();
    calculator->loadGlobalDefinitions();
    calculator->addVariable(new KnownVariable("", "price", "1200"));
    calculator->addVariable(new KnownVariable("", "qty", "35"));
    EvaluationOptions evaluation;
    PrintOptions printing;

    NamesContext names;
    std::cout << "kind\tline\tlumo_ns\tqalculate_ns\tlumo_answer\tqalculate_answer\n";
    for (const auto& line : lines) {
        std::string lumoAnswer, qalculateAnswer;
        double lumoNs = nanosecondsPerCall(
            [&] {
                auto statement = lumo::parseStatement(line.lumo);
                auto value = lumo::Evaluator(lumo::EvaluationOptions{}, &names).evaluate(*statement.expr);
                lumoAnswer =
                    lumo::ValueFormatter::format(value, lumo::EvaluationOptions{}, lumo::Grouping::none);
            },
            20000);
        double qalculateNs = nanosecondsPerCall(
            [&] {
                MathStructure result = calculator->calculate(line.qalculate, evaluation);
                qalculateAnswer = calculator->print(result, 2000, printing);
            },
            200);
        std::cout << line.kind << '\t' << line.lumo << '\t' << static_cast<long>(lumoNs) << '\t'
                  << static_cast<long>(qalculateNs) << '\t' << lumoAnswer << '\t' << qalculateAnswer << '\n';
    }
    return 0;
}
