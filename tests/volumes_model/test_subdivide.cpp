#include "random_grid.h"

#include "lodex/volumes/model/CellGeometry.h"
#include "lodex/volumes/model/Create.h"
#include "lodex/volumes/model/FaultBlocks.h"
#include "lodex/volumes/model/Subdivide.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace {

using namespace lodex;
using namespace volumes_model_tests;

constexpr auto even = Lodex::LayerInfo::Proportional;
constexpr auto from_base = Lodex::LayerInfo::ParallelToBase; // along I and J: from the minus side
constexpr auto from_top = Lodex::LayerInfo::ParallelToTop;   // along I and J: from the plus side
constexpr double foot = 0.3048;

GridModel numbered_box(const GridSize& size, const std::array<double, 3>& spacing = {10, 10, 12})
{
    GridModel model = make_box(size, spacing, {0, 0, 1000});
    model.id = next_grid_id();
    std::vector<std::int32_t> numbers(static_cast<std::size_t>(model.cells()));
    std::iota(numbers.begin(), numbers.end(), 0);
    model.properties.push_back({"N", "", std::move(numbers), {}, {}, false});
    return model;
}

SubdivideRequest along(int axis, std::vector<SectionDivision> divisions)
{
    SubdivideRequest request;
    request.axis = axis;
    request.divisions = std::move(divisions);
    request.copy_properties = true;
    request.copy_regions = true;
    return request;
}

GridModel subdivided(const GridModel& source, const SubdivideRequest& request)
{
    SubdivideReport report;
    return subdivide_sections(source, request, report);
}

const std::vector<std::int32_t>& numbers(const GridModel& model)
{
    return std::get<std::vector<std::int32_t>>(model.find_property("N")->values);
}

double& depth_at(GridModel& model, std::int64_t i, std::int64_t j, std::int64_t k, int a, int b, int c)
{
    double* found = nullptr;
    model.zcorn.visit_mutable([&](auto depths) {
        if constexpr (std::is_same_v<typename decltype(depths)::element_type, double>)
            found = &depths[static_cast<std::size_t>(((2 * k + c) * 2 * model.size[1] + 2 * j + b) * 2 * model.size[0] +
                                                     2 * i + a)];
    });
    return *found;
}

// Coordinate `part` of the boundaries between the cells of a row along `axis` at their first corners.
std::vector<double> boundaries(const GridModel& model, int axis, std::size_t part, std::size_t corner = 0)
{
    std::vector<double> result;
    std::array<std::int64_t, 3> n{};
    const std::size_t step = std::size_t{1} << axis;
    for (n[static_cast<std::size_t>(axis)] = 0;
         n[static_cast<std::size_t>(axis)] < model.size[static_cast<std::size_t>(axis)];
         ++n[static_cast<std::size_t>(axis)]) {
        const CellCorners corners = cell_corners(model, n[0], n[1], n[2]);
        if (result.empty())
            result.push_back(corners[corner][part]);
        EXPECT_EQ(corners[corner][part], result.back()) << "cells hang together";
        result.push_back(corners[corner + step][part]);
    }
    return result;
}

void expect_near(const std::vector<double>& found, const std::vector<double>& wanted, double slack = 1e-9)
{
    ASSERT_EQ(found.size(), wanted.size());
    for (std::size_t n = 0; n < found.size(); ++n)
        EXPECT_NEAR(found[n], wanted[n], slack) << "boundary " << n;
}

// A column of one cell of 12 from depth 1000 divided into three.
std::vector<double> column(Lodex::LayerInfo::LayeringStyle layering, std::optional<double> thickness,
                           SubdivideReport& report, bool percent = false, double unit = 1)
{
    SubdivideRequest request = along(2, {{0, 2, layering, thickness}});
    request.percent = percent;
    request.thickness_unit = unit;
    return boundaries(subdivide_sections(numbered_box({1, 1, 1}), request, report), 2, 2);
}

using Numbers = std::vector<double>;

TEST(SubdivideColumn, EvenDivision)
{
    SubdivideReport report;
    EXPECT_EQ(column(even, 5, report), (Numbers{1000, 1004, 1008, 1012})) << "the thickness is not looked at";
    EXPECT_EQ(column(even, {}, report), (Numbers{1000, 1004, 1008, 1012}));
    EXPECT_EQ(column(from_top, {}, report), (Numbers{1000, 1004, 1008, 1012})) << "no thickness: evenly";
    EXPECT_EQ(column(from_base, {}, report), (Numbers{1000, 1004, 1008, 1012}));
    EXPECT_EQ(column(even, -5, report), (Numbers{1000, 1004, 1008, 1012}));
    EXPECT_EQ(column(even, std::nan(""), report, true), (Numbers{1000, 1004, 1008, 1012}));
    EXPECT_EQ(report.pinched, 0);
    EXPECT_EQ(report.divided_cells, 1);
    EXPECT_EQ(report.active_after, 3);
    EXPECT_NEAR(report.max_relative_difference, 0, 1e-14);
}

TEST(SubdivideColumn, ThicknessFromTheTopOrTheBase)
{
    SubdivideReport report;
    EXPECT_EQ(column(from_top, 5, report), (Numbers{1000, 1005, 1010, 1012}));
    EXPECT_EQ(column(from_base, 5, report), (Numbers{1000, 1002, 1007, 1012}));
    EXPECT_EQ(report.pinched, 0);
    EXPECT_EQ(column(from_top, 2, report), (Numbers{1000, 1002, 1004, 1012})) << "the last one takes the rest";
    EXPECT_EQ(column(from_base, 2, report), (Numbers{1000, 1008, 1010, 1012}));
    EXPECT_EQ(report.active_after, 3);
}

TEST(SubdivideColumn, WhatIsPinchedToNothingIsInactive)
{
    SubdivideReport report;
    EXPECT_EQ(column(from_top, 7, report), (Numbers{1000, 1007, 1012, 1012}));
    EXPECT_EQ(report.pinched, 1);
    EXPECT_EQ(report.active_after, 2);
    EXPECT_EQ(column(from_top, 6, report), (Numbers{1000, 1006, 1012, 1012}));
    EXPECT_EQ(report.pinched, 1);
    EXPECT_EQ(column(from_base, 20, report), (Numbers{1000, 1000, 1000, 1012}));
    EXPECT_EQ(report.pinched, 2);
    EXPECT_EQ(column(from_top, 0, report), (Numbers{1000, 1000, 1000, 1012})) << "cells of no thickness";
    EXPECT_EQ(report.pinched, 2);
    EXPECT_EQ(report.active_after, 1);
    EXPECT_EQ(report.bulk_volume_after, 1200);
    EXPECT_EQ(report.total_volume_after, 1200);

    SubdivideRequest request = along(2, {{0, 2, from_base, 7}});
    const GridModel result = subdivide_sections(numbered_box({1, 1, 1}), request, report);
    EXPECT_EQ(result.active, (std::vector<std::uint8_t>{0, 1, 1}));
    EXPECT_EQ(numbers(result), (std::vector<std::int32_t>{0, 0, 0})) << "values are the parent's all the same";
}

