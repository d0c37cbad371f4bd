// The statistics manager on grids whose numbers are worked out by hand: definitions, regions, wrong arguments.

#include "Reference.h"

#include "lodex/volumes/model/Create.h"
#include "../support/MessageList.h"

#include <Lodex/geobase/Property.h>

#include <algorithm>
#include <limits>
#include <span>

using Kelvane::FlowUnitStatsManager;
using enum FlowUnitStatsManager::GuessMethod;

namespace {

class StatsManager : public StatisticsTest {
protected:
    /// 2 x 1 x 4 cells of volume 1, 2, 1, 2, ... with K = {1 3 | 5 7 | 0 -2 | none 9} and D = {2 0 | 1 -1 | 4 4 | 1 3}.
    StatsManager()
    {
        lodex::GridModel model = lodex::make_box({2, 1, 4}, {1, 1, 1});
        model.coord.visit_mutable([](auto pillars) {
            // The pillars of the far side twice as far away.
            for (std::size_t pillar : {2U, 5U})
                pillars[6 * pillar] = pillars[6 * pillar + 3] = 3;
        });
        lodex::PropertyData k{.name = "K"}, d{.name = "D"};
        k.values = std::vector<float>{1, 3, 5, 7, 0, -2, -999, 9};
        k.no_data = -999;
        d.values = std::vector<std::int32_t>{2, 0, 1, -1, 4, 4, 1, 3};
        model.properties = {k, d};
        model.regions.push_back({"near", {1, 0, 1, 0, 1, 0, 1, 0}, false});
        model.regions.push_back({"low end", {0, 0, 0, 0, 0, 0, 1, 1}, false});
        grid = lodex::add_grid("G", std::move(model));
    }

    bool execute(const std::vector<int>& units, const char* method = "Arithmetic", const char* region = "everywhere",
                 bool weighted = false, double power = 1, int property = 0, int denominator = -1)
    {
        return manager->execute(grid, to_list(units), property, method, region, weighted, power, denominator);
    }
    static void expect(const std::vector<float>& numbers, const std::vector<double>& expected)
    {
        reference::expect_same(numbers, expected, "");
    }

    lodex::CornerPointGrid* grid = nullptr;
    static constexpr double none = std::numeric_limits<double>::quiet_NaN();
};

} // namespace

TEST_F(StatsManager, MeansOfLayersAndUnits)
{
    ASSERT_TRUE(execute({1, 1, 2, 2}));
    expect(manager->getUnitAvrgList(), {2, 6, -1, 9});
    expect(manager->getFlowAvrgList(), {4, 7.0 / 3});
    expect(manager->getDeltas(), {-50, 50, 100 * (-1 - 7.0 / 3) / (7.0 / 3), 100 * (9 - 7.0 / 3) / (7.0 / 3)});
    // Two values a < b: positions 1/3 and 2/3 of the descending order, P50 = (a + b) / 2, P84.1 = a. One value: 0. The
    // third layer has no positive value.
    expect(manager->getStatsLayers(), {0.5, 1.0 / 6, none, 0});

    float min = 0, max = 0;
    EXPECT_TRUE(manager->getMinMax(min, max, FlowUnitStatsManager::LayerMean));
    EXPECT_EQ(min, -1);
    EXPECT_EQ(max, 9);
    EXPECT_TRUE(manager->getMinMax(min, max, FlowUnitStatsManager::FlowUnitMean));
    EXPECT_FLOAT_EQ(min, 7.0F / 3);
    EXPECT_EQ(max, 4);
    EXPECT_TRUE(manager->getMinMax(min, max, FlowUnitStatsManager::Heterogeneity));
    EXPECT_EQ(min, 0);
    EXPECT_EQ(max, 0.5);
    EXPECT_FALSE(manager->getMinMax(min, max, 4));
    EXPECT_FALSE(manager->getMinMax(min, max, -1));
}

