// The dialog on real grids, through the real interpreter.

#include "Pictures.h"
#include "DialogTest.h"

#include "lodex/volumes/model/GridModel.h"

#include <Lodex/geobase/Property.h>
#include <Lodex/geobase/Region.h>
#include <Lodex/volumes/SGridActivityModel.h>

#include <QDir>
#include <QRadioButton>

#include <numeric>

namespace {

class MergeRun : public MergeDialogTest {
protected:
    static constexpr lodex::GridSize size{20, 16, 12};

    MergeRun() { lodex::add_grid("example", lodex::make_example(size)); }

    [[nodiscard]] static const lodex::CornerPointGrid& grid(const char* grid_name)
    {
        const auto* found = lodex::find_grid(grid_name);
        if (!found)
            throw std::runtime_error(std::string("no grid ") + grid_name);
        return *found;
    }
    [[nodiscard]] static double total_volume(const lodex::CornerPointGrid& of)
    {
        const auto volumes = of.bulk_volumes();
        return std::reduce(volumes.begin(), volumes.end(), 0.0);
    }
    [[nodiscard]] static int units()
    {
        return static_cast<int>(grid("example").model().layers.size());
    }
};

TEST_F(MergeRun, ApplyMakesTheCoarseGrid)
{
    open("example", "Axis K");
    name("coarse grid 1");
    click(find<QCheckBox>("copy_properties_"));

    // One row for the first unit, merged whole.
    const auto& layers = grid("example").model().layers;
    ASSERT_GE(layers.size(), 2U);
    const int sections = static_cast<int>(layers[0].nb_k_cells);
    ASSERT_GE(sections, 2);
    set_row(0, 1, sections, sections, 2);
    press("apply_button");
    EXPECT_EQ(fatal(), Texts{});
    EXPECT_EQ(errors(), Texts{});

    const auto& coarse = grid("coarse grid 1");
    EXPECT_EQ(coarse.model().size, (lodex::GridSize{20, 16, 12 - sections + 1}));
    EXPECT_EQ(coarse.model().layers[0].nb_k_cells, 1);
    EXPECT_EQ(coarse.model().layers[1].nb_k_cells, layers[1].nb_k_cells);
    EXPECT_EQ(coarse.nb_regions(), grid("example").nb_regions());
    EXPECT_TRUE(coarse.property_db()->find("PORO"));

    // The new grid stands in the selector, which keeps its own.
    const auto* selector = find<Lodex::LQMultiComboBox>("gridSelector_");
    EXPECT_TRUE(selector->items().contains("coarse grid 1"));
    EXPECT_EQ(selector->currentText(), "example");
    EXPECT_EQ(row(0).to()->value(), sections);
}

TEST_F(MergeRun, AcrossTheFaultsAlongIAndJ)
{
    open("example", "Axis I");
    name("half");
    press("apply_button");
    EXPECT_EQ(fatal(), Texts{});
    EXPECT_EQ(grid("half").model().size, (lodex::GridSize{10, 16, 12}));
    find<QComboBox>("direction_")->setCurrentText("Axis J");
    name("other half");
    press("apply_button");
    EXPECT_EQ(grid("other half").model().size, (lodex::GridSize{20, 8, 12}));
    EXPECT_EQ(errors(), Texts{});
}

TEST_F(MergeRun, KeptSectionsGiveTheirValues)
{
    auto* box = add_box("box", {2, 2, 6});
    box->change([](lodex::GridModel& model) {
        lodex::PropertyData k;
        k.name = "K";
        std::vector<float> values(24);
        for (std::size_t c = 0; c < values.size(); ++c)
            values[c] = static_cast<float>(c / 4);
        k.values = values;
        model.properties.push_back(k);
    });
    open("box", "Axis K");
    name("kept");
    click(find<QCheckBox>("copy_properties_"));
    set_row(0, 1, 3, 3, 2);
    add_row(0);
    press("apply_button");
    ASSERT_EQ(errors(), Texts{});
    // Row 2 starts at 4 and ends one section early: 4 and 5 merge and keep 4; 6 is left alone.
    const auto* property = grid("kept").property_db()->find("K");
    ASSERT_TRUE(property);
    const auto values = std::get<std::span<const float>>(property->values());
    ASSERT_EQ(values.size(), 12U);
    EXPECT_EQ(values[0], 1);
    EXPECT_EQ(values[4], 3);
    EXPECT_EQ(values[8], 5);
    EXPECT_NEAR(total_volume(grid("kept")), total_volume(*box), 1e-9 * total_volume(*box));
}

TEST_F(MergeRun, RegionModesReachTheHost)
{
    auto* box = add_box("box", {1, 1, 4});
    box->change([](lodex::GridModel& model) {
        model.regions.push_back({"one", {1, 0, 0, 0}, false});
        model.regions.push_back({"three", {1, 1, 1, 0}, false});
    });
    open("box", "Axis K");
    set_row(0, 1, 4, 2, 1);
    const auto region = [&](const char* of, const char* region_name) {
        const auto flags = grid(of).find_region(region_name)->flags();
        return std::vector<int>(flags.begin(), flags.end());
    };
    name("any");
    press("apply_button");
    EXPECT_EQ(region("any", "one"), (std::vector<int>{1, 0}));
    EXPECT_EQ(region("any", "three"), (std::vector<int>{1, 1}));
    name("most");
    click(find<QRadioButton>("region_mode_1"));
    find<QLineEdit>("number_percentile_")->setText("60");
    press("apply_button");
    EXPECT_EQ(region("most", "one"), (std::vector<int>{0, 0}));
    EXPECT_EQ(region("most", "three"), (std::vector<int>{1, 0}));
    name("none");
    click(find<QCheckBox>("copy_regions_"));
    press("apply_button");
    EXPECT_EQ(grid("none").find_region("one"), nullptr);
    EXPECT_EQ(errors(), Texts{});
}

TEST_F(MergeRun, PaintedSectionsStandInTheStyle)
{
    open("example", "Axis K");
    set_row(0, 2, 5, 2, 2);
    find<QCheckBox>("paint_check_box_")->click();
    EXPECT_EQ(painted_sections("example"), " 6 3 1 1 3 1 2 3 1 3 3 1 4 1 0 0 2 0 0");
    press("cancel_button");
    run_deferred_deletes();
    EXPECT_EQ(painted_sections("example"), " 3 1 0 0 2 0 0 3 0 0");
}

TEST_F(MergeRun, Pictures)
{
    open("example", "Axis K");
    name("example_coarse");
    set_row(0, 1, 3, 3, 1);
    QWidget* window = shell->widget();
    const auto picture = [&](const QString& file) {
        QCoreApplication::processEvents();
        const QPixmap image = window->grab();
        EXPECT_EQ(image.size(), window->size() * image.devicePixelRatio());
        EXPECT_TRUE(image.save(QDir(picture_folder()).filePath(file + ".png")));
    };
    picture("merge_dialog");
    click(find<QRadioButton>("region_mode_2"));
    for (int i = 0; i < 7; ++i)
        add_row(i);
    picture("merge_dialog_rows");

    // Nothing of a row is cut off or lies on its neighbour.
    const auto* table = find<QTableWidget>("table");
    for (int c = 0; c < table->columnCount(); ++c) {
        const QWidget* cell = table->cellWidget(0, c);
        EXPECT_GE(cell->width(), cell->minimumSizeHint().width()) << c;
        EXPECT_GE(cell->height(), cell->minimumSizeHint().height()) << c;
    }
}

} // namespace
