#include "DialogTest.h"

#include <Lodex/gviews/Picking.h>
#include <Lodex/volumes/SGridSubset.h>

#include <memory>

namespace {

using namespace Kelvane;
using Texts = std::vector<std::string>;

struct PointPick : Lodex::PickInfo {
    [[nodiscard]] const std::array<double, 3>* point() const override { return has_point ? &place : nullptr; }
    bool has_point = true;
    std::array<double, 3> place{};
};

struct GridPick : Lodex::SGridPickInfo {
    [[nodiscard]] const std::array<double, 3>* point() const override { return has_point ? &place : nullptr; }
    [[nodiscard]] Lodex::SGrid* grid() const override { return picked; }
    [[nodiscard]] const Lodex::SGridSubset* subset() const override { return cell.get(); }
    bool has_point = true;
    std::array<double, 3> place{};
    Lodex::SGrid* picked = nullptr;
    std::unique_ptr<Lodex::SGridSubset> cell;
};

struct Selection : Lodex::GraphicSelection {
    [[nodiscard]] Lodex::GObj* object() const override { return hit; }
    [[nodiscard]] const Lodex::PickInfo* pick_info() const override { return info; }
    Lodex::GObj* hit = nullptr;
    const Lodex::PickInfo* info = nullptr;
};

Lodex::GraphicLib& graphics()
{
    return *Lodex::GraphicLib::instance();
}

/// A grid of 4 x 3 x 5 cells, each 100 x 100 x 10, and a tool that waits.
class PickTool : public testing::Test {
protected:
    PickTool() { tool->execute(); }
    ~PickTool() override { graphics().reset_tool(); }

    [[nodiscard]] Texts errors() const { return messages.of(Lodex::LogLevel::Error); }
    [[nodiscard]] Texts infos() const { return messages.of(Lodex::LogLevel::Info); }
    void pick() const { graphics().pick(&selection); }
    GridPick& pick_on_grid()
    {
        grid_pick.picked = grid;
        selection.hit = grid;
        selection.info = &grid_pick;
        return grid_pick;
    }
    void expect_refused(const std::string& message)
    {
        messages.clear();
        pick();
        EXPECT_EQ(errors(), Texts{message});
        EXPECT_EQ(messages.entries.size(), 1U);
        EXPECT_EQ(value->value(), 77);
        EXPECT_EQ(graphics().tool(), tool.get());
    }

    CleanCatalogue catalogue;
    MessageList messages;
    lodex::CornerPointGrid* grid = add_box("My %1 grid", {4, 3, 5});
    Lodex::Ref<Lodex::IntValue> value{new Lodex::IntValue(77)};
    Lodex::Ref<LQSGridCellSectionSelectToolAction> tool{new LQSGridCellSectionSelectToolAction(value.get(), 3)};
    GridPick grid_pick;
    Selection selection;
};

TEST_F(PickTool, NothingHit)
{
    const std::string message = "Could not get the graphic object. Please pick another point.\n";
    expect_refused(message);
    messages.clear();
    graphics().pick(nullptr);
    EXPECT_EQ(errors(), Texts{message});
}

TEST_F(PickTool, NoPoint)
{
    const std::string message = "Could not retrieve Point coordinate. Please pick another point.\n";
    selection.hit = grid;
    expect_refused(message);
    pick_on_grid().has_point = false;
    expect_refused(message);
}

TEST_F(PickTool, NotOnAGrid)
{
    const std::string message = "Could not retrieve Grid coordinate. Please pick another point.\n";
    const PointPick point;
    selection.hit = grid;
    selection.info = &point;
    expect_refused(message);
    pick_on_grid().picked = nullptr;
    expect_refused(message);
    pick_on_grid().place = {-5000, 0, 0};
    expect_refused(message);
}

TEST_F(PickTool, TheCellUnderTheCursor)
{
    // Cell (2, 1, 3), 0-based.
    pick_on_grid().cell = std::make_unique<Lodex::SGridSubset>(grid, 2 + 4 * (1 + 3 * 3));
    int told = 0;
    value->add_observer([&] { ++told; });
    pick();
    EXPECT_EQ(infos(), Texts{"SGrid: My %1 grid Selected Cell Section: 3 2 4\n"});
    EXPECT_EQ(value->value(), 4);
    EXPECT_EQ(told, 1);
    EXPECT_EQ(messages.entries.size(), 1U);
    EXPECT_EQ(graphics().tool(), nullptr);
}

TEST_F(PickTool, EachAxisTakesItsNumber)
{
    pick_on_grid().cell = std::make_unique<Lodex::SGridSubset>(grid, 2 + 4 * (1 + 3 * 3));
    for (const auto& [axis, number] : {std::pair{1, 3}, std::pair{2, 2}, std::pair{3, 4}}) {
        tool->set_axis(axis);
        tool->execute();
        pick();
        EXPECT_EQ(value->value(), number);
    }
    value->set(77);
    tool->set_axis(0);
    pick();
    EXPECT_EQ(value->value(), 77);
}

TEST_F(PickTool, APointWithoutACellIsLocated)
{
    pick_on_grid().place = {250, 150, 35};
    pick();
    EXPECT_EQ(infos(), Texts{"SGrid: My %1 grid Selected Cell Section: 3 2 4\n"});
    EXPECT_EQ(value->value(), 4);
}

TEST_F(PickTool, TheFarCornerIsTheLastCell)
{
    pick_on_grid().place = {400, 300, 50};
    pick();
    EXPECT_EQ(infos(), Texts{"SGrid: My %1 grid Selected Cell Section: 4 3 5\n"});
    EXPECT_EQ(value->value(), 5);
}

TEST_F(PickTool, ANearCornerIsTheFirstCell)
{
    pick_on_grid().place = {0, 0, 0};
    pick();
    EXPECT_EQ(infos(), Texts{"SGrid: My %1 grid Selected Cell Section: 1 1 1\n"});
}

TEST_F(PickTool, ARepeatingToolStays)
{
    const Lodex::Ref<LQSGridCellSectionSelectToolAction> lasting(
        new LQSGridCellSectionSelectToolAction(value.get(), 1, false));
    lasting->execute();
    pick_on_grid().cell = std::make_unique<Lodex::SGridSubset>(grid, 1);
    pick();
    EXPECT_EQ(value->value(), 2);
    EXPECT_EQ(graphics().tool(), lasting.get());
}

TEST_F(PickTool, TheLibraryMayHoldTheLastReference)
{
    graphics().set_tool(new LQSGridCellSectionSelectToolAction(value.get(), 3));
    pick_on_grid().cell = std::make_unique<Lodex::SGridSubset>(grid, 4 * 3 * 2);
    pick();
    EXPECT_EQ(value->value(), 3);
    EXPECT_EQ(graphics().tool(), nullptr);
}

TEST_F(PickTool, SaysWhatItWaitsFor)
{
    EXPECT_EQ(tool->hint().str(), "Select cell section by picking in the Camera");
}

/// Picks into the rows of the dialog.
class RowPick : public MergeDialogTest {
protected:
    ~RowPick() override { graphics().reset_tool(); }

