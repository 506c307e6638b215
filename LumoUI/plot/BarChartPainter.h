#pragma once

#include <QRectF>

class QPainter;

namespace lumo {

struct PlotSpec;
struct PlotStyle;

/// One bar per value over a zero line, each with its label below the chart and its value
/// written above a bar that rises and below one that falls. Labels and values that would
/// collide with their neighbours are shortened or left out.
void paintBarChart(QPainter& painter, const QRectF& body, const PlotSpec& description,
                   const PlotStyle& style);

} // namespace lumo
