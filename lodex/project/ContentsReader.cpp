#include "ContentsWords.h"
#include "ArrayCodec.h"
#include "Migration.h"
#include "ProjectContents.h"
#include "lodex/utils/Names.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <limits>
#include <map>
#include <set>
#include <stdexcept>

namespace lodex {

namespace {

using nlohmann::json;

/// Something in the contents that cannot be.
class Damage : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

void require(bool good, const char* what)
{
    if (!good)
        throw Damage(what);
}

/// No number in the contents is larger: products of two and sums of some are safe.
constexpr std::int64_t far = std::int64_t{1} << 40;
constexpr std::uint64_t largest_chunk = std::uint64_t{256} << 20;
constexpr int deepest = 16;
constexpr std::size_t most_styles = 10000; // of no object: there are few ever

std::int64_t whole(const json& value, std::int64_t min, std::int64_t max, const char* what)
{
    require(value.is_number_integer(), what);
    constexpr std::uint64_t largest = std::numeric_limits<std::int64_t>::max();
    require(!value.is_number_unsigned() || value.get<std::uint64_t>() <= largest, what);
    const auto number = value.get<std::int64_t>();
    require(number >= min && number <= max, what);
    return number;
}

std::uint64_t any_whole(const json& value, const char* what)
{
    require(value.is_number_unsigned(), what);
    return value.get<std::uint64_t>();
}

double real(const json& value)
{
    if (value.is_number())
        return value.get<double>();
    const auto& text = value.get_ref<const std::string&>();
    std::uint64_t bits = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), bits, 16);
    require(error == std::errc() && end == text.data() + text.size(), "a number");
    return std::bit_cast<double>(bits);
}

std::string text(const json& value)
{
    if (value.is_string())
        return value.get<std::string>();
    const auto& wide = value.at("bytes").get_ref<const std::string&>();
    std::string bytes;
    for (std::size_t i = 0; i < wide.size(); ++i) {
        const auto byte = static_cast<unsigned char>(wide[i]);
        if (byte < 0x80) {
            bytes += wide[i];
        } else {
            require((byte == 0xC2 || byte == 0xC3) && i + 1 < wide.size(), "a text");
            bytes += static_cast<char>(((byte & 0x03) << 6) | (static_cast<unsigned char>(wide[++i]) & 0x3F));
        }
    }
    return bytes;
}

const json& list(const json& object, const char* key)
{
    const json& value = object.at(key);
    require(value.is_array(), key);
    return value;
}

template <std::size_t N> std::array<std::int64_t, N> numbers(const json& value, std::int64_t min, const char* what)
{
    require(value.is_array() && value.size() == N, what);
    std::array<std::int64_t, N> result{};
    for (std::size_t i = 0; i < N; ++i)
        result[i] = whole(value[i], min, far, what);
    return result;
}

template <std::size_t N>
std::size_t position_of(const std::array<const char*, N>& words, const json& value, const char* what)
{
    const auto found = std::ranges::find(words, value.get_ref<const std::string&>());
    require(found != words.end(), what);
    return static_cast<std::size_t>(found - words.begin());
}

TextPairs pairs(const json& value)
{
    require(value.is_array(), "a list of pairs");
    TextPairs result;
    for (const json& pair : value) {
        require(pair.is_array() && pair.size() == 2, "a pair");
        result.emplace_back(text(pair[0]), text(pair[1]));
    }
    return result;
}

class Reader {
public:
    Reader(const ProjectFile& file, std::vector<std::string>& warnings) : file_(file), warnings_(warnings) {}

