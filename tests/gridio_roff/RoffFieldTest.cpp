// Reads public field models and compares with reference numbers made by other readers (facts.json of each set).

#include "../gridio/GridTestTools.h"

#include <lodex/gridio/GrdeclFormat.h>
#include <lodex/gridio/RoffFormat.h>
#include <lodex/gridio/RoffReader.h>
#include <lodex/gridio/RoffWriter.h>
#include <lodex/volumes/model/CellGeometry.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace lodex {
namespace {

using nlohmann::json;

json facts_of(const std::filesystem::path& folder)
{
    std::ifstream file(folder / "facts.json");
    return json::parse(file);
}

ReadResult read(const std::filesystem::path& path, const ReadOptions& options = {})
{
    return roff::read_file(path, options);
}

/// Reference numbers have ten digits.
constexpr double relative = 2e-9;

void expect_near(const json& expected, double value, const std::string& what, double tolerance = relative)
{
    const double reference = expected.get<double>();
    EXPECT_NEAR(value, reference, tolerance * std::max(std::fabs(reference), 1e-30)) << what;
}

struct Statistics {
    std::int64_t count = 0;
    std::int64_t undefined = 0;
    double min = 0, max = 0, sum = 0, weighted = 0, weight = 0;
    std::map<std::int64_t, std::int64_t> codes;
};

/// Of the active cells of layers first <= k < end.
Statistics statistics(const GridModel& model, const PropertyData& property, const std::vector<double>& volumes,
                      std::int64_t first, std::int64_t end)
{
    Statistics result;
    const auto values = test::values_of(property);
    const std::int64_t layer = model.size[0] * model.size[1];
    for (auto i = static_cast<std::size_t>(first * layer); i < static_cast<std::size_t>(end * layer); ++i) {
        if (model.active[i] == 0) {
            continue;
        }
        if (std::isnan(values[i]) || (property.no_data && values[i] == *property.no_data)) {
            ++result.undefined;
            continue;
        }
        result.min = result.count == 0 ? values[i] : std::min(result.min, values[i]);
        result.max = result.count == 0 ? values[i] : std::max(result.max, values[i]);
        result.sum += values[i];
        result.weighted += values[i] * volumes[i];
        result.weight += volumes[i];
        ++result.codes[static_cast<std::int64_t>(values[i])];
        ++result.count;
    }
    return result;
}

void expect_properties(const GridModel& model, const json& facts, const std::vector<double>& volumes)
{
    EXPECT_EQ(model.properties.size(), facts["properties"].size());
    for (const auto& [name, expected] : facts["properties"].items()) {
        const PropertyData* const property = model.find_property(name);
        ASSERT_NE(property, nullptr) << name;
        const Statistics found = statistics(model, *property, volumes, 0, model.size[2]);
        EXPECT_EQ(found.count, expected["count"].get<std::int64_t>()) << name;
        EXPECT_EQ(found.undefined, expected["undefined_active"].get<std::int64_t>()) << name;
        expect_near(expected["min"], found.min, name + " min");
        expect_near(expected["max"], found.max, name + " max");
        expect_near(expected["sum"], found.sum, name + " sum");
        expect_near(expected["mean"], found.sum / static_cast<double>(found.count), name + " mean");
        if (expected.contains("codes")) {
            for (const auto& [code, count] : expected["codes"].items()) {
                EXPECT_EQ(found.codes.at(std::stoll(code)), count.get<std::int64_t>()) << name << " code " << code;
            }
            EXPECT_EQ(found.codes.size(), expected["codes"].size()) << name;
        }
        const json& stored = facts["meta"]["parameters"][name];
        EXPECT_EQ(property->values.index() == 0, stored["type"] == "float") << name;
        EXPECT_EQ(property->discrete(), stored["type"] != "float") << name;
        if (stored.contains("codes")) {
            std::map<std::int32_t, std::string> names;
            for (const auto& [code, text] : stored["codes"].items()) {
                if (!text.get<std::string>().empty()) {
                    names[std::stoi(code)] = text.get<std::string>();
                }
            }
            EXPECT_EQ(property->code_names, names) << name;
        }
    }
}

void expect_layers(const GridModel& model, const json& facts, const std::vector<double>& volumes,
                   const VolumeSummary& summary)
{
    for (std::size_t k = 0; k < facts["per_K_layer"].size(); ++k) {
        const json& layer = facts["per_K_layer"][k];
        const std::string which = " of layer " + std::to_string(k + 1);
        EXPECT_EQ(summary.layer_cells[k], layer["active"].get<std::int64_t>()) << which;
        EXPECT_EQ(summary.layer_cells[k], facts["active_per_K"][k].get<std::int64_t>()) << which;
        expect_near(layer["bulk"], summary.layer_volume[k], "bulk" + which);
        for (const PropertyData& property : model.properties) {
            if (!layer.contains(property.name + "_mean")) {
                continue;
            }
            const auto first = static_cast<std::int64_t>(k);
            const Statistics found = statistics(model, property, volumes, first, first + 1);
            expect_near(layer[property.name + "_mean"], found.sum / static_cast<double>(found.count),
                        property.name + " mean" + which);
            expect_near(layer[property.name + "_mean_volume_weighted"], found.weighted / found.weight,
                        property.name + " weighted mean" + which);
            if (property.name == "PORO" && layer.contains("pore")) {
                expect_near(layer["pore"], found.weighted, "pore volume" + which);
            }
        }
    }
}

void expect_zones(const GridModel& model, const json& facts, const std::vector<double>& volumes)
{
    if (!facts.contains("per_region")) {
        return;
    }
    const PropertyData* const property = model.find_property("PORO");
    const std::vector<double> porosity = property == nullptr ? std::vector<double>{} : test::values_of(*property);
    for (const auto& [name, codes] : facts["per_region"].items()) {
        const auto& zones = std::get<std::vector<std::int32_t>>(model.find_property(name)->values);
        for (const auto& [code, expected] : codes.items()) {
            double bulk = 0, pore = 0;
            std::int64_t cells = 0;
            for (std::size_t i = 0; i < zones.size(); ++i) {
                if (model.active[i] != 0 && zones[i] == std::stoi(code)) {
                    ++cells;
                    bulk += volumes[i];
                    pore += porosity.empty() ? 0 : volumes[i] * porosity[i];
                }
            }
            EXPECT_EQ(cells, expected["cells"].get<std::int64_t>()) << name << ' ' << code;
            expect_near(expected["bulk"], bulk, name + ' ' + code + " bulk");
            if (expected.contains("pore")) {
                expect_near(expected["pore"], pore, name + ' ' + code + " pore");
            }
        }
    }
}

void expect_geometry(const GridModel& model, const json& facts, const std::vector<double>& volumes,
                     const VolumeSummary& summary)
{
    const json& expected = facts["bulk_volume"];
    expect_near(expected["active_trilinear"], summary.active_volume, "bulk volume");
    expect_near(expected["all_trilinear"], summary.total_volume, "bulk volume of all cells");
    EXPECT_EQ(handedness(model) > 0, facts["handedness"].get<std::string>().ends_with("+1"));
    double largest = 0, thickest = -1e300, thinnest = 1e300, heights = 0;
    std::int64_t flat = 0, negative = 0;
    std::array<double, 3> low = {1e300, 1e300, 1e300};
    std::array<double, 3> high = {-1e300, -1e300, -1e300};
    for (std::int64_t k = 0; k < model.size[2]; ++k) {
        for (std::int64_t j = 0; j < model.size[1]; ++j) {
            for (std::int64_t i = 0; i < model.size[0]; ++i) {
                const auto cell = static_cast<std::size_t>(model.cell_index(i, j, k));
                if (model.active[cell] == 0) {
                    continue;
                }
                largest = std::max(largest, volumes[cell]);
                const CellCorners corners = cell_corners(model, i, j, k);
                const double height = cell_height(corners);
                heights += height;
                thickest = std::max(thickest, height);
                thinnest = std::min(thinnest, height);
                flat += height == 0 ? 1 : 0;
                negative += height < 0 ? 1 : 0;
                for (const auto& corner : corners) {
                    for (std::size_t axis = 0; axis < 3; ++axis) {
                        low[axis] = std::min(low[axis], corner[axis]);
                        high[axis] = std::max(high[axis], corner[axis]);
                    }
                }
            }
        }
    }
    expect_near(expected["cell_volume_active"]["max"], largest, "largest cell");
    expect_near(facts["mean_thickness_active"]["sum"], heights, "thickness");
    expect_near(facts["mean_thickness_active"]["max"], thickest, "largest thickness");
    expect_near(facts["mean_thickness_active"]["min"], thinnest, "smallest thickness");
    EXPECT_EQ(flat, facts["cells_zero_thickness_active"].get<std::int64_t>());
    EXPECT_EQ(negative, facts["cells_negative_thickness_active"].get<std::int64_t>());
    const std::array<const char*, 3> axes = {"x", "y", "z"};
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const json& range = facts["bbox_active"][axes[axis]];
        EXPECT_NEAR(low[axis], range[0].get<double>(), 1e-9 * std::fabs(low[axis])) << axes[axis];
        EXPECT_NEAR(high[axis], range[1].get<double>(), 1e-9 * std::fabs(high[axis])) << axes[axis];
    }
}

