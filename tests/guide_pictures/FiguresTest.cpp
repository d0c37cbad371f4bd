// The figures of the pages: every window of the workbench on the example field.

#include "GuideWindow.h"

#include "apps/workbench/DialogTable.h"
#include "apps/workbench/DisplayPanel.h"
#include "apps/workbench/ObjectTree.h"
#include "apps/workbench/Autosave.h"
#include "apps/workbench/RecoveryBar.h"
#include "apps/workbench/SectionPanel.h"
#include "apps/workbench/plots/ComparisonWindow.h"
#include "apps/workbench/plots/NumbersWindow.h"
#include "lodex/gviews/CameraView.h"

#include <Lodex/qtools/LQMultiComboBox.h>

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSpinBox>
#include <QTabBar>
#include <QTabWidget>
#include <QTableWidget>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>
#include <QWizard>

using namespace lodex;

namespace {

class Figures : public GuideWindow {
protected:
    void make_coarse()
    {
        ASSERT_TRUE(window()->run(
            "lodex sgrid_merge_multiple_sections name Coarse sgrid Example direction \"vertical\" sections "
            "0+4+5+9+10+14+15+19+20+23+24+27+28+31+32+39; lodex on SGrid Example upscale_porosity fine_porosity PORO "
            "Coarse Coarse coarse_porosity PORO mapper parametric upscaler Arithmetic weight_using_volume 1"));
        settle();
    }
};

TEST_F(Figures, SectionDialogs)
{
    make_example();
    select("Example");
    QWidget* dialog = open_dialog("mergeSections");
    type_over(part<QLineEdit>(dialog, "new_grid_name_"), "Coarse");
    auto* direction = part<QComboBox>(dialog, "direction_");
    direction->setCurrentIndex(2);
    type_over(part<QSpinBox>(dialog, "to_"), "10");
    type_over(part<QSpinBox>(dialog, "step_"), "5");
    tick(part<QCheckBox>(dialog, "copy_properties_"));
    auto* const regions = part<QCheckBox>(dialog, "copy_regions_");
    if (!regions->isChecked())
        tick(regions);
    auto* const paint = part<QCheckBox>(dialog, "paint_check_box_");
    if (!paint->isChecked())
        tick(paint);
    picture_of(dialog, "dialog_mergeSections");
    settle();
    picture_of_part(window()->camera(), "painted_sections");
    close(dialog);

    dialog = open_dialog("subdivideSections");
    type_over(part<QLineEdit>(dialog, "new_grid_name_"), "Fine");
    direction = part<QComboBox>(dialog, "direction_");
    direction->setCurrentIndex(2);
    type_over(part<QSpinBox>(dialog, "to_"), "3");
    part<QComboBox>(dialog, "strati_")->setCurrentIndex(1);
    picture_of(dialog, "dialog_subdivideSections");
    close(dialog);
}

TEST_F(Figures, GridDialogs)
{
    make_example();
    select("Example");
    for (const char* id : {"upscaleGrid", "downscaleGrid"}) {
        QWidget* const dialog = open_dialog(id);
        auto* const tabs = part<QTabWidget>(dialog, "axis_tabs_");
        QTest::mouseClick(tabs->tabBar(), Qt::LeftButton, Qt::NoModifier, tabs->tabBar()->tabRect(2).center());
        const auto* const page = part<QWidget>(dialog, "axis_k_page");
        auto* const on = part<QCheckBox>(page, "enable_box_");
        if (!on->isChecked())
            tick(on);
        type_over(part<QSpinBox>(page, "to_"), "10");
        picture_of(dialog, QStringLiteral("dialog_") + QLatin1String(id));
        close(dialog);
    }
}

TEST_F(Figures, WizardPages)
{
    make_example();
    make_coarse();
    select("Example");
    auto* const wizard = qobject_cast<QWizard*>(open_dialog("upscaleProperty"));
    ASSERT_NE(wizard, nullptr);
    const auto next = [&] { click(wizard->button(QWizard::NextButton)); };
    choose(wizard, "fine_gridSelector_", "Example");
    choose(wizard, "coarse_gridSelector_", "Coarse");
    picture_of(wizard, "dialog_upscaleProperty");
    next();
    part<QComboBox>(wizard, "mapper_")->setCurrentText("parametric");
    picture_of(wizard, "wizard_mapping");
    next();
    tick(part<QCheckBox>(wizard, "weight_volume_"));
    picture_of(wizard, "wizard_porosity");
    part<QComboBox>(wizard, "property_class_")->setCurrentText("Permeability");
    part<QComboBox>(wizard, "method_")->setCurrentText("DFPressureSolver");
    picture_of(wizard, "wizard_permeability");
    next();
    const char* const axes[] = {"i", "j", "k"};
    const char* const names[] = {"PERMX", "PERMY", "PERMZ"};
    for (int axis = 0; axis < 3; ++axis) {
        choose(wizard, qPrintable(QStringLiteral("fine_prop_%1_cb_").arg(axes[axis])), names[axis]);
        choose(wizard, qPrintable(QStringLiteral("coarse_prop_%1_cb_").arg(axes[axis])), names[axis]);
    }
    picture_of(wizard, "wizard_properties");
    next();
    tick(part<QCheckBox>(wizard, "zero_switch_"));
    type_over(part<QLineEdit>(wizard, "zero_value_"), "0.001");
    picture_of(wizard, "wizard_preprocessing");
    next();
    picture_of(wizard, "wizard_postprocessing");
    next();
    picture_of(wizard, "wizard_summary");
    close(wizard);
}

TEST_F(Figures, FlowUnits)
{
    make_example();
    select("Example");
    QWidget* const dialog = open_dialog("flowUnits");
    const auto* const panel = part<QWidget>(dialog, "property_panel_1");
    choose(panel, "propertyComboBox", "PORO");
    click(part<QPushButton>(dialog, "updateStatsPushButton"));
    part<QLineEdit>(panel, "guessLineEdit")->setText("12");
    // The question whether to begin anew.
    QTimer::singleShot(0, qApp, [] {
        QWidget* const question = QApplication::activeModalWidget();
        ASSERT_NE(question, nullptr);
        click(part<QPushButton>(question, "no_button"));
    });
    click(part<QPushButton>(panel, "guessPushButton"));
    auto* const table = part<QTableWidget>(dialog, "table");
    table->setCurrentCell(0, 0);
    picture_of(dialog, "dialog_flowUnits");
    click(part<QPushButton>(dialog, "advanced_button_"));
    picture_of_part(part<QWidget>(dialog, "extension_"), "flow_units_advanced");
    close(dialog);
}

TEST_F(Figures, DisplayAndLegend)
{
    make_example();
    select("Example");
    part<QComboBox>(window(), "displayColour")->setCurrentText("PERMX");
    tick(part<QCheckBox>(window(), "sliceKOn"));
    type_over(part<QSpinBox>(window(), "sliceKTo"), "15");
    type_over(part<QSpinBox>(window(), "sliceKFrom"), "15");
    settle();
    picture_of_part(window()->display(), "display_panel");
    picture_of_part(window()->camera(), "camera_slice");
    QWidget* const legend = trigger_window("editLegend");
    picture_of(legend, "colour_legend");
    legend->close();
    window()->findChild<QTabWidget*>("views")->setCurrentIndex(1);
    part<QComboBox>(window(), "colourBy")->setCurrentText("FACIES");
    picture_of_part(window()->section(), "section");
    window()->findChild<QTabWidget*>("views")->setCurrentIndex(0);
}

TEST_F(Figures, Recovery)
{
    make_example();
    window()->show_offer({KeptSession{.name = "session",
                                      .file = "project.lodex-project",
                                      .when = QDateTime({2026, 3, 2}, {14, 35}),
                                      .bytes = 12'400'000,
                                      .grids = {"Example", "Coarse"},
                                      .project = "/models/field.lodex-project"}});
    auto* const bar = window()->findChild<RecoveryBar*>();
    ASSERT_NE(bar, nullptr);
    ASSERT_TRUE(bar->isVisible());
    settle();
    picture_of_part(bar->parentWidget(), "recovery");
}

TEST_F(Figures, NumbersComparisonReportShortcuts)
{
    make_example();
    make_coarse();
    window()->tree()->select(TreeItem{.kind = TreeItem::Kind::Property, .grid = "Example", .name = "PORO"});
    NumbersWindow* const numbers = window()->open_numbers();
    picture_of(numbers, "numbers_histogram");
    auto* const pages = part<QTabWidget>(numbers, "numbersPages");
    pages->setCurrentIndex(1);
    auto* const list = part<QListWidget>(numbers, "numbersProfileList");
    for (const char* name : {"PORO", "PERMX"})
        list->findItems(name, Qt::MatchExactly).value(0)->setCheckState(Qt::Checked);
    picture_of_part(pages, "numbers_profile");
    pages->setCurrentIndex(2);
    part<QComboBox>(numbers, "numbersOther")->setCurrentText("PERMX");
    part<QCheckBox>(numbers, "numbersLogY")->setChecked(true);
    picture_of_part(pages, "numbers_cross");
    numbers->close();

    ComparisonWindow* const comparison = window()->open_comparison();
    comparison->choose("Example", "PORO", "Coarse", "PORO", "parametric");
    comparison->compare();
    picture_of(comparison, "comparison");
    comparison->close();

    select("Coarse");
    QWidget* const report = trigger_window("report");
    report->findChild<QTreeWidget*>()->expandToDepth(0);
    picture_of(report, "report");
    report->close();
    window()->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window()));
    QWidget* const shortcuts = trigger_window("shortcuts");
    picture_of(shortcuts, "shortcuts");
    shortcuts->close();
}

} // namespace
