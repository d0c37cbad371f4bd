#include <lodex/gridio/RoffWriter.h>

#include <lodex/gridio/RoffWriterImpl.h>

namespace lodex::roff {

std::string plain(std::string_view text)
{
    std::string result(text);
    for (char& c : result) {
        c = c == '"' || static_cast<unsigned char>(c) < 0x20 || c == 0x7F ? '_' : c;
    }
    return result;
}

WriteResult Writer::run()
{
    tick(0);
    write_head();
    write_frame();
    if (!model_.layers.empty()) {
        write_layers();
    }
    if (!model_.coord.empty()) {
        write_geometry();
    }
    if (!model_.active.empty()) {
        out_.begin_tag("active");
        out_.begin_array(Type::Bool, "data", model_.active.size());
        write_flags(model_.active);
        out_.end_array();
        out_.end_tag();
    }
    for (const PropertyData& property : model_.properties) {
        if (property.on_points) {
            write_points(property);
        } else {
            write_property(property);
        }
    }
    for (const RegionData& region : model_.regions) {
        write_region(region);
    }
    write_faults();
    write_kept();
    out_.begin_tag("eof");
    out_.end_tag();
    tick(0);
    file_.commit();
    WriteResult result;
    result.bytes = file_.size();
    result.messages = log_.take();
    return result;
}

void Writer::check()
{
    const auto [ni, nj, nk] = model_.size;
    if (ni < 1 || nj < 1 || nk < 1) {
        fail("the grid has " + std::to_string(ni) + " x " + std::to_string(nj) + " x " + std::to_string(nk)
             + " cells, expected 1 or more along each axis");
    }
    constexpr std::int64_t most = std::numeric_limits<std::int32_t>::max();
    if (ni + 1 > most / (nj + 1) || (ni + 1) * (nj + 1) > most / (nk + 1)) {
        fail("the grid has more points than the format can count");
    }
    const auto cells = static_cast<std::size_t>(model_.cells());
    const auto expect = [this](const std::string& what, std::size_t count, std::size_t expected) {
        if (count != expected) {
            fail(what + " has " + std::to_string(count) + " values, expected " + std::to_string(expected));
        }
        total_ += static_cast<double>(count);
    };
    if (model_.coord.empty() && model_.zcorn.empty()) {
        warn("grids without geometry", "the grid has no geometry; only its parameters are written");
    } else {
        expect("coord", model_.coord.size(), 6 * static_cast<std::size_t>(model_.pillars()));
        expect("zcorn", model_.zcorn.size(), 8 * cells);
    }
    if (!model_.active.empty()) {
        expect("active", model_.active.size(), cells);
    }
    const auto points = static_cast<std::size_t>(model_.pillars() * (nk + 1));
    for (const PropertyData& property : model_.properties) {
        expect("property \"" + to_utf8(property.name) + '"', property.size(), property.on_points ? points : cells);
    }
    for (const RegionData& region : model_.regions) {
        expect("region \"" + to_utf8(region.name) + '"', region.flags.size(), cells);
    }
    std::int64_t layers = 0;
    for (const LayerData& layer : model_.layers) {
        if (layer.nb_k_cells < 1) {
            fail("unit \"" + to_utf8(layer.unit) + "\" has " + std::to_string(layer.nb_k_cells) + " layers");
        }
        layers += layer.nb_k_cells;
    }
    if (!model_.layers.empty() && layers != nk) {
        fail("the units have " + std::to_string(layers) + " layers together, the grid has " + std::to_string(nk));
    }
}

void Writer::write_head()
{
    out_.begin_tag("filedata");
    out_.scalar("byteswaptest", std::int32_t{1});
    out_.scalar("filetype", std::string_view(model_.coord.empty() ? "parameter" : "grid"));
    // No date: the same model gives the same file.
    out_.scalar("creationDate", std::string_view("UNKNOWN"));
    out_.end_tag();
    out_.begin_tag("version");
    out_.scalar("major", std::int32_t{2});
    out_.scalar("minor", std::int32_t{0});
    out_.end_tag();
    out_.begin_tag("dimensions");
    out_.scalar("nX", static_cast<std::int32_t>(model_.size[0]));
    out_.scalar("nY", static_cast<std::int32_t>(model_.size[1]));
    out_.scalar("nZ", static_cast<std::int32_t>(model_.size[2]));
    out_.end_tag();
}

void Writer::write_frame()
{
    const GridFrame& frame = model_.frame;
    if (!frame.map_axes && frame.map_units.empty() && frame.grid_units.empty() && !frame.grid_units_map) {
        return;
    }
    inform("what other programs pass over",
           "map axes and units are written in a tag that other programs pass over; they "
           "take the coordinates as they are");
    out_.begin_tag("lodexFrame");
    out_.scalar("mapUnits", std::string_view(escape(frame.map_units)));
    out_.scalar("gridUnits", std::string_view(escape(frame.grid_units)));
    out_.scalar("gridUnitsMap", std::int32_t{frame.grid_units_map ? 1 : 0});
    if (frame.map_axes) {
        out_.array("mapAxes", std::span<const double>(*frame.map_axes));
    }
    out_.end_tag();
}

void Writer::write_layers()
{
    std::vector<std::int32_t> counts, styles;
    std::vector<std::string> units;
    std::vector<float> thickness;
    for (const LayerData& layer : model_.layers) {
        counts.push_back(static_cast<std::int32_t>(layer.nb_k_cells));
        styles.push_back(static_cast<std::int32_t>(layer.style));
        units.push_back(escape(layer.unit));
        thickness.push_back(layer.cell_thickness);
    }
    out_.begin_tag("subgrids");
    out_.array("nLayers", std::span<const std::int32_t>(counts));
    out_.end_tag();
    inform("what other programs pass over",
           "the units are subgrids; their names and layering are written in a tag that other programs pass over");
    out_.begin_tag("lodexUnits");
    out_.array("unit", std::span<const std::string>(units));
    out_.array("cellThickness", std::span<const float>(thickness));
    out_.array("style", std::span<const std::int32_t>(styles));
    out_.end_tag();
}

void Writer::write_geometry()
{
    out_.begin_tag("lodexGeometry");
    out_.scalar("coordDouble", std::int32_t{model_.coord.is_double() ? 1 : 0});
    out_.scalar("zcornDouble", std::int32_t{model_.zcorn.is_double() ? 1 : 0});
    out_.end_tag();
    write_coordinates();
    write_depths();
}

void Writer::write_points(const PropertyData& property)
{
    inform("what other programs pass over",
           "property \"" + to_utf8(property.name)
               + "\" stands on points and is written in a tag that other programs pass over");
    out_.begin_tag("lodexPoints");
    out_.scalar("name", std::string_view(escape(property.name)));
    out_.scalar("unit", std::string_view(escape(property.unit)));
    if (property.no_data) {
        out_.scalar("noData", *property.no_data);
    }
    if (!property.code_names.empty()) {
        write_code_names(property);
    }
    std::visit([this](const auto& values) { out_.array("data", std::span(values)); }, property.values);
    out_.end_tag();
    tick(static_cast<std::int64_t>(property.size()));
}

void Writer::write_region(const RegionData& region)
{
    const std::string name = free_name(region.name);
    inform("what other programs pass over", "region \"" + to_utf8(region.name) + "\" is written as the parameter \""
                                                + to_utf8(name) + "\" of 0 and 1");
    out_.begin_tag("parameter");
    out_.scalar("name", std::string_view(name));
    out_.begin_array(Type::Byte, "data", region.flags.size());
    write_flags(region.flags);
    out_.end_array();
    out_.end_tag();
    out_.begin_tag("lodexParameter");
    out_.scalar("name", std::string_view(escape(region.name)));
    out_.scalar("region", std::int32_t{region.model ? 2 : 1});
    out_.end_tag();
}

void Writer::write_faults()
{
    if (model_.faults.empty()) {
        return;
    }
    inform("what other programs pass over", "the named faults are written in a tag that other programs pass over");
    std::vector<std::string> names, faces;
    std::vector<std::int32_t> boxes;
    for (const FaultSegment& fault : model_.faults) {
        names.push_back(escape(fault.name));
        faces.push_back(escape(fault.face));
        for (const auto* range : {&fault.i, &fault.j, &fault.k}) {
            for (const std::int64_t place : *range) {
                boxes.push_back(index(place, "the fault index"));
            }
        }
    }
    out_.begin_tag("lodexFaults");
    out_.array("name", std::span<const std::string>(names));
    out_.array("face", std::span<const std::string>(faces));
    out_.array("box", std::span<const std::int32_t>(boxes));
    out_.end_tag();
}

void Writer::write_kept()
{
    if (model_.kept.empty()) {
        return;
    }
    inform("what other programs pass over", std::to_string(model_.kept.size())
                                                + " kept keywords are written in a tag that other programs pass over");
    std::vector<std::string> names, texts, files;
    std::vector<std::int32_t> lines;
    for (const KeptKeyword& kept : model_.kept) {
        names.push_back(escape(kept.name));
        texts.push_back(escape(kept.text));
        files.push_back(escape(kept.file));
        lines.push_back(index(kept.line, "the line"));
    }
    out_.begin_tag("lodexKept");
    out_.array("name", std::span<const std::string>(names));
    out_.array("text", std::span<const std::string>(texts));
    out_.array("file", std::span<const std::string>(files));
    out_.array("line", std::span<const std::int32_t>(lines));
    out_.end_tag();
}

WriteResult write_file(const GridModel& model, const std::filesystem::path& path, const WriteOptions& options,
                       Form form)
{
    return Writer(model, path, options, form).run();
}

} // namespace lodex::roff
