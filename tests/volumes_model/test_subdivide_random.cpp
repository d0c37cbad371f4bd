// Subdivision of random faulted grids against rules that hold whatever the grid: corners, volumes, the way back.

#include "random_grid.h"

#include "lodex/volumes/model/CellGeometry.h"
#include "lodex/volumes/model/Create.h"
#include "lodex/volumes/model/Merge.h"
#include "lodex/volumes/model/Subdivide.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <ostream>

namespace {

using namespace lodex;
using namespace volumes_model_tests;

constexpr auto even = Lodex::LayerInfo::Proportional;
constexpr auto from_base = Lodex::LayerInfo::ParallelToBase;
constexpr auto from_top = Lodex::LayerInfo::ParallelToTop;

struct Case {
    GridSize size;
    int axis;
    std::vector<SectionDivision> divisions;
};

std::ostream& operator<<(std::ostream& out, const Case& what)
{
    out << what.size[0] << 'x' << what.size[1] << 'x' << what.size[2] << " along " << axis_letter(what.axis);
    for (const SectionDivision& division : what.divisions)
        out << ' ' << division.section << '+' << division.added << '+' << division.layering << '+'
            << division.thickness.value_or(-1);
    return out;
}

SubdivideRequest request_of(const Case& what)
{
    SubdivideRequest request;
    request.axis = what.axis;
    request.divisions = what.divisions;
    request.copy_properties = request.copy_regions = true;
    request.source_name = "source";
    return request;
}

// Sections of the new grid that came from one old section, for all old sections along the axis of its record.
std::vector<IndexRange> children_of(const DerivationRecord& record, int axis)
{
    std::vector<IndexRange> children;
    const auto& ranges = record.ranges[static_cast<std::size_t>(axis)];
    for (std::size_t n = 0; n < ranges.size(); ++n) {
        if (n == 0 || !(ranges[n] == ranges[n - 1]))
            children.push_back({static_cast<std::int64_t>(n), 0});
        children.back().last = static_cast<std::int64_t>(n);
    }
    return children;
}

MergeRequest way_back(const DerivationRecord& record, int axis)
{
    MergeRequest request;
    request.axis = axis;
    for (const IndexRange& range : children_of(record, axis))
        if (range.last > range.first)
            request.sections.push_back(range);
    request.copy_properties = request.copy_regions = true;
    request.region_mode = RegionMode::CellShare;
    request.percentile = 100;
    return request;
}

CellCorners corners_at(const GridModel& model, const std::array<std::int64_t, 3>& n)
{
    return cell_corners(model, n[0], n[1], n[2]);
}

// Heights of the four upright edges, all of one sign.
bool upright(const CellCorners& corners)
{
    int above = 0, below = 0;
    for (std::size_t n = 0; n < 4; ++n) {
        above += corners[n + 4][2] > corners[n][2];
        below += corners[n + 4][2] < corners[n][2];
    }
    return above == 0 || below == 0;
}

class RandomSubdivisions : public testing::TestWithParam<std::tuple<Case, bool>> {
protected:
    // Calls work(parent cell, first child, number of children) for all cells of the source.
    template <class Work>
    static void for_parents(const GridModel& source, const GridModel& result, int axis, const Work& work)
    {
        const auto children = children_of(result.records.front(), axis);
        const auto at = static_cast<std::size_t>(axis);
        std::array<std::int64_t, 3> n{};
        for (n[2] = 0; n[2] < source.size[2]; ++n[2])
            for (n[1] = 0; n[1] < source.size[1]; ++n[1])
                for (n[0] = 0; n[0] < source.size[0]; ++n[0]) {
                    std::array<std::int64_t, 3> child = n;
                    const IndexRange& range = children[static_cast<std::size_t>(n[at])];
                    child[at] = range.first;
                    work(n, child, range.last - range.first + 1);
                }
    }
};

// Where new corner depths must be: 1e-9 along K, and beside the own edge along I and J.
TEST_P(RandomSubdivisions, CornersLieOnTheEdgesOfTheirParents)
{
    const auto& [what, wide] = GetParam();
    const auto at = static_cast<std::size_t>(what.axis);
    const std::size_t step = std::size_t{1} << what.axis;
    for (std::uint64_t seed = 1; seed <= 2; ++seed) {
        const GridModel source = random_grid(what.size, seed, {.double_depths = wide, .mirrored = seed == 2});
        SubdivideReport report;
        const GridModel result = subdivide_sections(source, request_of(what), report);
        std::int64_t wrong = 0, hanging = 0;
        for_parents(source, result, what.axis, [&](const auto& parent, auto child, std::int64_t count) {
            const CellCorners old = corners_at(source, parent);
            const auto division = std::ranges::find(what.divisions, parent[at], &SectionDivision::section);
            CellCorners before{};
            for (std::int64_t n = 0; n < count; ++n, ++child[at]) {
                const CellCorners corners = corners_at(result, child);
                for (std::size_t corner = 0; corner < 8; ++corner) {
                    const bool far = (corner & step) != 0;
                    const std::size_t near = corner & ~step;
                    const Point3 &a = old[near], &b = old[near + step], &q = corners[corner];
                    if ((n == 0 && !far) || (n + 1 == count && far)) {
                        wrong += q != (far ? b : a); // the very corner
                        continue;
                    }
                    if (!far)
                        hanging += q != before[corner + step];
                    if (what.axis < 2) {
                        // At its depth on the edge it is beside the pillar.
                        const double share = b[2] == a[2] ? 0.5 : (q[2] - a[2]) / (b[2] - a[2]);
                        const double dx = b[0] - a[0], dy = b[1] - a[1];
                        const double gap = (q[0] - a[0] - share * dx) * dx + (q[1] - a[1] - share * dy) * dy;
                        const bool level = std::abs(b[2] - a[2]) < 1e-3;
                        wrong +=
                            share < -1e-9 || share > 1 + 1e-9 || (!level && std::abs(gap) > 1e-6 * (dx * dx + dy * dy));
                        continue;
                    }
                    const auto boundary = static_cast<double>(far ? n + 1 : n), all = static_cast<double>(count);
                    const double height = b[2] - a[2];
                    double wanted = a[2] + height * boundary / all;
                    if (division->layering != even && division->thickness) {
                        const double length = std::hypot(b[0] - a[0], b[1] - a[1], height);
                        const double dip = length > 0 ? std::abs(height) / length : 1;
                        const double t = *division->thickness * dip;
                        const bool from_below = division->layering == from_base;
                        const double part = std::min((from_below ? all - boundary : boundary) * t, std::abs(height));
                        wanted = from_below ? b[2] - std::copysign(part, height) : a[2] + std::copysign(part, height);
                    }
                    wrong += std::abs(q[2] - wanted) > (wide ? 1e-9 : 1e-3);
                }
                before = corners;
            }
        });
        EXPECT_EQ(wrong, 0) << "seed " << seed;
        EXPECT_EQ(hanging, 0) << "seed " << seed;
        EXPECT_GE(report.pinched, 0);
    }
}

TEST_P(RandomSubdivisions, ReportAgreesWithACellByCellCount)
{
    const auto& [what, wide] = GetParam();
    const GridModel source = random_grid(what.size, 3, {.double_depths = wide});
    SubdivideReport report;
    const GridModel result = subdivide_sections(source, request_of(what), report);
    const std::vector<double> before = cell_volumes(source), after = cell_volumes(result);
    double largest = 0, sum = 0;
    std::int64_t compared = 0, divided = 0, pinched = 0;
    for_parents(source, result, what.axis, [&](const auto& parent, auto child, std::int64_t count) {
        const auto cell = static_cast<std::size_t>(source.cell_index(parent[0], parent[1], parent[2]));
        double whole = 0;
        for (std::int64_t n = 0; n < count; ++n, ++child[static_cast<std::size_t>(what.axis)]) {
            const auto here = static_cast<std::size_t>(result.cell_index(child[0], child[1], child[2]));
            whole += after[here];
            pinched += source.active[cell] && !result.active[here];
            EXPECT_LE(result.active[here], source.active[cell]);
            if (source.active[cell] && !result.active[here]) {
                EXPECT_LT(after[here], 1e-6);
            }
        }
        divided += count > 1;
        if (count == 1 || !source.active[cell])
            return;
        const double difference = before[cell] > 1e-6 ? std::abs(whole - before[cell]) / before[cell] : 0;
        largest = std::max(largest, difference);
        sum += difference;
        ++compared;
    });
    EXPECT_EQ(report.divided_cells, divided);
    EXPECT_EQ(report.pinched, pinched);
    EXPECT_EQ(report.active_before, std::ranges::count(source.active, 1));
    EXPECT_EQ(report.active_after, std::ranges::count(result.active, 1));
    EXPECT_NEAR(report.max_relative_difference, largest, 1e-10 * (1 + largest));
    EXPECT_NEAR(report.mean_relative_difference, compared ? sum / static_cast<double>(compared) : 0, 1e-10);
    EXPECT_NEAR(report.total_volume_before / summarise_volumes(source).total_volume, 1, 1e-13);
    EXPECT_NEAR(report.total_volume_after / summarise_volumes(result).total_volume, 1, 1e-13);
    EXPECT_NEAR(report.bulk_volume_after / bulk_volume(result), 1, 1e-13);
}

TEST_P(RandomSubdivisions, MergingBackGivesTheOldGrid)
{
    const auto& [what, wide] = GetParam();
    const GridModel source = random_grid(what.size, 4, {.double_depths = wide});
    SubdivideReport report;
    GridModel result = subdivide_sections(source, request_of(what), report);
    result.id = next_grid_id();
    MergeReport merge_report;
    GridModel back = merge_sections(result, way_back(result.records.front(), what.axis), merge_report);
    ASSERT_EQ(back.size, source.size);
    for (std::size_t n = 0; n < source.zcorn.size(); ++n)
        ASSERT_EQ(back.zcorn[n], source.zcorn[n]);
    for (std::size_t n = 0; n < source.coord.size(); ++n)
        ASSERT_EQ(back.coord[n], source.coord[n]);
    // Flags may go where a whole cell was pinched; everything else is as it was.
    back.coord = source.coord;
    back.zcorn = source.zcorn;
    if (report.pinched == 0) {
        std::erase_if(back.properties, [](const PropertyData& property) { return property.discrete(); });
        GridModel old = source;
        std::erase_if(old.properties, [](const PropertyData& property) { return property.discrete(); });
        for (std::size_t cell = 0; cell < old.active.size(); ++cell)
            if (!old.active[cell])
                for (GridModel* const grid : {&old, &back})
                    for (PropertyData& property : grid->properties)
                        if (!property.on_points)
                            std::visit([&](auto& values) { values[cell] = 0; }, property.values);
        EXPECT_TRUE(same_data(back, old));
    }
    // The record of the way there and back says that every cell came from itself.
    ASSERT_TRUE(find_record(back, source.id));
    EXPECT_EQ(find_record(back, source.id)->ranges, identity_record(0, "", source.size).ranges);
}

INSTANTIATE_TEST_SUITE_P(
    Sections, RandomSubdivisions,
    testing::Combine(
        testing::Values(Case{{7, 6, 5}, 2, {{0, 2, even, {}}, {4, 1, even, {}}}},
                        Case{{7, 6, 5}, 2, {{0, 2, from_top, 1.0}, {1, 3, from_base, 0.7}, {4, 4, from_top, {}}}},
                        Case{{7, 6, 5}, 0, {{6, 1, even, {}}, {0, 3, even, {}}}},
                        Case{{7, 6, 5}, 0, {{2, 2, from_base, 30.0}, {3, 2, from_top, 45.0}, {6, 1, from_top, 80.0}}},
                        Case{{7, 6, 5}, 1, {{0, 1, even, {}}, {5, 2, even, {}}, {2, 1, even, {}}}},
                        Case{{7, 6, 5}, 1, {{0, 2, from_base, 25.0}, {4, 3, from_top, 30.0}, {5, 1, from_base, 200.0}}},
                        Case{{1, 1, 1}, 0, {{0, 5, even, {}}}}, Case{{1, 1, 1}, 1, {{0, 5, from_top, 7.0}}},
                        Case{{1, 1, 1}, 2, {{0, 5, from_top, 0.5}}}, Case{{9, 1, 1}, 0, {{8, 1, even, {}}}},
                        Case{{1, 8, 2}, 1, {{0, 1, even, {}}}},
                        Case{{5000, 2, 2}, 0, {{4999, 9, even, {}}, {17, 2, even, {}}}},
                        Case{{3, 2, 700}, 2, {{699, 3, even, {}}, {350, 2, from_base, 0.4}}},
                        Case{{3, 700, 2}, 1, {{699, 3, even, {}}, {350, 2, from_base, 20.0}}},
                        Case{{2, 3, 2}, 0, {{1, 3000, even, {}}}}),
        testing::Bool()));

TEST(SubdivideVolumes, ProportionalAlongKIsExactOnAnyGrid)
{
    for (std::uint64_t seed = 1; seed <= 4; ++seed)
        for (const bool split : {false, true}) {
            const GridModel source = random_grid(
                {12, 11, 10}, seed, {.split_corners = split, .mirrored = seed % 2 == 0, .inactive_share = 0});
            SubdivideRequest request;
            for (std::int64_t k = 0; k < 10; ++k)
                request.divisions.push_back({k, k % 5});
            SubdivideReport report;
            (void)subdivide_sections(source, request, report);
            EXPECT_LT(report.max_relative_difference, 1e-9);
            EXPECT_NEAR(report.total_volume_after / report.total_volume_before, 1, 1e-12);
            EXPECT_NEAR(report.bulk_volume_after / report.bulk_volume_before, 1, 1e-12);
        }
}

// Largest difference of a subdivision from its cell over the cells that do not cross themselves.
double worst_difference(const GridModel& source, const GridModel& result)
{
    const std::vector<double> before = cell_volumes(source), after = cell_volumes(result);
    std::vector<double> sums(before.size());
    const auto& ranges = result.records[0].ranges;
    for (std::int64_t cell = 0; cell < result.cells(); ++cell) {
        const auto i = static_cast<std::size_t>(cell % result.size[0]);
        const auto j = static_cast<std::size_t>(cell / result.size[0] % result.size[1]);
        const auto k = static_cast<std::size_t>(cell / (result.size[0] * result.size[1]));
        sums[static_cast<std::size_t>(source.cell_index(ranges[0][i].first, ranges[1][j].first, ranges[2][k].first))] +=
            after[static_cast<std::size_t>(cell)];
    }
    double worst = 0;
    for (std::int64_t cell = 0; cell < source.cells(); ++cell) {
        const auto at = static_cast<std::size_t>(cell);
        const std::int64_t i = cell % source.size[0], j = cell / source.size[0] % source.size[1];
        const std::int64_t k = cell / (source.size[0] * source.size[1]);
        if (before[at] > 1e-3 && upright(cell_corners(source, i, j, k)))
            worst = std::max(worst, std::abs(sums[at] - before[at]) / before[at]);
    }
    return worst;
}

// How the pillars of a random grid stand; its depths, faults and gaps stay.
enum class Pillars { Vertical, Parallel };

GridModel random_depths(std::uint64_t seed, Pillars pillars, bool regular_plan)
{
    GridModel grid = random_grid({8, 7, 6}, seed, {.double_depths = true, .plane_sides = true, .inactive_share = 0});
    grid.coord.visit_mutable([&](auto numbers) {
        for (std::size_t n = 0; n < numbers.size(); n += 6) {
            if (regular_plan) {
                numbers[n] = 100.0 * static_cast<double>(n / 6 % 9);
                numbers[n + 1] = 80.0 * static_cast<double>(n / 54);
            }
            numbers[n + 3] = numbers[n] + (pillars == Pillars::Parallel ? 120 : 0);
            numbers[n + 4] = numbers[n + 1] - (pillars == Pillars::Parallel ? 200 : 0);
        }
    });
    return grid;
}

// Widths need the same width on both sides of a cell: else the new side runs aslant through the warped cell, and its
// straight edges leave the cell's surfaces.
TEST(SubdivideVolumes, ExactOnVerticalAndOnParallelPillars)
{
    for (std::uint64_t seed = 1; seed <= 3; ++seed)
        for (const Pillars pillars : {Pillars::Vertical, Pillars::Parallel})
            for (int axis = 0; axis < 3; ++axis)
                for (const auto layering : {even, from_base, from_top})
                    for (const bool percent : {false, true}) {
                        const bool width = axis < 2 && layering != even && !percent;
                        const GridModel source = random_depths(seed, pillars, width);
                        SubdivideRequest request;
                        request.axis = axis;
                        request.percent = percent;
                        for (std::int64_t n = 0; n < source.size[static_cast<std::size_t>(axis)]; ++n)
                            request.divisions.push_back({n, n % 4, layering, axis == 2 && !percent ? 0.8 : 35.0});
                        SubdivideReport report;
                        const GridModel result = subdivide_sections(source, request, report);
                        EXPECT_LT(worst_difference(source, result), 1e-9)
                            << "along " << axis_letter(axis) << " layering " << layering << " percent " << percent;
                    }
}

TEST(SubdivideVolumes, TotalsOfTheExampleAreKeptAlongKToAMillionth)
{
    const GridModel source = make_example();
    for (const auto layering : {from_base, from_top})
        for (const bool vertical : {false, true}) {
            SubdivideRequest request;
            request.vertical = vertical;
            for (std::int64_t k = 0; k < source.size[2]; ++k)
                request.divisions.push_back({k, 2, layering, 0.7});
            SubdivideReport report;
            (void)subdivide_sections(source, request, report);
            EXPECT_NEAR(report.total_volume_after / report.total_volume_before, 1, 1e-6);
            EXPECT_GT(report.pinched, 0);
            EXPECT_GT(report.max_relative_difference, 0) << "the pillars of its listric fault lean";
        }
}

TEST(SubdivideVolumes, LeaningPillarsChangeLittleAndTheReportSaysSo)
{
    for (std::uint64_t seed = 1; seed <= 3; ++seed)
        for (int axis = 0; axis < 2; ++axis) {
            const GridModel source =
                random_grid({10, 9, 8}, seed, {.double_depths = true, .split_corners = false, .inactive_share = 0});
            SubdivideRequest request;
            request.axis = axis;
            for (std::int64_t n = 0; n < 9; ++n)
                request.divisions.push_back({n, 2});
            SubdivideReport report;
            (void)subdivide_sections(source, request, report);
            EXPECT_GT(report.max_relative_difference, 0);
            EXPECT_LT(report.mean_relative_difference, 0.01);
            EXPECT_NEAR(report.total_volume_after / report.total_volume_before, 1, 1e-3);
        }
}

GridModel with_id(GridModel model)
{
    model.id = next_grid_id();
    return model;
}

GridModel divided(const GridModel& source, int axis, std::vector<SectionDivision> divisions, const std::string& name)
{
    SubdivideRequest request = request_of({source.size, axis, std::move(divisions)});
    request.source_name = name;
    SubdivideReport report;
    return with_id(subdivide_sections(source, request, report));
}

GridModel merged(const GridModel& source, int axis, std::vector<IndexRange> sections, const std::string& name)
{
    MergeRequest request;
    request.axis = axis;
    request.sections = std::move(sections);
    request.source_name = name;
    MergeReport report;
    return with_id(merge_sections(source, request, report));
}

TEST(SubdivideRecords, LeadBackThroughMergesAndSubdivisions)
{
    using Ranges = std::vector<IndexRange>;
    const GridModel first = random_grid({4, 3, 6}, 1);
    const GridModel coarse = merged(first, 2, {{0, 2}, {3, 4}}, "first"); // K: {0-2} {3-4} {5}
    const GridModel fine =
        divided(coarse, 2, {{1, 2, even, {}}, {2, 1, even, {}}}, "coarse"); // {0} {1} {1} {1} {2} {2}
    const GridModel last = merged(fine, 2, {{0, 1}, {4, 5}}, "fine");       // {0-1} {2} {3} {4-5}
    ASSERT_EQ(last.size, (GridSize{4, 3, 4}));
    ASSERT_EQ(last.records.size(), 3U);
    EXPECT_EQ(last.records[0].source_name, "fine");
    EXPECT_EQ(last.records[0].ranges[2], (Ranges{{0, 1}, {2, 2}, {3, 3}, {4, 5}}));
    EXPECT_EQ(last.records[1].source_name, "coarse");
    EXPECT_EQ(last.records[1].ranges[2], (Ranges{{0, 1}, {1, 1}, {1, 1}, {2, 2}}));
    EXPECT_EQ(last.records[2].source_name, "first");
    EXPECT_EQ(last.records[2].source_size, first.size);
    EXPECT_EQ(last.records[2].ranges[2], (Ranges{{0, 4}, {3, 4}, {3, 4}, {5, 5}}));
    EXPECT_EQ(last.records[2].ranges[0], identity_record(0, "", first.size).ranges[0]);
}

TEST(SubdivideRecords, ThreeAxesAndBackIsTheIdentity)
{
    const GridModel first = random_grid({4, 3, 5}, 2);
    GridModel grid = divided(first, 0, {{0, 1, even, {}}, {3, 4, from_base, 10.0}}, "first");
    grid = divided(grid, 1, {{2, 2, even, {}}}, "tmp");
    grid = divided(grid, 2, {{0, 3, from_top, 0.5}, {1, 1, even, {}}}, "tmp 2");
    const DerivationRecord* const record = find_record(grid, first.id);
    ASSERT_TRUE(record);
    const std::vector<GridRefinement> said{{0, 1, 1, 2}, {0, 4, 4, 5}, {1, 3, 3, 3}, {2, 1, 1, 4}, {2, 2, 2, 2}};
    EXPECT_TRUE(sizes_agree(*record, said));
    EXPECT_TRUE(reproduces(*record, said));
    EXPECT_EQ(refinements_of(*record), said);
    EXPECT_EQ(modifications_of(*record), std::nullopt);
    EXPECT_FALSE(sizes_agree(*record, std::vector<GridRefinement>{{0, 1, 1, 2}}));
    // Every new cell lies where its record says: its values are those of that cell.
    const auto& old = std::get<std::vector<float>>(first.find_property("POR")->values);
    const auto& values = std::get<std::vector<float>>(grid.find_property("POR")->values);
    for (std::int64_t cell = 0; cell < grid.cells(); ++cell) {
        const auto i = static_cast<std::size_t>(cell % grid.size[0]);
        const auto j = static_cast<std::size_t>(cell / grid.size[0] % grid.size[1]);
        const auto k = static_cast<std::size_t>(cell / (grid.size[0] * grid.size[1]));
        const std::int64_t parent =
            first.cell_index(record->ranges[0][i].first, record->ranges[1][j].first, record->ranges[2][k].first);
        ASSERT_EQ(values[static_cast<std::size_t>(cell)], old[static_cast<std::size_t>(parent)]);
    }
    for (int axis = 2; axis >= 0; --axis)
        grid = merged(grid, axis, way_back(*find_record(grid, first.id), axis).sections, "fine");
    EXPECT_EQ(grid.size, (GridSize{4, 3, 5}));
    ASSERT_TRUE(find_record(grid, first.id));
    EXPECT_EQ(find_record(grid, first.id)->ranges, identity_record(0, "", first.size).ranges);
    EXPECT_EQ(grid.records.size(), 6U);
    for (std::size_t n = 0; n < first.zcorn.size(); ++n)
        ASSERT_EQ(grid.zcorn[n], first.zcorn[n]);
}

} // namespace
