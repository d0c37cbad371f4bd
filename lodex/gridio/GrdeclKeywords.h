#pragma once

#include <string>
#include <string_view>

namespace lodex::grdecl {

/// The sections of a deck; a plain file of grid keywords has none.
enum class Section { None, Runspec, Grid, Edit, Props, Regions, Solution, Summary, Schedule };

/// What the data behind a keyword looks like.
enum class Layout {
    Unknown,  ///< records up to the next line that holds nothing but a keyword
    Flag,     ///< no data
    List,     ///< records up to an empty one
    Record,   ///< one record
    NextLine, ///< the line behind the keyword
    Block     ///< everything up to a closing keyword
};

struct KeywordInfo {
    Layout layout = Layout::Unknown;
    bool cell_array = false;     ///< one number per cell; another count is an error
    bool never_array = false;    ///< numbers, but never one per cell
    bool changes_arrays = false; ///< an operation on stored arrays
    bool known = false;          ///< starts a new keyword wherever a line begins with it
    std::string_view closed_by;  ///< Layout::Block only
};

/// Capital letters; keywords are compared in them.
[[nodiscard]] std::string upper(std::string_view word);

[[nodiscard]] KeywordInfo keyword_info(std::string_view upper_name);

/// The section that the keyword begins, None when it is not a section keyword.
[[nodiscard]] Section section_of(std::string_view upper_name);

/// Names of arrays of whole numbers (regions, facies and the like), in any case of letters.
[[nodiscard]] bool is_discrete_name(std::string_view name);

/// A letter, then letters, digits, '_', '-', '+' or '.', up to 64 characters.
[[nodiscard]] bool is_keyword(std::string_view word);

} // namespace lodex::grdecl
