// Rules for flow units on layers worked out by hand, and what must hold for any layers.

#include "upscaling/statistics/FlowUnitCreation.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

using Kelvane::FlowUnitStatsManager;
using enum FlowUnitStatsManager::GuessMethod;
using Units = std::vector<int>;

namespace {

const double nothing = std::nan("");

/// Layers of equally many equal cells under the arithmetic mean.
struct EqualLayers {
    std::vector<double> means;
    Units start;
    Units strata;

    explicit EqualLayers(std::vector<double> layer_means, Units units = {}, Units stratigraphic = {})
        : means(std::move(layer_means)), start(std::move(units)), strata(std::move(stratigraphic))
    {
        if (start.empty()) {
            for (std::size_t n = 0; n < means.size(); ++n)
                start.push_back(static_cast<int>(n) + 1);
        }
        if (strata.empty())
            strata.assign(means.size(), 0);
    }

    [[nodiscard]] double mean(int first, int last) const
    {
        double sum = 0;
        int count = 0;
        for (int n = first; n <= last; ++n) {
            const double layer = means[static_cast<std::size_t>(n)];
            sum += std::isnan(layer) ? 0 : layer;
            count += std::isnan(layer) ? 0 : 1;
        }
        return count == 0 ? nothing : sum / count;
    }

    [[nodiscard]] Units create(FlowUnitStatsManager::GuessMethod method, double value) const
    {
        return Kelvane::create_flow_units({.layer_means = means,
                                           .flow_units = start,
                                           .stratigraphic_units = strata,
                                           .mean = [this](int first, int last) { return mean(first, last); }},
                                          method, value);
    }
};

} // namespace

TEST(FlowUnitCreation, NumberJoinsTheClosestPairFirst)
{
    // Distances 3, 1, 6, 2: 4 and 5 join to 4.5 (distances 3.5, 6.5, 2), then 11 and 13, then 1 and 4.5.
    const EqualLayers layers({1, 4, 5, 11, 13});
    EXPECT_EQ(layers.create(NumberOfFlowUnits, 5), (Units{1, 2, 3, 4, 5}));
    EXPECT_EQ(layers.create(NumberOfFlowUnits, 4), (Units{1, 2, 2, 3, 4}));
    EXPECT_EQ(layers.create(NumberOfFlowUnits, 3), (Units{1, 2, 2, 3, 3}));
    EXPECT_EQ(layers.create(NumberOfFlowUnits, 2), (Units{1, 1, 1, 2, 2}));
    EXPECT_EQ(layers.create(NumberOfFlowUnits, 1), (Units{1, 1, 1, 1, 1}));
    EXPECT_EQ(layers.create(NumberOfFlowUnits, 0), (Units{1, 1, 1, 1, 1}));
}

TEST(FlowUnitCreation, NumberComparesUnitMeansAndNotNeighbouringLayers)
{
    // 4 and 5 make 4.5, which is 3.5 from 8 while 8 is 3 from 11.
    EXPECT_EQ(EqualLayers({4, 5, 8, 11}).create(NumberOfFlowUnits, 2), (Units{1, 1, 2, 2}));
}

TEST(FlowUnitCreation, TiesGoToTheUpperPair)
{
    EXPECT_EQ(EqualLayers({1, 2, 3}).create(NumberOfFlowUnits, 2), (Units{1, 1, 2}));
    EXPECT_EQ(EqualLayers({3, 2, 1}).create(NumberOfFlowUnits, 2), (Units{1, 1, 2}));
    EXPECT_EQ(EqualLayers({7, 7, 7, 7}).create(NumberOfFlowUnits, 2), (Units{1, 1, 1, 2}));
}

TEST(FlowUnitCreation, NumberStopsAtStratigraphicUnits)
{
    const EqualLayers layers({1, 1, 1, 1, 1}, {}, {0, 0, 1, 1, 2});
    EXPECT_EQ(layers.create(NumberOfFlowUnits, 4), (Units{1, 1, 2, 3, 4}));
    EXPECT_EQ(layers.create(NumberOfFlowUnits, 1), (Units{1, 1, 2, 2, 3}));
}

