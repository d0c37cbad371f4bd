#include "dense_reference.h"
#include "large_model.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace Kelvane::flow;

namespace {

void expect_tensor(const std::array<double, 6>& found, const std::array<double, 6>& expected, double tolerance)
{
    const double scale = std::max({expected[0], expected[1], expected[2], 1e-300});
    for (std::size_t c = 0; c < 6; ++c)
        EXPECT_NEAR(found[c], expected[c], tolerance * scale) << "component " << c;
}

void compare_all(const Model& model, double tolerance)
{
    for (const Discretisation discretisation : all_discretisations)
        for (const Boundary boundary : all_boundaries) {
            SCOPED_TRACE(testing::Message() << "discretisation " << static_cast<int>(discretisation) << ", boundary "
                                            << static_cast<int>(boundary));
            const std::array<double, 6> expected = dense_reference(model, boundary, discretisation);
            BlockOptions options = options_of(boundary, discretisation);
            const BlockResult fast = solve_large_brick(model.block(), options);
            expect_tensor(fast.tensor, expected, tolerance);
            EXPECT_LE(fast.residual, 1e-8);
            EXPECT_FALSE(fast.backup);
            options.solver = Solver::Exact;
            const BlockResult exact = solve_large_brick(model.block(), options);
            expect_tensor(exact.tensor, expected, 1e-10);
            EXPECT_LE(exact.residual, 1e-12);
            EXPECT_FALSE(exact.backup);
            EXPECT_EQ(exact.iterations, 0);
        }
}

} // namespace

TEST(LargeBrickReference, LognormalWithThreePermeabilities)
{
    compare_all(lognormal_model({6, 5, 4}, {3, 2, 0.7}, 1.5, false, 11), 1e-8);
}

TEST(LargeBrickReference, OneSampleAlongAnAxis)
{
    compare_all(lognormal_model({1, 7, 5}, {1, 1, 1}, 1, true, 12), 1e-8);
    compare_all(lognormal_model({7, 5, 1}, {1, 2, 1}, 1, true, 13), 1e-8);
    compare_all(lognormal_model({1, 1, 6}, {1, 2, 1}, 1, true, 14), 1e-8);
    compare_all(lognormal_model({1, 1, 1}, {1, 2, 3}, 1, false, 15), 1e-12);
}

TEST(LargeBrickReference, SealedSamples)
{
    Model model = lognormal_model({5, 5, 5}, {1, 2, 1}, 1, false, 21);
    Normal normal(5);
    for (std::size_t c = 0; c < model.samples(); ++c)
        if (normal.uniform() < 0.3)
            for (auto& k : model.k)
                k[c] = 0;
    compare_all(model, 1e-8);
}

TEST(LargeBrickReference, SamplesSealedAlongSomeAxes)
{
    Model model = lognormal_model({5, 4, 5}, {1, 1, 1}, 1, false, 22);
    Normal normal(6);
    for (auto& k : model.k)
        for (double& value : k)
            if (normal.uniform() < 0.25)
                value = 0;
    compare_all(model, 1e-8);
}

TEST(LargeBrickReference, ExactAgreesWithFastOnSomeThousandSamples)
{
    const Model model = lognormal_model({16, 14, 12}, {1, 1, 0.3}, 2, true, 31);
    for (const Discretisation discretisation : all_discretisations) {
        BlockOptions options = options_of(Boundary::Unconfined, discretisation);
        const BlockResult fast = solve_large_brick(model.block(), options);
        options.solver = Solver::Exact;
        const BlockResult exact = solve_large_brick(model.block(), options);
        EXPECT_FALSE(exact.backup);
        expect_tensor(fast.tensor, exact.tensor, 1e-9);
    }
}
