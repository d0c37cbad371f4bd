// What each mapper gives, worked out by hand.

#include "MapperFixture.h"

#include <Lodex/utils/COSNameList.h>
#include <Lodex/volumes/SGridActivityModel.h>

#include <algorithm>
#include <cmath>

using namespace lodex;

namespace {

class Mapper : public MapperFixture {
};

std::vector<std::string> list(const Lodex::CString& family)
{
    Lodex::COSNameList names;
    names.append("left over");
    Lodex::GridObjCellMapper::mapper_list_names(names, family);
    std::vector<std::string> result;
    for (const auto& name : names)
        result.push_back(name.str());
    return result;
}

// A box whose pillars lean: x grows by `lean` for each unit of depth.
GridModel leaning_box(const GridSize& size, const std::array<double, 3>& spacing, double lean)
{
    GridModel model = make_box(size, spacing);
    model.coord.visit_mutable([lean](auto numbers) {
        for (std::size_t n = 0; n < numbers.size(); n += 6) {
            numbers[n + 5] = numbers[n + 2] + 100;
            numbers[n + 3] = static_cast<std::remove_cvref_t<decltype(numbers[0])>>(numbers[n] + 100 * lean);
            numbers[n + 4] = numbers[n + 1];
        }
    });
    return model;
}

std::int64_t depth_place(const GridSize& size, std::int64_t i, std::int64_t j, std::int64_t k, int a, int b, int c)
{
    return Kelvane::depth_offset(size, i, j, k, b, c) + a;
}

// Sets the depths of a surface of a column.
void set_depth(GridModel& model, std::int64_t i, std::int64_t j, std::int64_t k, int c, double depth)
{
    for (int b = 0; b < 2; ++b)
        for (int a = 0; a < 2; ++a)
            model.zcorn.visit_mutable([&](auto depths) {
                depths[static_cast<std::size_t>(depth_place(model.size, i, j, k, a, b, c))] =
                    static_cast<std::remove_cvref_t<decltype(depths[0])>>(depth);
            });
}

} // namespace

TEST_F(Mapper, ListsAndTexts)
{
    EXPECT_EQ(list(Lodex::GeoSGridCellMapper::type()), (std::vector<std::string>{"geo/geometric"}));
    EXPECT_EQ(list(Lodex::MetaSGridCellMapper::type()),
              (std::vector<std::string>{"meta/parametric", "meta/stratigraphic", "meta/k-constrained geometric"}));
    EXPECT_TRUE(list("nothing").empty());
    const auto infos = Kelvane::mapper_infos();
    ASSERT_EQ(infos.size(), 4u);
    EXPECT_EQ(infos[0].path(), "geo/geometric");
    EXPECT_EQ(infos[3].path(), "meta/k-constrained geometric");
    for (const auto& info : infos)
        for (const auto& text : {info.rule, info.needs, info.samples, info.fault_management, info.inactive_cells})
            EXPECT_TRUE(text.size() > 20 && text.ends_with('.')) << info.name << ": " << text;
    EXPECT_NE(Lodex::FactoryLib::instance()->find(Lodex::GridObjCellMapperFactoriesDomain(), "stratigraphic"), nullptr);
}

TEST_F(Mapper, GeometricBoxes)
{
    auto& fine = add_box("Fine", {4, 4, 2}, {10, 10, 5});
    auto& coarse = add_box("Coarse", {2, 2, 1}, {20, 20, 10});
    const auto grids = match("geometric", fine, coarse);
    EXPECT_FALSE(grids->mapping().has_boxes());
    EXPECT_EQ(rows_of(grids->mapping()), (Rows{{0, 1, 4, 5, 16, 17, 20, 21},
                                               {2, 3, 6, 7, 18, 19, 22, 23},
                                               {8, 9, 12, 13, 24, 25, 28, 29},
                                               {10, 11, 14, 15, 26, 27, 30, 31}}));
    EXPECT_TRUE(grids->warnings().empty());
    EXPECT_EQ(samples(*grids, 3, {2, 2, 2}), (std::vector<std::int64_t>{10, 11, 14, 15, 26, 27, 30, 31}));
    EXPECT_EQ(samples(*grids, 3, {1, 1, 1}), (std::vector<std::int64_t>{10})) << "a shared corner: the lowest";
    EXPECT_EQ(samples(*grids, 3, {4, 1, 1}), (std::vector<std::int64_t>{10, 10, 11, 11}));
}

