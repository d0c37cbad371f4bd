#pragma once

#include "ConjugateGradients.h"
#include "LargeBlockSystem.h"

#include <Lodex/utils/Progress.h>

#include <memory>
#include <span>

namespace Kelvane::flow {

/// Factorisation of the matrix of one discretisation: multifrontal Cholesky in the order of nested dissection of the
/// brick. Mixed is factorised in its hybrid form (unknowns on the faces of the samples), whose matrix is sparse.
class DirectSolver {
public:
    static constexpr double most_bytes = 1024.0 * 1024 * 1024; ///< held while factorising
    static constexpr double most_operations = 4e11;

    /// Null when the factorisation would go beyond the limits. Throws Lodex::Cancelled.
    [[nodiscard]] static std::unique_ptr<DirectSolver> make(const Samples& samples, Discretisation discretisation,
                                                            const Lodex::ProgressCheck& progress);
    virtual ~DirectSolver() = default;

    /// x = A^-1 b with A and the vectors those of the discretisation's FlowSystem.
    virtual void solve(std::span<const double> b, std::span<double> x) const = 0;
};

/// Adds solutions for what is left of the balance until it is below the tolerance or can no more be lowered.
[[nodiscard]] Convergence refine(const FlowSystem& system, const DirectSolver& direct, std::size_t axis,
                                 std::span<double> w, double tolerance, const Lodex::ProgressCheck& progress);

} // namespace Kelvane::flow
