#pragma once

#include "RegionCells.h"

#include <Lodex/geobase/Property.h>
#include <Lodex/utils/CString.h>

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace Kelvane {

/// The numbers that the statistics of a grid are made of: the defined values of one property, or of the ratio of two,
/// in the active cells of a region. Refers to the grid's arrays: valid until the grid changes. Reading is safe from
/// several threads.
class CellSamples {
public:
    /// property and denominator are 0-based positions among the grid's properties, denominator -1 for none; regions as
    /// RegionCells takes them. Throws std::invalid_argument for a position that is not there, a property that does not
    /// have one value a cell, regions that are not there.
    CellSamples(const Lodex::SGrid& grid, int property, int denominator, const Lodex::CString& regions,
                bool volume_weighted);

    [[nodiscard]] long layers() const { return layers_; }
    [[nodiscard]] std::size_t cells_per_layer() const { return layer_cells_; }

    /// Samples of one layer in the order of its cells; weights are the cells' bulk volumes, none without volume
    /// weighting.
    struct Layer {
        std::vector<double> values;
        std::vector<double> weights;
    };
    /// A value is left out where it is the no-data value or not finite, where the denominator is so or 0, and where the
    /// ratio or the weight is not finite. layer is 0-based. What `samples` held is replaced.
    void read(long layer, Layer& samples) const;

    /// Stands for all that read() depends on: numbers, no-data values, active flags, regions, volumes.
    [[nodiscard]] Fingerprint fingerprint() const;

private:
    /// One property's numbers and what counts as undefined among them.
    struct Source {
        Lodex::Property::Values values;
        std::optional<double> no_data;
    };
    [[nodiscard]] Source source(const Lodex::SGrid& grid, int property) const;

    long layers_;
    std::size_t layer_cells_;
    std::span<const std::uint8_t> active_;
    std::span<const double> volumes_; ///< empty without volume weighting
    RegionCells region_;
    Source numerator_;
    std::optional<Source> denominator_;
};

} // namespace Kelvane
