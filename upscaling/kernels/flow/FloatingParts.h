#pragma once

#include "BlockPlan.h"

#include <cmath>
#include <numeric>
#include <vector>

namespace Kelvane::flow {

/// Finds the parts of a block that no chain of connections joins to a given pressure: their pressures are determined up
/// to a constant each. Serves blocks with sealed samples.
class FloatingParts {
public:
    explicit FloatingParts(const BlockPlan& plan)
        : plan_(plan), parent_(static_cast<std::size_t>(plan.unknowns) + 2)
    {
        std::iota(parent_.begin(), parent_.end(), 0);
    }

    /// Joins two degrees of freedom, neither sealed.
    void join(int a, int b) { parent_[root(node(a))] = root(node(b)); }

    /// Joins the degrees of freedom of a local matrix (lower triangle, entry(r, c) for r >= c) that it connects by more
    /// than its rounding.
    template <class Entry> void join(const int* dof, int local, const Entry& entry)
    {
        for (int r = 0; r < local; ++r) {
            for (int c = 0; c < r; ++c) {
                if (dof[r] == sealed_dof || dof[c] == sealed_dof)
                    continue;
                const double scale = std::sqrt(std::abs(entry(r, r))) * std::sqrt(std::abs(entry(c, c)));
                if (std::abs(entry(r, c)) > rounding * scale)
                    join(dof[r], dof[c]);
            }
        }
    }

    /// One unknown of each floating part.
    [[nodiscard]] std::vector<int> representatives()
    {
        std::vector<int> result;
        for (int n = 0; n < plan_.unknowns; ++n) {
            if (parent_[n] == n && n != root(low()) && n != root(high()))
                result.push_back(n);
        }
        return result;
    }

    /// Under unit drop: no chain of connections joins the two sides.
    [[nodiscard]] bool blocked() { return right_sides(plan_.flow) == 1 && root(low()) != root(high()); }

    /// Added to the diagonal it holds an unknown at 0.
    static constexpr double pin = 1e30;

private:
    static constexpr double rounding = 1e-13;

    [[nodiscard]] int low() const { return plan_.unknowns; }
    /// The side of pressure 0; with linear pressure all given values count as one.
    [[nodiscard]] int high() const { return right_sides(plan_.flow) == 1 ? plan_.unknowns + 1 : plan_.unknowns; }
    [[nodiscard]] int node(int dof) const
    {
        if (!is_given_dof(dof))
            return dof;
        return plan_.given_values[given_number(dof)] > 0.5 || right_sides(plan_.flow) > 1 ? low() : high();
    }
    [[nodiscard]] int root(int n)
    {
        while (parent_[n] != n)
            n = parent_[n] = parent_[parent_[n]];
        return n;
    }

    const BlockPlan& plan_;
    std::vector<int> parent_;
};

/// Joins the nodes of a trilinear element along the edges of the axes that let flow through (conductance(axis) > 0):
/// exactly pressures that are constant on the parts so found have no energy.
template <class Conductance> void join_edges(FloatingParts& parts, const int* dof, const Conductance& conductance)
{
    for (int axis = 0; axis < 3; ++axis) {
        for (int node = 0; node < 8 && conductance(axis) > 0; ++node) {
            if (((node >> axis) & 1) == 0)
                parts.join(dof[node], dof[node + (1 << axis)]);
        }
    }
}

} // namespace Kelvane::flow
