#include "Comparison.h"

#include "lodex/utils/Numbers.h"
#include "lodex/volumes/model/PropertyTools.h"

#include <algorithm>
#include <cmath>

namespace lodex {

namespace {

/// Largest difference of two series and how many numbers differ by more than the tolerance.
class Difference {
public:
    explicit Difference(const Tolerance& tolerance) : tolerance_(tolerance) {}

    void add(double a, double b, std::size_t index)
    {
        if (std::isnan(a) && std::isnan(b))
            return;
        const double distance = std::abs(a - b);
        if (a == b || distance <= tolerance_.abs + tolerance_.rel * std::max(std::abs(a), std::abs(b)))
            return;
        if (count_++ == 0 || distance > worst_ || std::isnan(distance)) {
            worst_ = distance;
            where_ = index;
        }
    }
    [[nodiscard]] std::size_t count() const { return count_; }
    [[nodiscard]] std::string text(const std::string& what) const
    {
        return what + ": " + std::to_string(count_) + " differ, the most by " + format_general(worst_, 6) + " at index " +
               std::to_string(where_);
    }

private:
    Tolerance tolerance_;
    std::size_t count_ = 0, where_ = 0;
    double worst_ = 0;
};

void compare_arrays(std::vector<std::string>& lines, const std::string& what, const RealArray& a, const RealArray& b,
                    const Tolerance& tolerance)
{
    if (a.size() != b.size()) {
        lines.push_back(what + ": " + std::to_string(a.size()) + " numbers against " + std::to_string(b.size()));
        return;
    }
    Difference difference(tolerance);
    a.visit([&](auto left) {
        b.visit([&](auto right) {
            for (std::size_t i = 0; i < left.size(); ++i)
                difference.add(static_cast<double>(left[i]), static_cast<double>(right[i]), i);
        });
    });
    if (difference.count() > 0)
        lines.push_back(difference.text(what));
}

/// Items of one list that the other lacks, by name.
template <class Item, class Compare>
void compare_named(std::vector<std::string>& lines, const std::string& what, const std::vector<Item>& a,
                   const std::vector<Item>& b, Compare compare)
{
    for (const Item& item : a) {
        const auto other = std::ranges::find(b, item.name, &Item::name);
        if (other == b.end())
            lines.push_back(what + " " + item.name + ": only in the first");
        else
            compare(item, *other);
    }
    for (const Item& item : b) {
        if (std::ranges::find(a, item.name, &Item::name) == a.end())
            lines.push_back(what + " " + item.name + ": only in the second");
    }
}

} // namespace

std::vector<std::string> differences(const GridModel& a, const GridModel& b, const Tolerance& tolerance)
{
    std::vector<std::string> lines;
    if (a.size != b.size) {
        const auto text = [](const GridSize& size) {
            return std::to_string(size[0]) + " x " + std::to_string(size[1]) + " x " + std::to_string(size[2]);
        };
        lines.push_back("size: " + text(a.size) + " against " + text(b.size));
        return lines;
    }
    std::size_t flags = 0;
    for (std::size_t i = 0; i < std::min(a.active.size(), b.active.size()); ++i)
        flags += a.active[i] != b.active[i];
    if (flags > 0 || a.active.size() != b.active.size())
        lines.push_back("active flags: " + std::to_string(flags) + " differ");
    compare_arrays(lines, "pillars", a.coord, b.coord, tolerance);
    compare_arrays(lines, "corner depths", a.zcorn, b.zcorn, tolerance);
    compare_named(lines, "property", a.properties, b.properties, [&](const PropertyData& left, const PropertyData& right) {
        if (left.size() != right.size() || left.discrete() != right.discrete() || left.on_points != right.on_points) {
            lines.push_back("property " + left.name + ": of another kind");
            return;
        }
        Difference difference(tolerance);
        for (std::size_t i = 0; i < left.size(); ++i)
            difference.add(value_or_nan(left, i), value_or_nan(right, i), i);
        if (difference.count() > 0)
            lines.push_back(difference.text("property " + left.name));
    });
    compare_named(lines, "region", a.regions, b.regions, [&](const RegionData& left, const RegionData& right) {
        std::size_t cells = 0;
        for (std::size_t i = 0; i < std::min(left.flags.size(), right.flags.size()); ++i)
            cells += left.flags[i] != right.flags[i];
        if (cells > 0)
            lines.push_back("region " + left.name + ": " + std::to_string(cells) + " cells differ");
    });
    const auto same_layer = [](const LayerData& left, const LayerData& right) {
        return left.unit == right.unit && left.nb_k_cells == right.nb_k_cells && left.style == right.style;
    };
    if (!std::ranges::equal(a.layers, b.layers, same_layer))
        lines.push_back("stratigraphic units differ");
    const auto same_segment = [](const FaultSegment& left, const FaultSegment& right) {
        return left.name == right.name && left.i == right.i && left.j == right.j && left.k == right.k && left.face == right.face;
    };
    if (!std::ranges::equal(a.faults, b.faults, same_segment))
        lines.push_back("faults differ");
    return lines;
}

} // namespace lodex
