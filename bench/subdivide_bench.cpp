// Division of every section of a grid in two along each axis, against plain copies of its bytes in the same run.
//
// subdivide_bench [NI NJ NK] [repeats]
//
// NI x NJ x NK is the size of the new grid, 10 million cells when nothing else is said. Printed for each axis and
// layering: the time of the subdivision with its volume report and the regions of the fault blocks, as the dialogs ask
// for it; the time that copying the arrays of the source and the arrays of the result takes on as many threads, into
// fresh and into touched memory; the ratios, of the best repeats and of the first one, which meets the memory as a user
// does who starts the program; and the peak of the resident memory of the first subdivision against what source and
// result hold.

#include "GridCopies.h"

#include "lodex/volumes/model/Create.h"
#include "lodex/volumes/model/Subdivide.h"

#include <array>
#include <string>
#include <thread>

namespace {

using lodex::GridModel;

// Every section in two: evenly, or a cell of the given thickness (a fraction of the mean one) and the rest.
lodex::SubdivideRequest every_section(const GridModel& model, int axis, bool by_thickness)
{
    lodex::SubdivideRequest request;
    request.axis = axis;
    request.copy_properties = true;
    request.copy_fault_blocks = true;
    constexpr std::array<double, 3> thickness{10, 10, 0.5}; // metres
    for (std::int64_t section = 0; section < model.size[static_cast<std::size_t>(axis)]; ++section) {
        lodex::SectionDivision division{.section = section, .added = 1};
        if (by_thickness) {
            division.layering = Lodex::LayerInfo::ParallelToTop;
            division.thickness = thickness[static_cast<std::size_t>(axis)];
        }
        request.divisions.push_back(division);
    }
    return request;
}

// In a process of its own, so that the peak of one case does not hide that of another.
void measure(lodex::GridSize size, int axis, bool by_thickness, int repeats)
{
    // Four continuous properties and a discrete one.
    auto& divided = size[static_cast<std::size_t>(axis)];
    divided = std::max<std::int64_t>(divided / 2, 1);
    const GridModel source = lodex::make_example(size);
    const lodex::SubdivideRequest request = every_section(source, axis, by_thickness);
    const double before = bench::memory("VmRSS:") / 1e6;
    std::vector<double> times, fresh_copies, copies_again;
    lodex::SubdivideReport report;
    double result_mb = 0;
    double peak = 0;
    for (int n = 0; n < repeats; ++n) {
        GridModel result;
        times.push_back(bench::time_of([&] { result = lodex::subdivide_sections(source, request, report); }).wall);
        if (n == 0)
            peak = bench::memory("VmHWM:") / 1e6;
        result_mb = bench::model_bytes(result) / 1e6;
        const bench::CopyTimes in = bench::copy_seconds(bench::arrays_of(source));
        const bench::CopyTimes out = bench::copy_seconds(bench::arrays_of(result));
        fresh_copies.push_back(in.fresh + out.fresh);
        copies_again.push_back(in.again + out.again);
    }
    const double source_mb = bench::model_bytes(source) / 1e6;
    const double best = *std::ranges::min_element(times);
    const double fresh = *std::ranges::min_element(fresh_copies);
    const double again = *std::ranges::min_element(copies_again);
    const auto text = [](const lodex::GridSize& s) {
        return std::to_string(s[0]) + " x " + std::to_string(s[1]) + " x " + std::to_string(s[2]);
    };
    std::printf("%c, %s: %s -> %s, bulk volume %.9g -> %.9g, cell difference max %.3g mean %.3g\n", "IJK"[axis],
                by_thickness ? "parallel to top" : "proportional", text(size).c_str(), text(report.size_after).c_str(),
                report.bulk_volume_before, report.bulk_volume_after, report.max_relative_difference,
                report.mean_relative_difference);
    std::printf(
        "   subdivision %.3f s; copy of %.0f + %.0f MB into fresh memory %.3f s: ratio %.2f; into touched memory "
        "%.3f s: ratio %.2f\n",
        best, source_mb, result_mb, fresh, best / fresh, again, best / again);
    std::printf("   the first time: subdivision %.3f s, copy into fresh memory %.3f s: ratio %.2f\n", times.front(),
                fresh_copies.front(), times.front() / fresh_copies.front());
    std::printf("   peak memory %.0f MB, source and result %.0f MB: ratio %.2f (resident before %.0f MB)\n", peak,
                source_mb + result_mb, peak / (source_mb + result_mb), before);
    std::fflush(stdout);
}

} // namespace

int main(int argc, char** argv)
{
    lodex::GridSize size{500, 400, 50};
    for (int axis = 0; axis < 3 && argc > 3; ++axis)
        size[static_cast<std::size_t>(axis)] = std::max(1LL, std::atoll(argv[1 + axis]));
    const int repeats = std::max(1, argc > 4 ? std::atoi(argv[4]) : 5);
    std::printf("%u threads\n", std::thread::hardware_concurrency());
    bool done = true;
    for (int axis = 0; axis < 3; ++axis)
        for (const bool by_thickness : {false, true})
            done &= bench::in_child([&] { measure(size, axis, by_thickness, repeats); });
    return done ? 0 : 1;
}
