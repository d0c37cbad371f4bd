// Mapping of a fine grid onto a coarse one by each mapper: time a fine cell, against asking every cell.
//
// mapping_bench [NI NJ NK] [repeats]
//
// The fine grid is the example field (pillars lean along its faults), the coarse one its merge by 5 x 5 x 4. Printed:
// time of each mapper on one thread and on all, by active fine cell; that of the geometric one for a quarter and for
// four times the cells; the time of the brute force search (every coarse cell is asked, its trilinear map inverted) on
// some fine cells and whether its answers agree; time of a sample of a coarse cell; peak of the resident memory against
// inputs and outputs. One thread is told in processor time, which a busy machine does not change much.

#include "Timing.h"
#include "tests/upscaling_mappers/brute_force.h"

#include "lodex/volumes/CornerPointGrid.h"
#include "lodex/volumes/model/CellGeometry.h"
#include "lodex/volumes/model/Create.h"
#include "lodex/volumes/model/Merge.h"
#include "upscaling/kernels/CellLocator.h"

#include <Lodex/volumes/GridObjCellMapper.h>

#include <tbb/parallel_for.h>
#include <tbb/task_arena.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <functional>
#include <limits>
#include <memory>
#include <span>
#include <string>
#include <thread>
#include <vector>

namespace {

using lodex::CornerPointGrid;
using lodex::GridModel;

double wall_seconds_of(const std::function<void()>& work)
{
    return bench::time_of(work).wall;
}

// Processor time of the whole process: what a busy machine does to the clock does not count.
double cpu_seconds_of(const std::function<void()>& work)
{
    const std::clock_t start = std::clock();
    work();
    return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

double megabytes(const GridModel& model)
{
    double bytes = static_cast<double>(model.active.size());
    for (const auto* array : {&model.coord, &model.zcorn})
        bytes += static_cast<double>(array->size() * array->bytes_per_value());
    return bytes / 1e6;
}

struct Grids {
    CornerPointGrid fine, coarse;

    Grids(GridModel fine_model, GridModel coarse_model)
        : fine("Fine", std::move(fine_model)), coarse("Coarse", std::move(coarse_model))
    {
    }
};

// Fine and coarse grid without properties.
std::unique_ptr<Grids> make_grids(const lodex::GridSize& size)
{
    GridModel model = lodex::make_example(size);
    model.properties.clear();
    model.regions.clear();
    CornerPointGrid fine("Fine", std::move(model));
    constexpr std::array<long, 3> steps{5, 5, 4};
    std::vector<lodex::GridModification> modifications;
    for (int axis = 0; axis < 3; ++axis)
        modifications.push_back({axis, 1, size[static_cast<std::size_t>(axis)], steps[static_cast<std::size_t>(axis)]});
    lodex::MergeReport report;
    GridModel coarse = lodex::apply_coarsening(fine.model(), modifications, {}, report);
    const std::uint64_t id = fine.model().id;
    auto grids = std::make_unique<Grids>(fine.model(), std::move(coarse));
    // The copy has an id of its own; the record leads to it.
    const std::uint64_t new_id = grids->fine.model().id;
    grids->coarse.change([&](GridModel& made) {
        for (auto& record : made.records)
            record.source_id = record.source_id == id ? new_id : record.source_id;
    });
    return grids;
}

std::unique_ptr<Lodex::MatchedGrids> match(const char* mapper, const Grids& grids, bool faults)
{
    const auto* factory = static_cast<const Lodex::CellMapperFactory*>(
        Lodex::FactoryLib::instance()->find(Lodex::GridObjCellMapperFactoriesDomain(), mapper));
    if (!factory)
        std::abort();
    return factory->create()->match(
        {&grids.fine, &grids.coarse, grids.fine.active_flags(), grids.coarse.active_flags(), faults});
}

double best_of(int repeats, const std::function<void()>& work,
               double (*seconds)(const std::function<void()>&) = wall_seconds_of)
{
    double best = std::numeric_limits<double>::infinity();
    for (int n = 0; n < repeats; ++n)
        best = std::min(best, seconds(work));
    return best;
}

void print_size(const char* text, const lodex::GridSize& size)
{
    std::printf("%s %lld x %lld x %lld", text, static_cast<long long>(size[0]), static_cast<long long>(size[1]),
                static_cast<long long>(size[2]));
}

void measure_mappers(const lodex::GridSize& size, int repeats, bool all)
{
    const auto grids = make_grids(size);
    const auto flags = grids->fine.active_flags();
    const auto active = static_cast<double>(std::ranges::count(flags, 1));
    print_size("fine", size);
    print_size(", coarse", grids->coarse.model().size);
    std::printf(", %.0f active fine cells\n", active);
    tbb::task_arena one(1);
    for (const char* mapper : {"geometric", "k-constrained geometric", "stratigraphic", "parametric"}) {
        for (const bool faults : {false, true}) {
            if (faults && !all)
                continue;
            std::unique_ptr<Lodex::MatchedGrids> matched;
            double single = 0;
            const auto work = [&] {
                matched = match(mapper, *grids, faults);
            };
            one.execute([&] { single = best_of(repeats, work, cpu_seconds_of); });
            const double many = best_of(repeats, work);
            const auto& mapping = matched->mapping();
            std::printf("  %-24s%s %7.1f ns of processor a cell on one thread, %6.1f ns of clock on all "
                        "(%zu fine cells in lists%s)\n",
                        mapper, faults ? ", faults" : "        ", single / active * 1e9, many / active * 1e9,
                        mapping.cells.size(), mapping.has_boxes() ? ", boxes" : "");
        }
        if (!all && std::string_view(mapper) == "geometric")
            break;
    }
    std::fflush(stdout);
}

void measure_brute_force(const lodex::GridSize& size, int repeats)
{
    const auto grids = make_grids(size);
    const auto coarse = lodex::view_of(grids->coarse.model());
    const auto cells = brute_force::corners_of(coarse);
    std::vector<Kelvane::Point3> points;
    const auto& fine = grids->fine.model();
    const std::int64_t step = std::max<std::int64_t>(1, fine.cells() / 400);
    for (std::int64_t cell = step / 2; cell < fine.cells(); cell += step)
        if (fine.active[static_cast<std::size_t>(cell)])
            points.push_back(lodex::cell_centre(lodex::cell_corners(
                fine, cell % size[0], cell / size[0] % size[1], cell / size[0] / size[1])));
    std::vector<std::int64_t> expected, found;
    const double brute = wall_seconds_of([&] {
        for (const auto& point : points)
            expected.push_back(brute_force::find(cells, point));
    });
    std::unique_ptr<Kelvane::CellLocator> locator;
    tbb::task_arena one(1);
    double build = 0, fine_build = 0;
    one.execute([&] {
        const auto build_coarse = [&] {
            locator = std::make_unique<Kelvane::CellLocator>(coarse);
        };
        const auto build_fine = [&] {
            const Kelvane::CellLocator of_fine(lodex::view_of(fine));
        };
        build = best_of(repeats, build_coarse, cpu_seconds_of);
        fine_build = best_of(repeats, build_fine, cpu_seconds_of);
    });
    const double index = best_of(repeats, [&] {
        found.clear();
        for (const auto& point : points)
            found.push_back(locator->find(point));
    });
    const auto sample = static_cast<double>(points.size());
    std::printf("brute force on %zu fine cells of %lld against %zu coarse cells: %.1f us a cell; index %.3f us for a "
                "point by itself (built in %.1f ms, that of the fine grid in %.1f ms = %.1f ns a cell); ratio %.0f; "
                "answers %s\n",
                points.size(), static_cast<long long>(fine.cells()), cells.size(), brute / sample * 1e6,
                index / sample * 1e6, build * 1e3, fine_build * 1e3,
                fine_build / static_cast<double>(fine.cells()) * 1e9, brute / index,
                found == expected ? "agree" : "DIFFER");
    std::fflush(stdout);
}

void measure_samples(const lodex::GridSize& size, int repeats)
{
    const auto grids = make_grids(size);
    const std::array<int, 3> n{5, 5, 4};
    for (const char* mapper : {"geometric", "stratigraphic", "parametric"}) {
        const auto matched = match(mapper, *grids, false);
        const std::int64_t count = grids->coarse.model().cells();
        std::vector<std::int64_t> hits(static_cast<std::size_t>(count));
        const auto work = [&] {
            tbb::parallel_for(std::int64_t{0}, count, [&](std::int64_t cell) {
                std::vector<std::int64_t> fine(100);
                matched->sample(cell, n, fine);
                hits[static_cast<std::size_t>(cell)] = 100 - std::ranges::count(fine, -1);
            });
        };
        const double seconds = best_of(repeats, work, cpu_seconds_of);
        std::int64_t all = 0;
        for (const std::int64_t hit : hits)
            all += hit;
        std::printf("samples 5 x 5 x 4 of %lld coarse cells, %s: %.1f ns of processor a sample, %lld in a fine cell\n",
                    static_cast<long long>(count), mapper, seconds / static_cast<double>(100 * count) * 1e9,
                    static_cast<long long>(all));
    }
    std::fflush(stdout);
}

void measure_memory(const lodex::GridSize& size, const char* mapper, bool faults)
{
    const auto grids = make_grids(size);
    // The peak so far is that of making the grids: only what stands above what is resident now tells.
    std::ofstream("/proc/self/clear_refs") << 5;
    const double before = bench::memory("VmRSS:") / 1e6;
    const auto matched = match(mapper, *grids, faults);
    const double inputs = megabytes(grids->fine.model()) + megabytes(grids->coarse.model());
    const auto& mapping = matched->mapping();
    const double outputs = static_cast<double>(8 * (mapping.offsets.size() + mapping.cells.size())) / 1e6;
    const double peak = bench::memory("VmHWM:") / 1e6;
    std::printf("%s%s: inputs %.0f MB, outputs %.0f MB, peak above what was resident %.0f MB: (inputs + that) / "
                "(inputs + outputs) = %.2f\n",
                mapper, faults ? ", faults" : "", inputs, outputs, peak - before,
                (inputs + peak - before) / (inputs + outputs));
    std::fflush(stdout);
}

} // namespace

int main(int argc, char** argv)
{
    lodex::GridSize size{125, 100, 80};
    for (int axis = 0; axis < 3 && argc > 3; ++axis)
        size[static_cast<std::size_t>(axis)] = std::max(1LL, std::atoll(argv[1 + axis]));
    const int repeats = std::max(1, argc > 4 ? std::atoi(argv[4]) : 3);
    std::printf("%u threads\n", std::thread::hardware_concurrency());
    bool done = bench::in_child([&] { measure_mappers(size, repeats, true); });
    const lodex::GridSize quarter{std::max<std::int64_t>(1, size[0] / 2), std::max<std::int64_t>(1, size[1] / 2),
                                  size[2]};
    done &= bench::in_child([&] { measure_mappers(quarter, repeats, false); });
    done &= bench::in_child([&] { measure_mappers({2 * size[0], 2 * size[1], size[2]}, repeats, false); });
    done &= bench::in_child([&] { measure_brute_force(size, repeats); });
    done &= bench::in_child([&] { measure_samples(size, repeats); });
    for (const char* mapper : {"geometric", "stratigraphic", "parametric"})
        for (const bool faults : {false, true})
            done &= bench::in_child([&] { measure_memory({2 * size[0], 2 * size[1], size[2]}, mapper, faults); });
    return done ? 0 : 1;
}
