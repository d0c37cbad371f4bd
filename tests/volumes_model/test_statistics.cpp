#include "random_grid.h"

#include "lodex/volumes/model/CellGeometry.h"
#include "lodex/volumes/model/Create.h"
#include "lodex/volumes/model/PropertyTools.h"
#include "lodex/volumes/model/Statistics.h"
#include "lodex/volumes/model/Summation.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using namespace lodex;
using namespace volumes_model_tests;

const float nan_value = std::numeric_limits<float>::quiet_NaN();

TEST(Summation, LosesNothing)
{
    CompensatedSum sum;
    for (const double value : {1e100, 1.0, -1e100, 1.0})
        sum.add(value);
    EXPECT_EQ(sum.value(), 2);
    std::vector<double> tenths(1000001, 0.1);
    EXPECT_NEAR(pairwise_sum(tenths), 100000.1, 1e-10);
    for (std::size_t n = 0; n < 300; ++n) {
        std::vector<double> numbers(n);
        double expected = 0;
        for (std::size_t i = 0; i < n; ++i)
            expected += numbers[i] = static_cast<double>(i * i);
        EXPECT_EQ(pairwise_sum(numbers), expected);
    }
}

TEST(Statistics, OfAPropertyByHand)
{
    GridModel box = make_box({5, 1, 1}, {1, 1, 1});
    box.active = {1, 1, 1, 1, 0};
    box.properties.push_back({"P", "", std::vector<float>{3, nan_value, -999.25F, 1, 100}, -999.25, {}, false});
    box.properties.push_back({"C", "", std::vector<std::int32_t>{2, 1, 2, -1, 7}, -1.0, {}, false});
    PropertyStatistics found = property_statistics(box, box.properties[0]);
    EXPECT_EQ(found.count, 2);
    EXPECT_EQ(found.undefined, 2);
    EXPECT_EQ(found.min, 1);
    EXPECT_EQ(found.max, 3);
    EXPECT_EQ(found.mean, 2);
    EXPECT_EQ(found.sum, 4);
    EXPECT_TRUE(found.codes.empty());
    found = property_statistics(box, box.properties[1]);
    EXPECT_TRUE(found.discrete);
    EXPECT_EQ(found.count, 3);
    EXPECT_EQ(found.codes, (std::map<std::int32_t, std::int64_t>{{1, 1}, {2, 2}}));
    EXPECT_NEAR(*found.mean, 5.0 / 3, 1e-15);
    const RegionData region{"R", {0, 1, 1, 0, 1}, false};
    found = property_statistics(box, box.properties[1], &region);
    EXPECT_EQ(found.count, 2);
    EXPECT_EQ(found.sum, 3);
    found = property_statistics(box, box.properties[0], &region);
    EXPECT_EQ(found.count, 0);
    EXPECT_FALSE(found.min || found.max || found.mean);
}

