#include "GridFixture.h"

#include "lodex/geobase/ProjectUnits.h"
#include "lodex/utils/Numbers.h"
#include "lodex/volumes/ActivityModel.h"
#include "lodex/volumes/model/CellGeometry.h"

#include <Lodex/geobase/Style.h>

#include <cmath>
#include <cstdlib>
#include <iostream>
#include <set>

using namespace lodex;

namespace {

class SubdivideVerb : public GridFixture {
protected:
    ~SubdivideVerb() override { set_project_units(LengthUnit::Metre, LengthUnit::Metre); }

    /// x, y or depth of the boundaries between the cells of the first row along an axis.
    static std::vector<double> boundaries(const std::string& grid, int axis, std::size_t part)
    {
        const GridModel& m = model(grid);
        std::vector<double> result{cell_corners(m, 0, 0, 0)[0][part]};
        for (std::int64_t n = 0; n < m.size[static_cast<std::size_t>(axis)]; ++n)
            result.push_back(
                cell_corners(m, axis == 0 ? n : 0, axis == 1 ? n : 0, axis == 2 ? n : 0)[std::size_t{1} << axis][part]);
        return result;
    }
    static void expect_near(const std::vector<double>& found, const std::vector<double>& wanted)
    {
        ASSERT_EQ(found.size(), wanted.size());
        for (std::size_t n = 0; n < found.size(); ++n)
            EXPECT_NEAR(found[n], wanted[n], 1e-12) << "boundary " << n;
    }
};

using Numbers = std::vector<double>;

std::string subdivide(const std::string& name, const std::string& direction, const std::string& sections,
                      const std::string& more = {}, const std::string& grid = "Box")
{
    return "lodex sgrid_subdivide_multiple_sections name " + name + " sgrid " + grid + " direction \"" + direction +
           "\" sections " + sections + " " + more;
}

/// Sections text for a run of 0-based sections, as dialogs write it.
std::string rows(long from, long to, long amount, const std::string& layering, const std::string& thickness)
{
    std::string text;
    for (long c = from; c <= to; ++c)
        text += (text.empty() ? "" : "+") + std::to_string(c) + "+" + std::to_string(amount - 1) + "+" + layering +
                "+" + thickness;
    return text;
}

} // namespace

TEST_F(SubdivideVerb, DividesAlongEachAxis)
{
    add_box("Box", {4, 6, 8});
    EXPECT_TRUE(run(subdivide("I", "first axis", "0+1+proportional+")));
    EXPECT_TRUE(run(subdivide("J", "second axis", "5+2+proportional+1+0+1+proportional+1")));
    EXPECT_TRUE(run(subdivide("K", "vertical", "2+2+proportional+1+3+2+proportional+1+6+1+parallel_to_top+0.5")));
    EXPECT_EQ(model("I").size, (GridSize{5, 6, 8}));
    EXPECT_EQ(model("J").size, (GridSize{4, 9, 8}));
    EXPECT_EQ(model("K").size, (GridSize{4, 6, 13}));
    expect_near(boundaries("K", 2, 2), {0, 1, 2, 7. / 3, 8. / 3, 3, 10. / 3, 11. / 3, 4, 5, 6, 6.5, 7, 8});
    expect_near(boundaries("I", 0, 0), {0, 0.5, 1, 2, 3, 4});
}

TEST_F(SubdivideVerb, TakesWhatTheSectionDialogSends)
{
    add_box("Box", {4, 6, 8});
    EXPECT_TRUE(run("lodex sgrid_subdivide_multiple_sections name New sgrid Box direction \"vertical\" sections "
                    "0+1+proportional+ copy_properties 0 copy_regions 0 copy_style 1 vertical_cell_thickness 0"));
    EXPECT_TRUE(run("lodex sgrid_subdivide_multiple_sections name New 2 sgrid Box direction \"first axis\" sections "
                    "2+2+parallel_to_base++3+2+parallel_to_base++0+1+proportional+ copy_properties 1 copy_regions 1 "
                    "copy_style 1 vertical_cell_thickness 1"));
    EXPECT_EQ(model("New").size, (GridSize{4, 6, 9}));
    EXPECT_TRUE(model("New").properties.empty());
    EXPECT_EQ(model("New 2").size, (GridSize{9, 6, 8}));
    EXPECT_EQ(model("New 2").properties.size(), 2U);
    expect_near(boundaries("New 2", 0, 0), {0, 0.5, 1, 2, 7. / 3, 8. / 3, 3, 10. / 3, 11. / 3, 4});
}

