// Files that are damaged, unusual or about things that a grid has no place for.

#include "../gridio/GridTestTools.h"
#include "RecordBytes.h"

#include <lodex/gridio/BinaryGrdeclFormat.h>
#include <lodex/gridio/EgridFormat.h>
#include <lodex/gridio/InitFormat.h>
#include <lodex/gridio/OldGridFormat.h>
#include <lodex/gridio/RecordFile.h>
#include <lodex/volumes/model/CellGeometry.h>

#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <random>

namespace lodex {
namespace {

using test::RecordBytes;
using test::SmallGrid;

const GridSize size{3, 2, 2};

std::vector<std::int32_t> some_flags()
{
    return {1, 1, 0, 1, 1, 1, 1, 0, 1, 1, 1, 1};
}

RecordBytes bgrdecl_bytes(const SmallGrid& grid)
{
    RecordBytes bytes;
    bytes.integers("SPECGRID", {static_cast<std::int32_t>(grid.size[0]), static_cast<std::int32_t>(grid.size[1]),
                                static_cast<std::int32_t>(grid.size[2]), 1});
    return bytes.reals("COORD", grid.coord).reals("ZCORN", grid.zcorn);
}

/// All cells of a grid in the older form; `leave_out` are natural numbers from 0.
RecordBytes old_grid_bytes(const SmallGrid& grid, const std::vector<std::int64_t>& leave_out = {}, float off = 0)
{
    GridModel model;
    model.size = grid.size;
    model.coord = grid.coord;
    model.zcorn = grid.zcorn;
    RecordBytes bytes;
    bytes.integers("DIMENS", {static_cast<std::int32_t>(grid.size[0]), static_cast<std::int32_t>(grid.size[1]),
                              static_cast<std::int32_t>(grid.size[2])});
    for (std::int64_t k = 0; k < grid.size[2]; ++k) {
        for (std::int64_t j = 0; j < grid.size[1]; ++j) {
            for (std::int64_t i = 0; i < grid.size[0]; ++i) {
                const std::int64_t number = model.cell_index(i, j, k);
                if (std::find(leave_out.begin(), leave_out.end(), number) != leave_out.end()) {
                    continue;
                }
                bytes.integers("COORDS", {static_cast<std::int32_t>(i + 1), static_cast<std::int32_t>(j + 1),
                                          static_cast<std::int32_t>(k + 1), static_cast<std::int32_t>(number + 1)});
                std::vector<float> corners;
                for (const auto& point : lodex::cell_corners(model, i, j, k)) {
                    for (const double x : point) {
                        corners.push_back(static_cast<float>(x));
                    }
                }
                corners[0] += number == 0 ? off : 0;
                bytes.reals("CORNERS", corners);
            }
        }
    }
    return bytes;
}

class BinaryError : public testing::Test {
protected:
    std::string egrid(const RecordBytes& bytes, const ReadOptions& options = {})
    {
        return test::failure(EgridFormat(), folder.write("A.EGRID", bytes.bytes()), options);
    }
    std::string bgrdecl(const RecordBytes& bytes, const ReadOptions& options = {})
    {
        return test::failure(BinaryGrdeclFormat(), folder.write("A.bgrdecl", bytes.bytes()), options);
    }
    std::string old_grid(const RecordBytes& bytes)
    {
        return test::failure(OldGridFormat(), folder.write("A.GRID", bytes.bytes()));
    }
    /// With a good EGRID beside it.
    std::string init(const RecordBytes& bytes)
    {
        folder.write("I.EGRID", test::egrid_bytes(grid, some_flags()).bytes());
        return test::failure(EgridFormat(), folder.write("I.INIT", bytes.bytes()).replace_extension(".EGRID"));
    }

