#pragma once

#include "upscaling/kernels/flow/Block.h"
#include "upscaling/kernels/flow/BlockSolver.h"

#include <array>
#include <cstddef>
#include <functional>
#include <optional>
#include <random>
#include <vector>

namespace flow_test {

using Kelvane::flow::Block;
using Kelvane::flow::BlockOptions;
using Kelvane::flow::BlockResult;
using Kelvane::flow::BlockSolver;
using Kelvane::flow::Boundary;
using Kelvane::flow::Corners;
using Kelvane::flow::Discretisation;
using Kelvane::flow::Solver;
using Kelvane::flow::Vector3;
using Tensor = std::array<double, 6>;
using Counts = std::array<int, 3>;

inline constexpr std::array<Boundary, 3> all_boundaries{Boundary::Confined, Boundary::KConfined, Boundary::Unconfined};
inline constexpr std::array<Discretisation, 3> all_discretisations{Discretisation::TwoPoint, Discretisation::Mixed,
                                                                   Discretisation::Conforming};

/// A block that owns its numbers.
struct BlockData {
    Counts n{1, 1, 1};
    std::array<double, 3> size{1, 1, 1};
    std::optional<Corners> corners;
    std::array<std::vector<double>, 3> k;

    [[nodiscard]] std::size_t samples() const
    {
        return static_cast<std::size_t>(n[0]) * static_cast<std::size_t>(n[1]) * static_cast<std::size_t>(n[2]);
    }
    [[nodiscard]] std::size_t at(int i, int j, int l) const
    {
        return static_cast<std::size_t>((l * n[1] + j) * n[0] + i);
    }
    [[nodiscard]] Block block() const
    {
        return {.n = n, .size = size, .corners = corners ? &*corners : nullptr, .ki = k[0], .kj = k[1], .kk = k[2]};
    }
};

/// value(axis, i, j, k)
BlockData make_block(const Counts& n, const std::array<double, 3>& size,
                     const std::function<double(int, int, int, int)>& value);
/// ln k normal of standard deviation `sigma`, the three axes alike (isotropic) or independent.
BlockData lognormal_block(const Counts& n, const std::array<double, 3>& size, double sigma, bool isotropic,
                          unsigned seed);

/// Direct solution.
BlockResult solve(const BlockData& data, Boundary boundary, Discretisation discretisation);
Tensor tensor_of(const BlockData& data, Boundary boundary, Discretisation discretisation);

/// Smallest eigenvalue of the symmetric tensor.
double least_eigenvalue(const Tensor& tensor);

/// Corners of a brick, corner 0 in the origin.
Corners brick_corners(const std::array<double, 3>& size);
/// matrix * corner
Corners mapped(const Corners& corners, const std::array<Vector3, 3>& matrix);

} // namespace flow_test
