#include "random_grid.h"

#include "lodex/volumes/model/CellGeometry.h"
#include "lodex/volumes/model/Create.h"

#include <gtest/gtest.h>
#include <tbb/global_control.h>

#include <cmath>
#include <limits>

namespace {

using namespace lodex;
using namespace volumes_model_tests;

CellCorners unit_cube()
{
    CellCorners corners;
    for (std::size_t n = 0; n < 8; ++n)
        corners[n] = {static_cast<double>(n & 1), static_cast<double>(n >> 1 & 1), static_cast<double>(n >> 2)};
    return corners;
}

// Eight times the Jacobian at the Gauss points: exact for a trilinear map.
double volume_by_quadrature(const CellCorners& corners)
{
    double volume = 0;
    const double point[2] = {0.5 - std::sqrt(1.0 / 12), 0.5 + std::sqrt(1.0 / 12)};
    for (int g = 0; g < 8; ++g) {
        const double t[3] = {point[g & 1], point[g >> 1 & 1], point[g >> 2]};
        double d[3][3] = {};
        for (int n = 0; n < 8; ++n) {
            const int side[3] = {n & 1, n >> 1 & 1, n >> 2};
            double f[3], slope[3];
            for (int axis = 0; axis < 3; ++axis) {
                f[axis] = side[axis] ? t[axis] : 1 - t[axis];
                slope[axis] = side[axis] ? 1 : -1;
            }
            for (std::size_t x = 0; x < 3; ++x) {
                d[0][x] += slope[0] * f[1] * f[2] * corners[static_cast<std::size_t>(n)][x];
                d[1][x] += f[0] * slope[1] * f[2] * corners[static_cast<std::size_t>(n)][x];
                d[2][x] += f[0] * f[1] * slope[2] * corners[static_cast<std::size_t>(n)][x];
            }
        }
        volume +=
            (d[0][0] * (d[1][1] * d[2][2] - d[1][2] * d[2][1]) + d[0][1] * (d[1][2] * d[2][0] - d[1][0] * d[2][2]) +
             d[0][2] * (d[1][0] * d[2][1] - d[1][1] * d[2][0])) /
            8;
    }
    return volume;
}

double tetrahedron(const Point3& a, const Point3& b, const Point3& c, const Point3& d)
{
    double e[3][3];
    for (std::size_t x = 0; x < 3; ++x) {
        e[0][x] = b[x] - a[x];
        e[1][x] = c[x] - a[x];
        e[2][x] = d[x] - a[x];
    }
    return (e[0][0] * (e[1][1] * e[2][2] - e[1][2] * e[2][1]) + e[0][1] * (e[1][2] * e[2][0] - e[1][0] * e[2][2]) +
            e[0][2] * (e[1][0] * e[2][1] - e[1][1] * e[2][0])) /
           6;
}

// Mean of the two splits into four corner tetrahedra and one in the middle.
double volume_by_tetrahedra(const CellCorners& p)
{
    const double even = tetrahedron(p[0], p[1], p[2], p[4]) + tetrahedron(p[3], p[2], p[1], p[7]) +
                        tetrahedron(p[5], p[4], p[7], p[1]) + tetrahedron(p[6], p[7], p[4], p[2]) +
                        tetrahedron(p[1], p[2], p[4], p[7]);
    const double odd = tetrahedron(p[1], p[3], p[0], p[5]) + tetrahedron(p[2], p[0], p[3], p[6]) +
                       tetrahedron(p[4], p[0], p[6], p[5]) + tetrahedron(p[7], p[5], p[6], p[3]) +
                       tetrahedron(p[0], p[3], p[6], p[5]);
    return (std::abs(even) + std::abs(odd)) / 2;
}

TEST(CellGeometry, CubeAndItsMirrorImage)
{
    CellCorners corners = unit_cube();
    EXPECT_EQ(signed_cell_volume(corners), 1);
    EXPECT_EQ(cell_height(corners), 1);
    EXPECT_EQ(cell_centre(corners), (Point3{0.5, 0.5, 0.5}));
    for (Point3& corner : corners)
        corner[1] = -corner[1];
    EXPECT_EQ(signed_cell_volume(corners), -1);
    EXPECT_EQ(cell_volume(corners), 1);
}

TEST(CellGeometry, TwistedCellsByHand)
{
    // The top face of the unit cube is lifted to the saddle depth 1 + u v (at the base side): V = 1 + 1/4.
    CellCorners corners = unit_cube();
    corners[7][2] = 2;
    EXPECT_NEAR(cell_volume(corners), 1.25, 1e-15);
    // A wedge: one edge of the base side comes up to the top side.
    corners = unit_cube();
    corners[4][2] = corners[6][2] = 0;
    EXPECT_NEAR(cell_volume(corners), 0.5, 1e-15);
    EXPECT_EQ(cell_height(corners), 0.5);
    // A frustum: base side half as wide both ways, V = h (A1 + A2 + sqrt(A1 A2)) / 3 = 7/12.
    corners = unit_cube();
    for (std::size_t n = 4; n < 8; ++n) {
        corners[n][0] *= 0.5;
        corners[n][1] *= 0.5;
    }
    EXPECT_NEAR(cell_volume(corners), 7.0 / 12, 1e-15);
}

TEST(CellGeometry, VolumeIsThatOfTheTrilinearMap)
{
    const CounterRandom random(7);
    std::uint64_t next = 0;
    for (int n = 0; n < 1000; ++n) {
        CellCorners corners = unit_cube();
        for (Point3& corner : corners)
            for (double& x : corner)
                x += 0.6 * (random.uniform(next++) - 0.5);
        const double exact = volume_by_quadrature(corners);
        EXPECT_NEAR(signed_cell_volume(corners), exact, 1e-14);
        EXPECT_NEAR(cell_volume(corners), volume_by_tetrahedra(corners), 1e-14);
    }
}

TEST(CellGeometry, FarFromTheOriginKeepsItsDigits)
{
    CellCorners corners = unit_cube();
    for (Point3& corner : corners)
        corner = {corner[0] * 50 + 456510.625, corner[1] * 50 + 5926880.172, corner[2] * 2 + 2000};
    EXPECT_NEAR(cell_volume(corners), 5000, 1e-5);
}

TEST(CellGeometry, PillarsBetweenAndBeyondTheirPoints)
{
    const std::array<double, 6> pillar{10, 20, 1000, 30, 10, 1100};
    EXPECT_EQ(pillar_point(pillar, 1000), (Point3{10, 20, 1000}));
    EXPECT_EQ(pillar_point(pillar, 1100), (Point3{30, 10, 1100}));
    EXPECT_EQ(pillar_point(pillar, 1050), (Point3{20, 15, 1050}));
    EXPECT_EQ(pillar_point(pillar, 900), (Point3{-10, 30, 900}));
    const std::array<double, 6> flat{10, 20, 1000, 30, 10, 1000};
    EXPECT_EQ(pillar_point(flat, 1234), (Point3{10, 20, 1234}));
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const std::array<double, 6> broken{10, 20, nan, 30, 10, nan};
    EXPECT_EQ(pillar_point(broken, 1234), (Point3{10, 20, 1234}));
}

TEST(CellGeometry, SidesGoRoundTheCell)
{
    const CellCorners corners = unit_cube();
    const std::array<Point3, 4> low_i = side_corners(corners, CellSide::IMinus);
    const std::array<Point3, 4> high_k = side_corners(corners, CellSide::KPlus);
    for (const Point3& corner : low_i)
        EXPECT_EQ(corner[0], 0);
    for (const Point3& corner : high_k)
        EXPECT_EQ(corner[2], 1);
    for (int side = 0; side < 6; ++side) {
        const auto points = side_corners(corners, static_cast<CellSide>(side));
        Point3 turn{}; // twice the vector area: points outwards
        for (std::size_t n = 0; n < 4; ++n)
            for (std::size_t x = 0; x < 3; ++x)
                turn[x] += points[n][(x + 1) % 3] * points[(n + 1) % 4][(x + 2) % 3] -
                           points[n][(x + 2) % 3] * points[(n + 1) % 4][(x + 1) % 3];
        Point3 outward{};
        outward[static_cast<std::size_t>(side / 2)] = side % 2 ? 2 : -2;
        EXPECT_EQ(turn, outward) << side;
    }
}

TEST(CellGeometry, FirstAndLastCellOfABox)
{
    const GridModel box = make_box({3, 4, 5}, {10, 20, 2}, {100, 200, 1000});
    EXPECT_EQ(cell_corners(box, 0, 0, 0)[0], (Point3{100, 200, 1000}));
    EXPECT_EQ(cell_corners(box, 0, 0, 0)[7], (Point3{110, 220, 1002}));
    EXPECT_EQ(cell_corners(box, 2, 3, 4)[0], (Point3{120, 260, 1008}));
    EXPECT_EQ(cell_corners(box, 2, 3, 4)[7], (Point3{130, 280, 1010}));
    EXPECT_EQ(cell_height(box, 2, 3, 4), 2);
    const VolumeSummary sums = summarise_volumes(box);
    EXPECT_EQ(sums.active_volume, 60 * 400);
    EXPECT_EQ(sums.total_volume, 60 * 400);
    EXPECT_EQ(sums.active_cells, 60);
    EXPECT_EQ(sums.inverted_cells, 0);
    EXPECT_EQ(sums.flat_cells, 0);
    EXPECT_EQ(sums.layer_volume, std::vector<double>(5, 12 * 400.0));
    EXPECT_EQ(sums.layer_cells, std::vector<std::int64_t>(5, 12));
    EXPECT_EQ(handedness(box), 1);
}

class Grids : public testing::TestWithParam<std::tuple<GridSize, bool, bool>> {};

TEST_P(Grids, ArrayOfVolumesIsThatOfTheCells)
{
    const auto& [size, wide, mirrored] = GetParam();
    const GridModel model = random_grid(size, 3, {.double_depths = wide, .mirrored = mirrored});
    const std::vector<double> volumes = cell_volumes(model);
    ASSERT_EQ(volumes.size(), static_cast<std::size_t>(model.cells()));
    double total = 0, active = 0;
    std::int64_t flat = 0;
    for (std::int64_t k = 0; k < size[2]; ++k)
        for (std::int64_t j = 0; j < size[1]; ++j)
            for (std::int64_t i = 0; i < size[0]; ++i) {
                const auto cell = static_cast<std::size_t>(model.cell_index(i, j, k));
                const double volume = cell_volume(cell_corners(model, i, j, k));
                ASSERT_NEAR(volumes[cell], volume, 1e-9 * volume + 1e-9) << i << ' ' << j << ' ' << k;
                total += volume;
                active += model.active[cell] ? volume : 0;
                flat += model.active[cell] && volumes[cell] == 0;
            }
    const VolumeSummary sums = summarise_volumes(model);
    EXPECT_NEAR(sums.total_volume, total, 1e-12 * total);
    EXPECT_NEAR(sums.active_volume, active, 1e-12 * total);
    EXPECT_EQ(sums.flat_cells, flat);
    EXPECT_EQ(bulk_volume(model), sums.active_volume);
    if (size[2] < 100) {
        // Far below their lower points the leaning pillars of the deepest grid cross each other.
        EXPECT_EQ(handedness(model), mirrored ? -1 : 1);
    }
    double layers = 0;
    for (const double volume : sums.layer_volume)
        layers += volume;
    EXPECT_NEAR(layers, active, 1e-12 * total);
}

INSTANTIATE_TEST_SUITE_P(Sizes, Grids,
                         testing::Combine(testing::Values(GridSize{7, 5, 6}, GridSize{1, 9, 4}, GridSize{9, 1, 4},
                                                          GridSize{6, 5, 1}, GridSize{5000, 2, 3}, GridSize{3, 3000, 2},
                                                          GridSize{2, 3, 9000}),
                                          testing::Bool(), testing::Bool()));

TEST(CellGeometry, NothingFiniteComesOutAsNothing)
{
    GridModel box = make_box({3, 1, 2}, {1, 1, 1});
    box.zcorn.visit_mutable([](auto depths) {
        depths[2] = std::numeric_limits<double>::quiet_NaN();
        depths[depths.size() - 1] = std::numeric_limits<double>::infinity();
    });
    const std::vector<double> volumes = cell_volumes(box);
    EXPECT_EQ(volumes, (std::vector<double>{1, 0, 1, 1, 1, 0}));
    EXPECT_EQ(bulk_volume(box), 4);
}

TEST(CellGeometry, CellOnItsHeadHasPositiveVolumeAndIsCounted)
{
    GridModel box = make_box({2, 2, 1}, {1, 1, 1});
    box.zcorn.visit_mutable([](auto depths) {
        for (const std::size_t row : {0U, 4U}) // cell 0, 0: top below base
            for (std::size_t n = 0; n < 2; ++n)
                std::swap(depths[row + n], depths[16 + row + n]);
    });
    EXPECT_EQ(cell_height(box, 0, 0, 0), -1);
    const VolumeSummary sums = summarise_volumes(box);
    EXPECT_EQ(sums.active_volume, 4);
    EXPECT_EQ(sums.signed_volume, 2);
    EXPECT_EQ(sums.inverted_cells, 1);
}

TEST(CellGeometry, SameNumbersOnOneThreadAndTwo)
{
    const GridModel model = random_grid({200, 60, 20}, 11);
    VolumeSummary one, two;
    std::vector<double> volumes_one, volumes_two;
    {
        const tbb::global_control limit(tbb::global_control::max_allowed_parallelism, 1);
        one = summarise_volumes(model);
        volumes_one = cell_volumes(model);
    }
    {
        const tbb::global_control limit(tbb::global_control::max_allowed_parallelism, 2);
        two = summarise_volumes(model);
        volumes_two = cell_volumes(model);
    }
    EXPECT_EQ(one.active_volume, two.active_volume);
    EXPECT_EQ(one.signed_volume, two.signed_volume);
    EXPECT_EQ(one.layer_volume, two.layer_volume);
    EXPECT_EQ(volumes_one, volumes_two);
}

TEST(CellGeometry, StopsAtEachStep)
{
    const GridModel model = random_grid({20, 30, 10}, 1);
    EXPECT_GE(cancel_at_each_step([&](const ProgressCheck& progress) { (void)cell_volumes(model, progress); }), 2);
    EXPECT_GE(cancel_at_each_step([&](const ProgressCheck& progress) { (void)summarise_volumes(model, progress); }), 2);
}

TEST(CellGeometry, ArraysOfTheWrongSizeAreNamed)
{
    EXPECT_EQ(error_of([] { check_arrays(make_box({2, 3, 4}, {1, 1, 1})); }), "");
    GridModel model = make_box({2, 3, 4}, {1, 1, 1});
    model.properties.push_back({"PORO", "", std::vector<float>(23), {}, {}, false});
    EXPECT_EQ(error_of([&] { check_arrays(model); }), "property \"PORO\" holds 23 values, 24 are needed");
    model.properties.back() = {"NODES", "", std::vector<float>(60), {}, {}, true};
    EXPECT_EQ(error_of([&] { check_arrays(model); }), "");
    model.layers = {{"upper", 3, 1, Lodex::LayerInfo::Proportional}};
    EXPECT_EQ(error_of([&] { check_arrays(model); }), "the layers have 3 K cells, the grid has 4");
}

} // namespace
