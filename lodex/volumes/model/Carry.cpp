#include "Carry.h"

#include "Layering.h"
#include "PropertyTools.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <string_view>

namespace lodex {

namespace {

// Old index of every node along an axis that stays.
std::vector<std::int64_t> kept_nodes(std::span<const IndexRange> ranges)
{
    std::vector<std::int64_t> nodes;
    for (const IndexRange& range : ranges)
        nodes.push_back(range.first);
    nodes.push_back(ranges.back().last + 1);
    return nodes;
}

// New index of every old one.
std::vector<std::int64_t> new_indices(const std::vector<IndexRange>& ranges)
{
    std::vector<std::int64_t> result;
    for (std::size_t n = 0; n < ranges.size(); ++n)
        result.insert(result.end(), static_cast<std::size_t>(ranges[n].last - ranges[n].first + 1),
                      static_cast<std::int64_t>(n));
    return result;
}

// Axis of a fault face, -1 when the text names none, and its side: 0 towards lower indices, 1 towards higher ones.
struct Face {
    int axis = -1;
    int side = 1;
};

Face parse_face(std::string_view text)
{
    Face face;
    for (const char letter : text) {
        switch (std::toupper(static_cast<unsigned char>(letter))) {
        case 'I':
        case 'X': face.axis = 0; break;
        case 'J':
        case 'Y': face.axis = 1; break;
        case 'K':
        case 'Z': face.axis = 2; break;
        case '-': face.side = 0; break;
        default: break;
        }
    }
    return face;
}

// Fault segments in new indices. new_box(axis, old, face, add) calls add(first, last) with the new indices of an old
// one, if its faces are still there. Runs of new indices that touch or overlap become one; a segment of several runs
// becomes several, one without any is counted in `dropped`.
template <class NewBox>
std::vector<FaultSegment> renumbered_faults(std::span<const FaultSegment> faults, const GridSize& old_size,
                                            const NewBox& new_box, std::int64_t& dropped)
{
    std::vector<FaultSegment> result;
    for (const FaultSegment& fault : faults) {
        const std::array<std::array<std::int64_t, 2>, 3> box{fault.i, fault.j, fault.k};
        const Face face = parse_face(fault.face);
        std::array<std::vector<std::array<std::int64_t, 2>>, 3> runs; // of new indices
        for (std::size_t axis = 0; axis < 3; ++axis) {
            const std::int64_t first = std::max<std::int64_t>(std::min(box[axis][0], box[axis][1]), 0);
            const std::int64_t last = std::min(std::max(box[axis][0], box[axis][1]), old_size[axis] - 1);
            const auto add = [&list = runs[axis]](std::int64_t from, std::int64_t to) {
                if (!list.empty() && list.back()[1] >= from - 1)
                    list.back()[1] = to;
                else
                    list.push_back({from, to});
            };
            for (std::int64_t old = first; old <= last; ++old)
                new_box(axis, old, face, add);
        }
        if (runs[0].empty() || runs[1].empty() || runs[2].empty())
            ++dropped;
        for (const auto& k : runs[2])
            for (const auto& j : runs[1])
                for (const auto& i : runs[0])
                    result.push_back({fault.name, i, j, k, fault.face});
    }
    return result;
}

template <class Item>
void check_names(bool wanted, const std::optional<std::vector<std::string>>& names, const std::vector<Item>& items,
                 std::string_view what)
{
    if (!wanted || !names)
        return;
    for (const std::string& name : *names)
        if (std::ranges::find(items, name, &Item::name) == items.end())
            throw ModelError(fmt::format("the grid has no {} \"{}\"", what, name));
}

bool chosen(bool wanted, const std::optional<std::vector<std::string>>& names, const std::string& name)
{
    return wanted && (!names || std::ranges::find(*names, name) != names->end());
}

} // namespace

void choose_items(const GridModel& source, const CarryOptions& options, GridModel& result)
{
    check_names(options.copy_properties, options.properties, source.properties, "property");
    check_names(options.copy_regions, options.regions, source.regions, "region");
    for (const PropertyData& p : source.properties)
        if (chosen(options.copy_properties, options.properties, p.name))
            result.properties.push_back({p.name, p.unit, {}, p.no_data, p.code_names, p.on_points});
    for (const RegionData& region : source.regions)
        if (region.model || chosen(options.copy_regions, options.regions, region.name))
            result.regions.push_back({region.name, {}, region.model});
}

std::variant<std::vector<float>, std::vector<double>, std::vector<std::int32_t>>
carried_points(const GridModel& source, const PropertyData& property, std::span<const IndexRange> i_ranges,
               std::span<const IndexRange> j_ranges, std::span<const IndexRange> k_ranges)
{
    const auto along_i = kept_nodes(i_ranges);
    const auto along_j = kept_nodes(j_ranges);
    const auto along_k = kept_nodes(k_ranges);
    return std::visit(
        [&](const auto& values) -> decltype(PropertyData::values) {
            std::remove_cvref_t<decltype(values)> result;
            result.reserve(along_i.size() * along_j.size() * along_k.size());
            for (const std::int64_t k : along_k)
                for (const std::int64_t j : along_j)
                    for (const std::int64_t i : along_i)
                        result.push_back(values[static_cast<std::size_t>(i + (source.size[0] + 1) *
                                                                                 (j + (source.size[1] + 1) * k))]);
            return result;
        },
        property.values);
}

std::variant<std::vector<float>, std::vector<double>, std::vector<std::int32_t>>
divided_points(const GridModel& source, const PropertyData& property, int axis, std::span<const IndexRange> ranges)
{
    // Old node at or before each new one, and how far on the way to the next it stands: n of `parts`.
    struct Place {
        std::int64_t node = 0, n = 0, parts = 1;
    };
    std::vector<Place> places;
    for (std::size_t first = 0; first < ranges.size();) {
        std::size_t end = first + 1;
        while (end < ranges.size() && ranges[end] == ranges[first])
            ++end;
        for (std::size_t n = first; n < end; ++n)
            places.push_back(
                {ranges[first].first, static_cast<std::int64_t>(n - first), static_cast<std::int64_t>(end - first)});
        first = end;
    }
    places.push_back({ranges.back().last + 1, 0, 1});

    const auto at = static_cast<std::size_t>(axis);
    GridSize nodes = source.size;
    for (std::int64_t& count : nodes)
        ++count;
    GridSize new_nodes = nodes;
    new_nodes[at] = static_cast<std::int64_t>(places.size());
    const GridSize strides{1, nodes[0], nodes[0] * nodes[1]};
    const std::int64_t next = strides[at];
    return std::visit(
        [&](const auto& values) -> decltype(PropertyData::values) {
            using Values = std::remove_cvref_t<decltype(values)>;
            using Value = typename Values::value_type;
            Values result;
            result.reserve(static_cast<std::size_t>(new_nodes[0] * new_nodes[1] * new_nodes[2]));
            GridSize node{};
            for (node[2] = 0; node[2] < new_nodes[2]; ++node[2])
                for (node[1] = 0; node[1] < new_nodes[1]; ++node[1])
                    for (node[0] = 0; node[0] < new_nodes[0]; ++node[0]) {
                        const Place& place = places[static_cast<std::size_t>(node[at])];
                        GridSize old = node;
                        old[at] = place.node;
                        const auto a =
                            static_cast<std::size_t>(old[0] * strides[0] + old[1] * strides[1] + old[2] * strides[2]);
                        const std::size_t b = place.n > 0 ? a + static_cast<std::size_t>(next) : a;
                        if (std::is_floating_point_v<Value> && place.n > 0 && is_defined(property, a) &&
                            is_defined(property, b)) {
                            const double share = static_cast<double>(place.n) / static_cast<double>(place.parts);
                            const auto from = static_cast<double>(values[a]), to = static_cast<double>(values[b]);
                            result.push_back(static_cast<Value>(from + share * (to - from)));
                        }
                        else {
                            result.push_back(values[2 * place.n > place.parts ? b : a]);
                        }
                    }
            return result;
        },
        property.values);
}

std::vector<LayerData> carried_layers(std::span<const LayerData> layers, std::span<const IndexRange> k_ranges,
                                      std::vector<std::string>& warnings)
{
    std::vector<LayerData> result(layers.begin(), layers.end());
    if (layers.empty())
        return result;
    for (LayerData& layer : result)
        layer.nb_k_cells = 0;
    for (const IndexRange& range : k_ranges) {
        const std::int64_t unit = layer_index(layers, range.first);
        ++result[static_cast<std::size_t>(unit)].nb_k_cells;
        const std::int64_t last_unit = layer_index(layers, range.last);
        if (last_unit != unit)
            warnings.push_back(fmt::format(
                "sections {}+{} along K reach from layer \"{}\" into \"{}\": the new section "
                "counts for \"{}\"",
                range.first, range.last, layers[static_cast<std::size_t>(unit)].unit,
                layers[static_cast<std::size_t>(last_unit)].unit, layers[static_cast<std::size_t>(unit)].unit));
    }
    for (std::size_t n = 0; n < result.size(); ++n) {
        if (result[n].nb_k_cells == 0)
            warnings.push_back(fmt::format("layer \"{}\" has no section left and is gone", result[n].unit));
        else if (result[n].nb_k_cells != layers[n].nb_k_cells)
            result[n].cell_thickness = static_cast<float>(static_cast<double>(layers[n].cell_thickness) *
                                                          static_cast<double>(layers[n].nb_k_cells) /
                                                          static_cast<double>(result[n].nb_k_cells));
    }
    std::erase_if(result, [](const LayerData& layer) { return layer.nb_k_cells == 0; });
    return result;
}

std::vector<FaultSegment> carried_faults(std::span<const FaultSegment> faults, const GridSize& old_size,
                                         const std::array<std::vector<IndexRange>, 3>& ranges, std::int64_t& dropped)
{
    std::array<std::vector<std::int64_t>, 3> new_of;
    for (std::size_t axis = 0; axis < 3; ++axis)
        new_of[axis] = new_indices(ranges[axis]);
    const auto new_box = [&](std::size_t axis, std::int64_t old, const Face& face, auto add) {
        const std::int64_t index = new_of[axis][static_cast<std::size_t>(old)];
        const IndexRange& group = ranges[axis][static_cast<std::size_t>(index)];
        const bool inside = static_cast<int>(axis) == face.axis && old != (face.side ? group.last : group.first);
        if (!inside)
            add(index, index);
    };
    return renumbered_faults(faults, old_size, new_box, dropped);
}

std::vector<FaultSegment> divided_faults(std::span<const FaultSegment> faults, const GridSize& old_size,
                                         const std::array<std::vector<IndexRange>, 3>& ranges, std::int64_t& dropped)
{
    // First new index of every old one, and the end.
    std::array<std::vector<std::int64_t>, 3> starts;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        for (std::size_t n = 0; n < ranges[axis].size(); ++n)
            if (n == 0 || !(ranges[axis][n] == ranges[axis][n - 1]))
                starts[axis].push_back(static_cast<std::int64_t>(n));
        starts[axis].push_back(static_cast<std::int64_t>(ranges[axis].size()));
    }
    const auto new_box = [&](std::size_t axis, std::int64_t old, const Face& face, auto add) {
        std::int64_t from = starts[axis][static_cast<std::size_t>(old)];
        std::int64_t to = starts[axis][static_cast<std::size_t>(old + 1)] - 1;
        if (static_cast<int>(axis) == face.axis)
            (face.side ? from : to) = face.side ? to : from;
        add(from, to);
    };
    return renumbered_faults(faults, old_size, new_box, dropped);
}

