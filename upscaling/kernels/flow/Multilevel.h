#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <span>

namespace Kelvane::flow {

/// A symmetric seven-point matrix on a box of unknowns, given as a network: entry (c, d) is minus the conductance
/// between the neighbours c and d, the diagonal is the sum of the conductances of c plus its `ground`. All numbers are
/// non-negative and finite; an unknown with neither conductance nor ground takes no part.
struct SevenPointMatrix {
    /// Unknowns along I, J, K; I fastest, K slowest in all arrays.
    std::array<int, 3> n{1, 1, 1};
    /// Conductance from each unknown to its upper neighbour along I, J, K, n[0]*n[1]*n[2] numbers each; those that
    /// would lead out of the box are not read.
    std::array<std::span<const double>, 3> conductance;
    /// What the diagonal holds beyond the conductances: the link to fixed values. n[0]*n[1]*n[2] numbers.
    std::span<const double> ground;
};

/// Approximate inverse of a seven-point matrix: one multilevel cycle.
///
/// Coarse unknowns are bricks of 2 x 2 x 2 fine ones with piecewise constant transfer. Where one or two axes are much
/// stronger than the rest only these are coarsened, until the network is even. Each coarse system is solved by
/// one or two steps of flexible conjugate gradients preconditioned by the next level (K-cycle: Y. Notay and P. S.
/// Vassilevski, Numer. Linear Algebra Appl. 15, 2008), which makes up for the plain transfer. The smoother is an
/// incomplete Cholesky factorisation without fill before and after. Its elimination order is even K planes before odd
/// ones, J upwards, even I before odd ones: planes of one parity run on several threads and rows in vector lanes, and
/// the result does not depend on the number of threads. Pivots are summed from positive terms alone, so contrasts of
/// many decades cost no accuracy. Numbers are stored in single precision, about 40 bytes an unknown in all.
///
/// The cycle is not linear (its inner steps depend on the argument): use it in flexible conjugate gradients.
/// Not to be applied by two threads at a time.
class KCycle {
public:
    explicit KCycle(const SevenPointMatrix& matrix);
    ~KCycle();
    KCycle(KCycle&&) noexcept;
    KCycle& operator=(KCycle&&) noexcept;

    /// correction = approximate solution for this right-hand side. n[0]*n[1]*n[2] numbers each, natural order. Unknowns
    /// that take no part get 0.
    void apply(std::span<const double> right_hand_side, std::span<double> correction);

    /// The same where the size of the numbers is known: `unit`, such as the length of the right-hand side, counts as 1
    /// in single precision.
    void apply(std::span<const double> right_hand_side, std::span<double> correction, double unit);

    /// Levels, the finest and the directly solved coarsest included.
    [[nodiscard]] int levels() const;

    /// Memory held.
    [[nodiscard]] std::size_t bytes() const;

private:
    struct Level;
    struct Hierarchy;
    std::unique_ptr<Hierarchy> hierarchy_;
};

} // namespace Kelvane::flow
