#pragma once

#include "lodex/volumes/CornerPointGrid.h"
#include "lodex/volumes/model/PropertyTools.h"

#include <Kelvane/upscaling/FlowUnitStatsManager.h>
#include <Lodex/geobase/GeobaseLib.h>
#include <Lodex/volumes/Lodex_volumes_init.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <string>
#include <vector>

/// Flow unit statistics worked out from the definitions, cell by cell, in extended precision.
namespace reference {

inline const double nothing = std::nan("");

struct Sample {
    long double value;
    long double weight;
};
using Samples = std::vector<Sample>;

inline const std::vector<std::string>& methods()
{
    static const std::vector<std::string> names{"Arithmetic", "Geometric", "Harmonic",      "Power",  "Sum",            "Minimum",
                                                "Maximum",    "Median",    "Most probable", "Number", "Dykstra-Parsons"};
    return names;
}

inline bool takes_weights(const std::string& method)
{
    return method == "Arithmetic" || method == "Geometric" || method == "Harmonic" || method == "Power";
}

inline bool takes(const std::string& method, double power, long double value)
{
    if (method == "Geometric" || method == "Harmonic" || method == "Dykstra-Parsons")
        return value > 0;
    if (method == "Power")
        return value > 0 || (value == 0 && power > 0) || (value < 0 && power == 1);
    return true;
}

/// Value that `share` of the samples exceed: descending order, plotting positions i / (n + 1).
inline long double exceeded_by(const std::vector<long double>& ascending, long double share)
{
    const auto n = static_cast<long double>(ascending.size());
    const long double position = share * (n + 1); // 1-based, from the largest
    if (position <= 1)
        return ascending.back();
    if (position >= n)
        return ascending.front();
    const auto above = static_cast<std::size_t>(position);
    const long double along = position - static_cast<long double>(above);
    const long double high = ascending[ascending.size() - above], low = ascending[ascending.size() - above - 1];
    return high + along * (low - high);
}

inline double mean(const std::string& method, double power, const Samples& all)
{
    Samples samples;
    for (const Sample& sample : all) {
        if (takes(method, power, sample.value))
            samples.push_back(sample);
    }
    if (samples.empty())
        return nothing;
    std::vector<long double> sorted;
    long double weight = 0, sum = 0, plain_sum = 0;
    std::map<long double, long> counts;
    for (const auto& [v, w] : samples) {
        sorted.push_back(v);
        ++counts[v];
        plain_sum += v;
        weight += w;
        if (method == "Geometric" || (method == "Power" && power == 0))
            sum += w * std::log(v);
        else if (method == "Harmonic")
            sum += w / v;
        else if (method == "Power")
            sum += w * std::pow(v, static_cast<long double>(power));
        else
            sum += w * v;
    }
    std::ranges::sort(sorted);
    const std::size_t n = sorted.size();
    long double result = 0;
    if (takes_weights(method) && !(weight > 0))
        return nothing;
    if (method == "Arithmetic")
        result = sum / weight;
    else if (method == "Geometric" || (method == "Power" && power == 0))
        result = std::exp(sum / weight);
    else if (method == "Harmonic")
        result = weight / sum;
    else if (method == "Power")
        result = std::pow(sum / weight, 1 / static_cast<long double>(power));
    else if (method == "Sum")
        result = plain_sum;
    else if (method == "Minimum")
        result = sorted.front();
    else if (method == "Maximum")
        result = sorted.back();
    else if (method == "Median")
        result = (sorted[(n - 1) / 2] + sorted[n / 2]) / 2;
    else if (method == "Number")
        result = static_cast<long double>(n);
    else if (method == "Most probable")
        result = std::ranges::max_element(counts, {}, &std::pair<const long double, long>::second)->first;
    else
        result = 1 - exceeded_by(sorted, 0.841L) / exceeded_by(sorted, 0.5L);
    return static_cast<double>(result);
}

/// Samples of the layers first to last, 0-based and inclusive.
inline Samples samples(const lodex::CornerPointGrid& grid, int property, int denominator,
                       const std::function<bool(std::size_t)>& in_region, bool volume_weighted, long first, long last)
{
    const lodex::GridModel& model = grid.model();
    const auto volumes = grid.bulk_volumes();
    const auto area = static_cast<std::size_t>(model.size[0] * model.size[1]);
    Samples found;
    for (std::size_t cell = static_cast<std::size_t>(first) * area; cell < static_cast<std::size_t>(last + 1) * area; ++cell) {
        if (!model.active[cell] || !in_region(cell))
            continue;
        double value = lodex::value_or_nan(model.properties[static_cast<std::size_t>(property)], cell);
        if (denominator >= 0) {
            const double below = lodex::value_or_nan(model.properties[static_cast<std::size_t>(denominator)], cell);
            value = below == 0 ? nothing : value / below;
        }
        if (std::isfinite(value))
            found.push_back({value, volume_weighted ? volumes[cell] : 1.0});
    }
    return found;
}

struct Statistics {
    std::vector<double> layer_means, unit_means, heterogeneities, differences;
};

inline Statistics statistics(const lodex::CornerPointGrid& grid, const Lodex::List<int>& units, int property,
                             const std::string& method, const std::function<bool(std::size_t)>& in_region,
                             bool volume_weighted, double power, int denominator)
{
    Statistics result;
    const auto read = [&](long first, long last) {
        return samples(grid, property, denominator, in_region, volume_weighted, first, last);
    };
    std::map<int, std::pair<long, long>> ranges;
    for (int k = 0; k < units.count(); ++k) {
        const Samples layer = read(k, k);
        result.layer_means.push_back(mean(method, power, layer));
        result.heterogeneities.push_back(mean("Dykstra-Parsons", 0, layer));
        ranges.try_emplace(units[k], k, k).first->second.second = k;
    }
    for (const auto& [unit, range] : ranges)
        result.unit_means.push_back(mean(method, power, read(range.first, range.second)));
    for (int k = 0; k < units.count(); ++k) {
        const double layer = result.layer_means[static_cast<std::size_t>(k)];
        const double unit = result.unit_means[static_cast<std::size_t>(units[k] - 1)];
        result.differences.push_back(unit == 0 ? nothing : 100 * (layer - unit) / unit);
    }
    return result;
}

/// Equal to the precision of the manager's numbers; undefined where undefined. slack is absolute, for differences that
/// cancel.
inline void expect_same(const std::vector<float>& numbers, const std::vector<double>& expected, const std::string& what,
                        double slack = 1e-30)
{
    ASSERT_EQ(numbers.size(), expected.size()) << what;
    for (std::size_t n = 0; n < numbers.size(); ++n) {
        ASSERT_EQ(std::isnan(numbers[n]), std::isnan(expected[n])) << what << " " << n << ": " << numbers[n];
        if (!std::isnan(expected[n])) {
            EXPECT_NEAR(numbers[n], expected[n], 2e-7 * std::abs(expected[n]) + slack) << what << " " << n;
        }
    }
}

inline void expect_same(const Kelvane::FlowUnitStatsManager& manager, const Statistics& expected, const std::string& what)
{
    expect_same(manager.getUnitAvrgList(), expected.layer_means, what + " layer means");
    expect_same(manager.getFlowAvrgList(), expected.unit_means, what + " unit means");
    expect_same(manager.getStatsLayers(), expected.heterogeneities, what + " heterogeneity", 1e-7);
    expect_same(manager.getDeltas(), expected.differences, what + " differences", 2e-5);
}

} // namespace reference

/// An empty catalogue before and after each test.
class StatisticsTest : public testing::Test {
protected:
    StatisticsTest()
    {
        Lodex::Lodex_volumes_init::initialize();
        Lodex::GeobaseLib::instance()->clear();
    }
    ~StatisticsTest() override { Lodex::GeobaseLib::instance()->clear(); }

    std::unique_ptr<Kelvane::FlowUnitStatsManager> manager = Kelvane::FlowUnitStatsManager::create();
};

inline Lodex::List<int> to_list(const std::vector<int>& numbers)
{
    Lodex::List<int> list;
    for (const int number : numbers)
        list.append(number);
    return list;
}
