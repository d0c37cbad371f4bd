#include <lodex/gviews/CellPalette.h>
#include <lodex/volumes/CornerPointGrid.h>
#include <lodex/volumes/model/Create.h>

#include <Lodex/geobase/GeobaseLib.h>
#include <Lodex/geobase/Property.h>
#include <Lodex/geobase/Style.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <set>

using namespace lodex;

namespace {

constexpr QRgb viridis_low = 0xff440154, viridis_high = 0xfffde725, undefined = 0xff808080;

QRgb rgb(const CellPalette& palette, std::size_t cell)
{
    const auto [red, green, blue] = palette.of(cell);
    return qRgb(red, green, blue);
}

class CellPaletteTest : public testing::Test {
protected:
    ~CellPaletteTest() override { Lodex::GeobaseLib::instance()->clear(); }
    static CornerPointGrid* add_box(const std::string& name, const GridSize& size)
    {
        return add_grid(name, make_box(size, {100, 50, 10}, {1000, 2000, 1500}));
    }
    template <class Value> void add(const std::string& name, std::vector<Value> values)
    {
        grid->change([&](GridModel& model) {
            PropertyData property;
            property.name = name;
            property.values = std::move(values);
            model.properties.push_back(std::move(property));
        });
    }
    [[nodiscard]] CellPalette colours(const std::string& property) const
    {
        return {*grid, {ColourBy::Kind::Property, property}};
    }

