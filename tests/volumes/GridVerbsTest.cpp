#include "GridFixture.h"

#include "lodex/volumes/model/CellGeometry.h"

#include <Lodex/geobase/Property.h>
#include <Lodex/geobase/Region.h>
#include <Lodex/geobase/Style.h>
#include <Lodex/utils/COSNameList.h>
#include <Lodex/volumes/RockFeature.h>
#include <Lodex/volumes/SGridActivityModel.h>
#include <Lodex/volumes/SGridCube.h>
#include <Lodex/volumes/SGridSubset.h>

#include <nlohmann/json.hpp>

#include <cmath>

using namespace lodex;

namespace {

class GridVerbs : public GridFixture {
protected:
    static nlohmann::json report(const std::string& grid)
    {
        return nlohmann::json::parse(result("lodex report sgrid " + grid).answer);
    }
    static std::vector<std::string> names(const std::string& grid, const std::string& key)
    {
        Lodex::COSNameList list;
        find_grid(grid)->name_list(key, list);
        std::vector<std::string> texts;
        for (const auto& name : list)
            texts.push_back(name.str());
        return texts;
    }
};

using Texts = std::vector<std::string>;

} // namespace

TEST_F(GridVerbs, ABoxHasTheVolumeOfABox)
{
    ASSERT_TRUE(run("lodex create sgrid name My Box size 3+4+5 spacing 10+20+0.5 origin 100+200+1000"));
    const auto json = report("My Box");
    EXPECT_EQ(json["name"], "My Box");
    EXPECT_EQ(json["size"], (std::vector<int>{3, 4, 5}));
    EXPECT_EQ(json["active"], 60);
    EXPECT_DOUBLE_EQ(json["bulk_volume"], 60 * 100.);
    EXPECT_EQ(json["k_layers"].size(), 5u);
    EXPECT_EQ(json["k_layers"][0]["k"], 1);
    EXPECT_DOUBLE_EQ(json["k_layers"][4]["bulk_volume"], 12 * 100.);
    EXPECT_TRUE(json["properties"].empty());
    EXPECT_TRUE(json["regions"].empty());
    EXPECT_TRUE(json["layers"].empty());
    EXPECT_TRUE(json["activities"].empty());
    EXPECT_EQ(json["frame"]["ijk_against_xy_depth"], "right-handed");
    EXPECT_EQ(json["frame"]["depth"], "positive downwards");
    EXPECT_TRUE(json["frame"]["map_axes"].is_null());
}

TEST_F(GridVerbs, TheReportStatesWhatTheFileSaidOfItsCoordinates)
{
    const std::string path = write("frame.grdecl", "SPECGRID\n1 1 1 1 F /\nMAPAXES\n 0 100 0 0 100 0 /\nMAPUNITS\n METRES /\n"
                                                   "GRIDUNIT\n FEET MAP /\nCOORD\n 0 0 10 0 0 11 1 0 10 1 0 11 0 -1 10 0 -1 11 1 -1 10 1 -1 11 /\n"
                                                   "ZCORN\n 4*10 4*11 /\n");
    ASSERT_TRUE(run("lodex import file \"" + path + "\" name Framed"));
    const auto frame = report("Framed")["frame"];
    EXPECT_EQ(frame["map_axes"], (std::vector<double>{0, 100, 0, 0, 100, 0}));
    EXPECT_EQ(frame["map_units"], "METRES");
    EXPECT_EQ(frame["grid_units"], "FEET");
    EXPECT_EQ(frame["grid_units_are_map_units"], true);
    EXPECT_EQ(frame["ijk_against_xy_depth"], "left-handed") << "J runs against y";
    EXPECT_EQ(frame["stored_depths"], "32 bits");
}

TEST_F(GridVerbs, RefusesSizesThatMakeNoGrid)
{
    for (const char* size : {"0+1+1", "1+1", "1+1+1+1", "-3+1+1", "2000000+2000000+2000000", "9223372036854775807+2+2", "1.5+1+1", ""}) {
        EXPECT_NE(error(std::string("lodex create sgrid name A size ") + size + " spacing 1+1+1"), "no error") << size;
        EXPECT_EQ(find_grid("A"), nullptr);
    }
    EXPECT_NE(error("lodex create sgrid name A size 1+1+1 spacing 0+1+1"), "no error");
    EXPECT_NE(error("lodex create sgrid name A size 1+1+1 spacing 1+1"), "no error");
    EXPECT_NE(error("lodex create sgrid name A size 1+1+1 spacing 1+1+1 origin 1+nan+1"), "no error");
    EXPECT_NE(error("lodex create sgrid name A size 2+2+2 spacing 1e308+1+1"), "no error") << "leaves the range of numbers";
    EXPECT_NE(error("lodex create sgrid name A size 2+2+2 spacing 1e120+1e120+1e120"), "no error") << "so does the volume";
    EXPECT_NE(error("lodex create sgrid name A size 2+2+2 spacing 1+1+1 origin 0+0+1e17"), "no error") << "all depths alike";
    EXPECT_EQ(find_grid("A"), nullptr);
}

