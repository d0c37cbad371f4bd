// Panels: their settings, messages and signals, the statistics they show, colours, blocks of columns.

#include "FlowUnitTest.h"

#include <Kelvane/upscaling/FlowUnitStatsManager.h>
#include <Lodex/geobase/Property.h>

#include <QHeaderView>
#include <QScrollBar>
#include <QSignalSpy>

#include <cmath>

using Kelvane::FlowUnitStatsManager;
using Kelvane::LQFlowUnitPanel;

namespace {

constexpr const char* first = "property_panel_1";
constexpr const char* ratio = "ratio_panel_1";

class FlowUnitPanels : public FlowUnitTest {
protected:
    [[nodiscard]] LQFlowUnitPanel* panel(int number = 1) const { return widget->getPropertyPanel(number); }
    [[nodiscard]] bool marked() const { return panel()->mustBeUpdated(); }
    void power(const QString& text) { find<QLineEdit>(first, "valueLineEdit")->setText(text); }

    static void add_values(const char* grid, const std::string& property, std::vector<float> values)
    {
        lodex::find_grid(grid)->change([&](lodex::GridModel& model) {
            lodex::PropertyData data{.name = property};
            data.values = std::move(values);
            model.properties.push_back(std::move(data));
        });
    }
};

} // namespace

TEST_F(FlowUnitPanels, TextsAndTips)
{
    add_layered("G", {2});
    open();
    find<QSpinBox>("numRatiosSpinBox")->setValue(1);
    const auto tip = [&](const char* panel_name, const char* control) { return find<QWidget>(panel_name, control)->toolTip(); };
    EXPECT_EQ(tip(first, "propertyComboBox"), "Enter the property that you want to analyze.");
    EXPECT_EQ(tip(ratio, "propertyComboBox"), "Choose the numerator of the compositional property you want to analyze.");
    EXPECT_EQ(tip(ratio, "overPropertyComboBox"), "Choose the denominator of the compositional property you want to analyze.");
    EXPECT_EQ(tip(first, "averagingComboBox"), "Describe how to average the property within each layer");
    EXPECT_EQ(tip(first, "volCheckBox"), "The contribution of each cell will be weighted by its volume.");
    EXPECT_EQ(tip(first, "valueLineEdit"), "Power value of the averaging method.");
    EXPECT_EQ(tip(first, "guessPushButton"), "Create Flow Units: Merges layers that meet the specified criterion.");
    EXPECT_EQ(tip(first, "guessComboBox"),
              "Calculate flow units from::\n"
              "Number of flow units: Group layers with the closest means to create n flow units.\n"
              "Deviation from mean: Group layers with deviations from mean below n.\n"
              "Deviation from mean (%): Group layers with deviations from mean below n%.\n"
              "Maximum difference (%): Group layers with differences below n%.\n"
              "Maximum threshold: Group layers with layer means below n.\n"
              "Minimum threshold: Group layers with layer means above n.\n");
    const auto* guess = find<QComboBox>(first, "guessComboBox");
    QStringList entries;
    for (int n = 0; n < guess->count(); ++n)
        entries.append(guess->itemText(n));
    EXPECT_EQ(entries, (QStringList{"number of flow units", "deviation from mean", "deviation from mean (%)",
                                    "maximum difference (%)", "maximum threshold", "minimum threshold"}));
    EXPECT_EQ(find<QWidget>("selStraticomboBox")->toolTip(), "Specifies the grid that contains the properties to analyze.");
    EXPECT_EQ(find<QWidget>("newGridLineEdit")->toolTip(), "Specifies the name of a new grid that will contain the merged K-layers.");
    EXPECT_EQ(find<QWidget>("numPropSpinBox")->toolTip(), "Enter the number of properties to analyze.");
    EXPECT_EQ(find<QWidget>("numRatiosSpinBox")->toolTip(), "Enter the number of property ratios to analyze.");
    EXPECT_EQ(find<QWidget>("updateStatsPushButton")->toolTip(),
              "Calculates statistics for each property or ratio and fills the values in the table.");
    EXPECT_EQ(find<QWidget>("resetPushButton")->toolTip(), "Reset flow unit definitions");
    EXPECT_EQ(find<QWidget>("addPushButton")->toolTip(), "Insert Flow Unit");
    EXPECT_EQ(find<QWidget>("mergePushButton")->toolTip(), "Merge with Flow Unit Above");
    EXPECT_TRUE(table->toolTip().startsWith("Table Statistics:\nFlow Unit: A group of n layers with the same fluid-flow "
                                            "feature (generally smaller than a stratigraphic unit).\nLayer Mean: "));
    EXPECT_TRUE(table->toolTip().contains("([Layer Mean - Flow-Unit Mean]/Flow Unit Mean) %.\nHeterogeneity: The Dykstra-Parsons "
                                          "coefficient for one layer: VDP=(P50-P84.1)/P50 where P84.1=k is such that "
                                          "Prob(K<k)=.841 and P50 is the median.\n"));
    QStringList texts;
    for (const QLabel* label : shell->widget()->findChildren<QLabel*>())
        texts.append(label->text());
    for (const char* text : {"Stratigraphic grid", "New grid", "Properties", "Ratios", "Total layers:", "Total flow units:",
                             "Specify the number of properties and ratios to analyze.", "Property", "Over property", "Mean",
                             "Power", "Region", "Calculate flow units from:"})
        EXPECT_TRUE(texts.contains(text)) << text;
}

