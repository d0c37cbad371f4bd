#include <lodex/gridio/VtuFormat.h>

#include <lodex/utils/AtomicFile.h>
#include <lodex/gridio/MessageLog.h>
#include <lodex/volumes/model/CellGeometry.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <functional>
#include <limits>
#include <set>

namespace lodex {

namespace {

const GridFormatRegistrar<VtuFormat> registrar;

constexpr std::array<std::string_view, 1> file_endings = {".vtu"};
constexpr std::uint8_t hexahedron = 12; ///< VTK_HEXAHEDRON
constexpr std::int64_t corners = 8;

std::string xml_text(std::string_view text)
{
    std::string result;
    for (const char c : to_utf8(text)) {
        switch (c) {
        case '&':
            result += "&amp;";
            break;
        case '<':
            result += "&lt;";
            break;
        case '>':
            result += "&gt;";
            break;
        case '"':
            result += "&quot;";
            break;
        default:
            // Control characters have no place in XML.
            result += static_cast<unsigned char>(c) < 0x20 || c == 0x7F ? '_' : c;
        }
    }
    return result;
}

template <class T> constexpr std::string_view vtk_type()
{
    if constexpr (std::is_same_v<T, float>) {
        return "Float32";
    } else if constexpr (std::is_same_v<T, double>) {
        return "Float64";
    } else if constexpr (std::is_same_v<T, std::int32_t>) {
        return "Int32";
    } else if constexpr (std::is_same_v<T, std::int64_t>) {
        return "Int64";
    } else {
        return "UInt8";
    }
}

/// One array of the file: where it is declared and what brings its bytes.
struct Array {
    std::string name;
    std::string_view type;
    int components = 1;
    std::uint64_t bytes = 0;
    std::function<void()> write;
};

/// The points on the pillars at one level between layers.
struct Level {
    std::vector<std::int64_t> first;                  ///< number of the first point of each pillar
    std::vector<std::array<std::uint8_t, 8>> slots;   ///< for the corner of each of the eight cells round a node
};

class Writer {
public:
    Writer(const GridModel& model, const std::filesystem::path& path, const WriteOptions& options)
        : model_(model), path_(path), options_(options), file_(path)
    {
    }

    WriteResult run();

private:
    [[noreturn]] void fail(std::string reason) const { throw FileError(path_.string(), 0, std::move(reason)); }
    void inform(std::string text)
    {
        log_.add("what the format cannot hold", {Message::Level::Info, to_utf8(path_.string()), 0, std::move(text)});
    }
    void tick(std::int64_t work)
    {
        done_ += static_cast<double>(work);
        if (options_.progress && !options_.progress(std::min(1.0, done_ / total_))) {
            throw Cancelled{};
        }
    }

    void check();
    void report();
    /// Depths of the corners that active cells have at a node, and for each of the eight cells round it which of them
    /// is its own. Column east + 2 * north of the cell below the node, plus 4 for the one above.
    int gather(std::int64_t i, std::int64_t j, std::int64_t level, std::array<double, 8>& depths,
               std::array<std::uint8_t, 8>& slots) const;
    void count_points();
    void write_points();
    void number_level(std::int64_t level, Level& numbers) const;
    template <class Id> void write_connectivity();
    template <class T> void put(std::span<const T> values)
    {
        file_.write({reinterpret_cast<const char*>(values.data()), values.size_bytes()});
    }
    /// value(cell index, i, j, k) for the active cells.
    template <class T, class Value> void write_cells(const Value& value);
    template <class T, class Value> void add_cells(std::string_view name, Value value);
    void add_property(const PropertyData& property);
    void add_point_property(const PropertyData& property);
    std::string free_name(std::set<std::string>& names, std::string_view wanted) const;
    void add_codes(const std::string& name, const std::map<std::int32_t, std::string>& codes);
    void declare(const std::vector<Array>& arrays, std::uint64_t& offset);
    void text(std::string_view line) { file_.write(line); }

