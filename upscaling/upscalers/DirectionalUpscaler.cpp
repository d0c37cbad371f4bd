#include "DirectionalUpscaler.h"

#include "upscaling/kernels/ParallelBlocks.h"

namespace Kelvane {

std::array<double, 3> DirectionalUpscaler::diagonal(const flow::Block& block) const
{
    return flow::directional_means(mean_, block.n, block.ki);
}

void DirectionalUpscaler::upscale(std::span<const flow::Block> blocks, const flow::BlockOptions&,
                                  std::span<flow::BlockResult> results, const Lodex::ProgressCheck& progress) const
{
    for_blocks(static_cast<std::int64_t>(blocks.size()), progress, [&](std::int64_t n) {
        const auto at = static_cast<std::size_t>(n);
        const std::array<double, 3> means = diagonal(blocks[at]);
        results[at].tensor = {means[0], means[1], means[2], 0, 0, 0};
    });
}

} // namespace Kelvane
