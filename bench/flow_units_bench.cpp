// Flow unit statistics of a grid of many layers: the first run, and what one click on Insert or Merge costs after it.
//
// flow_units_bench [NI NJ NK]
//
// Three panels as a user would set them up: porosity, permeability, and the ratio of the two. Printed: time of the
// first run of all three managers beside the time that reading the same arrays once takes on as many threads, and the
// time of Insert and of Merge in the middle of the column, all three managers together, against one frame of 16 ms.

#include "lodex/volumes/CornerPointGrid.h"
#include "lodex/volumes/model/Create.h"
#include "lodex/volumes/model/PropertyTools.h"

#include <Kelvane/upscaling/FlowUnitStatsManager.h>
#include <Lodex/geobase/GeobaseLib.h>
#include <Lodex/volumes/Lodex_volumes_init.h>

#include <tbb/blocked_range.h>
#include <tbb/parallel_reduce.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <thread>
#include <vector>

namespace {

using Manager = Kelvane::FlowUnitStatsManager;

double milliseconds_of(const std::function<void()>& work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

void require(bool condition, const char* what)
{
    if (condition)
        return;
    std::fprintf(stderr, "%s\n", what);
    std::exit(1);
}

/// Reads every number once.
template <class Number> double total(std::span<const Number> numbers)
{
    return tbb::parallel_reduce(
        tbb::blocked_range<std::size_t>(0, numbers.size(), 1 << 16), 0.0,
        [&](const tbb::blocked_range<std::size_t>& range, double sum) {
            std::array<Number, 16> lanes{};
            std::size_t n = range.begin();
            for (; n + lanes.size() <= range.end(); n += lanes.size())
                for (std::size_t lane = 0; lane < lanes.size(); ++lane)
                    lanes[lane] += numbers[n + lane];
            for (; n < range.end(); ++n)
                sum += static_cast<double>(numbers[n]);
            for (const Number lane : lanes)
                sum += static_cast<double>(lane);
            return sum;
        },
        std::plus<>());
}

struct Panel {
    const char* method;
    int property;
    int denominator;
    std::unique_ptr<Manager> manager = Manager::create();
};

/// One unit for every four layers, then from `row` on one more (Insert) or one less (Merge).
Lodex::List<int> units_of(long layers, long row, int change)
{
    Lodex::List<int> units;
    for (long k = 0; k < layers; ++k)
        units.append(static_cast<int>(k / 4) + 1 + (k >= row ? change : 0));
    return units;
}

} // namespace

int main(int argc, char** argv)
{
    lodex::GridSize size{100, 100, 1000};
    for (int n = 1; n < std::min(argc, 4); ++n)
        size[static_cast<std::size_t>(n) - 1] = std::atol(argv[n]);
    require(size[0] > 0 && size[1] > 0 && size[2] > 8, "sizes must be positive, with more than 8 layers");
    Lodex::Lodex_volumes_init::initialize();

    lodex::GridModel model = lodex::make_box(size, {50, 50, 1});
    model.properties.push_back(lodex::lognormal_property(model, "PORO", 0.2, 0.3, 1));
    model.properties.push_back(lodex::lognormal_property(model, "PERM", 100, 2, 2));
    const auto cells = static_cast<double>(model.cells());
    const lodex::CornerPointGrid* grid = lodex::add_grid("G", std::move(model));
    const long layers = static_cast<long>(size[2]);
    std::printf("%ld layers, %.1f million cells, %u cores\n", layers, cells / 1e6, std::thread::hardware_concurrency());

    const double volumes = milliseconds_of([&] { require(!grid->bulk_volumes().empty(), "no volumes"); });
    std::printf("bulk volumes, once per grid: %.0f ms\n", volumes);
    double sum = 0;
    const double reading = milliseconds_of([&] {
        for (const auto& property : grid->model().properties)
            sum += total(std::span(std::get<std::vector<float>>(property.values)));
        sum += total(grid->bulk_volumes());
    });
    std::printf("reading values and volumes once: %.1f ms (sum %.6g)\n\n", reading, sum);

    const long insert_row = layers / 2 / 4 * 4 + 2, merge_row = layers / 2 / 4 * 4;
    for (const auto& [title, methods] : std::initializer_list<std::pair<const char*, std::array<const char*, 3>>>{
             {"arithmetic, geometric, power -0.5", {"Arithmetic", "Geometric", "Power"}},
             {"median, most probable, Dykstra-Parsons", {"Median", "Most probable", "Dykstra-Parsons"}}}) {
        std::vector<Panel> panels;
        panels.push_back({methods[0], 0, -1});
        panels.push_back({methods[1], 1, -1});
        panels.push_back({methods[2], 1, 0});
        const auto run = [&](const Lodex::List<int>& units) {
            return milliseconds_of([&] {
                for (const Panel& panel : panels)
                    require(panel.manager->execute(grid, units, panel.property, panel.method, "everywhere", true, -0.5,
                                                   panel.denominator),
                            "the statistics failed");
            });
        };
        std::printf("%s\n", title);
        const double first = run(units_of(layers, layers, 0));
        std::printf("  first run of three panels: %.0f ms, %.1f ns a cell and panel, %.0f times one reading\n", first,
                    first * 1e6 / cells / 3, first / reading);
        double insert = 0, merge = 0;
        for (int round = 0; round < 3; ++round) { // the slowest click
            insert = std::max(insert, run(units_of(layers, insert_row + 4 * round, 1)));
            run(units_of(layers, layers, 0));
            merge = std::max(merge, run(units_of(layers, merge_row + 4 * round, -1)));
            run(units_of(layers, layers, 0));
        }
        std::printf("  Insert: %.2f ms, Merge: %.2f ms, of a frame of 16 ms\n", insert, merge);
        for (const Panel& panel : panels) {
            Lodex::List<int> made;
            const double making = milliseconds_of([&] {
                require(panel.manager->compute_units_from_threshold(20, Manager::NumberOfFlowUnits, made), "no units");
            });
            const double deviation = milliseconds_of([&] {
                require(panel.manager->compute_units_from_threshold(10, Manager::DeviationFromMeanPercent, made),
                        "no units");
            });
            std::printf("  %s: 20 units in %.1f ms, deviation 10 %% in %.1f ms (%d units); ", panel.method, making,
                        deviation, made[made.count() - 1]);
            std::printf("layer mean %.7g, unit mean %.7g\n", panel.manager->getUnitAvrgList()[0],
                        panel.manager->getFlowAvrgList()[0]);
        }
        std::printf("\n");
    }
    Lodex::GeobaseLib::instance()->clear();
    return 0;
}
