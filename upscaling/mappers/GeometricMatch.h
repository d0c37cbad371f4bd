#pragma once

#include "MatchBase.h"
#include "UnitMatch.h"

#include <optional>

namespace Kelvane {

/// Fine cells whose centre lies inside the coarse cell; with units only those of the coarse cell's unit. A sample takes
/// the fine cell (of the same unit) that holds its centre.
class GeometricMatch final : public MatchBase {
public:
    GeometricMatch(const Lodex::MappingRequest& request, bool within_units, const Lodex::ProgressCheck& progress);

private:
    void find_samples(std::int64_t coarse_cell, const std::array<int, 3>& n,
                      std::span<std::int64_t> fine_cells) const override;

    std::optional<UnitMatch> units_;
};

} // namespace Kelvane