TEST_F(StatsManager, UnitMeanIsOverCellsAndNotOverLayerMeans)
{
    ASSERT_TRUE(execute({1, 1, 1, 1}));
    expect(manager->getFlowAvrgList(), {23.0 / 7});
}

TEST_F(StatsManager, VolumeWeights)
{
    ASSERT_TRUE(execute({1, 1, 2, 3}, "Arithmetic", "everywhere", true));
    expect(manager->getUnitAvrgList(), {7.0 / 3, 19.0 / 3, -4.0 / 3, 9});
    expect(manager->getFlowAvrgList(), {26.0 / 6, -4.0 / 3, 9});
    // The median takes no weights.
    ASSERT_TRUE(execute({1, 1, 2, 3}, "Median", "everywhere", true));
    expect(manager->getUnitAvrgList(), {2, 6, -1, 9});
    expect(manager->getFlowAvrgList(), {4, -1, 9});
}

TEST_F(StatsManager, WhatAMethodCannotTakeIsLeftOut)
{
    ASSERT_TRUE(execute({1, 1, 2, 2}, "Geometric"));
    expect(manager->getUnitAvrgList(), {std::sqrt(3.0), std::sqrt(35.0), none, 9});
    expect(manager->getFlowAvrgList(), {std::pow(105.0, 0.25), 9});
    expect(manager->getDeltas(), {100 * (std::sqrt(3.0) / std::pow(105.0, 0.25) - 1),
                                  100 * (std::sqrt(35.0) / std::pow(105.0, 0.25) - 1), none, 0});
    ASSERT_TRUE(execute({1, 1, 2, 2}, "Power", "everywhere", false, 0.5));
    expect(manager->getUnitAvrgList(), {std::pow((1 + std::sqrt(3.0)) / 2, 2), std::pow((std::sqrt(5.0) + std::sqrt(7.0)) / 2, 2), 0, 9});
    ASSERT_TRUE(execute({1, 1, 2, 2}, "Power", "everywhere", false, 1));
    expect(manager->getUnitAvrgList(), {2, 6, -1, 9});
}

TEST_F(StatsManager, AUnitMeanOfZeroHasNoDifferences)
{
    grid->change([](lodex::GridModel& model) {
        model.properties[0].values = std::vector<float>{1, -1, 5, 7, 0, -2, -999, 9};
    });
    ASSERT_TRUE(execute({1, 2, 2, 2}));
    EXPECT_EQ(manager->getFlowAvrgList()[0], 0);
    EXPECT_TRUE(std::isnan(manager->getDeltas()[0]));
    EXPECT_FALSE(std::isnan(manager->getDeltas()[1]));
}

TEST_F(StatsManager, RatiosAreTakenCellByCell)
{
    ASSERT_TRUE(execute({1, 1, 2, 2}, "Arithmetic", "everywhere", false, 1, 0, 1));
    // 1/2, a zero below | 5, -7 | 0, -1/2 | no value above, 3
    expect(manager->getUnitAvrgList(), {0.5, -1, -0.25, 3});
    expect(manager->getFlowAvrgList(), {-0.5, 2.5 / 3});
}

TEST_F(StatsManager, Regions)
{
    ASSERT_TRUE(execute({1, 1, 2, 2}, "Arithmetic", "near"));
    expect(manager->getUnitAvrgList(), {1, 5, 0, none});
    expect(manager->getFlowAvrgList(), {3, 0});
    ASSERT_TRUE(execute({1, 1, 2, 2}, "Arithmetic", "low end"));
    expect(manager->getUnitAvrgList(), {none, none, none, 9});
    expect(manager->getFlowAvrgList(), {none, 9});
    for (const char* both : {"near+low end", " near + low end ", "low+end+near", "all_regions", "near+all_regions"}) {
        ASSERT_TRUE(execute({1, 1, 2, 2}, "Arithmetic", both)) << both;
        expect(manager->getUnitAvrgList(), {1, 5, 0, 9});
    }
    ASSERT_TRUE(execute({1, 1, 2, 2}, "Arithmetic", "near+everywhere"));
    expect(manager->getUnitAvrgList(), {2, 6, -1, 9});
    grid->change([](lodex::GridModel& model) { model.regions.clear(); });
    ASSERT_TRUE(execute({1, 1, 2, 2}, "Arithmetic", "all_regions"));
    expect(manager->getUnitAvrgList(), {2, 6, -1, 9});
}

