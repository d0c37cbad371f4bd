#include "VolumeKernel.h"

#include <cfloat>
#include <cmath>

namespace lodex {

void PillarRow::load(const RealArray& coord, std::int64_t first, std::int64_t count)
{
    values_.resize(static_cast<std::size_t>(5 * count));
    count_ = count;
    double* const x = values_.data();
    double* const y = x + count;
    double* const z = y + count;
    double* const sx = z + count;
    double* const sy = sx + count;
    coord.visit([&](auto numbers) {
        for (std::int64_t n = 0; n < count; ++n) {
            const auto* const p = numbers.data() + 6 * (first + n);
            const double top = p[2];
            const double height = static_cast<double>(p[5]) - top;
            x[n] = p[0];
            y[n] = p[1];
            const double dx = (static_cast<double>(p[3]) - x[n]) / height;
            const double dy = (static_cast<double>(p[4]) - y[n]) / height;
            const bool sloped = height != 0 && std::isfinite(dx) && std::isfinite(dy);
            z[n] = sloped ? top : 0;
            sx[n] = sloped ? dx : 0;
            sy[n] = sloped ? dy : 0;
        }
    });
}

void PillarRow::pick(const PillarRow& other, std::span<const std::int64_t> places)
{
    const auto count = static_cast<std::int64_t>(places.size());
    values_.resize(static_cast<std::size_t>(5 * count));
    count_ = count;
    for (std::int64_t part = 0; part < 5; ++part)
        for (std::int64_t n = 0; n < count; ++n)
            values_[static_cast<std::size_t>(part * count + n)] =
                other.values_[static_cast<std::size_t>(part * other.count_ + places[static_cast<std::size_t>(n)])];
}

namespace {

#if defined(__GNUC__) && defined(__x86_64__)
#define LODEX_INLINE [[gnu::always_inline]] inline
#else
#define LODEX_INLINE inline
#endif

// a . (b x c)
LODEX_INLINE double triple(double ax, double ay, double az, double bx, double by, double bz, double cx, double cy,
                           double cz)
{
    return ax * (by * cz - bz * cy) + ay * (bz * cx - bx * cz) + az * (bx * cy - by * cx);
}

// One loop without branches, so that the compiler can run it on vector lanes. Corners are named by a + 2b + 4c.
template <class T>
LODEX_INLINE void volume_row_loop(std::int64_t cells, const PillarRow& back, const PillarRow& front,
                                  const T* __restrict z00, const T* __restrict z10, const T* __restrict z01,
                                  const T* __restrict z11, double* __restrict volumes)
{
    const double* __restrict bx = back.x0();
    const double* __restrict by = back.y0();
    const double* __restrict bz = back.z0();
    const double* __restrict bsx = back.sx();
    const double* __restrict bsy = back.sy();
    const double* __restrict fx = front.x0();
    const double* __restrict fy = front.y0();
    const double* __restrict fz = front.z0();
    const double* __restrict fsx = front.sx();
    const double* __restrict fsy = front.sy();
    for (std::int64_t i = 0; i < cells; ++i) {
        const double z0 = z00[2 * i], z1 = z00[2 * i + 1], z2 = z10[2 * i], z3 = z10[2 * i + 1];
        const double z4 = z01[2 * i], z5 = z01[2 * i + 1], z6 = z11[2 * i], z7 = z11[2 * i + 1];
        const double x0 = bx[i] + (z0 - bz[i]) * bsx[i], y0 = by[i] + (z0 - bz[i]) * bsy[i];
        const double x4 = bx[i] + (z4 - bz[i]) * bsx[i], y4 = by[i] + (z4 - bz[i]) * bsy[i];
        const double x1 = bx[i + 1] + (z1 - bz[i + 1]) * bsx[i + 1], y1 = by[i + 1] + (z1 - bz[i + 1]) * bsy[i + 1];
        const double x5 = bx[i + 1] + (z5 - bz[i + 1]) * bsx[i + 1], y5 = by[i + 1] + (z5 - bz[i + 1]) * bsy[i + 1];
        const double x2 = fx[i] + (z2 - fz[i]) * fsx[i], y2 = fy[i] + (z2 - fz[i]) * fsy[i];
        const double x6 = fx[i] + (z6 - fz[i]) * fsx[i], y6 = fy[i] + (z6 - fz[i]) * fsy[i];
        const double x3 = fx[i + 1] + (z3 - fz[i + 1]) * fsx[i + 1], y3 = fy[i + 1] + (z3 - fz[i + 1]) * fsy[i + 1];
        const double x7 = fx[i + 1] + (z7 - fz[i + 1]) * fsx[i + 1], y7 = fy[i + 1] + (z7 - fz[i + 1]) * fsy[i + 1];
        const double sum = triple((x2 - x1) + (x6 - x3), (y2 - y1) + (y6 - y3), (z2 - z1) + (z6 - z3), //
                                  x7 - x2, y7 - y2, z7 - z2, x3 - x0, y3 - y0, z3 - z0) +
                           triple((x4 - x2) + (x5 - x6), (y4 - y2) + (y5 - y6), (z4 - z2) + (z5 - z6), //
                                  x7 - x4, y7 - y4, z7 - z4, x6 - x0, y6 - y0, z6 - z0) +
                           triple((x1 - x4) + (x3 - x5), (y1 - y4) + (y3 - y5), (z1 - z4) + (z3 - z5), //
                                  x7 - x1, y7 - y1, z7 - z1, x5 - x0, y5 - y0, z5 - z0);
        const double volume = sum * (1.0 / 12);
        volumes[i] = std::abs(volume) <= DBL_MAX ? volume : 0;
    }
}

#if defined(__GNUC__) && defined(__x86_64__)

template <class T>
using RowFunction = void (*)(std::int64_t, const PillarRow&, const PillarRow&, const T*, const T*, const T*, const T*,
                             double*);

// Same operations in the same order on wider lanes: the numbers are those of the plain loop.
template <class T>
[[gnu::target("avx2")]] void volume_row_avx2(std::int64_t cells, const PillarRow& back, const PillarRow& front,
                                             const T* z00, const T* z10, const T* z01, const T* z11, double* volumes)
{
    volume_row_loop(cells, back, front, z00, z10, z01, z11, volumes);
}

template <class T>
void volume_row_plain(std::int64_t cells, const PillarRow& back, const PillarRow& front, const T* z00, const T* z10,
                      const T* z01, const T* z11, double* volumes)
{
    volume_row_loop(cells, back, front, z00, z10, z01, z11, volumes);
}

template <class T> RowFunction<T> best_row_function()
{
    return __builtin_cpu_supports("avx2") ? volume_row_avx2<T> : volume_row_plain<T>;
}

#else

template <class T> auto best_row_function()
{
    return volume_row_loop<T>;
}

#endif

} // namespace

void volume_row(std::int64_t cells, const PillarRow& back, const PillarRow& front, const float* z00, const float* z10,
                const float* z01, const float* z11, double* volumes)
{
    static const auto function = best_row_function<float>();
    function(cells, back, front, z00, z10, z01, z11, volumes);
}

void volume_row(std::int64_t cells, const PillarRow& back, const PillarRow& front, const double* z00, const double* z10,
                const double* z01, const double* z11, double* volumes)
{
    static const auto function = best_row_function<double>();
    function(cells, back, front, z00, z10, z01, z11, volumes);
}

} // namespace lodex
