// Files that are not what they should be: each is refused with its place and a reason, or read as it can be.

#include "../gridio/GridTestTools.h"

#include <lodex/gridio/RoffFormat.h>
#include <lodex/gridio/RoffReader.h>
#include <lodex/gridio/RoffWriter.h>

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <random>

namespace lodex {
namespace {

using roff::Form;
using namespace std::string_literals;

/// Two cells above each other with a parameter, as other programs write them.
const std::string small_text = R"(roff-asc
#ROFF file#
#Creator: someone #
tag filedata
int byteswaptest 1
char filetype "grid"
endtag
tag version
int major 2
int minor 0
endtag
tag dimensions
int nX 1
int nY 1
int nZ 2
endtag
tag translate
float xoffset 1.00000000E+03
float yoffset 2.00000000E+03
float zoffset 0.00000000E+00
endtag
tag scale
float xscale 1
float yscale 1
float zscale -1
endtag
tag subgrids
array int nLayers 2
   1   1
endtag
tag cornerLines
array float data 24
0 0 -12 0 0 -10 0 1 -12 0 1 -10
1 0 -12 1 0 -10 1 1 -12 1 1 -10
endtag
tag zvalues
array byte splitEnz 12
1 1 1 1 1 1 1 1 1 1 1 1
array float data 12
-12 -11 -10 -12 -11 -10 -12 -11 -10 -12 -11 -10
endtag
tag active
array bool data 2
1 0
endtag
tag parameter
char name "FACIES"
array char codeNames 2
 "Sand"
 "Shale"
array int codeValues 2
 1 2
array int data 2
 2 -999
endtag
tag eof
endtag
)";

std::string replaced(std::string text, const std::string& what, const std::string& by)
{
    const auto at = text.find(what);
    EXPECT_NE(at, std::string::npos) << what;
    return at == std::string::npos ? text : text.replace(at, what.size(), by);
}

ReadResult read(std::string_view bytes, const ReadOptions& options = {})
{
    return roff::read_bytes(bytes, "folder/model.roff", options);
}

void expect_refused(const std::string& bytes, std::int64_t line, const std::string& reason,
                    const ReadOptions& options = {})
{
    try {
        (void)read(bytes, options);
        ADD_FAILURE() << "was read: " << reason;
    } catch (const FileError& error) {
        EXPECT_EQ(error.file(), "folder/model.roff");
        EXPECT_EQ(error.line(), line) << error.what();
        EXPECT_NE(error.reason().find(reason), std::string::npos) << error.what() << "\nexpected: " << reason;
    }
}

TEST(RoffRead, TheSmallTextIsGood)
{
    const ReadResult result = read(small_text);
    EXPECT_TRUE(result.messages.empty());
    const GridModel& model = result.model;
    EXPECT_EQ(model.size, (GridSize{1, 1, 2}));
    EXPECT_FALSE(model.coord.is_double());
    // The pillar of the far corner, top point first; depths down.
    const std::vector<double> coord = test::values_of(model.coord);
    EXPECT_EQ(std::vector<double>(coord.end() - 6, coord.end()),
              (std::vector<double>{1001, 2001, 10, 1001, 2001, 12}));
    EXPECT_EQ(test::values_of(model.zcorn),
              (std::vector<double>{10, 10, 10, 10, 11, 11, 11, 11, 11, 11, 11, 11, 12, 12, 12, 12}));
    // The file has the bottom cell first.
    EXPECT_EQ(model.active, (std::vector<std::uint8_t>{0, 1}));
    ASSERT_EQ(model.properties.size(), 1U);
    EXPECT_EQ(std::get<std::vector<std::int32_t>>(model.properties[0].values), (std::vector<std::int32_t>{-999, 2}));
    EXPECT_EQ(model.properties[0].no_data, -999);
    EXPECT_EQ(model.properties[0].code_names, (std::map<std::int32_t, std::string>{{1, "Sand"}, {2, "Shale"}}));
    ASSERT_EQ(model.layers.size(), 2U);
    EXPECT_EQ(model.layers[0].unit, "Subgrid_1");
    EXPECT_EQ(model.layers[1].unit, "Subgrid_2");
}

TEST(RoffRead, NodesWithTwoDepthsAndEight)
{
    // The middle node of the first pillar: 11.5 below, 11 above; of the last one: all corners apart.
    std::string text = replaced(small_text, "1 1 1 1 1 1 1 1 1 1 1 1\n", "1 2 1 1 1 1 1 1 1 1 8 1\n");
    text = replaced(text, "array float data 12\n-12 -11 -10 -12 -11 -10 -12 -11 -10 -12 -11 -10",
                    "array float data 20\n-12 -11.5 -11 -10 -12 -11 -10 -12 -11 -10 -12 "
                    "-11.1 -11.2 -11.3 -11.4 -11.5 -11.6 -11.7 -11.8 -10");
    const auto zcorn = test::values_of(read(text).model.zcorn);
    // Of the cell above: its bottom; of the cell below: its top.
    EXPECT_EQ((std::vector<double>(zcorn.begin() + 4, zcorn.begin() + 12)),
              (std::vector<double>{11, 11, 11, static_cast<double>(11.5F), 11.5, 11, 11, static_cast<double>(11.1F)}));
}

TEST(RoffRead, OptionalPartsMayBeAbsentAndTheOrderIsFree)
{
    // Data before splitEnz, no splitEnz at all, no translate, scale, active, subgrids; "eof" alone.
    std::string text = replaced(small_text, "array byte splitEnz 12\n1 1 1 1 1 1 1 1 1 1 1 1\n", "");
    text = replaced(text, "tag active\narray bool data 2\n1 0\nendtag\n", "");
    text = replaced(text, "tag subgrids\narray int nLayers 2\n   1   1\nendtag\n", "");
    text = replaced(text, "tag eof\nendtag\n", "eof");
    const auto from = text.find("tag translate");
    text.erase(from, text.find("tag cornerLines") - from);
    const GridModel model = read(text).model;
    EXPECT_EQ(model.active, (std::vector<std::uint8_t>{1, 1}));
    EXPECT_EQ(model.coord[2], 10);
    EXPECT_TRUE(model.layers.empty());
    std::string turned = replaced(small_text, "array byte splitEnz 12\n1 1 1 1 1 1 1 1 1 1 1 1\n", "");
    turned = replaced(turned, "-11 -10\nendtag\ntag active",
                      "-11 -10\narray byte splitEnz 12\n1 1 1 1 1 1 1 1 1 1 1 1\nendtag\ntag active");
    EXPECT_EQ(test::difference(read(turned).model, read(small_text).model), "");
    // Carriage returns, tabs, comments between numbers.
    std::string odd =
        replaced(small_text, "-12 -11 -10 -12 -11 -10 -12 -11 -10 -12 -11 -10",
                 "-12 #here and\t# -11\t-10\r\n-12 -11 -10 # to the end\n-1.2E+01 -1.1e1 -10.0 -12. -11 -10");
    EXPECT_EQ(test::difference(read(odd).model, read(small_text).model), "");
}

TEST(RoffRead, ElevationsAreTurnedIntoDepths)
{
    const ReadResult result = read(replaced(small_text, "float zscale -1", "float zscale 1"));
    EXPECT_EQ(result.model.zcorn, read(small_text).model.zcorn);
    EXPECT_EQ(result.model.coord, read(small_text).model.coord);
    ASSERT_EQ(result.messages.size(), 1U);
    EXPECT_EQ(result.messages[0].level, Message::Level::Warning);
    EXPECT_NE(result.messages[0].text.find("upwards"), std::string::npos);
}

TEST(RoffRead, UnknownTagsArePassedOverWithAMessage)
{
    const std::string text = replaced(small_text, "tag active",
                                      "tag wells\nchar w \"tag endtag\"\narray float x 3\n1 2 nan\n"
                                      "array char names 2 \"a\" \"b\"\nbool b 1\nendtag\ntag active");
    const ReadResult result = read(text);
    ASSERT_EQ(result.messages.size(), 1U);
    EXPECT_EQ(result.messages[0].level, Message::Level::Info);
    EXPECT_NE(result.messages[0].text.find("\"wells\""), std::string::npos);
    EXPECT_EQ(result.messages[0].line, 42);
    EXPECT_EQ(test::difference(result.model, read(small_text).model), "");
}

TEST(RoffRead, NamesThatStandTwiceAndNamesThatAreAbsent)
{
    const std::string parameter = "tag parameter\nchar name \"FACIES\"\narray float data 2\n 2 3\nendtag\n";
    const std::string nameless = "tag parameter\narray byte data 2\n 2 255\nendtag\n";
    const std::string flags = "tag parameter\nchar name \"F\xC3\xB6\"\narray bool data 2\n 1 0\nendtag\n";
    const ReadResult result = read(replaced(small_text, "tag eof", parameter + nameless + flags + "tag eof"));
    ASSERT_EQ(result.model.properties.size(), 4U);
    EXPECT_EQ(result.model.properties[1].name, "FACIES_2");
    EXPECT_EQ(result.model.properties[1].values.index(), 0U);
    EXPECT_EQ(result.model.properties[2].name, "PARAMETER_3");
    EXPECT_EQ(result.model.properties[2].no_data, 255);
    EXPECT_EQ(result.model.properties[3].name, "F\xC3\xB6");
    EXPECT_FALSE(result.model.properties[3].no_data);
    EXPECT_EQ(result.messages.size(), 2U);
}

TEST(RoffErrors, TextWithItsLine)
{
    const auto refused = [](const std::string& what, const std::string& by, std::int64_t line,
                            const std::string& reason) {
        SCOPED_TRACE(what + " -> " + by);
        expect_refused(replaced(small_text, what, by), line, reason);
    };
    expect_refused("", 0, "is no ROFF file");
    expect_refused("roff-xyz\n", 0, "is no ROFF file");
    expect_refused("roff-asc", 0, "is no ROFF file");
    expect_refused("roff-asc\n", 2, "cut off");
    refused("byteswaptest 1", "byteswaptest 2", 5, "byteswaptest is 2, expected 1");
    refused("int byteswaptest 1", "byte byteswaptest 1", 5, "expected int");
    refused("major 2", "major 33554432", 9, "version 33554432");
    refused("nX 1", "nX 0", 13, "nX is 0");
    refused("nX 1", "nX -3", 13, "nX is -3");
    refused("nX 1", "nX 1.5", 13, "expected the value of \"nX\" (int)");
    refused("nX 1", "nX 2000000000", 12, "");
    refused("int nX 1", "float nX 1", 13, "expected int");
    refused("int nX 1\n", "", 12, "has no nX");
    refused("int nX 1", "int nX 1\nint nX 1", 14, "\"nX\" twice");
    refused("int nX 1", "integer nX 1", 13, "unknown type \"integer\"");
    refused("nX 1\nint nY 1\nint nZ 2", "nX 100000\nint nY 100000\nint nZ 2", 12, "larger than the format can hold");
    refused("xscale 1", "xscale 0", 23, "cannot be 0");
    refused("xoffset 1.00000000E+03", "xoffset inf", 18, "cannot be inf");
    refused("nLayers 2\n   1   1", "nLayers 2\n   1   2", 28, "3 layers together");
    refused("nLayers 2\n   1   1", "nLayers 2\n   0   2", 28, "subgrid of 0 layers");
    refused("nLayers 2\n   1   1", "nLayers 3\n   1 1 1", 28, "3 subgrids for 2 layers");
    refused("data 24", "data 23", 34, "fewer values than there are");
    refused("data 24", "data 25", 35, "expected value 25 of the 25");
    refused("data 24", "data -1", 32, "array of -1 values");
    refused("data 24", "data 2000000000", 32, "bytes left");
    refused("array float data 24", "array int data 24", 32, "expected float");
    refused("0 0 -12 0 0 -10 0 1", "0 0 -12 0 x -10 0 1", 33, "found \"x\", expected value 5 of the 24");
    refused("0 0 -12 0 0 -10 0 1", "0 0 -12 0 1e39 -10 0 1", 33, "found \"1e39\"");
    refused("0 0 -12 0 0 -10 0 1", "0 0 -12 0 nan -10 0 1", 32, "not finite");
    refused("0 0 -12 0 0 -10 0 1", "0 0 -12 0 0-10 0 1 1", 33, "found \"0-10\"");
    refused("splitEnz 12\n1 1", "splitEnz 12\n1 3", 37, "value 2 of splitEnz is 3");
    refused("splitEnz 12\n1 1", "splitEnz 12\n1 0", 37, "value 2 of splitEnz is 0");
    refused("splitEnz 12\n1 1", "splitEnz 12\n1 256", 38, "found \"256\"");
    refused("splitEnz 12\n1 1", "splitEnz 12\n1 2", 39, "zvalues has 12 values, expected 13");
    refused("splitEnz 12\n1 1 ", "splitEnz 11\n1 ", 37, "splitEnz has 11 values");
    refused("bool data 2\n1 0", "bool data 3\n1 0 1", 43, "active has 3 values, expected 2 (1 x 1 x 2)");
    refused("bool data 2\n1 0", "float data 2\n1 0", 43, "expected bool");
    refused("tag active", "tag cornerLines", 42, "a second time");
    refused("tag active", "tag", 44, "fewer values than there are");
    refused("tag active", "gat active", 42, "found \"gat\", expected \"tag\"");
    refused("int data 2\n 2 -999", "int data 1\n 2", 53, "parameter \"FACIES\" has 1 values, expected 2");
    refused("int data 2\n 2 -999", "int data 2\n 2 -9.5", 54, "found \"-9.5\"");
    refused("int data 2\n 2 -999", "char data 2\n \"\" \"\"", 53, "texts for values");
    refused("codeValues 2\n 1 2", "codeValues 3\n 1 2 3", 51, "3 codeValues and 2 codeNames");
    refused("array int codeValues 2\n 1 2\n", "", 48, "0 codeValues and 2 codeNames");
    refused("\"Sand\"", "Sand", 49, "expected text in quotes");
    refused("\"FACIES\"", "\"FACIES", 49, "");
    refused("codeNames 2", "codeNames 2000000", 48, "more than there can be");
    refused("tag dimensions", "tag dimension", 27, "before the tag dimensions");
    refused("tag zvalues", "tag zvalue", 0, "has cornerLines but no zvalues");
    refused("tag cornerLines", "tag cornerLine", 0, "has zvalues but no cornerLines");
    refused("tag eof\nendtag\n", "", 56, "cut off");
    refused("tag eof\nendtag\n",
            "tag lodexParameter\nbyte region 1\nendtag\ntag lodexParameter\nbyte region 1\nendtag\n", 59,
            "does not stand behind a parameter");
    refused("float xoffset 1.00000000E+03", "float xoffset 1.00000000E+03" + std::string(2000, '0'), 18,
            "expected the value");
    refused("tag active", "tag "s + std::string(3000, 'x'), 42, "a word of more than");
    refused("tag active", "tag \0active"s, 42, "expected a word");
}

TEST(RoffErrors, WordsOfTheOwnTagsAreChecked)
{
    const auto refused = [](const std::string& tags, const std::string& reason) {
        SCOPED_TRACE(tags);
        try {
            (void)read(replaced(small_text, "tag eof", tags + "\nendtag\ntag eof"));
            ADD_FAILURE() << "was read";
        } catch (const FileError& error) {
            EXPECT_NE(error.reason().find(reason), std::string::npos) << error.what();
            EXPECT_GT(error.line(), 0);
        }
    };
    refused("tag lodexUnits\narray char unit 1 \"A\"\narray float cellThickness 1 0\narray int style 1 0",
            "expected 2 texts");
    refused("tag lodexUnits\narray char unit 2 \"A\" \"B\"\narray float cellThickness 1 0\narray int style 2 0 0",
            "does not fit");
    refused("tag lodexUnits\narray char unit 2 \"A\" \"B\"\narray float cellThickness 2 0 0\narray int style 2 0 3",
            "style 3");
    refused("tag lodexFrame\narray double mapAxes 5 1 2 3 4 5", "expected 6");
    refused("tag lodexFaults\narray char name 1 \"A\"\narray char face 1 \"I\"\narray int box 5 1 2 3 4 5",
            "expected 0 texts");
    refused("tag lodexKept\narray char name 1 \"A\"", "has no line");
    refused("tag lodexPoints\nchar name \"P\"\narray float data 2 1 2", "expected 12 for the points");
    refused("tag lodexCornerLines\narray double data 2 1 2", "does not fit");
    refused("tag lodexZvalues\narray double data 2 1 2", "does not fit");
    refused("tag lodexParameter\narray int exceptionAt 1 2\narray int exceptionValue 1 7", "no cell 2");
    refused("tag lodexParameter\narray int exceptionAt 1 -1\narray int exceptionValue 1 7", "no cell -1");
    refused("tag lodexParameter\narray int exceptionAt 2 0 1\narray int exceptionValue 1 7", "2 places for 1 values");
}

std::string written(const GridModel& model, Form form)
{
    const test::TemporaryFolder folder;
    roff::write_file(model, folder / "model", {}, form);
    return test::file_text(folder / "model");
}

/// The small text as a binary file.
std::string small_binary(Form form = Form::LittleEndian)
{
    return written(read(small_text).model, form);
}

TEST(RoffErrors, BinaryWithItsByte)
{
    const auto refused = [](const std::string& what, const std::string& by, const std::string& reason,
                            std::int64_t behind = -1) {
        const std::string bytes = small_binary();
        const std::string changed = replaced(bytes, what, by);
        SCOPED_TRACE(reason);
        expect_refused(changed, 0, reason);
        if (behind >= 0) {
            const auto at = static_cast<std::int64_t>(bytes.find(what)) + behind;
            expect_refused(changed, 0, "at byte " + std::to_string(at) + ':');
        }
    };
    refused("byteswaptest\0\1\0\0\0"s, "byteswaptest\0\2\0\0\0"s,
            "byteswaptest is 2, expected 1 in one of the two byte orders");
    refused("byteswaptest\0\1\0\0\0"s, "byteswaptest\0\0\1\0\0"s, "byteswaptest is 256");
    refused("byteswaptest\0\1\0\0\0"s, "byteswaptest\0\0\0\0\1"s, "both byte orders mixed");
    refused("int\0byteswaptest"s, "int\0byteswaptext"s, "before the byteswaptest");
    refused("major\0\2\0\0\0"s, "major\0\0\0\0\2"s, "both byte orders mixed", -4);
    refused("nZ\0\2\0\0\0"s, "nZ\0\0\0\0\2"s, "the grid has 33554432");
    refused("nLayers\0\2\0\0\0"s, "nLayers\0\0\0\0\2"s, "bytes left");
    refused("float\0data\0\x18\0\0\0"s, "float\0data\0\x17\0\0\0"s, "unknown type");
    refused("float\0data\0\x18\0\0\0"s, "float\0data\0\0\0\0\x80"s, "an array of -2147483648 values");
    refused("float\0data\0\x18\0\0\0"s, "float\0data\0\xFF\xFF\xFF\x7F"s, "2147483647 values of 8589934588 bytes");
    refused("float\0data\0\x18\0\0\0"s, "double\0data\0\x18\0\0\0"s, "");
    refused("splitEnz\0\x0C\0\0\0\1\1"s, "splitEnz\0\x0C\0\0\0\1\3"s, "value 2 of splitEnz is 3");
    refused("splitEnz\0\x0C\0\0\0\1\1"s, "splitEnz\0\x0C\0\0\0\1\4"s, "expected 15");
    refused("\0\0\x40\xC1"s, "\0\0\x80\x7F"s, "value 3 of \"data\" is not finite"); // -12 of a pillar -> infinite
    refused("tag\0eof"s, "tag\0foe"s, "cut off");
    refused("tag\0active"s, "tag\0activetag\0"s + std::string(3000, 'x'), "");
    refused("roff-bin\0"s, "roff-bin "s, "is no ROFF file");
}

TEST(RoffErrors, BytesBehindTheEndAreAWarning)
{
    const ReadResult result = read(small_binary() + "tag");
    ASSERT_EQ(result.messages.size(), 1U);
    EXPECT_NE(result.messages[0].text.find("3 bytes behind"), std::string::npos);
    EXPECT_TRUE(read(small_text + "\n \n").messages.empty());
}

TEST(RoffErrors, EveryCutIsRefused)
{
    const std::string whole_text = written(test::full_model(2, 2, 2), Form::Text);
    for (const std::string& whole : {small_text, small_binary(), small_binary(Form::BigEndian), whole_text}) {
        const std::size_t step = whole.size() > 5000 ? 7 : 1;
        // Without the last endtag and line end the file is still whole.
        const std::size_t end = whole.rfind("eof");
        for (std::size_t length = 0; length < end; length += step) {
            EXPECT_THROW((void)read(whole.substr(0, length)), FileError) << length;
        }
        EXPECT_NO_THROW((void)read(whole));
    }
}

TEST(RoffErrors, RandomAndShuffledBytesAreReadOrRefused)
{
    std::mt19937 random(7);
    const auto model = test::full_model(3, 2, 2);
    ReadOptions options;
    options.max_bytes = 1 << 26;
    int refused = 0;
    int good = 0;
    for (const Form form : {Form::LittleEndian, Form::BigEndian, Form::Text}) {
        const std::string whole = written(model, form);
        for (int turn = 0; turn < 1500; ++turn) {
            std::string bytes = whole;
            const int changes = 1 + turn % 5;
            for (int n = 0; n < changes; ++n) {
                const std::size_t at = 9 + random() % (bytes.size() - 9);
                switch (random() % 4) {
                case 0:
                    bytes[at] = static_cast<char>(random());
                    break;
                case 1:
                    bytes.erase(at, random() % 40);
                    break;
                case 2:
                    bytes.insert(at, bytes.substr(random() % bytes.size(), random() % 60));
                    break;
                default:
                    std::swap(bytes[at], bytes[9 + random() % (bytes.size() - 9)]);
                }
            }
            try {
                const ReadResult result = read(bytes, options);
                EXPECT_EQ(result.model.active.size(), static_cast<std::size_t>(result.model.cells()));
                EXPECT_EQ(result.model.zcorn.size(), 8 * result.model.active.size());
                ++good;
            } catch (const FileError& error) {
                EXPECT_FALSE(error.reason().empty());
                ++refused;
            }
        }
        for (int turn = 0; turn < 200; ++turn) {
            std::string bytes = whole.substr(0, 9);
            for (std::size_t n = random() % 3000; n > 0; --n) {
                bytes += static_cast<char>(random());
            }
            EXPECT_THROW((void)read(bytes, options), FileError);
        }
    }
    EXPECT_GT(refused, 1000);
    EXPECT_GT(good, 10);
}

TEST(RoffErrors, MemoryIsAskedForOnlyWhenItIsAllowed)
{
    ReadOptions options;
    options.max_bytes = 100;
    try {
        (void)read(small_text, options);
        FAIL();
    } catch (const FileError& error) {
        EXPECT_NE(error.reason().find("more than the 100 bytes allowed"), std::string::npos) << error.what();
    }
    // A few bytes that state a large grid: refused before anything is made for it.
    options.max_bytes = 1 << 20;
    EXPECT_THROW((void)read(replaced(small_text, "nZ 2", "nZ 2000000000"), options), FileError);
}

TEST(RoffErrors, FilesThatCannotBeRead)
{
    const test::TemporaryFolder folder;
    EXPECT_THROW((void)roff::read_file(folder / "none.roff", {}), FileError);
    EXPECT_THROW((void)roff::read_file(folder.path(), {}), FileError);
    const auto path = folder.write("noise.roff", "noise");
    try {
        (void)GridFormats::for_reading(path).read(path, {});
        FAIL();
    } catch (const FileError& error) {
        EXPECT_NE(error.reason().find("is no ROFF file"), std::string::npos);
    }
}

TEST(RoffErrors, AFileThatChangesWhileItIsReadIsRefused)
{
    const test::TemporaryFolder folder;
    const auto path = folder / "model.roff";
    const GridModel model = test::full_model(60, 60, 60);
    for (const Form form : {Form::LittleEndian, Form::Text}) {
        for (const bool shorter : {false, true}) {
            roff::write_file(model, path, {}, form);
            bool changed = false;
            ReadOptions options;
            options.progress = [&](double) {
                if (!changed) {
                    changed = true;
                    std::filesystem::resize_file(path, shorter ? 200'000 : std::filesystem::file_size(path) + 10);
                }
                return true;
            };
            try {
                (void)roff::read_file(path, options);
                ADD_FAILURE();
            } catch (const FileError& error) {
                EXPECT_NE(error.reason().find("changed while it was read"), std::string::npos) << error.what();
            }
        }
    }
}

TEST(RoffRead, CancelWorksAtEveryStep)
{
    const test::TemporaryFolder folder;
    const auto path = folder / "model.roff";
    const GridModel model = test::full_model(30, 30, 30);
    for (const Form form : {Form::LittleEndian, Form::Text}) {
        roff::write_file(model, path, {}, form);
        int steps = 0;
        for (int allowed = 0;; ++allowed) {
            int calls = 0;
            double last = 0;
            ReadOptions options;
            options.progress = [&](double done) {
                EXPECT_GE(done, last);
                EXPECT_LE(done, 1.0);
                last = done;
                return ++calls <= allowed;
            };
            try {
                EXPECT_EQ(test::difference(roff::read_file(path, options).model, model), "");
                EXPECT_EQ(last, 1.0);
                break;
            } catch (const Cancelled&) {
                EXPECT_EQ(calls, allowed + 1);
                ++steps;
            }
        }
        EXPECT_GT(steps, 4);
    }
}

TEST(RoffRead, LongTextsCrossTheWindow)
{
    // Numbers, texts, blanks and comments longer than what is held of the file at a time.
    GridModel model = read(small_text).model;
    model.kept = {{"NOTE", std::string(3'000'000, 'x') + "\"\\\n", "a", 1}, {"B", std::string(70'000, 'y'), "", 2}};
    for (const Form form : {Form::LittleEndian, Form::Text}) {
        EXPECT_EQ(test::difference(model, read(written(model, form)).model), "");
    }
    const std::string blanks = replaced(small_text, "tag active", std::string(2'500'000, '\n') + "tag active");
    EXPECT_EQ(test::difference(read(blanks).model, read(small_text).model), "");
    const std::string comment = replaced(small_text, "tag active", "#" + std::string(2'500'000, 'c') + "#tag active");
    EXPECT_EQ(test::difference(read(comment).model, read(small_text).model), "");
    expect_refused(replaced(blanks, "bool data 2", "bool data x"), 2'500'043, "expected the value");
}

} // namespace
} // namespace lodex
