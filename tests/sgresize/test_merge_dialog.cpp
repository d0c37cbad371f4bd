#include "DialogTest.h"

#include <Lodex/xtools/XMHelpManager.h>

#include <QButtonGroup>
#include <QClipboard>
#include <QGroupBox>
#include <QLabel>
#include <QRadioButton>
#include <QSignalSpy>

#include <memory>
#include <utility>

namespace {

class MergeDialog : public MergeDialogTest {
protected:
    MergeDialog() { add_box("G", {10, 10, 10}); }

    /// The command of one Apply, up to the keyword that follows the lists.
    std::string lists()
    {
        press("apply_button");
        const std::string command = log.take();
        const auto begin = command.find(" sections ");
        const auto end = command.find(" copy_regions ");
        return begin == std::string::npos ? command : command.substr(begin, end - begin);
    }
};

TEST_F(MergeDialog, Shell)
{
    open();
    EXPECT_STREQ(dialog->metaObject()->className(), "Kelvane::LQSGSectionMergeDialog");
    EXPECT_EQ(shell->name().str(), "SgridMergeSectionShell");
    EXPECT_EQ(shell->title(), "Merge SGrid Sections");
    EXPECT_EQ(find<QLabel>("banner_text")->text(), "Create new SGrid by merging cell sections of existing SGrid");
    EXPECT_EQ(Lodex::XMQShell::find("SgridMergeSectionShell"), shell);
}

TEST_F(MergeDialog, OptionTextsAndDefaults)
{
    open();
    expect_direction();
    expect_boxes({{"copy_properties_", "Copy properties", "Properties will be copied to the new Grid", false},
                  {"copy_regions_", "Copy regions", "Regions will be copied to the new Grid", true},
                  {"paint_check_box_", "Show selected sections",
                   "toggle on if you want the selected cell sections beeing painted on the grid", false}});
    EXPECT_EQ(group_titles(), (QStringList{"Stratigraphic Grid Definition", "Graphic Attributes", "Section Editor"}));
    expect_labels({"Name", "Based on Stratigraphic Grid", "Direction"});
}

TEST_F(MergeDialog, FromTopToBottom)
{
    open();
    QCoreApplication::processEvents();
    expect_order({"new_grid_name_", "gridSelector_", "direction_", "region_mode_0", "number_percentile_", "volume_percentile_",
                  "paint_check_box_", "sections_header", "sections_caption", "scrollview", "ok_button"},
                 Qt::Vertical);
    expect_order({"direction_", "copy_properties_", "copy_regions_"}, Qt::Horizontal);
    expect_order({"region_mode_1", "number_percentile_"}, Qt::Horizontal);
    expect_order({"ok_button", "apply_button", "cancel_button", "help_button"}, Qt::Horizontal);
}

TEST_F(MergeDialog, RegionModes)
{
    open();
    const char* texts[] = {"from all original cells", "from original cell number percentile",
                           "from original cell volume percentile"};
    const char* tips[] = {
        "If any of the original cells is in a region, then the upscaled cell is in that region.",
        "If the user defined percentile of the original cells is in a region, "
        "then the upscaled cell is in that region.",
        "If the user defined percentile of the original cell volume is in the region, "
        "then the upscaled cell is in that region."};
    const auto* group = find<QButtonGroup>("");
    ASSERT_TRUE(group);
    ASSERT_EQ(group->buttons().size(), 3);
    for (int id = 0; id < 3; ++id) {
        ASSERT_TRUE(group->button(id));
        EXPECT_EQ(group->button(id)->text(), texts[id]);
        EXPECT_EQ(group->button(id)->toolTip(), tips[id]);
    }
    EXPECT_EQ(group->checkedId(), 0);
    const auto* number = find<Lodex::LQDoubleLineEdit>("number_percentile_");
    const auto* volume = find<Lodex::LQDoubleLineEdit>("volume_percentile_");
    EXPECT_EQ(number->value(), 50.0);
    EXPECT_EQ(volume->value(), 50.0);
    EXPECT_FALSE(number->isEnabled());
    EXPECT_FALSE(volume->isEnabled());

    click(group->button(1));
    EXPECT_TRUE(number->isEnabled());
    EXPECT_FALSE(volume->isEnabled());
    click(group->button(2));
    EXPECT_FALSE(number->isEnabled());
    EXPECT_TRUE(volume->isEnabled());
    ASSERT_TRUE(QTest::qWaitForWindowActive(shell->widget()));
    group->button(2)->setFocus();
    QTest::keyClick(group->button(2), Qt::Key_Up);
    EXPECT_EQ(group->checkedId(), 1);
    EXPECT_TRUE(number->isEnabled());
    EXPECT_FALSE(volume->isEnabled());
    click(group->button(0));
    EXPECT_FALSE(number->isEnabled());
    EXPECT_FALSE(volume->isEnabled());
    dialog->set_region_mode(7);
    EXPECT_FALSE(number->isEnabled());
    EXPECT_FALSE(volume->isEnabled());
}

TEST_F(MergeDialog, CopyRegionsSwitchesTheGroupOnly)
{
    open();
    click(find<QRadioButton>("region_mode_1"));
    click(find<QCheckBox>("copy_regions_"));
    EXPECT_FALSE(find<QGroupBox>("region_mode_group_")->isEnabled());
    EXPECT_FALSE(find<QRadioButton>("region_mode_1")->isEnabled());
    EXPECT_TRUE(find<QLineEdit>("number_percentile_")->isEnabled());
    EXPECT_FALSE(find<QLineEdit>("volume_percentile_")->isEnabled());
    click(find<QCheckBox>("copy_regions_"));
    EXPECT_TRUE(find<QGroupBox>("region_mode_group_")->isEnabled());
}

TEST_F(MergeDialog, EveryWidgetAPersonCanTouchHasAName)
{
    open();
    expect_names();
}

TEST_F(MergeDialog, RowsAreBoundedByTheGridAndTheAxis)
{
    add_box("H", {30, 20, 8});
    open("H");
    EXPECT_EQ(row(0).to()->value(), 30);
    EXPECT_EQ(row(0).from()->maximum(), 29);
    find<QComboBox>("direction_")->setCurrentText("Axis J");
    EXPECT_EQ(row(0).to()->maximum(), 20);
    EXPECT_EQ(row(0).to()->value(), 20);
    find<QComboBox>("direction_")->setCurrentText("Axis K");
    EXPECT_EQ(row(0).to()->maximum(), 8);
    find<Lodex::LQMultiComboBox>("gridSelector_")->setSelectedItems({"G"});
    EXPECT_EQ(row(0).to()->maximum(), 10);
    EXPECT_EQ(row(0).to()->value(), 8);
}

TEST_F(MergeDialog, WithoutAGridTheRowIsUnbounded)
{
    open("");
    EXPECT_EQ(row(0).to()->value(), 9999);
    EXPECT_EQ(row(0).step()->maximum(), 2);
}

TEST_F(MergeDialog, TheGridIsAskedForBeforeTheName)
{
    open("");
    press("apply_button");
    EXPECT_EQ(fatal(), Texts{"Please provide a sgrid to based the computation on\n"});
    EXPECT_EQ(messages.entries.size(), 1U);
    messages.clear();
    find<Lodex::LQMultiComboBox>("gridSelector_")->setSelectedItems({"G"});
    press("apply_button");
    EXPECT_EQ(fatal(), Texts{"Please provide a new sgrid name\n"});
    EXPECT_EQ(messages.entries.size(), 1U);
    EXPECT_TRUE(log.texts.empty());
    EXPECT_FALSE(dialog->process());
}

TEST_F(MergeDialog, ThereIsNoTestThatTheGridExists)
{
    open();
    name("N");
    auto* selector = find<Lodex::LQMultiComboBox>("gridSelector_");
    selector->insertItem("ghost");
    selector->setSelectedItems({"ghost"});
    EXPECT_TRUE(dialog->process());
    EXPECT_TRUE(fatal().empty());
    EXPECT_TRUE(log.take().starts_with("lodex sgrid_merge_multiple_sections name N sgrid ghost direction"));
}

TEST_F(MergeDialog, WholeCommand)
{
    open();
    name("New");
    set_row(0, 1, 4, 2, 2);
    press("apply_button");
    EXPECT_EQ(log.take(), "lodex sgrid_merge_multiple_sections name New sgrid G direction \"first axis\" "
                          "sections 0+1+2+3 copy_properties 0 property_sections 1+1 copy_regions 1 "
                          "region_mode 0 percentile 0 copy_style 1");
    EXPECT_TRUE(fatal().empty());
}

TEST_F(MergeDialog, DirectionKeywords)
{
    open();
    name("New");
    find<QComboBox>("direction_")->setCurrentText("Axis J");
    press("apply_button");
    EXPECT_NE(log.take().find(" direction \"second axis\" sections "), std::string::npos);
    find<QComboBox>("direction_")->setCurrentText("Axis K");
    press("apply_button");
    EXPECT_NE(log.take().find(" direction \"vertical\" sections "), std::string::npos);
}

TEST_F(MergeDialog, WithoutRegionsModeAndPercentileAreLeftOut)
{
    open();
    name("New");
    set_row(0, 3, 4, 2, 4);
    click(find<QCheckBox>("copy_properties_"));
    click(find<QRadioButton>("region_mode_1"));
    click(find<QCheckBox>("copy_regions_"));
    press("apply_button");
    EXPECT_EQ(log.take(), "lodex sgrid_merge_multiple_sections name New sgrid G direction \"first axis\" "
                          "sections 2+3 copy_properties 1 property_sections 3 copy_regions 0 copy_style 1");
}

TEST_F(MergeDialog, PercentileOfTheMode)
{
    open();
    name("New");
    const auto tail = [this] {
        press("apply_button");
        const std::string command = log.take();
        return command.substr(command.find(" copy_regions "));
    };
    find<QLineEdit>("volume_percentile_")->setText("12.3456789");
    click(find<QRadioButton>("region_mode_1"));
    EXPECT_EQ(tail(), " copy_regions 1 region_mode 1 percentile 50 copy_style 1");
    click(find<QRadioButton>("region_mode_2"));
    EXPECT_EQ(tail(), " copy_regions 1 region_mode 2 percentile 12.3457 copy_style 1");
    click(find<QRadioButton>("region_mode_0"));
    EXPECT_EQ(tail(), " copy_regions 1 region_mode 0 percentile 0 copy_style 1");
    click(find<QRadioButton>("region_mode_1"));
    auto* number = find<QLineEdit>("number_percentile_");
    number->selectAll();
    QTest::keyClicks(number, "33.5");
    EXPECT_EQ(tail(), " copy_regions 1 region_mode 1 percentile 33.5 copy_style 1");
}

TEST_F(MergeDialog, ListsOfOneRow)
{
    open();
    name("New");
    set_row(0, 1, 4, 2, 2);
    EXPECT_EQ(lists(), " sections 0+1+2+3 copy_properties 0 property_sections 1+1");
    // One section is left: no separator behind the last group.
    set_row(0, 1, 7, 3, 1);
    EXPECT_EQ(lists(), " sections 0+2+3+5 copy_properties 0 property_sections 0+0");
    set_row(0, 1, 5, 2, 5);
    EXPECT_EQ(lists(), " sections 0+1+2+3 copy_properties 0 property_sections 4+4");
    set_row(0, 2, 10, 9, 2);
    EXPECT_EQ(lists(), " sections 1+9 copy_properties 0 property_sections 1");
}

TEST_F(MergeDialog, ARemainderOfTwoLeavesASeparatorBehind)
{
    open();
    name("New");
    set_row(0, 1, 8, 3, 1);
    EXPECT_EQ(lists(), " sections 0+2+3+5+ copy_properties 0 property_sections 0+0+");
    set_row(0, 1, 10, 7, 3);
    EXPECT_EQ(lists(), " sections 0+6+ copy_properties 0 property_sections 2+");
}

TEST_F(MergeDialog, ListsOfSeveralRowsInTableOrder)
{
    open();
    name("New");
    set_row(0, 3, 4, 2, 3);
    add_row(0);
    set_row(1, 7, 8, 2, 8);
    EXPECT_EQ(lists(), " sections 2+3+6+7 copy_properties 0 property_sections 2+7");
    set_row(0, 9, 10, 2, 9);
    EXPECT_EQ(lists(), " sections 8+9+6+7 copy_properties 0 property_sections 8+7");
}

TEST_F(MergeDialog, ARemainderInFrontOfAnotherRowDoublesTheSeparator)
{
    open("G", "Axis K");
    name("New");
    set_row(0, 1, 8, 3, 1);
    add_row(0);
    find<Lodex::LQMultiComboBox>("gridSelector_")->setSelectedItems({});
    find<Lodex::LQMultiComboBox>("gridSelector_")->setSelectedItems({"G"}); // the second row may reach the end again
    set_row(1, 9, 10, 2, 9);
    EXPECT_EQ(lists(), " sections 0+2+3+5++8+9 copy_properties 0 property_sections 0+0++8");
    // Nothing of this keeps the host from doing it: two groups of three and one of two.
    EXPECT_TRUE(errors().empty());
    const auto* made = lodex::find_grid("New");
    ASSERT_TRUE(made);
    EXPECT_EQ(made->model().size[2], 10 - 2 - 2 - 1);
}

TEST_F(MergeDialog, AnAxisOfOneSectionSendsAnEmptyList)
{
    add_box("flat", {10, 10, 1});
    open("flat", "Axis K");
    name("Copy");
    EXPECT_EQ(lists(), " sections  copy_properties 0 property_sections ");
    EXPECT_TRUE(errors().empty());
    const auto* made = lodex::find_grid("Copy");
    ASSERT_TRUE(made);
    EXPECT_EQ(made->model().size, (lodex::GridSize{10, 10, 1}));
}

TEST_F(MergeDialog, NamesGoOutAsTheyStand)
{
    add_box("My grid", {4, 4, 4});
    open("My grid");
    name("A new grid");
    press("apply_button");
    EXPECT_TRUE(log.take().starts_with("lodex sgrid_merge_multiple_sections name A new grid sgrid My grid direction "));
    EXPECT_TRUE(errors().empty());
    EXPECT_TRUE(lodex::find_grid("A new grid"));
}

TEST_F(MergeDialog, TheNameTakesNoSecondCommand)
{
    open();
    auto* field = find<QLineEdit>("new_grid_name_");
    QTest::keyClicks(field, "a;b\"c d");
    EXPECT_EQ(field->text(), "abc d");
    for (const char* text : {"x;lodex destroy objects G", "x\"y", "x\ny"}) {
        QApplication::clipboard()->setText(text);
        field->clear();
        field->paste();
        for (const char refused : {';', '"', '\n'})
            EXPECT_FALSE(field->text().contains(refused)) << text;
    }
}

TEST_F(MergeDialog, IntersectingRowsSendNothing)
{
    open("G", "Axis K");
    name("New");
    set_row(0, 1, 5, 2, 1);
    add_row(0);
    set_row(1, 5, 9, 2, 5);
    press("ok_button");
    run_deferred_deletes();
    EXPECT_EQ(fatal(), Texts{"Section Editor intersection: Read message & please check your data\n"});
    EXPECT_EQ(errors(),
              Texts{"Direction vertical. Section Editor 1 from 1 to 5 intersects Section Editor 2 from 5 to 9\n"});
    EXPECT_TRUE(log.texts.empty());
    ASSERT_TRUE(shell);
    EXPECT_EQ(find<QLineEdit>("new_grid_name_")->text(), "New");
    EXPECT_EQ(row(1).from()->value(), 5);
}

TEST_F(MergeDialog, AGroupMayNotStraddleTwoUnits)
{
    set_layers(lodex::find_grid("G"), {4, 6});
    open("G", "Axis K");
    name("New");
    set_row(0, 4, 5, 2, 4);
    press("apply_button");
    EXPECT_EQ(fatal(),
              Texts{"Section Editor Overlaps a Stratigraphic Unit: Read message & please check your data\n"});
    EXPECT_EQ(errors(), Texts{"Section Editor 1 overlaps stratigraphic unit 1 and 2\n"});
    EXPECT_TRUE(log.texts.empty());
}

TEST_F(MergeDialog, TheUnitCheckNamesTheRowAndLooksAtItsGroupsOnly)
{
    set_layers(lodex::find_grid("G"), {4, 3, 3});
    open("G", "Axis K");
    name("New");
    // Groups 1-2 and 3-4; section 5 is left over and in the next unit.
    set_row(0, 1, 5, 2, 1);
    add_row(0);
    set_row(1, 6, 9, 3, 6);
    press("apply_button");
    EXPECT_EQ(errors(), Texts{"Section Editor 2 overlaps stratigraphic unit 2 and 3\n"});
    EXPECT_TRUE(log.texts.empty());
    messages.clear();
    set_row(1, 8, 9, 2, 8);
    press("apply_button");
    EXPECT_TRUE(errors().empty());
    EXPECT_NE(log.take().find(" sections 0+1+2+3+7+8 "), std::string::npos);
}

TEST_F(MergeDialog, TheUnitCheckLeavesTheRemainderOut)
{
    set_layers(lodex::find_grid("G"), {4, 6});
    open("G", "Axis K");
    name("New");
    // Group 1-3; 4 and 5 are left over, on both sides of the boundary.
    set_row(0, 1, 5, 3, 1);
    press("apply_button");
    EXPECT_TRUE(fatal().empty());
    EXPECT_TRUE(errors().empty());
    EXPECT_NE(log.take().find(" sections 0+2+ "), std::string::npos);
}

TEST_F(MergeDialog, IntersectionsComeBeforeUnits)
{
    set_layers(lodex::find_grid("G"), {4, 6});
    open("G", "Axis K");
    name("New");
    set_row(0, 4, 5, 2, 4);
    add_row(0);
    set_row(1, 3, 5, 2, 3);
    press("apply_button");
    EXPECT_EQ(errors(), Texts{"Section Editor 1 from 4 to 5 intersects Section Editor 2 from 3 to 5\n"});
}

TEST_F(MergeDialog, UnitsOnlyMatterAlongKAndWhereThereAreAny)
{
    set_layers(lodex::find_grid("G"), {4, 6});
    add_box("plain", {10, 10, 10});
    open("G", "Axis J");
    name("New");
    set_row(0, 4, 5, 2, 4);
    press("apply_button");
    EXPECT_TRUE(fatal().empty());
    EXPECT_EQ(log.texts.size(), 1U);
    find<Lodex::LQMultiComboBox>("gridSelector_")->setSelectedItems({"plain"});
    find<QComboBox>("direction_")->setCurrentText("Axis K");
    name("New2");
    press("apply_button");
    EXPECT_TRUE(fatal().empty());
    EXPECT_EQ(log.texts.size(), 2U);
}

TEST_F(MergeDialog, MessagesAndTextsAreTranslatedButNotCommands)
{
    MarkingTranslator translator;
    QCoreApplication::installTranslator(&translator);
    open();
    EXPECT_EQ(shell->title(), "<Merge SGrid Sections>");
    EXPECT_EQ(find<QPushButton>("ok_button")->text(), "<OK>");
    EXPECT_EQ(find<QComboBox>("direction_")->itemText(2), "<Axis K>");
    find<QComboBox>("direction_")->setCurrentIndex(2);
    press("apply_button");
    EXPECT_EQ(fatal(), Texts{"<Please provide a new sgrid name\n>"});
    name("New");
    set_row(0, 1, 2, 2, 1);
    press("apply_button");
    EXPECT_EQ(log.take(), "lodex sgrid_merge_multiple_sections name New sgrid G direction \"vertical\" "
                          "sections 0+1 copy_properties 0 property_sections 0 copy_regions 1 "
                          "region_mode 0 percentile 0 copy_style 1");
    QCoreApplication::removeTranslator(&translator);
    EXPECT_TRUE(errors().empty());
}

TEST_F(MergeDialog, TwoAppliesSendTheSame)
{
    open();
    name("New");
    press("apply_button");
    const std::string first = log.take();
    EXPECT_TRUE(lodex::find_grid("New"));
    press("apply_button"); // the name is taken by now, which is the host's business
    EXPECT_EQ(log.take(), first);
    EXPECT_TRUE(fatal().empty());
    EXPECT_FALSE(errors().empty());
    ASSERT_TRUE(shell);
    EXPECT_TRUE(shell->widget()->isVisible());
}

TEST_F(MergeDialog, ProcessIsTrueWhateverTheHostDoes)
{
    open();
    name("G");
    EXPECT_TRUE(dialog->process());
    EXPECT_EQ(log.texts.size(), 1U);
    EXPECT_FALSE(errors().empty());
    log.texts.clear();
    press("ok_button");
    EXPECT_TRUE(log.take().starts_with("lodex sgrid_merge_multiple_sections name G sgrid G "));
    run_deferred_deletes();
    EXPECT_TRUE(shell.isNull());
}

TEST_F(MergeDialog, WhatIsTypedButNotEndedCounts)
{
    open();
    name("New");
    set_row(0, 1, 8, 2, 1);
    row(0).to()->setFocus();
    row(0).to()->selectAll();
    QTest::keyClicks(row(0).to(), "4");
    EXPECT_TRUE(dialog->process());
    EXPECT_NE(log.take().find(" sections 0+1+2+3 "), std::string::npos);
}

TEST_F(MergeDialog, Painting)
{
    open("G", "Axis K");
    set_row(0, 1, 5, 2, 1);
    EXPECT_TRUE(log.texts.empty());
    find<QCheckBox>("paint_check_box_")->click();
    const std::string end = "\" ;lodex on Style G update ;lodex update all cameras";
    const std::string begin = "lodex on Style G set attribute *sections value \"";
    EXPECT_EQ(log.take(), begin + " 6 3 1 0 3 1 1 3 1 2 3 1 3 1 0 0 2 0 0" + end);

    row(0).step()->setValue(5);
    EXPECT_EQ(log.take(), begin + " 4 3 1 0 3 1 4 1 0 0 2 0 0" + end);
    row(0).property()->setValue(3);
    EXPECT_TRUE(log.texts.empty());
    row(0).to()->setValue(6);
    EXPECT_EQ(log.take(), begin + " 4 3 1 0 3 1 4 1 0 0 2 0 0" + end);

    add_row(0);
    EXPECT_EQ(log.take(), begin + " 6 3 1 0 3 1 4 3 1 6 3 1 7 1 0 0 2 0 0" + end);
    click(row(0).remove());
    run_deferred_deletes();
    EXPECT_EQ(log.take(), begin + " 4 3 1 6 3 1 7 1 0 0 2 0 0" + end);

    find<QComboBox>("direction_")->setCurrentText("Axis J");
    EXPECT_EQ(log.take(), begin + " 4 2 1 6 2 1 7 1 0 0 3 0 0" + end);
    find<QComboBox>("direction_")->setCurrentText("Axis I");
    EXPECT_EQ(log.take(), begin + " 4 1 1 6 1 1 7 2 0 0 3 0 0" + end);
    EXPECT_TRUE(messages.entries.empty());
    EXPECT_EQ(painted_sections("G"), " 4 1 1 6 1 1 7 2 0 0 3 0 0");
}

TEST_F(MergeDialog, EveryBoundThatMovesIsPainted)
{
    open("G", "Axis K");
    set_row(0, 1, 6, 3, 1);
    find<QCheckBox>("paint_check_box_")->click();
    log.texts.clear();
    const auto painted = [](const char* value) {
        return std::string("lodex on Style G set attribute *sections value \" ") + value +
               "\" ;lodex on Style G update ;lodex update all cameras";
    };
    row(0).from()->setValue(2);
    EXPECT_EQ(log.take(), painted("4 3 1 1 3 1 3 1 0 0 2 0 0"));
    // From drags To along, and the step becomes as short as the run.
    row(0).from()->setValue(7);
    ASSERT_FALSE(log.texts.empty());
    EXPECT_EQ(log.texts.back(), painted("4 3 1 6 3 1 7 1 0 0 2 0 0"));
    row(0).to()->setValue(4);
    EXPECT_EQ(log.texts.back(), painted("4 3 1 2 3 1 3 1 0 0 2 0 0"));
}

TEST_F(MergeDialog, ARowWithoutAGroupPaintsNothing)
{
    add_box("flat", {10, 10, 1});
    open("flat", "Axis K");
    find<QCheckBox>("paint_check_box_")->click();
    EXPECT_EQ(log.take(), "lodex on Style flat set attribute *sections value \" 2 1 0 0 2 0 0\" ;"
                          "lodex on Style flat update ;lodex update all cameras");
}

TEST_F(MergeDialog, AnotherGridOfTheSameSizeIsOnlyUnpainted)
{
    add_box("H", {10, 10, 10});
    open("G", "Axis K");
    find<QCheckBox>("paint_check_box_")->click();
    const std::string before = painted_sections("G");
    log.texts.clear();
    find<Lodex::LQMultiComboBox>("gridSelector_")->setSelectedItems({"H"});
    EXPECT_EQ(log.take(), "lodex on Style H set attribute *sections value \" 3 1 0 0 2 0 0 3 0 0\";"
                          "lodex on Style H update ;lodex update all cameras");
    EXPECT_EQ(painted_sections("G"), before);
    EXPECT_TRUE(find<QCheckBox>("paint_check_box_")->isChecked());
}

/// Counts how often its cells are to be updated.
class CountingDialog : public Kelvane::LQSGSectionMergeDialog {
public:
    void updateCells() override { ++updates; }
    int updates = 0;
};

TEST_F(MergeDialog, EveryChangeOfTheRowsUpdatesTheCells)
{
    auto* counting = new CountingDialog;
    open(counting);
    const auto take = [counting] { return std::exchange(counting->updates, 0); };
    take();
    row(0).to()->setValue(8);
    EXPECT_EQ(take(), 1);
    row(0).from()->setValue(2);
    EXPECT_EQ(take(), 1);
    row(0).step()->setValue(3);
    EXPECT_EQ(take(), 1);
    row(0).property()->setValue(3);
    EXPECT_EQ(take(), 0);
    add_row(0);
    EXPECT_EQ(take(), 1);
    click(row(1).remove());
    run_deferred_deletes();
    EXPECT_EQ(take(), 1);
    click(row(0).remove());
    EXPECT_EQ(take(), 0);
    find<QComboBox>("direction_")->setCurrentText("Axis J");
    EXPECT_EQ(take(), 0);
    find<Lodex::LQMultiComboBox>("gridSelector_")->setSelectedItems({});
    EXPECT_EQ(take(), 1);
}

TEST_F(MergeDialog, PaintingWithoutAGridWarns)
{
    open("");
    find<QCheckBox>("paint_check_box_")->click();
    EXPECT_EQ(warnings(), Texts{"Please provide a sgrid for painting the sections on\n"});
    EXPECT_TRUE(log.texts.empty());
}

TEST_F(MergeDialog, Help)
{
    open();
    press("help_button");
    EXPECT_EQ(Lodex::XMHelpManager::instance()->current_key().str(),
              "help:user-doc/sgrid_new.html#LQSGSectionMerge;winhelp:Lodex");
    EXPECT_TRUE(messages.entries.empty());
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (window != shell->widget())
            window->close();
    }
}

