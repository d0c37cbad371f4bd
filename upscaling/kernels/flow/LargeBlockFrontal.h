#pragma once

#include <Lodex/utils/Progress.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

namespace Kelvane::flow {

/// An entry of a symmetric matrix, given once for each pair.
struct MatrixEntry {
    std::uint32_t row, column;
    double value;
};

/// Cholesky factorisation of a sparse symmetric positive definite matrix whose unknowns have places on a regular grid:
/// nested dissection by planes, a dense front for each separator (multifrontal: I. S. Duff and J. K. Reid, ACM Trans.
/// Math. Softw. 9, 1983). A pivot that is not positive, to rounding, belongs to a part without fixed value: the
/// unknown is left at 0.
class FrontalCholesky {
public:
    using Place = std::array<int, 3>;

    /// Unknowns at the places of `parity` (0 even, 1 odd) along an axis separate those on either side. Entries of the
    /// same pair are summed. Orders the unknowns only; asks `progress` now and then, throws Lodex::Cancelled.
    FrontalCholesky(std::vector<Place> places, int parity, const std::vector<MatrixEntry>& entries,
                    const Lodex::ProgressCheck& progress);

    [[nodiscard]] double bytes() const { return bytes_; }           ///< held while factorising
    [[nodiscard]] double operations() const { return operations_; } ///< of the factorisation

    /// Throws Lodex::Cancelled.
    void factorise(const Lodex::ProgressCheck& progress);

    /// x = A^-1 x
    void solve(std::span<double> x) const;

private:
    struct Front {
        std::uint32_t first = 0, own = 0;    // its unknowns in elimination order
        std::vector<std::uint32_t> boundary; // later unknowns it is tied to, ascending
        std::vector<std::uint32_t> children;
        std::size_t factor = 0;              // first of its (own + boundary) x own numbers in factors_, by columns
    };
    struct Progressing;

    std::uint32_t dissect(std::vector<std::uint32_t> unknowns, const std::vector<Place>& places, int parity,
                          const Lodex::ProgressCheck& progress);
    void find_boundaries(const Lodex::ProgressCheck& progress);
    static void eliminate(double* dense, std::size_t size, std::size_t own, Progressing& progressing);

    std::vector<Front> fronts_;          // children before parents
    std::vector<double> factors_;
    std::size_t factor_numbers_ = 0, front_numbers_ = 0, stack_numbers_ = 0; // of all factors, largest front, stack
    std::vector<std::uint32_t> order_;   // unknown at each place of the elimination order
    std::vector<std::size_t> starts_;    // entries of each unknown with itself and later ones, by elimination order
    std::vector<std::pair<std::uint32_t, double>> entries_;
    double bytes_ = 0, operations_ = 0;
};

} // namespace Kelvane::flow
