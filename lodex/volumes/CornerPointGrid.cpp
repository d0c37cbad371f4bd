#include "CornerPointGrid.h"

#include "ActivityModel.h"
#include "GridItems.h"
#include "lodex/volumes/model/CellGeometry.h"
#include "lodex/volumes/model/Derivation.h"

#include <Lodex/geobase/GeobaseLib.h>
#include <Lodex/utils/COSNameList.h>
#include <Lodex/volumes/SGridSubset.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <new>

namespace Lodex {

const TypeId& SGrid::static_type_id_()
{
    static const TypeId type("SGrid", nullptr);
    return type;
}

void SGridSubset::get_property_dimensions(GridObj::PropertyAlignment alignment, long& ni, long& nj, long& nk) const
{
    const SGridCube* cube = grid_->cube();
    const long more = alignment == GridObj::Points ? 0 : 1;
    ni = cube->nu() - more;
    nj = cube->nv() - more;
    nk = cube->nw() - more;
}

} // namespace Lodex

namespace lodex {

namespace {

GridModel with_id(GridModel model)
{
    model.id = next_grid_id();
    return model;
}

} // namespace

CornerPointGrid::CornerPointGrid(Lodex::CString name, GridModel model)
    : SGrid(std::move(name)), model_(with_id(std::move(model))), lattice_(std::make_unique<NodeLattice>(*this)),
      properties_(std::make_unique<GridProperties>(*this)), activities_(std::make_unique<GridActivityModel>(*this))
{
    check_arrays(model_);
    rebuild();
}

CornerPointGrid::CornerPointGrid(Lodex::CString name, GridModel header, std::shared_ptr<GridArrays> arrays)
    : SGrid(std::move(name)), model_(std::move(header)), pending_(std::move(arrays), model_),
      lattice_(std::make_unique<NodeLattice>(*this)), properties_(std::make_unique<GridProperties>(*this)),
      activities_(std::make_unique<GridActivityModel>(*this))
{
    rebuild();
}

CornerPointGrid::~CornerPointGrid() = default;

void CornerPointGrid::rebuild()
{
    properties_->rebuild();
    std::vector<std::unique_ptr<GridRegion>> regions;
    for (std::size_t i = 0; i < model_.regions.size(); ++i)
        regions.push_back(std::make_unique<GridRegion>(*this, i));
    regions_ = std::move(regions);
    activities_->rebuild();
}

void CornerPointGrid::change(const std::function<void(GridModel&)>& f)
{
    pending_.bring_or_replace_all(model_);
    // Set aside for what follows the change: that is not undone any more, and must not fail for want of memory.
    constexpr std::size_t bytes_per_item = 1024;
    auto spare = std::make_unique<std::byte[]>(bytes_per_item * (16 + model_.properties.size() + model_.regions.size()));
    f(model_);
    ++revision_;
    try {
        pending_.follow(model_);
        rebuild();
    } catch (const std::bad_alloc&) {
        spare.reset();
        pending_.follow(model_);
        rebuild();
    }
    notify();
}

void CornerPointGrid::name_list(const Lodex::CString& key, Lodex::COSNameList& names) const
{
    names.clear();
    if (key == "properties" || key == "properties1d") {
        for (const PropertyData& property : model_.properties)
            names.append(property.name);
    } else if (key == "regions_plus" || key == "regions") {
        if (key == "regions_plus")
            names.append("all_regions");
        for (const RegionData& region : model_.regions)
            names.append(region.name);
    } else if (key == "layers") {
        for (const LayerData& layer : model_.layers)
            names.append(layer.unit);
    }
}

Lodex::Style* CornerPointGrid::style() const
{
    return static_cast<Lodex::Style*>(Lodex::GeobaseLib::instance()->find(name(), Lodex::Style::static_type_id_()));
}

Lodex::SGridCube* CornerPointGrid::cube() const
{
    return lattice_.get();
}

Lodex::SGridActivityModel* CornerPointGrid::sgrid_activity_model() const
{
    return activities_->has_content() ? activities_.get() : nullptr;
}

Lodex::PropertyDB* CornerPointGrid::property_db() const
{
    return properties_.get();
}

int CornerPointGrid::nb_regions() const
{
    return static_cast<int>(regions_.size());
}

Lodex::Region* CornerPointGrid::region(int index) const
{
    return index >= 0 && index < nb_regions() ? regions_[static_cast<std::size_t>(index)].get() : nullptr;
}

Lodex::Region* CornerPointGrid::find_region(const Lodex::CString& name) const
{
    const auto it = std::ranges::find_if(regions_, [&](const auto& region) { return region->name() == name; });
    return it == regions_.end() ? nullptr : it->get();
}

std::optional<Lodex::IndexRelation> CornerPointGrid::relation_to(const Lodex::SGrid& source) const
{
    const auto* grid = dynamic_cast<const CornerPointGrid*>(&source);
    const DerivationRecord* record = grid ? find_record(model_, grid->model_.id) : nullptr;
    return record ? std::optional(record->ranges) : std::nullopt;
}

std::span<const double> CornerPointGrid::bulk_volumes() const
{
    if (volumes_.empty()) {
        (void)with({GridArray::Pillars});
        volumes_ = cell_volumes(with({GridArray::CornerDepths}));
    }
    return volumes_;
}

CornerPointGrid* add_grid(const std::string& name, GridModel model)
{
    auto grid = std::make_unique<CornerPointGrid>(name, std::move(model));
    CornerPointGrid* raw = grid.get();
    Lodex::GeobaseLib::instance()->add(std::move(grid));
    return raw;
}

CornerPointGrid* find_grid(const std::string& name)
{
    return static_cast<CornerPointGrid*>(Lodex::GeobaseLib::instance()->find(name, Lodex::SGrid::static_type_id_()));
}

CornerPointGrid& as_grid(Lodex::GObj* object)
{
    return static_cast<CornerPointGrid&>(*object);
}

} // namespace lodex
