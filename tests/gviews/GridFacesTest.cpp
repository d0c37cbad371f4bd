#include <lodex/gviews/faces/GridFaces.h>
#include <lodex/volumes/model/Create.h>

#include <gtest/gtest.h>

#include <tbb/global_control.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <functional>
#include <limits>
#include <random>

using namespace lodex;

namespace {

using Face = std::pair<std::uint32_t, int>; // cell, side

std::vector<Face> listed(const FaceSet& faces)
{
    std::vector<Face> list;
    for (std::size_t n = 0; n < faces.size(); ++n)
        list.emplace_back(faces.cell[n], faces.side[n]);
    return list;
}

FaceSet filtered_faces(const GridModel& model, const CellFilter& filter = {})
{
    return visible_faces(model, ShownCells(model, filter));
}

Point3 point(const FaceSet& faces, std::size_t face, std::size_t corner)
{
    const float* const p = faces.points.data() + 12 * face + 3 * corner;
    return {p[0], p[1], p[2]};
}

void set_depth(GridModel& model, std::size_t index, double depth)
{
    model.zcorn.visit_mutable(
        [&](auto depths) { depths[index] = static_cast<typename decltype(depths)::value_type>(depth); });
}

/// Moves all corners of the cells that `moves` says down by `throw_`.
void move_down(GridModel& model, double throw_,
               const std::function<bool(std::int64_t, std::int64_t, std::int64_t)>& moves)
{
    const auto [ni, nj, nk] = model.size;
    for (std::int64_t k = 0; k < 2 * nk; ++k) {
        for (std::int64_t j = 0; j < 2 * nj; ++j) {
            for (std::int64_t i = 0; i < 2 * ni; ++i) {
                const auto index = static_cast<std::size_t>(i + 2 * ni * (j + 2 * nj * k));
                if (moves(i / 2, j / 2, k / 2))
                    set_depth(model, index, model.zcorn[index] + throw_);
            }
        }
    }
}

/// Faces of a cell-by-cell look at the definition.
std::vector<Face> expected_faces(const GridModel& model,
                                 const std::function<bool(std::int64_t, std::int64_t, std::int64_t)>& shown)
{
    std::vector<Face> list;
    const auto [ni, nj, nk] = model.size;
    const auto inside = [&](std::int64_t i, std::int64_t j, std::int64_t k) {
        return i >= 0 && j >= 0 && k >= 0 && i < ni && j < nj && k < nk;
    };
    // The corners of a side and of the opposite one in the same order of the other two axes.
    const auto side_depths = [&](std::int64_t i, std::int64_t j, std::int64_t k, int axis, int end) {
        const CellCorners c = cell_corners(model, i, j, k);
        std::vector<double> depths;
        for (std::size_t n = 0; n < 8; ++n) {
            if (static_cast<int>(n >> axis & 1) == end)
                depths.push_back(c[n][2]);
        }
        return depths;
    };
    for (std::int64_t k = 0; k < nk; ++k) {
        for (std::int64_t j = 0; j < nj; ++j) {
            for (std::int64_t i = 0; i < ni; ++i) {
                if (!shown(i, j, k))
                    continue;
                for (int side = 0; side < 6; ++side) {
                    const int axis = side / 2, end = side % 2;
                    std::array<std::int64_t, 3> next{i, j, k};
                    bool covered = false;
                    const std::vector<double> own = side_depths(i, j, k, axis, end);
                    while (true) {
                        next[static_cast<std::size_t>(axis)] += end ? 1 : -1;
                        if (!inside(next[0], next[1], next[2]) ||
                            side_depths(next[0], next[1], next[2], axis, 1 - end) != own)
                            break;
                        if (shown(next[0], next[1], next[2])) {
                            covered = true;
                            break;
                        }
                        if (axis != 2 || side_depths(next[0], next[1], next[2], 2, 0) !=
                                             side_depths(next[0], next[1], next[2], 2, 1))
                            break;
                    }
                    if (covered)
                        continue;
                    if (axis < 2) { // no area: both vertical edges have no length
                        const std::array<std::int64_t, 3> cell{i, j, k};
                        const CellCorners c = cell_corners(model, cell[0], cell[1], cell[2]);
                        bool flat = true;
                        for (std::size_t n = 0; n < 4; ++n) {
                            if (static_cast<int>(n >> axis & 1) == end)
                                flat = flat && c[n][2] == c[n + 4][2];
                        }
                        if (flat)
                            continue;
                    }
                    list.emplace_back(static_cast<std::uint32_t>(model.cell_index(i, j, k)), side);
                }
            }
        }
    }
    return list;
}

/// Every face's normal (right-handed, z up) leads away from its cell.
void expect_outward(const GridModel& model, const FaceSet& faces)
{
    for (std::size_t n = 0; n < faces.size(); ++n) {
        const auto [ni, nj, nk] = model.size;
        const std::int64_t cell = faces.cell[n];
        const Point3 centre = cell_centre(cell_corners(model, cell % ni, cell / ni % nj, cell / (ni * nj)));
        const Point3 inside{centre[0] - faces.origin[0], centre[1] - faces.origin[1], faces.origin[2] - centre[2]};
        const Point3 a = point(faces, n, 0), b = point(faces, n, 1), c = point(faces, n, 2), d = point(faces, n, 3);
        const Point3 u{c[0] - a[0], c[1] - a[1], c[2] - a[2]}, v{d[0] - b[0], d[1] - b[1], d[2] - b[2]};
        const Point3 normal{u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2], u[0] * v[1] - u[1] * v[0]};
        double outward = 0;
        for (std::size_t axis = 0; axis < 3; ++axis)
            outward += normal[axis] * ((a[axis] + b[axis] + c[axis] + d[axis]) / 4 - inside[axis]);
        ASSERT_GT(outward, 0) << "cell " << cell << " side " << int(faces.side[n]);
    }
}

