// The rules of the text format, one by one, on grids small enough to see.

#include "GridTestTools.h"

#include <lodex/gridio/GrdeclFormat.h>
#include <lodex/gridio/GrdeclReader.h>

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

namespace lodex {
namespace {

using Doubles = std::vector<double>;

/// Two cells side by side, 1 x 1 x 1 each.
const std::string two_cells = "SPECGRID\n 2 1 1 1 F /\n"
                              "COORD\n 0 0 0 0 0 1  1 0 0 1 0 1  2 0 0 2 0 1\n"
                              " 0 1 0 0 1 1  1 1 0 1 1 1  2 1 0 2 1 1 /\n"
                              "ZCORN\n 8*0 8*1 /\n";

ReadResult read(const std::string& text, const ReadOptions& options = {})
{
    return grdecl::read_text(text, "model.grdecl", options);
}

GridModel model_of(const std::string& text)
{
    return read(text).model;
}

std::string texts(const ReadResult& result, Message::Level level)
{
    std::string all;
    for (const Message& message : result.messages) {
        if (message.level == level) {
            all += message.file + ':' + std::to_string(message.line) + ": " + message.text + '\n';
        }
    }
    return all;
}

TEST(GrdeclSyntax, SmallestGrid)
{
    const GridModel model = model_of(two_cells);
    EXPECT_EQ(model.size, (GridSize{2, 1, 1}));
    EXPECT_EQ(model.coord.size(), 36U);
    EXPECT_FALSE(model.coord.is_double());
    EXPECT_EQ(test::values_of(model.zcorn), (Doubles{0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 1, 1, 1, 1}));
    EXPECT_EQ(model.active, (std::vector<std::uint8_t>{1, 1}));
    EXPECT_DOUBLE_EQ(test::trilinear_volume(test::cell_corners(model, 0, 0, 0)), 1);
    EXPECT_DOUBLE_EQ(test::trilinear_volume(test::cell_corners(model, 1, 0, 0)), 1);
    EXPECT_TRUE(model.properties.empty());
    EXPECT_TRUE(model.kept.empty());
}

TEST(GrdeclSyntax, BlanksTabsLineEndsAndNoFinalNewline)
{
    std::string windows;
    for (const char c : two_cells) {
        windows += c == '\n' ? std::string("\r\n") : c == ' ' ? std::string("\t ") : std::string(1, c);
    }
    EXPECT_EQ(test::difference(model_of(windows), model_of(two_cells)), "");
    EXPECT_EQ(test::difference(model_of(two_cells.substr(0, two_cells.size() - 1)), model_of(two_cells)), "");
    EXPECT_EQ(test::difference(model_of("\xEF\xBB\xBF" + two_cells), model_of(two_cells)), "");
    EXPECT_EQ(test::difference(model_of("\n\n\f" + two_cells + "\n\n\v"), model_of(two_cells)), "");
}

TEST(GrdeclSyntax, Comments)
{
    const GridModel model = model_of("-- title / with a slash\n--\n" + two_cells
                                     + "PORO -- porosity\n 0.1 -- first 99\n--0.5\n 0.2--second\n/ -- end\n-- lb/ft\xB3 Latin-1\n");
    EXPECT_EQ(test::values_of(model.properties.at(0)), (Doubles{0.1F, 0.2F}));
}

TEST(GrdeclSyntax, TextBehindTheClosingSlashIsPassedOver)
{
    const ReadResult result = read(two_cells + "PORO\n 0.1 0.2 / these two 1 2 3\nPERMX 10 20/\n");
    EXPECT_EQ(test::values_of(result.model.properties.at(0)), (Doubles{0.1F, 0.2F}));
    EXPECT_EQ(test::values_of(result.model.properties.at(1)), (Doubles{10, 20}));
    EXPECT_EQ(texts(result, Message::Level::Warning), "");
}

TEST(GrdeclSyntax, RepeatCountsAndDefaults)
{
    const ReadResult result = read(two_cells + "PORO\n 2*0.25 /\nPERMX 1* 5 /\nSATNUM 1* 2 /\nACTNUM 1* 0 /\n");
    const auto& properties = result.model.properties;
    EXPECT_EQ(test::values_of(properties.at(0)), (Doubles{0.25, 0.25}));
    EXPECT_TRUE(std::isnan(test::values_of(properties.at(1))[0]));
    EXPECT_EQ(test::values_of(properties.at(1))[1], 5);
    EXPECT_EQ(properties.at(2).no_data, -2147483648.0);
    EXPECT_EQ(test::values_of(properties.at(2)), (Doubles{-2147483648.0, 2}));
    EXPECT_EQ(result.model.active, (std::vector<std::uint8_t>{1, 0}));
    EXPECT_EQ(texts(result, Message::Level::Info),
              "model.grdecl:10: PERMX: 1 value left out (n*) and undefined\n"
              "model.grdecl:11: SATNUM: 1 value left out (n*) and undefined\n");
}

TEST(GrdeclSyntax, KindsOfProperties)
{
    const ReadResult result = read(two_cells
                                   + "PORO 0.1 0.25 /\nPERMX 1.23456789 2 /\nNTG 1 1 /\nFIPNUM 3 -4 /\nEQLNUM 1.0 2.0 /\n"
                                     "SATNUM 1.5 2 /\nFACIES 7 8 /\nRHO 1.0 2.0 /\nFIPZON 1 2 /\nPVTNUM 99999999999 1 /\n"
                                     "MyProp 1e-3 2D2 /\nDEPTH +5 -5. /\n");
    const auto& p = result.model.properties;
    const std::vector<std::pair<std::string, std::size_t>> expected = {
        {"PORO", 0},   {"PERMX", 1}, {"NTG", 0},    {"FIPNUM", 2}, {"EQLNUM", 2}, {"SATNUM", 0},
        {"FACIES", 2}, {"RHO", 0},   {"FIPZON", 2}, {"PVTNUM", 1}, {"MyProp", 0}, {"DEPTH", 0}};
    ASSERT_EQ(p.size(), expected.size());
    for (std::size_t i = 0; i < p.size(); ++i) {
        EXPECT_EQ(p[i].name, expected[i].first);
        EXPECT_EQ(p[i].values.index(), expected[i].second) << p[i].name;
    }
    EXPECT_EQ(test::values_of(p[1]), (Doubles{1.23456789, 2}));
    EXPECT_EQ(test::values_of(p[3]), (Doubles{3, -4}));
    EXPECT_EQ(test::values_of(p[10]), (Doubles{0.001F, 200}));
    EXPECT_EQ(test::values_of(p[11]), (Doubles{5, -5}));
    EXPECT_EQ(texts(result, Message::Level::Warning),
              "model.grdecl:13: SATNUM holds numbers that are not whole; it is read as a continuous property\n"
              "model.grdecl:17: PVTNUM holds numbers that are not whole; it is read as a continuous property\n");
}

TEST(GrdeclSyntax, PrecisionOfGeometry)
{
    const auto with_depth = [](const std::string& depth) {
        std::string text = two_cells;
        return model_of(text.replace(text.find("8*0 8*1"), 7, "8*" + depth + " 8*2000"));
    };
    EXPECT_FALSE(with_depth("1600.125").zcorn.is_double());
    EXPECT_TRUE(with_depth("1600.1").zcorn.is_double()); // 32 bits would move it by 2e-5
    EXPECT_EQ(with_depth("1600.1").zcorn[0], 1600.1);
    EXPECT_EQ(with_depth("1e3").zcorn[0], 1000);
}

TEST(GrdeclSyntax, SizeOfTheGrid)
{
    EXPECT_EQ(model_of("DIMENS\n 2 1 1 /\n" + two_cells).size, (GridSize{2, 1, 1}));
    std::string text = two_cells;
    EXPECT_EQ(model_of(text.replace(text.find("2 1 1 1 F"), 9, "2 2*1    ")).size, (GridSize{2, 1, 1}));
    text = two_cells;
    EXPECT_EQ(model_of(text.replace(0, 8, "DIMENS  ")).size, (GridSize{2, 1, 1}));
    const GridModel late = model_of(two_cells.substr(two_cells.find("COORD")) + "PORO 0.1 0.2 /\nSPECGRID 2 1 1 /\nPERMX 1 2 /");
    EXPECT_EQ(test::difference(late, model_of(two_cells + "PORO 0.1 0.2 /\nPERMX 1 2 /")), "");
}

TEST(GrdeclSyntax, Frame)
{
    const GridModel model =
        model_of("MAPUNITS\n'METRES  ' /\nMAPAXES\n 1 2 3\n 4.5 5 6E1 /\nGRIDUNIT\n \"FEET\" 'MAP ' /\n" + two_cells);
    EXPECT_EQ(model.frame.map_units, "METRES");
    EXPECT_EQ(model.frame.grid_units, "FEET");
    EXPECT_TRUE(model.frame.grid_units_map);
    EXPECT_EQ(model.frame.map_axes, (std::array<double, 6>{1, 2, 3, 4.5, 5, 60}));
    const GridModel plain = model_of("GRIDUNIT\nMETRES /\n" + two_cells);
    EXPECT_EQ(plain.frame.grid_units, "METRES");
    EXPECT_FALSE(plain.frame.grid_units_map);
    EXPECT_FALSE(plain.frame.map_axes.has_value());
}

TEST(GrdeclSyntax, Faults)
{
    const GridModel model = model_of(two_cells
                                     + "FAULTS\n'F 1  ' 1 1 1 1 1 1 X / throw\n -- next\nF2 2 2 1 1 1 1 'J-' /\n/\n"
                                       "FAULTS\n 'F3' 1 2 1 1 1 1 K+ /\n/\n");
    ASSERT_EQ(model.faults.size(), 3U);
    EXPECT_EQ(model.faults[0].name, "F 1");
    EXPECT_EQ(model.faults[0].face, "X");
    EXPECT_EQ(model.faults[1].name, "F2");
    EXPECT_EQ(model.faults[1].i, (std::array<std::int64_t, 2>{1, 1}));
    EXPECT_EQ(model.faults[1].face, "J-");
    EXPECT_EQ(model.faults[2].i, (std::array<std::int64_t, 2>{0, 1}));
}

TEST(GrdeclSyntax, OtherKeywordsAreKeptToTheLetter)
{
    const ReadResult result = read("NOECHO\n" + two_cells
                                   + "GDORIENT\n INC INC INC DOWN RIGHT /\nPINCH\n 0.001 GAP 1* TOPBOT TOP/\n"
                                     "MINPV 500 / cubic metres\nCOPY\n PERMX PERMY / x\n 'PERMX' 'PERMZ' /\n/\nINIT\nOIL\n"
                                     "MYTABLE\n 1 2 3 /\n\n 4 5 6 / \nRPTGRID\n 'ROCKVOL' PORO /\nECHO");
    const std::vector<std::pair<std::string, std::string>> expected = {
        {"NOECHO", ""},
        {"GDORIENT", "\n INC INC INC DOWN RIGHT /"},
        {"PINCH", "\n 0.001 GAP 1* TOPBOT TOP/"},
        {"MINPV", " 500 /"},
        {"COPY", "\n PERMX PERMY / x\n 'PERMX' 'PERMZ' /\n/"},
        {"INIT", ""},
        {"OIL", ""},
        {"MYTABLE", "\n 1 2 3 /\n\n 4 5 6 /"},
        {"RPTGRID", "\n 'ROCKVOL' PORO /"},
        {"ECHO", ""}};
    ASSERT_EQ(result.model.kept.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(result.model.kept[i].name, expected[i].first);
        EXPECT_EQ(result.model.kept[i].text, expected[i].second);
        EXPECT_EQ(result.model.kept[i].file, "model.grdecl");
    }
    EXPECT_EQ(result.model.kept[1].line, 9);
    EXPECT_EQ(texts(result, Message::Level::Warning),
              "model.grdecl:14: COPY is kept as text and not applied: arrays hold the numbers of the file\n"
              "model.grdecl:20: MYTABLE: 3 values, not one per cell (expected 2)\n");
    EXPECT_NE(texts(result, Message::Level::Info).find("model.grdecl:20: MYTABLE is kept as text\n"), std::string::npos);
}

TEST(GrdeclSyntax, NumbersOfOneRecordThatAreNoArray)
{
    // One cell: a single number behind MINPV is no porosity volume for it.
    const std::string one_cell =
        "SPECGRID 1 1 1 1 F /\nCOORD 0 0 0 0 0 1 1 0 0 1 0 1 0 1 0 0 1 1 1 1 0 1 1 1 /\nZCORN 4*0 4*1 /\n";
    const ReadResult result = read(one_cell + "MINPV\n 500 /\nPINCH\n 1 /\nOTHER\n 2 /\nTABLE\n 3 /\n 4 /\n");
    ASSERT_EQ(result.model.properties.size(), 1U);
    EXPECT_EQ(result.model.properties[0].name, "OTHER");
    EXPECT_EQ(result.model.kept.size(), 3U);
    const ReadResult wrong = read(two_cells + "OTHER\n 1 2 3 /\n");
    EXPECT_TRUE(wrong.model.properties.empty());
    EXPECT_EQ(wrong.model.kept.at(0).text, "\n 1 2 3 /");
    EXPECT_EQ(texts(wrong, Message::Level::Warning),
              "model.grdecl:8: OTHER: 3 values, not one per cell (expected 2)\n");
}

TEST(GrdeclSyntax, BlocksThatBelongTogether)
{
    const ReadResult result = read(two_cells
                                   + "SKIP\nPORO 9 9 /\nENDSKIP\nCARFIN\n 'LGR' 1 1 1 1 1 1 2 2 2 /\nPORO\n 8*0.3 /\nENDFIN\n"
                                     "TITLE\n A field / with PORO\nPERMX 1 2 /\n");
    ASSERT_EQ(result.model.properties.size(), 1U);
    EXPECT_EQ(result.model.properties[0].name, "PERMX");
    ASSERT_EQ(result.model.kept.size(), 3U);
    EXPECT_EQ(result.model.kept[0].text, "\nPORO 9 9 /\nENDSKIP");
    EXPECT_EQ(result.model.kept[1].text, "\n 'LGR' 1 1 1 1 1 1 2 2 2 /\nPORO\n 8*0.3 /\nENDFIN");
    EXPECT_EQ(result.model.kept[2].text, "\n A field / with PORO");
}

TEST(GrdeclSyntax, ArraysOfABoxAreNotTakenForWholeOnes)
{
    const ReadResult result =
        read(two_cells + "BOX\n 1 1 1 1 1 1 /\nPORO\n 0.3 /\nENDBOX\nPERMX 1 2 /\nBOX 1 2 1 1 1 1 /\nNTG 1 0.5 /\n");
    ASSERT_EQ(result.model.properties.size(), 2U);
    EXPECT_EQ(result.model.properties[0].name, "PERMX");
    EXPECT_EQ(result.model.properties[1].name, "NTG");
    EXPECT_EQ(result.model.kept.size(), 4U);
    EXPECT_EQ(texts(result, Message::Level::Warning),
              "model.grdecl:10: PORO holds values for a BOX only; it is kept as text and not applied\n");
}

TEST(GrdeclSyntax, LaterArraysCount)
{
    const ReadResult result = read(two_cells + "PORO 1 2 /\nPERMX 5 6 /\nPORO 3 4 /\nACTNUM 0 1 /\nACTNUM 1 0 /\n");
    ASSERT_EQ(result.model.properties.size(), 2U);
    EXPECT_EQ(test::values_of(result.model.properties[0]), (Doubles{3, 4}));
    EXPECT_EQ(result.model.active, (std::vector<std::uint8_t>{1, 0}));
    EXPECT_EQ(texts(result, Message::Level::Warning),
              "model.grdecl:10: PORO is stated again; the later values count\n"
              "model.grdecl:12: ACTNUM is stated again; the later values count\n");
}

TEST(GrdeclSyntax, ForgivesWhatIsPlain)
{
    const ReadResult result = read(two_cells + "PORO 1 2\nPERMX 3 4 /\n/\nACTNUM 9*1 /\nNTG 1 1");
    EXPECT_EQ(result.model.properties.size(), 3U);
    EXPECT_EQ(result.model.active, (std::vector<std::uint8_t>{1, 1}));
    EXPECT_EQ(texts(result, Message::Level::Warning),
              "model.grdecl:8: PORO: the closing '/' is missing\n"
              "model.grdecl:11: ACTNUM: 9 values, expected 2 (one per cell of 2 x 1 x 1); all are the same, so the first ones "
              "are taken\n"
              "model.grdecl:12: NTG: the closing '/' is missing\n");
    const ReadResult thermal = read(two_cells + "ACTNUM 2 0 /\n");
    EXPECT_EQ(thermal.model.active, (std::vector<std::uint8_t>{1, 0}));
    EXPECT_EQ(texts(thermal, Message::Level::Warning),
              "model.grdecl:8: ACTNUM: values up to 2 are taken as 1, active\n");
}

TEST(GrdeclSyntax, MessagesOfOneKindAreLimited)
{
    std::string text = two_cells;
    for (int i = 0; i < 100; ++i) {
        text += "KEY" + std::to_string(i) + "\n 'x' /\n";
    }
    const ReadResult result = read(text);
    EXPECT_EQ(result.model.kept.size(), 100U);
    ASSERT_EQ(result.messages.size(), 21U);
    EXPECT_EQ(result.messages.back().text, "and 80 more keywords kept as text");
}

TEST(GrdeclBlocks, LayersBelowTheTopOneHangOnIt)
{
    // Two by one columns of two layers: tops 100 and 110, thicknesses 1, 2 and 3, 4.
    const GridModel model = model_of("DIMENS 2 1 2 /\nDX 4*10 /\nDY 4*20 /\nDZ 1 2 3 4 /\nTOPS 100 110 /\n");
    const auto top = [&model](std::int64_t i, std::int64_t k) { return test::cell_corners(model, i, 0, k)[0][2]; };
    const auto bottom = [&model](std::int64_t i, std::int64_t k) { return test::cell_corners(model, i, 0, k)[7][2]; };
    EXPECT_EQ(top(0, 0), 100);
    EXPECT_EQ(bottom(0, 0), 101);
    EXPECT_EQ(top(0, 1), 101);
    EXPECT_EQ(bottom(0, 1), 104);
    EXPECT_EQ(top(1, 1), 112);
    EXPECT_EQ(bottom(1, 1), 116);
    EXPECT_DOUBLE_EQ(test::trilinear_volume(test::cell_corners(model, 1, 0, 1)), 10 * 20 * 4);
    EXPECT_EQ(model.properties.size(), 3U);
    EXPECT_FALSE(model.coord.is_double());
}

TEST(GrdeclBlocks, LinesOfSizesAndTopsOfAllCells)
{
    const GridModel model =
        model_of("DIMENS 2 2 2 /\nDXV 1.5 2.5 /\nDYV 10 20 /\nDZV 3 4 /\nTOPS 4*100 4*105 /\n");
    const auto corners = test::cell_corners(model, 1, 1, 1);
    EXPECT_EQ(corners[0], (std::array<double, 3>{1.5, 10, 105}));
    EXPECT_EQ(corners[7], (std::array<double, 3>{4, 30, 109}));
    ASSERT_EQ(model.properties.size(), 1U);
    EXPECT_EQ(model.properties[0].name, "TOPS");
}

TEST(GrdeclBlocks, DecimalsStayClean)
{
    const GridModel model = model_of("DIMENS 3 1 1 /\nDX 294.12 382.35 0.1 /\nDY 3*1 /\nDZ 3*0.1 /\nTOPS 3*0.2 /\n");
    EXPECT_EQ(model.coord[6 * 2], 676.47);
    EXPECT_EQ(model.coord[6 * 3], 676.57);
    EXPECT_NEAR(test::cell_corners(model, 0, 0, 0)[7][2], 0.3, 1e-16);
}

TEST(GrdeclBlocks, SidesThatDifferMeetHalfway)
{
    const ReadResult result = read("DIMENS 1 2 1 /\nDX 10 20 /\nDY 2*5 /\nDZ 2*1 /\nTOPS 2*0 /\n");
    EXPECT_EQ(result.model.coord[6 * 1], 10); // first row of pillars
    EXPECT_EQ(result.model.coord[6 * 3], 15); // between the rows
    EXPECT_EQ(result.model.coord[6 * 5], 20);
    EXPECT_NE(texts(result, Message::Level::Warning).find("DX differs between neighbour rows or layers (cell 1, 2, 1)"),
              std::string::npos);
}

TEST(GrdeclBlocks, CornerPointsCountWhenBothAreThere)
{
    const ReadResult result = read(two_cells + "DX 7 8 /\nTOPS 5 5 /\n");
    EXPECT_EQ(result.model.coord[6], 1);
    EXPECT_EQ(result.model.properties.size(), 2U);
}

TEST(GrdeclDeck, OnlyTheGridSectionIsRead)
{
    const test::TemporaryFolder folder;
    folder.write("include/GRID.INC", two_cells + "INCLUDE\n 'include/PORO.INC' /\n");
    folder.write("include/PORO.INC", "PORO\n 0.1 0.2 /\n");
    folder.write("perm.inc", "PERMX\r\n 5 6 /\r\nENDINC\r\nthis is not read");
    const auto deck = folder.write("MODEL.DATA", "RUNSPEC\nTITLE\n PORO 9 9 /\nDIMENS\n 2 1 1 /\nTABDIMS\n 1 2 /\nFIELD\n"
                                                 "GRID ======\nINCLUDE\n './include/GRID.INC' /\nINCLUDE\n perm.inc /\n"
                                                 "EDIT\nMULTPV 1 1 /\nPROPS\n==== odd\nPVTW\n 1 2 /\nSWATINIT 0.5 0.5 /\n"
                                                 "INCLUDE 'fluid.inc' /\nREGIONS\nSATNUM 1 2 /\nSOLUTION ===\n"
                                                 "EQUIL\n 1 2 /\nSUMMARY\nFOPT\nINCLUDE 'more' /\nSCHEDULE\nPORO 7 7 /\nEND\n");
    const ReadResult result = GrdeclFormat().read(deck, {});
    std::vector<std::string> names;
    for (const auto& property : result.model.properties) {
        names.push_back(property.name);
    }
    EXPECT_EQ(names, (std::vector<std::string>{"PORO", "PERMX", "MULTPV", "SWATINIT", "SATNUM"}));
    std::vector<std::string> kept;
    for (const auto& keyword : result.model.kept) {
        kept.push_back(keyword.name + " " + keyword.file);
    }
    EXPECT_EQ(kept, (std::vector<std::string>{"RUNSPEC MODEL.DATA", "TITLE MODEL.DATA", "TABDIMS MODEL.DATA",
                                              "FIELD MODEL.DATA", "GRID MODEL.DATA", "EDIT MODEL.DATA", "PROPS MODEL.DATA",
                                              "PVTW MODEL.DATA", "INCLUDE MODEL.DATA", "REGIONS MODEL.DATA",
                                              "SOLUTION MODEL.DATA", "EQUIL MODEL.DATA", "SUMMARY MODEL.DATA"}));
    EXPECT_EQ(result.model.kept.back().text, "\nFOPT\nINCLUDE 'more' /\nSCHEDULE\nPORO 7 7 /\nEND\n");
    ASSERT_EQ(result.files.size(), 4U);
    EXPECT_EQ(result.files[2], folder.path() / "include/PORO.INC");
    EXPECT_EQ(result.files[3], folder.path() / "perm.inc");
    EXPECT_EQ(texts(result, Message::Level::Warning),
              deck.string() + ":17: \"==== odd\" is passed over, expected a keyword\n" + deck.string()
                  + ":21: INCLUDE: there is no file \"fluid.inc\"; the keyword is kept as text\n");
}

TEST(GrdeclDeck, HandMadeDeckOfTheTestData)
{
    const ReadResult result = GrdeclFormat().read(test::test_data() / "grdecl/deck/STEP.DATA", {});
    EXPECT_EQ(result.model.size, (GridSize{3, 2, 2}));
    EXPECT_EQ(result.model.faults.size(), 2U);
    // Blocks of 100 x 100 x 10 on both sides of a throw of 5.
    for (std::int64_t i = 0; i < 3; ++i) {
        EXPECT_DOUBLE_EQ(test::trilinear_volume(test::cell_corners(result.model, i, 1, 1)), 1e5);
    }
    EXPECT_EQ(test::cell_corners(result.model, 1, 0, 0)[1][2], 1000);
    EXPECT_EQ(test::cell_corners(result.model, 2, 0, 0)[0][2], 1005);
    EXPECT_EQ(result.files.size(), 3U);
    EXPECT_EQ(result.model.find_property("FIPNUM")->values.index(), 2U);
}

TEST(GrdeclDeck, PropertiesOnly)
{
    ReadOptions options;
    options.properties_only = true;
    EXPECT_THROW((void)read("PORO 0.1 0.2 /\n", options), FileError);
    options.size = GridSize{2, 1, 1};
    const ReadResult result =
        read("INCLUDE 'geometry' /\nCOORD 1 2 3 /\nPORO 0.1 0.2 /\nFAULTS\n F 1 1 1 1 1 1 X /\n/\n", options);
    EXPECT_EQ(result.model.properties.size(), 1U);
    EXPECT_EQ(result.model.faults.size(), 1U);
    EXPECT_TRUE(result.model.active.empty());
    EXPECT_TRUE(result.model.coord.empty());
    EXPECT_EQ(texts(result, Message::Level::Warning),
              "model.grdecl:1: INCLUDE: there is no file \"geometry\"; the keyword is kept as text\n");
}

TEST(GrdeclNotes, ThatDoNotReadArePassedOver)
{
    const ReadResult result = read(two_cells
                                   + "-- LODEX REGION \"a\" model 0\n--| 1 2\n-- LODEX LAYER \"u\" 5 1 top\n-- LODEX NONSENSE\n"
                                     "-- LODEX CODE 1 \"x\"\n-- LODEX PROPERTY PORO colour red\n-- LODEX\nPORO 1 2 /\n");
    EXPECT_TRUE(result.model.regions.empty());
    EXPECT_TRUE(result.model.layers.empty());
    EXPECT_EQ(result.model.properties.size(), 1U);
    EXPECT_EQ(std::count_if(result.messages.begin(), result.messages.end(),
                            [](const Message& m) { return m.level == Message::Level::Warning; }),
              5);
}

TEST(GrdeclNotes, AreForTheKeywordBehindThemOnly)
{
    const GridModel model = model_of(two_cells + "-- LODEX PROPERTY PERMX unit \"mD\"\nPORO 1 2 /\nPERMX 1 2 /\n"
                                                 "-- LODEX PROPERTY NTG unit \"-\" store double\nNTG 1 2 /\n");
    EXPECT_EQ(model.properties.at(0).unit, "");
    EXPECT_EQ(model.properties.at(1).unit, "");
    EXPECT_EQ(model.properties.at(2).unit, "-");
    EXPECT_EQ(model.properties.at(2).values.index(), 1U);
}

} // namespace
} // namespace lodex
