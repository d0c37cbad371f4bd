#include "upscaling/kernels/Averages.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <vector>

namespace {

using namespace Kelvane;
using Numbers = std::vector<double>;

double mean(Average method, Numbers values, const Numbers& weights = {}, double power = 1)
{
    return average(method, power, values, weights);
}

constexpr std::array weighted{Average::Arithmetic, Average::Geometric, Average::Harmonic, Average::Power};

TEST(Averages, ByHand)
{
    EXPECT_DOUBLE_EQ(mean(Average::Arithmetic, {1, 2, 6}), 3);
    EXPECT_DOUBLE_EQ(mean(Average::Arithmetic, {1, 5}, {3, 1}), 2);
    EXPECT_DOUBLE_EQ(mean(Average::Arithmetic, {-4, 2}), -1);
    EXPECT_DOUBLE_EQ(mean(Average::Geometric, {2, 8}), 4);
    EXPECT_NEAR(mean(Average::Geometric, {2, 16}, {2, 1}), 4, 1e-14);
    EXPECT_DOUBLE_EQ(mean(Average::Harmonic, {2, 6}), 3);
    EXPECT_DOUBLE_EQ(mean(Average::Harmonic, {1, 4}, {1, 4}), 2.5);
    EXPECT_NEAR(mean(Average::Power, {1, 9}, {}, 0.5), 4, 1e-14);
    EXPECT_NEAR(mean(Average::Power, {1, 9}, {3, 1}, 0.5), 2.25, 1e-14);
    EXPECT_NEAR(mean(Average::Power, {0, 4}, {}, 0.5), 1, 1e-15);
    EXPECT_NEAR(mean(Average::Power, {1, 1.0 / 9}, {}, -0.5), 0.25, 1e-15);
    EXPECT_DOUBLE_EQ(mean(Average::Sum, {1, -2, 6}), 5);
    EXPECT_DOUBLE_EQ(mean(Average::Minimum, {3, -2, 6}), -2);
    EXPECT_DOUBLE_EQ(mean(Average::Maximum, {3, -2, 6}), 6);
    EXPECT_DOUBLE_EQ(mean(Average::Median, {9, 1, 3}), 3);
    EXPECT_DOUBLE_EQ(mean(Average::Median, {9, 1, 3, 4}), 3.5);
    EXPECT_DOUBLE_EQ(mean(Average::MostProbable, {3, 1, 3, 2}), 3);
    EXPECT_DOUBLE_EQ(mean(Average::MostProbable, {3, 1, 3, 1, 2}), 1);
    EXPECT_DOUBLE_EQ(mean(Average::Number, {3, 1, 3, 1, 2}), 5);
}

TEST(Averages, DykstraParsonsByHand)
{
    // In descending order 9 8 ... 1 at 0.1, 0.2, ... 0.9: half of the values exceed 5, 84.1 % exceed 2 - 0.41 = 1.59.
    EXPECT_NEAR(mean(Average::DykstraParsons, {1, 2, 3, 4, 5, 6, 7, 8, 9}), (5 - 1.59) / 5, 1e-12);
    // Three values stand at 0.25, 0.5, 0.75: 84.1 % is beyond the end.
    EXPECT_NEAR(mean(Average::DykstraParsons, {10, 20, 40}), 0.5, 1e-12);
    EXPECT_EQ(mean(Average::DykstraParsons, {7}), 0);
    EXPECT_EQ(mean(Average::DykstraParsons, {7, 7, 7, 7}), 0);
    // One large value among many small ones does not count; a wild sample nears 1.
    EXPECT_GT(mean(Average::DykstraParsons, {1e-6, 1e-5, 1e-4, 1e-3, 1e-2, 1e-1, 1, 10, 100, 1000, 1e4}), 0.99);
}

TEST(Averages, DykstraParsonsOfALognormalSample)
{
    std::mt19937_64 random(11);
    for (const double sigma : {0.3, 1.0, 2.0}) {
        std::normal_distribution<double> normal(0, sigma);
        Numbers values(400000);
        for (double& value : values)
            value = std::exp(normal(random));
        EXPECT_NEAR(mean(Average::DykstraParsons, values), 1 - std::exp(-0.9986 * sigma), 5e-3) << sigma;
    }
}

TEST(Averages, NothingAndNoWeight)
{
    for (int method = 0; method <= static_cast<int>(Average::DykstraParsons); ++method)
        EXPECT_TRUE(std::isnan(mean(static_cast<Average>(method), {}))) << method;
    for (const Average method : weighted)
        for (const double power : {-0.5, 0.0, 0.5})
            EXPECT_TRUE(std::isnan(mean(method, {1, 2}, {0, 0}, power)));
    EXPECT_DOUBLE_EQ(mean(Average::Geometric, {5, 2}, {0, 3}), 2);
}

TEST(Averages, EqualValuesGiveThatValue)
{
    std::mt19937_64 random(3);
    std::uniform_real_distribution<double> weight(0, 5);
    for (const double value : {1e-300, 3.7e-12, 1.0, 250.0, 1e300}) {
        Numbers weights(777);
        for (double& w : weights)
            w = weight(random);
        for (const Average method : weighted)
            for (const double power : {-1.0, -0.3, 0.0, 1e-9, 0.3, 1.0})
                EXPECT_NEAR(mean(method, Numbers(777, value), weights, power) / value, 1, 4e-13) << value << ' ' << power;
        for (const Average method : {Average::Minimum, Average::Maximum, Average::Median, Average::MostProbable})
            EXPECT_EQ(mean(method, Numbers(777, value)), value);
    }
}

TEST(Averages, ScalingScales)
{
    std::mt19937_64 random(4);
    std::normal_distribution<double> normal(0, 3);
    Numbers values(301), weights(values.size());
    for (std::size_t n = 0; n < values.size(); ++n) {
        values[n] = n % 9 == 0 ? 2.5 : std::exp(normal(random)); // the most frequent value
        weights[n] = std::exp(normal(random));
    }
    for (const double factor : {1e-9, 0.3, 7.0, 1e12}) {
        Numbers scaled = values;
        for (double& value : scaled)
            value *= factor;
        for (const Average method :
             {Average::Arithmetic, Average::Geometric, Average::Harmonic, Average::Power, Average::Sum,
              Average::Minimum, Average::Maximum, Average::Median, Average::MostProbable})
            EXPECT_NEAR(mean(method, scaled, weights, 0.4) / mean(method, values, weights, 0.4) / factor, 1, 1e-12)
                << static_cast<int>(method);
        // Numbers without a unit stay.
        EXPECT_EQ(mean(Average::Number, scaled), 301);
        EXPECT_NEAR(mean(Average::DykstraParsons, scaled), mean(Average::DykstraParsons, values), 1e-12);
    }
}

TEST(Averages, ScaleAndOrder)
{
    std::mt19937_64 random(5);
    std::normal_distribution<double> normal(0, 5); // values over 12 decades
    std::uniform_real_distribution<double> weight(0.1, 2);
    for (int round = 0; round < 50; ++round) {
        Numbers values(200), weights(200);
        for (std::size_t n = 0; n < values.size(); ++n) {
            values[n] = std::exp(normal(random));
            weights[n] = weight(random);
        }
        Numbers scaled = values;
        for (double& value : scaled)
            value *= 1e7;
        double former = mean(Average::Minimum, values);
        for (const double power : {-1.0, -0.999, -0.5, -1e-3, -1e-12, 0.0, 1e-12, 1e-3, 0.5, 0.999, 1.0}) {
            const double result = mean(Average::Power, values, weights, power);
            EXPECT_GE(result, former * (1 - 1e-12)) << power;
            EXPECT_NEAR(mean(Average::Power, scaled, weights, power) / result, 1e7, 1e-4) << power;
            former = result;
        }
        EXPECT_LE(former, mean(Average::Maximum, values));
        EXPECT_NEAR(mean(Average::Power, values, weights, 0) / mean(Average::Geometric, values, weights), 1, 1e-13);
        EXPECT_NEAR(mean(Average::Power, values, weights, 1e-13) / mean(Average::Geometric, values, weights), 1, 1e-10);
        EXPECT_NEAR(mean(Average::Power, values, weights, -1e-13) / mean(Average::Geometric, values, weights), 1, 1e-10);
        EXPECT_DOUBLE_EQ(mean(Average::Power, values, weights, 1), mean(Average::Arithmetic, values, weights));
        EXPECT_DOUBLE_EQ(mean(Average::Power, values, weights, -1), mean(Average::Harmonic, values, weights));
    }
}

TEST(Averages, NothingIsLostOrOverflows)
{
    // A million of 0.1 beside 1e12.
    Numbers values(1000001, 0.1);
    values[0] = 1e12;
    EXPECT_NEAR(mean(Average::Sum, values) / (1e12 + 1e5), 1, 1e-15);
    EXPECT_NEAR(mean(Average::Arithmetic, {1.5e308, 1.7e308}) / 1.6e308, 1, 1e-15);
    EXPECT_NEAR(mean(Average::Arithmetic, {1.5e308, 1.7e308}, {1e200, 1e200}) / 1.6e308, 1, 1e-15);
    EXPECT_NEAR(mean(Average::Harmonic, {1e-308, 1e-308}, {1e300, 1e300}) / 1e-308, 1, 1e-13);
    EXPECT_NEAR(mean(Average::Geometric, {1e300, 1e-300}), 1, 1e-12);
    EXPECT_NEAR(mean(Average::Median, {1.5e308, 1.7e308}) / 1.6e308, 1, 1e-15);
}

TEST(Averages, DomainTests)
{
    struct Row {
        Average method;
        bool negative, zero;
    };
    for (const Row& row : {Row{Average::Arithmetic, true, true}, Row{Average::Geometric, false, false},
                           Row{Average::Harmonic, false, false}, Row{Average::Power, true, true}, Row{Average::Sum, true, true},
                           Row{Average::Minimum, true, true}, Row{Average::Maximum, true, true}, Row{Average::Median, true, true},
                           Row{Average::MostProbable, true, true}, Row{Average::Number, true, true},
                           Row{Average::DykstraParsons, false, false}}) {
        const AverageRules rules = rules_of(row.method, 1);
        EXPECT_EQ(rules.accepts_negative, row.negative) << static_cast<int>(row.method);
        EXPECT_EQ(rules.accepts_zero, row.zero) << static_cast<int>(row.method);
    }
    EXPECT_FALSE(rules_of(Average::Power, 0.5).accepts_negative);
    EXPECT_TRUE(rules_of(Average::Power, 0.5).accepts_zero);
    EXPECT_FALSE(rules_of(Average::Power, 0).accepts_zero);
    EXPECT_FALSE(rules_of(Average::Power, -1).accepts_zero);
}

TEST(Averages, PartsJoinToTheWhole)
{
    std::mt19937_64 random(9);
    std::normal_distribution<double> normal(0, 3);
    std::uniform_real_distribution<double> weight(0.1, 2);
    std::uniform_int_distribution<std::size_t> length(0, 40);
    for (const Average method : {Average::Arithmetic, Average::Geometric, Average::Harmonic, Average::Power, Average::Sum,
                                 Average::Minimum, Average::Maximum, Average::Number}) {
        for (const double power : {-1.0, -0.4, 0.0, 1e-10, 0.4, 1.0}) {
            const bool zeros = rules_of(method, power).accepts_zero;
            Numbers all, all_weights;
            PartialAverage joined(method, power);
            for (int part = 0; part < 20; ++part) {
                Numbers values(length(random)), weights(values.size());
                for (std::size_t n = 0; n < values.size(); ++n) {
                    values[n] = zeros && n % 7 == 3 ? 0 : std::exp(normal(random));
                    weights[n] = weight(random);
                }
                all.insert(all.end(), values.begin(), values.end());
                all_weights.insert(all_weights.end(), weights.begin(), weights.end());
                PartialAverage piece(method, power);
                piece.set(values, weights);
                joined.join(piece);
            }
            const double whole = average(method, power, all, all_weights);
            EXPECT_NEAR(joined.value(), whole, 1e-12 * std::abs(whole)) << static_cast<int>(method) << ' ' << power;
            EXPECT_EQ(joined.count(), static_cast<std::int64_t>(all.size()));
        }
    }
    for (const Average method : {Average::Median, Average::MostProbable, Average::DykstraParsons})
        EXPECT_THROW((void)PartialAverage(method), std::invalid_argument);
    EXPECT_TRUE(std::isnan(PartialAverage(Average::Power, 0.3).value()));
}

} // namespace
