#pragma once

#include <QString>

#include <optional>
#include <string>
#include <vector>

#include "LumoKit/sheet/PlotDescription.h"

namespace lumo {

/// Where the labelled marks of an axis go: round values (1, 2, 2.5 or 5 times a power of ten
/// apart) inside a range.
struct AxisTicks {
    double step = 1;
    std::vector<double> values;

    /// At most about `count` ticks inside low…high (both included when they fall on a step).
    static AxisTicks inside(PlotRange range, int count);
};

/// A range that can be drawn: an empty or inverted one is widened around its value, so a
/// constant function still gets an axis.
PlotRange drawableRange(PlotRange range);

/// The range widened by a share of its height on either side, so a curve does not run along the
/// frame.
PlotRange paddedRange(PlotRange range, double share);

/// A tick value written as the answer column writes numbers: digit groups, no more fraction
/// digits than the step needs, and the plotted values' unit when `unitLabel` names one.
QString tickLabel(double value, double step, const std::optional<std::string>& unitLabel);

/// A plotted value written in full, as the answer column would (for values on bars and the
/// hover read-out).
QString valueLabel(double value, const std::optional<std::string>& unitLabel);

} // namespace lumo