TEST_F(GridVerbs, PropertyStatisticsAreThoseOfTheActiveCells)
{
    add_box("Box", {1, 1, 4});
    find_grid("Box")->change([](GridModel& m) {
        std::get<std::vector<double>>(m.properties[0].values)[1] = std::nan("");
    });
    const auto json = report("Box");
    EXPECT_EQ(json["properties"]["PORO"]["count"], 3);
    EXPECT_DOUBLE_EQ(json["properties"]["PORO"]["sum"], 1 + 3 + 4);
    EXPECT_DOUBLE_EQ(json["properties"]["PORO"]["mean"], 8. / 3);
    EXPECT_EQ(json["properties"]["CODE"]["codes"], (nlohmann::json{{"0", 1}, {"1", 1}, {"2", 1}, {"3", 1}}));
    EXPECT_TRUE(json["k_layers"][1]["means"]["PORO"].is_null());
    EXPECT_DOUBLE_EQ(json["k_layers"][3]["means"]["PORO"], 4);
}

TEST_F(GridVerbs, FillsAndReplacesProperties)
{
    add_box("Box", {10, 10, 10});
    EXPECT_TRUE(run("lodex SGrid Box fill_property Net To Gross value 0.25"));
    EXPECT_EQ(value("Box", "Net To Gross", 9, 9, 9), 0.25);
    EXPECT_TRUE(run("lodex on SGrid Box fill_property Net To Gross value 1e-3"));
    EXPECT_EQ(model("Box").properties.size(), 3u);
    EXPECT_NEAR(value("Box", "Net To Gross", 0, 0, 0), 1e-3, 1e-9);
    EXPECT_TRUE(run("lodex on SGrid Box fill_property K lognormal 1e+2+0.5 seed 7"));
    EXPECT_TRUE(run("lodex on SGrid Box fill_property K2 lognormal 100+0.5 seed 7"));
    EXPECT_EQ(model("Box").find_property("K")->values, model("Box").find_property("K2")->values);
    EXPECT_NEAR(report("Box")["properties"]["K"]["mean"], 100, 10);
    EXPECT_NE(error("lodex on SGrid Box fill_property A"), "no error");
    EXPECT_NE(error("lodex on SGrid Box fill_property A value 1 lognormal 1+1"), "no error");
    EXPECT_NE(error("lodex on SGrid Box fill_property A lognormal -1+1"), "no error");
    EXPECT_NE(error("lodex on SGrid Box fill_property everywhere value 1"), "no error");
    EXPECT_NE(error("lodex on SGrid Box fill_property A value 1e39"), "no error") << "beyond 32-bit numbers";
    EXPECT_NE(error("lodex on SGrid Box fill_property A lognormal 1e38+3"), "no error") << "beyond 32-bit numbers";
    EXPECT_EQ(model("Box").find_property("A"), nullptr);
}

TEST_F(GridVerbs, DefinesRegionsByRange)
{
    add_box("Box", {1, 1, 6});
    EXPECT_TRUE(run("lodex on SGrid Box define_region Middle property PORO min 2 max 4"));
    EXPECT_EQ(model("Box").find_region("Middle")->flags, (std::vector<std::uint8_t>{0, 1, 1, 1, 0, 0}));
    EXPECT_TRUE(run("lodex on SGrid Box define_region Middle property PORO min 6"));
    EXPECT_EQ(model("Box").regions.size(), 1u);
    EXPECT_EQ(model("Box").find_region("Middle")->flags, (std::vector<std::uint8_t>{0, 0, 0, 0, 0, 1}));
    EXPECT_EQ(names("Box", "regions_plus"), (Texts{"all_regions", "Middle"}));
    EXPECT_EQ(names("Box", "properties"), (Texts{"PORO", "CODE"}));
    EXPECT_EQ(names("Box", "unknown"), Texts{});
    EXPECT_NE(error("lodex on SGrid Box define_region R property PERM min 1"), "no error");
    EXPECT_NE(error("lodex on SGrid Box define_region R property PORO min 4 max 2"), "no error");
}

