#include "Derivation.h"

#include <fmt/format.h>

#include <algorithm>

namespace lodex {

char axis_letter(int axis)
{
    return "IJK"[axis];
}

GridSize record_size(const DerivationRecord& record)
{
    GridSize size{};
    for (std::size_t axis = 0; axis < 3; ++axis)
        size[axis] = static_cast<std::int64_t>(record.ranges[axis].size());
    return size;
}

DerivationRecord identity_record(std::uint64_t source_id, std::string source_name, const GridSize& size)
{
    DerivationRecord record{source_id, std::move(source_name), size, {}};
    for (std::size_t axis = 0; axis < 3; ++axis)
        for (std::int64_t n = 0; n < size[axis]; ++n)
            record.ranges[axis].push_back({n, n});
    return record;
}

DerivationRecord compose_records(const DerivationRecord& parent, const DerivationRecord& step)
{
    if (record_size(parent) != step.source_size)
        throw ModelError(fmt::format("the records of grids \"{}\" and \"{}\" do not fit together", parent.source_name,
                                     step.source_name));
    DerivationRecord result{parent.source_id, parent.source_name, parent.source_size, {}};
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const auto& grandparents = parent.ranges[axis];
        result.ranges[axis].reserve(step.ranges[axis].size());
        for (const IndexRange& range : step.ranges[axis]) {
            if (range.first < 0 || range.first > range.last || range.last >= step.source_size[axis])
                throw ModelError(fmt::format("the record of grid \"{}\" names a section outside of it along {}",
                                             step.source_name, axis_letter(static_cast<int>(axis))));
            IndexRange hull = grandparents[static_cast<std::size_t>(range.first)];
            for (std::int64_t n = range.first + 1; n <= range.last; ++n) {
                hull.first = std::min(hull.first, grandparents[static_cast<std::size_t>(n)].first);
                hull.last = std::max(hull.last, grandparents[static_cast<std::size_t>(n)].last);
            }
            result.ranges[axis].push_back(hull);
        }
    }
    return result;
}

std::vector<DerivationRecord> derived_records(const GridModel& source, DerivationRecord step)
{
    std::vector<DerivationRecord> result;
    result.push_back(std::move(step));
    for (const DerivationRecord& parent : source.records)
        if (std::ranges::find(result, parent.source_id, &DerivationRecord::source_id) == result.end())
            result.push_back(compose_records(parent, result.front()));
    return result;
}

const DerivationRecord* find_record(const GridModel& grid, std::uint64_t source_id)
{
    const auto it = std::ranges::find(grid.records, source_id, &DerivationRecord::source_id);
    return it == grid.records.end() ? nullptr : &*it;
}

std::vector<GridModification> without_repeats(std::span<const GridModification> modifications)
{
    std::vector<GridModification> result;
    for (const GridModification& modification : modifications)
        if (std::ranges::find(result, modification) == result.end())
            result.push_back(modification);
    return result;
}

namespace {

// Both kinds of change: a run of sections along an axis and a positive number.
template <class Change> std::string describe(const Change& change)
{
    const bool axis_known = change.axis >= 0 && change.axis <= 2;
    return fmt::format("sections {} to {} along {}", change.first, change.last,
                       axis_known ? std::string(1, axis_letter(change.axis)) : fmt::format("axis {}", change.axis));
}

// Changes of each axis in order of their sections, checked against the size and against each other.
template <class Change>
std::array<std::vector<Change>, 3> sorted_changes(std::span<const Change> changes, const GridSize& size,
                                                  long Change::*number, std::string_view number_name)
{
    std::array<std::vector<Change>, 3> result;
    for (const Change& change : changes) {
        if (change.axis < 0 || change.axis > 2)
            throw ModelError(fmt::format("{}: there is no such axis", describe(change)));
        const auto axis = static_cast<std::size_t>(change.axis);
        if (change.first > change.last)
            throw ModelError(fmt::format("{}: the first lies behind the last", describe(change)));
        if (change.first < 1 || change.last > size[axis])
            throw ModelError(fmt::format("{}: the grid has {} sections", describe(change), size[axis]));
        if (change.*number < 1)
            throw ModelError(fmt::format("{}: the {} {} is below 1", describe(change), number_name, change.*number));
        if (std::ranges::find(result[axis], change) == result[axis].end())
            result[axis].push_back(change);
    }
    for (auto& list : result) {
        std::ranges::sort(list, {}, &Change::first);
        for (std::size_t n = 1; n < list.size(); ++n)
            if (list[n].first <= list[n - 1].last)
                throw ModelError(fmt::format("{} and {} overlap", describe(list[n - 1]), describe(list[n])));
    }
    return result;
}

template <class Change, class Ranges>
bool same_size(const DerivationRecord& record, std::span<const Change> changes, const Ranges& ranges_of)
{
    try {
        const auto ranges = ranges_of(changes, record.source_size);
        for (std::size_t axis = 0; axis < 3; ++axis)
            if (ranges[axis].size() != record.ranges[axis].size())
                return false;
        return true;
    }
    catch (const ModelError&) {
        return false;
    }
}

template <class Change, class Ranges>
bool same_ranges(const DerivationRecord& record, std::span<const Change> changes, const Ranges& ranges_of)
{
    try {
        return ranges_of(changes, record.source_size) == record.ranges;
    }
    catch (const ModelError&) {
        return false;
    }
}

GridSize size_of(const std::array<std::vector<IndexRange>, 3>& ranges)
{
    return {static_cast<std::int64_t>(ranges[0].size()), static_cast<std::int64_t>(ranges[1].size()),
            static_cast<std::int64_t>(ranges[2].size())};
}

} // namespace