TEST(Statistics, OfAGridAgainstPlainLoops)
{
    const GridModel model = random_grid({40, 9, 7}, 12);
    const GridStatistics found = grid_statistics(model);
    const std::vector<double> volumes = cell_volumes(model);
    const auto columns = static_cast<std::size_t>(model.size[0] * model.size[1]);
    ASSERT_EQ(found.k_layers.size(), 7U);
    ASSERT_EQ(found.properties.size(), model.properties.size());
    std::int64_t active = 0;
    for (std::size_t k = 0; k < 7; ++k) {
        double volume = 0;
        std::int64_t cells = 0;
        std::vector<double> sums(model.properties.size());
        std::vector<std::int64_t> counts(model.properties.size());
        for (std::size_t cell = k * columns; cell < (k + 1) * columns; ++cell) {
            if (!model.active[cell])
                continue;
            ++cells;
            volume += volumes[cell];
            for (std::size_t p = 0; p < model.properties.size(); ++p)
                if (!model.properties[p].on_points && is_defined(model.properties[p], cell)) {
                    sums[p] += value_or_nan(model.properties[p], cell);
                    ++counts[p];
                }
        }
        active += cells;
        EXPECT_EQ(found.k_layers[k].k, static_cast<std::int64_t>(k));
        EXPECT_EQ(found.k_layers[k].active, cells);
        EXPECT_NEAR(found.k_layers[k].bulk_volume, volume, 1e-12 * volume);
        ASSERT_EQ(found.k_layers[k].means.size(), model.properties.size());
        for (std::size_t p = 0; p < model.properties.size(); ++p) {
            ASSERT_EQ(found.k_layers[k].means[p].has_value(), counts[p] > 0);
            if (counts[p]) {
                EXPECT_NEAR(*found.k_layers[k].means[p], sums[p] / static_cast<double>(counts[p]), 1e-9);
            }
        }
    }
    EXPECT_EQ(found.active, active);
    EXPECT_NEAR(found.bulk_volume, bulk_volume(model), 1e-13 * found.bulk_volume);
    EXPECT_EQ(found.total_volume, summarise_volumes(model).total_volume);
    for (std::size_t r = 0; r < model.regions.size(); ++r) {
        double volume = 0;
        std::int64_t cells = 0, flagged = 0;
        for (std::size_t cell = 0; cell < volumes.size(); ++cell) {
            flagged += model.regions[r].flags[cell];
            if (model.regions[r].flags[cell] && model.active[cell]) {
                volume += volumes[cell];
                ++cells;
            }
        }
        EXPECT_EQ(found.regions[r].name, model.regions[r].name);
        EXPECT_EQ(found.regions[r].model, model.regions[r].model);
        EXPECT_EQ(found.regions[r].cells, cells);
        EXPECT_EQ(found.regions[r].flagged, flagged);
        EXPECT_NEAR(found.regions[r].bulk_volume, volume, 1e-12 * volume);
    }
    // Values on points are counted over all nodes.
    EXPECT_EQ(found.properties[3].count, 41 * 10 * 8);
    EXPECT_EQ(found.properties[3].max, 41 * 10 * 8 - 1);
}

TEST(Statistics, WhollyInactiveLayerHasNoMeans)
{
    GridModel box = make_box({2, 1, 2}, {1, 1, 1});
    box.properties.push_back(constant_property(box, "P", 4));
    box.active = {1, 1, 0, 0};
    const GridStatistics found = grid_statistics(box);
    EXPECT_EQ(found.k_layers[0].means[0], 4);
    EXPECT_EQ(found.k_layers[1].means[0], std::nullopt);
    EXPECT_EQ(found.k_layers[1].active, 0);
    EXPECT_EQ(found.k_layers[1].bulk_volume, 0);
}

TEST(Statistics, SameOnOneThreadAndTwo)
{
    const GridModel model = random_grid({300, 50, 11}, 12);
    const GridStatistics one = on_threads(1, [&] { return grid_statistics(model); });
    const GridStatistics two = on_threads(2, [&] { return grid_statistics(model); });
    EXPECT_EQ(one.bulk_volume, two.bulk_volume);
    for (std::size_t p = 0; p < one.properties.size(); ++p) {
        EXPECT_EQ(one.properties[p].sum, two.properties[p].sum);
        EXPECT_EQ(one.properties[p].mean, property_statistics(model, model.properties[p]).mean);
    }
    for (std::size_t r = 0; r < one.regions.size(); ++r)
        EXPECT_EQ(one.regions[r].bulk_volume, two.regions[r].bulk_volume);
}

TEST(Statistics, StopsAtEachStep)
{
    const GridModel model = random_grid({30, 20, 10}, 12);
    EXPECT_GE(cancel_at_each_step([&](const ProgressCheck& progress) { (void)grid_statistics(model, progress); }), 6);
}

TEST(PropertyTools, DefinedIsFiniteAndNotTheNoDataValue)
{
    PropertyData property{"P", "", std::vector<float>{1, nan_value, 0.1F, std::numeric_limits<float>::infinity()},
                          0.1, {}, false};
    EXPECT_TRUE(is_defined(property, 0));
    EXPECT_FALSE(is_defined(property, 1));
    EXPECT_FALSE(is_defined(property, 2)) << "compared in the storage type";
    EXPECT_FALSE(is_defined(property, 3));
    EXPECT_EQ(value_or_nan(property, 0), 1);
    EXPECT_TRUE(std::isnan(value_or_nan(property, 2)));
    EXPECT_EQ(undefined_value(property), 0.1);
    property.no_data.reset();
    EXPECT_TRUE(std::isnan(undefined_value(property)));
}