TEST_F(Mapper, GeometricFaceBelongsToTheLowerIndex)
{
    // Centres at 5, 15, 25; coarse cells from 0 to 15 to 30.
    auto& fine = add_box("Fine", {3, 1, 1}, {10, 10, 10});
    auto& coarse = add_box("Coarse", {2, 1, 1}, {15, 10, 10});
    EXPECT_EQ(rows_of(match("geometric", fine, coarse)->mapping()), (Rows{{0, 1}, {2}}));
    // The same along depth, and on a grid whose I runs against x.
    auto& tall = add_box("Tall", {1, 1, 3}, {10, 10, 10});
    auto& halves = add_box("Halves", {1, 1, 2}, {10, 10, 15});
    EXPECT_EQ(rows_of(match("geometric", tall, halves)->mapping()), (Rows{{0, 1}, {2}}));
    GridModel mirrored = make_box({2, 1, 1}, {15, 10, 10});
    mirrored.coord.visit_mutable([](auto numbers) {
        for (std::size_t n = 0; n < numbers.size(); n += 3)
            numbers[n] = 30 - numbers[n];
    });
    auto& left_handed = add("Left-handed", std::move(mirrored));
    EXPECT_EQ(rows_of(match("geometric", fine, left_handed)->mapping()), (Rows{{1, 2}, {0}}));
}

TEST_F(Mapper, GeometricLeaningPillars)
{
    // At depth 5 the coarse cells reach from 5 to 15 to 25, at depth 15 from 15 to 25 to 35.
    auto& coarse = add("Coarse", leaning_box({2, 1, 1}, {10, 10, 20}, 1));
    auto& fine = add_box("Fine", {8, 1, 2}, {5, 10, 10});
    EXPECT_EQ(rows_of(match("geometric", fine, coarse)->mapping()), (Rows{{1, 2, 11, 12}, {3, 4, 13, 14}}));
    EXPECT_TRUE(warned(*match("geometric", fine, coarse), "8 of 16 cells of grid \"Fine\" belong to no coarse cell"));
}

TEST_F(Mapper, GeometricFaultsAndPinchedCells)
{
    // The second coarse column has gone down by 5, its upper cell is pinched to nothing.
    GridModel model = make_box({2, 1, 2}, {10, 10, 10});
    for (int surface = 0; surface < 4; ++surface)
        set_depth(model, 1, 0, surface / 2, surface % 2,
                  std::array{5., 5., 5., 25.}[static_cast<std::size_t>(surface)]);
    auto& coarse = add("Coarse", std::move(model));
    auto& fine = add_box("Fine", {2, 1, 5}, {10, 10, 5});
    const auto grids = match("geometric", fine, coarse);
    EXPECT_EQ(rows_of(grids->mapping()), (Rows{{0, 2}, {}, {4, 6}, {3, 5, 7, 9}}));
    EXPECT_TRUE(warned(*grids, "1 of 4 cells of grid \"Coarse\" have no fine cell"));
    EXPECT_TRUE(warned(*grids, "2 of 10 cells of grid \"Fine\" belong to no coarse cell"));
    // Turned over, base above top: the same cells.
    GridModel inverted = make_box({1, 1, 1}, {20, 10, 10});
    set_depth(inverted, 0, 0, 0, 0, 10);
    set_depth(inverted, 0, 0, 0, 1, 0);
    EXPECT_EQ(rows_of(match("geometric", fine, add("Inverted", std::move(inverted)))->mapping()), (Rows{{0, 1, 2, 3}}));
}

