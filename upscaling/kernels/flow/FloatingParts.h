#pragma once

#include "BlockPlan.h"

#include <cmath>
#include <numeric>
#include <vector>

namespace Kelvane::flow {

/// Finds the unknowns that no chain of connections joins to a given value.
class FloatingParts {
public:
    explicit FloatingParts(int unknowns) : ground_(unknowns), parent_(static_cast<std::size_t>(unknowns) + 1)
    {
        std::iota(parent_.begin(), parent_.end(), 0);
    }

    /// Joins the degrees of freedom of a local matrix (lower triangle, entry(r, c) for r >= c) that are connected by
    /// more than its rounding.
    template <class Entry> void join(const int* dof, int local, const Entry& entry)
    {
        for (int r = 0; r < local; ++r) {
            for (int c = 0; c < r; ++c) {
                if (dof[r] == sealed_dof || dof[c] == sealed_dof)
                    continue;
                const double scale = std::sqrt(std::abs(entry(r, r))) * std::sqrt(std::abs(entry(c, c)));
                if (std::abs(entry(r, c)) > rounding * scale)
                    parent_[root(node(dof[r]))] = root(node(dof[c]));
            }
        }
    }

    /// Sets all entries of floating degrees of freedom to 0.
    template <class Entry> void cut(const int* dof, int local, const Entry& entry)
    {
        for (int r = 0; r < local; ++r) {
            for (int c = 0; c <= r; ++c) {
                if (floats(dof[r]) || floats(dof[c]))
                    entry(r, c) = 0;
            }
        }
    }

    [[nodiscard]] bool floats(int dof) { return dof >= 0 && root(dof) != root(ground_); }

private:
    static constexpr double rounding = 1e-13;

    [[nodiscard]] int node(int dof) const { return is_given_dof(dof) ? ground_ : dof; }
    [[nodiscard]] int root(int n)
    {
        while (parent_[n] != n)
            n = parent_[n] = parent_[parent_[n]];
        return n;
    }

    int ground_;
    std::vector<int> parent_;
};

} // namespace Kelvane::flow
