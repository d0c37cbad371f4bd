#include "sgresize/MergeBlocks.h"

#include <cmath>

namespace Kelvane {

std::vector<MergeBlock> merge_blocks(int from, int to, int step)
{
    std::vector<MergeBlock> blocks;
    int end = 0; // of the whole blocks; stays 0 when there is none
    for (int start = from - 1; start + step <= to; start = end) {
        end = start + step;
        blocks.push_back({start, end - 1});
    }
    if (end < to - 1)
        blocks.push_back({end, to - 1});
    return blocks;
}

long merged_cells(long cells, int from, int to, int step)
{
    const long length = static_cast<long>(to) - from + 1;
    const float quotient = static_cast<float>(length) / static_cast<float>(step);
    return static_cast<long>(static_cast<double>(cells - length) + std::ceil(static_cast<double>(quotient)));
}

} // namespace Kelvane
