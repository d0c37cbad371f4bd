#pragma once

#include <cstdint>

namespace lodex {

/// Bytes that one model may take at most: three quarters of the machine's memory, 4 GiB where that is not known. A short
/// statement or a small file can ask for any amount; beyond this it is refused instead of tried.
[[nodiscard]] std::uint64_t model_memory_limit();

} // namespace lodex
