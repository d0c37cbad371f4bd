#include "Statistics.h"

#include "ParallelBlocks.h"
#include "Summation.h"
#include "VolumeRows.h"

#include <algorithm>
#include <cmath>

namespace lodex {

namespace {

constexpr std::int64_t chunk = 65536; // cells of a partial sum

struct ValueSums {
    CompensatedSum sum;
    double min = 0, max = 0;
    std::int64_t count = 0, undefined = 0;
    std::map<std::int32_t, std::int64_t> codes;

    void add(const ValueSums& other)
    {
        if (other.count) {
            min = count ? std::min(min, other.min) : other.min;
            max = count ? std::max(max, other.max) : other.max;
        }
        sum.add(other.sum);
        count += other.count;
        undefined += other.undefined;
        for (const auto& [code, number] : other.codes)
            codes[code] += number;
    }
};

// Sums over values[first ... last), of which only those with all flags set count; a null pointer flags all.
template <class Value>
ValueSums sum_values(std::span<const Value> values, const std::optional<double>& no_data, const std::uint8_t* active,
                     const std::uint8_t* region, std::size_t first, std::size_t last)
{
    ValueSums sums;
    const bool has_undefined = no_data.has_value();
    // A discrete property has runs of equal codes: they are counted before the map is asked.
    std::int32_t code = 0;
    std::int64_t run = 0;
    for (std::size_t n = first; n < last; ++n) {
        if ((active && !active[n]) || (region && !region[n]))
            continue;
        const Value value = values[n];
        bool defined = true;
        if constexpr (std::is_floating_point_v<Value>)
            defined = std::isfinite(value) && !(has_undefined && value == static_cast<Value>(*no_data));
        else
            defined = !(has_undefined && static_cast<double>(value) == *no_data);
        if (!defined) {
            ++sums.undefined;
            continue;
        }
        const auto number = static_cast<double>(value);
        sums.min = sums.count ? std::min(sums.min, number) : number;
        sums.max = sums.count ? std::max(sums.max, number) : number;
        sums.sum.add(number);
        ++sums.count;
        if constexpr (std::is_integral_v<Value>) {
            if (run && value != code) {
                sums.codes[code] += run;
                run = 0;
            }
            code = value;
            ++run;
        }
    }
    if (run)
        sums.codes[code] += run;
    return sums;
}

ValueSums sum_property(const PropertyData& property, const std::uint8_t* active, const std::uint8_t* region,
                       std::int64_t first, std::int64_t last)
{
    return std::visit(
        [&](const auto& values) {
            return sum_values(std::span(values), property.no_data, active, region, static_cast<std::size_t>(first),
                              static_cast<std::size_t>(last));
        },
        property.values);
}

PropertyStatistics statistics_of(const PropertyData& property, const ValueSums& sums)
{
    PropertyStatistics result;
    result.name = property.name;
    result.discrete = property.discrete();
    result.count = sums.count;
    result.undefined = sums.undefined;
    result.sum = sums.sum.value();
    result.codes = sums.codes;
    if (sums.count) {
        result.min = sums.min;
        result.max = sums.max;
        result.mean = result.sum / static_cast<double>(sums.count);
    }
    return result;
}

// Sums of the values of ranges of `length` values each, every one of them summed up chunk by chunk.
std::vector<ValueSums> sums_of_ranges(const PropertyData& property, const std::uint8_t* active,
                                      const std::uint8_t* region, std::int64_t ranges, std::int64_t length,
                                      const ProgressCheck& progress)
{
    const std::int64_t chunks = (length + chunk - 1) / chunk;
    // Thin ranges go several to a block, so that a block is worth its overhead.
    const std::int64_t together = std::max<std::int64_t>(1, chunk / std::max<std::int64_t>(length, 1));
    std::vector<ValueSums> parts(static_cast<std::size_t>(ranges * chunks));
    const std::int64_t blocks = (ranges * chunks + together - 1) / together;
    for_blocks(blocks, progress, [&](std::int64_t block) {
        const std::int64_t end = std::min((block + 1) * together, ranges * chunks);
        for (std::int64_t part = block * together; part < end; ++part) {
            const std::int64_t base = part / chunks * length;
            const std::int64_t first = part % chunks * chunk;
            parts[static_cast<std::size_t>(part)] =
                sum_property(property, active, region, base + first, base + std::min(first + chunk, length));
        }
    });
    std::vector<ValueSums> result(static_cast<std::size_t>(ranges));
    for (std::size_t part = 0; part < parts.size(); ++part)
        result[part / static_cast<std::size_t>(chunks)].add(parts[part]);
    return result;
}

ValueSums total(const std::vector<ValueSums>& parts)
{
    ValueSums result;
    for (const ValueSums& part : parts)
        result.add(part);
    return result;
}

struct RegionSums {
    CompensatedSum volume;
    std::int64_t cells = 0, flagged = 0;
};

struct BlockSums {
    std::vector<CompensatedSum> layer_volume; // of each K layer of the block
    std::vector<std::int64_t> layer_cells;
    std::vector<RegionSums> regions;
    CompensatedSum total_volume;
};

void sum_volumes(const GridModel& model, GridStatistics& result, const ProgressCheck& progress)
{
    const GridBlocks blocks(model.size);
    std::vector<BlockSums> sums(static_cast<std::size_t>(blocks.count()));
    for (std::size_t block = 0; block < sums.size(); ++block) {
        const IndexRange k = blocks.box(static_cast<std::int64_t>(block)).k;
        const auto layers = static_cast<std::size_t>(k.last - k.first + 1);
        sums[block].layer_volume.resize(layers);
        sums[block].layer_cells.resize(layers);
        sums[block].regions.resize(model.regions.size());
    }
    for_volume_rows(
        model, blocks, progress,
        [&](std::int64_t block, const GridBlocks::Box& box, std::int64_t j, std::int64_t k, std::span<double> volumes) {
            BlockSums& own = sums[static_cast<std::size_t>(block)];
            const std::int64_t base = model.cell_index(box.i.first, j, k);
            const std::uint8_t* const active = model.active.data() + base;
            const auto layer = static_cast<std::size_t>(k - box.k.first);
            for (double& volume : volumes)
                volume = std::abs(volume);
            own.total_volume.add(pairwise_sum(volumes));
            std::int64_t cells = 0;
            for (std::size_t i = 0; i < volumes.size(); ++i) {
                volumes[i] = active[i] ? volumes[i] : 0;
                cells += active[i] != 0;
            }
            own.layer_volume[layer].add(pairwise_sum(volumes));
            own.layer_cells[layer] += cells;
            for (std::size_t r = 0; r < model.regions.size(); ++r) {
                const std::uint8_t* const flags = model.regions[r].flags.data() + base;
                double volume = 0;
                std::int64_t inside = 0, flagged = 0;
                for (std::size_t i = 0; i < volumes.size(); ++i) {
                    volume += flags[i] ? volumes[i] : 0;
                    inside += flags[i] && active[i];
                    flagged += flags[i] != 0;
                }
                own.regions[r].volume.add(volume);
                own.regions[r].cells += inside;
                own.regions[r].flagged += flagged;
            }
        });

    std::vector<CompensatedSum> layer_volume(static_cast<std::size_t>(model.size[2]));
    std::vector<RegionSums> regions(model.regions.size());
    CompensatedSum active_volume, total_volume;
    for (std::size_t block = 0; block < sums.size(); ++block) {
        const auto first = static_cast<std::size_t>(blocks.box(static_cast<std::int64_t>(block)).k.first);
        for (std::size_t n = 0; n < sums[block].layer_volume.size(); ++n) {
            layer_volume[first + n].add(sums[block].layer_volume[n]);
            result.k_layers[first + n].active += sums[block].layer_cells[n];
        }
        for (std::size_t r = 0; r < regions.size(); ++r) {
            regions[r].volume.add(sums[block].regions[r].volume);
            regions[r].cells += sums[block].regions[r].cells;
            regions[r].flagged += sums[block].regions[r].flagged;
        }
        total_volume.add(sums[block].total_volume);
    }
    for (std::size_t k = 0; k < layer_volume.size(); ++k) {
        result.k_layers[k].bulk_volume = layer_volume[k].value();
        result.active += result.k_layers[k].active;
        active_volume.add(layer_volume[k]);
    }
    result.bulk_volume = active_volume.value();
    result.total_volume = total_volume.value();
    for (std::size_t r = 0; r < regions.size(); ++r)
        result.regions.push_back({model.regions[r].name, model.regions[r].model, regions[r].cells, regions[r].flagged,
                                  regions[r].volume.value()});
}

} // namespace

PropertyStatistics property_statistics(const GridModel& model, const PropertyData& property, const RegionData* region,
                                       const ProgressCheck& progress)
{
    const bool cells = !property.on_points;
    const auto length = static_cast<std::int64_t>(property.size());
    return statistics_of(property,
                         total(sums_of_ranges(property, cells ? model.active.data() : nullptr,
                                              cells && region ? region->flags.data() : nullptr, 1, length, progress)));
}

GridStatistics grid_statistics(const GridModel& model, const ProgressCheck& progress)
{
    GridStatistics result;
    result.k_layers.resize(static_cast<std::size_t>(model.size[2]));
    for (std::size_t k = 0; k < result.k_layers.size(); ++k)
        result.k_layers[k].k = static_cast<std::int64_t>(k);
    const double steps = static_cast<double>(model.properties.size() + 2);
    sum_volumes(model, result, partial_progress(progress, 0, 2 / steps));

    double done = 2;
    for (const PropertyData& property : model.properties) {
        const ProgressCheck own = partial_progress(progress, done / steps, (done + 1) / steps);
        ++done;
        if (property.on_points) {
            result.properties.push_back(property_statistics(model, property, nullptr, own));
            for (LayerStatistics& layer : result.k_layers)
                layer.means.emplace_back();
            continue;
        }
        const std::vector<ValueSums> layers =
            sums_of_ranges(property, model.active.data(), nullptr, model.size[2], model.size[0] * model.size[1], own);
        for (std::size_t k = 0; k < layers.size(); ++k) {
            std::optional<double> mean;
            if (layers[k].count)
                mean = layers[k].sum.value() / static_cast<double>(layers[k].count);
            result.k_layers[k].means.push_back(mean);
        }
        result.properties.push_back(statistics_of(property, total(layers)));
    }
    return result;
}

} // namespace lodex