    const GridModel& model_;
    const std::filesystem::path& path_;
    const WriteOptions& options_;
    AtomicFile file_;
    MessageLog log_;
    double done_ = 0;
    double total_ = 1;
    std::int64_t cells_ = 0;
    std::int64_t points_ = 0;
    std::vector<std::int64_t> level_points_; ///< points at each level
    std::vector<Array> cell_data_, point_data_, geometry_;
    std::set<std::string> cell_names_, point_names_;
    std::vector<std::pair<std::string, std::vector<std::string>>> field_data_;
};

void Writer::check()
{
    check_arrays(model_);
    if (model_.coord.empty() || model_.zcorn.empty()) {
        fail("the grid has no geometry");
    }
    const auto finite = [this](const RealArray& values, const char* what) {
        values.visit([&](auto span) {
            const auto bad = std::find_if(span.begin(), span.end(), [](auto value) { return !std::isfinite(value); });
            if (bad != span.end()) {
                fail(std::string(what) + " has a value that is not finite at position "
                     + std::to_string(bad - span.begin() + 1));
            }
        });
    };
    finite(model_.coord, "coord");
    finite(model_.zcorn, "zcorn");
}

void Writer::report()
{
    const std::int64_t inactive = model_.cells() - cells_;
    if (inactive > 0) {
        inform(std::to_string(inactive) + " inactive cells are left out");
    }
    if (!model_.faults.empty()) {
        inform("the names of faults are left out");
    }
    if (!model_.kept.empty()) {
        inform(std::to_string(model_.kept.size()) + " kept keywords are left out");
    }
    if (model_.frame.map_axes) {
        inform("coordinates are those of the grid; the map axes are left out");
    }
}

int Writer::gather(std::int64_t i, std::int64_t j, std::int64_t level, std::array<double, 8>& depths,
                   std::array<std::uint8_t, 8>& slots) const
{
    const auto [ni, nj, nk] = model_.size;
    int count = 0;
    for (int above = 0; above < 2; ++above) {
        const std::int64_t k = level - above;
        if (k < 0 || k >= nk) {
            continue;
        }
        for (int column = 0; column < 4; ++column) {
            const int east = column & 1;
            const int north = column >> 1;
            const std::int64_t ci = i - 1 + east;
            const std::int64_t cj = j - 1 + north;
            if (ci < 0 || ci >= ni || cj < 0 || cj >= nj
                || model_.active[static_cast<std::size_t>(model_.cell_index(ci, cj, k))] == 0) {
                continue;
            }
            const auto at = static_cast<std::size_t>((2 * k + above) * 4 * nj * ni + (2 * cj + 1 - north) * 2 * ni
                                                     + 2 * ci + 1 - east);
            const double depth = model_.zcorn[at];
            const auto end = depths.begin() + count;
            const auto found = std::find(depths.begin(), end, depth);
            slots[static_cast<std::size_t>(column + 4 * above)] = static_cast<std::uint8_t>(found - depths.begin());
            if (found == end) {
                depths[static_cast<std::size_t>(count++)] = depth;
            }
        }
    }
    return count;
}

void Writer::count_points()
{
    const auto [ni, nj, nk] = model_.size;
    std::array<double, 8> depths{};
    std::array<std::uint8_t, 8> slots{};
    for (std::int64_t level = 0; level <= nk; ++level) {
        std::int64_t count = 0;
        for (std::int64_t j = 0; j <= nj; ++j) {
            for (std::int64_t i = 0; i <= ni; ++i) {
                count += gather(i, j, level, depths, slots);
            }
            tick(ni);
        }
        level_points_.push_back(count);
        points_ += count;
    }
}

void Writer::write_points()
{
    const auto [ni, nj, nk] = model_.size;
    std::array<double, 8> depths{};
    std::array<std::uint8_t, 8> slots{};
    std::vector<double> row;
    for (std::int64_t level = 0; level <= nk; ++level) {
        for (std::int64_t j = 0; j <= nj; ++j) {
            row.clear();
            for (std::int64_t i = 0; i <= ni; ++i) {
                const int count = gather(i, j, level, depths, slots);
                if (count == 0) {
                    continue;
                }
                std::array<double, 6> pillar{};
                for (std::size_t n = 0; n < pillar.size(); ++n) {
                    pillar[n] = model_.coord[static_cast<std::size_t>(6 * (i + (ni + 1) * j)) + n];
                }
                for (int n = 0; n < count; ++n) {
                    const Point3 point = pillar_point(pillar, depths[static_cast<std::size_t>(n)]);
                    row.insert(row.end(), {point[0], point[1], -point[2]});
                }
            }
            put(std::span<const double>(row));
            tick(ni);
        }
    }
}

void Writer::number_level(std::int64_t level, Level& numbers) const
{
    const auto [ni, nj, nk] = model_.size;
    numbers.first.resize(static_cast<std::size_t>(model_.pillars()));
    numbers.slots.resize(numbers.first.size());
    std::int64_t next = 0;
    for (std::int64_t l = 0; l < level; ++l) {
        next += level_points_[static_cast<std::size_t>(l)];
    }
    std::array<double, 8> depths{};
    std::size_t pillar = 0;
    for (std::int64_t j = 0; j <= nj; ++j) {
        for (std::int64_t i = 0; i <= ni; ++i, ++pillar) {
            numbers.first[pillar] = next;
            next += gather(i, j, level, depths, numbers.slots[pillar]);
        }
    }
}

template <class Id> void Writer::write_connectivity()
{
    const auto [ni, nj, nk] = model_.size;
    // Corner a + 2b + 4c of the cell for each of the hexahedron's points: the deeper side first, seen from above
    // counterclockwise.
    constexpr std::array<int, 8> straight = {4, 5, 7, 6, 0, 1, 3, 2};
    constexpr std::array<int, 8> mirrored = {4, 6, 7, 5, 0, 2, 3, 1};
    const auto& order = handedness(model_) < 0 ? mirrored : straight;
    Level top, bottom;
    number_level(0, top);
    std::vector<Id> row;
    for (std::int64_t k = 0; k < nk; ++k) {
        number_level(k + 1, bottom);
        for (std::int64_t j = 0; j < nj; ++j) {
            row.clear();
            for (std::int64_t i = 0; i < ni; ++i) {
                if (model_.active[static_cast<std::size_t>(model_.cell_index(i, j, k))] == 0) {
                    continue;
                }
                for (const int corner : order) {
                    const int a = corner & 1;
                    const int b = corner >> 1 & 1;
                    const int c = corner >> 2;
                    const Level& level = c == 0 ? top : bottom;
                    const auto pillar = static_cast<std::size_t>(i + a + (ni + 1) * (j + b));
                    // Seen from the node the cell is east when it is its west side that stands there.
                    const auto place = static_cast<std::size_t>((1 - a) + 2 * (1 - b) + 4 * c);
                    row.push_back(static_cast<Id>(level.first[pillar] + level.slots[pillar][place]));
                }
            }
            put(std::span<const Id>(row));
            tick(ni);
        }
        std::swap(top, bottom);
    }
}

template <class T, class Value> void Writer::write_cells(const Value& value)
{
    const auto [ni, nj, nk] = model_.size;
    std::vector<T> row;
    std::size_t cell = 0;
    for (std::int64_t k = 0; k < nk; ++k) {
        for (std::int64_t j = 0; j < nj; ++j) {
            row.clear();
            for (std::int64_t i = 0; i < ni; ++i, ++cell) {
                if (model_.active[cell] != 0) {
                    row.push_back(value(cell, i, j, k));
                }
            }
            put(std::span<const T>(row));
            tick(ni);
        }
    }
}

template <class T, class Value> void Writer::add_cells(std::string_view name, Value value)
{
    cell_data_.push_back({std::string(name), vtk_type<T>(), 1, static_cast<std::uint64_t>(cells_) * sizeof(T),
                          [this, value] { write_cells<T>(value); }});
}

std::string Writer::free_name(std::set<std::string>& names, std::string_view wanted) const
{
    const std::string stem = wanted.empty() ? "property" : std::string(wanted);
    std::string name = stem;
    for (int number = 2; !names.insert(name).second; ++number) {
        name = stem + '_' + std::to_string(number);
    }
    return name;
}

void Writer::add_codes(const std::string& name, const std::map<std::int32_t, std::string>& codes)
{
    std::vector<std::string> entries;
    for (const auto& [code, text] : codes) {
        entries.push_back(std::to_string(code) + ' ' + to_utf8(text));
    }
    if (!entries.empty()) {
        field_data_.emplace_back(name + " codes", std::move(entries));
    }
}

/// The value to write: undefined real numbers are NaN, which viewers leave blank.
template <class T> T shown_value(T value, const std::optional<double>& no_data)
{
    if constexpr (std::is_floating_point_v<T>) {
        if (no_data && static_cast<double>(value) == *no_data) {
            return std::numeric_limits<T>::quiet_NaN();
        }
    }
    return value;
}

void Writer::add_property(const PropertyData& property)
{
    const std::string name = free_name(cell_names_, property.name);
    if (name != property.name) {
        inform("property \"" + to_utf8(property.name) + "\" is written as \"" + to_utf8(name) + '"');
    }
    std::visit(
        [&](const auto& values) {
            using T = typename std::decay_t<decltype(values)>::value_type;
            add_cells<T>(name, [data = values.data(), no_data = property.no_data](std::size_t cell, auto, auto, auto) {
                return shown_value(data[cell], no_data);
            });
        },
        property.values);
    add_codes(name, property.code_names);
}

void Writer::add_point_property(const PropertyData& property)
{
    const std::string name = free_name(point_names_, property.name);
    std::visit(
        [&](const auto& values) {
            using T = typename std::decay_t<decltype(values)>::value_type;
            const auto write = [this, data = values.data(), no_data = property.no_data] {
                const auto [ni, nj, nk] = model_.size;
                std::array<double, 8> depths{};
                std::array<std::uint8_t, 8> slots{};
                std::vector<T> row;
                std::size_t node = 0;
                for (std::int64_t level = 0; level <= nk; ++level) {
                    for (std::int64_t j = 0; j <= nj; ++j) {
                        row.clear();
                        for (std::int64_t i = 0; i <= ni; ++i, ++node) {
                            const int count = gather(i, j, level, depths, slots);
                            row.insert(row.end(), static_cast<std::size_t>(count), shown_value(data[node], no_data));
                        }
                        put(std::span<const T>(row));
                        tick(ni);
                    }
                }
            };
            point_data_.push_back({name, vtk_type<T>(), 1, static_cast<std::uint64_t>(points_) * sizeof(T), write});
        },
        property.values);
    add_codes(name, property.code_names);
}

void Writer::declare(const std::vector<Array>& arrays, std::uint64_t& offset)
{
    for (const Array& array : arrays) {
        text("        <DataArray type=\"" + std::string(array.type) + "\" Name=\"" + xml_text(array.name) + '"');
        if (array.components > 1) {
            text(" NumberOfComponents=\"" + std::to_string(array.components) + '"');
        }
        text(" format=\"appended\" offset=\"" + std::to_string(offset) + "\"/>\n");
        offset += sizeof(std::uint64_t) + array.bytes;
    }
}

WriteResult Writer::run()
{
    check();
    const auto [ni, nj, nk] = model_.size;
    cells_ = std::count_if(model_.active.begin(), model_.active.end(), [](std::uint8_t flag) { return flag != 0; });
    constexpr double passes_of_geometry = 6;
    total_ = static_cast<double>(model_.cells())
        * (passes_of_geometry + static_cast<double>(model_.properties.size() + model_.regions.size()));
    count_points();

    add_cells<std::int32_t>(free_name(cell_names_, "I"),
                            [](std::size_t, std::int64_t i, auto, auto) { return static_cast<std::int32_t>(i + 1); });
    add_cells<std::int32_t>(free_name(cell_names_, "J"),
                            [](std::size_t, auto, std::int64_t j, auto) { return static_cast<std::int32_t>(j + 1); });
    add_cells<std::int32_t>(free_name(cell_names_, "K"),
                            [](std::size_t, auto, auto, std::int64_t k) { return static_cast<std::int32_t>(k + 1); });
    if (!model_.layers.empty()) {
        std::vector<std::int32_t> unit_of;
        std::map<std::int32_t, std::string> names;
        for (const LayerData& layer : model_.layers) {
            const auto unit = static_cast<std::int32_t>(names.size() + 1);
            names[unit] = layer.unit;
            unit_of.insert(unit_of.end(), static_cast<std::size_t>(std::max<std::int64_t>(layer.nb_k_cells, 0)), unit);
        }
        unit_of.resize(static_cast<std::size_t>(nk), 0);
        const std::string name = free_name(cell_names_, "Unit");
        add_codes(name, names);
        add_cells<std::int32_t>(name, [unit_of = std::move(unit_of)](std::size_t, auto, auto, std::int64_t k) {
            return unit_of[static_cast<std::size_t>(k)];
        });
    }
    for (const PropertyData& property : model_.properties) {
        if (property.on_points) {
            add_point_property(property);
        } else {
            add_property(property);
        }
    }
    for (const RegionData& region : model_.regions) {
        add_cells<std::uint8_t>(free_name(cell_names_, region.name),
                                [data = region.flags.data()](std::size_t cell, auto, auto, auto) {
                                    return static_cast<std::uint8_t>(data[cell] != 0 ? 1 : 0);
                                });
    }
    const Array points{"Points", vtk_type<double>(), 3, static_cast<std::uint64_t>(points_) * 3 * sizeof(double),
                       [this] { write_points(); }};
    // 32 bits for as long as they do: half the file.
    const bool small = std::max(points_, corners * cells_) <= std::numeric_limits<std::int32_t>::max();
    const std::uint64_t id_bytes = small ? sizeof(std::int32_t) : sizeof(std::int64_t);
    const std::string_view id_type = small ? vtk_type<std::int32_t>() : vtk_type<std::int64_t>();
    const auto cell_count = static_cast<std::uint64_t>(cells_);
    const auto write_offsets = [this](auto kind) {
        using Id = decltype(kind);
        Id end = 0;
        write_cells<Id>([&end](std::size_t, auto, auto, auto) { return end = static_cast<Id>(end + corners); });
    };
    geometry_ = {{"connectivity", id_type, 1, cell_count * corners * id_bytes,
                  [this, small] { small ? write_connectivity<std::int32_t>() : write_connectivity<std::int64_t>(); }},
                 {"offsets", id_type, 1, cell_count * id_bytes,
                  [&, small] { small ? write_offsets(std::int32_t{}) : write_offsets(std::int64_t{}); }},
                 {"types", vtk_type<std::uint8_t>(), 1, cell_count,
                  [this] { write_cells<std::uint8_t>([](std::size_t, auto, auto, auto) { return hexahedron; }); }}};

    std::uint64_t offset = 0;
    text("<?xml version=\"1.0\"?>\n<VTKFile type=\"UnstructuredGrid\" version=\"1.0\" byte_order=\"");
    text(std::endian::native == std::endian::little ? "LittleEndian" : "BigEndian");
    text("\" header_type=\"UInt64\">\n  <UnstructuredGrid>\n");
    if (!field_data_.empty()) {
        text("    <FieldData>\n");
        for (const auto& [name, entries] : field_data_) {
            text("      <DataArray type=\"String\" Name=\"" + xml_text(name) + "\" NumberOfTuples=\""
                 + std::to_string(entries.size()) + "\" format=\"ascii\">\n");
            for (const std::string& entry : entries) {
                std::string codes = "       ";
                for (const char c : entry) {
                    codes += ' ' + std::to_string(static_cast<int>(static_cast<signed char>(c)));
                }
                text(codes + " 0\n");
            }
            text("      </DataArray>\n");
        }
        text("    </FieldData>\n");
    }
    text("    <Piece NumberOfPoints=\"" + std::to_string(points_) + "\" NumberOfCells=\"" + std::to_string(cells_)
         + "\">\n");
    text("      <PointData>\n");
    declare(point_data_, offset);
    text("      </PointData>\n      <CellData>\n");
    declare(cell_data_, offset);
    text("      </CellData>\n      <Points>\n");
    declare({points}, offset);
    text("      </Points>\n      <Cells>\n");
    declare(geometry_, offset);
    text("      </Cells>\n    </Piece>\n  </UnstructuredGrid>\n  <AppendedData encoding=\"raw\">\n_");
    const auto write_all = [this](const std::vector<Array>& arrays) {
        for (const Array& array : arrays) {
            put(std::span<const std::uint64_t>(&array.bytes, 1));
            array.write();
        }
    };
    write_all(point_data_);
    write_all(cell_data_);
    write_all({points});
    write_all(geometry_);
    text("\n  </AppendedData>\n</VTKFile>\n");
    report();
    if (options_.progress && !options_.progress(1)) {
        throw Cancelled{};
    }
    file_.commit();
    WriteResult result;
    result.bytes = file_.size();
    result.messages = log_.take();
    return result;
}

} // namespace

std::span<const std::string_view> VtuFormat::endings() const
{
    return file_endings;
}

WriteResult VtuFormat::write(const GridModel& model, const std::filesystem::path& path,
                             const WriteOptions& options) const
{
    return Writer(model, path, options).run();
}

} // namespace lodex