TEST_F(SubdivideVerb, TakesWhatTheDownscaleDialogSendsThroughTemporaries)
{
    add_box("Box", {4, 4, 4});
    find_grid("Box")->change(
        [](GridModel& m) { m.regions.push_back({.name = "R", .flags = std::vector<std::uint8_t>(64, 1)}); });
    const std::string common = " copy_properties 1 properties all_properties copy_fb_regions 1 copy_regions 1 regions "
                               "all_regions copy_style 1";
    ASSERT_TRUE(run("lodex sgrid_subdivide_multiple_sections name _tmpobj_New_down1 sgrid Box direction \"first axis\" "
                    "sections " +
                    rows(1, 3, 3, "proportional", "") + " " + common +
                    " vertical_cell_thickness 0 percent_cell_thickness 1 model_info 0"));
    ASSERT_TRUE(run("lodex sgrid_subdivide_multiple_sections name New sgrid _tmpobj_New_down1 direction \"vertical\" "
                    "sections " +
                    rows(0, 0, 4, "parallel_to_base", "0.25") + " " + common +
                    " vertical_cell_thickness 1 percent_cell_thickness 0 model_info 0"));
    EXPECT_EQ(model("New").size, (GridSize{10, 4, 7}));
    EXPECT_EQ(model("New").regions.size(), 1U);
    Lodex::GeobaseLib::instance()->destroy(find_grid("_tmpobj_New_down1"));

    // The new grid knows how its cells came from the first one's.
    using Activity = Lodex::SGridDowngriddingActivityData;
    auto data = std::make_unique<Lodex::GridRefinementData>();
    ASSERT_TRUE(data->add_modification(Lodex::UGridIndex3d::I, 2, 4, 3, 0, Lodex::LayerInfo::Proportional));
    ASSERT_TRUE(data->add_modification(Lodex::UGridIndex3d::K, 1, 1, 4, 0.25F, Lodex::LayerInfo::ParallelToBase));
    EXPECT_NE(Activity::create_downgridding_activity(find_grid("Box"), find_grid("New"), data.release()), nullptr);
    data = std::make_unique<Lodex::GridRefinementData>();
    ASSERT_TRUE(data->add_modification(Lodex::UGridIndex3d::I, 2, 4, 3, 0, Lodex::LayerInfo::Proportional));
    EXPECT_EQ(Activity::create_downgridding_activity(find_grid("Box"), find_grid("New"), data.release()), nullptr)
        << "sizes disagree";
    for (std::int64_t k = 0; k < 7; ++k)
        for (std::int64_t i = 0; i < 10; ++i)
            EXPECT_EQ(value("New", "PORO", i, 1, k),
                      value("Box", "PORO", i == 0 ? 0 : 1 + (i - 1) / 3, 1, k < 4 ? 0 : k - 3));
    // And without "regions" when regions are not copied.
    EXPECT_TRUE(run("lodex sgrid_subdivide_multiple_sections name Last sgrid Box direction \"second axis\" sections "
                    "0+1+proportional+ copy_properties 1 properties  copy_fb_regions 0 copy_regions 0 copy_style 1 "
                    "vertical_cell_thickness 0 percent_cell_thickness 0 model_info 1"));
    EXPECT_TRUE(model("Last").properties.empty());
    EXPECT_TRUE(model("Last").regions.empty());
    EXPECT_EQ(messages.of(Lodex::LogLevel::Warning).size(), 1U) << "model_info without layers";
}