    [[nodiscard]] ProjectContents read(const json& contents)
    {
        ProjectContents result;
        result.program = text(contents.at("program"));
        result.written = text(contents.at("written"));
        result.horizontal_unit = text(contents.at("units").at("horizontal"));
        result.vertical_unit = text(contents.at("units").at("vertical"));
        for (const json& activity : list(contents, "activities")) {
            result.activities.push_back(
                {text(activity.at("kind")), text(activity.at("name")), text(activity.at("modifications"))});
        }
        for (const json& grid : list(contents, "grids"))
            result.grids.push_back(read_grid(grid, result.activities.size()));
        mend_names(result.grids, [](StoredGrid& grid) -> std::string& { return grid.name; }, "SGrid");
        check_sources(result.grids);
        require(list(contents, "styles").size() <= most_styles, "styles");
        for (const json& style : list(contents, "styles"))
            result.styles.emplace_back(text(style.at("name")), pairs(style.at("attributes")));
        for (const json& statement : list(contents, "journal")) {
            result.journal.push_back(text(statement));
            require(result.journal.back().find_first_of(std::string_view("\n\r\0", 3)) == std::string::npos, "journal");
        }
        result.parts = pairs(contents.at("parts"));
        return result;
    }

private:
    /// A description of an array of so many values. What all arrays take up is never more than the file holds, so that
    /// what is allocated for them is bounded by the size of the file.
    [[nodiscard]] StoredArray read_array(const json& value, std::initializer_list<NumberType> types, std::int64_t count)
    {
        StoredArray array;
        array.path = text(value.at("path"));
        array.type = static_cast<NumberType>(position_of(number_type_names, value.at("type"), "type of an array"));
        require(std::ranges::find(types, array.type) != types.end(), "type of an array");
        array.count = static_cast<std::uint64_t>(whole(value.at("count"), 1, far, "count of an array"));
        if (array.count != static_cast<std::uint64_t>(count))
            throw Damage(array.path + " has " + std::to_string(array.count) + " values, " + std::to_string(count) +
                         " are needed");
        array.chunk_count = static_cast<std::uint64_t>(
            whole(value.at("chunk_count"), 1, static_cast<std::int64_t>(array.count), "chunks of an array"));
        const std::uint64_t chunk_size = array.chunk_count * bytes_of(array.type);
        const json& chunks = list(value, "chunks");
        const std::uint64_t wanted = (array.count + array.chunk_count - 1) / array.chunk_count;
        require(chunk_size <= largest_chunk && chunks.size() == 4 * wanted, "chunks of an array");
        for (std::size_t i = 0; i < chunks.size(); i += 4) {
            StoredArray::Chunk chunk;
            chunk.place = any_whole(chunks[i], "place of a chunk");
            chunk.size = any_whole(chunks[i + 1], "size of a chunk");
            chunk.checksum = static_cast<std::uint32_t>(whole(chunks[i + 2], 0, 0xFFFFFFFF, "checksum of a chunk"));
            chunk.plain = whole(chunks[i + 3], 0, 1, "kind of a chunk") == 1;
            require(chunk.place <= file_.size() && chunk.size <= file_.size() - chunk.place, "place of a chunk");
            stored_ += chunk.size;
            require(stored_ <= file_.size(), "size of the chunks");
            require(chunk.plain ? chunk.size == chunk_size : chunk_size <= chunk.size * largest_deflate_ratio,
                    "size of a chunk");
            array.chunks.push_back(chunk);
        }
        return array;
    }

    /// Reads a small array at once.
    template <class T> [[nodiscard]] std::vector<T> values_of(const StoredArray& array)
    {
        std::vector<T> values(array.count);
        file_.read(array, std::as_writable_bytes(std::span(values)));
        return values;
    }

