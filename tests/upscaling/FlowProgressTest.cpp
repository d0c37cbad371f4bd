// What the user sees of a long solution: the progress of one large block moves, rises and can be stopped anywhere.

#include "upscaling/kernels/flow/BlockSolver.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace {

using namespace Kelvane::flow;

/// A block of 20^3 samples over some decades.
std::vector<double> permeability()
{
    std::vector<double> k(20 * 20 * 20);
    for (std::size_t n = 0; n < k.size(); ++n)
        k[n] = std::pow(10, static_cast<double>(n * 2654435761u % 1009u) / 250.0);
    return k;
}

/// A cell whose top is pulled aside: no brick.
Corners leaning()
{
    Corners corners{};
    for (int c = 0; c < 8; ++c)
        corners[c] = {20.0 * (c & 1) + 5.0 * (c >> 2), 20.0 * ((c >> 1) & 1), 20.0 * (c >> 2)};
    return corners;
}

class FlowProgress : public testing::TestWithParam<bool> {};

TEST_P(FlowProgress, OfOneLargeBlockMovesAndStops)
{
    const std::vector<double> k = permeability();
    const Corners corners = leaning();
    const Block block{.n = {20, 20, 20},
                      .size = {20, 20, 20},
                      .corners = GetParam() ? &corners : nullptr,
                      .ki = k,
                      .kj = k,
                      .kk = k};
    const BlockOptions options{.boundary = Boundary::Confined, .discretisation = Discretisation::Mixed};
    std::vector<BlockResult> results(1);
    std::vector<double> seen;
    solve_blocks({&block, 1}, options, results, [&](double done) {
        seen.push_back(done);
        return true;
    });
    EXPECT_TRUE(std::ranges::is_sorted(seen));
    EXPECT_EQ(seen.back(), 1);
    const auto between = [&](double low, double high) {
        return std::ranges::any_of(seen, [&](double done) { return done > low && done < high; });
    };
    EXPECT_TRUE(between(0.05, 0.35));
    EXPECT_TRUE(between(0.35, 0.65));
    EXPECT_TRUE(between(0.65, 0.95));
    for (const double limit : {0.0, 0.5, 0.9})
        EXPECT_THROW(solve_blocks({&block, 1}, options, results, [&](double done) { return done < limit; }), Cancelled) << limit;
}

INSTANTIATE_TEST_SUITE_P(BrickAndTrueGeometry, FlowProgress, testing::Bool());

} // namespace