std::array<std::vector<IndexRange>, 3> merge_sections_of(std::span<const GridModification> modifications,
                                                         const GridSize& size)
{
    const auto sorted = sorted_changes(modifications, size, &GridModification::step, "step");
    std::array<std::vector<IndexRange>, 3> result;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        for (const GridModification& m : sorted[axis]) {
            if (m.step == 1)
                continue;
            for (std::int64_t first = m.first - 1; first < m.last; first += m.step) {
                const std::int64_t last = std::min<std::int64_t>(first + m.step, m.last) - 1;
                if (last > first)
                    result[axis].push_back({first, last});
            }
        }
    }
    return result;
}

std::array<std::vector<IndexRange>, 3> coarsened_ranges(std::span<const GridModification> modifications,
                                                        const GridSize& size)
{
    const auto groups = merge_sections_of(modifications, size);
    std::array<std::vector<IndexRange>, 3> result;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        std::int64_t next = 0;
        const auto singles_until = [&](std::int64_t end) {
            for (; next < end; ++next)
                result[axis].push_back({next, next});
        };
        for (const IndexRange& group : groups[axis]) {
            singles_until(group.first);
            result[axis].push_back(group);
            next = group.last + 1;
        }
        singles_until(size[axis]);
    }
    return result;
}

std::array<std::vector<IndexRange>, 3> refined_ranges(std::span<const GridRefinement> refinements, const GridSize& size)
{
    const auto sorted = sorted_changes(refinements, size, &GridRefinement::amount, "amount");
    std::array<std::vector<IndexRange>, 3> result;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        auto change = sorted[axis].begin();
        for (std::int64_t n = 0; n < size[axis]; ++n) {
            while (change != sorted[axis].end() && change->last <= n)
                ++change;
            const bool inside = change != sorted[axis].end() && change->first <= n + 1;
            result[axis].insert(result[axis].end(), static_cast<std::size_t>(inside ? change->amount : 1), {n, n});
        }
    }
    return result;
}

GridSize coarsened_size(std::span<const GridModification> modifications, const GridSize& size)
{
    return size_of(coarsened_ranges(modifications, size));
}

GridSize refined_size(std::span<const GridRefinement> refinements, const GridSize& size)
{
    // Worked out without the ranges: an amount may be far beyond what memory holds.
    GridSize result = size;
    const auto sorted = sorted_changes(refinements, size, &GridRefinement::amount, "amount");
    for (std::size_t axis = 0; axis < 3; ++axis)
        for (const GridRefinement& change : sorted[axis])
            result[axis] += static_cast<std::int64_t>(change.last - change.first + 1) * (change.amount - 1);
    return result;
}

bool sizes_agree(const DerivationRecord& record, std::span<const GridModification> modifications)
{
    return same_size(record, modifications, coarsened_ranges);
}

bool sizes_agree(const DerivationRecord& record, std::span<const GridRefinement> refinements)
{
    try {
        return refined_size(refinements, record.source_size) == record_size(record);
    }
    catch (const ModelError&) {
        return false;
    }
}

bool reproduces(const DerivationRecord& record, std::span<const GridModification> modifications)
{
    return same_ranges(record, modifications, coarsened_ranges);
}

bool reproduces(const DerivationRecord& record, std::span<const GridRefinement> refinements)
{
    return sizes_agree(record, refinements) && same_ranges(record, refinements, refined_ranges);
}

std::optional<std::vector<GridModification>> modifications_of(const DerivationRecord& record)
{
    std::vector<GridModification> result;
    for (int axis = 0; axis < 3; ++axis) {
        const auto& ranges = record.ranges[static_cast<std::size_t>(axis)];
        std::int64_t next = 0;
        // Whether the last modification ends in a whole group, so that an equal group may join it.
        bool open = false;
        for (const IndexRange& range : ranges) {
            if (range.first != next || range.last < range.first)
                return std::nullopt;
            next = range.last + 1;
            const long length = static_cast<long>(range.last - range.first + 1);
            GridModification* const before = open ? &result.back() : nullptr;
            if (length == 1) {
                open = false;
            }
            else if (before && length <= before->step) {
                before->last += length;
                open = length == before->step;
            }
            else {
                result.push_back({axis, static_cast<long>(range.first + 1), static_cast<long>(range.last + 1), length});
                open = true;
            }
        }
        if (next != record.source_size[static_cast<std::size_t>(axis)])
            return std::nullopt;
    }
    return result;
}

std::optional<std::vector<GridRefinement>> refinements_of(const DerivationRecord& record)
{
    std::vector<GridRefinement> result;
    for (int axis = 0; axis < 3; ++axis) {
        const auto& ranges = record.ranges[static_cast<std::size_t>(axis)];
        const std::int64_t size = record.source_size[static_cast<std::size_t>(axis)];
        std::size_t n = 0;
        for (std::int64_t section = 0; section < size; ++section) {
            long amount = 0;
            for (; n < ranges.size() && ranges[n] == IndexRange{section, section}; ++n)
                ++amount;
            if (amount == 0)
                return std::nullopt;
            const long number = static_cast<long>(section + 1);
            const bool joins = !result.empty() && result.back().axis == axis && result.back().last == section &&
                               result.back().amount == amount;
            if (joins)
                result.back().last = number;
            else if (amount > 1)
                result.push_back({axis, number, number, amount});
        }
        if (n != ranges.size())
            return std::nullopt;
    }
    return result;
}

} // namespace lodex
