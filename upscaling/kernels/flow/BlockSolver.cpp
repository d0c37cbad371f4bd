#include "BlockSolver.h"

#include "LaneSolver.h"
#include "LargeBlock.h"
#include "SparseSolver.h"
#include "Vectors.h"

#include <Eigen/Eigenvalues>

#include <tbb/enumerable_thread_specific.h>
#include <tbb/parallel_for.h>
#include <tbb/task_arena.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <map>
#include <optional>
#include <stdexcept>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

namespace Kelvane::flow {

namespace {

/// Workspace up to which blocks are solved in vector lanes: beyond a processor's caches these starve.
constexpr double most_lane_bytes = 12e6;

/// A flat side of a brick counts as this part of the largest one.
constexpr double flattest = 1e-6;

bool has_true_geometry(const Block& block, const BlockOptions& options)
{
    return block.corners != nullptr && options.discretisation != Discretisation::Conforming && !is_brick(block);
}

bool fits_lanes(const Block& block, const BlockOptions& options)
{
    return LaneSolver::bytes(block.n, options.discretisation) <= most_lane_bytes;
}

/// A block made ready.
struct Prepared {
    const Block* block = nullptr;
    double largest = 0; ///< permeability
    bool has_zero = false;
    bool backup = false;
    std::array<double, 3> size{};
    std::optional<std::vector<HexSample>> geometry;
    /// Volume over squared mean length along each axis, as the samples have them: the flow through a brick as large.
    std::array<double, 3> brick_flow{};

    Prepared(const Block& block_, bool true_geometry) : block(&block_)
    {
        for (const std::span<const double>& k : {block->ki, block->kj, block->kk}) {
            for (const double value : k) {
                if (value > 0 && value < 1e300)
                    largest = std::max(largest, value);
                else
                    has_zero = true;
            }
        }
        for (const std::span<const double>& k : {block->ki, block->kj, block->kk})
            has_zero = has_zero || std::ranges::any_of(k, [&](double value) { return !(value / largest > 1e-290); });
        if (true_geometry) {
            geometry = sampled_geometry(*block);
            backup = !geometry.has_value();
            if (geometry)
                measure();
        }
        make_brick();
        backup = backup || (!geometry && flat_);
    }

    [[nodiscard]] Instance instance(bool unit) const
    {
        return {.block = block,
                .unit = unit,
                .scale = 1 / largest,
                .size = size,
                .geometry = geometry ? &*geometry : nullptr,
                .has_zero = has_zero && !unit};
    }

    /// The brick stands in for a geometry that could not be used.
    void leave_geometry()
    {
        geometry.reset();
        backup = true;
    }

private:
    void measure()
    {
        double volume = 0;
        std::array<Vector3, 3> edges{};
        for (const HexSample& sample : *geometry) {
            volume += sample.volume;
            for (int axis = 0; axis < 3; ++axis) {
                for (int c = 0; c < 3; ++c)
                    edges[axis][c] += sample.edge[axis][c];
            }
        }
        for (int axis = 0; axis < 3; ++axis) {
            const double rows = static_cast<double>(geometry->size()) / block->n[axis];
            brick_flow[axis] = volume * rows * rows / dot(edges[axis], edges[axis]);
        }
    }

    void make_brick()
    {
        double longest = 0;
        for (const double length : block->size)
            longest = std::max(longest, std::isfinite(length) ? length : 0.0);
        for (int axis = 0; axis < 3; ++axis) {
            const double length = block->size[axis];
            const bool sound = std::isfinite(length) && length >= flattest * longest && length > 0;
            size[axis] = sound ? length : longest > 0 ? flattest * longest : 1.0;
            flat_ = flat_ || !sound;
        }
    }

