// Reads public field models and compares with reference numbers made by other readers (facts.json of each set).

#include "GridTestTools.h"

#include <lodex/gridio/GrdeclFormat.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <gtest/gtest.h>
#include <iostream>
#include <nlohmann/json.hpp>

namespace lodex {
namespace {

using nlohmann::json;

/// The set's reference numbers.
json facts_of(const std::filesystem::path& folder)
{
    std::ifstream file(folder / "facts.json");
    return json::parse(file);
}

ReadResult read(const std::filesystem::path& path, const ReadOptions& options = {})
{
    return GrdeclFormat().read(path, options);
}

/// Reference numbers have ten digits; arrays in 32 bits differ from their decimals by 6e-8.
constexpr double relative = 2e-7;

void expect_near(const json& expected, double value, double tolerance, const std::string& what)
{
    const double reference = expected.get<double>();
    EXPECT_NEAR(value, reference, tolerance * std::max(std::fabs(reference), 1e-30)) << what;
}

struct Statistics {
    std::int64_t count = 0;
    double min = 0, max = 0, sum = 0;
    std::map<std::int64_t, std::int64_t> codes;
};

Statistics statistics(const GridModel& model, const PropertyData& property)
{
    Statistics result;
    const auto values = test::values_of(property);
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (model.active[i] == 0 || std::isnan(values[i])) {
            continue;
        }
        result.min = result.count == 0 ? values[i] : std::min(result.min, values[i]);
        result.max = result.count == 0 ? values[i] : std::max(result.max, values[i]);
        result.sum += values[i];
        ++result.codes[static_cast<std::int64_t>(values[i])];
        ++result.count;
    }
    return result;
}

void expect_properties(const GridModel& model, const json& facts)
{
    std::vector<std::string> names;
    for (const auto& property : model.properties) {
        names.push_back(property.name);
    }
    std::sort(names.begin(), names.end());
    std::vector<std::string> expected_names;
    for (const auto& [name, expected] : facts["properties"].items()) {
        expected_names.push_back(name);
        const PropertyData* const property = model.find_property(name);
        ASSERT_NE(property, nullptr) << name;
        const Statistics found = statistics(model, *property);
        EXPECT_EQ(found.count, expected["count"].get<std::int64_t>()) << name;
        expect_near(expected["min"], found.min, relative, name + " min");
        expect_near(expected["max"], found.max, relative, name + " max");
        expect_near(expected["mean"], found.sum / static_cast<double>(found.count), relative, name + " mean");
        expect_near(expected["sum"], found.sum, relative, name + " sum");
        if (expected.contains("codes")) {
            for (const auto& [code, count] : expected["codes"].items()) {
                EXPECT_EQ(found.codes.at(std::stoll(code)), count.get<std::int64_t>()) << name << " code " << code;
            }
            EXPECT_EQ(found.codes.size(), expected["codes"].size()) << name;
        }
    }
    EXPECT_EQ(names, expected_names);
}

void expect_layers(const GridModel& model, const json& facts)
{
    const auto per_layer = static_cast<std::size_t>(model.size[0] * model.size[1]);
    for (std::size_t k = 0; k < facts["per_K_layer"].size(); ++k) {
        const json& layer = facts["per_K_layer"][k];
        std::int64_t active = 0;
        for (std::size_t i = k * per_layer; i < (k + 1) * per_layer; ++i) {
            active += model.active[i];
        }
        EXPECT_EQ(active, layer["active"].get<std::int64_t>()) << "layer " << k + 1;
        EXPECT_EQ(active, facts["active_per_K"][k].get<std::int64_t>()) << "layer " << k + 1;
        for (const std::string name : {"PORO", "PERMX"}) {
            const PropertyData* const property = model.find_property(name);
            if (!layer.contains(name + "_mean") || property == nullptr) {
                continue;
            }
            const auto values = test::values_of(*property);
            double sum = 0;
            for (std::size_t i = k * per_layer; i < (k + 1) * per_layer; ++i) {
                sum += model.active[i] != 0 ? values[i] : 0;
            }
            expect_near(layer[name + "_mean"], sum / static_cast<double>(active), relative,
                        name + " mean of layer " + std::to_string(k + 1));
        }
    }
}

void expect_geometry(const GridModel& model, const json& facts)
{
    double bulk = 0;
    double largest = 0;
    double smallest = std::numeric_limits<double>::infinity();
    int sign = 0;
    std::vector<double> layer_bulk(static_cast<std::size_t>(model.size[2]));
    std::array<double, 3> low = {1e300, 1e300, 1e300};
    std::array<double, 3> high = {-1e300, -1e300, -1e300};
    for (std::int64_t k = 0; k < model.size[2]; ++k) {
        for (std::int64_t j = 0; j < model.size[1]; ++j) {
            for (std::int64_t i = 0; i < model.size[0]; ++i) {
                if (model.active[static_cast<std::size_t>(model.cell_index(i, j, k))] == 0) {
                    continue;
                }
                const auto corners = test::cell_corners(model, i, j, k);
                const double volume = test::trilinear_volume(corners);
                bulk += std::fabs(volume);
                layer_bulk[static_cast<std::size_t>(k)] += std::fabs(volume);
                largest = std::max(largest, std::fabs(volume));
                smallest = std::min(smallest, std::fabs(volume));
                sign += volume > 0 ? 1 : volume < 0 ? -1 : 0;
                for (const auto& corner : corners) {
                    for (std::size_t axis = 0; axis < 3; ++axis) {
                        low[axis] = std::min(low[axis], corner[axis]);
                        high[axis] = std::max(high[axis], corner[axis]);
                    }
                }
            }
        }
    }
    // Reference numbers have ten digits.
    constexpr double of_total = 2e-9;
    constexpr double of_cell = 1e-8;
    const json& volumes = facts["bulk_volume"];
    expect_near(volumes["active_trilinear"], bulk, of_total, "bulk volume");
    expect_near(volumes["cell_volume_active"]["max"], largest, of_cell, "largest cell");
    EXPECT_NEAR(smallest, volumes["cell_volume_active"]["min"].get<double>(), of_cell * largest);
    EXPECT_EQ(sign > 0, facts["handedness"].get<std::string>().ends_with("+1"));
    const std::array<const char*, 3> axes = {"x", "y", "z"};
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const json& range = facts["bbox_active"][axes[axis]];
        EXPECT_NEAR(low[axis], range[0].get<double>(), 1e-4) << axes[axis];
        EXPECT_NEAR(high[axis], range[1].get<double>(), 1e-4) << axes[axis];
    }
    for (std::size_t k = 0; k < layer_bulk.size(); ++k) {
        expect_near(facts["per_K_layer"][k]["bulk"], layer_bulk[k], of_total, "bulk of layer " + std::to_string(k + 1));
    }
}

