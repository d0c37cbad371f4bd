#pragma once

#include "lodex/volumes/model/GridModel.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace lodex {

/// Names of stratigraphic units and their K layers as a text file holds them: one unit a line, from top to bottom,
///     'Upper Reef'   1 - 5
/// 1-based and inclusive. The name stands in single or double quotes, or is the text before the line's last two numbers
/// with a dash between them; "--" and "#" begin a comment. What follows the second number (a colour, say) is passed over.
struct LayerFile {
    std::vector<std::string> units;
    std::vector<std::int64_t> sizes; ///< numbers of K layers
};

/// Throws FileError with the line: no range, ranges that do not follow one another from 1 on, an empty name.
[[nodiscard]] LayerFile read_layer_file(const std::filesystem::path& path);

} // namespace lodex
