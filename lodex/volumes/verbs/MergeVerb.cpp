#include "VerbTools.h"

#include "lodex/utils/Numbers.h"
#include "lodex/volumes/model/Merge.h"

namespace lodex {

namespace {

/// How much the bulk volume changed, in total and cell by cell.
void report(Call& call, const std::string& name, const MergeReport& result)
{
    report_cells_and_volumes(call, name, result, "merged_cells", result.merged_cells, "single cells differ by");
    call.count("kept_sections_that_gave_way", static_cast<double>(result.gave_way));
    call.count("undefined_cells", static_cast<double>(result.undefined));
    if (result.gave_way > 0)
        call.info(std::to_string(result.gave_way) + " cells took their values from the nearest active section");
    for (const std::string& warning : result.warnings)
        call.warn(warning);
}

MergeRequest read_request(const Call& call, const CornerPointGrid& source)
{
    MergeRequest request;
    request.axis = axis_of_direction(call);

    const std::vector<long> bounds = call.integers("sections");
    if (bounds.size() % 2 != 0)
        call.fail("\"sections\" holds " + std::to_string(bounds.size()) + " numbers; expected pairs of first and last", "sections");
    for (std::size_t i = 0; i < bounds.size(); i += 2)
        request.sections.push_back({bounds[i], bounds[i + 1]});
    for (const long section : call.integers("property_sections"))
        request.property_sections.push_back(section);
    const std::size_t kept = request.property_sections.size();
    if (kept > 1 && kept != request.sections.size()) {
        call.fail("\"property_sections\" holds " + std::to_string(kept) + " numbers for " +
                      std::to_string(request.sections.size()) + " pairs; expected one for each or one for all",
                  "property_sections");
    }

    read_carry_options(call, source, request);
    request.region_mode = static_cast<RegionMode>(call.integer("region_mode"));
    if (request.region_mode == RegionMode::CellShare || request.region_mode == RegionMode::VolumeShare) {
        const auto percentile = parse_double(call.text("percentile"));
        if (!percentile || *percentile < 0 || *percentile > 100)
            call.fail("\"percentile\" is \"" + call.text("percentile") + "\"; expected 0 to 100", "percentile");
        request.percentile = *percentile;
    }
    request.model_info = call.flag("model_info");
    return request;
}

void run(Call& call)
{
    const CornerPointGrid& source = grid_of(call, "sgrid");
    const MergeRequest request = read_request(call, source);
    MergeReport result;
    GridModel merged = at_keyword(call, "sections", [&] {
        return merge_sections(source.model(), request, result, call.progress_check());
    });
    add_made_grid(call, source, std::move(merged));
    report(call, call.text("name"), result);
}

const VerbRegistration registration{
    {.name = "sgrid_merge_multiple_sections",
     .summary = "Makes a grid in which runs of cell sections along one axis are merged into one section each.",
     .keywords = {{.name = "name", .kind = ValueKind::NewName, .meaning = "the new grid", .required = true},
                  {.name = "sgrid", .kind = ValueKind::Object, .meaning = "the grid to merge", .required = true,
                   .object_type = "SGrid"},
                  {.name = "direction", .kind = ValueKind::Choice, .meaning = "axis along which sections are merged (I, J, K)",
                   .required = true, .choices = {axis_directions.begin(), axis_directions.end()}},
                  {.name = "sections", .kind = ValueKind::IntegerList,
                   .meaning = "pairs of first and last section, 0-based; none makes a plain copy", .required = true,
                   .may_be_empty = true},
                  {.name = "copy_properties", .kind = ValueKind::Flag, .meaning = "whether properties pass on",
                   .default_value = "0"},
                  {.name = "property_sections", .kind = ValueKind::IntegerList,
                   .meaning = "section whose values a pair keeps, one for each pair or one for all; -1: the first",
                   .may_be_empty = true, .min = -1},
                  {.name = "properties", .kind = ValueKind::NameList, .meaning = "properties to copy; absent: all",
                   .may_be_empty = true},
                  {.name = "copy_fb_regions", .kind = ValueKind::Flag,
                   .meaning = "whether regions of the fault blocks are made", .default_value = "0"},
                  {.name = "copy_regions", .kind = ValueKind::Flag,
                   .meaning = "whether user regions pass on; model regions always do", .default_value = "0"},
                  {.name = "regions", .kind = ValueKind::NameList, .meaning = "regions to copy; absent: all",
                   .may_be_empty = true},
                  {.name = "region_mode", .kind = ValueKind::Integer,
                   .meaning = "when a merged cell is in a region: 0 any of its cells is, 1 share of cells, 2 share of "
                              "volume, 3 the most frequent region",
                   .default_value = "0", .min = 0, .max = 3},
                  {.name = "percentile", .kind = ValueKind::Text,
                   .meaning = "least share in modes 1 and 2, 0 to 100; not looked at in the others", .may_be_empty = true,
                   .unit = "percent", .default_value = "0"},
                  {.name = "copy_style", .kind = ValueKind::Flag, .meaning = "whether the grid's style passes on",
                   .default_value = "0"},
                  {.name = "model_info", .kind = ValueKind::Flag,
                   .meaning = "whether K surfaces are laid out anew from the stratigraphic layers", .default_value = "0"}},
     .run = run}};

} // namespace

} // namespace lodex
