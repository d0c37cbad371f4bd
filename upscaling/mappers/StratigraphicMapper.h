#pragma once

#include "MapperInfo.h"

namespace Kelvane {

/// Columns by x and y, cells by their relative depth within the stratigraphic unit.
class StratigraphicMapper final : public Lodex::MetaSGridCellMapper {
public:
    [[nodiscard]] static MapperInfo info();
    [[nodiscard]] std::unique_ptr<Lodex::MatchedGrids> match(const Lodex::MappingRequest& request,
                                                             const Lodex::ProgressCheck& progress) const override;
};

} // namespace Kelvane
