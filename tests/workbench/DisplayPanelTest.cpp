#include "WorkbenchTest.h"

#include "apps/workbench/DisplayPanel.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QGroupBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QSlider>
#include <QSpinBox>

#include <limits>

using namespace lodex;

namespace {

/// The settings work without a display that can draw in 3D.
class DisplayPanelTest : public WorkbenchTest {
protected:
    DisplayPanelTest()
    {
        grid = add_box("Box", {4, 3, 5});
        grid->change([](GridModel& model) {
            model.properties.push_back(
                {.name = "FACIES", .values = std::vector<std::int32_t>(60, 1), .code_names = {{1, "sand"}}});
            std::get<std::vector<std::int32_t>>(model.properties.back().values)[7] = 3;
        });
        add_numbers(grid, "NUMBER");
        EXPECT_TRUE(run("lodex on SGrid Box define_region low property NUMBER min 0 max 9"));
        panel.set_grid(grid);
    }
    template <class Widget> Widget* part(const char* name)
    {
        auto* found = panel.findChild<Widget*>(name);
        EXPECT_NE(found, nullptr) << name;
        return found;
    }
    [[nodiscard]] CellFilter filter() const { return camera.display(grid).filter; }

    CameraView camera;
    DisplayPanel panel{camera};
    CornerPointGrid* grid;
};

TEST_F(DisplayPanelTest, ColoursByTheFirstContinuousPropertyThenByWhatWasChosen)
{
    EXPECT_EQ(camera.display(grid).colour, ColourBy::of_property("NUMBER"));
    part<QComboBox>("displayColour")->setCurrentText("FACIES");
    EXPECT_EQ(camera.display(grid).colour, ColourBy::of_property("FACIES"));
    CornerPointGrid* other = add_box("Other");
    add_numbers(other, "A");
    panel.set_grid(other);
    EXPECT_EQ(camera.grids(), std::vector<CornerPointGrid*>{other}) << "one grid at a time";
    EXPECT_EQ(camera.display(other).colour, ColourBy::of_property("A")) << "it has no facies";
    panel.set_grid(grid);
    EXPECT_EQ(camera.display(grid).colour, ColourBy::of_property("FACIES"));
}

TEST_F(DisplayPanelTest, SlicesAreCountedFromOne)
{
    part<QCheckBox>("sliceKOn")->setChecked(true);
    part<QSpinBox>("sliceKFrom")->setValue(2);
    part<QSpinBox>("sliceKTo")->setValue(3);
    EXPECT_EQ(filter().ranges[2], (std::vector<IndexRange>{{1, 2}}));
    part<QSpinBox>("sliceKFrom")->setValue(5);
    EXPECT_EQ(filter().ranges[2], (std::vector<IndexRange>{{4, 4}})) << "the ends do not cross";
    part<QSpinBox>("sliceKTo")->setValue(5);
    part<QSpinBox>("sliceKFrom")->setValue(4);
    part<QSlider>("sliceKSlider")->setValue(1);
    EXPECT_EQ(filter().ranges[2], (std::vector<IndexRange>{{0, 1}})) << "moves as it is wide";
    part<QSlider>("sliceKSlider")->setValue(5);
    EXPECT_EQ(filter().ranges[2], (std::vector<IndexRange>{{3, 4}})) << "stops at the end";
    part<QSlider>("sliceISlider")->setValue(3);
    EXPECT_EQ(filter().ranges[0], (std::vector<IndexRange>{{2, 2}})) << "moving a slider switches its slice on";
    EXPECT_EQ(filter().slices, CellFilter::Slices::Box);
    part<QRadioButton>("slicesFence")->setChecked(true);
    EXPECT_EQ(filter().slices, CellFilter::Slices::Fence);
    part<QPushButton>("displayAllCells")->click();
    EXPECT_TRUE(filter().ranges[0].empty() && filter().ranges[2].empty());
}

TEST_F(DisplayPanelTest, ThresholdByValuesOrByCodes)
{
    auto* group = part<QGroupBox>("displayThreshold");
    group->setChecked(true);
    EXPECT_EQ(part<QComboBox>("thresholdProperty")->currentText(), "NUMBER") << "what is shown";
    auto* least = part<QLineEdit>("thresholdMin");
    least->setText("12.5");
    emit least->editingFinished();
    ASSERT_TRUE(filter().threshold);
    EXPECT_EQ(*filter().threshold, (CellThreshold{.property = "NUMBER", .min = 12.5}));
    part<QComboBox>("thresholdProperty")->setCurrentText("FACIES");
    auto* codes = part<QListWidget>("thresholdCodes");
    ASSERT_EQ(codes->count(), 2);
    EXPECT_EQ(codes->item(0)->text(), "sand");
    EXPECT_EQ(codes->item(1)->text(), "3");
    EXPECT_EQ(filter().threshold->codes, (std::set<std::int32_t>{1, 3}));
    codes->item(0)->setCheckState(Qt::Unchecked);
    EXPECT_EQ(filter().threshold->codes, (std::set<std::int32_t>{3}));
    const auto shown = [&] { return ShownCells(grid->model(), filter()).count(); };
    EXPECT_EQ(shown(), 1);
    codes->item(1)->setCheckState(Qt::Unchecked);
    EXPECT_EQ(shown(), 0) << "no code, no cell";
    group->setChecked(false);
    EXPECT_FALSE(filter().threshold);
    EXPECT_EQ(shown(), 60);
}

TEST_F(DisplayPanelTest, SettingsStayWithTheirGrid)
{
    part<QComboBox>("displayRegion")->setCurrentText("low");
    part<QCheckBox>("displayOutline")->setChecked(false);
    part<QCheckBox>("sliceJOn")->setChecked(true);
    const GridDisplay before = camera.display(grid);
    EXPECT_EQ(before.filter.region, "low");
    CornerPointGrid* other = add_box("Other");
    panel.set_grid(other);
    EXPECT_EQ(camera.display(other).filter, CellFilter{});
    EXPECT_TRUE(camera.display(other).outline);
    EXPECT_FALSE(part<QCheckBox>("sliceJOn")->isChecked());
    panel.set_grid(grid);
    EXPECT_EQ(camera.display(grid).filter, before.filter);
    EXPECT_FALSE(part<QCheckBox>("displayOutline")->isChecked());
    EXPECT_EQ(part<QComboBox>("displayRegion")->currentText(), "low");

    // A change of the grid leaves them, a destroyed grid empties the panel.
    ASSERT_TRUE(run("lodex on SGrid Box fill_property NEW value 1"));
    EXPECT_EQ(camera.display(grid).filter, before.filter);
    EXPECT_GE(part<QComboBox>("displayColour")->findText("NEW"), 0);
    ASSERT_TRUE(run("lodex destroy objects Box"));
    EXPECT_EQ(panel.grid(), nullptr);
    EXPECT_TRUE(camera.grids().empty());
    EXPECT_FALSE(part<QComboBox>("displayColour")->isEnabled());
}

TEST_F(DisplayPanelTest, TheViewIsTheCameras)
{
    part<QDoubleSpinBox>("displayExaggeration")->setValue(12.5);
    EXPECT_EQ(camera.vertical_exaggeration(), 12.5);
    part<QCheckBox>("displayOrthographic")->setChecked(true);
    EXPECT_TRUE(camera.orthographic());
    part<QCheckBox>("displayAxes")->setChecked(false);
    EXPECT_FALSE(camera.axes_shown());
    auto* standard = part<QComboBox>("displayStandardView");
    standard->setCurrentText("Top");
    emit standard->activated(standard->currentIndex());
    EXPECT_NEAR(camera.elevation(), 90, 1);
}

} // namespace
