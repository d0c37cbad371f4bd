// Files of earlier formats.

#include "ProjectFixture.h"
#include "SealedFile.h"

#include "lodex/project/ProjectFile.h"
#include "lodex/volumes/ActivityModel.h"

#include <nlohmann/json.hpp>

namespace {

using namespace lodex;
using nlohmann::json;

class Migration : public ProjectFixture {};

/// Contents as format 1 wrote them: one unit for both directions, the journal as one text, and with each grid copies of
/// its activities.
json as_format_1(json contents)
{
    contents["unit"] = contents["units"]["vertical"];
    contents.erase("units");
    std::string journal;
    for (const json& statement : contents["journal"])
        journal += statement.get<std::string>() + "\n";
    contents["journal"] = journal;
    for (json& grid : contents["grids"]) {
        json copies = json::array();
        for (const json& position : grid["activities"])
            copies.push_back(contents["activities"][position.get<std::size_t>()]);
        grid["activities"] = copies;
    }
    contents.erase("activities");
    return contents;
}

TEST_F(Migration, AFileOfFormat1OpensAsOneOfThePresentFormat)
{
    ASSERT_TRUE(run("lodex create example name fine size 6+4+4\n"
                    "lodex sgrid_merge_multiple_sections name coarse sgrid fine direction vertical sections 0+1\n"
                    "lodex on SGrid fine create_upgridding_activity result coarse modifications 3+1+2+2\n"
                    "lodex on SGrid fine create_coarsening_activity Plan modifications 1+1+4+2\n"
                    "lodex on SGrid coarse create_coarsening_activity Plan modifications 1+1+4+2"));
    set_project_units(LengthUnit::Foot, LengthUnit::Foot);
    const auto models = all_models();
    const std::string script = journal();
    save_project(file("new"));
    const std::string present = bytes_of(file("new"));
    write_bytes(file("old"), with_contents(present, as_format_1(json::parse(contents_of(present))).dump(), 1));
    start_anew();
    open_project(file("old"));
    expect_models(models);
    EXPECT_EQ(journal(), script);
    EXPECT_EQ(project_horizontal_unit(), LengthUnit::Foot);
    EXPECT_EQ(project_vertical_unit(), LengthUnit::Foot);
    const auto fine = find_grid("fine")->activities().activities(), coarse = find_grid("coarse")->activities().activities();
    ASSERT_EQ(fine.size(), 2u);
    ASSERT_EQ(coarse.size(), 2u);
    EXPECT_EQ(fine[0], coarse[0]) << "copies of one relation are one again";
    EXPECT_NE(fine[1], coarse[1]) << "plans of the same text belong to their grids";

    // It is written in the present format; of the arrays not one was decoded.
    save_project(file("old"));
    EXPECT_EQ(ProjectFile(file("old")).format(), project_format);
    start_anew();
    open_project(file("old"));
    expect_models(models);
}

TEST_F(Migration, AFileOfFormat1ThatLacksWhatItsFormatSays)
{
    save_project(file("new"));
    const std::string present = bytes_of(file("new"));
    for (const char* key : {"unit", "journal", "grids"}) {
        json contents = as_format_1(json::parse(contents_of(present)));
        contents.erase(key);
        write_bytes(file("old"), with_contents(present, contents.dump(), 1));
        EXPECT_NE(open_error(file("old")).find("its table of contents is damaged"), std::string::npos) << key;
    }
    write_bytes(file("old"), with_contents(present, contents_of(present), 1));
    EXPECT_NE(open_error(file("old")), "") << "contents of format 2 that say they are of format 1";
}

} // namespace
