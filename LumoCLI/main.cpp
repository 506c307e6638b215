// The `lumo` command-line tool: evaluates sheets from files, documents or standard input.

#include <cstdlib>
#include <iostream>
#include <unistd.h>

#include "LumoCLI/CliOptions.h"
#include "LumoCLI/SheetInput.h"
#include "LumoCLI/SheetReport.h"
#include "LumoKit/base/HeapPolicy.h"
#include "LumoKit/base/Language.h"
#include "LumoKit/base/Unicode.h"
#include "LumoKit/export/CsvExport.h"
#include "LumoKit/export/MarkdownExport.h"
#include "LumoKit/export/TextExport.h"
#include "LumoKit/values/Evaluator.h"
#include "LumoKit/values/ValueFormatter.h"

using namespace lumo;
using namespace lumo::cli;

namespace {

void applyEngineSettings(const CliOptions& options) {
    L10n::setCurrent(options.language);
    AngleMode::setDegrees(options.degrees);
    ValueFormatter::setMaxFractionDigits(options.digits);
}

std::vector<SharedSheet> othersThan(const std::vector<InputSheet>& sheets, std::size_t index) {
    std::vector<SharedSheet> others;
    for (std::size_t i = 0; i < sheets.size(); ++i) {
        if (i != index)
            others.push_back({sheets[i].name, sheets[i].text});
    }
    return others;
}

bool colourWanted() {
    return isatty(STDOUT_FILENO) && std::getenv("NO_COLOR") == nullptr;
}

int run(const CliOptions& options, const EvaluationOptions& evaluation) {
    std::vector<InputSheet> sheets;
    try {
        sheets = loadSheets(options, std::cin);
    } catch (const InputError& error) {
        std::cerr << "lumo: " << error.message << "\n";
        return 1;
    }
    if (options.sheet) {
        try {
            requireSheetNamed(*options.sheet, sheets);
        } catch (const UsageError& error) {
            std::cerr << "lumo: " << error.message << "\n";
            return 2;
        }
    }

    std::vector<EvaluatedSheet> evaluated;
    for (std::size_t i = 0; i < sheets.size(); ++i) {
        if (options.sheet && sheets[i].name != *options.sheet)
            continue;
        // JSON lines carry answers only, so the source lines are cut only for the other formats.
        std::vector<std::string> lines;
        if (options.format != OutputFormat::jsonLines)
            lines = unicode::splitLines(sheets[i].text);
        evaluated.push_back({sheets[i].name, std::move(lines),
                             DocumentEvaluator::evaluate(sheets[i].text, othersThan(sheets, i), evaluation)});
    }

    Grouping grouping = options.grouping ? Grouping::grouped : Grouping::none;
    switch (options.format) {
    case OutputFormat::jsonLines:
        writeJsonLines(std::cout, evaluated, evaluation, grouping);
        break;
    case OutputFormat::markdown:
        // Plots are named by their title: without the drawing code there are no images to link.
        writeMarkdown(std::cout, evaluated, evaluation, grouping);
        break;
    case OutputFormat::csv:
        writeCsv(std::cout, evaluated, evaluation, grouping);
        break;
    case OutputFormat::text:
        writeText(std::cout, evaluated, evaluation, grouping,
                  TextLayout{PlotLines::sketch, colourWanted() ? Colour::on : Colour::off,
                             evaluated.size() > 1 ? Headings::on : Headings::off});
        break;
    }
    std::cout.flush();
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    std::ios::sync_with_stdio(false);
    // Freed memory is reused from the heap: the program's lines are freed before the results
    // are written, and mapping fresh pages for every large table costs more than the sheet.
    lumo::keepHeapBetweenRuns();
    CliOptions options;
    try {
        options = parseOptions(std::vector<std::string>(argv + 1, argv + argc));
    } catch (const UsageError& error) {
        std::cerr << "lumo: " << error.message << "\n\n" << usageText();
        return 2;
    }
    if (options.showHelp) {
        std::cout << usageText();
        return 0;
    }
    if (options.showVersion) {
        std::cout << "lumo " << LUMO_VERSION << "\n";
        return 0;
    }
    applyEngineSettings(options);
    return run(options, EvaluationOptions::current());
}
