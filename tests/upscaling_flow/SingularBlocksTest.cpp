// Blocks where nothing, or not everything, can flow; wild contrast; degenerate shapes.

#include "FlowTestTools.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>

namespace flow_test {
namespace {

bool all_finite(const Tensor& tensor)
{
    return std::ranges::all_of(tensor, [](double value) { return std::isfinite(value); });
}

TEST(SingularBlocks, SealedBlockIsZero)
{
    const BlockData data = make_block({3, 2, 4}, {3, 2, 1}, [](int, int, int, int) { return 0.0; });
    for (const Boundary boundary : all_boundaries) {
        for (const Discretisation discretisation : all_discretisations) {
            const BlockResult result = solve(data, boundary, discretisation);
            EXPECT_EQ(result.tensor, Tensor{});
            EXPECT_FALSE(result.backup);
        }
    }
}

TEST(SingularBlocks, OneSample)
{
    const BlockData data =
        make_block({1, 1, 1}, {3, 2, 1}, [](int axis, int, int, int) { return axis == 2 ? 0.0 : 5.0; });
    for (const Boundary boundary : all_boundaries) {
        for (const Discretisation discretisation : all_discretisations) {
            const Tensor tensor = tensor_of(data, boundary, discretisation);
            EXPECT_NEAR(tensor[0], 5, 1e-12);
            EXPECT_NEAR(tensor[1], 5, 1e-12);
            EXPECT_EQ(tensor[2], 0);
        }
    }
}

TEST(SingularBlocks, BarrierStopsTheFlow)
{
    // A sealed plane across I; the halves have different permeabilities.
    const BlockData data = make_block({5, 3, 2}, {5, 3, 2}, [](int, int i, int, int) {
        return i == 2 ? 0.0 : i < 2 ? 10.0 : 30.0;
    });
    for (const Discretisation discretisation : {Discretisation::TwoPoint, Discretisation::Mixed}) {
        const Tensor tensor = tensor_of(data, Boundary::Confined, discretisation);
        EXPECT_EQ(tensor[0], 0);
        EXPECT_NEAR(tensor[1], 16, 1e-10);
        EXPECT_NEAR(tensor[2], 16, 1e-10);
    }
    const Tensor conforming = tensor_of(data, Boundary::Confined, Discretisation::Conforming);
    EXPECT_NEAR(conforming[0], 0, 1e-12);
    EXPECT_NEAR(conforming[1], 16, 1e-10);
}

TEST(SingularBlocks, EnclosedPartTakesNoPart)
{
    // A permeable core within a sealed shell within a permeable frame.
    const BlockData data = make_block({5, 5, 5}, {1, 1, 1}, [](int, int i, int j, int k) {
        const int shell = std::max({std::abs(i - 2), std::abs(j - 2), std::abs(k - 2)});
        return shell == 2 ? 7.0 : shell == 1 ? 0.0 : 1e6;
    });
    BlockData hollow = data;
    for (auto& values : hollow.k)
        values[hollow.at(2, 2, 2)] = 0;
    for (const Boundary boundary : all_boundaries) {
        for (const Discretisation discretisation : {Discretisation::TwoPoint, Discretisation::Mixed}) {
            const BlockResult with = solve(data, boundary, discretisation);
            const BlockResult without = solve(hollow, boundary, discretisation);
            for (int c = 0; c < 3; ++c) {
                EXPECT_GT(with.tensor[c], 1);
                EXPECT_NEAR(with.tensor[c], without.tensor[c], 1e-11);
            }
            EXPECT_FALSE(with.backup);
        }
    }
}

TEST(SingularBlocks, DeadEndsAndIslandsOfAllKinds)
{
    // Random zeros in single components: every pattern of parts that touch no fixed pressure.
    for (unsigned seed = 1; seed <= 60; ++seed) {
        const BlockData full = lognormal_block({4, 3, 4}, {3, 1, 2}, 2, false, seed);
        std::mt19937 engine(seed);
        const unsigned tenths = 1 + seed % 9;
        const BlockData data = make_block(full.n, full.size, [&](int axis, int i, int j, int k) {
            return engine() % 10 < tenths ? 0.0 : full.k[axis][full.at(i, j, k)];
        });
        for (const Boundary boundary : all_boundaries) {
            for (const Discretisation discretisation : all_discretisations) {
                const BlockResult result = solve(data, boundary, discretisation);
                EXPECT_TRUE(all_finite(result.tensor));
                EXPECT_FALSE(result.backup);
                const double trace = result.tensor[0] + result.tensor[1] + result.tensor[2];
                EXPECT_GE(least_eigenvalue(result.tensor), -1e-10 * trace);
                // A little permeability in place of none changes little.
                BlockData leaky = data;
                for (auto& values : leaky.k)
                    std::ranges::for_each(values, [](double& k) { k = std::max(k, 1e-9); });
                const Tensor close = tensor_of(leaky, boundary, discretisation);
                for (int c = 0; c < 6; ++c)
                    EXPECT_NEAR(result.tensor[c], close[c], 1e-5) << "seed " << seed;
            }
        }
    }
}

TEST(SingularBlocks, SealedAlongOneAxisOnly)
{
    const BlockData data =
        make_block({3, 3, 3}, {3, 3, 3}, [](int axis, int i, int, int) { return axis == 0 ? i + 1.0 : 0.0; });
    for (const Boundary boundary : all_boundaries) {
        for (const Discretisation discretisation : {Discretisation::TwoPoint, Discretisation::Mixed}) {
            const Tensor tensor = tensor_of(data, boundary, discretisation);
            EXPECT_NEAR(tensor[0], 3 / (1 + 1 / 2.0 + 1 / 3.0), 1e-12);
            EXPECT_EQ(tensor[1], 0);
            EXPECT_EQ(tensor[2], 0);
        }
    }
}

TEST(SingularBlocks, NegativeAndUndefinedAreSealed)
{
    const double bad[] = {-3.0, std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()};
    const BlockData good = lognormal_block({3, 3, 3}, {3, 2, 1}, 1, false, 5);
    BlockData sealed = good;
    for (auto& values : sealed.k)
        values[4] = values[13] = values[20] = 0;
    BlockData strange = good;
    for (auto& values : strange.k) {
        values[4] = bad[0];
        values[13] = bad[1];
        values[20] = bad[2];
    }
    for (const Discretisation discretisation : all_discretisations)
        EXPECT_EQ(tensor_of(sealed, Boundary::Unconfined, discretisation),
                  tensor_of(strange, Boundary::Unconfined, discretisation));
}

TEST(SingularBlocks, TwelveDecadesInALine)
{
    // A line has a known answer whatever the contrast: the harmonic mean.
    BlockData data =
        make_block({8, 1, 1}, {8, 1, 1}, [](int, int i, int, int) { return std::pow(10.0, i % 2 == 0 ? 6 : -6); });
    data.k[0][7] = 1e6;
    double inverse = 0;
    for (const double k : data.k[0])
        inverse += 1 / k / 8;
    for (const Discretisation discretisation : all_discretisations) {
        const BlockResult result = solve(data, Boundary::Confined, discretisation);
        EXPECT_NEAR(result.tensor[0] * inverse, 1, discretisation == Discretisation::TwoPoint ? 1e-14 : 1e-7);
    }
}

TEST(SingularBlocks, TwelveDecadesKeepTheirBounds)
{
    for (unsigned seed = 100; seed < 120; ++seed) {
        std::mt19937 engine(seed);
        const BlockData data = make_block({4, 5, 4}, {100, 50, 1}, [&](int, int, int, int) {
            return std::pow(10.0, static_cast<double>(engine() % 13) - 6);
        });
        for (const Boundary boundary : all_boundaries) {
            std::array<Tensor, 3> tensors{};
            for (const Discretisation discretisation : all_discretisations) {
                const BlockResult result = solve(data, boundary, discretisation);
                ASSERT_TRUE(all_finite(result.tensor));
                EXPECT_FALSE(result.backup);
                const double trace = result.tensor[0] + result.tensor[1] + result.tensor[2];
                EXPECT_GE(least_eigenvalue(result.tensor), -1e-10 * trace);
                tensors[static_cast<std::size_t>(discretisation)] = result.tensor;
            }
            for (int axis = 0; axis < 3 && boundary == Boundary::Confined; ++axis) {
                EXPECT_LE(tensors[0][axis], tensors[1][axis] * (1 + 1e-7));
                EXPECT_LE(tensors[1][axis], tensors[2][axis] * (1 + 1e-7));
            }
        }
    }
}

TEST(SingularBlocks, BarrierOfTwelveDecades)
{
    // High permeability on both sides of a barrier twelve decades tighter: the matrix is nearly singular.
    const BlockData data = make_block({6, 4, 4}, {6, 4, 4}, [](int, int i, int, int) { return i == 3 ? 1e-6 : 1e6; });
    for (const Discretisation discretisation : all_discretisations)
        EXPECT_NEAR(tensor_of(data, Boundary::Confined, discretisation)[0], 6e-6, 6e-6 * 1e-7);
}

TEST(SingularBlocks, FlatBrickHasAnAnswer)
{
    BlockData data = lognormal_block({3, 3, 2}, {30, 20, 0}, 1, false, 9);
    for (const Boundary boundary : all_boundaries) {
        for (const Discretisation discretisation : all_discretisations) {
            const BlockResult result = solve(data, boundary, discretisation);
            EXPECT_TRUE(result.backup);
            EXPECT_TRUE(all_finite(result.tensor));
            EXPECT_GT(result.tensor[0], 0);
            EXPECT_GT(result.tensor[2], 0);
        }
    }
    data.size = {0, 0, std::numeric_limits<double>::quiet_NaN()};
    const BlockResult result = solve(data, Boundary::Unconfined, Discretisation::Mixed);
    EXPECT_TRUE(result.backup);
    EXPECT_GT(result.tensor[0], 0);
}

TEST(SingularBlocks, WrongInputIsRefused)
{
    BlockData data = lognormal_block({3, 3, 2}, {3, 2, 1}, 1, false, 9);
    BlockSolver solver;
    Block block = data.block();
    block.n = {3, 3, 3};
    EXPECT_THROW((void)solver.solve(block, {}), std::invalid_argument);
    block.n = {3, 0, 3};
    EXPECT_THROW((void)solver.solve(block, {}), std::invalid_argument);
    std::vector<BlockResult> none;
    block = data.block();
    EXPECT_THROW(Kelvane::flow::solve_blocks({&block, 1}, {}, none), std::invalid_argument);
}

} // namespace
} // namespace flow_test
