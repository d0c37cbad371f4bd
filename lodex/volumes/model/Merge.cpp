#include "Merge.h"

#include "CellGeometry.h"
#include "FaultBlocks.h"
#include "LargeArray.h"
#include "Layering.h"
#include "MergeCarry.h"
#include "PropertyTools.h"
#include "Summation.h"
#include "VolumeRows.h"

#include <fmt/format.h>
#include <tbb/enumerable_thread_specific.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstring>
#include <functional>
#include <future>
#include <limits>
#include <numeric>

namespace lodex {

std::int64_t kept_section(const IndexRange& run, std::int64_t wanted)
{
    if (wanted < 0)
        return run.first;
    const std::int64_t length = run.last - run.first + 1;
    return run.first + ((wanted - run.first) % length + length) % length;
}

namespace {

// A run of sections and the one whose values it keeps.
struct KeptRun {
    IndexRange run;
    std::int64_t kept = 0;
};

// What happens along one axis: for every new index the old ones it is made of, and the order in which they are asked
// for a value.
struct AxisPlan {
    std::vector<IndexRange> groups;
    std::vector<std::int64_t> order;       // old indices of all groups, group by group, the kept one first
    std::vector<std::int64_t> order_start; // where each group's order starts, and the end

    [[nodiscard]] std::int64_t size() const { return static_cast<std::int64_t>(groups.size()); }
    [[nodiscard]] const IndexRange& group(std::int64_t n) const { return groups[static_cast<std::size_t>(n)]; }
    [[nodiscard]] std::int64_t length(std::int64_t n) const { return group(n).last - group(n).first + 1; }
    [[nodiscard]] std::span<const std::int64_t> candidates(std::int64_t n) const
    {
        const auto at = static_cast<std::size_t>(n);
        return std::span(order).subspan(static_cast<std::size_t>(order_start[at]),
                                        static_cast<std::size_t>(order_start[at + 1] - order_start[at]));
    }
    [[nodiscard]] std::int64_t kept(std::int64_t n) const { return candidates(n).front(); }

    void add(const KeptRun& run)
    {
        if (order_start.empty())
            order_start.push_back(0);
        groups.push_back(run.run);
        order.push_back(run.kept);
        // Outwards from the kept section; on a tie the lower index comes first.
        for (std::int64_t step = 1; step <= run.run.last - run.run.first; ++step) {
            if (run.kept - step >= run.run.first)
                order.push_back(run.kept - step);
            if (run.kept + step <= run.run.last)
                order.push_back(run.kept + step);
        }
        order_start.push_back(static_cast<std::int64_t>(order.size()));
    }
};

AxisPlan make_plan(std::int64_t size, std::span<const KeptRun> ascending)
{
    AxisPlan plan;
    std::int64_t next = 0;
    const auto singles_until = [&](std::int64_t end) {
        for (; next < end; ++next)
            plan.add({{next, next}, next});
    };
    for (const KeptRun& run : ascending) {
        singles_until(run.run.first);
        plan.add(run);
        next = run.run.last + 1;
    }
    singles_until(size);
    return plan;
}

using Plans = std::array<AxisPlan, 3>;

GridSize size_of(const Plans& plans)
{
    return {plans[0].size(), plans[1].size(), plans[2].size()};
}

// The runs of a request in ascending order, checked.
std::vector<KeptRun> checked_runs(const GridModel& source, const MergeRequest& request)
{
    if (request.axis < 0 || request.axis > 2)
        throw ModelError(fmt::format("there is no axis {}", request.axis));
    const std::size_t given = request.property_sections.size();
    if (given > 1 && given != request.sections.size())
        throw ModelError(
            fmt::format("{} property sections do not fit {} pairs of sections", given, request.sections.size()));
    const std::int64_t size = source.size[static_cast<std::size_t>(request.axis)];
    const char letter = axis_letter(request.axis);
    std::vector<KeptRun> runs;
    for (std::size_t n = 0; n < request.sections.size(); ++n) {
        const IndexRange& run = request.sections[n];
        if (run.first > run.last)
            throw ModelError(
                fmt::format("sections {}+{} along {}: the first lies behind the last", run.first, run.last, letter));
        if (run.first < 0 || run.last >= size)
            throw ModelError(fmt::format("sections {}+{} along {}: the grid has sections 0 to {}", run.first, run.last,
                                         letter, size - 1));
        const std::int64_t wanted = given == 0 ? -1 : request.property_sections[given == 1 ? 0 : n];
        if (wanted < -1)
            throw ModelError(
                fmt::format("property section {} of sections {}+{} is below -1", wanted, run.first, run.last));
        runs.push_back({run, kept_section(run, wanted)});
    }
    std::ranges::sort(runs, {}, [](const KeptRun& run) { return run.run.first; });
    for (std::size_t n = 1; n < runs.size(); ++n)
        if (runs[n].run.first <= runs[n - 1].run.last)
            throw ModelError(fmt::format("sections {}+{} and {}+{} along {} overlap", runs[n - 1].run.first,
                                         runs[n - 1].run.last, runs[n].run.first, runs[n].run.last, letter));
    return runs;
}

// Where a K surface of the new grid comes from: an old surface as it is, or a place within a layer.
struct Surface {
    bool computed = false;
    std::int64_t top_k = 0, base_k = 0; // first and last K layer of the layer that holds it
    double fraction = 0;                // Proportional: share of the layer's thickness from its top
    double distance = 0;                // else: depth below the top or height above the base
    Lodex::LayerInfo::LayeringStyle style = Lodex::LayerInfo::Proportional;

