#include "PropertyComparison.h"

#include "lodex/volumes/model/ParallelBlocks.h"
#include "lodex/volumes/model/PropertyTools.h"
#include "lodex/volumes/model/Summation.h"
#include "upscaling/MappingCells.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace lodex {

namespace {

constexpr double undefined = std::numeric_limits<double>::quiet_NaN();

} // namespace

WeightedStatistics weighted_statistics(std::vector<double> values, std::vector<double> volumes)
{
    std::vector<std::size_t> order;
    for (std::size_t n = 0; n < values.size(); ++n)
        if (std::isfinite(values[n]))
            order.push_back(n);
    WeightedStatistics result;
    result.count = static_cast<std::int64_t>(order.size());
    if (order.empty()) {
        result.mean = result.deviation = result.min = result.max = result.p10 = result.p50 = result.p90 = undefined;
        return result;
    }
    std::ranges::stable_sort(order, {}, [&](std::size_t n) { return values[n]; });
    CompensatedSum volume, total;
    for (const std::size_t n : order) {
        volume.add(volumes[n]);
        total.add(values[n] * volumes[n]);
    }
    result.bulk_volume = volume.value();
    result.total = total.value();
    result.min = values[order.front()];
    result.max = values[order.back()];
    result.mean = result.bulk_volume > 0 ? result.total / result.bulk_volume : undefined;
    CompensatedSum squares;
    for (const std::size_t n : order)
        squares.add(volumes[n] * (values[n] - result.mean) * (values[n] - result.mean));
    result.deviation = result.bulk_volume > 0 ? std::sqrt(std::max(0.0, squares.value() / result.bulk_volume)) : undefined;
    const auto below = [&](double part) {
        double sum = 0;
        for (const std::size_t n : order) {
            sum += volumes[n];
            if (sum >= part * result.bulk_volume)
                return values[n];
        }
        return values[order.back()];
    };
    result.p10 = below(0.1);
    result.p50 = below(0.5);
    result.p90 = below(0.9);
    return result;
}

PropertyComparison compare_properties(const CornerPointGrid& fine, const PropertyData& fine_property, const CornerPointGrid& coarse,
                                      const PropertyData& coarse_property, const Lodex::CellMapping& mapping,
                                      const ProgressCheck& progress)
{
    const std::int64_t cells = coarse.header().cells();
    const std::span<const double> fine_volumes = fine.bulk_volumes(), coarse_volumes = coarse.bulk_volumes();
    std::vector<double> means(static_cast<std::size_t>(cells), undefined);
    std::vector<std::uint8_t> matched(static_cast<std::size_t>(cells), 0);
    constexpr std::int64_t block_length = 512;
    for_blocks((cells + block_length - 1) / block_length, partial_progress(progress, 0, 0.6), [&](std::int64_t block) {
        for (std::int64_t cell = block * block_length; cell < std::min(cells, (block + 1) * block_length); ++cell) {
            CompensatedSum volume, total;
            Kelvane::for_fine_cells(mapping, fine.header().size, coarse.header().size, cell, [&](std::int64_t member) {
                const auto at = static_cast<std::size_t>(member);
                matched[static_cast<std::size_t>(cell)] = 1;
                const double value = value_or_nan(fine_property, at);
                if (std::isfinite(value)) {
                    volume.add(fine_volumes[at]);
                    total.add(value * fine_volumes[at]);
                }
            });
            if (volume.value() > 0)
                means[static_cast<std::size_t>(cell)] = total.value() / volume.value();
        }
    });

    PropertyComparison result;
    std::vector<double> values, volumes;
    for (std::int64_t cell = 0; cell < cells; ++cell)
        Kelvane::for_fine_cells(mapping, fine.header().size, coarse.header().size, cell, [&](std::int64_t member) {
            values.push_back(value_or_nan(fine_property, static_cast<std::size_t>(member)));
            volumes.push_back(fine_volumes[static_cast<std::size_t>(member)]);
        });
    check_progress(progress, 0.7);
    result.fine = weighted_statistics(std::move(values), std::move(volumes));
    check_progress(progress, 0.85);
    values = {};
    volumes = {};
    result.difference.assign(static_cast<std::size_t>(cells), undefined);
    CompensatedSum sum, absolute;
    for (std::size_t cell = 0; cell < static_cast<std::size_t>(cells); ++cell) {
        if (!matched[cell])
            continue;
        const double value = value_or_nan(coarse_property, cell);
        values.push_back(value);
        volumes.push_back(coarse_volumes[cell]);
        const double difference = value - means[cell];
        if (!std::isfinite(difference))
            continue;
        result.difference[cell] = difference;
        ++result.compared;
        sum.add(difference);
        absolute.add(std::abs(difference));
        if (result.largest_cell < 0 || std::abs(difference) > result.largest_absolute) {
            result.largest_absolute = std::abs(difference);
            result.largest_cell = static_cast<std::int64_t>(cell);
        }
    }
    result.coarse = weighted_statistics(std::move(values), std::move(volumes));
    if (result.compared > 0) {
        result.mean_difference = sum.value() / static_cast<double>(result.compared);
        result.mean_absolute = absolute.value() / static_cast<double>(result.compared);
    }
    check_progress(progress, 1);
    return result;
}

} // namespace lodex
