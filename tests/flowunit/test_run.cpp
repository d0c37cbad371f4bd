// The command that the dialog sends, run by the interpreter, and the activities made; the speed of a click.

#include "FlowUnitTest.h"

#include <Lodex/geobase/Property.h>
#include <Lodex/volumes/SGridActivityModel.h>

#include "lodex/volumes/model/PropertyTools.h"

#include <QElapsedTimer>

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <numeric>

namespace {

class FlowUnitRun : public FlowUnitTest {
protected:
    static double total_volume(const std::string& grid)
    {
        const auto volumes = lodex::find_grid(grid)->bulk_volumes();
        return std::reduce(volumes.begin(), volumes.end(), 0.0);
    }
    static std::filesystem::path field_data()
    {
        const char* variable = std::getenv("LODEX_FIELD_DATA");
        return variable ? variable : SOURCE_DIR "/../shared/data";
    }
    /// Five units by number, reset, 10 % deviation, build; then fine and coarse are compared.
    void build_from(const QString& property)
    {
        open();
        select("property_panel_1", "propertyComboBox", property);
        press("updateStatsPushButton");
        auto* list = find<QComboBox>("property_panel_1", "guessComboBox");
        auto* value = find<QLineEdit>("property_panel_1", "guessLineEdit");
        value->setText("5");
        answers.expect({"yes_button"});
        click(find<QPushButton>("property_panel_1", "guessPushButton"));
        EXPECT_EQ(widget->numFlowUnits(), 5);
        answers.expect({"yes_button"});
        press("resetPushButton");
        EXPECT_EQ(widget->numFlowUnits(), widget->numKLayers());
        list->setCurrentIndex(2);
        emit list->textActivated(list->currentText());
        value->setText("10");
        answers.expect({"yes_button"});
        click(find<QPushButton>("property_panel_1", "guessPushButton"));
        const int made = widget->numFlowUnits();
        EXPECT_LT(made, widget->numKLayers());
        name("coarse");
        EXPECT_TRUE(dialog->apply());
        EXPECT_EQ(fatal(), Texts{});
        EXPECT_EQ(errors(), Texts{});
        compare(made);
    }
    /// Every coarse layer comes from the rows of its flow unit, and the activity says so on both grids.
    void compare(int flow_units)
    {
        const auto* fine = lodex::find_grid("G");
        const auto* coarse = lodex::find_grid("coarse");
        ASSERT_TRUE(coarse);
        ASSERT_EQ(coarse->model().size[2], flow_units);
        const auto relation = coarse->relation_to(*fine);
        ASSERT_TRUE(relation);
        for (int unit = 1; unit <= flow_units; ++unit) {
            const auto& range = (*relation)[2][static_cast<std::size_t>(unit - 1)];
            EXPECT_EQ(range.first, widget->getFlowUnitPos(unit));
            EXPECT_EQ(range.last, widget->getFlowUnitPos(unit) + widget->sizeFlowUnit(unit) - 1);
        }
        for (const auto* grid : {fine, coarse}) {
            ASSERT_TRUE(grid->sgrid_activity_model());
            const auto activities = grid->sgrid_activity_model()->activities();
            ASSERT_EQ(activities.size(), 1U);
            ASSERT_EQ(activities[0]->kind(), Lodex::SGridActivity::Kind::Upgridding);
            const auto& modifications = dynamic_cast<Lodex::SGridUpgriddingActivityData*>(activities[0])->coarsening_data().modifications();
            std::size_t n = 0;
            for (int unit = 1; unit <= flow_units; ++unit) {
                if (widget->sizeFlowUnit(unit) < 2)
                    continue;
                ASSERT_LT(n, modifications.size());
                const long first = widget->getFlowUnitPos(unit) + 1, size = widget->sizeFlowUnit(unit);
                EXPECT_EQ(modifications[n], (Lodex::GridCoarseningData::Modification{Lodex::UGridIndex3d::K, first, first + size - 1, size}));
                ++n;
            }
            EXPECT_EQ(n, modifications.size());
        }
        EXPECT_EQ(coarse->property_db()->nb_properties(), 0) << "properties are not copied";
    }
};

} // namespace

TEST_F(FlowUnitRun, ApplyMakesTheGridAndTheActivity)
{
    lodex::add_grid("G", lodex::make_example({14, 12, 24}));
    const auto layers = lodex::find_grid("G")->model().layers.size();
    build_from("PORO");
    EXPECT_EQ(lodex::find_grid("coarse")->model().layers.size(), layers);
    EXPECT_NEAR(total_volume("coarse") / total_volume("G"), 1, 1e-3);
    // The selector lists the new grid and keeps its own; the table stays as it was.
    const auto* selector = find<Lodex::LQMultiComboBox>("selStraticomboBox");
    EXPECT_TRUE(selector->items().contains("coarse"));
    EXPECT_EQ(selector->currentText(), "G");
    EXPECT_EQ(find<QLineEdit>("newGridLineEdit")->text(), "coarse");
    EXPECT_EQ(widget->numFlowUnits(), lodex::find_grid("coarse")->model().size[2]);
}

