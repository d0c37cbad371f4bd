#include "Subdivide.h"

#include "ArrayMaker.h"
#include "CellGeometry.h"
#include "FaultBlocks.h"
#include "Layering.h"
#include "ParallelBlocks.h"
#include "SubdivideBlocks.h"
#include "SubdividePillars.h"
#include "SubdividePlan.h"

#include <fmt/format.h>

#include <algorithm>
#include <atomic>

namespace lodex {

namespace {

// Ordinary pages, not large ones: those come quickly only while the system has some at hand. A virtual machine that
// gives its free memory back has to fetch each one first, which took five times as long.
template <class T> void make_zeros(ArrayMaker& maker, std::vector<T>& array, std::size_t size)
{
    maker.add([&stop = maker.stop(), &array, size] {
        array.reserve(size);
        constexpr std::size_t step = (std::size_t{1} << 24) / sizeof(T);
        while (array.size() < size && !stop.load(std::memory_order_relaxed))
            array.resize(std::min(size, array.size() + step));
    });
}

} // namespace

GridModel subdivide_sections(const GridModel& source, const SubdivideRequest& request, SubdivideReport& report,
                             const ProgressCheck& progress)
{
    check_arrays(source);
    report = {};
    GridModel result;
    result.size = subdivided_size(source.size, request);
    choose_items(source, request, result);
    report.size_before = source.size;
    report.size_after = result.size;
    const auto along = [&](int axis) {
        const std::int64_t size = source.size[static_cast<std::size_t>(axis)];
        return axis == request.axis ? AxisDivision(size, request) : AxisDivision(size);
    };
    const std::array<AxisDivision, 3> divisions{along(0), along(1), along(2)};
    const std::array<std::vector<IndexRange>, 3> ranges{divisions[0].ranges(), divisions[1].ranges(),
                                                        divisions[2].ranges()};
    std::vector<LayerSurface> surfaces;
    if (request.model_info && source.layers.empty())
        report.warnings.emplace_back("the grid has no layers: the K surfaces are those of the old cells");
    else if (request.model_info && request.axis == 2 && !request.divisions.empty())
        surfaces = layer_surfaces(source, request.depth_unit, report.warnings);
    check_progress(progress, 0);

    const auto cells = static_cast<std::size_t>(result.cells());
    std::vector<double> depths;
    ArrayMaker maker;
    make_zeros(maker, depths, 8 * cells);
    make_zeros(maker, result.active, cells);
    for (PropertyData& property : result.properties) {
        const PropertyData& from = *source.find_property(property.name);
        if (property.on_points)
            maker.add([&source, &property, &from, &request, &ranges] {
                property.values =
                    divided_points(source, from, request.axis, ranges[static_cast<std::size_t>(request.axis)]);
            });
        else
            std::visit(
                [&](const auto& values) {
                    using Values = std::remove_cvref_t<decltype(values)>;
                    make_zeros(maker, property.values.emplace<Values>(), cells);
                },
                from.values);
    }
    for (RegionData& region : result.regions)
        make_zeros(maker, region.flags, cells);
    maker.run(progress);

    constexpr double end_of_pillars = 0.1;
    const double end_of_cells = request.copy_fault_blocks ? 0.9 : 1.0;
    result.coord = subdivided_pillars(source, request.axis, divisions[static_cast<std::size_t>(request.axis)],
                                      partial_progress(progress, 0, end_of_pillars));
    SubdivideJob job{source, result, depths, request.axis, divisions, !request.vertical, nullptr, {}, {}};
    if (!surfaces.empty())
        job.surfaces = &surfaces;
    for (PropertyData& property : result.properties)
        if (!property.on_points)
            job.properties.push_back({source.find_property(property.name), &property});
    for (RegionData& region : result.regions)
        job.regions.push_back({source.find_region(region.name)->flags.data(), region.flags.data()});
    const SubdivideSums sums = subdivide_cells(job, partial_progress(progress, end_of_pillars, end_of_cells));
    sums.write(report);
    report.divided_cells = sums.divided;
    report.pinched = sums.pinched;
    result.zcorn = RealArray(std::move(depths));

    std::int64_t dropped = 0;
    result.layers = carried_layers(source.layers, ranges[2], report.warnings);
    result.faults = divided_faults(source.faults, source.size, ranges, dropped);
    if (dropped > 0)
        report.warnings.push_back(fmt::format("{} fault segments lie outside of the grid and are left out", dropped));
    result.kept = carried_keywords(source, result.size, report.warnings);
    result.frame = source.frame;
    result.records = derived_records(source, {source.id, request.source_name, source.size, ranges});
    if (request.copy_fault_blocks)
        replace_regions(result, fault_block_regions(result, -1, partial_progress(progress, end_of_cells, 1)));
    return result;
}

} // namespace lodex