TEST_F(GridVerbs, LayersComeFromListsPropertiesAndFiles)
{
    add_box("Box", {2, 2, 6});
    EXPECT_EQ(find_grid("Box")->sgrid_activity_model(), nullptr) << "neither layers nor activities";
    EXPECT_TRUE(run("lodex on SGrid Box set_layers units \"Upper\"+\"Lower Sand\" sizes 2+4"));
    const auto* activity_model = find_grid("Box")->sgrid_activity_model();
    ASSERT_NE(activity_model, nullptr);
    ASSERT_EQ(activity_model->layers().size(), 2u);
    EXPECT_EQ(activity_model->layer(1)->rock_feature()->name().str(), "Lower Sand");
    EXPECT_EQ(activity_model->layer(1)->nb_k_cells(), 4);
    EXPECT_FLOAT_EQ(activity_model->layer(1)->cell_thickness(), 1);
    EXPECT_EQ(activity_model->layer(2), nullptr);
    EXPECT_EQ(activity_model->layer_index(0), 0);
    EXPECT_EQ(activity_model->layer_index(1), 0);
    EXPECT_EQ(activity_model->layer_index(2), 1);
    EXPECT_EQ(activity_model->layer_index(5), 1);
    EXPECT_EQ(activity_model->layer_index(6), -1);
    EXPECT_EQ(activity_model->layer_index(-1), -1);

    EXPECT_TRUE(run("lodex on SGrid Box set_layers property CODE"));
    EXPECT_EQ(model("Box").layers.size(), 6u);

    const std::string good = write("layers.txt", "-- units\n'Upper Reef'  1 - 2\nZone 2 3 - 3\n\"Base\" 4-6 #ff0000\n");
    EXPECT_TRUE(run("lodex on SGrid Box set_layers file \"" + good + "\""));
    ASSERT_EQ(model("Box").layers.size(), 3u);
    EXPECT_EQ(model("Box").layers[1].unit, "Zone 2");
    EXPECT_EQ(model("Box").layers[2].nb_k_cells, 3);

    const std::string gap = write("gap.txt", "A 1 - 2\nB 4 - 6\n");
    EXPECT_NE(error("lodex on SGrid Box set_layers file \"" + gap + "\"").find("gap.txt:2: the K layers are 4 - 6; expected a range that begins at 3"),
              std::string::npos);
    for (const char* bad : {"units A sizes 7", "units A+B sizes 6", "units A+B sizes 3+3+1", "sizes 6", "property PORO", "property GONE",
                            "units A sizes 6 property CODE", "units all_regions sizes 6", "file \"/nowhere/x\""}) {
        EXPECT_NE(error(std::string("lodex on SGrid Box set_layers ") + bad), "no error") << bad;
        EXPECT_EQ(model("Box").layers.size(), 3u) << "nothing changed";
    }
}

TEST_F(GridVerbs, FillsLayeringInfo)
{
    add_box("Box", {2, 1, 4});
    EXPECT_TRUE(run("lodex SGrid Box sgrid_fill_layering_info "));
    ASSERT_EQ(model("Box").layers.size(), 1u);
    EXPECT_EQ(model("Box").layers[0].nb_k_cells, 4);
    EXPECT_EQ(model("Box").layers[0].style, Lodex::LayerInfo::Proportional);
    EXPECT_NE(error("lodex SGrid Box sgrid_fill_layering_info "), "no error") << "layers exist";

    add_box("Zoned", {2, 1, 4});
    find_grid("Zoned")->change([](GridModel& m) {
        m.properties.push_back({.name = "ZONE", .values = std::vector<std::int32_t>{1, 1, 1, 1, 2, 2, 2, 2}});
    });
    EXPECT_TRUE(run("lodex SGrid Zoned sgrid_fill_layering_info"));
    EXPECT_EQ(model("Zoned").layers.size(), 2u);
}

TEST_F(GridVerbs, LayerFilesAreReadLineByLine)
{
    add_box("Box", {1, 1, 6});
    const auto from = [&](const std::string& text) {
        return "lodex on SGrid Box set_layers file \"" + write("units.txt", text) + "\"";
    };
    ASSERT_TRUE(run(from("-- from top to bottom\n 'A--1 #2' 1 - 2 # red\nZone 2  3 - 3\n\n\"C\" 4-6 -- blue\n")));
    ASSERT_EQ(model("Box").layers.size(), 3u);
    EXPECT_EQ(model("Box").layers[0].unit, "A--1 #2");
    EXPECT_EQ(model("Box").layers[1].unit, "Zone 2");
    EXPECT_EQ(model("Box").layers[2].nb_k_cells, 3);
    ASSERT_TRUE(run(from("Zone 2 - 3  1 - 4 dark-blue\nA-B 5-6 x-9\n")));
    ASSERT_EQ(model("Box").layers.size(), 2u);
    EXPECT_EQ(model("Box").layers[0].unit, "Zone 2 - 3");
    EXPECT_EQ(model("Box").layers[1].unit, "A-B");
    EXPECT_EQ(model("Box").layers[1].nb_k_cells, 2);
    ASSERT_TRUE(run(from("A 1 - 2\nB 3 - 3\nC 4 - 6\n")));
    const std::vector<std::pair<std::string, std::string>> cases{
        {"A 1 - 3\n", "the units have 3 K cells, the grid has 6"},
        {"A 1 - 3\nB 5 - 6\n", "units.txt:2: the K layers are 5 - 6; expected a range that begins at 4"},
        {"A 1 - 9223372036854775807\nB 1 - 2\n", "units.txt:1: the K layers are 1 - 9223372036854775807; expected a range"},
        {"A 1 - 6\nB\n", "units.txt:2: expected a unit and its K layers"},
        {"A 1 -\n", "units.txt:1: expected a unit and its K layers"},
        {"A - 6\n", "units.txt:1: expected a unit and its K layers"},
        {"-\n", "units.txt:1: expected a unit and its K layers"},
        {"# nothing\n", "units.txt: holds no units"},
    };
    for (const auto& [text, message] : cases)
        EXPECT_NE(error(from(text)).find(message), std::string::npos) << error(from(text));
    EXPECT_EQ(model("Box").layers.size(), 3u) << "nothing changed";
}

