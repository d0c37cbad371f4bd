// Verbs that read and write grid files.

#include "lodex/gridio/GridFormat.h"
#include "lodex/gridio/LayerFile.h"
#include "lodex/gridio/ValueFile.h"
#include "lodex/interpreter/Lists.h"
#include "lodex/utils/Names.h"
#include "lodex/volumes/model/CellGeometry.h"
#include "lodex/volumes/model/Layering.h"
#include "lodex/volumes/verbs/VerbTools.h"

#include <algorithm>

namespace lodex {

namespace {

std::string line_of(const Message& message)
{
    std::string text = message.file;
    if (message.line > 0)
        text += ':' + std::to_string(message.line);
    return text.empty() ? message.text : text + ": " + message.text;
}

void pass_on(Call& call, const std::vector<Message>& messages)
{
    for (const Message& message : messages) {
        if (message.level == Message::Level::Warning)
            call.warn(line_of(message));
        else
            call.info(line_of(message));
    }
}

void mend_names(Call& call, GridModel& model)
{
    mend_names(call, model.properties, &PropertyData::name, "property");
    mend_names(call, model.regions, &RegionData::name, "region");
    mend_units(call, model.layers);
}

/// Units and axes as the file states them, for the user to see at once what the numbers are.
std::string frame_text(const GridModel& model)
{
    const auto stated = [](const std::string& what, const std::string& unit) {
        return what + (unit.empty() ? " not stated" : " " + unit);
    };
    const int turn = handedness(model);
    const GridFrame& frame = model.frame;
    std::string units;
    for (const PropertyData& property : model.properties) {
        if (!property.unit.empty())
            units += (units.empty() ? "" : ", ") + property.name + " in " + property.unit;
    }
    return stated("grid units", frame.grid_units) + (frame.grid_units_map ? " (map coordinates)" : "") + ", " +
           stated("map units", frame.map_units) + ", map axes " + (frame.map_axes ? "kept, not applied" : "not stated") +
           ", depths positive downwards, " + (turn > 0 ? "right-handed" : turn < 0 ? "left-handed" : "handedness undecided") +
           "; properties " + (units.empty() ? "without stated units" : "in the file's units: " + units);
}

void import_grid(Call& call)
{
    const std::string path = call.text("file");
    ReadResult read = at_keyword(call, "file", [&] {
        ReadOptions options;
        options.progress = call.progress_check();
        return GridFormats::for_reading(path).read(path, options);
    });
    pass_on(call, read.messages);
    mend_names(call, read.model);
    const CornerPointGrid* grid = at_keyword(call, "file", [&] { return add_grid(call.text("name"), std::move(read.model)); });
    const GridModel& model = grid->model();
    const auto active = std::ranges::count(model.active, 1);
    call.count("cells", static_cast<double>(model.cells()));
    call.count("active_cells", static_cast<double>(active));
    call.count("properties", static_cast<double>(model.properties.size()));
    call.count("bytes", static_cast<double>(read.bytes));
    call.info("SGrid \"" + grid->name().str() + "\": " + size_text(model.size) + " cells, " + std::to_string(active) +
              " active, " + std::to_string(model.properties.size()) + " properties");
    call.info("SGrid \"" + grid->name().str() + "\": " + frame_text(model));
}

void import_properties(Call& call)
{
    CornerPointGrid& grid = grid_of(call);
    const std::string path = call.text("file");
    ReadResult read = at_keyword(call, "file", [&] {
        ReadOptions options;
        options.progress = call.progress_check();
        options.properties_only = true;
        options.size = grid.header().size;
        options.active = grid.model().active;
        return GridFormats::for_reading(path).read(path, options);
    });
    if (read.model.properties.empty() && read.model.faults.empty())
        call.fail(path + ": holds no properties for a grid of " + size_text(grid.header().size) + " cells", "file");
    pass_on(call, read.messages);
    mend_names(call, read.model);
    call.count("properties", static_cast<double>(read.model.properties.size()));
    call.count("fault_segments", static_cast<double>(read.model.faults.size()));
    grid.change([&](GridModel& model) {
        model.properties.reserve(model.properties.size() + read.model.properties.size());
        model.faults.reserve(model.faults.size() + read.model.faults.size());
        // Nothing fails from here on.
        for (PropertyData& property : read.model.properties)
            put_item(model.properties, std::move(property));
        std::ranges::move(read.model.faults, std::back_inserter(model.faults));
    });
}

void export_grid(Call& call)
{
    const std::string path = call.text("file");
    const CornerPointGrid& grid = grid_of(call, "sgrid");
    const auto& format = at_keyword(call, call.has("format") ? "format" : "file", [&]() -> decltype(auto) {
        return GridFormats::for_writing(path, call.text("format"));
    });
    const WriteResult written = at_keyword(call, "file", [&] {
        WriteOptions options;
        options.progress = call.progress_check();
        options.run_lengths = call.flag("run_lengths");
        return format.write(grid.model(), path, options);
    });
    pass_on(call, written.messages);
    call.count("bytes", static_cast<double>(written.bytes));
    call.info("SGrid \"" + grid.name().str() + "\" written to " + path);
}

void set_property_from_file(Call& call)
{
    CornerPointGrid& grid = grid_of(call);
    PropertyData property;
    property.name = call.text("property");
    property.values = at_keyword(call, "file", [&] {
        return read_values(call.text("file"), grid.header().cells(), call.progress_check());
    });
    call.count("cells", static_cast<double>(grid.header().cells()));
    set_property(grid, std::move(property));
}

void set_layers(Call& call)
{
    CornerPointGrid& grid = grid_of(call);
    const int sources = int{call.has("units") || call.has("sizes")} + int{call.has("property")} + int{call.has("file")};
    if (sources != 1)
        call.fail("set_layers takes \"units\" and \"sizes\", or \"property\", or \"file\"");
    std::vector<LayerData> layers;
    const auto from_sizes = [&](const std::vector<std::string>& units, const std::vector<std::int64_t>& sizes,
                                std::string_view keyword) {
        return at_keyword(call, keyword, [&] { return layers_from_sizes(grid.model(), units, sizes); });
    };
    if (call.has("property")) {
        (void)property_of(call, "property", grid.model());
        layers = at_keyword(call, "property", [&] { return layers_from_property(grid.model(), call.text("property")); });
        mend_units(call, layers);
    } else if (call.has("file")) {
        const LayerFile file = at_keyword(call, "file", [&] { return read_layer_file(call.text("file")); });
        layers = from_sizes(file.units, file.sizes, "file");
        mend_units(call, layers);
    } else {
        const std::vector<std::string> units = split_joined(call.text("units"));
        for (const std::string& unit : units) {
            if (const auto problem = check_object_name(unit))
                call.fail("\"" + unit + "\" cannot be a unit: " + *problem, "units");
        }
        const std::vector<long> sizes = call.integers("sizes");
        layers = from_sizes(units, {sizes.begin(), sizes.end()}, "sizes");
    }
    call.count("layers", static_cast<double>(layers.size()));
    grid.change([&](GridModel& model) {
        model.layers = std::move(layers);
    });
}

const VerbRegistration import_registration{
    {.name = "import",
     .summary = "Reads a grid with all its properties from a file; the format is told by the content.",
     .keywords = {{.name = "file", .kind = ValueKind::Path, .meaning = "the file", .required = true},
                  {.name = "name", .kind = ValueKind::NewName, .meaning = "the new grid", .required = true}},
     .run = import_grid}};

const VerbRegistration properties_registration{
    {.name = "import_properties",
     .object_type = "SGrid",
     .summary = "Reads properties and faults for a grid that is there; properties of the same names are replaced.",
     .keywords = {{.name = "file", .kind = ValueKind::Path, .meaning = "the file", .required = true}},
     .run = import_properties}};

const VerbRegistration export_registration{
    {.name = "export",
     .summary = "Writes a grid with all its properties to a file.",
     .keywords = {{.name = "sgrid", .kind = ValueKind::Object, .meaning = "the grid", .required = true, .object_type = "SGrid"},
                  {.name = "file", .kind = ValueKind::Path, .meaning = "the file", .required = true},
                  {.name = "format", .kind = ValueKind::Text, .meaning = "name of the format; absent: by the file's ending"},
                  {.name = "run_lengths", .kind = ValueKind::Flag, .meaning = "whether equal values are written as n*v",
                   .default_value = "0"}},
     .run = export_grid}};

const VerbRegistration set_property_registration{
    {.name = "set_property",
     .object_type = "SGrid",
     .summary = "Sets a property to the values of a file: one per cell, I fastest, as text or raw little-endian doubles.",
     .keywords = {{.name = "property", .kind = ValueKind::ItemName, .meaning = "the property, made when it is not there",
                   .required = true, .positional = true},
                  {.name = "file", .kind = ValueKind::Path, .meaning = "the file", .required = true}},
     .run = set_property_from_file}};

const VerbRegistration layers_registration{
    {.name = "set_layers",
     .object_type = "SGrid",
     .summary = "Sets the stratigraphic units along K; former ones are replaced.",
     .keywords = {{.name = "units", .kind = ValueKind::NameList, .meaning = "names from top to bottom, joined by +"},
                  {.name = "sizes", .kind = ValueKind::IntegerList, .meaning = "numbers of K layers of the units", .min = 1},
                  {.name = "property", .kind = ValueKind::Text,
                   .meaning = "discrete property that is constant on each K layer, one unit per run of a code"},
                  {.name = "file", .kind = ValueKind::Path, .meaning = "layer name file: a unit and its K layers a line"}},
     .run = set_layers}};

} // namespace

} // namespace lodex
