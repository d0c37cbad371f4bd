#pragma once

#include <vector>

namespace Kelvane {

/// Cell sections first to last (0-based, inclusive) that become one.
struct MergeBlock {
    int first;
    int last;
    friend bool operator==(const MergeBlock&, const MergeBlock&) = default;
};

/// The blocks of a run from - to (1-based, inclusive): whole ones of `step` sections, then what is left when that is at
/// least two sections; a single section stays as it is. A step that is longer than the run gives one block from section
/// 0 to the end of the run.
[[nodiscard]] std::vector<MergeBlock> merge_blocks(int from, int to, int step);

/// Number of cells along an axis of `cells` once that run is merged: its length gives way to length / step, rounded up,
/// the division being made in single precision.
[[nodiscard]] long merged_cells(long cells, int from, int to, int step);

} // namespace Kelvane
