#include "large_model.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace Kelvane::flow;

TEST(LargeBrick, EqualValuesGiveThatValue)
{
    const Model model = equal_model({24, 18, 20}, {500, 300, 7}, {120, 80, 3});
    for (const Discretisation discretisation : all_discretisations)
        for (const Boundary boundary : all_boundaries) {
            const BlockResult result = solve_large_brick(model.block(), options_of(boundary, discretisation));
            EXPECT_NEAR(result.tensor[0], 120, 1e-10);
            EXPECT_NEAR(result.tensor[1], 80, 1e-10);
            EXPECT_NEAR(result.tensor[2], 3, 1e-11);
            for (std::size_t c = 3; c < 6; ++c)
                EXPECT_NEAR(result.tensor[c], 0, 1e-10);
            EXPECT_FALSE(result.backup);
        }
}

TEST(LargeBrick, LayersAreArithmeticAlongAndHarmonicAcross)
{
    Model model = equal_model({20, 16, 12}, {100, 50, 10}, {1, 1, 1});
    Normal normal(3);
    double sum = 0, resistance = 0;
    for (int layer = 0; layer < 12; ++layer) {
        const double value = std::exp(2 * normal());
        sum += value;
        resistance += 1 / value;
        for (int j = 0; j < 16; ++j)
            for (int i = 0; i < 20; ++i)
                for (auto& k : model.k)
                    k[model.index(i, j, layer)] = value;
    }
    for (const Discretisation discretisation : all_discretisations) {
        const BlockResult result = solve_large_brick(model.block(), options_of(Boundary::Confined, discretisation));
        EXPECT_NEAR(result.tensor[0], sum / 12, 1e-7 * sum / 12);
        EXPECT_NEAR(result.tensor[1], sum / 12, 1e-7 * sum / 12);
        EXPECT_NEAR(result.tensor[2], 12 / resistance, 1e-7 * 12 / resistance);
    }
}

TEST(LargeBrick, LognormalBracket)
{
    for (const std::uint64_t seed : {1U, 2U}) {
        const Model model = lognormal_model({32, 32, 32}, {1, 1, 1}, 1.5, true, seed);
        std::array<std::array<double, 6>, 3> tensors{};
        for (std::size_t d = 0; d < 3; ++d)
            tensors[d] =
                solve_large_brick(model.block(), options_of(Boundary::Confined, all_discretisations[d])).tensor;
        double logarithms = 0, squares = 0;
        for (const double k : model.k[0]) {
            logarithms += std::log(k);
            squares += std::log(k) * std::log(k);
        }
        const double mean = logarithms / static_cast<double>(model.samples());
        const double variance = squares / static_cast<double>(model.samples()) - mean * mean;
        const double middle = std::exp(mean + variance / 6);
        for (std::size_t axis = 0; axis < 3; ++axis) {
            EXPECT_LE(tensors[0][axis], tensors[1][axis] * (1 + 1e-7));
            EXPECT_LE(tensors[1][axis], middle);
            EXPECT_LE(middle, tensors[2][axis]);
        }
    }
}

TEST(LargeBrick, BoundariesAreOrderedAndTensorIsPositive)
{
    const Model model = lognormal_model({14, 12, 10}, {2, 1, 1}, 1.5, false, 8);
    for (const Discretisation discretisation : all_discretisations) {
        std::array<std::array<double, 6>, 3> tensors{};
        for (std::size_t b = 0; b < 3; ++b)
            tensors[b] = solve_large_brick(model.block(), options_of(all_boundaries[b], discretisation)).tensor;
        for (std::size_t axis = 0; axis < 3; ++axis) {
            EXPECT_LE(tensors[0][axis], tensors[1][axis] * (1 + 1e-8));
            EXPECT_LE(tensors[1][axis], tensors[2][axis] * (1 + 1e-8));
        }
        const auto& [xx, yy, zz, xy, xz, yz] = tensors[2];
        EXPECT_GT(xx * yy - xy * xy, 0);
        EXPECT_GT(xx * (yy * zz - yz * yz) - xy * (xy * zz - yz * xz) + xz * (xy * yz - yy * xz), 0);
        EXPECT_EQ(tensors[0][3], 0);
        EXPECT_EQ(tensors[1][4], 0);
        EXPECT_EQ(tensors[1][5], 0);
        EXPECT_NE(tensors[1][3], 0);
    }
}

