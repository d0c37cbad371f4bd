#pragma once

#include "ChangeSums.h"
#include "Layering.h"
#include "MergePlan.h"

#include <cstdint>
#include <span>
#include <variant>
#include <vector>

namespace lodex {

/// What the cells of a merge are made from, and the arrays they go to, which have their sizes already.
struct MergeJob {
    struct Property {
        const PropertyData* in = nullptr;
        PropertyData* out = nullptr;
    };
    struct Region {
        const std::uint8_t* in = nullptr;
        std::uint8_t* out = nullptr;
        RegionMode mode = RegionMode::Any;
    };

    const GridModel& source;
    GridModel& result; ///< size and flags
    /// Of the result; as wide as the source's, or wider.
    std::variant<std::span<float>, std::span<double>> depths;
    const MergePlans& plans;
    double percentile = 0;
    const std::vector<LayerSurface>* surfaces = nullptr; ///< of the old K layers; null: they stay where they are
    std::vector<Property> properties;                    ///< those on cells
    std::vector<Region> regions;
};

/// Sums over cells for the report.
struct MergeSums : ChangeSums {
    std::int64_t merged = 0, gave_way = 0, undefined = 0;

    void add(const MergeSums& other);
};

/// Makes all cells. A discrete value that is to be undefined is left 0. Throws Cancelled.
[[nodiscard]] MergeSums merge_cells(const MergeJob& job, const ProgressCheck& progress);

} // namespace lodex
