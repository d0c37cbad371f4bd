#pragma once

#include <lodex/gridio/GridFormat.h>

namespace lodex::grdecl {

/// Writes a model as grid keywords. See GrdeclFormat.
WriteResult write_file(const GridModel& model, const std::filesystem::path& path, const WriteOptions& options);

} // namespace lodex::grdecl