TEST_F(Mapper, InactiveCellsAndRegions)
{
    auto& fine = add_box("Fine", {4, 1, 1}, {10, 10, 10});
    auto& coarse = add_box("Coarse", {2, 1, 1}, {20, 10, 10});
    fine_flags = {1, 1, 0, 1};
    EXPECT_EQ(rows_of(match("geometric", fine, coarse)->mapping()), (Rows{{0, 1}, {3}}));
    coarse_flags = {0, 1};
    const auto grids = match("geometric", fine, coarse);
    EXPECT_EQ(rows_of(grids->mapping()), (Rows{{}, {3}}));
    EXPECT_EQ(samples(*grids, 0, {2, 1, 1}), (std::vector<std::int64_t>{-1, -1}));
    EXPECT_EQ(samples(*grids, 1, {2, 1, 1}), (std::vector<std::int64_t>{-1, 3}));
    // A flag does not bring back an inactive cell.
    GridModel holes = make_box({4, 1, 1}, {10, 10, 10});
    holes.active[1] = 0;
    auto& with_hole = add("Hole", std::move(holes));
    fine_flags = {1, 1, 1, 1};
    coarse_flags.clear();
    EXPECT_EQ(rows_of(match("geometric", with_hole, coarse)->mapping()), (Rows{{0}, {2, 3}}));
    // Nothing chosen is no error, but said.
    fine_flags = {0, 0, 0, 0};
    EXPECT_TRUE(warned(*match("geometric", fine, coarse), "no active cell of grid \"Fine\" takes part"));
    fine_flags = {1, 1};
    EXPECT_EQ(error("geometric", fine, coarse), "the flags of grid \"Fine\" are 2, its cells 4");
}

TEST_F(Mapper, GridsThatDoNotOverlap)
{
    auto& fine = add_box("Fine", {2, 2, 2}, {10, 10, 10});
    auto& away = add_box("Away", {2, 2, 2}, {10, 10, 10}, {1000, 0, 0});
    EXPECT_EQ(error("geometric", fine, away),
              "the grids \"Fine\" and \"Away\" do not overlap: no cell centre of the first lies in an active cell of "
              "the second");
    set_layers(fine, {{"U", 2}});
    set_layers(away, {{"U", 2}});
    const std::string start = "the grids \"Fine\" and \"Away\" do not overlap";
    EXPECT_TRUE(error("k-constrained geometric", fine, away).starts_with(start));
    EXPECT_TRUE(error("stratigraphic", fine, away).starts_with(start));
}

TEST_F(Mapper, TheSameGridTwice)
{
    auto& grid = add_box("Grid", {2, 2, 2}, {10, 10, 10});
    set_layers(grid, {{"U", 2}});
    const Rows each{{0}, {1}, {2}, {3}, {4}, {5}, {6}, {7}};
    for (const char* name : {"geometric", "parametric", "stratigraphic", "k-constrained geometric"})
        EXPECT_EQ(rows_of(match(name, grid, grid)->mapping()), each) << name;
}

TEST_F(Mapper, KConstrainedKeepsToTheUnit)
{
    // Fine cells of 5; the fine unit ends at 15, the coarse one at 20 of 40.
    auto& fine = add_box("Fine", {1, 1, 8}, {10, 10, 5});
    auto& coarse = add_box("Coarse", {1, 1, 4}, {10, 10, 10});
    set_layers(fine, {{"Upper", 3}, {"Lower", 5}});
    set_layers(coarse, {{"Upper", 2}, {"Lower", 2}});
    const auto grids = match("k-constrained geometric", fine, coarse);
    EXPECT_EQ(rows_of(grids->mapping()), (Rows{{0, 1}, {2}, {4, 5}, {6, 7}}));
    EXPECT_TRUE(warned(*grids, "1 of 8 cells of grid \"Fine\" belong to no coarse cell"));
    EXPECT_EQ(samples(*grids, 1, {1, 1, 2}), (std::vector<std::int64_t>{2, -1})) << "the second one is in Lower";
    EXPECT_EQ(rows_of(match("geometric", fine, coarse)->mapping()), (Rows{{0, 1}, {2, 3}, {4, 5}, {6, 7}}));
    // Units count by name, not by order.
    set_layers(coarse, {{"Lower", 2}, {"Top", 2}});
    const auto renamed = match("k-constrained geometric", fine, coarse);
    EXPECT_EQ(rows_of(renamed->mapping()), (Rows{{}, {3}, {}, {}}));
    EXPECT_TRUE(warned(*renamed, "unit \"Upper\" is not in grid \"Coarse\", unit \"Top\" is not in grid \"Fine\""));
    set_layers(coarse, {{"Other", 4}});
    EXPECT_EQ(error("k-constrained geometric", fine, coarse),
              "the grids \"Fine\" and \"Coarse\" have no stratigraphic unit in common");
    set_layers(coarse, {});
    EXPECT_EQ(error("k-constrained geometric", fine, coarse), "grid \"Coarse\" has no stratigraphic layers");
}

