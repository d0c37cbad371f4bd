#include "FaultBlocks.h"

#include "ParallelBlocks.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace Kelvane {

namespace {

// Largest finite absolute value of the corner depths of active cells.
double largest_depth(const CornerPointView& grid, const ProgressCheck& progress)
{
    const std::int64_t layers = grid.size[2];
    std::vector<double> largest(static_cast<std::size_t>(layers));
    grid.corner_depths.visit([&](auto depths) {
        for_blocks(layers, progress, [&](std::int64_t k) {
            double top = 0;
            for (std::int64_t j = 0; j < grid.size[1]; ++j) {
                const std::uint8_t* const active = grid.active.data() + grid.cell_index(0, j, k);
                for (int side = 0; side < 4; ++side) {
                    const auto* const row = depths.data() + depth_offset(grid.size, 0, j, k, side % 2, side / 2);
                    for (std::int64_t n = 0; n < 2 * grid.size[0]; ++n) {
                        const double depth = std::abs(static_cast<double>(row[n]));
                        top = active[n / 2] && depth > top && std::isfinite(depth) ? depth : top;
                    }
                }
            }
            largest[static_cast<std::size_t>(k)] = top;
        });
    });
    return largest.empty() ? 0 : *std::ranges::max_element(largest);
}

constexpr double part_of_depth = 1e-6;

// Sets of columns, joined under their lowest member.
class ColumnSets {
public:
    explicit ColumnSets(std::int64_t columns)
        : parent_(static_cast<std::size_t>(columns))
    {
        std::iota(parent_.begin(), parent_.end(), 0);
    }
    std::int32_t find(std::int32_t column)
    {
        auto& parent = parent_;
        while (parent[static_cast<std::size_t>(column)] != column) {
            auto& up = parent[static_cast<std::size_t>(column)];
            up = parent[static_cast<std::size_t>(up)];
            column = up;
        }
        return column;
    }
    void join(std::int32_t a, std::int32_t b)
    {
        a = find(a);
        b = find(b);
        parent_[static_cast<std::size_t>(std::max(a, b))] = std::min(a, b);
    }

private:
    std::vector<std::int32_t> parent_;
};

} // namespace

double coincidence_tolerance(const CornerPointView& grid)
{
    return part_of_depth * largest_depth(grid, {});
}

FaultBlocks find_fault_blocks(const CornerPointView& grid, double tolerance, const ProgressCheck& progress)
{
    const std::int64_t ni = grid.size[0], nj = grid.size[1], nk = grid.size[2];
    if (!(tolerance >= 0))
        tolerance = part_of_depth * largest_depth(grid, partial_progress(progress, 0, 0.4));
    const std::int64_t columns = ni * nj;

    // Whether a column is connected to its neighbour at higher I, and at higher J.
    std::vector<std::uint8_t> to_i(static_cast<std::size_t>(columns)), to_j(static_cast<std::size_t>(columns));
    grid.corner_depths.visit([&](auto depths) {
        for_blocks(nj, partial_progress(progress, 0.4, 0.8), [&](std::int64_t j) {
            const auto close = [tolerance](auto a, auto b) {
                return std::abs(static_cast<double>(a) - static_cast<double>(b)) <= tolerance;
            };
            std::int64_t open = (ni - 1) + (j + 1 < nj ? ni : 0);
            for (std::int64_t k = 0; k < nk && open > 0; ++k) {
                const std::uint8_t* const active = grid.active.data() + grid.cell_index(0, j, k);
                const auto row = [&](std::int64_t row_j, int b, int c) {
                    return depths.data() + depth_offset(grid.size, 0, row_j, k, b, c);
                };
                const auto *const z00 = row(j, 0, 0), *const z10 = row(j, 1, 0), *const z01 = row(j, 0, 1),
                                  *const z11 = row(j, 1, 1);
                for (std::int64_t i = 0; i + 1 < ni; ++i) {
                    auto& connected = to_i[static_cast<std::size_t>(i + ni * j)];
                    const std::int64_t a = 2 * i + 1;
                    if (!connected && active[i] && active[i + 1] && close(z00[a], z00[a + 1]) &&
                        close(z10[a], z10[a + 1]) && close(z01[a], z01[a + 1]) && close(z11[a], z11[a + 1])) {
                        connected = 1;
                        --open;
                    }
                }
                if (j + 1 == nj)
                    continue;
                const auto *const next0 = row(j + 1, 0, 0), *const next1 = row(j + 1, 0, 1);
                for (std::int64_t i = 0; i < ni; ++i) {
                    auto& connected = to_j[static_cast<std::size_t>(i + ni * j)];
                    const std::int64_t a = 2 * i;
                    if (!connected && active[i] && active[i + ni] && close(z10[a], next0[a]) &&
                        close(z10[a + 1], next0[a + 1]) && close(z11[a], next1[a]) && close(z11[a + 1], next1[a + 1])) {
                        connected = 1;
                        --open;
                    }
                }
            }
        });
    });

    ColumnSets sets(columns);
    for (std::int64_t column = 0; column < columns; ++column) {
        const auto at = static_cast<std::int32_t>(column);
        if (to_i[static_cast<std::size_t>(column)])
            sets.join(at, at + 1);
        if (to_j[static_cast<std::size_t>(column)])
            sets.join(at, at + static_cast<std::int32_t>(ni));
    }

    // Blocks are numbered when their first active cell comes by; inactive columns are in nobody's set but their own.
    FaultBlocks result;
    result.column_block.assign(static_cast<std::size_t>(columns), -1);
    std::vector<std::int32_t> number(static_cast<std::size_t>(columns), -1);
    std::int64_t left = columns;
    for (std::int64_t k = 0; k < nk && left > 0; ++k) {
        check_progress(progress, 0.8 + 0.2 * static_cast<double>(k) / static_cast<double>(nk));
        const std::uint8_t* const active = grid.active.data() + grid.cell_index(0, 0, k);
        for (std::int64_t column = 0; column < columns; ++column) {
            auto& block = result.column_block[static_cast<std::size_t>(column)];
            if (!active[column] || block >= 0)
                continue;
            auto& set_number = number[static_cast<std::size_t>(sets.find(static_cast<std::int32_t>(column)))];
            if (set_number < 0)
                set_number = static_cast<std::int32_t>(result.count++);
            block = set_number;
            --left;
        }
    }
    check_progress(progress, 1);
    return result;
}

} // namespace Kelvane
