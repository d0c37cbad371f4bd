// What a broken file makes the reader say.

#include "GridTestTools.h"

#include <lodex/gridio/GrdeclFormat.h>
#include <lodex/gridio/GrdeclReader.h>

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace lodex {
namespace {

const std::string size_of_two = "SPECGRID\n 2 1 1 1 F /\n";
const std::string coord_of_two = "COORD\n 0 0 0 0 0 1  1 0 0 1 0 1  2 0 0 2 0 1\n"
                                 " 0 1 0 0 1 1  1 1 0 1 1 1  2 1 0 2 1 1 /\n";
const std::string zcorn_of_two = "ZCORN\n 8*0 8*1 /\n";
const std::string two_cells = size_of_two + coord_of_two + zcorn_of_two; ///< seven lines

std::string message_of(const std::string& text, const ReadOptions& options = {})
{
    try {
        (void)grdecl::read_text(text, "m.grdecl", options);
    } catch (const FileError& error) {
        return error.what();
    }
    return "no error";
}

std::string file_message(const std::filesystem::path& path, const ReadOptions& options = {})
{
    try {
        (void)GrdeclFormat().read(path, options);
    } catch (const FileError& error) {
        return error.what();
    }
    return "no error";
}

struct Case {
    std::string text;
    std::string message;
};

TEST(GrdeclErrors, NameLineValueAndWhatWasExpected)
{
    const std::vector<Case> cases = {
        // the size
        {"", "m.grdecl: no grid in this file, expected SPECGRID or DIMENS"},
        {"-- nothing\n", "m.grdecl: no grid in this file, expected SPECGRID or DIMENS"},
        {"SPECGRID\n 2 1 1 1 F", "m.grdecl:1: SPECGRID: the file ends before the closing '/'"},
        {"\nSPECGRID\n 2 1 /", "m.grdecl:2: SPECGRID: no value for NK, expected a whole number from 1 on"},
        {"SPECGRID\n 2 1* 1 /", "m.grdecl:2: SPECGRID: no value for NJ, expected a whole number from 1 on"},
        {"SPECGRID\n 2 -1 1 /", "m.grdecl:2: SPECGRID: \"-1\" for NJ, expected a whole number from 1 on"},
        {"SPECGRID\n 0 1 1 /", "m.grdecl:2: SPECGRID: \"0\" for NI, expected a whole number from 1 on"},
        {"SPECGRID\n 2.5 1 1 /", "m.grdecl:2: SPECGRID: \"2.5\" for NI, expected a whole number from 1 on"},
        {"SPECGRID\n 99999999999999999999 1 1 /",
         "m.grdecl:2: SPECGRID: \"99999999999999999999\" for NI, expected a whole number from 1 on"},
        {"SPECGRID\n 2000000000 2000000000 2000000000 1 F /",
         "m.grdecl:1: SPECGRID: 2000000000 x 2000000000 x 2000000000 cells, expected 1000000000000 at most"},
        {"SPECGRID\n 2 1 1 2 F /", "m.grdecl:1: SPECGRID: 2 reservoirs, expected 1"},
        {"SPECGRID\n 2 1 1 1 T /",
         "m.grdecl:2: SPECGRID: coordinate type \"T\", expected F (radial coordinates are not supported)"},
        {"RADIAL\n", "m.grdecl:1: RADIAL: radial grids are not supported, expected corner-point or block geometry"},
        {"DIMENS 3 1 1 /\n" + size_of_two,
         "m.grdecl:2: SPECGRID: 2 x 1 x 1 cells, expected 3 x 1 x 1 as DIMENS in m.grdecl:1 says"},
        {"SPECGRID\n 99999*1 /", "m.grdecl:2: SPECGRID: repeat count 99999, expected 1 to 10000"},
        {"SPECGRID 2 1\nCOORD\n 1 2 3 /", "m.grdecl:2: SPECGRID: found keyword \"COORD\" before the closing '/'"},
        // counts
        {size_of_two + "COORD\n 1 2 3 /\n",
         "m.grdecl:4: COORD: 3 values, expected 36 (6 for each pillar of 3 x 2)"},
        {size_of_two + coord_of_two + "ZCORN\n 8*0\n 9*1 /\n",
         "m.grdecl:8: ZCORN: 17 values, expected 16 (8 for each cell of 2 x 1 x 1)"},
        {two_cells + "ACTNUM\n 1 /\n", "m.grdecl:9: ACTNUM: 1 value, expected 2 (one per cell of 2 x 1 x 1)"},
        {two_cells + "ACTNUM\n 1 0\n 1 /\n", "m.grdecl:10: ACTNUM: 3 values, expected 2 (one per cell of 2 x 1 x 1)"},
        {two_cells + "PORO\n 0.1 /\n", "m.grdecl:9: PORO: 1 value, expected 2 (one per cell of 2 x 1 x 1)"},
        {two_cells + "PORO\n 0.1 0.2\n\n 0.3 0.4 /\n",
         "m.grdecl:11: PORO: 4 values, expected 2 (one per cell of 2 x 1 x 1)"},
        {two_cells + "TOPS 1 2 3 /", "m.grdecl:8: TOPS: 3 values, expected 2 (one per cell) or 2 (top layer only)"},
        {two_cells + "MAPAXES 1 2 3 /", "m.grdecl:8: MAPAXES: 3 values, expected 6"},
        // repeat counts
        {size_of_two + coord_of_two + "ZCORN\n 999999999999*1 /\n",
         "m.grdecl:7: ZCORN: 999999999999 values, expected 16 (8 for each cell of 2 x 1 x 1)"},
        {two_cells + "PORO\n 99999999999999999999999*1 /\n",
         "m.grdecl:9: PORO: \"99999999999999999999999*1\" has no valid repeat count, expected a whole number from 1 on "
         "(value 1 of 2)"},
        {two_cells + "PORO\n 0*1 /\n",
         "m.grdecl:9: PORO: \"0*1\" has no valid repeat count, expected a whole number from 1 on (value 1 of 2)"},
        {two_cells + "PORO\n -2*1 /\n",
         "m.grdecl:9: PORO: \"-2*1\" has no valid repeat count, expected a whole number from 1 on (value 1 of 2)"},
        {two_cells + "PORO\n 1.5*1 /\n",
         "m.grdecl:9: PORO: \"1.5*1\" has no valid repeat count, expected a whole number from 1 on (value 1 of 2)"},
        {two_cells + "PORO\n 1*2*3 1 /\n", "m.grdecl:9: PORO: \"1*2*3\" is not a number (value 1 of 2)"},
        // numbers
        {two_cells + "PORO\n 0.1\n abc /\n", "m.grdecl:10: PORO: \"abc\" is not a number (value 2 of 2)"},
        {two_cells + "PORO\n 0.1 0.2.3 /\n", "m.grdecl:9: PORO: \"0.2.3\" is not a number (value 2 of 2)"},
        {two_cells + "PORO\n 0.1 1e /\n", "m.grdecl:9: PORO: \"1e\" is not a number (value 2 of 2)"},
        {two_cells + "PORO\n 0.1 0x10 /\n", "m.grdecl:9: PORO: \"0x10\" is not a number (value 2 of 2)"},
        {two_cells + "PORO\n 0.1 nan /\n", "m.grdecl:9: PORO: \"nan\" is not a number (value 2 of 2)"},
        {two_cells + "PORO\n 0.1\nNaN\n /\n", "m.grdecl:10: PORO: \"NaN\" is not a number (value 2 of 2)"},
        {two_cells + "PORO\n 0.1 -inf /\n", "m.grdecl:9: PORO: \"-inf\" is not a number (value 2 of 2)"},
        {two_cells + "PORO\n 0.1 1,5 /\n", "m.grdecl:9: PORO: \"1,5\" is not a number (value 2 of 2)"},
        {two_cells + "PORO\n 0.1 '0.2' /\n", "m.grdecl:9: PORO: \"'0.2'\" is not a number (value 2 of 2)"},
        {two_cells + "PORO\n 0.1 1e999 /\n",
         "m.grdecl:9: PORO: \"1e999\" is out of range, expected a 64-bit number (value 2 of 2)"},
        {two_cells + "PORO\n 0.1 \xB3 /\n", "m.grdecl:9: PORO: \"\xC2\xB3\" is not a number (value 2 of 2)"},
        {two_cells + "ACTNUM\n 1 -1 /\n", "m.grdecl:9: ACTNUM: \"-1\" is neither 0 nor 1 (value 2 of 2)"},
        {two_cells + "ACTNUM\n 1 0.5 /\n", "m.grdecl:9: ACTNUM: \"0.5\" is neither 0 nor 1 (value 2 of 2)"},
        {size_of_two + "COORD\n 36* /\n", "m.grdecl:3: COORD: 36 values left out (n*), expected numbers"},
        {size_of_two + coord_of_two + "ZCORN 15*1 1* /\n",
         "m.grdecl:6: ZCORN: 1 value left out (n*), expected numbers"},
        {two_cells + "MAPAXES 1 2 3 4 5 x /", "m.grdecl:8: MAPAXES: \"x\" is not a number (value 6 of 6)"},
        {two_cells + "MAPAXES 1 2 3 4 5 1* /", "m.grdecl:8: MAPAXES: \"1*\" is not a number (value 6 of 6)"},
        // cut off, mixed up
        {size_of_two + "COORD\n 0 0 0 0\n",
         "m.grdecl:5: COORD: the file ends after 4 of 36 values (6 for each pillar of 3 x 2)"},
        {two_cells + "PORO\n 0.1\nPERMX\n 1 2 /\n",
         "m.grdecl:10: PORO: found keyword \"PERMX\" after 1 of 2 values (one per cell of 2 x 1 x 1)"},
        {two_cells + "12 13 /\n", "m.grdecl:8: \"12\" found where a keyword is expected"},
        {two_cells + "'PORO' 1 2 /\n", "m.grdecl:8: \"'\" found where a keyword is expected"},
        {two_cells + std::string("PO\0RO", 5), "m.grdecl:8: byte 0 at position 127: binary data, expected text"},
        {two_cells + std::string("PORO 1 \0 2 /", 12), "m.grdecl:8: byte 0 at position 132: binary data, expected text"},
        {std::string("\0\0\0\x10", 4), "m.grdecl:1: byte 0 at position 0: binary data, expected text"},
        {"\x7F""ELF\2\1\1", "m.grdecl:1: \"?ELF???\" found where a keyword is expected"},
        {two_cells + "MAPUNITS 'METRES /\n", "m.grdecl:8: the quote before \"METRES /\" is not closed on its line"},
        {two_cells + "SKIP\nPORO 1 2 /\n", "m.grdecl:8: SKIP: the file ends before ENDSKIP"},
        // geometry
        {size_of_two, "m.grdecl: no geometry: COORD and ZCORN are missing, and so are DX, DY, DZ, TOPS of a block-centred "
                      "grid"},
        {size_of_two + "EQUALS\n 'DX' 100 /\n 'DY' 100 /\n/\nDZ 1 1 /\nTOPS 1 1 /\n",
         "m.grdecl: no geometry: COORD and ZCORN are missing, and so are DX, DY of a block-centred grid (arrays set by "
         "EQUALS or COPY do not count)"},
        {size_of_two + coord_of_two, "m.grdecl: COORD without ZCORN, expected both"},
        {size_of_two + zcorn_of_two, "m.grdecl: ZCORN without COORD, expected both"},
        {coord_of_two + zcorn_of_two, "m.grdecl:1: COORD: the grid's size is not known, expected SPECGRID or DIMENS"},
        {"DXV 1 2 /\n" + size_of_two,
         "m.grdecl:1: DXV: the grid's size is not known here, expected SPECGRID or DIMENS before"},
        {size_of_two + "DXV 1* 2 /\n", "m.grdecl:3: DXV: 1 value left out (n*), expected numbers"},
        // faults and boxes
        {two_cells + "FAULTS\n 'F' 1 2 1 1 1 X /\n/\n",
         "m.grdecl:9: FAULTS: 7 values in a record, expected 8 (name, I1 I2 J1 J2 K1 K2, face)"},
        {two_cells + "FAULTS\n 'F' 1 2 1 1 0 1 X /\n/\n",
         "m.grdecl:9: FAULTS: \"0\" for K1, expected a whole number from 1 on"},
        {two_cells + "FAULTS\n 'F' 1 2 1 1 1 1 W /\n/\n",
         "m.grdecl:9: FAULTS: \"W\" for the face, expected X, Y, Z or I, J, K, with - or + behind it"},
        {two_cells + "FAULTS\n 'F' 1 1 1 1 1 1 X /\n 'G' 1 3 1 1 1 1 X /\n/\n",
         "m.grdecl:10: FAULTS: I range 1 to 3 of \"G\", expected a range within 1 to 2"},
        {two_cells + "FAULTS\n 'F' 2 1 1 1 1 1 X /\n/\n",
         "m.grdecl:9: FAULTS: I range 2 to 1 of \"F\", expected a range within 1 to 2"},
        {two_cells + "BOX 1 5 1 1 1 1 /\n", "m.grdecl:8: BOX: indices 1 to 5, expected a range within 1 to 2"},
        // files
        {two_cells + "INCLUDE\n 'none.inc' /\n", "m.grdecl:8: INCLUDE: there is no file \"none.inc\""},
        {two_cells + "INCLUDE\n /\n", "m.grdecl:8: INCLUDE: no file name, expected a path"},
        {two_cells + "-- LODEX REGION \"open\n", "m.grdecl:8: the quote in a \"-- LODEX\" comment is not closed"}};
    for (const Case& one : cases) {
        EXPECT_EQ(message_of(one.text), one.message) << one.text;
    }
}

TEST(GrdeclErrors, TheSizeOfTheGridThatPropertiesAreFor)
{
    ReadOptions options;
    options.properties_only = true;
    options.size = GridSize{4, 4, 4};
    EXPECT_EQ(message_of(size_of_two, options), "m.grdecl:1: SPECGRID: 2 x 1 x 1 cells, expected 4 x 4 x 4 as the grid has");
    EXPECT_EQ(message_of("PORO\n 3*1 /", options), "m.grdecl:2: PORO: 3 values, expected 64 (one per cell of 4 x 4 x 4)");
}

TEST(GrdeclErrors, MemoryIsBounded)
{
    ReadOptions options;
    options.max_bytes = 1'000'000;
    const std::string huge = "SPECGRID\n 10000 10000 1000 1 F /\n";
    EXPECT_EQ(message_of(huge + "PORO\n 100000000000*0.2 /\n", options),
              "m.grdecl:3: PORO: a grid of 10000 x 10000 x 1000 cells asks for more memory than the 1000000 bytes allowed");
    EXPECT_EQ(message_of(huge + "FIPNUM\n 100000000000* /\n", options),
              "m.grdecl:3: FIPNUM: a grid of 10000 x 10000 x 1000 cells asks for more memory than the 1000000 bytes allowed");
    // A declared size alone takes no memory.
    EXPECT_EQ(message_of(huge + "PORO\n 3*0.2 /\n", options),
              "m.grdecl:4: PORO: 3 values, expected 100000000000 (one per cell of 10000 x 10000 x 1000)");
    // Not one array, but many.
    std::string many = "SPECGRID 100 100 10 1 F /\n";
    for (int i = 0; i < 5; ++i) {
        many += "PROP" + std::to_string(i) + " 100000*1.5 /\n";
    }
    EXPECT_EQ(message_of(many, options),
              "m.grdecl:4: PROP2: a grid of 100 x 100 x 10 cells asks for more memory than the 1000000 bytes allowed");
    EXPECT_EQ(message_of("SPECGRID 100 100 10 1 F /\nDXV 100*1 /\nDYV 100*1 /\nDZV 10*1 /\nTOPS 10000*1 /\n", options),
              "m.grdecl: a grid of 100 x 100 x 10 cells asks for more memory than the 1000000 bytes allowed");
    options.properties_only = true;
    EXPECT_EQ(message_of("SPECGRID 10000 10000 1 1 F /\n-- LODEX REGION \"r\" model 0\n--| 100000000\n", options),
              "m.grdecl:2: region \"r\" asks for more memory than the 1000000 bytes allowed");
}

TEST(GrdeclErrors, FilesThatCannotBeRead)
{
    const test::TemporaryFolder folder;
    const std::string name = folder.path().string();
    EXPECT_EQ(file_message(folder / "none.grdecl"), name + "/none.grdecl: cannot be read: No such file or directory");
    EXPECT_EQ(file_message(folder.path()), name + ": is a folder, expected a file");
    EXPECT_EQ(file_message("/dev/zero"), "/dev/zero: is not a regular file");
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(file_message(folder / "pipe"), name + "/pipe: is not a regular file");
    EXPECT_EQ(file_message(folder.write("dir.grdecl", "\nINCLUDE\n '.' /\n")),
              name + "/dir.grdecl:2: INCLUDE \".\": is a folder, expected a file");
}

TEST(GrdeclErrors, FilesThatChangeUnderTheReader)
{
    const test::TemporaryFolder folder;
    constexpr std::size_t size = 20'000'000;
    const auto path = folder / "big.grdecl";
    const auto message = [&](std::uintmax_t later) {
        folder.write("big.grdecl", std::string(size, '\n'));
        ReadOptions options;
        options.progress = [&](double) {
            std::filesystem::resize_file(path, later);
            return true;
        };
        return file_message(path, options);
    };
    const std::string start = path.string() + ": changed while it was read (20000000 bytes at first, then ";
    EXPECT_EQ(message(10'000'000), start + "10000000)");
    EXPECT_EQ(message(20'000'001), start + "20000001)");
}

TEST(GrdeclErrors, FilesThatIncludeEachOther)
{
    const test::TemporaryFolder folder;
    const std::string name = folder.path().string();
    const auto self = folder.write("self.grdecl", "INCLUDE\n 'self.grdecl' /\n");
    EXPECT_EQ(file_message(self), name + "/self.grdecl:1: INCLUDE \"self.grdecl\": includes itself");
    folder.write("a.inc", "\nINCLUDE\n 'b.inc' /\n");
    const auto loop = folder.write("b.inc", "INCLUDE\n './a.inc' /\n");
    EXPECT_EQ(file_message(loop), name + "/a.inc:2: INCLUDE \"b.inc\": includes itself");
    for (int i = 0; i < 30; ++i) {
        folder.write("deep" + std::to_string(i), "INCLUDE 'deep" + std::to_string(i + 1) + "' /\n");
    }
    EXPECT_EQ(file_message(folder / "deep0"),
              name + "/deep19:1: INCLUDE \"deep20\": files include each other more than 20 deep");
    // Twice each, which makes 2^15 readings.
    for (int i = 0; i < 15; ++i) {
        const std::string next = "INCLUDE 'twice" + std::to_string(i + 1) + "' /\n";
        folder.write("twice" + std::to_string(i), next + next);
    }
    folder.write("twice15", "\n");
    EXPECT_TRUE(file_message(folder / "twice0").ends_with(": more than 10000 files are included"));
    // The same file twice, one after the other, is no loop.
    folder.write("poro.inc", "PORO 1 2 /\n");
    const auto diamond = folder.write("diamond.grdecl", two_cells + "INCLUDE 'poro.inc' /\nINCLUDE 'poro.inc' /\n");
    EXPECT_EQ(file_message(diamond), "no error");
}

TEST(GrdeclErrors, AnErrorInAnIncludedFileNamesThatFile)
{
    const test::TemporaryFolder folder;
    folder.write("sub/poro.inc", "-- comment\r\nPORO\r\n 0.1 x /\r\n");
    const auto path = folder.write("m.grdecl", two_cells + "INCLUDE\n 'sub\\poro.inc' /\n");
    EXPECT_EQ(file_message(path), (folder / "sub/poro.inc").string() + ":3: PORO: \"x\" is not a number (value 2 of 2)");
}

TEST(GrdeclErrors, EveryCutOfAFileEndsInAMessageOrAModel)
{
    const std::string text = "GRID\nGRIDUNIT\n'METRES' /\n" + two_cells
        + "PORO\n 0.1 2*0.2 /\nFIPNUM 2*3 /\nFAULTS\n 'F' 1 1 1 1 1 1 X /\n/\nCOPY\n PORO NTG /\n/\nSKIP\nENDSKIP\n"
          "-- LODEX REGION \"r\" model 1\n--| 1 1\nPROPS\nPVTW\n 1 2 /\n";
    int models = 0;
    for (std::size_t length = 0; length <= text.size(); ++length) {
        for (const char tail : {'\n', '/', '\0', '9', '*'}) {
            const std::string message = message_of(text.substr(0, length) + tail);
            models += message == "no error" ? 1 : 0;
            EXPECT_TRUE(message == "no error" || message.starts_with("m.grdecl:")) << message;
        }
    }
    EXPECT_GT(models, 0);
}

TEST(GrdeclErrors, CancelThrowsAtEveryStep)
{
    const test::TemporaryFolder folder;
    std::string text = "SPECGRID 40 40 40 1 F /\nDXV 40*1 /\nDYV 40*1 /\nDZV 40*1 /\nTOPS 1600*1000 /\nPORO\n";
    for (int i = 0; i < 64'000; ++i) {
        text += "0.12345678 ";
    }
    text += "/\nFAULTS\n";
    for (int i = 0; i < 1000; ++i) {
        text += " 'F' 1 1 1 1 1 1 X /\n";
    }
    text += "/\nINCLUDE 'more.inc' /\n";
    folder.write("more.inc", "PERMX 64000*5 /\nUNKNOWN\n" + std::string(600'000, 'x') + " /\n");
    const auto path = folder.write("big.grdecl", text);
    int steps = 0;
    double last = 0;
    ReadOptions options;
    options.progress = [&](double done) {
        EXPECT_GE(done, last);
        EXPECT_LE(done, 1);
        last = done;
        ++steps;
        return true;
    };
    const ReadResult whole = GrdeclFormat().read(path, options);
    EXPECT_EQ(last, 1);
    EXPECT_GT(steps, 1000);
    for (int stop = 1; stop <= steps; stop += stop < 60 || stop > steps - 60 ? 1 : 37) {
        int step = 0;
        options.progress = [&](double) { return ++step < stop; };
        EXPECT_THROW((void)GrdeclFormat().read(path, options), Cancelled) << stop;
    }
}

} // namespace
} // namespace lodex
