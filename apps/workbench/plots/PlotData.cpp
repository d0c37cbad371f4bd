#include "PlotData.h"

#include "lodex/utils/Numbers.h"
#include "lodex/volumes/model/PropertyTools.h"
#include "lodex/volumes/model/Summation.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>

namespace lodex {

namespace {

/// Calls f(cell, weight) for every cell that the plot looks at.
template <class F> void for_cells(const PlotCells& cells, const F& f)
{
    const GridModel& model = cells.grid->model();
    const RegionData* region = cells.region.empty() ? nullptr : model.find_region(cells.region);
    const std::span<const double> volumes = cells.by_volume ? cells.grid->bulk_volumes() : std::span<const double>();
    for (std::size_t cell = 0; cell < model.active.size(); ++cell)
        if (model.active[cell] && (!region || region->flags[cell]))
            f(cell, volumes.empty() ? 1.0 : volumes[cell]);
}

void fill_cumulative(Histogram& result)
{
    double all = 0;
    for (const double height : result.heights)
        all += height;
    double sum = 0;
    for (const double height : result.heights) {
        sum += height;
        result.cumulative.push_back(all > 0 ? sum / all : 0);
    }
}

Histogram discrete_histogram(const PlotCells& cells, const PropertyData& property)
{
    Histogram result{.discrete = true};
    std::map<std::int64_t, double> bars;
    for_cells(cells, [&](std::size_t cell, double weight) {
        const double value = value_or_nan(property, cell);
        if (std::isfinite(value)) {
            bars[std::llround(value)] += weight;
            ++result.values;
        } else {
            ++result.left_out;
        }
    });
    for (const auto& [code, height] : bars) {
        const auto name = property.code_names.find(static_cast<std::int32_t>(code));
        result.labels.push_back(name == property.code_names.end() ? std::to_string(code) : name->second);
        result.heights.push_back(height);
        result.edges.push_back(static_cast<double>(result.edges.size()) - 0.5);
    }
    if (!bars.empty())
        result.edges.push_back(static_cast<double>(bars.size()) - 0.5);
    fill_cumulative(result);
    return result;
}

} // namespace

Histogram histogram(const PlotCells& cells, const PropertyData& property, int bins, bool logarithmic)
{
    if (property.discrete())
        return discrete_histogram(cells, property);
    Histogram result{.logarithmic = logarithmic};
    double least = std::numeric_limits<double>::infinity(), largest = -least;
    const auto place = [logarithmic](double value) { return logarithmic ? std::log10(value) : value; };
    const auto usable = [logarithmic](double value) { return std::isfinite(value) && (!logarithmic || value > 0); };
    for_cells(cells, [&](std::size_t cell, double) {
        const double value = value_or_nan(property, cell);
        if (!usable(value)) {
            ++result.left_out;
            return;
        }
        ++result.values;
        least = std::min(least, place(value));
        largest = std::max(largest, place(value));
    });
    if (result.values == 0)
        return result;
    if (!(largest > least)) {
        // One value: a single bar round it.
        const double half = std::max(std::abs(least) * 1e-6, 1e-12);
        least -= half;
        largest += half;
        bins = 1;
    }
    bins = std::max(1, bins);
    const double width = (largest - least) / bins;
    result.heights.assign(static_cast<std::size_t>(bins), 0);
    for (int n = 0; n <= bins; ++n) {
        const double edge = n == bins ? largest : least + n * width;
        result.edges.push_back(logarithmic ? std::pow(10, edge) : edge);
    }
    for_cells(cells, [&](std::size_t cell, double weight) {
        const double value = value_or_nan(property, cell);
        if (usable(value))
            result.heights[static_cast<std::size_t>(
                std::clamp(static_cast<int>((place(value) - least) / width), 0, bins - 1))] += weight;
    });
    fill_cumulative(result);
    return result;
}

Profile k_profile(const PlotCells& cells, const PropertyData& property)
{
    const GridModel& model = cells.grid->model();
    const auto layer_cells = static_cast<std::size_t>(model.size[0] * model.size[1]);
    std::vector<CompensatedSum> sums(static_cast<std::size_t>(model.size[2])), weights(sums.size());
    for_cells(cells, [&](std::size_t cell, double weight) {
        const double value = value_or_nan(property, cell);
        if (std::isfinite(value)) {
            sums[cell / layer_cells].add(value * weight);
            weights[cell / layer_cells].add(weight);
        }
    });
    Profile result{.name = property.name};
    for (std::size_t k = 0; k < sums.size(); ++k)
        result.means.push_back(weights[k].value() > 0 ? sums[k].value() / weights[k].value() : std::nan(""));
    return result;
}

CrossPairs cross_pairs(const PlotCells& cells, const PropertyData& x, const PropertyData& y, std::size_t most)
{
    CrossPairs result;
    CompensatedSum sum_x, sum_y;
    const auto for_pairs = [&](const auto& f) {
        for_cells(cells, [&](std::size_t cell, double) {
            const double a = value_or_nan(x, cell), b = value_or_nan(y, cell);
            if (std::isfinite(a) && std::isfinite(b))
                f(a, b);
        });
    };
    for_pairs([&](double a, double b) {
        ++result.pairs;
        sum_x.add(a);
        sum_y.add(b);
    });
    const auto count = static_cast<double>(std::max<std::int64_t>(1, result.pairs));
    const double mean_x = sum_x.value() / count, mean_y = sum_y.value() / count;
    CompensatedSum xx, yy, xy;
    const std::int64_t step = std::max<std::int64_t>(1, (result.pairs + static_cast<std::int64_t>(most) - 1) /
                                                            std::max<std::int64_t>(1, static_cast<std::int64_t>(most)));
    std::int64_t place = 0;
    for_pairs([&](double a, double b) {
        xx.add((a - mean_x) * (a - mean_x));
        yy.add((b - mean_y) * (b - mean_y));
        xy.add((a - mean_x) * (b - mean_y));
        if (place++ % step == 0) {
            result.x.push_back(a);
            result.y.push_back(b);
        }
    });
    result.correlation =
        xx.value() > 0 && yy.value() > 0 ? xy.value() / std::sqrt(xx.value() * yy.value()) : std::nan("");
    return result;
}

QString first_property(const CornerPointGrid& grid, const QString& besides)
{
    QString first;
    for (const PropertyData& property : grid.header().properties) {
        const QString name = QString::fromStdString(property.name);
        if (property.on_points)
            continue;
        if (!property.discrete() && name != besides)
            return name;
        if (first.isEmpty())
            first = name;
    }
    return first;
}

} // namespace lodex
