// What holds for every grid: mappers against brute force, against each other, against the records; threads, cancelling.

#include "MapperFixture.h"

#include "brute_force.h"
#include "tests/volumes_model/random_grid.h"
#include "upscaling/kernels/FaultBlocks.h"

#include "lodex/volumes/model/Subdivide.h"

#include <tbb/parallel_for.h>
#include <tbb/task_arena.h>

using namespace lodex;
using volumes_model_tests::random_grid;
using volumes_model_tests::RandomGridOptions;

namespace {

const std::vector<std::string> all_mappers{"geometric", "parametric", "stratigraphic", "k-constrained geometric"};

class MapperFacts : public MapperFixture {
protected:
    // The example field and its merge by 2 x 2 x 2, both with layers, in two steps.
    static std::pair<CornerPointGrid*, CornerPointGrid*> example(const GridSize& size = {16, 12, 12})
    {
        auto& fine = add("Fine", make_example(size));
        auto& by_k = merge("By K", fine, 2, 2);
        auto& by_i = merge("By I", by_k, 0, 2);
        return {&fine, &merge("Coarse", by_i, 1, 2)};
    }

    // Members, offsets and samples of all coarse cells.
    std::vector<std::int64_t> everything(const std::string& mapper, const CornerPointGrid& fine,
                                         const CornerPointGrid& coarse, bool faults)
    {
        const auto grids = match(mapper, fine, coarse, faults);
        std::vector<std::int64_t> result;
        for (const auto& row : rows_of(grids->mapping())) {
            result.push_back(-2);
            result.insert(result.end(), row.begin(), row.end());
        }
        const std::int64_t count = coarse.model().cells();
        std::vector<std::int64_t> sampled(static_cast<std::size_t>(27 * count));
        tbb::parallel_for(std::int64_t{0}, count, [&](std::int64_t cell) {
            grids->sample(cell, {3, 3, 3}, std::span(sampled).subspan(static_cast<std::size_t>(27 * cell), 27));
        });
        result.insert(result.end(), sampled.begin(), sampled.end());
        return result;
    }
};

Kelvane::Point3 centre_of(const GridModel& model, std::int64_t cell)
{
    return cell_centre(cell_corners(model, cell % model.size[0], cell / model.size[0] % model.size[1],
                                    cell / model.size[0] / model.size[1]));
}

} // namespace

TEST_F(MapperFacts, GeometricAgreesWithBruteForceOnUnrelatedRandomGrids)
{
    std::uint64_t seed = 500;
    std::int64_t matched = 0, sampled = 0;
    for (const bool mirrored : {false, true}) {
        for (const bool plane : {false, true}) {
            const RandomGridOptions options{seed % 2 == 1, plane, true, mirrored, 0.2};
            const std::string number = std::to_string(++seed);
            auto& fine = add("Fine " + number, random_grid({7, 6, 10}, seed, options));
            auto& coarse = add("Coarse " + number, random_grid({6, 5, 8}, seed + 50, options));
            const auto grids = match("geometric", fine, coarse);
            const auto owners = owners_of(grids->mapping(), fine.model().cells());
            const auto coarse_cells = brute_force::corners_of(view_of(coarse.model()));
            const auto fine_cells = brute_force::corners_of(view_of(fine.model()));
            for (std::int64_t cell = 0; cell < fine.model().cells(); ++cell) {
                const bool active = fine.model().active[static_cast<std::size_t>(cell)] != 0;
                const std::int64_t expected =
                    active ? brute_force::find(coarse_cells, centre_of(fine.model(), cell)) : -1;
                ASSERT_EQ(owners[static_cast<std::size_t>(cell)], expected) << "grids " << number << ", cell " << cell;
                matched += expected >= 0;
            }
            for (std::int64_t cell = 0; cell < coarse.model().cells(); cell += 3) {
                const auto found = samples(*grids, cell, {2, 2, 1});
                for (std::size_t s = 0; s < 4; ++s) {
                    const auto& corners = coarse_cells[static_cast<std::size_t>(cell)];
                    const bool active = coarse.model().active[static_cast<std::size_t>(cell)] != 0;
                    const auto point =
                        brute_force::trilinear(corners, {s % 2 ? 0.75 : 0.25, s / 2 ? 0.75 : 0.25, 0.5});
                    ASSERT_EQ(found[s], active ? brute_force::find(fine_cells, point) : -1);
                    sampled += found[s] >= 0;
                }
            }
        }
    }
    EXPECT_GT(matched, 100);
    EXPECT_GT(sampled, 50);
}