TEST(SubdivideColumn, PercentOfTheCell)
{
    SubdivideReport report;
    expect_near(column(from_top, 25, report, true), {1000, 1003, 1006, 1012}, 1e-12);
    expect_near(column(from_base, 25, report, true), {1000, 1006, 1009, 1012}, 1e-12);
    expect_near(column(from_top, 60, report, true), {1000, 1007.2, 1012, 1012}, 1e-12);
    EXPECT_EQ(report.pinched, 1);
    expect_near(column(from_top, 50, report, true), {1000, 1006, 1012, 1012}, 1e-12);
    EXPECT_EQ(report.pinched, 1);
    expect_near(column(from_top, 100.0 / 3, report, true), {1000, 1004, 1008, 1012}, 1e-12);
    EXPECT_EQ(report.pinched, 0);
    expect_near(column(from_top, 25, report, true, foot), {1000, 1003, 1006, 1012}, 1e-12);
}

TEST(SubdivideColumn, ThicknessInItsUnit)
{
    SubdivideReport report;
    expect_near(column(from_top, 10, report, false, foot), {1000, 1003.048, 1006.096, 1012}, 1e-12);
    expect_near(column(from_base, 10, report, false, foot), {1000, 1005.904, 1008.952, 1012}, 1e-12);
}

TEST(SubdivideColumn, EachEdgeOfAWedgeByItself)
{
    GridModel wedge = numbered_box({1, 1, 1});
    const std::array<double, 4> heights{0, 4, 8, 12};
    for (int edge = 0; edge < 4; ++edge)
        depth_at(wedge, 0, 0, 0, edge & 1, edge >> 1, 1) = 1000 + heights[static_cast<std::size_t>(edge)];
    SubdivideReport report;
    GridModel result = subdivide_sections(wedge, along(2, {{0, 2, from_top, 5}}), report);
    EXPECT_EQ(boundaries(result, 2, 2, 0), (Numbers{1000, 1000, 1000, 1000}));
    EXPECT_EQ(boundaries(result, 2, 2, 1), (Numbers{1000, 1004, 1004, 1004}));
    EXPECT_EQ(boundaries(result, 2, 2, 2), (Numbers{1000, 1005, 1008, 1008}));
    EXPECT_EQ(boundaries(result, 2, 2, 3), (Numbers{1000, 1005, 1010, 1012}));
    EXPECT_EQ(report.pinched, 0) << "the third cell has one edge of height 2";
    EXPECT_NEAR(report.max_relative_difference, 0, 1e-12);
    result = subdivide_sections(wedge, along(2, {{0, 2, from_top, 6}}), report);
    EXPECT_EQ(boundaries(result, 2, 2, 3), (Numbers{1000, 1006, 1012, 1012}));
    EXPECT_EQ(result.active, (std::vector<std::uint8_t>{1, 1, 0}));
    result = subdivide_sections(wedge, along(2, {{0, 2, from_base, 5}}), report);
    EXPECT_EQ(boundaries(result, 2, 2, 1), (Numbers{1000, 1000, 1000, 1004}));
    EXPECT_EQ(boundaries(result, 2, 2, 2), (Numbers{1000, 1000, 1003, 1008}));
    EXPECT_EQ(boundaries(result, 2, 2, 3), (Numbers{1000, 1002, 1007, 1012}));
}

TEST(SubdivideColumn, AFlatCellKeepsItsFlagWhenDividedEvenly)
{
    GridModel flat = numbered_box({1, 1, 2});
    for (int edge = 0; edge < 4; ++edge)
        depth_at(flat, 0, 0, 0, edge & 1, edge >> 1, 1) = 1000;
    SubdivideReport report;
    GridModel result = subdivide_sections(flat, along(2, {{0, 1}}), report);
    EXPECT_EQ(result.active, (std::vector<std::uint8_t>{1, 1, 1}));
    EXPECT_EQ(report.max_relative_difference, 0);
    result = subdivide_sections(flat, along(2, {{0, 1, from_top, 3}}), report);
    EXPECT_EQ(result.active, (std::vector<std::uint8_t>{0, 0, 1}));
    EXPECT_EQ(report.pinched, 2);
    flat.active = {0, 1};
    result = subdivide_sections(flat, along(2, {{0, 1, from_top, 3}}), report);
    EXPECT_EQ(report.pinched, 0) << "they were inactive before";
}

