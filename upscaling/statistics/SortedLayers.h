#pragma once

#include "upscaling/kernels/Averages.h"

#include <cstddef>
#include <vector>

namespace Kelvane {

/// The values of several layers, each layer in ascending order, for averages that cannot be put together from partial
/// results but can be found quickly in sorted lists: Median, MostProbable and DykstraParsons.
class SortedLayers {
public:
    /// One list of finite values per layer, each already in ascending order.
    explicit SortedLayers(std::vector<std::vector<double>> layers) : layers_(std::move(layers)) {}

    /// The average over all values of the layers first to last (0-based, inclusive); NaN when there are none. Equal to
    /// average() of the same values to rounding. Throws std::invalid_argument for another method.
    [[nodiscard]] double average(Average method, int first, int last) const;

private:
    /// Some of the layers.
    struct Range {
        int first, last;
        std::size_t count; ///< number of values
    };
    /// The value at a 0-based place of the ascending order.
    [[nodiscard]] double at(const Range& range, std::size_t place) const;
    /// The value that `part` of the values exceed, at plotting positions i / (n + 1) of the descending order.
    [[nodiscard]] double exceeded_by(const Range& range, double part) const;
    [[nodiscard]] double most_probable(const Range& range) const;

    std::vector<std::vector<double>> layers_;
};

} // namespace Kelvane
