#include "LumoUI/plot/SurfaceProjection.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "LumoUI/plot/AxisTicks.h"

namespace lumo {

namespace {

double radians(double degrees) {
    return degrees * std::numbers::pi / 180;
}

struct Vector {
    double x, y, z;
};

Vector minus(const SurfaceProjection::BoxPoint& a, const SurfaceProjection::BoxPoint& b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}

Vector cross(const Vector& a, const Vector& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

} // namespace

SurfaceProjection::SurfaceProjection(const PlotSpec& description, const QRectF& rect, double angleDegrees)
    : m_centre(rect.center()), m_cos(std::cos(radians(angleDegrees))), m_sin(std::sin(radians(angleDegrees))),
      m_cosElevation(std::cos(radians(elevationDegrees))),
      m_sinElevation(std::sin(radians(elevationDegrees))),
      m_z(drawableRange(description.zRange.value_or(PlotRange{0, 1}))) {
    // A turned square reaches √2 from its centre at most, across and in depth.
    const double reach = std::numbers::sqrt2;
    const double across = 2 * reach;
    const double upright = 2 * (reach * m_sinElevation + boxHalfHeight * m_cosElevation);
    // A wide rectangle stretches the box across, up to almost twice as wide as it is deep, so a
    // band under a line is well filled.
    const double uprightScale = rect.height() / upright;
    m_scaleAcross = std::max(1e-6, std::min(rect.width() / across, uprightScale * 1.9));
    m_scale = std::max(1e-6, std::min(uprightScale, m_scaleAcross));
    project(description);
}

double SurfaceProjection::boxZ(double value) const {
    return -boxHalfHeight + 2 * boxHalfHeight * (value - m_z.low) / (m_z.high - m_z.low);
}

QPointF SurfaceProjection::toScreen(const BoxPoint& point) const {
    const double across = point.x * m_cos - point.y * m_sin;
    const double away = point.x * m_sin + point.y * m_cos;
    return QPointF(m_centre.x() + across * m_scaleAcross,
                   m_centre.y() - (point.z * m_cosElevation + away * m_sinElevation) * m_scale);
}

double SurfaceProjection::depthOf(const BoxPoint& point) const {
    const double away = point.x * m_sin + point.y * m_cos;
    return away * m_cosElevation - point.z * m_sinElevation;
}

void SurfaceProjection::project(const PlotSpec& description) {
    const auto& grid = description.surface;
    const std::size_t rows = grid.size();
    m_points.assign(rows, {});
    std::vector<std::vector<std::optional<BoxPoint>>> box(rows);
    for (std::size_t j = 0; j < rows; ++j) {
        const std::size_t columns = grid[j].size();
        box[j].resize(columns);
        m_points[j].resize(columns);
        for (std::size_t i = 0; i < columns; ++i) {
            if (!grid[j][i])
                continue;
            const BoxPoint point{columns > 1 ? -1 + 2 * double(i) / double(columns - 1) : 0,
                                 rows > 1 ? -1 + 2 * double(j) / double(rows - 1) : 0, boxZ(*grid[j][i])};
            box[j][i] = point;
            m_points[j][i] = toScreen(point);
        }
    }

    // The light comes from over the viewer's left shoulder, so it turns with the view.
    const Vector light{-0.45 * m_cos + 0.55 * m_sin, 0.45 * m_sin + 0.55 * m_cos, 0.75};
    const double lightLength = std::sqrt(light.x * light.x + light.y * light.y + light.z * light.z);
    m_faces.clear();
    m_faces.reserve(rows * rows);
    for (std::size_t j = 0; j + 1 < rows; ++j) {
        for (std::size_t i = 0; i + 1 < std::min(box[j].size(), box[j + 1].size()); ++i) {
            const std::array<std::optional<BoxPoint>, 4> cell{box[j][i], box[j][i + 1], box[j + 1][i + 1],
                                                              box[j + 1][i]};
            std::array<BoxPoint, 4> present{};
            int count = 0;
            for (const auto& corner : cell)
                if (corner)
                    present[std::size_t(count++)] = *corner;
            if (count < 3)
                continue;
            Face face;
            face.cornerCount = count;
            double depth = 0;
            double height = 0;
            for (int k = 0; k < count; ++k) {
                face.corners[std::size_t(k)] = toScreen(present[std::size_t(k)]);
                depth += depthOf(present[std::size_t(k)]);
                height += present[std::size_t(k)].z;
            }
            face.depth = depth / count;
            face.height = std::clamp((height / count + boxHalfHeight) / (2 * boxHalfHeight), 0.0, 1.0);
            const Vector normal =
                cross(minus(present[1], present[0]), minus(present[std::size_t(count - 1)], present[0]));
            const double length = std::sqrt(normal.x * normal.x + normal.y * normal.y + normal.z * normal.z);
            if (length > 0) {
                const double facing =
                    (normal.x * light.x + normal.y * light.y + normal.z * light.z) / (length * lightLength);
                // Both sides of the sheet are lit alike: the underside shows when it faces the viewer.
                face.light = std::abs(facing);
            }
            m_faces.push_back(face);
        }
    }
    std::stable_sort(m_faces.begin(), m_faces.end(),
                     [](const Face& a, const Face& b) { return a.depth > b.depth; });
}

} // namespace lumo
