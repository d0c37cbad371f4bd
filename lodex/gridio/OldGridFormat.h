#pragma once

#include <lodex/gridio/GridFormat.h>
#include <lodex/gridio/RecordFile.h>

#include <optional>

namespace lodex {

/// GRID and, as text, FGRID: the older grid file of reservoir simulators, which lists cells with their eight corner
/// points, with the properties of the INIT or FINIT of the same name beside it.
///
/// The pillars are made from the corner points: a pillar runs from its highest to its deepest one; when all coincide it
/// is vertical. A message tells when corner points stand off their pillar. Cells that the file does not list are
/// inactive and fill the space between the cells above and below them. For reading only.
class OldGridFormat : public GridFormat {
public:
    [[nodiscard]] std::string_view name() const override { return "grid"; }
    [[nodiscard]] std::string_view description() const override { return "GRID with INIT (older form of EGRID)"; }
    [[nodiscard]] std::span<const std::string_view> endings() const override;
    [[nodiscard]] bool can_read() const override { return true; }
    [[nodiscard]] bool can_write() const override { return false; }
    [[nodiscard]] bool recognises(std::string_view head, const std::filesystem::path& path) const override;
    [[nodiscard]] ReadResult read(const std::filesystem::path& path, const ReadOptions& options) const override;
};

namespace old_grid {

/// As egrid::read().
[[nodiscard]] ReadResult read(const records::Source& grid, const std::optional<records::Source>& init,
                              const ReadOptions& options);

} // namespace old_grid

} // namespace lodex