/// The ways out of the dialog.
class ClosingMergeDialog : public MergeDialog {
protected:
    void open_painting()
    {
        open();
        name("New");
        find<QCheckBox>("paint_check_box_")->click();
        log.texts.clear();
        QObject::connect(dialog, &QObject::destroyed, [count = deleted] { ++*count; });
    }
    void expect_closed()
    {
        run_deferred_deletes();
        EXPECT_TRUE(shell.isNull());
        EXPECT_TRUE(dialog.isNull());
        EXPECT_EQ(*deleted, 1);
        EXPECT_EQ(Lodex::XMQShell::find("SgridMergeSectionShell"), nullptr);
    }

    const std::string unpaint = "lodex on Style G set attribute *sections value \" 3 1 0 0 2 0 0 3 0 0\";"
                                "lodex on Style G update ;lodex update all cameras";
    /// Outlives the fixture, as the dialog may.
    std::shared_ptr<int> deleted = std::make_shared<int>(0);
};

TEST_F(ClosingMergeDialog, OkRunsUnpaintsAndCloses)
{
    open_painting();
    press("ok_button");
    ASSERT_EQ(log.texts.size(), 2U);
    EXPECT_TRUE(log.texts[0].starts_with("lodex sgrid_merge_multiple_sections name New sgrid G"));
    EXPECT_EQ(log.texts[1], unpaint);
    expect_closed();
    EXPECT_TRUE(lodex::find_grid("New"));
}

