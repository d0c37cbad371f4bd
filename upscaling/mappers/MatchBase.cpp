#include "MatchBase.h"

#include "upscaling/MappingCells.h"

#include <Lodex/volumes/SGridCube.h>

#include <tbb/task_arena.h>

#include <algorithm>
#include <atomic>
#include <limits>
#include <stdexcept>

namespace Kelvane {

namespace {

constexpr std::int64_t cells_a_block = 4096;

std::int64_t blocks_of(std::int64_t cells)
{
    return (cells + cells_a_block - 1) / cells_a_block;
}

const Lodex::SGrid& grid_of(const Lodex::SGrid* grid, const char* which)
{
    if (!grid)
        throw std::runtime_error(std::string("the ") + which + " grid is missing");
    return *grid;
}

std::string quoted(const Lodex::SGrid& grid)
{
    return "\"" + grid.name().str() + "\"";
}

// The flags asked for, without those of inactive cells; `own` holds them where that makes a difference.
std::span<const std::uint8_t> active_ones(std::span<const std::uint8_t> flags, const Lodex::SGrid& grid,
                                          std::vector<std::uint8_t>& own)
{
    const auto active = grid.active_flags();
    if (flags.size() != active.size())
        throw std::runtime_error("the flags of grid " + quoted(grid) + " are " + std::to_string(flags.size()) +
                                 ", its cells " + std::to_string(active.size()));
    for (std::size_t cell = 0; cell < flags.size(); ++cell) {
        if (flags[cell] && !active[cell]) {
            own.resize(flags.size());
            for (std::size_t n = 0; n < flags.size(); ++n)
                own[n] = flags[n] && active[n];
            return own;
        }
    }
    return flags;
}

} // namespace

CornerPointView view_of(const Lodex::SGrid& grid)
{
    const Lodex::SGridCube& cube = *grid.cube();
    return {{cube.nu() - 1, cube.nv() - 1, cube.nw() - 1}, grid.pillars(), grid.corner_depths(), grid.active_flags()};
}

MatchBase::MatchBase(const Lodex::MappingRequest& request)
    : fine_(&grid_of(request.fine, "fine")), coarse_(&grid_of(request.coarse, "coarse")), fine_view_(view_of(*fine_)),
      coarse_view_(view_of(*coarse_)), fine_columns_(fine_view_), coarse_columns_(coarse_view_),
      fine_flags_(active_ones(request.fine_cells, *fine_, own_fine_flags_)),
      coarse_flags_(active_ones(request.coarse_cells, *coarse_, own_coarse_flags_))
{
}

const CellLocator& MatchBase::fine_locator() const
{
    // Isolated: a thread that waits inside for its own loop must not take up another sample that waits for this one.
    std::call_once(locator_made_, [this] {
        tbb::this_task_arena::isolate([this] { locator_ = std::make_unique<CellLocator>(fine_view_); });
    });
    return *locator_;
}

Point3 MatchBase::sample_centre(const GridColumn& column, std::int64_t k, const std::array<int, 3>& n,
                                std::int64_t sample, std::array<double, 3>& local) const
{
    const std::array<std::int64_t, 3> at{sample % n[0], sample / n[0] % n[1], sample / n[0] / n[1]};
    for (std::size_t axis = 0; axis < 3; ++axis)
        local[axis] = (static_cast<double>(at[axis]) + 0.5) / n[axis];
    return coarse_columns_.point(column, k, local[0], local[1], local[2]);
}

void MatchBase::sample(std::int64_t coarse_cell, const std::array<int, 3>& n, std::span<std::int64_t> fine_cells) const
{
    std::ranges::fill(fine_cells, -1);
    const auto coarse_at = static_cast<std::size_t>(coarse_cell);
    if (coarse_cell < 0 || coarse_at >= coarse_flags_.size() || !coarse_flags_[coarse_at])
        return;
    find_samples(coarse_cell, n, fine_cells);
    const std::int32_t block = block_of_coarse_.empty() ? -1 : block_of_coarse_[coarse_at];
    for (std::int64_t& cell : fine_cells) {
        const auto at = static_cast<std::size_t>(cell);
        if (cell >= 0 && (!fine_flags_[at] || (block >= 0 && blocks_.cell_block(at) != block)))
            cell = -1;
    }
}

void MatchBase::make_rows(std::vector<std::int64_t> owners, const std::string& reason, const ProgressCheck& progress)
{
    check_progress(progress, 0);
    bool found = false;
    std::int64_t taking_part = 0;
    mapping_.offsets.assign(coarse_flags_.size() + 1, 0);
    for (std::size_t cell = 0; cell < owners.size(); ++cell) {
        taking_part += fine_flags_[cell] != 0;
        if (owners[cell] < 0)
            continue;
        found = true;
        const auto owner = static_cast<std::size_t>(owners[cell]);
        if (coarse_flags_[owner])
            ++mapping_.offsets[owner + 1];
        else
            owners[cell] = -1;
    }
    if (!found && taking_part > 0)
        throw std::runtime_error("the grids " + quoted(*fine_) + " and " + quoted(*coarse_) + " do not overlap: " +
                                 reason);
    for (std::size_t n = 1; n < mapping_.offsets.size(); ++n)
        mapping_.offsets[n] += mapping_.offsets[n - 1];
    check_progress(progress, 0.4);
    // Each row's offset serves as the place of its next cell; afterwards it is the next row's offset.
    mapping_.cells.resize(static_cast<std::size_t>(mapping_.offsets.back()));
    for (std::size_t cell = 0; cell < owners.size(); ++cell)
        if (owners[cell] >= 0)
            mapping_.cells[static_cast<std::size_t>(mapping_.offsets[static_cast<std::size_t>(owners[cell])]++)] =
                static_cast<std::int64_t>(cell);
    std::shift_right(mapping_.offsets.begin(), mapping_.offsets.end(), 1);
    mapping_.offsets.front() = 0;
    check_progress(progress, 1);
}

void MatchBase::set_boxes(Lodex::IndexRelation boxes)
{
    mapping_.boxes = std::move(boxes);
    mapping_.fine_flags = fine_flags_;
    mapping_.coarse_flags = coarse_flags_;
}

template <class Visit> void MatchBase::visit_members(std::int64_t coarse_cell, const Visit& visit) const
{
    visit_fine_cells(mapping_, fine_view_.size, coarse_view_.size, coarse_cell, visit);
}

void MatchBase::choose_blocks(const ProgressCheck& progress)
{
    blocks_ = find_fault_blocks(fine_view_, -1, partial_progress(progress, 0, 0.5));
    if (blocks_.count < 2)
        return;
    const auto volumes = fine_->bulk_volumes();
    const std::int64_t count = coarse_view_.cells();
    block_of_coarse_.assign(static_cast<std::size_t>(count), -1);
    std::atomic<std::int64_t> with_members = 0, mixed = 0, unclear = 0;
    for_blocks(blocks_of(count), partial_progress(progress, 0.5, 1), [&](std::int64_t block) {
        struct Share {
            std::int32_t block;
            double volume;
        };
        std::vector<Share> shares;
        std::int64_t some = 0, several = 0, doubtful = 0;
        const std::int64_t end = std::min(count, (block + 1) * cells_a_block);
        for (std::int64_t cell = block * cells_a_block; cell < end; ++cell) {
            shares.clear();
            visit_members(cell, [&](std::int64_t member) {
                const auto at = static_cast<std::size_t>(member);
                const std::int32_t number = blocks_.cell_block(at);
                auto share = std::ranges::find(shares, number, &Share::block);
                if (share == shares.end())
                    share = shares.insert(shares.end(), {number, 0});
                share->volume += volumes[at];
                return true;
            });
            if (shares.empty())
                continue;
            double all = 0;
            const Share* best = &shares.front();
            for (const Share& share : shares) {
                all += share.volume;
                if (share.volume > best->volume || (share.volume == best->volume && share.block < best->block))
                    best = &share;
            }
            block_of_coarse_[static_cast<std::size_t>(cell)] = best->block;
            ++some;
            several += shares.size() > 1;
            doubtful += shares.size() > 1 && best->volume < clear_majority * all;
        }
        with_members += some;
        mixed += several;
        unclear += doubtful;
    });
    if (2 * unclear > with_members) {
        block_of_coarse_.clear();
        warn("faults are not looked at: in " + std::to_string(unclear) + " of " + std::to_string(with_members) +
             " cells of grid " + quoted(*coarse_) + " no fault block of grid " + quoted(*fine_) +
             " holds two thirds of the volume, the grids are too different");
    }
    else if (mixed > 0)
        drop_other_blocks();
}

void MatchBase::drop_other_blocks()
{
    const std::int64_t count = coarse_view_.cells();
    std::int64_t dropped = 0, touched = 0;
    const auto note = [&](std::int64_t lost) {
        dropped += lost;
        touched += lost > 0;
    };
    if (mapping_.has_boxes()) {
        std::vector<std::int64_t> offsets{0}, cells;
        offsets.reserve(static_cast<std::size_t>(count) + 1);
        for (std::int64_t cell = 0; cell < count; ++cell) {
            const std::int32_t block = block_of_coarse_[static_cast<std::size_t>(cell)];
            std::int64_t lost = 0;
            visit_members(cell, [&](std::int64_t member) {
                if (blocks_.cell_block(static_cast<std::size_t>(member)) == block)
                    cells.push_back(member);
                else
                    ++lost;
                return true;
            });
            offsets.push_back(static_cast<std::int64_t>(cells.size()));
            note(lost);
        }
        mapping_ = {};
        mapping_.offsets = std::move(offsets);
        mapping_.cells = std::move(cells);
    }
    else {
        std::size_t kept = 0;
        std::int64_t first = 0;
        for (std::size_t cell = 0; cell < static_cast<std::size_t>(count); ++cell) {
            const std::int64_t last = mapping_.offsets[cell + 1];
            const std::size_t before = kept;
            for (std::int64_t n = first; n < last; ++n) {
                const std::int64_t member = mapping_.cells[static_cast<std::size_t>(n)];
                if (blocks_.cell_block(static_cast<std::size_t>(member)) == block_of_coarse_[cell])
                    mapping_.cells[kept++] = member;
            }
            note((last - first) - static_cast<std::int64_t>(kept - before));
            mapping_.offsets[cell + 1] = static_cast<std::int64_t>(kept);
            first = last;
        }
        mapping_.cells.resize(kept);
    }
    warn(std::to_string(dropped) + " fine cells of " + std::to_string(touched) +
         " coarse cells lie across a fault and are left out");
}

void MatchBase::count_unmatched(const ProgressCheck& progress)
{
    const std::int64_t coarse_count = coarse_view_.cells();
    std::atomic<std::int64_t> empty = 0, coarse_part = 0;
    for_blocks(blocks_of(coarse_count), partial_progress(progress, 0, 0.5), [&](std::int64_t block) {
        std::int64_t none = 0, part = 0;
        const std::int64_t end = std::min(coarse_count, (block + 1) * cells_a_block);
        for (std::int64_t cell = block * cells_a_block; cell < end; ++cell) {
            if (!coarse_flags_[static_cast<std::size_t>(cell)])
                continue;
            bool any = false;
            visit_members(cell, [&any](std::int64_t) {
                any = true;
                return false;
            });
            ++part;
            none += !any;
        }
        empty += none;
        coarse_part += part;
    });

    // A fine cell may stand in several boxes, so these are asked the other way round: the coarse indices of an index.
    std::array<std::vector<Lodex::IndexRange>, 3> coarse_indices;
    for (std::size_t axis = 0; axis < 3 && mapping_.has_boxes(); ++axis) {
        coarse_indices[axis].assign(static_cast<std::size_t>(fine_view_.size[axis]), {0, -1});
        for (std::size_t index = 0; index < mapping_.boxes[axis].size(); ++index) {
            const Lodex::IndexRange& box = mapping_.boxes[axis][index];
            for (std::int64_t n = box.first; n <= box.last; ++n) {
                Lodex::IndexRange& range = coarse_indices[axis][static_cast<std::size_t>(n)];
                range = {range.last < range.first ? static_cast<std::int64_t>(index) : range.first,
                         static_cast<std::int64_t>(index)};
            }
        }
    }
    const auto in_a_box = [&](std::int64_t cell) {
        const GridSize& size = fine_view_.size;
        const auto& i = coarse_indices[0][static_cast<std::size_t>(cell % size[0])];
        const auto& j = coarse_indices[1][static_cast<std::size_t>(cell / size[0] % size[1])];
        const auto& k = coarse_indices[2][static_cast<std::size_t>(cell / size[0] / size[1])];
        for (std::int64_t c = k.first; c <= k.last; ++c)
            for (std::int64_t b = j.first; b <= j.last; ++b)
                for (std::int64_t a = i.first; a <= i.last; ++a)
                    if (coarse_flags_[static_cast<std::size_t>(coarse_view_.cell_index(a, b, c))])
                        return true;
        return false;
    };
    const std::int64_t fine_count = fine_view_.cells();
    std::atomic<std::int64_t> fine_part = 0, boxed = 0;
    for_blocks(blocks_of(fine_count), partial_progress(progress, 0.5, 1), [&](std::int64_t block) {
        std::int64_t part = 0, in = 0;
        const std::int64_t end = std::min(fine_count, (block + 1) * cells_a_block);
        for (std::int64_t cell = block * cells_a_block; cell < end; ++cell) {
            if (!fine_flags_[static_cast<std::size_t>(cell)])
                continue;
            ++part;
            in += mapping_.has_boxes() && in_a_box(cell);
        }
        fine_part += part;
        boxed += in;
    });
    const std::int64_t matched =
        mapping_.has_boxes() ? boxed.load() : static_cast<std::int64_t>(mapping_.cells.size());
    if (coarse_part == 0)
        warn("no active cell of grid " + quoted(*coarse_) + " takes part");
    if (fine_part == 0)
        warn("no active cell of grid " + quoted(*fine_) + " takes part");
    if (empty > 0)
        warn(std::to_string(empty) + " of " + std::to_string(coarse_part) + " cells of grid " + quoted(*coarse_) +
             " have no fine cell");
    if (matched < fine_part)
        warn(std::to_string(fine_part - matched) + " of " + std::to_string(fine_part) + " cells of grid " +
             quoted(*fine_) + " belong to no coarse cell");
}

void MatchBase::finish(bool fault_management, const ProgressCheck& progress)
{
    count_unmatched(partial_progress(progress, 0, fault_management ? 0.4 : 1));
    if (fault_management)
        choose_blocks(partial_progress(progress, 0.4, 1));
}

} // namespace Kelvane
