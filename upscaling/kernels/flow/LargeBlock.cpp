#include "LargeBlock.h"

#include "ConjugateGradients.h"
#include "LargeBlockDirect.h"
#include "LargeBlockSystem.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <stdexcept>
#include <vector>

namespace Kelvane::flow {
namespace {

constexpr int most_iterations = 1000;
constexpr double refined_tolerance = 1e-12;
constexpr double factorising = 0.9; // part of the time of a direct solution

// Directions that share their open faces, and so their matrix.
struct Group {
    OpenAxes open;
    std::vector<std::size_t> axes;
};

std::vector<Group> groups_of(Boundary boundary)
{
    switch (boundary) {
    case Boundary::Confined:
        return {{{true, false, false}, {0}}, {{false, true, false}, {1}}, {{false, false, true}, {2}}};
    case Boundary::KConfined: return {{{true, true, false}, {0, 1}}, {{false, false, true}, {2}}};
    case Boundary::Unconfined: break;
    }
    return {{{true, true, true}, {0, 1, 2}}};
}

std::unique_ptr<FlowSystem> system_of(const Samples& samples, Discretisation discretisation)
{
    switch (discretisation) {
    case Discretisation::Mixed: return make_mixed_system(samples);
    case Discretisation::Conforming: return make_conforming_system(samples);
    case Discretisation::TwoPoint: break;
    }
    return make_two_point_system(samples);
}

// Place of component (a, b), a <= b, in II, JJ, KK, IJ, IK, JK.
std::size_t component(std::size_t a, std::size_t b)
{
    return a == b ? a : a + b + 2;
}

// Pressure on the planes between the layers across an axis as if each plane had one pressure: a start that puts
// barriers where they are. Empty when a layer lets nothing through.
std::vector<double> layered_profile(const Samples& samples, std::size_t axis)
{
    const auto layers = static_cast<std::size_t>(samples.n()[axis]);
    std::vector<double> conductance(layers, 0.0);
    std::size_t c = 0;
    for (int k = 0; k < samples.n()[2]; ++k)
        for (int j = 0; j < samples.n()[1]; ++j)
            for (int i = 0; i < samples.n()[0]; ++i)
                conductance[static_cast<std::size_t>(std::array<int, 3>{i, j, k}[axis])] +=
                    samples.conductance(axis, c++);
    std::vector<double> pressure(layers + 1, 0.0);
    for (std::size_t layer = layers; layer-- > 0;)
        pressure[layer] = pressure[layer + 1] + 1 / conductance[layer];
    if (!std::isfinite(pressure[0]) || pressure[0] <= 0)
        return {};
    const double whole = pressure[0];
    for (double& p : pressure)
        p /= whole;
    return pressure;
}

struct Work {
    const BlockOptions& options;
    const Lodex::ProgressCheck& progress;
    BlockResult result;
    double done = 0; // of all directions

    void ask(double part) const
    {
        if (progress && !progress(std::min(1.0, part)))
            throw Lodex::Cancelled{};
    }
};

void solve_group(const Block& block, const Group& group, Work& work)
{
    const bool conforming = work.options.discretisation == Discretisation::Conforming;
    const Samples samples(block, group.open, conforming);
    work.ask(work.done);
    if (samples.none()) {
        work.done += static_cast<double>(group.axes.size()) / 3;
        return;
    }
    const std::unique_ptr<FlowSystem> system = system_of(samples, work.options.discretisation);
    work.ask(work.done);
    std::vector<std::vector<double>> solutions;
    const double share = 1.0 / 3;
    std::unique_ptr<DirectSolver> direct;
    double tolerance = work.options.tolerance;
    if (work.options.solver == Solver::Exact) {
        const double part = share * static_cast<double>(group.axes.size()) * factorising;
        direct = DirectSolver::make(samples, work.options.discretisation, [&](double done) {
            return !work.progress || work.progress(std::min(1.0, work.done + part * done));
        });
        tolerance = refined_tolerance;
        if (direct)
            work.done += part;
        work.result.backup = work.result.backup || !direct;
    }
    const double axis_share = direct ? share * (1 - factorising) : share;
    const std::unique_ptr<KCycle> cycle = direct ? nullptr : std::make_unique<KCycle>(system->preconditioner());
    for (const std::size_t axis : group.axes) {
        std::vector<double> w(system->size(), 0.0);
        const Lodex::ProgressCheck inner = [&](double done) {
            return !work.progress || work.progress(std::min(1.0, work.done + axis_share * done));
        };
        if (group.axes.size() == 1) {
            const std::vector<double> profile = layered_profile(samples, axis);
            if (!profile.empty())
                system->from_profile(axis, profile, w);
        }
        const Convergence convergence =
            direct ? refine(*system, *direct, axis, w, tolerance, inner)
                   : conjugate_gradients(*system, *cycle, axis, w, tolerance, most_iterations, inner);
        work.result.iterations += convergence.iterations;
        work.result.residual = std::max(work.result.residual, convergence.residual);
        work.result.backup = work.result.backup || !convergence.reached;
        solutions.push_back(std::move(w));
        for (std::size_t other = 0; other < solutions.size(); ++other) {
            const std::size_t b = group.axes[other];
            const double energy =
                b == axis ? convergence.energy : system->energy(axis, solutions.back(), b, solutions[other]);
            work.result.tensor[component(std::min(axis, b), std::max(axis, b))] =
                energy * samples.edge(axis) * samples.edge(b) * samples.unit();
        }
        work.done += axis_share;
        work.ask(work.done);
    }
}

} // namespace

BlockResult solve_large_brick(const Block& block, const BlockOptions& options, const Lodex::ProgressCheck& progress)
{
    for (const int n : block.n)
        if (n < 1)
            throw std::invalid_argument("a block needs at least one sample along each axis");
    for (const auto& values : {block.ki, block.kj, block.kk})
        if (values.size() != block.samples())
            throw std::invalid_argument("permeability of a block must have one number for each sample");
    Work work{options, progress, {}, 0};
    Block brick = block;
    for (double& size : brick.size)
        if (!(size > 0) || size > std::numeric_limits<double>::max()) {
            size = 1;
            work.result.backup = true;
        }
    for (const Group& group : groups_of(options.boundary))
        solve_group(brick, group, work);
    return work.result;
}

} // namespace Kelvane::flow