    [[nodiscard]] StoredGrid read_grid(const json& value, std::size_t activities)
    {
        StoredGrid grid;
        GridModel& model = grid.header;
        grid.name = text(value.at("name"));
        model.id = any_whole(value.at("id"), "id of a grid");
        require(model.id != 0 && grids_.insert(model.id).second, "id of a grid");
        model.size = numbers<3>(value.at("size"), 1, "size of a grid");
        require(model.size[0] <= far / model.size[1] && model.size[0] * model.size[1] <= far / model.size[2],
                "size of a grid");
        const std::int64_t cells = model.cells();
        constexpr std::array reals{NumberType::Float32, NumberType::Float64};
        const auto real_array = [](const StoredArray& array) {
            const bool wide = array.type == NumberType::Float64;
            return wide ? RealArray(std::vector<double>()) : RealArray(std::vector<float>());
        };
        grid.pillars = read_array(value.at("pillars"), {reals[0], reals[1]}, 6 * model.pillars());
        grid.corner_depths = read_array(value.at("corner_depths"), {reals[0], reals[1]}, 8 * cells);
        grid.active_flags = read_array(value.at("active_flags"), {NumberType::UInt8}, cells);
        model.coord = real_array(grid.pillars);
        model.zcorn = real_array(grid.corner_depths);
        for (const json& property : list(value, "properties"))
            read_property(property, grid);
        mend_names(model.properties, [](PropertyData& data) -> std::string& { return data.name; }, "property");
        for (const json& region : list(value, "regions")) {
            model.regions.push_back({text(region.at("name")), {}, region.at("model").get<bool>()});
            grid.regions.push_back(read_array(region.at("flags"), {NumberType::UInt8}, cells));
        }
        mend_names(model.regions, [](RegionData& data) -> std::string& { return data.name; }, "region");
        read_layers(value, model);
        for (const json& fault : list(value, "faults")) {
            model.faults.push_back({text(fault.at("name")), numbers<2>(fault.at("i"), -far, "fault"),
                                    numbers<2>(fault.at("j"), -far, "fault"), numbers<2>(fault.at("k"), -far, "fault"),
                                    text(fault.at("face"))});
        }
        read_frame(value.at("frame"), model.frame);
        read_kept(value, grid);
        read_records(value, grid);
        for (const json& activity : list(value, "activities")) {
            grid.activities.push_back(static_cast<std::size_t>(
                whole(activity, 0, static_cast<std::int64_t>(activities) - 1, "activity of a grid")));
        }
        grid.style = pairs(value.at("style"));
        return grid;
    }

    void read_property(const json& value, StoredGrid& grid)
    {
        PropertyData property;
        property.name = text(value.at("name"));
        property.unit = text(value.at("unit"));
        property.on_points = value.at("on_points").get<bool>();
        if (value.contains("no_data"))
            property.no_data = real(value.at("no_data"));
        const GridSize& size = grid.header.size;
        const std::int64_t count =
            property.on_points ? (size[0] + 1) * (size[1] + 1) * (size[2] + 1) : grid.header.cells();
        StoredArray array =
            read_array(value.at("values"), {NumberType::Float32, NumberType::Float64, NumberType::Int32}, count);
        if (array.type == NumberType::Float64)
            property.values = std::vector<double>();
        else if (array.type == NumberType::Int32)
            property.values = std::vector<std::int32_t>();
        for (const json& code : list(value, "codes")) {
            require(code.is_array() && code.size() == 2, "code of a property");
            const std::int64_t number = whole(code[0], std::numeric_limits<std::int32_t>::min(),
                                              std::numeric_limits<std::int32_t>::max(), "code of a property");
            property.code_names[static_cast<std::int32_t>(number)] = text(code[1]);
        }
        grid.header.properties.push_back(std::move(property));
        grid.properties.push_back(std::move(array));
        grid.property_styles.push_back(pairs(value.at("style")));
    }

    void read_layers(const json& value, GridModel& model)
    {
        std::int64_t cells = 0;
        for (const json& layer : list(value, "layers")) {
            LayerData data;
            data.unit = text(layer.at("unit"));
            data.nb_k_cells = whole(layer.at("nb_k_cells"), 0, model.size[2] - cells, "layers of a grid");
            data.cell_thickness = static_cast<float>(real(layer.at("cell_thickness")));
            data.style = static_cast<Lodex::LayerInfo::LayeringStyle>(
                position_of(layering_names, layer.at("layering"), "layering of a layer"));
            cells += data.nb_k_cells;
            model.layers.push_back(std::move(data));
        }
        require(model.layers.empty() || cells == model.size[2], "layers of a grid");
        mend_names(model.layers, [](LayerData& data) -> std::string& { return data.unit; }, "unit", false);
    }

    static void read_frame(const json& value, GridFrame& frame)
    {
        frame.map_units = text(value.at("map_units"));
        frame.grid_units = text(value.at("grid_units"));
        frame.grid_units_map = value.at("grid_units_map").get<bool>();
        if (value.contains("map_axes")) {
            const json& axes = value.at("map_axes");
            require(axes.is_array() && axes.size() == 6, "map axes");
            frame.map_axes.emplace();
            for (std::size_t i = 0; i < 6; ++i)
                (*frame.map_axes)[i] = real(axes[i]);
        }
    }

