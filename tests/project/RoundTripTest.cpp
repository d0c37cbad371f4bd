// What goes into a project file comes out of it, bit for bit.

#include "ProjectFixture.h"

#include "lodex/volumes/ActivityModel.h"

#include <Lodex/geobase/Property.h>
#include <Lodex/geobase/Style.h>

#include <tbb/global_control.h>

#include <bit>
#include <limits>

namespace {

using namespace lodex;

/// The file without its first lines and without the time, which stands in the contents and as an attribute.
std::string without_time(std::string bytes)
{
    for (std::size_t at = 0; (at = bytes.find("Z", at)) != std::string::npos; ++at) {
        if (at >= 19 && bytes[at - 9] == 'T' && bytes[at - 12] == '-')
            bytes.replace(at - 19, 20, 20, '.');
    }
    return bytes.substr(512);
}

class RoundTrip : public ProjectFixture {
protected:
    /// A small example field, coarsened, refined and upscaled, with activities and styles.
    static void make_field()
    {
        ASSERT_TRUE(run("lodex create example name fine size 12+10+8\n"
                        "lodex sgrid_merge_multiple_sections name _tmp sgrid fine direction \"first axis\" sections 0+1+2+3\n"
                        "lodex sgrid_merge_multiple_sections name coarse sgrid _tmp direction \"vertical\" sections 0+1 "
                        "copy_regions 1\n"
                        "lodex destroy objects _tmp\n"
                        "lodex sgrid_subdivide_multiple_sections name finer sgrid coarse direction \"vertical\" sections "
                        "0+1+proportional+\n"
                        "lodex on SGrid fine create_upgridding_activity result coarse modifications 1+1+4+2+3+1+2+2\n"
                        "lodex on SGrid coarse create_downgridding_activity result finer modifications "
                        "3+1+1+2+0+proportional\n"
                        "lodex on SGrid fine create_coarsening_activity \"My plan\" modifications 1+1+4+2"));
        set_project_units(LengthUnit::Metre, LengthUnit::Foot);
        style_of("coarse").set_attribute("colour", "#12ff34");
        style_of("coarse").set_attribute("*sections", "1 1 1 0");
        style_of("fine", "PORO").set_attribute("legend min", "0.05");
        style_of("fine", "PORO").set_attribute("largeur é", "drei\nZeilen \xE2\x82\xAC");
        Lodex::GeobaseLib::instance()->add(std::make_unique<Lodex::Style>("by itself"));
        static_cast<Lodex::Style*>(Lodex::GeobaseLib::instance()->find("by itself", Lodex::Style::static_type_id_()))
            ->set_attribute("a", "b");
    }
    static Lodex::SGridActivity* activity(const std::string& grid, std::size_t n)
    {
        const auto list = find_grid(grid)->activities().activities();
        return n < list.size() ? list[n] : nullptr;
    }
};

TEST_F(RoundTrip, AFieldWithAllThatWasDoneToIt)
{
    make_field();
    const auto models = all_models();
    const std::string script = journal();
    const auto relation = find_grid("finer")->relation_to(*find_grid("fine"));
    ASSERT_TRUE(relation);
    save_project(file());
    EXPECT_FALSE(project_changed());
    EXPECT_EQ(project_path(), std::filesystem::absolute(file()));

    start_anew();
    messages.clear();
    add_box("in the way", {2, 2, 2});
    open_project(file());
    expect_models(models);
    EXPECT_EQ(journal(), script);
    EXPECT_EQ(project_horizontal_unit(), LengthUnit::Metre);
    EXPECT_EQ(project_vertical_unit(), LengthUnit::Foot);
    EXPECT_EQ(find_grid("finer")->relation_to(*find_grid("fine")), relation);
    EXPECT_EQ(find_grid("fine")->relation_to(*find_grid("coarse")), std::nullopt);

    ASSERT_EQ(find_grid("fine")->activities().activities().size(), 2u);
    ASSERT_EQ(find_grid("coarse")->activities().activities().size(), 2u);
    EXPECT_EQ(activity("fine", 0), activity("coarse", 0)) << "one activity of two grids";
    EXPECT_EQ(activity("coarse", 1), activity("finer", 0));
    EXPECT_EQ(activity("fine", 0)->name().str(), "fine -> coarse");
    EXPECT_EQ(to_text(static_cast<Lodex::SGridUpgriddingActivityData*>(activity("fine", 0))->coarsening_data()),
              "1+1+4+2+3+1+2+2");
    EXPECT_EQ(to_text(static_cast<Lodex::SGridDowngriddingActivityData*>(activity("finer", 0))->refinement_data()),
              "3+1+1+2+0+proportional");
    auto* plan = Lodex::SGridGridCoarseningModificationActivityData::get_coarsening_activity(find_grid("fine"), "My plan");
    ASSERT_NE(plan, nullptr);
    EXPECT_TRUE(plan->grid_coarsening_data()->add_modification(Lodex::UGridIndex3d::K, 1, 2, 2));
    EXPECT_EQ(Interpreter::instance().journal().back(),
              "lodex on SGrid fine create_coarsening_activity \"My plan\" modifications 3+1+2+2");

    EXPECT_EQ(style_of("coarse").attribute("colour").str(), "#12ff34");
    EXPECT_EQ(style_of("coarse").attribute("*sections").str(), "1 1 1 0");
    EXPECT_EQ(style_of("fine", "PORO").attributes().size(), 2u);
    EXPECT_EQ(style_of("fine", "PORO").attribute("largeur é").str(), "drei\nZeilen \xE2\x82\xAC");
    const auto* free = static_cast<Lodex::Style*>(
        Lodex::GeobaseLib::instance()->find("by itself", Lodex::Style::static_type_id_()));
    ASSERT_NE(free, nullptr);
    EXPECT_EQ(free->attribute("a").str(), "b");
    EXPECT_TRUE(messages.of(Lodex::LogLevel::Warning).empty());
}

TEST_F(RoundTrip, TheJournalOfAnOpenedProjectMakesItAgain)
{
    make_field();
    save_project(file());
    start_anew();
    ASSERT_TRUE(run("lodex open project \"" + file().string() + "\"\n"
                    "lodex on SGrid coarse fill_property P value 2\n"
                    "lodex save project \"" + file("again").string() + "\""));
    const auto models = all_models();
    const std::string script = journal();
    EXPECT_EQ(script.find("project"), std::string::npos) << "opening and saving are no part of it";
    start_anew();
    ASSERT_TRUE(run(script));
    expect_models(models);
}

TEST_F(RoundTrip, RecordsLeadThroughGridsThatAreGone)
{
    make_field();
    ASSERT_TRUE(run("lodex destroy objects coarse"));
    save_project(file());
    start_anew();
    open_project(file());
    ASSERT_TRUE(find_grid("finer")->relation_to(*find_grid("fine")));
    EXPECT_EQ(find_grid("finer")->activities().activities().size(), 1u) << "the other grid of the activity is gone";
    // A new grid of the gone one's name is not taken for it, and new records compose with old ones.
    ASSERT_TRUE(run("lodex create sgrid name coarse size 10+10+4 spacing 1+1+1\n"
                    "lodex sgrid_merge_multiple_sections name last sgrid finer direction \"second axis\" sections 0+1"));
    EXPECT_EQ(find_grid("finer")->relation_to(*find_grid("coarse")), std::nullopt);
    EXPECT_TRUE(find_grid("last")->relation_to(*find_grid("fine")));
}

TEST_F(RoundTrip, WhateverValuesThereAre)
{
    GridModel model = make_box({1, 1, 1}, {1, 1, 1}, {1e6, -0.0, 1234.5678901234567});
    model.active = {0};
    const auto bits = [](std::uint64_t n) { return std::bit_cast<double>(n); };
    PropertyData points{.name = "Druck an Knoten", .unit = "bar \xC2\xB2"};
    points.on_points = true;
    points.no_data = bits(0x7FF80000DEADBEEF);
    points.values = std::vector<double>{bits(0x7FF8000000000001), bits(0xFFF0000000000000), -0.0, 5e-324,
                                        std::numeric_limits<double>::max(), bits(0x7FF0000000000123), 1, 0.1};
    PropertyData codes{.name = "Fazi\xC3\xA8s", .unit = {}};
    codes.values = std::vector<std::int32_t>{std::numeric_limits<std::int32_t>::min()};
    codes.no_data = -999.25;
    codes.code_names = {{-5, "unter null"}, {2147483647, "\xE5\xB2\xA9"}};
    PropertyData narrow{.name = "\xE5\xB2\xA9\xE7\x9F\xB3", .unit = "\xFF\xFE no text"};
    narrow.values = std::vector<float>{std::bit_cast<float>(0x7FC01234u)};
    narrow.no_data = std::numeric_limits<double>::infinity();
    model.properties = {points, codes, narrow};
    model.regions = {{"R 1", {1}, true}, {"R 2", {0}, false}};
    model.layers = {{"Trias", 1, std::numeric_limits<float>::quiet_NaN(), Lodex::LayerInfo::ParallelToTop}};
    model.faults = {{"F\xE9" "e", {0, 0}, {-1, 5}, {0, 1L << 33}, "X-"}};
    model.kept = {{"OLD", std::string("a\0b\n\xFF", 5), "\xE9.inc", 7}, {"EMPTY", "", "", 0}};
    model.frame = {std::array<double, 6>{0, 1.5, 0, 0, 1e300, -0.0}, "METRES", "FEET", true};
    add_grid("Nummer \xE2\x91\xA0", model);
    const auto models = all_models();
    save_project(file());
    start_anew();
    open_project(file());
    expect_models(models);
}

TEST_F(RoundTrip, NothingAtAll)
{
    save_project(file());
    add_box("Box", {2, 1, 1});
    open_project(file());
    EXPECT_TRUE(all_models().empty());
    EXPECT_TRUE(Interpreter::instance().journal().empty());
    EXPECT_FALSE(project_changed());
}

TEST_F(RoundTrip, ArraysOfMoreThanOneChunkAndALastOneThatIsShort)
{
    GridModel box = make_box({70, 60, 51}, {1, 1, 1}, {0, 0, 0});
    box.properties.push_back(lognormal_property(box, "noise", 1, 1, 5));
    PropertyData steps{.name = "steps", .unit = {}};
    std::vector<std::int32_t> values(static_cast<std::size_t>(box.cells()));
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = static_cast<std::int32_t>(i / 1000);
    steps.values = std::move(values);
    box.properties.push_back(std::move(steps));
    add_grid("Box", std::move(box));
    const auto models = all_models();
    save_project(file());
    start_anew();
    open_project(file());
    expect_models(models);
}

TEST_F(RoundTrip, SavedTwiceTheContentIsTheSame)
{
    make_field();
    save_project(file("one"));
    save_project(file("two"));
    EXPECT_EQ(without_time(bytes_of(file("one"))), without_time(bytes_of(file("two"))));
}

TEST_F(RoundTrip, TheNumberOfThreadsChangesNothing)
{
    GridModel box = make_box({90, 80, 60}, {1, 1, 1}, {0, 0, 0});
    box.properties.push_back(lognormal_property(box, "noise", 1, 1, 5));
    add_grid("Box", std::move(box));
    {
        const tbb::global_control one(tbb::global_control::max_allowed_parallelism, 1);
        save_project(file("one"));
    }
    save_project(file("all"));
    EXPECT_EQ(without_time(bytes_of(file("one"))), without_time(bytes_of(file("all"))));
}

TEST_F(RoundTrip, SavedOverTheFileThatIsOpenWithArraysUnread)
{
    make_field();
    const auto models = all_models();
    save_project(file());
    start_anew();
    open_project(file());
    (void)find_grid("fine")->pillars();
    ASSERT_FALSE(find_grid("fine")->pending().complete());
    save_project(file());
    EXPECT_FALSE(find_grid("fine")->pending().complete()) << "copied as they stand";
    expect_models(models); // those in memory come from the file that lost its name
    start_anew();
    open_project(file());
    expect_models(models);
}

class Note : public ProjectPart {
public:
    Note(std::string name, std::string state) : text(std::move(state)), name_(std::move(name)) { attach_project_part(this); }
    ~Note() override { detach_project_part(this); }
    [[nodiscard]] std::string name() const override { return name_; }
    [[nodiscard]] std::string save() const override { return text; }
    void restore(const std::string& kept) override
    {
        text = kept;
        grids_at_restore = Lodex::GeobaseLib::instance()->objects(Lodex::SGrid::static_type_id_()).size();
    }