    bool flat_ = false;
};

/// Components of the tensor that energies give. Order of both: 00, 11, 22, 01, 02, 12.
constexpr int first_axis[6] = {0, 1, 2, 0, 0, 1};
constexpr int second_axis[6] = {0, 1, 2, 1, 2, 2};

/// On a brick: energies over volume, gradients being one over the sizes.
void add_brick(FlowCase flow, const Energies& energies, const std::array<double, 3>& size,
               std::array<double, 6>& tensor)
{
    const double largest = std::max({size[0], size[1], size[2]});
    const std::array<double, 3> s{size[0] / largest, size[1] / largest, size[2] / largest};
    const double volume = s[0] * s[1] * s[2];
    const int rights = right_sides(flow);
    if (rights == 1) {
        const int axis = static_cast<int>(flow);
        tensor[axis] = energies[0] * s[axis] * s[axis] / volume;
        return;
    }
    for (int e = 0; e < 6; ++e) {
        if (second_axis[e] < rights)
            tensor[e] = energies[e] * s[first_axis[e]] * s[second_axis[e]] / volume;
    }
}

/// On true geometry: energies against those of permeability 1. False when these are no measure: next to nothing flows
/// towards the thin end of a wedge, and what rounding leaves there would be divided by.
[[nodiscard]] bool add_ratio(FlowCase flow, const Energies& energies, const Energies& unit,
                             const std::array<double, 3>& brick_flow, std::array<double, 6>& tensor)
{
    constexpr double least = 1e-8; ///< part of a brick's flow; the corners' rounding lets some 1e-13 through
    const int rights = right_sides(flow);
    if (rights == 1) {
        if (!(unit[0] > least * brick_flow[static_cast<int>(flow)]))
            return false;
        tensor[static_cast<int>(flow)] = energies[0] / unit[0];
        return true;
    }
    using Small = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, 0, 3, 3>;
    Small e(rights, rights);
    Small one(rights, rights);
    for (int n = 0; n < 6; ++n) {
        const int a = first_axis[n];
        const int b = second_axis[n];
        if (b < rights) {
            e(a, b) = e(b, a) = energies[n];
            one(a, b) = one(b, a) = unit[n];
        }
    }
    // In units of its own diagonal, for a flat cell's energies differ by many decades.
    for (int a = 0; a < rights; ++a) {
        if (!(one(a, a) > 0))
            return false;
    }
    const Small scale = one.diagonal().cwiseSqrt().cwiseInverse().asDiagonal();
    const Eigen::SelfAdjointEigenSolver<Small> roots(scale * one * scale);
    if (roots.info() != Eigen::Success || !(roots.eigenvalues()[0] > 1e-8))
        return false;
    const Small root = roots.operatorInverseSqrt();
    const Small mean = root * scale * e * scale * root;
    // The root divides by the whole of `one` and keeps the tensor symmetric and positive; what it leaves to Q(k) / Q(1)
    // on the diagonal goes to rows and columns alike.
    Small factor = Small::Zero(rights, rights);
    for (int a = 0; a < rights; ++a)
        factor(a, a) = mean(a, a) > 0 ? std::sqrt(e(a, a) / one(a, a) / mean(a, a)) : 0.0;
    const Small ratio = factor * mean * factor;
    for (int n = 0; n < 6; ++n) {
        if (second_axis[n] < rights)
            tensor[n] = 0.5 * (ratio(first_axis[n], second_axis[n]) + ratio(second_axis[n], first_axis[n]));
    }
    return true;
}

/// Puts the permeability's unit back and sees to it that nothing but numbers leaves.
void finish(const Prepared& prepared, BlockResult& result)
{
    result.backup = result.backup || prepared.backup;
    for (double& component : result.tensor) {
        component *= prepared.largest;
        if (!std::isfinite(component)) {
            component = 0;
            result.backup = true;
        }
    }
    for (int axis = 0; axis < 3; ++axis)
        result.tensor[axis] = std::max(result.tensor[axis], 0.0);
}

void check(const Block& block)
{
    for (const int n : block.n) {
        if (n < 1)
            throw std::invalid_argument("a block needs at least one sample along each axis");
    }
    for (const std::span<const double>& k : {block.ki, block.kj, block.kk}) {
        if (k.size() != block.samples())
            throw std::invalid_argument("a block's permeabilities are not as many as its samples");
    }
}

/// Blocks that are solved together.
using Chunk = std::vector<std::size_t>;

/// Blocks of one shape by eights, those on true geometry by fours, for they bring permeability 1 along; large ones
/// alone.
std::vector<Chunk> make_chunks(std::span<const Block> blocks, const BlockOptions& options)
{
    using Key = std::tuple<std::array<int, 3>, bool>;
    std::map<Key, Chunk> open;
    std::vector<Chunk> chunks;
    for (std::size_t n = 0; n < blocks.size(); ++n) {
        check(blocks[n]);
        if (!fits_lanes(blocks[n], options)) {
            chunks.push_back({n});
            continue;
        }
        const bool true_geometry = has_true_geometry(blocks[n], options);
        Chunk& chunk = open[{blocks[n].n, true_geometry}];
        chunk.push_back(n);
        if (chunk.size() == (true_geometry ? lane_count / 2 : lane_count))
            chunks.push_back(std::exchange(chunk, {}));
    }
    for (auto& [key, chunk] : open) {
        if (!chunk.empty())
            chunks.push_back(std::move(chunk));
    }
    return chunks;
}

} // namespace

class BlockSolver::Impl {
public:
    void solve_chunk(std::span<const Block> blocks, const Chunk& chunk, const BlockOptions& options,
                     std::span<BlockResult> results, const ProgressCheck& progress)
    {
        std::vector<Prepared> ready;
        ready.reserve(chunk.size());
        for (const std::size_t n : chunk)
            ready.emplace_back(blocks[n], has_true_geometry(blocks[n], options));
        std::vector<BlockResult> answers(chunk.size());
        std::vector<std::size_t> bricks;
        std::vector<std::size_t> cells;
        for (std::size_t n = 0; n < ready.size(); ++n) {
            if (ready[n].largest > 0)
                (ready[n].geometry ? cells : bricks).push_back(n);
        }
        const std::vector<std::size_t> left = solve_group(ready, cells, options, answers, progress);
        for (const std::size_t n : left) {
            ready[n].leave_geometry();
            answers[n] = {};
        }
        bricks.insert(bricks.end(), left.begin(), left.end());
        (void)solve_group(ready, bricks, options, answers, progress);
        for (std::size_t n = 0; n < chunk.size(); ++n) {
            finish(ready[n], answers[n]);
            results[chunk[n]] = answers[n];
        }
    }

private:
    /// Solves blocks of one shape that are all bricks or all on true geometry. Returns those whose geometry failed.
    std::vector<std::size_t> solve_group(const std::vector<Prepared>& ready, const std::vector<std::size_t>& group,
                                         const BlockOptions& options, std::vector<BlockResult>& answers,
                                         const ProgressCheck& progress)
    {
        std::vector<std::size_t> failed;
        if (group.empty())
            return failed;
        if (!fits_lanes(*ready[group.front()].block, options)) {
            for (const std::size_t n : group) {
                if (!solve_large(ready[n], options, answers[n], progress))
                    failed.push_back(n);
            }
            return failed;
        }
        const bool true_geometry = ready[group.front()].geometry.has_value();
        const std::size_t step = true_geometry ? 2 : 1;
        const std::size_t most = lane_count / step;
        for (std::size_t first = 0; first < group.size(); first += most) {
            const std::size_t count = std::min(most, group.size() - first);
            std::vector<Instance> instances;
            for (std::size_t n = first; n < first + count; ++n) {
                instances.push_back(ready[group[n]].instance(false));
                if (true_geometry)
                    instances.push_back(ready[group[n]].instance(true));
            }
            std::vector<LaneSolver::Answer> lanes(instances.size());
            std::vector<char> sound(count, 1);
            for (const FlowCase flow : flow_cases(options.boundary)) {
                lane_solver(ready[group[first]].block->n, options.discretisation, flow).solve(instances, lanes);
                for (std::size_t n = 0; n < count; ++n) {
                    BlockResult& answer = answers[group[first + n]];
                    answer.backup = answer.backup || lanes[n * step].lost;
                    if (!true_geometry)
                        add_brick(flow, lanes[n].energies, ready[group[first + n]].size, answer.tensor);
                    else if (!add_ratio(flow, lanes[2 * n].energies, lanes[2 * n + 1].energies,
                                        ready[group[first + n]].brick_flow, answer.tensor))
                        sound[n] = 0;
                }
            }
            for (std::size_t n = 0; n < count; ++n) {
                if (sound[n] == 0)
                    failed.push_back(group[first + n]);
            }
        }
        return failed;
    }

