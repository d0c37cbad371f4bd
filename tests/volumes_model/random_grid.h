#pragma once

#include "lodex/volumes/model/GridModel.h"
#include "lodex/volumes/model/Random.h"

#include <tbb/global_control.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace volumes_model_tests {

/// What f gives on so many threads.
template <class F> auto on_threads(std::size_t threads, F f)
{
    const tbb::global_control limit(tbb::global_control::max_allowed_parallelism, threads);
    return f();
}

/// What a random grid looks like besides its size.
struct RandomGridOptions {
    bool double_depths = false;
    bool plane_sides = false;  ///< vertical pillars
    bool split_corners = true; ///< faults, gaps and overlaps between K layers
    bool mirrored = false;     ///< left-handed
    double inactive_share = 0.25;
};

/// A grid with leaning pillars, faults between columns, pinched and inactive cells, with properties "POR" (float, no
/// no-data value), "DEP" (double, no-data -1), "FAC" (discrete 0 to 3, no no-data value), "NODE" (float on points),
/// user regions "A", "B", "C" and the model region "M". The same for the same seed.
inline lodex::GridModel random_grid(const lodex::GridSize& size, std::uint64_t seed,
                                    const RandomGridOptions& options = {})
{
    using lodex::CounterRandom;
    lodex::GridModel model;
    model.id = lodex::next_grid_id();
    model.size = size;
    const CounterRandom random(seed);
    std::uint64_t next = 0;
    const auto draw = [&](double low, double high) {
        return low + (high - low) * random.uniform(next++);
    };

    std::vector<double> coord;
    const double sign = options.mirrored ? -1 : 1;
    for (std::int64_t j = 0; j <= size[1]; ++j)
        for (std::int64_t i = 0; i <= size[0]; ++i) {
            const double x = 100.0 * static_cast<double>(i) + draw(-20, 20);
            const double y = sign * (80.0 * static_cast<double>(j) + draw(-15, 15));
            const double lean = options.plane_sides ? 0 : 10;
            coord.insert(coord.end(), {x, y, 900.0, x + draw(-lean, lean), y + draw(-lean, lean), 1300.0});
        }
    std::vector<double> zcorn(static_cast<std::size_t>(8 * model.cells()));
    const auto at = [&](std::int64_t i, std::int64_t j, std::int64_t k, int a, int b, int c) -> double& {
        return zcorn[static_cast<std::size_t>(((2 * k + c) * 2 * size[1] + 2 * j + b) * 2 * size[0] + 2 * i + a)];
    };
    // Heights per node and K layer, so that unfaulted neighbours share their corners.
    const std::int64_t nodes = (size[0] + 1) * (size[1] + 1);
    std::vector<double> depths(static_cast<std::size_t>(nodes * (size[2] + 1)));
    for (std::int64_t node = 0; node < nodes; ++node) {
        double depth = 1000 + draw(-10, 10);
        for (std::int64_t k = 0; k <= size[2]; ++k) {
            depths[static_cast<std::size_t>(node + nodes * k)] = depth;
            const bool pinched = draw(0, 1) < 0.15;
            depth += pinched ? 0 : draw(0.5, 6);
        }
    }
    for (std::int64_t j = 0; j < size[1]; ++j)
        for (std::int64_t i = 0; i < size[0]; ++i) {
            const double down = options.split_corners && draw(0, 1) < 0.3 ? draw(-8, 8) : 0;
            for (std::int64_t k = 0; k < size[2]; ++k) {
                const double gap = options.split_corners && draw(0, 1) < 0.1 ? draw(-0.2, 0.2) : 0;
                for (int c = 0; c < 2; ++c)
                    for (int b = 0; b < 2; ++b)
                        for (int a = 0; a < 2; ++a)
                            at(i, j, k, a, b, c) =
                                depths[static_cast<std::size_t>((i + a) + (size[0] + 1) * (j + b) + nodes * (k + c))] +
                                down + (c == 1 ? gap : 0);
            }
        }
    if (options.double_depths) {
        model.coord = lodex::RealArray(coord);
        model.zcorn = lodex::RealArray(zcorn);
    }
    else {
        model.coord = lodex::RealArray(std::vector<float>(coord.begin(), coord.end()));
        model.zcorn = lodex::RealArray(std::vector<float>(zcorn.begin(), zcorn.end()));
    }

    const auto cells = static_cast<std::size_t>(model.cells());
    std::vector<float> porosity, node_values;
    std::vector<double> deep;
    std::vector<std::int32_t> facies;
    lodex::RegionData regions[4] = {{"A", {}, false}, {"B", {}, false}, {"C", {}, false}, {"M", {}, true}};
    for (std::size_t cell = 0; cell < cells; ++cell) {
        model.active.push_back(draw(0, 1) >= options.inactive_share);
        porosity.push_back(static_cast<float>(draw(0, 0.3)));
        deep.push_back(draw(0, 1) < 0.1 ? -1 : draw(0, 1000));
        facies.push_back(static_cast<std::int32_t>(draw(0, 4)));
        for (auto& region : regions)
            region.flags.push_back(draw(0, 1) < 0.4);
    }
    for (std::int64_t n = 0; n < nodes * (size[2] + 1); ++n)
        node_values.push_back(static_cast<float>(n));
    model.properties.push_back({"POR", "", std::move(porosity), {}, {}, false});
    model.properties.push_back({"DEP", "m", std::move(deep), -1.0, {}, false});
    model.properties.push_back({"FAC", "", std::move(facies), {}, {{0, "mud"}, {1, "sand"}}, false});
    model.properties.push_back({"NODE", "", std::move(node_values), {}, {}, true});
    model.regions.assign(std::begin(regions), std::end(regions));
    return model;
}

