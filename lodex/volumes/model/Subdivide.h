#pragma once

#include "Carry.h"
#include "Derivation.h"
#include "GridModel.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace lodex {

/// How one section of cells is divided along an axis.
struct SectionDivision {
    std::int64_t section = 0; ///< 0-based
    std::int64_t added = 0;   ///< number of cells added: the section becomes 1 + added sections
    /// Along K: cells of the thickness counted from the base or from the top. Along I and J: ParallelToBase counts from
    /// the side of the lower index, ParallelToTop from the side of the higher one. Proportional: an even division.
    Lodex::LayerInfo::LayeringStyle layering = Lodex::LayerInfo::Proportional;
    /// Thickness of the cells, 0 or more, see SubdivideRequest; not looked at for Proportional. Nothing: an even
    /// division.
    std::optional<double> thickness;
};

/// What is divided, and what passes on to the new grid.
struct SubdivideRequest : CarryOptions {
    int axis = 2;                           ///< 0: I, 1: J, 2: K
    std::vector<SectionDivision> divisions; ///< in any order, no section twice; empty: a plain copy
    bool percent = false;      ///< thicknesses are percents of the original cell's, else lengths of `thickness_unit`
    bool vertical = false;     ///< along K: a thickness is measured vertically, else along the pillar
    double thickness_unit = 1; ///< length of one unit of the thicknesses in units of the grid's coordinates
    bool model_info = false;   ///< along K: the cells are first laid out anew from the layers
};

/// What a subdivision did. The relative differences are |sum of new - old| / old over the active cells of the old grid
/// that were divided or moved, all cells of the new grid counted whatever their flag. A cell without volume counts 1
/// when it got some, else 0.
struct SubdivideReport : ChangeReport {
    std::int64_t divided_cells = 0; ///< old cells that became more than one
    std::int64_t pinched = 0;       ///< new cells of active ones that are inactive since nothing was left for them
};

/// Size of the new grid. Throws ModelError when the request does not fit (the message names the section): no such axis
/// or section, a section named twice, less than 0 cells added, a thickness that is negative or not finite, a size
/// beyond what can be counted.
[[nodiscard]] GridSize subdivided_size(const GridSize& size, const SubdivideRequest& request);

/// Makes the grid in which each named section is divided into 1 + added sections.
///
/// Along K every corner of a new surface lies on the cell's own vertical edge, between the cell's own top and base
/// corner, so cells on both sides of a fault and of a gap are divided each by itself:
/// - even division: at n/N of the edge;
/// - ParallelToTop: at n thicknesses below the top, but not below the base; ParallelToBase: at N - n thicknesses above
///   the base, but not above the top. The last cell takes the rest. A thickness along the pillar counts as thickness /
///   sqrt(1 + sx^2 + sy^2) in depth, sx and sy being the pillar's slopes dx/dz and dy/dz; a cell that stands on its
///   head is laid out the other way round.
/// - model_info: tops and bases are those that the layers give (see layer_surfaces()), then divided as above. Without
///   layers it warns and is taken as false; along I and J it changes nothing.
///
/// Along I and J new pillars stand between the two old ones, at the share f of the way from one to the other at each
/// depth. Even division: f = n/N. A width is the horizontal distance from the pillar of the side that it is counted
/// from, at equal depth, exact at the highest and the lowest corner of the active cells at the two pillars (of all
/// cells where none is active) and linear between. A new corner has the depth at which the new pillar meets the cell's
/// own edge (passes it nearest in plan, seen along the edge): on parallel or vertical pillars that is the share f of
/// the edge. Each cell is divided on its own edges, so the corners on both sides of a fault stay on their sides'
/// surfaces.
///
/// Volume against the parent cell's is kept to rounding for an even division or percents along K; on parallel or
/// vertical pillars also for thicknesses along K, for even division and percents along I and J, and for widths where
/// both sides of the cell are equally wide. Elsewhere neighbours share what one gains and the other loses; the report
/// says how much.
///
/// Cells of sections that are not named keep their very corners, and old pillars their very numbers. Depths are in 64
/// bits; so are pillars where new ones were made. Merging the new sections again gives the old corners.
///
/// - A new cell is active when its parent is. Cells of a given thickness that are left with nothing (no height at all
///   four edges; the same pillars on both sides) are inactive. A rest below the resolution of the source's numbers
///   counts as nothing.
/// - Values and regions are the parent's. Values on points are linear between the old points' at n/N, the nearer one's
///   where they are discrete or undefined.
/// - Layers pass on; along K each one counts its new cells, its cell thickness shrinks with them.
/// - Faults: index boxes are mapped. Keywords kept as text pass on unless they name or number cells: a warning each.
/// - The new grid has id 0 and the records that derived_records() tells.
///
/// Runs on all threads; the result does not depend on their number. `progress` is called from this thread. Throws
/// ModelError as subdivided_size() does and when a property or region is not there, Cancelled.
[[nodiscard]] GridModel subdivide_sections(const GridModel& source, const SubdivideRequest& request,
                                           SubdivideReport& report, const ProgressCheck& progress = {});

} // namespace lodex
