#pragma once

#include "GridModel.h"

#include "upscaling/kernels/CellGeometry.h"

#include <cstdint>
#include <span>
#include <vector>

namespace lodex {

using Kelvane::cell_centre;
using Kelvane::cell_volume;
using Kelvane::CellCorners;
using Kelvane::CellSide;
using Kelvane::CornerPointView;
using Kelvane::pillar_point;
using Kelvane::Point3;
using Kelvane::side_corners;
using Kelvane::signed_cell_volume;

/// The arrays of a model for operators that know no model. Valid as long as the model is not changed.
[[nodiscard]] inline CornerPointView view_of(const GridModel& model)
{
    return {model.size, model.coord, model.zcorn, model.active};
}

/// Corners of the cell i, j, k, 0-based. Indices are the caller's duty.
[[nodiscard]] inline CellCorners cell_corners(const GridModel& model, std::int64_t i, std::int64_t j, std::int64_t k)
{
    return Kelvane::cell_corners(view_of(model), i, j, k);
}

using Kelvane::cell_height;
/// cell_height() from the corner depths alone.
[[nodiscard]] inline double cell_height(const GridModel& model, std::int64_t i, std::int64_t j, std::int64_t k)
{
    return Kelvane::cell_height(view_of(model), i, j, k);
}

/// Bulk volume (absolute value) of every cell, active or not, I fastest; cubic units of the file. A cell with a corner
/// that is not finite has volume 0. Runs on all threads; the result does not depend on their number.
/// Throws Cancelled.
[[nodiscard]] std::vector<double> cell_volumes(const GridModel& model, const ProgressCheck& progress = {});

/// What one pass over the geometry tells.
struct VolumeSummary {
    double active_volume = 0; ///< bulk volume of the active cells
    double total_volume = 0;  ///< bulk volume of all cells
    double signed_volume = 0; ///< sum of the signed volumes of the active cells: its sign is the handedness
    std::int64_t active_cells = 0;
    std::int64_t flat_cells = 0;           ///< active cells of volume 0
    std::int64_t inverted_cells = 0;       ///< active cells whose sign is not that of the grid
    std::vector<double> layer_volume;      ///< bulk volume of the active cells of each K layer
    std::vector<std::int64_t> layer_cells; ///< active cells of each K layer
};

/// Sums over the cells in a fixed order with compensation, without keeping a number per cell. Throws Cancelled.
[[nodiscard]] VolumeSummary summarise_volumes(const GridModel& model, const ProgressCheck& progress = {});

/// Bulk volume of the active cells. Throws Cancelled.
[[nodiscard]] double bulk_volume(const GridModel& model, const ProgressCheck& progress = {});

/// +1 when (I, J, K) turns like (x, y, depth), -1 when it is mirrored, 0 when the grid has no volume to tell by.
[[nodiscard]] int handedness(const GridModel& model);

/// Checks that all arrays have the sizes that GridModel::size asks for. Throws ModelError naming the array.
void check_arrays(const GridModel& model);

} // namespace lodex