TEST_F(FlowUnitPanels, EveryAverageIsListed)
{
    add_layered("G", {2});
    open();
    const auto* list = find<QComboBox>(first, "averagingComboBox");
    QStringList names;
    for (int n = 0; n < list->count(); ++n)
        names.append(list->itemText(n));
    names.sort();
    EXPECT_EQ(names, (QStringList{"Arithmetic", "Dykstra-Parsons", "Geometric", "Harmonic", "Maximum", "Median", "Minimum",
                                  "Most probable", "Number", "Power", "Sum"}));
}

TEST_F(FlowUnitPanels, MethodDecidesOnPowerAndWeights)
{
    add_layered("G", {2});
    open();
    auto* weights = find<QCheckBox>(first, "volCheckBox");
    EXPECT_TRUE(weights->isChecked());
    for (const QString method_name : {"Maximum", "Minimum", "Most probable", "Sum", "Median", "Number", "Dykstra-Parsons"}) {
        method(first, method_name);
        EXPECT_FALSE(weights->isEnabled()) << method_name.toStdString();
        EXPECT_TRUE(weights->isChecked());
        EXPECT_FALSE(panel()->isVolWeightedChecked());
        EXPECT_FALSE(find<QLineEdit>(first, "valueLineEdit")->isEnabled());
    }
    for (const QString method_name : {"Arithmetic", "Geometric", "Harmonic", "Power"}) {
        method(first, method_name);
        EXPECT_TRUE(weights->isEnabled()) << method_name.toStdString();
        EXPECT_TRUE(panel()->isVolWeightedChecked());
        EXPECT_EQ(find<QLineEdit>(first, "valueLineEdit")->isEnabled(), method_name == "Power");
        EXPECT_EQ(find<QLabel>(first, "valueTextLabel")->isEnabled(), method_name == "Power");
    }
    weights->setChecked(false);
    EXPECT_FALSE(panel()->isVolWeightedChecked());
}

TEST_F(FlowUnitPanels, PowerIsReadAndChecked)
{
    add_layered("G", {2});
    open();
    power("abc");
    EXPECT_TRUE(panel()->isPowervalueValid()) << "no power method";
    EXPECT_TRUE(take_fatal().empty());
    method(first, "Power");
    bool ok = true;
    EXPECT_FALSE(panel()->isPowervalueValid());
    EXPECT_EQ(take_fatal(), Texts{"Cannot evaluate the power value.\n"});
    EXPECT_EQ(panel()->getPowerValue(&ok), 0.0F);
    EXPECT_FALSE(ok);
    for (const char* text : {"", "nan", "1,5", "1x"}) {
        power(text);
        EXPECT_FALSE(panel()->isPowervalueValid());
        EXPECT_EQ(take_fatal(), Texts{"Cannot evaluate the power value.\n"}) << text;
    }
    for (const char* text : {"1.5", "-1.001", "inf", "-inf"}) {
        power(text);
        EXPECT_FALSE(panel()->isPowervalueValid());
        EXPECT_EQ(take_fatal(), Texts{"The power value must be in [-1;1] range.\n"}) << text;
    }
    for (const char* text : {"1", "-1", "0", "0.25", "1e-3"}) {
        power(text);
        EXPECT_TRUE(panel()->isPowervalueValid()) << text;
        EXPECT_FLOAT_EQ(panel()->getPowerValue(&ok), QString(text).toFloat());
        EXPECT_TRUE(ok);
    }
    EXPECT_TRUE(take_fatal().empty());
}

