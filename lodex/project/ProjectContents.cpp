#include "ProjectContents.h"

#include "ContentsWords.h"
#include "lodex/utils/FileError.h"

#include <nlohmann/json.hpp>

#include <array>
#include <bit>
#include <cmath>
#include <cstdio>

namespace lodex {

namespace {

using nlohmann::json;

/// Text that is no valid UTF-8 (old keywords, names of files) as an object with each byte as one character.
json text_json(const std::string& text)
{
    const std::string readable = to_utf8(text);
    if (readable == text)
        return text;
    std::string wide;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x80) {
            wide += c;
        } else {
            wide += static_cast<char>(0xC0 | (byte >> 6));
            wide += static_cast<char>(0x80 | (byte & 0x3F));
        }
    }
    return {{"bytes", wide}};
}

/// A number that JSON cannot say is written by its bits.
json real_json(double value)
{
    if (std::isfinite(value))
        return value;
    char text[17];
    std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(std::bit_cast<std::uint64_t>(value)));
    return text;
}

json array_json(const StoredArray& array)
{
    json chunks = json::array();
    for (const StoredArray::Chunk& chunk : array.chunks) {
        chunks.push_back(chunk.place);
        chunks.push_back(chunk.size);
        chunks.push_back(chunk.checksum);
        chunks.push_back(chunk.plain ? 1 : 0);
    }
    return {{"path", array.path},
            {"type", number_type_names[static_cast<std::size_t>(array.type)]},
            {"count", array.count},
            {"chunk_count", array.chunk_count},
            {"chunks", std::move(chunks)}};
}

json pairs_json(const TextPairs& pairs)
{
    json list = json::array();
    for (const auto& [name, value] : pairs)
        list.push_back({text_json(name), text_json(value)});
    return list;
}

json property_json(const PropertyData& property, const StoredArray& values, const TextPairs& style)
{
    json codes = json::array();
    for (const auto& [code, name] : property.code_names)
        codes.push_back({code, text_json(name)});
    json result{{"name", text_json(property.name)},
                {"unit", text_json(property.unit)},
                {"on_points", property.on_points},
                {"codes", std::move(codes)},
                {"values", array_json(values)},
                {"style", pairs_json(style)}};
    if (property.no_data)
        result["no_data"] = real_json(*property.no_data);
    return result;
}

json frame_json(const GridFrame& frame)
{
    json result{{"map_units", text_json(frame.map_units)},
                {"grid_units", text_json(frame.grid_units)},
                {"grid_units_map", frame.grid_units_map}};
    if (frame.map_axes) {
        for (const double number : *frame.map_axes)
            result["map_axes"].push_back(real_json(number));
    }
    return result;
}

json records_json(const GridModel& model)
{
    json list = json::array();
    for (const DerivationRecord& record : model.records) {
        list.push_back({{"source", record.source_id},
                        {"source_name", text_json(record.source_name)},
                        {"source_size", record.source_size}});
    }
    return list;
}

json grid_json(const StoredGrid& grid)
{
    const GridModel& model = grid.header;
    json properties = json::array(), regions = json::array(), layers = json::array(), faults = json::array(),
         kept = json::array();
    for (std::size_t i = 0; i < model.properties.size(); ++i)
        properties.push_back(property_json(model.properties[i], grid.properties[i], grid.property_styles[i]));
    for (std::size_t i = 0; i < model.regions.size(); ++i) {
        regions.push_back({{"name", text_json(model.regions[i].name)},
                           {"model", model.regions[i].model},
                           {"flags", array_json(grid.regions[i])}});
    }
    for (const LayerData& layer : model.layers) {
        layers.push_back({{"unit", text_json(layer.unit)},
                          {"nb_k_cells", layer.nb_k_cells},
                          {"cell_thickness", real_json(layer.cell_thickness)},
                          {"layering", layering_names[static_cast<std::size_t>(layer.style)]}});
    }
    for (const FaultSegment& fault : model.faults) {
        faults.push_back({{"name", text_json(fault.name)}, {"i", fault.i}, {"j", fault.j}, {"k", fault.k},
                          {"face", text_json(fault.face)}});
    }
    for (const KeptKeyword& keyword : model.kept) {
        kept.push_back({{"name", text_json(keyword.name)}, {"length", keyword.text.size()},
                        {"file", text_json(keyword.file)}, {"line", keyword.line}});
    }
    json result{{"name", text_json(grid.name)},
                {"id", model.id},
                {"size", model.size},
                {"pillars", array_json(grid.pillars)},
                {"corner_depths", array_json(grid.corner_depths)},
                {"active_flags", array_json(grid.active_flags)},
                {"properties", std::move(properties)},
                {"regions", std::move(regions)},
                {"layers", std::move(layers)},
                {"faults", std::move(faults)},
                {"frame", frame_json(model.frame)},
                {"records", records_json(model)},
                {"kept", std::move(kept)},
                {"activities", grid.activities},
                {"style", pairs_json(grid.style)}};
    if (!grid.records.path.empty())
        result["record_ranges"] = array_json(grid.records);
    if (!grid.kept.path.empty())
        result["kept_texts"] = array_json(grid.kept);
    return result;
}

} // namespace

std::string contents_text(const ProjectContents& contents)
{
    json grids = json::array(), activities = json::array(), styles = json::array(), journal = json::array();
    for (const StoredGrid& grid : contents.grids)
        grids.push_back(grid_json(grid));
    for (const StoredActivity& activity : contents.activities) {
        activities.push_back({{"kind", activity.kind}, {"name", text_json(activity.name)},
                              {"modifications", activity.modifications}});
    }
    for (const auto& [name, attributes] : contents.styles)
        styles.push_back({{"name", text_json(name)}, {"attributes", pairs_json(attributes)}});
    for (const std::string& statement : contents.journal)
        journal.push_back(text_json(statement));
    return json{{"program", contents.program},
                {"written", contents.written},
                {"units", {{"horizontal", contents.horizontal_unit}, {"vertical", contents.vertical_unit}}},
                {"grids", std::move(grids)},
                {"activities", std::move(activities)},
                {"styles", std::move(styles)},
                {"journal", std::move(journal)},
                {"parts", pairs_json(contents.parts)}}
        .dump();
}

} // namespace lodex