void expect_facts(const GridModel& model, const json& facts)
{
    ASSERT_FALSE(facts.is_null());
    ASSERT_EQ(model.size, (GridSize{facts["dims"][0], facts["dims"][1], facts["dims"][2]}));
    EXPECT_NO_THROW(check_arrays(model));
    EXPECT_EQ(std::count(model.active.begin(), model.active.end(), 1), facts["active"].get<std::int64_t>());
    const auto volumes = cell_volumes(model);
    const VolumeSummary summary = summarise_volumes(model);
    expect_geometry(model, facts, volumes, summary);
    expect_properties(model, facts, volumes);
    expect_layers(model, facts, volumes, summary);
    expect_zones(model, facts, volumes);
    if (facts["meta"].contains("subgrids_nLayers")) {
        const json& counts = facts["meta"]["subgrids_nLayers"];
        ASSERT_EQ(model.layers.size(), counts.size());
        for (std::size_t n = 0; n < counts.size(); ++n) {
            EXPECT_EQ(model.layers[n].nb_k_cells, counts[n].get<std::int64_t>());
        }
    } else {
        EXPECT_TRUE(model.layers.empty());
    }
}

void expect_same_after_writing(const GridModel& model)
{
    const test::TemporaryFolder folder;
    for (const roff::Form form : {roff::Form::LittleEndian, roff::Form::BigEndian, roff::Form::Text}) {
        const auto path = folder / "written.roff";
        roff::write_file(model, path, {}, form);
        const ReadResult back = read(path);
        EXPECT_EQ(test::difference(model, back.model), "") << "form " << static_cast<int>(form);
        EXPECT_TRUE(back.messages.empty());
    }
}

