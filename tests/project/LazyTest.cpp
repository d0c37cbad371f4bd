// Arrays come when they are asked for, from a file that may have gone or changed meanwhile.

#include "ProjectFixture.h"

#include <Lodex/geobase/Property.h>
#include <Lodex/geobase/Region.h>
#include <Lodex/utils/COSNameList.h>
#include <Lodex/volumes/SGridCube.h>

#include <cmath>
#include <limits>

namespace {

using namespace lodex;

constexpr GridArray pillars{GridArray::Pillars}, depths{GridArray::CornerDepths}, active{GridArray::ActiveFlags};
constexpr GridArray poro{GridArray::PropertyValues, 0}, code{GridArray::PropertyValues, 1}, upper{GridArray::RegionFlags, 0};

class Lazy : public ProjectFixture {
protected:
    Lazy()
    {
        add_box("Box", {4, 3, 5});
        EXPECT_TRUE(run("lodex on SGrid Box define_region Upper property CODE max 1"));
        models = all_models();
        save_project(file());
        start_anew();
        open_project(file());
        messages.clear();
    }
    static const CornerPointGrid& box() { return *find_grid("Box"); }
    static std::vector<bool> there()
    {
        std::vector<bool> result;
        for (const GridArray& array : {pillars, depths, active, poro, code, upper})
            result.push_back(box().pending().is_there(array));
        return result;
    }
    /// Spoils the first stored bytes of an array in place.
    void spoil(const std::string& path) const
    {
        std::string bytes = bytes_of(file());
        const std::string contents = bytes.substr(bytes.find("{\"activities\""));
        const std::size_t array = contents.rfind("\"chunk_count\"", contents.find('"' + path + '"'));
        const std::size_t entry = contents.find("\"chunks\":[", array);
        const std::size_t place = std::stoul(contents.substr(entry + 10));
        std::fstream out(file(), std::ios::in | std::ios::out | std::ios::binary);
        out.seekp(static_cast<std::streamoff>(place + 3));
        out.put(static_cast<char>(bytes[place + 3] ^ 0x55));
    }

