#pragma once

#include <lodex/gridio/GridFormat.h>
#include <lodex/gridio/RecordFile.h>

namespace lodex {

/// Binary GRDECL: the keywords SPECGRID, COORD, ZCORN, ACTNUM, MAPAXES, MAPUNITS, GRIDUNIT and arrays of one value per
/// cell, in records as an EGRID has them.
///
/// Every array of numbers with one value per cell becomes a property, discrete when it is of whole numbers. Writing:
/// numbers of 64 bits stay such; what has no keyword is told in WriteResult::messages.
class BinaryGrdeclFormat : public GridFormat {
public:
    [[nodiscard]] std::string_view name() const override { return "bgrdecl"; }
    [[nodiscard]] std::string_view description() const override { return "GRDECL binary"; }
    [[nodiscard]] std::span<const std::string_view> endings() const override;
    [[nodiscard]] bool can_read() const override { return true; }
    [[nodiscard]] bool can_write() const override { return true; }
    [[nodiscard]] bool recognises(std::string_view head, const std::filesystem::path& path) const override;
    [[nodiscard]] ReadResult read(const std::filesystem::path& path, const ReadOptions& options) const override;
    WriteResult write(const GridModel& model, const std::filesystem::path& path,
                      const WriteOptions& options) const override;
};

namespace binary_grdecl {

/// Throws FileError, Cancelled.
[[nodiscard]] ReadResult read(const records::Source& source, const ReadOptions& options);

} // namespace binary_grdecl

} // namespace lodex