    void pick_cell(long i, long j, long k)
    {
        GridPick pick;
        pick.picked = grid;
        pick.cell = std::make_unique<Lodex::SGridSubset>(grid, i + 10 * (j + 10 * k));
        Selection selection;
        selection.hit = grid;
        selection.info = &pick;
        graphics().pick(&selection);
    }
    void start(int index, const char* button) { click(row(index).pick(button)); }

    lodex::CornerPointGrid* grid = add_box("G", {10, 10, 10});
};

TEST_F(RowPick, EachButtonStartsTheToolOfItsBox)
{
    open("G", "Axis K");
    auto* editor = dialog->findChild<QTableWidget*>(); // rows are in the window, not in the dialog's object
    EXPECT_EQ(editor, nullptr);
    start(0, "pick_from_");
    ASSERT_TRUE(graphics().tool());
    pick_cell(1, 2, 4);
    EXPECT_EQ(row(0).from()->value(), 5);
    EXPECT_EQ(graphics().tool(), nullptr);

    start(0, "pick_to_");
    pick_cell(1, 2, 7);
    EXPECT_EQ(row(0).to()->value(), 8);
    EXPECT_EQ(row(0).property()->maximum(), 8);

    start(0, "pick_property_section_");
    pick_cell(1, 2, 6);
    EXPECT_EQ(row(0).property()->value(), 7);
}

TEST_F(RowPick, PickedBoundsFollowTheRowsRules)
{
    open("G", "Axis K");
    row(0).to()->setValue(4);
    start(0, "pick_from_");
    pick_cell(0, 0, 6);
    EXPECT_EQ(row(0).from()->value(), 7);
    EXPECT_EQ(row(0).to()->value(), 8);
    // The last section is no start of a run.
    start(0, "pick_from_");
    pick_cell(0, 0, 9);
    EXPECT_EQ(row(0).from()->value(), 9);
    EXPECT_EQ(row(0).to()->value(), 10);
}

TEST_F(RowPick, AChangeOfAxisReachesTheToolsOfAllRows)
{
    open("G");
    add_row(0);
    start(0, "pick_from_");
    pick_cell(1, 2, 4);
    EXPECT_EQ(row(0).from()->value(), 2);
    start(1, "pick_to_");
    find<QComboBox>("direction_")->setCurrentText("Axis K");
    pick_cell(1, 2, 7); // the tool waited through the change
    EXPECT_EQ(row(1).to()->value(), 8);
    start(0, "pick_property_section_");
    pick_cell(1, 2, 4);
    EXPECT_EQ(row(0).property()->value(), 5);
    find<QComboBox>("direction_")->setCurrentText("Axis J");
    start(0, "pick_from_");
    pick_cell(1, 2, 4);
    EXPECT_EQ(row(0).from()->value(), 3);
}

TEST_F(RowPick, APickRepaintsTheSections)
{
    open("G", "Axis K");
    find<QCheckBox>("paint_check_box_")->setChecked(true);
    log.texts.clear();
    start(0, "pick_to_");
    pick_cell(0, 0, 1);
    ASSERT_FALSE(log.texts.empty());
    EXPECT_EQ(log.texts.back(), "lodex on Style G set attribute *sections value \" 4 3 1 0 3 1 1 1 0 0 2 0 0\" ;"
                                "lodex on Style G update ;lodex update all cameras");
}

TEST_F(RowPick, RemovingTheRowCallsThePickOff)
{
    open("G");
    add_row(0);
    start(1, "pick_from_");
    ASSERT_TRUE(graphics().tool());
    click(row(1).remove());
    run_deferred_deletes();
    EXPECT_EQ(graphics().tool(), nullptr);
}

TEST_F(RowPick, ClosingTheDialogCallsThePickOff)
{
    open("G");
    start(0, "pick_from_");
    press("cancel_button");
    run_deferred_deletes();
    EXPECT_EQ(graphics().tool(), nullptr);
}

} // namespace
