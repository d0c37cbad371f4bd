// The VTK file: its XML, offsets and numbers, read by a parser of the test's own.

#include "VtuParser.h"

#include "../gridio/GridTestTools.h"

#include <lodex/gridio/GridFormat.h>
#include <lodex/gridio/RoffReader.h>
#include <lodex/gridio/VtuFormat.h>
#include <lodex/volumes/model/CellGeometry.h>

#include <cmath>
#include <gtest/gtest.h>

namespace lodex {
namespace {

test::VtuFile written(const GridModel& model)
{
    const test::TemporaryFolder folder;
    const auto path = folder / "model.vtu";
    EXPECT_EQ(GridFormats::for_writing(path).name(), "vtu");
    const WriteResult result = VtuFormat().write(model, path, {});
    const std::string bytes = test::file_text(path);
    EXPECT_EQ(result.bytes, bytes.size());
    return test::parse_vtu(bytes);
}

/// Every hexahedron has the corners of its cell, all in the right place, and a positive volume.
void expect_cells(const GridModel& model, const test::VtuFile& file)
{
    const auto is = file.numbers("I"), js = file.numbers("J"), ks = file.numbers("K");
    const auto points = file.numbers("Points");
    const auto connectivity = file.numbers("connectivity");
    const auto offsets = file.numbers("offsets");
    const auto types = file.numbers("types");
    const auto active = static_cast<std::size_t>(std::count(model.active.begin(), model.active.end(), 1));
    ASSERT_EQ(file.cells, active);
    ASSERT_EQ(connectivity.size(), 8 * active);
    ASSERT_EQ(points.size(), 3 * file.points);
    const bool mirrored = handedness(model) < 0;
    std::vector<bool> used(file.points);
    std::size_t cell = 0;
    double volume = 0;
    for (std::int64_t k = 0; k < model.size[2]; ++k) {
        for (std::int64_t j = 0; j < model.size[1]; ++j) {
            for (std::int64_t i = 0; i < model.size[0]; ++i) {
                if (model.active[static_cast<std::size_t>(model.cell_index(i, j, k))] == 0) {
                    continue;
                }
                ASSERT_EQ(is[cell], i + 1);
                ASSERT_EQ(js[cell], j + 1);
                ASSERT_EQ(ks[cell], k + 1);
                ASSERT_EQ(offsets[cell], 8.0 * static_cast<double>(cell + 1));
                ASSERT_EQ(types[cell], 12);
                const CellCorners expected = cell_corners(model, i, j, k);
                // Points of a hexahedron: round the deeper side, then the upper one; counterclockwise from above.
                constexpr std::array<std::size_t, 8> straight = {4, 5, 7, 6, 0, 1, 3, 2};
                constexpr std::array<std::size_t, 8> turned = {4, 6, 7, 5, 0, 2, 3, 1};
                CellCorners found{};
                for (std::size_t n = 0; n < 8; ++n) {
                    const auto point = static_cast<std::size_t>(connectivity[8 * cell + n]);
                    ASSERT_LT(point, file.points);
                    used[point] = true;
                    const Point3& corner = expected[mirrored ? turned[n] : straight[n]];
                    ASSERT_EQ(points[3 * point], corner[0]);
                    ASSERT_EQ(points[3 * point + 1], corner[1]);
                    ASSERT_EQ(points[3 * point + 2], -corner[2]);
                    // Into the order of a cell whose corners turn like x, y, z.
                    constexpr std::array<std::size_t, 8> place = {0, 1, 3, 2, 4, 5, 7, 6};
                    found[place[n]] = {points[3 * point], points[3 * point + 1], points[3 * point + 2]};
                }
                volume += signed_cell_volume(found);
                ++cell;
            }
        }
    }
    EXPECT_TRUE(std::all_of(used.begin(), used.end(), [](bool flag) { return flag; }));
    const VolumeSummary summary = summarise_volumes(model);
    EXPECT_NEAR(volume, std::fabs(summary.signed_volume), 1e-9 * std::fabs(summary.signed_volume));
}

TEST(Vtu, AFullModelWithAllItsArrays)
{
    const GridModel model = test::full_model(4, 3, 5);
    const test::VtuFile file = written(model);
    expect_cells(model, file);
    const std::size_t cells = file.cells;
    for (const PropertyData& property : model.properties) {
        const auto found = file.arrays.find(property.name);
        ASSERT_NE(found, file.arrays.end()) << property.name;
        EXPECT_EQ(found->second.section, property.on_points ? "PointData" : "CellData") << property.name;
        constexpr std::array<const char*, 3> types = {"Float32", "Float64", "Int32"};
        EXPECT_EQ(found->second.type, types[property.values.index()]) << property.name;
        if (property.on_points) {
            EXPECT_EQ(file.numbers(property.name), std::vector<double>(file.points, 1.5));
            continue;
        }
        const auto values = file.numbers(property.name);
        ASSERT_EQ(values.size(), cells);
        const auto all = test::values_of(property);
        std::size_t n = 0;
        for (std::size_t cell = 0; cell < all.size(); ++cell) {
            if (model.active[cell] != 0) {
                const bool blank = std::isnan(all[cell]) || (!property.discrete() && property.no_data == all[cell]);
                EXPECT_TRUE(blank ? std::isnan(values[n]) : values[n] == all[cell]) << property.name << ' ' << cell;
                ++n;
            }
        }
    }
    for (const RegionData& region : model.regions) {
        EXPECT_EQ(file.arrays.at(region.name).type, "UInt8");
        const auto values = file.numbers(region.name);
        std::size_t n = 0;
        for (std::size_t cell = 0; cell < region.flags.size(); ++cell) {
            if (model.active[cell] != 0) {
                EXPECT_EQ(values[n++], region.flags[cell]);
            }
        }
    }
    EXPECT_EQ(file.numbers("Unit").front(), 1);
    EXPECT_EQ(file.numbers("Unit").back(), 2);
    EXPECT_EQ(file.texts.at("Unit codes"), (std::vector<std::string>{"1 Top unit", "2 Base"}));
    EXPECT_EQ(file.texts.at("Rock type \"A\\B\" codes"),
              (std::vector<std::string>{"0 Sand", "1 Shaly \"sand\"", "3 Gr\xC3\xA8s"}));
}

TEST(Vtu, NamesThatClashWithTheIndices)
{
    GridModel model = test::full_model(2, 2, 1);
    model.properties.clear();
    model.properties.push_back({"I", "", std::vector<float>{1, 2, 3, 4}});
    model.properties.push_back({"a<&\n>", "", std::vector<float>{1, 2, 3, 4}});
    const test::VtuFile file = written(model);
    EXPECT_EQ(file.arrays.at("I").type, "Int32");
    EXPECT_EQ(file.arrays.at("I_2").type, "Float32");
    EXPECT_EQ(file.arrays.count("a<&_>"), 1U);
}

TEST(Vtu, CellsSharePointsWhereTheyTouchAndOnlyThere)
{
    // Without faults a point per node; a throw of one column of cells doubles the nodes round it.
    GridModel model = test::full_model(3, 3, 2);
    model.properties.clear();
    model.active.assign(model.active.size(), 1);
    std::vector<float> zcorn(test::values_of(model.zcorn).size());
    for (std::size_t n = 0; n < zcorn.size(); ++n) {
        zcorn[n] = 1600 + 10 * static_cast<float>((n / 36 + 1) / 2);
    }
    model.zcorn = zcorn;
    EXPECT_EQ(written(model).points, 4U * 4U * 3U);
    for (std::size_t plane = 0; plane < 4; ++plane) {
        for (const std::size_t corner : {14U, 15U, 20U, 21U}) { // of the middle cell
            zcorn[plane * 36 + corner] += 3;
        }
    }
    model.zcorn = zcorn;
    const test::VtuFile faulted = written(model);
    EXPECT_EQ(faulted.points, 4U * 4U * 3U + 4U * 3U);
    expect_cells(model, faulted);
    // Inactive cells leave no points behind.
    model.active.assign(model.active.size(), 0);
    model.active[4] = 1;
    EXPECT_EQ(written(model).points, 8U);
    model.active[4] = 0;
    const test::VtuFile empty = written(model);
    EXPECT_EQ(empty.points, 0U);
    EXPECT_EQ(empty.cells, 0U);
}

TEST(Vtu, PublicModelsOfEitherHand)
{
    const auto data = test::field_data();
    if (!data) {
        return;
    }
    for (const char* const name : {"tiny/banal7_grid_params.roff", "tiny/twocell.roff", "tiny/emerald443_bigend.roff",
                                   "reek/reek_grd_w_props.roff"}) {
        const GridModel model = roff::read_file(*data / name, {}).model;
        expect_cells(model, written(model));
    }
}

TEST(Vtu, BrokenModelsAndCancelLeaveTheOldFile)
{
    const test::TemporaryFolder folder;
    const auto path = folder.write("model.vtu", "old");
    GridModel model = test::full_model(6, 5, 4);
    model.zcorn = std::vector<float>(3);
    EXPECT_THROW(VtuFormat().write(model, path, {}), ModelError);
    model = test::full_model(6, 5, 4);
    model.coord = {};
    model.zcorn = {};
    EXPECT_THROW(VtuFormat().write(model, path, {}), ModelError);
    model = test::full_model(6, 5, 4);
    model.zcorn.visit_mutable([](auto z) { z[7] = std::nanf(""); });
    EXPECT_THROW(VtuFormat().write(model, path, {}), ModelError);
    model = test::full_model(6, 5, 4);
    int steps = 0;
    for (int allowed = 0;; allowed += 7) {
        int calls = 0;
        double last = 0;
        WriteOptions options;
        options.progress = [&](double done) {
            EXPECT_GE(done, last);
            last = done;
            return ++calls <= allowed;
        };
        try {
            VtuFormat().write(model, path, options);
            EXPECT_EQ(last, 1.0);
            break;
        } catch (const Cancelled&) {
            ++steps;
            EXPECT_EQ(test::file_text(path), "old");
            EXPECT_EQ(folder.names(), std::vector<std::string>{"model.vtu"});
        }
    }
    EXPECT_GT(steps, 10);
}

} // namespace
} // namespace lodex
