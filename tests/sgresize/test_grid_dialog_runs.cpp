// Coarser and finer grids made by the whole-grid dialogs through the real interpreter: what is shown before is what is
// made, the record leads back to the source, and nothing is left over when something goes wrong.

#include "GridDialogTest.h"

#include "lodex/appli/QtProgressSink.h"
#include "lodex/volumes/model/Derivation.h"

#include <Lodex/geobase/Property.h>
#include <Lodex/utils/ProgressTracer.h>
#include <Lodex/volumes/GridObjCellMapper.h>
#include <Lodex/volumes/SGridActivityModel.h>

#include <QTimer>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <numeric>

namespace {

using Texts = std::vector<std::string>;
using Counts = std::vector<long>;

const lodex::GridModel& model(const std::string& name)
{
    const auto* grid = lodex::find_grid(name);
    if (!grid)
        throw std::runtime_error("no grid " + name);
    return grid->model();
}

double total_volume(const std::string& name)
{
    const auto volumes = lodex::find_grid(name)->bulk_volumes();
    return std::reduce(volumes.begin(), volumes.end(), 0.0);
}

std::size_t activities_of(const std::string& name)
{
    const auto* activity_model = lodex::find_grid(name)->sgrid_activity_model();
    return activity_model ? activity_model->activities().size() : 0;
}

/// The ranges of the source's indices along each axis.
const lodex::DerivationRecord& record(const std::string& grid, const std::string& source)
{
    const auto* found = lodex::find_record(model(grid), model(source).id);
    if (!found)
        throw std::runtime_error("no record");
    return *found;
}

/// The boxes of fine cells that the mapper by records gives for the coarse cells.
Lodex::IndexRelation parametric_boxes(const std::string& fine, const std::string& coarse)
{
    const auto* factory = dynamic_cast<const Lodex::CellMapperFactory*>(
        Lodex::FactoryLib::instance()->find(Lodex::GridObjCellMapperFactoriesDomain(), "parametric"));
    if (!factory)
        throw std::runtime_error("no parametric mapper");
    const std::vector<std::uint8_t> all_fine(static_cast<std::size_t>(model(fine).cells()), 1);
    const std::vector<std::uint8_t> all_coarse(static_cast<std::size_t>(model(coarse).cells()), 1);
    Lodex::MappingRequest request;
    request.fine = lodex::find_grid(fine);
    request.coarse = lodex::find_grid(coarse);
    request.fine_cells = all_fine;
    request.coarse_cells = all_coarse;
    return factory->create()->match(request)->mapping().boxes;
}

std::vector<Lodex::IndexRange> groups(std::initializer_list<std::int64_t> lasts)
{
    std::vector<Lodex::IndexRange> ranges;
    std::int64_t first = 0;
    for (const std::int64_t last : lasts) {
        ranges.push_back({first, last});
        first = last + 1;
    }
    return ranges;
}

/// Every index by itself.
std::vector<Lodex::IndexRange> singles(std::int64_t count)
{
    std::vector<Lodex::IndexRange> ranges;
    for (std::int64_t i = 0; i < count; ++i)
        ranges.push_back({i, i});
    return ranges;
}

class UpscaleRun : public UpscaleDialogTest {
protected:
    UpscaleRun() { lodex::add_grid("example", lodex::make_example({20, 16, 12})); }

