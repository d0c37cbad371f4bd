#include "../gridio/GridTestTools.h"
#include "RecordBytes.h"

#include <lodex/gridio/BinaryGrdeclFormat.h>
#include <lodex/gridio/EgridFormat.h>
#include <lodex/gridio/InitFormat.h>
#include <lodex/gridio/RecordFile.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <iostream>
#include <limits>
#include <set>
#include <sys/wait.h>

namespace lodex {
namespace {

constexpr float nan = std::numeric_limits<float>::quiet_NaN();

/// Everything that EGRID with INIT can hold: 32-bit geometry, a frame, arrays of all three types.
GridModel plain_model(const GridSize& size)
{
    const test::SmallGrid grid(size);
    GridModel model;
    model.size = size;
    model.coord = grid.coord;
    model.zcorn = grid.zcorn;
    model.active.assign(grid.cells(), 1);
    model.frame.map_axes = std::array<double, 6>{0, 100, 0, 0, 100, 0};
    model.frame.map_units = "METRES";
    model.frame.grid_units = "METRES";
    std::vector<float> porosity(grid.cells());
    std::vector<double> exact(grid.cells());
    std::vector<std::int32_t> code(grid.cells());
    for (std::size_t i = 0; i < grid.cells(); ++i) {
        model.active[i] = static_cast<std::uint8_t>(i % 3 != 1);
        porosity[i] = 0.1F + 0.01F * static_cast<float>(i);
        exact[i] = 1.0 / static_cast<double>(i + 3);
        code[i] = static_cast<std::int32_t>(i % 5) - 1;
    }
    const auto add = [&model](const char* name, auto values, const char* unit = "") {
        PropertyData property;
        property.name = name;
        property.unit = unit;
        property.values = std::move(values);
        model.properties.push_back(std::move(property));
    };
    add("PORO", porosity);
    add("PERMX", exact, "mD");
    add("Facies", code);
    for (std::size_t i = 0; i < grid.cells(); ++i) {
        porosity[i] = model.active[i] != 0 ? porosity[i] : nan;
        code[i] = model.active[i] != 0 ? code[i] : -999;
        exact[i] = model.active[i] != 0 ? exact[i] : std::numeric_limits<double>::quiet_NaN();
    }
    add("DZ", porosity, "m");
    add("EXACT", exact);
    add("SATNUM", code);
    model.properties.back().no_data = -999;
    return model;
}

/// Arrays of an unformatted file by name.
std::string array_bytes(const std::string& bytes, const std::string& name)
{
    const auto places = test::array_places(bytes);
    for (std::size_t i = 0; i + 1 < places.size(); ++i) {
        if (places[i].name == name) {
            return bytes.substr(places[i].begin, places[i + 1].begin - places[i].begin);
        }
    }
    return {};
}

TEST(BinaryWrite, EgridReadsBackWithoutLoss)
{
    const test::TemporaryFolder folder;
    for (const GridSize size :
         {GridSize{1, 1, 1}, GridSize{1, 5, 3}, GridSize{4, 1, 2}, GridSize{3, 4, 1}, GridSize{11, 9, 7}}) {
        GridModel model = plain_model(size);
        for (const std::string name : {"A.EGRID", "b.egrid", "C.FEGRID", "d.fegrid"}) {
            SCOPED_TRACE(name);
            const WriteResult written = EgridFormat().write(model, folder / name, {});
            EXPECT_EQ(test::texts(written.messages).find("no place"), std::string::npos)
                << test::texts(written.messages);
            const ReadResult read = GridFormats::for_reading(folder / name).read(folder / name, {});
            GridModel expected = model;
            EXPECT_EQ(read.files.size(), 2U);
            EXPECT_EQ(read.bytes, written.bytes);
            EXPECT_EQ(test::texts(read.messages), "");
            if (std::find(model.active.begin(), model.active.end(), 0) == model.active.end()) {
                expected.properties.back().no_data.reset(); // no cell is undefined
            }
            EXPECT_EQ(test::difference(expected, read.model), "");
        }
    }
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"A.EGRID", "A.INIT", "C.FEGRID", "C.FINIT", "b.egrid", "b.init",
                                                        "d.fegrid", "d.finit"}));
}