TEST_F(GridVerbs, UnitNamesFromFilesAreMended)
{
    add_box("Box", {1, 1, 6});
    const std::string file = write("units.txt", "'Upper+Reef;' 1 - 2\n\"a  b\" 3 - 6\n");
    const auto by_file = result("lodex on SGrid Box set_layers file \"" + file + "\"");
    EXPECT_EQ(by_file.message, "");
    EXPECT_EQ(by_file.warnings,
              (Texts{"the unit \"Upper+Reef;\" is named \"Upper_Reef_\"", "the unit \"a  b\" is named \"a b\""}));
    EXPECT_EQ(names("Box", "layers"), (Texts{"Upper_Reef_", "a b"}));

    find_grid("Box")->change([](GridModel& m) {
        m.properties.push_back({.name = "ZONE",
                                .values = std::vector<std::int32_t>{1, 1, 2, 2, 2, 2},
                                .code_names = {{1, "all_regions"}, {2, "B"}}});
    });
    const auto by_property = result("lodex on SGrid Box set_layers property ZONE");
    EXPECT_EQ(by_property.warnings, Texts{"the unit \"all_regions\" is named \"all_regions_\""});
    EXPECT_EQ(names("Box", "layers"), (Texts{"all_regions_", "B"}));
    find_grid("Box")->change([](GridModel& m) { m.layers.clear(); });
    EXPECT_EQ(result("lodex on SGrid Box sgrid_fill_layering_info").warnings, by_property.warnings);
    EXPECT_EQ(names("Box", "layers"), (Texts{"all_regions_", "B"}));
    // What a person types is refused.
    EXPECT_NE(error("lodex on SGrid Box set_layers units all_regions+B sizes 2+4").find("cannot be a unit"), std::string::npos);
}

TEST_F(GridVerbs, UnitsBecomeModelRegions)
{
    add_box("Box", {1, 1, 4});
    EXPECT_NE(error("lodex on SGrid Box define_unit_regions").find("has no stratigraphic units"), std::string::npos);
    ASSERT_TRUE(run("lodex on SGrid Box define_region User property PORO max 2\n"
                    "lodex on SGrid Box set_layers units Upper+Lower sizes 2+2\n"
                    "lodex on SGrid Box define_unit_regions"));
    EXPECT_EQ(names("Box", "regions"), (Texts{"User", "Upper", "Lower"}));
    EXPECT_TRUE(model("Box").find_region("Upper")->model);
    EXPECT_EQ(model("Box").find_region("Lower")->flags, (std::vector<std::uint8_t>{0, 0, 1, 1}));
    // Other units: those of the same name are replaced where they stand.
    ASSERT_TRUE(run("lodex on SGrid Box set_layers units Lower+Base sizes 1+3\nlodex on SGrid Box define_unit_regions"));
    EXPECT_EQ(names("Box", "regions"), (Texts{"User", "Upper", "Lower", "Base"}));
    EXPECT_EQ(model("Box").find_region("Lower")->flags, (std::vector<std::uint8_t>{1, 0, 0, 0}));
    // A person's own region is not.
    ASSERT_TRUE(run("lodex on SGrid Box set_layers units New+User sizes 1+3"));
    EXPECT_NE(error("lodex on SGrid Box define_unit_regions").find("has a region \"User\" that comes from no unit"), std::string::npos);
    EXPECT_EQ(names("Box", "regions"), (Texts{"User", "Upper", "Lower", "Base"})) << "nothing changed";
    // Model regions pass on whatever is copied.
    ASSERT_TRUE(run("lodex sgrid_merge_multiple_sections name Coarse sgrid Box direction vertical sections 0+1 copy_regions 0"));
    EXPECT_EQ(names("Coarse", "regions"), (Texts{"Upper", "Lower", "Base"}));
}

TEST_F(GridVerbs, JournalLinesHoldWhateverNamesThereAre)
{
    const std::string script = "lodex create sgrid name the modifications size 4+1+1 spacing 1+1+1\n"
                               "lodex create sgrid name fine result size 1+1+1 spacing 1+1+1\n"
                               "lodex destroy objects fine result\n"
                               "lodex rename object the modifications name fine result\n"
                               "lodex sgrid_merge_multiple_sections name coarse modifications sgrid fine result direction "
                               "\"first axis\" sections 0+1\n";
    ASSERT_TRUE(run(script));
    auto* data = new Lodex::GridCoarseningData;
    EXPECT_TRUE(data->add_modification(Lodex::UGridIndex3d::I, 1, 2, 2));
    ASSERT_TRUE(Lodex::SGridUpgriddingActivityData::create_upgridding_activity(find_grid("fine result"),
                                                                               find_grid("coarse modifications"), data));
    ASSERT_TRUE(run("lodex on SGrid fine result create_coarsening_activity C modifications 1+1+2+2\n"
                    "lodex rename object fine result name other\n"
                    "lodex on SGrid other create_coarsening_activity C modifications 1+3+4+2"));
    const std::string replayed = journal();
    Lodex::GeobaseLib::instance()->clear();
    EXPECT_TRUE(run(replayed));
    EXPECT_EQ(report("coarse modifications")["activities"].size(), 1u);
    const auto* activity = Lodex::SGridGridCoarseningModificationActivityData::get_coarsening_activity(find_grid("other"), "C");
    ASSERT_NE(activity, nullptr);
    EXPECT_EQ(report("other")["activities"].size(), 2u);
}

