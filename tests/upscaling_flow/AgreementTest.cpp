// Two solutions of the same discrete problem that share no code: vector lanes with elimination here, the systems of
// large blocks there.

#include "FlowTestTools.h"

#include "upscaling/kernels/flow/BlockPlan.h"
#include "upscaling/kernels/flow/LaneSolver.h"
#include "upscaling/kernels/flow/LargeBlock.h"
#include "upscaling/kernels/flow/SparseSolver.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace flow_test {
namespace {

using Kelvane::flow::solve_large_brick;

TEST(Agreement, LanesAndLargeBlocksGiveTheSame)
{
    for (unsigned seed = 1; seed <= 6; ++seed) {
        const BlockData data = lognormal_block({6, 5, 4}, {4, 3, 1}, 2, false, seed);
        for (const Boundary boundary : all_boundaries) {
            for (const Discretisation discretisation : all_discretisations) {
                const Tensor lanes = tensor_of(data, boundary, discretisation);
                for (const Solver solver : {Solver::Fast, Solver::Exact}) {
                    const BlockResult large = solve_large_brick(
                        data.block(), {.boundary = boundary, .discretisation = discretisation, .solver = solver});
                    for (int c = 0; c < 6; ++c)
                        EXPECT_NEAR(large.tensor[c], lanes[c], 1e-9 * lanes[0]);
                }
            }
        }
    }
}

TEST(Agreement, SealedSamplesToo)
{
    for (unsigned seed = 1; seed <= 20; ++seed) {
        BlockData data = lognormal_block({4, 5, 4}, {4, 3, 1}, 2, false, seed);
        std::mt19937 engine(seed);
        for (auto& axis : data.k) {
            for (double& k : axis)
                k = engine() % 10 < 1 + seed % 7 ? 0 : k;
        }
        for (const Boundary boundary : all_boundaries) {
            for (const Discretisation discretisation : all_discretisations) {
                const Tensor lanes = tensor_of(data, boundary, discretisation);
                const BlockResult large = solve_large_brick(
                    data.block(), {.boundary = boundary, .discretisation = discretisation, .solver = Solver::Exact});
                for (int c = 0; c < 6; ++c)
                    EXPECT_NEAR(large.tensor[c], lanes[c], 1e-9) << "seed " << seed;
            }
        }
    }
}

TEST(Agreement, SparseAndLanesOnTrueGeometry)
{
    BlockData data = lognormal_block({5, 4, 3}, {4, 3, 1}, 2, false, 17);
    Corners corners = mapped(brick_corners({4, 3, 1}), {{{1, 0, 0.1}, {0, 1, 0}, {0.2, 0.3, 1}}});
    corners[7][2] += 0.2;
    const auto cell = Kelvane::flow::frame_cell(corners);
    data.corners = cell.corners;
    data.size = cell.size;
    const Block block = data.block();
    const auto geometry = Kelvane::flow::sampled_geometry(block);
    ASSERT_TRUE(geometry.has_value());
    const Kelvane::flow::Instance instance{.block = &block, .size = block.size, .geometry = &*geometry};
    for (const Discretisation discretisation : {Discretisation::TwoPoint, Discretisation::Mixed}) {
        for (const auto flow : {Kelvane::flow::FlowCase::FlowJ, Kelvane::flow::FlowCase::Lateral,
                                Kelvane::flow::FlowCase::Linear}) {
            Kelvane::flow::LaneSolver lanes(data.n, discretisation, flow);
            std::vector<Kelvane::flow::LaneSolver::Answer> answers(1);
            lanes.solve({&instance, 1}, answers);
            const Kelvane::flow::BlockPlan plan(data.n, discretisation, flow);
            for (const bool exact : {true, false}) {
                const auto sparse = Kelvane::flow::solve_sparse(plan, instance, exact, 1e-11, {});
                EXPECT_FALSE(sparse.failed);
                for (int e = 0; e < 6; ++e)
                    EXPECT_NEAR(sparse.energies[e], answers[0].energies[e], 1e-9 * answers[0].energies[0]);
            }
        }
    }
}

} // namespace
} // namespace flow_test