void expect_counts(const GridModel& model, const json& facts)
{
    EXPECT_EQ(model.size, (GridSize{facts["dims"][0], facts["dims"][1], facts["dims"][2]}));
    EXPECT_EQ(std::count(model.active.begin(), model.active.end(), 1), facts["active"].get<std::int64_t>());
    EXPECT_EQ(model.active.size(), static_cast<std::size_t>(model.cells()));
}

void expect_same_after_writing(const GridModel& model, bool properties_only = false)
{
    const test::TemporaryFolder folder;
    const auto path = folder / "written.grdecl";
    for (const bool run_lengths : {false, true}) {
        WriteOptions write_options;
        write_options.run_lengths = run_lengths;
        GrdeclFormat().write(model, path, write_options);
        ReadOptions read_options;
        read_options.properties_only = properties_only;
        const ReadResult back = read(path, read_options);
        EXPECT_EQ(test::difference(model, back.model), "") << "run lengths " << run_lengths;
        for (const Message& message : back.messages) {
            EXPECT_NE(message.text.find("kept as text"), std::string::npos) << message.text;
        }
    }
}

struct Set {
    std::string folder;
    std::string file;
    std::string facts; ///< name in facts.json
};

class FieldModel : public testing::TestWithParam<Set> {};

TEST_P(FieldModel, HasTheReferenceNumbersAndSurvivesWriting)
{
    const auto data = test::field_data();
    if (!data) {
        return;
    }
    const Set& set = GetParam();
    const json facts = facts_of(*data / set.folder)["grids"][set.facts];
    ASSERT_FALSE(facts.is_null());
    const ReadResult result = read(*data / set.folder / set.file);
    expect_counts(result.model, facts);
    expect_properties(result.model, facts);
    expect_layers(result.model, facts);
    expect_geometry(result.model, facts);
    if (facts.contains("FAULTS_keyword")) {
        EXPECT_EQ(result.model.faults.size(), facts["FAULTS_keyword"]["records"].get<std::size_t>());
    }
    expect_same_after_writing(result.model);
}

