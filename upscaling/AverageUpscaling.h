#pragma once

#include "FineProperty.h"
#include "UpscalingReport.h"

#include "upscaling/upscalers/AverageUpscaler.h"

#include <Lodex/utils/Progress.h>
#include <Lodex/volumes/GridObjCellMapper.h>

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace Kelvane {

/// One average per coarse cell over the fine cells that a mapping gives it.
struct AverageRequest {
    const Lodex::CellMapping& mapping;
    std::array<std::int64_t, 3> fine_size;        ///< cells along I, J, K
    std::array<std::int64_t, 3> coarse_size;
    std::span<const std::uint8_t> coarse_cells;   ///< one flag per coarse cell: those that take part
    FineProperty property;
    const AverageUpscaler& method;
    double power = 1;
    Preparation preparation = {};
    std::span<const double> volumes = {};         ///< bulk volume of the fine cells; empty: no volume weights
    std::vector<FineProperty> weights = {};       ///< their product is a weight
};

struct AverageResult {
    std::vector<double> values;         ///< one per coarse cell; NaN: undefined or not taking part
    std::vector<std::uint8_t> problems; ///< 1 for a cell that takes part and stayed undefined
    UpscalingReport report;
};

/// Methods that take no weights do not look at them. Throws std::runtime_error naming the property when a weight of one
/// of the cells that are read is negative, Cancelled. The result does not depend on the number of threads.
[[nodiscard]] AverageResult upscale_by_average(const AverageRequest& request, const Lodex::ProgressCheck& progress = {});

} // namespace Kelvane