TEST_F(MapperFacts, ParametricIsTheRecordsThroughSeveralGenerations)
{
    auto& fine = add("Fine", random_grid({8, 9, 10}, 3));
    CornerPointGrid* grid = &fine;
    // What each step does to one index, composed here by hand.
    std::array<std::vector<std::int64_t>, 3> parent;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        parent[axis].resize(static_cast<std::size_t>(fine.model().size[axis]));
        std::iota(parent[axis].begin(), parent[axis].end(), 0);
    }
    int number = 0;
    for (const auto& [axis, step] : {std::pair{2, 2}, {0, 3}, {1, 2}, {2, 3}, {0, 2}}) {
        grid = &merge("Step " + std::to_string(++number), *grid, axis, step);
        for (std::int64_t& index : parent[static_cast<std::size_t>(axis)])
            index /= step;
        const auto owners = owners_of(match("parametric", fine, *grid)->mapping(), fine.model().cells());
        const GridSize &size = fine.model().size, &coarse = grid->model().size;
        for (std::int64_t cell = 0; cell < fine.model().cells(); ++cell) {
            const auto i = static_cast<std::size_t>(cell % size[0]);
            const auto j = static_cast<std::size_t>(cell / size[0] % size[1]);
            const auto k = static_cast<std::size_t>(cell / size[0] / size[1]);
            const std::int64_t expected = parent[0][i] + coarse[0] * (parent[1][j] + coarse[1] * parent[2][k]);
            ASSERT_EQ(owners[static_cast<std::size_t>(cell)],
                      fine.model().active[static_cast<std::size_t>(cell)] ? expected : -1);
        }
    }
}

TEST_F(MapperFacts, SubdividedCellsLieInTheirParents)
{
    // Vertical pillars, no faults, no gaps: the parts fill their parents.
    auto& coarse = add("Coarse", random_grid({5, 4, 6}, 21, {true, true, false, false, 0.2}));
    set_layers(coarse, {{"A", 2}, {"B", 3}, {"C", 1}});
    const CornerPointGrid* grid = &coarse;
    int number = 0;
    for (const int axis : {2, 0, 1}) {
        SubdivideRequest request;
        request.axis = axis;
        request.source_name = grid->name().str();
        for (std::int64_t section = 0; section < grid->model().size[static_cast<std::size_t>(axis)]; section += 2)
            request.divisions.push_back({.section = section, .added = 1 + section % 3});
        SubdivideReport report;
        grid = &add("Part " + std::to_string(++number), subdivide_sections(grid->model(), request, report));
        const auto relation = grid->relation_to(coarse);
        ASSERT_TRUE(relation);
        const auto records = owners_of(match("parametric", *grid, coarse)->mapping(), grid->model().cells());
        const GridSize &size = grid->model().size, &parents = coarse.model().size;
        std::int64_t with_volume = 0;
        for (const char* mapper : {"geometric", "stratigraphic", "k-constrained geometric"}) {
            const auto found = owners_of(match(mapper, *grid, coarse)->mapping(), grid->model().cells());
            for (std::int64_t cell = 0; cell < grid->model().cells(); ++cell) {
                const auto at = static_cast<std::size_t>(cell);
                const auto source = [&](std::size_t a, std::int64_t n) {
                    return (*relation)[a][static_cast<std::size_t>(n)].first;
                };
                const std::int64_t expected = source(0, cell % size[0]) +
                                              parents[0] * (source(1, cell / size[0] % size[1]) +
                                                            parents[1] * source(2, cell / size[0] / size[1]));
                ASSERT_EQ(records[at], grid->model().active[at] ? expected : -1);
                // A pinched cell lies on a face of its parent.
                if (grid->model().active[at] && grid->bulk_volumes()[at] > 0) {
                    ASSERT_EQ(found[at], expected) << mapper << " on part " << number << ", cell " << cell;
                    ++with_volume;
                }
            }
        }
        EXPECT_GT(with_volume, 300);
    }
    // Parts merged again to others: through the coarse grid as well as straight.
    auto& merged = merge("Merged", coarse, 2, 2);
    const auto through = owners_of(match("parametric", *grid, merged)->mapping(), grid->model().cells());
    const auto straight = owners_of(match("geometric", *grid, merged)->mapping(), grid->model().cells());
    for (std::size_t cell = 0; cell < through.size(); ++cell) {
        if (through[cell] >= 0 && grid->bulk_volumes()[cell] > 0) {
            ASSERT_EQ(through[cell], straight[cell]);
        }
    }
}

