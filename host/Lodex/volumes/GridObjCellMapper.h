#pragma once

#include <Lodex/utils/CString.h>

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace Lodex {

class COSNameList;
class SGrid;

/// For each coarse cell the active fine cells that belong to it, in compressed rows.
struct CellMapping {
    std::vector<std::int64_t> offsets; ///< number of coarse cells + 1; cells of coarse cell c: offsets[c] .. offsets[c+1]
    std::vector<std::int64_t> cells;   ///< fine cell indices, 0-based, ascending within a coarse cell
};

/// Matches the cells of a fine grid with those of a coarse one.
class GridObjCellMapper {
public:
    virtual ~GridObjCellMapper() = default;
    /// The mapping for these grids; throws std::runtime_error with a text for the user when the grids lack what the
    /// mapper needs. Empty flag spans mean all active cells.
    [[nodiscard]] virtual CellMapping map(const SGrid& fine, const SGrid& coarse, std::span<const std::uint8_t> fine_cells,
                                          std::span<const std::uint8_t> coarse_cells) const = 0;

    /// Paths of the mappers registered under a family, in registry order; the list is cleared first.
    static void mapper_list_names(COSNameList& names, const CString& type);
};

/// Family of the mappers that need nothing but the two geometries.
class GeoSGridCellMapper : public GridObjCellMapper {
public:
    [[nodiscard]] static CString type() { return "geo"; }
};

/// Family of the mappers that need meta model information of both grids.
class MetaSGridCellMapper : public GridObjCellMapper {
public:
    [[nodiscard]] static CString type() { return "meta"; }
};

} // namespace Lodex
