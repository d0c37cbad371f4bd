#pragma once

#include "CornerPointGrid.h"

#include <Lodex/volumes/SGridActivityModel.h>

#include <memory>
#include <vector>

namespace lodex {

class GridLayer;

/// Layers and activities of one grid. An activity between two grids is shared by both and outlives either.
class GridActivityModel final : public Lodex::SGridActivityModel {
public:
    explicit GridActivityModel(const CornerPointGrid& grid);
    ~GridActivityModel() override;
    /// Follows the model's layers.
    void rebuild();

    void add(std::shared_ptr<Lodex::SGridActivity> activity) { activities_.push_back(std::move(activity)); }
    /// False: the grid shows no activity model.
    [[nodiscard]] bool has_content() const { return !layers_.empty() || !activities_.empty(); }

    [[nodiscard]] std::vector<Lodex::LayerInfo*> layers() const override;
    [[nodiscard]] Lodex::LayerInfo* layer(long index) const override;
    [[nodiscard]] long layer_index(long k) const override;
    [[nodiscard]] std::vector<Lodex::SGridActivity*> activities() const override;

private:
    const CornerPointGrid& grid_;
    std::vector<std::unique_ptr<GridLayer>> layers_;
    std::vector<std::shared_ptr<Lodex::SGridActivity>> activities_;
};

/// Activities as they were, from a file: registered with no grid and not journalled. A modification that is added to a
/// coarsening later goes to the journal as one of this grid.
[[nodiscard]] std::shared_ptr<Lodex::SGridActivity> restored_upgridding(std::string name, Lodex::GridCoarseningData data);
[[nodiscard]] std::shared_ptr<Lodex::SGridActivity> restored_downgridding(std::string name, Lodex::GridRefinementData data);
[[nodiscard]] std::shared_ptr<Lodex::SGridActivity> restored_coarsening(const CornerPointGrid& grid, std::string name,
                                                                        Lodex::GridCoarseningData data);

/// Text form of modifications in statements: groups of axis (1: I, 2: J, 3: K), first, last (1-based) and step, all joined
/// by "+".
[[nodiscard]] std::string to_text(const Lodex::GridCoarseningData& data);
/// Groups of axis, first, last, amount, thickness, style ("proportional", "parallel_to_base", "parallel_to_top").
[[nodiscard]] std::string to_text(const Lodex::GridRefinementData& data);
/// Throw ModelError naming the group that does not read.
[[nodiscard]] std::unique_ptr<Lodex::GridCoarseningData> coarsening_from_text(const std::string& text);
[[nodiscard]] std::unique_ptr<Lodex::GridRefinementData> refinement_from_text(const std::string& text);

} // namespace lodex
