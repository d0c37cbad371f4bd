#pragma once

#include "MapperInfo.h"

namespace Kelvane {

/// As the geometric mapper, within the same stratigraphic unit only.
class KConstrainedMapper final : public Lodex::MetaSGridCellMapper {
public:
    [[nodiscard]] static MapperInfo info();
    [[nodiscard]] std::unique_ptr<Lodex::MatchedGrids> match(const Lodex::MappingRequest& request,
                                                             const Lodex::ProgressCheck& progress) const override;
};

} // namespace Kelvane