TEST_F(ClosingMergeDialog, OkWithoutANameStaysOpenAndPainted)
{
    open_painting();
    name("");
    press("ok_button");
    run_deferred_deletes();
    ASSERT_TRUE(shell);
    ASSERT_TRUE(dialog);
    EXPECT_TRUE(shell->widget()->isVisible());
    EXPECT_EQ(fatal(), Texts{"Please provide a new sgrid name\n"});
    EXPECT_TRUE(log.texts.empty());
    EXPECT_TRUE(find<QCheckBox>("paint_check_box_")->isChecked());
}

TEST_F(ClosingMergeDialog, ApplyStaysOpenAndPainted)
{
    open_painting();
    press("apply_button");
    run_deferred_deletes();
    EXPECT_TRUE(shell);
    EXPECT_TRUE(log.take().starts_with("lodex sgrid_merge_multiple_sections"));
}

TEST_F(ClosingMergeDialog, CancelUnpaintsAndSendsNothingElse)
{
    open_painting();
    press("cancel_button");
    EXPECT_EQ(log.take(), unpaint);
    expect_closed();
}

TEST_F(ClosingMergeDialog, EscapeCancels)
{
    open_painting();
    QTest::keyClick(find<QLineEdit>("new_grid_name_"), Qt::Key_Escape);
    EXPECT_EQ(log.take(), unpaint);
    expect_closed();
}

