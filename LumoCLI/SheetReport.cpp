#include "LumoCLI/SheetReport.h"

#include <cmath>
#include <ostream>

#include <nlohmann/json.hpp>

#include "LumoKit/export/SheetAnswers.h"

namespace lumo::cli {

namespace {

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

} // namespace

void writeJsonLines(std::ostream& out, const std::vector<EvaluatedSheet>& sheets,
                    const EvaluationOptions& options, Grouping grouping) {
    for (const auto& sheet : sheets) {
        for (std::size_t i = 0; i < sheet.results.size(); ++i) {
            const auto& result = sheet.results[i];
            nlohmann::ordered_json json;
            json["sheet"] = sheet.name;
            json["line"] = i + 1;
            json["kind"] = kindWord(result.outcome.kind);
            json["name"] = result.name ? nlohmann::ordered_json(*result.name) : nlohmann::ordered_json();
            switch (result.outcome.kind) {
            case LineOutcome::Kind::value:
                json["answer"] = ValueFormatter::format(result.outcome.value, options, grouping);
                if (result.outcome.value.isNumber()) {
                    const double number = result.outcome.value.number;
                    // JSON has no NaN or infinity; those answers keep only their text.
                    json["number"] =
                        std::isfinite(number) ? nlohmann::ordered_json(number) : nlohmann::ordered_json();
                    const std::string unit = answerUnit(result.outcome.value);
                    json["unit"] = unit.empty() ? nlohmann::ordered_json() : nlohmann::ordered_json(unit);
                }
                break;
            case LineOutcome::Kind::failure:
                json["message"] = result.outcome.message;
                break;
            case LineOutcome::Kind::plot:
                json["plot"] = plotJson(*result.outcome.plot);
                break;
            case LineOutcome::Kind::blank:
            case LineOutcome::Kind::comment:
                break;
            }
            // Replace invalid UTF-8 from the input rather than failing the whole run.
            out << json.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) << "\n";
        }
    }
}

} // namespace lumo::cli
