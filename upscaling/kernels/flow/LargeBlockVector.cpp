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
