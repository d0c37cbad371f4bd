#pragma once

#include "GridModel.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace lodex {

/// Letter of an axis for messages: 'I' for 0, 'J' for 1, 'K' for 2.
[[nodiscard]] char axis_letter(int axis);

/// Record of a grid made from `parent` by `step`, seen from the parent's own source: `step` leads from the parent to
/// the grid, `parent` from the parent's source to the parent. The range of an index is the hull of its parents' ranges.
/// Throws ModelError when the sizes do not fit.
[[nodiscard]] DerivationRecord compose_records(const DerivationRecord& parent, const DerivationRecord& step);

/// All records of a grid made from `source` by `step`: `step` itself, then its composition with each of the source's
/// records, nearest first. A record that leads back to a grid already named is left out.
[[nodiscard]] std::vector<DerivationRecord> derived_records(const GridModel& source, DerivationRecord step);

/// The record of `grid` that leads to the grid with this id; null when there is none.
[[nodiscard]] const DerivationRecord* find_record(const GridModel& grid, std::uint64_t source_id);

/// Size of the grid that a record describes.
[[nodiscard]] GridSize record_size(const DerivationRecord& record);

/// A record that maps every index of a grid to itself.
[[nodiscard]] DerivationRecord identity_record(std::uint64_t source_id, std::string source_name, const GridSize& size);

/// Coarsening of a run of sections along an axis: from `first` to `last` (1-based, inclusive) every `step` sections
/// make one. A last incomplete group of two or more merges too, a single section stays.
struct GridModification {
    int axis = 0;
    long first = 1;
    long last = 1;
    long step = 1;
    friend bool operator==(const GridModification&, const GridModification&) = default;
};

/// Refinement of a run of sections along an axis: from `first` to `last` (1-based, inclusive) every section becomes
/// `amount` sections.
struct GridRefinement {
    int axis = 0;
    long first = 1;
    long last = 1;
    long amount = 1;
    friend bool operator==(const GridRefinement&, const GridRefinement&) = default;
};

/// The same list with identical entries kept once, order kept.
[[nodiscard]] std::vector<GridModification> without_repeats(std::span<const GridModification> modifications);

/// Sections to merge along each axis, 0-based and inclusive, ascending; only groups of two or more. Identical
/// modifications count once. Throws ModelError for an index out of range, first > last, step < 1 or two modifications
/// that share a section.
[[nodiscard]] std::array<std::vector<IndexRange>, 3> merge_sections_of(std::span<const GridModification> modifications,
                                                                       const GridSize& size);

/// For every index of the new grid the index range of the old one, along each axis.
[[nodiscard]] std::array<std::vector<IndexRange>, 3> coarsened_ranges(std::span<const GridModification> modifications,
                                                                      const GridSize& size);
[[nodiscard]] std::array<std::vector<IndexRange>, 3> refined_ranges(std::span<const GridRefinement> refinements,
                                                                    const GridSize& size);

/// Size after coarsening or refinement. Throws ModelError as merge_sections_of() does.
[[nodiscard]] GridSize coarsened_size(std::span<const GridModification> modifications, const GridSize& size);
[[nodiscard]] GridSize refined_size(std::span<const GridRefinement> refinements, const GridSize& size);

/// True when the record's source, so modified, has the size of the record's grid. False instead of an error.
[[nodiscard]] bool sizes_agree(const DerivationRecord& record, std::span<const GridModification> modifications);
[[nodiscard]] bool sizes_agree(const DerivationRecord& record, std::span<const GridRefinement> refinements);

/// True when the modifications give the record's very index ranges.
[[nodiscard]] bool reproduces(const DerivationRecord& record, std::span<const GridModification> modifications);
[[nodiscard]] bool reproduces(const DerivationRecord& record, std::span<const GridRefinement> refinements);

/// Shortest list of modifications that gives the record's index ranges: runs of groups of the same length become one
/// modification. Nothing when the ranges are no coarsening (they overlap, leave gaps or run backwards).
[[nodiscard]] std::optional<std::vector<GridModification>> modifications_of(const DerivationRecord& record);
/// The same for a refinement: every source section becomes one or more sections, in order.
[[nodiscard]] std::optional<std::vector<GridRefinement>> refinements_of(const DerivationRecord& record);

} // namespace lodex