    /// A row of its whole length for each unit along K.
    void one_layer_per_unit(const std::string& grid)
    {
        const auto layers = model(grid).layers; // a copy
        int top = 1, used = 0;
        for (const auto& layer : layers) {
            const int size = static_cast<int>(layer.nb_k_cells);
            if (size > 1) {
                if (used > 0) {
                    add_row(TabK, used - 1);
                    choose_grid({});
                    choose_grid({QString::fromStdString(grid)}); // a new row may reach the end again
                }
                row(TabK, used++).set_merge(top, top + size - 1, size, top);
            }
            top += size;
        }
    }
    void expect_as_shown(const std::string& made)
    {
        EXPECT_EQ(fatal(), Texts{});
        EXPECT_EQ(errors(), Texts{});
        EXPECT_EQ(size_of(made), new_counts()) << made;
        EXPECT_EQ(temporaries(), Texts{});
    }
};

TEST_F(UpscaleRun, AllAxesAcrossTheFaults)
{
    open("example");
    name("coarse");
    tick(TabI);
    tick(TabJ);
    row(TabJ).step()->setValue(3);
    tick(TabK);
    one_layer_per_unit("example");
    press("apply_button");
    expect_as_shown("coarse");
    EXPECT_EQ(size_of("coarse")[0], 10);
    EXPECT_EQ(size_of("coarse")[1], 6); // 16 = 5 * 3 + 1
    EXPECT_EQ(size_of("coarse")[2], static_cast<long>(model("example").layers.size()));
    for (const auto& layer : model("coarse").layers)
        EXPECT_EQ(layer.nb_k_cells, 1);
    EXPECT_FALSE(lodex::find_grid("coarse")->property_db()->find("PORO"));
    EXPECT_TRUE(lodex::find_grid("coarse")->find_region("oil_zone"));
    EXPECT_EQ(activities_of("coarse"), 1U);
    EXPECT_EQ(activities_of("example"), 1U);
}

TEST_F(UpscaleRun, TheMapperByRecordsKnowsEveryGeneration)
{
    add_box("G", {9, 8, 6});
    open("G");
    name("A");
    tick(TabI);
    row(TabI).set_merge(1, 9, 4, 1); // 4 + 4 + 1
    tick(TabK);
    row(TabK).set_merge(3, 6, 3, 3); // 3, and 1 that stays
    press("apply_button");
    expect_as_shown("A");
    const Lodex::IndexRelation first{groups({3, 7, 8}), singles(8), groups({0, 1, 4, 5})};
    EXPECT_EQ(record("A", "G").ranges, first);
    EXPECT_EQ(parametric_boxes("G", "A"), first);

    // The next generation, through temporaries that are gone.
    choose_grid({"A"});
    name("B");
    tick(TabJ);
    row(TabI).set_merge(2, 3, 2, 2);
    row(TabJ).set_merge(1, 8, 3, 1); // 3 + 3 + 2
    row(TabK).set_merge(1, 2, 2, 1);
    press("apply_button");
    expect_as_shown("B");
    EXPECT_EQ(parametric_boxes("A", "B"), (Lodex::IndexRelation{groups({0, 2}), groups({2, 5, 7}), groups({1, 2, 3})}));
    EXPECT_EQ(parametric_boxes("G", "B"), (Lodex::IndexRelation{groups({3, 8}), groups({2, 5, 7}), groups({1, 4, 5})}));
    EXPECT_EQ(activities_of("A"), 2U);
    EXPECT_EQ(activities_of("B"), 1U);
}

TEST_F(UpscaleRun, TheActivityHoldsTheRowsAsTheyAreShown)
{
    add_box("G", {10, 4, 4});
    open("G");
    name("N");
    tick(TabI);
    row(TabI).set_merge(6, 10, 3, 6);
    add_row(TabI);
    row(TabI, 1).set_merge(1, 4, 4, 2);
    row(TabJ).set_merge(1, 2, 2, 1); // off
    press("apply_button");
    ASSERT_EQ(activities_of("N"), 1U);
    const auto* activity = dynamic_cast<const Lodex::SGridUpgriddingActivityData*>(
        lodex::find_grid("N")->sgrid_activity_model()->activities().front());
    ASSERT_TRUE(activity);
    using Modification = Lodex::GridCoarseningData::Modification;
    EXPECT_EQ(activity->coarsening_data().modifications(),
              (std::vector<Modification>{{Lodex::UGridIndex3d::I, 6, 10, 3}, {Lodex::UGridIndex3d::I, 1, 4, 4}}));
}

TEST_F(UpscaleRun, ATakenNameRegistersNothing)
{
    add_box("G", {10, 10, 10});
    open("G");
    name("N");
    tick(TabK);
    row(TabK).set_merge(1, 4, 2, 1);
    press("apply_button");
    ASSERT_EQ(activities_of("N"), 1U);
    const auto* made = lodex::find_grid("N");
    // Other rows that lead to a grid of the same size, under the same name: the host refuses the name.
    name("N");
    row(TabK).set_merge(5, 8, 2, 5);
    press("apply_button");
    ASSERT_FALSE(errors().empty());
    EXPECT_EQ(errors().back(), "Could not create Upgridding activity\n");
    EXPECT_EQ(lodex::find_grid("N"), made);
    EXPECT_EQ(activities_of("N"), 1U);
    EXPECT_EQ(activities_of("G"), 1U);
    EXPECT_EQ(find<QLineEdit>("new_grid_name_")->text(), "N");
    // The source's own name, and a grid that has nothing to do with it.
    messages.clear();
    for (const char* taken : {"G", "example"}) {
        name(taken);
        EXPECT_FALSE(process());
        EXPECT_EQ(errors().back(), "Could not create Upgridding activity\n");
    }
    EXPECT_EQ(activities_of("G"), 1U);
    press("ok_button");
    run_deferred_deletes();
    EXPECT_TRUE(shell);
}

TEST_F(UpscaleRun, ALastStepThatFailsLeavesNoTemporary)
{
    add_box("G", {10, 10, 10});
    add_box("N", {2, 2, 2});
    open("G");
    name("N");
    for (const AxisTab axis : {TabI, TabJ, TabK})
        tick(axis);
    press("apply_button");
    EXPECT_EQ(sent().size(), 5U);
    EXPECT_EQ(temporaries(), Texts{});
    EXPECT_EQ(size_of("N"), (Counts{2, 2, 2, 8}));
    EXPECT_EQ(activities_of("G"), 0U);
    EXPECT_EQ(errors().back(), "Could not create Upgridding activity\n");
    EXPECT_EQ(fatal(), Texts{});
}

TEST_F(UpscaleRun, AfterAStepThatFailsTheOthersAreStillSent)
{
    add_box("G", {10, 10, 10});
    open("G");
    name("a+b"); // no name for a grid, nor are those made from it
    for (const AxisTab axis : {TabI, TabJ, TabK})
        tick(axis);
    press("apply_button");
    EXPECT_EQ(sent().size(), 5U);
    EXPECT_EQ(temporaries(), Texts{});
    EXPECT_EQ(errors().back(), "Could not create Upgridding activity\n");
    EXPECT_EQ(activities_of("G"), 0U);
}

/// Stops the work once it has come to some part of the whole; notes what it is shown.
class Stopper : public Lodex::ProgressSink {
public:
    explicit Stopper(double at) : at_(at), former_(Lodex::ProgressTracer::set_sink(this)) {}
    ~Stopper() override { Lodex::ProgressTracer::set_sink(former_); }
    Stopper(const Stopper&) = delete;
    Stopper& operator=(const Stopper&) = delete;

