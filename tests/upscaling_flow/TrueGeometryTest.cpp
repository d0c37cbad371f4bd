#include "FlowTestTools.h"

#include "upscaling/kernels/flow/BlockPlan.h"
#include "upscaling/kernels/flow/LocalMatrices.h"
#include "upscaling/kernels/flow/SampledGeometry.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace flow_test {
namespace {

using Kelvane::flow::block_frame;
using Kelvane::flow::frame_cell;
using Kelvane::flow::FramedCell;
using Kelvane::flow::HexSample;

constexpr std::array<Discretisation, 2> on_true_geometry{Discretisation::TwoPoint, Discretisation::Mixed};

/// A turn about three axes.
std::array<Vector3, 3> rotation(double a, double b, double c)
{
    const double ca = std::cos(a), sa = std::sin(a), cb = std::cos(b), sb = std::sin(b), cc = std::cos(c),
                 sc = std::sin(c);
    return {{{ca * cb, ca * sb * sc - sa * cc, ca * sb * cc + sa * sc},
             {sa * cb, sa * sb * sc + ca * cc, sa * sb * cc - ca * sc},
             {-sb, cb * sc, cb * cc}}};
}

/// A brick with every corner moved by up to `amount` of its sizes.
Corners shaken(const std::array<double, 3>& size, double amount, unsigned seed)
{
    std::mt19937 engine(seed);
    Corners corners = brick_corners(size);
    for (Vector3& corner : corners) {
        for (int axis = 0; axis < 3; ++axis)
            corner[axis] += amount * size[axis] * (2 * ((engine() + 0.5) / 4294967296.0) - 1);
    }
    return corners;
}

BlockData with_geometry(BlockData data, const Corners& world)
{
    const FramedCell cell = frame_cell(world);
    data.corners = cell.corners;
    data.size = cell.size;
    return data;
}

void expect_orthonormal(const std::array<Vector3, 3>& frame)
{
    for (int a = 0; a < 3; ++a) {
        for (int b = 0; b < 3; ++b) {
            double product = 0;
            for (int c = 0; c < 3; ++c)
                product += frame[a][c] * frame[b][c];
            EXPECT_NEAR(product, a == b ? 1 : 0, 1e-12);
        }
    }
}

TEST(Frame, OfATurnedBrick)
{
    const auto turn = rotation(0.3, -0.8, 2.1);
    const FramedCell cell = frame_cell(mapped(brick_corners({30, 20, 4}), turn));
    expect_orthonormal(cell.frame);
    const std::array<double, 3> size{30, 20, 4};
    for (int axis = 0; axis < 3; ++axis) {
        EXPECT_NEAR(cell.size[axis], size[axis], 1e-12);
        for (int c = 0; c < 3; ++c)
            EXPECT_NEAR(cell.frame[axis][c], turn[c][axis], 1e-14);
        for (int corner = 0; corner < 8; ++corner)
            EXPECT_NEAR(cell.corners[corner][axis], (((corner >> axis) & 1) - 0.5) * size[axis], 1e-12);
    }
}

TEST(Frame, OfASkewedCellKeepsIAndThePlaneOfIJ)
{
    const FramedCell cell = frame_cell(mapped(brick_corners({1, 1, 1}), {{{2, 0.5, 0.3}, {0, 1, 0.4}, {0, 0, -3}}}));
    expect_orthonormal(cell.frame);
    EXPECT_NEAR(cell.frame[0][0], 1, 1e-15);
    EXPECT_NEAR(cell.frame[1][1], 1, 1e-15);
    EXPECT_NEAR(cell.frame[2][2], -1, 1e-15); // K points down here: the frame is left-handed with its cell
    EXPECT_NEAR(cell.size[2], std::sqrt(0.09 + 0.16 + 9), 1e-14);
}

TEST(Frame, OfDegenerateCells)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const Corners cells[] = {
        brick_corners({0, 0, 0}),   brick_corners({1, 0, 0}),   brick_corners({0, 1, 0}),   brick_corners({0, 0, 1}),
        brick_corners({1, 1, 0}),   brick_corners({1, 0, 1}),   brick_corners({0, 1, 1}),   brick_corners({nan, 1, 1}),
        mapped(brick_corners({1, 1, 1}), {{{1, 1, 0}, {1, 1, 0}, {0, 0, 1}}}),
        mapped(brick_corners({1, 1, 1}), {{{1, 1, 1}, {2, 2, 2}, {3, 3, 3}}}),
    };
    for (const Corners& corners : cells) {
        expect_orthonormal(block_frame(corners));
        for (const Boundary boundary : all_boundaries) {
            for (const Discretisation discretisation : all_discretisations) {
                const BlockData data = with_geometry(lognormal_block({2, 3, 2}, {1, 1, 1}, 1, false, 3), corners);
                const BlockResult result = solve(data, boundary, discretisation);
                for (const double component : result.tensor)
                    EXPECT_TRUE(std::isfinite(component));
                EXPECT_GT(result.tensor[0], 0);
                EXPECT_TRUE(result.backup || std::isnan(corners[1][0]) || discretisation == Discretisation::Conforming);
            }
        }
    }
}

