#include "NamedObject.h"

#include <Lodex/geobase/Lodex_geobase_init.h>
#include <Lodex/geobase/MapCoordinateSystem.h>
#include <Lodex/surfaces/Lodex_surfaces_init.h>

#include <lodex/geobase/ProjectUnits.h>

#include <gtest/gtest.h>

#include <stdexcept>

using namespace Lodex;
using Names = std::vector<std::string>;

namespace {

/// Writes down what it hears; an optional reaction may do anything to the catalogue.
class Recorder : public CatalogueObserver {
public:
    explicit Recorder(Names& events, std::string mark = {}) : events_(events), mark_(std::move(mark))
    {
        GeobaseLib::instance()->attach(this);
    }
    ~Recorder() override { GeobaseLib::instance()->detach(this); }
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    void object_added(GObj* object) override { hear("added " + object->name().str(), object); }
    void object_removed(GObj* object) override { hear("removed " + object->name().str(), object); }
    void object_renamed(GObj* object, const CString& former) override
    {
        hear("renamed " + former.str() + " " + object->name().str(), object);
    }

    std::function<void(GObj*)> react;

private:
    void hear(const std::string& event, GObj* object)
    {
        events_.push_back(mark_ + event);
        if (const auto once = std::exchange(react, {}))
            once(object);
    }
    Names& events_;
    std::string mark_;
};

class Follower : public GObjObserver {
public:
    explicit Follower(Names& events) : events_(events) {}
    void update(Component*) override { events_.push_back("update"); }
    void disconnect(Component* component) override
    {
        GObjObserver::disconnect(component);
        events_.push_back("disconnect");
    }
    void renamed(Component* component) override
    {
        EXPECT_EQ(component, observed());
        events_.push_back("now " + observed()->name().str());
    }

private:
    Names& events_;
};

std::string message_of(const std::function<void()>& action)
{
    try {
        action();
    } catch (const std::invalid_argument& error) {
        return error.what();
    }
    return "nothing thrown";
}

} // namespace

TEST(Catalogue, FindsByNameAndType)
{
    const CleanCatalogue catalogue;
    GObj* box = catalogue.add("a");
    GObj* shape = catalogue.add("b", shape_type());
    EXPECT_EQ(catalogue.lib->find("a", box_type()), box);
    EXPECT_EQ(catalogue.lib->find("a", shape_type()), box) << "a derived type will do";
    EXPECT_EQ(catalogue.lib->find("b", shape_type()), shape);
    EXPECT_EQ(catalogue.lib->find("b", box_type()), nullptr);
    EXPECT_EQ(catalogue.lib->find("A", box_type()), nullptr);
    EXPECT_EQ(catalogue.lib->find("", box_type()), nullptr);
}

TEST(Catalogue, ListsInOrderOfCreation)
{
    const CleanCatalogue catalogue;
    catalogue.add("z");
    catalogue.add("m", shape_type());
    catalogue.add("a");
    EXPECT_EQ(catalogue.names(box_type()), (Names{"z", "a"}));
    EXPECT_EQ(catalogue.names(shape_type()), (Names{"z", "m", "a"}));
    EXPECT_EQ(catalogue.names(Style::static_type_id_()), (Names{"z", "m", "a"}));
    EXPECT_EQ(catalogue.lib->objects(box_type()).size(), 2u);
    EXPECT_EQ(catalogue.lib->objects(box_type())[0]->name(), CString("z"));
    catalogue.lib->destroy(catalogue.lib->find("z", box_type()));
    EXPECT_EQ(catalogue.names(shape_type()), (Names{"m", "a"}));
}

TEST(Catalogue, TakenAndEmptyNamesAreRefused)
{
    const CleanCatalogue catalogue;
    GObj* first = catalogue.add("a");
    EXPECT_EQ(message_of([&] { catalogue.add("a", shape_type()); }), "The name \"a\" is taken");
    EXPECT_EQ(message_of([&] { catalogue.add(""); }), "An object of the catalogue needs a name");
    EXPECT_EQ(message_of([&] { catalogue.lib->add(nullptr); }), "An object of the catalogue needs a name");
    EXPECT_EQ(catalogue.names(shape_type()), Names{"a"});
    EXPECT_EQ(catalogue.lib->find("a", box_type()), first);
}