TEST_F(MapperFacts, MergedCellsHoldTheCentresOfTheirParts)
{
    // Along K the merged cells are exactly the union of their parts: pillars stay, inner surfaces go.
    for (const bool mirrored : {false, true}) {
        const std::string name = mirrored ? "Mirrored" : "Plain";
        auto& fine = add(name, random_grid({7, 6, 9}, 12, {true, true, false, mirrored, 0.2}));
        auto& coarse = merge(name + " by K", fine, 2, 3);
        const auto geometric = owners_of(match("geometric", fine, coarse)->mapping(), fine.model().cells());
        const auto parametric = owners_of(match("parametric", fine, coarse)->mapping(), fine.model().cells());
        std::int64_t thick = 0;
        for (std::int64_t cell = 0; cell < fine.model().cells(); ++cell) {
            const auto at = static_cast<std::size_t>(cell);
            if (parametric[at] < 0) {
                EXPECT_EQ(geometric[at], -1);
            }
            else if (fine.bulk_volumes()[at] > 0) {
                ASSERT_EQ(geometric[at], parametric[at]) << name << ' ' << cell;
                ++thick;
            }
        }
        EXPECT_GT(thick, 200);
    }
    // A field with faults that lean, merged along K: every mapper finds the parent.
    auto& field = add("Field", make_example({20, 16, 16}));
    auto& by_k = merge("Field by K", field, 2, 2);
    const auto expected = owners_of(match("parametric", field, by_k)->mapping(), field.model().cells());
    const auto geometric = owners_of(match("geometric", field, by_k)->mapping(), field.model().cells());
    std::int64_t differ = 0, active = 0;
    for (std::size_t cell = 0; cell < expected.size(); ++cell) {
        active += expected[cell] >= 0;
        differ += geometric[cell] != expected[cell];
    }
    EXPECT_GT(active, 3000);
    EXPECT_EQ(differ, 0);
    // By depth within the unit as well, where no merged cell reaches over two units.
    auto& in_units = add("In units", make_example({20, 16, 16}));
    set_layers(in_units, {{"A", 6}, {"B", 4}, {"C", 6}});
    auto& units_by_k = merge("In units by K", in_units, 2, 2);
    for (const char* mapper : {"stratigraphic", "k-constrained geometric"}) {
        const auto found = owners_of(match(mapper, in_units, units_by_k)->mapping(), in_units.model().cells());
        std::int64_t wrong = 0;
        for (std::size_t cell = 0; cell < expected.size(); ++cell)
            wrong += found[cell] != expected[cell];
        EXPECT_EQ(wrong, 0) << mapper;
    }
}