std::vector<Set> sets()
{
    std::vector<Set> all = {{"spe9", "SPE9.DATA", "SPE9.DATA (TOPS/DX/DY/DZ)"},
                            {"spe9", "SPE9_CP_SHORT.DATA", "SPE9_CP_SHORT.DATA"},
                            {"spe10_model1", "SPE10_MODEL1.DATA", "SPE10_MODEL1.DATA (TOPS/DX/DY/DZ)"},
                            {"spe10_model1", "SPE10_MODEL1_CP.DATA", "SPE10_MODEL1_CP.DATA"},
                            {"model1", "FAULTS_MODEL_1.DATA", "FAULTS_MODEL_1.DATA"},
                            {"simpleb8", "simpleb8.grdecl", "simpleb8.grdecl"}};
    for (const std::string file :
         {"27cellsAniso.grdecl", "Cart2D_Fault.GRDECL", "EightCells.grdecl", "Simple1x1x1.grdecl", "Simple3x3x3.grdecl",
          "banal5.grdecl", "banal6.grdecl", "concave.grdecl", "emerald443.grdecl", "sixcells2_described_hdr1.grdecl",
          "sixcells2_described_zoverlap.grdecl", "sixcells2_described_zsep.grdecl", "sixcells2_hdr2.grdecl",
          "sixcells2_rhand_hdr1.grdecl", "sixcells2_rhand_hdr2.grdecl", "sixcells_lefthanded_hdr1.grdecl",
          "twocell.grdecl"}) {
        all.push_back({"tiny", file, file});
    }
    return all;
}

INSTANTIATE_TEST_SUITE_P(Grdecl, FieldModel, testing::ValuesIn(sets()), [](const auto& set) {
    std::string name = set.param.folder + "_" + set.param.file;
    std::replace_if(name.begin(), name.end(), [](char c) { return std::isalnum(static_cast<unsigned char>(c)) == 0; }, '_');
    return name;
});

TEST(FieldModels, GridPropertiesAndFaultsInThreeFiles)
{
    const auto data = test::field_data();
    if (!data) {
        return;
    }
    const json facts = facts_of(*data / "reek")["grids"]["reek_sim_grid.grdecl + reek_sim_poro.grdecl"];
    ReadResult grid = read(*data / "reek/reek_sim_grid.grdecl");
    ReadOptions options;
    options.properties_only = true;
    options.size = grid.model.size;
    const ReadResult porosity = read(*data / "reek/reek_sim_poro.grdecl", options);
    EXPECT_TRUE(porosity.model.active.empty());
    ASSERT_EQ(porosity.model.properties.size(), 1U);
    grid.model.properties = porosity.model.properties;
    options.size.reset();
    const ReadResult faults = read(*data / "reek/reek3_faults.grdecl", options);
    EXPECT_EQ(faults.model.size, grid.model.size);
    EXPECT_EQ(faults.model.faults.size(), 136U);
    grid.model.faults = faults.model.faults;
    expect_counts(grid.model, facts);
    expect_properties(grid.model, facts);
    expect_layers(grid.model, facts);
    expect_geometry(grid.model, facts);
    EXPECT_EQ(grid.model.frame.map_axes,
              (std::array<double, 6>{456510.625, 5938935.5, 456510.625, 5926880.172, 467216.753, 5926880.172}));
    EXPECT_EQ(grid.model.frame.grid_units, "METRES");
    expect_same_after_writing(grid.model);
}

