#include "upscaling/kernels/CellLocator.h"

#include "brute_force.h"
#include "tests/volumes_model/random_grid.h"

#include "lodex/volumes/model/CellGeometry.h"
#include "lodex/volumes/model/Create.h"

#include <gtest/gtest.h>
#include <tbb/task_arena.h>

#include <iostream>

using namespace Kelvane;
using lodex::GridModel;
using lodex::view_of;
using volumes_model_tests::random_grid;
using volumes_model_tests::RandomGridOptions;

namespace {

constexpr double no_number = std::numeric_limits<double>::quiet_NaN();

GridModel turned_upside_down(GridModel model)
{
    model.zcorn.visit_mutable([](auto depths) {
        for (auto& depth : depths)
            depth = 2200 - depth;
    });
    return model;
}

// Asks locator and brute force for the same points; returns how many lie in a cell.
std::int64_t compare(const GridModel& model, const std::vector<Point3>& points)
{
    const CellLocator locator(view_of(model));
    CellLocator::Cursor cursor(locator);
    const auto cells = brute_force::corners_of(view_of(model));
    std::int64_t inside = 0, differences = 0;
    for (const Point3& point : points) {
        const std::int64_t expected = brute_force::find(cells, point), found = cursor.find(point);
        inside += expected >= 0;
        if (found != expected && ++differences <= 3)
            ADD_FAILURE() << "point " << point[0] << ' ' << point[1] << ' ' << point[2] << ": cell " << found
                          << ", brute force " << expected;
        EXPECT_EQ(locator.find(point), found) << "the cursor's answers are the locator's";
    }
    EXPECT_EQ(differences, 0);
    return inside;
}

std::vector<Point3> random_points(std::uint64_t seed, int count, const Point3& low, const Point3& high)
{
    const lodex::CounterRandom random(seed);
    std::vector<Point3> points;
    std::uint64_t next = 0;
    for (int n = 0; n < count; ++n) {
        Point3 point;
        for (std::size_t axis = 0; axis < 3; ++axis)
            point[axis] = low[axis] + (high[axis] - low[axis]) * random.uniform(next++);
        points.push_back(point);
    }
    return points;
}

} // namespace

TEST(CellLocator, BoxByHand)
{
    // Cells of 10 x 20 x 5 from (100, 200, 1000).
    const GridModel box = lodex::make_box({4, 3, 2}, {10, 20, 5}, {100, 200, 1000});
    const CellLocator locator(view_of(box));
    EXPECT_EQ(locator.find({101, 201, 1001}), 0);
    EXPECT_EQ(locator.find({139, 259, 1009}), 23);
    EXPECT_EQ(locator.find({115, 230, 1007}), 1 + 4 * (1 + 3 * 1));
    // Shared faces, edges and corners: the lowest.
    EXPECT_EQ(locator.find({110, 210, 1002}), 0);
    EXPECT_EQ(locator.find({105, 220, 1002}), 0);
    EXPECT_EQ(locator.find({105, 210, 1005}), 0);
    EXPECT_EQ(locator.find({110, 220, 1005}), 0);
    EXPECT_EQ(locator.find({130, 240, 1005}), 2 + 4 * 1);
    EXPECT_EQ(locator.find({std::nextafter(110, 120), 210, 1002}), 0) << "a rounding beyond the face is on it";
    EXPECT_EQ(locator.find({110.001, 210, 1002}), 1);
    // The outer faces belong to the grid.
    EXPECT_EQ(locator.find({100, 200, 1000}), 0);
    EXPECT_EQ(locator.find({140, 260, 1010}), 23);
    for (const Point3& outside : {Point3{99.99, 210, 1002}, Point3{140.01, 210, 1002}, Point3{110, 199.9, 1002},
                                  Point3{110, 260.1, 1002}, Point3{110, 210, 999.9}, Point3{110, 210, 1010.1},
                                  Point3{no_number, 210, 1002}, Point3{110, 210, no_number},
                                  Point3{1e300, -1e300, 1002}})
        EXPECT_EQ(locator.find(outside), -1);
    // Within some K layers.
    EXPECT_EQ(locator.find({105, 210, 1005}, 1, 1), 12);
    EXPECT_EQ(locator.find({105, 210, 1002}, 1, 1), -1);
}

