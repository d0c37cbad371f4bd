// Extraction of what a camera draws from a large grid, against one plain pass over the corner depths in the same run.
//
// faces_bench [NI NJ NK] [repeats]
//
// Printed: the time of the outer faces of the example field, of one painted section along each axis and of the parts of
// a ragged threshold, with the number of faces; the time that reading the corner depths once takes on as many threads; and the peak of the resident memory
// against what the model holds.

#include "lodex/gviews/faces/GridFaces.h"
#include "lodex/volumes/model/Create.h"

#include <tbb/blocked_range.h>
#include <tbb/parallel_reduce.h>

#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <limits>

namespace {

using Clock = std::chrono::steady_clock;

double best_of(int repeats, const std::function<void()>& work)
{
    double best = std::numeric_limits<double>::infinity();
    for (int n = 0; n < repeats; ++n) {
        const auto start = Clock::now();
        work();
        best = std::min(best, std::chrono::duration<double>(Clock::now() - start).count());
    }
    return best;
}

double peak_megabytes()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / 1024;
}

} // namespace

int main(int argc, char** argv)
{
    const auto number = [&](int position, std::int64_t otherwise) {
        return argc > position ? std::atoll(argv[position]) : otherwise;
    };
    const lodex::GridSize size{number(1, 250), number(2, 200), number(3, 200)};
    const int repeats = static_cast<int>(number(4, 5));
    const lodex::GridModel model = lodex::make_example(size);
    const double before = peak_megabytes();
    std::printf("example field of %lld cells\n", static_cast<long long>(model.cells()));

    double sum = 0;
    const double pass = best_of(repeats, [&] {
        model.zcorn.visit([&](auto depths) {
            using Number = typename decltype(depths)::value_type;
            sum += tbb::parallel_reduce(
                tbb::blocked_range<std::size_t>(0, depths.size(), 1 << 16), Number{0},
                [&](const tbb::blocked_range<std::size_t>& range, Number part) {
                    for (std::size_t n = range.begin(); n != range.end(); ++n)
                        part = std::max<Number>(part, depths[n]);
                    return part;
                },
                [](Number a, Number b) { return std::max(a, b); });
        });
    });
    std::printf("%-28s %8.1f ms\n", "one pass over the depths", 1e3 * pass);

    std::size_t count = 0;
    const double outer = best_of(
        repeats, [&] { count = lodex::visible_faces(model, lodex::ShownCells(model, lodex::CellFilter())).size(); });
    std::printf("%-28s %8.1f ms %9zu faces, %.1f passes\n", "all faces", 1e3 * outer, count, outer / pass);
    for (std::size_t axis = 0; axis < 3; ++axis) {
        lodex::SectionSets sections;
        sections[axis] = {size[axis] / 2};
        const double section =
            best_of(repeats, [&] { count = lodex::visible_faces(model, lodex::ShownCells(model, sections)).size(); });
        std::printf("section along %c              %8.1f ms %9zu faces\n", "IJK"[axis], 1e3 * section, count);
    }
    // A threshold that leaves a ragged part: as many faces as the surface and half of that again.
    const lodex::ShownCells all(model, lodex::CellFilter());
    const lodex::FaceList surface = lodex::list_visible_faces(model, all).value();
    const std::size_t most = surface.faces + surface.faces / 2;
    lodex::CellFilter filter;
    filter.threshold = lodex::CellThreshold{"PORO", 0.15, {}, {}};
    const double flags = best_of(repeats, [&] { count = lodex::ShownCells(model, filter).flags().size(); });
    std::printf("%-28s %8.1f ms\n", "threshold, flags", 1e3 * flags);
    const lodex::ShownCells shown(model, filter);
    const double guess = best_of(repeats, [&] { count = lodex::guess_visible_faces(model, shown); });
    std::printf("%-28s %8.1f ms %9zu faces\n", "threshold, guess", 1e3 * guess, count);
    lodex::FaceList near;
    const double nearest =
        best_of(repeats, [&] { near = lodex::nearest_faces(model, shown, all, surface, most); });
    std::printf("%-28s %8.1f ms %9zu faces\n", "threshold, nearest faces", 1e3 * nearest, near.faces);
    const double points = best_of(repeats, [&] { count = lodex::faces_of(model, near).size(); });
    std::printf("%-28s %8.1f ms\n", "their points", 1e3 * points);
    const double outline = best_of(repeats, [&] { count = lodex::grid_outline(model).size(); });
    std::printf("%-28s %8.1f ms %9zu lines\n", "outline", 1e3 * outline, count);
    std::printf("peak of the memory %.0f MB, %.0f MB before\n", peak_megabytes(), before);
    return sum > 0 ? 0 : 1;
}
