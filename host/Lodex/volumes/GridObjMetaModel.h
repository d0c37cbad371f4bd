#pragma once

#include <Lodex/volumes/LayerInfo.h>

#include <vector>

namespace Lodex {

/// The stratigraphic meta model of a grid: its layers from top to base.
class GridObjMetaModel {
public:
    virtual ~GridObjMetaModel() = default;
    /// The layers in K order; empty when the grid has none. Owned by the model.
    [[nodiscard]] virtual std::vector<LayerInfo*> layers() const = 0;
    /// The layer with this 0-based index; null outside the range.
    [[nodiscard]] virtual LayerInfo* layer(long index) const = 0;
    /// The 0-based index of the layer that holds K cell k (0-based); -1 when none does.
    [[nodiscard]] virtual long layer_index(long k) const = 0;
};

} // namespace Lodex
