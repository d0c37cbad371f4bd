#include "Merge.h"

#include "ArrayMaker.h"
#include "CellGeometry.h"
#include "FaultBlocks.h"
#include "LargeArray.h"
#include "Layering.h"
#include "MergeBlocks.h"
#include "MergePlan.h"
#include "PropertyTools.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <span>
#include <type_traits>

namespace lodex {

namespace {

// Pillars of the new grid: those at the ends of the groups, in the width they came in.
RealArray kept_pillars(const GridModel& source, const MergePlans& plans)
{
    const auto boundaries = [](const AxisPlan& plan) {
        std::vector<std::int64_t> list;
        for (const IndexRange& group : plan.groups)
            list.push_back(group.first);
        list.push_back(plan.groups.back().last + 1);
        return list;
    };
    return source.coord.visit([&](auto in) {
        using Value = std::remove_const_t<typename decltype(in)::element_type>;
        const auto along_i = boundaries(plans[0]);
        const auto along_j = boundaries(plans[1]);
        std::vector<Value> out;
        out.reserve(6 * along_i.size() * along_j.size());
        for (const std::int64_t j : along_j)
            for (const std::int64_t i : along_i) {
                const auto* const pillar = in.data() + 6 * (i + (source.size[0] + 1) * j);
                out.insert(out.end(), pillar, pillar + 6);
            }
        return RealArray(std::move(out));
    });
}

// Undefined discrete values were left open until it was known that there are any.
void mark_undefined(const GridModel& source, GridModel& result, const MergePlans& plans)
{
    for (PropertyData& property : result.properties) {
        if (!property.discrete() || property.on_points)
            continue;
        property.no_data = source.find_property(property.name)->no_data;
        const auto undefined = static_cast<std::int32_t>(undefined_value(property));
        auto& values = std::get<std::vector<std::int32_t>>(property.values);
        for (std::int64_t k = 0; k < result.size[2]; ++k)
            for (std::int64_t j = 0; j < result.size[1]; ++j)
                for (std::int64_t i = 0; i < result.size[0]; ++i) {
                    const auto cell = static_cast<std::size_t>(result.cell_index(i, j, k));
                    if (!result.active[cell] && plans[0].length(i) * plans[1].length(j) * plans[2].length(k) > 1)
                        values[cell] = undefined;
                }
    }
}

GridModel merge_by_plans(const GridModel& source, const MergePlans& plans, const MergeOptions& options,
                         const std::vector<LayerSurface>* surfaces, MergeReport& report, const ProgressCheck& progress)
{
    const bool shares = options.region_mode == RegionMode::CellShare || options.region_mode == RegionMode::VolumeShare;
    if (shares && !(options.percentile >= 0 && options.percentile <= 100))
        throw ModelError(fmt::format("percentile {} does not lie between 0 and 100", options.percentile));
    check_progress(progress, 0);

    GridModel result;
    result.size = size_of(plans);
    choose_items(source, options, result);
    const auto cells = static_cast<std::size_t>(result.cells());
    report.size_before = source.size;
    report.size_after = result.size;

    std::vector<float> narrow;
    std::vector<double> wide;
    const bool is_double = source.zcorn.is_double() || surfaces;
    ArrayMaker maker;
    const auto& stop = maker.stop();
    maker.add([&] {
        if (is_double)
            wide = make_array<double>(8 * cells, stop);
        else
            narrow = make_array<float>(8 * cells, stop);
    });
    maker.add([&] { result.active = make_array<std::uint8_t>(cells, stop); });
    for (PropertyData& property : result.properties) {
        const PropertyData& from = *source.find_property(property.name);
        if (property.on_points)
            maker.add([&] {
                property.values = carried_points(source, from, plans[0].groups, plans[1].groups, plans[2].groups);
            });
        else
            maker.add([&property, &from, &stop, cells] {
                std::visit(
                    [&](const auto& v) {
                        using Value = typename std::remove_cvref_t<decltype(v)>::value_type;
                        property.values = make_array<Value>(cells, stop);
                    },
                    from.values);
            });
    }
    for (RegionData& region : result.regions)
        maker.add([&] { region.flags = make_array<std::uint8_t>(cells, stop); });
    maker.run(progress);

    MergeJob job{source, result, std::span(narrow), plans, options.percentile, surfaces, {}, {}};
    if (is_double)
        job.depths = std::span(wide);
    for (PropertyData& property : result.properties)
        if (!property.on_points)
            job.properties.push_back({source.find_property(property.name), &property});
    for (RegionData& region : result.regions) {
        const bool ranked_only_for_users = region.model && options.region_mode == RegionMode::MostFrequent;
        job.regions.push_back({source.find_region(region.name)->flags.data(), region.flags.data(),
                               ranked_only_for_users ? RegionMode::Any : options.region_mode});
    }
    const double end_of_merge = options.copy_fault_blocks ? 0.9 : 1.0;
    const MergeSums sums = merge_cells(job, partial_progress(progress, 0, end_of_merge));
    sums.write(report);
    report.merged_cells = sums.merged;
    report.gave_way = sums.gave_way;
    report.undefined = sums.undefined;
    result.zcorn = is_double ? RealArray(std::move(wide)) : RealArray(std::move(narrow));
    result.coord = kept_pillars(source, plans);
    if (report.undefined > 0)
        mark_undefined(source, result, plans);

    const std::array<std::vector<IndexRange>, 3> ranges{plans[0].groups, plans[1].groups, plans[2].groups};
    result.layers = carried_layers(source.layers, ranges[2], report.warnings);
    result.faults = carried_faults(source.faults, source.size, ranges, report.dropped_faults);
    if (report.dropped_faults > 0)
        report.warnings.push_back(
            fmt::format("{} fault segments lie inside merged cells and are left out", report.dropped_faults));
    result.kept = carried_keywords(source, result.size, report.warnings);
    result.frame = source.frame;
    result.records = derived_records(source, {source.id, options.source_name, source.size, ranges});
    if (options.copy_fault_blocks)
        replace_regions(result, fault_block_regions(result, -1, partial_progress(progress, end_of_merge, 1)));
    return result;
}

} // namespace

GridModel merge_sections(const GridModel& source, const MergeRequest& request, MergeReport& report,
                         const ProgressCheck& progress)
{
    check_arrays(source);
    report = {};
    const std::vector<KeptRun> runs = checked_runs(source.size, request);
    MergePlans plans;
    for (int axis = 0; axis < 3; ++axis)
        plans[static_cast<std::size_t>(axis)] =
            make_plan(source.size[static_cast<std::size_t>(axis)],
                      axis == request.axis ? std::span<const KeptRun>(runs) : std::span<const KeptRun>());

    std::vector<LayerSurface> surfaces;
    const bool no_layers = request.model_info && source.layers.empty();
    if (no_layers)
        report.warnings.emplace_back("the grid has no layers: the K surfaces are those of the old cells");
    const bool model_info = request.model_info && !no_layers && request.axis == 2 && !runs.empty();
    if (model_info)
        surfaces = layer_surfaces(source, request.depth_unit, report.warnings);
    return merge_by_plans(source, plans, request, model_info ? &surfaces : nullptr, report, progress);
}

GridModel apply_coarsening(const GridModel& source, std::span<const GridModification> modifications,
                           const MergeOptions& options, MergeReport& report, const ProgressCheck& progress)
{
    check_arrays(source);
    report = {};
    const auto sections = merge_sections_of(modifications, source.size);
    MergePlans plans;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        std::vector<KeptRun> runs;
        for (const IndexRange& run : sections[axis])
            runs.push_back({run, run.first});
        plans[axis] = make_plan(source.size[axis], runs);
    }
    return merge_by_plans(source, plans, options, nullptr, report, progress);
}

} // namespace lodex
