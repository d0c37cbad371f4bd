#include "GridFixture.h"

#include <Lodex/geobase/Property.h>
#include <Lodex/geobase/Region.h>
#include <Lodex/geobase/Style.h>

using namespace lodex;

namespace {

class ItemVerbs : public GridFixture {
protected:
    ItemVerbs()
    {
        EXPECT_TRUE(run("lodex create sgrid name Box size 2+3+4 spacing 10+20+5;"
                        "lodex on SGrid Box fill_property PORO value 0.25;"
                        "lodex on SGrid Box fill_property PERM lognormal 100+1 seed 4;"
                        "lodex on SGrid Box define_region low property PORO max 1;"
                        "lodex on SGrid Box define_region high property PERM min 0"));
        Interpreter::instance().clear_journal();
    }
    static std::vector<std::string> properties()
    {
        std::vector<std::string> names;
        for (const PropertyData& property : find_grid("Box")->model().properties)
            names.push_back(property.name);
        return names;
    }
    static std::vector<std::string> regions()
    {
        std::vector<std::string> names;
        for (const RegionData& region : find_grid("Box")->model().regions)
            names.push_back(region.name);
        return names;
    }
};

using Texts = std::vector<std::string>;

} // namespace

TEST_F(ItemVerbs, ARenamedPropertyKeepsItsPlaceItsValuesAndItsColours)
{
    CornerPointGrid* const grid = find_grid("Box");
    const auto values = grid->model().properties[1].values;
    grid->property_db()->find("PERM")->style()->set_attribute("*low_clip", "3.5");
    ASSERT_TRUE(run("lodex on SGrid Box rename_property PERM name \"Perm of I\""));
    EXPECT_EQ(properties(), (Texts{"PORO", "Perm of I"}));
    EXPECT_EQ(grid->model().properties[1].values, values);
    EXPECT_EQ(grid->property_db()->find("PERM"), nullptr);
    ASSERT_NE(grid->property_db()->find("Perm of I"), nullptr);
    EXPECT_EQ(grid->property_db()->find("Perm of I")->style()->attribute("*low_clip"), "3.5");
    EXPECT_EQ(Interpreter::instance().journal(), (Texts{"lodex on SGrid Box rename_property PERM name \"Perm of I\""}));
}

TEST_F(ItemVerbs, ADestroyedPropertyIsGoneAndTheOthersStay)
{
    ASSERT_TRUE(run("lodex on SGrid Box destroy_property PORO"));
    EXPECT_EQ(properties(), Texts{"PERM"});
    EXPECT_EQ(find_grid("Box")->property_db()->find("PERM")->values().index(),
              find_grid("Box")->model().properties[0].values.index());
    ASSERT_TRUE(run("lodex on SGrid Box destroy_property PERM"));
    EXPECT_TRUE(properties().empty());
    EXPECT_EQ(regions(), (Texts{"low", "high"})) << "a region stands by itself";
}

TEST_F(ItemVerbs, RegionsAreRenamedAndDestroyed)
{
    const auto flags = find_grid("Box")->model().regions[0].flags;
    ASSERT_TRUE(run("lodex on SGrid Box rename_region low name tight"));
    EXPECT_EQ(regions(), (Texts{"tight", "high"}));
    EXPECT_EQ(find_grid("Box")->model().regions[0].flags, flags);
    ASSERT_TRUE(run("lodex on SGrid Box destroy_region high"));
    EXPECT_EQ(regions(), Texts{"tight"});
    EXPECT_EQ(find_grid("Box")->nb_regions(), 1);
    EXPECT_EQ(find_grid("Box")->region(0)->name(), "tight");
}

TEST_F(ItemVerbs, WhatIsNotThereOrTakenIsRefusedAndNothingChanges)
{
    EXPECT_NE(error("lodex on SGrid Box rename_property SWAT name X").find("\"SWAT\""), std::string::npos);
    EXPECT_NE(error("lodex on SGrid Box destroy_property SWAT").find("\"SWAT\""), std::string::npos);
    EXPECT_NE(error("lodex on SGrid Box rename_region none name X").find("no region \"none\""), std::string::npos);
    EXPECT_NE(error("lodex on SGrid Box destroy_region none").find("no region \"none\""), std::string::npos);
    EXPECT_NE(error("lodex on SGrid Box rename_property PORO name PERM").find("has a property \"PERM\" already"),
              std::string::npos);
    EXPECT_NE(error("lodex on SGrid Box rename_region low name high").find("has a region \"high\" already"),
              std::string::npos);
    EXPECT_NE(error("lodex on SGrid Box rename_property PORO"), "no error") << "the new name is missing";
    EXPECT_EQ(properties(), (Texts{"PORO", "PERM"}));
    EXPECT_EQ(regions(), (Texts{"low", "high"}));
    EXPECT_TRUE(Interpreter::instance().journal().empty());
}
