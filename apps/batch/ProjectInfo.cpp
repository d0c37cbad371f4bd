#include "ProjectInfo.h"

#include "lodex/interpreter/Interpreter.h"
#include "lodex/project/Project.h"
#include "lodex/project/ProjectFile.h"
#include "lodex/utils/FileError.h"
#include "lodex/volumes/ActivityModel.h"
#include "lodex/volumes/CornerPointGrid.h"

#include <Lodex/geobase/GeobaseLib.h>

#include <nlohmann/json.hpp>

#include <iostream>

namespace lodex {

namespace {

using nlohmann::ordered_json;

ordered_json describe(const CornerPointGrid& grid)
{
    const GridModel& model = grid.header();
    ordered_json result{{"name", to_utf8(grid.name().str())}, {"size", model.size}, {"properties", ordered_json::array()},
                        {"regions", ordered_json::array()}, {"layers", ordered_json::array()},
                        {"activities", ordered_json::array()}};
    for (const PropertyData& property : model.properties) {
        result["properties"].push_back({{"name", to_utf8(property.name)},
                                        {"kind", property.discrete() ? "discrete" : "continuous"},
                                        {"on", property.on_points ? "points" : "cells"},
                                        {"unit", to_utf8(property.unit)}});
    }
    for (const RegionData& region : model.regions)
        result["regions"].push_back(to_utf8(region.name));
    for (const LayerData& layer : model.layers)
        result["layers"].push_back({{"unit", to_utf8(layer.unit)}, {"nb_k_cells", layer.nb_k_cells}});
    for (const Lodex::SGridActivity* activity : grid.activities().activities())
        result["activities"].push_back(to_utf8(activity->name().str()));
    return result;
}

void print(const ordered_json& project)
{
    std::cout << project["project"].get<std::string>() << ": project of " << project["grids"].size() << " grids, "
              << project["journal"] << " statements in the journal\n";
    for (const ordered_json& grid : project["grids"]) {
        std::cout << grid["name"].get<std::string>() << ": " << grid["size"][0] << " x " << grid["size"][1] << " x "
                  << grid["size"][2] << " cells\n";
        for (const ordered_json& property : grid["properties"]) {
            const auto unit = property["unit"].get<std::string>();
            std::cout << "  " << property["name"].get<std::string>() << ": " << property["kind"].get<std::string>() << ", on "
                      << property["on"].get<std::string>() << (unit.empty() ? "" : ", in " + unit) << '\n';
        }
        for (const ordered_json& region : grid["regions"])
            std::cout << "  region " << region.get<std::string>() << '\n';
        for (const ordered_json& layer : grid["layers"])
            std::cout << "  unit " << layer["unit"].get<std::string>() << ": " << layer["nb_k_cells"] << " K layers\n";
        for (const ordered_json& activity : grid["activities"])
            std::cout << "  activity " << activity.get<std::string>() << '\n';
    }
}

} // namespace

bool is_project(const std::string& path)
{
    return ProjectFile::recognises(path);
}

bool show_project(const std::string& path, bool json)
{
    try {
        open_project(path);
    } catch (const FileError& error) {
        std::cerr << error.what() << '\n';
        return false;
    }
    ordered_json project{{"project", to_utf8(path)}, {"grids", ordered_json::array()}};
    for (Lodex::GObj* object : Lodex::GeobaseLib::instance()->objects(Lodex::SGrid::static_type_id_()))
        project["grids"].push_back(describe(as_grid(object)));
    project["journal"] = Interpreter::instance().journal().size();
    if (json)
        std::cout << project.dump(2) << '\n';
    else
        print(project);
    return true;
}

} // namespace lodex
