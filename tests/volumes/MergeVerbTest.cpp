#include "GridFixture.h"

#include <Lodex/geobase/Style.h>

#include <cmath>
#include <set>

using namespace lodex;

namespace {

class MergeVerb : public GridFixture {};

/// "lodex sgrid_merge_multiple_sections name NEW sgrid Box direction "..." sections ..." and more keywords.
std::string merge(const std::string& name, const std::string& direction, const std::string& sections, const std::string& more = {})
{
    return "lodex sgrid_merge_multiple_sections name " + name + " sgrid Box direction \"" + direction + "\" sections " +
           sections + " " + more;
}

} // namespace

TEST_F(MergeVerb, MergesAlongEachAxis)
{
    add_box("Box", {4, 6, 8});
    EXPECT_TRUE(run(merge("I", "first axis", "0+1+2+3")));
    EXPECT_TRUE(run(merge("J", "second axis", "0+5")));
    EXPECT_TRUE(run(merge("K", "vertical", "0+2+5+7")));
    EXPECT_EQ(model("I").size, (GridSize{2, 6, 8}));
    EXPECT_EQ(model("J").size, (GridSize{4, 1, 8}));
    EXPECT_EQ(model("K").size, (GridSize{4, 6, 4}));
}

TEST_F(MergeVerb, KeepsTheValuesOfTheSectionAskedFor)
{
    add_box("Box", {1, 1, 6});
    EXPECT_TRUE(run(merge("C", "vertical", "0+1+3+5", "copy_properties 1 property_sections 1+4")));
    EXPECT_EQ(value("C", "PORO", 0, 0, 0), 2);
    EXPECT_EQ(value("C", "PORO", 0, 0, 1), 3);
    EXPECT_EQ(value("C", "PORO", 0, 0, 2), 5);
    EXPECT_EQ(value("C", "CODE", 0, 0, 2), 4);
    // One for all pairs, outside of the second: 3 + ((1 - 3) mod 3) = 4.
    EXPECT_TRUE(run(merge("D", "vertical", "0+1+3+5", "copy_properties 1 property_sections 1")));
    EXPECT_EQ(value("D", "PORO", 0, 0, 0), 2);
    EXPECT_EQ(value("D", "PORO", 0, 0, 2), 5);
    EXPECT_TRUE(run(merge("E", "vertical", "0+1+3+5", "copy_properties 1 property_sections -1")));
    EXPECT_EQ(value("E", "PORO", 0, 0, 0), 1);
    EXPECT_EQ(value("E", "PORO", 0, 0, 2), 4);
    EXPECT_TRUE(run(merge("F", "vertical", "0+1+3+5", "copy_properties 1")));
    EXPECT_EQ(value("F", "PORO", 0, 0, 0), 1);
}

TEST_F(MergeVerb, TakesListsWithEmptyItems)
{
    add_box("Box", {1, 1, 10});
    EXPECT_TRUE(run(merge("A", "vertical", "0+2+3+5++8+9", "copy_properties 1 property_sections 0+0++0")));
    EXPECT_EQ(model("A").size[2], 5);
    EXPECT_TRUE(run(merge("B", "vertical", "0+2+3+5+", "copy_properties 0 property_sections 0+0+")));
    EXPECT_EQ(model("B").size[2], 6);
}

TEST_F(MergeVerb, NoSectionsMakeAPlainCopy)
{
    add_box("Box", {2, 3, 4});
    EXPECT_TRUE(run("lodex sgrid_merge_multiple_sections name Copy sgrid Box direction \"vertical\" sections  copy_properties 1 "
                    "property_sections  copy_regions 0 copy_style 1"));
    EXPECT_EQ(model("Copy").size, model("Box").size);
    EXPECT_EQ(model("Copy").zcorn, model("Box").zcorn);
    EXPECT_EQ(model("Copy").find_property("PORO")->values, model("Box").find_property("PORO")->values);
}