TEST(SubdivideColumn, AlongThePillarOrVertically)
{
    GridModel box = numbered_box({1, 1, 1});
    // Slopes dx/dz, dy/dz of the four pillars: cosines 0.8, 0.6, 1/3 and 1.
    const std::array<std::array<double, 2>, 4> slopes{{{0.75, 0}, {0, 4.0 / 3}, {2, 2}, {0, 0}}};
    std::vector<double> coord;
    for (int pillar = 0; pillar < 4; ++pillar) {
        const auto [sx, sy] = slopes[static_cast<std::size_t>(pillar)];
        const double x = 100 * (pillar & 1), y = 100 * (pillar >> 1);
        // The points that a file gives lie anywhere, in either order.
        const double first = pillar == 1 ? 1100 : 900, second = pillar == 1 ? 950 : 1013;
        coord.insert(coord.end(), {x + (first - 1000) * sx, y + (first - 1000) * sy, first, x + (second - 1000) * sx,
                                   y + (second - 1000) * sy, second});
    }
    box.coord = RealArray(coord);
    SubdivideRequest request = along(2, {{0, 2, from_top, 5}});
    GridModel result = subdivided(box, request);
    expect_near(boundaries(result, 2, 2, 0), {1000, 1004, 1008, 1012}, 1e-12);
    expect_near(boundaries(result, 2, 2, 1), {1000, 1003, 1006, 1012}, 1e-12);
    expect_near(boundaries(result, 2, 2, 2), {1000, 1000 + 5.0 / 3, 1000 + 10.0 / 3, 1012}, 1e-12);
    expect_near(boundaries(result, 2, 2, 3), {1000, 1005, 1010, 1012}, 1e-12);
    // Really 5 along the pillar.
    const CellCorners corners = cell_corners(result, 0, 0, 0);
    for (std::size_t n = 0; n < 4; ++n)
        EXPECT_NEAR(std::hypot(corners[n + 4][0] - corners[n][0], corners[n + 4][1] - corners[n][1],
                               corners[n + 4][2] - corners[n][2]),
                    5, 1e-9);
    request.divisions[0].layering = from_base;
    expect_near(boundaries(subdivided(box, request), 2, 2, 0), {1000, 1004, 1008, 1012}, 1e-12);
    expect_near(boundaries(subdivided(box, request), 2, 2, 1), {1000, 1006, 1009, 1012}, 1e-12);

    request.vertical = true;
    for (std::size_t n = 0; n < 4; ++n)
        EXPECT_EQ(boundaries(subdivided(box, request), 2, 2, n), (Numbers{1000, 1002, 1007, 1012}));
    request.percent = true;
    request.divisions[0].thickness = 25;
    for (const bool vertical : {false, true}) {
        request.vertical = vertical;
        expect_near(boundaries(subdivided(box, request), 2, 2, 2), {1000, 1006, 1009, 1012}, 1e-12);
    }
}

TEST(SubdivideColumn, APillarWithoutSlopeIsVertical)
{
    GridModel box = numbered_box({1, 1, 1});
    std::vector<double> coord;
    for (std::size_t n = 0; n < 24; ++n)
        coord.push_back(box.coord[n]);
    coord[5] = coord[2]; // no height
    coord[3] += 50;
    box.coord = RealArray(coord);
    EXPECT_EQ(boundaries(subdivided(box, along(2, {{0, 2, from_top, 5}})), 2, 2), (Numbers{1000, 1005, 1010, 1012}));
}

TEST(SubdivideColumn, ACellOnItsHeadIsLaidOutTheOtherWay)
{
    GridModel box = numbered_box({1, 1, 1});
    for (int edge = 0; edge < 4; ++edge)
        depth_at(box, 0, 0, 0, edge & 1, edge >> 1, 1) = 988;
    EXPECT_EQ(boundaries(subdivided(box, along(2, {{0, 2, from_top, 5}})), 2, 2), (Numbers{1000, 995, 990, 988}));
    EXPECT_EQ(boundaries(subdivided(box, along(2, {{0, 2, from_base, 5}})), 2, 2), (Numbers{1000, 998, 993, 988}));
    EXPECT_EQ(boundaries(subdivided(box, along(2, {{0, 2, even, {}}})), 2, 2), (Numbers{1000, 996, 992, 988}));
}

TEST(SubdivideColumn, ARestBelowTheResolutionOfTheNumbersIsNothing)
{
    GridModel box = numbered_box({1, 1, 1});
    // 1/10 is no number of 32 bits: the cell is 0.00000038 higher than five times 0.1 says.
    std::vector<float> depths;
    for (std::size_t n = 0; n < 8; ++n)
        depths.push_back(n < 4 ? 3000.1F : 3000.6F);
    box.zcorn = RealArray(depths);
    SubdivideReport report;
    const GridModel result = subdivide_sections(box, along(2, {{0, 5, from_top, 0.1}}), report);
    EXPECT_EQ(report.pinched, 1);
    EXPECT_EQ(result.active, (std::vector<std::uint8_t>{1, 1, 1, 1, 1, 0}));
    EXPECT_TRUE(result.zcorn.is_double());
}

TEST(SubdivideRow, WidthsFromTheMinusOrThePlusSide)
{
    for (int axis = 0; axis < 2; ++axis) {
        const auto part = static_cast<std::size_t>(axis);
        const auto row = [&](Lodex::LayerInfo::LayeringStyle layering, std::optional<double> width,
                             SubdivideReport& report, bool percent = false) {
            SubdivideRequest request = along(axis, {{0, 2, layering, width}});
            request.percent = percent;
            const GridModel result = subdivide_sections(numbered_box({1, 1, 2}), request, report);
            EXPECT_EQ(boundaries(result, axis, 2), (Numbers{1000, 1000, 1000, 1000}));
            EXPECT_EQ(boundaries(result, axis, 2, axis == 0 ? 6 : 5), (Numbers{1012, 1012, 1012, 1012}));
            EXPECT_EQ(boundaries(result, axis, part, axis == 0 ? 6 : 5), boundaries(result, axis, part));
            EXPECT_EQ(result.pillars(), 8);
            return boundaries(result, axis, part);
        };
        SubdivideReport report;
        expect_near(row(even, 4, report), {0, 10.0 / 3, 20.0 / 3, 10});
        expect_near(row(from_base, {}, report), {0, 10.0 / 3, 20.0 / 3, 10});
        expect_near(row(from_base, 4, report), {0, 4, 8, 10}, 1e-12);
        expect_near(row(from_top, 4, report), {0, 2, 6, 10}, 1e-12);
        EXPECT_NEAR(report.max_relative_difference, 0, 1e-12);
        expect_near(row(from_base, 30, report, true), {0, 3, 6, 10}, 1e-12);
        expect_near(row(from_top, 30, report, true), {0, 4, 7, 10}, 1e-12);
        EXPECT_EQ(report.pinched, 0);
        expect_near(row(from_base, 6, report), {0, 6, 10, 10}, 1e-12);
        EXPECT_EQ(report.pinched, 2) << "one in each K layer";
        expect_near(row(from_top, 15, report), {0, 0, 0, 10}, 1e-12);
        EXPECT_EQ(report.pinched, 4);
        EXPECT_EQ(report.active_after, 2);
        EXPECT_NEAR(report.bulk_volume_after, 2400, 1e-9);
        expect_near(row(from_top, 60, report, true), {0, 0, 4, 10}, 1e-12);
        EXPECT_EQ(report.pinched, 2);
        expect_near(row(from_base, 0, report), {0, 0, 0, 10}, 1e-12);
        EXPECT_EQ(report.pinched, 4);
    }
}

