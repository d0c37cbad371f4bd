#pragma once

#include <lodex/gridio/GridFormat.h>

namespace lodex {

/// GRDECL text: corner-point grids as keywords and numbers.
///
/// Reading. SPECGRID or DIMENS, COORD, ZCORN, ACTNUM, MAPAXES, MAPUNITS, GRIDUNIT, FAULTS, INCLUDE and one number per cell
/// behind any other keyword, which makes a property of that name. DX, DY, DZ and TOPS (DXV, DYV, DZV) make a corner-point
/// grid where COORD and ZCORN are absent. In a whole deck the sections around GRID are passed through. Every other keyword
/// is kept to the letter in GridModel::kept; operations on arrays (COPY, MULTIPLY, ...) are among these and are not
/// applied. Array by array, numbers are stored in 32 bits when nothing is lost by it: coordinates and depths when 32 bits
/// hold them exactly, properties when the shortest text of the 32-bit numbers gives the file's decimals again. KeptKeyword::file is relative to the folder of the file that was asked for;
/// KeptKeyword::text may hold bytes that are not UTF-8.
///
/// Writing. What has no keyword (regions, units, code names, units of measure, undefined values) goes into comments that
/// begin with "-- LODEX" and come back when the file is read here; other programs pass over them. Undefined values (NaN)
/// are written as defaults, n*. Derivation records and the id belong to the running program and are not written.
class GrdeclFormat : public GridFormat {
public:
    [[nodiscard]] std::string_view name() const override { return "grdecl"; }
    [[nodiscard]] std::string_view description() const override { return "GRDECL text"; }
    [[nodiscard]] std::span<const std::string_view> endings() const override;
    [[nodiscard]] bool can_read() const override { return true; }
    [[nodiscard]] bool can_write() const override { return true; }
    [[nodiscard]] bool recognises(std::string_view head, const std::filesystem::path& path) const override;
    [[nodiscard]] ReadResult read(const std::filesystem::path& path, const ReadOptions& options) const override;
    WriteResult write(const GridModel& model, const std::filesystem::path& path,
                      const WriteOptions& options) const override;
};

} // namespace lodex
