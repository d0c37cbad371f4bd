// The dialog: its window, options, validation, the command it sends, create and edit mode.

#include "FlowUnitTest.h"

#include <Lodex/qtools/LQNumberEdits.h>
#include <Lodex/volumes/SGridActivityModel.h>
#include <Lodex/xtools/XMHelpManager.h>

#include <QFrame>
#include <QGroupBox>
#include <QRadioButton>

namespace {

class FlowUnitDialog : public FlowUnitTest {
protected:
    void options(int mode, const QString& number, const QString& volume)
    {
        find<QCheckBox>("copy_regions_")->setChecked(true);
        auto* button = find<QRadioButton>(("region_mode_" + std::to_string(mode)).c_str());
        button->setChecked(true);
        dialog->set_region_mode(mode);
        find<QLineEdit>("number_percentile_")->setText(number);
        find<QLineEdit>("volume_percentile_")->setText(volume);
    }
    /// The tail of the command that Apply sends.
    std::string tail(const std::string& sections)
    {
        log.texts.clear();
        press("apply_button");
        const std::string text = command();
        const std::string head = "lodex sgrid_merge_multiple_sections name new sgrid G direction \"vertical\" sections " + sections;
        EXPECT_EQ(text.substr(0, head.size()), head);
        return text.size() < head.size() ? text : text.substr(head.size());
    }
};

} // namespace

TEST_F(FlowUnitDialog, WindowAndButtons)
{
    add_layered("G", {2, 2});
    open();
    EXPECT_EQ(shell->name(), Lodex::CString("SGridFlowUnitShell"));
    EXPECT_EQ(shell->title(), "Flow Unit Analysis");
    const auto expect = [&](const char* button, const char* text, const char* tip) {
        EXPECT_EQ(find<QPushButton>(button)->text(), text);
        EXPECT_EQ(find<QPushButton>(button)->toolTip(), tip);
        EXPECT_FALSE(find<QPushButton>(button)->autoDefault());
    };
    expect("save_text_button", "Save as Text...", "Save in file using text format (tab separated, Excel compatible).");
    expect("ok_button", "OK", "Launch upgridding process (close window)");
    expect("apply_button", "Apply", "Launch upgridding process (leave window open)");
    expect("cancel_button", "Cancel", "Cancel (close window)");
    expect("help_button", "Help", "Launch help");
    expect("advanced_button_", "Advanced", "Click here to display the advanced parameters");
    EXPECT_TRUE(find<QPushButton>("advanced_button_")->isFlat());
    EXPECT_EQ(find<QWidget>("copy_regions_")->toolTip(), "Copy regions to the new grid. Model regions and layers are always preserved.");
    EXPECT_EQ(find<QWidget>("model_info_")->toolTip(), "Use the stratigraphic model information to rebuild the grid.");
    EXPECT_EQ(find<QWidget>("region_list_")->toolTip(), "Select regions to copy.");
    EXPECT_EQ(find<QGroupBox>("region_mode_group_")->title(), "Copy regions from:");
    const char* const modes[4][2] = {
        {"All original cells", "If any of the original cells is in a region, then the upscaled cell is in that region."},
        {"Percentage of fine cells",
         "If the user defined percentage of the fine cells is in a region, then the upscaled cell is in that region."},
        {"Most probable cell regions",
         "The upscaled cell is in the most probable region computed from the original cells. If more than one region have the "
         "same frequency, upscaled cell belongs to all these regions"},
        {"Percentage of fine cell volume",
         "If the user defined percentage of the fine cell volume is in the region, then the upscaled cell is in that region."}};
    for (int id = 0; id < 4; ++id) {
        const auto* button = find<QRadioButton>(("region_mode_" + std::to_string(id)).c_str());
        EXPECT_EQ(button->text(), modes[id][0]);
        EXPECT_EQ(button->toolTip(), modes[id][1]);
        EXPECT_EQ(button->isChecked(), id == 0);
    }
    EXPECT_TRUE(find<QCheckBox>("copy_fb_regions_")->isChecked());
    EXPECT_TRUE(find<QCheckBox>("copy_regions_")->isChecked());
    EXPECT_FALSE(find<QCheckBox>("model_info_")->isChecked());
    EXPECT_EQ(find<Lodex::LQDoubleLineEdit>("number_percentile_")->value(), 50);
    EXPECT_EQ(find<Lodex::LQDoubleLineEdit>("volume_percentile_")->value(), 50);

    press("help_button");
    EXPECT_EQ(Lodex::XMHelpManager::instance()->current_key(), Lodex::CString("help:?context=Dorvan&topic=dox_FlowUnitAnalysis"));
}

