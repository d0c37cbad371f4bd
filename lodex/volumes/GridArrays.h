#pragma once

#include "lodex/volumes/model/GridModel.h"

#include <cstddef>
#include <cstdint>
#include <variant>
#include <vector>

namespace lodex {

/// Names one array of a grid.
struct GridArray {
    enum Kind { Pillars, CornerDepths, ActiveFlags, PropertyValues, RegionFlags };

    Kind kind = Pillars;
    std::size_t position = 0; ///< of the property or region, 0-based; 0 for the others
};

/// Values of one array in the type in which the grid keeps it.
using ArrayValues =
    std::variant<std::vector<float>, std::vector<double>, std::vector<std::int32_t>, std::vector<std::uint8_t>>;

/// Where the arrays of a grid are kept until somebody asks for them. Called under the grid's lock, from any thread.
class GridArrays {
public:
    virtual ~GridArrays() = default;
    /// One array, in the type and the length that the grid's header says. The check is called on the calling thread and may
    /// lead to another call. Throws FileError where the array cannot be had, Cancelled.
    [[nodiscard]] virtual ArrayValues load(const GridArray& array, const ProgressCheck& check) = 0;
};

/// Number of values of an array of this grid.
[[nodiscard]] std::size_t array_length(const GridModel& model, const GridArray& array);

} // namespace lodex
