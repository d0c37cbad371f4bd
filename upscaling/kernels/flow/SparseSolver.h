#pragma once

#include "LaneSolver.h"

namespace Kelvane::flow {

struct SparseAnswer {
    Energies energies{};
    int iterations = 0;
    double residual = 0;
    bool failed = false; ///< no convergence, or no factorisation though it was asked for
};

/// One block of any size on a general sparse matrix, for true geometry. `exact`: sparse Cholesky factorisation under a
/// minimum degree ordering, up to 15000 unknowns; beyond, conjugate gradients to 1e-12, and `failed`. Else conjugate
/// gradients to the relative residual `tolerance`, preconditioned by the multilevel cycle of the two-point network, for
/// Mixed between two incomplete Cholesky factorisations. Throws Cancelled.
[[nodiscard]] SparseAnswer solve_sparse(const BlockPlan& plan, const Instance& instance, bool exact, double tolerance,
                                        const ProgressCheck& progress);

} // namespace Kelvane::flow