TEST(FlowUnitCreation, DeviationFromMean)
{
    // 10, 12: mean 11, both within 1. With 13: mean 35/3, 10 is 1.67 off. 13, 15: mean 14. With 15 again: 14.33, 1.33 off.
    const EqualLayers layers({10, 12, 13, 15, 15});
    EXPECT_EQ(layers.create(DeviationFromMean, 1), (Units{1, 1, 2, 2, 3}));
    EXPECT_EQ(layers.create(DeviationFromMean, 0.999), (Units{1, 2, 2, 3, 3}));
    EXPECT_EQ(layers.create(DeviationFromMean, 0), (Units{1, 2, 3, 4, 4}));
    EXPECT_EQ(layers.create(DeviationFromMean, -1), (Units{1, 2, 3, 4, 5}));
    EXPECT_EQ(layers.create(DeviationFromMean, 3), (Units{1, 1, 1, 1, 1}));
}

TEST(FlowUnitCreation, DeviationInPercentOfTheMagnitude)
{
    // 90 and 110 lie 10 % off 100; 90, 110, 124: mean 108, 90 is 16.7 % off.
    EXPECT_EQ(EqualLayers({90, 110, 124}).create(DeviationFromMeanPercent, 10), (Units{1, 1, 2}));
    EXPECT_EQ(EqualLayers({-90, -110, -124}).create(DeviationFromMeanPercent, 10), (Units{1, 1, 2}));
    EXPECT_EQ(EqualLayers({90, 110, 124}).create(DeviationFromMeanPercent, 9.99), (Units{1, 2, 2}));
    EXPECT_EQ(EqualLayers({90, 110, 124}).create(DeviationFromMeanPercent, 17), (Units{1, 1, 1}));
    EXPECT_EQ(EqualLayers({-1, 1}).create(DeviationFromMeanPercent, 100), (Units{1, 2})) << "mean 0";
}

TEST(FlowUnitCreation, MaximumDifferenceInPercentOfTheMagnitude)
{
    // 90 to 110 differ by 20 % of 100: less than 20.1 %, not less than 20 %.
    EXPECT_EQ(EqualLayers({90, 110, 100}).create(MaximumDifferencePercent, 20), (Units{1, 2, 2}));
    EXPECT_EQ(EqualLayers({90, 110, 100}).create(MaximumDifferencePercent, 20.1), (Units{1, 1, 1}));
    EXPECT_EQ(EqualLayers({-90, -110, -100}).create(MaximumDifferencePercent, 20.1), (Units{1, 1, 1}));
    EXPECT_EQ(EqualLayers({5, 5}).create(MaximumDifferencePercent, 0), (Units{1, 2})) << "0 is not less than 0";
}

TEST(FlowUnitCreation, Thresholds)
{
    const EqualLayers layers({1, 2, 5, 2, 1, 7, 8, 5});
    EXPECT_EQ(layers.create(MaximumThreshold, 5), (Units{1, 1, 2, 3, 3, 4, 5, 6}));
    EXPECT_EQ(layers.create(MinimumThreshold, 5), (Units{1, 2, 3, 4, 5, 6, 6, 7}));
    EXPECT_EQ(layers.create(MaximumThreshold, 100), (Units{1, 1, 1, 1, 1, 1, 1, 1}));
    EXPECT_EQ(layers.create(MinimumThreshold, 100), (Units{1, 2, 3, 4, 5, 6, 7, 8}));
}

TEST(FlowUnitCreation, StartsFromTheCurrentUnits)
{
    // A unit whose own layers are too far apart stays and takes in nothing.
    const EqualLayers layers({1, 9, 5, 5, 20}, {1, 1, 2, 3, 4});
    EXPECT_EQ(layers.create(DeviationFromMean, 1), (Units{1, 1, 2, 2, 3}));
    EXPECT_EQ(layers.create(MaximumThreshold, 6), (Units{1, 1, 2, 2, 3}));
    // Means 5, 5, 5, 20: the upper of two equal pairs.
    EXPECT_EQ(layers.create(NumberOfFlowUnits, 3), (Units{1, 1, 1, 2, 3}));
    // A unit across a stratigraphic unit is cut.
    EXPECT_EQ(EqualLayers({1, 1, 1}, {1, 1, 1}, {0, 1, 1}).create(DeviationFromMean, 1), (Units{1, 2, 2}));
}

