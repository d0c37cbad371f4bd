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

/// Asks for large pages for memory that is not touched yet, where it is large and the system leaves that to the
/// program: on small ones the page faults cost as much time as the work. Advice only, it changes nothing else.
inline void advise_large_pages([[maybe_unused]] void* memory, [[maybe_unused]] std::size_t bytes)
{
#if defined(__linux__) && defined(MADV_HUGEPAGE)
    constexpr std::uintptr_t page = 4096, large = std::uintptr_t{1} << 22;
    if (bytes >= large) {
        const auto begin = reinterpret_cast<std::uintptr_t>(memory);
        const auto first = (begin + page - 1) / page * page;
        const auto last = (begin + bytes) / page * page;
        (void)madvise(reinterpret_cast<void*>(first), last - first, MADV_HUGEPAGE);
    }
#endif
}

/// An array of zeros, on large pages where it is large: the time to make it is a few times shorter. Once `stop` is set
/// the rest is left out: the array is then shorter than asked for, to be thrown away.
template <class T> [[nodiscard]] std::vector<T> make_array(std::size_t size, const std::atomic<bool>& stop)
{
    std::vector<T> array;
    array.reserve(size);
    advise_large_pages(array.data(), size * sizeof(T));
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
