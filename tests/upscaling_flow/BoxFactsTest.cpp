// What holds for every box with diagonal permeability, whatever the values.

#include "FlowTestTools.h"

#include "upscaling/kernels/flow/DirectionalMeans.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>

namespace flow_test {
namespace {

using Kelvane::flow::DirectionalMean;
using Kelvane::flow::directional_mean;

constexpr double slack = 1e-7;

std::string name(Discretisation discretisation)
{
    switch (discretisation) {
    case Discretisation::TwoPoint:
        return "two-point";
    case Discretisation::Mixed:
        return "mixed";
    case Discretisation::Conforming:
        break;
    }
    return "conforming";
}

TEST(BoxFacts, EqualValuesComeBack)
{
    for (const Counts& n : {Counts{1, 1, 1}, Counts{1, 1, 5}, Counts{4, 3, 2}, Counts{2, 7, 3}}) {
        const BlockData data = make_block(n, {120, 80, 3}, [](int, int, int, int) { return 37.5; });
        for (const Boundary boundary : all_boundaries) {
            for (const Discretisation discretisation : all_discretisations) {
                const BlockResult result = solve(data, boundary, discretisation);
                for (int axis = 0; axis < 3; ++axis) {
                    EXPECT_NEAR(result.tensor[axis], 37.5, 37.5e-11) << name(discretisation);
                    EXPECT_NEAR(result.tensor[3 + axis], 0, 37.5e-11) << name(discretisation);
                }
                EXPECT_FALSE(result.backup);
            }
        }
    }
}

TEST(BoxFacts, EachAxisTakesItsOwnPermeability)
{
    const BlockData data = make_block({3, 4, 2}, {10, 20, 5}, [](int axis, int, int, int) { return 2.0 + 5 * axis; });
    for (const Boundary boundary : all_boundaries) {
        for (const Discretisation discretisation : all_discretisations) {
            const Tensor tensor = tensor_of(data, boundary, discretisation);
            for (int axis = 0; axis < 3; ++axis)
                EXPECT_NEAR(tensor[axis], 2.0 + 5 * axis, 1e-10);
        }
    }
}

TEST(BoxFacts, ScalingScales)
{
    const BlockData data = lognormal_block({4, 3, 5}, {4, 3, 2}, 2, false, 7);
    for (const double factor : {1e-18, 3.0, 1e200}) {
        BlockData scaled = data;
        for (auto& values : scaled.k)
            std::ranges::for_each(values, [&](double& k) { k *= factor; });
        for (const Boundary boundary : all_boundaries) {
            for (const Discretisation discretisation : all_discretisations) {
                const Tensor one = tensor_of(data, boundary, discretisation);
                const Tensor many = tensor_of(scaled, boundary, discretisation);
                for (int c = 0; c < 6; ++c)
                    EXPECT_NEAR(many[c] / factor, one[c], 1e-11 * one[0]);
            }
        }
    }
}

TEST(BoxFacts, LengthUnitDoesNotMatter)
{
    const BlockData data = lognormal_block({4, 3, 5}, {4, 3, 2}, 2, false, 8);
    BlockData far = data;
    for (double& size : far.size)
        size *= 1e120;
    for (const Discretisation discretisation : all_discretisations)
        EXPECT_NEAR(tensor_of(far, Boundary::Unconfined, discretisation)[0],
                    tensor_of(data, Boundary::Unconfined, discretisation)[0], 1e-10);
}

TEST(BoxFacts, ChainOfBounds)
{
    unsigned seed = 1;
    for (const Counts& n : {Counts{3, 3, 3}, Counts{5, 4, 3}, Counts{2, 6, 4}, Counts{6, 6, 4}, Counts{1, 5, 4}}) {
        for (const double sigma : {0.5, 1.5, 3.0}) {
            for (const bool isotropic : {true, false}) {
                const BlockData data = lognormal_block(n, {6, 2.5, 1.2}, sigma, isotropic, seed++);
                const Tensor two_point = tensor_of(data, Boundary::Confined, Discretisation::TwoPoint);
                const Tensor mixed = tensor_of(data, Boundary::Confined, Discretisation::Mixed);
                const Tensor conforming = tensor_of(data, Boundary::Confined, Discretisation::Conforming);
                for (int axis = 0; axis < 3; ++axis) {
                    const auto& values = data.k[axis];
                    double sum = 0;
                    double inverse = 0;
                    for (const double k : values) {
                        sum += k;
                        inverse += 1 / k;
                    }
                    const auto count = static_cast<double>(values.size());
                    const double chain[] = {
                        count / inverse,
                        directional_mean(DirectionalMean::HarmonicArithmetic, axis, n, values),
                        two_point[axis],
                        mixed[axis],
                        conforming[axis],
                        directional_mean(DirectionalMean::ArithmeticHarmonic, axis, n, values),
                        sum / count,
                    };
                    for (std::size_t c = 1; c < std::size(chain); ++c)
                        EXPECT_LE(chain[c - 1], chain[c] * (1 + slack)) << "link " << c << " axis " << axis;
                    const double low = chain[1];
                    const double high = chain[5];
                    for (const DirectionalMean mean :
                         {DirectionalMean::CardwellParson, DirectionalMean::SymCardwellParson}) {
                        const double between = directional_mean(mean, axis, n, values);
                        EXPECT_GE(between, low * (1 - 1e-12));
                        EXPECT_LE(between, high * (1 + 1e-12));
                    }
                }
            }
        }
    }
}

TEST(BoxFacts, LooserBoundariesLetMoreThrough)
{
    for (unsigned seed = 20; seed < 30; ++seed) {
        const BlockData data = lognormal_block({4, 5, 3}, {3, 5, 1}, 2, seed % 2 == 0, seed);
        for (const Discretisation discretisation : all_discretisations) {
            const Tensor confined = tensor_of(data, Boundary::Confined, discretisation);
            const Tensor lateral = tensor_of(data, Boundary::KConfined, discretisation);
            const Tensor linear = tensor_of(data, Boundary::Unconfined, discretisation);
            for (int axis = 0; axis < 3; ++axis) {
                EXPECT_LE(confined[axis], lateral[axis] * (1 + 1e-10)) << name(discretisation);
                EXPECT_LE(lateral[axis], linear[axis] * (1 + 1e-10)) << name(discretisation);
            }
            EXPECT_EQ(lateral[2], confined[2]);
            EXPECT_EQ(confined[3], 0);
            EXPECT_NE(lateral[3], 0);
            EXPECT_EQ(lateral[4], 0);
            EXPECT_NE(linear[4], 0);
        }
    }
}

TEST(BoxFacts, TensorsArePositive)
{
    for (unsigned seed = 40; seed < 60; ++seed) {
        const BlockData data = lognormal_block({3, 4, 5}, {3, 1, 2}, 0.2 * (seed - 39), seed % 2 == 0, seed);
        for (const Boundary boundary : all_boundaries) {
            for (const Discretisation discretisation : all_discretisations) {
                const Tensor tensor = tensor_of(data, boundary, discretisation);
                EXPECT_GE(least_eigenvalue(tensor), -1e-10 * (tensor[0] + tensor[1] + tensor[2]));
                EXPECT_GT(std::min({tensor[0], tensor[1], tensor[2]}), 0);
            }
        }
    }
}

/// The block with two axes exchanged, values carried along.
BlockData swapped(const BlockData& data, int a, int b)
{
    BlockData result = data;
    std::swap(result.n[a], result.n[b]);
    std::swap(result.size[a], result.size[b]);
    const BlockData made = make_block(result.n, result.size, [&](int axis, int i, int j, int k) {
        Counts p{i, j, k};
        std::swap(p[a], p[b]);
        const int from = axis == a ? b : axis == b ? a : axis;
        return data.k[from][data.at(p[0], p[1], p[2])];
    });
    return made;
}

int component(int a, int b)
{
    return a == b ? a : a + b + 2;
}

TEST(BoxFacts, SwapOfAxesSwapsComponents)
{
    const BlockData data = lognormal_block({5, 3, 4}, {3, 1, 2}, 2, false, 70);
    for (const Boundary boundary : {Boundary::Confined, Boundary::Unconfined}) {
        for (const Discretisation discretisation : all_discretisations) {
            const Tensor before = tensor_of(data, boundary, discretisation);
            for (const auto& [a, b] : {std::pair{0, 1}, std::pair{1, 2}, std::pair{0, 2}}) {
                const Tensor after = tensor_of(swapped(data, a, b), boundary, discretisation);
                std::array<int, 3> axis{0, 1, 2};
                std::swap(axis[a], axis[b]);
                for (int r = 0; r < 3; ++r) {
                    for (int c = r; c < 3; ++c)
                        EXPECT_NEAR(after[component(std::min(axis[r], axis[c]), std::max(axis[r], axis[c]))],
                                    before[component(r, c)], 1e-10 * before[0]);
                }
            }
        }
    }
    const Tensor before = tensor_of(data, Boundary::KConfined, Discretisation::Mixed);
    const Tensor after = tensor_of(swapped(data, 0, 1), Boundary::KConfined, Discretisation::Mixed);
    EXPECT_NEAR(before[0], after[1], 1e-10 * before[0]);
    EXPECT_NEAR(before[3], after[3], 1e-10 * before[0]);
}

TEST(BoxFacts, ReversedAxisChangesTwoSigns)
{
    const BlockData data = lognormal_block({5, 3, 4}, {3, 1, 2}, 2, false, 71);
    for (int axis = 0; axis < 3; ++axis) {
        const BlockData reversed = make_block(data.n, data.size, [&](int a, int i, int j, int k) {
            Counts p{i, j, k};
            p[axis] = data.n[axis] - 1 - p[axis];
            return data.k[a][data.at(p[0], p[1], p[2])];
        });
        for (const Boundary boundary : all_boundaries) {
            for (const Discretisation discretisation : all_discretisations) {
                const Tensor before = tensor_of(data, boundary, discretisation);
                const Tensor after = tensor_of(reversed, boundary, discretisation);
                for (int r = 0; r < 3; ++r) {
                    EXPECT_NEAR(after[r], before[r], 1e-10 * before[r]);
                    for (int c = r + 1; c < 3; ++c)
                        EXPECT_NEAR(after[component(r, c)], (r == axis || c == axis ? -1 : 1) * before[component(r, c)],
                                    1e-10 * before[0]);
                }
            }
        }
    }
}

TEST(BoxFacts, LayersAreArithmeticAlongAndHarmonicAcross)
{
    const std::vector<double> layers{1000, 0.01, 30, 4, 200};
    double sum = 0;
    double inverse = 0;
    for (const double k : layers) {
        sum += k / 5;
        inverse += 1 / k / 5;
    }
    for (int across = 0; across < 3; ++across) {
        Counts n{3, 3, 3};
        n[across] = 5;
        const BlockData data = make_block(n, {7, 3, 2}, [&](int, int i, int j, int k) {
            return layers[static_cast<std::size_t>(Counts{i, j, k}[across])];
        });
        for (const Discretisation discretisation : all_discretisations) {
            const Tensor tensor = tensor_of(data, Boundary::Confined, discretisation);
            for (int axis = 0; axis < 3; ++axis) {
                const double expected = axis == across ? 1 / inverse : sum;
                EXPECT_NEAR(tensor[axis], expected, 1e-7 * expected) << name(discretisation);
            }
        }
        for (const DirectionalMean mean : {DirectionalMean::HarmonicArithmetic, DirectionalMean::ArithmeticHarmonic,
                                           DirectionalMean::CardwellParson, DirectionalMean::SymCardwellParson}) {
            for (int axis = 0; axis < 3; ++axis) {
                const double expected = axis == across ? 1 / inverse : sum;
                EXPECT_NEAR(directional_mean(mean, axis, n, data.k[0]), expected, 1e-7 * expected);
            }
        }
    }
}

TEST(BoxFacts, LinearPressureAlongLayersIsArithmetic)
{
    const std::vector<double> layers{100, 1, 30, 4};
    const BlockData data = make_block({3, 3, 4}, {7, 3, 2}, [&](int, int, int, int k) {
        return layers[static_cast<std::size_t>(k)];
    });
    for (const Discretisation discretisation : all_discretisations) {
        const Tensor tensor = tensor_of(data, Boundary::Unconfined, discretisation);
        EXPECT_NEAR(tensor[0], 33.75, 1e-9);
        EXPECT_NEAR(tensor[1], 33.75, 1e-9);
        EXPECT_NEAR(tensor[3], 0, 1e-9);
    }
}

TEST(BoxFacts, TwoDimensionalDuality)
{
    for (unsigned seed = 80; seed < 90; ++seed) {
        const BlockData data = lognormal_block({5, 4, 1}, {5, 4, 1}, 1.5, true, seed);
        BlockData inverse = data;
        for (auto& values : inverse.k)
            std::ranges::for_each(values, [](double& k) { k = 1 / k; });
        const Tensor mixed = tensor_of(data, Boundary::Confined, Discretisation::Mixed);
        const Tensor conforming = tensor_of(inverse, Boundary::Confined, Discretisation::Conforming);
        EXPECT_NEAR(mixed[0] * conforming[1], 1, 1e-9);
        EXPECT_NEAR(mixed[1] * conforming[0], 1, 1e-9);
    }
}

TEST(BoxFacts, CheckerboardProductIsExactAtEverySampling)
{
    const double k1 = 100;
    const double k2 = 1;
    double last_mixed = 0;
    double last_conforming = 1e300;
    for (int fine = 1; fine <= 8; fine *= 2) {
        const int side = 2 * fine;
        const BlockData data = make_block({side, side, 1}, {1, 1, 1}, [&](int, int i, int j, int) {
            return (i / fine + j / fine) % 2 == 0 ? k1 : k2;
        });
        const double mixed = tensor_of(data, Boundary::Confined, Discretisation::Mixed)[0];
        const double conforming = tensor_of(data, Boundary::Confined, Discretisation::Conforming)[0];
        EXPECT_NEAR(mixed * conforming, k1 * k2, 1e-6 * k1 * k2);
        EXPECT_GT(mixed, last_mixed);
        EXPECT_LT(conforming, last_conforming);
        EXPECT_LT(mixed, 10);
        EXPECT_GT(conforming, 10);
        last_mixed = mixed;
        last_conforming = conforming;
    }
}


TEST(BoxFacts, LognormalBlocksBracketTheGeometricMean)
{
    const double sigma = 1;
    const BlockData data = lognormal_block({32, 32, 32}, {1, 1, 1}, sigma, true, 4242);
    BlockSolver solver;
    const auto mean = [&](Discretisation discretisation) {
        const BlockResult result = solver.solve(data.block(), {.discretisation = discretisation});
        return (result.tensor[0] + result.tensor[1] + result.tensor[2]) / 3;
    };
    double logs = 0;
    for (const double k : data.k[0])
        logs += std::log(k);
    const double middle = std::exp(logs / static_cast<double>(data.samples()) + sigma * sigma / 6);
    const double mixed = mean(Discretisation::Mixed);
    const double conforming = mean(Discretisation::Conforming);
    printf("lognormal 32^3, sigma 1: mixed %.6f <= %.6f <= conforming %.6f\n", mixed, middle, conforming);
    EXPECT_LE(mixed, middle);
    EXPECT_LE(middle, conforming);
}

} // namespace
} // namespace flow_test
