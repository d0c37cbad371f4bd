// Writing and reading back, and what the bytes of a file are.

#include "../gridio/GridTestTools.h"

#include <lodex/gridio/GrdeclFormat.h>
#include <lodex/gridio/RoffFormat.h>
#include <lodex/gridio/RoffReader.h>
#include <lodex/gridio/RoffWriter.h>
#include <lodex/volumes/model/CellGeometry.h>

#include <cmath>
#include <cstring>
#include <fstream>
#include <gtest/gtest.h>
#include <limits>

namespace lodex {
namespace {

using roff::Form;

constexpr std::array<Form, 3> forms = {Form::LittleEndian, Form::BigEndian, Form::Text};

GridModel written_and_read(const GridModel& model, Form form, const ReadOptions& options = {})
{
    const test::TemporaryFolder folder;
    const auto path = folder / "model.roff";
    const WriteResult written = roff::write_file(model, path, {}, form);
    EXPECT_EQ(written.bytes, std::filesystem::file_size(path));
    return roff::read_file(path, options).model;
}

/// A box of unit cells, 32 bits, all cells active.
GridModel box(std::int64_t ni, std::int64_t nj, std::int64_t nk)
{
    GridModel model;
    model.size = {ni, nj, nk};
    std::vector<float> coord;
    for (std::int64_t j = 0; j <= nj; ++j) {
        for (std::int64_t i = 0; i <= ni; ++i) {
            const auto x = static_cast<float>(i);
            const auto y = static_cast<float>(j);
            coord.insert(coord.end(), {x, y, 10, x, y, 10 + static_cast<float>(nk)});
        }
    }
    model.coord = std::move(coord);
    std::vector<float> zcorn(static_cast<std::size_t>(8 * model.cells()));
    for (std::size_t n = 0; n < zcorn.size(); ++n) {
        const std::size_t plane = n / static_cast<std::size_t>(4 * ni * nj);
        zcorn[n] = 10 + static_cast<float>((plane + 1) / 2);
    }
    model.zcorn = std::move(zcorn);
    model.active.assign(static_cast<std::size_t>(model.cells()), 1);
    return model;
}

TEST(RoffWrite, EverythingComesBackInEveryForm)
{
    for (const GridSize size : {GridSize{3, 4, 5}, GridSize{1, 1, 1}, GridSize{1, 7, 2}, GridSize{40, 1, 3},
                                GridSize{17, 33, 1}, GridSize{2, 3, 300}}) {
        const GridModel model = test::full_model(size[0], size[1], size[2]);
        for (const Form form : forms) {
            EXPECT_EQ(test::difference(model, written_and_read(model, form)), "")
                << size[0] << ' ' << size[1] << ' ' << size[2] << " form " << static_cast<int>(form);
        }
    }
}

TEST(RoffWrite, TilesOfEveryShapeComeBack)
{
    // Wider than a tile, longer than its rows, deeper than its columns.
    for (const GridSize size :
         {GridSize{50, 3, 2}, GridSize{2, 3000, 10}, GridSize{2, 1, 40000}, GridSize{33, 130, 140}}) {
        GridModel model = box(size[0], size[1], size[2]);
        std::vector<std::int32_t> number(static_cast<std::size_t>(model.cells()));
        for (std::size_t n = 0; n < number.size(); ++n) {
            number[n] = static_cast<std::int32_t>(n);
        }
        PropertyData property;
        property.name = "N";
        property.values = number;
        property.no_data = -999;
        model.properties.push_back(property);
        model.zcorn.visit_mutable([](auto z) {
            for (std::size_t n = 0; n < z.size(); n += 7) {
                z[n] += 0.25F;
            }
        });
        for (const Form form : {Form::LittleEndian, Form::Text}) {
            EXPECT_EQ(test::difference(model, written_and_read(model, form)), "") << size[0] << ' ' << size[1];
        }
    }
}

TEST(RoffWrite, AllSplitsOfANodeComeBack)
{
    GridModel model = box(2, 2, 2);
    const auto all = static_cast<std::size_t>(8 * model.cells());
    for (std::size_t n = 0; n < all; ++n) {
        // Each corner apart from all others in turn: 8 depths at a node.
        GridModel moved = model;
        moved.zcorn.visit_mutable([n](auto z) { z[n] += 0.125F; });
        EXPECT_EQ(test::difference(moved, written_and_read(moved, Form::BigEndian)), "") << n;
    }
    // All corners different.
    std::vector<double> depths(all);
    for (std::size_t n = 0; n < all; ++n) {
        depths[n] = 1000 + static_cast<double>(n) / 3;
    }
    model.zcorn = depths;
    for (const Form form : forms) {
        EXPECT_EQ(test::difference(model, written_and_read(model, form)), "");
    }
}

TEST(RoffWrite, UndefinedAndOddValuesComeBack)
{
    GridModel model = box(2, 1, 2);
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const double infinity = std::numeric_limits<double>::infinity();
    const auto add = [&model](const char* name, auto values, std::optional<double> no_data) {
        PropertyData property;
        property.name = name;
        property.values = std::move(values);
        property.no_data = no_data;
        model.properties.push_back(std::move(property));
    };
    add("NAN", std::vector<float>{nan, 1, nan, -999}, {});
    add("ITSELF", std::vector<float>{-999, 1, 2, 3}, {});
    add("USUAL", std::vector<float>{-999, nan, 2, 3}, -999);
    add("OTHER", std::vector<float>{-1e30F, nan, -999, 3}, -1e30F);
    add("NO_SUCH", std::vector<float>{1, 2, 3, nan}, 1e300);
    add("NAN_IS_NO_DATA", std::vector<float>{1, 2, 3, 4}, 1e-3);
    add("INFINITE", std::vector<double>{infinity, -infinity, 0.1, -0.0}, {});
    add("FLOATS", std::vector<double>{0.5, -999, 3, std::nan("")}, -999.25);
    add("ZERO", std::vector<float>{0.0F, -0.0F, 1, 2}, 0.0);
    add("SMALL", std::vector<double>{1e-310, 5e-324, 1e300, 2}, {});
    add("INT", std::vector<std::int32_t>{-999, 5, -99, std::numeric_limits<std::int32_t>::min()}, -99);
    add("INT_MIN", std::vector<std::int32_t>{-999, 5, -99, std::numeric_limits<std::int32_t>::min()},
        std::numeric_limits<std::int32_t>::min());
    add("INT_NONE", std::vector<std::int32_t>{-999, 5, 2147483647, -2147483647 - 1}, {});
    add("INT_ODD", std::vector<std::int32_t>{-999, 5, 0, 1}, 0.5);
    add("BYTE", std::vector<std::int32_t>{0, 254, 255, 1}, 255);
    add("NO_BYTE", std::vector<std::int32_t>{0, 254, 255, 256}, 255);
    model.properties.back().code_names = {{0, ""}, {254, "a\"b\\c\n"}, {7, "unused"}};
    model.properties.back().code_names.erase(0);
    add("NO_BYTE", std::vector<float>{1, 2, 3, 4}, {});
    add("", std::vector<float>{1, 2, 3, 4}, {});
    for (const Form form : forms) {
        EXPECT_EQ(test::difference(model, written_and_read(model, form)), "") << static_cast<int>(form);
    }
}

TEST(RoffWrite, CoordinatesOutOfReachOf32BitsComeBack)
{
    GridModel model = box(2, 1, 1);
    std::vector<double> coord = test::values_of(model.coord);
    std::vector<double> zcorn = test::values_of(model.zcorn);
    const std::vector<double> first = coord;
    for (const auto& [factor, shift] : {std::pair{1.0, 461234.5678}, {1.0 / 3, 5932100.1}, {1e250, 0.0}, {1e-250, 0.0},
                                        {1.0, 1e15}, {1.0, 4.0e8}}) {
        for (std::size_t n = 0; n < coord.size(); ++n) {
            coord[n] = n % 3 == 2 ? first[n] : first[n] * factor + shift;
        }
        model.coord = coord;
        for (const Form form : forms) {
            EXPECT_EQ(test::difference(model, written_and_read(model, form)), "") << factor << ' ' << shift;
        }
    }
    for (double& depth : zcorn) {
        depth *= 1e100;
    }
    model.zcorn = zcorn;
    for (const Form form : forms) {
        EXPECT_EQ(test::difference(model, written_and_read(model, form)), "");
    }
    // 64 bits that 32 would hold stay 64.
    model = box(1, 1, 1);
    model.coord = test::values_of(model.coord);
    model.zcorn = test::values_of(model.zcorn);
    EXPECT_EQ(test::difference(model, written_and_read(model, Form::LittleEndian)), "");
}

TEST(RoffWrite, UpsideDownAndMirroredGridsComeBackAsTheyAre)
{
    GridModel model = box(2, 2, 2);
    model.zcorn.visit_mutable([](auto z) {
        for (auto& depth : z) {
            depth = -depth;
        }
    });
    EXPECT_EQ(test::difference(model, written_and_read(model, Form::LittleEndian)), "");
    model = box(2, 2, 2);
    model.coord.visit_mutable([](auto c) {
        for (std::size_t n = 0; n < c.size(); n += 3) {
            c[n] = -c[n];
        }
    });
    EXPECT_EQ(handedness(model), -1);
    EXPECT_EQ(test::difference(model, written_and_read(model, Form::Text)), "");
}

TEST(RoffWrite, ModelsFromGrdeclComeBack)
{
    const auto data = test::field_data();
    if (!data) {
        return;
    }
    for (const char* const name : {"spe9/SPE9_CP_SHORT.DATA", "simpleb8/simpleb8.grdecl", "reek/reek_sim_grid.grdecl",
                                   "tiny/Cart2D_Fault.GRDECL", "model1/FAULTS_MODEL_1.DATA"}) {
        const GridModel model = GrdeclFormat().read(*data / name, {}).model;
        for (const Form form : forms) {
            EXPECT_EQ(test::difference(model, written_and_read(model, form)), "") << name;
        }
    }
}

TEST(RoffWrite, PropertiesAloneComeBack)
{
    GridModel model = box(2, 3, 1);
    model.coord = {};
    model.zcorn = {};
    model.active.clear();
    PropertyData property;
    property.name = "PORO";
    property.values = std::vector<float>{1, 2, 3, 4, 5, 6};
    model.properties.push_back(property);
    ReadOptions options;
    options.properties_only = true;
    options.size = model.size;
    EXPECT_EQ(test::difference(model, written_and_read(model, Form::Text, options)), "");
}

TEST(RoffWrite, TheTextIsWhatOtherProgramsExpect)
{
    GridModel model = box(1, 1, 2);
    model.layers = {{"Top", 1, 0, Lodex::LayerInfo::Proportional}, {"Base", 1, 0, Lodex::LayerInfo::Proportional}};
    PropertyData property;
    property.name = "FACIES";
    property.values = std::vector<std::int32_t>{3, 1};
    property.no_data = -999;
    property.code_names = {{1, "Sand"}};
    model.properties.push_back(property);
    const test::TemporaryFolder folder;
    const auto path = folder / "model.roffasc";
    GridFormats::for_writing(path).write(model, path, {});
    EXPECT_EQ(test::file_text(path), R"(roff-asc
#ROFF file#
tag filedata
int byteswaptest 1
char filetype "grid"
char creationDate "UNKNOWN"
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
tag subgrids
array int nLayers 2
1 1
endtag
tag lodexUnits
array char unit 2
"Top"
"Base"
array float cellThickness 2
0 0
array int style 2
0 0
endtag
tag lodexGeometry
int coordDouble 0
int zcornDouble 0
endtag
tag translate
float xoffset 0
float yoffset 0
float zoffset 0
endtag
tag scale
float xscale 1
float yscale 1
float zscale -1
endtag
tag cornerLines
array float data 24
0 0 -12 0 0 -10 0 1 -12 0 1 -10 1 0 -12 1 0 -10 1 1 -12 1 1 -10
endtag
tag zvalues
array byte splitEnz 12
1 1 1 1 1 1 1 1 1 1 1 1
array float data 12
-12 -11 -10 -12 -11 -10 -12 -11 -10 -12 -11 -10
endtag
tag active
array bool data 2
1 1
endtag
tag parameter
char name "FACIES"
array char codeNames 2
"Sand"
""
array int codeValues 2
1 3
array int data 2
1 3
endtag
tag eof
endtag
)");
    const auto binary = folder / "model.roff";
    GridFormats::for_writing(binary).write(model, binary, {});
    const std::string bytes = test::file_text(binary);
    using namespace std::string_literals;
    EXPECT_TRUE(
        bytes.starts_with("roff-bin\0#ROFF file#\0tag\0filedata\0int\0byteswaptest\0\1\0\0\0char\0filetype\0grid\0"s));
    EXPECT_NE(bytes.find("array\0int\0data\0\2\0\0\0\1\0\0\0\3\0\0\0endtag\0tag\0eof\0endtag\0"s), std::string::npos);
    GridFormats::for_writing("x.roff", "roff_big_endian").write(model, binary, {});
    EXPECT_NE(test::file_text(binary).find("array\0int\0data\0\0\0\0\2\0\0\0\1\0\0\0\3endtag\0"s), std::string::npos);
}

TEST(RoffWrite, TheSameModelGivesTheSameBytes)
{
    const GridModel model = test::full_model(5, 4, 3);
    const test::TemporaryFolder folder;
    roff::write_file(model, folder / "a", {}, Form::LittleEndian);
    roff::write_file(model, folder / "b", {}, Form::LittleEndian);
    EXPECT_EQ(test::file_text(folder / "a"), test::file_text(folder / "b"));
}

TEST(RoffWrite, SaysWhatOtherProgramsDoNotSee)
{
    const GridModel model = test::full_model(2, 2, 2);
    const test::TemporaryFolder folder;
    const WriteResult result = roff::write_file(model, folder / "a", {}, Form::LittleEndian);
    const auto says = [&result](std::string_view part) {
        return std::any_of(result.messages.begin(), result.messages.end(), [part](const Message& message) {
            return message.text.find(part) != std::string::npos;
        });
    };
    EXPECT_TRUE(says("region \"all\""));
    EXPECT_TRUE(says("named faults"));
    EXPECT_TRUE(says("kept keywords"));
    EXPECT_TRUE(says("map axes"));
    EXPECT_TRUE(says("their names and layering"));
    EXPECT_TRUE(says("\"NODES\" stands on points"));
    EXPECT_TRUE(says("\"PERMX\" is written in 64 bits"));
    EXPECT_TRUE(says("pillars need 64 bits"));
}

TEST(RoffWrite, ABrokenModelLeavesTheOldFile)
{
    const test::TemporaryFolder folder;
    const auto path = folder.write("model.roff", "old");
    const auto refused = [&](GridModel model, std::string_view part) {
        for (const Form form : forms) {
            try {
                roff::write_file(model, path, {}, form);
                ADD_FAILURE() << part;
            } catch (const FileError& error) {
                EXPECT_NE(error.reason().find(part), std::string::npos) << error.what();
            }
            EXPECT_EQ(test::file_text(path), "old");
            EXPECT_EQ(folder.names(), std::vector<std::string>{"model.roff"});
        }
    };
    GridModel model = box(2, 1, 1);
    model.size[1] = 0;
    refused(model, "2 x 0 x 1");
    model = box(2, 1, 1);
    model.zcorn = std::vector<float>(15);
    refused(model, "zcorn has 15 values, expected 16");
    model = box(2, 1, 1);
    model.zcorn.visit_mutable([](auto z) { z[3] = std::numeric_limits<float>::infinity(); });
    refused(model, "position 4");
    model = box(2, 1, 1);
    model.coord.visit_mutable([](auto c) { c[5] = std::numeric_limits<float>::quiet_NaN(); });
    refused(model, "position 6");
    model = box(2, 1, 2);
    model.layers = {{"A", 1, 0, Lodex::LayerInfo::Proportional}};
    refused(model, "1 layers together");
    model = box(2, 1, 1);
    model.properties.push_back({"P", "", std::vector<float>(3)});
    refused(model, "\"P\" has 3 values");
}

TEST(RoffWrite, CancelLeavesTheOldFile)
{
    const test::TemporaryFolder folder;
    const auto path = folder.write("model.roff", "old");
    const GridModel model = test::full_model(20, 20, 20);
    int most = 0;
    for (const Form form : forms) {
        for (int allowed = 0;; ++allowed) {
            int calls = 0;
            double last = 0;
            WriteOptions options;
            options.progress = [&](double done) {
                EXPECT_GE(done, last);
                EXPECT_LE(done, 1.0);
                last = done;
                return ++calls <= allowed;
            };
            try {
                roff::write_file(model, path, options, form);
                break;
            } catch (const Cancelled&) {
                EXPECT_EQ(test::file_text(path), "old");
                EXPECT_EQ(folder.names(), std::vector<std::string>{"model.roff"});
                most = std::max(most, calls);
            }
        }
        folder.write("model.roff", "old");
    }
    EXPECT_GT(most, 5);
}

} // namespace
} // namespace lodex