TEST(CellLocator, ColumnsByHand)
{
    GridModel box = lodex::make_box({4, 3, 2}, {10, 20, 5}, {100, 200, 1000});
    for (const std::size_t inactive : {5, 17})
        box.active[inactive] = 0;
    const CellLocator locator(view_of(box));
    const auto place = locator.find_column({122.5, 245, 5000});
    EXPECT_EQ(place.column, 2 + 4 * 2);
    EXPECT_NEAR(place.a, 0.25, 1e-12);
    EXPECT_NEAR(place.b, 0.25, 1e-12);
    EXPECT_EQ(locator.find_column({110, 205, -5}).column, 0) << "the lower one on an edge";
    EXPECT_EQ(locator.find_column({115, 230, 1001}).column, -1) << "a column without active cells";
    EXPECT_EQ(locator.find_column({99, 205, 1001}).column, -1);
}

TEST(CellLocator, OneCellAndNone)
{
    const GridModel one = lodex::make_box({1, 1, 1}, {1, 1, 1});
    EXPECT_EQ(CellLocator(view_of(one)).find({0.5, 0.5, 0.5}), 0);
    EXPECT_EQ(CellLocator(view_of(one)).find({0.5, 0.5, 1.5}), -1);
    GridModel none = one;
    none.active[0] = 0;
    const CellLocator locator(view_of(none));
    EXPECT_EQ(locator.find({0.5, 0.5, 0.5}), -1);
    EXPECT_EQ(locator.find_column({0.5, 0.5, 0.5}).column, -1);
}

TEST(CellLocator, AgreesWithBruteForceOnRandomFaultedGrids)
{
    std::int64_t inside = 0, points = 0;
    std::uint64_t seed = 100;
    for (const bool plane : {false, true}) {
        for (const bool split : {false, true}) {
            for (const bool mirrored : {false, true}) {
                for (const bool upside_down : {false, true}) {
                    const RandomGridOptions options{seed % 2 == 0, plane, split, mirrored, 0.15};
                    GridModel model = random_grid({6, 5, 9}, ++seed, options);
                    if (upside_down)
                        model = turned_upside_down(std::move(model));
                    const double y = mirrored ? -1 : 1;
                    auto asked = random_points(seed, 500, {-30, y * -30, upside_down ? 1130.0 : 985.0},
                                               {630, y * 430, upside_down ? 1215.0 : 1070.0});
                    const GridModel other = random_grid({5, 7, 8}, seed + 1000, options);
                    for (std::int64_t cell = 0; cell < other.cells(); ++cell)
                        asked.push_back(cell_centre(cell_corners(other, cell % 5, cell / 5 % 7, cell / 35)));
                    inside += compare(model, asked);
                    points += static_cast<std::int64_t>(asked.size());
                }
            }
        }
    }
    std::cout << inside << " of " << points << " points lie in a cell\n";
    EXPECT_GT(inside, points / 5);
}

TEST(CellLocator, AgreesWithBruteForceOnTheExampleField)
{
    const GridModel example = lodex::make_example({12, 10, 10});
    const auto points = random_points(5, 1500, {0, 0, 1900}, {3000, 2400, 2300});
    EXPECT_GT(compare(example, points), 100);
    // Pillars that lean in all directions, a column wide and more.
    GridModel leaning = random_grid({5, 5, 6}, 77, {true, true, true, false, 0.1});
    leaning.coord.visit_mutable([](auto numbers) {
        for (std::size_t n = 0; n < numbers.size(); n += 6) {
            numbers[n + 3] = static_cast<float>(1.2 * numbers[n] + 150);
            numbers[n + 4] = static_cast<float>(0.8 * numbers[n + 1] - 90);
        }
    });
    EXPECT_GT(compare(leaning, random_points(6, 2000, {0, -50, 985}, {650, 450, 1060})), 200);
}

