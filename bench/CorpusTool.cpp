// Writes the unique-line corpus, for the command-line measurements and the peer comparison:
//   CorpusTool sheet N   the Lumo lines, one sheet
//   CorpusTool tsv N     kind, Lumo, libqalculate and math.js forms, tab-separated
#include <cstdlib>
#include <iostream>
#include <string>

#include "bench/UniqueCorpus.h"

int main(int argc, char** argv) {
    const std::string what = argc > 1 ? argv[1] : "";
    const int lines = argc > 2 ? std::atoi(argv[2]) : 0;
    if ((what != "sheet" && what != "tsv") || lines <= 0) {
        std::cerr << "usage: CorpusTool sheet|tsv LINES\n";
        return 2;
    }
    std::ios::sync_with_stdio(false);
    if (what == "sheet") {
        std::cout << lumo::bench::uniqueSheet(lines);
        return 0;
    }
    std::cout << "# kind\tlumo\tqalculate\tmathjs\n";
    for (const auto& line : lumo::bench::CorpusGenerator().lines(lines)) {
        const char* kind = line.lumo.empty() ? "blank" : line.name.empty() ? "line" : "define";
        std::cout << kind << '\t' << line.lumo << '\t' << line.qalculate << '\t' << line.mathjs << '\n';
    }
    return 0;
}
