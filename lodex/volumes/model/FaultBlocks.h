#pragma once

#include "CellGeometry.h"

#include "upscaling/kernels/FaultBlocks.h"

#include <vector>

namespace lodex {

using Kelvane::FaultBlocks;

/// See Kelvane::coincidence_tolerance().
[[nodiscard]] inline double coincidence_tolerance(const GridModel& model)
{
    return Kelvane::coincidence_tolerance(view_of(model));
}

/// See Kelvane::find_fault_blocks(). Throws Cancelled.
[[nodiscard]] inline FaultBlocks find_fault_blocks(const GridModel& model, double tolerance = -1,
                                                   const ProgressCheck& progress = {})
{
    return Kelvane::find_fault_blocks(view_of(model), tolerance, progress);
}

/// One model region per block, "fault_block_1", "fault_block_2", ... in block order, over all cells of the block's
/// columns. None when there is only one block. Throws Cancelled.
[[nodiscard]] std::vector<RegionData> fault_block_regions(const GridModel& model, double tolerance = -1,
                                                          const ProgressCheck& progress = {});

/// Adds the regions; one of the same name is replaced where it stands, others go to the end.
void replace_regions(GridModel& model, std::vector<RegionData> regions);

} // namespace lodex