TEST(BinaryWrite, WhollyInactiveGrid)
{
    const test::TemporaryFolder folder;
    GridModel model = plain_model({3, 2, 2});
    std::fill(model.active.begin(), model.active.end(), 0);
    EgridFormat().write(model, folder / "A.EGRID", {});
    GridModel read = EgridFormat().read(folder / "A.EGRID", {}).model;
    EXPECT_EQ(read.active, model.active);
    EXPECT_EQ(read.find_property("PORO")->values, model.find_property("PORO")->values);
    EXPECT_EQ(read.find_property("SATNUM")->size(), model.active.size());
}

TEST(BinaryWrite, BytesOfAnEgrid)
{
    // Against bytes made by hand.
    const test::TemporaryFolder folder;
    const test::SmallGrid grid({2, 1, 1});
    GridModel model;
    model.size = grid.size;
    model.coord = grid.coord;
    model.zcorn = grid.zcorn;
    model.active = {1, 0};
    model.frame.grid_units = "FEET";
    PropertyData property;
    property.name = "PORO";
    property.values = std::vector<float>{0.25F, nan};
    model.properties = {property};
    property.name = "PORV";
    property.unit = "rb";
    property.values = std::vector<float>{100, 0};
    model.properties.push_back(property);
    EgridFormat().write(model, folder / "A.EGRID", {});
    const std::string bytes = test::file_text(folder / "A.EGRID");
    EXPECT_EQ(array_bytes(bytes, "COORD"), test::RecordBytes().reals("COORD", grid.coord).bytes());
    EXPECT_EQ(array_bytes(bytes, "ZCORN"), test::RecordBytes().reals("ZCORN", grid.zcorn).bytes());
    EXPECT_EQ(array_bytes(bytes, "ACTNUM"), test::RecordBytes().integers("ACTNUM", {1, 0}).bytes());
    EXPECT_EQ(array_bytes(bytes, "GRIDUNIT"), test::RecordBytes().strings("GRIDUNIT", {"FEET", ""}).bytes());
    std::string names;
    for (const auto& place : test::array_places(bytes)) {
        names += place.name + ' ';
    }
    EXPECT_EQ(names, "FILEHEAD GRIDUNIT GRIDHEAD COORD ZCORN ACTNUM ENDGRID  ");
    const std::string init = test::file_text(folder / "A.INIT");
    EXPECT_EQ(array_bytes(init, "PORO"), test::RecordBytes().reals("PORO", {0.25F}).bytes());
    EXPECT_EQ(array_bytes(init, "PORV"), test::RecordBytes().reals("PORV", {100, 0}).bytes());
    records::Reader reader(init, "A.INIT");
    ASSERT_EQ(reader.next()->name, "INTEHEAD");
    const auto head = reader.read_integers(95);
    EXPECT_EQ(head[2], 2); // feet: field units
    EXPECT_EQ(std::vector<std::int32_t>(head.begin() + 8, head.begin() + 12), (std::vector<std::int32_t>{2, 1, 1, 1}));
}

TEST(BinaryWrite, WhatEgridCannotHoldIsTold)
{
    const test::TemporaryFolder folder;
    const GridModel model = test::full_model(4, 3, 5);
    const WriteResult written = EgridFormat().write(model, folder / "A.EGRID", {});
    const std::string text = test::texts(written.messages);
    for (const char* const part :
         {"COORD is rounded from 64 to 32 bits", "no place for 2 regions: Upper \"reservoir\", all",
          "no place for 2 stratigraphic units: Top unit, Base", "fault segment", "kept keyword",
          "property on nodes: NODES", "code names: Rock type", "property \"Rock type \"A\\B\"\" is written as Rock_typ",
          "property \"a_very_long_property_name\" is written as a_very_l",
          "property \"ALONGERNAME\" is written as ALONGERN", "property \"COORD\" is written as COORD2",
          "no place for 1 property's unit: PORO", "undefined values are written as NaN: COORD"}) {
        EXPECT_NE(text.find(part), std::string::npos) << part << " in\n" << text;
    }
    EXPECT_EQ(text.find("ZCORN is rounded"), std::string::npos) << text;
    const GridModel read = EgridFormat().read(folder / "A.EGRID", {}).model;
    ASSERT_EQ(read.properties.size(), model.properties.size() - 1);
    EXPECT_EQ(read.active, model.active);
    EXPECT_EQ(read.zcorn, model.zcorn);
    std::size_t next = 0;
    for (const PropertyData& property : model.properties) {
        if (property.on_points) {
            continue;
        }
        const PropertyData& found = read.properties[next++];
        if (property.discrete()) {
            EXPECT_EQ(found.values, property.values) << property.name;
        } else {
            const auto expected = test::values_of(property);
            const auto values = test::values_of(found);
            EXPECT_EQ(found.values.index(), property.values.index()) << property.name;
            for (std::size_t i = 0; i < expected.size(); ++i) {
                const bool undefined
                    = std::isnan(expected[i]) || (property.no_data && expected[i] == *property.no_data);
                ASSERT_TRUE(undefined ? std::isnan(values[i]) : values[i] == expected[i]) << property.name << ' ' << i;
            }
        }
    }
}

