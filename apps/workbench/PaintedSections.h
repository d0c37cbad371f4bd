#pragma once

#include <array>
#include <cstdint>
#include <set>
#include <string_view>

namespace lodex {

/// 0-based cell sections that shall stand out, along I, J, K.
using PaintedSections = std::array<std::set<std::int64_t>, 3>;

/// Reads the attribute "*sections" of a grid's style: a count, then so many triples of axis (1 to 3), flag and 0-based
/// section. Flag 1 paints the section; flag 0 takes the axis' former sections back. Reading ends where the text is
/// broken.
[[nodiscard]] PaintedSections read_painted_sections(std::string_view value);

} // namespace lodex
