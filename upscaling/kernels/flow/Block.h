#pragma once

#include <Lodex/utils/Progress.h>

#include <array>
#include <cstddef>
#include <span>

namespace Kelvane::flow {

using Vector3 = std::array<double, 3>;

/// Corner a + 2b + 4c stands at the I side a, the J side b and the K side c.
using Corners = std::array<Vector3, 8>;

/// What holds on the boundary of a block.
///
/// - Confined: unit drop along one axis, the other four faces sealed. Makes II, JJ, KK.
/// - KConfined: pressure linear along the four lateral faces, top and bottom (K) sealed. Makes II, JJ, IJ; KK as in
///   Confined.
/// - Unconfined: pressure linear on the whole boundary. Makes all six components.
enum class Boundary { Confined, KConfined, Unconfined };

/// TwoPoint: two-point finite differences, cell pressures. Mixed: lowest-order mixed hybrid finite elements (a lower
/// bound on boxes). Conforming: trilinear finite elements on the brick of the mean sizes (an upper bound).
enum class Discretisation { TwoPoint, Mixed, Conforming };

/// Fast: down to BlockOptions::tolerance, small blocks by factorisation. Exact: factorisation up to what fits into about
/// 1 GiB (true geometry: 15000 unknowns); beyond, iterations down to 1e-12 and BlockResult::backup.
enum class Solver { Fast, Exact };

/// One coarse cell, sampled. Owns nothing.
struct Block {
    /// Samples along I, J, K, each at least 1.
    std::array<int, 3> n{1, 1, 1};
    /// Mean sizes of the cell along I, J, K: the edges of its brick. Any length unit; ratios of them matter only.
    std::array<double, 3> size{1, 1, 1};
    /// The cell's corners in its own frame (see block_frame()), any origin; null: the cell is its brick. Conforming
    /// always takes the brick.
    const Corners* corners = nullptr;
    /// Permeability of the samples along the three axes of the frame, n[0]*n[1]*n[2] numbers each, I fastest, K
    /// slowest. Zero is sealed; so is what is negative or not finite. Any unit, which is that of the tensor.
    std::span<const double> ki, kj, kk;

    [[nodiscard]] std::size_t samples() const
    {
        return static_cast<std::size_t>(n[0]) * static_cast<std::size_t>(n[1]) * static_cast<std::size_t>(n[2]);
    }
};

struct BlockOptions {
    Boundary boundary = Boundary::Confined;
    Discretisation discretisation = Discretisation::TwoPoint;
    Solver solver = Solver::Fast;
    /// Relative residual (2-norm, against the right-hand side) at which Fast stops.
    double tolerance = 1e-8;
};

struct BlockResult {
    /// II, JJ, KK, IJ, IK, JK in the frame of the block; what the boundary does not make is 0.
    std::array<double, 6> tensor{};
    /// Iterations of all directions together; 0 for a direct solution.
    int iterations = 0;
    /// Largest relative residual of the directions.
    double residual = 0;
    /// The answer does not come from the method asked for alone: the geometry was degenerate and the brick stood in, or
    /// the solver stopped before its tolerance.
    bool backup = false;
};

using Lodex::Cancelled;
using Lodex::ProgressCheck;

/// Axes of the frame of a cell as rows: the mean edge vectors along I, J, K made orthonormal, I first, J in the I-J
/// plane, the third completed to point along K (so the frame of a left-handed cell is left-handed). Edges of no length
/// or without a direction of their own are replaced so that the rows stay orthonormal whatever the cell.
[[nodiscard]] std::array<Vector3, 3> block_frame(const Corners& corners);

/// A cell in its own frame.
struct FramedCell {
    std::array<Vector3, 3> frame;  ///< as block_frame() gives it
    Corners corners;               ///< in the frame, relative to the mean of the eight corners
    std::array<double, 3> size;    ///< lengths of the mean edge vectors along I, J, K, 0 where the cell is flat
};

/// Turns corners in world coordinates (x, y, depth; one length unit for all three) into a cell in its own frame.
/// Corners that are not finite give the unit cube in the world's axes.
[[nodiscard]] FramedCell frame_cell(const Corners& world);

} // namespace Kelvane::flow
