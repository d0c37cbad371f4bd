#pragma once

#include "MapperInfo.h"

namespace Kelvane {

/// Fine cells whose centre lies inside the coarse cell; layers play no part.
class GeometricMapper final : public Lodex::GeoSGridCellMapper {
public:
    [[nodiscard]] static MapperInfo info();
    [[nodiscard]] std::unique_ptr<Lodex::MatchedGrids> match(const Lodex::MappingRequest& request,
                                                             const Lodex::ProgressCheck& progress) const override;
};

} // namespace Kelvane
