#pragma once

#include "Merge.h"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace lodex {

/// A run of sections and the one whose values it keeps.
struct KeptRun {
    IndexRange run;
    std::int64_t kept = 0;
};

/// What happens along one axis: for every new index the old ones it is made of, and the order in which they are asked
/// for a value.
struct AxisPlan {
    std::vector<IndexRange> groups;
    std::vector<std::int64_t> order;       ///< old indices of all groups, group by group, the kept one first
    std::vector<std::int64_t> order_start; ///< where each group's order starts, and the end

    [[nodiscard]] std::int64_t size() const { return static_cast<std::int64_t>(groups.size()); }
    [[nodiscard]] const IndexRange& group(std::int64_t n) const { return groups[static_cast<std::size_t>(n)]; }
    [[nodiscard]] std::int64_t length(std::int64_t n) const { return group(n).last - group(n).first + 1; }
    [[nodiscard]] std::span<const std::int64_t> candidates(std::int64_t n) const
    {
        const auto at = static_cast<std::size_t>(n);
        return std::span(order).subspan(static_cast<std::size_t>(order_start[at]),
                                        static_cast<std::size_t>(order_start[at + 1] - order_start[at]));
    }
    [[nodiscard]] std::int64_t kept(std::int64_t n) const { return candidates(n).front(); }

    void add(const KeptRun& run);
};

/// The plan of an axis of `size` sections on which these runs merge; the others stay as they are.
[[nodiscard]] AxisPlan make_plan(std::int64_t size, std::span<const KeptRun> ascending);

/// Along I, J, K.
using MergePlans = std::array<AxisPlan, 3>;

[[nodiscard]] GridSize size_of(const MergePlans& plans);

/// The runs of a request in ascending order. Throws ModelError when they do not fit a grid of this size.
[[nodiscard]] std::vector<KeptRun> checked_runs(const GridSize& size, const MergeRequest& request);

} // namespace lodex