/// Largest differences of the corners of cells along x, y and depth.
std::array<double, 3> corner_difference(const GridModel& a, const GridModel& b)
{
    std::array<double, 3> largest{};
    for (std::int64_t k = 0; k < a.size[2]; ++k) {
        for (std::int64_t j = 0; j < a.size[1]; ++j) {
            for (std::int64_t i = 0; i < a.size[0]; ++i) {
                if (a.active[static_cast<std::size_t>(a.cell_index(i, j, k))] == 0) {
                    continue;
                }
                const CellCorners left = cell_corners(a, i, j, k);
                const CellCorners right = cell_corners(b, i, j, k);
                for (std::size_t corner = 0; corner < 8; ++corner) {
                    for (std::size_t axis = 0; axis < 3; ++axis) {
                        largest[axis] = std::max(largest[axis], std::fabs(left[corner][axis] - right[corner][axis]));
                    }
                }
            }
        }
    }
    return largest;
}

/// Local coordinates of the grid into map coordinates, by its map axes.
void apply_map_axes(GridModel& model)
{
    const auto& axes = *model.frame.map_axes;
    const double yx = axes[0] - axes[2], yy = axes[1] - axes[3], xx = axes[4] - axes[2], xy = axes[5] - axes[3];
    const double y_length = std::hypot(yx, yy), x_length = std::hypot(xx, xy);
    std::vector<double> coord = test::values_of(model.coord);
    for (std::size_t n = 0; n < coord.size(); n += 3) {
        const double x = coord[n], y = coord[n + 1];
        coord[n] = axes[2] + x * xx / x_length + y * yx / y_length;
        coord[n + 1] = axes[3] + x * xy / x_length + y * yy / y_length;
    }
    model.coord = std::move(coord);
}

class TinyModel : public testing::TestWithParam<const char*> {};

TEST_P(TinyModel, HasTheReferenceNumbersAndSurvivesWriting)
{
    const auto data = test::field_data();
    if (!data) {
        return;
    }
    const auto path = *data / "tiny" / GetParam();
    const std::string text = test::file_text(path);
    const bool is_text = text.starts_with("roff-asc");
    EXPECT_EQ(GridFormats::for_reading(path).name(), is_text ? "roff_text" : "roff");
    const ReadResult result = GridFormats::for_reading(path).read(path, {});
    expect_facts(result.model, facts_of(*data / "tiny")["grids"][GetParam()]);
    EXPECT_EQ(result.bytes, text.size());
    EXPECT_EQ(result.files, std::vector{path});
    expect_same_after_writing(result.model);
}

