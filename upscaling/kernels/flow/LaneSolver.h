#pragma once

#include "BlockPlan.h"
#include "SampledGeometry.h"

#include <array>
#include <span>
#include <vector>

namespace Kelvane::flow {

/// One block with one set of permeabilities as the linear algebra sees it.
struct Instance {
    const Block* block = nullptr;
    bool unit = false;                                   ///< permeability 1 in place of the block's
    double scale = 1;                                    ///< factor of the permeabilities
    std::array<double, 3> size{1, 1, 1};                 ///< sizes of the brick, all positive
    const std::vector<HexSample>* geometry = nullptr;    ///< samples of the true geometry; null: the brick
    bool has_zero = false;                               ///< a sample does not let through along some axis

    /// Permeability of a sample along an axis, scaled.
    [[nodiscard]] double permeability(int axis, std::size_t sample) const
    {
        if (unit)
            return 1;
        const std::span<const double>& k = axis == 0 ? block->ki : axis == 1 ? block->kj : block->kk;
        const double value = k[sample];
        return value > 0 && value < 1e300 ? value * scale : 0.0;
    }
    /// Pressure of a given value for a right-hand side: the plan's on a brick and for unit drop, else the coordinate.
    [[nodiscard]] double given(const BlockPlan& plan, int right, int number) const;
};

/// Volume over squared length of a brick's sample along each axis; lengths in units of the brick's largest size.
[[nodiscard]] std::array<double, 3> brick_shape(const Instance& instance);

/// Dissipation of pairs of right-hand sides: 00, 11, 22, 01, 02, 12.
using Energies = std::array<double, 6>;

/// Sets to 0 what only rounding has made, in a block with sealed samples whose permeabilities are scaled to at most 1.
void clear_rounding(Energies& energies);

/// Eight blocks of one shape at a time, solved by direct elimination in vector lanes. A lane's result does not depend
/// on its neighbours. Keeps its workspace; one thread at a time.
class LaneSolver {
public:
    LaneSolver(const std::array<int, 3>& n, Discretisation discretisation, FlowCase flow);

    /// Bytes that a solver of this shape holds while it works.
    [[nodiscard]] static double bytes(const std::array<int, 3>& n, Discretisation discretisation);

    struct Answer {
        Energies energies{};
        bool lost = false; ///< a pivot was lost in rounding
    };
    /// At most lane_count instances, all on bricks or all on true geometry.
    void solve(std::span<const Instance> instances, std::span<Answer> answers);

private:
    void load_two_point(std::span<const Instance> instances);
    void load_local_matrices(std::span<const Instance> instances);
    void solve_two_point(Lanes* energies);
    void solve_local(std::span<const Instance> instances, Lanes* energies, Lanes& lost);
    void add_mixed_energies(Lanes* energies) const;
    void add_conforming_energies(Lanes* energies) const;
    void find_floating(int lane);
    [[nodiscard]] Lanes* right_side(std::vector<Lanes>& vector, int right);

    BlockPlan plan_;
    EnvelopePlan entries_;
    std::vector<Lanes> local_;   ///< half conductances (6 a sample) or local matrices
    std::vector<Lanes> axes_;    ///< Conforming: conductances of the samples along the axes (3 a sample)
    std::vector<Lanes> given_;   ///< right-hand side by right-hand side
    std::vector<Lanes> links_;   ///< TwoPoint: conductances of the links
    std::vector<Lanes> matrix_;
    std::vector<Lanes> border_;
    std::vector<Lanes> solution_;
    std::vector<std::array<int, 2>> pins_; ///< unknown and lane of floating parts
    std::array<bool, lane_count> blocked_{};
};

} // namespace Kelvane::flow
