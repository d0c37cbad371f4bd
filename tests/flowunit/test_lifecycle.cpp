// Grids, properties and panels that go at an awkward moment; what Apply leaves of the statistics.

#include "FlowUnitTest.h"

#include <Lodex/volumes/SGridActivityModel.h>

namespace {

constexpr const char* first = "property_panel_1";
constexpr const char* statistics = "Computing flow unit statistics...";

class FlowUnitLifecycle : public FlowUnitTest {
protected:
    static void destroy(const char* grid) { Lodex::GeobaseLib::instance()->destroy(lodex::find_grid(grid)); }
    void expect_no_grid()
    {
        EXPECT_EQ(widget->getSGrid(), nullptr);
        EXPECT_EQ(table->rowCount(), 0);
        EXPECT_EQ(widget->getPropertyPanel(1)->getSGrid(), nullptr);
        EXPECT_EQ(widget->getPropertyPanel(1)->getPropertyName(), "");
        press("updateStatsPushButton");
        EXPECT_FALSE(dialog->apply());
        EXPECT_EQ(take_fatal(), Texts{"No SGrid selected.\n"});
        EXPECT_EQ(errors(), Texts{});
    }
    /// Outdated statistics are worked out, and `what` happens under way.
    void while_updating(const std::function<void()>& what)
    {
        method(first, widget->getPropertyPanel(1)->averagingMethod() == "Sum" ? "Number" : "Sum");
        DuringRun sink(statistics, what);
        press("updateStatsPushButton");
        EXPECT_FALSE(sink.action) << "it did not come to it";
    }
};

} // namespace

TEST_F(FlowUnitLifecycle, AGridThatGoesThoughItIsNotTheSelectorsOne)
{
    add_layered("G", {3});
    open(CommandStub{});
    widget->sgridSelectionChanged(QString("G"));
    EXPECT_EQ(table->rowCount(), 3);
    destroy("G");
    expect_no_grid();
}

TEST_F(FlowUnitLifecycle, AGridThatGoesInEditMode)
{
    add_layered("G", {3});
    open(CommandStub{{"sgrid", "G"}, {"mode", "edit"}, {"for_sgrid", "NAME"}});
    EXPECT_EQ(table->rowCount(), 3);
    destroy("G");
    expect_no_grid();
}

TEST_F(FlowUnitLifecycle, AGridThatGoesWhileTheQuestionIsOpen)
{
    add_box("G");
    open(CommandStub{});
    answers.meanwhile = [] { destroy("G"); };
    answers.expect({"yes_button"});
    find<Lodex::LQMultiComboBox>("selStraticomboBox")->setSelectedItems({"G"});
    EXPECT_TRUE(log.texts.empty()) << "there is nothing left to add units to";
    expect_no_grid();

    close();
    add_layered("G", {3});
    open();
    for (const char* button : {"resetPushButton", "guessPushButton"}) {
        answers.meanwhile = [] { destroy("G"); };
        answers.expect({"yes_button"});
        press(button);
        take_fatal(); // "Specify a number ..." on the empty table
        expect_no_grid();
        add_layered("G", {3});
        find<Lodex::LQMultiComboBox>("selStraticomboBox")->setSelectedItems({"G"});
    }
}

TEST_F(FlowUnitLifecycle, APanelThatGoesWhileTheQuestionIsOpen)
{
    add_layered("G", {3});
    open();
    answers.meanwhile = [this] { find<QSpinBox>("numPropSpinBox")->setValue(0); };
    answers.expect({"yes_button"});
    click(find<QPushButton>(first, "guessPushButton"));
    EXPECT_EQ(table->columnCount(), 2);
    EXPECT_EQ(units(), (Units{1, 2, 3}));
}

TEST_F(FlowUnitLifecycle, AGridThatGoesDuringARun)
{
    add_layered("G", {3});
    open();
    find<QSpinBox>("numPropSpinBox")->setValue(3);
    while_updating([] { destroy("G"); });
    expect_no_grid();
}

TEST_F(FlowUnitLifecycle, AnotherGridDuringARun)
{
    add_layered("G", {3});
    add_layered("H", {2, 3});
    open();
    while_updating([this] { find<Lodex::LQMultiComboBox>("selStraticomboBox")->setSelectedItems({"H"}); });
    EXPECT_EQ(widget->getSGrid(), lodex::find_grid("H"));
    EXPECT_EQ(units(), (Units{1, 2, 3, 4, 5}));
    EXPECT_EQ(column(1), (QStringList{"40", "80", "120", "160", "200"}));
    EXPECT_FALSE(enabled("updateStatsPushButton"));
    EXPECT_EQ(errors(), Texts{});
}

TEST_F(FlowUnitLifecycle, PanelsComeAndGoDuringARun)
{
    add_layered("G", {3});
    open();
    find<QSpinBox>("numPropSpinBox")->setValue(3);
    while_updating([this] {
        find<QSpinBox>("numPropSpinBox")->setValue(1);
        find<QSpinBox>("numRatiosSpinBox")->setValue(1);
        EXPECT_EQ(table->columnCount(), 14) << "not before the run is over";
    });
    EXPECT_EQ(table->columnCount(), 10);
    EXPECT_EQ(column(1), (QStringList{"40", "80", "120"}));
    EXPECT_EQ(column(9), (QStringList{"A", "A", "A"}));
    EXPECT_TRUE(enabled("updateStatsPushButton")) << "the new panel has no statistics yet";
    press("updateStatsPushButton");
    EXPECT_EQ(column(5), (QStringList{"5", "10", "15"}));

    while_updating([this] { find<QSpinBox>("numPropSpinBox")->setValue(0); });
    EXPECT_EQ(table->columnCount(), 6);
    EXPECT_EQ(column(1), (QStringList{"5", "10", "15"}));
}