TEST_F(FlowUnitDialog, EveryControlHasAName)
{
    add_layered("G", {2, 2});
    open();
    find<QSpinBox>("numRatiosSpinBox")->setValue(1);
    for (const QWidget* control : shell->widget()->findChildren<QWidget*>()) {
        const bool touchable = qobject_cast<const QAbstractButton*>(control) || qobject_cast<const QLineEdit*>(control) ||
                               qobject_cast<const QComboBox*>(control) || qobject_cast<const QSpinBox*>(control);
        const bool own = !control->parentWidget() || (!qobject_cast<QAbstractSpinBox*>(control->parentWidget()) &&
                                                      !qobject_cast<QComboBox*>(control->parentWidget()) &&
                                                      !qobject_cast<QTableWidget*>(control->parentWidget()));
        EXPECT_FALSE(touchable && own && control->objectName().isEmpty()) << control->metaObject()->className();
    }
}

TEST_F(FlowUnitDialog, TheAdvancedPartFolds)
{
    add_layered("G", {2, 2});
    open();
    QWidget* extension = find<QWidget>("extension_");
    EXPECT_TRUE(extension->isHidden());
    QWidget* window = shell->widget();
    QCoreApplication::processEvents();
    const int height = window->height();
    press("advanced_button_");
    QCoreApplication::processEvents();
    EXPECT_FALSE(extension->isHidden());
    EXPECT_GE(window->height(), height + extension->sizeHint().height());
    press("advanced_button_");
    QCoreApplication::processEvents();
    EXPECT_TRUE(extension->isHidden());
    EXPECT_EQ(window->height(), height);
    auto* more = new QLabel("more");
    dialog->add_widget_to_extension(more);
    EXPECT_TRUE(extension->isAncestorOf(more));
}

TEST_F(FlowUnitDialog, RegionOptions)
{
    auto* grid = add_layered("G", {2, 2});
    add_region(grid, "R1");
    add_region(grid, "R2");
    add_layered("H", {2, 2});
    open();
    const auto* list = find<Lodex::LQMultiComboBox>("region_list_");
    EXPECT_TRUE(list->multiSelection());
    EXPECT_EQ(list->items(), (QStringList{"all_regions", "R1", "R2"}));
    EXPECT_EQ(list->currentText(), "all_regions");
    find<Lodex::LQMultiComboBox>("selStraticomboBox")->setSelectedItems({"H"});
    EXPECT_EQ(list->items(), QStringList{"all_regions"});

    press("advanced_button_");
    const auto fields = [&] {
        return std::pair(find<QLineEdit>("number_percentile_")->isEnabled(), find<QLineEdit>("volume_percentile_")->isEnabled());
    };
    using Both = std::pair<bool, bool>;
    EXPECT_EQ(fields(), Both(false, false));
    for (const auto& [id, expected] : {std::pair(1, Both(true, false)), {2, Both(false, false)}, {3, Both(false, true)}, {0, Both(false, false)}}) {
        click(find<QRadioButton>(("region_mode_" + std::to_string(id)).c_str()));
        EXPECT_EQ(fields(), expected) << id;
    }
    find<QCheckBox>("copy_regions_")->click();
    EXPECT_FALSE(list->isEnabled());
    EXPECT_FALSE(find<QWidget>("region_mode_group_")->isEnabled());
    find<QCheckBox>("copy_regions_")->click();
    EXPECT_TRUE(list->isEnabled());
    EXPECT_TRUE(find<QWidget>("region_mode_group_")->isEnabled());
}

