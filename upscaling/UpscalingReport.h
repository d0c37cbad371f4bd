#pragma once

#include "FineProperty.h"

#include <cstdint>

namespace Kelvane {

/// What an upscaling did, for the person who must defend its numbers.
struct UpscalingReport {
    std::int64_t coarse_cells = 0;  ///< that take part
    std::int64_t done = 0;          ///< have a value
    std::int64_t no_fine_cell = 0;  ///< undefined: no fine cell belongs to them
    std::int64_t nothing_left = 0;  ///< undefined: no fine value was left for the method
    std::int64_t backup = 0;        ///< have a value of a backup computation
    std::int64_t fine_cells = 0;    ///< fine cells that were read (samples of local methods)
    std::int64_t iterations = 0;    ///< of all solvers together
    int most_iterations = 0;        ///< of one coarse cell
    double largest_residual = 0;    ///< relative, of one coarse cell
    double seconds = 0;             ///< without the mapping
    PreparationCounts preparation;
};

} // namespace Kelvane