TEST(LargeBrick, SwapAndReversalOfAxes)
{
    const Model model = lognormal_model({9, 11, 8}, {1, 2, 3}, 1, false, 77);
    Model swapped = equal_model({11, 9, 8}, {2, 1, 3}, {1, 1, 1});
    Model reversed = model;
    for (int l = 0; l < 8; ++l)
        for (int j = 0; j < 11; ++j)
            for (int i = 0; i < 9; ++i) {
                const std::size_t from = model.index(i, j, l);
                swapped.k[0][swapped.index(j, i, l)] = model.k[1][from];
                swapped.k[1][swapped.index(j, i, l)] = model.k[0][from];
                swapped.k[2][swapped.index(j, i, l)] = model.k[2][from];
                for (std::size_t axis = 0; axis < 3; ++axis)
                    reversed.k[axis][model.index(8 - i, j, l)] = model.k[axis][from];
            }
    for (const Discretisation discretisation : all_discretisations) {
        const BlockOptions options = options_of(Boundary::Unconfined, discretisation);
        const auto t = solve_large_brick(model.block(), options).tensor;
        const auto s = solve_large_brick(swapped.block(), options).tensor;
        const auto r = solve_large_brick(reversed.block(), options).tensor;
        const std::array<double, 6> expected_swapped{t[1], t[0], t[2], t[3], t[5], t[4]};
        const std::array<double, 6> expected_reversed{t[0], t[1], t[2], -t[3], -t[4], t[5]};
        for (std::size_t c = 0; c < 6; ++c) {
            EXPECT_NEAR(s[c], expected_swapped[c], 1e-8);
            EXPECT_NEAR(r[c], expected_reversed[c], 1e-8);
        }
    }
}

TEST(LargeBrick, CheckerboardDuality)
{
    // One sample thick, two values: the mixed and the conforming result multiply to the product of the values.
    Model model = equal_model({24, 24, 1}, {1, 1, 1}, {1, 1, 1});
    for (int j = 0; j < 24; ++j)
        for (int i = 0; i < 24; ++i)
            for (auto& k : model.k)
                k[model.index(i, j, 0)] = (i / 3 + j / 3) % 2 == 0 ? 100 : 1;
    BlockOptions options = options_of(Boundary::Confined, Discretisation::Mixed);
    options.tolerance = 1e-10;
    const auto lower = solve_large_brick(model.block(), options).tensor;
    options.discretisation = Discretisation::Conforming;
    const auto upper = solve_large_brick(model.block(), options).tensor;
    EXPECT_NEAR(lower[0] * upper[1], 100, 1e-6 * 100);
    EXPECT_NEAR(lower[1] * upper[0], 100, 1e-6 * 100);
}

TEST(LargeBrick, ScaleOfValues)
{
    const Model model = lognormal_model({12, 10, 9}, {1, 1, 1}, 1, false, 5);
    for (const Discretisation discretisation : all_discretisations) {
        const BlockOptions options = options_of(Boundary::Confined, discretisation);
        const auto plain = solve_large_brick(model.block(), options).tensor;
        for (const double factor : {1e-200, 1e-15, 1e250}) {
            Model scaled = model;
            for (auto& k : scaled.k)
                for (double& value : k)
                    value *= factor;
            const auto found = solve_large_brick(scaled.block(), options).tensor;
            for (std::size_t axis = 0; axis < 3; ++axis)
                EXPECT_NEAR(found[axis] / factor, plain[axis], 1e-8 * plain[axis]);
        }
    }
}
