#pragma once

#include "lodex/volumes/model/CellGeometry.h"

#include <QPointF>
#include <QSizeF>

#include <array>
#include <optional>

namespace lodex {

/// Where the camera stands, as plain numbers. "Drawn" coordinates are x, y, z with z up, relative to the scene's origin
/// and vertically exaggerated.
struct ViewTransform {
    std::array<double, 16> matrix{}; ///< drawn coordinates to -1 .. 1 on the screen, row by row
    std::array<double, 16> inverse{};
    QSizeF size;  ///< of the picture, in the unit that positions are in
    Point3 eye{}; ///< place of the eye; with `parallel` the direction towards the eye
    bool parallel = false;
    Point3 origin{}; ///< x, y, depth of the drawn 0, 0, 0
    double exaggeration = 1;

    /// Position in the picture, y down; nothing for a point behind the eye.
    [[nodiscard]] std::optional<QPointF> project(const Point3& drawn) const;
    /// The drawn point at a position; `nearness` -1 at the near end of what is seen, 1 at its far end.
    [[nodiscard]] Point3 unproject(const QPointF& position, double nearness) const;
    /// x, y, depth of a drawn point.
    [[nodiscard]] Point3 to_real(const Point3& drawn) const
    {
        return {drawn[0] + origin[0], drawn[1] + origin[1], origin[2] - drawn[2] / exaggeration};
    }
    [[nodiscard]] Point3 to_drawn(const Point3& real) const
    {
        return {real[0] - origin[0], real[1] - origin[1], (origin[2] - real[2]) * exaggeration};
    }
};

/// What a camera looks at and from where, to be kept and taken up again.
struct CameraPlace {
    Point3 focus{};                    ///< x, y, depth of the point in the middle
    double height = 1;                 ///< what is seen at the focus from the lower to the upper edge, length units
    double azimuth = 0, elevation = 0; ///< degrees: where the eye is, clockwise from the north, and above the horizon
};

/// A box of drawn coordinates.
struct DrawnBox {
    Point3 least{}, greatest{};
    bool empty = true;

    void add(const Point3& point);
    [[nodiscard]] Point3 centre() const;
    /// Corner a + 2b + 4c lies at the greater end of x when a, of y when b, of z when c.
    [[nodiscard]] Point3 corner(std::size_t n) const
    {
        return {n & 1 ? greatest[0] : least[0], n & 2 ? greatest[1] : least[1], n & 4 ? greatest[2] : least[2]};
    }
};

} // namespace lodex
