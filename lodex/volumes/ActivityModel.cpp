#include "ActivityModel.h"

#include "GridItems.h"
#include "GridUnits.h"
#include "lodex/interpreter/Interpreter.h"
#include "lodex/interpreter/Lists.h"
#include "lodex/utils/Names.h"
#include "lodex/utils/Numbers.h"
#include "lodex/volumes/model/Derivation.h"
#include "lodex/volumes/model/Layering.h"

#include <array>

namespace lodex {

using Lodex::GridCoarseningData;
using Lodex::GridRefinementData;
using Lodex::LayerInfo;
using Lodex::UGridIndex3d;

GridActivityModel::GridActivityModel(const CornerPointGrid& grid) : grid_(grid) {}

GridActivityModel::~GridActivityModel() = default;

void GridActivityModel::rebuild()
{
    layers_.clear();
    const double scale = grid_unit_scale(grid_.header());
    for (const LayerData& layer : grid_.header().layers)
        layers_.push_back(std::make_unique<GridLayer>(layer, scale));
}

std::vector<LayerInfo*> GridActivityModel::layers() const
{
    std::vector<LayerInfo*> list;
    for (const auto& layer : layers_)
        list.push_back(layer.get());
    return list;
}

LayerInfo* GridActivityModel::layer(long index) const
{
    return index >= 0 && index < static_cast<long>(layers_.size()) ? layers_[static_cast<std::size_t>(index)].get() : nullptr;
}

long GridActivityModel::layer_index(long k) const
{
    return static_cast<long>(lodex::layer_index(grid_.header().layers, k));
}

std::vector<Lodex::SGridActivity*> GridActivityModel::activities() const
{
    std::vector<Lodex::SGridActivity*> list;
    for (const auto& activity : activities_)
        list.push_back(activity.get());
    return list;
}

namespace {

constexpr std::array style_names{"proportional", "parallel_to_base", "parallel_to_top"};

std::string join(std::string list, const std::string& piece)
{
    return list.empty() ? piece : list + "+" + piece;
}

long whole_number(const std::string& text, long min, long max, const char* what)
{
    const auto number = parse_long(text);
    if (!number || *number < min || *number > max)
        throw ModelError(std::string("\"") + text + "\" is no " + what);
    return *number;
}

/// Pieces of a joined list in groups of `length`.
std::vector<std::vector<std::string>> groups(const std::string& text, std::size_t length, const char* what)
{
    const std::vector<std::string> pieces = split_joined_numbers(text);
    if (pieces.size() % length != 0) {
        throw ModelError("modifications hold " + std::to_string(pieces.size()) + " values; expected groups of " +
                         std::to_string(length) + ": " + what);
    }
    std::vector<std::vector<std::string>> list;
    for (std::size_t i = 0; i < pieces.size(); i += length)
        list.emplace_back(pieces.begin() + static_cast<std::ptrdiff_t>(i), pieces.begin() + static_cast<std::ptrdiff_t>(i + length));
    return list;
}

std::string modification_text(const GridCoarseningData::Modification& m)
{
    return std::to_string(m.axis + 1) + "+" + std::to_string(m.first) + "+" + std::to_string(m.last) + "+" +
           std::to_string(m.step);
}

std::vector<GridModification> model_modifications(const GridCoarseningData& data)
{
    std::vector<GridModification> list;
    for (const auto& m : data.modifications())
        list.push_back({m.axis, m.first, m.last, m.step});
    return list;
}

std::vector<GridRefinement> model_modifications(const GridRefinementData& data)
{
    std::vector<GridRefinement> list;
    for (const auto& m : data.modifications())
        list.push_back({m.axis, m.first, m.last, m.amount});
    return list;
}

/// Names of both grids joined by " -> ".
std::string relation_name(const Lodex::SGrid& from, const Lodex::SGrid& to)
{
    return from.name().str() + " -> " + to.name().str();
}

class UpgriddingActivity final : public Lodex::SGridUpgriddingActivityData {
public:
    UpgriddingActivity(std::string name, GridCoarseningData data) : name_(std::move(name)), data_(std::move(data)) {}
    [[nodiscard]] Kind kind() const override { return Kind::Upgridding; }
    [[nodiscard]] Lodex::CString name() const override { return name_; }
    [[nodiscard]] const GridCoarseningData& coarsening_data() const override { return data_; }

private:
    std::string name_;
    GridCoarseningData data_;
};

class DowngriddingActivity final : public Lodex::SGridDowngriddingActivityData {
public:
    DowngriddingActivity(std::string name, GridRefinementData data) : name_(std::move(name)), data_(std::move(data)) {}
    [[nodiscard]] Kind kind() const override { return Kind::Downgridding; }
    [[nodiscard]] Lodex::CString name() const override { return name_; }
    [[nodiscard]] const GridRefinementData& refinement_data() const override { return data_; }

private:
    std::string name_;
    GridRefinementData data_;
};

class CoarseningActivity final : public Lodex::SGridGridCoarseningModificationActivityData {
public:
    CoarseningActivity(std::string name, GridCoarseningData data) : name_(std::move(name)), data_(std::move(data)) {}
    [[nodiscard]] Kind kind() const override { return Kind::Coarsening; }
    [[nodiscard]] Lodex::CString name() const override { return name_; }
    [[nodiscard]] GridCoarseningData* grid_coarsening_data() override { return &data_; }

private:
    std::string name_;
    GridCoarseningData data_;
};

std::string coarsening_statement(const Lodex::SGrid& grid, const std::string& name)
{
    return "lodex on SGrid " + grid.name().str() + " create_coarsening_activity " + quoted(name) + " modifications ";
}

/// Writes every modification that is added from now on to the journal, under the name that the grid has then. The
/// activity belongs to the grid.
void journal_modifications(CoarseningActivity& activity, const Lodex::SGrid& grid)
{
    activity.grid_coarsening_data()->set_listener(
        [&grid, name = activity.name().str()](const GridCoarseningData::Modification& added) {
            Interpreter::instance().append_to_journal(coarsening_statement(grid, name) + modification_text(added));
        });
}

/// Registers "result came from source" with both grids; null when no record says so or the sizes disagree.
template <class Activity, class Data>
Activity* register_relation(Lodex::SGrid* source, Lodex::SGrid* result, std::unique_ptr<Data> data, const std::string& verb)
{
    if (!source || !result || !data)
        return nullptr;
    CornerPointGrid& from = as_grid(source);
    CornerPointGrid& to = as_grid(result);
    const DerivationRecord* record = find_record(to.header(), from.header().id);
    if (!record || !sizes_agree(*record, model_modifications(*data)))
        return nullptr;
    const std::string modifications = to_text(*data);
    const auto activity = std::make_shared<Activity>(relation_name(*source, *result), std::move(*data));
    from.activities().add(activity);
    if (&from != &to)
        to.activities().add(activity);
    from.notify();
    to.notify();
    // In quotes: a word of the name may be a keyword of this verb.
    Interpreter::instance().append_to_journal("lodex on SGrid " + source->name().str() + " " + verb + " result " +
                                              quoted(result->name().str()) + " modifications " + modifications);
    return activity.get();
}

} // namespace

std::string to_text(const GridCoarseningData& data)
{
    std::string list;
    for (const auto& modification : data.modifications())
        list = join(std::move(list), modification_text(modification));
    return list;
}

std::string to_text(const GridRefinementData& data)
{
    std::string list;
    for (const auto& m : data.modifications()) {
        list = join(std::move(list), std::to_string(m.axis + 1) + "+" + std::to_string(m.first) + "+" +
                                         std::to_string(m.last) + "+" + std::to_string(m.amount) + "+" +
                                         format_shortest(m.thickness) + "+" + style_names[m.style]);
    }
    return list;
}

std::unique_ptr<GridCoarseningData> coarsening_from_text(const std::string& text)
{
    auto data = std::make_unique<GridCoarseningData>();
    constexpr long far = 1L << 40;
    for (const auto& group : groups(text, 4, "axis, first, last, step")) {
        data->add_modification(static_cast<UGridIndex3d::Axis>(whole_number(group[0], 1, 3, "axis (1 to 3)") - 1),
                               whole_number(group[1], 1, far, "first cell"), whole_number(group[2], 1, far, "last cell"),
                               whole_number(group[3], 1, far, "step"));
    }
    return data;
}

std::unique_ptr<GridRefinementData> refinement_from_text(const std::string& text)
{
    auto data = std::make_unique<GridRefinementData>();
    constexpr long far = 1L << 40;
    for (const auto& group : groups(text, 6, "axis, first, last, amount, thickness, style")) {
        const auto thickness = parse_double(group[4]);
        if (!thickness)
            throw ModelError("\"" + group[4] + "\" is no thickness");
        std::size_t style = 0;
        while (style < style_names.size() && group[5] != style_names[style])
            ++style;
        if (style == style_names.size())
            throw ModelError("\"" + group[5] + "\" is no layering style");
        data->add_modification(static_cast<UGridIndex3d::Axis>(whole_number(group[0], 1, 3, "axis (1 to 3)") - 1),
                               whole_number(group[1], 1, far, "first cell"), whole_number(group[2], 1, far, "last cell"),
                               whole_number(group[3], 1, far, "amount"), static_cast<float>(*thickness),
                               static_cast<LayerInfo::LayeringStyle>(style));
    }
    return data;
}

std::shared_ptr<Lodex::SGridActivity> restored_upgridding(std::string name, GridCoarseningData data)
{
    return std::make_shared<UpgriddingActivity>(std::move(name), std::move(data));
}

std::shared_ptr<Lodex::SGridActivity> restored_downgridding(std::string name, GridRefinementData data)
{
    return std::make_shared<DowngriddingActivity>(std::move(name), std::move(data));
}

std::shared_ptr<Lodex::SGridActivity> restored_coarsening(const CornerPointGrid& grid, std::string name, GridCoarseningData data)
{
    const auto activity = std::make_shared<CoarseningActivity>(std::move(name), std::move(data));
    journal_modifications(*activity, grid);
    return activity;
}

} // namespace lodex

