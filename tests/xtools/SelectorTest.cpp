#include "ListedObject.h"

#include <Lodex/xtools/LQObjectSelectors.h>

#include <gtest/gtest.h>

#include <QSignalSpy>

#include <memory>

using Lodex::GeobaseLib;
using Lodex::LQGObjContextSelector;
using Lodex::LQGObjSelector;

TEST(ObjectSelector, ListsTheCatalogueAndSelectsNothing)
{
    Catalogue catalogue;
    Catalogue::add("B");
    Catalogue::add("A", ListedObject::derived_type());
    Catalogue::add("X", ListedObject::other_type());
    LQGObjSelector selector(ListedObject::type_of_tests());
    EXPECT_EQ(selector.items(), QStringList({"B", "A"})) << "in order of creation, derived types as well";
    EXPECT_TRUE(selector.currentText().isEmpty());
    EXPECT_EQ(selector.currentIndex(), -1);
}

TEST(ObjectSelector, StaysSilentWhenOthersComeAndGo)
{
    Catalogue catalogue;
    Catalogue::add("A");
    GeobaseLib* lib = GeobaseLib::instance();
    Lodex::GObj* b = Catalogue::add("B");
    LQGObjSelector selector(ListedObject::type_of_tests());
    selector.setSelectedItems({"B"});
    QSignalSpy selection(&selector, &Lodex::LQMultiComboBox::selectionChanged);
    QSignalSpy text(&selector, &QComboBox::currentTextChanged);
    QSignalSpy activated(&selector, &QComboBox::textActivated);

    Lodex::GObj* c = Catalogue::add("C");
    EXPECT_EQ(selector.items(), QStringList({"A", "B", "C"}));
    lib->rename(c, "D");
    EXPECT_EQ(selector.items(), QStringList({"A", "B", "D"}));
    lib->destroy(lib->find("A", ListedObject::type_of_tests()));
    EXPECT_EQ(selector.items(), QStringList({"B", "D"}));
    Catalogue::add("X", ListedObject::other_type());
    EXPECT_EQ(selector.items(), QStringList({"B", "D"}));
    EXPECT_EQ(selector.currentText(), "B");
    EXPECT_EQ(selection.count(), 0);
    EXPECT_EQ(text.count(), 0);
    EXPECT_EQ(activated.count(), 0);

    b->notify();
    EXPECT_EQ(selection.count(), 0);
}

TEST(ObjectSelector, SelectsNothingWhenItsObjectGoes)
{
    Catalogue catalogue;
    Catalogue::add("A");
    Lodex::GObj* b = Catalogue::add("B");
    LQGObjSelector selector(ListedObject::type_of_tests());
    selector.setSelectedItems({"B"});
    QSignalSpy selection(&selector, &Lodex::LQMultiComboBox::selectionChanged);
    GeobaseLib::instance()->destroy(b);
    EXPECT_EQ(selector.items(), QStringList("A"));
    EXPECT_TRUE(selector.currentText().isEmpty());
    EXPECT_EQ(selector.currentIndex(), -1);
    EXPECT_EQ(selection.count(), 1);
    Catalogue::add("B");
    EXPECT_TRUE(selector.currentText().isEmpty()) << "another object of that name is not the old one";
    EXPECT_EQ(selection.count(), 1);
}

TEST(ObjectSelector, FollowsANewName)
{
    Catalogue catalogue;
    Lodex::GObj* a = Catalogue::add("A");
    Catalogue::add("B");
    LQGObjSelector selector(ListedObject::type_of_tests());
    selector.setSelectedItems({"A"});
    QSignalSpy selection(&selector, &Lodex::LQMultiComboBox::selectionChanged);
    GeobaseLib::instance()->rename(a, "a\\1 (new)");
    EXPECT_EQ(selector.items(), QStringList({"a\\1 (new)", "B"}));
    EXPECT_EQ(selector.currentText(), "a\\1 (new)");
    EXPECT_EQ(selection.count(), 1) << "whoever holds the name must hear of it";
}

TEST(ObjectSelector, ClearedCatalogueEmptiesTheList)
{
    Catalogue catalogue;
    Catalogue::add("A");
    Catalogue::add("B");
    LQGObjSelector selector(ListedObject::type_of_tests());
    selector.setSelectedItems({"A"});
    QSignalSpy selection(&selector, &Lodex::LQMultiComboBox::selectionChanged);
    GeobaseLib::instance()->clear();
    EXPECT_EQ(selector.count(), 0);
    EXPECT_EQ(selection.count(), 1);
}

