#include "VerbTools.h"

#include "lodex/volumes/GridUnits.h"
#include "lodex/interpreter/Lists.h"
#include "lodex/utils/Memory.h"
#include "lodex/utils/Numbers.h"
#include "lodex/volumes/model/Subdivide.h"

#include <algorithm>
#include <array>

namespace lodex {

namespace {

using Lodex::LayerInfo;

constexpr std::array<std::pair<std::string_view, LayerInfo::LayeringStyle>, 3> layerings{
    {{"proportional", LayerInfo::Proportional},
     {"parallel_to_base", LayerInfo::ParallelToBase},
     {"parallel_to_top", LayerInfo::ParallelToTop}}};

/// Cell counts, and how much the bulk volume changed, in total and against the parent cells.
void report(Call& call, const std::string& name, const SubdivideReport& result)
{
    report_cells_and_volumes(call, name, result, "divided_cells", result.divided_cells, "subdivisions differ from their cells by");
    call.count("pinched_cells", static_cast<double>(result.pinched));
    if (result.pinched > 0)
        call.info(std::to_string(result.pinched) + " cells are pinched to nothing and inactive");
    for (const std::string& warning : result.warnings)
        call.warn(warning);
}

long whole_number(const Call& call, const std::string& text, const std::string& group, const char* what)
{
    const auto number = parse_long(text);
    if (!number)
        call.fail("\"" + text + "\" in \"" + group + "\" is no " + what, "sections");
    return *number;
}

std::vector<SectionDivision> read_sections(const Call& call)
{
    const std::vector<std::string> pieces = split_joined_numbers(call.text("sections"));
    if (pieces.size() % 4 != 0)
        call.fail("\"sections\" holds " + std::to_string(pieces.size()) +
                      " items; expected groups of four: section, cells added, layering, thickness",
                  "sections");
    std::vector<SectionDivision> divisions;
    for (std::size_t i = 0; i < pieces.size(); i += 4) {
        const std::string group = pieces[i] + "+" + pieces[i + 1] + "+" + pieces[i + 2] + "+" + pieces[i + 3];
        SectionDivision division;
        division.section = whole_number(call, pieces[i], group, "section");
        division.added = whole_number(call, pieces[i + 1], group, "number of cells");
        const auto layering = std::ranges::find(layerings, pieces[i + 2], [](const auto& pair) { return pair.first; });
        if (layering == layerings.end())
            call.fail("\"" + pieces[i + 2] + "\" in \"" + group +
                          "\" is no layering; expected \"proportional\", \"parallel_to_base\" or \"parallel_to_top\"",
                      "sections");
        division.layering = layering->second;
        // An even division does not look at its thickness, but two words there are a keyword that is not known.
        const std::string& thickness = pieces[i + 3];
        const bool read = division.layering != LayerInfo::Proportional && !thickness.empty();
        if (read)
            division.thickness = parse_double(thickness);
        if ((read && !division.thickness) || thickness.find_first_of(" \t") != std::string::npos)
            call.fail("\"" + thickness + "\" in \"" + group + "\" is no thickness", "sections");
        divisions.push_back(division);
    }
    return divisions;
}

/// Length of the project's unit along this axis in the unit that the grid's coordinates are in.
double unit_in_grid(const GridModel& model, int axis)
{
    const LengthUnit unit = axis == 2 ? project_vertical_unit() : project_horizontal_unit();
    return measurement_unit(unit).scale() / grid_unit_scale(model);
}

/// Bytes that the arrays of the new grid take.
double bytes_needed(const GridModel& source, const SubdivideRequest& request, const GridSize& size)
{
    double bytes_per_cell = 8 * sizeof(double) + sizeof(std::uint8_t);
    if (request.copy_properties)
        for (const PropertyData& property : source.properties)
            bytes_per_cell +=
                std::visit([](const auto& v) { return static_cast<double>(sizeof(v[0])); }, property.values);
    bytes_per_cell += static_cast<double>(source.regions.size());
    return bytes_per_cell * static_cast<double>(size[0]) * static_cast<double>(size[1]) * static_cast<double>(size[2]);
}

SubdivideRequest read_request(const Call& call, const CornerPointGrid& source)
{
    SubdivideRequest request;
    request.axis = axis_of_direction(call);
    request.divisions = read_sections(call);
    request.percent = call.flag("percent_cell_thickness");
    request.vertical = call.flag("vertical_cell_thickness");
    request.model_info = call.flag("model_info");
    request.thickness_unit = unit_in_grid(source.model(), request.axis);
    read_carry_options(call, source, request);
    return request;
}

void run(Call& call)
{
    const CornerPointGrid& source = grid_of(call, "sgrid");
    const SubdivideRequest request = read_request(call, source);
    SubdivideReport result;
    GridModel fine = at_keyword(call, "sections", [&] {
        const GridSize size = subdivided_size(source.header().size, request);
        if (bytes_needed(source.model(), request, size) > static_cast<double>(model_memory_limit()))
            throw ModelError("a grid of " + size_text(size) + " cells asks for more memory than the " +
                             format_general(static_cast<double>(model_memory_limit()), 4) +
                             " bytes that a model may take");
        return subdivide_sections(source.model(), request, result, call.progress_check());
    });
    add_made_grid(call, source, std::move(fine));
    report(call, call.text("name"), result);
}

const VerbRegistration registration{
    {.name = "sgrid_subdivide_multiple_sections",
     .summary = "Makes a grid in which cell sections along one axis are divided into several thinner ones.",
     .keywords = {{.name = "name", .kind = ValueKind::NewName, .meaning = "the new grid", .required = true},
                  {.name = "sgrid",
                   .kind = ValueKind::Object,
                   .meaning = "the grid to subdivide",
                   .required = true,
                   .object_type = "SGrid"},
                  {.name = "direction",
                   .kind = ValueKind::Choice,
                   .meaning = "axis along which sections are divided (I, J, K)",
                   .required = true,
                   .choices = {axis_directions.begin(), axis_directions.end()}},
                  {.name = "sections",
                   .kind = ValueKind::Text,
                   .meaning = "groups of section (0-based), cells added, layering (proportional, parallel_to_base, "
                              "parallel_to_top; along I and J base and top are the minus and the plus side) and "
                              "thickness or width (empty: even division), all joined by +",
                   .required = true,
                   .unit = "project's vertical unit along K, horizontal unit along I and J"},
                  {.name = "copy_properties",
                   .kind = ValueKind::Flag,
                   .meaning = "whether properties pass on",
                   .default_value = "0"},
                  {.name = "properties",
                   .kind = ValueKind::NameList,
                   .meaning = "properties to copy; absent: all",
                   .may_be_empty = true},
                  {.name = "copy_fb_regions",
                   .kind = ValueKind::Flag,
                   .meaning = "whether regions of the fault blocks are made",
                   .default_value = "0"},
                  {.name = "copy_regions",
                   .kind = ValueKind::Flag,
                   .meaning = "whether user regions pass on; model regions always do",
                   .default_value = "0"},
                  {.name = "regions",
                   .kind = ValueKind::NameList,
                   .meaning = "regions to copy; absent: all",
                   .may_be_empty = true},
                  {.name = "copy_style",
                   .kind = ValueKind::Flag,
                   .meaning = "whether the grid's style passes on",
                   .default_value = "0"},
                  {.name = "vertical_cell_thickness",
                   .kind = ValueKind::Flag,
                   .meaning = "along K: whether thickness is measured vertically, else along the pillar",
                   .default_value = "0"},
                  {.name = "percent_cell_thickness",
                   .kind = ValueKind::Flag,
                   .meaning = "whether thickness is percent of the original cell's",
                   .default_value = "0"},
                  {.name = "model_info",
                   .kind = ValueKind::Flag,
                   .meaning = "whether K surfaces are laid out anew from the stratigraphic layers",
                   .default_value = "0"}},
     .run = run}};

} // namespace

} // namespace lodex
