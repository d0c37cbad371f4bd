#pragma once

#include "Lanes.h"

#include <cstddef>
#include <vector>

namespace Kelvane::flow {

/// Rows of a lower triangle, each stored from its first entry to the diagonal. First columns never decrease, so the
/// rows that reach a column follow each other.
struct Envelope {
    int rows = 0;
    std::vector<int> first;            ///< first column of each row
    std::vector<int> last;             ///< last row that reaches each column
    std::vector<std::ptrdiff_t> start; ///< entry (i, k) stands at start[i] + k
    std::size_t entries = 0;

    Envelope() = default;
    /// `first_columns` of each row, at most the row itself; made non-decreasing by widening.
    explicit Envelope(std::vector<int> first_columns);

    [[nodiscard]] std::ptrdiff_t at(int row, int column) const { return start[row] + column; }
    /// Multiplications and additions of a factorisation.
    [[nodiscard]] double work() const;
};

/// Cholesky factorisation of eight matrices at once, in place: the strict rows become those of L, the diagonal the
/// inverses of L's. `borders` further rows of `rows` entries each (`border`, one after the other) become
/// L^-1 border. A row whose pivot is lost in rounding is taken out (its unknown is 0); rows of zeros are meant to, any
/// other raises its lane in `lost`.
void factor_cholesky(const Envelope& envelope, Lanes* matrix, Lanes* border, int borders, Lanes& lost);

/// x = -L^-T y for one border row y that factor_cholesky() left: the solution for the right-hand side -border.
void solve_cholesky(const Envelope& envelope, const Lanes* matrix, const Lanes* y, Lanes* x);

/// Eliminates eight networks of conductances at once, node after node by the star-mesh transformation. Strict rows hold
/// the conductances between nodes, the first `terminals` border rows those to terminals; what stands on the diagonal is
/// not read. All of them are non-negative and nothing is ever subtracted, so every result has nearly full relative
/// accuracy whatever the contrast, and nodes without any connection drop out by themselves. The border rows after the
/// terminals are right-hand sides of any sign. Afterwards the strict rows are those of L with L L^T = the network's
/// matrix, the diagonal holds the inverses of L's, terminals and right-hand sides are L^-1 of themselves.
void factor_network(const Envelope& envelope, Lanes* matrix, Lanes* border, int terminals, int right_sides);

/// x = L^-T y for one border row y that factor_network() left.
void solve_network(const Envelope& envelope, const Lanes* matrix, const Lanes* y, Lanes* x);

} // namespace Kelvane::flow