TEST_F(GridVerbs, FlowUnitsOfRegionsTakeJoinedListsLikeAllOthers)
{
    add_box("Box", {1, 1, 6});
    ASSERT_TRUE(run("lodex on SGrid Box define_region R property PORO max 2\n"
                    "lodex on SGrid Box define_region Upper Reef property PORO min 4 max 5"));
    const auto units = [](const std::string& region) {
        const auto r = result("lodex on SGrid Box flow_units property PORO region " + region +
                              " method \"number of flow units\" value 2");
        return r.message.empty() ? r.answer : r.message;
    };
    const std::string both = units("R+Upper Reef");
    EXPECT_EQ(both.find("error"), std::string::npos);
    EXPECT_NE(both.find("6\t"), std::string::npos) << both;
    for (const char* list : {"R + Upper Reef", "R+Upper+Reef", "\"Upper Reef\"+R", "R++Upper Reef+", "all_regions"})
        EXPECT_EQ(units(list), both) << list;
    EXPECT_NE(units("everywhere"), both);
    EXPECT_EQ(units("R + everywhere"), units("everywhere"));
    EXPECT_NE(units("region_0").find("cannot be worked out for region \"region_0\""), std::string::npos);
}

TEST_F(GridVerbs, MakingAndFillingALargeGridCanBeStopped)
{
    const auto stopped = [](const std::string& statement, double at_least) {
        const StopAt stop(4); // the first questions come before the work
        const auto status = result(statement).status;
        EXPECT_GE(stop.last(), at_least) << statement;
        return status == StatementStatus::Cancelled;
    };
    EXPECT_TRUE(stopped("lodex create sgrid name Box size 100+100+100 spacing 1+1+1", 0.2));
    EXPECT_EQ(find_grid("Box"), nullptr);
    ASSERT_TRUE(run("lodex create sgrid name Box size 200+200+50 spacing 1+1+1"));
    EXPECT_TRUE(stopped("lodex on SGrid Box fill_property A lognormal 1+1", 0.2));
    EXPECT_TRUE(model("Box").properties.empty());
    ASSERT_TRUE(run("lodex on SGrid Box fill_property A value 1"));
    EXPECT_TRUE(stopped("lodex on SGrid Box define_region R property A min 0", 0.2));
    EXPECT_TRUE(model("Box").regions.empty());
}

TEST_F(GridVerbs, PaintedSectionsAreAnAttributeThatIsReplacedWhole)
{
    add_box("Box", {2, 3, 4});
    Lodex::Style* style = find_grid("Box")->style();
    ASSERT_NE(style, nullptr);
    ASSERT_TRUE(run("lodex on Style Box set attribute *sections value \" 4 3 1 0 3 1 3 1 0 0 2 0 0\" ;lodex on Style Box update ;lodex update all cameras"));
    EXPECT_EQ(style->attribute("*sections").str(), " 4 3 1 0 3 1 3 1 0 0 2 0 0");
    ASSERT_TRUE(run("lodex on Style Box set attribute *sections value \" 3 1 0 0 2 0 0 3 0 0\";lodex on Style Box update ;lodex update all cameras"));
    EXPECT_EQ(style->attribute("*sections").str(), " 3 1 0 0 2 0 0 3 0 0");
    EXPECT_TRUE(Interpreter::instance().journal().empty()) << "painting is not journalled";

    ASSERT_TRUE(run("lodex on Style Box set attribute *sections value \"3 3 1 4 1 1 1 2 1 -1\""));
    EXPECT_EQ(style->attribute("*sections").str(), " 1 1 1 1");
    EXPECT_EQ(messages.of(Lodex::LogLevel::Warning), Texts{"painted sections outside the grid are left out: 2\n"});
    // The long count times three and one is 3 in 64 bits.
    for (const char* bad : {"", "2 1 1 0", "1 4 1 0", "1 1 2 0", "1 1 1 x", "-1", "6148914691236517206 1 1", "1 1 1 0 1 1"})
        EXPECT_NE(error(std::string("lodex on Style Box set attribute *sections value \"") + bad + "\""), "no error") << bad;
    EXPECT_EQ(style->attribute("*sections").str(), " 1 1 1 1");
}

TEST_F(GridVerbs, TheStyleOfAGridDoesNotCountAsATakenName)
{
    add_box("Box", {1, 1, 1});
    EXPECT_NE(Lodex::GeobaseLib::instance()->find("Box", Lodex::Style::static_type_id_()), nullptr);
    EXPECT_TRUE(run("lodex destroy objects Box"));
    EXPECT_EQ(Lodex::GeobaseLib::instance()->find("Box", Lodex::Style::static_type_id_()), nullptr);
    EXPECT_FALSE(Lodex::GeobaseLib::instance()->is_name_used("Box"));
}