    void begin(const Lodex::CString& title) override
    {
        titles.push_back(title.str());
        shown.emplace_back();
    }
    bool progress(double done) override
    {
        shown.back().push_back(done);
        return done < at_ || shown.size() > 1; // what comes behind the chain is let through
    }
    void end() override { ++ends; }

    Texts titles;
    std::vector<std::vector<double>> shown;
    int ends = 0;

private:
    double at_;
    Lodex::ProgressSink* former_;
};

TEST_F(UpscaleRun, OneProgressForTheWholeChain)
{
    open("example");
    name("coarse");
    for (const AxisTab axis : {TabI, TabJ})
        tick(axis);
    const Stopper sink(2);
    press("apply_button");
    expect_as_shown("coarse");
    ASSERT_EQ(sink.titles.size(), 2U); // the chain, and the temporary that is destroyed
    EXPECT_EQ(sink.titles[0], "Creating SGrid coarse");
    EXPECT_EQ(sink.ends, 2);
    const auto& shown = sink.shown[0];
    EXPECT_TRUE(std::ranges::is_sorted(shown));
    EXPECT_EQ(shown.front(), 0.0);
    EXPECT_GT(shown.back(), 0.5);
    EXPECT_LE(shown.back(), 1.0);
}

TEST_F(UpscaleRun, ACancelledChainLeavesNothing)
{
    for (const double at : {0.0, 0.2, 0.34, 0.5, 0.67, 0.9}) {
        SCOPED_TRACE(at);
        messages.clear();
        if (!shell)
            open("example");
        name("coarse");
        for (const AxisTab axis : {TabI, TabJ, TabK}) {
            if (!on_page<QCheckBox>(axis, "enable_box_")->isChecked())
                tick(axis);
        }
        row(TabK).set_run(1, 2);
        sent();
        {
            const Stopper sink(at);
            press("apply_button");
            EXPECT_GE(sink.shown[0].back(), at);
        }
        EXPECT_EQ(sent().size(), 5U);
        EXPECT_FALSE(exists("coarse"));
        EXPECT_EQ(temporaries(), Texts{});
        EXPECT_EQ(activities_of("example"), 0U);
        ASSERT_FALSE(errors().empty());
        EXPECT_EQ(errors().back(), "Could not create Upgridding activity\n");
        ASSERT_TRUE(shell);
        EXPECT_TRUE(find<QPushButton>("apply_button")->isEnabled());
    }
    press("apply_button");
    EXPECT_TRUE(exists("coarse"));
}

TEST_F(UpscaleRun, TheCancelButtonOfTheProgressWindowStopsTheChain)
{
    open("example");
    name("coarse");
    tick(TabI);
    tick(TabJ);
    lodex::QtProgressSink sink(std::chrono::milliseconds(0));
    auto* former = Lodex::ProgressTracer::set_sink(&sink);
    QString title;
    QTimer::singleShot(0, dialog, [&] {
        ASSERT_TRUE(sink.window());
        title = sink.window()->findChild<QLabel*>("progressTitle")->text();
        click(find<QPushButton>("apply_button")); // does nothing
        click(sink.window()->findChild<QPushButton*>("progressCancel"));
    });
    press("apply_button");
    Lodex::ProgressTracer::set_sink(former);
    EXPECT_EQ(title, "Creating SGrid coarse");
    EXPECT_FALSE(sink.window());
    EXPECT_EQ(sent().size(), 3U);
    EXPECT_FALSE(exists("coarse"));
    EXPECT_EQ(temporaries(), Texts{});
    EXPECT_EQ(errors().back(), "Could not create Upgridding activity\n");
    press("apply_button");
    EXPECT_TRUE(exists("coarse"));
}

class DownscaleRun : public DownscaleDialogTest {
protected:
    DownscaleRun() { lodex::add_grid("example", lodex::make_example({12, 10, 8})); }

