#include "CellFilter.h"

#include "lodex/utils/Numbers.h"

#include <tbb/blocked_range.h>
#include <tbb/parallel_for.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <numeric>

namespace lodex {

namespace {

constexpr std::int64_t grain = 1 << 16; // cells of one task

template <class Work> void for_cells(std::int64_t cells, const Work& work)
{
    tbb::parallel_for(tbb::blocked_range<std::int64_t>(0, cells, grain),
                      [&](const tbb::blocked_range<std::int64_t>& range) {
                          work(static_cast<std::size_t>(range.begin()), static_cast<std::size_t>(range.end()));
                      });
}

/// Takes the cells whose value fails the test out of the flags.
template <class T, class Test>
void keep_values(const std::vector<T>& values, std::optional<double> no_data, std::vector<std::uint8_t>& flags,
                 const Test& passes)
{
    const bool has_no_data = no_data.has_value();
    const T undefined = has_no_data ? static_cast<T>(*no_data) : T{};
    for_cells(static_cast<std::int64_t>(flags.size()), [&](std::size_t first, std::size_t last) {
        for (std::size_t cell = first; cell < last; ++cell) {
            const T value = values[cell];
            const bool defined = !(has_no_data && value == undefined) && std::isfinite(static_cast<double>(value));
            flags[cell] &= static_cast<std::uint8_t>(defined && passes(value));
        }
    });
}

void keep_threshold(const GridModel& model, const CellThreshold& threshold, std::vector<std::uint8_t>& flags)
{
    const PropertyData* property = model.find_property(threshold.property);
    if (!property || property->on_points)
        return;
    const double min = threshold.min.value_or(-HUGE_VAL), max = threshold.max.value_or(HUGE_VAL);
    if (const auto* codes = std::get_if<std::vector<std::int32_t>>(&property->values);
        codes && !threshold.codes.empty()) {
        keep_values(*codes, property->no_data, flags,
                    [&](std::int32_t code) { return threshold.codes.contains(code); });
        return;
    }
    std::visit(
        [&](const auto& values) {
            // A bound that was read off a 32-bit value and written in decimals must find that value.
            using T = typename std::decay_t<decltype(values)>::value_type;
            const auto bound = [](double number) {
                if constexpr (std::is_same_v<T, float>)
                    return static_cast<double>(static_cast<float>(number));
                else
                    return number;
            };
            const double low = bound(min), high = bound(max);
            keep_values(values, property->no_data, flags, [&](T value) {
                return static_cast<double>(value) >= low && static_cast<double>(value) <= high;
            });
        },
        property->values);
}

void mark(const std::vector<IndexRange>& ranges, std::vector<std::uint8_t>& along)
{
    const auto size = static_cast<std::int64_t>(along.size());
    for (const IndexRange& range : ranges) {
        const std::int64_t first = std::clamp<std::int64_t>(range.first, 0, size);
        const std::int64_t last = std::clamp<std::int64_t>(range.last, -1, size - 1);
        for (std::int64_t n = first; n <= last; ++n)
            along[static_cast<std::size_t>(n)] = 1;
    }
}

/// Takes the next number off the text; nothing when there is none.
std::optional<long> take_number(std::string_view& text)
{
    const std::size_t begin = text.find_first_not_of(' ');
    if (begin == std::string_view::npos)
        return std::nullopt;
    const std::size_t end = text.find(' ', begin);
    const auto number = parse_long(text.substr(begin, end == std::string_view::npos ? end : end - begin));
    text.remove_prefix(end == std::string_view::npos ? text.size() : end);
    return number;
}

} // namespace

SectionSets section_sets(std::string_view attribute, const GridSize& size, std::int64_t* outside)
{
    SectionSets sets;
    if (outside)
        *outside = 0;
    const long count = take_number(attribute).value_or(0);
    for (long n = 0; n < count; ++n) {
        const auto axis = take_number(attribute), flag = take_number(attribute), section = take_number(attribute);
        if (!axis || !flag || !section || *axis < 1 || *axis > 3)
            break;
        const auto a = static_cast<std::size_t>(*axis - 1);
        if (*flag != 1)
            sets[a].clear();
        else if (*section >= 0 && *section < size[a])
            sets[a].insert(*section);
        else if (outside)
            ++*outside;
    }
    return sets;
}

void ShownCells::set_size(const GridModel& model)
{
    size_ = model.size;
    along_i_.assign(static_cast<std::size_t>(size_[0]), 0);
    along_j_.assign(static_cast<std::size_t>(size_[1]), 0);
    along_k_.assign(static_cast<std::size_t>(size_[2]), 0);
    all_.assign(static_cast<std::size_t>(size_[0]), 1);
    none_.assign(static_cast<std::size_t>(size_[0]), 0);
}

void ShownCells::finish()
{
    list_i_.clear();
    for (std::size_t i = 0; i < along_i_.size(); ++i) {
        if (along_i_[i])
            list_i_.push_back(static_cast<std::int64_t>(i));
    }
}

ShownCells::ShownCells(const GridModel& model, const CellFilter& filter)
{
    set_size(model);
    const bool sliced = std::ranges::any_of(filter.ranges, [](const auto& ranges) { return !ranges.empty(); });
    fence_ = sliced && filter.slices == CellFilter::Slices::Fence;
    const std::array<std::vector<std::uint8_t>*, 3> along{&along_i_, &along_j_, &along_k_};
    for (std::size_t a = 0; a < 3; ++a) {
        if (!filter.ranges[a].empty())
            mark(filter.ranges[a], *along[a]);
        else if (!fence_)
            along[a]->assign(along[a]->size(), 1);
    }
    finish();

    const RegionData* region = filter.region.empty() ? nullptr : model.find_region(filter.region);
    if (filter.active_only && !region && !filter.threshold) {
        flags_ = model.active;
        return;
    }
    own_ = filter.active_only ? model.active : std::vector<std::uint8_t>(static_cast<std::size_t>(model.cells()), 1);
    if (region) {
        for_cells(model.cells(), [&](std::size_t first, std::size_t last) {
            for (std::size_t cell = first; cell < last; ++cell)
                own_[cell] &= region->flags[cell];
        });
    }
    if (filter.threshold)
        keep_threshold(model, *filter.threshold, own_);
    flags_ = own_;
}

ShownCells::ShownCells(const GridModel& model, const SectionSets& sections)
{
    set_size(model);
    fence_ = true;
    const std::array<std::vector<std::uint8_t>*, 3> along{&along_i_, &along_j_, &along_k_};
    for (std::size_t a = 0; a < 3; ++a) {
        for (const std::int64_t section : sections[a])
            mark({{section, section}}, *along[a]);
    }
    finish();
    flags_ = model.active;
}

std::span<const std::int64_t> ShownCells::listed(std::int64_t j, std::int64_t k, bool& whole) const
{
    const std::uint8_t* const shown = columns(j, k);
    whole = shown == all_.data() || (shown == along_i_.data() && list_i_.size() == along_i_.size());
    if (whole || shown == none_.data())
        return {};
    return list_i_;
}

std::int64_t ShownCells::count() const
{
    std::atomic<std::int64_t> total = 0;
    tbb::parallel_for(
        tbb::blocked_range<std::int64_t>(0, size_[1] * size_[2], std::max<std::int64_t>(1, grain / size_[0])),
        [&](const tbb::blocked_range<std::int64_t>& range) {
            std::int64_t part = 0;
            for (std::int64_t row = range.begin(); row != range.end(); ++row) {
                const std::uint8_t* const shown = columns(row % size_[1], row / size_[1]);
                const std::uint8_t* const flags = flags_.data() + size_[0] * row;
                for (std::int64_t i = 0; i < size_[0]; ++i)
                    part += static_cast<std::int64_t>(shown[i] & flags[i]);
            }
            total += part;
        });
    return total;
}

} // namespace lodex
