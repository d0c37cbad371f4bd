#include "MapperInfo.h"

#include <Lodex/utils/COSNameList.h>

#include <algorithm>
#include <limits>
#include <utility>

namespace Lodex {

CString GridObjCellMapperFactoriesDomain()
{
    return "GridObjCellMapper";
}

void GridObjCellMapper::mapper_list_names(COSNameList& names, const CString& type)
{
    const FactoryLib& library = *FactoryLib::instance();
    const CString domain = GridObjCellMapperFactoriesDomain();
    library.list(domain, type, names);
    // Which source file of the library registers first is the linker's business; mappers of others come last.
    std::vector<std::pair<int, CString>> places;
    for (const CString& path : names) {
        const auto* factory = dynamic_cast<const Kelvane::MapperFactory*>(library.find(domain, path));
        places.emplace_back(factory ? factory->info().place : std::numeric_limits<int>::max(), path);
    }
    std::ranges::stable_sort(places, {}, &std::pair<int, CString>::first);
    names.clear();
    for (auto& [place, path] : places)
        names.append(std::move(path));
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