TEST_F(FlowUnitPanels, AnInvalidPowerExcludesThePanel)
{
    add_layered("G", {3});
    open();
    method(first, "Power");
    power("2");
    press("updateStatsPushButton");
    EXPECT_EQ(take_fatal(), Texts{"The power value must be in [-1;1] range.\n"});
    EXPECT_EQ(column(1), (QStringList{"", "", ""}));
    EXPECT_TRUE(marked());
    EXPECT_FALSE(enabled("updateStatsPushButton"));
    power("1");
    EXPECT_TRUE(enabled("updateStatsPushButton"));
    press("updateStatsPushButton");
    EXPECT_EQ(column(1), (QStringList{"10", "20", "30"}));
    EXPECT_FALSE(marked());
}

TEST_F(FlowUnitPanels, EachSettingMarksThePanel)
{
    auto* grid = add_layered("G", {2});
    add_region(grid, "R");
    open();
    const QSignalSpy must_update(panel(), &LQFlowUnitPanel::mustBeUpdatedSignal);
    const auto after = [&](const std::function<void()>& change) {
        press("updateStatsPushButton");
        EXPECT_FALSE(marked());
        EXPECT_FALSE(enabled("updateStatsPushButton"));
        const auto before = must_update.count();
        change();
        return marked() && enabled("updateStatsPushButton") && must_update.count() == before + 1;
    };
    EXPECT_TRUE(after([&] { select(first, "propertyComboBox", "Q"); }));
    EXPECT_TRUE(after([&] { select(first, "regionComboBox", "R"); }));
    EXPECT_TRUE(after([&] { method(first, "Power"); }));
    EXPECT_TRUE(after([&] { power("0.5"); }));
    EXPECT_TRUE(after([&] { find<QCheckBox>(first, "volCheckBox")->click(); }));
    EXPECT_FALSE(after([&] { find<QLineEdit>(first, "guessLineEdit")->setText("4"); }));
}

TEST_F(FlowUnitPanels, ListsFollowTheGrid)
{
    auto* grid = add_layered("G", {2});
    add_region(grid, "R");
    open();
    const auto items = [&](const char* list) { return find<Lodex::LQMultiComboBox>(first, list)->items(); };
    EXPECT_EQ(items("propertyComboBox"), (QStringList{"P", "Q"}));
    EXPECT_EQ(items("regionComboBox"), (QStringList{"everywhere", "all_regions", "R"}));
    EXPECT_EQ(panel()->getRegionName(), "everywhere");
    EXPECT_EQ(panel()->getPropertyName(), "P");
    select(first, "propertyComboBox", "Q");
    add_property(grid, "new");
    EXPECT_EQ(items("propertyComboBox"), (QStringList{"P", "Q", "new"}));
    EXPECT_EQ(panel()->getPropertyName(), "Q");
    add_box("empty");
    answers.expect({"no_button"});
    find<Lodex::LQMultiComboBox>("selStraticomboBox")->setSelectedItems({"empty"});
    EXPECT_TRUE(items("propertyComboBox").empty());
    EXPECT_EQ(items("regionComboBox"), (QStringList{"everywhere", "all_regions"}));
}