INSTANTIATE_TEST_SUITE_P(Roff, TinyModel,
                         testing::Values("banal6.roff", "banal6.roffasc", "banal7_grid_params.roff",
                                         "banal7_grid_params.roffasc", "emerald443_bigend.roff",
                                         "emerald443_litend.roff", "sixcells2.roff", "sixcells2.roffasc",
                                         "twocell.roff", "twocell.roff_asc"),
                         [](const auto& file) {
                             std::string name = file.param;
                             std::replace_if(
                                 name.begin(), name.end(),
                                 [](char c) { return std::isalnum(static_cast<unsigned char>(c)) == 0; }, '_');
                             return name;
                         });

TEST(TinyModels, TextAndBinaryAreTheSameToTheLastBit)
{
    const auto data = test::field_data();
    if (!data) {
        return;
    }
    for (const auto& [binary, text] : std::map<std::string, std::string>{{"banal6.roff", "banal6.roffasc"},
                                                                         {"sixcells2.roff", "sixcells2.roffasc"},
                                                                         {"twocell.roff", "twocell.roff_asc"}}) {
        const GridModel a = read(*data / "tiny" / binary).model;
        const GridModel b = read(*data / "tiny" / text).model;
        EXPECT_EQ(corner_difference(a, b), (std::array<double, 3>{})) << binary;
        EXPECT_EQ(a.active, b.active);
        EXPECT_EQ(a.coord.is_double(), b.coord.is_double());
    }
    GridModel big = read(*data / "tiny/emerald443_bigend.roff").model;
    ASSERT_EQ(big.properties.size(), 1U);
    big.properties.clear();
    EXPECT_EQ(test::difference(big, read(*data / "tiny/emerald443_litend.roff").model), "");
}

TEST(TinyModels, GrdeclIsTheSameGrid)
{
    const auto data = test::field_data();
    if (!data) {
        return;
    }
    // The text has millimetres and depths, the binary file 32 bits.
    for (const auto& [grdecl, roff, xy, depth] : {std::tuple{"banal6.grdecl", "banal6.roff", 1e-6, 1e-6},
                                                  std::tuple{"emerald443.grdecl", "emerald443_litend.roff", 2e-3, 1e-3},
                                                  std::tuple{"twocell.grdecl", "twocell.roff", 2e-3, 1e-3}}) {
        GridModel a = GrdeclFormat().read(*data / "tiny" / grdecl, {}).model;
        const GridModel b = read(*data / "tiny" / roff).model;
        ASSERT_EQ(a.size, b.size) << grdecl;
        if (a.frame.map_axes && !a.frame.grid_units_map) {
            apply_map_axes(a);
        }
        const auto difference = corner_difference(a, b);
        EXPECT_LT(difference[0], xy) << grdecl;
        EXPECT_LT(difference[1], xy) << grdecl;
        EXPECT_LT(difference[2], depth) << grdecl;
        EXPECT_EQ(a.active, b.active);
    }
}

TEST(TinyModels, SubgridsBecomeUnitsWithTheNamesOfTheirZones)
{
    const auto data = test::field_data();
    if (!data) {
        return;
    }
    const ReadResult result = read(*data / "tiny/banal7_grid_params.roff");
    ASSERT_EQ(result.model.layers.size(), 2U);
    EXPECT_EQ(result.model.layers[0].unit, "UPPER");
    EXPECT_EQ(result.model.layers[1].unit, "LOWER");
    ASSERT_EQ(result.messages.size(), 1U);
    EXPECT_EQ(result.messages[0].level, Message::Level::Info);
    const PropertyData* const bytes = result.model.find_property("DISC");
    ASSERT_NE(bytes, nullptr);
    EXPECT_EQ(bytes->no_data, 255);
    EXPECT_EQ(result.model.find_property("CONT")->no_data, -999);
}

/// The grid with the parameters of four more files.
GridModel reek(const std::filesystem::path& folder)
{
    GridModel model = read(folder / "reek_sim_grid.roff").model;
    ReadOptions options;
    options.properties_only = true;
    options.size = model.size;
    for (const std::string name : {"poro", "permx", "zone", "facies2"}) {
        const ReadResult more = read(folder / ("reek_sim_" + name + ".roff"), options);
        EXPECT_TRUE(more.messages.empty());
        EXPECT_TRUE(more.model.coord.empty());
        EXPECT_TRUE(more.model.active.empty());
        EXPECT_EQ(more.model.size, model.size);
        model.properties.insert(model.properties.end(), more.model.properties.begin(), more.model.properties.end());
    }
    return model;
}

