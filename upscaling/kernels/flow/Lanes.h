#pragma once

namespace Kelvane::flow {

inline constexpr int lane_count = 8;

/// One number of each of eight blocks of the same shape, which are solved together by vector instructions.
struct alignas(64) Lanes {
    double at[lane_count];
};

/// The same bytes as a vector of the compiler: element-wise operators, comparisons and ?:.
typedef double LaneVector __attribute__((vector_size(64), may_alias)); // NOLINT: an attribute of the alias

#define LANES_INLINE __attribute__((always_inline)) inline
#define LANES_LAMBDA __attribute__((always_inline))

LANES_INLINE LaneVector* vectors(Lanes* lanes)
{
    return reinterpret_cast<LaneVector*>(lanes);
}

LANES_INLINE const LaneVector* vectors(const Lanes* lanes)
{
    return reinterpret_cast<const LaneVector*>(lanes);
}

namespace detail {

#if defined(__x86_64__)
template <class Work> __attribute__((target("avx512f"))) void run_avx512(const Work& work)
{
    work();
}

template <class Work> __attribute__((target("avx2,fma"))) void run_avx2(const Work& work)
{
    work();
}

enum class Instructions { Base, Avx2, Avx512 };

[[nodiscard]] inline Instructions instructions()
{
    static const Instructions best = [] {
        if (__builtin_cpu_supports("avx512f"))
            return Instructions::Avx512;
        return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") ? Instructions::Avx2
                                                                               : Instructions::Base;
    }();
    return best;
}
#endif

} // namespace detail

/// Runs work(), compiled for the widest vectors that the processor has. `work` and all that it calls on LaneVectors
/// must be LANES_INLINE (lambdas: LANES_LAMBDA), for vectors may not pass between differently compiled functions.
template <class Work> void run_lanes(const Work& work)
{
#if defined(__x86_64__)
    switch (detail::instructions()) {
    case detail::Instructions::Avx512:
        return detail::run_avx512(work);
    case detail::Instructions::Avx2:
        return detail::run_avx2(work);
    case detail::Instructions::Base:
        break;
    }
#endif
    work();
}

} // namespace Kelvane::flow
