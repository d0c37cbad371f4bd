#pragma once

#include "Carry.h"
#include "Summation.h"

#include <algorithm>
#include <cstdint>

namespace lodex {

/// What the blocks of a merge or subdivision add up for the report.
struct ChangeSums {
    CompensatedSum active_before, total_before, active_after, total_after, relative;
    double max_relative = 0;
    std::int64_t cells_before = 0, cells_after = 0, compared = 0;

    void add(const ChangeSums& other)
    {
        active_before.add(other.active_before);
        total_before.add(other.total_before);
        active_after.add(other.active_after);
        total_after.add(other.total_after);
        relative.add(other.relative);
        max_relative = std::max(max_relative, other.max_relative);
        cells_before += other.cells_before;
        cells_after += other.cells_after;
        compared += other.compared;
    }
    void write(ChangeReport& report) const
    {
        report.active_before = cells_before;
        report.active_after = cells_after;
        report.bulk_volume_before = active_before.value();
        report.bulk_volume_after = active_after.value();
        report.total_volume_before = total_before.value();
        report.total_volume_after = total_after.value();
        report.max_relative_difference = max_relative;
        report.mean_relative_difference = compared ? relative.value() / static_cast<double>(compared) : 0;
    }
};

} // namespace lodex
