#pragma once

#include <Kelvane/upscaling/FlowUnitStatsManager.h>

#include <functional>
#include <span>
#include <vector>

namespace Kelvane {

/// What flow units are made from. The three lists have one entry per K layer, from the top.
struct LayerGroups {
    std::span<const double> layer_means; ///< NaN where undefined
    std::span<const int> flow_units;     ///< the start: numbers from 1, never decreasing
    std::span<const int> stratigraphic_units; ///< any number; layers next to each other with equal ones belong together
    /// Mean over all cells of the layers first to last (0-based, inclusive); NaN where undefined.
    std::function<double(int first, int last)> mean;
};

/// Joins neighbouring flow units by a rule and returns the new numbers, one per layer, from 1 and without gaps.
///
/// Nothing is joined across a stratigraphic unit; a unit that crosses one at the start is cut there. A unit whose
/// layers all have no mean joins the one above, the topmost of a stratigraphic unit the one below, and takes no part
/// in comparisons. Then, n being the value:
/// - NumberOfFlowUnits: the two neighbours with the closest means become one until n units are left or none may be
///   joined; the upper of two equally close pairs comes first.
/// - DeviationFromMean: from the top down a unit takes in the next one while the mean of every layer is within n of the
///   mean of all; DeviationFromMeanPercent: within n percent of that mean's magnitude.
/// - MaximumDifferencePercent: while the largest and the smallest layer mean differ by less than n percent of it.
/// - MaximumThreshold, MinimumThreshold: while all layer means of both are below n, above n.
[[nodiscard]] std::vector<int> create_flow_units(const LayerGroups& layers, FlowUnitStatsManager::GuessMethod method,
                                                 double value);

} // namespace Kelvane
