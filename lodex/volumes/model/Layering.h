#pragma once

#include "GridModel.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace lodex {

/// Layer that holds the K layer k (0-based): index into `layers`, -1 when k lies outside of them or there are none.
[[nodiscard]] std::int64_t layer_index(std::span<const LayerData> layers, std::int64_t k);

/// First K layer (0-based) of each layer, and the end of the last one: layers.size() + 1 numbers.
[[nodiscard]] std::vector<std::int64_t> layer_starts(std::span<const LayerData> layers);

/// Mean height of the active cells of the K layers `range` in units of the depths; 0 without active cells.
[[nodiscard]] double mean_cell_height(const GridModel& model, const IndexRange& range);

/// One layer per run of K layers on which a discrete property has one value over the active, defined cells. A K layer
/// without such a cell joins the run above it (the first runs join the one below). Units are named after the code; a
/// code that comes back further down gets "_2", "_3", ... Proportional; thickness is the mean height of the active
/// cells divided by depth_unit (see MergeOptions). Throws ModelError when there is no such discrete property, or naming
/// the first K layer on which it varies.
[[nodiscard]] std::vector<LayerData> layers_from_property(const GridModel& model, std::string_view property,
                                                          double depth_unit = 1);

/// Layers of the given units and numbers of K cells from top to bottom, otherwise as above. Throws ModelError when the
/// lists differ in length, a size is below 1 or the sizes do not add up to the number of K cells.
[[nodiscard]] std::vector<LayerData> layers_from_sizes(const GridModel& model, std::span<const std::string> units,
                                                       std::span<const std::int64_t> sizes, double depth_unit = 1);

/// Gives a grid without layers its layering: by the discrete property ZONE when that is constant on each K layer, else
/// one layer of all K cells. Throws ModelError when the grid has layers.
void fill_layering_info(GridModel& model, double depth_unit = 1);

/// Where a K surface stands when a grid is laid out anew from its layers: where it was, or at a place within its layer.
struct LayerSurface {
    bool computed = false;              ///< false: where it was
    std::int64_t top_k = 0, base_k = 0; ///< first and last K layer of the layer that holds it
    double fraction = 0;                ///< Proportional: share of the layer's thickness from its top
    double distance = 0;                ///< else: depth below the layer's top or height above its base
    Lodex::LayerInfo::LayeringStyle style = Lodex::LayerInfo::Proportional;

    /// Depth between the layer's top and base at one corner; a distance is cut at the other side, and laid off the
    /// other way where the layer stands on its head.
    [[nodiscard]] double depth(double top, double base) const;
};

/// The surfaces on top of K layers 0 ... nk, the last one being the base of the grid. Those between two layers stay;
/// those within a layer stand where its layering style puts the number of cells above them (below them for
/// ParallelToBase). A layer without cell thickness is divided evenly, with a warning. For depth_unit see MergeOptions.
[[nodiscard]] std::vector<LayerSurface> layer_surfaces(const GridModel& model, double depth_unit,
                                                       std::vector<std::string>& warnings);

/// One model region per layer, named after its unit, over all cells of its K layers. Layers of one unit share a region.
[[nodiscard]] std::vector<RegionData> unit_regions(const GridModel& model);

} // namespace lodex
