#pragma once

#include <QRectF>

class QPainter;

namespace lumo {

struct PlotSpec;
struct PlotStyle;

/// A surface as a shaded mesh in a box seen from above, turned by `angleDegrees` about its
/// upright axis: the floor and the back walls with their grid, the faces from the farthest to
/// the nearest, and the three axes with tick labels.
void paintSurface(QPainter& painter, const QRectF& body, const PlotSpec& description, const PlotStyle& style,
                  double angleDegrees);

} // namespace lumo
