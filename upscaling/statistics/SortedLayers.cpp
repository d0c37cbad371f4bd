#include "SortedLayers.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <limits>
#include <span>
#include <stdexcept>
#include <utility>

namespace Kelvane {

namespace {

/// Whole numbers in the same order as the values, so that halving an interval ends.
std::uint64_t key_of(double value)
{
    constexpr std::uint64_t sign = std::uint64_t{1} << 63;
    const auto bits = std::bit_cast<std::uint64_t>(value == 0 ? 0.0 : value);
    return (bits & sign) != 0 ? ~bits : bits | sign;
}

double value_of(std::uint64_t key)
{
    constexpr std::uint64_t sign = std::uint64_t{1} << 63;
    return std::bit_cast<double>((key & sign) != 0 ? key & ~sign : ~key);
}

/// So few values that sorting them is quicker than going on halving.
constexpr std::size_t few = 256;

} // namespace

double SortedLayers::at(const Range& range, std::size_t place) const
{
    // What may still hold the value of each layer.
    std::vector<std::span<const double>> windows;
    double low = std::numeric_limits<double>::infinity(), high = -low;
    for (int layer = range.first; layer <= range.last; ++layer) {
        const std::vector<double>& values = layers_[static_cast<std::size_t>(layer)];
        if (values.empty())
            continue;
        windows.emplace_back(values);
        low = std::min(low, values.front());
        high = std::max(high, values.back());
    }
    std::size_t left = range.count;
    std::uint64_t from = key_of(low), to = key_of(high);
    std::vector<std::size_t> cuts(windows.size());
    while (left > few && from < to) {
        const std::uint64_t middle = from + (to - from) / 2;
        const double pivot = value_of(middle);
        std::size_t below = 0; // values up to the pivot
        for (std::size_t n = 0; n < windows.size(); ++n) {
            cuts[n] = static_cast<std::size_t>(std::ranges::upper_bound(windows[n], pivot) - windows[n].begin());
            below += cuts[n];
        }
        const bool in_lower = place < below;
        for (std::size_t n = 0; n < windows.size(); ++n)
            windows[n] = in_lower ? windows[n].first(cuts[n]) : windows[n].subspan(cuts[n]);
        std::erase_if(windows, [](const auto& window) { return window.empty(); });
        if (in_lower) {
            to = middle;
            left = below;
        } else {
            from = middle + 1;
            left -= below;
            place -= below;
        }
    }
    if (left > few)
        return windows.front().front(); // all the same
    std::vector<double> rest;
    for (const auto& window : windows)
        rest.insert(rest.end(), window.begin(), window.end());
    std::ranges::nth_element(rest, rest.begin() + static_cast<std::ptrdiff_t>(place));
    return rest[place];
}

double SortedLayers::exceeded_by(const Range& range, double part) const
{
    const auto count = static_cast<double>(range.count);
    const double place = part * (count + 1) - 1; // 0-based, in descending order
    const auto descending = [&](std::size_t n) {
        return at(range, range.count - 1 - n);
    };
    if (place <= 0)
        return descending(0);
    if (place >= count - 1)
        return descending(range.count - 1);
    const auto above = static_cast<std::size_t>(place);
    const double value = descending(above);
    return value + (place - static_cast<double>(above)) * (descending(above + 1) - value);
}

double SortedLayers::most_probable(const Range& range) const
{
    std::vector<std::pair<double, std::size_t>> runs; // value and how often
    for (int layer = range.first; layer <= range.last; ++layer) {
        const std::vector<double>& values = layers_[static_cast<std::size_t>(layer)];
        for (auto value = values.begin(); value != values.end();) {
            const auto end = std::upper_bound(value, values.end(), *value);
            runs.emplace_back(*value, static_cast<std::size_t>(end - value));
            value = end;
        }
    }
    std::ranges::sort(runs);
    double best = runs.front().first;
    std::size_t best_count = 0;
    for (std::size_t n = 0; n < runs.size();) {
        std::size_t count = 0;
        const std::size_t first = n;
        for (; n < runs.size() && runs[n].first == runs[first].first; ++n)
            count += runs[n].second;
        if (count > best_count) {
            best = runs[first].first;
            best_count = count;
        }
    }
    return best;
}

double SortedLayers::average(Average method, int first, int last) const
{
    Range range{first, last, 0};
    for (int layer = first; layer <= last; ++layer)
        range.count += layers_[static_cast<std::size_t>(layer)].size();
    if (range.count == 0)
        return std::numeric_limits<double>::quiet_NaN();
    switch (method) {
    case Average::Median: {
        const double upper = at(range, range.count / 2);
        return range.count % 2 == 1 ? upper : at(range, range.count / 2 - 1) / 2 + upper / 2;
    }
    case Average::MostProbable: return most_probable(range);
    case Average::DykstraParsons: {
        const double middle = exceeded_by(range, 0.5);
        return (middle - exceeded_by(range, 0.841)) / middle;
    }
    default: throw std::invalid_argument("this average is not found in sorted lists");
    }
}

} // namespace Kelvane
