#include "CellGeometry.h"

#include <cmath>

namespace Kelvane {

Point3 pillar_point(std::span<const double, 6> pillar, double depth)
{
    const double height = pillar[5] - pillar[2];
    const double sx = (pillar[3] - pillar[0]) / height;
    const double sy = (pillar[4] - pillar[1]) / height;
    if (height == 0 || !std::isfinite(sx) || !std::isfinite(sy))
        return {pillar[0], pillar[1], depth};
    return {pillar[0] + (depth - pillar[2]) * sx, pillar[1] + (depth - pillar[2]) * sy, depth};
}

CellCorners cell_corners(const CornerPointView& grid, std::int64_t i, std::int64_t j, std::int64_t k)
{
    CellCorners corners;
    for (int b = 0; b < 2; ++b) {
        for (int a = 0; a < 2; ++a) {
            const auto first = static_cast<std::size_t>(6 * (i + a + (grid.size[0] + 1) * (j + b)));
            std::array<double, 6> pillar;
            for (std::size_t n = 0; n < 6; ++n)
                pillar[n] = grid.pillars[first + n];
            for (int c = 0; c < 2; ++c) {
                const auto depth = static_cast<std::size_t>(depth_offset(grid.size, i, j, k, b, c) + a);
                corners[static_cast<std::size_t>(a + 2 * b + 4 * c)] = pillar_point(pillar, grid.corner_depths[depth]);
            }
        }
    }
    return corners;
}

std::array<Point3, 4> side_corners(const CellCorners& corners, CellSide side)
{
    static constexpr std::array<std::array<std::size_t, 4>, 6> places{
        {{0, 4, 6, 2}, {1, 3, 7, 5}, {0, 1, 5, 4}, {2, 6, 7, 3}, {0, 2, 3, 1}, {4, 5, 7, 6}}};
    std::array<Point3, 4> result;
    for (std::size_t n = 0; n < 4; ++n)
        result[n] = corners[places[static_cast<std::size_t>(side)][n]];
    return result;
}

Point3 cell_centre(const CellCorners& corners)
{
    Point3 centre{};
    for (std::size_t n = 0; n < 3; ++n) {
        for (const Point3& corner : corners)
            centre[n] += corner[n];
        centre[n] /= 8;
    }
    return centre;
}

namespace {
Point3 operator-(const Point3& a, const Point3& b)
{
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}
Point3 operator+(const Point3& a, const Point3& b)
{
    return {a[0] + b[0], a[1] + b[1], a[2] + b[2]};
}
double triple(const Point3& a, const Point3& b, const Point3& c)
{
    return a[0] * (b[1] * c[2] - b[2] * c[1]) + a[1] * (b[2] * c[0] - b[0] * c[2]) + a[2] * (b[0] * c[1] - b[1] * c[0]);
}
} // namespace

double signed_cell_volume(const CellCorners& p)
{
    return (triple((p[2] - p[1]) + (p[6] - p[3]), p[7] - p[2], p[3] - p[0]) +
            triple((p[4] - p[2]) + (p[5] - p[6]), p[7] - p[4], p[6] - p[0]) +
            triple((p[1] - p[4]) + (p[3] - p[5]), p[7] - p[1], p[5] - p[0])) *
           (1.0 / 12);
}

double cell_volume(const CellCorners& corners)
{
    return std::abs(signed_cell_volume(corners));
}

double cell_height(const CellCorners& p)
{
    return ((p[4][2] - p[0][2]) + (p[5][2] - p[1][2]) + (p[6][2] - p[2][2]) + (p[7][2] - p[3][2])) / 4;
}

double cell_height(const CornerPointView& grid, std::int64_t i, std::int64_t j, std::int64_t k)
{
    double sum = 0;
    for (int b = 0; b < 2; ++b) {
        for (int a = 0; a < 2; ++a) {
            const auto depth = [&](int c) {
                return grid.corner_depths[static_cast<std::size_t>(depth_offset(grid.size, i, j, k, b, c) + a)];
            };
            sum += depth(1) - depth(0);
        }
    }
    return sum / 4;
}

} // namespace Kelvane