TEST(TrueGeometry, LocalMatricesOfABrickAreTheBricks)
{
    Block block;
    block.n = {2, 3, 4};
    block.size = {4, 3, 2};
    const Corners corners = brick_corners(block.size);
    block.corners = &corners;
    const auto samples = Kelvane::flow::sampled_geometry(block);
    ASSERT_TRUE(samples.has_value());
    const double longest = std::sqrt(16.0 + 9 + 4);
    const double h[3] = {2 / longest, 1 / longest, 0.5 / longest};
    const double c[3] = {7 * h[1] * h[2] / h[0], 2 * h[0] * h[2] / h[1], 0.3 * h[0] * h[1] / h[2]};
    const std::array<std::array<int, 6>, 4> sides{{{0, 1, 2, 3, 4, 5}, {-1, 1, 2, 3, 4, 5}, {0, 1, -1, -1, 4, -1},
                                                   {-1, -1, -1, 3, -1, -1}}};
    for (const HexSample& sample : *samples) {
        EXPECT_NEAR(sample.volume, h[0] * h[1] * h[2], 1e-15);
        for (const auto& dofs : sides) {
            double brick[21];
            double hex[21];
            Kelvane::flow::mixed_brick(c, dofs.data(), brick);
            Kelvane::flow::mixed_hex(sample, {7, 2, 0.3}, dofs.data(), hex);
            for (int pair = 0; pair < 21; ++pair)
                EXPECT_NEAR(hex[pair], brick[pair], 1e-13);
        }
        double half[6];
        Kelvane::flow::half_conductances(sample, {7, 2, 0.3}, half);
        for (int face = 0; face < 6; ++face)
            EXPECT_NEAR(half[face], 2 * c[face / 2], 1e-13);
    }
}

TEST(TrueGeometry, BrickByItsCornersIsTheBrick)
{
    const BlockData brick = lognormal_block({4, 3, 5}, {4, 3, 2}, 2, false, 12);
    BlockData cell = brick;
    // Off by too little to matter and by enough not to be taken for the brick.
    cell.corners = brick_corners(brick.size);
    (*cell.corners)[7][2] += 1e-8;
    for (const Boundary boundary : all_boundaries) {
        for (const Discretisation discretisation : on_true_geometry) {
            const Tensor expected = tensor_of(brick, boundary, discretisation);
            const Tensor tensor = tensor_of(cell, boundary, discretisation);
            for (int c = 0; c < 6; ++c)
                EXPECT_NEAR(tensor[c], expected[c], 1e-7 * expected[0]);
        }
    }
}