TEST(SubdivideRow, NewCornersStandOnTheCellsOwnEdges)
{
    // Vertical pillars, a top that falls by 10 from one pillar to the next and a base that rises.
    GridModel box = numbered_box({1, 1, 1});
    for (int b = 0; b < 2; ++b) {
        depth_at(box, 0, 0, 0, 1, b, 0) = 1010;
        depth_at(box, 0, 0, 0, 0, b, 1) = 1040;
        depth_at(box, 0, 0, 0, 1, b, 1) = 1020;
    }
    const GridModel result = subdivided(box, along(0, {{0, 2, from_base, 4}}));
    expect_near(boundaries(result, 0, 2, 0), {1000, 1004, 1008, 1010}, 1e-12);
    expect_near(boundaries(result, 0, 2, 4), {1040, 1032, 1024, 1020}, 1e-12);
}

// Distance of a point from the line through two others.
double distance(const Point3& p, const Point3& a, const Point3& b)
{
    double along = 0, length = 0, far = 0;
    for (std::size_t n = 0; n < 3; ++n) {
        along += (p[n] - a[n]) * (b[n] - a[n]);
        length += (b[n] - a[n]) * (b[n] - a[n]);
    }
    for (std::size_t n = 0; n < 3; ++n)
        far += std::pow(p[n] - a[n] - along / length * (b[n] - a[n]), 2);
    return std::sqrt(far);
}

// Pillars of a one-cell grid: x, y at depth 1000 and slopes.
GridModel leaning_cell(const std::array<std::array<double, 4>, 4>& pillars)
{
    GridModel box = numbered_box({1, 1, 1});
    std::vector<double> coord;
    for (std::size_t n = 0; n < 4; ++n) {
        const auto& [x, y, sx, sy] = pillars[n];
        // Every pillar has its two points at depths of its own.
        const double first = 900 + 20 * static_cast<double>(n), second = 1100 - 10 * static_cast<double>(n);
        coord.insert(coord.end(), {x + (first - 1000) * sx, y + (first - 1000) * sy, first, x + (second - 1000) * sx,
                                   y + (second - 1000) * sy, second});
    }
    box.coord = RealArray(coord);
    depth_at(box, 0, 0, 0, 1, 0, 0) = 1006;
    depth_at(box, 0, 0, 0, 1, 1, 0) = 1009;
    depth_at(box, 0, 0, 0, 0, 1, 1) = 1030;
    depth_at(box, 0, 0, 0, 1, 1, 1) = 1026;
    return box;
}

void expect_on_edges(const GridModel& box, const GridModel& result, int axis)
{
    const CellCorners old = cell_corners(box, 0, 0, 0);
    const std::size_t step = std::size_t{1} << axis;
    for (std::int64_t n = 0; n < result.size[static_cast<std::size_t>(axis)]; ++n) {
        const CellCorners corners = axis == 0 ? cell_corners(result, n, 0, 0) : cell_corners(result, 0, n, 0);
        for (std::size_t corner = 0; corner < 8; ++corner) {
            const std::size_t near = corner & ~step;
            EXPECT_LT(distance(corners[corner], old[near], old[near + step]), 1e-9)
                << "cell " << n << " corner " << corner;
        }
    }
}

TEST(SubdivideRow, OnParallelPillarsTheShareOfTheWayIsThatOfTheEdge)
{
    const GridModel box =
        leaning_cell({{{0, 0, 0.5, 0.25}, {10, 1, 0.5, 0.25}, {-1, 10, 0.5, 0.25}, {11, 12, 0.5, 0.25}}});
    for (int axis = 0; axis < 2; ++axis) {
        SubdivideReport report;
        const GridModel result = subdivide_sections(box, along(axis, {{0, 3, even, {}}}), report);
        EXPECT_LT(report.max_relative_difference, 1e-12);
        expect_on_edges(box, result, axis);
        const CellCorners old = cell_corners(box, 0, 0, 0);
        for (std::size_t near = 0; near < 8; ++near) {
            const std::size_t step = std::size_t{1} << axis;
            if (near & step)
                continue;
            Numbers wanted;
            for (int n = 0; n <= 4; ++n)
                wanted.push_back(old[near][2] + n * (old[near + step][2] - old[near][2]) / 4);
            expect_near(boundaries(result, axis, 2, near), wanted, 1e-10);
        }
    }
}

TEST(SubdivideRow, BetweenPillarsOfOnePlaneCornersStayOnTheEdges)
{
    // The pillars of each side along I open like a fan, within one plane, and likewise along J.
    const GridModel box =
        leaning_cell({{{0, 0, -0.2, -0.1}, {10, 0, 0.3, -0.1}, {0, 10, -0.2, 0.2}, {10, 10, 0.3, 0.2}}});
    for (int axis = 0; axis < 2; ++axis) {
        expect_on_edges(box, subdivided(box, along(axis, {{0, 4, even, {}}})), axis);
        expect_on_edges(box, subdivided(box, along(axis, {{0, 2, from_base, 3}})), axis);
        expect_on_edges(box, subdivided(box, along(axis, {{0, 2, from_top, 3}})), axis);
    }
}

TEST(SubdivideRow, WidthsAreTrueAtTheHighestAndTheLowestCorner)
{
    // Distance 10 at depth 1000, 16 at 1030: the fan opens by 0.2 a unit of depth.
    GridModel box = leaning_cell({{{0, 0, 0, 0}, {10, 0, 0.2, 0}, {0, 10, 0, 0}, {10, 10, 0.2, 0}}});
    for (int corner = 0; corner < 8; ++corner)
        depth_at(box, 0, 0, 0, corner & 1, corner >> 1 & 1, corner >> 2) = corner < 4 ? 1000 : 1030;
    GridModel result = subdivided(box, along(0, {{0, 2, from_base, 4}}));
    expect_near(boundaries(result, 0, 0, 0), {0, 4, 8, 10}, 1e-10);
    expect_near(boundaries(result, 0, 0, 4), {0, 4, 8, 16}, 1e-10);
    result = subdivided(box, along(0, {{0, 2, from_top, 4}}));
    expect_near(boundaries(result, 0, 0, 0), {0, 2, 6, 10}, 1e-10);
    expect_near(boundaries(result, 0, 0, 4), {0, 8, 12, 16}, 1e-10);
    // 6 and 12: above there is no room for the second cell's whole width.
    SubdivideReport report;
    result = subdivide_sections(box, along(0, {{0, 2, from_base, 6}}), report);
    expect_near(boundaries(result, 0, 0, 0), {0, 6, 10, 10}, 1e-10);
    expect_near(boundaries(result, 0, 0, 4), {0, 6, 12, 16}, 1e-10);
    EXPECT_EQ(report.pinched, 0);
    // Inactive cells count where there are no others.
    box.active = {0};
    result = subdivided(box, along(0, {{0, 2, from_base, 2}}));
    expect_near(boundaries(result, 0, 0, 0), {0, 2, 4, 10}, 1e-10);
    expect_near(boundaries(result, 0, 0, 4), {0, 2, 4, 16}, 1e-10);
    box = subdivided(box, along(2, {{0, 1}}));
    box.active = {0, 1};
    result = subdivided(box, along(0, {{0, 1, from_base, 14}}));
    expect_near(boundaries(result, 0, 0, 4), {0, 13, 13}, 1e-10);
    EXPECT_EQ(cell_corners(result, 0, 0, 1)[5][0], 14) << "of 16 at the base of the active cell";
}