std::int64_t count_values(std::string_view text)
{
    std::int64_t count = 0;
    std::size_t at = 0;
    while (at < text.size()) {
        const char letter = text[at];
        if (std::isspace(static_cast<unsigned char>(letter))) {
            ++at;
        }
        else if (text.substr(at, 2) == "--") {
            at = std::min(text.find('\n', at), text.size());
        }
        else if (letter == '/') {
            break;
        }
        else if (letter == '\'' || letter == '"') {
            const std::size_t end = text.find(letter, at + 1);
            at = end == std::string_view::npos ? text.size() : end + 1;
            ++count;
        }
        else {
            std::size_t end = at;
            while (end < text.size() && !std::isspace(static_cast<unsigned char>(text[end])) && text[end] != '/')
                ++end;
            const std::string_view word = text.substr(at, end - at);
            std::int64_t repeat = 1;
            const std::size_t star = word.find('*');
            if (star != std::string_view::npos && star > 0) {
                const auto [rest, error] = std::from_chars(word.data(), word.data() + star, repeat);
                if (error != std::errc{} || rest != word.data() + star)
                    repeat = 1;
            }
            count += repeat;
            at = end;
        }
    }
    return count;
}

std::vector<KeptKeyword> carried_keywords(const GridModel& source, const GridSize& new_size,
                                          std::vector<std::string>& warnings)
{
    if (new_size == source.size)
        return source.kept;
    // Their text names cells, boxes of cells or K layers by index.
    static constexpr std::array<std::string_view, 16> by_index{
        "ADD",     "ADDREG",  "AQUANCON", "AQUCON", "BOX",      "COMPDAT",  "COORDSYS", "COPY",
        "COPYBOX", "EDITNNC", "ENDBOX",   "EQUALS", "MAXVALUE", "MINVALUE", "MULTIPLY", "NNC"};
    std::vector<KeptKeyword> result;
    for (const KeptKeyword& keyword : source.kept) {
        const std::int64_t values = count_values(keyword.text);
        if (std::ranges::find(by_index, keyword.name) != by_index.end())
            warnings.push_back(fmt::format("keyword {} names cells by index and is left out", keyword.name));
        else if (values == source.cells() && values > 1)
            warnings.push_back(fmt::format("keyword {} holds one value per cell and is left out", keyword.name));
        else
            result.push_back(keyword);
    }
    return result;
}

} // namespace lodex
