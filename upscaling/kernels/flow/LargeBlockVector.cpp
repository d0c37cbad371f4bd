#include "LargeBlockVector.h"

namespace Kelvane::flow {
namespace {

constexpr std::size_t piece = 4096;

KELVANE_VECTOR_CLONES double piece_dot(const double* __restrict__ a, const double* __restrict__ b, std::size_t count)
{
    double lanes[16] = {};
    std::size_t n = 0;
    for (; n + 16 <= count; n += 16)
        for (std::size_t lane = 0; lane < 16; ++lane)
            lanes[lane] += a[n + lane] * b[n + lane];
    for (std::size_t lane = 0; n < count; ++n, ++lane)
        lanes[lane] += a[n] * b[n];
    for (std::size_t half = 8; half > 0; half /= 2)
        for (std::size_t lane = 0; lane < half; ++lane)
            lanes[lane] += lanes[lane + half];
    return lanes[0];
}

KELVANE_VECTOR_CLONES void piece_advance(double* __restrict__ w, double* __restrict__ r, double step,
                                         const double* __restrict__ p, const double* __restrict__ q,
                                         std::size_t count)
{
    for (std::size_t n = 0; n < count; ++n) {
        w[n] += step * p[n];
        r[n] -= step * q[n];
    }
}

KELVANE_VECTOR_CLONES void piece_add_scaled(double* __restrict__ y, double factor, const double* __restrict__ x,
                                            std::size_t count)
{
    for (std::size_t n = 0; n < count; ++n)
        y[n] += factor * x[n];
}

KELVANE_VECTOR_CLONES void piece_scale_and_add(double* __restrict__ y, double factor, const double* __restrict__ x,
                                               std::size_t count)
{
    for (std::size_t n = 0; n < count; ++n)
        y[n] = x[n] + factor * y[n];
}

int pieces_of(std::size_t count)
{
    return static_cast<int>((count + piece - 1) / piece);
}

std::size_t length_of(std::size_t first, std::size_t count)
{
    return std::min(piece, count - first);
}

} // namespace

double dot(std::span<const double> a, std::span<const double> b)
{
    return sum_parts(pieces_of(a.size()), piece, [&](int n) {
        const std::size_t first = static_cast<std::size_t>(n) * piece;
        return piece_dot(a.data() + first, b.data() + first, length_of(first, a.size()));
    });
}

std::array<double, 2> two_dots(std::span<const double> z, std::span<const double> a, std::span<const double> b)
{
    std::vector<double> other(static_cast<std::size_t>(pieces_of(z.size())));
    std::array<double, 2> sums{};
    sums[0] = sum_parts(pieces_of(z.size()), piece, [&](int n) {
        const std::size_t first = static_cast<std::size_t>(n) * piece;
        const std::size_t length = length_of(first, z.size());
        other[static_cast<std::size_t>(n)] = piece_dot(z.data() + first, b.data() + first, length);
        return piece_dot(z.data() + first, a.data() + first, length);
    });
    for (const double value : other)
        sums[1] += value;
    return sums;
}

double advance(std::span<double> w, std::span<double> r, double step, std::span<const double> p,
               std::span<const double> q)
{
    return sum_parts(pieces_of(r.size()), piece, [&](int n) {
        const std::size_t first = static_cast<std::size_t>(n) * piece;
        const std::size_t length = length_of(first, r.size());
        piece_advance(w.data() + first, r.data() + first, step, p.data() + first, q.data() + first, length);
        return piece_dot(r.data() + first, r.data() + first, length);
    });
}

void add_scaled(std::span<double> y, double factor, std::span<const double> x)
{
    for_parts(pieces_of(y.size()), piece, [&](int n) {
        const std::size_t first = static_cast<std::size_t>(n) * piece;
        piece_add_scaled(y.data() + first, factor, x.data() + first, length_of(first, y.size()));
    });
}

void scale_and_add(std::span<double> y, double factor, std::span<const double> x)
{
    for_parts(pieces_of(y.size()), piece, [&](int n) {
        const std::size_t first = static_cast<std::size_t>(n) * piece;
        piece_scale_and_add(y.data() + first, factor, x.data() + first, length_of(first, y.size()));
    });
}

} // namespace Kelvane::flow
