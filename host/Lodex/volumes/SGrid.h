#pragma once

#include <Lodex/utils/RealArray.h>
#include <Lodex/volumes/GridObj.h>
#include <Lodex/volumes/IndexRelation.h>

#include <cstdint>
#include <optional>
#include <span>

namespace Lodex {

class PropertyDB;
class Region;
class SGridActivityModel;
class SGridCube;

/// A stratigraphic grid in corner-point geometry.
///
/// Cells are numbered i + ni*(j + nj*k), 0-based, I fastest, K downwards. Depth is positive downwards, lengths are in the
/// grid's own unit. Either handedness of (I, J, K) against (x, y, depth) is legal. Arrays hand out all cells, inactive
/// ones included, and stay valid until the grid is changed or destroyed.
class SGrid : public GridObj {
public:
    [[nodiscard]] static const TypeId& static_type_id_();

    /// Never null; owned by the grid.
    [[nodiscard]] virtual SGridCube* cube() const = 0;
    /// Null when the grid has neither layers nor activities; owned by the grid.
    [[nodiscard]] virtual SGridActivityModel* sgrid_activity_model() const = 0;
    /// Never null; owned by the grid.
    [[nodiscard]] virtual PropertyDB* property_db() const = 0;
    [[nodiscard]] virtual int nb_regions() const = 0;
    /// The i-th region in order of creation, 0-based; null outside the range.
    [[nodiscard]] virtual Region* region(int index) const = 0;
    /// Null when there is none of that name.
    [[nodiscard]] virtual Region* find_region(const CString& name) const = 0;

    /// 6 numbers a pillar: x, y, depth of its top and of its base; (ni+1)*(nj+1) pillars, I fastest.
    [[nodiscard]] virtual const RealArray& pillars() const = 0;
    /// 8 depths a cell: index (2k+c)*2nj*2ni + (2j+b)*2ni + (2i+a), a, b, c in {0, 1}; c = 0 is the top.
    [[nodiscard]] virtual const RealArray& corner_depths() const = 0;
    /// 1 for an active cell, else 0.
    [[nodiscard]] virtual std::span<const std::uint8_t> active_flags() const = 0;
    /// Absolute bulk volume of every cell, worked out at the first call and kept.
    [[nodiscard]] virtual std::span<const double> bulk_volumes() const = 0;

    /// The source index ranges that the indices of this grid came from (merged, subdivided, through grids that are gone as
    /// well); nothing when no record leads from `source` to this grid.
    [[nodiscard]] virtual std::optional<IndexRelation> relation_to(const SGrid& source) const = 0;

protected:
    using GridObj::GridObj;
};

} // namespace Lodex
