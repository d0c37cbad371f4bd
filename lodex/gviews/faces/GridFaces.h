#pragma once

#include "CellFilter.h"

#include "lodex/volumes/model/CellGeometry.h"

#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

namespace lodex {

/// Cell faces with four points of their own each, in rising order of the cells, then of CellSide.
///
/// Points are x, y, z as they are drawn: z points up, so that z = -depth, and x, y, z turn right-handed. They are
/// 32-bit numbers relative to `origin`, which keeps them exact to a millimetre or so over a field's width.
struct FaceSet {
    Point3 origin{};                 ///< x, y, depth; the point of the grid that is 0, 0, 0 here
    std::vector<float> points;       ///< 12 numbers a face: four points, counterclockwise as seen from outside the cell
    std::vector<std::uint32_t> cell; ///< index of the cell of each face, I fastest
    std::vector<std::uint8_t> side;  ///< CellSide of each face

    [[nodiscard]] std::size_t size() const { return cell.size(); }
};

/// Which faces a set has, without their points.
struct FaceList {
    std::vector<std::uint32_t> cell; ///< cells that have some, rising
    std::vector<std::uint8_t> sides; ///< of each: bit n stands for the CellSide n
    std::size_t faces = 0;           ///< all bits together

    friend bool operator==(const FaceList&, const FaceList&) = default;
};

/// Straight lines in the same coordinates.
struct LineSet {
    Point3 origin{};
    std::vector<float> points; ///< 6 numbers a line: its two ends

    [[nodiscard]] std::size_t size() const { return points.size() / 6; }
};

/// The origin that faces and lines of this grid have: whole numbers amid its pillars, near its first depth.
[[nodiscard]] Point3 drawing_origin(const GridModel& model);

/// The faces of the shown cells that something else than another shown cell can touch: at the outer boundary, beside
/// hidden cells, and where the corners of the two neighbours do not coincide. Hidden cells without height between two
/// cells whose corners coincide do not open a gap. Sides without area and faces with a corner that is not finite are
/// left out. Runs on all threads; the result does not depend on their number.
[[nodiscard]] FaceSet visible_faces(const GridModel& model, const ShownCells& shown);

/// The same faces without their points; nothing when there are more than `most`, which is found out early.
[[nodiscard]] std::optional<FaceList>
list_visible_faces(const GridModel& model, const ShownCells& shown,
                   std::size_t most = std::numeric_limits<std::size_t>::max());

/// About how many these are, from every sixteenth row of cells.
[[nodiscard]] std::size_t guess_visible_faces(const GridModel& model, const ShownCells& shown);

/// Points of listed faces.
[[nodiscard]] FaceSet faces_of(const GridModel& model, const FaceList& list);

/// Of the faces that list_visible_faces() would give for `shown`, those that an eye outside is likeliest to see: first
/// the ones on the surface of `body`, then those that stand behind one hidden cell, behind two and so on, counted along
/// the shortest way, while they are no more than `most`; cavities without a way out are never reached. The surface
/// comes whole in any case, as does what stands behind one hidden cell. `surface`: list_visible_faces() of `body`,
/// which must show all that `shown` does.
[[nodiscard]] FaceList nearest_faces(const GridModel& model, const ShownCells& shown, const ShownCells& body,
                                     const FaceList& surface, std::size_t most);

/// The edges of the active part of the grid: top and base of its outermost columns along their outer sides, and the
/// pillars where these turn. Of a grid without active cells: of all cells.
[[nodiscard]] LineSet grid_outline(const GridModel& model);

/// The twelve edges of one cell; edges without length are left out. Indices are the caller's duty.
[[nodiscard]] LineSet cell_edges(const GridModel& model, std::int64_t i, std::int64_t j, std::int64_t k);

} // namespace lodex
