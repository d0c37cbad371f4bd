#include "GridTestTools.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <sstream>
#include <unistd.h>

namespace lodex::test {

TemporaryFolder::TemporaryFolder()
{
    static std::atomic<int> counter{0};
    path_ = std::filesystem::temp_directory_path()
        / ("lodex-gridio-" + std::to_string(::getpid()) + "-" + std::to_string(counter.fetch_add(1)));
    std::filesystem::create_directories(path_);
}

TemporaryFolder::~TemporaryFolder()
{
    std::error_code ignored;
    std::filesystem::permissions(path_, std::filesystem::perms::owner_all, ignored);
    std::filesystem::remove_all(path_, ignored);
}

std::filesystem::path TemporaryFolder::write(std::string_view name, std::string_view text) const
{
    const auto path = path_ / name;
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << text;
    return path;
}

std::vector<std::string> TemporaryFolder::names() const
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(path_)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::string file_text(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

std::optional<std::filesystem::path> field_data()
{
    const char* const variable = std::getenv("LODEX_FIELD_DATA");
    const std::filesystem::path folder = variable != nullptr
        ? std::filesystem::path(variable)
        : std::filesystem::path(LODEX_SOURCE_DIR).parent_path() / "shared" / "data";
    if (std::filesystem::is_directory(folder)) {
        return folder;
    }
    static const bool said = [&folder] {
        std::cout << "field models are not at " << folder << " (LODEX_FIELD_DATA): nothing checked on them\n";
        return true;
    }();
    return said ? std::nullopt : std::optional(folder);
}

std::filesystem::path test_data()
{
    return std::filesystem::path(LODEX_SOURCE_DIR) / "tests" / "data";
}

namespace {

/// Not ==: NaN is the same as NaN here, and -0 is not 0.
template <class T> bool same_bits(const std::vector<T>& a, const std::vector<T>& b)
{
    return a.size() == b.size() && (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0);
}

bool same_bits(const RealArray& a, const RealArray& b)
{
    if (a.is_double() != b.is_double() || a.size() != b.size() || a.empty()) {
        return a.is_double() == b.is_double() && a.empty() && b.empty();
    }
    return a.visit([&b](auto left) {
        return b.visit([left](auto right) { return std::memcmp(left.data(), right.data(), left.size_bytes()) == 0; });
    });
}

std::string property_difference(const PropertyData& a, const PropertyData& b)
{
    const std::string name = "property " + a.name + ": ";
    if (a.name != b.name || a.unit != b.unit || a.on_points != b.on_points || a.code_names != b.code_names) {
        return name + "name, unit, place or code names";
    }
    if (a.no_data != b.no_data) {
        return name + "no-data value";
    }
    if (a.values.index() != b.values.index()) {
        return name + "stored as type " + std::to_string(a.values.index()) + " and " + std::to_string(b.values.index());
    }
    const bool same = std::visit(
        [&b](const auto& left) { return same_bits(left, std::get<std::decay_t<decltype(left)>>(b.values)); }, a.values);
    return same ? "" : name + "values";
}

} // namespace

std::string difference(const GridModel& a, const GridModel& b)
{
    if (a.size != b.size) {
        return "size";
    }
    if (!same_bits(a.coord, b.coord)) {
        return "coord";
    }
    if (!same_bits(a.zcorn, b.zcorn)) {
        return "zcorn";
    }
    if (a.active != b.active) {
        return "active";
    }
    if (a.properties.size() != b.properties.size()) {
        return "number of properties";
    }
    for (std::size_t i = 0; i < a.properties.size(); ++i) {
        if (const auto text = property_difference(a.properties[i], b.properties[i]); !text.empty()) {
            return text;
        }
    }
    if (a.regions.size() != b.regions.size()) {
        return "number of regions";
    }
    for (std::size_t i = 0; i < a.regions.size(); ++i) {
        const auto& left = a.regions[i];
        const auto& right = b.regions[i];
        if (left.name != right.name || left.flags != right.flags || left.model != right.model) {
            return "region " + left.name;
        }
    }
    if (a.layers.size() != b.layers.size()) {
        return "number of layers";
    }
    for (std::size_t i = 0; i < a.layers.size(); ++i) {
        const auto& left = a.layers[i];
        const auto& right = b.layers[i];
        if (left.unit != right.unit || left.nb_k_cells != right.nb_k_cells || left.style != right.style
            || std::bit_cast<std::uint32_t>(left.cell_thickness) != std::bit_cast<std::uint32_t>(right.cell_thickness)) {
            return "layer " + left.unit;
        }
    }
    if (a.faults.size() != b.faults.size()) {
        return "number of faults";
    }
    for (std::size_t i = 0; i < a.faults.size(); ++i) {
        const auto& left = a.faults[i];
        const auto& right = b.faults[i];
        if (left.name != right.name || left.i != right.i || left.j != right.j || left.k != right.k
            || left.face != right.face) {
            return "fault segment " + std::to_string(i) + ' ' + left.name;
        }
    }
    if (a.kept.size() != b.kept.size()) {
        return "number of kept keywords: " + std::to_string(a.kept.size()) + " and " + std::to_string(b.kept.size());
    }
    for (std::size_t i = 0; i < a.kept.size(); ++i) {
        const auto& left = a.kept[i];
        const auto& right = b.kept[i];
        if (left.name != right.name || left.text != right.text) {
            return "kept keyword " + left.name + " <" + left.text + "> and <" + right.text + ">";
        }
        if (left.file != right.file || left.line != right.line) {
            return "place of kept keyword " + left.name;
        }
    }
    if (a.frame.map_axes != b.frame.map_axes || a.frame.map_units != b.frame.map_units
        || a.frame.grid_units != b.frame.grid_units || a.frame.grid_units_map != b.frame.grid_units_map) {
        return "frame";
    }
    return "";
}

std::array<std::array<double, 3>, 8> cell_corners(const GridModel& model, std::int64_t i, std::int64_t j, std::int64_t k)
{
    std::array<std::array<double, 3>, 8> corners{};
    const auto [ni, nj, nk] = model.size;
    for (int corner = 0; corner < 8; ++corner) {
        const int a = corner & 1;
        const int b = corner >> 1 & 1;
        const int c = corner >> 2;
        const double depth =
            model.zcorn[static_cast<std::size_t>((2 * k + c) * 4 * nj * ni + (2 * j + b) * 2 * ni + 2 * i + a)];
        const auto pillar = 6 * static_cast<std::size_t>(i + a + (ni + 1) * (j + b));
        const double top = model.coord[pillar + 2];
        const double bottom = model.coord[pillar + 5];
        const double part = bottom == top ? 0 : (depth - top) / (bottom - top);
        for (std::size_t axis = 0; axis < 2; ++axis) {
            const double start = model.coord[pillar + axis];
            corners[static_cast<std::size_t>(corner)][axis] = start + part * (model.coord[pillar + 3 + axis] - start);
        }
        corners[static_cast<std::size_t>(corner)][2] = depth;
    }
    return corners;
}

double trilinear_volume(const std::array<std::array<double, 3>, 8>& corners)
{
    const double offset = 0.5 / std::sqrt(3.0);
    double sum = 0;
    for (int point = 0; point < 8; ++point) {
        const std::array<double, 3> u = {0.5 + (point & 1 ? offset : -offset), 0.5 + (point & 2 ? offset : -offset),
                                         0.5 + (point & 4 ? offset : -offset)};
        std::array<std::array<double, 3>, 3> jacobian{};
        for (int corner = 0; corner < 8; ++corner) {
            for (int axis = 0; axis < 3; ++axis) {
                double weight = 1;
                for (int other = 0; other < 3; ++other) {
                    const bool high = (corner >> other & 1) != 0;
                    const double part = u[static_cast<std::size_t>(other)];
                    weight *= other == axis ? (high ? 1 : -1) : (high ? part : 1 - part);
                }
                for (std::size_t component = 0; component < 3; ++component) {
                    // Relative to one corner, so that map coordinates do not cost digits.
                    jacobian[static_cast<std::size_t>(axis)][component] += weight
                        * (corners[static_cast<std::size_t>(corner)][component] - corners[0][component]);
                }
            }
        }
        const auto& [p, q, r] = jacobian;
        sum += p[0] * (q[1] * r[2] - q[2] * r[1]) - p[1] * (q[0] * r[2] - q[2] * r[0])
            + p[2] * (q[0] * r[1] - q[1] * r[0]);
    }
    return sum / 8;
}

GridModel full_model(std::int64_t ni, std::int64_t nj, std::int64_t nk)
{
    GridModel model;
    model.size = {ni, nj, nk};
    const auto cells = static_cast<std::size_t>(model.cells());
    std::vector<double> coord;
    for (std::int64_t j = 0; j <= nj; ++j) {
        for (std::int64_t i = 0; i <= ni; ++i) {
            const double x = 461234.567 + 100.25 * static_cast<double>(i);
            const double y = 5932100.125 + 99.75 * static_cast<double>(j);
            coord.insert(coord.end(), {x, y, 1500.0, x + 1.0 / 3, y - 2.5, 2500.0});
        }
    }
    model.coord = coord;
    std::vector<float> zcorn(8 * cells);
    for (std::size_t i = 0; i < zcorn.size(); ++i) {
        const std::size_t layer = i / (4 * static_cast<std::size_t>(ni * nj));
        zcorn[i] = 1600.0F + 12.625F * static_cast<float>((layer + 1) / 2) + 0.001F * static_cast<float>(i % 97);
    }
    model.zcorn = zcorn;
    model.active.assign(cells, 1);
    for (std::size_t i = 0; i < cells; i += 5) {
        model.active[i] = 0;
    }

    const auto add = [&model](std::string name, auto values) -> PropertyData& {
        PropertyData property;
        property.name = std::move(name);
        property.values = std::move(values);
        model.properties.push_back(std::move(property));
        return model.properties.back();
    };
    std::vector<float> poro(cells);
    std::vector<double> perm(cells);
    std::vector<double> whole(cells);
    std::vector<std::int32_t> facies(cells);
    std::vector<float> numbers(cells);
    for (std::size_t i = 0; i < cells; ++i) {
        poro[i] = i % 7 == 3 ? std::numeric_limits<float>::quiet_NaN() : 0.05F + 0.3F * static_cast<float>(i % 17) / 17;
        perm[i] = 1000.0 / static_cast<double>(i % 41 + 3);
        whole[i] = static_cast<double>(i);
        facies[i] = static_cast<std::int32_t>(i % 4);
        numbers[i] = static_cast<float>(i % 3);
    }
    add("PORO", poro).unit = "m3/m3";
    add("PERMX", perm).unit = "mD";
    add("WHOLE64", whole);
    PropertyData& rock = add("Rock type \"A\\B\"", facies);
    rock.no_data = -99;
    rock.code_names = {{0, "Sand"}, {1, "Shaly \"sand\""}, {3, "Grès"}};
    add("FIPNUM", facies);
    add("SATNUM", numbers);
    add("COORD", poro).no_data = -999.25;
    add("a_very_long_property_name", perm);
    add("permx", numbers);
    add("ALONGERNAME", numbers);
    facies.back() = std::numeric_limits<std::int32_t>::min();
    add("ZONE", facies).no_data = static_cast<double>(std::numeric_limits<std::int32_t>::min());
    PropertyData& points =
        add("NODES", std::vector<float>(static_cast<std::size_t>((ni + 1) * (nj + 1) * (nk + 1)), 1.5F));
    points.on_points = true;
    std::vector<float> odd(cells, 0.0F);
    const std::array<float, 8> specials = {-0.0F, 1e-45F, 3.4028235e38F, -1.17549435e-38F, 16777217.0F, 0.1F, 1e10F,
                                           9.999999e-5F};
    for (std::size_t i = 0; i < cells; ++i) {
        odd[i] = specials[i % specials.size()];
    }
    add("ODD", odd);

    RegionData region{"Upper \"reservoir\"", std::vector<std::uint8_t>(cells, 0), true};
    RegionData everything{"all", std::vector<std::uint8_t>(cells, 1), false};
    for (std::size_t i = cells / 3; i < cells / 2 + 1; ++i) {
        region.flags[i] = 1;
    }
    model.regions = {region, everything};
    if (nk > 1) {
        model.layers = {{"Top unit", 1, 12.625F, Lodex::LayerInfo::ParallelToTop},
                        {"Base", nk - 1, 1.0F / 3, Lodex::LayerInfo::ParallelToBase}};
    } else {
        model.layers = {{"Only", 1, 0.1F, Lodex::LayerInfo::Proportional}};
    }
    model.faults = {{"F1", {0, 0}, {0, nj - 1}, {0, nk - 1}, "I"}, {"F 2", {0, ni - 1}, {0, 0}, {0, 0}, "Y-"}};
    model.kept = {{"NOECHO", "", "in.grdecl", 3},
                  {"GDORIENT", "\nINC INC INC DOWN RIGHT /", "in.grdecl", 7},
                  {"COPY", "\n 'PERMX' 'PERMY' /\r\n 'PERMX' 'PERMZ' /  -- all\n/", "a b/c.inc", 12},
                  {"RUNSPEC", "", "in.grdecl", 20},
                  {"WELLDIMS", "\n\t2 20 1 2 /", "in.grdecl", 21},
                  {"GRID", "", "in.grdecl", 25},
                  {"MINPV", " 500 /", "in.grdecl", 26},
                  {"PROPS", "", "in.grdecl", 30},
                  {"PVTW", "\n 1 2 3 \"quoted\" back\\slash / tail \x80\n", "in.grdecl", 31}};
    model.frame.map_axes = {456510.625, 5938935.5, 456510.625, 5926880.172, 467216.753, 5926880.172};
    model.frame.map_units = "METRES";
    model.frame.grid_units = "METRES";
    model.frame.grid_units_map = true;
    return model;
}

std::vector<double> values_of(const PropertyData& property)
{
    return std::visit([](const auto& v) { return std::vector<double>(v.begin(), v.end()); }, property.values);
}

std::vector<double> values_of(const RealArray& array)
{
    return array.visit([](auto v) { return std::vector<double>(v.begin(), v.end()); });
}

} // namespace lodex::test