TEST(FlowUnitCreation, LayersWithoutAMeanJoinTheUnitAbove)
{
    for (const auto method : {DeviationFromMean, DeviationFromMeanPercent, MaximumDifferencePercent, MaximumThreshold})
        EXPECT_EQ(EqualLayers({1, nothing, 5, nothing, nothing, 9}).create(method, -1), (Units{1, 1, 2, 2, 2, 3}));
    EXPECT_EQ(EqualLayers({1, nothing, 5, 9}).create(NumberOfFlowUnits, 4), (Units{1, 1, 2, 3}));
    EXPECT_EQ(EqualLayers({1, nothing, 5, 9}).create(NumberOfFlowUnits, 2), (Units{1, 1, 1, 2}));
    // Nothing lies above within the stratigraphic unit: the one below.
    EXPECT_EQ(EqualLayers({nothing, 1, 5}).create(DeviationFromMean, 0), (Units{1, 1, 2}));
    EXPECT_EQ(EqualLayers({1, nothing, 1}, {}, {0, 1, 1}).create(DeviationFromMean, 0), (Units{1, 2, 2}));
    EXPECT_EQ(EqualLayers({1, nothing, nothing}, {}, {0, 1, 1}).create(NumberOfFlowUnits, 1), (Units{1, 2, 2}));
    // They take no part in comparisons.
    EXPECT_EQ(EqualLayers({1, nothing, 2}).create(MaximumThreshold, 3), (Units{1, 1, 1}));
    EXPECT_EQ(EqualLayers({4, nothing, 5}).create(MinimumThreshold, 3), (Units{1, 1, 1}));
    EXPECT_EQ(EqualLayers({}).create(NumberOfFlowUnits, 1), Units{});
}

TEST(FlowUnitCreation, InvariantsOnRandomLayers)
{
    std::mt19937 random(11);
    const auto draw = [&](int below) { return static_cast<int>(random() % static_cast<unsigned>(below)); };
    for (int round = 0; round < 5000; ++round) {
        const int count = 1 + draw(40);
        std::vector<double> means;
        Units start, strata;
        for (int n = 0; n < count; ++n) {
            means.push_back(draw(8) == 0 ? nothing : draw(2) == 0 ? draw(6) - 2.0 : draw(1000) / 100.0);
            start.push_back(n == 0 ? 1 : start.back() + draw(2));
            strata.push_back(n == 0 ? 0 : strata.back() + (draw(6) == 0 ? 1 : 0));
        }
        const EqualLayers layers(means, start, strata);
        const auto method = static_cast<FlowUnitStatsManager::GuessMethod>(draw(6));
        const double value = method == NumberOfFlowUnits ? draw(count + 2) : draw(2000) / 100.0;
        const Units units = layers.create(method, value);
        ASSERT_EQ(units.size(), means.size());
        ASSERT_EQ(units[0], 1);
        int pairs = 0; // neighbours that could still be joined
        for (std::size_t n = 1; n < units.size(); ++n) {
            const int step = units[n] - units[n - 1];
            ASSERT_TRUE(step == 0 || step == 1);
            if (strata[n] != strata[n - 1]) {
                ASSERT_EQ(step, 1) << "across a stratigraphic unit";
            } else if (start[n] == start[n - 1]) {
                ASSERT_EQ(step, 0) << "a unit of the start was cut";
            } else {
                pairs += step;
            }
            if (std::isnan(means[n]) && strata[n] == strata[n - 1] && start[n] != start[n - 1]) {
                bool whole = true; // the unit of the start has no mean at all
                for (std::size_t m = n; m < units.size() && start[m] == start[n] && strata[m] == strata[n]; ++m)
                    whole = whole && std::isnan(means[m]);
                if (whole) {
                    ASSERT_EQ(step, 0) << "a unit without a mean stands alone";
                }
            }
        }
        if (method == NumberOfFlowUnits) {
            ASSERT_TRUE(units.back() <= value || pairs == 0) << "could have gone on";
        }
    }
}
