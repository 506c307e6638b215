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
    std::vector<std::vector<PlotPoint>> segments; // curve pieces
    std::vector<PlotBar> bars;                    // bars
    // Rows of heights over a regular grid; absent is a hole. surface[j][i] is the height at
    // the i-th x and the j-th y, both counted in equal steps from the low end of their range.
    std::vector<std::vector<std::optional<double>>> surface;
    PlotRange xRange; // for bars 0 to the bar count: bar i stands over i to i + 1
    PlotRange yRange;
    std::optional<PlotRange> zRange; // present for a surface
    // The display text of the plotted values' unit, "%" for percent figures, absent for plain numbers.
    std::optional<std::string> unitLabel;

    bool operator==(const PlotSpec&) const = default;
};

} // namespace lumo