TEST_F(FlowUnitDialog, ChecksInTheirOrder)
{
    open(CommandStub{});
    const auto message = [&] {
        EXPECT_FALSE(dialog->apply());
        EXPECT_TRUE(log.texts.empty());
        const Texts texts = take_fatal();
        EXPECT_TRUE(errors().empty());
        return texts;
    };
    EXPECT_EQ(message(), Texts{"No SGrid selected.\n"});
    add_layered("G", {3, 3, 2});
    find<Lodex::LQMultiComboBox>("selStraticomboBox")->setSelectedItems({"G"});
    set_units({1, 1, 1, 1, 1, 1, 1, 1});
    EXPECT_EQ(message(), Texts{"Please provide a new SGrid name.\n"});
    name("new");
    EXPECT_EQ(message(), Texts{"There are not enough sections to merge.\n"});
    set_units({1, 1, 1, 1, 1, 2, 2, 2});
    EXPECT_EQ(message(), Texts{"There are not enough sections to merge: Same or less number of flow units as stratigraphic units \n"});
    set_units({1, 1, 2, 2, 2, 3, 3, 3});
    EXPECT_EQ(message(), Texts{"You are merging sections belonging to two or more stratigraphic units.  Flow Unit 2: layer 3-> "
                               "layer 5 overlap stratigraphic units 1 and 2.\n"});
    set_units({1, 1, 1, 2, 2, 3, 3, 3});
    EXPECT_EQ(message(), Texts{"You are merging sections belonging to two or more stratigraphic units.  Flow Unit 3: layer 6-> "
                               "layer 8 overlap stratigraphic units 2 and 3.\n"});
    set_units({1, 2, 3, 4, 4, 4, 5, 5});
    EXPECT_TRUE(widget->checkUpgridding());
    set_units({1, 1, 1, 2, 2, 2, 3, 3});
    EXPECT_TRUE(widget->checkUpgridding()) << "as many as there are stratigraphic units";
    EXPECT_EQ(take_fatal(), Texts{});
}

TEST_F(FlowUnitDialog, AStoppedCheckPasses)
{
    add_layered("G", {3, 3});
    open();
    name("new");
    set_units({1, 1, 2, 2, 2, 2});
    const Stop stop("Checking Flow Units...");
    EXPECT_TRUE(widget->checkUpgridding());
    EXPECT_EQ(stop.titles, Texts{"Checking Flow Units..."});
    EXPECT_EQ(fatal(), Texts{});
}

TEST_F(FlowUnitDialog, AStoppedCommandIsSentAsFarAsItGoes)
{
    add_layered("G", {6});
    open();
    name("new");
    set_units({1, 1, 2, 2, 3, 3});
    const Stop stop("Creating command...");
    EXPECT_TRUE(widget->launchUpgriddingProcess(" x"));
    EXPECT_EQ(command(), "lodex sgrid_merge_multiple_sections name new sgrid G direction \"vertical\" sections  x\n");
}

TEST_F(FlowUnitDialog, NoStratigraphicModel)
{
    auto* grid = add_layered("G", {4});
    open();
    name("new");
    set_units({1, 1, 2, 2});
    grid->change([](lodex::GridModel& model) { model.layers.clear(); });
    answers.expect({"no_button"});
    EXPECT_FALSE(dialog->apply());
    EXPECT_EQ(fatal(), Texts{}) << "the question was enough";
    EXPECT_TRUE(log.texts.empty());
}

TEST_F(FlowUnitDialog, Sections)
{
    add_layered("G", {8});
    open();
    name("new");
    const auto sections = [&](const Units& flow_units) {
        set_units(flow_units);
        log.texts.clear();
        widget->launchUpgriddingProcess(" T");
        const std::string text = command(), before = " sections ";
        return text.substr(text.find(before) + before.size());
    };
    EXPECT_EQ(sections({1, 1, 1, 1, 2, 3, 3, 3}), "0+3+5+7 T\n");
    EXPECT_EQ(sections({1, 2, 3, 4, 5, 5, 5, 5}), "4+7 T\n");
    EXPECT_EQ(sections({1, 1, 1, 1, 1, 1, 1, 2}), "0+6+ T\n") << "the last unit is a single layer";
    EXPECT_EQ(sections({1, 2, 3, 4, 5, 6, 7, 8}), " T\n");
    EXPECT_EQ(sections({1, 1, 2, 3, 3, 4, 5, 6}), "0+1+3+4+ T\n");
}

