#pragma once

#include "GridModel.h"

#include <array>
#include <cstdint>

namespace lodex {

/// A box of equal cells, all active, depths in 64 bits. `spacing` is the size of a cell along I, J, K, positive;
/// `origin` x, y and depth of the corner of cell (0, 0, 0) with the lowest of each. I runs along x, J along y, K down.
/// Throws ModelError when a size is below 1 or a spacing is not a positive number, Cancelled.
[[nodiscard]] GridModel make_box(const GridSize& size, const std::array<double, 3>& spacing,
                                 const std::array<double, 3>& origin = {0, 0, 0}, const ProgressCheck& progress = {});

/// Size of the example field when nothing else is asked for.
inline constexpr GridSize example_size{50, 40, 40};

/// The example field: an anticline of 3 km by 2.4 km cut by three faults, one of which dies out; four stratigraphic
/// units (fewer when there are fewer K layers) of all three layering styles. The top unit is eroded over the crest and
/// the third one wedges out to the east: cells there are pinched, those pinched to nothing inactive, as are the corners
/// of the map. Properties FACIES (discrete: shale, levee, channel), PORO (fraction), PERMX, PERMY, PERMZ (mD); user
/// regions "oil_zone" and "water_zone" above and below a contact; the three faults by name. Metres, depth about 2000;
/// depths and values are 32-bit. Bit-identical for the same size and seed on every machine and number of threads.
/// Throws ModelError when a size is below 1, Cancelled.
[[nodiscard]] GridModel make_example(const GridSize& size = example_size, std::uint64_t seed = 1,
                                     const ProgressCheck& progress = {});

} // namespace lodex