TEST_F(MergeVerb, ChoosesPropertiesAndRegions)
{
    add_box("Box", {2, 1, 4});
    ASSERT_TRUE(run("lodex on SGrid Box fill_property Net To Gross value 0.5\n"
                    "lodex on SGrid Box define_region Upper Part property CODE max 1\n"
                    "lodex on SGrid Box define_region Lower property CODE min 2"));
    EXPECT_TRUE(run(merge("None", "vertical", "0+1", "copy_properties 1 properties copy_regions 1 regions")));
    EXPECT_TRUE(model("None").properties.empty());
    EXPECT_TRUE(model("None").regions.empty());
    EXPECT_TRUE(run(merge("One", "vertical", "0+1", "copy_properties 1 properties Net+To+Gross copy_regions 1 regions Upper+Part")));
    ASSERT_EQ(model("One").properties.size(), 1u);
    EXPECT_EQ(model("One").properties[0].name, "Net To Gross");
    ASSERT_EQ(model("One").regions.size(), 1u);
    EXPECT_EQ(model("One").regions[0].name, "Upper Part");
    EXPECT_TRUE(run(merge("All", "vertical", "0+1", "copy_properties 1 properties all_properties copy_regions 1 regions Lower+all_regions")));
    EXPECT_EQ(model("All").properties.size(), 3u);
    EXPECT_EQ(model("All").regions.size(), 2u);
    EXPECT_TRUE(run(merge("Everywhere", "vertical", "0+1", "copy_regions 1 regions everywhere")));
    EXPECT_EQ(model("Everywhere").regions.size(), 2u);
    EXPECT_TRUE(run(merge("Absent", "vertical", "0+1", "copy_properties 1 copy_regions 1")));
    EXPECT_EQ(model("Absent").properties.size(), 3u);
    EXPECT_EQ(model("Absent").regions.size(), 2u);
    EXPECT_TRUE(run(merge("Flags off", "vertical", "0+1")));
    EXPECT_TRUE(model("Flags off").properties.empty());
    EXPECT_TRUE(model("Flags off").regions.empty());
    EXPECT_NE(error(merge("Bad", "vertical", "0+1", "copy_properties 1 properties PORO+PERMX")).find("there is no property \"PERMX\""),
              std::string::npos);
    EXPECT_NE(error(merge("Bad", "vertical", "0+1", "copy_regions 1 regions region_0")).find("there is no region \"region_0\""),
              std::string::npos);
}

TEST_F(MergeVerb, RegionModesAgreeWithABruteForceCount)
{
    // 1 x 1 x 8 cells of heights 1; three overlapping regions.
    add_box("Box", {1, 1, 8});
    const std::vector<std::vector<std::uint8_t>> flags{{1, 1, 1, 0, 0, 0, 0, 1}, {0, 0, 0, 1, 1, 1, 0, 0}, {0, 0, 1, 1, 0, 0, 0, 0}};
    find_grid("Box")->change([&](GridModel& m) {
        for (std::size_t r = 0; r < flags.size(); ++r)
            m.regions.push_back({.name = "R" + std::to_string(r), .flags = flags[r]});
    });
    for (int mode = 0; mode <= 3; ++mode) {
        for (const double percentile : {0., 25., 50., 75., 100.}) {
            const std::string name = "M" + std::to_string(mode) + "_" + std::to_string(static_cast<int>(percentile));
            ASSERT_TRUE(run(merge(name, "vertical", "0+3+4+7", "copy_regions 1 region_mode " + std::to_string(mode) +
                                                                   " percentile " + std::to_string(percentile))));
            for (std::size_t coarse = 0; coarse < 2; ++coarse) {
                std::vector<int> counts;
                for (const auto& f : flags)
                    counts.push_back(static_cast<int>(std::count(f.begin() + static_cast<long>(4 * coarse), f.begin() + static_cast<long>(4 * coarse + 4), 1)));
                const int most = *std::ranges::max_element(counts);
                for (std::size_t r = 0; r < flags.size(); ++r) {
                    const double share = 25. * counts[r];
                    const bool expected = mode == 0   ? counts[r] > 0
                                          : mode == 3 ? counts[r] > 0 && counts[r] == most
                                                      : share > 0 && share >= percentile;
                    EXPECT_EQ(model(name).regions[r].flags[coarse] != 0, expected) << name << " region " << r << " cell " << coarse;
                }
            }
        }
    }
}

