#include "random_grid.h"

#include "lodex/volumes/model/CellGeometry.h"
#include "lodex/volumes/model/Create.h"
#include "lodex/volumes/model/Layering.h"
#include "lodex/volumes/model/Random.h"
#include "lodex/volumes/model/Statistics.h"

#include <gtest/gtest.h>
#include <tbb/global_control.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <set>

namespace {

using namespace lodex;
using namespace volumes_model_tests;

// FNV-1a over all numbers of a grid, from the lowest byte of each up.
std::uint64_t hash_of(const GridModel& model)
{
    std::uint64_t hash = 0xcbf29ce484222325ULL;
    const auto add = [&](std::uint32_t bits) {
        for (int byte = 0; byte < 4; ++byte) {
            hash ^= bits >> (8 * byte) & 0xff;
            hash *= 0x100000001b3ULL;
        }
    };
    const auto add_all = [&](auto numbers) {
        for (const auto number : numbers)
            add(std::bit_cast<std::uint32_t>(static_cast<float>(number)));
    };
    model.coord.visit(add_all);
    model.zcorn.visit(add_all);
    for (const std::uint8_t flag : model.active)
        add(flag);
    for (const PropertyData& property : model.properties)
        std::visit([&](const auto& values) { add_all(std::span(values)); }, property.values);
    for (const RegionData& region : model.regions)
        for (const std::uint8_t flag : region.flags)
            add(flag);
    return hash;
}

double distance_in_ulps(double a, double b)
{
    if (a == b)
        return 0;
    return std::abs(a - b) / (std::nextafter(std::abs(b), std::numeric_limits<double>::infinity()) - std::abs(b));
}

TEST(Exactly, FunctionsAreRightToAFewRoundings)
{
    const CounterRandom random(3);
    for (std::uint64_t n = 0; n < 100000; ++n) {
        const double x = (random.uniform(n) - 0.5) * 1400;
        ASSERT_LE(distance_in_ulps(exactly::exp(x), std::exp(x)), 3) << x;
        const double small = (random.uniform(n) - 0.5) * 2;
        ASSERT_LE(distance_in_ulps(exactly::exp(small), std::exp(small)), 2) << small;
        const double y = std::exp(x);
        ASSERT_LE(distance_in_ulps(exactly::log(y), std::log(y)), 2) << y;
        const double near_one = 1 + small / 100;
        ASSERT_LE(distance_in_ulps(exactly::log(near_one), std::log(near_one)), 3) << near_one;
        const double t = small * 3;
        ASSERT_NEAR(exactly::sin_turns(t), std::sin(2 * M_PI * t), 4e-15) << t;
        ASSERT_NEAR(exactly::cos_turns(t), std::cos(2 * M_PI * t), 4e-15) << t;
    }
    EXPECT_EQ(exactly::exp(0), 1);
    EXPECT_EQ(exactly::log(1), 0);
    EXPECT_EQ(exactly::exp(-800), 0);
    EXPECT_TRUE(std::isinf(exactly::exp(800)));
    EXPECT_GT(exactly::exp(-744), 0);
    EXPECT_NEAR(exactly::log(std::numeric_limits<double>::denorm_min()), -744.4400719213812, 1e-12);
    EXPECT_TRUE(std::isinf(exactly::log(0)));
    EXPECT_TRUE(std::isnan(exactly::log(-1)));
    EXPECT_TRUE(std::isnan(exactly::exp(std::numeric_limits<double>::quiet_NaN())));
    EXPECT_EQ(exactly::sin_turns(0.25), 1);
    EXPECT_EQ(exactly::sin_turns(-0.5), 0);
}

TEST(Exactly, QuantileInvertsTheNormalDistribution)
{
    for (const double p : {1e-12, 1e-3, 0.02, 0.03, 0.25, 0.5, 0.7, 0.98, 0.999}) {
        const double x = exactly::normal_quantile(p);
        EXPECT_NEAR(0.5 * std::erfc(-x / std::sqrt(2.0)) / p, 1, 1e-7) << p;
    }
    EXPECT_EQ(exactly::normal_quantile(0.5), 0);
}

TEST(Random, IsEvenAndNormalAndRepeats)
{
    const CounterRandom random(1), other(2), stream(1, 1);
    double sum = 0, square = 0, fourth = 0, low = 1, high = 0, product = 0;
    constexpr std::uint64_t count = 200000;
    for (std::uint64_t n = 0; n < count; ++n) {
        const double u = random.uniform(n), z = random.normal(n);
        low = std::min(low, u);
        high = std::max(high, u);
        sum += z;
        square += z * z;
        fourth += z * z * z * z;
        product += z * random.normal(n + 1);
    }
    EXPECT_GT(low, 0);
    EXPECT_LT(high, 1);
    EXPECT_NEAR(sum / count, 0, 4 / std::sqrt(count));
    EXPECT_NEAR(square / count, 1, 4 * std::sqrt(2.0 / count));
    EXPECT_NEAR(fourth / count, 3, 4 * std::sqrt(96.0 / count));
    EXPECT_NEAR(product / count, 0, 4 / std::sqrt(count));
    EXPECT_EQ(random.bits(5), CounterRandom(1).bits(5));
    EXPECT_NE(random.bits(5), other.bits(5));
    EXPECT_NE(random.bits(5), stream.bits(5));
}

TEST(Box, HasTheWantedCells)
{
    const GridModel box = make_box({3, 2, 4}, {10, 20, 5}, {1000, 2000, 1500});
    EXPECT_EQ(error_of([&] { check_arrays(box); }), "");
    EXPECT_EQ(bulk_volume(box), 24 * 1000);
    EXPECT_EQ(cell_centre(cell_corners(box, 2, 1, 3)), (Point3{1025, 2030, 1517.5}));
    EXPECT_NE(error_of([] { (void)make_box({0, 1, 1}, {1, 1, 1}); }), "");
    EXPECT_NE(error_of([] { (void)make_box({1, 1, 1}, {1, -1, 1}); }), "");
    EXPECT_NE(error_of([] { (void)make_box({1, 1, 1}, {1, 1, 1}, {0, std::nan(""), 0}); }), "");
}

TEST(Example, IsTheSameOnEveryMachine)
{
    EXPECT_EQ(hash_of(make_example({20, 16, 12}, 1)), 0x9d2970a714f83886ULL);
    EXPECT_EQ(hash_of(make_example({20, 16, 12}, 2)), 0xca073720bb43b258ULL);
    const GridModel whole = make_example();
    EXPECT_EQ(hash_of(whole), 0x4efb9989fdbea184ULL);
    const tbb::global_control limit(tbb::global_control::max_allowed_parallelism, 1);
    EXPECT_TRUE(same_data(make_example(), whole));
}

TEST(Example, LooksLikeAField)
{
    const GridModel model = make_example();
    EXPECT_EQ(error_of([&] { check_arrays(model); }), "");
    EXPECT_EQ(model.size, (GridSize{50, 40, 40}));
    ASSERT_EQ(model.layers.size(), 4U);
    std::set<std::string> names;
    std::set<int> styles;
    for (const LayerData& layer : model.layers) {
        names.insert(layer.unit);
        styles.insert(layer.style);
        EXPECT_GT(layer.cell_thickness, 0);
    }
    EXPECT_EQ(names.size(), 4U);
    EXPECT_EQ(styles.size(), 3U);
    ASSERT_EQ(model.faults.size(), 3U);
    ASSERT_EQ(model.regions.size(), 2U);

    const VolumeSummary sums = summarise_volumes(model);
    EXPECT_EQ(sums.inverted_cells, 0);
    EXPECT_GT(sums.active_cells, model.cells() / 2);
    EXPECT_LT(sums.active_cells, model.cells() * 95 / 100);
    EXPECT_EQ(handedness(model), 1);
    // 3 km x 2.4 km x some 150 m.
    EXPECT_GT(sums.active_volume, 0.6e9);
    EXPECT_LT(sums.active_volume, 1.5e9);
    std::int64_t pinched = 0;
    for (std::int64_t k = 0; k < model.size[2]; ++k)
        for (std::int64_t j = 0; j < model.size[1]; ++j)
            for (std::int64_t i = 0; i < model.size[0]; ++i) {
                const CellCorners corners = cell_corners(model, i, j, k);
                bool some_edge_pinched = false;
                for (std::size_t n = 0; n < 4; ++n) {
                    EXPECT_GE(corners[n + 4][2], corners[n][2]);
                    some_edge_pinched = some_edge_pinched || corners[n + 4][2] == corners[n][2];
                    EXPECT_GT(corners[n][2], 1800);
                    EXPECT_LT(corners[n][2], 2500);
                }
                pinched += some_edge_pinched && model.active[static_cast<std::size_t>(model.cell_index(i, j, k))];
            }
    EXPECT_GT(pinched, 100) << "active cells that wedge out";

    const GridStatistics statistics = grid_statistics(model);
    for (const RegionStatistics& region : statistics.regions)
        EXPECT_GT(region.cells, 3000) << region.name;
    EXPECT_EQ(statistics.regions[0].cells + statistics.regions[1].cells, statistics.active);
    EXPECT_NEAR(statistics.regions[0].bulk_volume + statistics.regions[1].bulk_volume, statistics.bulk_volume, 1);
    ASSERT_EQ(statistics.properties.size(), 5U);
    EXPECT_EQ(statistics.properties[0].name, "FACIES");
    ASSERT_EQ(statistics.properties[0].codes.size(), 3U);
    for (const auto& [code, cells] : statistics.properties[0].codes) {
        EXPECT_GT(cells, statistics.active / 20) << code;
        EXPECT_TRUE(model.properties[0].code_names.contains(code));
    }
    EXPECT_GE(statistics.properties[1].min, 0.01F);
    EXPECT_LE(statistics.properties[1].max, 0.36F);
    EXPECT_GT(statistics.properties[2].mean, 20);
    EXPECT_LE(statistics.properties[2].max, 20000);
    EXPECT_LT(*statistics.properties[4].mean, 0.5 * *statistics.properties[2].mean) << "kv below kh";

    // Better rock in channels, cell by cell and on average.
    const auto& facies = std::get<std::vector<std::int32_t>>(model.properties[0].values);
    const auto& porosity = std::get<std::vector<float>>(model.properties[1].values);
    double sums_by_facies[3] = {}, counts[3] = {};
    for (std::size_t cell = 0; cell < facies.size(); ++cell) {
        sums_by_facies[facies[cell]] += static_cast<double>(porosity[cell]);
        ++counts[facies[cell]];
    }
    EXPECT_NEAR(sums_by_facies[0] / counts[0], 0.06, 0.01);
    EXPECT_NEAR(sums_by_facies[1] / counts[1], 0.16, 0.01);
    EXPECT_NEAR(sums_by_facies[2] / counts[2], 0.25, 0.01);
}

TEST(Example, FaultsHaveThrowAndTheRestHasNone)
{
    const GridModel model = make_example();
    const auto step = [&](std::int64_t i, std::int64_t j, std::int64_t k, int axis) {
        const CellCorners here = cell_corners(model, i, j, k);
        const CellCorners there = axis == 0 ? cell_corners(model, i + 1, j, k) : cell_corners(model, i, j + 1, k);
        return axis == 0 ? there[0][2] - here[1][2] : there[0][2] - here[2][2];
    };
    for (const FaultSegment& fault : model.faults) {
        const int axis = fault.face[0] == 'I' ? 0 : 1;
        EXPECT_GT(std::abs(step(fault.i[0], fault.j[0], 0, axis)), 10) << fault.name;
    }
    std::int64_t faulted = 0;
    for (std::int64_t j = 0; j < model.size[1]; ++j)
        for (std::int64_t i = 0; i + 1 < model.size[0]; ++i)
            faulted += step(i, j, 20, 0) != 0;
    // Two faults cut through; the third one has its edge on the first.
    EXPECT_EQ(faulted, 2 * model.size[1]);
}

TEST(Example, WorksAtAnySize)
{
    for (const GridSize& size : {GridSize{1, 1, 1}, GridSize{3, 200, 7}, GridSize{200, 1, 2}, GridSize{2, 2, 3},
                                 GridSize{1, 5, 4}, GridSize{3, 2, 5}, GridSize{8, 8, 1}, GridSize{1, 1, 60}}) {
        const GridModel model = make_example(size, 5);
        EXPECT_EQ(error_of([&] { check_arrays(model); }), "");
        EXPECT_EQ(model.size, size);
        EXPECT_EQ(static_cast<std::int64_t>(model.layers.size()), std::min<std::int64_t>(4, size[2]));
        EXPECT_EQ(layer_starts(model.layers).back(), size[2]);
        for (const LayerData& layer : model.layers)
            EXPECT_GE(layer.nb_k_cells, 1);
        EXPECT_GT(bulk_volume(model), 0);
        const GridStatistics statistics = grid_statistics(model);
        EXPECT_EQ(statistics.properties[1].count, statistics.active);
        EXPECT_EQ(statistics.properties[1].undefined, 0);
        for (const FaultSegment& fault : model.faults)
            for (const auto& [range, length] : {std::pair{fault.i, size[0]}, {fault.j, size[1]}, {fault.k, size[2]}}) {
                EXPECT_GE(range[0], 0);
                EXPECT_LE(range[0], range[1]);
                EXPECT_LT(range[1], length);
            }
    }
    EXPECT_NE(error_of([] { (void)make_example({1, 0, 1}); }), "");
}

TEST(Example, SeedsChangeTheRockNotTheStructure)
{
    const GridModel one = make_example({20, 20, 8}, 1), two = make_example({20, 20, 8}, 2);
    EXPECT_EQ(one.zcorn, two.zcorn);
    EXPECT_NE(one.properties[0].values, two.properties[0].values);
    EXPECT_NE(one.properties[2].values, two.properties[2].values);
}

TEST(Example, StopsAtEachStep)
{
    EXPECT_GE(cancel_at_each_step([](const ProgressCheck& progress) {
                  (void)make_example({4, 30, 5}, 1, progress);
              }),
              4);
}

} // namespace
