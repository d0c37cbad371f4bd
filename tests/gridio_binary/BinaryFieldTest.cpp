// Reads public field models and compares with reference numbers made by other readers (facts.json of each set).

#include "../gridio/GridTestTools.h"
#include "RecordBytes.h"

#include <lodex/gridio/BinaryGrdeclFormat.h>
#include <lodex/gridio/EgridFormat.h>
#include <lodex/gridio/GrdeclFormat.h>
#include <lodex/gridio/InitFormat.h>
#include <lodex/gridio/OldGridFormat.h>
#include <lodex/volumes/model/CellGeometry.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <nlohmann/json.hpp>

namespace lodex {
namespace {

using nlohmann::json;

json facts_of(const std::filesystem::path& folder, const std::string& grid)
{
    std::ifstream file(folder / "facts.json");
    const json facts = json::parse(file);
    return grid.empty() ? facts : facts["grids"][grid];
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
    double min = 0, max = 0, sum = 0;
    std::map<std::int64_t, std::int64_t> codes;
};

Statistics statistics(const std::vector<std::uint8_t>& active, const PropertyData& property)
{
    Statistics result;
    const auto values = test::values_of(property);
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (active[i] == 0 || std::isnan(values[i])) {
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

void expect_properties(const GridModel& model, const std::vector<std::uint8_t>& active, const json& facts,
                       double tolerance = relative)
{
    std::size_t checked = 0;
    for (const auto& [name, expected] : facts["properties"].items()) {
        if (name == "ACTNUM") { // the flags of active cells alone: all 1, and no property
            EXPECT_EQ(std::count(active.begin(), active.end(), 1), expected["count"].get<std::int64_t>());
            EXPECT_EQ(model.find_property(name), nullptr);
            continue;
        }
        ++checked;
        const PropertyData* const property = model.find_property(name);
        ASSERT_NE(property, nullptr) << name;
        EXPECT_EQ(property->size(), static_cast<std::size_t>(model.cells())) << name;
        const Statistics found = statistics(active, *property);
        EXPECT_EQ(found.count, expected["count"].get<std::int64_t>()) << name;
        expect_near(expected["min"], found.min, name + " min", tolerance);
        expect_near(expected["max"], found.max, name + " max", tolerance);
        expect_near(expected["mean"], found.sum / static_cast<double>(found.count), name + " mean", tolerance);
        expect_near(expected["sum"], found.sum, name + " sum", tolerance);
        if (expected.contains("codes") && property->discrete()) {
            std::map<std::int64_t, std::int64_t> codes;
            for (const auto& [code, count] : expected["codes"].items()) {
                codes[std::stoll(code)] = count.get<std::int64_t>();
            }
            EXPECT_EQ(found.codes, codes) << name;
        }
    }
    EXPECT_EQ(model.properties.size(), checked);
}

void expect_layers(const GridModel& model, const std::vector<std::uint8_t>& active, const json& facts,
                   const std::vector<double>& volumes)
{
    const auto per_layer = static_cast<std::size_t>(model.size[0] * model.size[1]);
    ASSERT_EQ(facts["per_K_layer"].size(), static_cast<std::size_t>(model.size[2]));
    for (std::size_t k = 0; k < facts["per_K_layer"].size(); ++k) {
        const json& layer = facts["per_K_layer"][k];
        const std::string of_layer = " of layer " + std::to_string(k + 1);
        std::int64_t cells = 0;
        double bulk = 0;
        for (std::size_t i = k * per_layer; i < (k + 1) * per_layer; ++i) {
            cells += active[i];
            bulk += active[i] != 0 && !volumes.empty() ? volumes[i] : 0;
        }
        EXPECT_EQ(cells, layer["active"].get<std::int64_t>()) << of_layer;
        EXPECT_EQ(cells, facts["active_per_K"][k].get<std::int64_t>()) << of_layer;
        if (!volumes.empty()) {
            expect_near(layer["bulk"], bulk, "bulk" + of_layer);
        }
        for (const std::string name : {"PORO", "PERMX"}) {
            const PropertyData* const property = model.find_property(name);
            if (!layer.contains(name + "_mean")) {
                continue;
            }
            ASSERT_NE(property, nullptr) << name;
            const auto values = test::values_of(*property);
            double sum = 0;
            double weighted = 0;
            for (std::size_t i = k * per_layer; i < (k + 1) * per_layer; ++i) {
                sum += active[i] != 0 ? values[i] : 0;
                weighted += active[i] != 0 && !volumes.empty() ? values[i] * volumes[i] : 0;
            }
            expect_near(layer[name + "_mean"], sum / static_cast<double>(cells), name + of_layer);
            if (!volumes.empty()) {
                expect_near(layer[name + "_mean_volume_weighted"], weighted / bulk, name + ", weighted," + of_layer);
            }
        }
    }
}

void expect_geometry(const GridModel& model, const json& facts)
{
    const GridSize size = {facts["dims"][0], facts["dims"][1], facts["dims"][2]};
    ASSERT_EQ(model.size, size);
    const VolumeSummary summary = summarise_volumes(model);
    EXPECT_EQ(summary.active_cells, facts["active"].get<std::int64_t>());
    expect_near(facts["bulk_volume"]["active_trilinear"], summary.active_volume, "bulk volume");
    EXPECT_EQ(summary.inverted_cells, facts["bulk_volume"]["cells_opposite_sign_active"].get<std::int64_t>());
    EXPECT_EQ(summary.flat_cells, facts["bulk_volume"]["cells_zero_volume_active"].get<std::int64_t>());
    EXPECT_EQ(handedness(model) > 0, facts["handedness"].get<std::string>().ends_with("+1"));
    std::array<double, 2> depths = {1e30, -1e30};
    for (std::int64_t k = 0; k < model.size[2]; ++k) {
        for (std::int64_t j = 0; j < model.size[1]; ++j) {
            for (std::int64_t i = 0; i < model.size[0]; ++i) {
                if (model.active[static_cast<std::size_t>(model.cell_index(i, j, k))] == 0) {
                    continue;
                }
                for (const auto& corner : lodex::cell_corners(model, i, j, k)) {
                    depths = {std::min(depths[0], corner[2]), std::max(depths[1], corner[2])};
                }
            }
        }
    }
    expect_near(facts["bbox_active"]["z"][0], depths[0], "least depth");
    expect_near(facts["bbox_active"]["z"][1], depths[1], "largest depth");
    const json& meta = facts["meta"];
    EXPECT_EQ(model.frame.map_axes.has_value(), meta.contains("MAPAXES"));
    if (meta.contains("MAPAXES")) {
        for (std::size_t i = 0; i < 6; ++i) {
            expect_near(meta["MAPAXES"][i], (*model.frame.map_axes)[i], "MAPAXES");
        }
    }
    if (meta.contains("GRIDUNIT")) {
        EXPECT_EQ(model.frame.grid_units, meta["GRIDUNIT"][0].get<std::string>());
        EXPECT_EQ(model.frame.grid_units_map, meta["GRIDUNIT"][1].get<std::string>() == "MAP");
    }
    if (meta.contains("MAPUNITS")) {
        EXPECT_EQ(model.frame.map_units, meta["MAPUNITS"][0].get<std::string>());
    }
}

void expect_model(const GridModel& model, const json& facts)
{
    expect_geometry(model, facts);
    expect_properties(model, model.active, facts);
    expect_layers(model, model.active, facts, cell_volumes(model));
    check_arrays(model);
    EXPECT_FALSE(model.coord.is_double());
    EXPECT_FALSE(model.zcorn.is_double());
}

/// Largest difference of x, y and depth over the corners of active cells.
std::array<double, 3> corner_difference(const GridModel& a, const GridModel& b)
{
    std::array<double, 3> largest{};
    for (std::int64_t k = 0; k < a.size[2]; ++k) {
        for (std::int64_t j = 0; j < a.size[1]; ++j) {
            for (std::int64_t i = 0; i < a.size[0]; ++i) {
                if (a.active[static_cast<std::size_t>(a.cell_index(i, j, k))] == 0) {
                    continue;
                }
                const auto left = lodex::cell_corners(a, i, j, k);
                const auto right = lodex::cell_corners(b, i, j, k);
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

/// The same grid, corners and properties within the differences that the set's reference states.
void expect_same_model(const GridModel& a, const GridModel& b, const json& stated)
{
    ASSERT_EQ(a.size, b.size);
    EXPECT_EQ(a.active, b.active);
    const auto difference = corner_difference(a, b);
    for (std::size_t axis = 0; axis < 3; ++axis) {
        EXPECT_LE(difference[axis], stated["max_abs_corner_difference_xyz_active"][axis].get<double>() * (1 + 1e-8))
            << axis;
    }
    std::size_t compared = 0;
    for (const auto& [key, value] : stated.items()) {
        const std::string prefix = "max_abs_difference_";
        if (!key.starts_with(prefix)) {
            continue;
        }
        const PropertyData* const left = a.find_property(key.substr(prefix.size()));
        const PropertyData* const right = b.find_property(key.substr(prefix.size()));
        ASSERT_TRUE(left != nullptr && right != nullptr) << key;
        const auto x = test::values_of(*left);
        const auto y = test::values_of(*right);
        double largest = 0;
        for (std::size_t i = 0; i < x.size(); ++i) {
            largest = std::max(largest, a.active[i] != 0 ? std::fabs(x[i] - y[i]) : 0.0);
        }
        // The reference compared text in 64 bits; what is read here is 32 bits wide.
        const double scale = std::fabs(*std::max_element(x.begin(), x.end(), [](double p, double q) {
            return std::isnan(p) || std::fabs(p) < std::fabs(q);
        }));
        EXPECT_LE(largest, value.get<double>() + 1.2e-7 * scale) << key;
        ++compared;
    }
    EXPECT_GT(compared, 0U);
}

bool has_text(const std::vector<Message>& messages, const std::string& text)
{
    return test::texts(messages).find(text) != std::string::npos;
}

ReadResult read(const std::filesystem::path& path)
{
    return GridFormats::for_reading(path).read(path, {});
}

#define NEED_FIELD_DATA(folder)                                                                                        \
    const auto folder = test::field_data();                                                                            \
    if (!folder)                                                                                                       \
    return

TEST(BinaryField, FormatsAreFoundByContent)
{
    NEED_FIELD_DATA(data);
    const std::vector<std::pair<std::string, std::string>> expected = {
        {"simpleb8/B8.EGRID", "egrid"},       {"simpleb8/B8.FEGRID", "egrid"},
        {"simpleb8/B8.GRID", "grid"},         {"simpleb8/B8.INIT", "init"},
        {"simpleb8/B8.FINIT", "init"},        {"reek/reek3_grid_withprops.bgrdecl", "bgrdecl"},
        {"tiny/sixcells2_hdr2.bgrdecl", "bgrdecl"}, {"norne/NORNE_ATW2013.INIT", "init"},
        {"simpleb8/simpleb8.grdecl", "grdecl"}};
    const test::TemporaryFolder folder;
    for (const auto& [file, format] : expected) {
        const auto copy = folder.write("file.bin", test::file_text(*data / file));
        EXPECT_EQ(GridFormats::for_reading(copy).name(), format) << file;
    }
}

TEST(BinaryField, EgridWithInit)
{
    NEED_FIELD_DATA(data);
    const std::vector<std::array<std::string, 3>> files = {
        {"simpleb8", "B8.EGRID", "B8.EGRID+B8.INIT"},
        {"simpleb8", "B8.FEGRID", "B8.FEGRID+B8.FINIT"},
        {"model1", "FAULTS_MODEL_1.EGRID", "FAULTS_MODEL_1.EGRID+INIT"},
        {"spe9", "SPE9_CP_SHORT.EGRID", "SPE9_CP_SHORT.EGRID+INIT"},
        {"reek", "REEK.EGRID", "REEK.EGRID"},
    };
    for (const auto& [set, file, key] : files) {
        SCOPED_TRACE(set + " " + file);
        const ReadResult result = read(*data / set / file);
        const json facts = facts_of(*data / set, key);
        if (file == "B8.FEGRID") {
            // The reference kept the text's decimals; 32 bits hold them to 6e-8.
            EXPECT_EQ(result.files.at(1).filename(), "B8.FINIT");
            EXPECT_EQ(result.model.active.size(), 24U);
            expect_properties(result.model, result.model.active, facts, 1.2e-7);
            expect_near(facts["bulk_volume"]["active_trilinear"], bulk_volume(result.model), "bulk volume", 2e-6);
            continue;
        }
        expect_model(result.model, facts);
        std::uint64_t bytes = 0;
        for (const auto& path : result.files) {
            bytes += std::filesystem::file_size(path);
        }
        EXPECT_EQ(result.bytes, bytes);
    }
}

TEST(BinaryField, MessagesCountWhatIsLeftOut)
{
    NEED_FIELD_DATA(data);
    EXPECT_TRUE(has_text(read(*data / "reek/REEK.EGRID").messages, "2874 connections of cells that are no neighbours"));
    EXPECT_TRUE(has_text(read(*data / "drogon/DROGON.EGRID").messages, "6209 connections"));
    const auto simple = read(*data / "simpleb8/B8.EGRID").messages;
    EXPECT_TRUE(has_text(simple, "3 connections"));
    EXPECT_TRUE(has_text(simple, "TAB (103252 DOUB)"));
    EXPECT_TRUE(has_text(simple, "TRANNNC (3 REAL)"));
}

TEST(BinaryField, UnitsOfProperties)
{
    NEED_FIELD_DATA(data);
    const auto metric = read(*data / "simpleb8/B8.EGRID").model;
    EXPECT_EQ(metric.find_property("PORV")->unit, "m3");
    EXPECT_EQ(metric.find_property("DX")->unit, "m");
    EXPECT_EQ(metric.find_property("PERMX")->unit, "mD");
    EXPECT_EQ(metric.find_property("TRANX")->unit, "cP.m3/day/bar");
    EXPECT_EQ(metric.find_property("PORO")->unit, "");
    const auto field = read(*data / "spe9/SPE9_CP_SHORT.EGRID").model;
    EXPECT_EQ(field.find_property("PORV")->unit, "rb");
    EXPECT_EQ(field.find_property("DX")->unit, "ft");
}

TEST(BinaryField, Drogon)
{
    NEED_FIELD_DATA(data);
    const ReadResult result = read(*data / "drogon/DROGON.EGRID");
    const json facts = facts_of(*data / "drogon", "DROGON.EGRID + include");
    expect_geometry(result.model, facts);
    const auto volumes = cell_volumes(result.model);
    const auto per_layer = static_cast<std::size_t>(result.model.size[0] * result.model.size[1]);
    for (std::size_t k = 0; k < facts["per_K_layer"].size(); ++k) {
        double bulk = 0;
        std::int64_t cells = 0;
        for (std::size_t i = k * per_layer; i < (k + 1) * per_layer; ++i) {
            bulk += result.model.active[i] != 0 ? volumes[i] : 0;
            cells += result.model.active[i];
        }
        expect_near(facts["per_K_layer"][k]["bulk"], bulk, "layer " + std::to_string(k + 1));
        EXPECT_EQ(cells, facts["active_per_K"][k].get<std::int64_t>());
    }
}

TEST(BinaryField, BinaryGrdecl)
{
    NEED_FIELD_DATA(data);
    const ReadResult reek = read(*data / "reek/reek3_grid_withprops.bgrdecl");
    expect_model(reek.model, facts_of(*data / "reek", "reek3_grid_withprops.bgrdecl"));
    EXPECT_TRUE(reek.model.find_property("Zone")->discrete());
    EXPECT_FALSE(reek.model.find_property("PORO")->discrete());
    const ReadResult six = read(*data / "tiny/sixcells2_hdr2.bgrdecl");
    expect_model(six.model, facts_of(*data / "tiny", "sixcells2_hdr2.bgrdecl"));
    const auto text = GrdeclFormat().read(*data / "tiny/sixcells2_hdr2.grdecl", {}).model;
    EXPECT_EQ(corner_difference(text, six.model), (std::array<double, 3>{}));
    EXPECT_EQ(text.active, six.model.active);
    EXPECT_EQ(text.frame.map_axes, six.model.frame.map_axes);
}

TEST(BinaryField, OldGrid)
{
    NEED_FIELD_DATA(data);
    const test::TemporaryFolder folder;
    const auto alone = folder.write("B8.GRID", test::file_text(*data / "simpleb8/B8.GRID"));
    const ReadResult result = read(alone);
    const json facts = facts_of(*data / "simpleb8", "B8.GRID");
    expect_geometry(result.model, facts);
    expect_layers(result.model, result.model.active, facts, cell_volumes(result.model));
    EXPECT_TRUE(result.model.properties.empty());
    EXPECT_TRUE(has_text(result.messages, "2 of 24 cells are not listed"));
    EXPECT_FALSE(has_text(result.messages, "straight pillar"));

    // With its INIT it is the EGRID.
    const GridModel old = read(*data / "simpleb8/B8.GRID").model;
    const GridModel egrid = read(*data / "simpleb8/B8.EGRID").model;
    EXPECT_EQ(old.active, egrid.active);
    const auto difference = corner_difference(old, egrid);
    for (std::size_t axis = 0; axis < 3; ++axis) {
        EXPECT_LE(difference[axis], 4.882812505e-05) << axis;
    }
    ASSERT_EQ(old.properties.size(), egrid.properties.size());
    for (std::size_t i = 0; i < old.properties.size(); ++i) {
        EXPECT_EQ(old.properties[i].name, egrid.properties[i].name);
        if (old.properties[i].discrete()) {
            EXPECT_EQ(old.properties[i].values, egrid.properties[i].values);
        }
    }
    expect_properties(old, old.active, facts_of(*data / "simpleb8", "B8.EGRID+B8.INIT"));
}

TEST(BinaryField, SameModelInSeveralFormats)
{
    NEED_FIELD_DATA(data);
    const GridModel egrid = read(*data / "simpleb8/B8.EGRID").model;
    const GridModel text = read(*data / "simpleb8/B8.FEGRID").model;
    const GridModel grdecl = GrdeclFormat().read(*data / "simpleb8/simpleb8.grdecl", {}).model;
    const json simple = facts_of(*data / "simpleb8", "")["cross_check"];
    {
        SCOPED_TRACE("EGRID and FEGRID");
        expect_same_model(egrid, text, simple["EGRID vs FEGRID"]);
    }
    {
        SCOPED_TRACE("EGRID and GRDECL");
        expect_same_model(egrid, grdecl, simple["EGRID vs GRDECL"]);
    }
    for (const auto& [set, deck, grid] :
         {std::array<std::string, 3>{"model1", "FAULTS_MODEL_1.DATA", "FAULTS_MODEL_1.EGRID"},
          std::array<std::string, 3>{"spe9", "SPE9_CP_SHORT.DATA", "SPE9_CP_SHORT.EGRID"}}) {
        SCOPED_TRACE(set);
        expect_same_model(GrdeclFormat().read(*data / set / deck, {}).model, read(*data / set / grid).model,
                          facts_of(*data / set, "")["cross_check"]["deck vs EGRID/INIT"]);
    }
}

TEST(BinaryField, InitAlone)
{
    NEED_FIELD_DATA(data);
    // No grid beside it: which cells are active follows from the pore volume.
    ReadOptions options;
    options.properties_only = true;
    options.size = GridSize{46, 112, 22};
    const auto path = *data / "norne/NORNE_ATW2013.INIT";
    const ReadResult result = InitFormat().read(path, options);
    const json facts = facts_of(*data / "norne", "NORNE_ATW2013.INIT");
    std::vector<std::uint8_t> active;
    for (const double volume : test::values_of(*result.model.find_property("PORV"))) {
        active.push_back(static_cast<std::uint8_t>(volume > 0));
    }
    EXPECT_EQ(std::count(active.begin(), active.end(), 1), facts["active"].get<std::int64_t>());
    expect_properties(result.model, active, facts);
    expect_layers(result.model, active, facts, {});
    EXPECT_TRUE(result.model.active.empty());
    EXPECT_TRUE(result.model.zcorn.empty());
    EXPECT_TRUE(std::isnan(test::values_of(*result.model.find_property("PORO")).front()));
    EXPECT_EQ(result.model.find_property("SATNUM")->no_data, -999);

    // The deck's flags are more than the simulator kept.
    ReadOptions deck_options;
    deck_options.properties_only = true;
    deck_options.size = options.size;
    const auto deck_flags
        = GrdeclFormat().read(*data / "norne/INCLUDE/GRID/ACTNUM_0704.prop", deck_options).model.active;
    ASSERT_EQ(std::count(deck_flags.begin(), deck_flags.end(), 1), 44927);
    options.active = deck_flags;
    const ReadResult again = InitFormat().read(path, options);
    EXPECT_EQ(again.model.find_property("PERMX")->size(), result.model.find_property("PERMX")->size());
    expect_properties(again.model, active, facts);
    EXPECT_TRUE(has_text(again.messages, "states 44431 active cells, the grid has 44927"));

    options.active = {};
    options.size = GridSize{46, 112, 21};
    EXPECT_NE(
        test::failure(InitFormat(), path, options).find("states a grid of 46 x 112 x 22 cells, expected 46 x 112 x 21"),
        std::string::npos);
    EXPECT_NE(test::failure(InitFormat(), path).find("there is no EGRID of the same name"), std::string::npos);
}

TEST(BinaryField, InitBringsItsGrid)
{
    NEED_FIELD_DATA(data);
    const ReadResult by_init = read(*data / "simpleb8/B8.INIT");
    EXPECT_EQ(test::difference(by_init.model, read(*data / "simpleb8/B8.EGRID").model), "");
    const ReadResult by_text = read(*data / "simpleb8/B8.FINIT");
    EXPECT_EQ(test::difference(by_text.model, read(*data / "simpleb8/B8.FEGRID").model), "");
    ASSERT_EQ(by_text.files.size(), 2U);
    EXPECT_EQ(by_text.files[1].filename(), "B8.FINIT");
}

TEST(BinaryField, PropertiesOnly)
{
    NEED_FIELD_DATA(data);
    ReadOptions options;
    options.properties_only = true;
    options.size = GridSize{4, 2, 3};
    const auto whole = read(*data / "simpleb8/B8.EGRID").model;
    for (const std::string file : {"B8.EGRID", "B8.GRID", "B8.INIT"}) {
        const auto part
            = GridFormats::for_reading(*data / "simpleb8" / file).read(*data / "simpleb8" / file, options).model;
        EXPECT_TRUE(part.zcorn.empty()) << file;
        EXPECT_TRUE(part.coord.empty()) << file;
        GridModel joined = whole;
        joined.properties = part.properties;
        EXPECT_EQ(test::difference(whole, joined), "") << file;
    }
    options.size = GridSize{4, 3, 2};
    EXPECT_NE(test::failure(EgridFormat(), *data / "simpleb8/B8.EGRID", options).find("expected 4 x 3 x 2"),
              std::string::npos);
    EXPECT_NE(test::failure(OldGridFormat(), *data / "simpleb8/B8.GRID", options).find("expected 4 x 3 x 2"),
              std::string::npos);
    EXPECT_NE(test::failure(BinaryGrdeclFormat(), *data / "reek/reek3_grid_withprops.bgrdecl", options)
                  .find("expected 4 x 3 x 2"),
              std::string::npos);
}

} // namespace
} // namespace lodex