TEST_F(Mapper, StratigraphicFollowsTheUnitNotTheDepth)
{
    // Coarse grid 300 deeper and half as thick; Upper has 2 of its 4 layers, Lower the rest.
    auto& fine = add_box("Fine", {2, 1, 8}, {10, 10, 5});
    auto& coarse = add_box("Coarse", {1, 1, 4}, {20, 10, 2.5}, {0, 0, 300});
    set_layers(fine, {{"Upper", 2}, {"Lower", 6}});
    set_layers(coarse, {{"Upper", 2}, {"Lower", 2}});
    const auto grids = match("stratigraphic", fine, coarse);
    EXPECT_EQ(rows_of(grids->mapping()), (Rows{{0, 1}, {2, 3}, {4, 5, 6, 7, 8, 9}, {10, 11, 12, 13, 14, 15}}));
    EXPECT_TRUE(grids->warnings().empty());
    EXPECT_FALSE(error("geometric", fine, coarse).empty()) << "by depth they do not meet";
    EXPECT_EQ(samples(*grids, 2, {2, 1, 3}), (std::vector<std::int64_t>{4, 5, 6, 7, 8, 9}));
    EXPECT_EQ(samples(*grids, 2, {1, 1, 1}), (std::vector<std::int64_t>{6})) << "x on a shared edge: the lower column";
    EXPECT_EQ(error("stratigraphic", add_box("Plain", {1, 1, 1}, {20, 10, 10}), coarse),
              "grid \"Plain\" has no stratigraphic layers");
}

TEST_F(Mapper, StratigraphicRelativeDepthAndBounds)
{
    // One unit; relative depths of the fine centres 1/6, 3/6 and 5/6, of the coarse bound 1/2: the upper one has it.
    auto& coarse = add_box("Coarse", {1, 1, 2}, {10, 10, 50});
    set_layers(coarse, {{"U", 2}});
    auto& thirds = add_box("Thirds", {1, 1, 3}, {10, 10, 2});
    set_layers(thirds, {{"U", 3}});
    EXPECT_EQ(rows_of(match("stratigraphic", thirds, coarse)->mapping()), (Rows{{0, 1}, {2}}));
    // Uneven fine cells: 1, 3 and 2 thick; centres at 1/12, 5/12 and 10/12. The middle one is inactive but counts.
    GridModel uneven = make_box({1, 1, 3}, {10, 10, 2});
    for (int surface = 0; surface < 6; ++surface)
        set_depth(uneven, 0, 0, surface / 2, surface % 2,
                  std::array{0., 1., 1., 4., 4., 6.}[static_cast<std::size_t>(surface)]);
    uneven.active[1] = 0;
    uneven.layers = {{"U", 3}};
    EXPECT_EQ(rows_of(match("stratigraphic", add("Uneven", std::move(uneven)), coarse)->mapping()), (Rows{{0}, {2}}));
    // A coarse cell pinched to nothing takes nothing; an inactive one leaves its fine cells without.
    GridModel pinched = make_box({1, 1, 3}, {10, 10, 10});
    set_depth(pinched, 0, 0, 1, 1, 10);
    set_depth(pinched, 0, 0, 2, 0, 10);
    pinched.layers = {{"U", 3}};
    auto& with_pinch = add("Pinched", pinched);
    EXPECT_EQ(rows_of(match("stratigraphic", thirds, with_pinch)->mapping()), (Rows{{0}, {}, {1, 2}}));
    pinched.active[0] = 0;
    EXPECT_EQ(rows_of(match("stratigraphic", thirds, add("Half", std::move(pinched)))->mapping()),
              (Rows{{}, {}, {1, 2}}));
}

