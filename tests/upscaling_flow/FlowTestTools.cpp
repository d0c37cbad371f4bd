#include "FlowTestTools.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace flow_test {

BlockData make_block(const Counts& n, const std::array<double, 3>& size,
                     const std::function<double(int, int, int, int)>& value)
{
    BlockData data{.n = n, .size = size, .corners = std::nullopt, .k = {}};
    for (int axis = 0; axis < 3; ++axis) {
        for (int k = 0; k < n[2]; ++k)
            for (int j = 0; j < n[1]; ++j)
                for (int i = 0; i < n[0]; ++i)
                    data.k[axis].push_back(value(axis, i, j, k));
    }
    return data;
}

BlockData lognormal_block(const Counts& n, const std::array<double, 3>& size, double sigma, bool isotropic,
                          unsigned seed)
{
    // Box-Muller on the engine's own numbers: the same block with every standard library.
    std::mt19937 engine(seed);
    const auto uniform = [&] { return (engine() + 0.5) / 4294967296.0; };
    BlockData data = make_block(n, size, [&](int, int, int, int) {
        const double radius = std::sqrt(-2 * std::log(uniform()));
        return std::exp(sigma * radius * std::cos(2 * std::numbers::pi * uniform()));
    });
    if (isotropic)
        data.k[1] = data.k[2] = data.k[0];
    return data;
}

BlockResult solve(const BlockData& data, Boundary boundary, Discretisation discretisation)
{
    BlockSolver solver;
    return solver.solve(data.block(),
                        {.boundary = boundary, .discretisation = discretisation, .solver = Solver::Exact});
}

Tensor tensor_of(const BlockData& data, Boundary boundary, Discretisation discretisation)
{
    return solve(data, boundary, discretisation).tensor;
}

double least_eigenvalue(const Tensor& t)
{
    // Jacobi's rotations.
    double a[3][3] = {{t[0], t[3], t[4]}, {t[3], t[1], t[5]}, {t[4], t[5], t[2]}};
    for (int sweep = 0; sweep < 20; ++sweep) {
        for (int p = 0; p < 3; ++p) {
            for (int q = p + 1; q < 3; ++q) {
                const double angle = 0.5 * std::atan2(2 * a[p][q], a[q][q] - a[p][p]);
                const double c = std::cos(angle);
                const double s = std::sin(angle);
                for (auto& row : a) {
                    const double x = row[p];
                    row[p] = c * x - s * row[q];
                    row[q] = s * x + c * row[q];
                }
                for (int r = 0; r < 3; ++r) {
                    const double x = a[p][r];
                    a[p][r] = c * x - s * a[q][r];
                    a[q][r] = s * x + c * a[q][r];
                }
            }
        }
    }
    return std::min({a[0][0], a[1][1], a[2][2]});
}

Corners brick_corners(const std::array<double, 3>& size)
{
    Corners corners{};
    for (int corner = 0; corner < 8; ++corner) {
        for (int axis = 0; axis < 3; ++axis)
            corners[corner][axis] = ((corner >> axis) & 1) != 0 ? size[axis] : 0.0;
    }
    return corners;
}

Corners mapped(const Corners& corners, const std::array<Vector3, 3>& matrix)
{
    Corners result{};
    for (int corner = 0; corner < 8; ++corner) {
        for (int r = 0; r < 3; ++r) {
            for (int c = 0; c < 3; ++c)
                result[corner][r] += matrix[r][c] * corners[corner][c];
        }
    }
    return result;
}

} // namespace flow_test
