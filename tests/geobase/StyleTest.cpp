#include "NamedObject.h"

#include <gtest/gtest.h>

using namespace Lodex;
using Names = std::vector<std::string>;

namespace {

class Recorder : public StyleObserver {
public:
    explicit Recorder(Names& events) : events_(events) {}
    void update(StyleInfo* info) override
    {
        events_.push_back("update " + info->attribute.str());
        if (react)
            react();
    }
    void disconnect() override { events_.push_back("disconnect"); }

    std::function<void()> react;

private:
    Names& events_;
};

} // namespace

TEST(Style, AttributesAreStoredWhole)
{
    Style style("grid");
    EXPECT_EQ(style.attribute("*sections"), CString());
    style.set_attribute("*sections", " 3 1 0 0 2 0 0 3 0 0");
    style.set_attribute("*sections", " 1 3 1 4");
    EXPECT_EQ(style.attribute("*sections"), CString(" 1 3 1 4"));
    style.set_attribute("colormap", "rainbow");
    COSNameList names;
    names.append("stale");
    style.name_list("attributes", names);
    ASSERT_EQ(names.count(), 2);
    EXPECT_EQ(names.name(0), CString("*sections"));
    EXPECT_EQ(names.name(1), CString("colormap"));
    style.name_list("other", names);
    EXPECT_EQ(names.count(), 0);
}

TEST(Style, UpdateTellsWhatWasSetSinceTheLastOne)
{
    Names events;
    Recorder observer(events);
    Style style("grid");
    style.attach_style(&observer);
    style.attach_style(&observer);
    style.set_attribute("low_clip", "0");
    EXPECT_TRUE(events.empty());
    style.update();
    EXPECT_EQ(events, Names{"update low_clip"});
    style.update();
    EXPECT_EQ(events.size(), 1u) << "nothing was set";
    style.set_attribute("low_clip", "1");
    style.set_attribute("low_clip", "2");
    style.update();
    EXPECT_EQ(events.back(), "update low_clip");
    style.set_attribute("low_clip", "3");
    style.set_attribute("high_clip", "4");
    style.update();
    EXPECT_EQ(events, (Names{"update low_clip", "update low_clip", "update "}));
    style.detach_style(&observer);
    style.set_attribute("low_clip", "5");
    style.update();
    EXPECT_EQ(events.size(), 3u);
}

TEST(Style, UpdateReachesObserversOfTheObjectToo)
{
    class Follower : public GObjObserver {
    public:
        void update(Component*) override { ++updates; }
        int updates = 0;
    } follower;
    Style style("grid");
    follower.observe(&style);
    style.update();
    EXPECT_EQ(follower.updates, 0);
    style.set_attribute("a", "1");
    style.update();
    EXPECT_EQ(follower.updates, 1);
}

TEST(Style, CopyLeavesPaintedSectionsOut)
{
    Style source("a"), target("b");
    source.set_attribute("colormap", "rainbow");
    source.set_attribute("low_clip", "0.1");
    source.set_attribute("*sections", " 1 3 1 4");
    target.set_attribute("*sections", " 1 1 1 0");
    target.set_attribute("low_clip", "9");
    target.set_attribute("own", "kept");
    target.update();
    Names events;
    Recorder observer(events);
    target.attach_style(&observer);
    target.copy_attributes(source);
    EXPECT_EQ(target.attribute("colormap"), CString("rainbow"));
    EXPECT_EQ(target.attribute("low_clip"), CString("0.1"));
    EXPECT_EQ(target.attribute("*sections"), CString(" 1 1 1 0"));
    EXPECT_EQ(target.attribute("own"), CString("kept"));
    EXPECT_TRUE(events.empty());
    target.update();
    EXPECT_EQ(events, Names{"update "});
    target.copy_attributes(target);
    target.update();
    EXPECT_EQ(events.size(), 1u);
    target.detach_style(&observer);
}

TEST(Style, ObserversHearWhenItGoes)
{
    Names events;
    Recorder observer(events);
    auto style = std::make_unique<Style>("grid");
    style->attach_style(&observer);
    style.reset();
    EXPECT_EQ(events, Names{"disconnect"});
}

TEST(Style, AnObserverMayDetachOthersOrDestroyTheStyle)
{
    Names events;
    auto style = std::make_unique<Style>("grid");
    Recorder first(events), second(events);
    style->attach_style(&first);
    style->attach_style(&second);
    first.react = [&] { style->detach_style(&second); };
    style->set_attribute("a", "1");
    style->update();
    EXPECT_EQ(events, Names{"update a"});
    style->attach_style(&second);
    first.react = [&] { style.reset(); };
    style->set_attribute("a", "1");
    style->update();
    EXPECT_EQ(events, (Names{"update a", "update a", "disconnect", "disconnect"}));
    EXPECT_EQ(style, nullptr);
}

TEST(Style, AnObserverMaySetAndUpdateAgain)
{
    Names events;
    Style style("grid");
    Recorder observer(events);
    style.attach_style(&observer);
    int rounds = 0;
    observer.react = [&] {
        if (++rounds == 1) {
            style.set_attribute("b", "2");
            style.update();
        }
    };
    style.set_attribute("a", "1");
    style.update();
    EXPECT_EQ(events, (Names{"update a", "update b"}));
    style.detach_style(&observer);
}