TEST_F(Mapper, UnitsOfTheSameNameAreTakenInOrder)
{
    auto& fine = add_box("Fine", {1, 1, 6}, {10, 10, 5});
    auto& coarse = add_box("Coarse", {1, 1, 3}, {10, 10, 10});
    set_layers(fine, {{"Sand", 2}, {"Shale", 2}, {"Sand", 2}});
    set_layers(coarse, {{"Sand", 1}, {"Shale", 1}, {"Sand", 1}});
    EXPECT_EQ(rows_of(match("stratigraphic", fine, coarse)->mapping()), (Rows{{0, 1}, {2, 3}, {4, 5}}));
    EXPECT_EQ(rows_of(match("k-constrained geometric", fine, coarse)->mapping()), (Rows{{0, 1}, {2, 3}, {4, 5}}));
}

TEST_F(Mapper, ParametricThroughRecords)
{
    auto& fine = add_box("Fine", {4, 2, 6}, {10, 10, 5});
    auto& by_k = merge("By K", fine, 2, 3);
    auto& by_i = merge("By I", by_k, 0, 2);
    // Two generations: I by 2, K by 3.
    const auto grids = match("parametric", fine, by_i);
    ASSERT_TRUE(grids->mapping().has_boxes());
    EXPECT_EQ(grids->mapping().boxes, by_i.relation_to(fine));
    const auto rows = rows_of(grids->mapping());
    ASSERT_EQ(rows.size(), 8u);
    EXPECT_EQ(rows[0], (std::vector<std::int64_t>{0, 1, 8, 9, 16, 17}));
    EXPECT_EQ(rows[7], (std::vector<std::int64_t>{30, 31, 38, 39, 46, 47}));
    EXPECT_TRUE(grids->warnings().empty());
    EXPECT_EQ(rows_of(match("geometric", fine, by_i)->mapping()), rows);
    // Samples by an even division of the index ranges; the lower index on a bound.
    EXPECT_EQ(samples(*grids, 0, {2, 1, 3}), rows[0]);
    EXPECT_EQ(samples(*grids, 0, {1, 1, 2}), (std::vector<std::int64_t>{0, 16}));
    EXPECT_EQ(samples(*grids, 0, {4, 1, 1}), (std::vector<std::int64_t>{8, 8, 9, 9}));
    // The temporary grid may be gone.
    const Rows before = rows;
    Lodex::GeobaseLib::instance()->destroy(&by_k);
    EXPECT_EQ(rows_of(match("parametric", fine, by_i)->mapping()), before);
    // Flags.
    fine_flags.assign(48, 1);
    fine_flags[9] = 0;
    coarse_flags.assign(8, 1);
    coarse_flags[7] = 0;
    const auto chosen = match("parametric", fine, by_i);
    EXPECT_EQ(rows_of(chosen->mapping())[0], (std::vector<std::int64_t>{0, 1, 8, 16, 17}));
    EXPECT_TRUE(rows_of(chosen->mapping())[7].empty());
    EXPECT_TRUE(warned(*chosen, "6 of 47 cells of grid \"Fine\" belong to no coarse cell"));
    EXPECT_EQ(samples(*chosen, 0, {2, 1, 3}), (std::vector<std::int64_t>{0, 1, 8, -1, 16, 17}));
    EXPECT_EQ(samples(*chosen, 7, {1, 1, 1}), (std::vector<std::int64_t>{-1}));
}

