#pragma once

#include "CellGeometry.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <type_traits>

namespace Kelvane {

/// A pillar as a line over depth: x = x0 + (depth - z0) * sx, y likewise. The points are those of pillar_point(), bit
/// for bit.
struct PillarLine {
    double x0 = 0, y0 = 0, z0 = 0, sx = 0, sy = 0;

    [[nodiscard]] double x(double depth) const { return x0 + (depth - z0) * sx; }
    [[nodiscard]] double y(double depth) const { return y0 + (depth - z0) * sy; }
};

/// One column of cells: its four pillars and the way to its depths. Pillar a + 2b stands at I side a and J side b.
struct GridColumn {
    std::int64_t index = -1;                ///< i + ni * j
    std::array<PillarLine, 4> pillars{};
    std::array<std::int64_t, 4> first{};    ///< place of the depth of the top of cell k = 0, by pillar
};

/// Value at areal coordinates a, b of what has the values v at the four pillars.
[[nodiscard]] inline double bilinear(const std::array<double, 4>& v, double a, double b)
{
    return (1 - b) * ((1 - a) * v[0] + a * v[1]) + b * ((1 - a) * v[2] + a * v[3]);
}

/// Hands out the columns of a grid; reads the arrays without asking for their width at every number. The arrays outlive
/// it.
class GridColumns {
public:
    explicit GridColumns(const CornerPointView& grid)
        : size_(grid.size), pillars_(grid.pillars), depths_(grid.corner_depths), side_(4 * grid.size[0] * grid.size[1])
    {
    }

    [[nodiscard]] std::int64_t count() const { return size_[0] * size_[1]; }
    [[nodiscard]] std::int64_t layers() const { return size_[2]; }

    [[nodiscard]] GridColumn column(std::int64_t index) const
    {
        GridColumn result;
        result.index = index;
        const std::int64_t i = index % size_[0], j = index / size_[0];
        for (int n = 0; n < 4; ++n) {
            const std::int64_t a = n % 2, b = n / 2;
            result.pillars[static_cast<std::size_t>(n)] = pillar(i + a + (size_[0] + 1) * (j + b));
            result.first[static_cast<std::size_t>(n)] = (2 * j + b) * 2 * size_[0] + 2 * i + a;
        }
        return result;
    }

    /// Depth of cell k at pillar n: its top for c = 0, its base for c = 1.
    [[nodiscard]] double depth(const GridColumn& column, std::int64_t k, std::size_t n, int c) const
    {
        return depths_[column.first[n] + (2 * k + c) * side_];
    }
    [[nodiscard]] std::array<double, 4> depths(const GridColumn& column, std::int64_t k, int c) const
    {
        return {depth(column, k, 0, c), depth(column, k, 1, c), depth(column, k, 2, c), depth(column, k, 3, c)};
    }
    /// Thickness of cell k measured along depth at areal coordinates a, b; never negative.
    [[nodiscard]] double thickness(const GridColumn& column, std::int64_t k, double a, double b) const
    {
        const auto top = depths(column, k, 0), base = depths(column, k, 1);
        return std::abs(bilinear({base[0] - top[0], base[1] - top[1], base[2] - top[2], base[3] - top[3]}, a, b));
    }
    /// Image of the local coordinates a, b, c of cell k under its trilinear map.
    [[nodiscard]] Point3 point(const GridColumn& column, std::int64_t k, double a, double b, double c) const
    {
        const auto top = depths(column, k, 0), base = depths(column, k, 1);
        std::array<double, 4> x, y, z;
        for (std::size_t n = 0; n < 4; ++n) {
            const PillarLine& line = column.pillars[n];
            z[n] = (1 - c) * top[n] + c * base[n];
            x[n] = (1 - c) * line.x(top[n]) + c * line.x(base[n]);
            y[n] = (1 - c) * line.y(top[n]) + c * line.y(base[n]);
        }
        return {bilinear(x, a, b), bilinear(y, a, b), bilinear(z, a, b)};
    }
    /// cell_centre() of cell k, bit for bit.
    [[nodiscard]] Point3 centre(const GridColumn& column, std::int64_t k) const
    {
        Point3 centre{};
        for (int c = 0; c < 2; ++c) {
            for (std::size_t n = 0; n < 4; ++n) {
                const double z = depth(column, k, n, c);
                centre[0] += column.pillars[n].x(z);
                centre[1] += column.pillars[n].y(z);
                centre[2] += z;
            }
        }
        return {centre[0] / 8, centre[1] / 8, centre[2] / 8};
    }

private:
    // The numbers of an array of either width; a choice that always falls the same way costs next to nothing.
    class Numbers {
    public:
        explicit Numbers(const Lodex::RealArray& array)
        {
            array.visit([this](auto numbers) {
                if constexpr (std::is_same_v<typename decltype(numbers)::value_type, float>)
                    single_ = numbers.data();
                else
                    double_ = numbers.data();
            });
        }
        [[nodiscard]] double operator[](std::int64_t n) const
        {
            return single_ ? static_cast<double>(single_[n]) : double_[n];
        }

    private:
        const float* single_ = nullptr;
        const double* double_ = nullptr;
    };

    [[nodiscard]] PillarLine pillar(std::int64_t index) const
    {
        const std::int64_t n = 6 * index;
        PillarLine line{pillars_[n], pillars_[n + 1], pillars_[n + 2]};
        const double height = pillars_[n + 5] - line.z0;
        const double sx = (pillars_[n + 3] - line.x0) / height;
        const double sy = (pillars_[n + 4] - line.y0) / height;
        if (height != 0 && std::isfinite(sx) && std::isfinite(sy)) {
            line.sx = sx;
            line.sy = sy;
        }
        return line;
    }

    GridSize size_;
    Numbers pillars_, depths_;
    std::int64_t side_; // depths between the top and the base of a cell
};

} // namespace Kelvane
