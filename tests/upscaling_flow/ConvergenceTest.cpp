// Orders of convergence under refinement of the sampling, printed and asserted.

#include "FlowTestTools.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <numbers>

namespace flow_test {
namespace {

/// Order from three samplings, each twice as fine, by the distance of their diagonals.
double order_of(const std::array<Tensor, 3>& tensors)
{
    const auto distance = [](const Tensor& a, const Tensor& b) {
        return std::hypot(a[0] - b[0], a[1] - b[1], a[2] - b[2]);
    };
    return std::log2(distance(tensors[0], tensors[1]) / distance(tensors[1], tensors[2]));
}

constexpr const char* names[] = {"two-point", "mixed", "conforming"};

TEST(Convergence, CheckerboardNearsTheGeometricMeanAsItsSingularityAllows)
{
    // Four squares of k1, k2: exactly sqrt(k1 k2). Pressure behaves like r^a at the crossing, a = 4/pi
    // atan(sqrt(k2/k1)), and the energy error like h^(2a).
    const double k1 = 9;
    const double k2 = 1;
    const double order = 2 * 4 / std::numbers::pi * std::atan(std::sqrt(k2 / k1));
    for (const Discretisation discretisation : all_discretisations) {
        double before = 0;
        double measured = 0;
        std::printf("checkerboard 9:1, %s: errors", names[static_cast<int>(discretisation)]);
        for (int half = 2; half <= 32; half *= 2) {
            const BlockData data = make_block({2 * half, 2 * half, 1}, {1, 1, 1}, [&](int, int i, int j, int) {
                return i / half == j / half ? k1 : k2;
            });
            const double error = std::abs(tensor_of(data, Boundary::Confined, discretisation)[0] - 3);
            measured = std::log2(before / error);
            before = error;
            std::printf(" %.4g", error);
        }
        std::printf(", order %.3f (%.3f)\n", measured, order);
        EXPECT_NEAR(measured, order, 0.1);
    }
}

double smooth(double x, double y, double z)
{
    const double pi = std::numbers::pi;
    return std::exp(0.8 * std::sin(pi * x + 1) * std::cos(pi * y) + 0.6 * std::sin(pi * (0.5 * x + y + 0.7 * z)));
}

TEST(Convergence, SmoothPermeabilityIsOfSecondOrder)
{
    for (const Boundary boundary : all_boundaries) {
        for (const Discretisation discretisation : all_discretisations) {
            std::array<Tensor, 3> tensors{};
            for (int level = 0; level < 3; ++level) {
                const int n = 6 << level;
                const BlockData data = make_block({n, n, n}, {1, 2, 1.5}, [&](int, int i, int j, int k) {
                    return smooth((i + 0.5) / n, (j + 0.5) / n, (k + 0.5) / n);
                });
                BlockSolver solver;
                tensors[level] = solver.solve(data.block(), {.boundary = boundary,
                                                             .discretisation = discretisation,
                                                             .tolerance = 1e-11}).tensor;
            }
            const double order = order_of(tensors);
            std::printf("smooth, boundary %d, %s: order %.3f\n", static_cast<int>(boundary),
                        names[static_cast<int>(discretisation)], order);
            EXPECT_NEAR(order, 2, 0.3);
        }
    }
}

/// From below and from above, so that what they close in on lies between them at every sampling.
TEST(Convergence, MixedAndConformingCloseIn)
{
    double last_mixed = 0;
    double last_conforming = 1e300;
    const BlockData coarse = lognormal_block({3, 3, 3}, {1, 1, 1}, 1.5, true, 3);
    double gap = 1e300;
    for (int refine = 1; refine <= 4; refine *= 2) {
        const int n = 3 * refine;
        const BlockData data = make_block({n, n, n}, {1, 1, 1}, [&](int, int i, int j, int k) {
            return coarse.k[0][coarse.at(i / refine, j / refine, k / refine)];
        });
        BlockSolver solver;
        const auto of = [&](Discretisation discretisation) {
            return solver.solve(data.block(), {.discretisation = discretisation}).tensor[0];
        };
        const double low = of(Discretisation::TwoPoint);
        const double mixed = of(Discretisation::Mixed);
        const double conforming = of(Discretisation::Conforming);
        std::printf("3x3x3 refined by %d: two-point %.6f mixed %.6f conforming %.6f\n", refine, low, mixed, conforming);
        EXPECT_LE(low, mixed);
        EXPECT_LT(mixed, conforming);
        EXPECT_GT(mixed, last_mixed);
        EXPECT_LT(conforming, last_conforming);
        EXPECT_LT(conforming - mixed, 0.75 * gap);
        gap = conforming - mixed;
        last_mixed = mixed;
        last_conforming = conforming;
    }
}

TEST(Convergence, MixedOnACurvedCell)
{
    // A twisted cell with bulging permeability: refinement settles at second order under each boundary condition.
    Corners corners = brick_corners({1, 1, 0.5});
    corners[1][2] += 0.15;
    corners[6][2] -= 0.1;
    corners[7][0] += 0.2;
    const auto cell = Kelvane::flow::frame_cell(corners);
    for (const Boundary boundary : all_boundaries) {
        std::array<Tensor, 3> tensors{};
        for (int level = 0; level < 3; ++level) {
            const int n = 3 << level;
            BlockData data = make_block({n, n, n}, cell.size, [&](int, int i, int j, int k) {
                return smooth((i + 0.5) / n, (j + 0.5) / n, (k + 0.5) / n);
            });
            data.corners = cell.corners;
            BlockSolver solver;
            const BlockResult result = solver.solve(data.block(), {.boundary = boundary,
                                                                   .discretisation = Discretisation::Mixed,
                                                                   .tolerance = 1e-11});
            EXPECT_FALSE(result.backup);
            tensors[level] = result.tensor;
        }
        const double order = order_of(tensors);
        std::printf("curved cell, boundary %d, mixed: order %.3f\n", static_cast<int>(boundary), order);
        EXPECT_NEAR(order, 2, 0.35);
    }
}

} // namespace
} // namespace flow_test
