#pragma once

#include <array>

namespace lodex {

/// Words of the contents text for number types, in the order of NumberType.
inline constexpr std::array number_type_names{"float32", "float64", "int32", "int64", "uint8"};

/// Words for layering styles, in the order of LayerInfo::LayeringStyle.
inline constexpr std::array layering_names{"proportional", "parallel_to_base", "parallel_to_top"};

} // namespace lodex
