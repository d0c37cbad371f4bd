// The first column as the model: filling, Insert, Merge, Reset, keys, queries, the rules it keeps under random use.

#include "FlowUnitTest.h"

#include <QClipboard>
#include <QHeaderView>

#include <random>

namespace {

class FlowUnitTable : public FlowUnitTest {
protected:
    [[nodiscard]] bool can_insert() const { return enabled("addPushButton"); }
    [[nodiscard]] bool can_merge() const { return enabled("mergePushButton"); }
};

} // namespace

TEST_F(FlowUnitTable, OneRowPerLayerWithItsStratigraphicUnit)
{
    add_layered("G", {2, 3, 1});
    open();
    EXPECT_EQ(units(), (Units{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(column(table->columnCount() - 1), (QStringList{"A", "A", "B", "B", "B", "C"}));
    EXPECT_EQ(widget->numKLayers(), 6);
    EXPECT_EQ(widget->numFlowUnits(), 6);
    EXPECT_EQ(widget->stratigraphicUnitNumbers(), (std::vector<int>{1, 1, 2, 2, 2, 3}));
    EXPECT_EQ(find<QLabel>("totalLayersLabel")->text(), "<b><font color=\"#0000ff\">6</font></b>");
    EXPECT_EQ(find<QLabel>("totalFlowUnitsLabel")->text(), "<b><font color=\"#0000ff\">6</font></b>");
    QStringList labels;
    for (int c = 0; c < table->columnCount(); ++c)
        labels.append(table->horizontalHeaderItem(c)->text());
    EXPECT_EQ(labels, (QStringList{"Flow Unit", "Layer Mean", "Flow Unit Mean", "% Difference", "Heterogeneity", "Stratigraphic Unit"}));
    EXPECT_FALSE(enabled("updateStatsPushButton"));

    QStringList names;
    QList<long> sizes;
    EXPECT_EQ(widget->getStratigraphicUnits(names, sizes).size(), 3U);
    EXPECT_EQ(names, (QStringList{"A", "B", "C"}));
    EXPECT_EQ(sizes, (QList<long>{2, 3, 1}));
}

TEST_F(FlowUnitTable, AnEmptyTable)
{
    open(CommandStub{});
    EXPECT_EQ(widget->numFlowUnits(), -1);
    EXPECT_TRUE(widget->getFlowUnitsList().empty());
    EXPECT_EQ(widget->getUnit(0), -1);
    EXPECT_EQ(widget->getFlowUnitPos(1), -1);
    EXPECT_EQ(widget->sizeFlowUnit(1), -1);
    EXPECT_EQ(widget->getPanelFromColNumber(0), nullptr);
    widget->addFlowUnit();
    widget->mergeFlowUnit();
    widget->tableVHeaderReleased(0);
    widget->showTest();
    set_units({1, 2});
    EXPECT_EQ(table->rowCount(), 0);
    EXPECT_FALSE(can_insert());
    EXPECT_FALSE(can_merge());
    EXPECT_EQ(find<QLabel>("totalLayersLabel")->text(), "<b><font color=\"#0000ff\">0</font></b>");
    EXPECT_EQ(fatal(), Texts{});
}

TEST_F(FlowUnitTable, Queries)
{
    add_layered("G", {8});
    open();
    set_units({1, 1, 1, 2, 3, 3, 4, 4});
    EXPECT_EQ(widget->getUnit(-1), -1);
    EXPECT_EQ(widget->getUnit(3), 2);
    EXPECT_EQ(widget->getUnit(8), -1);
    EXPECT_EQ(widget->numFlowUnits(), 4);
    EXPECT_EQ(widget->getFlowUnitPos(3), 4);
    EXPECT_EQ(widget->getFlowUnitPos(5), -1);
    EXPECT_EQ(widget->sizeFlowUnit(1), 3);
    EXPECT_EQ(widget->sizeFlowUnit(2), 1);
    EXPECT_EQ(widget->sizeFlowUnit(4), 2);
    EXPECT_EQ(widget->sizeFlowUnit(0), -1);
    EXPECT_EQ(widget->sizeFlowUnit(5), -1);
}

TEST_F(FlowUnitTable, InsertAndMergeActOnAllRowsBelow)
{
    add_layered("G", {4});
    open();
    set_units({1, 1, 1, 1});
    table->setCurrentCell(3, 0);
    EXPECT_TRUE(can_insert());
    EXPECT_FALSE(can_merge());
    press("addPushButton");
    EXPECT_EQ(units(), (Units{1, 1, 1, 2}));
    EXPECT_FALSE(can_insert());
    EXPECT_TRUE(can_merge());
    press("mergePushButton");
    EXPECT_EQ(units(), (Units{1, 1, 1, 1}));
    EXPECT_EQ(find<QLabel>("totalFlowUnitsLabel")->text(), "<b><font color=\"#0000ff\">1</font></b>");

    table->setCurrentCell(1, 2);
    press("addPushButton");
    EXPECT_EQ(units(), (Units{1, 2, 2, 2}));
    table->setCurrentCell(3, 2);
    press("addPushButton");
    EXPECT_EQ(units(), (Units{1, 2, 2, 3}));
    table->setCurrentCell(1, 2);
    press("mergePushButton");
    EXPECT_EQ(units(), (Units{1, 1, 1, 2}));
}

TEST_F(FlowUnitTable, ButtonsFollowTheCurrentRow)
{
    add_layered("G", {2, 2});
    open();
    const auto allowed = [&](int row) {
        widget->tableSelectionChanged(row, 3);
        return std::pair(can_insert(), can_merge());
    };
    using Both = std::pair<bool, bool>;
    EXPECT_EQ(allowed(-1), Both(false, false));
    EXPECT_EQ(allowed(0), Both(false, false));
    EXPECT_EQ(allowed(1), Both(false, true));
    EXPECT_EQ(allowed(2), Both(false, false)) << "first row of a stratigraphic unit";
    EXPECT_EQ(allowed(3), Both(false, true));
    EXPECT_EQ(allowed(4), Both(false, false));
    set_units({1, 1, 2, 2});
    EXPECT_EQ(allowed(1), Both(true, false));
    EXPECT_EQ(allowed(2), Both(false, false));
    set_units({1, 1, 1, 1});
    EXPECT_EQ(allowed(2), Both(true, false));
    // What the buttons do not allow is not done from elsewhere either.
    for (const int row : {0, 2}) {
        set_units({1, 1, 2, 2});
        table->setCurrentCell(row, 0);
        widget->addFlowUnit();
        widget->mergeFlowUnit();
        EXPECT_EQ(units(), (Units{1, 1, 2, 2})) << row;
    }
}

TEST_F(FlowUnitTable, UnitsOfTheSameNameCountAsOne)
{
    auto* grid = add_layered("G", {2, 2});
    grid->change([](lodex::GridModel& model) { model.layers[1].unit = model.layers[0].unit; });
    open();
    table->setCurrentCell(2, 0);
    EXPECT_TRUE(can_merge());
}

TEST_F(FlowUnitTable, Keys)
{
    add_layered("G", {3});
    open();
    set_units({1, 1, 1});
    table->setCurrentCell(2, 0);
    QTest::keyClick(table, Qt::Key_Delete);
    EXPECT_EQ(units(), (Units{1, 1, 1})) << "not allowed there";
    QTest::keyClick(table, Qt::Key_Insert);
    EXPECT_EQ(units(), (Units{1, 1, 2}));
    QTest::keyClick(table, Qt::Key_Insert);
    EXPECT_EQ(units(), (Units{1, 1, 2}));
    QTest::keyClick(table, Qt::Key_Backspace);
    EXPECT_EQ(units(), (Units{1, 1, 1}));
    QTest::keyClick(table, Qt::Key_Insert);
    QTest::keyClick(table, Qt::Key_Delete);
    EXPECT_EQ(units(), (Units{1, 1, 1}));
    QTest::keyClick(table, Qt::Key_Up);
    EXPECT_EQ(table->currentRow(), 1) << "other keys are the table's";
    // Cells cannot be edited.
    QTest::keyClicks(table, "7");
    EXPECT_EQ(units(), (Units{1, 1, 1}));
}

TEST_F(FlowUnitTable, RowHeaderSelectsTheLayer)
{
    add_layered("G", {4});
    open();
    table->setCurrentCell(0, 2);
    auto* header = table->verticalHeader();
    QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, {4, header->sectionViewportPosition(2) + 4});
    EXPECT_EQ(table->currentRow(), 2);
    EXPECT_EQ(table->currentColumn(), 2);
    ASSERT_EQ(table->selectedRanges().size(), 1);
    const auto range = table->selectedRanges().first();
    EXPECT_EQ(range.topRow(), 2);
    EXPECT_EQ(range.bottomRow(), 2);
    EXPECT_EQ(range.columnCount(), table->columnCount());
    EXPECT_TRUE(can_merge());
}

TEST_F(FlowUnitTable, ResetAsksFirst)
{
    add_layered("G", {3});
    open();
    set_units({1, 1, 2});
    for (const char* no : {"no_button", ""}) {
        answers.expect({no});
        press("resetPushButton");
        EXPECT_EQ(units(), (Units{1, 1, 2}));
    }
    answers.expect({"yes_button"});
    press("resetPushButton");
    EXPECT_EQ(units(), (Units{1, 2, 3}));
    ASSERT_EQ(answers.boxes.size(), 3U);
    EXPECT_EQ(answers.boxes[0].title, "Flow Unit");
    EXPECT_EQ(answers.boxes[0].text, "Are you sure you want to reset the flow unit definitions?");
    EXPECT_EQ(answers.boxes[0].buttons, (QStringList{"&No", "&Yes"}));
    EXPECT_EQ(answers.boxes[0].default_button, "yes_button");
}

TEST_F(FlowUnitTable, ListsThatBreakTheRulesAreNotTaken)
{
    add_layered("G", {4});
    open();
    set_units({1, 1, 2, 2});
    for (const Units& bad : {Units{2, 2, 3, 3}, {1, 3, 3, 3}, {1, 2, 1, 2}, {0, 1, 2, 3}, {1, 1, 1, 4}, {-1, 0, 1, 2}}) {
        set_units(bad);
        EXPECT_EQ(units(), (Units{1, 1, 2, 2}));
    }
    set_units({1, 2, 2, 3, 4, 5});
    EXPECT_EQ(units(), (Units{1, 2, 2, 3})) << "rows outside the table are passed over";
}

TEST_F(FlowUnitTable, WithoutStratigraphicUnitsTheUserIsAskedOnce)
{
    add_box("G");
    add_layered("H", {2, 2});
    open(CommandStub{});
    answers.expect({"yes_button"});
    find<Lodex::LQMultiComboBox>("selStraticomboBox")->setSelectedItems({"G"});
    ASSERT_EQ(answers.boxes.size(), 1U);
    EXPECT_EQ(answers.boxes[0].title, "Flow Unit");
    EXPECT_EQ(answers.boxes[0].text, "The grid does not have stratigraphic units, do you want to add them?");
    EXPECT_EQ(answers.boxes[0].buttons, (QStringList{"&No", "&Yes"}));
    EXPECT_EQ(command(), "lodex SGrid G sgrid_fill_layering_info ");
    // The units are there, the table stays empty until the grid is chosen again.
    EXPECT_EQ(lodex::find_grid("G")->model().layers.size(), 1U);
    EXPECT_EQ(table->rowCount(), 0);
    EXPECT_EQ(fatal(), Texts{});
    find<Lodex::LQMultiComboBox>("selStraticomboBox")->setSelectedItems({"H"});
    EXPECT_EQ(table->rowCount(), 4);
    find<Lodex::LQMultiComboBox>("selStraticomboBox")->setSelectedItems({"G"});
    EXPECT_EQ(table->rowCount(), 5);
}

TEST_F(FlowUnitTable, NoToTheQuestion)
{
    add_box("G");
    open(CommandStub{});
    answers.expect({"no_button"});
    widget->sgridSelectionChanged(QString("G"));
    EXPECT_TRUE(log.texts.empty());
    EXPECT_EQ(table->rowCount(), 0);
    EXPECT_TRUE(lodex::find_grid("G")->model().layers.empty());
}

TEST_F(FlowUnitTable, WithoutThePluginTheUserIsTold)
{
    Lodex::PluginManager::instance()->set_loaded("Venlacore", false);
    add_box("G");
    open(CommandStub{});
    widget->sgridSelectionChanged(QString("G"));
    EXPECT_EQ(fatal(), Texts{"The grid does not have stratigraphic units, you should use the SGrid command Modify Layering "
                             "(Edit menu) to add them.\n"});
    EXPECT_TRUE(answers.boxes.empty());
    EXPECT_TRUE(log.texts.empty());
    EXPECT_EQ(table->rowCount(), 0);
}

TEST_F(FlowUnitTable, GridsComeAndGo)
{
    add_layered("G", {3});
    add_layered("H", {2});
    open();
    set_units({1, 1, 2});
    auto* catalogue_lib = Lodex::GeobaseLib::instance();
    catalogue_lib->rename(lodex::find_grid("G"), "K");
    EXPECT_EQ(find<Lodex::LQMultiComboBox>("selStraticomboBox")->currentText(), "K");
    EXPECT_EQ(units(), (Units{1, 1, 2})) << "another name does not reset";
    catalogue_lib->destroy(lodex::find_grid("H"));
    EXPECT_EQ(units(), (Units{1, 1, 2}));
    catalogue_lib->destroy(lodex::find_grid("K"));
    EXPECT_EQ(table->rowCount(), 0);
    EXPECT_EQ(widget->getSGrid(), nullptr);
    EXPECT_EQ(fatal(), Texts{});
}

TEST_F(FlowUnitTable, AFreeNameIsProposedWhileTyping)
{
    add_layered("G", {3});
    add_box("G_0");
    open();
    name("coarse");
    EXPECT_EQ(find<QLineEdit>("newGridLineEdit")->text(), "coarse");
    name("G");
    EXPECT_EQ(find<QLineEdit>("newGridLineEdit")->text(), "G_1");
    name("a;b");
    EXPECT_EQ(find<QLineEdit>("newGridLineEdit")->hasAcceptableInput(), false);
}

TEST_F(FlowUnitTable, SelectedCellsAreCopiedAsText)
{
    add_layered("G", {3});
    open();
    table->clearSelection();
    table->setRangeSelected({1, 0, 2, 2}, true);
    QTest::keyClick(table, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QApplication::clipboard()->text(), "2\t20\t20\n3\t30\t30\n");
}

TEST_F(FlowUnitTable, RulesHoldUnderRandomUse)
{
    add_layered("G", {5, 1, 7, 12, 3});
    open();
    select("property_panel_1", "propertyComboBox", "P");
    std::mt19937 random(3);
    const auto draw = [&](int below) { return static_cast<int>(random() % static_cast<unsigned>(below)); };
    const int rows = table->rowCount();
    auto* guess_method = find<QComboBox>("property_panel_1", "guessComboBox");
    auto* guess_value = find<QLineEdit>("property_panel_1", "guessLineEdit");
    int changes = 0;
    for (int round = 0; round < 3000; ++round) {
        const Units before = units();
        switch (draw(12)) {
        case 0:
            answers.expect({draw(2) ? "yes_button" : "no_button"});
            if (draw(4) == 0)
                widget->resetFlowUnit();
            else {
                guess_method->setCurrentIndex(draw(6));
                guess_value->setText(QString::number(draw(300) / 10.0));
                widget->guessFlowUnit(1, false);
            }
            break;
        case 1: {
            Units list{1};
            while (static_cast<int>(list.size()) < rows)
                list.push_back(list.back() + draw(2));
            set_units(list);
            EXPECT_EQ(units(), list);
            break;
        }
        case 2: {
            Units wild;
            for (int n = 0; n < rows; ++n)
                wild.push_back(draw(5));
            set_units(wild);
            break;
        }
        default:
            table->setCurrentCell(draw(rows), draw(table->columnCount()));
            if (draw(2))
                widget->addFlowUnit();
            else
                widget->mergeFlowUnit();
            break;
        }
        const Units now = units();
        changes += now != before;
        ASSERT_EQ(now.size(), static_cast<std::size_t>(rows));
        ASSERT_EQ(now[0], 1);
        int covered = 0;
        for (std::size_t n = 1; n < now.size(); ++n)
            ASSERT_TRUE(now[n] == now[n - 1] || now[n] == now[n - 1] + 1);
        for (int unit = 1; unit <= widget->numFlowUnits(); ++unit)
            covered += widget->sizeFlowUnit(unit);
        ASSERT_EQ(covered, rows);
    }
    EXPECT_GT(changes, 1000);
    EXPECT_EQ(errors(), Texts{});
}
