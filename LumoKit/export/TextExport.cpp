#include "LumoKit/export/TextExport.h"

#include <algorithm>
#include <cmath>
#include <ostream>
#include <sstream>

#include "LumoKit/base/Unicode.h"

namespace lumo {

namespace {

constexpr std::size_t maxTextColumn = 48; // longer lines push their answer further right
constexpr std::size_t sketchWidth = 40;
constexpr std::size_t sketchHeight = 8;

std::string padLeft(const std::string& text, std::size_t width) {
    std::size_t shown = unicode::displayWidth(text);
    return shown >= width ? text : std::string(width - shown, ' ') + text;
}

std::string formatRangeEnd(double value, const EvaluationOptions& options) {
    return ValueFormatter::formatNumber(value, options, Grouping::none);
}

// Maps a value in [low, high] to a row or column index in [0, cells).
std::size_t cellOf(double value, double low, double high, std::size_t cells) {
    if (!(high > low))
        return 0;
    double t = (value - low) / (high - low);
    auto index = static_cast<long>(std::floor(t * static_cast<double>(cells)));
    return static_cast<std::size_t>(std::clamp(index, 0L, static_cast<long>(cells) - 1));
}

std::vector<std::string> sketchCurve(const PlotSpec& plot) {
    std::vector<std::string> grid(sketchHeight, std::string(sketchWidth, ' '));
    for (const auto& segment : plot.segments) {
        for (const auto& point : segment) {
            auto column = cellOf(point.x, plot.xRange.low, plot.xRange.high, sketchWidth);
            auto row = sketchHeight - 1 - cellOf(point.y, plot.yRange.low, plot.yRange.high, sketchHeight);
            grid[row][column] = '*';
        }
    }
    std::vector<std::string> rows;
    for (auto& line : grid)
        rows.push_back("|" + line);
    rows.push_back("+" + std::string(sketchWidth, '-'));
    return rows;
}

std::vector<std::string> sketchBars(const PlotSpec& plot, const EvaluationOptions& options) {
    std::size_t labelWidth = 0;
    for (const auto& bar : plot.bars)
        labelWidth = std::max(labelWidth, unicode::displayWidth(bar.label));
    labelWidth = std::min<std::size_t>(labelWidth, 16);
    double largest = 0;
    for (const auto& bar : plot.bars)
        largest = std::max(largest, std::fabs(bar.value));
    std::vector<std::string> rows;
    for (const auto& bar : plot.bars) {
        std::size_t length =
            largest > 0 ? static_cast<std::size_t>(
                              std::lround(std::fabs(bar.value) / largest * static_cast<double>(sketchWidth)))
                        : 0;
        std::string drawn;
        for (std::size_t i = 0; i < length; ++i)
            drawn += bar.value < 0 ? "░" : "█";
        rows.push_back(padLeft(bar.label, labelWidth) + " " + drawn + " " +
                       ValueFormatter::formatNumber(bar.value, options, Grouping::grouped));
    }
    return rows;
}

std::vector<std::string> sketchSurface(const PlotSpec& plot) {
    // Heights as shades, one character per grid point; holes stay blank.
    static const char* shades[] = {" ", "░", "▒", "▓", "█"};
    std::vector<std::string> rows;
    if (!plot.zRange)
        return rows;
    for (auto row = plot.surface.rbegin(); row != plot.surface.rend(); ++row) {
        std::string line;
        for (const auto& height : *row)
            line += height ? shades[cellOf(*height, plot.zRange->low, plot.zRange->high, 4) + 1] : " ";
        rows.push_back(line);
    }
    return rows;
}

// What the text shows right of a line: its answer, or for a plot its summary or title.
std::string shownAnswer(const LineResult& result, const EvaluationOptions& options, Grouping grouping,
                        PlotLines plots) {
    if (result.outcome.kind == LineOutcome::Kind::plot)
        return plots == PlotLines::sketch ? plotSummary(*result.outcome.plot(), options)
                                          : result.outcome.plot()->title;
    return answerText(result, options, grouping);
}

} // namespace

const char* plotKindWord(PlotSpec::Kind kind) {
    switch (kind) {
    case PlotSpec::Kind::curve:
        return "curve";
    case PlotSpec::Kind::bars:
        return "bars";
    case PlotSpec::Kind::surface:
        return "surface";
    }
    return "curve";
}

std::string plotSummary(const PlotSpec& plot, const EvaluationOptions& options) {
    std::string summary = std::string("[") + plotKindWord(plot.kind) + "]";
    if (plot.kind == PlotSpec::Kind::bars)
        return summary + " " + std::to_string(plot.bars.size()) + " bars";
    summary +=
        " x " + formatRangeEnd(plot.xRange.low, options) + "…" + formatRangeEnd(plot.xRange.high, options);
    summary +=
        ", y " + formatRangeEnd(plot.yRange.low, options) + "…" + formatRangeEnd(plot.yRange.high, options);
    if (plot.zRange) {
        summary += ", z " + formatRangeEnd(plot.zRange->low, options) + "…" +
                   formatRangeEnd(plot.zRange->high, options);
    }
    return summary;
}

std::vector<std::string> sketchPlot(const PlotSpec& plot, const EvaluationOptions& options) {
    switch (plot.kind) {
    case PlotSpec::Kind::curve:
        return sketchCurve(plot);
    case PlotSpec::Kind::bars:
        return sketchBars(plot, options);
    case PlotSpec::Kind::surface:
        return sketchSurface(plot);
    }
    return {};
}

void writeText(std::ostream& out, const std::vector<EvaluatedSheet>& sheets, const EvaluationOptions& options,
               Grouping grouping, const TextLayout& layout) {
    const bool coloured = layout.colour == Colour::on;
    const char* red = coloured ? "\x1b[31m" : "";
    const char* dim = coloured ? "\x1b[2m" : "";
    const char* bold = coloured ? "\x1b[1m" : "";
    const char* reset = coloured ? "\x1b[0m" : "";
    bool first = true;
    for (const auto& sheet : sheets) {
        if (layout.headings == Headings::on)
            out << (first ? "" : "\n") << bold << "== " << sheet.name << " ==" << reset << "\n";
        first = false;
        std::size_t textColumn = 0;
        for (const auto& line : sheet.lines)
            textColumn = std::max(textColumn, std::min(unicode::displayWidth(line), maxTextColumn));
        std::size_t answerColumn = 0;
        for (const auto& result : sheet.results) {
            if (result.outcome.kind != LineOutcome::Kind::failure)
                answerColumn =
                    std::max(answerColumn,
                             unicode::displayWidth(shownAnswer(result, options, grouping, layout.plots)));
        }
        for (std::size_t i = 0; i < sheet.lines.size(); ++i) {
            const auto& line = sheet.lines[i];
            const LineResult blank;
            const auto& result = i < sheet.results.size() ? sheet.results[i] : blank;
            std::string answer = shownAnswer(result, options, grouping, layout.plots);
            if (answer.empty()) {
                const bool comment = result.outcome.kind == LineOutcome::Kind::comment;
                out << (comment ? dim : "") << line << (comment ? reset : "") << "\n";
                continue;
            }
            std::size_t width = unicode::displayWidth(line);
            std::string gap(width < textColumn ? textColumn - width + 2 : 2, ' ');
            if (result.outcome.kind == LineOutcome::Kind::failure)
                out << line << gap << red << "! " << answer << reset << "\n";
            else
                out << line << gap << padLeft(answer, answerColumn) << "\n";
            if (result.outcome.kind == LineOutcome::Kind::plot && layout.plots == PlotLines::sketch) {
                for (const auto& row : sketchPlot(*result.outcome.plot(), options))
                    out << "    " << dim << row << reset << "\n";
            }
        }
    }
}

std::string sheetWithAnswers(const EvaluatedSheet& sheet, const EvaluationOptions& options,
                             Grouping grouping) {
    std::ostringstream out;
    writeText(out, {sheet}, options, grouping, TextLayout{});
    return out.str();
}

} // namespace lumo