TEST_F(FlowUnitPanels, NumbersOfPanelsMakeBlocksOfColumns)
{
    add_layered("G", {3});
    open();
    find<QSpinBox>("numPropSpinBox")->setValue(2);
    find<QSpinBox>("numRatiosSpinBox")->setValue(2);
    EXPECT_EQ(table->columnCount(), 18);
    EXPECT_EQ(widget->getPanelFromColNumber(1), panel(1));
    EXPECT_EQ(widget->getPanelFromColNumber(8), panel(2));
    EXPECT_EQ(widget->getPanelFromColNumber(9), widget->getRatioPanel(1));
    EXPECT_EQ(widget->getPanelFromColNumber(16), widget->getRatioPanel(2));
    EXPECT_EQ(widget->getPanelFromColNumber(17), nullptr);
    EXPECT_EQ(widget->getPanelFromColNumber(0), nullptr);
    EXPECT_EQ(widget->getRatioPanel(2)->getNum(), 2);
    EXPECT_TRUE(widget->getRatioPanel(2)->isRatio());
    EXPECT_EQ(table->horizontalHeaderItem(13)->text(), "Layer Mean");
    EXPECT_EQ(table->horizontalHeaderItem(17)->text(), "Stratigraphic Unit");
    EXPECT_TRUE(enabled("updateStatsPushButton"));
    EXPECT_EQ(column(17), (QStringList{"A", "A", "A"}));

    select("property_panel_2", "propertyComboBox", "Q");
    press("updateStatsPushButton");
    EXPECT_EQ(column(1), (QStringList{"10", "20", "30"}));
    EXPECT_EQ(column(5), (QStringList{"2", "2", "2"}));
    EXPECT_EQ(column(9), (QStringList{"5", "10", "15"}));

    // The last panel of a kind goes first, with its block.
    find<QSpinBox>("numPropSpinBox")->setValue(1);
    EXPECT_EQ(table->columnCount(), 14);
    EXPECT_EQ(column(1), (QStringList{"10", "20", "30"}));
    EXPECT_EQ(column(5), (QStringList{"5", "10", "15"}));
    find<QSpinBox>("numPropSpinBox")->setValue(0);
    find<QSpinBox>("numRatiosSpinBox")->setValue(0);
    EXPECT_EQ(table->columnCount(), 2);
    EXPECT_EQ(column(1), (QStringList{"A", "A", "A"}));
    find<QSpinBox>("numPropSpinBox")->setValue(1);
    press("updateStatsPushButton");
    EXPECT_EQ(column(1), (QStringList{"10", "20", "30"}));
}

TEST_F(FlowUnitPanels, PanelsStandOverTheirColumns)
{
    add_layered("G", {40});
    open();
    find<QSpinBox>("numPropSpinBox")->setValue(4);
    QCoreApplication::processEvents();
    const auto offset = [&](int number) {
        const QWidget* over = panel(number);
        const int column_left = table->viewport()->mapToGlobal(QPoint(table->columnViewportPosition(4 * number - 3), 0)).x();
        return over->mapToGlobal(QPoint(0, 0)).x() - column_left;
    };
    for (const int scroll : {0, 150, 100000}) {
        table->horizontalScrollBar()->setValue(scroll);
        for (int number = 1; number <= 4; ++number) {
            EXPECT_EQ(offset(number), 0) << scroll;
            int width = 0;
            for (int c = 4 * number - 3; c <= 4 * number; ++c)
                width += table->columnWidth(c);
            EXPECT_EQ(panel(number)->width(), width);
            EXPECT_GE(width, panel(number)->minimumSizeHint().width());
        }
    }
    table->setColumnWidth(6, table->columnWidth(6) + 90);
    for (int number = 1; number <= 4; ++number)
        EXPECT_EQ(offset(number), 0);
    widget->resizeAllLQFlowUnitPanel(6);
    for (int number = 1; number <= 4; ++number)
        EXPECT_EQ(offset(number), 0);
}

TEST_F(FlowUnitPanels, IdenticalPropertiesOfARatio)
{
    add_layered("G", {3});
    open();
    find<QSpinBox>("numRatiosSpinBox")->setValue(2);
    EXPECT_NE(widget->getRatioPanel(1)->getPropertyName(),
              static_cast<Kelvane::LQFlowUnitRatioPanel*>(widget->getRatioPanel(1))->getOverPropertyName());
    select("ratio_panel_2", "propertyComboBox", "Q");
    select("ratio_panel_2", "overPropertyComboBox", "Q");
    press("updateStatsPushButton");
    EXPECT_EQ(take_fatal(), Texts{"In ratio panel 2, the two properties are identical\n"});
    EXPECT_EQ(column(5), (QStringList{"5", "10", "15"}));
    EXPECT_EQ(column(9), (QStringList{"", "", ""}));
}

