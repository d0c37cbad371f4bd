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

constexpr float tiny = 1e-37F;

// rest += t others / (others + t): what an unknown eliminated earlier leaves to this one.
KELVANE_INLINE void add_left_over(const float* __restrict__ t, const float* __restrict__ others,
                                  float* __restrict__ rest, std::size_t count)
{
    for (std::size_t n = 0; n < count; ++n) {
        const float sum = others[n] + t[n];
        rest[n] += t[n] * (others[n] / (sum > tiny ? sum : tiny));
    }
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

// With E the part of a pivot that is not a conductance to a later unknown,
//   pivot = E + sum of conductances to later unknowns,
//   E = ground + sum over earlier unknowns e of t (pivot_e - t) / pivot_e,
// where pivot_e - t is put together from its other terms, so that nothing is ever subtracted.
KELVANE_VECTOR_CLONES void factorise_plane(const PlaneView& plane, bool odd, const PlaneView& below,
                                           const PlaneView& above, const PlaneVector& known_rest, float* rest,
                                           float* inverse_pivot, float* scratch)
{
    const std::size_t h = plane.half;
    const std::size_t stride = plane.stride();
    float* __restrict__ others = scratch;
    for (std::size_t j = 0; j < plane.rows; ++j) {
        const std::size_t at = j * stride;
        const float* __restrict__ ti = plane.ti + at;
        const float* __restrict__ tj = plane.tj + at;
        const float* __restrict__ tk = plane.tk + at;
        const float* __restrict__ tk_below = plane.tk_below + at;
        const float* __restrict__ ground = plane.ground + at;
        float* __restrict__ own = rest + at;
        float* __restrict__ inverse = inverse_pivot + at;
        for (std::size_t n = 0; n < stride; ++n)
            own[n] = ground[n];
        if (j > 0) {
            const float* __restrict__ before = own - stride;
            const float* __restrict__ ti_before = ti - stride;
            const float* __restrict__ tk_before = tk - stride;
            const float* __restrict__ tk_below_before = tk_below - stride;
            if (odd)
                for (std::size_t n = 0; n < stride; ++n)
                    others[n] = before[n];
            else
                for (std::size_t n = 0; n < stride; ++n)
                    others[n] = before[n] + tk_before[n] + tk_below_before[n];
            for (std::size_t m = 0; m < h; ++m)
                others[m] += ti_before[m] + ti_before[h + m];
            add_left_over(tj - stride, others, own, stride);
        }
        if (odd)
            for (const bool up : {false, true}) {
                const PlaneView& side = up ? above : below;
                const float* __restrict__ side_rest = (up ? known_rest.above : known_rest.below) + at;
                const float* __restrict__ side_ti = side.ti + at;
                const float* __restrict__ side_tj = side.tj + at;
                const float* __restrict__ away = (up ? side.tk : side.tk_below) + at;
                for (std::size_t n = 0; n < stride; ++n)
                    others[n] = side_rest[n] + side_tj[n] + away[n];
                for (std::size_t m = 0; m < h; ++m)
                    others[m] += side_ti[m] + side_ti[h + m];
                add_left_over(up ? tk : tk_below, others, own, stride);
            }
        // Within the row: the even unknowns first.
        own[h] = 0;
        for (std::size_t n = 0; n < stride; ++n)
            others[n] = tj[n] + (odd ? 0.0F : tk[n] + tk_below[n]);
        for (std::size_t m = 0; m < h; ++m)
            inverse[m] = own[m] + others[m] + ti[m] + ti[h + m];
        float* __restrict__ own_odd = own + h + 1;
        const float* __restrict__ ti_odd = ti + h + 1;
        for (std::size_t m = 0; m < h; ++m) {
            const float left = own[m] + others[m] + ti[h + m];
            const float sum = left + ti[m];
            own_odd[m] += ti[m] * (left / (sum > tiny ? sum : tiny));
        }
        for (std::size_t m = 0; m < h; ++m) {
            const float right = own[m + 1] + others[m + 1] + ti[m + 1];
            const float sum = right + ti_odd[m];
            own_odd[m] += ti_odd[m] * (right / (sum > tiny ? sum : tiny));
        }
        for (std::size_t n = h + 1; n < stride; ++n)
            inverse[n] = own[n] + others[n];
        inverse[h] = 0;
        for (std::size_t n = 0; n < stride; ++n)
            inverse[n] = inverse[n] > tiny ? 1 / inverse[n] : 0.0F;
    }
}

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

KELVANE_VECTOR_CLONES void take_row(const double* natural, std::size_t count, double factor, const float* inverse_pivot,
                                    float* row)
{
    const double* __restrict__ from = natural;
    const float* __restrict__ d = inverse_pivot;
    float* __restrict__ even = row;
    const std::size_t pairs = count / 2;
    const std::size_t h = (count + 1) / 2;
    float* __restrict__ odd = row + h + 1;
    const float* __restrict__ d_odd = d + h + 1;
    for (std::size_t m = 0; m < pairs; ++m) {
        even[m] = d[m] > 0 ? static_cast<float>(from[2 * m] * factor) : 0.0F;
        odd[m] = d_odd[m] > 0 ? static_cast<float>(from[2 * m + 1] * factor) : 0.0F;
    }
    if (pairs < h)
        even[pairs] = d[pairs] > 0 ? static_cast<float>(from[2 * pairs] * factor) : 0.0F;
}

KELVANE_VECTOR_CLONES void give_row(const float* row, const float* other, std::size_t count, double factor,
                                    double* natural)
{
    const float* __restrict__ even = row;
    const float* __restrict__ even_other = other;
    double* __restrict__ to = natural;
    const std::size_t pairs = count / 2;
    const std::size_t h = (count + 1) / 2;
    const float* __restrict__ odd = row + h + 1;
    const float* __restrict__ odd_other = other + h + 1;
    for (std::size_t m = 0; m < pairs; ++m) {
        to[2 * m] = static_cast<double>(even[m] + even_other[m]) * factor;
        to[2 * m + 1] = static_cast<double>(odd[m] + odd_other[m]) * factor;
    }
    if (pairs < h)
        to[2 * pairs] = static_cast<double>(even[pairs] + even_other[pairs]) * factor;
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
