#include "GridDialogTest.h"

#include <Lodex/xtools/XMHelpManager.h>

namespace {

using Texts = std::vector<std::string>;
using Counts = std::vector<long>;

class DownscaleDialog : public DownscaleDialogTest {
protected:
    DownscaleDialog() { add_box("G", {4, 5, 6}); }

    const std::string subdivide = "lodex sgrid_subdivide_multiple_sections name ";
};

TEST_F(DownscaleDialog, Shell)
{
    open();
    EXPECT_STREQ(dialog->metaObject()->className(), "Kelvane::LQSGDownscaleDialog");
    EXPECT_EQ(shell->name().str(), "SgridDownscaleShell");
    EXPECT_EQ(shell->title(), "Create SGrid for Downscaling");
    EXPECT_EQ(find<QLabel>("banner_text")->text(),
              "Create new SGrid for downscaling\nby subdividing cells of existing SGrid");
}

TEST_F(DownscaleDialog, TextsAndDefaults)
{
    open();
    expect_boxes(
        {{"copy_properties_", "Copy properties",
          "Properties will be copied, but not upscaled, to the new Grid.", true},
         {"fault_blocks_", "Create fault block regions", "toggle on if you want to create fault block regions",
          true},
         {"copy_regions_", "Copy regions",
          "Regions will be copied to the new Grid. However model regions, faultblocks and layers are always "
          "preserved.",
          true},
         {"paint_check_box_", "Show selected sections",
          "toggle on if you want the selected cell sections beeing painted on the grid", false},
         {"model_information_", "Use stratigraphic model information to build the grid",
          "toggle on if you want to use the stratigraphic model information for rebuilding the grid", false}});
    const auto* properties = find<Lodex::LQMultiComboBox>("property_list_");
    EXPECT_EQ(properties->toolTip(), "Select properties that will be copied");
    EXPECT_EQ(properties->currentText(), "all_properties");
    EXPECT_TRUE(properties->isEnabled());
    const auto* regions = find<Lodex::LQMultiComboBox>("region_list_");
    EXPECT_EQ(regions->toolTip(), "Select regions that will be copied");
    EXPECT_EQ(regions->currentText(), "all_regions");
    EXPECT_FALSE(find<QWidget>("region_mode_group_"));
    for (const char* title : {"Stratigraphic Grid Definition", "Graphic Attributes", "Build Attributes"})
        EXPECT_TRUE(group_titles().contains(title)) << title;
    expect_labels({"Name", "Based on Stratigraphic Grid", "Number of cells:", "New number of cells:"});
    tick("copy_properties_");
    EXPECT_FALSE(properties->isEnabled());
    tick("copy_regions_");
    EXPECT_FALSE(regions->isEnabled());
    EXPECT_EQ(on_page<QCheckBox>(TabI, "enable_box_")->text(), "Enabled/DisabledAxis I");
    EXPECT_FALSE(on_page<QCheckBox>(TabJ, "isochore_box_"));
    EXPECT_TRUE(on_page<QCheckBox>(TabK, "isochore_box_"));
}

TEST_F(DownscaleDialog, EveryWidgetAPersonCanTouchHasAName)
{
    open();
    expect_names();
}

TEST_F(DownscaleDialog, CellCounts)
{
    open();
    EXPECT_EQ(counts("cells_"), (Counts{4, 5, 6, 120}));
    EXPECT_EQ(new_counts(), (Counts{4, 5, 6, 120}));
    tick(TabJ);
    EXPECT_EQ(new_counts(), (Counts{4, 10, 6, 240}));
    row(TabJ).set_division(2, 4, 3, 0, "");
    EXPECT_EQ(new_counts(), (Counts{4, 5 + 6, 6, 264}));
    add_row(TabJ);
    row(TabJ, 1).set_division(5, 5, 4, 0, "");
    EXPECT_EQ(new_counts(), (Counts{4, 5 + 6 + 3, 6, 336}));
    tick(TabJ);
    EXPECT_EQ(new_counts(), (Counts{4, 5, 6, 120}));
}

TEST_F(DownscaleDialog, ManyCellsAreCountedInFull)
{
    open();
    for (const AxisTab axis : {TabI, TabJ, TabK}) {
        tick(axis);
        row(axis).amount()->setValue(9999);
    }
    EXPECT_EQ(new_counts(), (Counts{4 * 9999L, 5 * 9999L, 6 * 9999L, 4L * 5 * 6 * 9999 * 9999 * 9999}));
}

TEST_F(DownscaleDialog, ChecksInTheirOrder)
{
    open("");
    press("apply_button");
    EXPECT_EQ(fatal(), Texts{"Please provide a new sgrid name\n"});
    messages.clear();
    name("New");
    press("apply_button");
    EXPECT_EQ(fatal(), Texts{"Please provide a sgrid to based the computation on\n"});
    messages.clear();
    choose_grid({"G"});
    press("apply_button");
    EXPECT_EQ(fatal(), Texts{"Please specify at least one axis!\n"});
    EXPECT_EQ(messages.entries.size(), 1U);
    EXPECT_TRUE(log.texts.empty());
}

TEST_F(DownscaleDialog, WholeCommand)
{
    open();
    name("New");
    tick(TabJ);
    row(TabJ).set_division(2, 4, 3, 1, "20");
    press("apply_button");
    // Two blanks: one behind the sections, one in front of the options.
    EXPECT_EQ(sent(), Texts{subdivide + "New sgrid G direction \"second axis\" sections "
                                        "1+2+parallel_to_base+20+2+2+parallel_to_base+20+3+2+parallel_to_base+20  "
                                        "copy_properties 1 properties all_properties copy_fb_regions 1 copy_regions 1 "
                                        "regions all_regions copy_style 1 vertical_cell_thickness 0 "
                                        "percent_cell_thickness 0 model_info 0"});
    EXPECT_EQ(errors(), Texts{});
    EXPECT_EQ(size_of("New"), (Counts{4, 11, 6, 264}));
    EXPECT_EQ(find<QLineEdit>("new_grid_name_")->text(), "New_0");
}

TEST_F(DownscaleDialog, TheIsochoreBoxIsReadAlongKOnly)
{
    open();
    name("New");
    for (const AxisTab axis : {TabI, TabJ, TabK})
        tick(axis);
    tick(on_page<QCheckBox>(TabK, "isochore_box_"));
    tick(on_page<QCheckBox>(TabJ, "percent_box_"));
    tick("model_information_");
    press("apply_button");
    const Texts commands = sent();
    ASSERT_EQ(commands.size(), 5U);
    const auto tail = [](const std::string& command) { return command.substr(command.find(" copy_style ")); };
    EXPECT_EQ(tail(commands[0]), " copy_style 1 vertical_cell_thickness 0 percent_cell_thickness 0 model_info 1");
    EXPECT_EQ(tail(commands[1]), " copy_style 1 vertical_cell_thickness 0 percent_cell_thickness 1 model_info 1");
    EXPECT_EQ(tail(commands[2]), " copy_style 1 vertical_cell_thickness 1 percent_cell_thickness 0 model_info 1");
    EXPECT_EQ(errors(), Texts{});
    EXPECT_EQ(size_of("New"), (Counts{8, 10, 12, 960}));
}

TEST_F(DownscaleDialog, WithoutRegionsNothingIsSaidOfThem)
{
    open();
    name("New");
    tick(TabK);
    tick("copy_regions_");
    tick("copy_properties_");
    tick("fault_blocks_");
    press("apply_button");
    const std::string command = sent().front();
    EXPECT_EQ(command.substr(command.find("  copy_properties ")),
              "  copy_properties 0 properties all_properties copy_fb_regions 0 copy_regions 0 copy_style 1 "
              "vertical_cell_thickness 0 percent_cell_thickness 0 model_info 0");
    EXPECT_EQ(errors(), Texts{});
}

TEST_F(DownscaleDialog, TheChainOfNames)
{
    open();
    name("N");
    tick(TabI);
    tick(TabK);
    press("apply_button");
    const Texts commands = sent();
    ASSERT_EQ(commands.size(), 3U);
    EXPECT_TRUE(commands[0].starts_with(subdivide + "_tmpobj_N_down1 sgrid G direction \"first axis\" "));
    EXPECT_TRUE(commands[1].starts_with(subdivide + "N sgrid _tmpobj_N_down1 direction \"vertical\" "));
    EXPECT_EQ(commands[2], "lodex destroy objects _tmpobj_N_down1");
    EXPECT_EQ(temporaries(), Texts{});
}

TEST_F(DownscaleDialog, AnAxisIsCheckedInItsTurn)
{
    open();
    name("N");
    for (const AxisTab axis : {TabI, TabJ, TabK})
        tick(axis);
    row(TabJ).set_run(1, 3);
    add_row(TabJ);
    row(TabJ, 1).set_run(3, 5);
    press("ok_button");
    run_deferred_deletes();
    const Texts commands = sent();
    ASSERT_EQ(commands.size(), 3U);
    EXPECT_TRUE(commands[0].starts_with(subdivide + "_tmpobj_N_down1 sgrid G direction \"first axis\" "));
    // The second one was never made; the host is told all the same.
    EXPECT_EQ(commands[1], "lodex destroy objects _tmpobj_N_down1");
    EXPECT_EQ(commands[2], "lodex destroy objects _tmpobj_N_down2");
    EXPECT_EQ(fatal(), Texts{"Section Editor intersection: Read message & please check your data\n"});
    ASSERT_FALSE(errors().empty());
    EXPECT_EQ(errors().front(),
              "Direction second axis. Section Editor 1 from 1 to 3 intersects Section Editor 2 from 3 to 5\n");
    EXPECT_FALSE(exists("N"));
    EXPECT_EQ(temporaries(), Texts{});
    ASSERT_TRUE(shell);
    EXPECT_EQ(find<QLineEdit>("new_grid_name_")->text(), "N");
}

TEST_F(DownscaleDialog, TheFirstAxisThatIsWrongSendsNothing)
{
    open();
    name("N");
    tick(TabI);
    row(TabI).set_run(1, 3);
    add_row(TabI);
    row(TabI, 1).set_run(3, 4);
    press("apply_button");
    EXPECT_EQ(sent(), Texts{});
    EXPECT_EQ(errors().size(), 1U);
}

TEST_F(DownscaleDialog, Painting)
{
    open();
    row(TabJ).set_run(2, 4);
    tick("paint_check_box_");
    const std::string begin = "lodex on Style G set attribute *sections value \"";
    const std::string end = "\";lodex on Style G update ;lodex update all cameras";
    EXPECT_EQ(sent(), Texts{begin + "3 1 0 0 2 0 0 3 0 0" + end});
    tick(TabJ);
    EXPECT_EQ(sent(), Texts{begin + "5 1 0 0 2 1 1  2 1 2  2 1 3  3 0 0" + end});
    row(TabK).set_run(6, 6);
    sent();
    tick(TabK);
    EXPECT_EQ(sent(), Texts{begin + "5 1 0 0 2 1 1  2 1 2  2 1 3  3 1 5 " + end});
    EXPECT_EQ(errors(), Texts{});
    EXPECT_EQ(warnings(), Texts{});
}

TEST_F(DownscaleDialog, PaintingWithoutAGridWarns)
{
    open("");
    tick("paint_check_box_");
    EXPECT_EQ(warnings(), Texts{"Please provide a sgrid for painting the sections on\n"});
    EXPECT_TRUE(log.texts.empty());
}

TEST_F(DownscaleDialog, LayersProposeAlongK)
{
    set_layers(lodex::find_grid("G"), {2, 4});
    lodex::find_grid("G")->change(
        [](lodex::GridModel& model) { model.layers[1].style = Lodex::LayerInfo::ParallelToTop; });
    open();
    EXPECT_EQ(row(TabK).strati()->currentText(), "Proportional");
    EXPECT_EQ(row(TabK).thickness()->text(), "5");
    row(TabK).from()->setValue(3);
    EXPECT_EQ(row(TabK).strati()->currentText(), "Parallel to Top");
    EXPECT_EQ(row(TabI).thickness()->text(), "");
}

TEST_F(DownscaleDialog, TextsAreTranslatedButNotCommands)
{
    MarkingTranslator translator;
    QCoreApplication::installTranslator(&translator);
    open();
    EXPECT_EQ(shell->title(), "<Create SGrid for Downscaling>");
    EXPECT_EQ(on_page<QCheckBox>(TabI, "enable_box_")->text(), "<Enabled/Disabled><Axis I>");
    EXPECT_EQ(on_page<QCheckBox>(TabI, "enable_box_")->toolTip(), "<Enabled/Disabled><Axis I>< as subdivided axis>");
    EXPECT_EQ(table(TabJ)->horizontalHeaderItem(4)->text(), "<Width>");
    EXPECT_EQ(table(TabK)->horizontalHeaderItem(3)->text(), "<Stratigraphy>");
    EXPECT_TRUE(on_page<QCheckBox>(TabK, "isochore_box_"));
    name("New");
    press("apply_button");
    EXPECT_EQ(fatal(), Texts{"<Please specify at least one axis!\n>"});
    tick(TabK);
    row(TabK).set_division(1, 1, 2, 2, "1");
    EXPECT_EQ(row(TabK).strati()->currentText(), "<Parallel to Top>");
    press("apply_button");
    EXPECT_EQ(sent(), Texts{subdivide + "New sgrid G direction \"vertical\" sections 0+1+parallel_to_top+1  "
                                        "copy_properties 1 properties all_properties copy_fb_regions 1 copy_regions 1 "
                                        "regions all_regions copy_style 1 vertical_cell_thickness 0 "
                                        "percent_cell_thickness 0 model_info 0"});
    name("New");
    press("apply_button");
    QCoreApplication::removeTranslator(&translator);
    EXPECT_EQ(errors().back(), "<Could not create Downgridding activity\n>");
}

TEST_F(DownscaleDialog, ASourceThatGoesIsLetGo)
{
    set_layers(lodex::find_grid("G"), {2, 4});
    open();
    name("New");
    tick(TabK);
    tick("paint_check_box_");
    row(TabK).from()->setValue(3);
    lodex::Interpreter::instance().run("lodex destroy objects G");
    EXPECT_EQ(dialog->get_sgrid(), nullptr);
    sent();
    messages.clear();
    row(TabK).amount()->setValue(5);
    EXPECT_EQ(warnings(), Texts{"Please provide a sgrid for painting the sections on\n"});
    EXPECT_EQ(counts("cells_"), (Counts{4, 5, 6, 120})); // the last ones that were true
    add_row(TabK);
    tick(TabI);
    press("apply_button");
    EXPECT_EQ(fatal(), Texts{"Please provide a sgrid to based the computation on\n"});
    press("cancel_button");
    run_deferred_deletes();
    EXPECT_TRUE(shell.isNull());
    EXPECT_TRUE(dialog.isNull());
    EXPECT_EQ(sent(), Texts{});
}

TEST_F(DownscaleDialog, Help)
{
    open();
    press("help_button");
    EXPECT_EQ(Lodex::XMHelpManager::instance()->current_key().str(),
              "help:?context=Dorvan&topic=dox_SGridDownscaleDialog");
    EXPECT_TRUE(messages.entries.empty());
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (window != shell->widget())
            window->close();
    }
}

} // namespace