TEST(ObjectSelector, KeepsSeveralSelectedObjects)
{
    Catalogue catalogue;
    Lodex::GObj* a = Catalogue::add("A");
    Lodex::GObj* b = Catalogue::add("B");
    Catalogue::add("C");
    LQGObjSelector selector(ListedObject::type_of_tests());
    selector.setMultiSelection(true);
    selector.setSelectedItems({"A", "B", "C"});
    QSignalSpy selection(&selector, &Lodex::LQMultiComboBox::selectionChanged);
    GeobaseLib::instance()->destroy(a);
    EXPECT_EQ(selector.currentText(), "B+C");
    GeobaseLib::instance()->rename(b, "E");
    EXPECT_EQ(selector.currentText(), "E+C");
    EXPECT_EQ(selection.count(), 2);
}

TEST(ObjectSelector, DeadSelectorIsForgotten)
{
    Catalogue catalogue;
    {
        const LQGObjSelector selector(ListedObject::type_of_tests());
    }
    Catalogue::add("A");
    const LQGObjSelector selector(ListedObject::type_of_tests());
    EXPECT_EQ(selector.items(), QStringList("A"));
}

TEST(ContextSelector, PutsEverywhereOnTopOfRegionsAndSelectsIt)
{
    Catalogue catalogue;
    ListedObject* grid = Catalogue::add("G");
    grid->lists["regions_plus"] = {"all_regions", "East", "West"};
    LQGObjContextSelector selector("regions_plus");
    EXPECT_EQ(selector.contextKey(), Lodex::CString("regions_plus"));
    QSignalSpy selection(&selector, &Lodex::LQMultiComboBox::selectionChanged);
    selector.setObject(grid);
    EXPECT_EQ(selector.object(), grid);
    EXPECT_EQ(selector.items(), QStringList({"everywhere", "all_regions", "East", "West"}));
    EXPECT_EQ(selector.currentText(), "everywhere");
    EXPECT_EQ(selection.count(), 1);

    selector.setSelectedItems({"West"});
    grid->lists["regions_plus"] = {"all_regions", "North", "West"};
    grid->notify();
    EXPECT_EQ(selector.currentText(), "West");
    EXPECT_EQ(selection.count(), 2) << "silent when the selection comes back";
    grid->lists["regions_plus"] = {"all_regions", "North"};
    grid->notify();
    EXPECT_EQ(selector.currentText(), "everywhere");
    EXPECT_EQ(selection.count(), 3);
}

TEST(ContextSelector, RegionCalledEverywhereIsNotListedTwice)
{
    Catalogue catalogue;
    ListedObject* grid = Catalogue::add("G");
    grid->lists["regions_plus"] = {"all_regions", "everywhere"};
    LQGObjContextSelector selector("regions_plus");
    selector.setObject(grid);
    EXPECT_EQ(selector.items().count("everywhere"), 1);
}

TEST(ContextSelector, KeepsPropertiesThatAreStillThere)
{
    Catalogue catalogue;
    ListedObject* first = Catalogue::add("G");
    ListedObject* second = Catalogue::add("H");
    first->lists["properties1d"] = {"PORO", "PERMX", "NTG"};
    second->lists["properties1d"] = {"NTG", "SWAT", "PORO"};
    LQGObjContextSelector selector("properties1d");
    selector.setMultiSelection(true);
    selector.setObject(first);
    EXPECT_EQ(selector.items(), QStringList({"PORO", "PERMX", "NTG"}));
    EXPECT_EQ(selector.currentText(), "PORO") << "the first one where nothing was remembered";
    selector.setSelectedItems({"NTG", "PORO"});
    QSignalSpy selection(&selector, &Lodex::LQMultiComboBox::selectionChanged);
    selector.setObject(second);
    EXPECT_EQ(selector.currentText(), "NTG+PORO");
    EXPECT_EQ(selection.count(), 0) << "the same set";
    first->lists["properties1d"].clear();
    first->notify();
    EXPECT_EQ(selector.count(), 3) << "the former object is not followed any more";
}

TEST(ContextSelector, NoObjectNoNames)
{
    Catalogue catalogue;
    ListedObject* grid = Catalogue::add("G");
    grid->lists["properties1d"] = {"PORO"};
    LQGObjContextSelector selector("properties1d");
    selector.setObject(grid);
    selector.setObject(nullptr);
    EXPECT_EQ(selector.count(), 0);
    EXPECT_TRUE(selector.currentText().isEmpty());
    selector.setObject(grid);
    QSignalSpy selection(&selector, &Lodex::LQMultiComboBox::selectionChanged);
    GeobaseLib::instance()->destroy(grid);
    EXPECT_EQ(selector.object(), nullptr);
    EXPECT_EQ(selector.count(), 0);
    EXPECT_EQ(selection.count(), 1);
}

TEST(ContextSelector, DeadSelectorIsForgotten)
{
    Catalogue catalogue;
    ListedObject* grid = Catalogue::add("G");
    auto selector = std::make_unique<LQGObjContextSelector>("properties1d");
    selector->setObject(grid);
    selector.reset();
    grid->notify();
    LQGObjContextSelector other("properties1d");
    other.setObject(grid);
    EXPECT_EQ(other.object(), grid);
}
