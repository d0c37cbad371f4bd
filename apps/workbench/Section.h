#pragma once

#include "lodex/volumes/model/GridModel.h"

#include <array>
#include <cstdint>
#include <vector>

namespace lodex {

/// The axis that a cross-section stands across: an I section shows the cells of one I.
enum class SectionAxis { I = 0, J = 1 };

/// One active cell of a cross-section as it is drawn: the corners of its minus side (I- or J-), in the order top start,
/// top end, bottom end, bottom start.
struct SectionCell {
    std::int64_t cell = 0;           ///< linear index, I fastest
    std::array<float, 4> distance{}; ///< along the section from its first pillar, in the grid's length unit
    std::array<float, 4> depth{};    ///< positive downwards
};

/// A vertical cut along one row or column of cells.
struct Section {
    std::vector<SectionCell> cells; ///< K slowest
    float first_distance = 0, last_distance = 0;
    float top = 0, base = 0; ///< least and greatest depth
};

/// Cuts out one section, 0-based. Distances are measured from pillar to pillar at the section's middle depth; what a
/// pillar leans along the section is added. Cells with a corner that is not finite are left out. An index outside the
/// grid yields an empty section.
[[nodiscard]] Section cut_section(const GridModel& model, SectionAxis axis, std::int64_t index);

} // namespace lodex