TEST(TrueGeometry, EqualValuesComeBackOnAnyShape)
{
    for (unsigned seed = 1; seed < 12; ++seed) {
        const BlockData data = with_geometry(
            make_block({3, 4, 2}, {1, 1, 1}, [](int, int, int, int) { return 37.5; }), shaken({100, 60, 5}, 0.2, seed));
        for (const Boundary boundary : all_boundaries) {
            for (const Discretisation discretisation : on_true_geometry) {
                const BlockResult result = solve(data, boundary, discretisation);
                EXPECT_FALSE(result.backup);
                for (int axis = 0; axis < 3; ++axis) {
                    EXPECT_NEAR(result.tensor[axis], 37.5, 1e-8);
                    EXPECT_NEAR(result.tensor[3 + axis], 0, 1e-8);
                }
            }
        }
    }
}

TEST(TrueGeometry, LinearPressureIsExactOnParallelepipeds)
{
    const std::array<Vector3, 3> shears[] = {
        {{{1, 0.5, 0.3}, {0, 1, 0.4}, {0, 0, 1}}},
        {{{1, 0, 0.9}, {0.3, 1, 0}, {0.2, -0.4, 1}}},
        {{{1, 2, 0}, {0, 1, 0}, {0, 0, 1}}},
    };
    for (const auto& shear : shears) {
        const BlockData data = with_geometry(
            make_block({3, 2, 4}, {1, 1, 1}, [](int axis, int, int, int) { return std::array{5.0, 2.0, 0.1}[axis]; }),
            mapped(brick_corners({3, 2, 1}), shear));
        const Tensor tensor = tensor_of(data, Boundary::Unconfined, Discretisation::Mixed);
        EXPECT_NEAR(tensor[0], 5, 1e-10);
        EXPECT_NEAR(tensor[1], 2, 1e-10);
        EXPECT_NEAR(tensor[2], 0.1, 1e-10);
        for (int c = 3; c < 6; ++c)
            EXPECT_NEAR(tensor[c], 0, 1e-10);
    }
}

TEST(TrueGeometry, LinearPressureIsExactWhereFacesArePlane)
{
    // A cell between vertical pillars whose top and bottom planes dip differently; all six faces are plane.
    Corners corners = brick_corners({10, 8, 3});
    for (int corner = 0; corner < 8; ++corner) {
        Vector3& p = corners[corner];
        p[2] += (corner & 4) != 0 ? 0.1 * p[0] + 0.05 * p[1] : -0.1 * p[0] + 0.02 * p[1];
    }
    const BlockData data = with_geometry(
        make_block({3, 4, 3}, {1, 1, 1}, [](int axis, int, int, int) { return std::array{5.0, 2.0, 1.0}[axis]; }),
        corners);
    const Tensor tensor = tensor_of(data, Boundary::Unconfined, Discretisation::Mixed);
    EXPECT_NEAR(tensor[0], 5, 1e-10);
    EXPECT_NEAR(tensor[1], 2, 1e-10);
    EXPECT_NEAR(tensor[2], 1, 1e-10);
    for (int c = 3; c < 6; ++c)
        EXPECT_NEAR(tensor[c], 0, 1e-10);
}

TEST(TrueGeometry, RigidTurnChangesNothing)
{
    const Corners shape = shaken({10, 6, 3}, 0.15, 5);
    const BlockData values = lognormal_block({3, 3, 4}, {1, 1, 1}, 1.5, false, 77);
    const BlockData here = with_geometry(values, shape);
    const BlockData there = with_geometry(values, mapped(shape, rotation(1.1, 0.4, -0.7)));
    for (const Boundary boundary : all_boundaries) {
        for (const Discretisation discretisation : on_true_geometry) {
            const Tensor a = tensor_of(here, boundary, discretisation);
            const Tensor b = tensor_of(there, boundary, discretisation);
            for (int c = 0; c < 6; ++c)
                EXPECT_NEAR(a[c], b[c], 1e-9 * a[0]);
        }
    }
}