TEST_F(SubdivideVerb, ActivitiesLeadThroughMergeSubdivideMerge)
{
    add_box("Box", {2, 2, 6});
    ASSERT_TRUE(
        run("lodex sgrid_merge_multiple_sections name A sgrid Box direction \"vertical\" sections 0+1+2+3+4+5\n" +
            subdivide("B", "vertical", rows(0, 2, 4, "proportional", ""), {}, "A") +
            "\nlodex sgrid_merge_multiple_sections name C sgrid B direction \"vertical\" sections "
            "0+3+4+7+8+11\nlodex sgrid_merge_multiple_sections name D sgrid B direction \"first axis\" sections 0+1"));
    ASSERT_EQ(model("C").records.size(), 3U);
    EXPECT_EQ(model("C").records[2].ranges[2], (std::vector<IndexRange>{{0, 1}, {2, 3}, {4, 5}}));
    EXPECT_EQ(model("C").records[1].ranges[2], (std::vector<IndexRange>{{0, 0}, {1, 1}, {2, 2}}));
    Lodex::GeobaseLib::instance()->destroy(find_grid("A"));
    Lodex::GeobaseLib::instance()->destroy(find_grid("B"));
    auto coarsening = coarsening_from_text("3+1+6+2");
    EXPECT_NE(Lodex::SGridUpgriddingActivityData::create_upgridding_activity(find_grid("Box"), find_grid("C"),
                                                                             coarsening.release()),
              nullptr);
    auto refinement = refinement_from_text("3+1+6+2+0+proportional");
    EXPECT_EQ(Lodex::SGridDowngriddingActivityData::create_downgridding_activity(find_grid("Box"), find_grid("D"),
                                                                                 refinement.release()),
              nullptr)
        << "12 K layers, but 1 column along I";
    refinement = refinement_from_text("3+1+3+4+0+proportional");
    EXPECT_EQ(Lodex::SGridDowngriddingActivityData::create_downgridding_activity(find_grid("C"), find_grid("Box"),
                                                                                 refinement.release()),
              nullptr)
        << "no record leads this way";
}

TEST_F(SubdivideVerb, ThicknessesAreInTheProjectsUnits)
{
    add_box("Box", {1, 1, 1});
    const std::string sections = "0+2+parallel_to_top+0.25";
    ASSERT_TRUE(run(subdivide("Metres", "vertical", sections)));
    expect_near(boundaries("Metres", 2, 2), {0, 0.25, 0.5, 1});
    set_project_units(LengthUnit::Metre, LengthUnit::Foot);
    ASSERT_TRUE(run(subdivide("Feet", "vertical", sections) + ";" + subdivide("I metres", "first axis", sections) +
                    ";" + subdivide("Percent", "vertical", "0+2+parallel_to_top+20", "percent_cell_thickness 1")));
    expect_near(boundaries("Feet", 2, 2), {0, 0.0762, 0.1524, 1});
    expect_near(boundaries("I metres", 0, 0), {0, 0.5, 0.75, 1});
    expect_near(boundaries("Percent", 2, 2), {0, 0.2, 0.4, 1});
    set_project_units(LengthUnit::Foot, LengthUnit::Metre);
    ASSERT_TRUE(run(subdivide("I feet", "first axis", "0+2+parallel_to_base+0.25") + ";" +
                    subdivide("J feet", "second axis", "0+2+parallel_to_top+0.25")));
    expect_near(boundaries("I feet", 0, 0), {0, 0.0762, 0.1524, 1});
    expect_near(boundaries("J feet", 1, 1), {0, 1 - 0.1524, 1 - 0.0762, 1});
    // A grid that says that it is in feet.
    find_grid("Box")->change([](GridModel& m) { m.frame.grid_units = "FEET"; });
    ASSERT_TRUE(run(subdivide("Foot grid", "first axis", "0+2+parallel_to_base+0.25") + ";" +
                    subdivide("Foot grid K", "vertical", "0+2+parallel_to_top+0.1")));
    expect_near(boundaries("Foot grid", 0, 0), {0, 0.25, 0.5, 1});
    expect_near(boundaries("Foot grid K", 2, 2), {0, 0.1 / 0.3048, 0.2 / 0.3048, 1});
}

