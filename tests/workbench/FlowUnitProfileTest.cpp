// The K profile beside the flow unit table shows what the table shows, and comes and goes with its dialog.

#include "Pictures.h"
#include "WorkbenchTest.h"

#include "apps/workbench/FlowUnitProfile.h"
#include "apps/workbench/MainWindow.h"
#include "apps/workbench/Theme.h"
#include "flowunit/LQFlowUnitPanel.h"
#include "flowunit/LQFlowUnitWidget.h"
#include "flowunit/LQTable.h"

#include <Lodex/qtools/LQMultiComboBox.h>

#include <QApplication>
#include <QPointer>
#include <QPushButton>
#include <QSpinBox>

#include <cmath>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

using namespace lodex;

namespace {

constexpr int layers = 12;

class FlowUnitProfileTest : public WorkbenchTest {
protected:
    FlowUnitProfileTest()
    {
        window->resize(1000, 700);
        window->show();
        EXPECT_TRUE(window->run("lodex create example name Example size 12+10+12"));
        if (find_grid("Example")->model().layers.empty()) { // a grid without units leads to a question
            EXPECT_TRUE(window->run("lodex on SGrid Example set_layers units \"All\" sizes 12"));
        }
        window->tree()->select("Example");
    }
    ~FlowUnitProfileTest() override
    {
        use_theme(Theme::System);
        if (dialog)
            dialog->close();
        window.reset();
        settle();
    }
    static void settle()
    {
        for (int n = 0; n < 3; ++n) {
            QApplication::processEvents();
            QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        }
    }
    void open()
    {
        dialog = window->open_dialog("flowUnits");
        ASSERT_TRUE(dialog);
        area = dialog->findChild<Kelvane::LQFlowUnitWidget*>();
        table = dialog->findChild<Kelvane::LQTable*>("table");
        profile = dialog->findChild<FlowUnitProfile*>("flowUnitProfile");
        ASSERT_TRUE(area && table && profile);
        ASSERT_EQ(table->rowCount(), layers);
    }
    void choose(const char* panel, const char* list, const QString& property)
    {
        dialog->findChild<QWidget*>(panel)->findChild<Lodex::LQMultiComboBox*>(list)->setSelectedItems({property});
    }
    void press(const char* button) { dialog->findChild<QPushButton*>(button)->click(); }
    void press_in_row(const char* button, int row)
    {
        table->setCurrentCell(row, 0);
        ASSERT_TRUE(dialog->findChild<QPushButton*>(button)->isEnabled());
        press(button);
    }
    void set_number(const char* spin_box, int number) { dialog->findChild<QSpinBox*>(spin_box)->setValue(number); }

    [[nodiscard]] std::vector<QString> titles() const
    {
        std::vector<QString> texts;
        for (const FlowUnitPlot* plot : profile->plots())
            texts.push_back(plot->title());
        return texts;
    }
    /// Compares every plot with the cells of its panel's columns; returns how many numbers were compared.
    int equal_numbers() const
    {
        int compared = 0;
        EXPECT_EQ(table->columnCount(), 2 + 4 * static_cast<int>(profile->plots().size()));
        const auto compare = [&](const std::vector<double>& means, int column) {
            ASSERT_EQ(means.size(), static_cast<std::size_t>(table->rowCount()));
            for (int row = 0; row < table->rowCount(); ++row) {
                const double mean = means[static_cast<std::size_t>(row)];
                const QString text = table->cellText(row, column);
                EXPECT_EQ(std::isnan(mean) ? QString() : QString::number(mean, 'g', 5), text) << row << ", " << column;
                compared += text.isEmpty() ? 0 : 1;
            }
        };
        int column = 1;
        for (const FlowUnitPlot* plot : profile->plots()) {
            compare(plot->layer_means(), column);
            compare(plot->unit_means(), column + 1);
            column += 4;
        }
        return compared;
    }
    void two_panels()
    {
        open();
        set_number("numRatiosSpinBox", 1);
        choose("property_panel_1", "propertyComboBox", "PERMX");
        choose("ratio_panel_1", "propertyComboBox", "PERMZ");
        choose("ratio_panel_1", "overPropertyComboBox", "PERMX");
        press("updateStatsPushButton");
        settle();
    }

