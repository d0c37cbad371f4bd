#pragma once

#include <Lodex/utils/RealArray.h>

#include <array>
#include <cstdint>
#include <span>

namespace Kelvane {

/// Numbers of cells along I, J, K.
using GridSize = std::array<std::int64_t, 3>;

/// A point: x, y in the file's length unit, depth positive downwards.
using Point3 = std::array<double, 3>;

/// The eight corners of a cell. Corner a + 2b + 4c stands at the I side a, the J side b and the K side c; c = 0 is the
/// top side.
using CellCorners = std::array<Point3, 8>;

/// Side of a cell, in this order: I-, I+, J-, J+, K-, K+.
enum class CellSide { IMinus, IPlus, JMinus, JPlus, KMinus, KPlus };

/// The arrays of a corner-point grid, not owned.
struct CornerPointView {
    GridSize size{};
    const Lodex::RealArray& pillars;       ///< 6 numbers a pillar, I fastest, see Lodex::SGrid::pillars()
    const Lodex::RealArray& corner_depths; ///< 8 depths a cell, see Lodex::SGrid::corner_depths()
    std::span<const std::uint8_t> active;  ///< one flag a cell

    [[nodiscard]] std::int64_t cells() const { return size[0] * size[1] * size[2]; }
    [[nodiscard]] std::int64_t cell_index(std::int64_t i, std::int64_t j, std::int64_t k) const
    {
        return i + size[0] * (j + size[1] * k);
    }
};

/// Position in the corner depth array of cell i, j, k at J side b and K side c, I side 0; I side 1 follows it.
[[nodiscard]] inline std::int64_t depth_offset(const GridSize& size, std::int64_t i, std::int64_t j, std::int64_t k,
                                               int b, int c)
{
    return ((2 * k + c) * 2 * size[1] + (2 * j + b)) * 2 * size[0] + 2 * i;
}

/// Point of a pillar at a depth, linear between the pillar's two points and beyond them, in 64 bits. A pillar whose two
/// points have the same depth (or a depth that is not finite) has no slope: x and y are those of its top point.
/// `pillar` is 6 numbers: x, y, depth of the top point, then of the bottom point.
[[nodiscard]] Point3 pillar_point(std::span<const double, 6> pillar, double depth);

/// Corners of the cell i, j, k, 0-based. Indices are the caller's duty.
[[nodiscard]] CellCorners cell_corners(const CornerPointView& grid, std::int64_t i, std::int64_t j, std::int64_t k);

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
[[nodiscard]] double cell_height(const CornerPointView& grid, std::int64_t i, std::int64_t j, std::int64_t k);

} // namespace Kelvane
