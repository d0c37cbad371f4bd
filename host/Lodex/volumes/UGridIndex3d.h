#pragma once

namespace Lodex {

/// Indices of a grid of three axes.
struct UGridIndex3d {
    enum Axis { I = 0, J = 1, K = 2 };
    long i = 0, j = 0, k = 0; ///< 0-based
};

} // namespace Lodex
