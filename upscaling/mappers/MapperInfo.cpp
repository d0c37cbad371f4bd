#include "MapperInfo.h"

#include <Lodex/utils/COSNameList.h>

namespace Lodex {

CString GridObjCellMapperFactoriesDomain()
{
    return "GridObjCellMapper";
}

void GridObjCellMapper::mapper_list_names(COSNameList& names, const CString& type)
{
    FactoryLib::instance()->list(GridObjCellMapperFactoriesDomain(), type, names);
}

} // namespace Lodex

namespace Kelvane {

std::string usual_fault_management()
{
    return "Fault blocks are sets of columns of the fine grid connected through faces whose corners coincide. A coarse "
           "cell keeps only the fine cells of the block that holds most of their bulk volume, the block of the lower "
           "number on a tie; samples in other blocks count as lying in no cell. Where in more than half of the coarse "
           "cells no block holds two thirds of the volume, the grids are too different for that to mean anything: the "
           "switch is taken as off, with a warning.";
}

std::string usual_inactive_cells()
{
    return "Inactive fine cells belong to no coarse cell and samples in them count as lying in no cell. An inactive "
           "coarse cell has no fine cells. The same holds for cells outside the chosen regions.";
}

std::vector<MapperInfo> mapper_infos()
{
    std::vector<MapperInfo> infos;
    const Lodex::CString domain = Lodex::GridObjCellMapperFactoriesDomain();
    for (const Lodex::CString& type : {Lodex::GeoSGridCellMapper::type(), Lodex::MetaSGridCellMapper::type()}) {
        Lodex::COSNameList paths;
        Lodex::GridObjCellMapper::mapper_list_names(paths, type);
        for (const Lodex::CString& path : paths) {
            if (const auto* factory =
                    dynamic_cast<const MapperFactory*>(Lodex::FactoryLib::instance()->find(domain, path)))
                infos.push_back(factory->info());
        }
    }
    return infos;
}

} // namespace Kelvane
