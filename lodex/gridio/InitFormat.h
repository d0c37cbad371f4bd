#pragma once

#include <lodex/gridio/GridFormat.h>
#include <lodex/gridio/MessageLog.h>
#include <lodex/gridio/RecordFile.h>
#include <lodex/gridio/RecordGrid.h>

#include <functional>
#include <optional>

namespace lodex {

/// INIT and FINIT: the static arrays of a simulation model, for a grid that stands in another file.
///
/// Every array of numbers with one value per cell or per active cell becomes a property; values of active cells are
/// spread over the grid, the other cells are undefined. Units follow the unit system of INTEHEAD. Headers, tables and
/// lists are left out, as are local refinements. When the grid is asked for as well, it is the EGRID (or GRID) of the
/// same name beside the file. Writing: see EgridFormat.
class InitFormat : public GridFormat {
public:
    [[nodiscard]] std::string_view name() const override { return "init"; }
    [[nodiscard]] std::string_view description() const override { return "INIT, properties of an EGRID"; }
    [[nodiscard]] std::span<const std::string_view> endings() const override;
    [[nodiscard]] bool can_read() const override { return true; }
    [[nodiscard]] bool can_write() const override { return false; }
    [[nodiscard]] bool recognises(std::string_view head, const std::filesystem::path& path) const override;
    [[nodiscard]] ReadResult read(const std::filesystem::path& path, const ReadOptions& options) const override;
};

namespace records {

/// The grid that an INIT file is read for.
struct InitGrid {
    std::optional<GridSize> size;         ///< nothing: that of the file
    std::span<const std::uint8_t> active; ///< 0 or 1, one per cell; empty: not known
    bool dual_porosity = false;           ///< flags are those of the matrix
    bool companion = false;               ///< found beside the grid: when it is of another grid, that is only told
};

struct InitContent {
    GridSize size{};
    std::vector<PropertyData> properties; ///< in order of the file, on all cells
    std::vector<std::uint8_t> active;     ///< when the file states flags of all cells, else empty
    std::uint64_t bytes = 0;
};

/// Throws FileError, Cancelled.
[[nodiscard]] InitContent read_init(const Source& source, const InitGrid& grid, ProgressCheck progress,
                                    MemoryBudget& budget, MessageLog& log);

/// Reads the geometry into the model; says whether the grid is of dual porosity.
using GridReading = std::function<bool(ProgressCheck progress, MemoryBudget& budget, MessageLog& log, GridModel& model)>;

/// A grid file and the INIT beside it, if there is one: the geometry by `read_grid`, the properties from the INIT.
/// Throws FileError, Cancelled.
[[nodiscard]] ReadResult read_with_init(const Source& grid, const std::optional<Source>& init, const ReadOptions& options,
                                        const GridReading& read_grid);

/// The properties of an INIT file alone, as ReadOptions::properties_only asks for.
[[nodiscard]] ReadResult read_init_alone(const Source& source, const ReadOptions& options);

/// The file of the same name with one of these endings (capitals; small letters are tried where the file's own ending
/// has them, and the other way round) that comes first.
[[nodiscard]] std::optional<std::filesystem::path> find_beside(const std::filesystem::path& path,
                                                               std::span<const std::string_view> endings);
/// The INIT or FINIT beside a grid file; the one that is text when the grid is, where both are there.
[[nodiscard]] std::optional<std::filesystem::path> find_init(const std::filesystem::path& grid, bool formatted);

} // namespace records

} // namespace lodex
