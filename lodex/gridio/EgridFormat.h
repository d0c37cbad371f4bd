#pragma once

#include <lodex/gridio/GridFormat.h>
#include <lodex/gridio/RecordFile.h>

#include <optional>

namespace lodex {

/// EGRID and, as text, FEGRID: corner-point grids of reservoir simulators, with the properties of the INIT or FINIT of
/// the same name beside them.
///
/// Coordinates and depths are those of the file, in its own units; MAPAXES is kept, not applied. Local refinements and
/// connections between cells that are no neighbours are left out, with a message that counts them. Dual porosity: a
/// cell is active when its matrix is.
///
/// Writing. Unformatted and big-endian; as text when the file's ending is .fegrid. When there are properties the INIT
/// (or FINIT) is written as well: an array of the active cells when the other cells hold nothing, else of all cells.
/// What the format cannot hold is told in WriteResult::messages.
class EgridFormat : public GridFormat {
public:
    [[nodiscard]] std::string_view name() const override { return "egrid"; }
    [[nodiscard]] std::string_view description() const override { return "EGRID with INIT"; }
    [[nodiscard]] std::span<const std::string_view> endings() const override;
    [[nodiscard]] bool can_read() const override { return true; }
    [[nodiscard]] bool can_write() const override { return true; }
    [[nodiscard]] bool recognises(std::string_view head, const std::filesystem::path& path) const override;
    [[nodiscard]] ReadResult read(const std::filesystem::path& path, const ReadOptions& options) const override;
    WriteResult write(const GridModel& model, const std::filesystem::path& path,
                      const WriteOptions& options) const override;
};

namespace egrid {

/// The grid with the properties of an INIT file that the caller names (null: none). Throws FileError, Cancelled.
[[nodiscard]] ReadResult read(const records::Source& grid, const std::optional<records::Source>& init,
                              const ReadOptions& options);

} // namespace egrid

} // namespace lodex