TEST(Catalogue, StylesAreNoTakenNames)
{
    const CleanCatalogue catalogue;
    EXPECT_FALSE(catalogue.lib->is_name_used("a"));
    auto free_style = std::make_unique<Style>("a");
    free_style->set_attribute("colour", "red");
    catalogue.lib->add(std::move(free_style));
    EXPECT_FALSE(catalogue.lib->is_name_used("a"));
    catalogue.add("a");
    EXPECT_TRUE(catalogue.lib->is_name_used("a"));
    EXPECT_EQ(catalogue.style("a")->attribute("colour"), CString("red")) << "the object takes the style that was there";
    EXPECT_EQ(catalogue.names(Style::static_type_id_()), Names{"a"});
    EXPECT_EQ(message_of([&] { catalogue.lib->add(std::make_unique<Style>("a")); }), "The name \"a\" is taken");
}

TEST(Catalogue, EveryObjectHasAStyleOfItsName)
{
    const CleanCatalogue catalogue;
    GObj* a = catalogue.add("a");
    Style* style = catalogue.style("a");
    ASSERT_NE(style, nullptr);
    EXPECT_EQ(a->style(), style);
    EXPECT_EQ(style->style(), nullptr);
    style->set_attribute("visible", "1");
    catalogue.lib->rename(a, "b");
    EXPECT_EQ(catalogue.style("a"), nullptr);
    EXPECT_EQ(catalogue.style("b"), style);
    EXPECT_EQ(style->name(), CString("b"));
    EXPECT_EQ(a->style()->attribute("visible"), CString("1"));
    catalogue.lib->destroy(a);
    EXPECT_EQ(catalogue.style("b"), nullptr);
}

TEST(Catalogue, AStyleGoesOnlyWithItsObject)
{
    const CleanCatalogue catalogue;
    catalogue.add("a");
    const std::string expected = "The style \"a\" goes with the object of its name";
    EXPECT_EQ(message_of([&] { catalogue.lib->destroy(catalogue.style("a")); }), expected);
    EXPECT_EQ(message_of([&] { catalogue.lib->rename(catalogue.style("a"), "b"); }), expected);
    EXPECT_NE(catalogue.style("a"), nullptr);
    GObj* free_style = catalogue.lib->add(std::make_unique<Style>("f"));
    catalogue.lib->rename(free_style, "g");
    EXPECT_EQ(catalogue.style("g"), free_style);
    EXPECT_EQ(message_of([&] { catalogue.lib->rename(free_style, "a"); }), "The name \"a\" is taken");
    catalogue.lib->destroy(free_style);
    EXPECT_EQ(catalogue.style("g"), nullptr);
}

TEST(Catalogue, Renaming)
{
    const CleanCatalogue catalogue;
    GObj* a = catalogue.add("a");
    catalogue.add("b");
    Names events;
    const Recorder recorder(events);
    Follower follower(events);
    follower.observe(a);
    EXPECT_EQ(message_of([&] { catalogue.lib->rename(a, "b"); }), "The name \"b\" is taken");
    EXPECT_EQ(message_of([&] { catalogue.lib->rename(a, ""); }), "An object of the catalogue needs a name");
    catalogue.lib->rename(a, "a");
    catalogue.lib->rename(nullptr, "x");
    EXPECT_TRUE(events.empty());
    catalogue.lib->rename(a, "c");
    EXPECT_EQ(events, (Names{"renamed a c", "now c"}));
    EXPECT_EQ(catalogue.names(box_type()), (Names{"c", "b"})) << "the place in the order stays";
    EXPECT_FALSE(catalogue.lib->is_name_used("a"));

    catalogue.lib->add(std::make_unique<Style>("d"));
    catalogue.lib->rename(a, "d");
    EXPECT_EQ(catalogue.names(Style::static_type_id_()), (Names{"d", "b"})) << "a style without object gives way";
}

