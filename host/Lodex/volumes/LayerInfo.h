#pragma once

namespace Lodex {

class RockFeature;

/// One layer of the stratigraphic meta model: a run of K cells that belong to one stratigraphic unit.
class LayerInfo {
public:
    /// How the cells of a layer are laid out between its top and its base.
    enum LayeringStyle {
        Proportional,   ///< an even division of the layer's thickness
        ParallelToBase, ///< cells of the layer's cell thickness counted from the base
        ParallelToTop   ///< cells of the layer's cell thickness counted from the top
    };

    virtual ~LayerInfo() = default;

    /// Number of K cells of the layer, at least 1.
    [[nodiscard]] virtual long nb_k_cells() const = 0;
    /// Cell thickness in internal units; divide by MapCoordinateSystem::vertical_unit()'s scale for the project's.
    [[nodiscard]] virtual float cell_thickness() const = 0;
    [[nodiscard]] virtual LayeringStyle layering_style() const = 0;
    /// The stratigraphic unit; owned by the grid's meta model, null when the layer has none.
    [[nodiscard]] virtual RockFeature* rock_feature() const = 0;
};

} // namespace Lodex