    CornerPointGrid* grid = add_box("Box", {4, 1, 1});
};

TEST_F(CellPaletteTest, ScaleRunsFromLeastToGreatestActiveValue)
{
    add<float>("P", {1, 2, 4, 100});
    CornerPointGrid* other = add_grid("Inactive", [&] {
        GridModel model = grid->model();
        model.active[3] = 0;
        return model;
    }());
    const CellPalette shown(*other, {ColourBy::Kind::Property, "P"});
    ASSERT_TRUE(shown.is_scale());
    EXPECT_EQ(rgb(shown, 0), viridis_low);
    EXPECT_EQ(rgb(shown, 2), viridis_high);
    EXPECT_EQ(rgb(shown, 3), viridis_high) << "beyond the clip";
    EXPECT_EQ(QColor(rgb(shown, 1)), shown.scale_colour(341.0 / 1023)) << "(2 - 1) / (4 - 1) in 1023 steps";
    EXPECT_EQ(shown.title(), "P");
    EXPECT_EQ(shown.value_text(1), "2");
    ASSERT_EQ(shown.ticks().size(), 4u) << "1, 2, 3, 4";
    EXPECT_EQ(shown.ticks()[1].text, "2");
    EXPECT_DOUBLE_EQ(shown.ticks()[1].place, 1.0 / 3);
}

TEST_F(CellPaletteTest, WideRangesAreLogarithmic)
{
    add<double>("PERM", {0.01, 0.1, 10, 1000});
    const CellPalette shown = colours("PERM");
    EXPECT_EQ(rgb(shown, 0), viridis_low);
    EXPECT_EQ(rgb(shown, 3), viridis_high);
    EXPECT_EQ(QColor(rgb(shown, 1)), shown.scale_colour(205.0 / 1023)) << "one of five decades: 0.2 * 1023 = 204.6";
    QStringList texts;
    for (const auto& tick : shown.ticks())
        texts.append(tick.text);
    EXPECT_EQ(texts, QStringList({"0.01", "0.1", "1", "10", "100", "1000"}));
    EXPECT_NEAR(shown.ticks()[2].place, 0.4, 1e-12);

    add<double>("ZERO", {0, 0.1, 10, 1000});
    EXPECT_EQ(colours("ZERO").ticks().front().text, "0") << "no logarithm of 0: linear";
}

TEST_F(CellPaletteTest, StyleOfThePropertyRules)
{
    add<float>("P", {1, 2, 3, 4});
    Lodex::Style* style = grid->property_db()->find("P")->style();
    style->set_attribute("colormap", "grey");
    style->set_attribute("low_clip", "2");
    style->set_attribute("high_clip", "3");
    const CellPalette shown = colours("P");
    EXPECT_EQ(rgb(shown, 0), 0xff101010);
    EXPECT_EQ(rgb(shown, 1), 0xff101010);
    EXPECT_EQ(rgb(shown, 2), 0xfff4f4f4);
    EXPECT_EQ(rgb(shown, 3), 0xfff4f4f4);
}

TEST_F(CellPaletteTest, UndefinedValuesAreGrey)
{
    add<float>("P", {1, std::numeric_limits<float>::quiet_NaN(), -99.9f, 3});
    grid->change([](GridModel& model) { model.properties[0].no_data = -99.9; });
    const CellPalette shown = colours("P");
    EXPECT_EQ(rgb(shown, 1), undefined);
    EXPECT_EQ(rgb(shown, 2), undefined) << "the no-data value, in 32 bits as it is stored";
    EXPECT_EQ(shown.value_text(2), "undefined");
    EXPECT_EQ(rgb(shown, 0), viridis_low);
    EXPECT_EQ(rgb(shown, 3), viridis_high);
}

TEST_F(CellPaletteTest, OneValueAndNoValue)
{
    add<float>("ONE", {7, 7, 7, 7});
    const CellPalette one = colours("ONE");
    EXPECT_EQ(QColor(rgb(one, 0)), one.scale_colour(512.0 / 1023));
    ASSERT_EQ(one.ticks().size(), 1u);
    EXPECT_EQ(one.ticks()[0].text, "7");

    add<float>("NONE", std::vector<float>(4, std::numeric_limits<float>::quiet_NaN()));
    EXPECT_EQ(rgb(colours("NONE"), 0), undefined);
}

TEST_F(CellPaletteTest, CodesHaveNamesAndDistinctColours)
{
    add<std::int32_t>("FACIES", {3, 0, 3, -1});
    grid->change([](GridModel& model) {
        model.properties[0].code_names = {{0, "shale"}, {3, "sand"}, {9, "coal"}};
        model.properties[0].no_data = -1;
    });
    const CellPalette shown = colours("FACIES");
    EXPECT_FALSE(shown.is_scale());
    ASSERT_EQ(shown.entries().size(), 2u) << "codes that are there";
    EXPECT_EQ(shown.entries()[0].text, "shale");
    EXPECT_EQ(shown.entries()[1].text, "sand");
    EXPECT_EQ(rgb(shown, 0), shown.entries()[1].colour.rgb());
    EXPECT_EQ(rgb(shown, 0), rgb(shown, 2));
    EXPECT_EQ(rgb(shown, 1), shown.entries()[0].colour.rgb());
    EXPECT_NE(rgb(shown, 0), rgb(shown, 1));
    EXPECT_EQ(rgb(shown, 3), undefined);
    EXPECT_EQ(shown.value_text(2), "sand");
}

TEST_F(CellPaletteTest, ManyCodesKeepDistinctColours)
{
    CornerPointGrid* wide = add_box("Wide", {40, 1, 1});
    wide->change([](GridModel& model) {
        std::vector<std::int32_t> codes(40);
        for (std::size_t i = 0; i < 40; ++i)
            codes[i] = static_cast<std::int32_t>(i);
        model.properties.push_back({});
        model.properties[0].name = "CODE";
        model.properties[0].values = std::move(codes);
    });
    const CellPalette shown(*wide, {ColourBy::Kind::Property, "CODE"});
    std::set<QRgb> colours;
    for (std::size_t cell = 0; cell < 40; ++cell)
        colours.insert(rgb(shown, cell));
    EXPECT_EQ(colours.size(), 40u);
    EXPECT_EQ(shown.value_text(17), "17") << "a code without a name";
}

TEST_F(CellPaletteTest, UnitsAreBandsOfLayers)
{
    CornerPointGrid* layered = add_box("Layered", {2, 1, 5});
    layered->change([](GridModel& model) {
        model.layers = {{.unit = "Upper", .nb_k_cells = 1}, {.unit = "Lower", .nb_k_cells = 3}};
    });
    const CellPalette shown(*layered, {ColourBy::Kind::Unit, {}});
    ASSERT_EQ(shown.entries().size(), 2u);
    EXPECT_EQ(rgb(shown, 0), shown.entries()[0].colour.rgb());
    EXPECT_EQ(rgb(shown, 1), rgb(shown, 0));
    EXPECT_EQ(rgb(shown, 2), shown.entries()[1].colour.rgb()) << "first cell of the second layer";
    EXPECT_EQ(rgb(shown, 7), rgb(shown, 2)) << "last cell of the fourth layer";
    EXPECT_EQ(rgb(shown, 8), undefined) << "no unit holds the fifth layer";
    EXPECT_EQ(shown.value_text(0), "Upper");
    EXPECT_EQ(shown.value_text(8), "");
}

TEST_F(CellPaletteTest, WhatIsNotThereColoursAllAlike)
{
    grid->change([](GridModel& model) {
        PropertyData property;
        property.name = "ON_POINTS";
        property.values = std::vector<float>(20, 1.0f);
        property.on_points = true;
        model.properties.push_back(std::move(property));
    });
    for (const CellPalette& shown : {CellPalette(), colours("MISSING"), colours("ON_POINTS"),
                                     CellPalette(*grid, {ColourBy::Kind::Unit, {}}), CellPalette(*grid, {})}) {
        EXPECT_EQ(rgb(shown, 0), rgb(shown, 3));
        EXPECT_TRUE(shown.title().isEmpty());
        EXPECT_TRUE(shown.value_text(0).isEmpty());
        EXPECT_TRUE(shown.entries().empty());
        EXPECT_FALSE(shown.is_scale());
    }
}

TEST_F(CellPaletteTest, UnitOfThePropertyStandsInTheTitle)
{
    add<float>("PERMX", {1, 2, 3, 4});
    grid->change([](GridModel& model) { model.properties[0].unit = "mD"; });
    EXPECT_EQ(colours("PERMX").title(), "PERMX [mD]");
}

TEST(RoundTicks, AreRoundAndInside)
{
    EXPECT_EQ(round_ticks(0, 10, 5), (std::vector<double>{0, 2, 4, 6, 8, 10}));
    EXPECT_EQ(round_ticks(1925, 2260, 7), (std::vector<double>{1950, 2000, 2050, 2100, 2150, 2200, 2250}));
    EXPECT_EQ(round_ticks(-3, 3, 3), (std::vector<double>{-2, 0, 2}));
    const auto tenths = round_ticks(0.1, 0.3, 2);
    ASSERT_EQ(tenths.size(), 3u) << "both ends count although 3 * 0.1 is above 0.3";
    EXPECT_DOUBLE_EQ(tenths[2], 0.3);
    EXPECT_TRUE(round_ticks(5, 5, 5).empty());
    EXPECT_TRUE(round_ticks(6, 5, 5).empty());
    EXPECT_TRUE(round_ticks(0, std::numeric_limits<double>::infinity(), 5).empty());
    EXPECT_TRUE(round_ticks(std::nan(""), 1, 5).empty());
}

} // namespace
