#include "ConjugateGradients.h"

#include "LargeBlockVector.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace Kelvane::flow {
namespace {

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
    system.residual(axis, w, r);
    double energy = system.energy(axis, w, axis, w);
    double done = 0;
    const double start = length(r);
    double left = start;
    state.residual = whole > 0 ? left / whole : 0.0;
    if (!(whole > 0) || left == 0) {
        state.reached = true;
        return state;
    }
    double checked = left; // residual when last worked out from the solution
    bool again = true; // the search directions start anew
    double carried = 0;
    std::array<double, 4> drops{};
    std::size_t steps = 0; // since the start anew
    while (state.iterations < most_iterations) {
        ask(progress, done);
        cycle.apply(r, z);
        const double fresh = dot(r, z);
        if (!(fresh > 0) || !std::isfinite(fresh))
            break;
        ask(progress, done);
        if (again) {
            std::copy(z.begin(), z.end(), p.begin());
        } else {
            // q is still the matrix times the last direction, so z.(r - r_before) is minus its step times z.q.
            scale_and_add(p, -carried * dot(z, q), z);
        }
        system.multiply(p, q);
        const double curvature = dot(p, q);
        if (!(curvature > 0) || !std::isfinite(curvature))
            break;
        const double step = fresh / curvature;
        // beta = z.(r - r_before) / fresh with r - r_before = -step q: the step by fresh is 1 / curvature.
        carried = 1 / curvature;
        add_scaled(w, step, p);
        add_scaled(r, -step, q);
        again = false;
        ++state.iterations;
        drops[steps++ % drops.size()] = step * fresh;
        energy -= step * fresh;
        left = length(r);
        done = std::clamp(std::log(left / start) / std::log(tolerance * whole / start), done, 1.0);
        const double lately = drops[0] + drops[1] + drops[2] + drops[3];
        if (left > tolerance * whole || (steps < drops.size() && left > 0) ||
            lately > tolerance * std::max(energy, 0.0))
            if (left > 1e-16 * whole)
                continue;
        system.residual(axis, w, r);
        energy = system.energy(axis, w, axis, w);
        left = length(r);
        state.residual = left / whole;
        if (left <= tolerance * whole && lately <= tolerance * energy) {
            state.reached = true;
            return state;
        }
        if (left > checked / 2)
            break;
        checked = left;
        again = true;
        steps = 0;
        drops = {};
    }
    system.residual(axis, w, r);
    state.residual = length(r) / whole;
    state.reached = state.residual <= tolerance;
    return state;
}

} // namespace Kelvane::flow