TEST(TrueGeometry, TiltedLayersAreArithmeticAlongAndHarmonicAcross)
{
    const double layers[] = {1000, 0.1, 30, 4};
    const BlockData data = with_geometry(
        make_block({3, 3, 4}, {1, 1, 1}, [&](int, int, int, int k) { return layers[k]; }),
        mapped(brick_corners({50, 40, 8}), rotation(0.5, 0.35, 0.2)));
    const Tensor tensor = tensor_of(data, Boundary::Confined, Discretisation::Mixed);
    const double along = (1000 + 0.1 + 30 + 4) / 4;
    const double across = 4 / (1 / 1000.0 + 1 / 0.1 + 1 / 30.0 + 1 / 4.0);
    EXPECT_NEAR(tensor[0], along, 1e-7 * along);
    EXPECT_NEAR(tensor[1], along, 1e-7 * along);
    EXPECT_NEAR(tensor[2], across, 1e-7 * across);
    const Tensor linear = tensor_of(data, Boundary::Unconfined, Discretisation::Mixed);
    EXPECT_NEAR(linear[0], along, 1e-7 * along);
    EXPECT_NEAR(linear[3], 0, 1e-7 * along);
}

TEST(TrueGeometry, TensorsArePositiveOnAnyShape)
{
    for (unsigned seed = 1; seed < 20; ++seed) {
        const BlockData data = with_geometry(lognormal_block({3, 4, 3}, {1, 1, 1}, 2, seed % 2 == 0, seed),
                                             shaken({100, 60, 2}, 0.2, seed));
        for (const Boundary boundary : all_boundaries) {
            for (const Discretisation discretisation : on_true_geometry) {
                const Tensor tensor = tensor_of(data, boundary, discretisation);
                EXPECT_GE(least_eigenvalue(tensor), -1e-10 * (tensor[0] + tensor[1] + tensor[2]));
                EXPECT_GT(std::min({tensor[0], tensor[1], tensor[2]}), 0);
            }
        }
    }
}

TEST(TrueGeometry, LeftHandedCellIsItsMirrorImage)
{
    const BlockData values = lognormal_block({3, 3, 2}, {1, 1, 1}, 1.5, true, 21);
    const Corners shape = shaken({10, 6, 3}, 0.1, 6);
    Corners mirrored = shape;
    for (Vector3& corner : mirrored)
        corner[2] = -corner[2];
    for (const Discretisation discretisation : on_true_geometry) {
        const BlockResult a = solve(with_geometry(values, shape), Boundary::Unconfined, discretisation);
        const BlockResult b = solve(with_geometry(values, mirrored), Boundary::Unconfined, discretisation);
        EXPECT_FALSE(b.backup);
        for (int c = 0; c < 6; ++c)
            EXPECT_NEAR(a.tensor[c], b.tensor[c], 1e-9 * a.tensor[0]);
    }
}

TEST(TrueGeometry, PinchedEdgeAndInsideOut)
{
    // A wedge: no thickness on the I+ side.
    Corners wedge = brick_corners({100, 60, 5});
    for (int corner : {5, 7})
        wedge[corner][2] = wedge[corner - 4][2];
    const BlockData values = lognormal_block({4, 3, 3}, {1, 1, 1}, 1.5, false, 30);
    // Twisted so that half of its samples are inside out.
    Corners crossed = brick_corners({100, 60, 5});
    for (int corner : {5, 7})
        crossed[corner][2] = -8;
    for (const Boundary boundary : all_boundaries) {
        for (const Discretisation discretisation : on_true_geometry) {
            const BlockResult pinched = solve(with_geometry(values, wedge), boundary, discretisation);
            const BlockResult twisted = solve(with_geometry(values, crossed), boundary, discretisation);
            for (int c = 0; c < 6; ++c) {
                EXPECT_TRUE(std::isfinite(pinched.tensor[c]));
                EXPECT_TRUE(std::isfinite(twisted.tensor[c]));
            }
            EXPECT_GT(pinched.tensor[1], 0);
            EXPECT_TRUE(twisted.backup);
            EXPECT_GT(twisted.tensor[1], 0);
        }
    }
    const BlockResult lateral = solve(with_geometry(values, wedge), Boundary::Confined, Discretisation::Mixed);
    EXPECT_GT(lateral.tensor[0], 0);
}