TEST_F(FlowUnitRun, ATrailingPlusAndNoSectionsAtAllAreUnderstood)
{
    add_layered("G", {4});
    for (const Units& flow_units : {Units{1, 1, 1, 2}, Units{1, 2, 3, 4}}) {
        open();
        set_units(flow_units);
        name("coarse");
        EXPECT_TRUE(dialog->apply());
        EXPECT_EQ(errors(), Texts{});
        ASSERT_TRUE(lodex::find_grid("coarse"));
        EXPECT_EQ(lodex::find_grid("coarse")->model().size[2], flow_units.back());
        close();
        Lodex::GeobaseLib::instance()->destroy(lodex::find_grid("coarse"));
    }
}

TEST_F(FlowUnitRun, TheSameAfterTheCoarsestUnits)
{
    lodex::add_grid("G", lodex::make_example({10, 8, 12}));
    open();
    Lodex::List<int> strata;
    for (const int unit : widget->stratigraphicUnitNumbers())
        strata.append(unit);
    widget->setFlowUnit(strata);
    name("coarse");
    EXPECT_TRUE(dialog->apply());
    EXPECT_EQ(errors(), Texts{});
    compare(widget->numFlowUnits());
}

TEST_F(FlowUnitRun, EditModeAppliedByTheHost)
{
    lodex::add_grid("G", lodex::make_example({10, 8, 12}));
    open(CommandStub{{"sgrid", "G"}, {"mode", "edit"}, {"for_sgrid", "later"}});
    Lodex::List<int> strata;
    for (const int unit : widget->stratigraphicUnitNumbers())
        strata.append(unit);
    widget->setFlowUnit(strata);
    for (int round = 0; round < 2; ++round)
        EXPECT_TRUE(dialog->apply());
    const std::string activity = "later_" + std::to_string(widget->numFlowUnits()) + "_funits";
    const auto results = lodex::Interpreter::instance().run("lodex on SGrid G apply_coarsening \"" + activity + "\" name coarse");
    ASSERT_EQ(results.size(), 1U);
    EXPECT_EQ(results[0].status, lodex::StatementStatus::Done) << results[0].message;
    EXPECT_EQ(lodex::find_grid("coarse")->model().size[2], widget->numFlowUnits());
}

TEST_F(FlowUnitRun, Reek)
{
    const auto path = field_data() / "reek" / "reek_grd_w_props.roff";
    if (!std::filesystem::exists(path)) {
        std::cout << "the field model is not here; nothing to check\n";
        return;
    }
    for (const auto& result : lodex::Interpreter::instance().run("lodex import file \"" + path.string() + "\" name G\n"
                                                                 "lodex on SGrid G set_layers units \"Upper\"+\"Mid\"+\"Lower\" sizes 6+4+4"))
        ASSERT_EQ(result.status, lodex::StatementStatus::Done) << result.message;
    build_from("PORO");
}

/// Insert and Merge in a table of 1000 layers with three panels, until the table is painted again.
TEST_F(FlowUnitRun, AClickIsWithinAFrame)
{
    lodex::GridModel model = lodex::make_box({16, 16, 1000}, {50, 50, 1});
    model.properties.push_back(lodex::lognormal_property(model, "PORO", 0.2, 0.3, 1));
    model.properties.push_back(lodex::lognormal_property(model, "PERM", 100, 2, 2));
    model.layers.push_back({"A", 1000});
    lodex::add_grid("G", std::move(model));
    open();
    find<QSpinBox>("numPropSpinBox")->setValue(2);
    find<QSpinBox>("numRatiosSpinBox")->setValue(1);
    select("property_panel_2", "propertyComboBox", "PERM");
    method("property_panel_2", "Geometric");
    select("ratio_panel_1", "propertyComboBox", "PERM");
    select("ratio_panel_1", "overPropertyComboBox", "PORO");
    press("updateStatsPushButton");
    Lodex::List<int> list;
    for (int row = 0; row < 1000; ++row)
        list.append(row / 4 + 1);
    widget->setFlowUnit(list);

    std::vector<double> times;
    for (int round = 0; round < 10; ++round) {
        table->setCurrentCell(4 * round + 2, 0);
        for (const char* button : {"addPushButton", "mergePushButton"}) {
            QCoreApplication::processEvents();
            const int before = widget->numFlowUnits();
            QElapsedTimer timer;
            timer.start();
            find<QPushButton>(button)->click();
            table->viewport()->repaint();
            times.push_back(static_cast<double>(timer.nsecsElapsed()) / 1e6);
            EXPECT_EQ(std::abs(widget->numFlowUnits() - before), 1);
        }
    }
    std::ranges::sort(times);
    const double median = times[times.size() / 2];
    std::cout << "click to repainted table: median " << median << " ms, slowest " << times.back() << " ms\n";
    // Machines are shared and builds are not always optimised; the figure above is the one to look at.
    EXPECT_LT(median, 160);
}