TEST_F(FlowUnitDialog, TheWholeCommand)
{
    auto* grid = add_layered("G", {4, 4});
    add_region(grid, "R1");
    add_region(grid, "R2");
    open();
    name("new");
    set_units({1, 1, 2, 2, 3, 3, 3, 3});
    const std::string sections = "0+1+2+3+4+7";
    const std::string start = " copy_properties 0 property_sections -1  copy_fb_regions 1 copy_regions 1 regions ";
    const auto again = [&] {
        close();
        Lodex::GeobaseLib::instance()->destroy(lodex::find_grid("new"));
        open();
        name("new");
        set_units({1, 1, 2, 2, 3, 3, 3, 3});
    };
    EXPECT_EQ(tail(sections), start + "all_regions region_mode 0 percentile 0 copy_style 1 model_info 0\n");
    EXPECT_EQ(fatal(), Texts{});
    EXPECT_EQ(errors(), Texts{});
    again();
    options(1, "12.5", "80");
    find<Lodex::LQMultiComboBox>("region_list_")->setSelectedItems({"R1", "R2"});
    EXPECT_EQ(tail(sections), start + "R1+R2 region_mode 1 percentile 12.5 copy_style 1 model_info 0\n");
    again();
    options(2, "30", "80");
    EXPECT_EQ(tail(sections), start + "all_regions region_mode 3 percentile 80 copy_style 1 model_info 0\n");
    again();
    options(3, "30", "80");
    EXPECT_EQ(tail(sections), start + "all_regions region_mode 2 percentile 0 copy_style 1 model_info 0\n");
    again();
    find<QCheckBox>("copy_regions_")->setChecked(false);
    find<QCheckBox>("copy_fb_regions_")->setChecked(false);
    find<QCheckBox>("model_info_")->setChecked(true);
    EXPECT_EQ(tail(sections), " copy_properties 0 property_sections -1  copy_fb_regions 0 copy_regions 0 copy_style 1 model_info 1\n");
}

TEST_F(FlowUnitDialog, OkClosesOnSuccessOnly)
{
    add_layered("G", {4});
    open();
    set_units({1, 1, 2, 2});
    press("ok_button");
    run_deferred_deletes();
    ASSERT_TRUE(shell);
    EXPECT_EQ(take_fatal(), Texts{"Please provide a new SGrid name.\n"});
    name("new");
    press("ok_button");
    run_deferred_deletes();
    EXPECT_FALSE(shell);
    EXPECT_FALSE(dialog);
    EXPECT_TRUE(lodex::find_grid("new"));
}

TEST_F(FlowUnitDialog, CancelAndEscape)
{
    add_layered("G", {4});
    for (const bool escape : {false, true}) {
        open();
        set_units({1, 1, 2, 2});
        name("new");
        if (escape)
            QTest::keyClick(shell->widget()->findChild<QDialog*>(), Qt::Key_Escape);
        else
            press("cancel_button");
        run_deferred_deletes();
        EXPECT_FALSE(shell);
        EXPECT_FALSE(dialog);
        EXPECT_TRUE(log.texts.empty());
    }
}

TEST_F(FlowUnitDialog, AFailedCommandLeavesNoActivity)
{
    add_layered("G", {4});
    open();
    name("new");
    set_units({1, 1, 2, 2});
    add_layered("new", {4}); // taken since
    EXPECT_FALSE(dialog->apply());
    const Texts texts = errors();
    ASSERT_FALSE(texts.empty());
    EXPECT_EQ(texts.back(), "Could not create the upgridding activity.\n");
    EXPECT_EQ(find<QLineEdit>("newGridLineEdit")->text(), "new");
    // The same command again.
    const std::string once = log.texts.at(0);
    EXPECT_FALSE(dialog->apply());
    EXPECT_EQ(log.texts.at(1), once);
}

