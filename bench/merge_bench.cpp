// Merge of every second section of a large grid along each axis, against plain copies of its bytes in the same run.
//
// merge_bench [NI NJ NK] [repeats]
//
// Printed for each axis: the time of the merge with its volume report; the time that copying the arrays of the source
// and the arrays of the result takes on as many threads, into fresh and into touched memory; the ratios; and the peak
// of the resident memory of the first merge against what source and result hold.

#include "GridCopies.h"

#include "lodex/volumes/model/CellGeometry.h"
#include "lodex/volumes/model/Create.h"
#include "lodex/volumes/model/Merge.h"

#include <thread>

namespace {

using lodex::GridModel;

lodex::MergeRequest every_second(const GridModel& model, int axis)
{
    lodex::MergeRequest request;
    request.axis = axis;
    request.copy_properties = true;
    const std::int64_t size = model.size[static_cast<std::size_t>(axis)];
    for (std::int64_t first = 0; first + 1 < size; first += 2)
        request.sections.push_back({first, first + 1});
    return request;
}

// In a process of its own, so that the peak of one axis does not hide that of another.
void measure_axis(const lodex::GridSize& size, int axis, int repeats)
{
    // Four continuous properties and a discrete one.
    const GridModel source = lodex::make_example(size);
    const lodex::MergeRequest request = every_second(source, axis);
    const double before = bench::memory("VmRSS:") / 1e6;
    std::vector<double> merges, fresh_copies, copies_again;
    lodex::MergeReport report;
    double result_mb = 0;
    double peak = 0;
    for (int n = 0; n < repeats; ++n) {
        GridModel result;
        merges.push_back(bench::time_of([&] { result = lodex::merge_sections(source, request, report); }).wall);
        if (n == 0)
            peak = bench::memory("VmHWM:") / 1e6;
        result_mb = bench::model_bytes(result) / 1e6;
        const bench::CopyTimes in = bench::copy_seconds(bench::arrays_of(source));
        const bench::CopyTimes out = bench::copy_seconds(bench::arrays_of(result));
        fresh_copies.push_back(in.fresh + out.fresh);
        copies_again.push_back(in.again + out.again);
    }
    const double source_mb = bench::model_bytes(source) / 1e6;
    const double merge = *std::ranges::min_element(merges);
    const double fresh = *std::ranges::min_element(fresh_copies);
    const double again = *std::ranges::min_element(copies_again);
    std::printf(
        "%c: %lld x %lld x %lld -> %lld x %lld x %lld, bulk volume %.9g -> %.9g, cell difference max %.3g mean %.3g\n",
        "IJK"[axis], static_cast<long long>(size[0]), static_cast<long long>(size[1]), static_cast<long long>(size[2]),
        static_cast<long long>(report.size_after[0]), static_cast<long long>(report.size_after[1]),
        static_cast<long long>(report.size_after[2]), report.bulk_volume_before, report.bulk_volume_after,
        report.max_relative_difference, report.mean_relative_difference);
    std::printf(
        "   merge %.3f s; copy of %.0f + %.0f MB into fresh memory %.3f s: ratio %.2f; into touched memory %.3f s: "
        "ratio %.2f\n",
        merge, source_mb, result_mb, fresh, merge / fresh, again, merge / again);
    std::printf("   peak memory %.0f MB, source and result %.0f MB: ratio %.2f (resident before the merge %.0f MB)\n",
                peak, source_mb + result_mb, peak / (source_mb + result_mb), before);
    std::fflush(stdout);
}

void measure_volumes(const lodex::GridSize& size, int repeats)
{
    const GridModel model = lodex::make_example(size);
    std::vector<double> arrays, sums;
    for (int n = 0; n < repeats; ++n) {
        arrays.push_back(bench::time_of([&] { (void)lodex::cell_volumes(model); }).wall);
        sums.push_back(bench::time_of([&] { (void)lodex::summarise_volumes(model); }).wall);
    }
    std::printf("%lld cells: cell_volumes %.3f s, summarise_volumes %.3f s\n", static_cast<long long>(model.cells()),
                *std::ranges::min_element(arrays), *std::ranges::min_element(sums));
}

} // namespace

int main(int argc, char** argv)
{
    lodex::GridSize size{500, 400, 50};
    for (int axis = 0; axis < 3 && argc > 3; ++axis)
        size[static_cast<std::size_t>(axis)] = std::max(1LL, std::atoll(argv[1 + axis]));
    const int repeats = std::max(1, argc > 4 ? std::atoi(argv[4]) : 5);
    std::printf("%u threads\n", std::thread::hardware_concurrency());
    bool done = bench::in_child([&] { measure_volumes(size, repeats); });
    for (int axis = 0; axis < 3; ++axis)
        done &= bench::in_child([&] { measure_axis(size, axis, repeats); });
    return done ? 0 : 1;
}
