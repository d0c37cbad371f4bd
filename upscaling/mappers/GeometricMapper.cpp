#include "GeometricMapper.h"

#include "GeometricMatch.h"

namespace Kelvane {

namespace {

const MapperRegistrar<GeometricMapper> registrar;

} // namespace

MapperInfo GeometricMapper::info()
{
    return {.name = "geometric",
            .family = Lodex::GeoSGridCellMapper::type().str(),
            .place = 0,
            .rule = "The fine cells whose centre (mean of the eight corners) lies inside the coarse cell (the image of "
                    "the unit cube under its trilinear map). A centre on a shared face belongs to the coarse cell of "
                    "the lower index, as does one closer to a face than 1e-8 of the cell. Layers play no part.",
            .needs = "Two grids in the same coordinates.",
            .samples = "The fine cell that holds the centre of the sample.",
            .fault_management = usual_fault_management(),
            .inactive_cells = usual_inactive_cells()};
}

std::unique_ptr<Lodex::MatchedGrids> GeometricMapper::match(const Lodex::MappingRequest& request,
                                                            const Lodex::ProgressCheck& progress) const
{
    return std::make_unique<GeometricMatch>(request, false, progress);
}

} // namespace Kelvane
