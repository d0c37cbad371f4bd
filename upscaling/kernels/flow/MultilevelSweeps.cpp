#include "MultilevelSweeps.h"

#include "LargeBlockVector.h"

namespace Kelvane::flow {
namespace {

constexpr std::size_t lanes = 16;

KELVANE_INLINE double fold(float (&sums)[lanes])
{
    double total = 0;
    for (const float sum : sums)
        total += static_cast<double>(sum);
    return total;
}

KELVANE_INLINE double row_product(const float* __restrict__ a, const float* __restrict__ b, std::size_t count)
{
    float sums[lanes] = {};
    std::size_t n = 0;
    for (; n + lanes <= count; n += lanes)
        for (std::size_t lane = 0; lane < lanes; ++lane)
            sums[lane] += a[n + lane] * b[n + lane];
    for (std::size_t lane = 0; n < count; ++n, ++lane)
        sums[lane] += a[n] * b[n];
    return fold(sums);
}

// The part of a row's elimination within the row: even unknowns, then odd ones, which see both neighbours.
KELVANE_INLINE void finish_up(std::size_t h, const float* __restrict__ ti, const float* __restrict__ d,
                              float* __restrict__ even, float* __restrict__ odd)
{
    for (std::size_t m = 0; m < h; ++m)
        even[m] *= d[m];
    const float* d_odd = d + h + 1;
    const float* t_odd = ti + h + 1;
    for (std::size_t m = 0; m < h; ++m)
        odd[m] = d_odd[m] * (odd[m] + ti[m] * even[m] + t_odd[m] * even[m + 1]);
}

// Within the row downwards: odd unknowns have had theirs, even ones add both neighbours.
KELVANE_INLINE void finish_down(std::size_t h, const float* __restrict__ ti, const float* __restrict__ d,
                                float* __restrict__ even, const float* __restrict__ odd)
{
    const float* t_before = ti + h; // position h is the 0 before the first odd unknown
    const float* odd_before = odd - 1;
    for (std::size_t m = 0; m < h; ++m)
        even[m] += d[m] * (ti[m] * odd[m] + t_before[m] * odd_before[m]);
}

KELVANE_INLINE void in_row(std::size_t h, const float* __restrict__ ti, const float* __restrict__ x,
                           float* __restrict__ out)
{
    const float* x_odd = x + h + 1;
    const float* t_odd = ti + h + 1;
    float* out_odd = out + h + 1;
    for (std::size_t m = 0; m < h; ++m)
        out[m] += ti[m] * (x_odd[m] - x[m]) + ti[h + m] * (x[h + m] - x[m]);
    for (std::size_t m = 0; m < h; ++m)
        out_odd[m] += ti[m] * (x[m] - x_odd[m]) + t_odd[m] * (x[m + 1] - x_odd[m]);
}

struct RowPointers {
    const float *ti, *tj, *tj_before, *tk, *tk_below, *ground;
    const float *x, *x_before, *x_after, *x_below, *x_above;
};

KELVANE_INLINE RowPointers row_of(const PlaneView& plane, std::size_t j, const PlaneVector& x)
{
    const std::size_t at = j * plane.stride();
    const bool first = j == 0;
    const bool last = j + 1 == plane.rows;
    return {plane.ti + at,
            plane.tj + at,
            first ? plane.zero_row : plane.tj + at - plane.stride(),
            plane.tk + at,
            plane.tk_below + at,
            plane.ground + at,
            x.here + at,
            first ? plane.zero_row : x.here + at - plane.stride(),
            last ? plane.zero_row : x.here + at + plane.stride(),
            x.below + at,
            x.above + at};
}

// out += -A x on one row
KELVANE_INLINE void add_minus_product(const RowPointers& p, std::size_t h, float* __restrict__ out)
{
    const float* __restrict__ x = p.x;
    const float* __restrict__ before = p.x_before;
    const float* __restrict__ after = p.x_after;
    const float* __restrict__ below = p.x_below;
    const float* __restrict__ above = p.x_above;
    for (std::size_t n = 0; n < 2 * h + 1; ++n)
        out[n] += p.tj_before[n] * (before[n] - x[n]) + p.tj[n] * (after[n] - x[n]) +
                  p.tk_below[n] * (below[n] - x[n]) + p.tk[n] * (above[n] - x[n]) - p.ground[n] * x[n];
    in_row(h, p.ti, x, out);
}

} // namespace

KELVANE_VECTOR_CLONES void eliminate_even(const PlaneView& plane, const float* r, float* z)
{
    const std::size_t h = plane.half;
    const std::size_t stride = plane.stride();
    for (std::size_t j = 0; j < plane.rows; ++j) {
        const std::size_t at = j * stride;
        const float* __restrict__ right = r + at;
        float* __restrict__ row = z + at;
        if (j == 0) {
            for (std::size_t n = 0; n < stride; ++n)
                row[n] = right[n];
        } else {
            const float* __restrict__ t = plane.tj + at - stride;
            const float* __restrict__ before = z + at - stride;
            for (std::size_t n = 0; n < stride; ++n)
                row[n] = right[n] + t[n] * before[n];
        }
        finish_up(h, plane.ti + at, plane.inverse_pivot + at, row, row + h + 1);
        row[h] = 0;
    }
}

KELVANE_VECTOR_CLONES void eliminate_odd(const PlaneView& plane, const float* r, float* z, const float* z_below,
                                         const float* z_above)
{
    const std::size_t h = plane.half;
    const std::size_t stride = plane.stride();
    for (std::size_t j = 0; j < plane.rows; ++j) {
        const std::size_t at = j * stride;
        const float* __restrict__ right = r + at;
        const float* __restrict__ below = z_below + at;
        const float* __restrict__ above = z_above + at;
        const float* __restrict__ t_below = plane.tk_below + at;
        const float* __restrict__ t_above = plane.tk + at;
        float* __restrict__ row = z + at;
        if (j == 0) {
            for (std::size_t n = 0; n < stride; ++n)
                row[n] = right[n] + t_below[n] * below[n] + t_above[n] * above[n];
        } else {
            const float* __restrict__ t = plane.tj + at - stride;
            const float* __restrict__ before = z + at - stride;
            for (std::size_t n = 0; n < stride; ++n)
                row[n] = right[n] + t[n] * before[n] + t_below[n] * below[n] + t_above[n] * above[n];
        }
        finish_up(h, plane.ti + at, plane.inverse_pivot + at, row, row + h + 1);
        row[h] = 0;
    }
}

KELVANE_VECTOR_CLONES void substitute_odd(const PlaneView& plane, float* z)
{
    const std::size_t h = plane.half;
    const std::size_t stride = plane.stride();
    for (std::size_t j = plane.rows; j-- > 0;) {
        const std::size_t at = j * stride;
        float* __restrict__ row = z + at;
        if (j + 1 < plane.rows) {
            const float* __restrict__ t = plane.tj + at;
            const float* __restrict__ after = z + at + stride;
            const float* __restrict__ d = plane.inverse_pivot + at;
            for (std::size_t n = 0; n < stride; ++n)
                row[n] += d[n] * (t[n] * after[n]);
        }
        finish_down(h, plane.ti + at, plane.inverse_pivot + at, row, row + h + 1);
    }
}

KELVANE_VECTOR_CLONES void substitute_even(const PlaneView& plane, float* z, const float* z_below,
                                           const float* z_above)
{
    const std::size_t h = plane.half;
    const std::size_t stride = plane.stride();
    for (std::size_t j = plane.rows; j-- > 0;) {
        const std::size_t at = j * stride;
        const bool last = j + 1 == plane.rows;
        float* __restrict__ row = z + at;
        const float* __restrict__ t = plane.tj + at;
        const float* __restrict__ after = last ? plane.zero_row : z + at + stride;
        const float* __restrict__ below = z_below + at;
        const float* __restrict__ above = z_above + at;
        const float* __restrict__ t_below = plane.tk_below + at;
        const float* __restrict__ t_above = plane.tk + at;
        const float* __restrict__ d = plane.inverse_pivot + at;
        for (std::size_t n = 0; n < stride; ++n)
            row[n] += d[n] * (t[n] * after[n] + t_below[n] * below[n] + t_above[n] * above[n]);
        finish_down(h, plane.ti + at, plane.inverse_pivot + at, row, row + h + 1);
    }
}

KELVANE_VECTOR_CLONES void add_residual_row(const PlaneView& plane, std::size_t j, const float* r,
                                            const PlaneVector& x, float* row)
{
    const float* __restrict__ right = r + j * plane.stride();
    float* __restrict__ out = row;
    for (std::size_t n = 0; n < plane.stride(); ++n)
        out[n] += right[n];
    add_minus_product(row_of(plane, j, x), plane.half, row);
}

KELVANE_VECTOR_CLONES void residual_plane(const PlaneView& plane, const float* r, const PlaneVector& x, float* out)
{
    const std::size_t stride = plane.stride();
    for (std::size_t j = 0; j < plane.rows; ++j) {
        const float* __restrict__ right = r + j * stride;
        float* __restrict__ row = out + j * stride;
        for (std::size_t n = 0; n < stride; ++n)
            row[n] = right[n];
        add_minus_product(row_of(plane, j, x), plane.half, row);
    }
}

KELVANE_VECTOR_CLONES void multiply_plane(const PlaneView& plane, const PlaneVector& x, const float* r, const float* s,
                                          float* out, double sums[3])
{
    const std::size_t stride = plane.stride();
    sums[0] = sums[1] = sums[2] = 0;
    for (std::size_t j = 0; j < plane.rows; ++j) {
        float* __restrict__ row = out + j * stride;
        for (std::size_t n = 0; n < stride; ++n)
            row[n] = 0;
        add_minus_product(row_of(plane, j, x), plane.half, row);
        for (std::size_t n = 0; n < stride; ++n)
            row[n] = -row[n];
        const float* here = x.here + j * stride;
        sums[0] += row_product(here, row, stride);
        sums[1] += row_product(here, r + j * stride, stride);
        if (s)
            sums[2] += row_product(here, s + j * stride, stride);
    }
}

KELVANE_VECTOR_CLONES void add_row(float* y, const float* x, std::size_t count)
{
    float* __restrict__ to = y;
    const float* __restrict__ from = x;
    for (std::size_t n = 0; n < count; ++n)
        to[n] += from[n];
}

KELVANE_VECTOR_CLONES void add_row_where(float* y, const float* x, const float* inverse_pivot, std::size_t count)
{
    float* __restrict__ to = y;
    const float* __restrict__ from = x;
    const float* __restrict__ d = inverse_pivot;
    for (std::size_t n = 0; n < count; ++n)
        to[n] += d[n] > 0 ? from[n] : 0.0F;
}

KELVANE_VECTOR_CLONES void combine(float* y, float a, float b, const float* x, std::size_t count)
{
    float* __restrict__ to = y;
    const float* __restrict__ from = x;
    for (std::size_t n = 0; n < count; ++n)
        to[n] = a * to[n] + b * from[n];
}

KELVANE_VECTOR_CLONES void subtract_measured(float* y, float b, const float* x, std::size_t count, double sums[2])
{
    float before[lanes] = {};
    float after[lanes] = {};
    float* __restrict__ to = y;
    const float* __restrict__ from = x;
    std::size_t n = 0;
    for (; n + lanes <= count; n += lanes)
        for (std::size_t lane = 0; lane < lanes; ++lane) {
            before[lane] += to[n + lane] * to[n + lane];
            to[n + lane] += b * from[n + lane];
            after[lane] += to[n + lane] * to[n + lane];
        }
    for (std::size_t lane = 0; n < count; ++n, ++lane) {
        before[lane] += to[n] * to[n];
        to[n] += b * from[n];
        after[lane] += to[n] * to[n];
    }
    sums[0] = fold(before);
    sums[1] = fold(after);
}

} // namespace Kelvane::flow
