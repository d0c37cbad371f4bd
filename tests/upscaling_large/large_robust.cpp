#include "large_model.h"

#include <gtest/gtest.h>
#include <tbb/global_control.h>

#include <cstring>
#include <limits>
#include <stdexcept>

using namespace Kelvane::flow;

namespace {

#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
constexpr std::array<int, 1> sizes{32}; // sanitizers slow this down twentyfold
#else
constexpr std::array<int, 2> sizes{32, 64};
#endif

int iterations_of(const Model& model, Boundary boundary, Discretisation discretisation)
{
    const BlockResult result = solve_large_brick(model.block(), options_of(boundary, discretisation));
    EXPECT_FALSE(result.backup);
    EXPECT_LE(result.residual, 1e-8);
    return result.iterations;
}

} // namespace

TEST(LargeBrickIterations, DoNotGrowWithSize)
{
    const std::array<int, 3> most{16, 24, 34}; // a direction
    for (std::size_t d = 0; d < 3; ++d) {
        const int small = iterations_of(lognormal_model({16, 16, 16}, {1, 1, 1}, 2, true, 3), Boundary::Confined,
                                        all_discretisations[d]);
        for (const int n : sizes) {
            const int found = iterations_of(lognormal_model({n, n, n}, {1, 1, 1}, 2, true, 3), Boundary::Confined,
                                            all_discretisations[d]);
            EXPECT_LE(found, 3 * most[d]) << "size " << n;
            EXPECT_LE(found, 1.3 * small) << "size " << n;
        }
    }
}

TEST(LargeBrickIterations, FlatSamples)
{
    for (const double thickness : {0.3, 0.1, 0.03, 30.0})
        for (std::size_t d = 0; d < 3; ++d)
            EXPECT_LE(iterations_of(lognormal_model({30, 30, 20}, {30, 30, 20 * thickness}, 2, true, 4),
                                    Boundary::Confined, all_discretisations[d]),
                      3 * 45)
                << "thickness " << thickness;
}

TEST(LargeBrickIterations, LinearPressure)
{
    const Model model = lognormal_model({32, 32, 32}, {1, 1, 1}, 2, true, 9);
    for (std::size_t d = 0; d < 3; ++d)
        EXPECT_LE(iterations_of(model, Boundary::Unconfined, all_discretisations[d]), 3 * 34);
}

TEST(LargeBrickThreads, SameBitsOnOneAndTwo)
{
    const Model model = lognormal_model({45, 37, 31}, {45, 37, 9}, 2, false, 6);
    for (const Discretisation discretisation : all_discretisations) {
        std::array<BlockResult, 2> results;
        for (std::size_t threads = 1; threads <= 2; ++threads) {
            const tbb::global_control limit(tbb::global_control::max_allowed_parallelism, threads);
            results[threads - 1] =
                solve_large_brick(model.block(), options_of(Boundary::KConfined, discretisation));
        }
        EXPECT_EQ(results[0].iterations, results[1].iterations);
        EXPECT_EQ(0, std::memcmp(results[0].tensor.data(), results[1].tensor.data(), sizeof results[0].tensor));
        EXPECT_EQ(0, std::memcmp(&results[0].residual, &results[1].residual, sizeof(double)));
    }
}

TEST(LargeBrickSealed, NothingFlowsThroughAWall)
{
    Model model = lognormal_model({12, 12, 12}, {1, 1, 1}, 1, true, 1);
    for (int l = 0; l < 12; ++l)
        for (int j = 0; j < 12; ++j)
            for (auto& k : model.k)
                k[model.index(5, j, l)] = 0;
    for (const Discretisation discretisation : all_discretisations) {
        const BlockResult result = solve_large_brick(model.block(), options_of(Boundary::Confined, discretisation));
        EXPECT_EQ(result.tensor[0], 0);
        EXPECT_GT(result.tensor[1], 0);
        EXPECT_GT(result.tensor[2], 0);
        EXPECT_FALSE(result.backup);
    }
}

TEST(LargeBrickSealed, FullySealedIsZero)
{
    Model model = equal_model({10, 10, 10}, {1, 1, 1}, {0, 0, 0});
    model.k[0][7] = -3;
    model.k[1][8] = std::numeric_limits<double>::quiet_NaN();
    model.k[2][9] = std::numeric_limits<double>::infinity();
    for (const Discretisation discretisation : all_discretisations)
        for (const Boundary boundary : all_boundaries)
            for (const Solver solver : {Solver::Fast, Solver::Exact}) {
                BlockOptions options = options_of(boundary, discretisation);
                options.solver = solver;
                const BlockResult result = solve_large_brick(model.block(), options);
                for (const double value : result.tensor)
                    EXPECT_EQ(value, 0);
            }
}

TEST(LargeBrickSealed, ClosedPocketsTakeNoPart)
{
    // A conducting pocket within a sealed shell changes nothing, whatever it holds.
    Model model = lognormal_model({14, 14, 14}, {1, 1, 1}, 1, true, 2);
    for (int l = 4; l < 10; ++l)
        for (int j = 4; j < 10; ++j)
            for (int i = 4; i < 10; ++i)
                for (auto& k : model.k)
                    k[model.index(i, j, l)] = 0;
    Model pocket = model;
    for (auto& k : pocket.k)
        k[model.index(6, 6, 6)] = k[model.index(7, 6, 6)] = 1e3;
    for (const Discretisation discretisation : all_discretisations)
        for (const Boundary boundary : all_boundaries) {
            const auto empty = solve_large_brick(model.block(), options_of(boundary, discretisation)).tensor;
            const auto filled = solve_large_brick(pocket.block(), options_of(boundary, discretisation)).tensor;
            for (std::size_t c = 0; c < 6; ++c)
                EXPECT_NEAR(filled[c], empty[c], 1e-8);
        }
}

