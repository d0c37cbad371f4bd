#include "Subdivide.h"

#include "CellGeometry.h"
#include "FaultBlocks.h"
#include "Layering.h"
#include "MergeCarry.h"
#include "ParallelBlocks.h"
#include "SubdivideBlocks.h"
#include "SubdividePillars.h"
#include "SubdividePlan.h"

#include <fmt/format.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <future>

namespace lodex {

namespace {

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

// The arrays of a new grid, made side by side: most of the time goes into touching their pages for the first time.
class ArrayMaker {
public:
    /// The empty `array` gets `size` zeros when run() is called.
    template <class T> void add(std::vector<T>& array, std::size_t size)
    {
        work_.emplace_back([this, &array, size] {
            array.reserve(size);
            // Ordinary pages, not large ones: those come quickly only while the system has some at hand. A virtual
            // machine that gives its free memory back has to fetch each one first, which took five times as long.
            constexpr std::size_t step = (std::size_t{1} << 24) / sizeof(T);
            while (array.size() < size && !stop_.load(std::memory_order_relaxed))
                array.resize(std::min(size, array.size() + step));
        });
    }
    void add(std::function<void()> work) { work_.push_back(std::move(work)); }

    /// On other threads, so that this one can ask for the user's wish meanwhile. Throws Cancelled.
    void run(const ProgressCheck& progress)
    {
        auto made = std::async(std::launch::async, [this] {
            tbb::parallel_for(std::size_t{0}, work_.size(), [this](std::size_t n) { work_[n](); });
        });
        constexpr std::chrono::milliseconds interval(20);
        while (made.wait_for(interval) != std::future_status::ready)
            if (progress && !stop_ && !progress(0))
                stop_ = true;
        made.get();
        if (stop_)
            throw Cancelled{};
    }

private:
    std::atomic<bool> stop_ = false;
    std::vector<std::function<void()>> work_;
};

// Properties and regions that pass on, without values yet.
void choose_items(const GridModel& source, const SubdivideRequest& request, GridModel& result)
{
    for (const PropertyData& p : source.properties)
        if (chosen(request.copy_properties, request.properties, p.name))
            result.properties.push_back({p.name, p.unit, {}, p.no_data, p.code_names, p.on_points});
    for (const RegionData& region : source.regions)
        if (region.model || chosen(request.copy_regions, request.regions, region.name))
            result.regions.push_back({region.name, {}, region.model});
}

void fill_report(SubdivideReport& report, const SubdivideSums& sums)
{
    report.active_before = sums.cells_before;
    report.active_after = sums.cells_after;
    report.bulk_volume_before = sums.active_before.value();
    report.bulk_volume_after = sums.active_after.value();
    report.total_volume_before = sums.total_before.value();
    report.total_volume_after = sums.total_after.value();
    report.max_relative_difference = sums.max_relative;
    report.mean_relative_difference = sums.compared ? sums.relative.value() / static_cast<double>(sums.compared) : 0;
    report.divided_cells = sums.divided;
    report.pinched = sums.pinched;
}

} // namespace

GridModel subdivide_sections(const GridModel& source, const SubdivideRequest& request, SubdivideReport& report,
                             const ProgressCheck& progress)
{
    check_arrays(source);
    report = {};
    GridModel result;
    result.size = subdivided_size(source.size, request);
    check_names(request.copy_properties, request.properties, source.properties, "property");
    check_names(request.copy_regions, request.regions, source.regions, "region");
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

    choose_items(source, request, result);
    const auto cells = static_cast<std::size_t>(result.cells());
    std::vector<double> depths;
    ArrayMaker maker;
    maker.add(depths, 8 * cells);
    maker.add(result.active, cells);
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
                    maker.add(property.values.emplace<Values>(), cells);
                },
                from.values);
    }
    for (RegionData& region : result.regions)
        maker.add(region.flags, cells);
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
    fill_report(report, subdivide_cells(job, partial_progress(progress, end_of_pillars, end_of_cells)));
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