    std::unique_ptr<MainWindow> window = std::make_unique<MainWindow>();
    QPointer<QWidget> dialog;
    QPointer<FlowUnitProfile> profile;
    Kelvane::LQFlowUnitWidget* area = nullptr;
    Kelvane::LQTable* table = nullptr;
};

TEST_F(FlowUnitProfileTest, OpensWithTheDialogAndShowsTheNumbersOfTheTable)
{
    open();
    EXPECT_TRUE(profile->isVisible());
    EXPECT_TRUE(profile->isWindow());
    EXPECT_FALSE(profile->isModal());
    ASSERT_EQ(profile->plots().size(), 1u);
    EXPECT_EQ(equal_numbers(), 2 * layers) << "the grid's first property is there from the beginning";
    EXPECT_EQ(profile->plots().front()->title(), area->getPropertyPanel(1)->getPropertyName());
    const int width = profile->width();

    two_panels();
    EXPECT_EQ(titles(), (std::vector<QString>{"PERMX", "PERMZ / PERMX"}));
    EXPECT_EQ(equal_numbers(), 4 * layers);
    EXPECT_GT(profile->width(), width) << "room for a second plot";
    for (const char* name : {"flowUnitProfile_property_1", "flowUnitProfile_ratio_1"}) {
        const auto* plot = profile->findChild<FlowUnitPlot*>(name);
        ASSERT_NE(plot, nullptr) << name;
        EXPECT_TRUE(plot->toolTip().contains(plot->title()));
    }
}

TEST_F(FlowUnitProfileTest, FollowsInsertAndMerge)
{
    two_panels();
    const FlowUnitPlot* plot = profile->plots().front();
    EXPECT_EQ(plot->layer_means(), plot->unit_means()) << "at first each layer is a unit";

    press_in_row("mergePushButton", 1);
    press_in_row("mergePushButton", 2);
    EXPECT_EQ(equal_numbers(), 4 * layers);
    EXPECT_EQ(plot->unit_means()[0], plot->unit_means()[1]);
    EXPECT_EQ(plot->unit_means()[0], plot->unit_means()[2]);
    EXPECT_NE(plot->layer_means()[0], plot->layer_means()[1]);
    EXPECT_NE(plot->unit_means()[0], plot->layer_means()[0]);

    press_in_row("addPushButton", 1);
    EXPECT_EQ(equal_numbers(), 4 * layers);
    EXPECT_EQ(plot->unit_means()[0], plot->layer_means()[0]);
    EXPECT_EQ(plot->unit_means()[1], plot->unit_means()[2]);
}

TEST_F(FlowUnitProfileTest, FollowsPanelsThatComeAndGo)
{
    two_panels();
    QPointer<FlowUnitPlot> ratio = profile->plots().back();
    set_number("numPropSpinBox", 2);
    settle();
    ASSERT_EQ(profile->plots().size(), 3u);
    EXPECT_EQ(profile->plots().back(), ratio) << "properties stand before ratios";
    EXPECT_TRUE(std::isnan(profile->plots()[1]->layer_means().front()));
    EXPECT_EQ(equal_numbers(), 4 * layers);
    choose("property_panel_2", "propertyComboBox", "PORO");
    press("updateStatsPushButton");
    EXPECT_EQ(titles(), (std::vector<QString>{"PERMX", "PORO", "PERMZ / PERMX"}));
    EXPECT_EQ(equal_numbers(), 6 * layers);

    choose("property_panel_1", "propertyComboBox", "PERMZ");
    settle();
    EXPECT_EQ(profile->plots()[0]->title(), "PERMX") << "as long as the table shows its numbers";
    press("updateStatsPushButton");
    EXPECT_EQ(profile->plots()[0]->title(), "PERMZ");
    EXPECT_EQ(equal_numbers(), 6 * layers);

    set_number("numRatiosSpinBox", 0);
    set_number("numPropSpinBox", 0);
    settle();
    EXPECT_FALSE(ratio);
    EXPECT_TRUE(profile->plots().empty());
    EXPECT_EQ(profile->findChild<FlowUnitPlot*>(), nullptr);
}

TEST_F(FlowUnitProfileTest, LayersWithoutValuesAreGaps)
{
    find_grid("Example")->change([](GridModel& model) {
        const auto layer = static_cast<std::size_t>(model.size[0] * model.size[1]);
        std::vector<float> values(static_cast<std::size_t>(model.cells()), 5.0F);
        for (std::size_t cell = 3 * layer; cell < 4 * layer; ++cell)
            values[cell] = std::numeric_limits<float>::quiet_NaN();
        PropertyData property;
        property.name = "HOLED";
        property.values = std::move(values);
        model.properties.push_back(std::move(property));
    });
    open();
    choose("property_panel_1", "propertyComboBox", "HOLED");
    press("updateStatsPushButton");
    const std::vector<double>& means = profile->plots().front()->layer_means();
    for (std::size_t k = 0; k < means.size(); ++k)
        EXPECT_EQ(std::isnan(means[k]), k == 3) << k;
    EXPECT_EQ(table->cellText(3, 1), "");
    equal_numbers();
    EXPECT_FALSE(profile->grab().isNull());
}

TEST_F(FlowUnitProfileTest, TheGridMayGo)
{
    two_panels();
    ASSERT_TRUE(window->run("lodex destroy objects Example"));
    settle();
    ASSERT_TRUE(profile);
    EXPECT_EQ(equal_numbers(), 0);
    EXPECT_TRUE(profile->plots().front()->layer_means().empty());
    EXPECT_FALSE(profile->grab().isNull());
}

TEST_F(FlowUnitProfileTest, ClosesWithTheDialog)
{
    two_panels();
    press("cancel_button");
    settle();
    EXPECT_FALSE(dialog);
    EXPECT_FALSE(profile);

    two_panels();
    EXPECT_EQ(equal_numbers(), 4 * layers) << "the next dialog has its own";
    dialog->close();
    settle();
    EXPECT_FALSE(profile);

    two_panels();
    window.reset();
    if (dialog)
        dialog->close();
    settle();
    EXPECT_FALSE(dialog);
    EXPECT_FALSE(profile);
}

TEST_F(FlowUnitProfileTest, ClosedFirstItLeavesTheDialogAndComesBackWhenAskedFor)
{
    two_panels();
    profile->close();
    settle();
    EXPECT_FALSE(profile);
    ASSERT_TRUE(dialog);
    EXPECT_TRUE(dialog->isVisible());
    press_in_row("mergePushButton", 1); // nothing follows any more

    const QWidget* former = dialog;
    open();
    EXPECT_EQ(dialog, former);
    EXPECT_TRUE(profile->isVisible());
    EXPECT_EQ(equal_numbers(), 4 * layers);
    const FlowUnitProfile* shown = profile;
    open();
    EXPECT_EQ(profile, shown) << "one at a time";
    EXPECT_EQ(dialog->findChildren<FlowUnitProfile*>().size(), 1);
}

TEST_F(FlowUnitProfileTest, OtherDialogsHaveNone)
{
    QPointer<QWidget> merge = window->open_dialog("mergeSections");
    ASSERT_TRUE(merge);
    EXPECT_EQ(merge->findChild<FlowUnitProfile*>(), nullptr);
    merge->close();
    settle();
    EXPECT_FALSE(merge);
}

TEST_F(FlowUnitProfileTest, BothLinesAreSeenInLightAndDark)
{
    for (const auto& [theme, name] : {std::pair(Theme::Light, "light"), std::pair(Theme::Dark, "dark")}) {
        use_theme(theme);
        two_panels();
        for (const int row : {1, 2, 4, 5, 6, 8, 9})
            if (table->cellText(row, table->columnCount() - 1) == table->cellText(row - 1, table->columnCount() - 1))
                press_in_row("mergePushButton", row);
        settle();
        const QPixmap picture = profile->grab();
        EXPECT_TRUE(picture.save(picture_folder() + "/workbench_flow_unit_profile_" + name + ".png"));
        const QImage image = profile->plots().front()->grab().toImage();
        int thin = 0, thick = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                thin += image.pixelColor(x, y) == FlowUnitPlot::layer_pen().color() ? 1 : 0;
                thick += image.pixelColor(x, y) == FlowUnitPlot::unit_pen().color() ? 1 : 0;
            }
        }
        EXPECT_GT(thin, 50) << name;
        EXPECT_GT(thick, thin) << name << ": though partly below the thin one";
        dialog->close();
        settle();
    }
}

} // namespace
