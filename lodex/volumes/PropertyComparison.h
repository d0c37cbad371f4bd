#pragma once

#include "lodex/volumes/CornerPointGrid.h"

#include <Lodex/volumes/GridObjCellMapper.h>

#include <cstdint>
#include <string>
#include <vector>

namespace lodex {

/// Distribution of a property over cells, each weighing by its bulk volume. NaN where there is no value.
struct WeightedStatistics {
    std::int64_t count = 0; ///< cells with a defined value
    double bulk_volume = 0; ///< of these cells
    double total = 0;       ///< sum of value times bulk volume: what averaging by volume conserves
    double mean = 0;
    double deviation = 0; ///< standard deviation
    double min = 0, max = 0;
    double p10 = 0, p50 = 0, p90 = 0; ///< value below which 10, 50, 90 percent of the volume lie
};

/// Statistics of the values at these cells. NaN values are left out.
[[nodiscard]] WeightedStatistics weighted_statistics(std::vector<double> values, std::vector<double> volumes);

/// A property of a fine grid beside one of a coarse grid.
struct PropertyComparison {
    WeightedStatistics fine;   ///< over the fine cells that belong to a coarse cell
    WeightedStatistics coarse; ///< over the coarse cells that have fine cells
    /// One number per coarse cell: coarse value minus the volume-weighted mean of its fine values; NaN where either is
    /// undefined.
    std::vector<double> difference;
    std::int64_t compared = 0;    ///< coarse cells with a difference
    double mean_difference = 0;   ///< unweighted
    double mean_absolute = 0;
    double largest_absolute = 0;
    std::int64_t largest_cell = -1; ///< linear index of the coarse cell, 0-based
};

/// Compares over a mapping of the two grids. Throws Cancelled.
[[nodiscard]] PropertyComparison compare_properties(const CornerPointGrid& fine, const PropertyData& fine_property,
                                                    const CornerPointGrid& coarse, const PropertyData& coarse_property,
                                                    const Lodex::CellMapping& mapping, const ProgressCheck& progress = {});

} // namespace lodex
