#pragma once

#include <Lodex/utils/CString.h>
#include <Lodex/utils/FactoryLib.h>
#include <Lodex/utils/Progress.h>
#include <Lodex/volumes/IndexRelation.h>

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace Lodex {

class COSNameList;
class SGrid;

/// For each coarse cell the fine cells that belong to it. Two forms: lists in compressed rows, or index boxes, which cost
/// nothing to keep for millions of cells.
struct CellMapping {
    /// Rows: number of coarse cells + 1; the cells of coarse cell c stand in cells[offsets[c]] .. cells[offsets[c + 1] - 1].
    /// Empty in the form of boxes.
    std::vector<std::int64_t> offsets;
    /// Rows: fine cell indices, 0-based, ascending within a coarse cell; only cells that take part (active, chosen).
    std::vector<std::int64_t> cells;
    /// Boxes: coarse cell (i, j, k) has the fine cells with boxes[0][i] x boxes[1][j] x boxes[2][k] whose flag is set.
    /// All empty in the form of rows. A range may be empty (last = first - 1), and a fine cell may stand in two boxes.
    IndexRelation boxes;
    /// Boxes: one flag per fine cell, 1 for a cell that takes part. Valid as long as the grids are not changed.
    std::span<const std::uint8_t> fine_flags;
    /// Boxes: one flag per coarse cell, 1 for a cell that takes part; a cell with 0 has no fine cells.
    std::span<const std::uint8_t> coarse_flags;

    [[nodiscard]] bool has_boxes() const { return !boxes[0].empty(); }
};

/// What a mapping is made for. Spans are not owned and outlive the matched grids.
struct MappingRequest {
    const SGrid* fine = nullptr;
    const SGrid* coarse = nullptr;
    std::span<const std::uint8_t> fine_cells;   ///< one flag per fine cell: those that take part; never empty
    std::span<const std::uint8_t> coarse_cells; ///< the same on the coarse grid
    /// A coarse cell uses only the fine cells of the fault block that holds most of its volume.
    bool fault_management = false;
};

/// Two grids matched by a mapper. Holds pointers to the grids; both must stay as they are while it lives.
class MatchedGrids {
public:
    virtual ~MatchedGrids() = default;
    [[nodiscard]] virtual const CellMapping& mapping() const = 0;
    /// The fine cells at the centres of n[0] x n[1] x n[2] samples of a coarse cell (an even division along I, J, K of the
    /// coarse cell), I fastest; -1 where no fine cell that takes part holds the centre. Safe from several threads at once.
    virtual void sample(std::int64_t coarse_cell, const std::array<int, 3>& n, std::span<std::int64_t> fine_cells) const = 0;
    /// What went otherwise than asked, for the user.
    [[nodiscard]] virtual const std::vector<std::string>& warnings() const = 0;
};

/// Matches the cells of a fine grid with those of a coarse one.
class GridObjCellMapper {
public:
    virtual ~GridObjCellMapper() = default;
    /// Throws std::runtime_error with a text for the user when the grids lack what the mapper needs, Cancelled when the
    /// progress check answers false. Results do not depend on the number of threads.
    [[nodiscard]] virtual std::unique_ptr<MatchedGrids> match(const MappingRequest& request,
                                                              const ProgressCheck& progress = {}) const = 0;

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

/// Makes mappers of one kind.
class CellMapperFactory : public Factory {
public:
    [[nodiscard]] virtual std::unique_ptr<GridObjCellMapper> create() const = 0;
};

/// Name of the domain under which FactoryLib holds the mapper factories, by family ("geo", "meta").
[[nodiscard]] CString GridObjCellMapperFactoriesDomain();

} // namespace Lodex