TEST(SubdivideRow, PillarsThatCrossHaveOneShare)
{
    // Distance 2 at depth 1000; they meet at 1010.
    GridModel box = leaning_cell({{{0, 0, 0, 0}, {2, 0, -0.2, 0}, {0, 10, 0, 0}, {2, 10, -0.2, 0}}});
    for (int corner = 0; corner < 8; ++corner)
        depth_at(box, 0, 0, 0, corner & 1, corner >> 1 & 1, corner >> 2) = corner < 4 ? 1000 : 1040;
    // At the mean depth 1020 they are 2 apart, and 0.5 is a quarter of that.
    const GridModel result = subdivided(box, along(0, {{0, 1, from_base, 0.5}}));
    expect_near(boundaries(result, 0, 0, 0), {0, 0.5, 2}, 1e-10);
    expect_near(boundaries(result, 0, 0, 4), {0, -1.5, -6}, 1e-10);
}

TEST(SubdivideRow, PercentAndEvenSharesHoldAtEveryDepth)
{
    const GridModel box = leaning_cell({{{0, 0, -0.2, 0}, {10, 0, 0.3, 0}, {0, 10, -0.2, 0}, {10, 10, 0.3, 0}}});
    SubdivideRequest request = along(0, {{0, 1, from_base, 25}});
    request.percent = true;
    const GridModel result = subdivided(box, request);
    const auto x_at = [&](std::int64_t pillar, double depth) {
        std::array<double, 6> numbers;
        for (std::size_t n = 0; n < 6; ++n)
            numbers[n] = result.coord[static_cast<std::size_t>(6 * pillar) + n];
        return pillar_point(numbers, depth)[0];
    };
    for (const double depth : {900.0, 1000.0, 1234.0})
        EXPECT_NEAR(x_at(1, depth), 0.75 * x_at(0, depth) + 0.25 * x_at(2, depth), 1e-9);
}

TEST(SubdivideRow, PillarsThatMeetOrHaveNoSlopeGiveFiniteCorners)
{
    // The two pillars of the front side are one; the back ones have points of one depth.
    GridModel box = leaning_cell({{{0, 0, 0, 0}, {10, 0, 0, 0}, {5, 10, 0.1, 0}, {5, 10, 0.1, 0}}});
    std::vector<double> coord;
    for (std::size_t n = 0; n < 24; ++n)
        coord.push_back(box.coord[n]);
    coord[5] = coord[2];
    box.coord = RealArray(coord);
    for (const auto layering : {even, from_base, from_top}) {
        const GridModel result = subdivided(box, along(0, {{0, 2, layering, 4}}));
        for (std::int64_t n = 0; n < 3; ++n)
            for (const Point3& corner : cell_corners(result, n, 0, 0))
                for (const double part : corner)
                    EXPECT_TRUE(std::isfinite(part));
        EXPECT_EQ(result.active, (std::vector<std::uint8_t>{1, 1, 1}));
    }
    expect_near(boundaries(subdivided(box, along(0, {{0, 1, even, {}}})), 0, 0), {0, 5, 10}, 1e-9);
}

TEST(SubdivideRow, BothSidesOfAFaultKeepTheirOwnSurfaces)
{
    // Two cells along J; the second lies 30 deeper and tilts along I.
    GridModel box = numbered_box({2, 2, 1});
    for (int corner = 0; corner < 8; ++corner)
        for (std::int64_t i = 0; i < 2; ++i)
            depth_at(box, i, 1, 0, corner & 1, corner >> 1 & 1, corner >> 2) +=
                30 + 5 * static_cast<double>(i + (corner & 1));
    const GridModel result = subdivided(box, along(0, {{1, 1}}));
    EXPECT_EQ(result.size, (GridSize{3, 2, 1}));
    // Corners of the front side of the first row and of the back side of the second.
    expect_near(boundaries(result, 0, 2, 2), {1000, 1000, 1000, 1000});
    const auto second_row = [&](std::size_t corner) {
        Numbers depths;
        for (std::int64_t i = 0; i < 3; ++i)
            depths.push_back(cell_corners(result, i, 1, 0)[corner][2]);
        depths.push_back(cell_corners(result, 2, 1, 0)[corner + 1][2]);
        return depths;
    };
    expect_near(second_row(0), {1030, 1035, 1037.5, 1040});
    expect_near(second_row(4), {1042, 1047, 1049.5, 1052});
    // Divided along J the throw stays between the two sides.
    const GridModel across = subdivided(box, along(1, {{0, 1}, {1, 2}}));
    EXPECT_EQ(across.size, (GridSize{2, 5, 1}));
    for (const std::int64_t j : {0, 1})
        EXPECT_EQ(cell_corners(across, 0, j, 0)[3][2], 1000);
    for (const std::int64_t j : {2, 3, 4}) {
        EXPECT_EQ(cell_corners(across, 0, j, 0)[0][2], 1030);
        EXPECT_EQ(cell_corners(across, 1, j, 0)[3][2], 1040);
    }
}

