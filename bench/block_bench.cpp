// Flow-based upscaling of many small blocks: a lognormal model, cut into equal bricks, Confined, three directions.
//
// block_bench [BI BJ BK] [sigma2] [repeats]
//
// The model has 60 x 60 x 40 cells of 10 x 10 x 1 m, isotropic, ln k normal with variance sigma2 (4), mean 0 and no
// correlation; blocks of BI x BJ x BK samples (6 x 6 x 4: 1000 blocks). Printed for each discretisation: the time on all
// threads, the processor time, the time on one thread, the time per block, and what the blocks' tensors add up to, so that answers stand beside times.

#include "upscaling/kernels/flow/BlockSolver.h"

#include <tbb/global_control.h>
#include <tbb/info.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <numbers>
#include <random>
#include <vector>

namespace {

using namespace Kelvane::flow;

constexpr std::array<int, 3> cells{60, 60, 40};
constexpr std::array<double, 3> cell_size{10, 10, 1};

/// Box-Muller on the engine's own numbers, the same with every standard library.
std::vector<double> lognormal(std::size_t count, double sigma, unsigned seed)
{
    std::mt19937 engine(seed);
    const auto uniform = [&] { return (engine() + 0.5) / 4294967296.0; };
    std::vector<double> values(count);
    for (double& value : values) {
        const double radius = std::sqrt(-2 * std::log(uniform()));
        value = std::exp(sigma * radius * std::cos(2 * std::numbers::pi * uniform()));
    }
    return values;
}

/// The blocks' samples, block by block, and the blocks themselves.
struct Blocks {
    std::vector<double> k;
    std::vector<Corners> corners;
    std::vector<Block> list;
};

Blocks cut(const std::vector<double>& model, const std::array<int, 3>& n)
{
    Blocks blocks;
    const std::array<int, 3> count{cells[0] / n[0], cells[1] / n[1], cells[2] / n[2]};
    for (int kb = 0; kb < count[2]; ++kb)
        for (int jb = 0; jb < count[1]; ++jb)
            for (int ib = 0; ib < count[0]; ++ib)
                for (int k = kb * n[2]; k < (kb + 1) * n[2]; ++k)
                    for (int j = jb * n[1]; j < (jb + 1) * n[1]; ++j)
                        for (int i = ib * n[0]; i < (ib + 1) * n[0]; ++i)
                            blocks.k.push_back(model[static_cast<std::size_t>((k * cells[1] + j) * cells[0] + i)]);
    const auto samples = static_cast<std::size_t>(n[0] * n[1] * n[2]);
    for (std::size_t first = 0; first < blocks.k.size(); first += samples) {
        Block block;
        block.n = n;
        for (int axis = 0; axis < 3; ++axis)
            block.size[axis] = n[axis] * cell_size[axis];
        block.ki = block.kj = block.kk = std::span(blocks.k).subspan(first, samples);
        blocks.list.push_back(block);
    }
    return blocks;
}

/// The same blocks with tops that dip along I and bottoms along J: no two opposite faces are parallel.
void deform(Blocks& blocks)
{
    for (const Block& block : blocks.list) {
        Corners corners{};
        for (int corner = 0; corner < 8; ++corner) {
            for (int axis = 0; axis < 3; ++axis)
                corners[corner][axis] = ((corner >> axis) & 1) != 0 ? block.size[axis] : 0.0;
            corners[corner][2] += (corner & 4) != 0 ? 0.01 * corners[corner][1] : 0.02 * corners[corner][0];
        }
        blocks.corners.push_back(corners);
    }
    for (std::size_t n = 0; n < blocks.list.size(); ++n)
        blocks.list[n].corners = &blocks.corners[n];
}

struct Times {
    double wall = 1e300;
    double processor = 1e300; ///< of all threads: what counts where other programs run beside this one
};

Times best_times(int repeats, const std::vector<Block>& blocks, const BlockOptions& options,
                 std::vector<BlockResult>& results)
{
    Times best;
    for (int repeat = 0; repeat < repeats; ++repeat) {
        const auto start = std::chrono::steady_clock::now();
        const std::clock_t clock = std::clock();
        solve_blocks(blocks, options, results);
        best.processor = std::min(best.processor, static_cast<double>(std::clock() - clock) / CLOCKS_PER_SEC);
        best.wall =
            std::min(best.wall, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }
    return best;
}

void report(const char* name, const Blocks& blocks, const BlockOptions& options, int repeats)
{
    std::vector<BlockResult> results(blocks.list.size());
    const Times all = best_times(repeats, blocks.list, options, results);
    std::array<double, 3> sum{};
    for (const BlockResult& result : results) {
        for (int axis = 0; axis < 3; ++axis)
            sum[axis] += result.tensor[axis];
    }
    const tbb::global_control limit(tbb::global_control::max_allowed_parallelism, 1);
    const Times one = best_times(repeats, blocks.list, options, results);
    std::printf("%-24s %9.4f %9.4f %9.4f %10.2f   %.10g %.10g %.10g\n", name, all.wall, all.processor, one.wall,
                1e6 * all.wall / static_cast<double>(results.size()), sum[0], sum[1], sum[2]);
}

} // namespace

int main(int argc, char** argv)
{
    std::array<int, 3> n{6, 6, 4};
    for (int axis = 0; axis < 3 && argc > 3; ++axis)
        n[axis] = std::max(1, std::atoi(argv[1 + axis]));
    const double sigma2 = argc > 4 ? std::atof(argv[4]) : 4;
    const int repeats = argc > 5 ? std::max(1, std::atoi(argv[5])) : 3;

    const std::vector<double> model =
        lognormal(static_cast<std::size_t>(cells[0] * cells[1] * cells[2]), std::sqrt(sigma2), 1);
    Blocks bricks = cut(model, n);
    Blocks deformed = cut(model, n);
    deform(deformed);
    std::printf("%zu blocks of %d x %d x %d samples, variance of ln k %g, Confined, three directions, direct; %d threads\n",
                bricks.list.size(), n[0], n[1], n[2], sigma2, tbb::info::default_concurrency());
    std::printf("%-24s %9s %9s %9s %10s   %s\n", "", "s", "cpu s", "s, one", "us/block", "sum of II, JJ, KK over the blocks");
    for (const auto& [name, discretisation] : {std::pair{"two-point", Discretisation::TwoPoint},
                                               std::pair{"mixed", Discretisation::Mixed},
                                               std::pair{"conforming", Discretisation::Conforming}})
        report(name, bricks, {.discretisation = discretisation, .solver = Solver::Exact}, repeats);
    for (const auto& [name, discretisation] : {std::pair{"two-point, true shape", Discretisation::TwoPoint},
                                               std::pair{"mixed, true shape", Discretisation::Mixed}})
        report(name, deformed, {.discretisation = discretisation, .solver = Solver::Exact}, repeats);
    report("mixed, Unconfined", bricks,
           {.boundary = Boundary::Unconfined, .discretisation = Discretisation::Mixed, .solver = Solver::Exact}, repeats);
    return 0;
}
