#include "frame/SGridObserver.h"
#include "tests/frame/Catalogue.h"

#include <Lodex/utils/COSNameList.h>

#include <QSignalSpy>

namespace {

using Kelvane::SGridObserver;
using Lodex::LQMultiComboBox;

class GridObserver : public testing::Test {
protected:
    static SGridObserver properties_of(LQMultiComboBox& combo)
    {
        return {&combo, "properties", "all_properties", true, true, false};
    }
    static SGridObserver regions_of(LQMultiComboBox& combo)
    {
        return {&combo, "regions_plus", "region_0", false, true, false};
    }

    CleanCatalogue catalogue;
};

TEST_F(GridObserver, AGridWithoutPropertiesShowsTheExtraEntryAlone)
{
    add_box("G");
    LQMultiComboBox combo;
    combo.setMultiSelection(true);
    SGridObserver observer = properties_of(combo);
    observer.update_gobj("G");
    EXPECT_EQ(combo.items(), QStringList{"all_properties"});
    EXPECT_EQ(combo.selectedItems(), QStringList{"all_properties"});
}

TEST_F(GridObserver, ListsPropertiesBehindTheExtraEntry)
{
    auto* grid = add_box("G");
    add_property(grid, "PORO");
    add_property(grid, "PERMX");
    LQMultiComboBox combo;
    combo.setMultiSelection(true);
    SGridObserver observer = properties_of(combo);
    observer.update_gobj("G");
    EXPECT_EQ(combo.items(), (QStringList{"all_properties", "PORO", "PERMX"}));
    EXPECT_EQ(combo.currentText(), "all_properties");
}

TEST_F(GridObserver, RegionsKeepTheirOwnListWithoutTheExtraEntry)
{
    auto* grid = add_box("G");
    add_region(grid, "crest");
    LQMultiComboBox combo;
    combo.setMultiSelection(true);
    SGridObserver observer = regions_of(combo);
    observer.update_gobj("G");
    EXPECT_EQ(combo.items(), (QStringList{"all_regions", "crest"}));
    EXPECT_EQ(combo.currentText(), "all_regions");
}

TEST_F(GridObserver, ExtraEntryLastAndNeverTwice)
{
    auto* grid = add_box("G");
    add_property(grid, "all_properties");
    add_property(grid, "PORO");
    LQMultiComboBox combo;
    SGridObserver last(&combo, "properties", "none", true, false, false);
    last.update_gobj("G");
    EXPECT_EQ(combo.items(), (QStringList{"all_properties", "PORO", "none"}));
    SGridObserver first = properties_of(combo);
    first.update_gobj("G");
    EXPECT_EQ(combo.items(), (QStringList{"all_properties", "PORO"}));
}

TEST_F(GridObserver, ExtraEntryOnly)
{
    auto* grid = add_box("G");
    add_property(grid, "PORO");
    LQMultiComboBox combo;
    SGridObserver observer(&combo, "properties", "all_properties", false, false, true);
    observer.update_gobj("G");
    EXPECT_EQ(combo.items(), QStringList{"all_properties"});
    EXPECT_EQ(combo.currentText(), "all_properties");
    observer.update_gobj("nowhere");
    EXPECT_EQ(combo.count(), 0);
}

TEST_F(GridObserver, SelectionSurvivesAChangeOfTheGrid)
{
    auto* grid = add_box("G");
    add_property(grid, "PORO");
    add_property(grid, "PERMX");
    LQMultiComboBox combo;
    combo.setMultiSelection(true);
    SGridObserver observer = properties_of(combo);
    observer.update_gobj("G");
    combo.setSelectedItems({"PORO", "PERMX"});

    QSignalSpy changed(&combo, &LQMultiComboBox::selectionChanged);
    add_property(grid, "NTG");
    EXPECT_EQ(combo.items(), (QStringList{"all_properties", "PORO", "PERMX", "NTG"}));
    EXPECT_EQ(combo.selectedItems(), (QStringList{"PORO", "PERMX"}));
    EXPECT_EQ(changed.count(), 0);

    // What is left of the selection stays; the first entry does not come on top of it.
    grid->change([](lodex::GridModel& model) { model.properties.erase(model.properties.begin()); });
    EXPECT_EQ(combo.selectedItems(), QStringList{"PERMX"});
    EXPECT_EQ(changed.count(), 1);

    // Nothing is left of it: the first entry.
    grid->change([](lodex::GridModel& model) { model.properties.clear(); });
    EXPECT_EQ(combo.selectedItems(), QStringList{"all_properties"});
}

TEST_F(GridObserver, SelectionSurvivesAChangeToAnotherGrid)
{
    auto* one = add_box("G");
    add_property(one, "PORO");
    add_property(one, "PERMX");
    auto* two = add_box("H");
    add_property(two, "NTG");
    add_property(two, "PERMX");
    LQMultiComboBox combo;
    combo.setMultiSelection(true);
    SGridObserver observer = properties_of(combo);
    observer.update_gobj("G");
    combo.setSelectedItems({"PERMX"});
    observer.update_gobj("H");
    EXPECT_EQ(combo.items(), (QStringList{"all_properties", "NTG", "PERMX"}));
    EXPECT_EQ(combo.currentText(), "PERMX");

    // The former grid is not followed any more.
    add_property(one, "SWAT");
    EXPECT_EQ(combo.count(), 3);
    add_property(two, "SWAT");
    EXPECT_EQ(combo.count(), 4);
}

TEST_F(GridObserver, DestroyingTheGridEmptiesTheList)
{
    auto* grid = add_box("G");
    add_property(grid, "PORO");
    LQMultiComboBox combo;
    SGridObserver observer = properties_of(combo);
    observer.update_gobj("G");
    Lodex::GeobaseLib::instance()->destroy(grid);
    EXPECT_EQ(combo.count(), 0);
    EXPECT_TRUE(combo.currentText().isEmpty());
    EXPECT_EQ(observer.observed(), nullptr);
}

TEST_F(GridObserver, ANameWithoutAGridDetachesSilently)
{
    auto* grid = add_box("G");
    LQMultiComboBox combo;
    SGridObserver observer = properties_of(combo);
    observer.update_gobj("G");
    observer.update_gobj("");
    EXPECT_EQ(combo.count(), 0);
    EXPECT_EQ(observer.observed(), nullptr);
    add_property(grid, "PORO");
    EXPECT_EQ(combo.count(), 0);
}

TEST_F(GridObserver, AnObjectThatIsNoGridCountsAsNone)
{
    add_box("G");
    add_other_object("S");
    LQMultiComboBox combo;
    SGridObserver observer = properties_of(combo);
    observer.update_gobj("G");
    observer.update_gobj("S");
    EXPECT_EQ(combo.count(), 0);
    EXPECT_EQ(observer.observed(), nullptr);
}

TEST_F(GridObserver, CopiesFollowTheSameGrid)
{
    auto* grid = add_box("G");
    LQMultiComboBox combo;
    auto observer = std::make_unique<SGridObserver>(properties_of(combo));
    observer->update_gobj("G");
    const SGridObserver copy(*observer);
    LQMultiComboBox other;
    SGridObserver assigned(&other, "regions_plus", "x", false, false, false);
    assigned = *observer;
    EXPECT_EQ(assigned.observed(), grid);
    observer.reset();
    add_property(grid, "PORO");
    EXPECT_EQ(combo.items(), (QStringList{"all_properties", "PORO"}));
    EXPECT_EQ(other.count(), 0);
}

TEST_F(GridObserver, WithoutAComboNothingHappens)
{
    auto* grid = add_box("G");
    SGridObserver none(nullptr, "properties", "all_properties", true, true, false);
    none.update_gobj("G");
    none.clear();
    none.insert_item("x", true);
    auto combo = std::make_unique<LQMultiComboBox>();
    SGridObserver observer = properties_of(*combo);
    observer.update_gobj("G");
    combo.reset();
    add_property(grid, "PORO");
    EXPECT_EQ(observer.observed(), grid);
}

TEST_F(GridObserver, InsertAndClear)
{
    LQMultiComboBox combo;
    SGridObserver observer = properties_of(combo);
    observer.insert_item("b", false);
    observer.insert_item(Lodex::CString("c"), false);
    observer.insert_item("a", true);
    EXPECT_EQ(combo.items(), (QStringList{"a", "b", "c"}));
    observer.clear();
    EXPECT_EQ(combo.count(), 0);
}

} // namespace
