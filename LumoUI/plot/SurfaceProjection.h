#pragma once

#include <QPointF>
#include <QRectF>

#include <array>
#include <optional>
#include <vector>

#include "LumoKit/sheet/PlotDescription.h"

namespace lumo {

/// A surface's grid seen from above at a fixed height, turned about its upright axis, and
/// projected into a rectangle. Pure geometry: the painter draws what this lays out.
///
/// The grid is scaled into a box of −1…1 across both ground axes and −boxHalfHeight…
/// boxHalfHeight upright, so every surface has the same shape whatever its ranges.
class SurfaceProjection {
public:
    static constexpr double elevationDegrees = 24;
    static constexpr double boxHalfHeight = 0.55;

    /// A point of the box: x and y on the ground (−1…1), z upright.
    struct BoxPoint {
        double x = 0;
        double y = 0;
        double z = 0;
    };

    /// One cell of the grid (or the triangle left of it where a corner is a hole), ready to
    /// fill: its corners on screen, how far it lies (larger is farther), how squarely it faces
    /// the light (0…1) and its mean height within the z range (0…1).
    struct Face {
        std::array<QPointF, 4> corners;
        int cornerCount = 4;
        double depth = 0;
        double light = 1;
        double height = 0;
    };

    /// `angleDegrees` turns the grid counter-clockwise seen from above; the projection fits
    /// `rect` the same at every angle, so turning never makes the surface grow or shrink.
    SurfaceProjection(const PlotSpec& description, const QRectF& rect, double angleDegrees);

    QPointF toScreen(const BoxPoint& point) const;
    double depthOf(const BoxPoint& point) const;

    /// The faces from the farthest to the nearest: drawn in this order, nearer faces cover
    /// farther ones.
    const std::vector<Face>& faces() const { return m_faces; }

    /// The grid's points on screen, row by row; absent where the surface has a hole.
    const std::vector<std::vector<std::optional<QPointF>>>& points() const { return m_points; }

    /// The box's height of a value of the z range.
    double boxZ(double value) const;

private:
    void project(const PlotSpec& description);

    QPointF m_centre;
    double m_scale = 1;
    double m_scaleAcross = 1;
    double m_cos = 1;
    double m_sin = 0;
    double m_cosElevation = 1;
    double m_sinElevation = 0;
    PlotRange m_z;
    std::vector<Face> m_faces;
    std::vector<std::vector<std::optional<QPointF>>> m_points;
};

} // namespace lumo
