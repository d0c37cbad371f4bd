#include "FlowUnitCreation.h"

#include <algorithm>
#include <cmath>

namespace Kelvane {

namespace {

using Guess = FlowUnitStatsManager;

/// Layers first to last, 0-based and inclusive.
struct Group {
    int first;
    int last;
};

class Creation {
public:
    Creation(const LayerGroups& layers, Guess::GuessMethod method, double value)
        : layers_(layers), method_(method), value_(value)
    {
        cut();
        join_undefined();
    }

    [[nodiscard]] std::vector<int> run()
    {
        if (method_ == Guess::NumberOfFlowUnits)
            join_closest();
        else
            join_downwards();
        std::vector<int> numbers(layers_.layer_means.size());
        for (std::size_t n = 0; n < groups_.size(); ++n)
            std::fill(numbers.begin() + groups_[n].first, numbers.begin() + groups_[n].last + 1,
                      static_cast<int>(n) + 1);
        return numbers;
    }

private:
    void cut()
    {
        const auto& units = layers_.flow_units;
        const auto& strata = layers_.stratigraphic_units;
        for (std::size_t layer = 0; layer < units.size(); ++layer) {
            if (layer == 0 || units[layer] != units[layer - 1] || strata[layer] != strata[layer - 1])
                groups_.push_back({static_cast<int>(layer), static_cast<int>(layer)});
            groups_.back().last = static_cast<int>(layer);
        }
    }

    void join_undefined()
    {
        std::vector<Group> joined;
        for (const Group& group : groups_) {
            if (!joined.empty() && same_stratum(joined.back(), group) && (!has_mean(group) || !has_mean(joined.back())))
                joined.back().last = group.last;
            else
                joined.push_back(group);
        }
        groups_ = std::move(joined);
    }

    void join_closest()
    {
        std::vector<double> means;
        for (const Group& group : groups_)
            means.push_back(layers_.mean(group.first, group.last));
        while (static_cast<double>(groups_.size()) > value_) {
            std::size_t best = groups_.size();
            double closest = 0;
            for (std::size_t n = 0; n + 1 < groups_.size(); ++n) {
                if (!same_stratum(groups_[n], groups_[n + 1]))
                    continue;
                const double distance = std::abs(means[n] - means[n + 1]);
                if (!std::isnan(distance) && (best == groups_.size() || distance < closest)) {
                    best = n;
                    closest = distance;
                }
            }
            if (best == groups_.size())
                return;
            groups_[best].last = groups_[best + 1].last;
            means[best] = layers_.mean(groups_[best].first, groups_[best].last);
            groups_.erase(groups_.begin() + static_cast<std::ptrdiff_t>(best) + 1);
            means.erase(means.begin() + static_cast<std::ptrdiff_t>(best) + 1);
        }
    }

    void join_downwards()
    {
        std::vector<Group> joined;
        for (const Group& group : groups_) {
            if (!joined.empty() && same_stratum(joined.back(), group) && belong_together(joined.back(), group))
                joined.back().last = group.last;
            else
                joined.push_back(group);
        }
        groups_ = std::move(joined);
    }

    [[nodiscard]] bool belong_together(const Group& upper, const Group& lower) const
    {
        const Group both{upper.first, lower.last};
        switch (method_) {
        case Guess::MaximumThreshold:
            return every_mean(both, [&](double mean) { return mean < value_; });
        case Guess::MinimumThreshold:
            return every_mean(both, [&](double mean) { return mean > value_; });
        default: break;
        }
        const double mean = layers_.mean(both.first, both.last);
        const double part = value_ / 100 * std::abs(mean);
        if (method_ == Guess::MaximumDifferencePercent) {
            double smallest = mean, largest = mean;
            bool first = true;
            every_mean(both, [&](double layer_mean) {
                smallest = first ? layer_mean : std::min(smallest, layer_mean);
                largest = first ? layer_mean : std::max(largest, layer_mean);
                first = false;
                return true;
            });
            return largest - smallest < part;
        }
        const double limit = method_ == Guess::DeviationFromMeanPercent ? part : value_;
        return every_mean(both, [&](double layer_mean) { return std::abs(layer_mean - mean) <= limit; });
    }

    /// Whether the test holds for each layer that has a mean.
    template <class Test> bool every_mean(const Group& group, const Test& test) const
    {
        for (int layer = group.first; layer <= group.last; ++layer) {
            const double mean = layer_mean(layer);
            if (!std::isnan(mean) && !test(mean))
                return false;
        }
        return true;
    }

    [[nodiscard]] bool has_mean(const Group& group) const
    {
        return !every_mean(group, [](double) { return false; });
    }
    [[nodiscard]] double layer_mean(int layer) const { return layers_.layer_means[static_cast<std::size_t>(layer)]; }
    [[nodiscard]] bool same_stratum(const Group& upper, const Group& lower) const
    {
        return layers_.stratigraphic_units[static_cast<std::size_t>(upper.last)] ==
               layers_.stratigraphic_units[static_cast<std::size_t>(lower.first)];
    }

    const LayerGroups& layers_;
    Guess::GuessMethod method_;
    double value_;
    std::vector<Group> groups_;
};

} // namespace

std::vector<int> create_flow_units(const LayerGroups& layers, FlowUnitStatsManager::GuessMethod method, double value)
{
    return Creation(layers, method, value).run();
}

} // namespace Kelvane
