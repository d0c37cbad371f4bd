#pragma once

#include "GridModel.h"

#include <string>

namespace lodex {

/// Numbers of cells for messages: "40 x 64 x 14".
[[nodiscard]] inline std::string size_text(const GridSize& size)
{
    return std::to_string(size[0]) + " x " + std::to_string(size[1]) + " x " + std::to_string(size[2]);
}

} // namespace lodex