TEST(Reek, GridAndParametersInFiveFiles)
{
    const auto data = test::field_data();
    if (!data) {
        return;
    }
    const json facts = facts_of(*data / "reek")["grids"];
    const GridModel model = reek(*data / "reek");
    expect_facts(model, facts["reek_sim_grid.roff + params"]);
    expect_same_after_writing(model);
    // The file's own depths and parameters are 32 bits; map coordinates with their offset need 64.
    EXPECT_FALSE(model.zcorn.is_double());
    EXPECT_TRUE(model.coord.is_double());

    const GridModel with_properties = read(*data / "reek/reek_grd_w_props.roff").model;
    expect_facts(with_properties, facts["reek_grd_w_props.roff"]);
    EXPECT_EQ(with_properties.coord, model.coord);
    EXPECT_EQ(with_properties.zcorn, model.zcorn);
    expect_same_after_writing(with_properties);
}

TEST(Reek, GrdeclIsTheSameGridInLocalCoordinates)
{
    const auto data = test::field_data();
    if (!data) {
        return;
    }
    const json check = facts_of(*data / "reek")["cross_check"]["GRDECL vs ROFF"];
    const GridModel roff = reek(*data / "reek");
    GridModel grdecl = GrdeclFormat().read(*data / "reek/reek_sim_grid.grdecl", {}).model;
    EXPECT_EQ(grdecl.active, roff.active);
    apply_map_axes(grdecl);
    const auto difference = corner_difference(grdecl, roff);
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const double stated = check["max_abs_corner_difference_xyz_active_after_MAPAXES"][axis];
        EXPECT_NEAR(difference[axis], stated, 1e-6 + 1e-3 * stated);
    }
    ReadOptions options;
    options.properties_only = true;
    const auto text = GrdeclFormat().read(*data / "reek/reek_sim_poro.grdecl", [&] {
        options.size = roff.size;
        return options;
    }());
    const auto a = test::values_of(text.model.properties.at(0));
    const auto b = test::values_of(*roff.find_property("PORO"));
    double largest = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        largest = roff.active[i] != 0 ? std::max(largest, std::fabs(a[i] - b[i])) : largest;
    }
    // The text may be held in 32 bits here, which adds their rounding.
    EXPECT_LE(largest, check["max_abs_difference_PORO"].get<double>() + 1.5e-8);
}

TEST(Drogon, UnitsZonesAndPinchedCells)
{
    const auto data = test::field_data();
    if (!data) {
        return;
    }
    const json facts = facts_of(*data / "drogon")["grids"]["simgrid_with_region_zone_attr.roff"];
    const ReadResult result = read(*data / "drogon/simgrid_with_region_zone_attr.roff");
    expect_facts(result.model, facts);
    ASSERT_EQ(result.model.layers.size(), 3U);
    EXPECT_EQ(result.model.layers[0].unit, "Valysar");
    EXPECT_EQ(result.model.layers[1].unit, "Therys");
    EXPECT_EQ(result.model.layers[2].unit, "Volon");
    // Pinched cells have a volume of a few ulps at most, of either sign.
    std::int64_t flat = 0, opposite = 0;
    for (std::int64_t k = 0; k < result.model.size[2]; ++k) {
        for (std::int64_t j = 0; j < result.model.size[1]; ++j) {
            for (std::int64_t i = 0; i < result.model.size[0]; ++i) {
                if (result.model.active[static_cast<std::size_t>(result.model.cell_index(i, j, k))] != 0) {
                    const double volume = signed_cell_volume(cell_corners(result.model, i, j, k));
                    flat += std::fabs(volume) < 1e-6 ? 1 : 0;
                    opposite += volume > 1e-6 ? 1 : 0;
                }
            }
        }
    }
    EXPECT_EQ(flat, facts["bulk_volume"]["cells_zero_volume_active"].get<std::int64_t>());
    EXPECT_LE(opposite, facts["bulk_volume"]["cells_opposite_sign_active"].get<std::int64_t>());
    expect_same_after_writing(result.model);
}

TEST(Reek, ParametersOfAnotherGridAreRefused)
{
    const auto data = test::field_data();
    if (!data) {
        return;
    }
    ReadOptions options;
    options.properties_only = true;
    options.size = GridSize{40, 64, 15};
    try {
        (void)read(*data / "reek/reek_sim_poro.roff", options);
        FAIL();
    } catch (const FileError& error) {
        EXPECT_NE(error.reason().find("40 x 64 x 14"), std::string::npos) << error.what();
        EXPECT_NE(error.reason().find("40 x 64 x 15"), std::string::npos) << error.what();
    }
    try {
        (void)read(*data / "reek/reek_sim_poro.roff");
        FAIL();
    } catch (const FileError& error) {
        EXPECT_NE(error.reason().find("no geometry"), std::string::npos) << error.what();
    }
}

} // namespace
} // namespace lodex