TEST_F(SubdivideVerb, AThicknessIsMeasuredAlongThePillarOrVertically)
{
    GridModel box = make_box({1, 1, 1}, {10, 10, 10}, {0, 0, 0});
    box.coord.visit_mutable([](auto numbers) {
        for (std::size_t n = 0; n < numbers.size(); n += 6)
            numbers[n + 3] = numbers[n] + 0.75 * (numbers[n + 5] - numbers[n + 2]);
    });
    add_grid("Box", std::move(box));
    ASSERT_TRUE(run(subdivide("Along", "vertical", "0+2+parallel_to_top+2.5") + ";" +
                    subdivide("Vertical", "vertical", "0+2+parallel_to_top+2.5", "vertical_cell_thickness 1")));
    expect_near(boundaries("Along", 2, 2), {0, 2, 4, 10});
    expect_near(boundaries("Vertical", 2, 2), {0, 2.5, 5, 10});
}

TEST_F(SubdivideVerb, NumbersWithExponentsAndIgnoredThicknesses)
{
    add_box("Box", {1, 1, 2});
    ASSERT_TRUE(run(subdivide("A", "vertical", "0+1+parallel_to_top+2.5e-1+1+1+parallel_to_base+1e+0")));
    expect_near(boundaries("A", 2, 2), {0, 0.25, 1, 1, 2});
    EXPECT_EQ(model("A").active, (std::vector<std::uint8_t>{1, 1, 0, 1}));
    ASSERT_TRUE(run(subdivide("B", "vertical", "0+1+proportional+0,5x+1+1+proportional+-3")))
        << "the thickness of an even division is not read";
    EXPECT_EQ(model("B").size[2], 4);
}

TEST_F(SubdivideVerb, ListsMayNameAllOrSomeOrNothing)
{
    add_box("Box", {1, 1, 4});
    ASSERT_TRUE(run("lodex on SGrid Box fill_property Net To Gross value 0.5"));
    find_grid("Box")->change([](GridModel& m) {
        m.regions = {{.name = "Upper Part", .flags = {1, 1, 0, 0}}, {.name = "Lower", .flags = {0, 0, 1, 1}}};
    });
    const std::string one = "1+1+proportional+";
    EXPECT_TRUE(run(subdivide("None", "vertical", one, "copy_properties 1 properties  copy_regions 1 regions ")));
    EXPECT_TRUE(model("None").properties.empty());
    EXPECT_TRUE(model("None").regions.empty());
    EXPECT_TRUE(run(subdivide("One", "vertical", one,
                              "copy_properties 1 properties Net+To+Gross copy_regions 1 regions Upper+Part")));
    ASSERT_EQ(model("One").properties.size(), 1U);
    EXPECT_EQ(model("One").properties[0].name, "Net To Gross");
    ASSERT_EQ(model("One").regions.size(), 1U);
    EXPECT_EQ(model("One").regions[0].flags, (std::vector<std::uint8_t>{1, 1, 1, 0, 0}));
    EXPECT_TRUE(run(subdivide("All", "vertical", one,
                              "copy_properties 1 properties all_properties copy_regions 1 regions Lower+all_regions")));
    EXPECT_EQ(model("All").properties.size(), 3U);
    EXPECT_EQ(model("All").regions.size(), 2U);
    EXPECT_TRUE(run(subdivide("Absent", "vertical", one, "copy_properties 1 copy_regions 1")));
    EXPECT_EQ(model("Absent").properties.size(), 3U);
    EXPECT_EQ(model("Absent").regions.size(), 2U);
    EXPECT_TRUE(run(subdivide("Off", "vertical", one)));
    EXPECT_TRUE(model("Off").properties.empty());
    EXPECT_TRUE(model("Off").regions.empty());
    EXPECT_NE(error(subdivide("Bad", "vertical", one, "copy_properties 1 properties PERMX"))
                  .find("there is no property \"PERMX\""),
              std::string::npos);
}

