#include "random_grid.h"

#include "lodex/volumes/model/CellGeometry.h"
#include "lodex/volumes/model/Create.h"
#include "lodex/volumes/model/Merge.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <ostream>

namespace {

using namespace lodex;
using namespace volumes_model_tests;

std::size_t cell_of(const GridModel& model, std::int64_t i, std::int64_t j, std::int64_t k)
{
    return static_cast<std::size_t>(model.cell_index(i, j, k));
}

const std::vector<std::int32_t>& codes(const GridModel& model, std::string_view name)
{
    return std::get<std::vector<std::int32_t>>(model.find_property(name)->values);
}

// A box whose property "N" numbers the cells.
GridModel numbered_box(const GridSize& size)
{
    GridModel model = make_box(size, {10, 10, 10});
    model.id = next_grid_id();
    std::vector<std::int32_t> numbers(static_cast<std::size_t>(model.cells()));
    std::iota(numbers.begin(), numbers.end(), 0);
    model.properties.push_back({"N", "", std::move(numbers), {}, {}, false});
    return model;
}

MergeRequest along(int axis, std::vector<IndexRange> sections)
{
    MergeRequest request;
    request.axis = axis;
    request.sections = std::move(sections);
    request.copy_properties = true;
    request.copy_regions = true;
    return request;
}

GridModel merged(const GridModel& source, const MergeRequest& request)
{
    MergeReport report;
    return merge_sections(source, request, report);
}

TEST(KeptSection, InsideThePairAsItIsOutsideByItsRemainder)
{
    const IndexRange pair{4, 6};
    EXPECT_EQ(kept_section(pair, -1), 4);
    EXPECT_EQ(kept_section(pair, 4), 4);
    EXPECT_EQ(kept_section(pair, 5), 5);
    EXPECT_EQ(kept_section(pair, 6), 6);
    EXPECT_EQ(kept_section(pair, 7), 4);
    EXPECT_EQ(kept_section(pair, 8), 5);
    // Below the pair: (0 - 4) mod 3 = 2.
    EXPECT_EQ(kept_section(pair, 0), 6);
    EXPECT_EQ(kept_section(pair, 1), 4);
    EXPECT_EQ(kept_section(pair, 3), 6);
    EXPECT_EQ(kept_section({9, 9}, 3), 9);
}

// The same merge, cell by cell and as plainly as it can be written.
struct NaiveMerge {
    GridModel grid;
    std::int64_t gave_way = 0, undefined = 0;
};

NaiveMerge naive_merge(const GridModel& source, const MergeRequest& request)
{
    NaiveMerge result;
    GridModel& grid = result.grid;
    const auto axis = static_cast<std::size_t>(request.axis);
    std::vector<IndexRange> groups;
    std::vector<std::int64_t> kept;
    for (std::int64_t n = 0; n < source.size[axis];) {
        const auto it = std::ranges::find(request.sections, n, &IndexRange::first);
        if (it == request.sections.end()) {
            groups.push_back({n, n});
            kept.push_back(n);
            ++n;
            continue;
        }
        const auto at = static_cast<std::size_t>(it - request.sections.begin());
        const auto& wanted = request.property_sections;
        const std::int64_t value = wanted.empty() ? -1 : wanted[wanted.size() == 1 ? 0 : at];
        groups.push_back(*it);
        kept.push_back(kept_section(*it, value));
        n = it->last + 1;
    }
    grid.size = source.size;
    grid.size[axis] = static_cast<std::int64_t>(groups.size());

    const auto old_at = [&](std::array<std::int64_t, 3> n, std::int64_t section) {
        n[axis] = section;
        return cell_of(source, n[0], n[1], n[2]);
    };
    std::vector<double> coord;
    for (std::int64_t j = 0; j <= grid.size[1]; ++j)
        for (std::int64_t i = 0; i <= grid.size[0]; ++i) {
            std::array<std::int64_t, 3> n{i, j, 0};
            if (axis < 2)
                n[axis] =
                    n[axis] < grid.size[axis] ? groups[static_cast<std::size_t>(n[axis])].first : source.size[axis];
            for (std::int64_t part = 0; part < 6; ++part)
                coord.push_back(
                    source.coord[static_cast<std::size_t>(6 * (n[0] + (source.size[0] + 1) * n[1]) + part)]);
        }
    const auto cells = static_cast<std::size_t>(grid.cells());
    std::vector<double> zcorn(8 * cells);
    grid.active.resize(cells);
    for (const PropertyData& property : source.properties)
        if (!property.on_points)
            grid.properties.push_back(property);
    const std::vector<double> volumes = cell_volumes(source);
    for (const RegionData& region : source.regions)
        grid.regions.push_back({region.name, std::vector<std::uint8_t>(cells), region.model});
    for (std::int64_t k = 0; k < grid.size[2]; ++k)
        for (std::int64_t j = 0; j < grid.size[1]; ++j)
            for (std::int64_t i = 0; i < grid.size[0]; ++i) {
                const std::array<std::int64_t, 3> n{i, j, k};
                const auto g = static_cast<std::size_t>(n[axis]);
                const std::size_t cell = cell_of(grid, i, j, k);
                for (int corner = 0; corner < 8; ++corner) {
                    const std::array<std::int64_t, 3> side{corner & 1, corner >> 1 & 1, corner >> 2};
                    std::array<std::int64_t, 3> old = n;
                    old[axis] = side[axis] ? groups[g].last : groups[g].first;
                    const auto index = [&](const GridSize& size, const std::array<std::int64_t, 3>& at) {
                        return static_cast<std::size_t>(((2 * at[2] + side[2]) * 2 * size[1] + 2 * at[1] + side[1]) *
                                                            2 * size[0] +
                                                        2 * at[0] + side[0]);
                    };
                    zcorn[index(grid.size, n)] = source.zcorn[index(source.size, old)];
                }
                // Nearest active section to the kept one.
                std::int64_t best = -1;
                double volume = 0;
                for (std::int64_t s = groups[g].first; s <= groups[g].last; ++s) {
                    volume += volumes[old_at(n, s)];
                    if (!source.active[old_at(n, s)])
                        continue;
                    grid.active[cell] = 1;
                    if (best < 0 || std::abs(s - kept[g]) < std::abs(best - kept[g]))
                        best = s;
                }
                const std::int64_t length = groups[g].last - groups[g].first + 1;
                if (length == 1)
                    best = kept[g];
                result.gave_way += best >= 0 && best != kept[g];
                result.undefined += best < 0;
                for (std::size_t p = 0; p < grid.properties.size(); ++p) {
                    const PropertyData& from = *source.find_property(grid.properties[p].name);
                    std::visit(
                        [&](auto& values) {
                            using Values = std::remove_cvref_t<decltype(values)>;
                            using Value = typename Values::value_type;
                            if (values.size() != cells)
                                values.assign(cells, Value{});
                            if (best >= 0)
                                values[cell] = std::get<Values>(from.values)[old_at(n, best)];
                            else if constexpr (std::is_floating_point_v<Value>)
                                values[cell] =
                                    static_cast<Value>(from.no_data.value_or(std::numeric_limits<double>::quiet_NaN()));
                            else
                                values[cell] = -999;
                        },
                        grid.properties[p].values);
                }
                std::vector<std::int64_t> counts;
                for (const RegionData& region : source.regions) {
                    std::int64_t count = 0;
                    double inside = 0;
                    for (std::int64_t s = groups[g].first; s <= groups[g].last; ++s) {
                        count += region.flags[old_at(n, s)];
                        inside += region.flags[old_at(n, s)] ? volumes[old_at(n, s)] : 0;
                    }
                    counts.push_back(count);
                    const bool by_volume = request.region_mode == RegionMode::VolumeShare && volume > 0;
                    const double share =
                        by_volume ? inside / volume : static_cast<double>(count) / static_cast<double>(length);
                    std::uint8_t& flag = grid.regions[counts.size() - 1].flags[cell];
                    if (request.region_mode == RegionMode::CellShare || request.region_mode == RegionMode::VolumeShare)
                        flag = share > 0 && 100 * share >= request.percentile;
                    else
                        flag = count > 0;
                }
                if (request.region_mode == RegionMode::MostFrequent) {
                    std::int64_t most = 0;
                    for (std::size_t r = 0; r < counts.size(); ++r)
                        most = source.regions[r].model ? most : std::max(most, counts[r]);
                    for (std::size_t r = 0; r < counts.size(); ++r)
                        if (!source.regions[r].model)
                            grid.regions[r].flags[cell] = counts[r] > 0 && counts[r] == most;
                }
            }
    if (result.undefined > 0)
        for (PropertyData& property : grid.properties)
            if (property.discrete() && !property.no_data)
                property.no_data = -999;
    if (source.zcorn.is_double()) {
        grid.coord = RealArray(coord);
        grid.zcorn = RealArray(zcorn);
    }
    else {
        grid.coord = RealArray(std::vector<float>(coord.begin(), coord.end()));
        grid.zcorn = RealArray(std::vector<float>(zcorn.begin(), zcorn.end()));
    }
    return result;
}

struct MergeCase {
    GridSize size;
    int axis;
    std::vector<IndexRange> sections;
    std::vector<std::int64_t> property_sections;
};

std::ostream& operator<<(std::ostream& out, const MergeCase& what)
{
    out << what.size[0] << 'x' << what.size[1] << 'x' << what.size[2] << " along " << axis_letter(what.axis);
    for (const IndexRange& run : what.sections)
        out << ' ' << run.first << '+' << run.last;
    return out;
}

class RandomMerges : public testing::TestWithParam<std::tuple<MergeCase, int, bool>> {};

TEST_P(RandomMerges, AgreeWithACellByCellMerge)
{
    const auto& [what, mode, wide] = GetParam();
    for (std::uint64_t seed = 1; seed <= 3; ++seed) {
        const GridModel source = random_grid(
            what.size, seed, {.double_depths = wide, .mirrored = seed == 2, .inactive_share = seed == 3 ? 0.6 : 0.2});
        MergeRequest request = along(what.axis, what.sections);
        request.property_sections = what.property_sections;
        request.region_mode = static_cast<RegionMode>(mode);
        request.percentile = 100.0 * static_cast<double>(seed) / 5;
        MergeReport report;
        GridModel result = merge_sections(source, request, report);
        const NaiveMerge expected = naive_merge(source, request);

        const std::vector<double> before = cell_volumes(source), after = cell_volumes(result);
        EXPECT_EQ(report.gave_way, expected.gave_way);
        EXPECT_EQ(report.undefined, expected.undefined);
        EXPECT_EQ(report.active_before, std::ranges::count(source.active, 1));
        EXPECT_EQ(report.active_after, std::ranges::count(result.active, 1));
        EXPECT_NEAR(report.total_volume_before / summarise_volumes(source).total_volume, 1, 1e-14);
        EXPECT_NEAR(report.total_volume_after / summarise_volumes(result).total_volume, 1, 1e-14);
        EXPECT_NEAR(report.bulk_volume_before, bulk_volume(source), 1e-13 * report.total_volume_before);
        EXPECT_NEAR(report.bulk_volume_after, bulk_volume(result), 1e-13 * report.total_volume_after);

        const auto axis = static_cast<std::size_t>(what.axis);
        double largest = 0, sum = 0;
        std::int64_t compared = 0, merged_cells = 0;
        for (std::int64_t k = 0; k < result.size[2]; ++k)
            for (std::int64_t j = 0; j < result.size[1]; ++j)
                for (std::int64_t i = 0; i < result.size[0]; ++i) {
                    std::array<std::int64_t, 3> n{i, j, k};
                    const IndexRange group = result.records.front().ranges[axis][static_cast<std::size_t>(n[axis])];
                    double old = 0;
                    for (n[axis] = group.first; n[axis] <= group.last; ++n[axis])
                        old += before[cell_of(source, n[0], n[1], n[2])];
                    const std::size_t cell = cell_of(result, i, j, k);
                    merged_cells += group.last > group.first;
                    if (group.last == group.first || !result.active[cell])
                        continue;
                    const double difference = old > 0 ? std::abs(after[cell] - old) / old : after[cell] > 0;
                    largest = std::max(largest, difference);
                    sum += difference;
                    ++compared;
                }
        EXPECT_EQ(report.merged_cells, merged_cells);
        EXPECT_NEAR(report.max_relative_difference, largest, 1e-12 * (1 + largest));
        EXPECT_NEAR(report.mean_relative_difference, compared ? sum / static_cast<double>(compared) : 0, 1e-12);

        std::erase_if(result.properties, [](const PropertyData& property) { return property.on_points; });
        EXPECT_TRUE(same_data(result, expected.grid)) << "seed " << seed;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Sections, RandomMerges,
    testing::Combine(testing::Values(MergeCase{{9, 6, 5}, 0, {{0, 1}, {4, 8}}, {}},
                                     MergeCase{{9, 6, 5}, 0, {{6, 8}, {0, 0}, {2, 5}}, {8, 3, 2}},
                                     MergeCase{{9, 6, 5}, 1, {{0, 5}}, {3}},
                                     MergeCase{{9, 6, 5}, 1, {{1, 2}, {4, 5}}, {1}},
                                     MergeCase{{9, 6, 5}, 2, {{0, 1}, {3, 4}}, {1, 0}},
                                     MergeCase{{9, 6, 5}, 2, {{0, 4}}, {2}}, MergeCase{{9, 6, 5}, 2, {}, {}},
                                     MergeCase{{1, 6, 5}, 0, {{0, 0}}, {}}, MergeCase{{1, 6, 5}, 1, {{2, 5}}, {-1}},
                                     MergeCase{{9, 1, 5}, 0, {{0, 8}}, {7}}, MergeCase{{9, 6, 1}, 1, {{0, 1}}, {}},
                                     MergeCase{{1, 1, 7}, 2, {{0, 2}, {3, 6}}, {1, 6}},
                                     MergeCase{{5000, 2, 2}, 0, {{4000, 4200}, {0, 2}}, {4100, -1}},
                                     MergeCase{{3, 2, 700}, 2, {{100, 150}, {300, 699}}, {120, 500}},
                                     MergeCase{{3, 900, 2}, 1, {{0, 500}, {501, 502}}, {}}),
                     testing::Values(0, 1, 2, 3), testing::Bool()));

TEST(Merge, KeepsTheValuesOfTheWantedSection)
{
    const GridModel box = numbered_box({4, 1, 1});
    MergeRequest request = along(0, {{0, 1}, {2, 3}});
    EXPECT_EQ(codes(merged(box, request), "N"), (std::vector<std::int32_t>{0, 2}));
    request.property_sections = {1};
    EXPECT_EQ(codes(merged(box, request), "N"), (std::vector<std::int32_t>{1, 3}));
    // Each pair goes with its own value whatever the order of the pairs.
    request.sections = {{2, 3}, {0, 1}};
    request.property_sections = {3, -1};
    EXPECT_EQ(codes(merged(box, request), "N"), (std::vector<std::int32_t>{0, 3}));
}

TEST(Merge, InactiveKeptSectionGivesWayToTheNearestActiveOne)
{
    GridModel box = numbered_box({1, 1, 6});
    MergeRequest request = along(2, {{0, 4}});
    request.property_sections = {2};
    MergeReport report;
    box.active = {0, 1, 0, 1, 1, 1};
    GridModel result = merge_sections(box, request, report);
    EXPECT_EQ(codes(result, "N"), (std::vector<std::int32_t>{1, 5})) << "a tie goes to the lower index";
    EXPECT_EQ(report.gave_way, 1);
    box.active = {1, 0, 0, 1, 1, 0};
    result = merge_sections(box, request, report);
    EXPECT_EQ(codes(result, "N"), (std::vector<std::int32_t>{3, 5}))
        << "a single section keeps its value, active or not";
    EXPECT_EQ(result.active, (std::vector<std::uint8_t>{1, 0}));
    EXPECT_EQ(report.gave_way, 1);
    EXPECT_EQ(report.undefined, 0);
}

TEST(Merge, WhollyInactiveCellsAreUndefined)
{
    GridModel box = numbered_box({2, 1, 2});
    box.properties[0].values = std::vector<std::int32_t>{0, -999, 2, 3};
    box.properties.push_back({"F", "", std::vector<float>{1, 2, 3, 4}, {}, {}, false});
    box.properties.push_back({"D", "", std::vector<double>{1, 2, 3, 4}, -1.5, {}, false});
    box.active = {0, 1, 0, 1};
    MergeReport report;
    const GridModel result = merge_sections(box, along(2, {{0, 1}}), report);
    EXPECT_EQ(result.active, (std::vector<std::uint8_t>{0, 1}));
    EXPECT_EQ(report.undefined, 1);
    // -999 is a code already: the next usual number is taken.
    EXPECT_EQ(result.find_property("N")->no_data, -9999);
    EXPECT_EQ(codes(result, "N"), (std::vector<std::int32_t>{-9999, -999}));
    EXPECT_TRUE(std::isnan(std::get<std::vector<float>>(result.find_property("F")->values)[0]));
    EXPECT_EQ(std::get<std::vector<double>>(result.find_property("D")->values), (std::vector<double>{-1.5, 2}));
    // Where nothing is undefined no such value is made up.
    EXPECT_EQ(merged(box, along(0, {{0, 1}})).find_property("N")->no_data, std::nullopt);
}

TEST(Merge, CornersComeFromTheEndsWhateverTheirFlags)
{
    GridModel box = numbered_box({1, 1, 3});
    box.active = {0, 1, 0};
    const GridModel result = merged(box, along(2, {{0, 2}}));
    const CellCorners corners = cell_corners(result, 0, 0, 0);
    EXPECT_EQ(corners[0], (Point3{0, 0, 0}));
    EXPECT_EQ(corners[7], (Point3{10, 10, 30}));
    EXPECT_EQ(result.active, std::vector<std::uint8_t>{1});
}

TEST(Merge, EmptyListIsAPlainCopy)
{
    const GridModel source = random_grid({4, 5, 6}, 5);
    MergeReport report;
    const GridModel copy = merge_sections(source, along(1, {}), report);
    EXPECT_TRUE(same_data(copy, source));
    EXPECT_EQ(copy.id, 0U);
    EXPECT_EQ(report.merged_cells, 0);
    EXPECT_EQ(report.max_relative_difference, 0);
    EXPECT_EQ(report.bulk_volume_before, report.bulk_volume_after);
    ASSERT_EQ(copy.records.size(), 1U);
    EXPECT_EQ(copy.records[0].source_id, source.id);
    EXPECT_EQ(copy.records[0].ranges, identity_record(0, "", source.size).ranges);
}

TEST(Merge, PropertiesAndRegionsAreChosenByName)
{
    const GridModel source = random_grid({4, 2, 2}, 5);
    MergeRequest request = along(0, {{0, 1}});
    request.properties = {{"FAC", "POR"}};
    request.regions = {{"C"}};
    GridModel result = merged(source, request);
    ASSERT_EQ(result.properties.size(), 2U);
    EXPECT_EQ(result.properties[0].name, "POR");
    EXPECT_EQ(result.properties[1].name, "FAC");
    EXPECT_EQ(result.properties[1].code_names.at(1), "sand");
    ASSERT_EQ(result.regions.size(), 2U) << "the model region passes on too";
    EXPECT_EQ(result.regions[0].name, "C");
    EXPECT_EQ(result.regions[1].name, "M");
    EXPECT_TRUE(result.regions[1].model);

    request.properties->clear();
    request.regions->clear();
    result = merged(source, request);
    EXPECT_TRUE(result.properties.empty());
    EXPECT_EQ(result.regions.size(), 1U);
    request.copy_properties = request.copy_regions = false;
    request.properties.reset();
    request.regions.reset();
    result = merged(source, request);
    EXPECT_TRUE(result.properties.empty());
    EXPECT_EQ(result.regions.size(), 1U);

    request.copy_properties = true;
    request.properties = {{"NONE"}};
    EXPECT_EQ(error_of([&] { (void)merged(source, request); }), "the grid has no property \"NONE\"");
}

TEST(Merge, RegionModesByHand)
{
    GridModel box = make_box({4, 1, 1}, {1, 1, 1});
    box.regions = {{"R", {0, 0, 0, 1}, false}, {"S", {1, 1, 0, 0}, false}, {"T", {0, 0, 1, 1}, false}};
    MergeRequest request = along(0, {{0, 3}});
    const auto flags = [&](RegionMode mode, double percentile) {
        request.region_mode = mode;
        request.percentile = percentile;
        std::string text;
        for (const RegionData& region : merged(box, request).regions)
            text += region.flags[0] ? '1' : '0';
        return text;
    };
    EXPECT_EQ(flags(RegionMode::Any, 0), "111");
    EXPECT_EQ(flags(RegionMode::CellShare, 0), "111");
    EXPECT_EQ(flags(RegionMode::CellShare, 25), "111");
    EXPECT_EQ(flags(RegionMode::CellShare, 25.1), "011");
    EXPECT_EQ(flags(RegionMode::CellShare, 50), "011");
    EXPECT_EQ(flags(RegionMode::CellShare, 100), "000");
    EXPECT_EQ(flags(RegionMode::VolumeShare, 50), "011");
    EXPECT_EQ(flags(RegionMode::MostFrequent, 0), "011");
    box.regions[1].flags = {1, 0, 0, 0};
    EXPECT_EQ(flags(RegionMode::MostFrequent, 0), "001");
    box.regions[2].flags = {0, 0, 0, 0};
    EXPECT_EQ(flags(RegionMode::MostFrequent, 0), "110");
    EXPECT_EQ(flags(RegionMode::CellShare, 0), "110") << "a share of nothing is not above 0";
    EXPECT_NE(error_of([&] { (void)flags(RegionMode::CellShare, 100.5); }), "");
    EXPECT_NE(error_of([&] { (void)flags(RegionMode::VolumeShare, -1); }), "");
    EXPECT_EQ(flags(RegionMode::Any, 100.5), "110") << "the percentile is not looked at";
}

TEST(Merge, VolumeShareWeighsThickCells)
{
    // Along K: heights 1 and 3.
    GridModel box = make_box({1, 1, 2}, {1, 1, 1});
    box.zcorn.visit_mutable([](auto depths) { std::ranges::fill(depths.subspan(12), 4); });
    box.regions = {{"THIN", {1, 0}, false}, {"THICK", {0, 1}, false}};
    MergeRequest request = along(2, {{0, 1}});
    request.region_mode = RegionMode::VolumeShare;
    request.percentile = 25;
    GridModel result = merged(box, request);
    EXPECT_EQ(result.regions[0].flags[0], 1);
    EXPECT_EQ(result.regions[1].flags[0], 1);
    request.percentile = 50;
    result = merged(box, request);
    EXPECT_EQ(result.regions[0].flags[0], 0);
    EXPECT_EQ(result.regions[1].flags[0], 1);
    // Without any volume cells are counted.
    box.zcorn.visit_mutable([](auto depths) { std::ranges::fill(depths, 4); });
    result = merged(box, request);
    EXPECT_EQ(result.regions[0].flags[0], 1);
    EXPECT_EQ(result.regions[1].flags[0], 1);
}

TEST(Merge, VolumeIsKeptAlongK)
{
    for (std::uint64_t seed = 1; seed <= 5; ++seed) {
        const MergeRequest request = along(2, {{0, 2}, {3, 4}, {6, 9}});
        MergeReport report;
        // Without gaps between K layers; plane sides where pillars are vertical.
        RandomGridOptions options{
            .double_depths = true, .plane_sides = true, .split_corners = false, .inactive_share = 0};
        (void)merge_sections(random_grid({12, 11, 10}, seed, options), request, report);
        EXPECT_NEAR(report.total_volume_after / report.total_volume_before, 1, 1e-12);
        EXPECT_NEAR(report.bulk_volume_after / report.bulk_volume_before, 1, 1e-12);
        EXPECT_LT(report.max_relative_difference, 1e-9);
        options.plane_sides = false;
        (void)merge_sections(random_grid({12, 11, 10}, seed, options), request, report);
        // Neighbouring pillars lean every way: the ruled outer sides of the small grid differ a little.
        EXPECT_NEAR(report.total_volume_after / report.total_volume_before, 1, 1e-5);
        EXPECT_GT(report.max_relative_difference, 0);
    }
}

TEST(Merge, OuterFacesOfTheExampleKeepItsVolumeAlongKToAMillionth)
{
    MergeRequest request = along(2, {});
    for (std::int64_t first = 0; first < 40; first += 2)
        request.sections.push_back({first, first + 1});
    MergeReport report;
    (void)merge_sections(make_example(), request, report);
    EXPECT_NEAR(report.total_volume_after / report.total_volume_before, 1, 1e-6);
}

TEST(Merge, WrongRequestsAreNamed)
{
    const GridModel box = numbered_box({5, 1, 1});
    const auto error = [&](std::vector<IndexRange> sections, std::vector<std::int64_t> values = {}, int axis = 0) {
        MergeRequest request = along(axis, std::move(sections));
        request.property_sections = std::move(values);
        return error_of([&] { (void)merged(box, request); });
    };
    EXPECT_EQ(error({{0, 4}}), "");
    EXPECT_EQ(error({{3, 2}}), "sections 3+2 along I: the first lies behind the last");
    EXPECT_EQ(error({{3, 5}}), "sections 3+5 along I: the grid has sections 0 to 4");
    EXPECT_EQ(error({{-1, 2}}), "sections -1+2 along I: the grid has sections 0 to 4");
    EXPECT_EQ(error({{2, 3}, {0, 2}}), "sections 0+2 and 2+3 along I overlap");
    EXPECT_EQ(error({{0, 1}, {2, 3}}, {0, 1, 2}), "3 property sections do not fit 2 pairs of sections");
    EXPECT_EQ(error({{0, 1}}, {-2}), "property section -2 of sections 0+1 is below -1");
    EXPECT_EQ(error({}, {}, 3), "there is no axis 3");
}

TEST(Merge, LayersCountTheirNewCells)
{
    GridModel box = numbered_box({1, 1, 8});
    box.layers = {{"upper", 4, 10, Lodex::LayerInfo::Proportional},
                  {"middle", 1, 10, Lodex::LayerInfo::ParallelToTop},
                  {"lower", 3, 10, Lodex::LayerInfo::ParallelToBase}};
    MergeReport report;
    GridModel result = merge_sections(box, along(2, {{0, 1}, {2, 3}, {6, 7}}), report);
    ASSERT_EQ(result.layers.size(), 3U);
    EXPECT_EQ(result.layers[0].nb_k_cells, 2);
    EXPECT_EQ(result.layers[0].cell_thickness, 20);
    EXPECT_EQ(result.layers[1].nb_k_cells, 1);
    EXPECT_EQ(result.layers[1].cell_thickness, 10);
    EXPECT_EQ(result.layers[2].nb_k_cells, 2);
    EXPECT_EQ(result.layers[2].cell_thickness, 15);
    EXPECT_EQ(result.layers[2].style, Lodex::LayerInfo::ParallelToBase);
    EXPECT_TRUE(report.warnings.empty());

    result = merge_sections(box, along(2, {{3, 5}}), report);
    ASSERT_EQ(result.layers.size(), 2U);
    EXPECT_EQ(result.layers[0].nb_k_cells, 4);
    EXPECT_EQ(result.layers[1].unit, "lower");
    EXPECT_EQ(result.layers[1].nb_k_cells, 2);
    ASSERT_EQ(report.warnings.size(), 2U);
    EXPECT_NE(report.warnings[0].find("sections 3+5 along K"), std::string::npos);
    EXPECT_NE(report.warnings[1].find("\"middle\""), std::string::npos);

    result = merge_sections(box, along(0, {{0, 0}}), report);
    EXPECT_EQ(result.layers.size(), 3U);
    EXPECT_EQ(result.layers[0].nb_k_cells, 4);
}

TEST(Merge, ModelInfoLaysOutTheKSurfacesAnew)
{
    // Old cells of uneven height between 0 and 40; the layer says even division.
    GridModel box = make_box({2, 1, 4}, {10, 10, 10});
    box.layers = {{"unit", 4, 12, Lodex::LayerInfo::Proportional}};
    box.zcorn.visit_mutable([](auto depths) {
        for (std::size_t n = 8; n < 24; ++n)
            depths[n] = 3; // the surface between the first two K layers
    });
    MergeRequest request = along(2, {{2, 3}});
    request.model_info = true;
    MergeReport report;
    const auto surfaces = [&](const GridModel& grid) {
        std::vector<double> depths{cell_corners(grid, 1, 0, 0)[0][2]};
        for (std::int64_t k = 0; k < grid.size[2]; ++k) {
            EXPECT_EQ(cell_corners(grid, 1, 0, k)[0][2], depths.back());
            depths.push_back(cell_corners(grid, 1, 0, k)[7][2]);
        }
        return depths;
    };
    GridModel result = merge_sections(box, request, report);
    EXPECT_EQ(surfaces(result), (std::vector<double>{0, 10, 20, 40}));
    EXPECT_NEAR(report.total_volume_after, report.total_volume_before, 1e-9);
    EXPECT_NEAR(report.max_relative_difference, 7.0 / 3, 1e-12) << "the first cell grew from 3 to 10";
    box.layers[0].style = Lodex::LayerInfo::ParallelToTop;
    EXPECT_EQ(surfaces(merge_sections(box, request, report)), (std::vector<double>{0, 12, 24, 40}));
    box.layers[0].style = Lodex::LayerInfo::ParallelToBase;
    EXPECT_EQ(surfaces(merge_sections(box, request, report)), (std::vector<double>{0, 4, 16, 40}));
    // Cells thicker than the layer are cut at its far side.
    box.layers[0].cell_thickness = 30;
    EXPECT_EQ(surfaces(merge_sections(box, request, report)), (std::vector<double>{0, 0, 0, 40}));
    request.depth_unit = 0.25;
    EXPECT_EQ(surfaces(merge_sections(box, request, report)), (std::vector<double>{0, 17.5, 25, 40}));
    EXPECT_TRUE(report.warnings.empty());
    box.layers[0].cell_thickness = 0;
    EXPECT_EQ(surfaces(merge_sections(box, request, report)), (std::vector<double>{0, 10, 20, 40}));
    EXPECT_EQ(report.warnings.size(), 1U);
    box.layers.clear();
    EXPECT_EQ(surfaces(merge_sections(box, request, report)), (std::vector<double>{0, 3, 20, 40}));
    EXPECT_EQ(report.warnings.size(), 1U);
    box.layers = {{"upper", 1, 5, Lodex::LayerInfo::Proportional}, {"lower", 3, 5, Lodex::LayerInfo::Proportional}};
    result = merge_sections(box, request, report);
    EXPECT_NEAR(surfaces(result)[2], 3 + 37.0 / 3, 1e-12) << "the surface between two units stays";
}

TEST(Merge, ModelInfoGivesDepthsIn64Bits)
{
    GridModel source = random_grid({3, 3, 4}, 2);
    ASSERT_FALSE(source.zcorn.is_double());
    source.layers = {{"unit", 4, 2, Lodex::LayerInfo::Proportional}};
    MergeRequest request = along(2, {{0, 1}});
    EXPECT_FALSE(merged(source, request).zcorn.is_double());
    request.model_info = true;
    EXPECT_TRUE(merged(source, request).zcorn.is_double());
    // Along I and J it changes nothing.
    MergeRequest sideways = along(0, {{0, 1}});
    const GridModel plain = merged(source, sideways);
    sideways.model_info = true;
    EXPECT_TRUE(same_data(merged(source, sideways), plain));
    MergeReport report;
    source.layers.clear();
    (void)merge_sections(source, sideways, report);
    EXPECT_EQ(report.warnings.size(), 1U) << "without layers it warns along every axis";
}

TEST(Merge, NodesKeepTheirValues)
{
    const GridModel source = random_grid({4, 3, 3}, 9);
    const GridModel result = merged(source, along(0, {{1, 2}}));
    const PropertyData* const nodes = result.find_property("NODE");
    ASSERT_TRUE(nodes && nodes->on_points);
    const auto& values = std::get<std::vector<float>>(nodes->values);
    ASSERT_EQ(values.size(), 4U * 4 * 4);
    EXPECT_EQ((std::vector<float>(values.begin(), values.begin() + 5)), (std::vector<float>{0, 1, 3, 4, 5}));
    EXPECT_EQ(values.back(), 5 * 4 * 4 - 1);
}

TEST(Merge, FaultsMoveToTheNewIndices)
{
    GridModel box = numbered_box({6, 4, 2});
    box.faults = {{"F", {2, 2}, {0, 3}, {0, 1}, "I+"}, {"G", {3, 3}, {0, 3}, {0, 1}, "X-"},
                  {"H", {1, 1}, {0, 3}, {0, 1}, "I"},  {"L", {0, 5}, {1, 1}, {0, 1}, "J+"},
                  {"M", {0, 5}, {0, 0}, {0, 9}, "I+"}, {"N", {7, 9}, {0, 0}, {0, 1}, "J-"}};
    MergeReport report;
    const GridModel result = merge_sections(box, along(0, {{0, 2}, {4, 5}}), report);
    const auto text = [](const FaultSegment& f) {
        return f.name + ' ' + f.face + ' ' + std::to_string(f.i[0]) + '-' + std::to_string(f.i[1]) + ' ' +
               std::to_string(f.j[0]) + '-' + std::to_string(f.j[1]) + ' ' + std::to_string(f.k[0]) + '-' +
               std::to_string(f.k[1]);
    };
    std::vector<std::string> found;
    for (const FaultSegment& fault : result.faults)
        found.push_back(text(fault));
    EXPECT_EQ(found, (std::vector<std::string>{"F I+ 0-0 0-3 0-1", "G X- 1-1 0-3 0-1", "L J+ 0-2 1-1 0-1",
                                               "M I+ 0-2 0-0 0-1"}));
    EXPECT_EQ(report.dropped_faults, 2) << "H lies inside a merged cell, N outside of the grid";
}

TEST(Merge, KeptKeywordsGoOnlyWhereTheyNoLongerFit)
{
    GridModel box = numbered_box({4, 1, 1});
    box.kept = {{"CELLWISE", " 2*1 3 'x' ", "f", 1},
                {"TITLE", "some words", "f", 2},
                {"BOX", "1 2 1 1 1 1", "f", 3},
                {"NOTE", "1 2 3 4 5", "f", 4},
                {"COMMENTED", "1 -- 2 3 4\n 5", "f", 5}};
    MergeReport report;
    EXPECT_EQ(merge_sections(box, along(0, {}), report).kept.size(), 5U);
    EXPECT_TRUE(report.warnings.empty());
    const GridModel result = merge_sections(box, along(0, {{0, 1}}), report);
    ASSERT_EQ(result.kept.size(), 3U);
    EXPECT_EQ(result.kept[0].name, "TITLE");
    EXPECT_EQ(result.kept[2].name, "COMMENTED");
    ASSERT_EQ(report.warnings.size(), 2U);
    EXPECT_NE(report.warnings[0].find("CELLWISE"), std::string::npos);
    EXPECT_NE(report.warnings[1].find("BOX"), std::string::npos);
}

TEST(Merge, FaultBlocksAreThoseOfTheNewGrid)
{
    GridModel box = numbered_box({4, 2, 1});
    box.zcorn.visit_mutable([](auto depths) {
        for (std::size_t n = 0; n < depths.size(); ++n)
            if (n % 8 >= 4)
                depths[n] += 5; // columns 2 and 3 have gone down
    });
    box.regions = {{"fault_block_2", std::vector<std::uint8_t>(8, 1), false}};
    MergeRequest request = along(1, {{0, 1}});
    request.copy_fault_blocks = true;
    GridModel result = merged(box, request);
    ASSERT_EQ(result.regions.size(), 2U);
    EXPECT_EQ(result.regions[0].name, "fault_block_2");
    EXPECT_TRUE(result.regions[0].model);
    EXPECT_EQ(result.regions[0].flags, (std::vector<std::uint8_t>{0, 0, 1, 1}));
    EXPECT_EQ(result.regions[1].name, "fault_block_1");
    EXPECT_EQ(result.regions[1].flags, (std::vector<std::uint8_t>{1, 1, 0, 0}));
    // Merged over the fault there is one block left, and no region of it.
    request = along(0, {{0, 3}});
    request.copy_fault_blocks = true;
    request.copy_regions = false;
    EXPECT_TRUE(merged(box, request).regions.empty());
}

TEST(Merge, RecordsLeadBackThroughTwoGenerations)
{
    GridModel first = numbered_box({4, 3, 6});
    MergeRequest request = along(2, {{0, 1}, {2, 5}});
    request.source_name = "fine";
    GridModel second = merged(first, request);
    second.id = next_grid_id();
    request = along(2, {{0, 1}});
    request.source_name = "middle";
    GridModel third = merged(second, request);
    third.id = next_grid_id();
    request = along(0, {{1, 3}});
    const GridModel fourth = merged(third, request);
    ASSERT_EQ(third.records.size(), 2U);
    EXPECT_EQ(third.records[0].source_name, "middle");
    EXPECT_EQ(third.records[1].source_name, "fine");
    ASSERT_EQ(fourth.records.size(), 3U);
    const DerivationRecord* const record = find_record(fourth, first.id);
    ASSERT_TRUE(record);
    EXPECT_EQ(record->source_size, (GridSize{4, 3, 6}));
    EXPECT_EQ(record->ranges[0], (std::vector<IndexRange>{{0, 0}, {1, 3}}));
    EXPECT_EQ(record->ranges[1], (std::vector<IndexRange>{{0, 0}, {1, 1}, {2, 2}}));
    EXPECT_EQ(record->ranges[2], (std::vector<IndexRange>{{0, 5}}));
    EXPECT_FALSE(find_record(fourth, 0));
}

TEST(Merge, SameResultOnOneThreadAndTwo)
{
    const GridModel source = random_grid({300, 40, 20}, 21);
    for (int axis = 0; axis < 3; ++axis) {
        MergeRequest request = along(axis, {{0, 3}, {5, 6}, {10, 19}});
        request.region_mode = RegionMode::VolumeShare;
        request.percentile = 40;
        request.copy_fault_blocks = true;
        MergeReport one, two;
        const GridModel result_one = on_threads(1, [&] { return merge_sections(source, request, one); });
        const GridModel result_two = on_threads(2, [&] { return merge_sections(source, request, two); });
        EXPECT_TRUE(same_data(result_one, result_two));
        EXPECT_EQ(one.bulk_volume_after, two.bulk_volume_after);
        EXPECT_EQ(one.total_volume_before, two.total_volume_before);
        EXPECT_EQ(one.mean_relative_difference, two.mean_relative_difference);
        EXPECT_EQ(one.gave_way, two.gave_way);
    }
}

TEST(Merge, StopsAtEachStepAndLeavesTheSourceAlone)
{
    const GridModel source = random_grid({40, 30, 20}, 3);
    const GridModel before = source;
    MergeRequest request = along(1, {{0, 3}});
    request.copy_fault_blocks = true;
    EXPECT_GE(cancel_at_each_step([&](const ProgressCheck& progress) {
                  MergeReport report;
                  (void)merge_sections(source, request, report, progress);
              }),
              5);
    EXPECT_TRUE(same_data(source, before));
}

TEST(Coarsening, OnePassIsTheMergesOneAfterAnother)
{
    GridModel source = random_grid({7, 6, 8}, 31, {.double_depths = true, .inactive_share = 0.5});
    // Else it depends on the way whether a discrete property ever needed an undefined value.
    source.properties[2].no_data = -999;
    const std::vector<GridModification> modifications{{0, 1, 7, 3}, {1, 2, 5, 2}, {2, 1, 8, 4}, {0, 1, 7, 3}};
    MergeOptions options;
    options.copy_properties = options.copy_regions = true;
    options.source_name = "fine";
    MergeReport report;
    const GridModel result = apply_coarsening(source, modifications, options, report);
    EXPECT_EQ(result.size, (GridSize{3, 4, 2}));
    EXPECT_EQ(coarsened_size(modifications, source.size), result.size);
    EXPECT_TRUE(sizes_agree(result.records.front(), modifications));
    EXPECT_TRUE(reproduces(result.records.front(), modifications));

    GridModel step = source;
    for (int axis = 0; axis < 3; ++axis) {
        const auto sections = merge_sections_of(modifications, source.size);
        step = merged(step, along(axis, sections[static_cast<std::size_t>(axis)]));
        step.id = next_grid_id();
    }
    EXPECT_TRUE(same_data(result, step));
    const DerivationRecord* const record = find_record(step, source.id);
    ASSERT_TRUE(record);
    EXPECT_EQ(record->ranges, result.records.front().ranges);
}

TEST(Coarsening, WithoutModificationsIsACopy)
{
    const GridModel source = random_grid({3, 2, 4}, 8);
    MergeOptions options;
    options.copy_properties = options.copy_regions = true;
    MergeReport report;
    EXPECT_TRUE(same_data(apply_coarsening(source, {}, options, report), source));
    EXPECT_GE(cancel_at_each_step([&](const ProgressCheck& progress) {
                  (void)apply_coarsening(source, {}, options, report, progress);
              }),
              1);
}

} // namespace