    void read_kept(const json& value, StoredGrid& grid)
    {
        std::int64_t length = 0;
        std::vector<std::int64_t> lengths;
        for (const json& keyword : list(value, "kept")) {
            lengths.push_back(whole(keyword.at("length"), 0, far, "length of a keyword"));
            length += lengths.back();
            require(length <= far, "length of a keyword");
            grid.header.kept.push_back({text(keyword.at("name")), {}, text(keyword.at("file")),
                                        whole(keyword.at("line"), 0, far, "line of a keyword")});
        }
        if (length == 0)
            return;
        grid.kept = read_array(value.at("kept_texts"), {NumberType::UInt8}, length);
        const std::vector<std::uint8_t> texts = values_of<std::uint8_t>(grid.kept);
        auto begin = texts.begin();
        for (std::size_t i = 0; i < lengths.size(); begin += lengths[i++])
            grid.header.kept[i].text.assign(begin, begin + lengths[i]);
    }

    void read_records(const json& value, StoredGrid& grid)
    {
        GridModel& model = grid.header;
        for (const json& record : list(value, "records")) {
            model.records.push_back({any_whole(record.at("source"), "source of a grid"), text(record.at("source_name")),
                                     numbers<3>(record.at("source_size"), 1, "size of a source"), {}});
        }
        if (model.records.empty())
            return;
        const std::int64_t ranges = model.size[0] + model.size[1] + model.size[2];
        require(model.records.size() <= static_cast<std::size_t>(far / (2 * ranges)), "records of a grid");
        grid.records = read_array(value.at("record_ranges"), {NumberType::Int64},
                                  2 * ranges * static_cast<std::int64_t>(model.records.size()));
        const std::vector<std::int64_t> values = values_of<std::int64_t>(grid.records);
        auto next = values.begin();
        for (DerivationRecord& record : model.records) {
            for (std::size_t axis = 0; axis < 3; ++axis) {
                for (std::int64_t n = 0; n < model.size[axis]; ++n, next += 2) {
                    require(next[0] >= 0 && next[0] <= next[1] && next[1] < record.source_size[axis],
                            "index range of a record");
                    record.ranges[axis].push_back({next[0], next[1]});
                }
            }
        }
    }

    /// Records speak of their sources' cells: a source that is there has the size that they say.
    static void check_sources(const std::vector<StoredGrid>& grids)
    {
        std::map<std::uint64_t, GridSize> sizes;
        for (const StoredGrid& grid : grids)
            sizes[grid.header.id] = grid.header.size;
        for (const StoredGrid& grid : grids) {
            for (const DerivationRecord& record : grid.header.records) {
                const auto source = sizes.find(record.source_id);
                require(source == sizes.end() || source->second == record.source_size, "size of a source");
            }
        }
    }

    template <class Item, class Name>
    void mend_names(std::vector<Item>& items, Name name_of, const char* what, bool unique = true)
    {
        std::map<std::string, int> last; // of the numbers behind names that came more than once
        for (Item& item : items) {
            std::string& name = name_of(item);
            const std::string legal = mend_object_name(name);
            std::string mended = legal;
            while (unique && last.contains(mended))
                mended = legal + "_" + std::to_string(std::max(2, ++last[legal]));
            last.emplace(mended, 1);
            if (mended != name)
                warnings_.push_back(std::string("the ") + what + " \"" + name + "\" is named \"" + mended + "\"");
            name = mended;
        }
    }

    const ProjectFile& file_;
    std::vector<std::string>& warnings_;
    std::set<std::uint64_t> grids_;
    std::uint64_t stored_ = 0; ///< bytes of all chunks seen so far
};

} // namespace

ProjectContents read_contents(const ProjectFile& file, std::vector<std::string>& warnings)
{
    try {
        json contents = json::parse(file.contents(), [](int depth, json::parse_event_t, json&) {
            require(depth <= deepest, "brackets within brackets");
            return true;
        });
        migrate_contents(contents, file.format());
        return Reader(file, warnings).read(contents);
    } catch (const json::exception& error) {
        file.fail("its table of contents is damaged: " + std::string(error.what()));
    } catch (const Damage& damage) {
        file.fail("its table of contents is damaged: " + std::string(damage.what()));
    }
}

} // namespace lodex