namespace Lodex {

SGridUpgriddingActivityData* SGridUpgriddingActivityData::create_upgridding_activity(SGrid* fine, SGrid* coarse,
                                                                                     GridCoarseningData* data)
{
    return lodex::register_relation<lodex::UpgriddingActivity>(fine, coarse, std::unique_ptr<GridCoarseningData>(data),
                                                               "create_upgridding_activity");
}

SGridDowngriddingActivityData* SGridDowngriddingActivityData::create_downgridding_activity(SGrid* coarse, SGrid* fine,
                                                                                           GridRefinementData* data)
{
    return lodex::register_relation<lodex::DowngriddingActivity>(coarse, fine, std::unique_ptr<GridRefinementData>(data),
                                                                 "create_downgridding_activity");
}

SGridGridCoarseningModificationActivityData*
SGridGridCoarseningModificationActivityData::create_coarsening_activity(SGrid* grid, const CString& name,
                                                                        GridCoarseningData* data)
{
    const std::unique_ptr<GridCoarseningData> owned(data);
    if (!grid || !owned || lodex::check_object_name(name.str(), {}) || get_coarsening_activity(grid, name))
        return nullptr;
    lodex::CornerPointGrid& target = lodex::as_grid(grid);
    try {
        (void)lodex::merge_sections_of(lodex::model_modifications(*owned), target.header().size);
    } catch (const lodex::ModelError&) {
        return nullptr;
    }
    const auto activity = std::make_shared<lodex::CoarseningActivity>(name.str(), *owned);
    lodex::Interpreter::instance().append_to_journal(lodex::coarsening_statement(*grid, name.str()) +
                                                     lodex::to_text(*owned));
    lodex::journal_modifications(*activity, *grid);
    target.activities().add(activity);
    target.notify();
    return activity.get();
}

SGridGridCoarseningModificationActivityData*
SGridGridCoarseningModificationActivityData::get_coarsening_activity(const SGrid* grid, const CString& name)
{
    const SGridActivityModel* model = grid ? grid->sgrid_activity_model() : nullptr;
    if (!model)
        return nullptr;
    for (SGridActivity* activity : model->activities()) {
        if (activity->kind() == SGridActivity::Kind::Coarsening && activity->name() == name)
            return static_cast<SGridGridCoarseningModificationActivityData*>(activity);
    }
    return nullptr;
}

} // namespace Lodex
