#pragma once

#include "MapperInfo.h"

namespace Kelvane {

/// Index ranges through the records of how one grid came from the other.
class ParametricMapper final : public Lodex::MetaSGridCellMapper {
public:
    [[nodiscard]] static MapperInfo info();
    [[nodiscard]] std::unique_ptr<Lodex::MatchedGrids> match(const Lodex::MappingRequest& request,
                                                             const Lodex::ProgressCheck& progress) const override;
};

} // namespace Kelvane
