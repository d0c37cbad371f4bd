#pragma once

#include "Block.h"

#include <memory>
#include <span>

namespace Kelvane::flow {

/// Effective permeability of sampled coarse cells. One per thread: keeps plans and workspace of the shapes it has seen.
///
/// The tensor: under a unit drop a diagonal component is Q(k) / Q(1), Q(1) being the flow through the same discrete
/// problem with permeability 1 (on a brick: area over length). Under linear pressure the dissipation E_ab of each pair
/// of axes, equal to the volume times the mean flux along b for the gradient along a, gives the tensor, which is
/// symmetric by itself; E is divided by that of permeability 1 so that equal values come out on any geometry, too.
///
/// Whatever is asked has an answer: 0 where nothing can flow, the brick in place of a degenerate geometry, a thin brick
/// in place of a flat one (both raise BlockResult::backup).
class BlockSolver {
public:
    BlockSolver();
    ~BlockSolver();
    BlockSolver(BlockSolver&&) noexcept;
    BlockSolver& operator=(BlockSolver&&) noexcept;

    /// Throws std::invalid_argument for sample counts below 1 or arrays of another size, Cancelled.
    [[nodiscard]] BlockResult solve(const Block& block, const BlockOptions& options,
                                    const ProgressCheck& progress = {});

    /// Many blocks on this thread; blocks of one shape share the vector lanes. A block's result does not depend on the
    /// others. results as long as blocks.
    void solve(std::span<const Block> blocks, const BlockOptions& options, std::span<BlockResult> results,
               const ProgressCheck& progress = {});

private:
    friend void solve_blocks(std::span<const Block> blocks, const BlockOptions& options,
                             std::span<BlockResult> results, const ProgressCheck& progress);
    class Impl;
    std::unique_ptr<Impl> impl_;
};

/// Many blocks on all threads; results as long as blocks, bit-equal for any number of threads. `progress` is called
/// from this thread. Throws std::invalid_argument, Cancelled.
void solve_blocks(std::span<const Block> blocks, const BlockOptions& options, std::span<BlockResult> results,
                  const ProgressCheck& progress = {});

} // namespace Kelvane::flow
