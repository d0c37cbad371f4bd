#include "FlowUpscaler.h"

#include "upscaling/kernels/flow/BlockSolver.h"

namespace Kelvane {

void FlowUpscaler::upscale(std::span<const flow::Block> blocks, const flow::BlockOptions& options,
                           std::span<flow::BlockResult> results, const Lodex::ProgressCheck& progress) const
{
    flow::BlockOptions own = options;
    own.discretisation = discretisation_;
    flow::solve_blocks(blocks, own, results, progress);
}

} // namespace Kelvane