GridModel mirrored_box(const GridSize& size)
{
    GridModel model = make_box(size, {100, 50, 10}, {1000, 2000, 1500});
    model.coord.visit_mutable([](auto coord) {
        for (std::size_t n = 0; n < coord.size(); n += 3)
            coord[n] = -coord[n]; // I runs to the west
    });
    return model;
}

GridModel random_model(unsigned seed)
{
    std::mt19937 random(seed);
    const auto pick = [&random](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
    GridModel model = make_box({1 + pick(12), 1 + pick(9), 1 + pick(7)}, {100, 50, 10}, {450'000, 6'700'000, 2000});
    for (auto& active : model.active)
        active = pick(4) > 0;
    const int fault_i = pick(12), fault_j = pick(9);
    move_down(model, 5, [=](std::int64_t i, std::int64_t, std::int64_t) { return i >= fault_i; });
    move_down(model, 10, [=](std::int64_t, std::int64_t j, std::int64_t) { return j >= fault_j; });
    // Some columns lose a layer.
    const auto [ni, nj, nk] = model.size;
    for (int n = 0; n < 10; ++n) {
        const std::int64_t i = pick(static_cast<int>(ni)), j = pick(static_cast<int>(nj)),
                           k = pick(static_cast<int>(nk));
        model.active[static_cast<std::size_t>(model.cell_index(i, j, k))] = pick(2) > 0;
        for (std::int64_t kk = k; kk < nk; ++kk) {
            for (const std::int64_t c : {0, 1}) {
                if (kk == k && c == 0)
                    continue;
                for (const std::int64_t b : {0, 1}) {
                    for (const std::int64_t a : {0, 1}) {
                        const auto at =
                            static_cast<std::size_t>((2 * kk + c) * 4 * ni * nj + (2 * j + b) * 2 * ni + 2 * i + a);
                        set_depth(model, at, model.zcorn[at] - 10);
                    }
                }
            }
        }
    }
    return model;
}

} // namespace

TEST(GridFaces, ABoxHasItsSurface)
{
    for (const GridSize size : {GridSize{1, 1, 1}, {7, 5, 3}, {1, 6, 4}, {6, 1, 4}, {6, 4, 1}, {300, 2, 2}}) {
        const auto [ni, nj, nk] = size;
        const GridModel model = make_box(size, {100, 50, 10}, {1000, 2000, 1500});
        const FaceSet faces = filtered_faces(model);
        EXPECT_EQ(faces.size(), static_cast<std::size_t>(2 * (ni * nj + nj * nk + ni * nk)));
        EXPECT_EQ(faces.points.size(), 12 * faces.size());
        EXPECT_EQ(faces.side.size(), faces.size());
        expect_outward(model, faces);
    }
}

TEST(GridFaces, PointsAreDrawnUpwardsFromTheOrigin)
{
    const GridModel model = make_box({1, 1, 1}, {100, 50, 10}, {1000, 2000, 1500});
    const FaceSet faces = filtered_faces(model);
    ASSERT_EQ(faces.size(), 6u);
    EXPECT_EQ(faces.origin, (Point3{1050, 2025, 1500}));
    const std::vector<Face> sides{{0, 0}, {0, 1}, {0, 2}, {0, 3}, {0, 4}, {0, 5}};
    EXPECT_EQ(listed(faces), sides);
    for (std::size_t corner = 0; corner < 4; ++corner) {
        EXPECT_EQ(point(faces, 0, corner)[0], -50) << "the I- side is in the west";
        EXPECT_EQ(point(faces, 3, corner)[1], 25) << "the J+ side is in the north";
        EXPECT_EQ(point(faces, 4, corner)[2], 0) << "the K- side is the top";
        EXPECT_EQ(point(faces, 5, corner)[2], -10) << "the K+ side lies below";
    }
}

TEST(GridFaces, LargeCoordinatesLoseNothing)
{
    const GridModel model = make_box({10, 10, 2}, {0.25, 0.25, 0.25}, {450'000, 6'700'000, 3000});
    const FaceSet faces = filtered_faces(model);
    for (std::size_t n = 0; n < faces.points.size(); ++n) {
        const double number = faces.points[n] + (n % 3 == 2 ? -faces.origin[2] : faces.origin[n % 3]);
        EXPECT_EQ(std::fmod(number, 0.25), 0) << "corners lie on quarters of a metre";
    }
}

TEST(GridFaces, HolesShowTheirWalls)
{
    GridModel model = make_box({5, 5, 5}, {100, 50, 10});
    model.active[static_cast<std::size_t>(model.cell_index(2, 2, 2))] = 0;
    EXPECT_EQ(filtered_faces(model).size(), 6u * 25 + 6);
    model.active[0] = 0; // a corner: three faces go, three come
    EXPECT_EQ(filtered_faces(model).size(), 6u * 25 + 6);
    model.active[static_cast<std::size_t>(model.cell_index(2, 2, 0))] = 0; // amid a side: one goes, five come
    EXPECT_EQ(filtered_faces(model).size(), 6u * 25 + 6 + 4);
    CellFilter all;
    all.active_only = false;
    EXPECT_EQ(filtered_faces(model, all).size(), 6u * 25);
    std::ranges::fill(model.active, std::uint8_t{0});
    EXPECT_EQ(filtered_faces(model).size(), 0u);
}

TEST(GridFaces, FaultsShowBothSides)
{
    GridModel model = make_box({6, 4, 3}, {100, 50, 10});
    const std::size_t surface = filtered_faces(model).size();
    move_down(model, 5, [](std::int64_t i, std::int64_t, std::int64_t) { return i >= 3; });
    EXPECT_EQ(filtered_faces(model).size(), surface + 2 * 4 * 3);
    expect_outward(model, filtered_faces(model));
    move_down(model, 5, [](std::int64_t, std::int64_t j, std::int64_t) { return j >= 1; });
    EXPECT_EQ(filtered_faces(model).size(), surface + 2 * 4 * 3 + 2 * 6 * 3);
    move_down(model, 1, [](std::int64_t, std::int64_t, std::int64_t k) { return k >= 2; }); // a gap between layers
    EXPECT_EQ(filtered_faces(model).size(), surface + 2 * 4 * 3 + 2 * 6 * 3 + 2 * 6 * 4);
}

TEST(GridFaces, MirroredGridsLookOutwardsToo)
{
    const GridModel model = mirrored_box({4, 3, 2});
    EXPECT_EQ(handedness(model), -1);
    const FaceSet faces = filtered_faces(model);
    EXPECT_EQ(faces.size(), 2u * (12 + 6 + 8));
    expect_outward(model, faces);
}

TEST(GridFaces, CellsWithoutHeightOpenNoGap)
{
    // Layer 1 of column 0 is pinched out and inactive.
    GridModel model = make_box({2, 1, 3}, {100, 50, 10});
    const std::size_t surface = filtered_faces(model).size();
    for (const std::int64_t k : {1, 2}) {
        for (const std::int64_t c : {0, 1}) {
            for (const std::int64_t b : {0, 1}) {
                for (const std::int64_t a : {0, 1}) {
                    if (k == 1 && c == 0)
                        continue;
                    const auto at = static_cast<std::size_t>((2 * k + c) * 8 + b * 4 + a);
                    set_depth(model, at, model.zcorn[at] - 10);
                }
            }
        }
    }
    model.active[static_cast<std::size_t>(model.cell_index(0, 0, 1))] = 0;
    // Column 0: two layers. Beside them the two columns differ in layers 1 and 2.
    const FaceSet faces = filtered_faces(model);
    EXPECT_EQ(faces.size(),
              surface - 3 /* outer sides of the pinched cell */ + 1 /* wall of layer 1 */ + 2 /* of layer 2 */);
    for (const Face& face : listed(faces))
        EXPECT_NE(face, Face(0, 5)) << "the base of the upper cell is covered by the lower one";
    expect_outward(model, faces);
}

TEST(GridFaces, BrokenCornersAreLeftOut)
{
    GridModel model = make_box({3, 3, 3}, {100, 50, 10});
    const double nan = std::numeric_limits<double>::quiet_NaN();
    set_depth(model, static_cast<std::size_t>(0), nan); // a corner of the first cell's top
    const FaceSet faces = filtered_faces(model);
    for (const float number : faces.points)
        ASSERT_TRUE(std::isfinite(number));
    EXPECT_EQ(faces.size(), 54u - 3) << "the three faces at that corner";
}

TEST(GridFaces, SlicesEndInFaces)
{
    const GridModel model = make_box({8, 6, 5}, {100, 50, 10});
    CellFilter filter;
    filter.ranges[2] = {{1, 1}};
    EXPECT_EQ(filtered_faces(model, filter).size(), 2u * (8 * 6 + 8 + 6));
    filter.ranges[2] = {{0, 0}, {4, 9}}; // the end beyond the grid is left out
    EXPECT_EQ(filtered_faces(model, filter).size(), 4u * (8 * 6 + 8 + 6));
    filter.ranges[0] = {{2, 3}};
    EXPECT_EQ(filtered_faces(model, filter).size(), 4u * (2 * 6 + 2 + 6)) << "a box: in the ranges of both axes";
    filter.slices = CellFilter::Slices::Fence;
    const auto in = [](std::int64_t i, std::int64_t, std::int64_t k) { return i == 2 || i == 3 || k == 0 || k == 4; };
    EXPECT_EQ(listed(filtered_faces(model, filter)), expected_faces(model, in));
    EXPECT_EQ(ShownCells(model, filter).count(), 2 * 48 + 3 * 12);
    filter.ranges = {};
    filter.ranges[1] = {{7, 9}};
    EXPECT_EQ(filtered_faces(model, filter).size(), 0u) << "wholly outside the grid";
    filter.ranges = {};
    EXPECT_EQ(ShownCells(model, filter).count(), model.cells()) << "a fence without ranges is the whole grid";
}

TEST(GridFaces, ThresholdAndRegion)
{
    GridModel model = make_box({4, 3, 2}, {100, 50, 10});
    PropertyData porosity{.name = "PORO", .unit = "", .values = std::vector<float>(24, 0.1f), .no_data = -1.0};
    std::get<std::vector<float>>(porosity.values)[5] = 0.3f;
    std::get<std::vector<float>>(porosity.values)[6] = -1;
    std::get<std::vector<float>>(porosity.values)[7] = std::numeric_limits<float>::quiet_NaN();
    PropertyData facies{.name = "FACIES", .unit = "", .values = std::vector<std::int32_t>(24, 1), .no_data = {}};
    std::get<std::vector<std::int32_t>>(facies.values)[0] = 4;
    std::get<std::vector<std::int32_t>>(facies.values)[1] = 2;
    model.properties = {porosity, facies};
    model.regions = {{"east", std::vector<std::uint8_t>(24, 0), false}};
    model.regions[0].flags[3] = 1;

    CellFilter filter;
    filter.threshold = CellThreshold{"PORO", 0.3, {}, {}};
    EXPECT_EQ(ShownCells(model, filter).count(), 1) << "a bound in decimals finds the 32-bit value";
    filter.threshold = CellThreshold{"PORO", {}, {}, {}};
    EXPECT_EQ(ShownCells(model, filter).count(), 22) << "no value, not shown";
    filter.threshold = CellThreshold{"FACIES", {}, {}, {4, 2, 77}};
    EXPECT_EQ(ShownCells(model, filter).count(), 2);
    filter.threshold = CellThreshold{"FACIES", 2.0, 3.0, {}};
    EXPECT_EQ(ShownCells(model, filter).count(), 1);
    filter.threshold = CellThreshold{"NO SUCH", 2.0, 3.0, {}};
    EXPECT_EQ(ShownCells(model, filter).count(), 24);
    filter = {};
    filter.region = "east";
    EXPECT_EQ(filtered_faces(model, filter).size(), 6u);
    filter.region = "no such";
    EXPECT_EQ(ShownCells(model, filter).count(), 24);
}

TEST(GridFaces, AgreesWithTheDefinitionOnRandomGrids)
{
    for (unsigned seed = 1; seed <= 60; ++seed) {
        SCOPED_TRACE(seed);
        const GridModel model = random_model(seed);
        const auto active = [&](std::int64_t i, std::int64_t j, std::int64_t k) {
            return model.active[static_cast<std::size_t>(model.cell_index(i, j, k))] != 0;
        };
        EXPECT_EQ(listed(filtered_faces(model)), expected_faces(model, active));

        SectionSets sections;
        sections[0] = {0, 3};
        sections[1] = {2};
        const ShownCells painted(model, sections);
        const auto in_sections = [&](std::int64_t i, std::int64_t j, std::int64_t k) {
            return active(i, j, k) && (i == 0 || i == 3 || j == 2);
        };
        EXPECT_EQ(listed(visible_faces(model, painted)), expected_faces(model, in_sections));

        CellFilter box;
        box.ranges = {{{{1, 4}}, {}, {{0, 2}}}};
        const auto in_box = [&](std::int64_t i, std::int64_t j, std::int64_t k) {
            return active(i, j, k) && i >= 1 && i <= 4 && k <= 2;
        };
        EXPECT_EQ(listed(filtered_faces(model, box)), expected_faces(model, in_box));
    }
}

TEST(GridFaces, DoesNotDependOnTheNumberOfThreads)
{
    const GridModel model = make_example({60, 50, 40}, 3);
    std::vector<FaceSet> results;
    for (const std::size_t threads : {1u, 2u, 7u}) {
        const tbb::global_control limit(tbb::global_control::max_allowed_parallelism, threads);
        results.push_back(filtered_faces(model));
    }
    EXPECT_GT(results[0].size(), 5000u);
    for (const FaceSet& other : results) {
        EXPECT_EQ(other.points, results[0].points);
        EXPECT_EQ(other.cell, results[0].cell);
        EXPECT_EQ(other.side, results[0].side);
    }
}

namespace {

/// A box in which a share of the cells is hidden at random, with a hollow of hidden cells that has no way out.
struct Ragged {
    GridModel model = make_box({20, 18, 16}, {10, 10, 5});
    std::vector<std::uint8_t> flags = std::vector<std::uint8_t>(static_cast<std::size_t>(model.cells()), 1);

    explicit Ragged(unsigned hidden_of_ten)
    {
        std::mt19937 random(hidden_of_ten);
        for (auto& flag : flags)
            flag = random() % 10 >= hidden_of_ten;
        for (std::int64_t k = 5; k < 10; ++k) {
            for (std::int64_t j = 5; j < 10; ++j) {
                for (std::int64_t i = 5; i < 10; ++i)
                    flags[at(i, j, k)] = !(i == 7 && j == 7 && k == 7);
            }
        }
        model.regions.push_back({"shown", flags, false});
    }
    [[nodiscard]] std::size_t at(std::int64_t i, std::int64_t j, std::int64_t k) const
    {
        return static_cast<std::size_t>(model.cell_index(i, j, k));
    }
    [[nodiscard]] FaceList nearest(std::size_t most) const
    {
        CellFilter filter;
        filter.region = "shown";
        const ShownCells shown(model, filter), body(model, CellFilter());
        return nearest_faces(model, shown, body, list_visible_faces(model, body).value(), most);
    }
    [[nodiscard]] FaceList all() const
    {
        CellFilter filter;
        filter.region = "shown";
        return list_visible_faces(model, ShownCells(model, filter)).value();
    }
};

std::size_t bits_of(const FaceList& list)
{
    std::size_t count = 0;
    for (const std::uint8_t sides : list.sides)
        count += static_cast<std::size_t>(std::popcount(sides));
    return count;
}

} // namespace

TEST(FaceList, SaysWhatTheFacesAre)
{
    const GridModel model = make_example({20, 16, 10}, 1);
    const ShownCells shown(model, CellFilter());
    const FaceList list = list_visible_faces(model, shown).value();
    const FaceSet faces = visible_faces(model, shown);
    EXPECT_EQ(list.faces, faces.size());
    EXPECT_EQ(bits_of(list), faces.size());
    EXPECT_TRUE(std::ranges::is_sorted(list.cell));
    EXPECT_EQ(listed(faces_of(model, list)), listed(faces));
    EXPECT_TRUE(list_visible_faces(model, shown, faces.size()));
    EXPECT_FALSE(list_visible_faces(model, shown, faces.size() - 1)) << "one too many";
    EXPECT_EQ(faces_of(model, FaceList()).size(), 0u);
}

TEST(FaceList, ASampleTellsTheNumber)
{
    const Ragged ragged(5);
    CellFilter filter;
    filter.region = "shown";
    const double guess = static_cast<double>(guess_visible_faces(ragged.model, ShownCells(ragged.model, filter)));
    EXPECT_NEAR(guess / static_cast<double>(ragged.all().faces), 1, 0.25);
}

TEST(NearestFaces, AllThatCanBeSeenWhenThereIsNoLimit)
{
    const Ragged ragged(6);
    const FaceList near = ragged.nearest(std::numeric_limits<std::size_t>::max()), all = ragged.all();
    EXPECT_EQ(bits_of(near), near.faces);
    EXPECT_TRUE(std::ranges::is_sorted(near.cell));
    // Only hollows without a way out are left away; the one at 7, 7, 7 has six walls.
    std::size_t missing = 0;
    for (std::size_t n = 0, m = 0; n < all.cell.size(); ++n) {
        const bool found = m < near.cell.size() && near.cell[m] == all.cell[n];
        const std::uint8_t sides = found ? near.sides[m++] : std::uint8_t{0};
        EXPECT_EQ(sides & ~all.sides[n], 0) << "a face that is none";
        missing += static_cast<std::size_t>(std::popcount(static_cast<std::uint8_t>(all.sides[n] & ~sides)));
    }
    EXPECT_EQ(near.faces + missing, all.faces);
    EXPECT_GE(missing, 6u);
    EXPECT_LT(missing, all.faces / 10);
    const tbb::global_control one(tbb::global_control::max_allowed_parallelism, 1);
    EXPECT_EQ(ragged.nearest(std::numeric_limits<std::size_t>::max()), near);
}

TEST(NearestFaces, TheOuterOnesFirst)
{
    const Ragged ragged(3);
    const FaceList surface = list_visible_faces(ragged.model, ShownCells(ragged.model, CellFilter())).value();
    std::size_t former = 0;
    const std::size_t all = ragged.all().faces;
    for (const std::size_t most : {std::size_t{1}, all / 3, all / 2, 2 * all / 3, all}) {
        const FaceList list = ragged.nearest(most);
        EXPECT_GE(list.faces, former);
        if (former > 0) {
            EXPECT_LE(list.faces, std::max(most, former)) << "beyond what comes in any case";
        }
        former = list.faces;
        for (std::size_t n = 0; n < surface.cell.size(); ++n) {
            if (!ragged.flags[surface.cell[n]])
                continue;
            const auto place = std::ranges::lower_bound(list.cell, surface.cell[n]);
            ASSERT_TRUE(place != list.cell.end() && *place == surface.cell[n]);
            const std::uint8_t sides = list.sides[static_cast<std::size_t>(place - list.cell.begin())];
            EXPECT_EQ(sides & surface.sides[n], surface.sides[n]) << "the surface is whole";
        }
    }
}

TEST(SectionSets, ReadsTheAttribute)
{
    const GridSize size{5, 4, 3};
    std::int64_t outside = -1;
    EXPECT_EQ(section_sets(" 3 1 0 0 2 0 0 3 0 0", size, &outside), SectionSets());
    EXPECT_EQ(outside, 0);
    EXPECT_EQ(section_sets(" 4 3 1 0 3 1 2 1 0 0 2 0 0 ", size), (SectionSets{{{}, {}, {0, 2}}}));
    EXPECT_EQ(section_sets("3 1 1 4 1 1 5 1 1 -1", size, &outside), (SectionSets{{{4}, {}, {}}}));
    EXPECT_EQ(outside, 2) << "beyond both ends";
    EXPECT_EQ(section_sets("2 1 1 2 1 0 0", size), SectionSets()) << "flag 0 takes the axis' sections back";
    EXPECT_EQ(section_sets("3 1 1 2 4 1 1", size), (SectionSets{{{2}, {}, {}}})) << "up to where it is broken";
    EXPECT_EQ(section_sets("", size), SectionSets());
    EXPECT_EQ(section_sets("x", size), SectionSets());
}

TEST(GridOutline, FollowsTopBaseAndCorners)
{
    const GridModel model = make_box({7, 5, 3}, {100, 50, 10});
    EXPECT_EQ(grid_outline(model).size(), 2u * (2 * 7 + 2 * 5) + 4);
    GridModel hole = model;
    for (std::int64_t k = 0; k < 3; ++k)
        hole.active[static_cast<std::size_t>(hole.cell_index(0, 0, k))] = 0;
    // The corner column is gone: as many edges, two turns more.
    EXPECT_EQ(grid_outline(hole).size(), 2u * (2 * 7 + 2 * 5) + 6);
    GridModel none = model;
    std::ranges::fill(none.active, std::uint8_t{0});
    EXPECT_EQ(grid_outline(none).size(), grid_outline(model).size()) << "nothing active: round all cells";
    GridModel faulted = model;
    move_down(faulted, 5, [](std::int64_t i, std::int64_t, std::int64_t) { return i >= 3; });
    EXPECT_EQ(grid_outline(faulted).size(), 2u * (2 * 7 + 2 * 5) + 4 + 4)
        << "a step at each end of the fault, top and base";
}

TEST(CellEdges, TwelveOrFewer)
{
    GridModel model = make_box({2, 2, 2}, {100, 50, 10});
    EXPECT_EQ(cell_edges(model, 1, 1, 1).size(), 12u);
    for (std::size_t n = 0; n < 8 * 8; ++n)
        set_depth(model, n, 100);
    EXPECT_EQ(cell_edges(model, 0, 0, 0).size(), 8u) << "no height, no vertical edges";
}