TEST_F(StatsManager, InactiveCellsAreLeftOut)
{
    lodex::GridModel model = grid->model();
    model.active = {0, 1, 1, 1, 0, 0, 1, 1};
    lodex::CornerPointGrid* partly = lodex::add_grid("H", std::move(model));
    ASSERT_TRUE(manager->execute(partly, to_list({1, 2, 3, 4}), 0, "Arithmetic", "everywhere", false, 1, -1));
    expect(manager->getUnitAvrgList(), {3, 6, none, 9});
}

TEST_F(StatsManager, WrongArgumentsAreRefusedAndChangeNothing)
{
    MessageList messages;
    ASSERT_TRUE(execute({1, 1, 2, 2}));
    const auto before = manager->getDeltas();
    EXPECT_FALSE(execute({1, 1, 2}));
    EXPECT_FALSE(execute({1, 1, 2, 2, 2}));
    EXPECT_FALSE(execute({1, 1, 3, 3}));
    EXPECT_FALSE(execute({2, 2, 3, 3}));
    EXPECT_FALSE(execute({1, 2, 1, 2}));
    EXPECT_FALSE(execute({1, 1, 2, 2}, "Cubic"));
    EXPECT_FALSE(execute({1, 1, 2, 2}, ""));
    EXPECT_FALSE(execute({1, 1, 2, 2}, "Arithmetic", "nowhere"));
    EXPECT_FALSE(execute({1, 1, 2, 2}, "Arithmetic", ""));
    EXPECT_FALSE(execute({1, 1, 2, 2}, "Arithmetic", "near+nowhere"));
    EXPECT_FALSE(execute({1, 1, 2, 2}, "Power", "everywhere", false, 1.01));
    EXPECT_FALSE(execute({1, 1, 2, 2}, "Power", "everywhere", false, none));
    EXPECT_FALSE(execute({1, 1, 2, 2}, "Arithmetic", "everywhere", false, 1, 2));
    EXPECT_FALSE(execute({1, 1, 2, 2}, "Arithmetic", "everywhere", false, 1, -1));
    EXPECT_FALSE(execute({1, 1, 2, 2}, "Arithmetic", "everywhere", false, 1, 0, 2));
    EXPECT_FALSE(execute({1, 1, 2, 2}, "Arithmetic", "everywhere", false, 1, 0, -2));
    EXPECT_FALSE(manager->execute(nullptr, to_list({1, 1, 2, 2}), 0, "Arithmetic", "everywhere", false, 1, -1));
    EXPECT_EQ(manager->getDeltas(), before);
    EXPECT_EQ(messages.of(Lodex::LogLevel::Error).size(), 16U);
    EXPECT_EQ(messages.of(Lodex::LogLevel::Error)[5], "Flow unit statistics: there is no averaging method \"Cubic\"\n");
    EXPECT_EQ(messages.of(Lodex::LogLevel::Error)[7], "Flow unit statistics: there is no region \"nowhere\"\n");
}

