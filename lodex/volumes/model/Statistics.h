#pragma once

#include "GridModel.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lodex {

/// Statistics of the defined values of a property over the active cells. Values on points are counted over all nodes.
struct PropertyStatistics {
    std::string name;
    bool discrete = false;
    std::int64_t count = 0;     ///< defined values
    std::int64_t undefined = 0; ///< undefined values of active cells
    /// Absent when count is 0.
    std::optional<double> min, max, mean;
    double sum = 0;
    std::map<std::int32_t, std::int64_t> codes; ///< discrete only: how many cells have each code
};

struct RegionStatistics {
    std::string name;
    bool model = false;
    std::int64_t cells = 0;   ///< active cells
    std::int64_t flagged = 0; ///< cells of the region whatever their active flag
    double bulk_volume = 0;   ///< of the active cells
};

struct LayerStatistics {
    std::int64_t k = 0; ///< 0-based
    std::int64_t active = 0;
    double bulk_volume = 0; ///< of the active cells
    /// Unweighted mean of each property over the defined active cells, in the order of GridModel::properties; absent
    /// where there is none. Properties on points have no mean here.
    std::vector<std::optional<double>> means;
};

/// Everything that a report says of a grid.
struct GridStatistics {
    std::int64_t active = 0;
    double bulk_volume = 0;                     ///< active cells
    double total_volume = 0;                    ///< all cells
    std::vector<PropertyStatistics> properties; ///< in the order of GridModel::properties
    std::vector<RegionStatistics> regions;      ///< in the order of GridModel::regions
    std::vector<LayerStatistics> k_layers;      ///< from top to bottom
};

/// Statistics of one property, over the active cells or over those of them in `region`. Throws Cancelled.
[[nodiscard]] PropertyStatistics property_statistics(const GridModel& model, const PropertyData& property,
                                                     const RegionData* region = nullptr,
                                                     const ProgressCheck& progress = {});

/// All of it, one pass over the geometry. Sums are compensated and do not depend on the number of threads.
/// Throws Cancelled.
[[nodiscard]] GridStatistics grid_statistics(const GridModel& model, const ProgressCheck& progress = {});

} // namespace lodex
