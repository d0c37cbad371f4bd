#include "CellGeometry.h"

#include "LargeArray.h"
#include "Summation.h"
#include "VolumeRows.h"

#include <fmt/format.h>

#include <cmath>

namespace lodex {

std::vector<double> cell_volumes(const GridModel& model, const ProgressCheck& progress)
{
    std::vector<double> result = make_array<double>(static_cast<std::size_t>(model.cells()));
    for_volume_rows(
        model, GridBlocks(model.size), progress,
        [&](std::int64_t, const GridBlocks::Box& box, std::int64_t j, std::int64_t k, std::span<const double> volumes) {
            double* const out = result.data() + model.cell_index(box.i.first, j, k);
            for (std::size_t i = 0; i < volumes.size(); ++i)
                out[i] = std::abs(volumes[i]);
        });
    return result;
}

namespace {

struct LayerSums {
    CompensatedSum active, total, signed_active;
    std::int64_t cells = 0, flat = 0, positive = 0, negative = 0;
};

} // namespace

VolumeSummary summarise_volumes(const GridModel& model, const ProgressCheck& progress)
{
    const GridBlocks blocks(model.size);
    std::vector<std::vector<LayerSums>> sums(static_cast<std::size_t>(blocks.count()));
    for (std::size_t block = 0; block < sums.size(); ++block) {
        const IndexRange k = blocks.box(static_cast<std::int64_t>(block)).k;
        sums[block].resize(static_cast<std::size_t>(k.last - k.first + 1));
    }
    for_volume_rows(
        model, blocks, progress,
        [&](std::int64_t block, const GridBlocks::Box& box, std::int64_t j, std::int64_t k, std::span<double> volumes) {
            LayerSums& layer = sums[static_cast<std::size_t>(block)][static_cast<std::size_t>(k - box.k.first)];
            const std::uint8_t* const active = model.active.data() + model.cell_index(box.i.first, j, k);
            double total = 0;
            std::int64_t cells = 0, positive = 0, negative = 0;
            for (std::size_t i = 0; i < volumes.size(); ++i) {
                total += std::abs(volumes[i]);
                volumes[i] = active[i] ? volumes[i] : 0;
                cells += active[i] != 0;
                positive += volumes[i] > 0;
                negative += volumes[i] < 0;
            }
            layer.total.add(total);
            layer.signed_active.add(pairwise_sum(volumes));
            for (double& volume : volumes)
                volume = std::abs(volume);
            layer.active.add(pairwise_sum(volumes));
            layer.cells += cells;
            layer.positive += positive;
            layer.negative += negative;
            layer.flat += cells - positive - negative;
        });

    VolumeSummary result;
    std::vector<LayerSums> layers(static_cast<std::size_t>(model.size[2]));
    for (std::size_t block = 0; block < sums.size(); ++block) {
        const IndexRange k = blocks.box(static_cast<std::int64_t>(block)).k;
        for (std::size_t n = 0; n < sums[block].size(); ++n) {
            LayerSums& layer = layers[static_cast<std::size_t>(k.first) + n];
            const LayerSums& part = sums[block][n];
            layer.active.add(part.active);
            layer.total.add(part.total);
            layer.signed_active.add(part.signed_active);
            layer.cells += part.cells;
            layer.flat += part.flat;
            layer.positive += part.positive;
            layer.negative += part.negative;
        }
    }
    LayerSums all;
    for (const LayerSums& layer : layers) {
        result.layer_volume.push_back(layer.active.value());
        result.layer_cells.push_back(layer.cells);
        all.active.add(layer.active);
        all.total.add(layer.total);
        all.signed_active.add(layer.signed_active);
        all.cells += layer.cells;
        all.flat += layer.flat;
        all.positive += layer.positive;
        all.negative += layer.negative;
    }
    result.active_volume = all.active.value();
    result.total_volume = all.total.value();
    result.signed_volume = all.signed_active.value();
    result.active_cells = all.cells;
    result.flat_cells = all.flat;
    result.inverted_cells = result.signed_volume < 0 ? all.positive : all.negative;
    return result;
}

double bulk_volume(const GridModel& model, const ProgressCheck& progress)
{
    return summarise_volumes(model, progress).active_volume;
}

int handedness(const GridModel& model)
{
    const double volume = summarise_volumes(model).signed_volume;
    return volume > 0 ? 1 : volume < 0 ? -1 : 0;
}

void check_arrays(const GridModel& model)
{
    for (int axis = 0; axis < 3; ++axis)
        if (model.size[axis] < 1)
            throw ModelError(fmt::format("the grid has no cells along {}", "IJK"[axis]));
    const auto check = [](const std::string& what, std::size_t found, std::int64_t wanted) {
        if (found != static_cast<std::size_t>(wanted))
            throw ModelError(fmt::format("{} holds {} values, {} are needed", what, found, wanted));
    };
    check("the pillar array", model.coord.size(), 6 * model.pillars());
    check("the corner depth array", model.zcorn.size(), 8 * model.cells());
    check("the active flags", model.active.size(), model.cells());
    for (const PropertyData& property : model.properties)
        check(fmt::format("property \"{}\"", property.name), property.size(),
              property.on_points ? (model.size[0] + 1) * (model.size[1] + 1) * (model.size[2] + 1) : model.cells());
    for (const RegionData& region : model.regions)
        check(fmt::format("region \"{}\"", region.name), region.flags.size(), model.cells());
    std::int64_t layer_cells = 0;
    for (const LayerData& layer : model.layers)
        layer_cells += layer.nb_k_cells;
    if (!model.layers.empty() && layer_cells != model.size[2])
        throw ModelError(fmt::format("the layers have {} K cells, the grid has {}", layer_cells, model.size[2]));
}

} // namespace lodex