TEST_F(FlowUnitPanels, ShownAreTheManagersNumbers)
{
    add_layered("G", {6});
    // Per layer: 1 and three times the number; zeros; a layer without values; nearly equal ones.
    std::vector<float> values;
    for (int layer = 0; layer < 6; ++layer)
        for (int n = 0; n < 4; ++n)
            values.push_back(layer == 2 ? std::nanf("") : layer == 4 ? 1000.0F + 0.001F * static_cast<float>(n) : n == 0 ? 1.0F : 123.45678F * static_cast<float>(layer));
    add_values("G", "V", values);
    open();
    select(first, "propertyComboBox", "V");
    set_units({1, 1, 2, 3, 3, 4});
    const FlowUnitStatsManager* manager = panel()->get_manager();
    const auto text = [](float value, float zero) {
        return std::isnan(value) ? QString() : std::abs(value) <= zero ? QString("0") : QString::number(static_cast<double>(value), 'g', 5);
    };
    for (int row = 0; row < 6; ++row) {
        const auto r = static_cast<std::size_t>(row);
        EXPECT_EQ(cell(row, 1), text(manager->getUnitAvrgList()[r], 0));
        EXPECT_EQ(cell(row, 2), text(manager->getFlowAvrgList()[static_cast<std::size_t>(widget->getUnit(row) - 1)], 0));
        EXPECT_EQ(cell(row, 3), text(manager->getDeltas()[r], 0.01F));
        EXPECT_EQ(cell(row, 4), text(manager->getStatsLayers()[r], 0.001F));
    }
    EXPECT_EQ(cell(1, 1), "92.843"); // (1 + 3 x 123.45678) / 4 to five digits
    EXPECT_EQ(cell(2, 1), "");
    EXPECT_EQ(cell(2, 4), "");
    EXPECT_EQ(cell(5, 3), "0") << "a unit of one layer";
    EXPECT_EQ(cell(4, 4), "0") << "equal to a millionth";
}

TEST_F(FlowUnitPanels, NearZeroIsForDifferenceAndHeterogeneityAlone)
{
    add_layered("G", {2});
    add_values("G", "small", {0.0005F, 0.0005F, 0.0005F, 0.0005F, 0.00050005F, 0.00050005F, 0.00050005F, 0.00050005F});
    open();
    select(first, "propertyComboBox", "small");
    set_units({1, 1});
    EXPECT_EQ(cell(0, 1), "0.0005");
    EXPECT_EQ(cell(0, 2), "0.00050002");
    EXPECT_EQ(cell(0, 3), "0"); // -0.005 %
    EXPECT_EQ(cell(0, 4), "0");
}

TEST_F(FlowUnitPanels, AStoppedRunKeepsWhatIsShown)
{
    add_layered("G", {3});
    open();
    find<QSpinBox>("numPropSpinBox")->setValue(2);
    press("updateStatsPushButton");
    {
        const Stop stop("Computing flow unit statistics...");
        method(first, "Sum");
        method("property_panel_2", "Sum");
        press("updateStatsPushButton");
        EXPECT_EQ(stop.titles, Texts{"Computing flow unit statistics..."}) << "a stop stops the other panels as well";
    }
    EXPECT_EQ(column(1), (QStringList{"10", "20", "30"}));
    EXPECT_TRUE(marked());
    EXPECT_TRUE(enabled("updateStatsPushButton"));
    press("updateStatsPushButton");
    EXPECT_EQ(column(1), (QStringList{"40", "80", "120"}));
    EXPECT_EQ(column(5), (QStringList{"40", "80", "120"}));
    EXPECT_FALSE(enabled("updateStatsPushButton"));
    EXPECT_EQ(errors(), Texts{});
}

TEST_F(FlowUnitPanels, ValuesThatChangeAreNoticed)
{
    auto* grid = add_layered("G", {2});
    open();
    grid->change([](lodex::GridModel& model) {
        for (float& value : std::get<std::vector<float>>(model.properties[0].values))
            value *= 2;
    });
    EXPECT_TRUE(enabled("updateStatsPushButton"));
    press("updateStatsPushButton");
    EXPECT_EQ(column(1), (QStringList{"20", "40"}));
}