/// True when two numbers of arrays are the same or both NaN.
inline bool same_number(double a, double b)
{
    return a == b || (a != a && b != b);
}

/// True when two grids hold the same data; ids, records and free text left aside. NaN equals NaN.
inline bool same_data(const lodex::GridModel& a, const lodex::GridModel& b)
{
    if (a.size != b.size || !(a.coord == b.coord) || !(a.zcorn == b.zcorn) || a.active != b.active)
        return false;
    if (a.properties.size() != b.properties.size() || a.regions.size() != b.regions.size())
        return false;
    for (std::size_t p = 0; p < a.properties.size(); ++p) {
        const auto &left = a.properties[p], &right = b.properties[p];
        if (left.name != right.name || left.unit != right.unit || left.values.index() != right.values.index() ||
            left.size() != right.size() || left.no_data != right.no_data || left.code_names != right.code_names)
            return false;
        const bool same = std::visit(
            [&](const auto& values) {
                const auto& others = std::get<std::remove_cvref_t<decltype(values)>>(right.values);
                for (std::size_t n = 0; n < values.size(); ++n)
                    if (!same_number(static_cast<double>(values[n]), static_cast<double>(others[n])))
                        return false;
                return true;
            },
            left.values);
        if (!same)
            return false;
    }
    for (std::size_t r = 0; r < a.regions.size(); ++r)
        if (a.regions[r].name != b.regions[r].name || a.regions[r].flags != b.regions[r].flags ||
            a.regions[r].model != b.regions[r].model)
            return false;
    return true;
}

/// Message of the ModelError that `work` throws; empty when it throws none.
inline std::string error_of(const std::function<void()>& work)
{
    try {
        work();
    }
    catch (const lodex::ModelError& error) {
        return error.what();
    }
    return {};
}

/// Runs `work` again and again, cancelled at its first, second, ... progress step, until it is through. Returns how
/// many steps it was cancelled at. Steps must run from 0 to 1 without going back.
inline int cancel_at_each_step(const std::function<void(const lodex::ProgressCheck&)>& work)
{
    for (int step = 0;; ++step) {
        int calls = 0;
        double last = 0;
        bool ascending = true;
        try {
            work([&](double done) {
                ascending = ascending && done >= last && done <= 1;
                last = done;
                return calls++ != step;
            });
        }
        catch (const lodex::Cancelled&) {
            if (!ascending || calls != step + 1)
                throw std::logic_error("progress ran backwards or went on after it said no");
            continue;
        }
        if (!ascending || calls > step)
            throw std::logic_error("progress ran backwards or a refusal was not heard");
        return step;
    }
}

} // namespace volumes_model_tests
