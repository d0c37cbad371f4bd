#pragma once

#include "Fingerprint.h"

#include <Lodex/utils/CString.h>

#include <cstdint>
#include <span>
#include <vector>

namespace Lodex {
class SGrid;
}

namespace Kelvane {

/// The cells that a computation is restricted to. Refers to the grid's flags: valid until the grid changes.
class RegionCells {
public:
    /// "everywhere": all cells; "all_regions": those of at least one region, and all when the grid has none; else the
    /// cells of at least one of the regions named, several being joined by "+". In a joined list a "+" may belong to
    /// a name or stand for a blank of it; the reading with the fewest names counts. Throws std::invalid_argument when
    /// there is no reading, or two of the same length.
    RegionCells(const Lodex::SGrid& grid, const Lodex::CString& regions);

    [[nodiscard]] bool everywhere() const { return flags_.empty(); }
    [[nodiscard]] bool holds(std::size_t cell) const
    {
        for (const std::span<const std::uint8_t> flags : flags_) {
            if (flags[cell] != 0)
                return true;
        }
        return flags_.empty();
    }
    /// Adds which cells it holds.
    void add_to(Fingerprint& fingerprint) const
    {
        fingerprint.add(flags_.size());
        for (const std::span<const std::uint8_t> flags : flags_)
            fingerprint.add(flags);
    }

private:
    std::vector<std::span<const std::uint8_t>> flags_; ///< none: every cell
};

} // namespace Kelvane
