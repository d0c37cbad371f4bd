#pragma once

#include "upscaling/kernels/VectorClones.h"

#include <tbb/blocked_range.h>
#include <tbb/parallel_for.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <span>
#include <vector>

#if defined(__SSE2__)
#include <xmmintrin.h>
#endif

#define KELVANE_INLINE inline __attribute__((always_inline))

namespace Kelvane::flow {

/// Numbers too small for the format count as zero while this lives, on this thread: decaying sweeps would crawl.
class FlushTiny {
public:
    FlushTiny()
    {
#if defined(__SSE2__)
        _mm_setcsr(saved_ | 0x8040U);
#endif
    }
    ~FlushTiny()
    {
#if defined(__SSE2__)
        _mm_setcsr(saved_);
#endif
    }
    FlushTiny(const FlushTiny&) = delete;
    FlushTiny& operator=(const FlushTiny&) = delete;

private:
#if defined(__SSE2__)
    unsigned saved_ = _mm_getcsr();
#endif
};

/// work(n) for 0 <= n < count, on several threads when there is enough to do; `cost` is the number of cells behind one
/// n. What one n does must not depend on the others.
template <class Work> void for_parts(int count, std::size_t cost, const Work& work)
{
    constexpr std::size_t worth_a_task = 8192;
    if (count < 2 || static_cast<std::size_t>(count) * cost < 2 * worth_a_task) {
        const FlushTiny flush;
        for (int n = 0; n < count; ++n)
            work(n);
        return;
    }
    const auto grain = std::max<std::size_t>(1, worth_a_task / std::max<std::size_t>(1, cost));
    tbb::parallel_for(tbb::blocked_range<int>(0, count, grain), [&work](const tbb::blocked_range<int>& range) {
        const FlushTiny flush;
        for (int n = range.begin(); n != range.end(); ++n)
            work(n);
    });
}

/// Sum of part(n) for 0 <= n < count, always in the same order.
template <class Part> double sum_parts(int count, std::size_t cost, const Part& part)
{
    std::vector<double> sums(static_cast<std::size_t>(std::max(0, count)));
    for_parts(count, cost, [&](int n) { sums[static_cast<std::size_t>(n)] = part(n); });
    double sum = 0;
    for (const double value : sums)
        sum += value;
    return sum;
}

/// Product of two vectors, pieces of a fixed length summed on their own.
[[nodiscard]] double dot(std::span<const double> a, std::span<const double> b);

/// Products of z with a and with b in one pass.
[[nodiscard]] std::array<double, 2> two_dots(std::span<const double> z, std::span<const double> a,
                                             std::span<const double> b);

/// w += step * p and r -= step * q in one pass; returns the new r.r.
double advance(std::span<double> w, std::span<double> r, double step, std::span<const double> p,
               std::span<const double> q);

/// y += factor * x
void add_scaled(std::span<double> y, double factor, std::span<const double> x);

/// y = x + factor * y
void scale_and_add(std::span<double> y, double factor, std::span<const double> x);

} // namespace Kelvane::flow
