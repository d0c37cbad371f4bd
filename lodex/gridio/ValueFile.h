#pragma once

#include "lodex/utils/Errors.h"

#include <cstdint>
#include <filesystem>
#include <vector>

namespace lodex {

/// Bare numbers of a property: `count` of them as text (blanks, tabs, line ends between them) or as raw little-endian
/// doubles, when the file has exactly 8 * count bytes and is no text. A word that is no number, a number that is not
/// finite or another count is a FileError. Throws Cancelled.
[[nodiscard]] std::vector<double> read_values(const std::filesystem::path& path, std::int64_t count,
                                              const ProgressCheck& progress = {});

} // namespace lodex
