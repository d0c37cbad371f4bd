#include "Memory.h"

#include <unistd.h>

namespace lodex {

std::uint64_t model_memory_limit()
{
    const long pages = ::sysconf(_SC_PHYS_PAGES);
    const long page = ::sysconf(_SC_PAGESIZE);
    constexpr std::uint64_t fallback = std::uint64_t{1} << 32;
    return pages > 0 && page > 0 ? static_cast<std::uint64_t>(pages) / 4 * 3 * static_cast<std::uint64_t>(page) : fallback;
}

} // namespace lodex
