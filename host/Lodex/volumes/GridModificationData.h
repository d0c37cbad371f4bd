#pragma once

#include <Lodex/volumes/LayerInfo.h>
#include <Lodex/volumes/UGridIndex3d.h>

#include <algorithm>
#include <functional>
#include <utility>
#include <vector>

namespace Lodex {

/// How an axis of a fine grid was coarsened: modifications in the order given.
class GridCoarseningData {
public:
    /// Cells first to last (1-based, inclusive) merged in groups of `step`; a last group of two cells or more merges as
    /// well, a single cell stays.
    struct Modification {
        UGridIndex3d::Axis axis;
        long first, last, step;
        friend bool operator==(const Modification&, const Modification&) = default;
    };

    /// False, with nothing added, when first < 1, last < first or step < 1, or when the same modification is there already.
    bool add_modification(UGridIndex3d::Axis axis, long first, long last, long step)
    {
        const Modification modification{axis, first, last, step};
        if (first < 1 || last < first || step < 1 || std::ranges::find(modifications_, modification) != modifications_.end())
            return false;
        modifications_.push_back(modification);
        if (listener_)
            listener_(modification);
        return true;
    }
    [[nodiscard]] const std::vector<Modification>& modifications() const { return modifications_; }

    /// Called with each modification that is added from then on.
    void set_listener(std::function<void(const Modification&)> listener) { listener_ = std::move(listener); }

private:
    std::vector<Modification> modifications_;
    std::function<void(const Modification&)> listener_;
};

/// How an axis of a coarse grid was refined.
class GridRefinementData {
public:
    /// Each of the cells first to last (1-based, inclusive) replaced by `amount` cells laid out as the style says;
    /// thickness in the project's vertical unit, 0 when not given.
    struct Modification {
        UGridIndex3d::Axis axis;
        long first, last, amount;
        float thickness;
        LayerInfo::LayeringStyle style;
        friend bool operator==(const Modification&, const Modification&) = default;
    };

    /// False, with nothing added, when first < 1, last < first or amount < 1.
    bool add_modification(UGridIndex3d::Axis axis, long first, long last, long amount, float thickness,
                          LayerInfo::LayeringStyle style)
    {
        if (first < 1 || last < first || amount < 1)
            return false;
        modifications_.push_back({axis, first, last, amount, thickness, style});
        return true;
    }
    [[nodiscard]] const std::vector<Modification>& modifications() const { return modifications_; }

private:
    std::vector<Modification> modifications_;
};

} // namespace Lodex
