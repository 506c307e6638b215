#pragma once

#include <optional>
#include <string>
#include <vector>

namespace lumo {

struct PlotPoint {
    double x = 0;
    double y = 0;
    bool operator==(const PlotPoint&) const = default;
};

struct PlotBar {
    std::string label;
    double value = 0;
    bool operator==(const PlotBar&) const = default;
};

struct PlotRange {
    double low = 0;
    double high = 0;
    bool operator==(const PlotRange&) const = default;
};

/// The description of a curve, a bar chart or a three-axis surface drawn under a line.
struct PlotSpec {
    enum class Kind { curve, bars, surface };

    Kind kind = Kind::curve;
    std::string title;
    std::vector<std::vector<PlotPoint>> segments;       // curve pieces
    std::vector<PlotBar> bars;                           // bars
    std::vector<std::vector<std::optional<double>>> surface; // rows of heights; absent is a hole
    PlotRange xRange;
    PlotRange yRange;
    std::optional<PlotRange> zRange; // present for a surface
    std::optional<std::string> unitLabel;

    bool operator==(const PlotSpec&) const = default;
};

} // namespace lumo