TEST(Subdivide, BothEndsOfTheAxisAndOneCellAxes)
{
    for (int axis = 0; axis < 3; ++axis) {
        const auto at = static_cast<std::size_t>(axis);
        GridSize size{3, 3, 3};
        const GridModel box = numbered_box(size);
        const GridModel result = subdivided(box, along(axis, {{2, 3}, {0, 1}}));
        size[at] = 7;
        EXPECT_EQ(result.size, size);
        EXPECT_EQ(result.records[0].ranges[at],
                  (std::vector<IndexRange>{{0, 0}, {0, 0}, {1, 1}, {2, 2}, {2, 2}, {2, 2}, {2, 2}}));
        const double unit = axis == 2 ? 12 : 10, from = axis == 2 ? 1000 : 0;
        expect_near(boundaries(result, axis, at),
                    {from, from + unit / 2, from + unit, from + 2 * unit, from + 2.25 * unit, from + 2.5 * unit,
                     from + 2.75 * unit, from + 3 * unit});
        GridSize thin{2, 2, 2};
        thin[at] = 1;
        EXPECT_EQ(subdivided(numbered_box(thin), along(axis, {{0, 4}})).size[at], 5);
        // 9998 cells more, as many as a dialog asks for.
        EXPECT_EQ(subdivided(numbered_box({1, 1, 1}), along(axis, {{0, 9998}})).cells(), 9999);
    }
}

TEST(Subdivide, EachNewCellTakesItsParentsValuesRegionsAndFlag)
{
    for (int axis = 0; axis < 3; ++axis) {
        GridModel source = random_grid({4, 3, 5}, 11);
        source.layers = {{"unit", 5, 2, even}};
        // A K layer without any active cell.
        std::fill(source.active.begin() + 12, source.active.begin() + 24, std::uint8_t{0});
        const GridModel result = subdivided(source, along(axis, {{0, 2}, {2, 1}}));
        const auto at = static_cast<std::size_t>(axis);
        std::int64_t cell = 0;
        for (std::int64_t k = 0; k < result.size[2]; ++k)
            for (std::int64_t j = 0; j < result.size[1]; ++j)
                for (std::int64_t i = 0; i < result.size[0]; ++i, ++cell) {
                    std::array<std::int64_t, 3> n{i, j, k};
                    n[at] = result.records[0].ranges[at][static_cast<std::size_t>(n[at])].first;
                    const auto parent = static_cast<std::size_t>(source.cell_index(n[0], n[1], n[2]));
                    const auto here = static_cast<std::size_t>(cell);
                    EXPECT_EQ(result.active[here], source.active[parent]);
                    for (std::size_t r = 0; r < source.regions.size(); ++r)
                        EXPECT_EQ(result.regions[r].flags[here], source.regions[r].flags[parent]);
                    for (std::size_t p = 0; p < 3; ++p)
                        std::visit(
                            [&](const auto& values) {
                                const auto& old =
                                    std::get<std::remove_cvref_t<decltype(values)>>(source.properties[p].values);
                                EXPECT_EQ(values[here], old[parent]);
                            },
                            result.properties[p].values);
                }
        EXPECT_EQ(cell, result.cells());
        EXPECT_EQ(result.properties[1].no_data, -1.0);
        EXPECT_EQ(result.properties[2].code_names.at(1), "sand");
    }
}

TEST(Subdivide, NothingToDivideIsACopyIn64Bits)
{
    const GridModel source = random_grid({4, 5, 6}, 5);
    for (const std::vector<SectionDivision>& divisions : {std::vector<SectionDivision>{}, {{3, 0, from_top, 1}}}) {
        for (int axis = 0; axis < 3; ++axis) {
            SubdivideReport report;
            GridModel copy = subdivide_sections(source, along(axis, divisions), report);
            EXPECT_TRUE(copy.zcorn.is_double());
            ASSERT_EQ(copy.zcorn.size(), source.zcorn.size());
            for (std::size_t n = 0; n < copy.zcorn.size(); ++n)
                ASSERT_EQ(copy.zcorn[n], source.zcorn[n]);
            copy.zcorn = source.zcorn;
            EXPECT_TRUE(same_data(copy, source));
            EXPECT_EQ(copy.id, 0U);
            EXPECT_EQ(report.divided_cells, 0);
            EXPECT_EQ(report.max_relative_difference, 0);
            EXPECT_EQ(report.bulk_volume_before, report.bulk_volume_after);
            EXPECT_EQ(copy.records[0].ranges, identity_record(0, "", source.size).ranges);
        }
    }
}

TEST(Subdivide, PropertiesAndRegionsAreChosenByName)
{
    const GridModel source = random_grid({4, 2, 2}, 5);
    SubdivideRequest request = along(0, {{0, 1}});
    request.properties = {{"FAC", "POR"}};
    request.regions = {{"C"}};
    GridModel result = subdivided(source, request);
    ASSERT_EQ(result.properties.size(), 2U);
    EXPECT_EQ(result.properties[0].name, "POR");
    ASSERT_EQ(result.regions.size(), 2U) << "the model region passes on too";
    EXPECT_EQ(result.regions[0].name, "C");
    EXPECT_EQ(result.regions[1].name, "M");
    EXPECT_TRUE(result.regions[1].model);
    request.copy_properties = request.copy_regions = false;
    result = subdivided(source, request);
    EXPECT_TRUE(result.properties.empty());
    EXPECT_EQ(result.regions.size(), 1U);
    request.copy_properties = request.copy_regions = true;
    request.properties = {{"NONE"}};
    EXPECT_EQ(error_of([&] { (void)subdivided(source, request); }), "the grid has no property \"NONE\"");
    request.properties.reset();
    request.regions = {{"NONE"}};
    EXPECT_EQ(error_of([&] { (void)subdivided(source, request); }), "the grid has no region \"NONE\"");
}

TEST(Subdivide, LayersCountTheirNewCells)
{
    GridModel box = numbered_box({1, 1, 4});
    box.layers = {{"upper", 1, 12, even}, {"lower", 3, 10, from_top}};
    SubdivideReport report;
    GridModel result = subdivide_sections(box, along(2, {{0, 2}, {3, 1}}), report);
    ASSERT_EQ(result.layers.size(), 2U);
    EXPECT_EQ(result.layers[0].nb_k_cells, 3);
    EXPECT_EQ(result.layers[0].cell_thickness, 4);
    EXPECT_EQ(result.layers[1].nb_k_cells, 4);
    EXPECT_EQ(result.layers[1].cell_thickness, 7.5);
    EXPECT_EQ(result.layers[1].style, from_top);
    EXPECT_TRUE(report.warnings.empty());
    result = subdivided(box, along(0, {{0, 2}}));
    EXPECT_EQ(result.layers[1].nb_k_cells, 3);
    EXPECT_EQ(result.layers[1].cell_thickness, 10);
}

