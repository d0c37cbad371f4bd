#pragma once

#include "lodex/volumes/model/GridModel.h"

#include <Lodex/volumes/SGrid.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace lodex {

class GridActivityModel;
class GridLayer;
class GridProperties;
class GridProperty;
class GridRegion;
class NodeLattice;

/// The catalogue's stratigraphic grid: a GridModel behind the host's interface.
class CornerPointGrid final : public Lodex::SGrid {
public:
    /// Takes the model and gives it a new id. Throws ModelError when an array has the wrong size.
    CornerPointGrid(Lodex::CString name, GridModel model);
    ~CornerPointGrid() override;

    [[nodiscard]] const GridModel& model() const { return model_; }
    /// Lets f change properties, regions, layers and frame (not size, geometry, flags), then tells the observers. When f
    /// throws, the grid is as f left it: build new data first, then move it in.
    void change(const std::function<void(GridModel&)>& f);

    [[nodiscard]] GridActivityModel& activities() const { return *activities_; }

    [[nodiscard]] const Lodex::TypeId& type_id() const override { return static_type_id_(); }
    void name_list(const Lodex::CString& key, Lodex::COSNameList& names) const override;
    [[nodiscard]] Lodex::Style* style() const override;
    [[nodiscard]] PropertyAlignment property_alignment() const override { return Cells; }
    [[nodiscard]] Lodex::SGridCube* cube() const override;
    [[nodiscard]] Lodex::SGridActivityModel* sgrid_activity_model() const override;
    [[nodiscard]] Lodex::PropertyDB* property_db() const override;
    [[nodiscard]] int nb_regions() const override;
    [[nodiscard]] Lodex::Region* region(int index) const override;
    [[nodiscard]] Lodex::Region* find_region(const Lodex::CString& name) const override;
    [[nodiscard]] const RealArray& pillars() const override { return model_.coord; }
    [[nodiscard]] const RealArray& corner_depths() const override { return model_.zcorn; }
    [[nodiscard]] std::span<const std::uint8_t> active_flags() const override { return model_.active; }
    [[nodiscard]] std::span<const double> bulk_volumes() const override;
    [[nodiscard]] std::optional<Lodex::IndexRelation> relation_to(const Lodex::SGrid& source) const override;

private:
    void rebuild();

    GridModel model_;
    mutable std::vector<double> volumes_;
    std::unique_ptr<NodeLattice> lattice_;
    std::unique_ptr<GridProperties> properties_;
    std::vector<std::unique_ptr<GridRegion>> regions_;
    std::unique_ptr<GridActivityModel> activities_;
};

/// Puts a grid into the catalogue. Throws std::invalid_argument when the name is taken, ModelError when the model is broken.
CornerPointGrid* add_grid(const std::string& name, GridModel model);

/// The grid of this name; null when there is none.
[[nodiscard]] CornerPointGrid* find_grid(const std::string& name);

/// The catalogue's grid behind the interface.
[[nodiscard]] CornerPointGrid& as_grid(Lodex::GObj* object);

} // namespace lodex