TEST_F(FlowUnitLifecycle, UnitsThatChangeDuringARun)
{
    add_layered("G", {4});
    open();
    set_units({1, 1, 1, 1});
    table->setCurrentCell(2, 0);
    while_updating([this] {
        widget->addFlowUnit();
        EXPECT_EQ(units(), (Units{1, 1, 1, 1}));
        widget->guessFlowUnit(1, false); // no question now
        widget->updateStatistics();
    });
    EXPECT_EQ(units(), (Units{1, 1, 2, 2}));
    EXPECT_EQ(column(2), (QStringList{"120", "120", "280", "280"}));
    EXPECT_TRUE(answers.boxes.empty());
    EXPECT_FALSE(enabled("updateStatsPushButton"));
}

TEST_F(FlowUnitLifecycle, AValueThatChangesDuringARun)
{
    auto* grid = add_layered("G", {3});
    open();
    while_updating([&] {
        grid->change([](lodex::GridModel& model) {
            model.properties[0].values = std::vector<float>(static_cast<std::size_t>(model.cells()), 1.0F);
        });
    });
    EXPECT_TRUE(enabled("updateStatsPushButton")) << "the numbers of a moment ago are not to be shown";
    press("updateStatsPushButton");
    EXPECT_EQ(column(1), (QStringList{"4", "4", "4"}));
}

TEST_F(FlowUnitLifecycle, APropertyThatGoesDuringARun)
{
    auto* grid = add_layered("G", {3});
    open();
    while_updating([&] { grid->change([](lodex::GridModel& model) { model.properties.erase(model.properties.begin()); }); });
    EXPECT_EQ(widget->getPropertyPanel(1)->getPropertyName(), "Q");
    press("updateStatsPushButton");
    EXPECT_EQ(column(1), (QStringList{"8", "8", "8"}));
    EXPECT_EQ(errors(), Texts{});
}

TEST_F(FlowUnitLifecycle, TheWindowIsClosedDuringARun)
{
    add_layered("G", {3});
    open();
    while_updating([this] { shell->close(); });
    run_deferred_deletes();
    EXPECT_FALSE(shell);
    EXPECT_FALSE(dialog);
}

TEST_F(FlowUnitLifecycle, WhatGoesWhileFlowUnitsAreMade)
{
    add_layered("G", {4});
    for (const bool grid_goes : {false, true}) {
        open();
        method(first, "Median");
        press("updateStatsPushButton");
        find<QComboBox>(first, "guessComboBox")->setCurrentIndex(1);
        find<QLineEdit>(first, "guessLineEdit")->setText("1000");
        answers.expect({"no_button"});
        DuringRun sink("Creating flow units...", [&] {
            if (grid_goes)
                destroy("G");
            else
                find<QSpinBox>("numPropSpinBox")->setValue(0);
        });
        click(find<QPushButton>(first, "guessPushButton"));
        EXPECT_FALSE(sink.action) << "it did not come to it";
        if (grid_goes) {
            expect_no_grid();
        } else {
            EXPECT_EQ(table->columnCount(), 2);
            EXPECT_EQ(units(), (Units{1, 2, 3, 4}));
        }
        close();
    }
}

TEST_F(FlowUnitLifecycle, AGridThatGoesDuringTheCheck)
{
    add_layered("G", {4});
    open();
    name("new");
    set_units({1, 1, 2, 2});
    DuringRun sink("Checking Flow Units...", [] { destroy("G"); });
    EXPECT_FALSE(dialog->apply());
    EXPECT_EQ(take_fatal(), Texts{"No SGrid selected.\n"});
    EXPECT_TRUE(log.texts.empty());
    EXPECT_EQ(table->rowCount(), 0);
}

TEST_F(FlowUnitLifecycle, ApplyKeepsTheStatistics)
{
    auto* grid = add_layered("G", {6});
    open();
    find<QSpinBox>("numPropSpinBox")->setValue(2);
    method("property_panel_2", "Median");
    press("updateStatsPushButton");
    set_units({1, 1, 2, 2, 3, 3});
    name("new");
    DuringRun sink(statistics, {});
    EXPECT_TRUE(dialog->apply());
    table->setCurrentCell(1, 0);
    press("addPushButton");
    EXPECT_EQ(sink.runs(), 0) << "the activity has changed nothing that they are made of";
    EXPECT_EQ(column(2), (QStringList{"10", "20", "35", "35", "55", "55"}));
    EXPECT_EQ(column(6), column(2));
    grid->change([](lodex::GridModel& model) {
        for (float& value : std::get<std::vector<float>>(model.properties[0].values))
            value *= 2;
    });
    press("updateStatsPushButton");
    EXPECT_EQ(sink.runs(), 2) << "two panels";
    EXPECT_EQ(column(1), (QStringList{"20", "40", "60", "80", "100", "120"}));
}
