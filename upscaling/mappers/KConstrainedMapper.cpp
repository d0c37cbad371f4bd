#include "KConstrainedMapper.h"

#include "GeometricMatch.h"

namespace Kelvane {

namespace {

const MapperRegistrar<KConstrainedMapper> registrar;

} // namespace

MapperInfo KConstrainedMapper::info()
{
    return {.name = "k-constrained geometric",
            .family = Lodex::MetaSGridCellMapper::type().str(),
            .place = 2,
            .rule = "The fine cells of the coarse cell's stratigraphic unit whose centre lies inside the coarse cell, "
                    "by the rule of the geometric mapper. Units are matched by name.",
            .needs = "Two grids in the same coordinates, both with layers, at least one unit in common.",
            .samples = "The fine cell of the same unit that holds the centre of the sample.",
            .fault_management = usual_fault_management(),
            .inactive_cells = usual_inactive_cells()};
}

std::unique_ptr<Lodex::MatchedGrids> KConstrainedMapper::match(const Lodex::MappingRequest& request,
                                                               const Lodex::ProgressCheck& progress) const
{
    return std::make_unique<GeometricMatch>(request, true, progress);
}

} // namespace Kelvane