    [[nodiscard]] double depth(double top, double base) const
    {
        const double thickness = base - top;
        // A column may stand on its head; the distance is then laid off the other way.
        const double step = std::copysign(std::min(distance, std::abs(thickness)), thickness);
        switch (style) {
        case Lodex::LayerInfo::ParallelToTop: return top + step;
        case Lodex::LayerInfo::ParallelToBase: return base - step;
        default: return top + fraction * thickness;
        }
    }
};

struct LayerSurfaces {
    Surface top, base;
};

// The two K surfaces of every new K layer by the layering of the source.
std::vector<LayerSurfaces> lay_out_surfaces(const GridModel& source, const AxisPlan& plan, double depth_unit,
                                            std::vector<std::string>& warnings)
{
    const std::vector<std::int64_t> starts = layer_starts(source.layers);
    std::vector<bool> warned(source.layers.size());
    // The surface on top of K layer k of the old grid, 0 < k < nk, seen from a neighbouring K layer.
    const auto surface_at = [&](std::int64_t k) {
        const auto unit = static_cast<std::size_t>(layer_index(source.layers, k));
        const LayerData& layer = source.layers[unit];
        const std::int64_t above = k - starts[unit];
        Surface surface;
        if (above == 0)
            return surface;
        surface.computed = true;
        surface.top_k = starts[unit];
        surface.base_k = starts[unit + 1] - 1;
        surface.style = layer.style;
        surface.fraction = static_cast<double>(above) / static_cast<double>(layer.nb_k_cells);
        const double thickness = static_cast<double>(layer.cell_thickness) * depth_unit;
        const bool from_top = layer.style == Lodex::LayerInfo::ParallelToTop;
        surface.distance = thickness * static_cast<double>(from_top ? above : layer.nb_k_cells - above);
        if (layer.style != Lodex::LayerInfo::Proportional && !(thickness > 0 && std::isfinite(thickness))) {
            if (!warned[unit])
                warnings.push_back(fmt::format("layer \"{}\" has no cell thickness: it is divided evenly", layer.unit));
            warned[unit] = true;
            surface.style = Lodex::LayerInfo::Proportional;
        }
        return surface;
    };
    std::vector<LayerSurfaces> result;
    for (const IndexRange& group : plan.groups) {
        LayerSurfaces surfaces;
        surfaces.top = surface_at(group.first);
        if (group.last + 1 < source.size[2])
            surfaces.base = surface_at(group.last + 1);
        result.push_back(surfaces);
    }
    return result;
}

struct PropertyJob {
    const PropertyData* in = nullptr;
    PropertyData* out = nullptr;
};

struct RegionJob {
    const std::uint8_t* in = nullptr;
    std::uint8_t* out = nullptr;
    RegionMode mode = RegionMode::Any;
};

struct Job {
    const GridModel& source;
    GridModel& result;
    const Plans& plans;
    std::vector<PropertyJob> properties; // those on cells
    std::vector<RegionJob> regions;
    double percentile = 0;
    const std::vector<LayerSurfaces>* surfaces = nullptr; // null: K surfaces are the old ones
};

// What a block adds to the report.
struct Partial {
    CompensatedSum active_before, total_before, active_after, total_after, relative;
    double max_relative = 0;
    std::int64_t cells_before = 0, cells_after = 0, compared = 0, merged = 0, gave_way = 0, undefined = 0;
};

struct Scratch {
    PillarRow back, front, new_back, new_front;
    std::vector<std::int64_t> places;    // of the new pillars within a row of old ones
    std::vector<std::int32_t> new_of;    // new cell of each old cell of the row
    std::vector<double> volumes, masked; // of a row of old cells
    // For each new K layer and each new cell of the row:
    std::vector<double> group_volumes;
    std::vector<std::uint8_t> group_active;
    std::vector<double> region_shares; // for each region: number or volume of the cells in it
    // For a row of new cells:
    std::vector<double> new_volumes, differences;
    std::vector<std::int64_t> picks; // old cell that gives the value, -1: none
};

template <class ZIn, class ZOut> class BlockMerger {
public:
    BlockMerger(const Job& job, std::span<const ZIn> depths_in, std::span<ZOut> depths_out)
        : job_(job)
        , in_(depths_in)
        , out_(depths_out)
        , plan_i_(job.plans[0])
        , plan_j_(job.plans[1])
        , plan_k_(job.plans[2])
        , i_merged_(plan_i_.size() != job.source.size[0])
    {
    }

    void run(const GridBlocks::Box& box, Scratch& s, Partial& sums) const
    {
        const GridSize& old_size = job_.source.size;
        const std::int64_t first = plan_i_.group(box.i.first).first;
        const std::int64_t old_width = plan_i_.group(box.i.last).last - first + 1;
        const std::int64_t width = box.width();
        const std::int64_t layers = box.k.last - box.k.first + 1;
        const auto cells = static_cast<std::size_t>(width * layers);

        s.places.clear();
        s.new_of.clear();
        for (std::int64_t n = box.i.first; n <= box.i.last; ++n) {
            s.places.push_back(plan_i_.group(n).first - first);
            s.new_of.insert(s.new_of.end(), static_cast<std::size_t>(plan_i_.length(n)),
                            static_cast<std::int32_t>(n - box.i.first));
        }
        s.places.push_back(old_width);
        s.volumes.resize(static_cast<std::size_t>(old_width));
        s.masked.resize(static_cast<std::size_t>(old_width));
        s.new_volumes.resize(static_cast<std::size_t>(width));
        s.differences.resize(static_cast<std::size_t>(width));
        s.picks.resize(static_cast<std::size_t>(width));

        const auto load_front = [&](std::int64_t j) {
            s.front.load(job_.source.coord, first + (old_size[0] + 1) * j, old_width + 1);
        };
        load_front(plan_j_.group(box.j.first).first);
        for (std::int64_t new_j = box.j.first; new_j <= box.j.last; ++new_j) {
            s.group_volumes.assign(cells, 0);
            s.group_active.assign(cells, 0);
            s.region_shares.assign(cells * job_.regions.size(), 0);
            s.new_back.pick(s.front, s.places);
            for (std::int64_t j = plan_j_.group(new_j).first; j <= plan_j_.group(new_j).last; ++j) {
                s.back.swap(s.front);
                load_front(j + 1);
                for (std::int64_t new_k = box.k.first; new_k <= box.k.last; ++new_k)
                    for (std::int64_t k = plan_k_.group(new_k).first; k <= plan_k_.group(new_k).last; ++k)
                        collect(first, old_width, width, j, k, new_k - box.k.first, cells, s, sums);
            }
            s.new_front.pick(s.front, s.places);
            for (std::int64_t new_k = box.k.first; new_k <= box.k.last; ++new_k)
                emit(box.i.first, width, new_j, new_k, new_k - box.k.first, cells, s, sums);
        }
    }

private:
    // Adds a row of old cells to the groups it belongs to.
    void collect(std::int64_t first, std::int64_t old_width, std::int64_t width, std::int64_t j, std::int64_t k,
                 std::int64_t slot, std::size_t cells, Scratch& s, Partial& sums) const
    {
        const auto row = [&](int b, int c) {
            return in_.data() + depth_offset(job_.source.size, first, j, k, b, c);
        };
        const std::int64_t base = job_.source.cell_index(first, j, k);
        const std::uint8_t* const active = job_.source.active.data() + base;
        volume_row(old_width, s.back, s.front, row(0, 0), row(1, 0), row(0, 1), row(1, 1), s.volumes.data());
        std::int64_t active_cells = 0;
        for (std::int64_t i = 0; i < old_width; ++i) {
            const auto at = static_cast<std::size_t>(i);
            s.volumes[at] = std::abs(s.volumes[at]);
            s.masked[at] = active[i] ? s.volumes[at] : 0;
            active_cells += active[i] != 0;
        }
        sums.cells_before += active_cells;
        sums.total_before.add(pairwise_sum(s.volumes));
        sums.active_before.add(pairwise_sum(s.masked));

        double* const group_volumes = s.group_volumes.data() + slot * width;
        std::uint8_t* const group_active = s.group_active.data() + slot * width;
        add_row(old_width, s.new_of, s.volumes.data(), group_volumes);
        if (i_merged_)
            for (std::int64_t i = 0; i < old_width; ++i)
                group_active[s.new_of[static_cast<std::size_t>(i)]] |= active[i];
        else
            for (std::int64_t i = 0; i < old_width; ++i)
                group_active[i] |= active[i];

        for (std::size_t r = 0; r < job_.regions.size(); ++r) {
            const std::uint8_t* const flags = job_.regions[r].in + base;
            double* const shares = s.region_shares.data() + r * cells + static_cast<std::size_t>(slot * width);
            const bool by_volume = job_.regions[r].mode == RegionMode::VolumeShare;
            for (std::int64_t i = 0; i < old_width; ++i) {
                const auto at = static_cast<std::size_t>(i);
                s.masked[at] = flags[i] ? (by_volume ? s.volumes[at] : 1.0) : 0.0;
            }
            add_row(old_width, s.new_of, s.masked.data(), shares);
        }
    }

    void add_row(std::int64_t old_width, const std::vector<std::int32_t>& new_of, const double* values,
                 double* sums) const
    {
        if (i_merged_)
            for (std::int64_t i = 0; i < old_width; ++i)
                sums[new_of[static_cast<std::size_t>(i)]] += values[i];
        else
            for (std::int64_t i = 0; i < old_width; ++i)
                sums[i] += values[i];
    }

    // Writes a row of new cells.
    void emit(std::int64_t first, std::int64_t width, std::int64_t new_j, std::int64_t new_k, std::int64_t slot,
              std::size_t cells, Scratch& s, Partial& sums) const
    {
        const std::int64_t base = job_.result.cell_index(first, new_j, new_k);
        const double* const group_volumes = s.group_volumes.data() + slot * width;
        const std::uint8_t* const group_active = s.group_active.data() + slot * width;
        std::copy_n(group_active, width, job_.result.active.data() + base);
        const bool rows_merged = plan_j_.length(new_j) > 1 || plan_k_.length(new_k) > 1;

        emit_depths(first, width, new_j, new_k);
        emit_volumes(first, width, new_j, new_k, rows_merged, group_volumes, group_active, s, sums);
        if (rows_merged || i_merged_)
            emit_picked(first, width, new_j, new_k, rows_merged, group_active, base, s, sums);
        else
            for (const PropertyJob& property : job_.properties)
                copy_row(*property.in, *property.out,
                         job_.source.cell_index(first, plan_j_.group(new_j).first, plan_k_.group(new_k).first), base,
                         width);
        emit_regions(first, width, new_j, new_k, base, slot, cells, s);
    }

    void emit_depths(std::int64_t first, std::int64_t width, std::int64_t new_j, std::int64_t new_k) const
    {
        const IndexRange& group_j = plan_j_.group(new_j);
        const IndexRange& group_k = plan_k_.group(new_k);
        for (int c = 0; c < 2; ++c) {
            const std::int64_t k = c ? group_k.last : group_k.first;
            Surface surface;
            if (job_.surfaces) {
                const LayerSurfaces& both = (*job_.surfaces)[static_cast<std::size_t>(new_k)];
                surface = c ? both.base : both.top;
            }
            for (int b = 0; b < 2; ++b) {
                const std::int64_t j = b ? group_j.last : group_j.first;
                ZOut* const out = out_.data() + depth_offset(job_.result.size, first, new_j, new_k, b, c);
                const auto old_row = [&](std::int64_t row_k, int row_c) {
                    return in_.data() + depth_offset(job_.source.size, 0, j, row_k, b, row_c);
                };
                if (surface.computed) {
                    const ZIn* const top = old_row(surface.top_k, 0) + 2 * plan_i_.group(first).first;
                    const ZIn* const base = old_row(surface.base_k, 1) + 2 * plan_i_.group(first).first;
                    for (std::int64_t n = 0; n < 2 * width; ++n)
                        out[n] = static_cast<ZOut>(surface.depth(top[n], base[n]));
                }
                else if (!i_merged_) {
                    std::copy_n(old_row(k, c) + 2 * first, 2 * width, out);
                }
                else {
                    const ZIn* const row = old_row(k, c);
                    const IndexRange* const groups = plan_i_.groups.data() + first;
                    for (std::int64_t n = 0; n < width; ++n) {
                        out[2 * n] = row[2 * groups[n].first];
                        out[2 * n + 1] = row[2 * groups[n].last + 1];
                    }
                }
            }
        }
    }

    void emit_volumes(std::int64_t first, std::int64_t width, std::int64_t new_j, std::int64_t new_k, bool rows_merged,
                      const double* group_volumes, const std::uint8_t* group_active, Scratch& s, Partial& sums) const
    {
        const bool moved = job_.surfaces != nullptr;
        if (rows_merged || i_merged_ || moved) {
            const auto row = [&](int b, int c) {
                return out_.data() + depth_offset(job_.result.size, first, new_j, new_k, b, c);
            };
            volume_row(width, s.new_back, s.new_front, row(0, 0), row(1, 0), row(0, 1), row(1, 1),
                       s.new_volumes.data());
            for (double& volume : s.new_volumes)
                volume = std::abs(volume);
        }
        else {
            std::copy_n(group_volumes, width, s.new_volumes.begin());
        }
        std::int64_t compared = 0;
        double largest = 0;
        for (std::int64_t n = 0; n < width; ++n) {
            const double before = group_volumes[n];
            const double after = s.new_volumes[static_cast<std::size_t>(n)];
            const bool merged = rows_merged || (i_merged_ && plan_i_.length(first + n) > 1);
            const bool compare = (merged || moved) && group_active[n];
            const double relative = before > 0 ? std::abs(after - before) / before : (after > 0 ? 1.0 : 0.0);
            s.differences[static_cast<std::size_t>(n)] = compare ? relative : 0;
            largest = std::max(largest, compare ? relative : 0);
            compared += compare;
            sums.merged += merged;
        }
        sums.compared += compared;
        sums.max_relative = std::max(sums.max_relative, largest);
        sums.relative.add(pairwise_sum(s.differences));
        sums.total_after.add(pairwise_sum(s.new_volumes));
        std::int64_t active_cells = 0;
        for (std::int64_t n = 0; n < width; ++n) {
            const auto at = static_cast<std::size_t>(n);
            s.differences[at] = group_active[n] ? s.new_volumes[at] : 0;
            active_cells += group_active[n] != 0;
        }
        sums.cells_after += active_cells;
        sums.active_after.add(pairwise_sum(s.differences));
    }

    // Old cell that gives the values of a merged cell that has an active one.
    [[nodiscard]] std::int64_t search(std::int64_t i, std::int64_t j, std::int64_t k) const
    {
        for (const std::int64_t old_k : plan_k_.candidates(k))
            for (const std::int64_t old_j : plan_j_.candidates(j))
                for (const std::int64_t old_i : plan_i_.candidates(i)) {
                    const std::int64_t cell = job_.source.cell_index(old_i, old_j, old_k);
                    if (job_.source.active[static_cast<std::size_t>(cell)])
                        return cell;
                }
        return -1;
    }

    void emit_picked(std::int64_t first, std::int64_t width, std::int64_t new_j, std::int64_t new_k, bool rows_merged,
                     const std::uint8_t* group_active, std::int64_t base, Scratch& s, Partial& sums) const
    {
        const std::int64_t row = job_.source.cell_index(0, plan_j_.kept(new_j), plan_k_.kept(new_k));
        const std::uint8_t* const active = job_.source.active.data();
        const std::int64_t row_start = row + plan_i_.group(first).first;
        if (!i_merged_ && std::memchr(active + row_start, 0, static_cast<std::size_t>(width)) == nullptr) {
            for (const PropertyJob& property : job_.properties)
                copy_row(*property.in, *property.out, row_start, base, width);
            return;
        }
        for (std::int64_t n = 0; n < width; ++n) {
            const std::int64_t i = first + n;
            std::int64_t cell = row + plan_i_.kept(i);
            if (!active[cell] && (rows_merged || plan_i_.length(i) > 1)) {
                cell = group_active[n] ? search(i, new_j, new_k) : -1;
                ++(cell < 0 ? sums.undefined : sums.gave_way);
            }
            s.picks[static_cast<std::size_t>(n)] = cell;
        }
        for (const PropertyJob& property : job_.properties)
            std::visit(
                [&](auto& values) {
                    using Values = std::remove_reference_t<decltype(values)>;
                    using Value = typename Values::value_type;
                    const Value* const from = std::get<Values>(property.in->values).data();
                    // A discrete property's undefined value is found when the whole grid has been seen.
                    Value undefined{};
                    if constexpr (std::is_floating_point_v<Value>)
                        undefined = property.out->no_data ? static_cast<Value>(*property.out->no_data)
                                                          : std::numeric_limits<Value>::quiet_NaN();
                    for (std::int64_t n = 0; n < width; ++n) {
                        const std::int64_t cell = s.picks[static_cast<std::size_t>(n)];
                        values[static_cast<std::size_t>(base + n)] = cell < 0 ? undefined : from[cell];
                    }
                },
                property.out->values);
    }

    static void copy_row(const PropertyData& in, PropertyData& out, std::int64_t from, std::int64_t to,
                         std::int64_t count)
    {
        std::visit(
            [&](auto& values) {
                using Values = std::remove_reference_t<decltype(values)>;
                std::copy_n(std::get<Values>(in.values).data() + from, count, values.data() + to);
            },
            out.values);
    }

    void emit_regions(std::int64_t first, std::int64_t width, std::int64_t new_j, std::int64_t new_k, std::int64_t base,
                      std::int64_t slot, std::size_t cells, Scratch& s) const
    {
        const auto row_cells = static_cast<double>(plan_j_.length(new_j) * plan_k_.length(new_k));
        const double* const group_volumes = s.group_volumes.data() + slot * width;
        const auto shares = [&](std::size_t region) {
            return s.region_shares.data() + region * cells + static_cast<std::size_t>(slot * width);
        };
        // Largest number of cells that any competing region has in each new cell.
        std::vector<double>& most = s.differences;
        bool ranked = false;
        for (std::size_t r = 0; r < job_.regions.size(); ++r) {
            if (job_.regions[r].mode != RegionMode::MostFrequent)
                continue;
            for (std::int64_t n = 0; n < width; ++n) {
                double& top = most[static_cast<std::size_t>(n)];
                top = ranked ? std::max(top, shares(r)[n]) : shares(r)[n];
            }
            ranked = true;
        }
        for (std::size_t r = 0; r < job_.regions.size(); ++r) {
            const double* const share = shares(r);
            std::uint8_t* const out = job_.regions[r].out + base;
            const auto whole = [&](std::int64_t n) {
                return row_cells * static_cast<double>(plan_i_.length(first + n));
            };
            switch (job_.regions[r].mode) {
            case RegionMode::Any:
                for (std::int64_t n = 0; n < width; ++n)
                    out[n] = share[n] > 0;
                break;
            case RegionMode::CellShare:
                for (std::int64_t n = 0; n < width; ++n)
                    out[n] = share[n] > 0 && 100 * share[n] >= job_.percentile * whole(n);
                break;
            case RegionMode::VolumeShare:
                for (std::int64_t n = 0; n < width; ++n)
                    out[n] = group_volumes[n] > 0
                                 ? share[n] > 0 && 100 * share[n] >= job_.percentile * group_volumes[n]
                                 : flat_share(r, first + n, new_j, new_k) >= job_.percentile * whole(n);
                break;
            case RegionMode::MostFrequent:
                for (std::int64_t n = 0; n < width; ++n)
                    out[n] = share[n] > 0 && share[n] == most[static_cast<std::size_t>(n)];
                break;
            }
        }
    }

    // A group of flat cells has no volume to share: 100 times the number of its cells in the region, below any
    // percentile when there is none.
    [[nodiscard]] double flat_share(std::size_t region, std::int64_t i, std::int64_t j, std::int64_t k) const
    {
        std::int64_t count = 0;
        for (const std::int64_t old_k : plan_k_.candidates(k))
            for (const std::int64_t old_j : plan_j_.candidates(j))
                for (const std::int64_t old_i : plan_i_.candidates(i))
                    count += job_.regions[region].in[job_.source.cell_index(old_i, old_j, old_k)] != 0;
        return count > 0 ? 100 * static_cast<double>(count) : -1;
    }

    const Job& job_;
    std::span<const ZIn> in_;
    std::span<ZOut> out_;
    const AxisPlan& plan_i_;
    const AxisPlan& plan_j_;
    const AxisPlan& plan_k_;
    bool i_merged_;
};

// Boxes of new cells that hold some 65000 old ones. K layers lie far apart in memory: a box takes few of them, just
// enough to make the pillars' slopes worth working out, unless the layers are small.
GridBlocks merge_blocks(const GridSize& old_size, const GridSize& size)
{
    const auto new_steps = [&](std::size_t axis, std::int64_t old_cells) {
        return std::clamp<std::int64_t>(old_cells * size[axis] / old_size[axis], 1, size[axis]);
    };
    const auto old_cells = [&](std::size_t axis, std::int64_t step) {
        return std::max<std::int64_t>(step * old_size[axis] / size[axis], 1);
    };
    const std::int64_t i = new_steps(0, 4096);
    const std::int64_t k = new_steps(2, std::max<std::int64_t>(16, 65536 / (old_cells(0, i) * old_size[1])));
    const std::int64_t j = new_steps(1, 65536 / (old_cells(0, i) * old_cells(2, k)));
    return {size, {i, j, k}};
}

template <class ZIn, class ZOut>
std::vector<Partial> run_job(const Job& job, std::span<const ZIn> in, std::span<ZOut> out,
                             const ProgressCheck& progress)
{
    const GridBlocks blocks = merge_blocks(job.source.size, job.result.size);
    std::vector<Partial> sums(static_cast<std::size_t>(blocks.count()));
    const BlockMerger<ZIn, ZOut> merger(job, in, out);
    tbb::enumerable_thread_specific<Scratch> scratch;
    for_blocks(blocks.count(), progress, [&](std::int64_t block) {
        merger.run(blocks.box(block), scratch.local(), sums[static_cast<std::size_t>(block)]);
    });
    return sums;
}

void fill_report(MergeReport& report, std::span<const Partial> sums)
{
    Partial all;
    for (const Partial& part : sums) {
        all.active_before.add(part.active_before);
        all.total_before.add(part.total_before);
        all.active_after.add(part.active_after);
        all.total_after.add(part.total_after);
        all.relative.add(part.relative);
        all.max_relative = std::max(all.max_relative, part.max_relative);
        all.cells_before += part.cells_before;
        all.cells_after += part.cells_after;
        all.compared += part.compared;
        all.merged += part.merged;
        all.gave_way += part.gave_way;
        all.undefined += part.undefined;
    }
    report.active_before = all.cells_before;
    report.active_after = all.cells_after;
    report.bulk_volume_before = all.active_before.value();
    report.bulk_volume_after = all.active_after.value();
    report.total_volume_before = all.total_before.value();
    report.total_volume_after = all.total_after.value();
    report.max_relative_difference = all.max_relative;
    report.mean_relative_difference = all.compared ? all.relative.value() / static_cast<double>(all.compared) : 0;
    report.merged_cells = all.merged;
    report.gave_way = all.gave_way;
    report.undefined = all.undefined;
}

// Pillars of the new grid: those at the ends of the groups, in the width they came in.
RealArray kept_pillars(const GridModel& source, const Plans& plans)
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
void mark_undefined(const GridModel& source, GridModel& result, const Plans& plans)
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

template <class Item>
void check_names(const std::optional<std::vector<std::string>>& names, const std::vector<Item>& items,
                 std::string_view what)
{
    if (!names)
        return;
    for (const std::string& name : *names)
        if (std::ranges::find(items, name, &Item::name) == items.end())
            throw ModelError(fmt::format("the grid has no {} \"{}\"", what, name));
}

bool chosen(const std::optional<std::vector<std::string>>& names, const std::string& name)
{
    return !names || std::ranges::find(*names, name) != names->end();
}

GridModel merge_by_plans(const GridModel& source, const Plans& plans, const MergeOptions& options,
                         const std::vector<LayerSurfaces>* surfaces, MergeReport& report, const ProgressCheck& progress)
{
    const bool shares = options.region_mode == RegionMode::CellShare || options.region_mode == RegionMode::VolumeShare;
    if (shares && !(options.percentile >= 0 && options.percentile <= 100))
        throw ModelError(fmt::format("percentile {} does not lie between 0 and 100", options.percentile));
    if (options.copy_properties)
        check_names(options.properties, source.properties, "property");
    if (options.copy_regions)
        check_names(options.regions, source.regions, "region");
    check_progress(progress, 0);

    GridModel result;
    result.size = size_of(plans);
    const auto cells = static_cast<std::size_t>(result.cells());
    report.size_before = source.size;
    report.size_after = result.size;

    // Large arrays are made side by side: most of the time goes into touching their pages for the first time.
    std::vector<float> narrow;
    std::vector<double> wide;
    const bool is_double = source.zcorn.is_double() || surfaces;
    std::atomic<bool> stop = false;
    std::vector<std::function<void()>> allocations;
    allocations.emplace_back([&] {
        if (is_double)
            wide = make_array<double>(8 * cells, stop);
        else
            narrow = make_array<float>(8 * cells, stop);
    });
    allocations.emplace_back([&] { result.active = make_array<std::uint8_t>(cells, stop); });
    if (options.copy_properties)
        for (const PropertyData& property : source.properties)
            if (chosen(options.properties, property.name))
                result.properties.push_back(
                    {property.name, property.unit, {}, property.no_data, property.code_names, property.on_points});
    for (const RegionData& region : source.regions)
        if (region.model || (options.copy_regions && chosen(options.regions, region.name)))
            result.regions.push_back({region.name, {}, region.model});
    for (PropertyData& property : result.properties) {
        const PropertyData& from = *source.find_property(property.name);
        if (property.on_points)
            allocations.emplace_back([&] {
                property.values = carried_points(source, from, plans[0].groups, plans[1].groups, plans[2].groups);
            });
        else
            allocations.emplace_back([&property, &from, &stop, cells] {
                std::visit(
                    [&](const auto& v) {
                        property.values = make_array<typename std::remove_cvref_t<decltype(v)>::value_type>(cells, stop);
                    },
                    from.values);
            });
    }
    for (RegionData& region : result.regions)
        allocations.emplace_back([&] { region.flags = make_array<std::uint8_t>(cells, stop); });
    // On another thread, so that this one can ask for the user's wish meanwhile.
    auto made = std::async(std::launch::async, [&allocations] {
        tbb::parallel_for(std::size_t{0}, allocations.size(), [&](std::size_t n) { allocations[n](); });
    });
    constexpr std::chrono::milliseconds interval(20);
    while (made.wait_for(interval) != std::future_status::ready)
        if (progress && !stop && !progress(0))
            stop = true;
    made.get();
    if (stop)
        throw Cancelled{};

    Job job{source, result, plans, {}, {}, options.percentile, surfaces};
    for (PropertyData& property : result.properties)
        if (!property.on_points)
            job.properties.push_back({source.find_property(property.name), &property});
    for (RegionData& region : result.regions) {
        const bool ranked_only_for_users = region.model && options.region_mode == RegionMode::MostFrequent;
        job.regions.push_back({source.find_region(region.name)->flags.data(), region.flags.data(),
                               ranked_only_for_users ? RegionMode::Any : options.region_mode});
    }
    const double end_of_merge = options.copy_fault_blocks ? 0.9 : 1.0;
    const ProgressCheck merge_progress = partial_progress(progress, 0, end_of_merge);
    const std::vector<Partial> sums = source.zcorn.visit([&](auto in) {
        using In = std::remove_const_t<typename decltype(in)::element_type>;
        if constexpr (std::is_same_v<In, float>)
            if (!is_double)
                return run_job<float, float>(job, in, std::span(narrow), merge_progress);
        return run_job<In, double>(job, in, std::span(wide), merge_progress);
    });
    fill_report(report, sums);
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
    const std::vector<KeptRun> runs = checked_runs(source, request);
    Plans plans;
    for (int axis = 0; axis < 3; ++axis)
        plans[static_cast<std::size_t>(axis)] =
            make_plan(source.size[static_cast<std::size_t>(axis)],
                      axis == request.axis ? std::span<const KeptRun>(runs) : std::span<const KeptRun>());

    std::vector<LayerSurfaces> surfaces;
    const bool no_layers = request.model_info && source.layers.empty();
    if (no_layers)
        report.warnings.emplace_back("the grid has no layers: the K surfaces are those of the old cells");
    const bool model_info = request.model_info && !no_layers && request.axis == 2 && !runs.empty();
    if (model_info)
        surfaces = lay_out_surfaces(source, plans[2], request.depth_unit, report.warnings);
    return merge_by_plans(source, plans, request, model_info ? &surfaces : nullptr, report, progress);
}

GridModel apply_coarsening(const GridModel& source, std::span<const GridModification> modifications,
                           const MergeOptions& options, MergeReport& report, const ProgressCheck& progress)
{
    check_arrays(source);
    report = {};
    const auto sections = merge_sections_of(modifications, source.size);
    Plans plans;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        std::vector<KeptRun> runs;
        for (const IndexRange& run : sections[axis])
            runs.push_back({run, run.first});
        plans[axis] = make_plan(source.size[axis], runs);
    }
    return merge_by_plans(source, plans, options, nullptr, report, progress);
}

} // namespace lodex
