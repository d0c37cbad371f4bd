#include "MergeBlocks.h"

#include "CellGeometry.h"
#include "ParallelBlocks.h"
#include "Summation.h"
#include "VolumeRows.h"

#include <tbb/enumerable_thread_specific.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <type_traits>

namespace lodex {

void MergeSums::add(const MergeSums& other)
{
    ChangeSums::add(other);
    merged += other.merged;
    gave_way += other.gave_way;
    undefined += other.undefined;
}

namespace {

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
    BlockMerger(const MergeJob& job, std::span<const ZIn> depths_in, std::span<ZOut> depths_out)
        : job_(job)
        , in_(depths_in)
        , out_(depths_out)
        , plan_i_(job.plans[0])
        , plan_j_(job.plans[1])
        , plan_k_(job.plans[2])
        , i_merged_(plan_i_.size() != job.source.size[0])
    {
    }

    void run(const GridBlocks::Box& box, Scratch& s, MergeSums& sums) const
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
                 std::int64_t slot, std::size_t cells, Scratch& s, MergeSums& sums) const
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
              std::size_t cells, Scratch& s, MergeSums& sums) const
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
            for (const MergeJob::Property& property : job_.properties)
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
            const LayerSurface surface =
                job_.surfaces ? (*job_.surfaces)[static_cast<std::size_t>(k + c)] : LayerSurface{};
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
                      const double* group_volumes, const std::uint8_t* group_active, Scratch& s, MergeSums& sums) const
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
                     const std::uint8_t* group_active, std::int64_t base, Scratch& s, MergeSums& sums) const
    {
        const std::int64_t row = job_.source.cell_index(0, plan_j_.kept(new_j), plan_k_.kept(new_k));
        const std::uint8_t* const active = job_.source.active.data();
        const std::int64_t row_start = row + plan_i_.group(first).first;
        if (!i_merged_ && std::memchr(active + row_start, 0, static_cast<std::size_t>(width)) == nullptr) {
            for (const MergeJob::Property& property : job_.properties)
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
        for (const MergeJob::Property& property : job_.properties)
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

    const MergeJob& job_;
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
MergeSums run_job(const MergeJob& job, std::span<const ZIn> in, std::span<ZOut> out, const ProgressCheck& progress)
{
    const GridBlocks blocks = merge_blocks(job.source.size, job.result.size);
    std::vector<MergeSums> sums(static_cast<std::size_t>(blocks.count()));
    const BlockMerger<ZIn, ZOut> merger(job, in, out);
    tbb::enumerable_thread_specific<Scratch> scratch;
    for_blocks(blocks.count(), progress, [&](std::int64_t block) {
        merger.run(blocks.box(block), scratch.local(), sums[static_cast<std::size_t>(block)]);
    });
    MergeSums all;
    for (const MergeSums& part : sums)
        all.add(part);
    return all;
}

} // namespace

MergeSums merge_cells(const MergeJob& job, const ProgressCheck& progress)
{
    return job.source.zcorn.visit([&](auto in) {
        return std::visit(
            [&](auto out) -> MergeSums {
                using In = std::remove_const_t<typename decltype(in)::element_type>;
                using Out = typename decltype(out)::element_type;
                if constexpr (sizeof(Out) < sizeof(In))
                    throw std::logic_error("a merge does not narrow depths");
                else
                    return run_job<In, Out>(job, in, out, progress);
            },
            job.depths);
    });
}

} // namespace lodex
