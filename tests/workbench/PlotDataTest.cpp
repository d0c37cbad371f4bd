#include "WorkbenchTest.h"

#include "apps/workbench/plots/DataTable.h"
#include "apps/workbench/plots/PlotData.h"
#include "apps/workbench/plots/PlotWidget.h"

#include <QSet>

#include <cmath>
#include <limits>

using namespace lodex;

namespace {

/// A box of 2 by 1 by 3 cells; the lower layers are thicker, so that volumes are 1000, 2000 and 3000.
class PlotDataTest : public WorkbenchTest {
protected:
    PlotDataTest()
    {
        GridModel model = make_box({2, 1, 3}, {10, 10, 10});
        const double depths[] = {0, 10, 10, 30, 30, 60}; // top and base of each layer
        std::vector<double> corners(48);
        for (std::size_t n = 0; n < corners.size(); ++n)
            corners[n] = depths[n / 8];
        model.zcorn = std::move(corners);
        model.active[5] = 0;
        grid = add_grid("Box", std::move(model));
    }
    const PropertyData& add(const std::string& name, std::vector<double> values)
    {
        grid->change(
            [&](GridModel& model) { model.properties.push_back({.name = name, .values = std::move(values)}); });
        return *grid->model().find_property(name);
    }

    CornerPointGrid* grid;
    const double none = std::numeric_limits<double>::quiet_NaN();
};

TEST_F(PlotDataTest, HistogramCountsActiveCells)
{
    const PropertyData& p = add("P", {0, 1, 2, 4, none, 99}); // the last one is inactive
    const Histogram bars = histogram({.grid = grid}, p, 4, false);
    EXPECT_FALSE(bars.discrete);
    EXPECT_EQ(bars.edges, (std::vector<double>{0, 1, 2, 3, 4}));
    EXPECT_EQ(bars.heights, (std::vector<double>{1, 1, 1, 1})) << "the greatest value belongs to the last bar";
    EXPECT_EQ(bars.cumulative, (std::vector<double>{0.25, 0.5, 0.75, 1}));
    EXPECT_EQ(bars.values, 4);
    EXPECT_EQ(bars.left_out, 1);
}

TEST_F(PlotDataTest, HistogramByVolume)
{
    const PropertyData& p = add("P", {0, 0, 0, 1, 1, 1});
    const Histogram bars = histogram({.grid = grid, .by_volume = true}, p, 2, false);
    ASSERT_EQ(bars.heights.size(), 2u);
    EXPECT_NEAR(bars.heights[0], 1000 + 1000 + 2000, 1e-6);
    EXPECT_NEAR(bars.heights[1], 2000 + 3000, 1e-6);
    EXPECT_NEAR(bars.cumulative[0], 4.0 / 9, 1e-12);
}

TEST_F(PlotDataTest, LogarithmicBarsLeaveOutWhatHasNoLogarithm)
{
    const PropertyData& p = add("P", {1, 10, 100, 0, -5, 7});
    const Histogram bars = histogram({.grid = grid}, p, 2, true);
    ASSERT_EQ(bars.edges.size(), 3u);
    EXPECT_NEAR(bars.edges[0], 1, 1e-12);
    EXPECT_NEAR(bars.edges[1], 10, 1e-12);
    EXPECT_NEAR(bars.edges[2], 100, 1e-10);
    EXPECT_EQ(bars.heights, (std::vector<double>{1, 2}));
    EXPECT_EQ(bars.left_out, 2);
    EXPECT_TRUE(bars.logarithmic);
}

TEST_F(PlotDataTest, OneValueMakesOneBar)
{
    const PropertyData& p = add("P", {3, 3, 3, 3, 3, 3});
    const Histogram bars = histogram({.grid = grid}, p, 10, false);
    EXPECT_EQ(bars.heights, (std::vector<double>{5}));
    EXPECT_LT(bars.edges[0], 3);
    EXPECT_GT(bars.edges[1], 3);
    const PropertyData& nothing = add("N", {none, none, none, none, none, none});
    EXPECT_EQ(histogram({.grid = grid}, nothing, 10, false).values, 0);
}

TEST_F(PlotDataTest, CodesHaveTheirNames)
{
    grid->change([](GridModel& model) {
        model.properties.push_back(
            {.name = "FACIES", .values = std::vector<std::int32_t>{7, 2, 7, 7, 2, 2}, .code_names = {{7, "channel"}}});
    });
    const Histogram bars = histogram({.grid = grid}, *grid->model().find_property("FACIES"), 50, true);
    EXPECT_TRUE(bars.discrete);
    EXPECT_EQ(bars.labels, (std::vector<std::string>{"2", "channel"}));
    EXPECT_EQ(bars.heights, (std::vector<double>{2, 3}));
    EXPECT_EQ(bars.edges, (std::vector<double>{-0.5, 0.5, 1.5}));
}

TEST_F(PlotDataTest, RegionsNarrowEverything)
{
    const PropertyData& p = add("P", {0, 1, 2, 3, 4, 5});
    ASSERT_TRUE(run("lodex on SGrid Box define_region R property P min 1 max 2"));
    const PropertyData& again = *grid->model().find_property("P");
    EXPECT_EQ(histogram({.grid = grid, .region = "R"}, again, 1, false).values, 2);
    const Profile profile = k_profile({.grid = grid, .region = "R"}, again);
    EXPECT_EQ(profile.means[0], 1);
    EXPECT_EQ(profile.means[1], 2);
    EXPECT_TRUE(std::isnan(profile.means[2]));
    EXPECT_EQ(cross_pairs({.grid = grid, .region = "R"}, again, again, 100).pairs, 2);
    static_cast<void>(p);
}

TEST_F(PlotDataTest, ProfilesAreMeansPerLayer)
{
    const PropertyData& p = add("P", {1, 3, 10, 20, 7, 1000});
    const Profile profile = k_profile({.grid = grid}, p);
    EXPECT_EQ(profile.name, "P");
    EXPECT_EQ(profile.means, (std::vector<double>{2, 15, 7}));
}

TEST_F(PlotDataTest, PairsAndTheirCorrelation)
{
    add("X", {1, 2, 3, 4, none, 9});
    add("Y", {3, 5, 7, 9, 11, 0});
    add("C", {1, 1, 1, 1, 1, 1});
    const GridModel& model = grid->model();
    const auto pairs = [&](const char* x, const char* y, std::size_t most = 100) {
        return cross_pairs({.grid = grid}, *model.find_property(x), *model.find_property(y), most);
    };
    const CrossPairs all = pairs("X", "Y");
    EXPECT_EQ(all.x, (std::vector<double>{1, 2, 3, 4}));
    EXPECT_EQ(all.y, (std::vector<double>{3, 5, 7, 9}));
    EXPECT_NEAR(all.correlation, 1, 1e-12);
    EXPECT_TRUE(std::isnan(pairs("X", "C").correlation));
    const CrossPairs few = pairs("X", "Y", 2);
    EXPECT_EQ(few.x, (std::vector<double>{1, 3})) << "spread evenly";
    EXPECT_EQ(few.pairs, 4) << "the correlation is over all";
}

TEST_F(PlotDataTest, TicksAreRound)
{
    EXPECT_EQ(tick_places(0, 10, 5), (std::vector<double>{0, 2, 4, 6, 8, 10}));
    const auto fine = tick_places(0.12, 0.31, 4);
    ASSERT_EQ(fine.size(), 4u);
    EXPECT_NEAR(fine.front(), 0.15, 1e-12);
    EXPECT_NEAR(fine.back(), 0.30, 1e-12);
    EXPECT_EQ(tick_places(5, 5, 4).size(), 0u);
    EXPECT_EQ(tick_places(40.5, 0.5, 4), (std::vector<double>{10, 20, 30, 40})) << "from either end";
}

TEST_F(PlotDataTest, TablesQuoteWhatNeedsIt)
{
    const DataTable table{.heading = {"a", "b,c"}, .rows = {{"say \"x\"", "1.5"}, {"two\nlines", ""}}};
    EXPECT_EQ(table.csv(), "a,\"b,c\"\r\n\"say \"\"x\"\"\",1.5\r\n\"two\nlines\",\r\n");
    EXPECT_EQ((DataTable{.heading = {"a", "b"}, .rows = {{"1", "2"}}}).tab_separated(), "a\tb\n1\t2\n");
    EXPECT_EQ(table_number(none), "");
    EXPECT_EQ(table_number(1.0 / 3), "0.33333333");
}

} // namespace
