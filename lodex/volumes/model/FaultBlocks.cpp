#include "FaultBlocks.h"

#include <algorithm>

namespace lodex {

std::vector<RegionData> fault_block_regions(const GridModel& model, double tolerance, const ProgressCheck& progress)
{
    const FaultBlocks blocks = find_fault_blocks(model, tolerance, progress);
    std::vector<RegionData> regions;
    if (blocks.count < 2)
        return regions;
    for (std::int64_t n = 0; n < blocks.count; ++n)
        regions.push_back({"fault_block_" + std::to_string(n + 1),
                           std::vector<std::uint8_t>(static_cast<std::size_t>(model.cells())), true});
    const std::size_t columns = blocks.column_block.size();
    for (std::size_t cell = 0; cell < static_cast<std::size_t>(model.cells()); cell += columns)
        for (std::size_t column = 0; column < columns; ++column)
            if (const std::int32_t block = blocks.column_block[column]; block >= 0)
                regions[static_cast<std::size_t>(block)].flags[cell + column] = 1;
    return regions;
}

void replace_regions(GridModel& model, std::vector<RegionData> regions)
{
    for (RegionData& region : regions) {
        const auto it = std::ranges::find(model.regions, region.name, &RegionData::name);
        if (it == model.regions.end())
            model.regions.push_back(std::move(region));
        else
            *it = std::move(region);
    }
}

} // namespace lodex
