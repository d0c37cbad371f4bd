#include "upscaling/kernels/flow/DirectionalMeans.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <random>
#include <utility>
#include <vector>

namespace {

using namespace Kelvane::flow;

// Two by two squares, I fastest: 1 3 below 6 2.
const std::vector<double> square{1, 3, 6, 2};

constexpr std::array all_means{DirectionalMean::HarmonicArithmetic, DirectionalMean::ArithmeticHarmonic,
                               DirectionalMean::CardwellParson, DirectionalMean::SymCardwellParson};

/// n[0] * n[1] * n[2] values over some decades.
std::vector<double> wild_values(const std::array<int, 3>& n, unsigned seed)
{
    std::mt19937 random(seed);
    std::normal_distribution<double> normal(0, 3);
    std::vector<double> values(static_cast<std::size_t>(n[0] * n[1] * n[2]));
    for (double& value : values)
        value = std::exp(normal(random));
    return values;
}

TEST(DirectionalMeans, HandWorkedSquareAlongI)
{
    // Lines: h(1,3) = 1.5, h(6,2) = 3; planes: m(1,6) = 3.5, m(3,2) = 2.5.
    const double low = 2.25;
    const double high = 2 / (1 / 3.5 + 1 / 2.5);
    EXPECT_DOUBLE_EQ(directional_mean(DirectionalMean::HarmonicArithmetic, 0, {2, 2, 1}, square), low);
    EXPECT_DOUBLE_EQ(directional_mean(DirectionalMean::ArithmeticHarmonic, 0, {2, 2, 1}, square), high);
    EXPECT_DOUBLE_EQ(directional_mean(DirectionalMean::CardwellParson, 0, {2, 2, 1}, square), std::sqrt(low * high));
    // Across J m_y comes before or after h_x, m_z changes nothing: three orders of each.
    EXPECT_DOUBLE_EQ(directional_mean(DirectionalMean::SymCardwellParson, 0, {2, 2, 1}, square), std::sqrt(low * high));
}

TEST(DirectionalMeans, HandWorkedSquareAlongJ)
{
    const double low = 0.5 * (2 / (1 + 1.0 / 6) + 2 / (1 / 3.0 + 1 / 2.0));
    EXPECT_DOUBLE_EQ(directional_mean(DirectionalMean::HarmonicArithmetic, 1, {2, 2, 1}, square), low);
    EXPECT_DOUBLE_EQ(directional_mean(DirectionalMean::ArithmeticHarmonic, 1, {2, 2, 1}, square), 2 / (0.5 + 0.25));
    EXPECT_DOUBLE_EQ(directional_mean(DirectionalMean::HarmonicArithmetic, 2, {2, 2, 1}, square), 3);
}

TEST(DirectionalMeans, SixOrdersOfACube)
{
    const std::vector<double> cube{1, 2, 3, 4, 5, 6, 7, 9};
    const auto h = [](double a, double b) { return 2 / (1 / a + 1 / b); };
    const auto m = [](double a, double b) { return (a + b) / 2; };
    // Along K. Samples c = i + 2 j + 4 k.
    const double lines = m(m(h(1, 5), h(2, 6)), m(h(3, 7), h(4, 9)));
    const double planes = h(m(m(1, 2), m(3, 4)), m(m(5, 6), m(7, 9)));
    const double i_first = m(h(m(1, 2), m(5, 6)), h(m(3, 4), m(7, 9)));
    const double j_first = m(h(m(1, 3), m(5, 7)), h(m(2, 4), m(6, 9)));
    EXPECT_DOUBLE_EQ(directional_mean(DirectionalMean::HarmonicArithmetic, 2, {2, 2, 2}, cube), lines);
    EXPECT_DOUBLE_EQ(directional_mean(DirectionalMean::ArithmeticHarmonic, 2, {2, 2, 2}, cube), planes);
    EXPECT_NEAR(directional_mean(DirectionalMean::SymCardwellParson, 2, {2, 2, 2}, cube),
                std::pow(lines * lines * planes * planes * i_first * j_first, 1.0 / 6), 1e-13);
}

TEST(DirectionalMeans, SectionsAreWeighted)
{
    const std::vector<double> long_short{3, 1};
    EXPECT_DOUBLE_EQ(directional_mean(DirectionalMean::HarmonicArithmetic, 0, {2, 1, 1}, std::vector{1.0, 3.0},
                                      {std::span<const double>(long_short), {}, {}}),
                     4 / (3 / 1.0 + 1 / 3.0));
    EXPECT_DOUBLE_EQ(directional_mean(DirectionalMean::HarmonicArithmetic, 1, {2, 1, 1}, std::vector{1.0, 3.0},
                                      {std::span<const double>(long_short), {}, {}}),
                     (3 * 1.0 + 1 * 3.0) / 4);
}

TEST(DirectionalMeans, SealedSamplesAreExact)
{
    const std::vector<double> values{0, 3, 6, 2};
    EXPECT_DOUBLE_EQ(directional_mean(DirectionalMean::HarmonicArithmetic, 0, {2, 2, 1}, values), 1.5);
    EXPECT_DOUBLE_EQ(directional_mean(DirectionalMean::ArithmeticHarmonic, 0, {2, 2, 1}, values),
                     2 / (1 / 3.0 + 1 / 2.5));
    const std::vector<double> barrier{0, 5, 0, 7};
    EXPECT_EQ(directional_mean(DirectionalMean::HarmonicArithmetic, 0, {2, 2, 1}, barrier), 0);
    EXPECT_EQ(directional_mean(DirectionalMean::ArithmeticHarmonic, 0, {2, 2, 1}, barrier), 0);
    EXPECT_EQ(directional_mean(DirectionalMean::CardwellParson, 0, {2, 2, 1}, barrier), 0);
    EXPECT_EQ(directional_mean(DirectionalMean::SymCardwellParson, 0, {2, 2, 1}, barrier), 0);
    EXPECT_DOUBLE_EQ(directional_mean(DirectionalMean::SymCardwellParson, 1, {2, 2, 1}, barrier),
                     2 / (1 / 5.0 + 1 / 7.0) / 2);
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(directional_mean(DirectionalMean::HarmonicArithmetic, 0, {1, 1, 1}, std::vector{nan}), 0);
    EXPECT_DOUBLE_EQ(directional_mean(DirectionalMean::HarmonicArithmetic, 1, {2, 1, 1}, std::vector{-4.0, 3.0}), 1.5);
}

TEST(DirectionalMeans, NothingOverflows)
{
    const std::vector<double> wild{1e300, 1e-300, 1e300, 1e300};
    EXPECT_DOUBLE_EQ(directional_mean(DirectionalMean::ArithmeticHarmonic, 0, {2, 2, 1}, wild) / 1e300, 2 / 3.0);
    const std::vector<double> tiny{1e-290, 3e-290};
    EXPECT_NEAR(directional_mean(DirectionalMean::SymCardwellParson, 0, {2, 1, 1}, tiny) / 1e-290, 1.5, 1e-12);
}

TEST(DirectionalMeans, AllAxesAtOnce)
{
    const auto means = directional_means(DirectionalMean::ArithmeticHarmonic, {2, 2, 1}, square);
    for (int axis = 0; axis < 3; ++axis)
        EXPECT_EQ(means[axis], directional_mean(DirectionalMean::ArithmeticHarmonic, axis, {2, 2, 1}, square));
    const std::vector<double> other{2, 2, 2, 2};
    const auto diagonal = diagonal_means({2, 2, 1}, square, other, square);
    EXPECT_EQ(diagonal[0], directional_mean(DirectionalMean::SymCardwellParson, 0, {2, 2, 1}, square));
    EXPECT_NEAR(diagonal[1], 2, 1e-14);
    EXPECT_NEAR(diagonal[2], 3, 1e-14);
}

TEST(DirectionalMeans, EqualValuesComeBackWhateverTheSections)
{
    const std::vector<double> i{1, 20, 3}, j{5, 0.1}, k{2, 2, 7, 1};
    for (const double value : {1e-290, 3.7, 1e290}) {
        const std::vector<double> values(24, value);
        for (const DirectionalMean mean : all_means)
            for (int axis = 0; axis < 3; ++axis)
                EXPECT_NEAR(directional_mean(mean, axis, {3, 2, 4}, values, {i, j, k}) / value, 1, 1e-13);
        for (const double along : diagonal_means({3, 2, 4}, values, values, values, {i, j, k}))
            EXPECT_NEAR(along / value, 1, 1e-13);
    }
}

TEST(DirectionalMeans, ScalingScalesAndAxesMayBeExchangedOrReversed)
{
    const std::array<int, 3> n{4, 3, 5};
    const std::vector<double> values = wild_values(n, 7);
    std::vector<double> scaled = values;
    for (double& value : scaled)
        value *= 1e-7;
    const auto moved = [&](const std::array<int, 3>& size, const auto& from) {
        std::vector<double> result;
        for (int k = 0; k < size[2]; ++k)
            for (int j = 0; j < size[1]; ++j)
                for (int i = 0; i < size[0]; ++i) {
                    const std::array<int, 3> p = from(std::array{i, j, k});
                    result.push_back(values[static_cast<std::size_t>((p[2] * n[1] + p[1]) * n[0] + p[0])]);
                }
        return result;
    };
    for (const DirectionalMean mean : all_means) {
        const std::array<double, 3> means = directional_means(mean, n, values);
        const std::array<double, 3> small = directional_means(mean, n, scaled);
        for (std::size_t a = 0; a < 3; ++a) {
            EXPECT_NEAR(small[a] / means[a], 1e-7, 1e-19);
            const auto back = moved(n, [&](std::array<int, 3> p) {
                p[a] = n[a] - 1 - p[a];
                return p;
            });
            EXPECT_NEAR(directional_means(mean, n, back)[a] / means[a], 1, 1e-12);
            const std::size_t b = (a + 1) % 3;
            std::array<int, 3> size = n;
            std::swap(size[a], size[b]);
            const auto exchanged = directional_means(mean, size, moved(size, [&](std::array<int, 3> p) {
                                                         std::swap(p[a], p[b]);
                                                         return p;
                                                     }));
            EXPECT_NEAR(exchanged[a] / means[b], 1, 1e-12);
            EXPECT_NEAR(exchanged[b] / means[a], 1, 1e-12);
        }
    }
}

} // namespace