TEST(BinaryWrite, NamesStayDifferent)
{
    const test::TemporaryFolder folder;
    GridModel model = plain_model({2, 2, 1});
    model.properties.resize(1);
    const std::vector<std::string> names = {"PORO",      "porosity_log", "porosity_core", "porosity", "porosit2",
                                            "ACTNUM",    "INTEHEAD",     "with blank",    "",         "Grès",
                                            "12345678",  "123456789",    "1234567X"};
    const PropertyData property = model.properties.front();
    model.properties.clear();
    for (const std::string& name : names) {
        model.properties.push_back(property);
        model.properties.back().name = name;
        std::get<std::vector<float>>(model.properties.back().values)[0] = static_cast<float>(model.properties.size());
    }
    for (const std::string file : {"A.EGRID", "A.bgrdecl"}) {
        const auto& format = GridFormats::for_writing(folder / file);
        const std::string text = test::texts(format.write(model, folder / file, {}).messages);
        const GridModel read = format.read(folder / file, {}).model;
        ASSERT_EQ(read.properties.size(), names.size()) << file;
        std::set<std::string> found;
        for (std::size_t i = 0; i < names.size(); ++i) {
            EXPECT_EQ(read.properties[i].values, model.properties[i].values) << names[i];
            EXPECT_LE(read.properties[i].name.size(), 8U);
            found.insert(read.properties[i].name);
            const bool kept = read.properties[i].name == names[i];
            EXPECT_EQ(kept,
                      text.find('"' + names[i] + "\" is written as " + read.properties[i].name) == std::string::npos);
        }
        EXPECT_EQ(found.size(), names.size());
        for (const std::string name : {"PORO", "porosity", "porosit2", "12345678", "1234567X"}) {
            EXPECT_TRUE(found.contains(name)) << name;
        }
    }
}

TEST(BinaryWrite, BinaryGrdeclReadsBackWithoutLoss)
{
    const test::TemporaryFolder folder;
    for (const GridSize size : {GridSize{1, 1, 1}, GridSize{7, 5, 9}}) {
        for (const bool wide : {false, true}) {
            GridModel model = plain_model(size);
            for (PropertyData& property : model.properties) {
                property.unit.clear();
            }
            model.properties.pop_back();
            if (wide) {
                model.coord = test::values_of(model.coord);
                model.zcorn = test::values_of(model.zcorn);
                model.zcorn.visit_mutable(
                    [](auto values) { values[0] = static_cast<std::remove_reference_t<decltype(values[0])>>(100.1); });
            }
            const auto path = folder / "a.bgrdecl";
            const WriteResult written = GridFormats::for_writing(path).write(model, path, {});
            EXPECT_TRUE(written.messages.empty()) << test::texts(written.messages);
            EXPECT_EQ(written.bytes, std::filesystem::file_size(path));
            const ReadResult read = GridFormats::for_reading(path).read(path, {});
            EXPECT_EQ(test::difference(model, read.model), "");
            EXPECT_TRUE(read.messages.empty());
        }
    }
}

TEST(BinaryWrite, UndefinedCodesStayApart)
{
    // Codes of active cells that look like marks of undefined cells.
    const test::TemporaryFolder folder;
    GridModel model = plain_model({4, 1, 1});
    model.active = {1, 0, 1, 1};
    PropertyData property;
    property.name = "REGION";
    property.values = std::vector<std::int32_t>{-999, -5, -9999, 3};
    property.no_data = -5;
    model.properties = {property};
    const WriteResult written = EgridFormat().write(model, folder / "A.EGRID", {});
    EXPECT_EQ(test::texts(written.messages).find("marks"), std::string::npos);
    const PropertyData read = EgridFormat().read(folder / "A.EGRID", {}).model.properties.at(0);
    EXPECT_EQ(read.no_data, -99999);
    EXPECT_EQ(std::get<2>(read.values), (std::vector<std::int32_t>{-999, -99999, -9999, 3}));

    model.properties[0].no_data = -999; // an active cell is undefined
    EXPECT_NE(test::texts(EgridFormat().write(model, folder / "A.EGRID", {}).messages).find("mark of undefined cells"),
              std::string::npos);
}

