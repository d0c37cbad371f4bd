// Many blocks at once: the same bits for any number of threads and any company, progress and cancel.

#include "FlowTestTools.h"

#include <tbb/global_control.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

namespace flow_test {
namespace {

using Kelvane::flow::Cancelled;
using Kelvane::flow::solve_blocks;

/// Blocks of three shapes, some on true geometry, some with sealed samples.
std::vector<BlockData> mixture(int count)
{
    std::vector<BlockData> all;
    for (int n = 0; n < count; ++n) {
        const Counts shape = n % 3 == 0 ? Counts{4, 4, 3} : n % 3 == 1 ? Counts{3, 5, 2} : Counts{6, 2, 2};
        all.push_back(lognormal_block(shape, {4, 3, 1}, 2, false, 1000U + static_cast<unsigned>(n)));
        if (n % 4 == 1)
            all.back().corners = mapped(brick_corners({4, 3, 1}), {{{1, 0.1, 0}, {0, 1, 0.2}, {0.1 * (n % 5), 0, 1}}});
        if (n % 5 == 2) {
            for (auto& values : all.back().k)
                values[static_cast<std::size_t>(n) % values.size()] = 0;
        }
    }
    return all;
}

std::vector<Block> blocks_of(const std::vector<BlockData>& all)
{
    std::vector<Block> blocks;
    for (const BlockData& data : all)
        blocks.push_back(data.block());
    return blocks;
}

bool same_bits(const Tensor& a, const Tensor& b)
{
    return std::memcmp(a.data(), b.data(), sizeof a) == 0;
}

TEST(ManyBlocks, BitEqualOnAnyThreadsAndInAnyCompany)
{
    const std::vector<BlockData> all = mixture(101);
    const std::vector<Block> blocks = blocks_of(all);
    for (const Boundary boundary : all_boundaries) {
        for (const Discretisation discretisation : all_discretisations) {
            const BlockOptions options{.boundary = boundary, .discretisation = discretisation};
            std::vector<BlockResult> many(blocks.size());
            std::vector<BlockResult> one(blocks.size());
            solve_blocks(blocks, options, many);
            {
                const tbb::global_control limit(tbb::global_control::max_allowed_parallelism, 1);
                solve_blocks(blocks, options, one);
            }
            BlockSolver solver;
            for (std::size_t n = 0; n < blocks.size(); ++n) {
                EXPECT_TRUE(same_bits(many[n].tensor, one[n].tensor));
                EXPECT_TRUE(same_bits(many[n].tensor, solver.solve(blocks[n], options).tensor));
                EXPECT_FALSE(many[n].backup);
            }
        }
    }
}

TEST(ManyBlocks, LargeOnesAmongThem)
{
    std::vector<BlockData> all = mixture(10);
    all.push_back(lognormal_block({14, 12, 13}, {4, 3, 1}, 1, true, 5));
    all.push_back(all.back());
    all.back().corners = mapped(brick_corners({4, 3, 1}), {{{1, 0, 0}, {0, 1, 0}, {0, 0.3, 1}}});
    const std::vector<Block> blocks = blocks_of(all);
    for (const Discretisation discretisation : all_discretisations) {
        std::vector<BlockResult> many(blocks.size());
        std::vector<BlockResult> one(blocks.size());
        solve_blocks(blocks, {.discretisation = discretisation}, many);
        {
            const tbb::global_control limit(tbb::global_control::max_allowed_parallelism, 1);
            solve_blocks(blocks, {.discretisation = discretisation}, one);
        }
        for (std::size_t n = 0; n < blocks.size(); ++n)
            EXPECT_TRUE(same_bits(many[n].tensor, one[n].tensor));
        EXPECT_GT(many[10].iterations, 0);
        EXPECT_LE(many[10].residual, 1e-8);
        EXPECT_FALSE(many[11].backup);
    }
}

TEST(ManyBlocks, FastAndExactAgree)
{
    BlockData data = lognormal_block({14, 12, 13}, {4, 3, 1}, 2, true, 6);
    BlockSolver solver;
    for (const bool true_geometry : {false, true}) {
        if (true_geometry)
            data.corners = mapped(brick_corners({4, 3, 1}), {{{1, 0, 0.1}, {0, 1, 0}, {0.2, 0.3, 1}}});
        for (const Boundary boundary : all_boundaries) {
            for (const Discretisation discretisation : all_discretisations) {
                BlockOptions options{.boundary = boundary, .discretisation = discretisation, .tolerance = 1e-10};
                const BlockResult fast = solver.solve(data.block(), options);
                options.solver = Solver::Exact;
                const BlockResult exact = solver.solve(data.block(), options);
                for (int c = 0; c < 6; ++c)
                    EXPECT_NEAR(fast.tensor[c], exact.tensor[c], 1e-8 * exact.tensor[0]);
                EXPECT_EQ(exact.iterations, 0);
                EXPECT_FALSE(fast.backup);
            }
        }
    }
}

TEST(ManyBlocks, ProgressRisesAndStops)
{
    const std::vector<BlockData> all = mixture(60);
    const std::vector<Block> blocks = blocks_of(all);
    std::vector<BlockResult> results(blocks.size());
    double last = 0;
    int calls = 0;
    solve_blocks(blocks, {.discretisation = Discretisation::Mixed}, results, [&](double done) {
        EXPECT_GE(done, last);
        EXPECT_LE(done, 1);
        last = done;
        ++calls;
        return true;
    });
    EXPECT_EQ(last, 1);
    EXPECT_GT(calls, 1);
    EXPECT_THROW(solve_blocks(blocks, {}, results, [](double) { return false; }), Cancelled);
    BlockSolver solver;
    EXPECT_THROW((void)solver.solve(blocks.front(), {}, [](double) { return false; }), Cancelled);
    EXPECT_GT(solver.solve(blocks.front(), {}).tensor[0], 0);
}

TEST(ManyBlocks, NoneIsNothing)
{
    std::vector<BlockResult> results;
    EXPECT_NO_THROW(solve_blocks({}, {}, results));
}

} // namespace
} // namespace flow_test
