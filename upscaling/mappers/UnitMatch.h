#pragma once

#include <Lodex/volumes/IndexRelation.h>
#include <Lodex/volumes/SGrid.h>

#include <cstdint>
#include <string>
#include <vector>

namespace Kelvane {

/// A stratigraphic unit of a grid.
struct UnitLayers {
    std::string name; ///< of its rock feature; empty when it has none
    int occurrence = 0; ///< how many layers above bear the same name
    Lodex::IndexRange k; ///< K cells, 0-based and inclusive
};

/// From top to base, by the layers of the activity model; cells below the last layer belong to none. Throws
/// std::runtime_error naming the grid when it has no layers.
[[nodiscard]] std::vector<UnitLayers> units_of(const Lodex::SGrid& grid);

/// The units of two grids, matched by name; where a name comes several times the first one with the first one and so
/// on.
class UnitMatch {
public:
    struct Pair {
        Lodex::IndexRange fine, coarse; ///< K cells, 0-based and inclusive
    };

    /// Throws std::runtime_error when a grid has no layers or they have no unit in common.
    UnitMatch(const Lodex::SGrid& fine, const Lodex::SGrid& coarse);

    /// The matched unit of a K index; null when it lies in none.
    [[nodiscard]] const Pair* of_fine(std::int64_t k) const { return pair(fine_, k); }
    [[nodiscard]] const Pair* of_coarse(std::int64_t k) const { return pair(coarse_, k); }
    /// Names the units that the other grid lacks; empty when there are none.
    [[nodiscard]] const std::string& warning() const { return warning_; }

private:
    [[nodiscard]] const Pair* pair(const std::vector<int>& numbers, std::int64_t k) const
    {
        const int number = numbers[static_cast<std::size_t>(k)];
        return number < 0 ? nullptr : &pairs_[static_cast<std::size_t>(number)];
    }

    std::vector<Pair> pairs_;
    std::vector<int> fine_, coarse_; // number of the pair by K index, -1: none
    std::string warning_;
};

} // namespace Kelvane
