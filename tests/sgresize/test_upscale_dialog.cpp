#include "GridDialogTest.h"

#include <Lodex/xtools/XMHelpManager.h>

#include <QButtonGroup>
#include <QRadioButton>

namespace {

using Texts = std::vector<std::string>;
using Counts = std::vector<long>;

class UpscaleDialog : public UpscaleDialogTest {
protected:
    UpscaleDialog() { add_box("G", {10, 10, 10}); }
};

TEST_F(UpscaleDialog, Shell)
{
    open();
    EXPECT_STREQ(dialog->metaObject()->className(), "Kelvane::LQSGUpscaleDialog");
    EXPECT_EQ(shell->name().str(), "SgridUpscaleShell");
    EXPECT_EQ(shell->title(), "Create SGrid for Upscaling");
    EXPECT_EQ(find<QLabel>("banner_text")->text(),
              "Create new SGrid for upscaling\nby merging cells of existing SGrid");
}

TEST_F(UpscaleDialog, TextsAndDefaults)
{
    open();
    expect_boxes(
        {{"copy_properties_", "Copy properties",
          "Properties will be copied, but not upscaled, to the new Grid. Not recommanded", false},
         {"fault_blocks_", "Create fault block regions", "toggle on if you want to create fault block regions",
          true},
         {"copy_regions_", "Copy regions",
          "Regions will be copied to the new Grid. However model regions and layers are always preserved.", true},
         {"paint_check_box_", "Show selected sections",
          "toggle on if you want the selected cell sections beeing painted on the grid", false},
         {"model_information_", "Use stratigraphic model information to build the grid",
          "toggle on if you want to use the stratigraphic model information for rebuilding the grid", false}});
    const auto* properties = find<Lodex::LQMultiComboBox>("property_list_");
    EXPECT_EQ(properties->toolTip(), "Select properties that will be copied");
    EXPECT_TRUE(properties->multiSelection());
    EXPECT_EQ(properties->items(), QStringList{"all_properties"});
    EXPECT_EQ(properties->currentText(), "all_properties");
    EXPECT_FALSE(properties->isEnabled());
    const auto* regions = find<Lodex::LQMultiComboBox>("region_list_");
    EXPECT_EQ(regions->toolTip(), "Select regions that will be copied");
    EXPECT_TRUE(regions->multiSelection());
    EXPECT_EQ(regions->currentText(), "all_regions");
    EXPECT_TRUE(regions->isEnabled());

    for (const char* title : {"Stratigraphic Grid Definition", "Graphic Attributes", "Build Attributes"})
        EXPECT_TRUE(group_titles().contains(title)) << title;
    expect_labels({"Name", "Based on Stratigraphic Grid", "Number of cells:", "New number of cells:"});
    const auto* tabs = find<QTabWidget>("axis_tabs_");
    ASSERT_EQ(tabs->count(), 3);
    EXPECT_EQ(tabs->tabText(0), "Axis I");
    EXPECT_EQ(tabs->tabText(1), "Axis J");
    EXPECT_EQ(tabs->tabText(2), "Axis K");
    for (const AxisTab axis : {TabI, TabJ, TabK}) {
        EXPECT_FALSE(on_page<QCheckBox>(axis, "enable_box_")->isChecked());
        EXPECT_TRUE(table(axis)->isColumnHidden(3));
    }
    EXPECT_EQ(on_page<QCheckBox>(TabJ, "enable_box_")->text(), "Enabled/Disabled Axis J");
}

TEST_F(UpscaleDialog, RegionModes)
{
    open();
    const char* texts[] = {"from all original cells", "from original cell number percentile",
                           "from original cell volume percentile", "from most probable cell region"};
    const char* tips[] = {
        "If any of the original cells is in a region, then the upscaled cell is in that region.",
        "If the user defined percentile of the original cells is in a region, "
        "then the upscaled cell is in that region.",
        "If the user defined percentile of the original cell volume is in the region, "
        "then the upscaled cell is in that region.",
        "The upscaled cell is in the most probable region computed from the original cells. "
        "If more than one region have the same frequency, upscaled cell belongs to all these regions"};
    const auto* group = find<QButtonGroup>("");
    ASSERT_TRUE(group);
    ASSERT_EQ(group->buttons().size(), 4);
    for (int id = 0; id < 4; ++id) {
        EXPECT_EQ(group->button(id)->text(), texts[id]);
        EXPECT_EQ(group->button(id)->toolTip(), tips[id]);
    }
    const auto* number = find<Lodex::LQDoubleLineEdit>("number_percentile_");
    const auto* volume = find<Lodex::LQDoubleLineEdit>("volume_percentile_");
    EXPECT_EQ(group->checkedId(), 1);
    EXPECT_EQ(number->value(), 50.0);
    EXPECT_EQ(volume->value(), 50.0);
    EXPECT_TRUE(number->isEnabled());
    EXPECT_FALSE(volume->isEnabled());
    for (const int id : {2, 3, 0, 1}) {
        tick(group->button(id));
        EXPECT_EQ(group->checkedId(), id);
        EXPECT_EQ(number->isEnabled(), id == 1) << id;
        EXPECT_EQ(volume->isEnabled(), id == 2) << id;
    }
    tick("copy_regions_");
    EXPECT_FALSE(find<QGroupBox>("region_mode_group_")->isEnabled());
    EXPECT_FALSE(find<QComboBox>("region_list_")->isEnabled());
    tick("copy_regions_");
    EXPECT_TRUE(find<QGroupBox>("region_mode_group_")->isEnabled());
    EXPECT_TRUE(number->isEnabled());
    EXPECT_FALSE(volume->isEnabled());
}

TEST_F(UpscaleDialog, CopyPropertiesShowsTheSectionToKeep)
{
    open();
    tick("copy_properties_");
    EXPECT_TRUE(find<QComboBox>("property_list_")->isEnabled());
    for (const AxisTab axis : {TabI, TabJ, TabK})
        EXPECT_FALSE(table(axis)->isColumnHidden(3));
    show(TabK);
    EXPECT_TRUE(row(TabK).property()->isVisible());
    tick("copy_properties_");
    for (const AxisTab axis : {TabI, TabJ, TabK})
        EXPECT_TRUE(table(axis)->isColumnHidden(3));
    QCoreApplication::processEvents(); // the table lays its cells out later
    EXPECT_FALSE(row(TabK).property()->isVisible());
    EXPECT_FALSE(find<QComboBox>("property_list_")->isEnabled());
}

TEST_F(UpscaleDialog, EveryWidgetAPersonCanTouchHasAName)
{
    open();
    expect_names();
}

TEST_F(UpscaleDialog, RowsAreBoundedByTheAxesOfTheGrid)
{
    add_box("H", {30, 20, 8});
    open("H");
    EXPECT_EQ(row(TabI).to()->value(), 30);
    EXPECT_EQ(row(TabJ).to()->value(), 20);
    EXPECT_EQ(row(TabK).to()->value(), 8);
    choose_grid({"G"});
    for (const AxisTab axis : {TabI, TabJ, TabK})
        EXPECT_EQ(row(axis).to()->maximum(), 10);
}

TEST_F(UpscaleDialog, CellCounts)
{
    open("");
    EXPECT_EQ(find<QLabel>("cells_i")->text(), "");
    EXPECT_EQ(find<QLabel>("new_cells_total")->text(), "");
    tick(TabI);
    EXPECT_EQ(find<QLabel>("new_cells_i")->text(), "");
    tick(TabI);
    add_box("H", {30, 20, 8});
    choose_grid({"H"});
    EXPECT_EQ(find<QLabel>("cells_i")->text(), "<b><font color=\"#0000ff\">30</font></b>");
    EXPECT_EQ(counts("cells_"), (Counts{30, 20, 8, 4800}));
    EXPECT_EQ(new_counts(), (Counts{30, 20, 8, 4800}));
    tick(TabJ);
    EXPECT_EQ(new_counts(), (Counts{30, 10, 8, 2400}));
    row(TabJ).step()->setValue(3);
    EXPECT_EQ(new_counts(), (Counts{30, 7, 8, 1680}));
    row(TabI).step()->setValue(3); // an axis that is off
    EXPECT_EQ(new_counts(), (Counts{30, 7, 8, 1680}));
    row(TabJ).set_run(1, 8);
    EXPECT_EQ(new_counts()[1], 20 - 8 + 3);
    add_row(TabJ);
    EXPECT_EQ(new_counts()[1], 20 - 8 + 3 - 11 + 6);
    tick(TabJ);
    EXPECT_EQ(new_counts(), (Counts{30, 20, 8, 4800}));
    EXPECT_EQ(counts("cells_"), (Counts{30, 20, 8, 4800}));
    // Without a grid the numbers stay.
    choose_grid({});
    EXPECT_EQ(counts("cells_"), (Counts{30, 20, 8, 4800}));
}

TEST_F(UpscaleDialog, ARowOfTenByThreeLeavesFour)
{
    open();
    tick(TabJ);
    row(TabJ).set_merge(1, 10, 3, 2);
    EXPECT_EQ(new_counts()[1], 4);
}

TEST_F(UpscaleDialog, ChecksInTheirOrder)
{
    open("");
    press("apply_button");
    EXPECT_EQ(fatal(), Texts{"Please provide a new sgrid name\n"});
    messages.clear();
    name("New");
    press("apply_button");
    EXPECT_EQ(fatal(), Texts{"Please provide a sgrid to based the computation on\n"});
    messages.clear();
    find<Lodex::LQMultiComboBox>("gridSelector_")->insertItem("ghost");
    choose_grid({"ghost"});
    press("apply_button");
    EXPECT_EQ(fatal(), Texts{"Please provide a sgrid to based the computation on (No grid found)\n"});
    messages.clear();
    choose_grid({"G"});
    press("ok_button");
    run_deferred_deletes();
    EXPECT_EQ(fatal(), Texts{"Please specify at least one axis!\n"});
    EXPECT_EQ(messages.entries.size(), 1U);
    EXPECT_TRUE(log.texts.empty());
    EXPECT_TRUE(shell);
}

TEST_F(UpscaleDialog, AnAxisThatIsWrongStopsAllBeforeAnyCommand)
{
    open();
    name("New");
    tick(TabI);
    tick(TabK);
    row(TabK).set_run(1, 5);
    add_row(TabK);
    row(TabK, 1).set_run(5, 9);
    press("apply_button");
    EXPECT_EQ(fatal(), Texts{"Section Editor intersection: Read message & please check your data\n"});
    EXPECT_EQ(errors(),
              Texts{"Direction vertical. Section Editor 1 from 1 to 5 intersects Section Editor 2 from 5 to 9\n"});
    EXPECT_TRUE(log.texts.empty());
    // Nobody looks at an axis that is off.
    messages.clear();
    tick(TabK);
    press("apply_button");
    EXPECT_EQ(fatal(), Texts{});
    EXPECT_TRUE(exists("New"));
}

TEST_F(UpscaleDialog, UnitsAreCheckedAlongK)
{
    set_layers(lodex::find_grid("G"), {4, 6});
    open();
    name("New");
    tick(TabK);
    row(TabK).set_merge(4, 5, 2, 4);
    EXPECT_FALSE(process());
    EXPECT_EQ(fatal(),
              Texts{"Section Editor Overlaps a Stratigraphic Unit: Read message & please check your data\n"});
    EXPECT_EQ(errors(), Texts{"Section Editor 1 overlaps stratigraphic unit 1 and 2\n"});
    EXPECT_TRUE(log.texts.empty());
}

TEST_F(UpscaleDialog, OneAxisIsOneCommand)
{
    open();
    name("New");
    tick(TabJ);
    row(TabJ).set_merge(1, 10, 3, 2);
    press("apply_button");
    EXPECT_EQ(sent(), Texts{"lodex sgrid_merge_multiple_sections name New sgrid G direction \"second axis\" sections "
                            "0+2+3+5+6+8 copy_properties 0 property_sections 1+1+1 properties all_properties "
                            "copy_fb_regions 1 copy_regions 1 regions all_regions region_mode 1 percentile 50 "
                            "copy_style 1 model_info 0"});
    EXPECT_EQ(fatal(), Texts{});
    EXPECT_EQ(errors(), Texts{});
    EXPECT_EQ(size_of("New"), (Counts{10, 4, 10, 400}));
    EXPECT_EQ(find<QLineEdit>("new_grid_name_")->text(), "New_0");
    EXPECT_EQ(find<Lodex::LQMultiComboBox>("gridSelector_")->currentText(), "G");
}

TEST_F(UpscaleDialog, OptionsOfTheCommand)
{
    add_property(lodex::find_grid("G"), "PORO");
    add_property(lodex::find_grid("G"), "PERM X");
    add_region(lodex::find_grid("G"), "R1");
    open();
    tick(TabK);
    const auto options = [this](const std::string& from) {
        name("New");
        press("apply_button");
        const std::string command = sent().front();
        lodex::Interpreter::instance().run("lodex destroy objects New");
        sent();
        return command.substr(command.find(from));
    };
    tick("copy_properties_");
    find<Lodex::LQMultiComboBox>("property_list_")->setSelectedItems({"PORO", "PERM X"});
    find<Lodex::LQMultiComboBox>("region_list_")->setSelectedItems({"R1"});
    find<QLineEdit>("volume_percentile_")->setText("33.3333333");
    tick("region_mode_2");
    tick("fault_blocks_");
    tick("model_information_");
    EXPECT_EQ(options(" copy_properties "),
              " copy_properties 1 property_sections 0+0+0+0+0 properties PORO+PERM X copy_fb_regions 0 copy_regions 1 "
              "regions R1 region_mode 2 percentile 33.3333 copy_style 1 model_info 1");
    tick("region_mode_3");
    EXPECT_EQ(options(" region_mode "), " region_mode 3 percentile 0 copy_style 1 model_info 1");
    tick("region_mode_0");
    EXPECT_EQ(options(" region_mode "), " region_mode 0 percentile 0 copy_style 1 model_info 1");
    // Without regions nothing is said of them. What is hidden goes out all the same.
    tick("copy_regions_");
    tick("copy_properties_");
    EXPECT_EQ(options(" copy_properties "), " copy_properties 0 property_sections 0+0+0+0+0 properties PORO+PERM X "
                                            "copy_fb_regions 0 copy_regions 0 copy_style 1 model_info 1");
    EXPECT_EQ(errors(), Texts{});
}

TEST_F(UpscaleDialog, HidingTheSectionToKeepDoesNotChangeTheCommand)
{
    open();
    tick("copy_properties_");
    tick(TabI);
    row(TabI).set_merge(1, 9, 3, 7);
    tick("copy_properties_");
    name("New");
    press("apply_button");
    EXPECT_NE(sent().front().find(" copy_properties 0 property_sections 6+6+6 "), std::string::npos);
}

TEST_F(UpscaleDialog, ThreeAxesAreThreeCommandsAndTwoTemporaries)
{
    open();
    name("My new");
    for (const AxisTab axis : {TabK, TabI, TabJ})
        tick(axis);
    press("apply_button");
    const Texts commands = sent();
    ASSERT_EQ(commands.size(), 5U);
    const std::string merge = "lodex sgrid_merge_multiple_sections name ", tmp = "_tmpobj_My new_up";
    EXPECT_TRUE(commands[0].starts_with(merge + tmp + "1 sgrid G direction \"first axis\" sections 0+1+2+3"));
    EXPECT_TRUE(commands[1].starts_with(merge + tmp + "2 sgrid " + tmp + "1 direction \"second axis\" sections "));
    EXPECT_TRUE(commands[2].starts_with(merge + "My new sgrid _tmpobj_My new_up2 direction \"vertical\" sections "));
    EXPECT_EQ(commands[3], "lodex destroy objects _tmpobj_My new_up1");
    EXPECT_EQ(commands[4], "lodex destroy objects _tmpobj_My new_up2");
    EXPECT_EQ(errors(), Texts{});
    EXPECT_EQ(size_of("My new"), (Counts{5, 5, 5, 125}));
    EXPECT_EQ(temporaries(), Texts{});
}

TEST_F(UpscaleDialog, TheNumberOfATemporaryCountsTheAxesThatAreOn)
{
    open();
    name("N");
    tick(TabJ);
    tick(TabK);
    press("apply_button");
    const Texts commands = sent();
    ASSERT_EQ(commands.size(), 3U);
    EXPECT_NE(commands[0].find(" name _tmpobj_N_up1 sgrid G direction \"second axis\""), std::string::npos);
    EXPECT_NE(commands[1].find(" name N sgrid _tmpobj_N_up1 direction \"vertical\""), std::string::npos);
    EXPECT_EQ(commands[2], "lodex destroy objects _tmpobj_N_up1");
    // K alone has no temporary.
    tick(TabJ);
    name("M");
    press("apply_button");
    EXPECT_EQ(sent().size(), 1U);
    EXPECT_TRUE(exists("M"));
}

TEST_F(UpscaleDialog, SeveralRowsInTheirOrderWithTails)
{
    open();
    name("New");
    tick(TabI);
    row(TabI).set_merge(6, 10, 3, 6);
    add_row(TabI);
    row(TabI, 1).set_merge(1, 4, 4, 2);
    press("apply_button");
    const std::string command = sent().front();
    EXPECT_EQ(value_of(command, "sections", "copy_properties"), "5+7+8+9+0+3");
    EXPECT_EQ(value_of(command, "property_sections", "properties"), "5+5+1");
    EXPECT_EQ(size_of("New"), (Counts{4, 10, 10, 400}));
    EXPECT_EQ(new_counts()[0], 4);
}

TEST_F(UpscaleDialog, AnotherApplyMakesAnotherGrid)
{
    open();
    name("New");
    tick(TabI);
    for (const char* next : {"New_0", "New_0_0"}) {
        press("apply_button");
        EXPECT_EQ(find<QLineEdit>("new_grid_name_")->text(), next);
    }
    EXPECT_EQ(size_of("New"), size_of("New_0"));
    EXPECT_EQ(errors(), Texts{});
}

TEST_F(UpscaleDialog, Painting)
{
    open();
    tick("paint_check_box_");
    const std::string begin = "lodex on Style G set attribute *sections value \"";
    const std::string end = "\";lodex on Style G update ;lodex update all cameras";
    EXPECT_EQ(sent(), Texts{begin + "3 1 0 0 2 0 0 3 0 0" + end});
    row(TabJ).set_run(1, 8);
    sent();
    row(TabJ).step()->setValue(3);
    EXPECT_EQ(sent(), Texts{begin + "3 1 0 0 2 0 0 3 0 0" + end});
    tick(TabJ);
    // Three blocks, the last one the tail of two.
    EXPECT_EQ(sent(), Texts{begin + "8 1 0 0 2 1 0 2 1 2 2 1 3 2 1 5 2 1 6 2 1 7 3 0 0" + end});
    EXPECT_EQ(painted_sections("G"), "8 1 0 0 2 1 0 2 1 2 2 1 3 2 1 5 2 1 6 2 1 7 3 0 0");
    tick(TabK);
    row(TabK).set_run(9, 10);
    EXPECT_EQ(sent().back(), begin + "9 1 0 0 2 1 0 2 1 2 2 1 3 2 1 5 2 1 6 2 1 7 3 1 8 3 1 9" + end);
    tick("paint_check_box_");
    EXPECT_EQ(sent(), Texts{"lodex on Style G set attribute *sections value \" 3 1 0 0 2 0 0 3 0 0\";"
                            "lodex on Style G update ;lodex update all cameras"});
    EXPECT_EQ(errors(), Texts{});
    EXPECT_EQ(warnings(), Texts{});
}

TEST_F(UpscaleDialog, PaintingWithoutAGridWarns)
{
    open("");
    tick("paint_check_box_");
    EXPECT_EQ(warnings(), Texts{"Please provide a sgrid for painting the sections on\n"});
    find<Lodex::LQMultiComboBox>("gridSelector_")->insertItem("ghost");
    choose_grid({"ghost"});
    messages.clear();
    sent();
    tick(TabI);
    EXPECT_EQ(warnings(), Texts{"Please provide a sgrid for painting the sections on\n"});
    EXPECT_TRUE(log.texts.empty());
}

TEST_F(UpscaleDialog, OkClosesAfterSuccessOnly)
{
    open();
    name("New");
    press("ok_button");
    run_deferred_deletes();
    ASSERT_TRUE(shell);
    tick(TabI);
    press("ok_button");
    run_deferred_deletes();
    EXPECT_TRUE(shell.isNull());
    EXPECT_TRUE(dialog.isNull());
    EXPECT_TRUE(exists("New"));
}

TEST_F(UpscaleDialog, NothingIsEnteredAgainWhileTheChainRuns)
{
    open();
    name("New");
    tick(TabI);
    tick(TabK);
    int calls = 0;
    lodex::Interpreter::instance().set_listener([&](const std::string&) {
        ++calls;
        press("apply_button");
        press("ok_button");
        press("cancel_button");
        QTest::keyClick(find<QLineEdit>("new_grid_name_"), Qt::Key_Escape);
        EXPECT_FALSE(process());
    });
    press("apply_button");
    run_deferred_deletes();
    lodex::Interpreter::instance().set_listener({});
    EXPECT_EQ(calls, 3);
    ASSERT_TRUE(shell);
    EXPECT_TRUE(exists("New"));
}

TEST_F(UpscaleDialog, WhatIsTypedButNotEndedCounts)
{
    open();
    name("New");
    tick(TabI);
    row(TabI).step()->setFocus();
    row(TabI).step()->selectAll();
    QTest::keyClicks(row(TabI).step(), "5");
    press("apply_button");
    EXPECT_EQ(value_of(sent().front(), "sections", "copy_properties"), "0+4+5+9");
}

TEST_F(UpscaleDialog, AnAxisOfOneSectionHasNoBlock)
{
    add_box("flat", {10, 10, 1});
    open("flat");
    name("Copy");
    tick(TabK);
    EXPECT_EQ(new_counts(), (Counts{10, 10, 1, 100}));
    press("apply_button");
    EXPECT_NE(sent().front().find(" sections  copy_properties 0 property_sections  properties "), std::string::npos);
    EXPECT_EQ(errors(), Texts{});
    EXPECT_EQ(size_of("Copy"), new_counts());
}

TEST_F(UpscaleDialog, TextsAreTranslatedButNotCommands)
{
    MarkingTranslator translator;
    QCoreApplication::installTranslator(&translator);
    open();
    EXPECT_EQ(shell->title(), "<Create SGrid for Upscaling>");
    EXPECT_EQ(on_page<QCheckBox>(TabI, "enable_box_")->text(), "<Enabled/Disabled <Axis I>>");
    EXPECT_EQ(find<QTabWidget>("axis_tabs_")->tabText(2), "<Axis K>");
    name("New");
    press("apply_button");
    EXPECT_EQ(fatal(), Texts{"<Please specify at least one axis!\n>"});
    tick(TabK);
    row(TabK).set_merge(1, 2, 2, 1);
    press("apply_button");
    EXPECT_EQ(sent(), Texts{"lodex sgrid_merge_multiple_sections name New sgrid G direction \"vertical\" sections 0+1 "
                            "copy_properties 0 property_sections 0 properties all_properties copy_fb_regions 1 "
                            "copy_regions 1 regions all_regions region_mode 1 percentile 50 copy_style 1 "
                            "model_info 0"});
    QCoreApplication::removeTranslator(&translator);
    EXPECT_EQ(errors(), Texts{});
    EXPECT_TRUE(exists("New"));
}

TEST_F(UpscaleDialog, TheSelectorStaysQuietWhileTemporariesComeAndGo)
{
    open();
    name("New");
    tick(TabI);
    tick(TabJ);
    int changes = 0;
    QObject::connect(find<Lodex::LQMultiComboBox>("gridSelector_"), &Lodex::LQMultiComboBox::selectionChanged,
                     [&changes] { ++changes; });
    press("apply_button");
    EXPECT_EQ(changes, 0);
    EXPECT_EQ(find<Lodex::LQMultiComboBox>("gridSelector_")->items(), (QStringList{"G", "New"}));
}

TEST_F(UpscaleDialog, Help)
{
    open();
    press("help_button");
    EXPECT_EQ(Lodex::XMHelpManager::instance()->current_key().str(),
              "help:?context=Dorvan&topic=dox_SGridUpscaleDialog");
    EXPECT_TRUE(messages.entries.empty());
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (window != shell->widget())
            window->close();
    }
}

} // namespace
