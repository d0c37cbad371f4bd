#include "PropertyTools.h"

#include "ParallelBlocks.h"
#include "Random.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <limits>

namespace lodex {

namespace {

constexpr double largest_value = std::numeric_limits<float>::max();

template <class Value> bool defined(Value value, const std::optional<double>& no_data)
{
    if constexpr (std::is_floating_point_v<Value>)
        return std::isfinite(value) && !(no_data && value == static_cast<Value>(*no_data));
    else
        return !(no_data && static_cast<double>(value) == *no_data);
}

/// Calls work(cell) for all cells, on all threads.
template <class Work> void for_cells(std::size_t cells, const ProgressCheck& progress, const Work& work)
{
    constexpr std::size_t length = 65536;
    for_blocks(static_cast<std::int64_t>((cells + length - 1) / length), progress, [&](std::int64_t block) {
        const std::size_t first = static_cast<std::size_t>(block) * length;
        for (std::size_t cell = first; cell < std::min(cells, first + length); ++cell)
            work(cell);
    });
}

bool fits_32_bits(double value)
{
    return value >= std::numeric_limits<std::int32_t>::min() && value <= std::numeric_limits<std::int32_t>::max() &&
           value == std::floor(value);
}

} // namespace

bool is_defined(const PropertyData& property, std::size_t index)
{
    return std::visit([&](const auto& values) { return defined(values[index], property.no_data); }, property.values);
}

double value_or_nan(const PropertyData& property, std::size_t index)
{
    return std::visit(
        [&](const auto& values) {
            return defined(values[index], property.no_data) ? static_cast<double>(values[index])
                                                            : std::numeric_limits<double>::quiet_NaN();
        },
        property.values);
}

double undefined_value(PropertyData& property)
{
    if (!property.discrete())
        return property.no_data.value_or(std::numeric_limits<double>::quiet_NaN());
    if (property.no_data && fits_32_bits(*property.no_data))
        return *property.no_data;
    const auto& values = std::get<std::vector<std::int32_t>>(property.values);
    const auto is_code = [&](std::int32_t candidate) {
        return property.code_names.contains(candidate) || std::ranges::find(values, candidate) != values.end();
    };
    static constexpr std::array<std::int32_t, 7> usual{-999, -9999, -99999, -999999, -9999999, -99999999, -999999999};
    const auto* const free = std::ranges::find_if_not(usual, is_code);
    std::int32_t value = std::numeric_limits<std::int32_t>::min();
    if (free != usual.end())
        value = *free;
    else
        while (is_code(value))
            ++value;
    property.no_data = value;
    return value;
}

PropertyData constant_property(const GridModel& model, std::string name, double value)
{
    if (!(std::abs(value) <= largest_value))
        throw ModelError(fmt::format("the value {} does not fit a 32-bit number", value));
    return {std::move(name),
            {},
            std::vector<float>(static_cast<std::size_t>(model.cells()), static_cast<float>(value)),
            {},
            {},
            false};
}

PropertyData lognormal_property(const GridModel& model, std::string name, double mean, double sigma,
                                std::uint64_t seed, const ProgressCheck& progress)
{
    if (!(mean > 0) || !std::isfinite(mean))
        throw ModelError(fmt::format("the mean {} of lognormal values is not above 0", mean));
    if (!(sigma >= 0) || !std::isfinite(sigma))
        throw ModelError(fmt::format("the standard deviation {} is below 0", sigma));
    const CounterRandom random(seed);
    const double location = exactly::log(mean) - sigma * sigma / 2;
    std::vector<float> values(static_cast<std::size_t>(model.cells()));
    std::atomic<bool> overflow{false};
    for_cells(values.size(), progress, [&](std::size_t cell) {
        const double value = exactly::exp(location + sigma * random.normal(cell));
        if (value <= largest_value)
            values[cell] = static_cast<float>(value);
        else
            overflow = true;
    });
    if (overflow)
        throw ModelError(fmt::format("lognormal values of mean {} and standard deviation {} do not fit 32-bit numbers",
                                     mean, sigma));
    return {std::move(name), {}, std::move(values), {}, {}, false};
}

RegionData region_from_range(const GridModel& model, std::string name, std::string_view property_name,
                             std::optional<double> min, std::optional<double> max, const ProgressCheck& progress)
{
    const PropertyData* const property = model.find_property(property_name);
    if (!property || property->on_points)
        throw ModelError(fmt::format("there is no cell property \"{}\"", property_name));
    const double low = min.value_or(-std::numeric_limits<double>::infinity());
    const double high = max.value_or(std::numeric_limits<double>::infinity());
    if (!(low <= high))
        throw ModelError(fmt::format("the range from {} to {} is empty", low, high));
    RegionData region{std::move(name), std::vector<std::uint8_t>(property->size()), false};
    std::visit(
        [&](const auto& values) {
            for_cells(values.size(), progress, [&](std::size_t cell) {
                const auto value = static_cast<double>(values[cell]);
                region.flags[cell] = defined(values[cell], property->no_data) && value >= low && value <= high;
            });
        },
        property->values);
    return region;
}

} // namespace lodex
