// Merge of every second section of a large grid along each axis, against plain copies of its bytes in the same run.
//
// merge_bench [NI NJ NK] [repeats]
//
// Printed for each axis: the time of the merge with its volume report; the time that copying the arrays of the source
// and the arrays of the result takes on as many threads, into fresh and into touched memory; the ratios; and the peak
// of the resident memory of the first merge against what source and result hold.

#include "lodex/volumes/model/CellGeometry.h"
#include "lodex/volumes/model/Create.h"
#include "lodex/volumes/model/Merge.h"

#include <tbb/parallel_for.h>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <memory>
#include <span>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
using lodex::GridModel;

double seconds_of(const std::function<void()>& work)
{
    const auto start = Clock::now();
    work();
    return std::chrono::duration<double>(Clock::now() - start).count();
}

// All numbers of a grid, array by array.
std::vector<std::span<const std::byte>> arrays_of(const GridModel& model)
{
    std::vector<std::span<const std::byte>> arrays;
    const auto add = [&](const auto& numbers) {
        arrays.push_back(std::as_bytes(std::span(numbers)));
    };
    model.coord.visit([&](auto numbers) { add(numbers); });
    model.zcorn.visit([&](auto numbers) { add(numbers); });
    add(model.active);
    for (const auto& property : model.properties)
        std::visit(add, property.values);
    for (const auto& region : model.regions)
        add(region.flags);
    return arrays;
}

std::size_t bytes_of(const GridModel& model)
{
    std::size_t bytes = 0;
    for (const auto& array : arrays_of(model))
        bytes += array.size();
    return bytes;
}

struct CopyTimes {
    double fresh = 0; // into memory not touched before, which is what a merge writes to
    double again = 0; // once more into the same memory
};

// Copies the bytes on all threads.
CopyTimes copy_seconds(const std::vector<std::span<const std::byte>>& arrays)
{
    std::vector<std::unique_ptr<std::byte[]>> copies;
    for (const auto& array : arrays)
        copies.push_back(std::make_unique_for_overwrite<std::byte[]>(array.size()));
    const auto copy = [&] {
        for (std::size_t a = 0; a < arrays.size(); ++a) {
            constexpr std::size_t piece = 1 << 20;
            tbb::parallel_for(std::size_t{0}, (arrays[a].size() + piece - 1) / piece, [&](std::size_t n) {
                const std::size_t first = n * piece;
                std::memcpy(copies[a].get() + first, arrays[a].data() + first,
                            std::min(piece, arrays[a].size() - first));
            });
        }
    };
    CopyTimes times;
    times.fresh = seconds_of(copy);
    times.again = seconds_of(copy);
    for (std::size_t a = 0; a < arrays.size(); ++a)
        if (std::memcmp(copies[a].get(), arrays[a].data(), arrays[a].size()) != 0)
            std::abort();
    return times;
}

double resident_mb()
{
    std::ifstream statm("/proc/self/statm");
    double pages = 0, resident = 0;
    statm >> pages >> resident;
    return resident * static_cast<double>(sysconf(_SC_PAGESIZE)) / 1e6;
}

double peak_mb()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) * 1024 / 1e6;
}

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
    const double before = resident_mb();
    std::vector<double> merges, fresh_copies, copies_again;
    lodex::MergeReport report;
    double result_mb = 0;
    double peak = 0;
    for (int n = 0; n < repeats; ++n) {
        GridModel result;
        merges.push_back(seconds_of([&] { result = lodex::merge_sections(source, request, report); }));
        if (n == 0)
            peak = peak_mb();
        result_mb = static_cast<double>(bytes_of(result)) / 1e6;
        const CopyTimes in = copy_seconds(arrays_of(source));
        const CopyTimes out = copy_seconds(arrays_of(result));
        fresh_copies.push_back(in.fresh + out.fresh);
        copies_again.push_back(in.again + out.again);
    }
    const double source_mb = static_cast<double>(bytes_of(source)) / 1e6;
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

// The threads of a process do not live on in its children: all work is done in children.
int in_child(const std::function<void()>& work)
{
    std::fflush(stdout);
    const pid_t child = fork();
    if (child == 0) {
        work();
        std::fflush(stdout);
        std::_Exit(0);
    }
    int status = 1;
    waitpid(child, &status, 0);
    return status == 0 ? 0 : 1;
}

void measure_volumes(const lodex::GridSize& size, int repeats)
{
    const GridModel model = lodex::make_example(size);
    std::vector<double> arrays, sums;
    for (int n = 0; n < repeats; ++n) {
        arrays.push_back(seconds_of([&] { (void)lodex::cell_volumes(model); }));
        sums.push_back(seconds_of([&] { (void)lodex::summarise_volumes(model); }));
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
    int failed = in_child([&] { measure_volumes(size, repeats); });
    for (int axis = 0; axis < 3; ++axis)
        failed += in_child([&] { measure_axis(size, axis, repeats); });
    return failed ? 1 : 0;
}