TEST_F(Mapper, ParametricThroughARefinement)
{
    auto& coarse = add_box("Coarse", {2, 1, 2}, {20, 10, 10});
    GridModel model = make_box({6, 1, 2}, {20. / 3, 10, 10});
    model.records.push_back({coarse.model().id, "Coarse", {2, 1, 2}, {}});
    for (std::int64_t i = 0; i < 6; ++i)
        model.records[0].ranges[0].push_back({i / 4, i / 4}); // 4 and 2 parts
    model.records[0].ranges[1] = {{0, 0}};
    model.records[0].ranges[2] = {{0, 0}, {1, 1}};
    auto& fine = add("Fine", model);
    EXPECT_EQ(rows_of(match("parametric", fine, coarse)->mapping()),
              (Rows{{0, 1, 2, 3}, {4, 5}, {6, 7, 8, 9}, {10, 11}}));
    EXPECT_EQ(samples(*match("parametric", fine, coarse), 1, {4, 1, 1}), (std::vector<std::int64_t>{4, 4, 5, 5}));
    // The other way about each part has the cell that it came from.
    EXPECT_EQ(rows_of(match("parametric", coarse, fine)->mapping())[3], (std::vector<std::int64_t>{0}));
    EXPECT_EQ(rows_of(match("parametric", coarse, fine)->mapping())[11], (std::vector<std::int64_t>{3}));
    // Through the grid that both came from.
    auto& merged = merge("Merged", coarse, 0, 2);
    const auto grids = match("parametric", fine, merged);
    EXPECT_EQ(rows_of(grids->mapping()), (Rows{{0, 1, 2, 3, 4, 5}, {6, 7, 8, 9, 10, 11}}));
    EXPECT_TRUE(warned(*grids, "matched through grid \"Coarse\""));
    // A record that does not fit.
    model.records[0].ranges[0][0] = {0, 2};
    EXPECT_EQ(error("parametric", add("Broken", model), coarse),
              "the record that relates the grids \"Broken\" and \"Coarse\" does not fit their sizes along I");
}

TEST_F(Mapper, ParametricThroughACommonSource)
{
    auto& source = add_box("Source", {1, 1, 12}, {10, 10, 5});
    auto& pairs = merge("Pairs", source, 2, 2);
    auto& fours = merge("Fours", source, 2, 4);
    EXPECT_EQ(rows_of(match("parametric", pairs, fours)->mapping()), (Rows{{0, 1}, {2, 3}, {4, 5}}));
    // Pairs over threes: 2-3 lies half in either and goes to the lower one; the other way each pair takes its middle's.
    auto& threes = merge("Threes", source, 2, 3);
    EXPECT_EQ(rows_of(match("parametric", pairs, threes)->mapping()), (Rows{{0, 1}, {2}, {3, 4}, {5}}));
    EXPECT_EQ(rows_of(match("parametric", threes, pairs)->mapping()), (Rows{{0}, {0}, {1}, {2}, {2}, {3}}));
    // The nearest source is taken, whatever the others.
    auto& of_pairs = merge("Of pairs", pairs, 2, 3);
    EXPECT_TRUE(warned(*match("parametric", of_pairs, threes), "\"Source\""));
    auto& also_of_pairs = merge("Also of pairs", pairs, 2, 2);
    EXPECT_TRUE(warned(*match("parametric", also_of_pairs, of_pairs), "\"Pairs\""));
    auto& stranger = add_box("Stranger", {1, 1, 6}, {10, 10, 10});
    EXPECT_EQ(error("parametric", stranger, fours),
              "the grids \"Stranger\" and \"Fours\" have no relation: neither was made from the other by merging or "
              "subdividing, nor both from a third grid of the project");
}