    [[nodiscard]] static bool solve_large(const Prepared& prepared, const BlockOptions& options, BlockResult& answer,
                                          const ProgressCheck& progress)
    {
        if (!prepared.geometry) {
            Block brick = *prepared.block;
            brick.size = prepared.size;
            brick.corners = nullptr;
            answer = solve_large_brick(brick, options, progress);
            for (double& component : answer.tensor)
                component /= prepared.largest;
            return true;
        }
        const std::vector<FlowCase> flows = flow_cases(options.boundary);
        for (std::size_t part = 0; part < flows.size(); ++part) {
            const BlockPlan plan(prepared.block->n, options.discretisation, flows[part]);
            const auto solve = [&](bool unit, double from) {
                const ProgressCheck inner = [&, from](double done) {
                    const double before = static_cast<double>(part) + from;
                    return !progress || progress((before + 0.5 * done) / static_cast<double>(flows.size()));
                };
                const SparseAnswer sparse = solve_sparse(plan, prepared.instance(unit),
                                                         options.solver == Solver::Exact, options.tolerance, inner);
                answer.iterations += sparse.iterations;
                answer.residual = std::max(answer.residual, sparse.residual);
                answer.backup = answer.backup || sparse.failed;
                return sparse.energies;
            };
            const Energies energies = solve(false, 0);
            if (!add_ratio(flows[part], energies, solve(true, 0.5), prepared.brick_flow, answer.tensor))
                return false;
        }
        return true;
    }

