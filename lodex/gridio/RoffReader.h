#pragma once

#include <lodex/gridio/GridFormat.h>

#include <string_view>

namespace lodex::roff {

/// Reads a ROFF file of any form: text or binary in either byte order. See RoffFormat for what is understood.
[[nodiscard]] ReadResult read_file(const std::filesystem::path& path, const ReadOptions& options);

/// The same from memory. name stands in messages.
[[nodiscard]] ReadResult read_bytes(std::string_view bytes, const std::filesystem::path& name,
                                    const ReadOptions& options);

/// What an undefined value is in the file.
inline constexpr std::int32_t undefined_number = -999;
inline constexpr std::int32_t undefined_byte = 255;

/// Tags that begin with this hold what the format has no tag for; other programs pass over them.
inline constexpr std::string_view own_tag_prefix = "lodex";

/// Text for and from own tags: quotes, backslashes and control characters behind a backslash.
[[nodiscard]] std::string escape(std::string_view text);
[[nodiscard]] std::string unescape(std::string_view text);

} // namespace lodex::roff