TEST_F(MergeVerb, PercentileIsLookedAtInItsModesOnly)
{
    add_box("Box", {1, 1, 2});
    EXPECT_TRUE(run(merge("A", "vertical", "0+1", "copy_regions 1 region_mode 0 percentile 500")));
    EXPECT_TRUE(run(merge("A empty", "vertical", "0+1", "copy_regions 1 region_mode 3 percentile")));
    EXPECT_NE(error(merge("B", "vertical", "0+1", "copy_regions 1 region_mode 2 percentile")).find("\"percentile\" is \"\"; expected 0 to 100"),
              std::string::npos);
    EXPECT_NE(error(merge("B", "vertical", "0+1", "property_sections -2")).find("\"property_sections\" is \"-2\"; expected at least -1"),
              std::string::npos);
    for (const char* value : {"101", "-1", "x", "nan"})
        EXPECT_EQ(error(merge("B", "vertical", "0+1", std::string("copy_regions 1 region_mode 1 percentile ") + value)),
                  std::string("1:128: \"percentile\" is \"") + value + "\"; expected 0 to 100");
    EXPECT_NE(error(merge("B", "vertical", "0+1", "region_mode 4")).find("\"region_mode\" is \"4\"; expected at most 3"), std::string::npos);
}

TEST_F(MergeVerb, ModelRegionsAndLayersAlwaysPassOn)
{
    add_box("Box", {1, 1, 6});
    ASSERT_TRUE(run("lodex on SGrid Box set_layers units \"A\"+\"B b\" sizes 4+2"));
    find_grid("Box")->change([&](GridModel& m) { m.regions.push_back({"unit_A", {1, 1, 1, 1, 0, 0}, true}); });
    ASSERT_TRUE(run(merge("C", "vertical", "0+1+2+3")));
    ASSERT_EQ(model("C").layers.size(), 2u);
    EXPECT_EQ(model("C").layers[0].nb_k_cells, 2);
    EXPECT_EQ(model("C").layers[1].nb_k_cells, 2);
    EXPECT_EQ(model("C").layers[1].unit, "B b");
    ASSERT_EQ(model("C").regions.size(), 1u);
    EXPECT_EQ(model("C").regions[0].flags, (std::vector<std::uint8_t>{1, 1, 0, 0}));
}

TEST_F(MergeVerb, CopiesTheStyleButNotThePainting)
{
    add_box("Box", {1, 1, 4});
    ASSERT_TRUE(run("lodex on Style Box set attribute colour value \"deep red\"; lodex on Style Box set attribute *sections value "
                    "\" 1 3 1 0\" ; lodex on Style Box update ;lodex update all cameras"));
    ASSERT_TRUE(run(merge("With", "vertical", "0+1", "copy_style 1")));
    ASSERT_TRUE(run(merge("Without", "vertical", "0+1", "copy_style 0")));
    EXPECT_EQ(find_grid("With")->style()->attribute("colour").str(), "deep red");
    EXPECT_EQ(find_grid("With")->style()->attribute("*sections").str(), "");
    EXPECT_EQ(find_grid("Without")->style()->attribute("colour").str(), "");
}

