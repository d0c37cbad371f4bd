#pragma once

#include <Lodex/volumes/GridObj.h>

namespace Lodex {

class SGrid;

/// A set of cells or nodes of a grid, such as the cell under the cursor.
class SGridSubset {
public:
    /// Linear index, I fastest.
    SGridSubset(const SGrid* grid, long index) : grid_(grid), index_(index) {}

    [[nodiscard]] long index() const { return index_; }
    /// The numbers of cells (or nodes) along I, J, K.
    void get_property_dimensions(GridObj::PropertyAlignment alignment, long& ni, long& nj, long& nk) const;
    /// Splits a linear index into 0-based I, J, K for ni and nj items along I and J.
    static constexpr void components(long index, long& i, long& j, long& k, long ni, long nj)
    {
        i = index % ni;
        j = index / ni % nj;
        k = index / (ni * nj);
    }

private:
    const SGrid* grid_;
    long index_;
};

} // namespace Lodex