TEST(BinaryWrite, OldFilesStayUntilAllIsWritten)
{
    const test::TemporaryFolder folder;
    const GridModel model = plain_model({30, 30, 30});
    for (const std::string file : {"A.EGRID", "A.FEGRID", "A.bgrdecl"}) {
        folder.write(file, "old");
        folder.write("A.INIT", "old init");
        folder.write("A.FINIT", "old init");
        WriteOptions options;
        for (const int allowed : {0, 1, 4, 6}) {
            int calls = 0;
            options.progress = [&](double) { return calls++ < allowed; };
            EXPECT_THROW(GridFormats::for_writing(folder / file).write(model, folder / file, options), Cancelled);
            EXPECT_EQ(test::file_text(folder / file), "old");
            EXPECT_EQ(test::file_text(folder / "A.INIT"), "old init");
            EXPECT_EQ(test::file_text(folder / "A.FINIT"), "old init");
        }
    }
    EXPECT_EQ(folder.names().size(), 5U);
    // A folder in the place of the INIT: the grid is not written either.
    std::filesystem::remove(folder / "A.INIT");
    std::filesystem::create_directory(folder / "A.INIT");
    EXPECT_THROW(EgridFormat().write(model, folder / "A.EGRID", {}), FileError);
    EXPECT_EQ(test::file_text(folder / "A.EGRID"), "old");

    GridModel broken = model;
    broken.active.pop_back();
    EXPECT_THROW(EgridFormat().write(broken, folder / "B.EGRID", {}), ModelError);
    EXPECT_THROW(BinaryGrdeclFormat().write(broken, folder / "B.bgrdecl", {}), ModelError);
    EXPECT_FALSE(std::filesystem::exists(folder / "B.EGRID"));
}

TEST(BinaryWrite, InitOfAnotherGridBesideIt)
{
    const test::TemporaryFolder folder;
    EgridFormat().write(plain_model({2, 2, 2}), folder / "A.EGRID", {});
    GridModel bare = plain_model({3, 2, 2});
    bare.properties.clear();
    const WriteResult written = EgridFormat().write(bare, folder / "A.EGRID", {});
    ASSERT_EQ(written.messages.size(), 1U);
    EXPECT_NE(written.messages[0].text.find("may not belong to it"), std::string::npos);
    const ReadResult read = EgridFormat().read(folder / "A.EGRID", {});
    EXPECT_EQ(test::difference(bare, read.model), "");
    EXPECT_NE(test::texts(read.messages)
                  .find("states a grid of 2 x 2 x 2 cells, expected 3 x 2 x 2; its properties are left out"),
              std::string::npos);
    // The same size, other active cells, and nothing that says which.
    bare = plain_model({2, 2, 2});
    bare.properties.clear();
    bare.active.assign(8, 1);
    EgridFormat().write(bare, folder / "A.EGRID", {});
    EXPECT_NE(
        test::texts(EgridFormat().read(folder / "A.EGRID", {}).messages).find("states 5 active cells, expected 8"),
        std::string::npos);
}

TEST(BinaryWrite, FieldModelsReadBackWithoutLoss)
{
    const auto data = test::field_data();
    if (!data) {
        return;
    }
    const test::TemporaryFolder folder;
    for (const std::string file : {"simpleb8/B8.EGRID", "simpleb8/B8.FEGRID", "spe9/SPE9_CP_SHORT.EGRID",
                                   "model1/FAULTS_MODEL_1.EGRID", "reek/REEK.EGRID", "drogon/DROGON.EGRID"}) {
        const GridModel model = GridFormats::for_reading(*data / file).read(*data / file, {}).model;
        for (const std::string target : {"A.EGRID", "A.FEGRID", "A.bgrdecl"}) {
            if (target == "A.FEGRID" && model.cells() > 10'000) {
                continue;
            }
            SCOPED_TRACE(file + " as " + target);
            for (const auto& name : folder.names()) {
                std::filesystem::remove(folder / name);
            }
            const auto& format = GridFormats::for_writing(folder / target);
            format.write(model, folder / target, {});
            GridModel expected = model;
            if (target == "A.bgrdecl") {
                for (PropertyData& property : expected.properties) {
                    property.unit.clear();
                    property.no_data.reset();
                }
            }
            EXPECT_EQ(test::difference(expected, format.read(folder / target, {}).model), "");
        }
    }
}

