#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace lodex {

/// Words that stand for sets of cells or properties in commands and so cannot be names.
[[nodiscard]] std::span<const std::string_view> reserved_names();

/// Nothing when a new object, property or region may bear the name, else the reason as one sentence for the user
/// without line end. A name is printable UTF-8 without `;`, `"`, `+` and control characters, without leading, trailing
/// or double blanks, not reserved; none of its words (separated by blanks) is one of forbidden_words, the keywords of
/// the verb that creates it. Case counts.
[[nodiscard]] std::optional<std::string> check_object_name(std::string_view name,
                                                           std::span<const std::string_view> forbidden_words = {});

/// The legal name closest to one that came in with a file: white space at the ends goes, runs of blanks become one,
/// each character that cannot stand becomes "_", reserved and forbidden words get a "_" behind, an empty name becomes
/// "unnamed". A legal name comes back as it is. The result passes check_object_name() with the same words.
[[nodiscard]] std::string mend_object_name(std::string_view name,
                                           std::span<const std::string_view> forbidden_words = {});

} // namespace lodex