TEST(Subdivide, ModelInfoLaysTheCellsOutAnewBeforeDividing)
{
    GridModel box = make_box({2, 1, 4}, {10, 10, 10});
    box.layers = {{"unit", 4, 12, even}};
    box.zcorn.visit_mutable([](auto depths) {
        for (std::size_t n = 8; n < 24; ++n)
            depths[n] = 3; // the surface between the first two K layers
    });
    SubdivideRequest request = along(2, {{2, 1}});
    SubdivideReport report;
    const auto surfaces = [&] {
        return boundaries(subdivide_sections(box, request, report), 2, 2, 1);
    };
    EXPECT_EQ(surfaces(), (Numbers{0, 3, 20, 25, 30, 40}));
    request.model_info = true;
    EXPECT_EQ(surfaces(), (Numbers{0, 10, 20, 25, 30, 40}));
    EXPECT_NEAR(report.max_relative_difference, 7.0 / 3, 1e-12) << "the first cell grew from 3 to 10";
    EXPECT_NEAR(report.total_volume_after, report.total_volume_before, 1e-9);
    box.layers[0].style = from_top;
    EXPECT_EQ(surfaces(), (Numbers{0, 12, 24, 30, 36, 40}));
    box.layers[0].style = from_base;
    EXPECT_EQ(surfaces(), (Numbers{0, 4, 16, 22, 28, 40}));
    request.divisions[0] = {2, 1, from_top, 4};
    EXPECT_EQ(surfaces(), (Numbers{0, 4, 16, 20, 28, 40}));
    EXPECT_TRUE(report.warnings.empty());
    box.layers[0].cell_thickness = 0;
    EXPECT_EQ(surfaces(), (Numbers{0, 10, 20, 24, 30, 40}));
    EXPECT_EQ(report.warnings.size(), 1U);
    // The surface between two units stays.
    box.layers = {{"upper", 1, 5, even}, {"lower", 3, 5, even}};
    EXPECT_NEAR(surfaces()[2], 3 + 37.0 / 3, 1e-12);
    box.layers.clear();
    EXPECT_EQ(surfaces(), (Numbers{0, 3, 20, 24, 30, 40}));
    ASSERT_EQ(report.warnings.size(), 1U);
    EXPECT_EQ(report.warnings[0], "the grid has no layers: the K surfaces are those of the old cells");
    // Along I and J it changes nothing.
    box.layers = {{"unit", 4, 12, even}};
    request.axis = 0;
    request.divisions = {{0, 1}};
    const GridModel with = subdivided(box, request);
    request.model_info = false;
    EXPECT_TRUE(same_data(with, subdivided(box, request)));
}

TEST(Subdivide, NodesBetweenAreLinear)
{
    GridModel box = numbered_box({2, 1, 1});
    box.properties.push_back({"F", "", std::vector<float>{0, 3, 9, 0, 3, 9, 0, 3, 9, 0, 3, 9}, {}, {}, true});
    box.properties.push_back({"D", "", std::vector<double>{0, -1, 8, 0, -1, 8, 0, -1, 8, 0, -1, 8}, -1.0, {}, true});
    box.properties.push_back({"C", "", std::vector<std::int32_t>{0, 5, 7, 0, 5, 7, 0, 5, 7, 0, 5, 7}, {}, {}, true});
    const GridModel result = subdivided(box, along(0, {{0, 2}, {1, 1}}));
    const auto first_row = [&](std::string_view name) {
        Numbers row;
        for (std::size_t n = 0; n < 6; ++n)
            std::visit([&](const auto& values) { row.push_back(static_cast<double>(values[n])); },
                       result.find_property(name)->values);
        return row;
    };
    EXPECT_EQ(first_row("F"), (Numbers{0, 1, 2, 3, 6, 9}));
    EXPECT_EQ(first_row("D"), (Numbers{0, 0, -1, -1, -1, 8})) << "the nearer one's where one is undefined";
    EXPECT_EQ(first_row("C"), (Numbers{0, 0, 5, 5, 5, 7}));
    EXPECT_EQ(result.find_property("F")->size(), 6U * 2 * 2);
    const GridModel down = subdivided(box, along(2, {{0, 1}}));
    EXPECT_EQ(down.find_property("C")->size(), 3U * 2 * 3);
}

TEST(Subdivide, FaultsMoveToTheNewIndices)
{
    GridModel box = numbered_box({4, 3, 2});
    box.faults = {{"F", {1, 1}, {0, 2}, {0, 1}, "I+"},
                  {"G", {2, 2}, {0, 2}, {0, 1}, "X-"},
                  {"L", {0, 3}, {1, 1}, {0, 1}, "J+"},
                  {"M", {0, 2}, {0, 0}, {0, 9}, "I+"},
                  {"N", {7, 9}, {0, 0}, {0, 1}, "J-"}};
    SubdivideReport report;
    const GridModel result = subdivide_sections(box, along(0, {{1, 2}, {2, 1}}), report);
    const auto text = [](const FaultSegment& f) {
        return f.name + ' ' + f.face + ' ' + std::to_string(f.i[0]) + '-' + std::to_string(f.i[1]) + ' ' +
               std::to_string(f.j[0]) + '-' + std::to_string(f.j[1]) + ' ' + std::to_string(f.k[0]) + '-' +
               std::to_string(f.k[1]);
    };
    std::vector<std::string> found;
    for (const FaultSegment& fault : result.faults)
        found.push_back(text(fault));
    EXPECT_EQ(found, (std::vector<std::string>{"F I+ 3-3 0-2 0-1", "G X- 4-4 0-2 0-1", "L J+ 0-6 1-1 0-1",
                                               "M I+ 0-0 0-0 0-1", "M I+ 3-3 0-0 0-1", "M I+ 5-5 0-0 0-1"}));
    EXPECT_EQ(report.warnings, (std::vector<std::string>{"1 fault segments lie outside of the grid and are left out"}));
}

TEST(Subdivide, KeptKeywordsGoOnlyWhereTheyNoLongerFit)
{
    GridModel box = numbered_box({4, 1, 1});
    box.kept = {{"CELLWISE", " 2*1 3 'x' ", "f", 1}, {"TITLE", "some words", "f", 2}, {"BOX", "1 2 1 1 1 1", "f", 3}};
    SubdivideReport report;
    const GridModel result = subdivide_sections(box, along(0, {{0, 1}}), report);
    ASSERT_EQ(result.kept.size(), 1U);
    EXPECT_EQ(result.kept[0].name, "TITLE");
    EXPECT_EQ(report.warnings.size(), 2U);
}