TEST_F(GridVerbs, ActivitiesComposeRecordsThroughDestroyedTemporaries)
{
    add_box("Fine", {4, 6, 8});
    ASSERT_TRUE(run("lodex sgrid_merge_multiple_sections name _tmp sgrid Fine direction \"first axis\" sections 0+1+2+3\n"
                    "lodex sgrid_merge_multiple_sections name Coarse sgrid _tmp direction \"vertical\" sections 0+2+3+5+6+7\n"
                    "lodex destroy objects _tmp"));
    EXPECT_EQ(find_grid("Coarse")->sgrid_activity_model(), nullptr);
    auto* data = new Lodex::GridCoarseningData;
    EXPECT_TRUE(data->add_modification(Lodex::UGridIndex3d::I, 1, 4, 2));
    EXPECT_TRUE(data->add_modification(Lodex::UGridIndex3d::K, 1, 8, 3));
    auto* activity = Lodex::SGridUpgriddingActivityData::create_upgridding_activity(find_grid("Fine"), find_grid("Coarse"), data);
    ASSERT_NE(activity, nullptr);
    EXPECT_EQ(activity->coarsening_data().modifications().size(), 2u);
    EXPECT_EQ(find_grid("Coarse")->sgrid_activity_model()->activities().size(), 1u);
    EXPECT_EQ(find_grid("Fine")->sgrid_activity_model()->activities().size(), 1u);
    EXPECT_EQ(report("Coarse")["activities"][0]["modifications"], "1+1+4+2+3+1+8+3");
    EXPECT_EQ(Interpreter::instance().journal().back(),
              "lodex on SGrid Fine create_upgridding_activity result \"Coarse\" modifications 1+1+4+2+3+1+8+3");

    // The journal line does the same.
    const std::string script = journal();
    Lodex::GeobaseLib::instance()->clear();
    add_box("Fine", {4, 6, 8});
    EXPECT_TRUE(run(script));
    EXPECT_EQ(report("Coarse")["activities"].size(), 1u);
}

TEST_F(GridVerbs, NoActivityWithoutARecordOrWithOtherSizes)
{
    using Activity = Lodex::SGridUpgriddingActivityData;
    add_box("Fine", {4, 6, 8});
    add_box("Stranger", {2, 6, 3});
    ASSERT_TRUE(run("lodex sgrid_merge_multiple_sections name Coarse sgrid Fine direction \"first axis\" sections 0+1+2+3"));
    const auto data = [](long step) {
        auto* d = new Lodex::GridCoarseningData;
        d->add_modification(Lodex::UGridIndex3d::I, 1, 4, step);
        return d;
    };
    EXPECT_EQ(Activity::create_upgridding_activity(find_grid("Fine"), find_grid("Stranger"), data(2)), nullptr);
    EXPECT_EQ(Activity::create_upgridding_activity(find_grid("Coarse"), find_grid("Fine"), data(2)), nullptr);
    EXPECT_EQ(Activity::create_upgridding_activity(find_grid("Fine"), find_grid("Coarse"), data(4)), nullptr);
    EXPECT_EQ(Activity::create_upgridding_activity(nullptr, find_grid("Coarse"), data(2)), nullptr);
    EXPECT_EQ(Activity::create_upgridding_activity(find_grid("Fine"), nullptr, data(2)), nullptr);
    EXPECT_EQ(Activity::create_upgridding_activity(find_grid("Fine"), find_grid("Coarse"), nullptr), nullptr);
    EXPECT_NE(error("lodex on SGrid Fine create_upgridding_activity result Stranger modifications 1+1+4+2"), "no error");
    EXPECT_NE(error("lodex on SGrid Fine create_upgridding_activity result Coarse modifications 1+1+4"), "no error");
    EXPECT_NE(error("lodex on SGrid Fine create_upgridding_activity result Coarse modifications 4+1+4+2"), "no error");
    EXPECT_EQ(find_grid("Fine")->sgrid_activity_model(), nullptr);
    // A grid of the same name made anew is another grid.
    ASSERT_TRUE(run("lodex destroy objects Fine"));
    add_box("Fine", {4, 6, 8});
    EXPECT_EQ(Activity::create_upgridding_activity(find_grid("Fine"), find_grid("Coarse"), data(2)), nullptr);
}