TEST(Catalogue, DestroyTellsTheCatalogueThenTheObjectsObservers)
{
    const CleanCatalogue catalogue;
    Names events;
    Recorder recorder(events);
    GObj* a = catalogue.add("a");
    static_cast<NamedObject*>(a)->on_death = [&events] { events.push_back("death"); };
    Follower follower(events);
    follower.observe(a);
    recorder.react = [&](GObj* object) {
        EXPECT_EQ(object, a);
        EXPECT_EQ(catalogue.lib->find("a", box_type()), nullptr) << "no more to be found";
        EXPECT_FALSE(catalogue.lib->is_name_used("a"));
        EXPECT_EQ(catalogue.names(box_type()), Names{});
        EXPECT_NE(object->style(), nullptr) << "but whole, with its style";
        catalogue.lib->destroy(object); // once more: no harm
    };
    catalogue.lib->destroy(a);
    EXPECT_EQ(events, (Names{"added a", "removed a", "death", "disconnect"}));
    EXPECT_EQ(follower.observed(), nullptr);
    catalogue.lib->destroy(nullptr);
    EXPECT_EQ(events.size(), 4u);
}

TEST(Catalogue, AnObjectThatIsNotInTheCatalogueIsLeftAlone)
{
    const CleanCatalogue catalogue;
    NamedObject stray("stray");
    catalogue.lib->destroy(&stray);
    catalogue.lib->rename(&stray, "x");
    EXPECT_EQ(stray.name(), CString("stray"));
}

TEST(Catalogue, ObserversMayDestroyOthersMeanwhile)
{
    const CleanCatalogue catalogue;
    GObj* a = catalogue.add("a");
    GObj* b = catalogue.add("b");
    Names events;
    Recorder first(events, "1 "), second(events, "2 ");
    first.react = [&](GObj*) { catalogue.lib->destroy(b); };
    catalogue.lib->destroy(a);
    EXPECT_EQ(events, (Names{"1 removed a", "1 removed b", "2 removed b", "2 removed a"}));
    EXPECT_TRUE(catalogue.names(shape_type()).empty());
}

TEST(Catalogue, AnObserverMayDestroyWhatWasJustAdded)
{
    const CleanCatalogue catalogue;
    Names events;
    Recorder first(events, "1 "), second(events, "2 ");
    first.react = [&](GObj* object) { catalogue.lib->destroy(object); };
    EXPECT_EQ(catalogue.add("a"), nullptr);
    EXPECT_EQ(events, (Names{"1 added a", "1 removed a", "2 removed a"}));
    EXPECT_EQ(catalogue.style("a"), nullptr);
}

TEST(Catalogue, AnObserverMayReuseTheNameOfWhatGoes)
{
    const CleanCatalogue catalogue;
    GObj* old = catalogue.add("a");
    old->style()->set_attribute("age", "old");
    Names events;
    Recorder recorder(events);
    recorder.react = [&](GObj*) { catalogue.add("a"); };
    catalogue.lib->destroy(old);
    EXPECT_EQ(events, (Names{"removed a", "added a"}));
    EXPECT_TRUE(catalogue.lib->is_name_used("a"));
    ASSERT_NE(catalogue.style("a"), nullptr);
    EXPECT_EQ(catalogue.style("a")->attribute("age"), CString());
}

TEST(Catalogue, AnObserverMayDestroyWhatIsRenamed)
{
    const CleanCatalogue catalogue;
    GObj* a = catalogue.add("a");
    Names events;
    Recorder first(events, "1 "), second(events, "2 ");
    first.react = [&](GObj* object) { catalogue.lib->destroy(object); };
    catalogue.lib->rename(a, "b");
    EXPECT_EQ(events, (Names{"1 renamed a b", "1 removed b", "2 removed b"}));
}

TEST(Catalogue, ObserversMayComeAndGoMeanwhile)
{
    const CleanCatalogue catalogue;
    Names events;
    Recorder first(events, "1 ");
    auto second = std::make_unique<Recorder>(events, "2 ");
    std::unique_ptr<Recorder> third;
    first.react = [&](GObj*) {
        third = std::make_unique<Recorder>(events, "3 ");
        second.reset();
    };
    catalogue.add("a");
    EXPECT_EQ(events, Names{"1 added a"});
    catalogue.add("b");
    EXPECT_EQ(events, (Names{"1 added a", "1 added b", "3 added b"}));
    catalogue.lib->attach(&first); // a second time: no effect
    catalogue.lib->attach(nullptr);
    catalogue.add("c");
    EXPECT_EQ(events.size(), 5u);
}

