#pragma once

#include "Block.h"
#include "Envelope.h"

#include <array>
#include <cstdint>
#include <vector>

namespace Kelvane::flow {

/// One linear problem: which part of the boundary has a given pressure, and for how many right-hand sides.
/// FlowI, FlowJ, FlowK: unit drop from the low to the high side of one axis, the rest sealed; one right-hand side.
/// Lateral: linear on the I and J sides, K sealed; two right-hand sides (pressure = coordinate along I, J).
/// Linear: linear on all sides; three right-hand sides.
enum class FlowCase { FlowI, FlowJ, FlowK, Lateral, Linear };

[[nodiscard]] int right_sides(FlowCase flow);
/// Whether the pressure on the two sides of this axis is given.
[[nodiscard]] bool is_given(FlowCase flow, int axis);
/// The problems that make up a boundary condition.
[[nodiscard]] std::vector<FlowCase> flow_cases(Boundary boundary);

/// Values of a degree of freedom in BlockPlan::dofs: an unknown's number, `sealed`, or given(q).
inline constexpr int sealed_dof = -1;
[[nodiscard]] constexpr int given_dof(int number)
{
    return -2 - number;
}
[[nodiscard]] constexpr bool is_given_dof(int dof)
{
    return dof < sealed_dof;
}
[[nodiscard]] constexpr int given_number(int dof)
{
    return -2 - dof;
}

/// Numbering of one linear problem on an even box of samples; depends on the shape only and serves all blocks of it.
///
/// TwoPoint: one unknown a sample. Mixed: one a face (the mean pressure on it), local faces I-, I+, J-, J+, K-, K+.
/// Conforming: one a node, local nodes a + 2b + 4c. Unknowns are numbered in planes across the longest axis, so that
/// the envelope is narrow.
struct BlockPlan {
    BlockPlan(const std::array<int, 3>& n, Discretisation discretisation, FlowCase flow);

    std::array<int, 3> n;
    Discretisation discretisation;
    FlowCase flow;
    int samples;
    int local;    ///< degrees of freedom of a sample: 1, 6 or 8
    int unknowns;
    int givens;

    /// samples * local degrees of freedom (Mixed, Conforming).
    std::vector<int> dofs;
    /// Where the given values stand: sample and local degree of freedom (TwoPoint: local face) of each.
    std::vector<std::array<int, 2>> given_places;
    /// Pressure of each given value for each right-hand side on a brick of unit sizes: coordinates 0 to 1, or for unit
    /// drop 1 and 0. givens numbers per right-hand side.
    std::vector<double> given_values;

    /// TwoPoint: connection of the local face of one sample with that of another (-1: with given value number `given`).
    struct Link {
        int sample;
        int face;
        int other;
        int other_face;
        int given;
    };
    std::vector<Link> links;
    /// TwoPoint: unknown of each sample.
    std::vector<int> unknown_of;

    [[nodiscard]] Envelope envelope() const;
};

/// What the samples of a shape add to the envelope.
struct EnvelopePlan {
    explicit EnvelopePlan(const BlockPlan& plan);

    Envelope envelope;
    /// TwoPoint: slot of each link (-1 for links to given values). Else slot of each pair of local degrees of freedom
    /// r >= c, pair r (r + 1) / 2 + c, sample by sample; -1 where one of them is no unknown.
    std::vector<std::int32_t> slots;
    /// Else: pairs of an unknown and a given value of the same sample.
    struct Coupling {
        int entry; ///< sample * pairs + pair
        int unknown;
        int given;
    };
    std::vector<Coupling> couplings;
};

/// Entries of the lower triangle of a local matrix.
[[nodiscard]] constexpr int pair_count(int local)
{
    return local * (local + 1) / 2;
}

} // namespace Kelvane::flow
