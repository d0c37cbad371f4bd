#pragma once

#include "GridModel.h"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace lodex {

/// A point: x, y in the file's length unit, depth positive downwards.
using Point3 = std::array<double, 3>;

/// The eight corners of a cell. Corner a + 2b + 4c stands at the I side a, the J side b and the K side c; c = 0 is the
/// top side.
using CellCorners = std::array<Point3, 8>;

/// Side of a cell, in this order: I-, I+, J-, J+, K-, K+.
enum class CellSide { IMinus, IPlus, JMinus, JPlus, KMinus, KPlus };

/// Point of a pillar at a depth, linear between the pillar's two points and beyond them, in 64 bits. A pillar whose two
/// points have the same depth (or a depth that is not finite) has no slope: x and y are those of its top point.
/// `pillar` is 6 numbers: x, y, depth of the top point, then of the bottom point.
[[nodiscard]] Point3 pillar_point(std::span<const double, 6> pillar, double depth);

/// Corners of the cell i, j, k, 0-based. Indices are the caller's duty.
[[nodiscard]] CellCorners cell_corners(const GridModel& model, std::int64_t i, std::int64_t j, std::int64_t k);

/// The four corners of a side of a cell, going round it counterclockwise about the outward normal when the cell turns
/// like (x, y, depth).
[[nodiscard]] std::array<Point3, 4> side_corners(const CellCorners& corners, CellSide side);

/// Mean of the eight corners, which is the image of the centre of the unit cube under the trilinear map.
[[nodiscard]] Point3 cell_centre(const CellCorners& corners);

/// Volume of the trilinear hexahedron with its sign: positive when (I, J, K) turns like (x, y, depth). Exact, equal to
/// the mean of the two splits into five tetrahedra; three determinants after J. Grandy, "Efficient computation of
/// volume of hexahedral cells", UCRL-ID-128886, 1997.
[[nodiscard]] double signed_cell_volume(const CellCorners& corners);

/// Absolute value of signed_cell_volume().
[[nodiscard]] double cell_volume(const CellCorners& corners);

/// Mean over the four vertical edges of bottom depth minus top depth; negative for a cell that stands on its head.
[[nodiscard]] double cell_height(const CellCorners& corners);

/// cell_height() from the corner depths alone.
[[nodiscard]] double cell_height(const GridModel& model, std::int64_t i, std::int64_t j, std::int64_t k);

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