TEST_F(SubdivideVerb, ModelRegionsLayersAndStylePassOn)
{
    add_box("Box", {1, 1, 4});
    ASSERT_TRUE(run(
        "lodex on SGrid Box set_layers units \"A\"+\"B b\" sizes 1+3; lodex on Style Box set attribute colour value "
        "\"deep red\"; lodex on Style Box set attribute *sections value \" 1 3 1 0\" ; lodex on Style Box update"));
    find_grid("Box")->change([](GridModel& m) { m.regions.push_back({"unit_A", {1, 0, 0, 0}, true}); });
    ASSERT_TRUE(run(subdivide("C", "vertical", "0+4+proportional++3+1+proportional+", "copy_style 1 copy_regions 0")));
    ASSERT_EQ(model("C").layers.size(), 2U);
    EXPECT_EQ(model("C").layers[0].nb_k_cells, 5);
    EXPECT_EQ(model("C").layers[1].nb_k_cells, 4);
    EXPECT_EQ(model("C").layers[1].unit, "B b");
    ASSERT_EQ(model("C").regions.size(), 1U);
    EXPECT_TRUE(model("C").regions[0].model);
    EXPECT_EQ(model("C").regions[0].flags, (std::vector<std::uint8_t>{1, 1, 1, 1, 1, 0, 0, 0, 0}));
    EXPECT_EQ(find_grid("C")->style()->attribute("colour").str(), "deep red");
    EXPECT_EQ(find_grid("C")->style()->attribute("*sections").str(), "");
    ASSERT_TRUE(run(subdivide("D", "vertical", "0+4+proportional+", "copy_style 0")));
    EXPECT_EQ(find_grid("D")->style()->attribute("colour").str(), "");
}

