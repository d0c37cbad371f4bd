#pragma once

#include <array>

namespace Lodex {

/// The node lattice of a grid.
class SGridCube {
public:
    virtual ~SGridCube() = default;
    /// Numbers of nodes along I, J, K; cells along an axis are nodes minus one.
    [[nodiscard]] virtual long nu() const = 0;
    [[nodiscard]] virtual long nv() const = 0;
    [[nodiscard]] virtual long nw() const = 0;
    [[nodiscard]] long nb_cells() const { return (nu() - 1) * (nv() - 1) * (nw() - 1); }

    /// Local coordinates of a point (x, y, depth) within the lattice, each from 0 to 1 along I, J, K. False, with the
    /// result untouched, when the point lies in no cell.
    [[nodiscard]] virtual bool local_coordinates(const std::array<double, 3>& point, std::array<double, 3>& uvw) const = 0;
};

} // namespace Lodex
