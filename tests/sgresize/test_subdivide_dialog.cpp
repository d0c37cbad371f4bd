#include "DialogTest.h"

#include "lodex/geobase/ProjectUnits.h"
#include "sgresize/LQSGSectionSubdivideDialog.h"

#include <Lodex/xtools/XMHelpManager.h>

#include <QGroupBox>
#include <QLabel>

namespace {

using Texts = std::vector<std::string>;

class SubdivideDialog : public SectionDialogTest<Kelvane::LQSGSectionSubdivideDialog> {
protected:
    SubdivideDialog() { add_box("G", {10, 10, 10}); }

    /// Layers of 4, 3 and 3 cells, one of each layering, cells of 10, 12.5 and 1/3 m.
    static void set_three_layers()
    {
        set_layers(lodex::find_grid("G"), {4, 3, 3});
        lodex::find_grid("G")->change([](lodex::GridModel& model) {
            model.layers[1].style = Lodex::LayerInfo::ParallelToBase;
            model.layers[1].cell_thickness = 12.5F;
            model.layers[2].style = Lodex::LayerInfo::ParallelToTop;
            model.layers[2].cell_thickness = 1.0F / 3;
        });
    }
    [[nodiscard]] std::string sections()
    {
        press("apply_button");
        const std::string command = log.take();
        const auto begin = command.find(" sections ");
        const auto end = command.find(" copy_properties ");
        return begin == std::string::npos ? command : command.substr(begin + 10, end - begin - 10);
    }
};

TEST_F(SubdivideDialog, Shell)
{
    open();
    EXPECT_STREQ(dialog->metaObject()->className(), "Kelvane::LQSGSectionSubdivideDialog");
    EXPECT_EQ(shell->name().str(), "SgridSubdivideSectionShell");
    EXPECT_EQ(shell->title(), "Subdivide SGrid Sections");
    EXPECT_EQ(find<QLabel>("banner_text")->text(), "Create new SGrid by subdividing cell sections of existing SGrid");
}

TEST_F(SubdivideDialog, TextsAndDefaults)
{
    open();
    expect_direction(); // the same words as in the dialog that merges
    expect_boxes({{"copy_properties_", "Copy properties", "Properties will be copied to the new Grid", false},
                  {"copy_regions_", "Copy regions", "Regions will be copied to the new Grid", false},
                  {"isochore_", "Cell thickness as isochore",
                   "If on, the thickness will be computed vertically, else along fiber.", false},
                  {"paint_check_box_", "Show selected sections",
                   "toggle on if you want the selected cell sections beeing painted on the grid", false}});
    EXPECT_EQ(group_titles(), (QStringList{"Stratigraphic Grid Definition", "Graphic Attributes", "Section Editor"}));
}

TEST_F(SubdivideDialog, FromTopToBottom)
{
    open();
    QCoreApplication::processEvents();
    expect_order({"new_grid_name_", "gridSelector_", "direction_", "paint_check_box_", "sections_header",
                  "sections_caption", "scrollview", "ok_button"},
                 Qt::Vertical);
    expect_order({"direction_", "copy_properties_", "copy_regions_", "isochore_"}, Qt::Horizontal);
    expect_order({"ok_button", "apply_button", "cancel_button", "help_button"}, Qt::Horizontal);
}

TEST_F(SubdivideDialog, EveryWidgetAPersonCanTouchHasAName)
{
    open();
    expect_names();
}

TEST_F(SubdivideDialog, TheGridIsAskedForBeforeTheName)
{
    open("");
    press("apply_button");
    EXPECT_EQ(fatal(), Texts{"Please provide a sgrid to based the computation on\n"});
    messages.clear();
    choose_grid({"G"});
    press("ok_button");
    run_deferred_deletes();
    EXPECT_EQ(fatal(), Texts{"Please provide a new sgrid name\n"});
    EXPECT_EQ(messages.entries.size(), 1U);
    EXPECT_TRUE(log.texts.empty());
    EXPECT_TRUE(shell);
}

TEST_F(SubdivideDialog, WholeCommand)
{
    open();
    name("New");
    row(0).set_division(3, 4, 3, 0, "1");
    click(row(0).add());
    row(1).set_division(7, 7, 2, 2, "0.5");
    press("apply_button");
    EXPECT_EQ(log.take(), "lodex sgrid_subdivide_multiple_sections name New sgrid G direction \"first axis\" sections "
                          "2+2+proportional+1+3+2+proportional+1+6+1+parallel_to_top+0.5 copy_properties 0 "
                          "copy_regions 0 copy_style 1 vertical_cell_thickness 0");
    EXPECT_EQ(errors(), Texts{});
    ASSERT_TRUE(lodex::find_grid("New"));
    EXPECT_EQ(lodex::find_grid("New")->model().size, (lodex::GridSize{10 + 2 * 2 + 1, 10, 10}));
}

TEST_F(SubdivideDialog, FlagsAndDirections)
{
    open("G", "Axis K");
    name("New");
    row(0).set_division(1, 1, 2, 0, "");
    click(find<QCheckBox>("copy_properties_"));
    click(find<QCheckBox>("copy_regions_"));
    click(find<QCheckBox>("isochore_"));
    press("apply_button");
    EXPECT_EQ(log.take(), "lodex sgrid_subdivide_multiple_sections name New sgrid G direction \"vertical\" sections "
                          "0+1+proportional+ copy_properties 1 copy_regions 1 copy_style 1 vertical_cell_thickness 1");
    find<QComboBox>("direction_")->setCurrentText("Axis J");
    press("apply_button");
    EXPECT_NE(log.take().find(" direction \"second axis\" sections "), std::string::npos);
}

TEST_F(SubdivideDialog, IntersectingRowsSendNothing)
{
    open("G", "Axis K");
    name("New");
    row(0).set_run(1, 5);
    click(row(0).add());
    row(1).set_run(5, 9);
    EXPECT_FALSE(dialog->process());
    EXPECT_EQ(fatal(), Texts{"Section Editor intersection: Read message & please check your data\n"});
    EXPECT_EQ(errors(),
              Texts{"Direction vertical. Section Editor 1 from 1 to 5 intersects Section Editor 2 from 5 to 9\n"});
    EXPECT_TRUE(log.texts.empty());
}

TEST_F(SubdivideDialog, UnitsDoNotMatterToASubdivision)
{
    set_three_layers();
    open("G", "Axis K");
    name("New");
    row(0).set_run(3, 6);
    EXPECT_TRUE(dialog->process());
    EXPECT_EQ(fatal(), Texts{});
    EXPECT_EQ(errors(), Texts{});
}

TEST_F(SubdivideDialog, TheLayerProposesItsLayeringAndThickness)
{
    set_three_layers();
    open("G", "Axis K");
    EXPECT_EQ(row(0).strati()->currentText(), "Proportional");
    EXPECT_EQ(row(0).thickness()->text(), "5");
    EXPECT_FALSE(row(0).thickness()->isEnabled());
    row(0).from()->setValue(5);
    EXPECT_EQ(row(0).strati()->currentText(), "Parallel to Base");
    EXPECT_EQ(row(0).thickness()->text(), "6.25");
    EXPECT_TRUE(row(0).thickness()->isEnabled());
    row(0).amount()->setValue(3);
    EXPECT_EQ(row(0).thickness()->text(), "4.16667");
    row(0).from()->setValue(8);
    EXPECT_EQ(row(0).strati()->currentText(), "Parallel to Top");
    EXPECT_EQ(row(0).thickness()->text(), "0.111111");
    row(0).amount()->setValue(9999);
    EXPECT_EQ(row(0).thickness()->text(), "3.33367e-05");
    // To drags From into the first unit.
    row(0).amount()->setValue(2);
    row(0).to()->setValue(2);
    EXPECT_EQ(row(0).strati()->currentText(), "Proportional");
    EXPECT_EQ(row(0).thickness()->text(), "5");
    click(row(0).add());
    EXPECT_EQ(row(1).from()->value(), 3);
    EXPECT_EQ(row(1).thickness()->text(), "5");
}

TEST_F(SubdivideDialog, ASuggestionFollowsTheAmountWhateverWasTyped)
{
    set_three_layers();
    open("G", "Axis K");
    row(0).from()->setValue(5);
    row(0).thickness()->setText("1");
    row(0).amount()->setValue(5);
    EXPECT_EQ(row(0).thickness()->text(), "2.5");
    row(0).thickness()->setText("1");
    name("New");
    EXPECT_NE(sections().find("4+4+parallel_to_base+1+5+4+parallel_to_base+1+"), std::string::npos);
}

TEST_F(SubdivideDialog, WithoutLayersAndAlongOtherAxesNothingIsSuggested)
{
    open("G", "Axis K");
    row(0).amount()->setValue(4);
    EXPECT_EQ(row(0).thickness()->text(), "");
    set_three_layers();
    find<QComboBox>("direction_")->setCurrentText("Axis J");
    row(0).amount()->setValue(5);
    row(0).from()->setValue(6);
    EXPECT_EQ(row(0).thickness()->text(), "");
    EXPECT_EQ(row(0).strati()->currentText(), "Proportional");
    find<QComboBox>("direction_")->setCurrentText("Axis K");
    EXPECT_EQ(row(0).strati()->currentText(), "Parallel to Base");
    EXPECT_EQ(row(0).thickness()->text(), "2.5");
}

TEST_F(SubdivideDialog, TheSuggestionIsInTheProjectsVerticalUnit)
{
    set_three_layers();
    lodex::set_project_units(lodex::LengthUnit::Metre, lodex::LengthUnit::Foot);
    open("G", "Axis K");
    EXPECT_EQ(row(0).thickness()->text(), QString::number(10 / 0.3048 / 2, 'g', 6));
    lodex::set_project_units(lodex::LengthUnit::Metre, lodex::LengthUnit::Metre);
    row(0).amount()->setValue(4);
    EXPECT_EQ(row(0).thickness()->text(), "2.5");
}

TEST_F(SubdivideDialog, AxisChangePointsThePickToolsToIt)
{
    add_box("H", {30, 20, 8});
    open("H");
    EXPECT_EQ(row(0).to()->value(), 30);
    find<QComboBox>("direction_")->setCurrentText("Axis J");
    EXPECT_EQ(row(0).to()->maximum(), 20);
    EXPECT_EQ(row(0).strati()->itemText(1), "Parallel to J-");
    click(row(0).pick("pick_from_"));
    const auto* tool =
        dynamic_cast<Kelvane::LQSGridCellSectionSelectToolAction*>(Lodex::GraphicLib::instance()->tool());
    ASSERT_TRUE(tool);
    EXPECT_EQ(tool->axis(), 2);
    find<QComboBox>("direction_")->setCurrentText("Axis K");
    EXPECT_EQ(tool->axis(), 3);
    EXPECT_EQ(row(0).to()->maximum(), 8);
    Lodex::GraphicLib::instance()->reset_tool();
}

TEST_F(SubdivideDialog, Painting)
{
    open("G", "Axis K");
    row(0).set_run(2, 4);
    find<QCheckBox>("paint_check_box_")->click();
    const std::string begin = "lodex on Style G set attribute *sections value \"";
    const std::string end = "\" ;lodex on Style G update ;lodex update all cameras";
    EXPECT_EQ(log.take(), begin + " 5 3 1 1  3 1 2  3 1 3  1 0 0 2 0 0" + end);
    row(0).amount()->setValue(3);
    EXPECT_EQ(log.take(), begin + " 5 3 1 1  3 1 2  3 1 3  1 0 0 2 0 0" + end);
    find<QComboBox>("direction_")->setCurrentText("Axis J");
    EXPECT_EQ(log.take(), begin + " 5 2 1 1  2 1 2  2 1 3  1 0 0 3 0 0" + end);
    find<QComboBox>("direction_")->setCurrentText("Axis I");
    EXPECT_EQ(log.take(), begin + " 5 1 1 1  1 1 2  1 1 3  2 0 0 3 0 0" + end);
    EXPECT_EQ(errors(), Texts{});
    press("cancel_button");
    EXPECT_EQ(log.take(), "lodex on Style G set attribute *sections value \" 3 1 0 0 2 0 0 3 0 0\";"
                          "lodex on Style G update ;lodex update all cameras");
}

TEST_F(SubdivideDialog, PaintingWithoutAGridWarns)
{
    open("");
    find<QCheckBox>("paint_check_box_")->click();
    EXPECT_EQ(warnings(), Texts{"Please provide a sgrid for painting the sections on\n"});
    EXPECT_TRUE(log.texts.empty());
}

TEST_F(SubdivideDialog, OkRunsAndCloses)
{
    open();
    name("New");
    press("ok_button");
    run_deferred_deletes();
    EXPECT_TRUE(shell.isNull());
    EXPECT_TRUE(dialog.isNull());
    EXPECT_TRUE(lodex::find_grid("New"));
}

TEST_F(SubdivideDialog, WhatIsTypedButNotEndedCounts)
{
    open();
    name("New");
    row(0).set_run(1, 4);
    row(0).amount()->setFocus();
    row(0).amount()->selectAll();
    QTest::keyClicks(row(0).amount(), "7");
    EXPECT_TRUE(sections().starts_with("0+6+proportional+"));
}

TEST_F(SubdivideDialog, EnterInAFieldNeitherAppliesNorAddsARow)
{
    open();
    name("New");
    row(0).strati()->setCurrentIndex(1);
    QTest::keyClick(find<QLineEdit>("new_grid_name_"), Qt::Key_Return);
    QTest::keyClick(row(0).amount(), Qt::Key_Return);
    QTest::keyClick(row(0).thickness(), Qt::Key_Enter);
    run_deferred_deletes();
    EXPECT_TRUE(shell);
    EXPECT_EQ(rows(), 1);
    EXPECT_TRUE(log.texts.empty());
}

TEST_F(SubdivideDialog, TextsAreTranslatedButNotCommands)
{
    MarkingTranslator translator;
    QCoreApplication::installTranslator(&translator);
    open();
    EXPECT_EQ(row(0).strati()->itemText(1), "<Parallel to I->");
    EXPECT_FALSE(row(0).thickness()->isEnabled());
    row(0).set_division(1, 1, 2, 1, "3");
    EXPECT_TRUE(row(0).thickness()->isEnabled());
    name("New");
    EXPECT_EQ(sections(), "0+1+parallel_to_base+3");
    QCoreApplication::removeTranslator(&translator);
    EXPECT_EQ(errors(), Texts{});
}

TEST_F(SubdivideDialog, AChangeOfAxisCutsNoWordOff)
{
    open("G", "Axis K");
    QCoreApplication::processEvents();
    EXPECT_GE(row(0).strati()->width(), row(0).strati()->sizeHint().width());
    const int width = row(0).strati()->width();
    find<QComboBox>("direction_")->setCurrentText("Axis I");
    click(row(0).add());
    QCoreApplication::processEvents();
    EXPECT_EQ(row(0).strati()->width(), width);
}

TEST_F(SubdivideDialog, Help)
{
    open();
    press("help_button");
    EXPECT_EQ(Lodex::XMHelpManager::instance()->current_key().str(),
              "help:user-doc/sgrid_new.html#LQSGSectionSubdivide;winhelp:Lodex");
    EXPECT_TRUE(messages.entries.empty());
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (window != shell->widget())
            window->close();
    }
}

} // namespace