TEST(CellLocator, NeighboursLeaveNoGapAndShareNoPoint)
{
    // Leaning pillars that span no plane, cells between continuous surfaces: their faces are curved.
    const GridModel model = random_grid({6, 6, 6}, 31, {true, false, false, false, 0});
    const auto view = view_of(model);
    const CellLocator locator(view);
    const lodex::CounterRandom random(9);
    std::uint64_t next = 0;
    std::int64_t asked = 0;
    for (int n = 0; n < 20000; ++n) {
        std::array<std::int64_t, 3> at;
        for (auto& index : at)
            index = static_cast<std::int64_t>(random.uniform(next++) * 5); // 0 to 4: a neighbour follows
        const auto axis = static_cast<std::size_t>(n % 3);
        const CellCorners lower = cell_corners(view, at[0], at[1], at[2]);
        auto beyond = at;
        ++beyond[axis];
        const CellCorners upper = cell_corners(view, beyond[0], beyond[1], beyond[2]);
        std::array<double, 3> t{};
        for (auto& coordinate : t)
            coordinate = 0.05 + 0.9 * random.uniform(next++);
        // From the face by up to 1 to 1e-16 of the cell.
        const double distance = 0.9 * std::pow(10, -16 * random.uniform(next++));
        const double off = random.uniform(next++) < 0.5 ? -distance : distance;
        t[axis] = off < 0 ? 1 + off : off;
        const CellCorners& corners = off < 0 ? lower : upper;
        // Where a cell is pinched its top and base are one face.
        const auto pinched = [](const CellCorners& cell) {
            for (std::size_t corner = 0; corner < 4; ++corner)
                if (cell[corner + 4][2] - cell[corner][2] < 0.1)
                    return true;
            return false;
        };
        if (pinched(lower) || pinched(upper))
            continue;
        const Point3 point = brute_force::trilinear(corners, t);
        const std::int64_t found = locator.find(point);
        const std::int64_t a = view.cell_index(at[0], at[1], at[2]);
        const std::int64_t b = view.cell_index(beyond[0], beyond[1], beyond[2]);
        const bool on_face = off >= 1e-10 && off <= 1e-6;
        ASSERT_TRUE(found == (off > 1e-6 ? b : a) || (on_face && found == b)) << off << " along " << axis;
        ++asked;
    }
    EXPECT_GT(asked, 3000);
}

TEST(CellLocator, BrokenCornersAndWildInactiveCellsDoNoHarm)
{
    GridModel model = random_grid({5, 5, 6}, 8, {true, false, true, false, 0.2});
    std::vector<double> depths;
    model.zcorn.visit([&depths](auto values) { depths.assign(values.begin(), values.end()); });
    const auto depth = [&](std::int64_t i, std::int64_t j, std::int64_t k, int b, int c) -> double& {
        return depths[static_cast<std::size_t>(depth_offset(model.size, i, j, k, b, c))];
    };
    depth(2, 2, 3, 0, 0) = no_number; // an active cell with a corner that is no number
    model.active[static_cast<std::size_t>(model.cell_index(2, 2, 3))] = 1;
    depth(1, 1, 0, 1, 1) = 1e9; // inactive ones with depths from nowhere
    model.active[static_cast<std::size_t>(model.cell_index(1, 1, 0))] = 0;
    depth(3, 1, 5, 1, 0) = 0;
    model.active[static_cast<std::size_t>(model.cell_index(3, 1, 5))] = 0;
    model.zcorn = lodex::RealArray(depths);
    EXPECT_GT(compare(model, random_points(3, 2000, {-20, -20, 985}, {520, 420, 1050})), 300);
}

TEST(CellLocator, StopsWhenAskedAndDoesNotDependOnThreads)
{
    const GridModel example = lodex::make_example({40, 30, 10});
    EXPECT_GT(volumes_model_tests::cancel_at_each_step(
                  [&](const lodex::ProgressCheck& progress) { CellLocator(view_of(example), progress); }),
              3);
    const auto points = random_points(7, 3000, {0, 0, 1900}, {3000, 2400, 2300});
    const auto answers = [&] {
        const CellLocator locator(view_of(example));
        std::vector<std::int64_t> result;
        for (const Point3& point : points)
            result.push_back(locator.find(point));
        return result;
    };
    tbb::task_arena one(1);
    std::vector<std::int64_t> single;
    one.execute([&] { single = answers(); });
    EXPECT_EQ(single, answers());
    EXPECT_GT(std::ranges::count_if(single, [](std::int64_t cell) { return cell >= 0; }), 100);
}
