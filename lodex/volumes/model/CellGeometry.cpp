#include "CellGeometry.h"

#include "LargeArray.h"
#include "Summation.h"
#include "VolumeRows.h"

#include <fmt/format.h>

#include <cmath>

namespace lodex {

Point3 pillar_point(std::span<const double, 6> pillar, double depth)
{
    const double height = pillar[5] - pillar[2];
    const double sx = (pillar[3] - pillar[0]) / height;
    const double sy = (pillar[4] - pillar[1]) / height;
    if (height == 0 || !std::isfinite(sx) || !std::isfinite(sy))
        return {pillar[0], pillar[1], depth};
    return {pillar[0] + (depth - pillar[2]) * sx, pillar[1] + (depth - pillar[2]) * sy, depth};
}

CellCorners cell_corners(const GridModel& model, std::int64_t i, std::int64_t j, std::int64_t k)
{
    CellCorners corners;
    for (int b = 0; b < 2; ++b) {
        for (int a = 0; a < 2; ++a) {
            const auto first = static_cast<std::size_t>(6 * (i + a + (model.size[0] + 1) * (j + b)));
            std::array<double, 6> pillar;
            for (std::size_t n = 0; n < 6; ++n)
                pillar[n] = model.coord[first + n];
            for (int c = 0; c < 2; ++c) {
                const auto depth = static_cast<std::size_t>(depth_offset(model.size, i, j, k, b, c) + a);
                corners[static_cast<std::size_t>(a + 2 * b + 4 * c)] = pillar_point(pillar, model.zcorn[depth]);
            }
        }
    }
    return corners;
}

std::array<Point3, 4> side_corners(const CellCorners& corners, CellSide side)
{
    static constexpr std::array<std::array<std::size_t, 4>, 6> places{
        {{0, 4, 6, 2}, {1, 3, 7, 5}, {0, 1, 5, 4}, {2, 6, 7, 3}, {0, 2, 3, 1}, {4, 5, 7, 6}}};
    std::array<Point3, 4> result;
    for (std::size_t n = 0; n < 4; ++n)
        result[n] = corners[places[static_cast<std::size_t>(side)][n]];
    return result;
}

Point3 cell_centre(const CellCorners& corners)
{
    Point3 centre{};
    for (std::size_t n = 0; n < 3; ++n) {
        for (const Point3& corner : corners)
            centre[n] += corner[n];
        centre[n] /= 8;
    }
    return centre;
}

namespace {
Point3 operator-(const Point3& a, const Point3& b)
{
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}
Point3 operator+(const Point3& a, const Point3& b)
{
    return {a[0] + b[0], a[1] + b[1], a[2] + b[2]};
}
double triple(const Point3& a, const Point3& b, const Point3& c)
{
    return a[0] * (b[1] * c[2] - b[2] * c[1]) + a[1] * (b[2] * c[0] - b[0] * c[2]) + a[2] * (b[0] * c[1] - b[1] * c[0]);
}
} // namespace

double signed_cell_volume(const CellCorners& p)
{
    return (triple((p[2] - p[1]) + (p[6] - p[3]), p[7] - p[2], p[3] - p[0]) +
            triple((p[4] - p[2]) + (p[5] - p[6]), p[7] - p[4], p[6] - p[0]) +
            triple((p[1] - p[4]) + (p[3] - p[5]), p[7] - p[1], p[5] - p[0])) *
           (1.0 / 12);
}

double cell_volume(const CellCorners& corners)
{
    return std::abs(signed_cell_volume(corners));
}

double cell_height(const CellCorners& p)
{
    return ((p[4][2] - p[0][2]) + (p[5][2] - p[1][2]) + (p[6][2] - p[2][2]) + (p[7][2] - p[3][2])) / 4;
}

double cell_height(const GridModel& model, std::int64_t i, std::int64_t j, std::int64_t k)
{
    double sum = 0;
    for (int b = 0; b < 2; ++b) {
        for (int a = 0; a < 2; ++a) {
            const auto depth = [&](int c) {
                return model.zcorn[static_cast<std::size_t>(depth_offset(model.size, i, j, k, b, c) + a)];
            };
            sum += depth(1) - depth(0);
        }
    }
    return sum / 4;
}

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