TEST(PropertyTools, DiscreteUndefinedValueIsNoCode)
{
    PropertyData property{"C", "", std::vector<std::int32_t>{-999, 3}, {}, {{-9999, "named"}}, false};
    EXPECT_EQ(undefined_value(property), -99999);
    EXPECT_EQ(property.no_data, -99999);
    property.no_data = 1e30;
    EXPECT_EQ(undefined_value(property), -99999) << "1e30 does not fit";
    property.no_data = 3;
    EXPECT_EQ(undefined_value(property), 3);
}

TEST(PropertyTools, FilledWithOneValue)
{
    const GridModel box = make_box({2, 3, 4}, {1, 1, 1});
    const PropertyData property = constant_property(box, "P", 0.25);
    EXPECT_EQ(std::get<std::vector<float>>(property.values), std::vector<float>(24, 0.25F));
}

TEST(PropertyTools, LognormalHasTheWantedMoments)
{
    const GridModel box = make_box({100, 100, 40}, {1, 1, 1});
    const PropertyData property = lognormal_property(box, "K", 150, 1.2, 42);
    const auto& values = std::get<std::vector<float>>(property.values);
    double sum = 0, logs = 0, squares = 0;
    for (const float value : values) {
        ASSERT_GT(value, 0);
        sum += static_cast<double>(value);
        logs += std::log(static_cast<double>(value));
        squares += std::log(static_cast<double>(value)) * std::log(static_cast<double>(value));
    }
    const auto n = static_cast<double>(values.size());
    const double mean_log = logs / n;
    // Four standard errors each: sigma / sqrt(n) for the mean of logs, and of the values mean * sqrt(e^(sigma^2) - 1).
    EXPECT_NEAR(mean_log, std::log(150) - 0.72, 4 * 1.2 / std::sqrt(n));
    EXPECT_NEAR(std::sqrt(squares / n - mean_log * mean_log), 1.2, 4 * 1.2 / std::sqrt(2 * n));
    EXPECT_NEAR(sum / n, 150, 4 * 150 * std::sqrt(std::exp(1.44) - 1) / std::sqrt(n));
    EXPECT_EQ(property.values, lognormal_property(box, "K", 150, 1.2, 42).values);
    EXPECT_NE(property.values, lognormal_property(box, "K", 150, 1.2, 43).values);
    const PropertyData constant = lognormal_property(box, "K", 150, 0, 42);
    EXPECT_EQ(std::get<std::vector<float>>(constant.values), std::vector<float>(values.size(), 150));
    EXPECT_NE(error_of([&] { (void)lognormal_property(box, "K", 0, 1, 1); }), "");
    EXPECT_NE(error_of([&] { (void)lognormal_property(box, "K", 1, -1, 1); }), "");
}

TEST(PropertyTools, RegionHoldsBothEndsOfTheRange)
{
    GridModel box = make_box({6, 1, 1}, {1, 1, 1});
    box.properties.push_back({"P", "", std::vector<float>{1, 2, 3, nan_value, -5, 2.5F}, -5.0, {}, false});
    using Flags = std::vector<std::uint8_t>;
    EXPECT_EQ(region_from_range(box, "R", "P", 2, 3).flags, (Flags{0, 1, 1, 0, 0, 1}));
    EXPECT_EQ(region_from_range(box, "R", "P", {}, 2).flags, (Flags{1, 1, 0, 0, 0, 0}));
    EXPECT_EQ(region_from_range(box, "R", "P", 3, {}).flags, (Flags{0, 0, 1, 0, 0, 0}));
    EXPECT_EQ(region_from_range(box, "R", "P", {}, {}).flags, (Flags{1, 1, 1, 0, 0, 1}));
    EXPECT_NE(error_of([&] { (void)region_from_range(box, "R", "P", 3, 2); }), "");
    EXPECT_NE(error_of([&] { (void)region_from_range(box, "R", "Q", 1, 2); }), "");
}

} // namespace