/// A program of the search path; nothing when it is not installed.
std::optional<std::filesystem::path> program(const std::string& name)
{
    const char* const variable = std::getenv("PATH");
    std::string folders = variable != nullptr ? variable : "";
    while (!folders.empty()) {
        const std::size_t end = std::min(folders.find(':'), folders.size());
        const auto candidate = std::filesystem::path(folders.substr(0, end)) / name;
        std::error_code ignored;
        if (std::filesystem::is_regular_file(candidate, ignored)) {
            return candidate;
        }
        folders.erase(0, end + 1);
    }
    return {};
}

/// Runs a program in a folder; what it printed is in the folder's "log".
bool run(const test::TemporaryFolder& folder, const std::string& command)
{
    const int status = std::system(("cd '" + folder.path().string() + "' && " + command + " >log 2>&1").c_str());
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

TEST(BinaryWrite, AnIndependentProgramConverts)
{
    // convertECL rewrites unformatted files as formatted ones and back; it comes with libopm-common-bin.
    const auto converter = program("convertECL");
    if (!converter) {
        std::cout << "convertECL is not installed: nothing checked with it\n";
        return;
    }
    const test::TemporaryFolder folder;
    GridModel model = plain_model({11, 9, 7});
    for (double& value : std::get<std::vector<double>>(model.properties[1].values)) {
        value = -std::pow(value, 25); // seventeen digits with a sign and exponents of two
    }
    EgridFormat().write(model, folder / "A.EGRID", {});
    EgridFormat().write(model, folder / "B.FEGRID", {});
    for (const std::string file : {"A.EGRID", "A.INIT", "B.FEGRID", "B.FINIT"}) {
        EXPECT_TRUE(run(folder, "'" + converter->string() + "' " + file))
            << file << ": " << test::file_text(folder / "log");
    }
    // Text to binary and back: the very bytes that were written as binary.
    EXPECT_TRUE(test::file_text(folder / "B.EGRID") == test::file_text(folder / "A.EGRID"));
    EXPECT_TRUE(test::file_text(folder / "B.INIT") == test::file_text(folder / "A.INIT"));
    // Binary to text, which has eight digits.
    const GridModel text = EgridFormat().read(folder / "A.FEGRID", {}).model;
    EXPECT_EQ(text.size, model.size);
    EXPECT_EQ(text.active, model.active);
    EXPECT_EQ(text.properties.size(), model.properties.size());
    const auto expected = test::values_of(model.zcorn);
    const auto found = test::values_of(text.zcorn);
    ASSERT_EQ(found.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        ASSERT_NEAR(found[i], expected[i], 1e-5);
    }
}

TEST(BinaryWrite, AnIndependentProgramFindsNoDifference)
{
    // compareECL, of the same package, compares corner coordinates, active cells and arrays of two models.
    const auto comparer = program("compareECL");
    const auto data = test::field_data();
    if (!comparer || !data) {
        std::cout << "compareECL or the field models are not there: nothing checked with them\n";
        return;
    }
    const test::TemporaryFolder folder;
    for (const std::string file : {"spe9/SPE9_CP_SHORT", "model1/FAULTS_MODEL_1"}) {
        const auto original = *data / file;
        auto path = original;
        path += ".EGRID";
        EgridFormat().write(EgridFormat().read(path, {}).model, folder / "A.EGRID", {});
        const std::string cases = " A '" + original.string() + "' 0 0";
        EXPECT_TRUE(run(folder, "'" + comparer->string() + "' -t EGRID" + cases)) << test::file_text(folder / "log");
        for (const std::string name : {"PORV", "PORO", "PERMZ", "TRANX", "SATNUM", "EQLNUM"}) {
            EXPECT_TRUE(run(folder, "'" + comparer->string() + "' -t INIT -k " + name + cases))
                << name << ": " << test::file_text(folder / "log");
        }
        // That it would find one.
        GridModel other = EgridFormat().read(path, {}).model;
        other.zcorn.visit_mutable([](auto values) { values[0] -= 1; });
        std::get<std::vector<float>>(other.properties[0].values)[0] += 1;
        EgridFormat().write(other, folder / "A.EGRID", {});
        EXPECT_FALSE(run(folder, "'" + comparer->string() + "' -t EGRID" + cases));
    }
}

} // namespace
} // namespace lodex
