#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace lodex {

/// An array of zeros. Large ones ask for large pages before they are touched, where the system leaves that to the
/// program: the time to make them is a few times shorter. Once `stop` is set the rest is left out: the array is then
/// shorter than asked for, to be thrown away.
template <class T> [[nodiscard]] std::vector<T> make_array(std::size_t size, const std::atomic<bool>& stop)
{
    std::vector<T> array;
    array.reserve(size);
#if defined(__linux__) && defined(MADV_HUGEPAGE)
    constexpr std::uintptr_t page = 4096, large = std::uintptr_t{1} << 22;
    if (size * sizeof(T) >= large) {
        const auto first = (reinterpret_cast<std::uintptr_t>(array.data()) + page - 1) / page * page;
        const auto last = reinterpret_cast<std::uintptr_t>(array.data() + size) / page * page;
        // Advice only: what it returns changes nothing.
        (void)madvise(reinterpret_cast<void*>(first), last - first, MADV_HUGEPAGE);
    }
#endif
    // Touching the pages is what takes the time, most of all where the system is short of them.
    constexpr std::size_t step = (std::size_t{1} << 24) / sizeof(T);
    while (array.size() < size && !stop.load(std::memory_order_relaxed))
        array.resize(std::min(size, array.size() + step));
    return array;
}

/// The same to its end.
template <class T> [[nodiscard]] std::vector<T> make_array(std::size_t size)
{
    const std::atomic<bool> never = false;
    return make_array<T>(size, never);
}

} // namespace lodex