TEST_F(GridVerbs, NamedCoarseningsAreKeptAndApplied)
{
    using Activity = Lodex::SGridGridCoarseningModificationActivityData;
    add_box("Fine", {4, 2, 8});
    auto* data = new Lodex::GridCoarseningData;
    data->add_modification(Lodex::UGridIndex3d::K, 1, 4, 4);
    Activity* activity = Activity::create_coarsening_activity(find_grid("Fine"), "Plan 1", data);
    ASSERT_NE(activity, nullptr);
    EXPECT_EQ(Activity::get_coarsening_activity(find_grid("Fine"), "Plan 1"), activity);
    EXPECT_EQ(Activity::get_coarsening_activity(find_grid("Fine"), "Plan 2"), nullptr);
    EXPECT_EQ(Activity::create_coarsening_activity(find_grid("Fine"), "Plan 1", new Lodex::GridCoarseningData), nullptr) << "taken";
    EXPECT_EQ(Activity::create_coarsening_activity(find_grid("Fine"), "", new Lodex::GridCoarseningData), nullptr);

    EXPECT_TRUE(activity->grid_coarsening_data()->add_modification(Lodex::UGridIndex3d::K, 5, 8, 2));
    EXPECT_FALSE(activity->grid_coarsening_data()->add_modification(Lodex::UGridIndex3d::K, 5, 8, 2)) << "identical ones are kept once";
    EXPECT_TRUE(run("lodex on SGrid Fine apply_coarsening \"Plan 1\" name Coarse"));
    EXPECT_EQ(model("Coarse").size, (GridSize{4, 2, 3}));
    EXPECT_NE(error("lodex on SGrid Fine apply_coarsening \"Plan 2\" name Coarse 2"), "no error");

    // A replay of the journal has the activity whole.
    std::string script;
    for (const std::string& statement : Interpreter::instance().journal())
        script += statement + "\n";
    Lodex::GeobaseLib::instance()->clear();
    add_box("Fine", {4, 2, 8});
    EXPECT_TRUE(run(script));
    EXPECT_EQ(model("Coarse").size, (GridSize{4, 2, 3}));
    EXPECT_NE(error("lodex on SGrid Fine create_coarsening_activity \"Plan 1\" modifications 3+4+6+3"), "no error") << "overlaps";
}

TEST_F(GridVerbs, SetsAPropertyFromAFileOfNumbers)
{
    add_box("Box", {2, 1, 2});
    EXPECT_TRUE(run("lodex on SGrid Box set_property A file \"" + write("a.txt", "1 2.5\n-3e-1\t4\n") + "\""));
    EXPECT_EQ(value("Box", "A", 1, 0, 0), 2.5);
    EXPECT_EQ(value("Box", "A", 0, 0, 1), -0.3);
    EXPECT_EQ(value("Box", "A", 1, 0, 1), 4);

    const double raw[4] = {1.25, -2, 1e300, 4};
    EXPECT_TRUE(run("lodex on SGrid Box set_property B file \"" +
                    write("b.bin", std::string(reinterpret_cast<const char*>(raw), sizeof raw)) + "\""));
    EXPECT_EQ(value("Box", "B", 0, 0, 1), 1e300);

    EXPECT_NE(error("lodex on SGrid Box set_property C file \"" + write("c.txt", "1 2 3") + "\"").find("c.txt: holds 3 values; expected 4"), std::string::npos);
    EXPECT_NE(error("lodex on SGrid Box set_property C file \"" + write("d.txt", "1 2 3 4\n5") + "\"").find("d.txt:2: holds more than 4 values; expected 4"), std::string::npos);
    EXPECT_NE(error("lodex on SGrid Box set_property C file \"" + write("e.txt", "1 2\nthree 4") + "\"").find("e.txt:2: \"three\" is no finite number"), std::string::npos);
    EXPECT_NE(error("lodex on SGrid Box set_property C file \"" + write("f.txt", "1 inf 3 4") + "\"").find("f.txt:1: \"inf\" is no finite number"), std::string::npos);
    EXPECT_NE(error("lodex on SGrid Box set_property C file \"" + write("n.txt", "1 2\n3 nan") + "\"").find("n.txt:2: \"nan\" is no finite number"), std::string::npos);
    const double bad[4] = {1, 2, std::nan(""), 4};
    EXPECT_NE(error("lodex on SGrid Box set_property C file \"" +
                    write("n.bin", std::string(reinterpret_cast<const char*>(bad), sizeof bad)) + "\"")
                  .find("n.bin: value 3 is \"nan\", which is no finite number"),
              std::string::npos);
    EXPECT_NE(error("lodex on SGrid Box set_property C file \"" + write("g.bin", std::string("\x01\x02\x03", 3)) + "\"").find("g.bin: holds 3 bytes; expected 4 doubles"), std::string::npos);
    EXPECT_NE(error("lodex on SGrid Box set_property C file \"/nowhere/x\"").find("/nowhere/x: cannot be read"), std::string::npos);
    EXPECT_EQ(model("Box").find_property("C"), nullptr);
}

TEST_F(GridVerbs, ExportsAndImports)
{
    ASSERT_TRUE(run("lodex create example name Field size 10+8+6 seed 2"));
    const std::string path = (folder / "field.grdecl").string();
    ASSERT_TRUE(run("lodex export sgrid Field file \"" + path + "\"\nlodex import file \"" + path + "\" name Again"));
    EXPECT_EQ(model("Again").zcorn, model("Field").zcorn);
    EXPECT_EQ(model("Again").active, model("Field").active);
    EXPECT_EQ(model("Again").regions.size(), model("Field").regions.size());
    EXPECT_EQ(model("Again").layers.size(), model("Field").layers.size());
    EXPECT_EQ(report("Again")["properties"], report("Field")["properties"]);
    EXPECT_NE(error("lodex import file \"/nowhere/x.grdecl\" name A"), "no error");
    EXPECT_NE(error("lodex import file \"" + path + "\" name Field"), "no error") << "taken";
    EXPECT_NE(error("lodex export sgrid Field file \"" + path + ".xyz\""), "no error");
    const std::string bad_format = "lodex export sgrid Field file \"" + path + "\" format ";
    EXPECT_TRUE(error(bad_format + "nothing").starts_with("1:" + std::to_string(bad_format.size() + 1) + ": "))
        << error(bad_format + "nothing");
    EXPECT_EQ(find_grid("A"), nullptr);

    const std::string json = (folder / "report.json").string();
    ASSERT_TRUE(run("lodex report sgrid Field file \"" + json + "\""));
    std::ifstream in(json);
    EXPECT_EQ(nlohmann::json::parse(in), report("Field"));
    EXPECT_NE(error("lodex report sgrid Field file \"/nowhere/x.json\""), "no error");
}