TEST(Subdivide, FaultBlocksAreThoseOfTheNewGrid)
{
    GridModel box = numbered_box({4, 2, 1});
    box.zcorn.visit_mutable([](auto depths) {
        for (std::size_t n = 0; n < depths.size(); ++n)
            if (n % 8 >= 4)
                depths[n] += 5; // columns 2 and 3 have gone down
    });
    SubdivideRequest request = along(0, {{1, 2}, {2, 1}});
    request.copy_fault_blocks = true;
    const GridModel result = subdivided(box, request);
    ASSERT_EQ(result.regions.size(), 2U);
    EXPECT_EQ(result.regions[0].name, "fault_block_1");
    EXPECT_TRUE(result.regions[0].model);
    EXPECT_EQ(result.regions[0].flags, (std::vector<std::uint8_t>{1, 1, 1, 1, 0, 0, 0, 1, 1, 1, 1, 0, 0, 0}));
}

TEST(Subdivide, FaultBlocksOfLeaningFaultedGridsStayTheSame)
{
    // New corners of neighbours come from the same numbers, so no new fault opens between them.
    const GridModel source = make_example({30, 24, 12});
    const auto blocks_of = [](const GridModel& model) {
        return fault_block_regions(model);
    };
    const auto before = blocks_of(source);
    ASSERT_FALSE(before.empty());
    for (int axis = 0; axis < 3; ++axis)
        for (const auto layering : {even, from_base, from_top}) {
            std::vector<SectionDivision> divisions;
            for (std::int64_t n = 0; n < source.size[static_cast<std::size_t>(axis)]; n += 2)
                divisions.push_back({n, 2, layering, axis == 2 ? 0.5 : 30.0});
            const GridModel result = subdivided(source, along(axis, divisions));
            const auto after = blocks_of(result);
            ASSERT_EQ(after.size(), before.size());
            for (std::size_t r = 0; r < after.size(); ++r)
                for (std::int64_t cell = 0; cell < result.cells(); ++cell) {
                    const std::int64_t i = cell % result.size[0], j = cell / result.size[0] % result.size[1];
                    const auto& ranges = result.records[0].ranges;
                    const std::int64_t k = cell / (result.size[0] * result.size[1]);
                    const std::int64_t parent = source.cell_index(ranges[0][static_cast<std::size_t>(i)].first,
                                                                  ranges[1][static_cast<std::size_t>(j)].first,
                                                                  ranges[2][static_cast<std::size_t>(k)].first);
                    ASSERT_EQ(after[r].flags[static_cast<std::size_t>(cell)],
                              before[r].flags[static_cast<std::size_t>(parent)]);
                }
        }
}

TEST(Subdivide, WrongRequestsAreNamed)
{
    const GridModel box = numbered_box({5, 1, 1});
    const auto error = [&](std::vector<SectionDivision> divisions, int axis = 0) {
        return error_of([&] { (void)subdivided(box, along(axis, std::move(divisions))); });
    };
    const double nan = std::numeric_limits<double>::quiet_NaN(), inf = std::numeric_limits<double>::infinity();
    EXPECT_EQ(error({{4, 1}}), "");
    EXPECT_EQ(error({{5, 1}}), "section 5 along I: the grid has sections 0 to 4");
    EXPECT_EQ(error({{-1, 1}}), "section -1 along I: the grid has sections 0 to 4");
    EXPECT_EQ(error({{1, 1}, {0, 1}, {1, 0}}), "section 1 along I is named twice");
    EXPECT_EQ(error({{1, -1}}), "section 1 along I: -1 cells cannot be added");
    EXPECT_EQ(error({{1, 1, from_top, nan}}), "section 1 along I: nan is no thickness");
    EXPECT_EQ(error({{1, 1, from_base, inf}}), "section 1 along I: inf is no thickness");
    EXPECT_EQ(error({{1, 1, from_base, -2}}), "section 1 along I: -2 is no thickness");
    EXPECT_EQ(error({{0, 1}}, 3), "there is no axis 3");
    EXPECT_EQ(error({{0, 1}}, -1), "there is no axis -1");
    EXPECT_EQ(error({{0, std::numeric_limits<std::int64_t>::max()}}),
              "section 0 along I: 9223372036854775807 cells are more than a grid can have");
    EXPECT_NE(error({{0, std::int64_t{1} << 50}, {1, std::int64_t{1} << 50}}), "");
    GridModel broken = box;
    broken.active.pop_back();
    EXPECT_NE(error_of([&] { (void)subdivided(broken, along(0, {{0, 1}})); }), "");
    // A size is told without making anything.
    EXPECT_EQ(subdivided_size({5, 1, 1}, along(0, {{0, 2000000000}}))[0], 2000000005);
    EXPECT_NE(error_of([&] { (void)subdivided_size({5, 1 << 20, 1 << 20}, along(0, {{0, 1 << 20}})); }), "");
}

TEST(Subdivide, SameResultOnOneThreadAndTwo)
{
    const GridModel source = random_grid({40, 30, 20}, 21);
    for (int axis = 0; axis < 3; ++axis) {
        SubdivideRequest request = along(axis, {{0, 3, from_top, 1}, {5, 1}, {10, 2, from_base, 0.5}, {19, 40}});
        request.copy_fault_blocks = true;
        SubdivideReport one, two;
        const GridModel result_one = on_threads(1, [&] { return subdivide_sections(source, request, one); });
        const GridModel result_two = on_threads(2, [&] { return subdivide_sections(source, request, two); });
        EXPECT_TRUE(same_data(result_one, result_two));
        EXPECT_EQ(one.bulk_volume_after, two.bulk_volume_after);
        EXPECT_EQ(one.total_volume_before, two.total_volume_before);
        EXPECT_EQ(one.mean_relative_difference, two.mean_relative_difference);
        EXPECT_EQ(one.pinched, two.pinched);
    }
}

TEST(Subdivide, StopsAtEachStepAndLeavesTheSourceAlone)
{
    const GridModel source = random_grid({40, 30, 20}, 3);
    const GridModel before = source;
    SubdivideRequest request = along(1, {{0, 3, from_top, 10}});
    request.copy_fault_blocks = true;
    EXPECT_GE(cancel_at_each_step([&](const ProgressCheck& progress) {
                  SubdivideReport report;
                  (void)subdivide_sections(source, request, report, progress);
              }),
              5);
    EXPECT_TRUE(same_data(source, before));
}

} // namespace
