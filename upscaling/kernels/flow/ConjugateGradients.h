#pragma once

#include "LargeBlockSystem.h"
#include "Multilevel.h"

#include <Lodex/utils/Progress.h>

#include <cstddef>
#include <span>

namespace Kelvane::flow {

struct Convergence {
    int iterations = 0;
    /// 2-norm of the balance that is left, by that of the flow which the fixed pressures drive into the brick at
    /// pressure 0; worked out from the solution, not carried along.
    double residual = 0;
    bool reached = false;
    /// Energy of the solution: the flow along its direction.
    double energy = 0;
};

/// Flexible conjugate gradients (Polak-Ribiere form) for the pressure of one direction. `w` holds the start and
/// receives the solution. Stops when the relative residual is below the tolerance and the last four steps together
/// lowered the energy by less than this part of it: with contrasts of many decades the residual alone says nothing
/// about the flow. Gives up when the residual can no more be lowered or after `most_iterations`. Throws
/// Lodex::Cancelled.
[[nodiscard]] Convergence conjugate_gradients(const FlowSystem& system, KCycle& cycle, std::size_t axis,
                                              std::span<double> w, double tolerance, int most_iterations,
                                              const Lodex::ProgressCheck& progress);

} // namespace Kelvane::flow