    void expect_as_shown(const std::string& made)
    {
        EXPECT_EQ(fatal(), Texts{});
        EXPECT_EQ(errors(), Texts{});
        EXPECT_EQ(size_of(made), new_counts()) << made;
        EXPECT_EQ(temporaries(), Texts{});
    }
};

TEST_F(DownscaleRun, AllAxesAcrossTheFaults)
{
    open("example");
    name("fine");
    tick(TabI);
    row(TabI).set_division(3, 6, 3, 1, "20");
    tick(TabJ);
    row(TabJ).set_division(1, 10, 2, 2, "25");
    tick(on_page<QCheckBox>(TabJ, "percent_box_"));
    tick(TabK);
    row(TabK).set_division(2, 3, 5, 2, "0.5");
    press("apply_button");
    expect_as_shown("fine");
    EXPECT_EQ(size_of("fine"), (Counts{12 + 8, 20, 8 + 8, 20 * 20 * 16}));
    EXPECT_TRUE(lodex::find_grid("fine")->property_db()->find("PORO"));
    EXPECT_TRUE(lodex::find_grid("fine")->find_region("oil_zone"));
    EXPECT_NEAR(total_volume("fine") / total_volume("example"), 1, 1e-3);
    long k = 0;
    for (const auto& layer : model("fine").layers)
        k += static_cast<long>(layer.nb_k_cells);
    EXPECT_EQ(k, 16);

    ASSERT_EQ(activities_of("fine"), 1U);
    const auto* activity = dynamic_cast<const Lodex::SGridDowngriddingActivityData*>(
        lodex::find_grid("fine")->sgrid_activity_model()->activities().front());
    ASSERT_TRUE(activity);
    using Modification = Lodex::GridRefinementData::Modification;
    EXPECT_EQ(activity->refinement_data().modifications(),
              (std::vector<Modification>{
                  {Lodex::UGridIndex3d::I, 3, 6, 3, 20.0F, Lodex::LayerInfo::ParallelToBase},
                  {Lodex::UGridIndex3d::J, 1, 10, 2, 25.0F, Lodex::LayerInfo::ParallelToTop},
                  {Lodex::UGridIndex3d::K, 2, 3, 5, 0.5F, Lodex::LayerInfo::ParallelToTop}}));
}

TEST_F(DownscaleRun, TheMapperByRecordsKnowsEveryGeneration)
{
    add_box("G", {3, 2, 2});
    open("G");
    name("A");
    tick(TabI);
    row(TabI).set_division(2, 2, 3, 0, "");
    tick(TabK);
    row(TabK).set_division(1, 2, 2, 0, "");
    press("apply_button");
    expect_as_shown("A");
    EXPECT_EQ(parametric_boxes("A", "G"), (Lodex::IndexRelation{groups({0, 3, 4}), singles(2), groups({1, 3})}));
    choose_grid({"A"});
    name("B");
    tick(TabK);
    row(TabI).set_division(1, 1, 2, 0, "");
    press("apply_button");
    expect_as_shown("B");
    EXPECT_EQ(parametric_boxes("B", "G"), (Lodex::IndexRelation{groups({1, 4, 5}), singles(2), groups({1, 3})}));
}

TEST_F(DownscaleRun, FinerAndBackAgainGivesTheOldCorners)
{
    open("example");
    name("fine");
    tick(TabK);
    row(TabK).set_division(1, 8, 4, 0, "");
    press("apply_button");
    expect_as_shown("fine");
    ASSERT_TRUE(lodex::Interpreter::instance()
                    .run("lodex sgrid_merge_multiple_sections name back sgrid fine direction \"vertical\" sections "
                         "0+3+4+7+8+11+12+15+16+19+20+23+24+27+28+31")
                    .front()
                    .message.empty());
    const auto &before = model("example").zcorn, &after = model("back").zcorn;
    ASSERT_EQ(before.size(), after.size());
    for (std::size_t i = 0; i < before.size(); ++i)
        ASSERT_NEAR(before[i], after[i], 1e-9 * std::abs(before[i]));
}

TEST_F(DownscaleRun, ATakenNameRegistersNothing)
{
    add_box("G", {4, 4, 4});
    open("G");
    name("N");
    tick(TabI);
    row(TabI).set_division(1, 1, 2, 0, "");
    press("apply_button");
    ASSERT_EQ(activities_of("N"), 1U);
    name("N");
    row(TabI).set_division(3, 3, 2, 0, "");
    EXPECT_FALSE(process());
    EXPECT_EQ(errors().back(), "Could not create Downgridding activity\n");
    EXPECT_EQ(activities_of("N"), 1U);
    EXPECT_EQ(activities_of("G"), 1U);
}

TEST_F(DownscaleRun, ACancelledChainLeavesNothing)
{
    open("example");
    name("fine");
    for (const AxisTab axis : {TabI, TabJ, TabK})
        tick(axis);
    for (const double at : {0.1, 0.4, 0.8}) {
        SCOPED_TRACE(at);
        {
            const Stopper sink(at);
            press("apply_button");
        }
        EXPECT_FALSE(exists("fine"));
        EXPECT_EQ(temporaries(), Texts{});
        EXPECT_EQ(errors().back(), "Could not create Downgridding activity\n");
    }
    EXPECT_EQ(activities_of("example"), 0U);
    press("apply_button");
    EXPECT_TRUE(exists("fine"));
}

TEST_F(DownscaleRun, AThicknessThatIsNoNumberIsTheHostsBusiness)
{
    open("example");
    name("fine");
    tick(TabK);
    row(TabK).set_division(1, 1, 2, 1, "thick");
    press("apply_button");
    EXPECT_NE(sent().front().find(" sections 0+1+parallel_to_base+thick  copy_properties "), std::string::npos);
    EXPECT_FALSE(exists("fine"));
    EXPECT_EQ(errors().back(), "Could not create Downgridding activity\n");
}

/// A field model, where the data folder holds it.
struct Field {
    const char* name;
    const char* file;
};

bool import_field(const Field& field)
{
    const char* variable = std::getenv("LODEX_FIELD_DATA");
    const std::filesystem::path data = variable ? variable : SOURCE_DIR "/../shared/data";
    if (!std::filesystem::exists(data / field.file)) {
        std::cout << field.name << " is not here; nothing to check\n";
        return false;
    }
    const auto results = lodex::Interpreter::instance().run("lodex import file \"" + (data / field.file).string() +
                                                            "\" name " + field.name);
    EXPECT_TRUE(results.front().message.empty()) << results.front().message;
    return lodex::find_grid(field.name) != nullptr;
}

constexpr std::array fields{Field{"Reek", "reek/reek_sim_grid.grdecl"}, Field{"Drogon", "drogon/DROGON.EGRID"},
                            Field{"Spe9", "spe9/SPE9_CP_SHORT.EGRID"}};

TEST_F(UpscaleRun, FieldModels)
{
    for (const Field& field : fields) {
        SCOPED_TRACE(field.name);
        if (!import_field(field))
            continue;
        open(field.name);
        const QString made = QStringLiteral("%1 coarse").arg(field.name);
        name(made);
        for (const AxisTab axis : {TabI, TabJ, TabK})
            tick(axis);
        row(TabK).step()->setValue(3);
        press("apply_button");
        expect_as_shown(made.toStdString());
        EXPECT_EQ(activities_of(made.toStdString()), 1U);
        EXPECT_NEAR(total_volume(made.toStdString()) / total_volume(field.name), 1, 0.01);
        shell->close();
        run_deferred_deletes();
    }
}

TEST_F(DownscaleRun, FieldModels)
{
    for (const Field& field : fields) {
        SCOPED_TRACE(field.name);
        if (!import_field(field))
            continue;
        open(field.name);
        const QString made = QStringLiteral("%1 fine").arg(field.name);
        name(made);
        tick(TabI);
        row(TabI).set_division(5, 8, 2, 0, "");
        tick(TabK);
        row(TabK).set_division(2, 4, 5, 2, "1");
        press("apply_button");
        expect_as_shown(made.toStdString());
        EXPECT_EQ(activities_of(made.toStdString()), 1U);
        EXPECT_NEAR(total_volume(made.toStdString()) / total_volume(field.name), 1, 1e-3);
        shell->close();
        run_deferred_deletes();
    }
}

bool import_drogon_with_units()
{
    if (!import_field(fields[1]))
        return false;
    const auto results = lodex::Interpreter::instance().run(
        "lodex on SGrid Drogon set_layers units \"Upper\"+\"Middle\"+\"Lower\" sizes 10+11+10");
    EXPECT_TRUE(results.front().message.empty()) << results.front().message;
    return true;
}

TEST_F(UpscaleRun, DrogonByTwosAndByUnits)
{
    if (!import_drogon_with_units())
        return;
    open("Drogon");
    name("Drogon coarse");
    for (const AxisTab axis : {TabI, TabJ, TabK})
        tick(axis);
    one_layer_per_unit("Drogon");
    press("apply_button");
    expect_as_shown("Drogon coarse");
    EXPECT_EQ(size_of("Drogon coarse"), (Counts{23, 37, 3, 23 * 37 * 3}));
    const auto boxes = parametric_boxes("Drogon", "Drogon coarse");
    EXPECT_EQ(boxes[0].back(), (Lodex::IndexRange{44, 45}));
    EXPECT_EQ(boxes[1].back(), (Lodex::IndexRange{72, 72}));
    EXPECT_EQ(boxes[2], groups({9, 20, 30}));
}

TEST_F(DownscaleRun, OneUnitOfDrogonByFive)
{
    if (!import_drogon_with_units())
        return;
    open("Drogon");
    name("Drogon fine");
    tick(TabK);
    row(TabK).set_division(11, 21, 5, 2, "0.5");
    press("apply_button");
    expect_as_shown("Drogon fine");
    EXPECT_EQ(size_of("Drogon fine")[2], 10 + 55 + 10);
    EXPECT_EQ(model("Drogon fine").layers[1].nb_k_cells, 55);
    EXPECT_NEAR(total_volume("Drogon fine") / total_volume("Drogon"), 1, 1e-6);
}

} // namespace
