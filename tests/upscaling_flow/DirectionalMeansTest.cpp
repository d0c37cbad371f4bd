#include "upscaling/kernels/flow/DirectionalMeans.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace {

using namespace Kelvane::flow;

// Two by two squares, I fastest: 1 3 below 6 2.
const std::vector<double> square{1, 3, 6, 2};

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

} // namespace
