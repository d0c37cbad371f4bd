#include "NamedObject.h"

#include <gtest/gtest.h>

using namespace Lodex;
using Names = std::vector<std::string>;

namespace {

class Recorder : public ComponentObserver {
public:
    explicit Recorder(Names& events, std::string mark) : events_(events), mark_(std::move(mark)) {}
    void update(Component*) override { hear("update"); }
    void disconnect(Component*) override { hear("disconnect"); }
    void renamed(Component*) override { hear("renamed"); }

    std::function<void()> react;

private:
    void hear(const std::string& event)
    {
        events_.push_back(mark_ + " " + event);
        if (react)
            react();
    }
    Names& events_;
    std::string mark_;
};

} // namespace

TEST(Component, TellsInOrderOfAttachment)
{
    Names events;
    Recorder a(events, "a"), b(events, "b");
    {
        Component component;
        component.attach(&a);
        component.attach(&b);
        component.attach(&a);
        component.attach(nullptr);
        component.notify();
        component.notify_renamed();
        component.detach(&a);
        component.notify();
        component.detach(&a);
    }
    EXPECT_EQ(events, (Names{"a update", "b update", "a renamed", "b renamed", "b update", "b disconnect"}));
}

TEST(Component, ObserversMayDetachEachOtherDuringACall)
{
    Names events;
    Component component;
    Recorder a(events, "a"), b(events, "b"), c(events, "c");
    for (Recorder* observer : {&a, &b, &c})
        component.attach(observer);
    a.react = [&] {
        component.detach(&a);
        component.detach(&b);
    };
    component.notify();
    EXPECT_EQ(events, (Names{"a update", "c update"}));
    component.detach(&c);
}

TEST(Component, AnObserverAttachedDuringACallWaitsForTheNext)
{
    Names events;
    Component component;
    Recorder a(events, "a"), b(events, "b");
    component.attach(&a);
    a.react = [&] { component.attach(&b); };
    component.notify();
    EXPECT_EQ(events, Names{"a update"});
    component.notify();
    EXPECT_EQ(events, (Names{"a update", "a update", "b update"}));
    component.detach(&a);
    component.detach(&b);
}

TEST(Component, AnObserverMayDestroyTheComponentDuringACall)
{
    Names events;
    auto component = std::make_unique<Component>();
    Recorder a(events, "a"), b(events, "b");
    component->attach(&a);
    component->attach(&b);
    a.react = [&] { component.reset(); };
    component->notify();
    EXPECT_EQ(events, (Names{"a update", "a disconnect", "b disconnect"}));
}

TEST(Component, CallsNest)
{
    Names events;
    Component component;
    Recorder a(events, "a"), b(events, "b");
    component.attach(&a);
    component.attach(&b);
    int depth = 0;
    a.react = [&] {
        if (++depth == 1)
            component.notify_renamed();
    };
    component.notify();
    EXPECT_EQ(events, (Names{"a update", "a renamed", "b renamed", "b update"}));
    component.detach(&a);
    component.detach(&b);
}

TEST(Component, ObserversMayDetachEachOtherWhenTheComponentGoes)
{
    Names events;
    Recorder a(events, "a"), b(events, "b");
    {
        Component component;
        component.attach(&a);
        component.attach(&b);
        a.react = [&] { component.detach(&b); };
    }
    EXPECT_EQ(events, Names{"a disconnect"});
}

namespace {

class Follower : public GObjObserver {
public:
    void update(Component*) override { ++updates; }
    int updates = 0;
};

} // namespace

TEST(GObjObserver, CopiesFollowTheSameObject)
{
    auto object = std::make_unique<NamedObject>("a");
    Follower first;
    first.observe(object.get());
    Follower second(first), third;
    third = first;
    object->notify();
    EXPECT_EQ(first.updates, 1);
    EXPECT_EQ(second.updates, 1);
    EXPECT_EQ(third.updates, 1);
    third.observe(nullptr);
    {
        const Follower passing(first);
    }
    object->notify();
    EXPECT_EQ(second.updates, 2);
    EXPECT_EQ(third.updates, 1);
    object.reset();
    EXPECT_EQ(first.observed(), nullptr);
    EXPECT_EQ(second.observed(), nullptr);
}

TEST(TypeId, KnowsItsBases)
{
    EXPECT_TRUE(box_type().is_a(shape_type()));
    EXPECT_TRUE(box_type().is_a(box_type()));
    EXPECT_FALSE(shape_type().is_a(box_type()));
    EXPECT_FALSE(box_type().is_a(Style::static_type_id_()));
    EXPECT_EQ(Style::static_type_id_().name(), CString("Style"));
}
