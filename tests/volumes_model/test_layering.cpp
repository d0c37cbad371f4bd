#include "random_grid.h"

#include "lodex/volumes/model/Create.h"
#include "lodex/volumes/model/Layering.h"

#include <gtest/gtest.h>

namespace {

using namespace lodex;
using volumes_model_tests::error_of;

// One column of K layers 2 thick with a property ZONE.
GridModel zoned(std::vector<std::int32_t> zones, const std::string& name = "ZONE")
{
    GridModel box = make_box({1, 1, static_cast<std::int64_t>(zones.size())}, {10, 10, 2});
    box.properties.push_back({name, "", std::move(zones), {}, {{2, "Lower"}}, false});
    return box;
}

std::string text_of(const std::vector<LayerData>& layers)
{
    std::string text;
    for (const LayerData& layer : layers)
        text += layer.unit + ' ' + std::to_string(layer.nb_k_cells) + "; ";
    return text;
}

TEST(Layering, IndexOfBothEndsOfEveryLayer)
{
    const std::vector<LayerData> layers{{"a", 2, 1, {}}, {"b", 1, 1, {}}, {"c", 3, 1, {}}};
    const std::int64_t expected[] = {0, 0, 1, 2, 2, 2};
    for (std::int64_t k = 0; k < 6; ++k)
        EXPECT_EQ(layer_index(layers, k), expected[k]);
    EXPECT_EQ(layer_index(layers, -1), -1);
    EXPECT_EQ(layer_index(layers, 6), -1);
    EXPECT_EQ(layer_index({}, 0), -1);
    EXPECT_EQ(layer_starts(layers), (std::vector<std::int64_t>{0, 2, 3, 6}));
}

TEST(Layering, OneLayerPerRunOfZone)
{
    GridModel box = zoned({1, 1, 2, 3, 3, 3});
    fill_layering_info(box);
    EXPECT_EQ(text_of(box.layers), "ZONE_1 2; Lower 1; ZONE_3 3; ");
    EXPECT_EQ(box.layers[0].cell_thickness, 2);
    EXPECT_EQ(box.layers[0].style, Lodex::LayerInfo::Proportional);
    EXPECT_EQ(error_of([&] { fill_layering_info(box); }), "the grid has layers already");
    box = zoned({2, 2, 1, 2});
    fill_layering_info(box);
    EXPECT_EQ(text_of(box.layers), "Lower 2; ZONE_1 1; Lower_2 1; ");
}

TEST(Layering, OneLayerOfAllWithoutAUsableZone)
{
    GridModel box = zoned({1, 2}, "FACIES");
    fill_layering_info(box, 0.5);
    EXPECT_EQ(text_of(box.layers), "unit_1 2; ");
    EXPECT_EQ(box.layers[0].cell_thickness, 4) << "in vertical units half as long as those of the depths";

    GridModel varying = make_box({2, 1, 2}, {1, 1, 3});
    varying.properties.push_back({"ZONE", "", std::vector<std::int32_t>{1, 1, 1, 2}, {}, {}, false});
    EXPECT_EQ(error_of([&] { (void)layers_from_property(varying, "ZONE"); }),
              "property \"ZONE\" is not constant on K layer 1");
    fill_layering_info(varying);
    EXPECT_EQ(text_of(varying.layers), "unit_1 2; ");
    // An inactive or undefined cell has no say.
    varying.layers.clear();
    varying.active[3] = 0;
    fill_layering_info(varying);
    EXPECT_EQ(text_of(varying.layers), "ZONE_1 2; ");
    varying.layers.clear();
    varying.active[3] = 1;
    varying.properties[0].no_data = 2;
    fill_layering_info(varying);
    EXPECT_EQ(text_of(varying.layers), "ZONE_1 2; ");

    GridModel continuous = make_box({1, 1, 2}, {1, 1, 1});
    continuous.properties.push_back({"ZONE", "", std::vector<float>{1, 2}, {}, {}, false});
    fill_layering_info(continuous);
    EXPECT_EQ(text_of(continuous.layers), "unit_1 2; ");
}

TEST(Layering, WhollyInactiveKLayersJoinTheRunAbove)
{
    GridModel box = zoned({9, 1, 7, 2, 2, 8});
    box.active = {0, 1, 0, 1, 1, 0};
    fill_layering_info(box);
    EXPECT_EQ(text_of(box.layers), "ZONE_1 3; Lower 3; ");
    box.layers.clear();
    box.active.assign(6, 0);
    fill_layering_info(box);
    EXPECT_EQ(text_of(box.layers), "unit_1 6; ");
    EXPECT_EQ(box.layers[0].cell_thickness, 0);
}

TEST(Layering, ThicknessIsTheMeanHeightOfTheActiveCells)
{
    GridModel box = make_box({2, 1, 1}, {10, 10, 2});
    box.zcorn.visit_mutable([](auto depths) { depths[14] = depths[15] = 10; });
    // Column 0 is 2 high, column 1 has two edges of 2 and two of 10.
    EXPECT_EQ(mean_cell_height(box, {0, 0}), 4);
    box.active[0] = 0;
    EXPECT_EQ(mean_cell_height(box, {0, 0}), 6);
}

TEST(Layering, UnitsAndSizes)
{
    const GridModel box = make_box({1, 1, 5}, {1, 1, 2});
    const std::vector<std::string> units{"A", "B"};
    const auto layers = [&](std::vector<std::int64_t> sizes) {
        return layers_from_sizes(box, units, sizes);
    };
    EXPECT_EQ(text_of(layers({2, 3})), "A 2; B 3; ");
    EXPECT_EQ(layers({2, 3})[1].cell_thickness, 2);
    EXPECT_EQ(error_of([&] { (void)layers({2, 2}); }), "the units have 4 K cells, the grid has 5");
    EXPECT_EQ(error_of([&] { (void)layers({2, 4}); }), "the units have more than the grid's 5 K cells");
    EXPECT_EQ(error_of([&] { (void)layers({5, 0}); }), "unit \"B\" has 0 K cells, it needs one at least");
    EXPECT_EQ(error_of([&] { (void)layers({5}); }), "2 units do not fit 1 sizes");
}

TEST(Layering, RegionsOfUnits)
{
    GridModel box = make_box({2, 1, 3}, {1, 1, 1});
    box.layers = {{"A", 1, 1, {}}, {"B", 1, 1, {}}, {"A", 1, 1, {}}};
    const std::vector<RegionData> regions = unit_regions(box);
    ASSERT_EQ(regions.size(), 2U);
    EXPECT_EQ(regions[0].name, "A");
    EXPECT_TRUE(regions[0].model);
    EXPECT_EQ(regions[0].flags, (std::vector<std::uint8_t>{1, 1, 0, 0, 1, 1}));
    EXPECT_EQ(regions[1].flags, (std::vector<std::uint8_t>{0, 0, 1, 1, 0, 0}));
}

} // namespace