TEST_F(MergeVerb, RefusesWhatDoesNotFitAndChangesNothing)
{
    add_box("Box", {4, 4, 4});
    const std::vector<std::string> bad{
        merge("New", "vertical", "0+4"),       merge("New", "vertical", "-1+2"),     merge("New", "vertical", "2+1"),
        merge("New", "vertical", "0+2+2+3"),   merge("New", "vertical", "0+1+2"),    merge("New", "vertical", "0+x"),
        merge("New", "upwards", "0+1"),        merge("Box", "vertical", "0+1"),      merge("everywhere", "vertical", "0+1"),
        merge("New", "vertical", "0+1", "property_sections 0+1+2"),
        "lodex sgrid_merge_multiple_sections name New sgrid Gone direction \"vertical\" sections 0+1",
        "lodex sgrid_merge_multiple_sections name New sgrid Box sections 0+1",
        merge("New", "vertical", "0+1", "copy_propertys 1"),
        merge("New", "vertical", "0+99999999999999999999"),
    };
    std::set<std::string> texts;
    for (const std::string& statement : bad) {
        const std::string text = error(statement);
        EXPECT_NE(text, "no error") << statement;
        EXPECT_TRUE(texts.insert(text).second) << "each mistake has its own message: " << text;
        EXPECT_EQ(find_grid("New"), nullptr) << statement;
        EXPECT_EQ(model("Box").size, (GridSize{4, 4, 4}));
    }
    EXPECT_TRUE(Interpreter::instance().journal().empty());
}

TEST_F(MergeVerb, ReportsVolumesAndKeepsThemAlongK)
{
    ASSERT_TRUE(run("lodex create example name Box size 20+15+12 seed 3"));
    const auto k = result(merge("K", "vertical", "0+1+2+3+4+5+6+7+8+9+10+11"));
    ASSERT_EQ(k.status, StatementStatus::Done) << k.message;
    EXPECT_NEAR(count(k, "total_volume_after") / count(k, "total_volume_before"), 1, 1e-6);
    const auto i = result(merge("I", "first axis", "0+4+5+9+10+19"));
    ASSERT_EQ(i.status, StatementStatus::Done) << i.message;
    EXPECT_GT(count(i, "max_relative_cell_difference"), 0) << "sides are bent and faults are crossed";
    const auto lines = messages.of(Lodex::LogLevel::Info);
    EXPECT_TRUE(std::ranges::any_of(lines, [](const std::string& line) { return line.find("bulk volume") != std::string::npos; }));
}

TEST_F(MergeVerb, CancelLeavesTheCatalogueAsItWas)
{
    ASSERT_TRUE(run("lodex create example name Box size 30+30+20"));
    EXPECT_TRUE(stops_at_each_step(merge("New", "vertical", "0+1", "copy_properties 1 copy_fb_regions 1"), "New"));
}

TEST_F(MergeVerb, JournalReplaysToTheSameGrid)
{
    ASSERT_TRUE(run("lodex create example name Box size 12+9+8 seed 5\n" +
                    merge("A", "vertical", "0+1+4+6", "copy_properties 1 property_sections 1+5 copy_regions 1 copy_fb_regions 1") +
                    "\nlodex sgrid_merge_multiple_sections name B sgrid A direction \"first axis\" sections 0+3 copy_properties 1"));
    const std::string script = journal();
    const GridModel before = model("B");
    Lodex::GeobaseLib::instance()->clear();
    ASSERT_TRUE(run(script));
    EXPECT_EQ(model("B").zcorn, before.zcorn);
    EXPECT_EQ(model("B").coord, before.coord);
    EXPECT_EQ(model("B").active, before.active);
    ASSERT_EQ(model("B").properties.size(), before.properties.size());
    for (std::size_t p = 0; p < before.properties.size(); ++p) {
        for (std::size_t c = 0; c < before.properties[p].size(); ++c) {
            const double a = value_or_nan(before.properties[p], c), b = value_or_nan(model("B").properties[p], c);
            ASSERT_TRUE(a == b || (std::isnan(a) && std::isnan(b)));
        }
    }
}
