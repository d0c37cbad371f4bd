#pragma once

#include <cstddef>

// Kernels over one K plane of a level of the multilevel cycle.
//
// A row of unknowns along I is stored as its even ones, a 0, its odd ones (with a dummy when their number is odd): the
// neighbours along I of a run of lanes are then a run themselves. With h even unknowns a row takes 2h + 1 numbers.

namespace Kelvane::flow {

/// The matrix on one K plane. What lies outside the box points to zeros.
struct PlaneView {
    std::size_t half = 0; ///< even unknowns of a row
    std::size_t rows = 0;
    const float* ti = nullptr;
    const float* tj = nullptr;
    const float* tk = nullptr;
    const float* tk_below = nullptr; ///< conductances of the plane below, leading here
    const float* ground = nullptr;
    const float* inverse_pivot = nullptr;
    const float* zero_row = nullptr;

    [[nodiscard]] std::size_t stride() const { return 2 * half + 1; }
    [[nodiscard]] std::size_t size() const { return rows * stride(); }
};

/// A vector on one K plane and its neighbours.
struct PlaneVector {
    const float* below = nullptr;
    const float* here = nullptr;
    const float* above = nullptr;
};

/// Pivots of the incomplete factorisation on one plane, `odd` telling its parity. `rest` receives the part of each
/// pivot that is not a conductance to an unknown eliminated later; for an odd plane it is known on the planes around.
/// `scratch` has one row of numbers.
void factorise_plane(const PlaneView& plane, bool odd, const PlaneView& below, const PlaneView& above,
                     const PlaneVector& known_rest, float* rest, float* inverse_pivot, float* scratch);

/// z = (D + L)^-1 r on a plane that comes first (even) or last (odd, neighbours known).
void eliminate_even(const PlaneView& plane, const float* r, float* z);
void eliminate_odd(const PlaneView& plane, const float* r, float* z, const float* z_below, const float* z_above);

/// z = z + D^-1 L z' with z' the unknowns eliminated later.
void substitute_odd(const PlaneView& plane, float* z);
void substitute_even(const PlaneView& plane, float* z, const float* z_below, const float* z_above);

/// row (2h + 1 numbers) += r - A x on row j.
void add_residual_row(const PlaneView& plane, std::size_t j, const float* r, const PlaneVector& x, float* row);

/// out = r - A x on the plane.
void residual_plane(const PlaneView& plane, const float* r, const PlaneVector& x, float* out);

/// out = A x on the plane; sums = x.out, x.r, x.s (s may be null).
void multiply_plane(const PlaneView& plane, const PlaneVector& x, const float* r, const float* s, float* out,
                    double sums[3]);

/// Row of numbers in natural order times factor to the storage of a level, 0 where there is no pivot; and back, the sum
/// of two rows times factor.
void take_row(const double* natural, std::size_t count, double factor, const float* inverse_pivot, float* row);
void give_row(const float* row, const float* other, std::size_t count, double factor, double* natural);

/// y += x
void add_row(float* y, const float* x, std::size_t count);

/// y += x where there is a pivot, so that unknowns which take no part stay 0.
void add_row_where(float* y, const float* x, const float* inverse_pivot, std::size_t count);

/// y = a y + b x
void combine(float* y, float a, float b, const float* x, std::size_t count);

/// y += b x; sums = y.y before and after.
void subtract_measured(float* y, float b, const float* x, std::size_t count, double sums[2]);

} // namespace Kelvane::flow
