#include "LumoCLI/SheetReport.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <ostream>
#include <string_view>

#include <nlohmann/json.hpp>

#include "LumoKit/base/Unicode.h"
#include "LumoKit/export/SheetAnswers.h"
#include "LumoKit/export/TextExport.h"

namespace lumo::cli {

using namespace std::string_view_literals;

namespace {

std::string_view kindWord(LineOutcome::Kind kind) {
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

// Invalid UTF-8 from the input is replaced rather than failing the whole run.
std::string dumpJson(const nlohmann::ordered_json& json) {
    return json.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

// A number exactly as dumpJson writes it (the library's shortest round-trip form, "2.0" for
// whole numbers), without building a JSON value for it.
void appendJsonNumber(std::string& json, double number) {
    // Most answers are whole numbers, which the library writes as their digits and ".0" below
    // 10^15; they are written here without its shortest-digits search.
    if (number != 0 && std::fabs(number) < 1e15 && number == std::trunc(number)) {
        std::array<char, 24> digits;
        json.append(digits.data(),
                    std::to_chars(digits.begin(), digits.end(), static_cast<long long>(number)).ptr);
        json += ".0";
        return;
    }
    std::array<char, 64> buffer;
    char* end = nlohmann::detail::to_chars(buffer.data(), buffer.data() + buffer.size(), number);
    json.append(buffer.data(), std::size_t(end - buffer.data()));
}

// A JSON string exactly as dumpJson writes it: valid UTF-8 as it is, with quotes, backslashes
// and control characters escaped; other text goes through the library.
void appendJsonString(std::string& json, std::string_view text) {
    // Most texts are printable ASCII with nothing to escape, and are copied whole.
    if (std::all_of(text.begin(), text.end(), [](char c) {
            const auto byte = static_cast<unsigned char>(c);
            return byte >= 0x20 && byte < 0x80 && byte != '"' && byte != '\\';
        })) {
        json += '"';
        json += text;
        json += '"';
        return;
    }
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

void writeJsonLines(std::ostream& out, const std::vector<EvaluatedSheet>& sheets,
                    const EvaluationOptions& options, Grouping grouping) {
    // Rows are written straight into one buffer, handed to the stream a block at a time:
    // building a JSON tree for every line cost more than the whole evaluation of the sheet.
    constexpr std::size_t block = 64 * 1024;
    std::string json;
    json.reserve(block + 1024);
    for (const auto& sheet : sheets) {
        // Every row of a sheet starts the same way.
        std::string rowStart = "{\"sheet\":";
        appendJsonString(rowStart, sheet.name);
        rowStart += ",\"line\":"sv;
        for (std::size_t i = 0; i < sheet.results.size(); ++i) {
            const auto& result = sheet.results[i];
            json += rowStart;
            std::array<char, 24> digits;
            json.append(digits.data(), std::to_chars(digits.begin(), digits.end(), i + 1).ptr);
            json += ",\"kind\":\""sv;
            json += kindWord(result.outcome.kind);
            json += "\",\"name\":"sv;
            if (result.name)
                appendJsonString(json, *result.name);
            else
                json += "null"sv;
            switch (result.outcome.kind) {
            case LineOutcome::Kind::value:
                json += ",\"answer\":"sv;
                appendJsonString(json, ValueFormatter::format(result.outcome.value, options, grouping));
                if (result.outcome.value.isNumber()) {
                    const double number = result.outcome.value.number;
                    // JSON has no NaN or infinity; those answers keep only their text.
                    json += ",\"number\":"sv;
                    if (std::isfinite(number))
                        appendJsonNumber(json, number);
                    else
                        json += "null"sv;
                    const std::string unit = answerUnit(result.outcome.value);
                    json += ",\"unit\":"sv;
                    if (unit.empty())
                        json += "null"sv;
                    else
                        appendJsonString(json, unit);
                }
                break;
            case LineOutcome::Kind::failure:
                json += ",\"message\":"sv;
                appendJsonString(json, result.outcome.message());
                break;
            case LineOutcome::Kind::plot:
                json += ",\"plot\":"sv;
                json += dumpJson(plotJson(*result.outcome.plot()));
                break;
            case LineOutcome::Kind::blank:
            case LineOutcome::Kind::comment:
                break;
            }
            json += "}\n"sv;
            if (json.size() >= block) {
                out.write(json.data(), static_cast<std::streamsize>(json.size()));
                json.clear();
            }
        }
    }
    out.write(json.data(), static_cast<std::streamsize>(json.size()));
}

} // namespace lumo::cli
