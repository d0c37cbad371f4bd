#include "ConjugateGradients.h"

#include "LargeBlockVector.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace Kelvane::flow {
namespace {

constexpr double rounding = 1e-16; // a residual by that of pressure 0 beyond which steps mean nothing

double length(std::span<const double> v)
{
    return std::sqrt(dot(v, v));
}

void ask(const Lodex::ProgressCheck& progress, double done)
{
    if (progress && !progress(done))
        throw Lodex::Cancelled{};
}

} // namespace

Convergence conjugate_gradients(const FlowSystem& system, KCycle& cycle, std::size_t axis, std::span<double> w,
                                double tolerance, int most_iterations, const Lodex::ProgressCheck& progress)
{
    const std::size_t count = system.size();
    std::vector<double> r(count), z(count), p(count), q(count);
    system.from_profile(axis, {}, q);
    system.residual(axis, q, r);
    const double whole = length(r);
    Convergence state;
    const auto measure = [&] {
        system.residual(axis, w, r);
        state.energy = system.energy(axis, w, axis, w);
        const double left = length(r);
        state.residual = whole > 0 ? left / whole : 0.0;
        return left;
    };
    system.residual(axis, w, r);
    const double start = length(r);
    if (!(whole > 0) || start == 0) {
        measure();
        state.reached = true;
        return state;
    }
    double left = start;
    double checked = start;         // residual when last worked out from the solution
    double done = 0;
    double carried = 0;             // 1 / curvature of the last direction, 0 to start anew
    double energy = -1;             // carried along once it is known
    std::array<double, 4> drops{};  // of the energy in the last steps
    std::size_t steps = 0;          // since the start anew
    while (state.iterations < most_iterations) {
        ask(progress, done);
        cycle.apply(r, z, left);
        ask(progress, done);
        // With r - r_before = -step q and step = fresh / curvature, beta = z.(r - r_before) / fresh = -z.q / curvature.
        const auto [fresh, turned] = carried == 0 ? std::array<double, 2>{dot(r, z), 0.0} : two_dots(z, r, q);
        if (!(fresh > 0) || !std::isfinite(fresh))
            break;
        if (carried == 0)
            std::copy(z.begin(), z.end(), p.begin());
        else
            scale_and_add(p, -carried * turned, z);
        system.multiply(p, q);
        const double curvature = dot(p, q);
        if (!(curvature > 0) || !std::isfinite(curvature))
            break;
        const double step = fresh / curvature;
        carried = 1 / curvature;
        left = std::sqrt(advance(w, r, step, p, q));
        ++state.iterations;
        drops[steps++ % drops.size()] = step * fresh;
        energy -= step * fresh;
        if (left > 0)
            done = std::clamp(std::log(left / start) / std::log(tolerance * whole / start), done, 1.0);
        const bool small = left <= tolerance * whole;
        const bool vanished = left <= rounding * whole;
        if (!small || (steps < drops.size() && !vanished))
            continue;
        const double lately = drops[0] + drops[1] + drops[2] + drops[3];
        if (energy < 0)
            energy = system.energy(axis, w, axis, w);
        if (lately > tolerance * energy && !vanished)
            continue;
        left = measure();
        energy = state.energy;
        if (left <= tolerance * whole && lately <= tolerance * energy) {
            state.reached = true;
            return state;
        }
        if (left > checked / 2)
            break;
        checked = left;
        carried = 0;
        steps = 0;
        drops = {};
    }
    measure();
    state.reached = state.residual <= tolerance;
    return state;
}

} // namespace Kelvane::flow