    LaneSolver& lane_solver(const std::array<int, 3>& n, Discretisation discretisation, FlowCase flow)
    {
        constexpr double most_bytes = 100e6;
        const Key key{n, discretisation, flow};
        auto found = solvers_.find(key);
        if (found == solvers_.end()) {
            bytes_ += LaneSolver::bytes(n, discretisation);
            if (bytes_ > most_bytes) {
                solvers_.clear();
                bytes_ = LaneSolver::bytes(n, discretisation);
            }
            found = solvers_.emplace(key, LaneSolver(n, discretisation, flow)).first;
        }
        return found->second;
    }

    using Key = std::tuple<std::array<int, 3>, Discretisation, FlowCase>;
    std::map<Key, LaneSolver> solvers_;
    double bytes_ = 0;
};

BlockSolver::BlockSolver() : impl_(std::make_unique<Impl>()) {}
BlockSolver::~BlockSolver() = default;
BlockSolver::BlockSolver(BlockSolver&&) noexcept = default;
BlockSolver& BlockSolver::operator=(BlockSolver&&) noexcept = default;

BlockResult BlockSolver::solve(const Block& block, const BlockOptions& options, const ProgressCheck& progress)
{
    BlockResult result;
    solve({&block, 1}, options, {&result, 1}, progress);
    return result;
}

void BlockSolver::solve(std::span<const Block> blocks, const BlockOptions& options, std::span<BlockResult> results,
                        const ProgressCheck& progress)
{
    if (results.size() != blocks.size())
        throw std::invalid_argument("results are not as many as blocks");
    const std::vector<Chunk> chunks = make_chunks(blocks, options);
    for (std::size_t n = 0; n < chunks.size(); ++n) {
        const ProgressCheck inner = [&](double done) {
            return !progress || progress((static_cast<double>(n) + done) / static_cast<double>(chunks.size()));
        };
        if (!inner(0))
            throw Cancelled{};
        impl_->solve_chunk(blocks, chunks[n], options, results, inner);
    }
}

void solve_blocks(std::span<const Block> blocks, const BlockOptions& options, std::span<BlockResult> results,
                  const ProgressCheck& progress)
{
    if (results.size() != blocks.size())
        throw std::invalid_argument("results are not as many as blocks");
    const std::vector<Chunk> chunks = make_chunks(blocks, options);
    tbb::enumerable_thread_specific<BlockSolver> solvers;
    const std::thread::id caller = std::this_thread::get_id();
    std::atomic<std::size_t> done{0};
    std::atomic<bool> stopped{false};
    // Only the caller's thread asks the user, telling how far its own chunk is; the others see the answer.
    std::size_t own = 0; // blocks of the chunk that the caller's thread is at
    double told = 0;
    const ProgressCheck go_on = [&](double part) {
        if (progress && std::this_thread::get_id() == caller && !stopped) {
            const double blocks_done = static_cast<double>(done) + std::clamp(part, 0.0, 1.0) * static_cast<double>(own);
            told = std::max(told, std::min(1.0, blocks_done / static_cast<double>(blocks.size())));
            stopped = !progress(told);
        }
        return !stopped;
    };
    tbb::parallel_for(std::size_t{0}, chunks.size(), [&](std::size_t n) {
        if (std::this_thread::get_id() == caller)
            own = chunks[n].size();
        if (!go_on(0))
            throw Cancelled{};
        // A large block runs parallel loops of its own; while it waits, no other chunk may enter this thread's solver.
        tbb::this_task_arena::isolate([&] {
            solvers.local().impl_->solve_chunk(blocks, chunks[n], options, results, go_on);
        });
        done += chunks[n].size();
    });
    if (progress && !progress(1))
        throw Cancelled{};
}

} // namespace Kelvane::flow