    const test::TemporaryFolder folder;
    const SmallGrid grid{size};
    const std::vector<std::int32_t> flags = some_flags();
};

#define EXPECT_REASON(call, part)                                                                                      \
    do {                                                                                                               \
        const std::string found = call;                                                                                \
        EXPECT_NE(found.find(part), std::string::npos) << "found: " << found;                                          \
    } while (false)

TEST_F(BinaryError, GoodFilesRead)
{
    EXPECT_EQ(egrid(test::egrid_bytes(grid, flags)), "");
    EXPECT_EQ(bgrdecl(bgrdecl_bytes(grid)), "");
    EXPECT_EQ(old_grid(old_grid_bytes(grid)), "");
    EXPECT_EQ(init(test::init_bytes(size, 10).reals("PORO", std::vector<float>(10, 0.2F))), "");
}

TEST_F(BinaryError, Egrid)
{
    const auto head = [](std::vector<std::pair<std::size_t, std::int32_t>> items) {
        std::vector<std::int32_t> values(100, 0);
        values[0] = 1;
        values[1] = 3;
        values[2] = 2;
        values[3] = 2;
        for (const auto& [item, value] : items) {
            values[item] = value;
        }
        return RecordBytes().integers("GRIDHEAD", values);
    };
    EXPECT_REASON(egrid(RecordBytes().empty("ENDGRID")), "\"ENDGRID\": stands before GRIDHEAD");
    EXPECT_REASON(egrid(RecordBytes().integers("FILEHEAD", {3})), "ends before GRIDHEAD");
    EXPECT_REASON(egrid(RecordBytes().integers("FILEHEAD", {3, 0, 0, 0, 1})), "states grid type 1, expected 0");
    EXPECT_REASON(egrid(RecordBytes().integers("FILEHEAD", {3, 0, 0, 0, 0, 7})), "states porosity model 7");
    EXPECT_REASON(egrid(RecordBytes().reals("FILEHEAD", {3})), "is of type REAL, expected INTE");
    EXPECT_REASON(egrid(head({{0, 2}})), "states grid kind 2, expected 1");
    EXPECT_REASON(egrid(head({{1, 0}})), "states a grid of 0 x 2 x 2 cells");
    EXPECT_REASON(egrid(head({{2, -5}})), "states a grid of 3 x -5 x 2 cells");
    EXPECT_REASON(egrid(head({{1, 0x7FFFFFFF}, {2, 0x7FFFFFFF}, {3, 0x7FFFFFFF}})), "which is too large");
    EXPECT_REASON(egrid(head({{24, 2}})), "states 2 sets of pillars");
    EXPECT_REASON(egrid(head({{26, 1}})), "states radial coordinates");
    EXPECT_REASON(egrid(RecordBytes().integers("GRIDHEAD", {1, 2})), "expected at least 4 of type INTE");
    EXPECT_REASON(egrid(head({}).integers("GRIDHEAD", {1, 2, 2, 2})), "occurs twice before ENDGRID");
    EXPECT_REASON(egrid(RecordBytes().reals("COORD", {1})), "\"COORD\": stands before GRIDHEAD");
    EXPECT_REASON(egrid(head({}).reals("COORD", {1, 2})), "\"COORD\": has 2 values, expected 72");
    EXPECT_REASON(egrid(head({}).integers("COORD", std::vector<std::int32_t>(72))), "is of type INTE, expected REAL");
    EXPECT_REASON(egrid(head({}).reals("ZCORN", {1, 2})), "\"ZCORN\": has 2 values, expected 96");
    EXPECT_REASON(egrid(head({}).integers("ACTNUM", {1})), "\"ACTNUM\": has 1 values, expected 12");
    EXPECT_REASON(egrid(head({}).reals("ACTNUM", std::vector<float>(12))), "is of type REAL, expected INTE");
    EXPECT_REASON(egrid(head({}).empty("ENDGRID")), "stands before COORD");
    EXPECT_REASON(egrid(head({}).reals("COORD", grid.coord).empty("ENDGRID")), "stands before ZCORN");
    EXPECT_REASON(egrid(head({}).reals("COORD", grid.coord).reals("COORD", grid.coord)), "occurs twice");
    EXPECT_REASON(egrid(test::egrid_bytes(grid)), "ends before ENDGRID");
    auto bad = flags;
    bad[7] = 4;
    EXPECT_REASON(egrid(test::egrid_bytes(grid, bad)), "\"ACTNUM\": value 8 is 4, expected 0 to 3");
    bad[7] = -1;
    EXPECT_REASON(egrid(test::egrid_bytes(grid, bad)), "value 8 is -1, expected 0 to 3");
    EXPECT_REASON(egrid(RecordBytes().reals("MAPAXES", {1})), "is 1 values of type REAL, expected 6 of type REAL");
    EXPECT_REASON(egrid(RecordBytes().reals("MAPUNITS", {1})), "expected 1 of type CHAR");
    ReadOptions options;
    options.properties_only = true;
    EXPECT_REASON(egrid(head({}).reals("ZCORN", {1, 2}), options), "has 2 values, expected 96");
}

TEST_F(BinaryError, BinaryGrdecl)
{
    EXPECT_REASON(bgrdecl(RecordBytes().integers("SPECGRID", {1, 1})), "expected at least 3 of type INTE");
    EXPECT_REASON(bgrdecl(RecordBytes().integers("SPECGRID", {1, 1, 1, 2})), "states 2 sets of pillars");
    EXPECT_REASON(bgrdecl(RecordBytes().integers("SPECGRID", {1, 1, 1}).integers("DIMENS", {1, 1, 1})),
                  "a second time");
    EXPECT_REASON(bgrdecl(RecordBytes().reals("COORD", {1})), "stands before SPECGRID");
    EXPECT_REASON(bgrdecl(RecordBytes().reals("PORO", {1})), "stands before SPECGRID");
    EXPECT_REASON(bgrdecl(RecordBytes().integers("SPECGRID", {1, 1, 1})), "ends without COORD");
    EXPECT_REASON(bgrdecl(RecordBytes().integers("SPECGRID", {3, 2, 2}).reals("COORD", grid.coord)),
                  "ends without ZCORN");
    EXPECT_REASON(bgrdecl(bgrdecl_bytes(grid).reals("PORO", {1, 2})), "\"PORO\": has 2 values, expected 12");
    EXPECT_REASON(bgrdecl(bgrdecl_bytes(grid).reals("ZCORN", grid.zcorn)), "occurs twice");
    ReadOptions options;
    EXPECT_REASON(bgrdecl(RecordBytes().strings("TITLE", {"x"}), options), "ends without SPECGRID");

    // Properties alone, with the size that the caller knows.
    options.properties_only = true;
    options.size = size;
    const auto path = folder.write("P.bgrdecl", RecordBytes()
                                                    .reals("PORO", std::vector<float>(12, 0.25F))
                                                    .integers("ACTNUM", flags)
                                                    .integers("ODD", {1, 2})
                                                    .strings("TITLE", {"x"})
                                                    .integers("PORO", std::vector<std::int32_t>(12, 3))
                                                    .bytes());
    EXPECT_EQ(GridFormats::for_reading(path).name(), "bgrdecl");
    const ReadResult read = BinaryGrdeclFormat().read(path, options);
    ASSERT_EQ(read.model.properties.size(), 1U);
    EXPECT_TRUE(read.model.properties[0].discrete());
    EXPECT_EQ(read.model.active.size(), 12U);
    EXPECT_EQ(test::texts(read.messages), "PORO occurs again and replaces the one before\n"
                                          "left out, no numbers of cells: ODD (2 INTE), TITLE (1 CHAR)\n");
}

TEST_F(BinaryError, OldGrid)
{
    EXPECT_REASON(old_grid(RecordBytes().integers("DIMENS", {1, 1, 1})), "lists no cells");
    EXPECT_REASON(old_grid(RecordBytes().strings("MAPUNITS", {"METRES"})), "ends before DIMENS");
    EXPECT_REASON(old_grid(RecordBytes().integers("COORDS", {1, 1, 1, 1})), "stands before DIMENS");
    EXPECT_REASON(old_grid(RecordBytes().integers("DIMENS", {1, 1, 1}).integers("DIMENS", {1, 1, 1})), "occurs twice");
    EXPECT_REASON(old_grid(RecordBytes().integers("DIMENS", {1, 1, 1}).reals("CORNERS", std::vector<float>(24))),
                  "stands without COORDS");
    EXPECT_REASON(old_grid(RecordBytes().integers("DIMENS", {1, 1, 1}).integers("COORDS", {1, 1, 2, 1})),
                  "is of cell (1, 1, 2) of a grid of 1 x 1 x 1 cells");
    EXPECT_REASON(old_grid(RecordBytes().integers("DIMENS", {1, 1, 1}).integers("COORDS", {1, 1, 1, 1})),
                  "ends before the CORNERS of cell (1, 1, 1)");
    EXPECT_REASON(old_grid(RecordBytes().integers("DIMENS", {1, 1, 1}).integers("COORDS", {1, 1, 1, 1}).empty("X")),
                  "\"X\": stands where the CORNERS of cell (1, 1, 1) are expected");
    EXPECT_REASON(old_grid(old_grid_bytes(grid).integers("COORDS", {1, 1, 1, 1})), "which occurred before");
    EXPECT_REASON(
        old_grid(RecordBytes().integers("DIMENS", {1, 1, 1}).integers("COORDS", {1, 1, 1, 1}).reals("CORNERS", {1})),
        "is 1 values of type REAL, expected 24");
    EXPECT_REASON(old_grid(RecordBytes()
                               .integers("DIMENS", {1, 1, 1})
                               .integers("COORDS", {1, 1, 1, 1})
                               .reals("CORNERS", std::vector<float>(24, std::nanf("")))),
                  "corner 1 of cell (1, 1, 1) is not finite");
    EXPECT_REASON(old_grid(RecordBytes().strings("RADIAL", {"TRUE"})), "states radial coordinates");
    // A small file that asks for much.
    EXPECT_REASON(old_grid(RecordBytes().integers("DIMENS", {1000, 1000, 1000})), "bytes of memory");
}

TEST_F(BinaryError, Init)
{
    const std::vector<float> ten(10, 0.2F);
    EXPECT_REASON(init(RecordBytes().reals("PORO", ten)), "begins with at least 12 integers INTEHEAD");
    EXPECT_REASON(init(RecordBytes().integers("INTEHEAD", {1, 2})), "begins with at least 12 integers");
    EXPECT_REASON(init(test::init_bytes(size, -1)), "states -1 active cells");
    EXPECT_REASON(init(test::init_bytes(size, 10).reals("PORO", {1, 2})),
                  "\"PORO\": has 2 values, expected 10 (active cells) or 12 (all cells)");
    EXPECT_REASON(init(test::init_bytes(size, 10).header("PORO", 10, "REAL")),
                  "10 values of 4 bytes, but the file has only 0");
    folder.write("alone.INIT", test::init_bytes(size, 10).reals("PORO", ten).bytes());
    ReadOptions options;
    options.properties_only = true;
    EXPECT_REASON(test::failure(InitFormat(), folder / "alone.INIT", options),
                  "neither the caller nor the file says which");
    const std::vector<std::uint8_t> wrong(12, 1);
    options.active = wrong;
    EXPECT_REASON(test::failure(InitFormat(), folder / "alone.INIT", options), "states 10 active cells, expected 12");
    const std::vector<std::uint8_t> short_flags(11, 1);
    options.active = short_flags;
    EXPECT_REASON(test::failure(InitFormat(), folder / "alone.INIT", options), "states 12 cells, expected 11");
    const std::vector<std::uint8_t> right(flags.begin(), flags.end());
    options.active = right;
    const GridModel model = InitFormat().read(folder / "alone.INIT", options).model;
    EXPECT_EQ(model.size, size);
    EXPECT_TRUE(std::isnan(test::values_of(model.properties.at(0))[2]));
    EXPECT_EQ(test::values_of(model.properties.at(0))[11], 0.2F);
}

TEST_F(BinaryError, InitArraysThatAreNoProperties)
{
    const std::vector<float> ten(10, 0.2F);
    const auto path = folder.write("A.EGRID", test::egrid_bytes(grid, flags).bytes());
    folder.write("A.INIT", test::init_bytes(size, 10)
                               .reals("PORO", ten)
                               .doubles("TAB", std::vector<double>(10))
                               .reals("TRANNNC", ten)
                               .strings("TITLE", {"x"})
                               .reals("SHORT", {1, 2})
                               .reals("PORO", std::vector<float>(10, 0.9F))
                               .integers("ACTNUM", std::vector<std::int32_t>(10, 1))
                               .strings("LGR", {"FINE"})
                               .reals("PERMX", {1, 2, 3})
                               .empty("ENDLGR")
                               .integers("SATNUM", std::vector<std::int32_t>(10, 4))
                               .integers("INTEHEAD", std::vector<std::int32_t>(95))
                               .reals("PERMY", ten)
                               .bytes());
    const ReadResult read = EgridFormat().read(path, {});
    ASSERT_EQ(read.model.properties.size(), 2U);
    EXPECT_EQ(test::values_of(read.model.properties[0])[0], 0.2F);
    EXPECT_EQ(read.model.properties[1].name, "SATNUM");
    EXPECT_EQ(read.model.properties[1].no_data, -999);
    EXPECT_EQ(std::get<std::vector<std::int32_t>>(read.model.properties[1].values)[2], -999);
    const std::string text = test::texts(read.messages);
    EXPECT_REASON(text, "TAB (10 DOUB), TRANNNC (10 REAL), TITLE (1 CHAR), SHORT (2 REAL)");
    EXPECT_REASON(text, "PORO occurs again; the first is taken");
    EXPECT_REASON(text, "the properties of 2 local refinements");
}

TEST_F(BinaryError, RefinementsAndConnections)
{
    RecordBytes bytes = test::egrid_bytes(grid, flags);
    bytes.strings("LGR", {"FINE"}).strings("LGRPARNT", {""}).integers("GRIDHEAD", {1, 9, 9, 9}).reals("COORD", {1, 2});
    bytes.integers("HOSTNUM", {1})
        .empty("ENDGRID")
        .empty("ENDLGR")
        .integers("NNCHEAD", {2, 0})
        .integers("NNC1", {1, 2});
    bytes.integers("NNC2", {3, 4})
        .integers("NNCL", {5})
        .integers("NNCG", {6})
        .strings("LGR", {"OTHER"})
        .empty("ENDLGR");
    bytes.integers("STRANGE", {1});
    const ReadResult read = EgridFormat().read(folder.write("A.EGRID", bytes.bytes()), {});
    EXPECT_EQ(read.model.size, size);
    EXPECT_EQ(read.model.zcorn, RealArray(grid.zcorn));
    EXPECT_EQ(test::texts(read.messages),
              "left out: 2 local refinements, 3 connections of cells that are no neighbours\n"
              "left out, not part of the grid: STRANGE (1 INTE)\n");
    RecordBytes old = old_grid_bytes(grid);
    old.strings("LGR", {"FINE"}).integers("DIMENS", {9, 9, 9}).integers("COORDS", {7, 7, 7, 1}).empty("ENDLGR");
    old.integers("NNC1", {1});
    EXPECT_REASON(test::texts(OldGridFormat().read(folder.write("A.GRID", old.bytes()), {}).messages),
                  "left out: 1 local refinement, 1 connection of cells that are no neighbours");
}

TEST_F(BinaryError, DualPorosity)
{
    // Matrix active in 1 and 3, fracture in 2 and 3: seven and six of the twelve cells.
    const std::vector<std::int32_t> dual = {0, 1, 2, 3, 1, 3, 2, 0, 3, 1, 2, 1};
    const auto path = folder.write("D.EGRID", test::egrid_bytes(grid, dual, 1).bytes());
    const std::vector<float> seven = {1, 2, 3, 4, 5, 6, 7};
    std::vector<float> both = seven;
    both.resize(13, 99);
    std::vector<float> all(24, 50);
    folder.write("D.INIT",
                 test::init_bytes({3, 2, 4}, 13).reals("PORV", all).reals("PORO", both).reals("PERMX", seven).bytes());
    const ReadResult read = EgridFormat().read(path, {});
    EXPECT_EQ(read.model.active, (std::vector<std::uint8_t>{0, 1, 0, 1, 1, 1, 0, 0, 1, 1, 0, 1}));
    ASSERT_EQ(read.model.properties.size(), 3U) << test::texts(read.messages);
    EXPECT_EQ(test::values_of(read.model.properties[0]), std::vector<double>(12, 50));
    for (const std::size_t index : {1, 2}) {
        float expected = 0;
        const auto values = test::values_of(read.model.properties[index]);
        for (std::size_t cell = 0; cell < 12; ++cell) {
            if (read.model.active[cell] != 0) {
                EXPECT_EQ(values[cell], ++expected);
            } else {
                EXPECT_TRUE(std::isnan(values[cell]));
            }
        }
        EXPECT_EQ(expected, 7);
    }
    const std::string text = test::texts(read.messages);
    EXPECT_REASON(text, "a cell is active when its matrix is; 7 of 12 cells are, 6 have an active fracture");
    EXPECT_REASON(text, "those of the fracture left out");

    // The same flags of a file that states one porosity.
    const ReadResult single = EgridFormat().read(folder.write("S.EGRID", test::egrid_bytes(grid, dual).bytes()), {});
    EXPECT_EQ(std::count(single.model.active.begin(), single.model.active.end(), 1), 10);
    EXPECT_REASON(test::texts(single.messages), "ACTNUM is 2 or 3 in 6 cells");
}

TEST_F(BinaryError, UnusualButLegal)
{
    // Little-endian, doubles, no flags, other directions, numbers that are not finite.
    RecordBytes bytes(true);
    std::vector<float> odd = grid.zcorn;
    odd[3] = std::nanf("");
    odd[5] = std::numeric_limits<float>::infinity();
    bytes.integers("GRIDHEAD", {1, 3, 2, 2}).strings("GDORIENT", {"INC", "DEC", "INC", "DOWN", "LEFT"});
    bytes.doubles("MAPAXES", {0, 1.1, 0, 0, 1, 0}).strings("GRIDUNIT", {"METRES", "MAP"});
    bytes.doubles("COORD", std::vector<double>(grid.coord.begin(), grid.coord.end())).reals("ZCORN", odd);
    bytes.integers("COORDSYS", {1, 2, 0, 0, 0, 0}).empty("ENDGRID");
    const ReadResult read = EgridFormat().read(folder.write("A.EGRID", bytes.bytes()), {});
    EXPECT_TRUE(read.model.coord.is_double());
    EXPECT_FALSE(read.model.zcorn.is_double());
    EXPECT_EQ(read.model.active, std::vector<std::uint8_t>(12, 1));
    EXPECT_EQ((*read.model.frame.map_axes)[1], 1.1);
    EXPECT_TRUE(read.model.frame.grid_units_map);
    const std::string text = test::texts(read.messages);
    EXPECT_REASON(text, "GDORIENT INC DEC INC DOWN LEFT is not applied");
    EXPECT_REASON(text, "ZCORN: 2 numbers are not finite");
}

TEST_F(BinaryError, OldGridPillarsAndGaps)
{
    // Cell 0 is between nothing and a listed one, cells 5 and 11 are a whole column.
    const SmallGrid tall({1, 1, 4});
    const GridModel gap = OldGridFormat().read(folder.write("G.GRID", old_grid_bytes(tall, {1, 2}).bytes()), {}).model;
    EXPECT_EQ(gap.active, (std::vector<std::uint8_t>{1, 0, 0, 1}));
    EXPECT_EQ(gap.zcorn, RealArray(tall.zcorn)); // the gap of 4 is two cells of 2
    const GridModel ends = OldGridFormat().read(folder.write("G.GRID", old_grid_bytes(tall, {0, 3}).bytes()), {}).model;
    EXPECT_EQ(test::values_of(ends.zcorn),
              (std::vector<double>{102, 102, 102, 102, 102, 102, 102, 102, 102, 102, 102, 102, 104, 104, 104, 104,
                                   104, 104, 104, 104, 106, 106, 106, 106, 106, 106, 106, 106, 106, 106, 106, 106}));
    const SmallGrid wide({4, 2, 1});
    const GridModel columns =
        OldGridFormat().read(folder.write("G.GRID", old_grid_bytes(wide, {2, 3, 4, 5, 6, 7}).bytes()), {}).model;
    check_arrays(columns);
    const auto volumes = cell_volumes(columns);
    EXPECT_NEAR(volumes[0], 400, 1e-9);
    EXPECT_NEAR(volumes[1], 400, 1e-9);
    for (std::size_t cell = 2; cell < 8; ++cell) {
        EXPECT_EQ(volumes[cell], 0) << cell;
    }
    for (const double x : test::values_of(columns.coord)) {
        EXPECT_TRUE(std::isfinite(x));
    }

    // A corner off its pillar by half a metre.
    EXPECT_EQ(test::texts(OldGridFormat().read(folder.write("G.GRID", old_grid_bytes(tall).bytes()), {}).messages), "");
    EXPECT_REASON(
        test::texts(OldGridFormat().read(folder.write("G.GRID", old_grid_bytes(tall, {}, 0.5F).bytes()), {}).messages),
        "corner points do not stand on a straight pillar");

    // A cell whose corners coincide: vertical pillars of some length.
    std::vector<float> flat;
    for (int corner = 0; corner < 8; ++corner) {
        flat.insert(flat.end(), {static_cast<float>(corner & 1), static_cast<float>(corner >> 1 & 1), 50});
    }
    RecordBytes pinched;
    pinched.integers("DIMENS", {1, 1, 1}).integers("COORDS", {1, 1, 1, 1, 0}).reals("CORNERS", flat);
    const GridModel model = OldGridFormat().read(folder.write("G.GRID", pinched.bytes()), {}).model;
    EXPECT_EQ(model.active, (std::vector<std::uint8_t>{0}));
    const auto coord = test::values_of(model.coord);
    EXPECT_EQ(std::vector<double>(coord.begin(), coord.begin() + 6), (std::vector<double>{0, 0, 50, 0, 0, 51}));
}

TEST_F(BinaryError, CutAnywhere)
{
    const std::string good = test::egrid_bytes(SmallGrid({12, 10, 11}), std::vector<std::int32_t>(1320, 1)).bytes();
    std::vector<std::size_t> cuts;
    for (const auto& place : test::array_places(good)) {
        cuts.insert(cuts.end(), {place.begin, place.begin + 3, place.begin + 23});
        for (const std::size_t record : place.records) {
            cuts.insert(cuts.end(), {record, record + 4, record + 9});
        }
    }
    std::mt19937 random(5);
    for (int i = 0; i < 60; ++i) {
        cuts.push_back(random() % good.size());
    }
    for (const std::size_t cut : cuts) {
        if (cut < good.size()) {
            EXPECT_NE(test::failure(EgridFormat(), folder.write("A.EGRID", good.substr(0, cut))), "") << cut;
        }
    }
    // The rest of the formats have no end mark: what is cut within a record fails, what is cut between arrays may not.
    const std::string other = bgrdecl_bytes(SmallGrid({12, 10, 11})).reals("PORO", std::vector<float>(1320, 1)).bytes();
    const auto places = test::array_places(other);
    for (std::size_t cut = 1; cut < other.size(); cut += 397) {
        const bool between
            = std::any_of(places.begin(), places.end(), [cut](const auto& place) { return place.begin == cut; });
        if (!between) {
            EXPECT_NE(test::failure(BinaryGrdeclFormat(), folder.write("A.bgrdecl", other.substr(0, cut))), "") << cut;
        }
    }
}

/// Neither crashes nor reads what does not fit; whatever is read is a valid model.
void expect_sane(const GridFormat& format, const std::filesystem::path& path)
{
    ReadOptions options;
    options.max_bytes = 64 * 1024 * 1024;
    for (const bool properties_only : {false, true}) {
        options.properties_only = properties_only;
        try {
            const ReadResult result = format.read(path, options);
            if (!properties_only) {
                check_arrays(result.model);
            }
        } catch (const FileError& error) {
            EXPECT_FALSE(error.reason().empty());
        }
    }
}

TEST_F(BinaryError, RandomSurgery)
{
    const SmallGrid some({5, 4, 3});
    folder.write("I.EGRID", test::egrid_bytes(some, std::vector<std::int32_t>(60, 1)).bytes());
    struct Case {
        std::unique_ptr<GridFormat> format;
        std::string name;
        std::string bytes;
    };
    std::vector<Case> cases;
    cases.push_back({std::make_unique<EgridFormat>(), "A.EGRID",
                     test::egrid_bytes(some, std::vector<std::int32_t>(60, 1)).bytes()});
    cases.push_back({std::make_unique<BinaryGrdeclFormat>(), "A.bgrdecl",
                     bgrdecl_bytes(some)
                         .reals("PORO", std::vector<float>(60, 1))
                         .integers("ACTNUM", std::vector<std::int32_t>(60, 1))
                         .bytes()});
    cases.push_back({std::make_unique<OldGridFormat>(), "A.GRID", old_grid_bytes(some).bytes()});
    cases.push_back({std::make_unique<InitFormat>(), "I.INIT",
                     test::init_bytes(some.size, 60)
                         .reals("PORV", std::vector<float>(60, 1))
                         .integers("SATNUM", std::vector<std::int32_t>(60, 1))
                         .bytes()});
    std::mt19937 random(17);
    for (const Case& one : cases) {
        SCOPED_TRACE(one.name);
        const auto places = test::array_places(one.bytes);
        for (int i = 0; i < 250; ++i) {
            std::string bytes = one.bytes;
            const auto& place = places[random() % (places.size() - 1)];
            switch (i % 5) {
            case 0: // any byte
                bytes[random() % bytes.size()] = static_cast<char>(random());
                break;
            case 1: // a header: length, name, count, type
                bytes[place.begin + random() % 24] = static_cast<char>(random());
                break;
            case 2: // a record's length
                if (!place.records.empty()) {
                    bytes[place.records[random() % place.records.size()] + random() % 4] = static_cast<char>(random());
                }
                break;
            case 3: { // arrays in another order
                const auto& other = places[random() % (places.size() - 1)];
                const std::size_t middle = std::max(place.begin, other.begin);
                const std::size_t first = std::min(place.begin, other.begin);
                bytes = one.bytes.substr(0, first) + one.bytes.substr(middle) + one.bytes.substr(first, middle - first);
                break;
            }
            default: // much more behind it, or in the middle
                bytes.insert(random() % 2 == 0 ? place.begin : bytes.size(),
                             std::string(random() % 5000, static_cast<char>(random())));
            }
            expect_sane(*one.format, folder.write(one.name, bytes));
        }
        for (int i = 0; i < 10; ++i) {
            std::string noise(random() % 3000, ' ');
            for (char& c : noise) {
                c = static_cast<char>(random());
            }
            EXPECT_NE(test::failure(*one.format, folder.write(one.name, noise)), "");
            // Behind a good header.
            expect_sane(*one.format,
                        folder.write(one.name, RecordBytes().header("COORD", 500, "REAL").bytes() + noise));
        }
    }
}

TEST_F(BinaryError, MemoryIsBoundedByTheFile)
{
    // Counts and sizes far beyond the file.
    RecordBytes bytes;
    bytes.integers("GRIDHEAD", {1, 30000, 30000, 1000}).header("COORD", 2'000'000'000, "REAL");
    EXPECT_REASON(egrid(bytes), "bytes behind the header");
    // Few active cells of many: 3 properties are fine, a thousand are not to be expected.
    const GridSize large = {100, 100, 100};
    std::vector<float> volumes(1'000'000, 0);
    volumes[17] = 1;
    RecordBytes init = test::init_bytes(large, 1);
    init.reals("PORV", volumes);
    for (int i = 0; i < 3; ++i) {
        init.reals("A" + std::to_string(i), {1});
    }
    ReadOptions options;
    options.properties_only = true;
    EXPECT_EQ(test::failure(InitFormat(), folder.write("L.INIT", init.bytes()), options), "");
    for (int i = 3; i < 1000; ++i) {
        init.reals("A" + std::to_string(i), {1});
    }
    EXPECT_REASON(test::failure(InitFormat(), folder.write("L.INIT", init.bytes()), options), "not to be expected of");
    options.max_bytes = 10'000'000;
    EXPECT_REASON(test::failure(InitFormat(), folder.write("L.INIT", init.bytes()), options),
                  "more memory than the 10000000 bytes allowed");
}

TEST_F(BinaryError, Cancellation)
{
    const SmallGrid large({60, 50, 40});
    const std::size_t cells = large.cells();
    folder.write("L.EGRID", test::egrid_bytes(large, std::vector<std::int32_t>(cells, 1)).bytes());
    folder.write("L.INIT", test::init_bytes(large.size, static_cast<std::int32_t>(cells))
                               .doubles("PERMX", std::vector<double>(cells, 1))
                               .doubles("PERMY", std::vector<double>(cells, 1))
                               .bytes());
    for (const std::string file : {"L.EGRID", "L.INIT"}) {
        const auto& format = GridFormats::for_reading(folder / file);
        std::vector<double> seen;
        ReadOptions options;
        options.progress = [&seen](double done) {
            seen.push_back(done);
            return true;
        };
        (void)format.read(folder / file, options);
        ASSERT_GE(seen.size(), 5U);
        EXPECT_TRUE(std::is_sorted(seen.begin(), seen.end()));
        EXPECT_GE(seen.front(), 0);
        EXPECT_LE(seen.back(), 1);
        for (std::size_t allowed = 0; allowed < seen.size(); ++allowed) {
            std::size_t calls = 0;
            options.progress = [&](double) { return calls++ < allowed; };
            EXPECT_THROW((void)format.read(folder / file, options), Cancelled);
        }
    }
}

/// Reads a file while something happens, at a certain sign of progress.
struct Reading {
    std::string failure; ///< "" when it went well
    GridModel model;
    std::size_t signs = 0;
};
Reading read_while(const GridFormat& format, const std::filesystem::path& path, std::size_t sign,
                   const std::function<void()>& something)
{
    Reading reading;
    ReadOptions options;
    options.progress = [&](double) {
        if (reading.signs++ == sign) {
            something();
        }
        return true;
    };
    try {
        reading.model = format.read(path, options).model;
    } catch (const FileError& error) {
        reading.failure = error.reason();
    }
    return reading;
}

TEST_F(BinaryError, FilesThatChangeDuringTheImport)
{
    // Not in memory as a whole when it happens.
    const SmallGrid large({40, 40, 20});
    const auto cells = static_cast<std::int32_t>(large.cells());
    const auto grid_path = folder.write("G.GRID", old_grid_bytes(large).bytes());
    const auto egrid_path
        = folder.write("E.EGRID", test::egrid_bytes(large, std::vector<std::int32_t>(large.cells(), 1)).bytes());
    RecordBytes properties = test::init_bytes(large.size, cells);
    for (const std::string name : {"PERMX", "PERMY", "PERMZ", "PORV", "DX", "DY", "DZ", "DEPTH"}) {
        properties.doubles(name, std::vector<double>(large.cells(), 1.5));
    }
    const auto old_init_path = folder.write("G.INIT", properties.bytes());
    const auto init_path = folder.write("E.INIT", properties.bytes());
    struct Case {
        const char* what;
        const char* format;
        std::filesystem::path read, changed;
    };
    for (const Case& c : {Case{"old GRID", "grid", grid_path, grid_path},
                          Case{"INIT beside the old GRID", "grid", grid_path, old_init_path},
                          Case{"EGRID", "egrid", egrid_path, egrid_path},
                          Case{"INIT beside the EGRID", "egrid", egrid_path, init_path},
                          Case{"INIT", "init", init_path, init_path}}) {
        SCOPED_TRACE(c.what);
        const GridFormat& format = *GridFormats::find(c.format);
        const std::string bytes = test::file_text(c.changed);
        const auto put = [&](const std::string& content) { folder.write(c.changed.filename().string(), content); };
        const Reading before = read_while(format, c.read, 0, [] {});
        ASSERT_EQ(before.failure, "");
        ASSERT_GE(before.signs, 2U);

        // As long as before and as good, with another value.
        std::string other = bytes;
        Reading after;
        for (std::size_t at = bytes.size() - bytes.size() / 8;; ++at) {
            ASSERT_LT(at, bytes.size());
            other = bytes;
            other[at] = static_cast<char>(other[at] ^ 4);
            put(other);
            after = read_while(format, c.read, 0, [] {});
            if (after.failure.empty() && !test::difference(before.model, after.model).empty()) {
                break;
            }
        }
        std::size_t refused = 0;
        for (std::size_t sign = 0; sign < before.signs; ++sign) {
            for (const std::string& content :
                 {other, bytes + std::string(1000, '\0'), bytes.substr(0, bytes.size() / 2)}) {
                put(bytes);
                const Reading reading = read_while(format, c.read, sign, [&] { put(content); });
                if (!reading.failure.empty()) {
                    // Opened after the change it is what it is, else it is said to have changed.
                    put(content);
                    const std::string as_it_is = read_while(format, c.read, 0, [] {}).failure;
                    const bool told = reading.failure.find("while it was being read") != std::string::npos;
                    EXPECT_TRUE(told || reading.failure == as_it_is) << sign << ": " << reading.failure;
                    refused += told ? 1 : 0;
                } else if (content == other) {
                    EXPECT_TRUE(test::difference(before.model, reading.model).empty()
                                || test::difference(after.model, reading.model).empty())
                        << sign << ": neither the old file nor the new one";
                } else if (content.size() > bytes.size()) {
                    EXPECT_EQ(test::difference(before.model, reading.model), "") << sign;
                }
            }
        }
        EXPECT_GT(refused, 0U);
        put(bytes);
        EXPECT_EQ(read_while(format, c.read, 0, [] {}).failure, "");
    }
}

TEST_F(BinaryError, OtherFilesAreNotTakenForThese)
{
    for (const std::string& text :
         {std::string("SPECGRID\n1 1 1 1 F /\n"), std::string("'quoted' text"), std::string(5000, '\0'),
          std::string("\0\0\0\x10", 4), RecordBytes().integers("SEQNUM", {1}).integers("INTEHEAD", {1}).bytes(),
          RecordBytes().strings("RESTART", {"x"}).bytes()}) {
        for (const GridFormat* format : {GridFormats::find("egrid"), GridFormats::find("init"),
                                         GridFormats::find("grid"), GridFormats::find("bgrdecl")}) {
            ASSERT_NE(format, nullptr);
            EXPECT_FALSE(format->recognises(text, "a.file")) << format->name() << ": " << text.substr(0, 20);
        }
    }
    EXPECT_THROW((void)GridFormats::for_writing(folder / "A.INIT"), FileError);
    EXPECT_THROW((void)GridFormats::for_writing(folder / "A.GRID"), FileError);
}

} // namespace
} // namespace lodex
