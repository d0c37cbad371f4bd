#pragma once

#include "Subdivide.h"

#include <cstdint>
#include <vector>

namespace lodex {

/// Where the boundaries between the new cells of one section lie, from its near side (top, or the side of the lower
/// index) to its far one. Boundary 0 is the near side, boundary count() the far one.
class SectionLayout {
public:
    /// One cell: the section stays as it is.
    SectionLayout() = default;
    SectionLayout(const SectionDivision& division, const SubdivideRequest& request);

    [[nodiscard]] std::int64_t count() const { return count_; }
    /// True when the boundaries lie at the same shares of the way in all cells, see share().
    [[nodiscard]] bool fixed() const { return fixed_; }
    /// True when cells may be left with nothing.
    [[nodiscard]] bool pinches() const { return pinches_; }
    /// Share of boundary n, 0 to 1; only when fixed(). Exactly 1 for what lies at the far side.
    [[nodiscard]] double share(std::int64_t n) const;
    /// Share of boundary n in a cell of this thickness (0 or more), only when not fixed(): exactly 0 or 1 when what is
    /// left on that side is at most `resolution`. All in units of the grid.
    [[nodiscard]] double share(std::int64_t n, double thickness, double resolution) const;
    /// Distance of boundary n from the side that is counted from, not cut at the cell's other side.
    [[nodiscard]] double distance(std::int64_t n) const
    {
        return step_ * static_cast<double>(from_far_ ? count_ - n : n);
    }
    [[nodiscard]] bool from_far() const { return from_far_; }

private:
    std::int64_t count_ = 1;
    bool fixed_ = true;
    bool even_ = true;
    bool pinches_ = false;
    bool from_far_ = false;
    double step_ = 0; // fixed, but not even: share of the cell; not fixed: length
};

/// What happens along one axis.
class AxisDivision {
public:
    /// Every section stays.
    explicit AxisDivision(std::int64_t size);
    /// The request's axis. Throws ModelError as subdivided_size() does.
    AxisDivision(std::int64_t size, const SubdivideRequest& request);

    [[nodiscard]] std::int64_t size() const { return starts_.back(); }
    [[nodiscard]] std::int64_t old_size() const { return static_cast<std::int64_t>(starts_.size()) - 1; }
    /// First new section of an old one; the new size behind the last.
    [[nodiscard]] std::int64_t start(std::int64_t old) const { return starts_[static_cast<std::size_t>(old)]; }
    [[nodiscard]] std::int64_t count(std::int64_t old) const { return start(old + 1) - start(old); }
    [[nodiscard]] const SectionLayout& layout(std::int64_t old) const;
    /// True when any section of the range becomes several.
    [[nodiscard]] bool divides(const IndexRange& old) const
    {
        return start(old.last + 1) - start(old.first) > old.last - old.first + 1;
    }
    /// True when some boundaries depend on the cells' sizes.
    [[nodiscard]] bool measures() const;
    /// Old section of every new one, as records hold it.
    [[nodiscard]] std::vector<IndexRange> ranges() const;

private:
    std::vector<std::int64_t> starts_;
    std::vector<std::int32_t> layout_of_; // per old section, into layouts_
    std::vector<SectionLayout> layouts_;  // the first one is that of a section that stays
};

} // namespace lodex
