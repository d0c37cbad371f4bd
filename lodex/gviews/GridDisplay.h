#pragma once

#include "lodex/gviews/faces/CellFilter.h"

#include <cstddef>
#include <string>

namespace lodex {

/// What the cells of a grid are coloured by.
struct ColourBy {
    enum class Kind {
        None,     ///< all cells alike
        Unit,     ///< stratigraphic units
        Property, ///< the cell property of this name
        Depth     ///< depth of the cell's centre
    };
    Kind kind = Kind::None;
    std::string property;

    [[nodiscard]] static ColourBy of_property(std::string name) { return {Kind::Property, std::move(name)}; }
    friend bool operator==(const ColourBy&, const ColourBy&) = default;
};

/// How a camera shows one grid. The colour scale of a property is no part of it: that stands in the property's style
/// (ColourScale).
struct GridDisplay {
    /// What is drawn of the cells that are not painted while sections are painted.
    enum class Rest { Hidden, Outline };

    bool visible = true;
    ColourBy colour;
    CellFilter filter;
    bool outline = true;
    bool cell_edges = true; ///< lines along the edges of the cells; left out where there are very many
    bool legend = true;
    bool painted_sections = true; ///< obey the attribute "*sections" of the grid's style
    /// Painted sections that have very many faces are drawn together with the rest, which is grey then.
    Rest rest = Rest::Outline;
    /// So many faces of a part of the cells are drawn in any case; of more no more than one and a half times as many as
    /// the whole grid has on its surface, so that no picture takes much longer than one of the whole grid.
    std::size_t faces_at_ease = 400'000;

    friend bool operator==(const GridDisplay&, const GridDisplay&) = default;
};

} // namespace lodex