TEST(TrueGeometry, WedgesStayWithinTheirSamples)
{
    // Cells that a fault pinches out along one side, as float coordinates have them: the side has no area but for rounding.
    for (unsigned seed = 1; seed <= 40; ++seed) {
        std::mt19937 engine(seed);
        const auto draw = [&] { return (engine() + 0.5) / 4294967296.0; };
        Corners wedge = shaken({115, 125, 1.1}, 0.03, seed);
        for (Vector3& corner : wedge)
            corner[2] += 0.12 * corner[0] + 0.05 * corner[1];
        const int along = static_cast<int>(seed % 2);
        for (int corner = 4; corner < 8; ++corner) {
            wedge[corner][0] += draw();
            if (((corner >> along) & 1) != 0)
                wedge[corner] = wedge[corner - 4];
        }
        const auto turn = rotation(6 * draw(), 0.2 * draw(), 0.2 * draw());
        Corners world{};
        for (int corner = 0; corner < 8; ++corner) {
            for (int a = 0; a < 3; ++a) {
                double x = 3000 * (a + 1);
                for (int b = 0; b < 3; ++b)
                    x += turn[a][b] * wedge[corner][b];
                world[corner][a] = static_cast<float>(x);
            }
        }
        for (const std::array<int, 3> n : {std::array{2, 2, 2}, std::array{3, 2, 1}, std::array{12, 12, 12}}) {
            if (n[0] == 12 && seed > 3)
                continue;
            const BlockData values = lognormal_block(n, {1, 1, 1}, 2, false, seed);
            double largest = 0;
            for (const auto& axis : values.k)
                largest = std::max(largest, *std::ranges::max_element(axis));
            const BlockResult result = solve(with_geometry(values, world), Boundary::Confined, Discretisation::Mixed);
            for (int axis = 0; axis < 3; ++axis) {
                EXPECT_LE(result.tensor[axis], largest * (1 + 1e-6)) << "seed " << seed << " axis " << axis;
                EXPECT_GT(result.tensor[axis], 0);
            }
        }
    }
}

TEST(TrueGeometry, SealedSamplesOnSkewedCells)
{
    for (unsigned seed = 1; seed < 30; ++seed) {
        BlockData data = with_geometry(lognormal_block({4, 3, 3}, {1, 1, 1}, 1, false, seed),
                                       shaken({10, 6, 3}, 0.15, seed));
        std::mt19937 engine(seed);
        for (auto& axis : data.k) {
            for (double& k : axis)
                k = engine() % 10 < 1 + seed % 9 ? 0 : k;
        }
        BlockData leaky = data;
        for (auto& axis : leaky.k)
            std::ranges::for_each(axis, [](double& k) { k = std::max(k, 1e-9); });
        for (const Boundary boundary : all_boundaries) {
            for (const Discretisation discretisation : on_true_geometry) {
                const BlockResult result = solve(data, boundary, discretisation);
                const Tensor close = tensor_of(leaky, boundary, discretisation);
                EXPECT_FALSE(result.backup);
                for (int c = 0; c < 6; ++c) {
                    EXPECT_TRUE(std::isfinite(result.tensor[c]));
                    // The mixed method feels what little an oblique sample lets through across its layers.
                    if (discretisation == Discretisation::TwoPoint) {
                        EXPECT_NEAR(result.tensor[c], close[c], 1e-5) << "seed " << seed;
                    }
                }
                const double trace = result.tensor[0] + result.tensor[1] + result.tensor[2];
                EXPECT_GE(least_eigenvalue(result.tensor), -1e-10 * trace);
            }
        }
    }
    const BlockData sealed = with_geometry(make_block({2, 2, 2}, {1, 1, 1}, [](int, int, int, int) { return 0.0; }),
                                           shaken({10, 6, 3}, 0.15, 3));
    EXPECT_EQ(tensor_of(sealed, Boundary::Unconfined, Discretisation::Mixed), Tensor{});
}

} // namespace
} // namespace flow_test
