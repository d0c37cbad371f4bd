#pragma once

#include <QString>

#include <cstdint>

namespace lodex {

class CornerPointGrid;

/// A whole number with its digits in groups of three.
[[nodiscard]] QString grouped(std::int64_t number);

/// Unit of a grid's lengths ("m", "ft"); empty when the grid does not say it.
[[nodiscard]] QString length_unit_text(const CornerPointGrid& grid);

} // namespace lodex
