#include <Lodex/gviews/Camera.h>
#include <Lodex/gviews/Picking.h>

#include <lodex/utils/CameraList.h>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <vector>

using Lodex::GraphicLib;

namespace {

class Tool : public Lodex::CameraToolAction {
public:
    explicit Tool(std::function<void()> pick = {}, bool* deleted = nullptr) : pick_(std::move(pick)), deleted_(deleted)
    {
    }
    ~Tool() override
    {
        if (deleted_)
            *deleted_ = true;
    }
    void on_pick() override
    {
        ++picks;
        if (pick_)
            pick_();
    }
    int picks = 0;

private:
    std::function<void()> pick_;
    bool* deleted_;
};

struct Nothing : Lodex::GraphicSelection {
    [[nodiscard]] Lodex::GObj* object() const override { return nullptr; }
    [[nodiscard]] const Lodex::PickInfo* pick_info() const override { return nullptr; }
};

struct Watcher : Lodex::ToolObserver {
    explicit Watcher(std::function<void(Lodex::CameraToolAction*)> then = {}) : then_(std::move(then))
    {
        GraphicLib::instance()->attach(this);
    }
    ~Watcher() override { GraphicLib::instance()->detach(this); }
    void tool_changed(Lodex::CameraToolAction* tool) override
    {
        seen.push_back(tool);
        if (then_)
            then_(tool);
    }
    std::vector<Lodex::CameraToolAction*> seen;

private:
    std::function<void(Lodex::CameraToolAction*)> then_;
};

/// Leaves the library as it was.
struct GraphicLibTest : testing::Test {
    void TearDown() override { GraphicLib::instance()->reset_tool(); }
    GraphicLib* lib = GraphicLib::instance();
};

class View : public Lodex::Camera {
public:
    explicit View(std::function<void()> then = {}) : then_(std::move(then)) { lodex::add_camera(this); }
    ~View() override { lodex::remove_camera(this); }
    View(const View&) = delete;
    View& operator=(const View&) = delete;
    void request_update() override
    {
        ++updates;
        if (then_)
            then_();
    }
    int updates = 0;

private:
    std::function<void()> then_;
};

} // namespace

TEST_F(GraphicLibTest, HoldsTheCurrentTool)
{
    EXPECT_EQ(lib->tool(), nullptr);
    bool deleted = false;
    auto* tool = new Tool({}, &deleted);
    lib->set_tool(tool);
    EXPECT_EQ(lib->tool(), tool);
    EXPECT_EQ(tool->references(), 1);
    lib->set_tool(tool);
    EXPECT_EQ(tool->references(), 1) << "setting it again changes nothing";
    lib->reset_tool();
    EXPECT_EQ(lib->tool(), nullptr);
    EXPECT_TRUE(deleted) << "nobody else held it";
}

TEST_F(GraphicLibTest, ExecutingAToolMakesItCurrent)
{
    const Lodex::Ref<Tool> first = new Tool;
    const Lodex::Ref<Tool> second = new Tool;
    first->execute();
    EXPECT_EQ(lib->tool(), first.get());
    second->execute();
    EXPECT_EQ(lib->tool(), second.get());
    EXPECT_EQ(first->references(), 1) << "the former tool is let go";
}

TEST_F(GraphicLibTest, PickReachesTheToolWithItsSelection)
{
    const Nothing selection;
    const Lodex::GraphicSelection* seen = nullptr;
    const Lodex::Ref<Tool> tool = new Tool([&] { seen = lib->selection(); });
    lib->pick(&selection); // the default tool
    EXPECT_EQ(tool->picks, 0);
    lib->set_tool(tool.get());
    lib->pick(&selection);
    EXPECT_EQ(tool->picks, 1);
    EXPECT_EQ(seen, &selection);
    EXPECT_EQ(lib->selection(), nullptr) << "ends with the call";
    lib->pick(nullptr);
    EXPECT_EQ(tool->picks, 2);
    EXPECT_EQ(seen, nullptr);
}

TEST_F(GraphicLibTest, OneShotToolMayResetItself)
{
    bool deleted = false;
    bool alive_after_reset = false;
    lib->set_tool(new Tool(
        [&] {
            lib->reset_tool();
            alive_after_reset = !deleted;
        },
        &deleted));
    const Nothing selection;
    lib->pick(&selection);
    EXPECT_TRUE(alive_after_reset);
    EXPECT_TRUE(deleted);
    EXPECT_EQ(lib->tool(), nullptr);
}

TEST_F(GraphicLibTest, SelectionEndsWhenTheToolThrows)
{
    const Nothing selection;
    lib->set_tool(new Tool([] { throw 1; }));
    EXPECT_THROW(lib->pick(&selection), int);
    EXPECT_EQ(lib->selection(), nullptr);
}

TEST_F(GraphicLibTest, ObserversHearOfEveryChange)
{
    const Lodex::Ref<Tool> tool = new Tool;
    Watcher watcher;
    lib->attach(&watcher); // twice has no further effect
    lib->set_tool(tool.get());
    lib->set_tool(tool.get());
    lib->reset_tool();
    lib->reset_tool();
    EXPECT_EQ(watcher.seen, (std::vector<Lodex::CameraToolAction*>{tool.get(), nullptr}));
}

TEST_F(GraphicLibTest, ObserversMayDetachDuringTheCall)
{
    std::unique_ptr<Watcher> victim;
    int victim_calls = 0;
    Watcher first([&](Lodex::CameraToolAction*) { victim.reset(); });
    victim = std::make_unique<Watcher>([&](Lodex::CameraToolAction*) { ++victim_calls; });
    const Lodex::Ref<Tool> tool = new Tool;
    lib->set_tool(tool.get());
    EXPECT_EQ(first.seen.size(), 1u);
    EXPECT_EQ(victim_calls, 0) << "taken out before its turn";
}

TEST(CameraList, UpdatesEveryCamera)
{
    EXPECT_EQ(lodex::update_all_cameras(), 0) << "none is no error";
    View first, second;
    lodex::add_camera(&first); // twice has no further effect
    lodex::add_camera(nullptr);
    EXPECT_EQ(lodex::update_all_cameras(), 2);
    EXPECT_EQ(first.updates, 1);
    EXPECT_EQ(second.updates, 1);
}

TEST(CameraList, CamerasMayGoMeanwhile)
{
    std::unique_ptr<View> victim;
    View first([&] { victim.reset(); });
    victim = std::make_unique<View>();
    EXPECT_EQ(lodex::update_all_cameras(), 1);
    EXPECT_EQ(lodex::update_all_cameras(), 1);
    EXPECT_EQ(first.updates, 2);
}