TEST_F(FlowUnitDialog, TheStubFillsTheDialog)
{
    add_layered("G", {4});
    add_layered("H", {2});
    open(CommandStub{{"sgrid", "H"}, {"for_sgrid", "coarse"}});
    EXPECT_EQ(find<Lodex::LQMultiComboBox>("selStraticomboBox")->currentText(), "H");
    EXPECT_EQ(table->rowCount(), 2);
    EXPECT_EQ(find<QLineEdit>("newGridLineEdit")->text(), "coarse");
    EXPECT_TRUE(find<QLineEdit>("newGridLineEdit")->isEnabled());
    dialog->setNewGridName("G");
    EXPECT_EQ(find<QLineEdit>("newGridLineEdit")->text(), "G_0");
    close();
    for (const CommandStub& stub : {CommandStub{}, CommandStub{{"sgrid", "none"}}, CommandStub{{"mode", "view"}}}) {
        open(stub);
        EXPECT_EQ(find<Lodex::LQMultiComboBox>("selStraticomboBox")->currentText(), "");
        EXPECT_TRUE(find<Lodex::LQMultiComboBox>("selStraticomboBox")->isEnabled());
        EXPECT_FALSE(find<QPushButton>("advanced_button_")->isHidden());
        close();
    }
}

TEST_F(FlowUnitDialog, InitWithoutAWidgetIsAnInternalError)
{
    Kelvane::LQFlowUnitDialog bare;
    CommandStub stub;
    bare.init(&stub);
    const Texts texts = errors();
    ASSERT_EQ(texts.size(), 1U);
    EXPECT_NE(texts[0].find("xmflowunit"), std::string::npos) << texts[0];
    EXPECT_NE(texts[0].find("Pointer is nil: flow_unit_panel_\n"), std::string::npos) << texts[0];
    EXPECT_FALSE(bare.apply());
}

TEST_F(FlowUnitDialog, EditModeRecordsTheCoarseningAndNoMore)
{
    using Coarsening = Lodex::SGridGridCoarseningModificationActivityData;
    auto* grid = add_layered("G", {4, 4});
    open(CommandStub{{"sgrid", "G"}, {"mode", "edit"}, {"for_sgrid", "NAME"}});
    EXPECT_FALSE(find<Lodex::LQMultiComboBox>("selStraticomboBox")->isEnabled());
    EXPECT_FALSE(find<QLineEdit>("newGridLineEdit")->isEnabled());
    for (const char* part : {"advanced_button_", "advanced_frame_", "extension_"})
        EXPECT_TRUE(find<QWidget>(part)->isHidden()) << part;
    EXPECT_EQ(table->rowCount(), 8);

    set_units({1, 2, 2, 2, 3, 3, 4, 5});
    EXPECT_TRUE(dialog->apply());
    EXPECT_TRUE(log.texts.empty()) << "no command";
    EXPECT_EQ(find<QLineEdit>("newGridLineEdit")->text(), "NAME");
    auto* activity = Coarsening::get_coarsening_activity(grid, "NAME_5_funits");
    ASSERT_TRUE(activity);
    using Modification = Lodex::GridCoarseningData::Modification;
    const auto modifications = [&] { return activity->grid_coarsening_data()->modifications(); };
    const std::vector<Modification> expected{{Lodex::UGridIndex3d::K, 2, 4, 3}, {Lodex::UGridIndex3d::K, 5, 6, 2}};
    EXPECT_EQ(modifications(), expected);

    // Once more: the same activity, identical modifications once.
    EXPECT_TRUE(dialog->apply());
    EXPECT_EQ(modifications(), expected);
    set_units({1, 1, 2, 2, 3, 4, 5, 5});
    EXPECT_TRUE(dialog->apply());
    EXPECT_EQ(modifications().size(), 5U);
    set_units({1, 1, 1, 1, 2, 2, 2, 2});
    EXPECT_TRUE(dialog->apply());
    EXPECT_TRUE(Coarsening::get_coarsening_activity(grid, "NAME_2_funits"));
    EXPECT_TRUE(log.texts.empty());
    EXPECT_EQ(errors(), Texts{});
    EXPECT_EQ(fatal(), Texts{});

    name("");
    EXPECT_FALSE(dialog->apply());
    EXPECT_EQ(take_fatal(), Texts{"Please provide a new SGrid name.\n"});
}
