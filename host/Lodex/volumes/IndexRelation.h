#pragma once

#include <array>
#include <cstdint>
#include <vector>

namespace Lodex {

/// First and last index, 0-based and inclusive.
struct IndexRange {
    std::int64_t first = 0;
    std::int64_t last = 0;

    [[nodiscard]] std::int64_t count() const { return last - first + 1; }
    friend bool operator==(const IndexRange&, const IndexRange&) = default;
};

/// How the cells of one grid came from those of another: along each axis (I, J, K), for every index of this grid, the
/// range of the source's indices.
using IndexRelation = std::array<std::vector<IndexRange>, 3>;

} // namespace Lodex
