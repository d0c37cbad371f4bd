#include "FlowUnitStats.h"

#include "FlowUnitCreation.h"

#include "upscaling/kernels/ParallelBlocks.h"
#include "upscaling/upscalers/AverageUpscaler.h"
#include "upscaling/upscalers/UpscalerInfo.h"

#include <Lodex/utils/Logger.h>
#include <Lodex/utils/ProgressTracer.h>
#include <Lodex/volumes/SGrid.h>
#include <Lodex/volumes/SGridActivityModel.h>
#include <Lodex/volumes/SGridCube.h>

#include <tbb/parallel_for.h>
#include <tbb/task_arena.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <limits>
#include <stdexcept>
#include <string>

namespace Kelvane {

namespace {

constexpr double nothing = std::numeric_limits<double>::quiet_NaN();
/// Unit means kept for methods that cannot be joined; a user's clicks stay far below.
constexpr std::size_t most_kept_units = 100'000;

/// Cuts a sample down to what the method takes.
void filter(CellSamples::Layer& samples, const AverageRules& rules)
{
    if (rules.accepts_negative && rules.accepts_zero)
        return;
    std::size_t kept = 0;
    for (std::size_t n = 0; n < samples.values.size(); ++n) {
        if (!rules.accepts(samples.values[n]))
            continue;
        samples.values[kept] = samples.values[n];
        if (!samples.weights.empty())
            samples.weights[kept] = samples.weights[n];
        ++kept;
    }
    samples.values.resize(kept);
    if (!samples.weights.empty())
        samples.weights.resize(kept);
}

/// Calls work(layer) for all layers on all threads. `progress` is called from this thread between batches of layers,
/// which are small where layers are large, so that a wish to stop is heard soon.
template <class Work> void for_layers(const CellSamples& samples, const ProgressCheck& progress, const Work& work)
{
    constexpr std::size_t large = 100'000; // cells
    const auto layers = samples.layers();
    const long batch = samples.cells_per_layer() > large
                           ? static_cast<long>(tbb::this_task_arena::max_concurrency())
                           : std::max(16L, (layers + 31) / 32);
    for (long first = 0; first < layers; first += batch) {
        check_progress(progress, static_cast<double>(first) / static_cast<double>(layers));
        tbb::parallel_for(first, std::min(first + batch, layers), work);
    }
    check_progress(progress, 1);
}

double heterogeneity_of(const CellSamples::Layer& samples)
{
    const AverageRules rules = rules_of(Average::DykstraParsons, 1);
    std::vector<double> values;
    values.reserve(samples.values.size());
    std::ranges::copy_if(samples.values, std::back_inserter(values),
                         [&](double value) { return rules.accepts(value); });
    return average(Average::DykstraParsons, 1, values);
}

/// Runs of equal flow unit numbers. Throws std::invalid_argument unless there is one number a layer and they start at
/// 1, never decrease and leave none out.
std::vector<std::pair<int, int>> runs_of(const Lodex::List<int>& flow_units, long layers)
{
    if (flow_units.count() != layers)
        throw std::invalid_argument("there are " + std::to_string(flow_units.count()) + " flow unit numbers for " +
                                    std::to_string(layers) + " layers");
    std::vector<std::pair<int, int>> units;
    for (int layer = 0; layer < flow_units.count(); ++layer) {
        const auto number = static_cast<std::size_t>(flow_units[layer]);
        if (flow_units[layer] > 0 && number == units.size() + 1)
            units.emplace_back(layer, layer);
        else if (flow_units[layer] > 0 && number == units.size())
            units.back().second = layer;
        else
            throw std::invalid_argument("flow unit numbers do not rise from 1 by one");
    }
    return units;
}

/// Position of the stratigraphic unit of each K layer, -1 where there is none.
std::vector<int> stratigraphic_units_of(const Lodex::SGrid& grid, long layers)
{
    std::vector<int> units(static_cast<std::size_t>(layers), -1);
    const Lodex::SGridActivityModel* model = grid.sgrid_activity_model();
    if (!model)
        return units;
    long layer = 0;
    int unit = 0;
    for (const Lodex::LayerInfo* info : model->layers()) {
        const long end = std::min(layer + info->nb_k_cells(), layers);
        for (; layer < end; ++layer)
            units[static_cast<std::size_t>(layer)] = unit;
        ++unit;
    }
    return units;
}

/// Notices that a grid changes or goes while something is worked out from its arrays.
class GridWatch final : private Lodex::GObjObserver {
public:
    explicit GridWatch(const Lodex::SGrid& grid) { observe(const_cast<Lodex::SGrid*>(&grid)); } // does not change it