TEST_F(FlowUnitPanels, ColoursComeFromThePropertysStyle)
{
    auto* grid = add_layered("G", {3});
    open();
    Lodex::Style* style = grid->property_db()->find("P")->style();
    style->set_attribute("colormap", "grey");
    style->set_attribute("low_clip", "5");
    style->set_attribute("high_clip", "50");
    const QSignalSpy updates(panel(), &LQFlowUnitPanel::colormapUpdateSignal);
    style->update();
    EXPECT_EQ(updates.count(), 2) << "once for the colour map, once for the observer";
    EXPECT_EQ(panel()->getLowclipValue(), 5);
    EXPECT_EQ(panel()->getHighclipValue(), 50);
    ASSERT_TRUE(panel()->getColormap());
    style->set_attribute("low_clip", "6");
    style->update();
    EXPECT_EQ(updates.count(), 4);
    EXPECT_EQ(panel()->getLowclipValue(), 6);

    const auto color = [&](double place) {
        const auto [r, g, b] = panel()->getColormap()->colour(place);
        return QColor(r, g, b);
    };
    // Layer means 10, 20, 30 between their own ends.
    EXPECT_EQ(widget->getCellColor(0, 1), color(0));
    EXPECT_EQ(widget->getCellColor(2, 1), color(1));
    EXPECT_NEAR(widget->getCellColor(1, 1).red(), color(0.5).red(), 2);
    EXPECT_FALSE(widget->getCellColor(0, 0).isValid());
    EXPECT_FALSE(widget->getCellColor(0, 5).isValid());
    EXPECT_FALSE(widget->getCellColor(3, 1).isValid());
    EXPECT_FALSE(widget->getCellColor(-1, 1).isValid());
    // % difference is symmetric about zero: -50, 0, 50 with one unit, else all 0 in the middle.
    EXPECT_NEAR(widget->getCellColor(0, 3).red(), color(0.5).red(), 2);
    set_units({1, 1, 1});
    EXPECT_EQ(column(3), (QStringList{"-50", "0", "50"}));
    EXPECT_EQ(widget->getCellColor(0, 3), color(0));
    EXPECT_EQ(widget->getCellColor(2, 3), color(1));
    set_units({1, 2, 2});
    EXPECT_EQ(column(3), (QStringList{"0", "-20", "20"}));
    EXPECT_NEAR(widget->getCellColor(0, 3).red(), color(0.5).red(), 2);

    // The model and the picture agree with it.
    EXPECT_EQ(table->item(2, 1)->background().color(), color(1));
    const QImage image = table->viewport()->grab().toImage();
    const QRect rect = table->visualItemRect(table->item(2, 1));
    EXPECT_EQ(image.pixelColor(rect.topLeft() + QPoint(3, 3)).rgb(), color(1).rgb());
    EXPECT_EQ(table->item(0, 1)->foreground().color(), QColor(Qt::white));
    EXPECT_EQ(table->item(2, 1)->foreground().color(), QColor(Qt::black));
}

TEST_F(FlowUnitPanels, TheObserverFollowsThePropertyOfTheGrid)
{
    auto* grid = add_layered("G", {2});
    auto* other = add_layered("H", {2});
    open();
    find<Lodex::LQMultiComboBox>("selStraticomboBox")->setSelectedItems({"H"});
    const QSignalSpy updates(panel(), &LQFlowUnitPanel::colormapUpdateSignal);
    const auto touch = [](lodex::CornerPointGrid* of, const char* property) {
        of->property_db()->find(property)->style()->set_attribute("low_clip", "1");
        of->property_db()->find(property)->style()->update();
    };
    touch(grid, "P");
    touch(other, "Q");
    EXPECT_EQ(updates.count(), 0);
    touch(other, "P");
    EXPECT_EQ(updates.count(), 2);
    Lodex::GeobaseLib::instance()->destroy(grid);
    // A property that goes takes its style along.
    other->change([](lodex::GridModel& model) { model.properties.erase(model.properties.begin()); });
    EXPECT_EQ(panel()->getPropertyName(), "Q");
    touch(other, "Q");
    EXPECT_GE(updates.count(), 4);
    Lodex::GeobaseLib::instance()->destroy(other);
    EXPECT_EQ(panel()->getPropertyName(), "");
    EXPECT_EQ(panel()->getColormap("Q"), nullptr);
}