TEST(Catalogue, AThrowingObserverLeavesNothingBehind)
{
    const CleanCatalogue catalogue;
    GObj* a = catalogue.add("a");
    int deaths = 0;
    static_cast<NamedObject*>(a)->on_death = [&deaths] { ++deaths; };
    Names events;
    Recorder recorder(events);
    recorder.react = [](GObj*) { throw std::runtime_error("observer"); };
    EXPECT_THROW(catalogue.lib->destroy(a), std::runtime_error);
    EXPECT_EQ(deaths, 1);
    EXPECT_EQ(catalogue.style("a"), nullptr);
    catalogue.add("b");
    EXPECT_EQ(events, (Names{"removed a", "added b"}));
}

TEST(Catalogue, ClearDestroysEverythingNewestFirst)
{
    const CleanCatalogue catalogue;
    catalogue.add("a");
    catalogue.add("b");
    catalogue.lib->add(std::make_unique<Style>("s"));
    Names events;
    const Recorder recorder(events);
    catalogue.lib->clear();
    EXPECT_EQ(events, (Names{"removed s", "removed b", "removed a"}));
    EXPECT_TRUE(catalogue.lib->objects(shape_type()).empty());
    EXPECT_TRUE(catalogue.lib->objects(Style::static_type_id_()).empty());
}

TEST(Catalogue, AStyleObserverMayDestroyAnotherObjectWhenTheStyleGoes)
{
    const CleanCatalogue catalogue;
    GObj* a = catalogue.add("a");
    GObj* b = catalogue.add("b");
    class Chain : public StyleObserver {
    public:
        explicit Chain(GObj* next) : next_(next) {}
        void update(StyleInfo*) override {}
        void disconnect() override { GeobaseLib::instance()->destroy(next_); }

    private:
        GObj* next_;
    } chain(b);
    a->style()->attach_style(&chain);
    catalogue.lib->destroy(a);
    EXPECT_TRUE(catalogue.names(shape_type()).empty());
}

TEST(ProjectUnits, MetresAndFeet)
{
    using lodex::LengthUnit;
    MapCoordinateSystem* system = GeobaseLib::instance()->default_map_coordinate_system();
    ASSERT_NE(system, nullptr);
    EXPECT_EQ(system->vertical_unit().name(), CString("m"));
    EXPECT_EQ(system->vertical_unit().scale(), 1.0);
    EXPECT_TRUE(system->depth_positive_down());

    lodex::set_project_units(LengthUnit::Metre, LengthUnit::Foot);
    EXPECT_EQ(system->vertical_unit().name(), CString("ft"));
    EXPECT_EQ(system->vertical_unit().scale(), 0.3048);
    EXPECT_EQ(system->horizontal_unit().scale(), 1.0);
    EXPECT_EQ(lodex::project_vertical_unit(), LengthUnit::Foot);
    EXPECT_EQ(lodex::project_horizontal_unit(), LengthUnit::Metre);

    lodex::set_project_units(LengthUnit::Foot, LengthUnit::Metre);
    EXPECT_EQ(system->horizontal_unit().name(), CString("ft"));
    EXPECT_EQ(system->vertical_unit().name(), CString("m"));
    lodex::set_project_units(LengthUnit::Metre, LengthUnit::Metre);
}

TEST(ProjectUnits, Words)
{
    using lodex::length_unit_from_word;
    using lodex::LengthUnit;
    for (const char* word : {"m", "M", "metre", "METRES", "Meters", "metric"})
        EXPECT_EQ(length_unit_from_word(word), LengthUnit::Metre) << word;
    for (const char* word : {"ft", "FEET", "foot", "Field"})
        EXPECT_EQ(length_unit_from_word(word), LengthUnit::Foot) << word;
    for (const char* word : {"", "cm", "mm", "meter s", "feets"})
        EXPECT_EQ(length_unit_from_word(word), std::nullopt) << word;
}

TEST(GeobaseInit, ComesUp)
{
    Lodex_geobase_init::initialize();
    Lodex_surfaces_init::initialize();
    EXPECT_EQ(Lodex_geobase_init::count(), 1);
    EXPECT_EQ(Lodex_surfaces_init::count(), 1);
    Lodex_surfaces_init::terminate();
    Lodex_geobase_init::terminate();
    EXPECT_EQ(Lodex_geobase_init::count(), 0);
}
