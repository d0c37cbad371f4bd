#pragma once

// Plain copies of a grid's bytes, the limit of what an operator on all of them can reach.

#include "Timing.h"

#include "lodex/volumes/model/GridModel.h"

#include <tbb/parallel_for.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <span>
#include <variant>
#include <vector>

namespace bench {

/// All numbers of a grid, array by array.
inline std::vector<std::span<const std::byte>> arrays_of(const lodex::GridModel& model)
{
    std::vector<std::span<const std::byte>> arrays;
    const auto add = [&](const auto& numbers) {
        arrays.push_back(std::as_bytes(std::span(numbers)));
    };
    model.coord.visit([&](auto numbers) { add(numbers); });
    model.zcorn.visit([&](auto numbers) { add(numbers); });
    add(model.active);
    for (const auto& property : model.properties)
        std::visit(add, property.values);
    for (const auto& region : model.regions)
        add(region.flags);
    return arrays;
}

struct CopyTimes {
    double fresh = 0; ///< into memory not touched before, which is what an operator writes to
    double again = 0; ///< once more into the same memory
};

/// Copies the bytes on all threads.
inline CopyTimes copy_seconds(const std::vector<std::span<const std::byte>>& arrays)
{
    std::vector<std::unique_ptr<std::byte[]>> copies;
    for (const auto& array : arrays)
        copies.push_back(std::make_unique_for_overwrite<std::byte[]>(array.size()));
    const auto copy = [&] {
        for (std::size_t a = 0; a < arrays.size(); ++a) {
            constexpr std::size_t piece = 1 << 20;
            tbb::parallel_for(std::size_t{0}, (arrays[a].size() + piece - 1) / piece, [&](std::size_t n) {
                const std::size_t first = n * piece;
                std::memcpy(copies[a].get() + first, arrays[a].data() + first,
                            std::min(piece, arrays[a].size() - first));
            });
        }
    };
    CopyTimes times;
    times.fresh = time_of(copy).wall;
    times.again = time_of(copy).wall;
    for (std::size_t a = 0; a < arrays.size(); ++a)
        if (std::memcmp(copies[a].get(), arrays[a].data(), arrays[a].size()) != 0)
            std::abort();
    return times;
}

} // namespace bench
