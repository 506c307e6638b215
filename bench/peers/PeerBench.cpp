// Times Lumo's engine and libqalculate in-process on the same unique lines (the corpus that
// CorpusTool writes, start-up excluded): each tool takes the corpus from scratch, line after
// line with its names, and formats every answer. Prints nanoseconds per line.
#include <algorithm>
#include <chrono>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include <libqalculate/qalculate.h>

#include "LumoKit/sheet/DocumentEvaluator.h"
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

// Median nanoseconds of one call of body over several rounds.
template <typename Body> double medianNanoseconds(Body body, int rounds = 7) {
    std::vector<double> times;
    for (int round = 0; round < rounds; ++round) {
        const auto start = std::chrono::steady_clock::now();
        body();
        times.push_back(
            std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - start).count());
    }
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

} // namespace

int main(int argc, char** argv) {
    const std::string path = argc > 1 ? argv[1] : "build/peers/corpus.tsv";
    const auto lines = readLines(path);
    std::string sheet;
    for (const auto& line : lines)
        sheet += line.lumo + "\n";

    std::size_t lumoAnswered = 0;
    const double lumoNs = medianNanoseconds([&] {
        lumoAnswered = 0;
        for (const auto& result : lumo::DocumentEvaluator::evaluate(sheet, {}, lumo::EvaluationOptions{})) {
            if (result.outcome.kind == lumo::LineOutcome::Kind::value) {
                ++lumoAnswered;
                volatile auto size =
                    lumo::ValueFormatter::format(result.outcome.value, lumo::EvaluationOptions{},
                                                 lumo::Grouping::none)
                        .size();
                (void)size;
            }
        }
    });

    auto* calculator = new Calculator();
    calculator->loadGlobalDefinitions();
    EvaluationOptions evaluation;
    PrintOptions printing;
    std::size_t qalculateAnswered = 0;
    const double qalculateNs = medianNanoseconds(
        [&] {
            qalculateAnswered = 0;
            for (const auto& line : lines) {
                if (line.kind == "blank")
                    continue;
                MathStructure result = calculator->calculate(line.qalculate, evaluation);
                if (!calculator->print(result, 2000, printing).empty())
                    ++qalculateAnswered;
            }
        },
        3);

    const double count = static_cast<double>(lines.size());
    std::cout << "tool\tns_per_line\tanswered\tlines\n";
    std::cout << "lumo\t" << static_cast<long>(lumoNs / count) << '\t' << lumoAnswered << '\t' << lines.size()
              << '\n';
    std::cout << "qalculate\t" << static_cast<long>(qalculateNs / count) << '\t' << qalculateAnswered << '\t'
              << lines.size() << '\n';
    return 0;
}