TEST(LargeBrickContrast, TwelveDecadesInLayers)
{
    // Across the layers the answer is twelve decades below the largest value.
    Model model = equal_model({16, 12, 20}, {1, 1, 1}, {1, 1, 1});
    double resistance = 0;
    for (int layer = 0; layer < 20; ++layer) {
        const double value = layer % 4 == 1 ? 1e-6 : 1e6;
        resistance += 1 / value;
        for (int j = 0; j < 12; ++j)
            for (int i = 0; i < 16; ++i)
                for (auto& k : model.k)
                    k[model.index(i, j, layer)] = value;
    }
    for (const Discretisation discretisation : all_discretisations) {
        const BlockResult result = solve_large_brick(model.block(), options_of(Boundary::Confined, discretisation));
        EXPECT_NEAR(result.tensor[2] * resistance / 20, 1, 1e-7);
        EXPECT_NEAR(result.tensor[0], 0.75e6, 1);
    }
}

TEST(LargeBrickContrast, TwelveDecadesAtRandom)
{
    Model model = equal_model({15, 14, 13}, {1, 1, 1}, {1, 1, 1});
    Normal normal(44);
    for (std::size_t c = 0; c < model.samples(); ++c) {
        const double value = std::pow(10, 12 * normal.uniform() - 6);
        for (auto& k : model.k)
            k[c] = value;
    }
    for (const Discretisation discretisation : all_discretisations)
        for (const Boundary boundary : all_boundaries) {
            BlockOptions options = options_of(boundary, discretisation);
            const BlockResult fast = solve_large_brick(model.block(), options);
            options.solver = Solver::Exact;
            const BlockResult exact = solve_large_brick(model.block(), options);
            for (std::size_t axis = 0; axis < 3; ++axis)
                EXPECT_NEAR(fast.tensor[axis] / exact.tensor[axis], 1, 1e-7);
            EXPECT_FALSE(fast.backup);
            EXPECT_LE(fast.residual, 1e-8);
            EXPECT_LE(fast.iterations, 3 * 400);
        }
}

TEST(LargeBrickContrast, BarrierWithWindows)
{
    // Nearly sealed walls with a few openings, the wildest thing that an aggregation meets.
    Model model = equal_model({24, 24, 24}, {1, 1, 1}, {1e3, 1e3, 1e3});
    Normal normal(45);
    for (const int wall : {6, 13, 19})
        for (int l = 0; l < 24; ++l)
            for (int j = 0; j < 24; ++j)
                if (normal.uniform() > 0.01)
                    for (auto& k : model.k)
                        k[model.index(wall, j, l)] = 1e-9;
    for (const Discretisation discretisation : all_discretisations) {
        const BlockResult result = solve_large_brick(model.block(), options_of(Boundary::Confined, discretisation));
        EXPECT_FALSE(result.backup);
        EXPECT_LE(result.iterations, 3 * 60);
    }
}

TEST(LargeBrickProgress, RisesAndCanStop)
{
    const Model model = lognormal_model({16, 15, 14}, {1, 1, 1}, 1, true, 3);
    for (const Discretisation discretisation : all_discretisations)
        for (const Solver solver : {Solver::Fast, Solver::Exact}) {
            BlockOptions options = options_of(Boundary::Confined, discretisation);
            options.solver = solver;
            int calls = 0;
            double last = 0;
            (void)solve_large_brick(model.block(), options, [&](double done) {
                EXPECT_GE(done, 0);
                EXPECT_LE(done, 1);
                EXPECT_GE(done, last - 0.05);
                last = done;
                ++calls;
                return true;
            });
            EXPECT_GT(calls, 20);
            EXPECT_GT(last, 0.99);
            for (const int stop : {1, calls / 2}) {
                int count = 0;
                EXPECT_THROW((void)solve_large_brick(model.block(), options,
                                                     [&](double) { return ++count < stop; }),
                             Lodex::Cancelled);
                EXPECT_EQ(count, stop);
            }
        }
}

TEST(LargeBrickInput, ArraysThatDoNotFit)
{
    const Model model = equal_model({4, 4, 4}, {1, 1, 1}, {1, 1, 1});
    Block block = model.block();
    block.kj = block.kj.first(63);
    EXPECT_THROW((void)solve_large_brick(block, {}), std::invalid_argument);
    block = model.block();
    block.n[1] = 0;
    EXPECT_THROW((void)solve_large_brick(block, {}), std::invalid_argument);
}

TEST(LargeBrickInput, FlatBrickIsFlagged)
{
    Model model = equal_model({4, 4, 4}, {1, 0, 1}, {5, 6, 7});
    const BlockResult result = solve_large_brick(model.block(), {});
    EXPECT_TRUE(result.backup);
    EXPECT_NEAR(result.tensor[1], 6, 1e-9);
}

TEST(LargeBrickExact, TooLargeIsRefinedAndFlagged)
{
    const Model model = lognormal_model({60, 60, 56}, {1, 1, 1}, 0.5, true, 3);
    BlockOptions options = options_of(Boundary::Confined, Discretisation::TwoPoint);
    options.solver = Solver::Exact;
    const BlockResult result = solve_large_brick(model.block(), options);
    EXPECT_TRUE(result.backup);
    EXPECT_LE(result.residual, 1e-12);
    EXPECT_GT(result.iterations, 0);
}
