#pragma once

#include "upscaling/kernels/CellGeometry.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

/// The cell that holds a point, found by asking every cell: the trilinear map is inverted in three dimensions by
/// Newton's method from nine starts. Shares no code with the locator.
namespace brute_force {

using Kelvane::CellCorners;
using Kelvane::Point3;

inline Point3 trilinear(const CellCorners& p, const std::array<double, 3>& t)
{
    Point3 result{};
    for (std::size_t n = 0; n < 8; ++n) {
        const double w = (n & 1 ? t[0] : 1 - t[0]) * (n & 2 ? t[1] : 1 - t[1]) * (n & 4 ? t[2] : 1 - t[2]);
        for (std::size_t axis = 0; axis < 3; ++axis)
            result[axis] += w * p[n][axis];
    }
    return result;
}

inline double determinant(const std::array<Point3, 3>& m)
{
    return m[0][0] * (m[1][1] * m[2][2] - m[1][2] * m[2][1]) - m[1][0] * (m[0][1] * m[2][2] - m[0][2] * m[2][1]) +
           m[2][0] * (m[0][1] * m[1][2] - m[0][2] * m[1][1]);
}

/// True when the point lies in the cell or closer to its faces than `tolerance` of it.
inline bool holds(const CellCorners& p, const Point3& point, double tolerance = 1e-8)
{
    double size = 0;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        double low = std::numeric_limits<double>::infinity(), high = -low;
        for (const Point3& corner : p) {
            if (!std::isfinite(corner[axis]))
                return false;
            low = std::min(low, corner[axis]);
            high = std::max(high, corner[axis]);
        }
        const double more = 1e-6 * (high - low);
        if (point[axis] < low - more || point[axis] > high + more)
            return false;
        size = std::max(size, high - low);
    }
    for (int start = 0; start < 9; ++start) {
        std::array<double, 3> t{0.5, 0.5, 0.5};
        if (start > 0)
            for (std::size_t axis = 0; axis < 3; ++axis)
                t[axis] = ((start - 1) >> axis) & 1 ? 0.85 : 0.15;
        for (int step = 0; step < 60; ++step) {
            const Point3 at = trilinear(p, t);
            std::array<Point3, 3> columns{};
            for (std::size_t axis = 0; axis < 3; ++axis) {
                auto low = t, high = t;
                low[axis] = 0;
                high[axis] = 1;
                const Point3 from = trilinear(p, low), to = trilinear(p, high);
                for (std::size_t n = 0; n < 3; ++n)
                    columns[axis][n] = to[n] - from[n];
            }
            const double whole = determinant(columns);
            const Point3 off{point[0] - at[0], point[1] - at[1], point[2] - at[2]};
            double moved = 0;
            for (std::size_t axis = 0; axis < 3; ++axis) {
                auto replaced = columns;
                replaced[axis] = off;
                const double change = determinant(replaced) / whole;
                if (!std::isfinite(change)) {
                    moved = -1;
                    break;
                }
                t[axis] = std::clamp(t[axis] + change, -1.0, 2.0);
                moved += std::abs(change);
            }
            if (moved < 0)
                break;
            if (moved < 1e-11) {
                if (std::ranges::all_of(t, [=](double v) { return v >= -tolerance && v <= 1 + tolerance; }))
                    return true;
                break;
            }
        }
    }
    return false;
}

/// Corners of all cells of a grid, those of inactive cells not finite.
inline std::vector<CellCorners> corners_of(const Kelvane::CornerPointView& grid)
{
    std::vector<CellCorners> result;
    for (std::int64_t k = 0; k < grid.size[2]; ++k)
        for (std::int64_t j = 0; j < grid.size[1]; ++j)
            for (std::int64_t i = 0; i < grid.size[0]; ++i) {
                result.push_back(cell_corners(grid, i, j, k));
                if (!grid.active[static_cast<std::size_t>(grid.cell_index(i, j, k))])
                    result.back()[0][0] = std::nan("");
            }
    return result;
}

/// Lowest index of the cells that hold the point; -1 for none.
inline std::int64_t find(const std::vector<CellCorners>& cells, const Point3& point, double tolerance = 1e-8)
{
    for (std::size_t cell = 0; cell < cells.size(); ++cell)
        if (holds(cells[cell], point, tolerance))
            return static_cast<std::int64_t>(cell);
    return -1;
}

} // namespace brute_force
