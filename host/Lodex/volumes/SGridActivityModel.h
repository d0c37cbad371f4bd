#pragma once

#include <Lodex/utils/CString.h>
#include <Lodex/volumes/GridModificationData.h>
#include <Lodex/volumes/GridObjMetaModel.h>

#include <memory>
#include <vector>

namespace Lodex {

class SGrid;

/// Something that was done with a grid and is remembered.
class SGridActivity {
public:
    enum class Kind { Upgridding, Downgridding, Coarsening };

    virtual ~SGridActivity() = default;
    [[nodiscard]] virtual Kind kind() const = 0;
    /// Name of a coarsening activity; of the others the names of both grids joined by " -> ".
    [[nodiscard]] virtual CString name() const = 0;
};

/// The record of how a grid was derived and of its layers. A grid has one as soon as it has layers or any activity.
class SGridActivityModel : public GridObjMetaModel {
public:
    /// In order of creation; owned by the model.
    [[nodiscard]] virtual std::vector<SGridActivity*> activities() const = 0;
};

/// "The coarse grid came from the fine one by this coarsening."
class SGridUpgriddingActivityData : public SGridActivity {
public:
    /// Registers the activity with both grids. Takes the data in every case. Null when a pointer is null, when no record
    /// leads from fine to coarse (through temporaries that are gone, too) or when the sizes disagree with the data.
    static SGridUpgriddingActivityData* create_upgridding_activity(SGrid* fine, SGrid* coarse, GridCoarseningData* data);
    [[nodiscard]] virtual const GridCoarseningData& coarsening_data() const = 0;
};

/// "The fine grid came from the coarse one by this refinement."
class SGridDowngriddingActivityData : public SGridActivity {
public:
    /// As create_upgridding_activity(), the other way.
    static SGridDowngriddingActivityData* create_downgridding_activity(SGrid* coarse, SGrid* fine, GridRefinementData* data);
    [[nodiscard]] virtual const GridRefinementData& refinement_data() const = 0;
};

/// A named coarsening that may be applied to a grid later.
class SGridGridCoarseningModificationActivityData : public SGridActivity {
public:
    /// Takes the data. Null when the grid or the data is null, the name is empty or taken on this grid, or a modification
    /// does not fit the grid.
    static SGridGridCoarseningModificationActivityData* create_coarsening_activity(SGrid* grid, const CString& name,
                                                                                   GridCoarseningData* data);
    /// Null when the grid has none of that name.
    static SGridGridCoarseningModificationActivityData* get_coarsening_activity(const SGrid* grid, const CString& name);
    /// Owned by the activity. Modifications may be added; identical ones are kept once.
    [[nodiscard]] virtual GridCoarseningData* grid_coarsening_data() = 0;
};

} // namespace Lodex
