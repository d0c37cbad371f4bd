#include "SubdividePlan.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace lodex {

namespace {

// Beyond this no grid can be held by any machine; sums of two such numbers are still far from overflow.
constexpr std::int64_t most_cells = std::int64_t{1} << 50;

std::string section_text(const SectionDivision& division, int axis)
{
    return fmt::format("section {} along {}", division.section, axis_letter(axis));
}

void check_division(const SectionDivision& division, int axis, std::int64_t size)
{
    const std::string what = section_text(division, axis);
    if (division.section < 0 || division.section >= size)
        throw ModelError(fmt::format("{}: the grid has sections 0 to {}", what, size - 1));
    if (division.added < 0)
        throw ModelError(fmt::format("{}: {} cells cannot be added", what, division.added));
    if (division.added > most_cells)
        throw ModelError(fmt::format("{}: {} cells are more than a grid can have", what, division.added));
    const double thickness = division.thickness.value_or(0);
    if (division.layering != Lodex::LayerInfo::Proportional && !(thickness >= 0 && std::isfinite(thickness)))
        throw ModelError(fmt::format("{}: {} is no thickness", what, thickness));
}

// First new section of every old one, and the end.
std::vector<std::int64_t> checked_starts(std::int64_t size, const SubdivideRequest& request)
{
    std::vector<std::int64_t> counts(static_cast<std::size_t>(size), 0);
    for (const SectionDivision& division : request.divisions) {
        check_division(division, request.axis, size);
        std::int64_t& count = counts[static_cast<std::size_t>(division.section)];
        if (count > 0)
            throw ModelError(fmt::format("{} is named twice", section_text(division, request.axis)));
        count = 1 + division.added;
    }
    std::vector<std::int64_t> starts{0};
    starts.reserve(counts.size() + 1);
    for (const std::int64_t count : counts) {
        starts.push_back(starts.back() + std::max<std::int64_t>(count, 1));
        if (starts.back() > most_cells)
            throw ModelError(fmt::format("the new grid would have more than {} sections along {}", most_cells,
                                         axis_letter(request.axis)));
    }
    return starts;
}

void check_axis(int axis)
{
    if (axis < 0 || axis > 2)
        throw ModelError(fmt::format("there is no axis {}", axis));
}

} // namespace

SectionLayout::SectionLayout(const SectionDivision& division, const SubdivideRequest& request)
    : count_(1 + division.added)
{
    using Lodex::LayerInfo;
    if (division.layering == LayerInfo::Proportional || !division.thickness || count_ == 1)
        return;
    even_ = false;
    pinches_ = true;
    fixed_ = request.percent;
    step_ = request.percent ? *division.thickness / 100 : *division.thickness * request.thickness_unit;
    // The near side is the top along K, the side of the lower index along I and J.
    from_far_ = (division.layering == LayerInfo::ParallelToBase) == (request.axis == 2);
}

double SectionLayout::share(std::int64_t n) const
{
    if (even_)
        return static_cast<double>(n) / static_cast<double>(count_);
    constexpr double resolution = 1e-9;
    return share(n, 1, resolution);
}

double SectionLayout::share(std::int64_t n, double thickness, double resolution) const
{
    if (n == 0)
        return 0;
    if (n == count_)
        return 1;
    const double length = distance(n);
    const bool all = !(length < thickness - resolution);
    const double part = all ? 1 : length / thickness;
    return from_far_ ? 1 - part : part;
}

AxisDivision::AxisDivision(std::int64_t size)
    : layout_of_(static_cast<std::size_t>(size), 0)
    , layouts_(1)
{
    for (std::int64_t n = 0; n <= size; ++n)
        starts_.push_back(n);
}

AxisDivision::AxisDivision(std::int64_t size, const SubdivideRequest& request)
    : starts_(checked_starts(size, request))
    , layout_of_(static_cast<std::size_t>(size), 0)
    , layouts_(1)
{
    for (const SectionDivision& division : request.divisions) {
        layout_of_[static_cast<std::size_t>(division.section)] = static_cast<std::int32_t>(layouts_.size());
        layouts_.emplace_back(division, request);
    }
}

const SectionLayout& AxisDivision::layout(std::int64_t old) const
{
    return layouts_[static_cast<std::size_t>(layout_of_[static_cast<std::size_t>(old)])];
}

bool AxisDivision::measures() const
{
    return std::ranges::any_of(layouts_, [](const SectionLayout& layout) { return !layout.fixed(); });
}

std::vector<IndexRange> AxisDivision::ranges() const
{
    std::vector<IndexRange> result;
    result.reserve(static_cast<std::size_t>(size()));
    for (std::int64_t old = 0; old < old_size(); ++old)
        result.insert(result.end(), static_cast<std::size_t>(count(old)), {old, old});
    return result;
}

GridSize subdivided_size(const GridSize& size, const SubdivideRequest& request)
{
    check_axis(request.axis);
    const auto axis = static_cast<std::size_t>(request.axis);
    GridSize result = size;
    result[axis] = checked_starts(size[axis], request).back();
    std::int64_t cells = 1;
    for (const std::int64_t sections : result) {
        if (sections > most_cells / cells)
            throw ModelError(
                fmt::format("a grid of {} x {} x {} cells is more than can be held", result[0], result[1], result[2]));
        cells *= sections;
    }
    return result;
}

} // namespace lodex