TEST_F(Mapper, FaultBlocks)
{
    // Columns 0 to 2 and 3 to 5, the latter 3 down: two blocks. Coarse cells of two columns, the middle one has both.
    GridModel model = make_box({6, 1, 2}, {10, 10, 10});
    for (std::int64_t i = 3; i < 6; ++i)
        for (int surface = 0; surface < 4; ++surface)
            set_depth(model, i, 0, surface / 2, surface % 2, 3 + 10 * ((surface + 1) / 2));
    const auto widen = [&model](double bound) { // the bound between columns 2 and 3
        model.coord.visit_mutable([bound](auto numbers) {
            for (const std::size_t pillar : {3u, 10u})
                numbers[6 * pillar] = numbers[6 * pillar + 3] = bound;
        });
    };
    auto& even = add("Even", model);
    widen(34);
    auto& uneven = add("Uneven", model);
    auto& coarse = add_box("Coarse", {3, 1, 1}, {20, 10, 23});

    // As many on either side: the lower number.
    auto grids = match("geometric", even, coarse, true);
    EXPECT_EQ(rows_of(grids->mapping()), (Rows{{0, 1, 6, 7}, {2, 8}, {4, 5, 10, 11}}));
    EXPECT_TRUE(warned(*grids, "2 fine cells of 1 coarse cells lie across a fault"));
    // Samples at depth 11.5: in the lower cell of column 2, in the upper one of column 3.
    EXPECT_EQ(samples(*grids, 1, {2, 1, 1}), (std::vector<std::int64_t>{8, -1}));
    EXPECT_EQ(samples(*match("geometric", even, coarse), 1, {2, 1, 1}), (std::vector<std::int64_t>{8, 3}));
    // With the wider cells on the far side these are kept.
    widen(26);
    auto& other = add("Other", model);
    grids = match("geometric", other, coarse, true);
    EXPECT_EQ(rows_of(grids->mapping())[1], (std::vector<std::int64_t>{3, 9}));
    EXPECT_EQ(rows_of(match("geometric", uneven, coarse, true)->mapping())[1], (std::vector<std::int64_t>{2, 8}));

    // Index boxes become lists where a coarse cell has two blocks, and stay where none has.
    auto& merged = merge("Merged", even, 0, 2);
    grids = match("parametric", even, merged, true);
    EXPECT_FALSE(grids->mapping().has_boxes());
    EXPECT_EQ(rows_of(grids->mapping())[1], (std::vector<std::int64_t>{2}));
    EXPECT_EQ(samples(*grids, 1, {2, 1, 1}), (std::vector<std::int64_t>{2, -1}));
    auto& by_k = merge("By K", even, 2, 2);
    EXPECT_TRUE(match("parametric", even, by_k, true)->mapping().has_boxes());
    EXPECT_TRUE(match("parametric", even, by_k, true)->warnings().empty());
}

TEST_F(Mapper, FaultManagementIsOffWhereItMeansNothing)
{
    // Every column stands for itself: coarse cells of 2 x 2 columns have four blocks of a quarter each.
    GridModel model = make_box({4, 4, 1}, {10, 10, 10});
    for (std::int64_t j = 0; j < 4; ++j)
        for (std::int64_t i = 0; i < 4; ++i)
            for (int c = 0; c < 2; ++c)
                set_depth(model, i, j, 0, c, 10 * c + 0.1 * static_cast<double>(i + 2 * j));
    auto& fine = add("Fine", std::move(model));
    auto& coarse = add_box("Coarse", {2, 2, 1}, {20, 20, 11});
    const auto grids = match("geometric", fine, coarse, true);
    EXPECT_EQ(rows_of(grids->mapping())[0], (std::vector<std::int64_t>{0, 1, 4, 5}));
    EXPECT_TRUE(warned(*grids, "faults are not looked at: in 4 of 4 cells of grid \"Coarse\""));
    EXPECT_EQ(samples(*grids, 0, {2, 2, 1}), (std::vector<std::int64_t>{0, 1, 4, 5}));
    // A coarse cell a column: each has its block.
    auto& same = add_box("Same", {4, 4, 1}, {10, 10, 12});
    EXPECT_TRUE(match("geometric", fine, same, true)->warnings().empty());
}
