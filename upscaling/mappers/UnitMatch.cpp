#include "UnitMatch.h"

#include <Lodex/volumes/LayerInfo.h>
#include <Lodex/volumes/RockFeature.h>
#include <Lodex/volumes/SGridActivityModel.h>
#include <Lodex/volumes/SGridCube.h>

#include <algorithm>
#include <map>
#include <stdexcept>

namespace Kelvane {

std::vector<UnitLayers> units_of(const Lodex::SGrid& grid)
{
    const Lodex::SGridActivityModel* model = grid.sgrid_activity_model();
    const auto layers = model ? model->layers() : std::vector<Lodex::LayerInfo*>{};
    if (layers.empty())
        throw std::runtime_error("grid \"" + grid.name().str() + "\" has no stratigraphic layers");
    const std::int64_t size = grid.cube()->nw() - 1;
    std::vector<UnitLayers> units;
    std::map<std::string, int> seen;
    std::int64_t next = 0;
    for (const Lodex::LayerInfo* layer : layers) {
        const std::string name = layer->rock_feature() ? layer->rock_feature()->name().str() : std::string();
        const std::int64_t end = std::min<std::int64_t>(size, next + layer->nb_k_cells());
        if (end > next)
            units.push_back({name, seen[name]++, {next, end - 1}});
        next = end;
    }
    return units;
}

UnitMatch::UnitMatch(const Lodex::SGrid& fine, const Lodex::SGrid& coarse)
    : fine_(static_cast<std::size_t>(fine.cube()->nw() - 1), -1),
      coarse_(static_cast<std::size_t>(coarse.cube()->nw() - 1), -1)
{
    const auto fine_units = units_of(fine), coarse_units = units_of(coarse);
    const auto find = [](const std::vector<UnitLayers>& units, const UnitLayers& unit) {
        return std::ranges::find_if(units, [&unit](const UnitLayers& other) {
            return other.name == unit.name && other.occurrence == unit.occurrence;
        });
    };
    std::string missing;
    const auto miss = [&missing](const UnitLayers& unit, const Lodex::SGrid& grid) {
        missing += (missing.empty() ? "unit \"" : ", unit \"") + unit.name + "\" is not in grid \"" +
                   grid.name().str() + "\"";
    };
    for (const UnitLayers& unit : fine_units) {
        const auto other = find(coarse_units, unit);
        if (other == coarse_units.end()) {
            miss(unit, coarse);
            continue;
        }
        const int number = static_cast<int>(pairs_.size());
        pairs_.push_back({unit.k, other->k});
        std::fill_n(fine_.begin() + unit.k.first, unit.k.count(), number);
        std::fill_n(coarse_.begin() + other->k.first, other->k.count(), number);
    }
    if (pairs_.empty())
        throw std::runtime_error("the grids \"" + fine.name().str() + "\" and \"" + coarse.name().str() +
                                 "\" have no stratigraphic unit in common");
    for (const UnitLayers& unit : coarse_units)
        if (find(fine_units, unit) == fine_units.end())
            miss(unit, fine);
    warning_ = std::move(missing);
}

} // namespace Kelvane
