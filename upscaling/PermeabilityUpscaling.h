#pragma once

#include "FineProperty.h"
#include "UpscalingReport.h"

#include "upscaling/kernels/CellGeometry.h"
#include "upscaling/kernels/flow/Block.h"

#include <Kelvane/upscaling/Upscaler.h>
#include <Lodex/utils/Progress.h>
#include <Lodex/volumes/GridObjCellMapper.h>

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace Kelvane {

/// Permeability of each coarse cell from samples of the fine one.
struct PermeabilityRequest {
    const Lodex::MatchedGrids& matched;
    std::array<std::int64_t, 3> fine_size;      ///< cells along I, J, K
    CornerPointView coarse;                     ///< geometry and size of the coarse grid
    std::span<const std::uint8_t> coarse_cells; ///< one flag per coarse cell: those that take part
    std::array<FineProperty, 3> permeability;   ///< along I, J, K; the same one three times for a scalar
    const Upscaler& method;                     ///< an AverageUpscaler (of the first permeability) or a LocalUpscaler
    double power = 1;                           ///< of an average
    Preparation preparation = {};
    std::array<int, 3> sampling{1, 1, 1};       ///< along I, J, K
    /// True: exactly `sampling`. False: along each axis the number of distinct fine indices among the coarse cell's fine
    /// cells, at most `sampling`.
    bool fixed_sampling = false;
    flow::BlockOptions options = {};
};

/// Components of a permeability tensor in results: II, JJ, KK, IJ, IK, JK, in the frame of each coarse cell.
struct PermeabilityResult {
    /// One array per component that the method makes under the boundary condition, one number per coarse cell, NaN where
    /// undefined or not taking part; the others are empty. An average fills the first three alike.
    std::array<std::vector<double>, 6> components;
    std::vector<std::uint8_t> problems; ///< 1 for a cell that takes part and stayed undefined or needed a backup
    UpscalingReport report;
};

/// Samples in no fine cell, or in one that does not take part, are sealed. An undefined sample takes the mean of its defined
/// neighbours, wave by wave; a zero or negative one is sealed. Averages that cannot take a zero answer 0 where a sample is
/// sealed, which is their limit. Throws Cancelled. The result does not depend on the number of threads.
[[nodiscard]] PermeabilityResult upscale_permeability(const PermeabilityRequest& request,
                                                      const Lodex::ProgressCheck& progress = {});

/// Fills the undefined (NaN) values of a box of samples: each takes the mean of its defined neighbours along I, J, K, then
/// those that now have defined neighbours, until none is left; what no wave reaches takes the mean of all. `passable` has one
/// flag per sample; others keep their value and give none. Returns how many were filled; 0 with the box unchanged when no
/// sample is defined.
std::int64_t fill_undefined(std::span<double> values, std::span<const std::uint8_t> passable, const std::array<int, 3>& n);

} // namespace Kelvane