TEST_F(MapperFacts, KConstrainedIsGeometricWithoutTheOtherUnits)
{
    const auto [fine, coarse] = example();
    const auto& fine_layers = fine->model().layers;
    const auto& coarse_layers = coarse->model().layers;
    ASSERT_GT(fine_layers.size(), 1u);
    const auto unit_of = [](const std::vector<LayerData>& layers, std::int64_t k) {
        for (const LayerData& layer : layers) {
            if (k < layer.nb_k_cells)
                return layer.unit;
            k -= layer.nb_k_cells;
        }
        return std::string();
    };
    const auto geometric = owners_of(match("geometric", *fine, *coarse)->mapping(), fine->model().cells());
    const auto constrained =
        owners_of(match("k-constrained geometric", *fine, *coarse)->mapping(), fine->model().cells());
    const std::int64_t fine_area = fine->model().size[0] * fine->model().size[1];
    const std::int64_t coarse_area = coarse->model().size[0] * coarse->model().size[1];
    std::int64_t same = 0;
    for (std::int64_t cell = 0; cell < fine->model().cells(); ++cell) {
        const auto at = static_cast<std::size_t>(cell);
        const std::string unit = unit_of(fine_layers, cell / fine_area);
        if (constrained[at] >= 0) {
            ASSERT_EQ(unit_of(coarse_layers, constrained[at] / coarse_area), unit);
        }
        if (geometric[at] >= 0 && unit_of(coarse_layers, geometric[at] / coarse_area) == unit) {
            ASSERT_EQ(constrained[at], geometric[at]);
            ++same;
        }
    }
    EXPECT_GT(same, 500);
}

TEST_F(MapperFacts, EveryMapperGivesTheSameOnOneThreadAndOnAll)
{
    const auto [fine, coarse] = example();
    for (const std::string& mapper : all_mappers) {
        for (const bool faults : {false, true}) {
            tbb::task_arena one(1);
            std::vector<std::int64_t> single;
            one.execute([&] { single = everything(mapper, *fine, *coarse, faults); });
            EXPECT_EQ(single, everything(mapper, *fine, *coarse, faults)) << mapper;
            EXPECT_GT(std::ranges::count_if(single, [](std::int64_t cell) { return cell >= 0; }), 1000) << mapper;
        }
    }
}

TEST_F(MapperFacts, EveryMapperStopsAtEachStep)
{
    const auto [fine, coarse] = example({12, 10, 8});
    for (const std::string& mapper : all_mappers) {
        for (const bool faults : {false, true}) {
            const int steps = volumes_model_tests::cancel_at_each_step([&](const ProgressCheck& progress) {
                (void)match(mapper, *fine, *coarse, faults, progress);
            });
            EXPECT_GT(steps, 3) << mapper;
        }
    }
}

TEST_F(MapperFacts, FaultBlocksLeaveOneBlockInEachCoarseCell)
{
    const auto [fine, coarse] = example({24, 20, 8});
    const auto blocks = Kelvane::find_fault_blocks(view_of(fine->model()));
    ASSERT_GT(blocks.count, 1);
    const auto volumes = fine->bulk_volumes();
    for (const std::string& mapper : all_mappers) {
        const auto rows = rows_of(match(mapper, *fine, *coarse)->mapping());
        const auto grids = match(mapper, *fine, *coarse, true);
        const auto kept = rows_of(grids->mapping());
        std::int64_t mixed = 0;
        for (std::size_t cell = 0; cell < rows.size(); ++cell) {
            std::vector<double> share(static_cast<std::size_t>(blocks.count), 0);
            for (const std::int64_t member : rows[cell])
                share[static_cast<std::size_t>(blocks.cell_block(static_cast<std::size_t>(member)))] +=
                    volumes[static_cast<std::size_t>(member)];
            const auto best = std::ranges::max_element(share) - share.begin();
            std::vector<std::int64_t> expected;
            for (const std::int64_t member : rows[cell])
                if (blocks.cell_block(static_cast<std::size_t>(member)) == best)
                    expected.push_back(member);
            ASSERT_EQ(kept[cell], expected) << mapper << ' ' << cell;
            mixed += expected.size() != rows[cell].size();
            for (const std::int64_t sample : samples(*grids, static_cast<std::int64_t>(cell), {2, 2, 2})) {
                if (sample >= 0 && !expected.empty()) {
                    ASSERT_EQ(blocks.cell_block(static_cast<std::size_t>(sample)), best);
                }
            }
        }
        EXPECT_GT(mixed, 3) << mapper;
        EXPECT_TRUE(warned(*grids, "lie across a fault and are left out")) << mapper;
    }
}