TEST_F(GridVerbs, ImportsPropertiesForAGridThatIsThere)
{
    add_box("Box", {2, 1, 2});
    const std::string path = write("poro.grdecl", "PORO\n 4*0.25 /\nNTG\n 1 2*0.5 1 /\n");
    ASSERT_TRUE(run("lodex on SGrid Box import_properties file \"" + path + "\""));
    EXPECT_EQ(value("Box", "PORO", 0, 0, 1), 0.25);
    EXPECT_EQ(value("Box", "NTG", 1, 0, 0), 0.5);
    EXPECT_EQ(model("Box").properties.size(), 3u);
    EXPECT_NE(error("lodex on SGrid Box import_properties file \"" + write("bad.grdecl", "PORO\n 5*0.25 /\n") + "\""), "no error");
}

TEST_F(GridVerbs, TheCatalogueGridAnswersTheHostInterface)
{
    add_box("Box", {2, 3, 4});
    const Lodex::SGrid* grid = find_grid("Box");
    EXPECT_EQ(grid->cube()->nu(), 3);
    EXPECT_EQ(grid->cube()->nv(), 4);
    EXPECT_EQ(grid->cube()->nw(), 5);
    EXPECT_EQ(grid->cube()->nb_cells(), 24);
    EXPECT_EQ(grid->property_alignment(), Lodex::GridObj::Cells);
    EXPECT_EQ(grid->bulk_volumes().size(), 24u);
    EXPECT_DOUBLE_EQ(grid->bulk_volumes()[23], 1);
    Lodex::PropertyDB* properties = grid->property_db();
    EXPECT_EQ(properties->nb_properties(), 2);
    EXPECT_EQ(properties->property_name(1).str(), "CODE");
    EXPECT_EQ(properties->property_name(2).str(), "");
    EXPECT_EQ(properties->property(-1), nullptr);
    EXPECT_EQ(properties->property_index("CODE"), 1);
    EXPECT_EQ(properties->property_index("GONE"), -1);
    EXPECT_TRUE(properties->find("CODE")->discrete());
    const Lodex::Style* style = properties->find("PORO")->style();
    find_grid("Box")->change([](GridModel& m) { std::swap(m.properties[0], m.properties[1]); });
    EXPECT_EQ(properties->find("PORO")->style(), style) << "a property that stays keeps its style object";
    EXPECT_EQ(std::get<std::span<const double>>(properties->find("PORO")->values())[0], 1);

    const Lodex::SGridSubset subset(grid, 23);
    long ni = 0, nj = 0, nk = 0, i = 0, j = 0, k = 0;
    subset.get_property_dimensions(Lodex::GridObj::Cells, ni, nj, nk);
    Lodex::SGridSubset::components(subset.index(), i, j, k, ni, nj);
    EXPECT_EQ((std::array{ni, nj, nk, i, j, k}), (std::array{2L, 3L, 4L, 1L, 2L, 3L}));
    subset.get_property_dimensions(Lodex::GridObj::Points, ni, nj, nk);
    EXPECT_EQ((std::array{ni, nj, nk}), (std::array{3L, 4L, 5L}));
}

TEST_F(GridVerbs, LocatesPointsInBentCells)
{
    ASSERT_TRUE(run("lodex create example name Field size 8+6+5 seed 4"));
    const GridModel& m = model("Field");
    int located = 0;
    for (std::int64_t k = 0; k < m.size[2]; ++k) {
        for (std::int64_t j = 0; j < m.size[1]; ++j) {
            for (std::int64_t i = 0; i < m.size[0]; ++i) {
                const CellCorners corners = cell_corners(m, i, j, k);
                if (!m.active[static_cast<std::size_t>(m.cell_index(i, j, k))] || cell_volume(corners) < 1)
                    continue;
                std::array<double, 3> uvw{};
                ASSERT_TRUE(find_grid("Field")->cube()->local_coordinates(cell_centre(corners), uvw));
                EXPECT_NEAR(uvw[0] * static_cast<double>(m.size[0]), static_cast<double>(i) + 0.5, 1e-6);
                EXPECT_NEAR(uvw[1] * static_cast<double>(m.size[1]), static_cast<double>(j) + 0.5, 1e-6);
                EXPECT_NEAR(uvw[2] * static_cast<double>(m.size[2]), static_cast<double>(k) + 0.5, 1e-6);
                ++located;
            }
        }
    }
    EXPECT_GT(located, 100);
    std::array<double, 3> uvw{7, 7, 7};
    EXPECT_FALSE(find_grid("Field")->cube()->local_coordinates({-1e6, 0, 0}, uvw));
    EXPECT_EQ(uvw[0], 7);
}
