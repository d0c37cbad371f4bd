#pragma once

#include "PendingArrays.h"
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
///
/// The arrays of a grid that came with a project file stay there until they are asked for. The interface's accessors and
/// model() bring what they hand out and never fail for it: they are called while windows draw. An array that the file no
/// longer gives is reported once and has undefined values from then on (see PendingArrays); load() throws for such a grid,
/// so that no statement computes with them, and no project is written until they are replaced or gone.
class CornerPointGrid final : public Lodex::SGrid {
public:
    /// Takes the model and gives it a new id. Throws ModelError when an array has the wrong size.
    CornerPointGrid(Lodex::CString name, GridModel model);
    /// The same with arrays that stay where they are. The header is a model whose arrays are empty, of the types that they
    /// will have; its id was taken from next_grid_id() and is kept.
    CornerPointGrid(Lodex::CString name, GridModel header, std::shared_ptr<GridArrays> arrays);
    ~CornerPointGrid() override;

    /// The whole model; brings all arrays.
    [[nodiscard]] const GridModel& model() const
    {
        pending_.bring_or_replace_all(model_);
        return model_;
    }
    /// The model with the arrays that happen to be there, the others empty. For names, units, sizes, layers and the like.
    [[nodiscard]] const GridModel& header() const { return model_; }
    /// Brings all arrays. Throws FileError when one cannot be had, ModelError when one is lost, Cancelled.
    void load(const ProgressCheck& check = {}) const { pending_.bring_all(model_, check); }
    [[nodiscard]] const PendingArrays& pending() const { return pending_; }

    /// Lets f change properties, regions, layers and frame (not size, geometry, flags) of the whole model, then tells the
    /// observers. When f throws, the grid is as f left it: build new data first, then move it in.
    void change(const std::function<void(GridModel&)>& f);
    /// Number of changes so far.
    [[nodiscard]] std::uint64_t revision() const { return revision_; }

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
    [[nodiscard]] const RealArray& pillars() const override { return with({GridArray::Pillars}).coord; }
    [[nodiscard]] const RealArray& corner_depths() const override { return with({GridArray::CornerDepths}).zcorn; }
    [[nodiscard]] std::span<const std::uint8_t> active_flags() const override
    {
        return with({GridArray::ActiveFlags}).active;
    }
    [[nodiscard]] std::span<const double> bulk_volumes() const override;
    [[nodiscard]] std::optional<Lodex::IndexRelation> relation_to(const Lodex::SGrid& source) const override;

    /// The model with at least this array; the others as in header().
    [[nodiscard]] const GridModel& with(const GridArray& array) const
    {
        pending_.bring_or_replace(array, model_);
        return model_;
    }

private:
    void rebuild();

    mutable GridModel model_; ///< const but for arrays that are brought later
    mutable PendingArrays pending_;
    std::uint64_t revision_ = 0;
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