TEST_F(ClosingMergeDialog, TheWindowsCloseButtonCancels)
{
    open_painting();
    shell->widget()->close();
    EXPECT_EQ(log.take(), unpaint);
    expect_closed();
}

TEST_F(ClosingMergeDialog, WithoutPaintingNothingIsUnpainted)
{
    open();
    QObject::connect(dialog, &QObject::destroyed, [count = deleted] { ++*count; });
    press("cancel_button");
    EXPECT_TRUE(log.texts.empty());
    expect_closed();
}

TEST_F(ClosingMergeDialog, TheHostMayCloseTheShell)
{
    open();
    QObject::connect(dialog, &QObject::destroyed, [count = deleted] { ++*count; });
    shell->close();
    shell->close();
    expect_closed();
}

TEST_F(ClosingMergeDialog, AClosedDialogDoesNothingMore)
{
    open_painting();
    press("cancel_button");
    log.texts.clear();
    dialog->cancel();
    dialog->on_ok();
    EXPECT_TRUE(log.texts.empty());
    expect_closed();
}

TEST_F(ClosingMergeDialog, EnterInAFieldNeitherAppliesNorAddsARow)
{
    open();
    name("New");
    QTest::keyClick(find<QLineEdit>("new_grid_name_"), Qt::Key_Return);
    QTest::keyClick(row(0).from(), Qt::Key_Return);
    QTest::keyClick(row(0).step(), Qt::Key_Enter);
    run_deferred_deletes();
    EXPECT_TRUE(shell);
    EXPECT_EQ(rows(), 1);
    EXPECT_TRUE(log.texts.empty());
}

TEST_F(ClosingMergeDialog, NothingIsEnteredAgainWhileACommandRuns)
{
    open();
    name("New");
    int calls = 0;
    lodex::Interpreter::instance().set_listener([&](const std::string&) {
        ++calls;
        press("apply_button");
        press("ok_button");
        press("cancel_button");
        QTest::keyClick(find<QLineEdit>("new_grid_name_"), Qt::Key_Escape);
        EXPECT_FALSE(dialog->process());
    });
    press("apply_button");
    run_deferred_deletes();
    EXPECT_EQ(calls, 1);
    ASSERT_TRUE(shell);
    EXPECT_TRUE(shell->widget()->isVisible());
    EXPECT_TRUE(lodex::find_grid("New"));
    lodex::Interpreter::instance().set_listener({});
    press("cancel_button");
    run_deferred_deletes();
    EXPECT_TRUE(shell.isNull());
}

} // namespace
