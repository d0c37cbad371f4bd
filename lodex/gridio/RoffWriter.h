#pragma once

#include <lodex/gridio/GridFormat.h>

namespace lodex::roff {

enum class Form { Text, LittleEndian, BigEndian };

/// Writes a model as a ROFF file. See RoffFormat.
WriteResult write_file(const GridModel& model, const std::filesystem::path& path, const WriteOptions& options,
                       Form form);

} // namespace lodex::roff