TEST_F(StatsManager, UnitsFromTheStatisticsWorkedOutLast)
{
    Lodex::List<int> units;
    EXPECT_FALSE(manager->compute_units_from_threshold(2, NumberOfFlowUnits, units)) << "nothing worked out yet";
    ASSERT_TRUE(execute({1, 2, 3, 4}));
    // Means 2, 6, -1, 9: the closest are the upper two.
    ASSERT_TRUE(manager->compute_units_from_threshold(3, NumberOfFlowUnits, units));
    EXPECT_EQ(units, to_list({1, 1, 2, 3}));
    EXPECT_FALSE(manager->compute_units_from_threshold(none, DeviationFromMean, units));
    EXPECT_FALSE(manager->compute_units_from_threshold(1, static_cast<FlowUnitStatsManager::GuessMethod>(6), units));
    EXPECT_EQ(units, to_list({1, 1, 2, 3}));

    grid->change([](lodex::GridModel& model) { model.layers = {{"A", 1}, {"B", 3}}; });
    ASSERT_TRUE(execute({1, 2, 3, 4}));
    ASSERT_TRUE(manager->compute_units_from_threshold(2, NumberOfFlowUnits, units));
    // 6, -1, 9: 7 and 10 apart.
    ASSERT_TRUE(manager->compute_units_from_threshold(3, NumberOfFlowUnits, units));
    EXPECT_EQ(units, to_list({1, 2, 2, 3}));
    ASSERT_TRUE(manager->compute_units_from_threshold(1, NumberOfFlowUnits, units));
    EXPECT_EQ(units, to_list({1, 2, 2, 2}));
    // From coarser units.
    ASSERT_TRUE(execute({1, 2, 3, 3}));
    ASSERT_TRUE(manager->compute_units_from_threshold(100, DeviationFromMean, units));
    EXPECT_EQ(units, to_list({1, 2, 2, 2}));
    ASSERT_TRUE(manager->compute_units_from_threshold(0, DeviationFromMean, units));
    EXPECT_EQ(units, to_list({1, 2, 3, 3}));
}

TEST_F(StatsManager, GroupMeansOfMethodsThatCannotBeJoined)
{
    ASSERT_TRUE(execute({1, 2, 3, 4}, "Median"));
    Lodex::List<int> units;
    // Medians 2, 6, -1, 9; of the first two layers 4; of the first three 2, of all 3.
    ASSERT_TRUE(manager->compute_units_from_threshold(4, DeviationFromMean, units));
    EXPECT_EQ(units, to_list({1, 1, 1, 2}));
    ASSERT_TRUE(manager->compute_units_from_threshold(2, DeviationFromMean, units));
    EXPECT_EQ(units, to_list({1, 1, 2, 3}));
}

/// Numbers that change behind the grid's back show what is read again.
TEST_F(StatsManager, OnlyUnitsWhoseLayersChangedAreWorkedOutAgain)
{
    lodex::GridModel model = lodex::make_box({3, 1, 6}, {1, 1, 1});
    model.properties.push_back(lodex::constant_property(model, "ONE", 1));
    lodex::CornerPointGrid* six = lodex::add_grid("six", std::move(model));
    const auto values = std::get<std::span<const float>>(six->property_db()->find("ONE")->values());
    const auto means = [&](const std::vector<int>& units, const char* method) {
        EXPECT_TRUE(manager->execute(six, to_list(units), 0, method, "everywhere", false, 1, -1));
        return manager->getFlowAvrgList();
    };
    const auto poke = [&](float value) {
        std::fill_n(const_cast<float*>(values.data()), values.size(), value);
    };
    EXPECT_EQ(means({1, 1, 2, 2, 2, 2}, "Median"), (std::vector<float>{1, 1}));
    poke(5);
    EXPECT_EQ(means({1, 1, 2, 2, 3, 3}, "Median"), (std::vector<float>{1, 5, 5})) << "the first unit stays";
    poke(7);
    EXPECT_EQ(means({1, 1, 2, 2, 2, 2}, "Median"), (std::vector<float>{1, 1})) << "back again, and known";
    EXPECT_EQ(means({1, 1, 2, 3, 3, 3}, "Median"), (std::vector<float>{1, 1, 7})) << "one layer is its own unit";
    // What can be joined is put together from the layers; no cell is read again.
    poke(1);
    EXPECT_EQ(means({1, 1, 2, 2, 2, 2}, "Arithmetic"), (std::vector<float>{1, 1}));
    poke(5);
    EXPECT_EQ(means({1, 2, 3, 3, 3, 4}, "Arithmetic"), (std::vector<float>{1, 1, 1, 1}));
}
