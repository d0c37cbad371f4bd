#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace lodex {

/// Cuts a joined list at "+" and takes the blanks around the pieces off. Empty pieces (doubled, leading or final "+") are
/// kept; an empty text has no piece.
[[nodiscard]] std::vector<std::string> split_joined(std::string_view list);

/// The same for numbers, where a "+" behind the e of a number ("1e+5") belongs to the number.
[[nodiscard]] std::vector<std::string> split_joined_numbers(std::string_view list);

/// Reads a joined list of names, each of which may itself hold "+" in place of its blanks: cuts the pieces into the fewest
/// consecutive runs so that each run, joined by "+" or by blanks, is a name that exists. Throws CommandError naming what
/// is left when there is no such reading, or when two equally short ones exist. Empty pieces are skipped.
/// `longest` is the length in bytes of the longest name to look for: longer runs of several pieces are not tried, which
/// keeps long lists cheap. `what` names the kind of item in the message ("property", "region").
[[nodiscard]] std::vector<std::string> resolve_joined(std::string_view list, const std::function<bool(const std::string&)>& exists,
                                                      std::size_t longest, const std::string& what);

} // namespace lodex
