#include "MergePlan.h"

#include <fmt/format.h>

#include <algorithm>

namespace lodex {

std::int64_t kept_section(const IndexRange& run, std::int64_t wanted)
{
    if (wanted < 0)
        return run.first;
    const std::int64_t length = run.last - run.first + 1;
    return run.first + ((wanted - run.first) % length + length) % length;
}

void AxisPlan::add(const KeptRun& run)
{
    if (order_start.empty())
        order_start.push_back(0);
    groups.push_back(run.run);
    order.push_back(run.kept);
    // Outwards from the kept section; on a tie the lower index comes first.
    for (std::int64_t step = 1; step <= run.run.last - run.run.first; ++step) {
        if (run.kept - step >= run.run.first)
            order.push_back(run.kept - step);
        if (run.kept + step <= run.run.last)
            order.push_back(run.kept + step);
    }
    order_start.push_back(static_cast<std::int64_t>(order.size()));
}

AxisPlan make_plan(std::int64_t size, std::span<const KeptRun> ascending)
{
    AxisPlan plan;
    std::int64_t next = 0;
    const auto singles_until = [&](std::int64_t end) {
        for (; next < end; ++next)
            plan.add({{next, next}, next});
    };
    for (const KeptRun& run : ascending) {
        singles_until(run.run.first);
        plan.add(run);
        next = run.run.last + 1;
    }
    singles_until(size);
    return plan;
}

GridSize size_of(const MergePlans& plans)
{
    return {plans[0].size(), plans[1].size(), plans[2].size()};
}

std::vector<KeptRun> checked_runs(const GridSize& grid_size, const MergeRequest& request)
{
    if (request.axis < 0 || request.axis > 2)
        throw ModelError(fmt::format("there is no axis {}", request.axis));
    const std::size_t given = request.property_sections.size();
    if (given > 1 && given != request.sections.size())
        throw ModelError(
            fmt::format("{} property sections do not fit {} pairs of sections", given, request.sections.size()));
    const std::int64_t size = grid_size[static_cast<std::size_t>(request.axis)];
    const char letter = axis_letter(request.axis);
    std::vector<KeptRun> runs;
    for (std::size_t n = 0; n < request.sections.size(); ++n) {
        const IndexRange& run = request.sections[n];
        if (run.first > run.last)
            throw ModelError(
                fmt::format("sections {}+{} along {}: the first lies behind the last", run.first, run.last, letter));
        if (run.first < 0 || run.last >= size)
            throw ModelError(fmt::format("sections {}+{} along {}: the grid has sections 0 to {}", run.first, run.last,
                                         letter, size - 1));
        const std::int64_t wanted = given == 0 ? -1 : request.property_sections[given == 1 ? 0 : n];
        if (wanted < -1)
            throw ModelError(
                fmt::format("property section {} of sections {}+{} is below -1", wanted, run.first, run.last));
        runs.push_back({run, kept_section(run, wanted)});
    }
    std::ranges::sort(runs, {}, [](const KeptRun& run) { return run.run.first; });
    for (std::size_t n = 1; n < runs.size(); ++n)
        if (runs[n].run.first <= runs[n - 1].run.last)
            throw ModelError(fmt::format("sections {}+{} and {}+{} along {} overlap", runs[n - 1].run.first,
                                         runs[n - 1].run.last, runs[n].run.first, runs[n].run.last, letter));
    return runs;
}

} // namespace lodex