TEST_F(SubdivideVerb, RefusesWhatDoesNotFitAndChangesNothing)
{
    add_box("Box", {4, 4, 4});
    const std::vector<std::string> bad{
        subdivide("New", "vertical", "4+1+proportional+"),
        subdivide("New", "vertical", "-1+1+proportional+"),
        subdivide("New", "vertical", "1+1+proportional++1+2+proportional+"),
        subdivide("New", "vertical", "1+-1+proportional+"),
        subdivide("New", "vertical", "1+1+proportional"),
        subdivide("New", "vertical", "1+1+proportional+1+2"),
        subdivide("New", "vertical", "x+1+proportional+"),
        subdivide("New", "vertical", "1+1.5+proportional+"),
        subdivide("New", "vertical", "1++proportional+"),
        subdivide("New", "vertical", "1+1+parallel+"),
        subdivide("New", "vertical", "1+1+Proportional+"),
        subdivide("New", "vertical", "1+1+parallel_to_top+nan"),
        subdivide("New", "vertical", "1+1+parallel_to_top+inf"),
        subdivide("New", "vertical", "1+1+parallel_to_top+1e999"),
        subdivide("New", "vertical", "1+1+parallel_to_base+-2"),
        subdivide("New", "vertical", "1+1+parallel_to_base+2,5"),
        subdivide("New", "vertical", "99999999999999999999+1+proportional+"),
        subdivide("New", "vertical", "1+9000000000000000000+proportional+"),
        subdivide("New", "vertical", "1+1000000000000+proportional+"),
        subdivide("New", "vertical", ""),
        subdivide("New", "upwards", "1+1+proportional+"),
        subdivide("Box", "vertical", "1+1+proportional+"),
        subdivide("everywhere", "vertical", "1+1+proportional+"),
        subdivide("New", "vertical", "1+1+proportional+", "vertical_cell_thickness 2"),
        subdivide("New", "vertical", "1+1+proportional+", "percent_cell_thicknes 1"),
        subdivide("New", "vertical", "1+1+proportional+", "copy_regions 1 regions region_0"),
        subdivide("New", "vertical", "1+1+proportional+", {}, "Gone"),
        "lodex sgrid_subdivide_multiple_sections name New sgrid Box sections 1+1+proportional+",
        "lodex sgrid_subdivide_multiple_sections name New sgrid Box direction \"vertical\"",
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
    EXPECT_EQ(error(subdivide("New", "vertical", "1+1+proportional")),
              "1:90: \"sections\" holds 3 items; expected groups of four: section, cells added, layering, thickness");
    EXPECT_NE(
        error(subdivide("New", "vertical", "1+1+parallel+2")).find("\"parallel\" in \"1+1+parallel+2\" is no layering"),
        std::string::npos);
    EXPECT_NE(error(subdivide("New", "vertical", "1+1+parallel_to_top+nan"))
                  .find("\"nan\" in \"1+1+parallel_to_top+nan\" is no thickness"),
              std::string::npos);
    EXPECT_NE(error(subdivide("New", "vertical", "1+1+proportional+", "percent_cell_thicknes 1"))
                  .find("\"percent_cell_thicknes 1\" in "),
              std::string::npos);
    EXPECT_NE(error(subdivide("New", "vertical", "9+1+proportional+"))
                  .find("section 9 along K: the grid has sections 0 to 3"),
              std::string::npos);
}

TEST_F(SubdivideVerb, ReportsCountsAndVolumes)
{
    ASSERT_TRUE(run("lodex create example name Box size 20+15+12 seed 3"));
    const auto k = result(subdivide("K", "vertical", rows(0, 11, 3, "proportional", "")));
    ASSERT_EQ(k.status, StatementStatus::Done) << k.message;
    EXPECT_EQ(count(k, "cells"), 20 * 15 * 36);
    EXPECT_EQ(count(k, "divided_cells"), 20 * 15 * 12);
    EXPECT_EQ(count(k, "active_cells"), std::ranges::count(model("K").active, 1));
    EXPECT_LT(count(k, "max_relative_cell_difference"), 1e-9);
    EXPECT_NEAR(count(k, "total_volume_after") / count(k, "total_volume_before"), 1, 1e-12);
    const auto top = result(subdivide("Top", "vertical", rows(0, 11, 3, "parallel_to_top", "1.5")));
    ASSERT_EQ(top.status, StatementStatus::Done) << top.message;
    EXPECT_GT(count(top, "pinched_cells"), 0);
    EXPECT_NEAR(count(top, "total_volume_after") / count(top, "total_volume_before"), 1, 1e-6);
    const auto i = result(subdivide("I", "first axis", rows(0, 19, 2, "proportional", "")));
    ASSERT_EQ(i.status, StatementStatus::Done) << i.message;
    EXPECT_GT(count(i, "max_relative_cell_difference"), 0) << "pillars lean at a fault";
    EXPECT_NEAR(count(i, "bulk_volume_after") / bulk_volume(model("I")), 1, 1e-12);
    const auto lines = messages.of(Lodex::LogLevel::Info);
    EXPECT_TRUE(std::ranges::any_of(lines, [](const std::string& line) {
        return line.find("subdivisions differ from their cells by") != std::string::npos;
    }));
    EXPECT_TRUE(std::ranges::any_of(lines, [](const std::string& line) {
        return line.find("cells are pinched to nothing and inactive") != std::string::npos;
    }));
}

TEST_F(SubdivideVerb, CancelLeavesTheCatalogueAsItWas)
{
    ASSERT_TRUE(run("lodex create example name Box size 30+30+20"));
    EXPECT_TRUE(stops_at_each_step(subdivide("New", "first axis", rows(0, 9, 2, "parallel_to_base", "20"),
                                             "copy_properties 1 copy_fb_regions 1"), "New"));
}

TEST_F(SubdivideVerb, JournalReplaysToTheSameGrid)
{
    ASSERT_TRUE(run("lodex create example name Box size 12+9+8 seed 5\n" +
                    subdivide("A", "vertical", "1+2+parallel_to_top+1.25+4+1+proportional+",
                              "copy_properties 1 copy_regions 1 copy_fb_regions 1") +
                    "\n" + subdivide("B", "second axis", "0+1+parallel_to_base+40", "copy_properties 1", "A")));
    const std::string script = journal();
    const GridModel before = model("B");
    Lodex::GeobaseLib::instance()->clear();
    ASSERT_TRUE(run(script));
    EXPECT_EQ(model("B").zcorn, before.zcorn);
    EXPECT_EQ(model("B").coord, before.coord);
    EXPECT_EQ(model("B").active, before.active);
}

namespace {

/// A field model in the data folder, and what to import of it.
struct Field {
    const char* name;
    const char* file;
    GridSize size;
};

const std::vector<Field> fields{{"Reek", "reek/reek_sim_grid.grdecl", {40, 64, 14}},
                                {"Drogon", "drogon/DROGON.EGRID", {46, 73, 31}},
                                {"Spe9", "spe9/SPE9_CP_SHORT.EGRID", {24, 25, 15}}};

} // namespace

TEST_F(SubdivideVerb, FieldModelsComeBackFromEachAxis)
{
    const char* variable = std::getenv("LODEX_FIELD_DATA");
    const std::filesystem::path data = variable ? variable : SOURCE_DIR "/../shared/data";
    for (const Field& field : fields) {
        if (!std::filesystem::exists(data / field.file)) {
            std::cout << field.name << " is not here; nothing to check\n";
            continue;
        }
        const std::string name = field.name;
        ASSERT_TRUE(run("lodex import file \"" + (data / field.file).string() + "\" name " + name));
        const GridModel& source = model(name);
        EXPECT_EQ(source.size, field.size);
        for (const auto& [direction, axis] : {std::pair{"first axis", 0}, {"second axis", 1}, {"vertical", 2}}) {
            const auto at = static_cast<std::size_t>(axis);
            const long last = static_cast<long>(source.size[at]) - 1;
            for (const char* layering : {"proportional", "parallel_to_base", "parallel_to_top"}) {
                const std::string fine = name + " " + std::to_string(axis) + " " + layering;
                const auto r = result(subdivide(fine, direction, rows(0, last, 2, layering, axis == 2 ? "2" : "40"),
                                                "copy_properties 1", name));
                ASSERT_EQ(r.status, StatementStatus::Done) << r.message;
                GridSize size = source.size;
                size[at] *= 2;
                EXPECT_EQ(model(fine).size, size);
                const double change = count(r, "total_volume_after") / count(r, "total_volume_before") - 1;
                EXPECT_LT(std::abs(change), axis == 2 ? 1e-6 : 1e-3) << fine;
                std::cout << fine << ": total " << change << ", cells at most "
                          << count(r, "max_relative_cell_difference") << ", on average "
                          << count(r, "mean_relative_cell_difference") << ", pinched " << count(r, "pinched_cells")
                          << "\n";
                if (axis == 2 && std::string(layering) == "proportional") {
                    EXPECT_LT(count(r, "max_relative_cell_difference"), 1e-9);
                }
                std::string pairs;
                for (long n = 0; n <= last; ++n)
                    pairs += (n ? "+" : "") + std::to_string(2 * n) + "+" + std::to_string(2 * n + 1);
                ASSERT_TRUE(run("lodex sgrid_merge_multiple_sections name Back sgrid " + fine + " direction \"" +
                                direction + "\" sections " + pairs));
                const GridModel& back = model("Back");
                ASSERT_EQ(back.size, source.size);
                std::int64_t wrong = 0;
                for (std::size_t n = 0; n < source.zcorn.size(); ++n)
                    wrong += back.zcorn[n] != source.zcorn[n];
                for (std::size_t n = 0; n < source.coord.size(); ++n)
                    wrong += back.coord[n] != source.coord[n];
                EXPECT_EQ(wrong, 0) << fine;
                if (std::string(layering) == "proportional") {
                    EXPECT_EQ(back.active, source.active) << fine;
                }
                Lodex::GeobaseLib::instance()->destroy(find_grid("Back"));
                Lodex::GeobaseLib::instance()->destroy(find_grid(fine));
            }
        }
    }
}