    std::vector<std::pair<std::string, GridModel>> models;
};

TEST_F(Lazy, OpeningAndListingReadNoArray)
{
    const std::vector<bool> none(6, false);
    EXPECT_EQ(there(), none);
    Lodex::COSNameList names;
    box().name_list("properties", names);
    box().name_list("regions_plus", names);
    EXPECT_EQ(box().cube()->nu(), 5);
    EXPECT_EQ(box().property_db()->property(1)->discrete(), true);
    EXPECT_EQ(box().find_region("Upper")->is_model_region(), false);
    EXPECT_TRUE(run("lodex on SGrid Box create_coarsening_activity Plan modifications 3+1+2+2"));
    EXPECT_TRUE(run("lodex on Style Box set attribute colour value red\n"
                    "lodex rename object Box name Crate; lodex rename object Crate name Box"));
    EXPECT_TRUE(project_changed());
    EXPECT_EQ(there(), none);
}

TEST_F(Lazy, EachAccessorBringsItsOwnPart)
{
    (void)box().property_db()->property(1)->values();
    EXPECT_EQ(there(), (std::vector<bool>{false, false, false, false, true, false}));
    EXPECT_EQ(box().find_region("Upper")->flags().size(), 60u);
    EXPECT_EQ(there(), (std::vector<bool>{false, false, false, false, true, true}));
    EXPECT_DOUBLE_EQ(box().bulk_volumes()[7], 1.0);
    EXPECT_EQ(there(), (std::vector<bool>{true, true, false, false, true, true}));
    EXPECT_EQ(box().active_flags().size(), 60u);
    EXPECT_FALSE(box().pending().complete());
    const void* const former = box().active_flags().data();
    expect_models(models);
    EXPECT_TRUE(box().pending().complete());
    EXPECT_EQ(box().pending().source(), nullptr) << "the file is closed";
    EXPECT_EQ(box().active_flags().data(), former) << "spans stay valid";
}

TEST_F(Lazy, AStatementBringsWhatItNeedsAndChangesWork)
{
    ASSERT_TRUE(run("lodex on SGrid Box fill_property Q value 3"));
    EXPECT_TRUE(box().pending().complete());
    EXPECT_EQ(box().model().properties.size(), 3u);
    EXPECT_EQ(value("Box", "PORO", 3, 2, 4), 60);
}

TEST_F(Lazy, AFileThatIsRemovedOrReplacedStillServes)
{
    write_bytes(file("other"), "something else");
    std::filesystem::rename(file("other"), file());
    expect_models(models);
    EXPECT_TRUE(messages.of(Lodex::LogLevel::Error).empty());
}

TEST_F(Lazy, AStatementOnADamagedArrayFailsAndChangesNothing)
{
    spoil("/grids/0/properties/0");
    const std::string message = error("lodex on SGrid Box fill_property PORO value 1");
    EXPECT_NE(message.find("/grids/0/properties/0 is damaged or was changed"), std::string::npos) << message;
    EXPECT_EQ(box().header().properties.size(), 2u);
    EXPECT_NE(error("lodex report sgrid Box").find("is damaged or was changed"), std::string::npos) << "each time";
    // What is whole is still there, and can be seen.
    EXPECT_EQ(std::get<2>(box().property_db()->property(1)->values())[59], 4);
}

TEST_F(Lazy, AWindowGetsUndefinedValuesForADamagedArrayAndOneMessage)
{
    spoil("/grids/0/properties/0");
    spoil("/grids/0/corner_depths");
    const auto values = std::get<1>(box().property_db()->property(0)->values());
    ASSERT_EQ(values.size(), 60u);
    EXPECT_TRUE(std::ranges::all_of(values, [](double v) { return std::isnan(v); }));
    (void)box().model();
    (void)box().model();
    EXPECT_TRUE(std::isnan(box().corner_depths()[0]));
    EXPECT_EQ(messages.of(Lodex::LogLevel::Error).size(), 2u) << "one for each array";
    // No statement computes with them, and no project is written without them.
    EXPECT_NE(error("lodex on SGrid Box fill_property Q value 1").find("damaged"), std::string::npos);
    const std::string before = bytes_of(file());
    EXPECT_NE(error("lodex save project \"" + file().string() + "\"").find("part of it is lost"), std::string::npos);
    EXPECT_EQ(bytes_of(file()), before);
    EXPECT_TRUE(run("lodex destroy objects Box; lodex save project \"" + file().string() + "\""));
}

TEST_F(Lazy, WhatIsLostIsGoneOnceItIsTakenAway)
{
    spoil("/grids/0/properties/0");
    EXPECT_NE(error("lodex on SGrid Box fill_property Q value 1"), "no error");
    ASSERT_TRUE(run("lodex on SGrid Box destroy_property PORO")) << error("lodex report sgrid Box");
    EXPECT_TRUE(run("lodex on SGrid Box fill_property PORO value 1; lodex save project \"" + file().string() + "\""));
    models[0].second.properties.erase(models[0].second.properties.begin());
    EXPECT_EQ(box().model().properties.size(), 2u);
    EXPECT_EQ(box().model().properties[0].values, models[0].second.properties[0].values);
    EXPECT_EQ(value("Box", "PORO", 3, 2, 4), 1);
}

TEST_F(Lazy, WhatIsLostStaysLostWhenOthersAreTakenAway)
{
    spoil("/grids/0/properties/1");
    ASSERT_TRUE(run("lodex on SGrid Box destroy_property PORO; lodex on SGrid Box destroy_region Upper"));
    EXPECT_EQ(messages.of(Lodex::LogLevel::Error).size(), 1u);
    EXPECT_EQ(std::get<2>(box().property_db()->property(0)->values())[0], std::numeric_limits<std::int32_t>::min());
    EXPECT_NE(error("lodex save project \"" + file("other").string() + "\"").find("part of it is lost"), std::string::npos);
    EXPECT_FALSE(std::filesystem::exists(file("other")));
}

TEST_F(Lazy, DamageIsFoundWhenUnreadArraysAreCopied)
{
    spoil("/grids/0/active_flags");
    const std::string before = bytes_of(file());
    const std::string message = error("lodex save project \"" + file().string() + "\"");
    EXPECT_NE(message.find("/grids/0/active_flags is damaged"), std::string::npos) << message;
    EXPECT_EQ(bytes_of(file()), before);
}

TEST_F(Lazy, AFileThatBecameShorter)
{
    std::filesystem::resize_file(file(), 600);
    EXPECT_NE(error("lodex report sgrid Box").find("the file has become shorter"), std::string::npos);
}

TEST_F(Lazy, ThereIsOnlySoMuchToAskForWhileAnArrayComes)
{
    // A progress check may draw a window that asks for the array that is on its way.
    int calls = 0;
    box().load([&](double) {
        ++calls;
        return box().model().cells() == 60;
    });
    EXPECT_GE(calls, 1);
    expect_models(models);
}

TEST_F(Lazy, LoadingCanBeStopped)
{
    EXPECT_THROW(box().load([](double) { return false; }), Lodex::Cancelled);
    EXPECT_EQ(there(), std::vector<bool>(6, false));
    expect_models(models);
}

} // namespace
