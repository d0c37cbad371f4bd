#pragma once

#include "GridModel.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

namespace lodex {

/// What passes on to a merged or subdivided grid besides geometry, flags, layers, model regions, faults and the frame.
struct CarryOptions {
    bool copy_properties = false;
    std::optional<std::vector<std::string>> properties; ///< names; nothing given: all of them
    bool copy_regions = false;
    std::optional<std::vector<std::string>> regions; ///< names; nothing given: all of them
    bool copy_fault_blocks = false;                  ///< regions "fault_block_1", ... of the new grid
    std::string source_name;                         ///< name of the source, for the record
    double depth_unit = 1; ///< length of the vertical unit of LayerData::cell_thickness in units of the depths
};

/// What became of cells and volumes.
struct ChangeReport {
    GridSize size_before{}, size_after{};
    std::int64_t active_before = 0, active_after = 0;
    double bulk_volume_before = 0, bulk_volume_after = 0;   ///< active cells
    double total_volume_before = 0, total_volume_after = 0; ///< all cells
    /// Of the volume of single cells; the operator says which ones are compared with what.
    double max_relative_difference = 0;
    double mean_relative_difference = 0;
    std::vector<std::string> warnings;
};

/// Adds to the new grid the properties and regions that pass on, without values yet. Throws ModelError when one that is
/// asked for is not there.
void choose_items(const GridModel& source, const CarryOptions& options, GridModel& result);

// What a merge or a subdivision carries over besides cells. `ranges` holds for every index of the new grid the index
// range of the old one, ascending and without gaps, along each axis; the new indices of a divided section name the
// same old one.

/// Values of the nodes that stay after a merge.
[[nodiscard]] std::variant<std::vector<float>, std::vector<double>, std::vector<std::int32_t>>
carried_points(const GridModel& source, const PropertyData& property, std::span<const IndexRange> i_ranges,
               std::span<const IndexRange> j_ranges, std::span<const IndexRange> k_ranges);

/// Values of the nodes after a subdivision along one axis: those between two old ones are linear between them at even
/// places, the nearer one's (the lower index half-way) where values are discrete or one of the two is undefined.
[[nodiscard]] std::variant<std::vector<float>, std::vector<double>, std::vector<std::int32_t>>
divided_points(const GridModel& source, const PropertyData& property, int axis, std::span<const IndexRange> ranges);

/// Layers with the number of new K cells whose first section lies in them; cell thickness grows in proportion. A range
/// over two layers and a layer that has lost all its cells are warned of.
[[nodiscard]] std::vector<LayerData> carried_layers(std::span<const LayerData> layers,
                                                    std::span<const IndexRange> k_ranges,
                                                    std::vector<std::string>& warnings);

/// Fault segments in new indices; those whose faces all lie inside merged cells or outside of the grid are counted in
/// `dropped`. One whose faces stay only in parts becomes several.
[[nodiscard]] std::vector<FaultSegment> carried_faults(std::span<const FaultSegment> faults, const GridSize& old_size,
                                                       const std::array<std::vector<IndexRange>, 3>& ranges,
                                                       std::int64_t& dropped);

/// Fault segments in the indices of a subdivided grid: boxes grow with their cells, a face on a higher side is that of
/// the last new cell, one on a lower side that of the first. Those outside of the grid are counted in `dropped`.
[[nodiscard]] std::vector<FaultSegment> divided_faults(std::span<const FaultSegment> faults, const GridSize& old_size,
                                                       const std::array<std::vector<IndexRange>, 3>& ranges,
                                                       std::int64_t& dropped);

/// Number of values in a keyword's text: blanks part them, "n*v" and "n*" count n, comments from "--" to the line's end
/// do not count, a '/' outside of quotes ends them.
[[nodiscard]] std::int64_t count_values(std::string_view text);

/// Kept keywords; when the size changes those that hold one value per cell or name cells by index are left out with a
/// warning each.
[[nodiscard]] std::vector<KeptKeyword> carried_keywords(const GridModel& source, const GridSize& new_size,
                                                        std::vector<std::string>& warnings);

} // namespace lodex
