#pragma once

#include "CellGeometry.h"

#include <Lodex/utils/Progress.h>

#include <cstddef>
#include <vector>

namespace Kelvane {

/// Areal fault blocks: sets of columns connected through faces whose corners coincide.
struct FaultBlocks {
    std::int64_t count = 0;
    /// For every column (I fastest) its block, 0-based and numbered in the order of their first active cell; -1 for a
    /// column without any active cell.
    std::vector<std::int32_t> column_block;

    /// Block of a cell, 0-based cell index, I fastest.
    [[nodiscard]] std::int32_t cell_block(std::size_t cell) const { return column_block[cell % column_block.size()]; }
};

/// Depths closer than this coincide: one part in a million of the largest absolute depth of the grid, which is some
/// eight roundings of a 32-bit depth (2 mm at 2000 m).
[[nodiscard]] double coincidence_tolerance(const CornerPointView& grid);

/// Two columns that are neighbours along I or J are connected when in any K layer both cells are active and the four
/// corners of the face between them coincide within `tolerance` (negative: coincidence_tolerance()). Throws Cancelled.
[[nodiscard]] FaultBlocks find_fault_blocks(const CornerPointView& grid, double tolerance = -1,
                                            const Lodex::ProgressCheck& progress = {});

} // namespace Kelvane