    [[nodiscard]] bool disturbed() const { return disturbed_; }

private:
    void update(Lodex::Component*) override { disturbed_ = true; }
    void disconnect(Lodex::Component* component) override
    {
        GObjObserver::disconnect(component);
        disturbed_ = true;
    }

    bool disturbed_ = false;
};

std::vector<float> to_floats(const std::vector<double>& numbers)
{
    std::vector<float> floats(numbers.size());
    std::ranges::transform(numbers, floats.begin(), [](double number) { return static_cast<float>(number); });
    return floats;
}

} // namespace

std::optional<Average> average_of_type(const Lodex::CString& upscaler_type)
{
    const auto upscaler = make_upscaler("upgridder", upscaler_type);
    const auto* const average = dynamic_cast<const AverageUpscaler*>(upscaler.get());
    return average ? average->kernel() : std::nullopt;
}

std::unique_ptr<FlowUnitStatsManager> FlowUnitStatsManager::create()
{
    return std::make_unique<FlowUnitStats>();
}

void FlowUnitStats::update(Lodex::Component*)
{
    outdated_ = true;
}

void FlowUnitStats::disconnect(Lodex::Component* component)
{
    GObjObserver::disconnect(component);
    outdated_ = true;
}

FlowUnitStats::Settings FlowUnitStats::checked(int property, int denominator, const Lodex::CString& averaging_method,
                                               const Lodex::CString& region, bool volume_weighted, double power)
{
    const std::optional<Average> method = average_of_type(averaging_method);
    if (!method)
        throw std::invalid_argument("there is no averaging method \"" + averaging_method.str() + "\"");
    if (method == Average::Power && !(power >= -1 && power <= 1))
        throw std::invalid_argument("the power is not between -1 and 1");
    return {.property = property,
            .denominator = denominator,
            .method = *method,
            .power = method == Average::Power ? power : 0,
            .region = region,
            .volume_weighted = volume_weighted && rules_of(*method, power).weighted};
}

CellSamples FlowUnitStats::samples_of(const Lodex::SGrid& grid, const Settings& settings)
{
    return {grid, settings.property, settings.denominator, settings.region, settings.volume_weighted};
}

FlowUnitStats::Layers FlowUnitStats::layers_of(const CellSamples& samples, const Settings& settings,
                                               const ProgressCheck& progress)
{
    const AverageRules rules = rules_of(settings.method, settings.power);
    const auto count = static_cast<std::size_t>(samples.layers());
    Layers layers{.partials = {}, .means = std::vector(count, nothing), .heterogeneities = std::vector(count, nothing)};
    if (rules.joinable)
        layers.partials.assign(count, PartialAverage(settings.method, settings.power));

    for_layers(samples, progress, [&](long k) {
        const auto layer = static_cast<std::size_t>(k);
        CellSamples::Layer cells;
        samples.read(k, cells);
        layers.heterogeneities[layer] = heterogeneity_of(cells);
        filter(cells, rules);
        if (rules.joinable) {
            layers.partials[layer].set(cells.values, cells.weights);
            layers.means[layer] = layers.partials[layer].value();
        } else {
            layers.means[layer] = average(settings.method, settings.power, cells.values, cells.weights);
        }
    });
    return layers;
}

SortedLayers FlowUnitStats::sorted_layers_of(const CellSamples& samples, const Settings& settings,
                                             const ProgressCheck& progress)
{
    const AverageRules rules = rules_of(settings.method, settings.power);
    std::vector<std::vector<double>> layers(static_cast<std::size_t>(samples.layers()));
    for_layers(samples, progress, [&](long k) {
        CellSamples::Layer cells;
        samples.read(k, cells);
        filter(cells, rules);
        std::ranges::sort(cells.values);
        layers[static_cast<std::size_t>(k)] = std::move(cells.values);
    });
    return SortedLayers(std::move(layers));
}

double FlowUnitStats::joined_mean(const Layers& layers, const Unit& unit)
{
    PartialAverage joined = layers.partials[static_cast<std::size_t>(unit.first)];
    for (int layer = unit.first + 1; layer <= unit.second; ++layer)
        joined.join(layers.partials[static_cast<std::size_t>(layer)]);
    return joined.value();
}

double FlowUnitStats::mean_of_cells(const CellSamples& samples, const Settings& settings, const Unit& unit)
{
    const AverageRules rules = rules_of(settings.method, settings.power);
    std::vector<CellSamples::Layer> layers(static_cast<std::size_t>(unit.second - unit.first + 1));
    for_blocks(static_cast<std::int64_t>(layers.size()), {}, [&](std::int64_t block) {
        CellSamples::Layer& layer = layers[static_cast<std::size_t>(block)];
        samples.read(unit.first + static_cast<long>(block), layer);
        filter(layer, rules);
    });
    CellSamples::Layer all;
    for (CellSamples::Layer& layer : layers) {
        all.values.insert(all.values.end(), layer.values.begin(), layer.values.end());
        all.weights.insert(all.weights.end(), layer.weights.begin(), layer.weights.end());
        layer = {};
    }
    return average(settings.method, settings.power, all.values, all.weights);
}

bool FlowUnitStats::execute(const Lodex::SGrid* grid, const Lodex::List<int>& flow_units, int property,
                            const Lodex::CString& averaging_method, const Lodex::CString& region, bool volume_weighted,
                            double power, int denominator)
try {
    cancelled_ = false;
    if (!grid)
        return false;
    const std::vector<Unit> units = runs_of(flow_units, grid->cube()->nw() - 1);
    const Settings settings = checked(property, denominator, averaging_method, region, volume_weighted, power);

    // Everything new is made before anything kept is touched, so that a stop leaves the former results.
    bool from_start = observed() != grid || settings_ != settings;
    Fingerprint fingerprint = fingerprint_;
    if (from_start || outdated_) {
        fingerprint = samples_of(*grid, settings).fingerprint();
        from_start = from_start || fingerprint != fingerprint_;
    }
    std::optional<Layers> new_layers;
    if (from_start) {
        const GridWatch watch(*grid);
        Lodex::ProgressTracer tracer(Lodex::Format::tr("Computing flow unit statistics...").text());
        new_layers = layers_of(samples_of(*grid, settings), settings,
                               [&](double done) { return tracer.set_done(done) && !watch.disturbed(); });
    }
    const Layers& layers = new_layers ? *new_layers : layers_;

    UnitMeans new_means;
    const auto mean_of = [&](const Unit& unit) {
        if (!layers.partials.empty())
            return joined_mean(layers, unit);
        if (unit.first == unit.second)
            return layers.means[static_cast<std::size_t>(unit.first)];
        if (const auto known = unit_cache_.find(unit); !from_start && known != unit_cache_.end())
            return known->second;
        return new_means[unit] = mean_of_cells(samples_of(*grid, settings), settings, unit);
    };
    std::vector<double> means(units.size());
    std::ranges::transform(units, means.begin(), mean_of);

    if (from_start) {
        layers_ = std::move(*new_layers);
        settings_ = settings;
        fingerprint_ = fingerprint;
        observe(const_cast<Lodex::SGrid*>(grid)); // following a grid does not change it
    }
    outdated_ = false;
    if (from_start || unit_cache_.size() > most_kept_units)
        unit_cache_.clear();
    unit_cache_.merge(new_means);
    flow_units_.assign(flow_units.begin(), flow_units.end());
    stratigraphic_units_ = stratigraphic_units_of(*grid, grid->cube()->nw() - 1);
    publish(units, means);
    return true;
} catch (const Cancelled&) {
    cancelled_ = true;
    return false;
} catch (const std::invalid_argument& error) {
    Lodex::Logger::error(Lodex::Format::tr("Flow unit statistics: %1\n").arg(error.what()));
    return false;
}

void FlowUnitStats::publish(const std::vector<Unit>& units, const std::vector<double>& means)
{
    std::vector<double> deltas(layers_.means.size(), nothing);
    for (std::size_t n = 0; n < units.size(); ++n) {
        for (int k = units[n].first; k <= units[n].second; ++k) {
            const auto layer = static_cast<std::size_t>(k);
            if (means[n] != 0)
                deltas[layer] = 100 * (layers_.means[layer] - means[n]) / means[n];
        }
    }
    layer_means_ = to_floats(layers_.means);
    unit_means_ = to_floats(means);
    heterogeneities_ = to_floats(layers_.heterogeneities);
    deltas_ = to_floats(deltas);
}

bool FlowUnitStats::getMinMax(float& min, float& max, int kind) const
{
    const std::vector<float>* numbers = nullptr;
    switch (kind) {
    case LayerMean: numbers = &layer_means_; break;
    case FlowUnitMean: numbers = &unit_means_; break;
    case Difference: numbers = &deltas_; break;
    case Heterogeneity: numbers = &heterogeneities_; break;
    default: return false;
    }
    bool found = false;
    for (const float number : *numbers) {
        if (!std::isfinite(number))
            continue;
        min = found ? std::min(min, number) : number;
        max = found ? std::max(max, number) : number;
        found = true;
    }
    return found;
}

bool FlowUnitStats::compute_units_from_threshold(double value, GuessMethod method, Lodex::List<int>& flow_units)
{
    if (!settings_ || std::isnan(value) || method < NumberOfFlowUnits || method > MinimumThreshold)
        return false;
    if (layers_.partials.empty() && (outdated_ || !observed()))
        return false; // the cells that the statistics came from are not there any more

    Lodex::ProgressTracer tracer(Lodex::Format::tr("Creating flow units...").text());
    const auto go_on = [&](double done) {
        return tracer.set_done(done) && (!layers_.partials.empty() || (!outdated_ && observed()));
    };
    try {
        std::optional<SortedLayers> sorted;
        if (layers_.partials.empty())
            sorted = sorted_layers_of(samples_of(*static_cast<const Lodex::SGrid*>(observed()), *settings_), *settings_,
                                      [&](double done) { return go_on(done / 2); });
        const auto mean = [&](int first, int last) {
            if (!sorted)
                return joined_mean(layers_, {first, last});
            if (first == last)
                return layers_.means[static_cast<std::size_t>(first)];
            check_progress(go_on, 0.5 + 0.5 * last / static_cast<double>(layers_.means.size()));
            return sorted->average(settings_->method, first, last);
        };
        const std::vector<int> numbers = create_flow_units(
            {.layer_means = layers_.means,
             .flow_units = flow_units_,
             .stratigraphic_units = stratigraphic_units_,
             .mean = mean},
            method, value);
        flow_units.clear();
        for (const int number : numbers)
            flow_units.append(number);
        return true;
    } catch (const Cancelled&) {
        return false;
    }
}

} // namespace Kelvane