    std::string text;
    std::size_t grids_at_restore = 0;

private:
    std::string name_;
};

TEST_F(RoundTrip, PartsAreKeptAlsoByWhoDoesNotKnowThem)
{
    add_box("Box", {1, 1, 1});
    {
        const Note cameras("cameras", "{\"eye\": [1, 2]}"), panels("panels", std::string("\0\xFFx", 3));
        save_project(file());
    }
    start_anew();
    open_project(file());
    Note panels("panels", "");
    panels.text = "others";
    save_project(file());
    start_anew();
    Note cameras("cameras", "unset"), unknown("unknown", "unset");
    open_project(file());
    EXPECT_EQ(cameras.text, "{\"eye\": [1, 2]}");
    EXPECT_EQ(cameras.grids_at_restore, 1u);
    EXPECT_EQ(panels.text, "others");
    EXPECT_EQ(unknown.text, "") << "nothing kept";
}

TEST_F(RoundTrip, ChangesAreNoticed)
{
    EXPECT_FALSE(project_changed());
    ASSERT_TRUE(run("lodex create sgrid name Box size 2+2+2 spacing 1+1+1"));
    EXPECT_TRUE(project_changed());
    save_project_copy(file("copy"));
    EXPECT_TRUE(project_changed());
    EXPECT_TRUE(project_path().empty());
    save_project(file());
    EXPECT_FALSE(project_changed());
    style_of("Box").set_attribute("colour", "red");
    EXPECT_TRUE(project_changed());
    open_project(file());
    EXPECT_FALSE(project_changed());
    (void)find_grid("Box")->model();
    EXPECT_FALSE(project_changed()) << "reading is no change";
    set_project_units(LengthUnit::Foot, LengthUnit::Foot);
    EXPECT_TRUE(project_changed());
    set_project_units(LengthUnit::Metre, LengthUnit::Metre);
    EXPECT_FALSE(project_changed());
    ASSERT_TRUE(run("lodex on SGrid Box fill_property P value 1"));
    EXPECT_TRUE(project_changed());
    forget_project();
    EXPECT_FALSE(project_changed());
    EXPECT_TRUE(project_path().empty());
}

} // namespace
