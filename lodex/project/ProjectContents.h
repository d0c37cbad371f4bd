#pragma once

#include "ProjectFile.h"
#include "lodex/volumes/model/GridModel.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace lodex {

/// Names and values of a style, or names and texts of parts.
using TextPairs = std::vector<std::pair<std::string, std::string>>;

/// One grid as a project file describes it.
struct StoredGrid {
    std::string name;
    /// Everything but the arrays, which are empty and of the types that they have in the file. The id and those of the
    /// records' sources are the file's own.
    GridModel header;
    StoredArray pillars, corner_depths, active_flags;
    std::vector<StoredArray> properties; ///< values, in the order of the header's properties
    std::vector<StoredArray> regions;    ///< flags, in the order of the header's regions
    StoredArray records;                 ///< index ranges of all records, first and last by turns; without path: none
    StoredArray kept;                    ///< texts of all kept keywords one behind the other; without path: none
    TextPairs style;
    std::vector<TextPairs> property_styles; ///< in the order of the header's properties
    std::vector<std::size_t> activities;    ///< positions in ProjectContents::activities
};

struct StoredActivity {
    std::string kind; ///< "upgridding", "downgridding", "coarsening"
    std::string name;
    std::string modifications; ///< as statements write them
};

/// Everything that a project file holds but the values of its arrays.
struct ProjectContents {
    std::string program; ///< that wrote it, with its version
    std::string written; ///< UTC, ISO 8601
    std::string horizontal_unit = "m", vertical_unit = "m";
    std::vector<StoredGrid> grids;           ///< in order of creation
    std::vector<StoredActivity> activities;  ///< those of all grids; one that two grids share stands once
    std::vector<std::pair<std::string, TextPairs>> styles; ///< that belong to no object
    std::vector<std::string> journal;
    TextPairs parts;
};

/// The text of the contents in the present format.
[[nodiscard]] std::string contents_text(const ProjectContents& contents);

/// Reads the contents of a file of any known format: all sizes and places fit each other and the file, names are legal and
/// unique (what had to be mended is told in `warnings`). Throws FileError.
[[nodiscard]] ProjectContents read_contents(const ProjectFile& file, std::vector<std::string>& warnings);

} // namespace lodex