TEST(FieldModels, GridFilesOfDecksAlone)
{
    const auto data = test::field_data();
    if (!data) {
        return;
    }
    for (const Set& set : {Set{"spe9", "SPE9.GRDECL", "SPE9_CP_SHORT.DATA"},
                           Set{"spe10_model1", "SPE10MODEL1.GRDECL", "SPE10_MODEL1_CP.DATA"},
                           Set{"model1", "include/grid_basemod1.grdecl", "FAULTS_MODEL_1.DATA"}}) {
        const json facts = facts_of(*data / set.folder)["grids"][set.facts];
        const ReadResult result = read(*data / set.folder / set.file);
        expect_counts(result.model, facts);
        expect_geometry(result.model, facts);
        EXPECT_TRUE(result.model.properties.empty());
        expect_same_after_writing(result.model);
    }
}

TEST(FieldModels, DeckWithoutGeometryGivesItsProperties)
{
    const auto data = test::field_data();
    if (!data) {
        return;
    }
    const json facts = facts_of(*data / "norne")["grids"]["deck arrays (no geometry)"];
    EXPECT_THROW(read(*data / "norne/NORNE_ATW2013.DATA"), FileError); // its grid file is not there
    ReadOptions options;
    options.properties_only = true;
    const ReadResult result = read(*data / "norne/NORNE_ATW2013.DATA", options);
    expect_counts(result.model, facts);
    expect_properties(result.model, facts);
    expect_layers(result.model, facts);
    EXPECT_EQ(result.model.faults.size(), facts["FAULTS_keyword"]["records"].get<std::size_t>());
    std::vector<std::string> names;
    for (const auto& fault : result.model.faults) {
        names.push_back(fault.name);
    }
    std::sort(names.begin(), names.end());
    names.erase(std::unique(names.begin(), names.end()), names.end());
    EXPECT_EQ(names, facts["FAULTS_keyword"]["names"].get<std::vector<std::string>>());
    std::vector<std::string> missing;
    for (const Message& message : result.messages) {
        if (message.text.find("there is no file") != std::string::npos) {
            missing.push_back(message.text);
        }
    }
    EXPECT_EQ(missing.size(), facts["meta"]["missing_includes"].size());
    expect_same_after_writing(result.model, true);
}

TEST(FieldModels, BarePropertyAndFaultFiles)
{
    const auto data = test::field_data();
    if (!data) {
        return;
    }
    const json facts = facts_of(*data / "drogon")["grids"]["DROGON.EGRID + include"];
    ReadOptions options;
    options.properties_only = true;
    options.size = GridSize{46, 73, 31};
    const auto folder = *data / "drogon/include";
    for (const auto& [file, name] : std::map<std::string, std::string>{{"grid/drogon.poro", "PORO"},
                                                                       {"grid/drogon.multnum", "MULTNUM"},
                                                                       {"props/drogon.swatinit", "SWATINIT"},
                                                                       {"regions/drogon.eqlnum", "EQLNUM"},
                                                                       {"regions/drogon.fipnum", "FIPNUM"},
                                                                       {"regions/drogon.fipzon", "FIPZON"},
                                                                       {"regions/drogon.satnum", "SATNUM"}}) {
        EXPECT_TRUE(GrdeclFormat().recognises(test::file_text(folder / file), folder / file)) << file;
        const ReadResult result = read(folder / file, options);
        ASSERT_EQ(result.model.properties.size(), 1U) << file;
        EXPECT_EQ(result.model.properties[0].name, name);
        EXPECT_EQ(result.model.properties[0].discrete(), name != "PORO" && name != "SWATINIT");
        EXPECT_EQ(result.model.properties[0].size(), static_cast<std::size_t>(46 * 73 * 31));
    }
    const ReadResult faults = read(folder / "grid/drogon.faults", options);
    EXPECT_EQ(faults.model.faults.size(), facts["FAULTS_keyword"]["records"].get<std::size_t>());
}

} // namespace
} // namespace lodex
