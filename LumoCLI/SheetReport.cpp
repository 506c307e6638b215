#include "LumoCLI/SheetReport.h"

#include <algorithm>
#include <cmath>
#include <ostream>

#include <nlohmann/json.hpp>

#include "LumoKit/base/Unicode.h"

namespace lumo::cli {

namespace {

constexpr std::size_t maxTextColumn = 48; // longer lines push their answer further right
constexpr std::size_t sketchWidth = 40;
constexpr std::size_t sketchHeight = 8;

const char* kindWord(LineOutcome::Kind kind) {
    switch (kind) {
    case LineOutcome::Kind::value:
        return "value";
    case LineOutcome::Kind::failure:
        return "failure";
    case LineOutcome::Kind::blank:
        return "blank";
    case LineOutcome::Kind::comment:
        return "comment";
    case LineOutcome::Kind::plot:
        return "plot";
    }
    return "blank";
}

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

std::string padLeft(const std::string& text, std::size_t width) {
    std::size_t shown = unicode::displayWidth(text);
    return shown >= width ? text : std::string(width - shown, ' ') + text;
}

std::string formatRangeEnd(double value, const EvaluationOptions& options) {
    return ValueFormatter::formatNumber(value, options, Grouping::none);
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

nlohmann::ordered_json rangeJson(const PlotRange& range) {
    return {range.low, range.high};
}

nlohmann::ordered_json plotJson(const PlotSpec& plot) {
    nlohmann::ordered_json json;
    json["kind"] = plotKindWord(plot.kind);
    json["title"] = plot.title;
    auto segments = nlohmann::ordered_json::array();
    for (const auto& segment : plot.segments) {
        auto points = nlohmann::ordered_json::array();
        for (const auto& point : segment)
            points.push_back({point.x, point.y});
        segments.push_back(std::move(points));
    }
    json["segments"] = std::move(segments);
    auto bars = nlohmann::ordered_json::array();
    for (const auto& bar : plot.bars)
        bars.push_back({{"label", bar.label}, {"value", bar.value}});
    json["bars"] = std::move(bars);
    auto surface = nlohmann::ordered_json::array();
    for (const auto& row : plot.surface) {
        auto heights = nlohmann::ordered_json::array();
        for (const auto& height : row)
            heights.push_back(height ? nlohmann::ordered_json(*height) : nlohmann::ordered_json());
        surface.push_back(std::move(heights));
    }
    json["surface"] = std::move(surface);
    json["xRange"] = rangeJson(plot.xRange);
    json["yRange"] = rangeJson(plot.yRange);
    json["zRange"] = plot.zRange ? rangeJson(*plot.zRange) : nlohmann::ordered_json();
    json["unitLabel"] = plot.unitLabel ? nlohmann::ordered_json(*plot.unitLabel) : nlohmann::ordered_json();
    return json;
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

// Invalid UTF-8 from the input is replaced rather than failing the whole run.
std::string dumpJson(const nlohmann::ordered_json& json) {
    return json.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

// A JSON string exactly as dumpJson writes it: valid UTF-8 as it is, with quotes, backslashes
// and control characters escaped; other text goes through the library.
void appendJsonString(std::string& json, std::string_view text) {
    if (!unicode::isValidUtf8(text)) {
        json += dumpJson(nlohmann::ordered_json(std::string(text)));
        return;
    }
    static constexpr char hexDigits[] = "0123456789abcdef";
    json += '"';
    std::size_t copied = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto c = static_cast<unsigned char>(text[i]);
        if (c >= 0x20 && c != '"' && c != '\\')
            continue;
        json.append(text, copied, i - copied);
        copied = i + 1;
        switch (c) {
        case '"':
            json += "\\\"";
            break;
        case '\\':
            json += "\\\\";
            break;
        case '\b':
            json += "\\b";
            break;
        case '\f':
            json += "\\f";
            break;
        case '\n':
            json += "\\n";
            break;
        case '\r':
            json += "\\r";
            break;
        case '\t':
            json += "\\t";
            break;
        default:
            json += "\\u00";
            json += hexDigits[c >> 4];
            json += hexDigits[c & 0xf];
        }
    }
    json.append(text, copied);
    json += '"';
}

} // namespace

std::string answerText(const LineResult& result, const EvaluationOptions& options, Grouping grouping) {
    switch (result.outcome.kind) {
    case LineOutcome::Kind::value:
        return ValueFormatter::format(result.outcome.value, options, grouping);
    case LineOutcome::Kind::failure:
        return result.outcome.message;
    case LineOutcome::Kind::plot:
        return plotSummary(*result.outcome.plot, options);
    case LineOutcome::Kind::blank:
    case LineOutcome::Kind::comment:
        return "";
    }
    return "";
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
               Grouping grouping, Colour colour, Headings headings) {
    const char* red = colour == Colour::on ? "\x1b[31m" : "";
    const char* dim = colour == Colour::on ? "\x1b[2m" : "";
    const char* bold = colour == Colour::on ? "\x1b[1m" : "";
    const char* reset = colour == Colour::on ? "\x1b[0m" : "";
    bool first = true;
    for (const auto& sheet : sheets) {
        if (headings == Headings::on) {
            out << (first ? "" : "\n") << bold << "== " << sheet.name << " ==" << reset << "\n";
        }
        first = false;
        std::size_t textColumn = 0;
        for (const auto& line : sheet.lines)
            textColumn = std::max(textColumn, std::min(unicode::displayWidth(line), maxTextColumn));
        std::size_t answerColumn = 0;
        for (const auto& result : sheet.results) {
            if (result.outcome.kind != LineOutcome::Kind::failure)
                answerColumn =
                    std::max(answerColumn, unicode::displayWidth(answerText(result, options, grouping)));
        }
        for (std::size_t i = 0; i < sheet.lines.size(); ++i) {
            const auto& line = sheet.lines[i];
            const auto& result = sheet.results[i];
            std::string answer = answerText(result, options, grouping);
            if (answer.empty()) {
                out << (result.outcome.kind == LineOutcome::Kind::comment ? dim : "") << line
                    << (result.outcome.kind == LineOutcome::Kind::comment ? reset : "") << "\n";
                continue;
            }
            std::size_t width = unicode::displayWidth(line);
            std::string gap(width < textColumn ? textColumn - width + 2 : 2, ' ');
            if (result.outcome.kind == LineOutcome::Kind::failure) {
                out << line << gap << red << "! " << answer << reset << "\n";
            } else {
                out << line << gap << padLeft(answer, answerColumn) << "\n";
            }
            if (result.outcome.kind == LineOutcome::Kind::plot) {
                for (const auto& row : sketchPlot(*result.outcome.plot, options))
                    out << "    " << dim << row << reset << "\n";
            }
        }
    }
}

void writeJsonLines(std::ostream& out, const std::vector<EvaluatedSheet>& sheets,
                    const EvaluationOptions& options, Grouping grouping) {
    // Each object is written straight into one buffer: building a JSON tree for every line
    // cost more than the whole evaluation of the sheet.
    std::string json;
    for (const auto& sheet : sheets) {
        for (std::size_t i = 0; i < sheet.results.size(); ++i) {
            const auto& result = sheet.results[i];
            json.clear();
            json += "{\"sheet\":";
            appendJsonString(json, sheet.name);
            json += ",\"line\":";
            json += std::to_string(i + 1);
            json += ",\"kind\":\"";
            json += kindWord(result.outcome.kind);
            json += "\",\"name\":";
            if (result.name)
                appendJsonString(json, *result.name);
            else
                json += "null";
            switch (result.outcome.kind) {
            case LineOutcome::Kind::value:
                json += ",\"answer\":";
                appendJsonString(json, ValueFormatter::format(result.outcome.value, options, grouping));
                break;
            case LineOutcome::Kind::failure:
                json += ",\"message\":";
                appendJsonString(json, result.outcome.message);
                break;
            case LineOutcome::Kind::plot:
                json += ",\"plot\":";
                json += dumpJson(plotJson(*result.outcome.plot));
                break;
            case LineOutcome::Kind::blank:
            case LineOutcome::Kind::comment:
                break;
            }
            json += "}\n";
            out << json;
        }
    }
}

} // namespace lumo::cli
