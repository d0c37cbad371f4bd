#pragma once

#include "ChangeSums.h"
#include "Layering.h"
#include "SubdividePlan.h"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace lodex {

/// What the cells of a subdivision are made from, and the arrays they go to, which have their sizes already.
struct SubdivideJob {
    struct Property {
        const PropertyData* in = nullptr;
        PropertyData* out = nullptr;
    };
    struct Region {
        const std::uint8_t* in = nullptr;
        std::uint8_t* out = nullptr;
    };

    const GridModel& source;
    GridModel& result;        ///< size, pillars and flags
    std::span<double> depths; ///< of the result
    int axis = 2;
    const std::array<AxisDivision, 3>& divisions;
    bool along_pillar = true;
    const std::vector<LayerSurface>* surfaces = nullptr; ///< null: tops and bases are the old ones
    std::vector<Property> properties;                    ///< those on cells
    std::vector<Region> regions;
};

/// Sums over cells for the report.
struct SubdivideSums : ChangeSums {
    std::int64_t divided = 0, pinched = 0;

    void add(const SubdivideSums& other);
};

/// Makes all cells. Throws Cancelled.
[[nodiscard]] SubdivideSums subdivide_cells(const SubdivideJob& job, const ProgressCheck& progress);

} // namespace lodex
