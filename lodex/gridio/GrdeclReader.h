#pragma once

#include <lodex/gridio/GrdeclSource.h>
#include <lodex/gridio/GridFormat.h>

#include <string>
#include <string_view>

namespace lodex::grdecl {

/// Reads a file of grid keywords or a whole deck. See GrdeclFormat for what is understood.
[[nodiscard]] ReadResult read_file(const std::filesystem::path& path, const ReadOptions& options,
                                   const TextWindow& window = {});

/// The same from memory. name stands in messages and its folder is where INCLUDE looks.
[[nodiscard]] ReadResult read_text(std::string_view text, const std::filesystem::path& name, const ReadOptions& options);

/// A comment that begins with this holds what GRDECL has no keyword for: regions, units, code names.
inline constexpr std::string_view note_prefix = "-- LODEX ";
/// Continuation lines of such a comment.
inline constexpr std::string_view note_line_prefix = "--|";

} // namespace lodex::grdecl
