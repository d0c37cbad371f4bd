#pragma once

#include "Carry.h"
#include "Derivation.h"
#include "GridModel.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace lodex {

/// When a merged cell belongs to a region that some of its cells belong to. All cells of the group count, whatever
/// their active flag.
enum class RegionMode {
    Any = 0,         ///< at least one of its cells does
    CellShare = 1,   ///< so many percent of its cells do, and at least one
    VolumeShare = 2, ///< so many percent of its bulk volume does, and more than nothing; of its cells when all are flat
    MostFrequent = 3 ///< only the copied region that holds the most of its cells; all of them on a tie
};

/// What passes on to a merged grid.
struct MergeOptions : CarryOptions {
    RegionMode region_mode = RegionMode::Any;
    double percentile = 0; ///< 0 to 100, looked at for CellShare and VolumeShare only
};

/// Merge of sections along one axis.
struct MergeRequest : MergeOptions {
    int axis = 2; ///< 0: I, 1: J, 2: K
    /// Runs of sections, 0-based and inclusive, in any order, none shared. Empty: a plain copy.
    std::vector<IndexRange> sections;
    /// Section whose values a run keeps: one for each run, in the order of `sections`, or one for all of them, or none.
    /// See kept_section().
    std::vector<std::int64_t> property_sections;
    bool model_info = false; ///< K surfaces come from the layers instead of from the old cells
};

/// What a merge did. The relative differences are |new - sum of old| / sum of old over the active cells of the new grid
/// that were merged or moved, all cells of the old grid counted whatever their flag. A cell that came from nothing but
/// flat cells counts 1 when it has volume.
struct MergeReport : ChangeReport {
    std::int64_t merged_cells = 0;   ///< new cells made of more than one cell
    std::int64_t gave_way = 0;       ///< merged cells whose kept section was inactive and another one took its place
    std::int64_t undefined = 0;      ///< merged cells without any active cell: their values are undefined
    std::int64_t dropped_faults = 0; ///< fault segments that lie wholly inside merged cells
};

/// Section of `run` whose values are kept: `wanted` itself inside the run; another value v >= 0 means
/// first + ((v - first) mod length), -1 the first one. 0-based.
[[nodiscard]] std::int64_t kept_section(const IndexRange& run, std::int64_t wanted);

/// Makes the merged grid.
///
/// - A new cell is active when any of its cells is. Its corners come from the first and the last section, whatever
///   their flags, in the storage width of the source.
/// - A value comes from the kept section; where that is inactive from the nearest active one of the run, the lower
///   index on a tie; undefined (no-data value, else NaN) where none is. Discrete properties that need an undefined
///   value and have none get one that is no code of theirs. Values on points are those of the nodes that stay.
/// - User regions pass on when asked for, by the region mode. Model regions always do, by the same mode, except that
///   MostFrequent ranks user regions alone and a model region then passes on by Any.
/// - Layers pass on; along K each one counts its new cells, its cell thickness grows with them. A run that reaches over
///   two layers counts for the one of its first section, with a warning.
/// - model_info along K: the surfaces inside a layer are laid out anew between the layer's top and base by its layering
///   style, each at the place that its number of old cells gives (so an even merge is an even division, and cells that
///   are not merged stay where the style puts them). Depths are then in 64 bits. Along I and J it changes nothing;
///   without layers it warns and is taken as false.
/// - Faults: index boxes are mapped; faces inside a merged cell go.
/// - Keywords kept as text pass on unless they name or number cells that are no longer there: a warning names each.
/// - The new grid has id 0 and the records that derived_records() tells.
///
/// Runs on all threads; the result does not depend on their number. `progress` is called from this thread.
/// Throws ModelError when the request does not fit (message names the run), Cancelled.
[[nodiscard]] GridModel merge_sections(const GridModel& source, const MergeRequest& request, MergeReport& report,
                                       const ProgressCheck& progress = {});

/// Merges along all three axes in one pass. Kept is the first section of every group; where that cell is inactive the
/// nearest active one along I, then J, then K. Throws ModelError, Cancelled.
[[nodiscard]] GridModel apply_coarsening(const GridModel& source, std::span<const GridModification> modifications,
                                         const MergeOptions& options, MergeReport& report,
                                         const ProgressCheck& progress = {});

} // namespace lodex
