#include "LaneSolver.h"

#include "FloatingParts.h"
#include "LocalMatrices.h"

#include <algorithm>
#include <cmath>

namespace Kelvane::flow {

std::array<double, 3> brick_shape(const Instance& instance)
{
    const auto& size = instance.size;
    const double largest = std::max({size[0], size[1], size[2]});
    std::array<double, 3> h{};
    for (int axis = 0; axis < 3; ++axis)
        h[axis] = size[axis] / largest / instance.block->n[axis];
    return {h[1] * h[2] / h[0], h[2] * h[0] / h[1], h[0] * h[1] / h[2]};
}

void clear_rounding(Energies& energies)
{
    // Permeabilities are at most 1: pressures of rounding's size make energies of its square.
    constexpr double square_of_rounding = 1e-27;
    for (int axis = 0; axis < 3; ++axis) {
        if (energies[axis] > square_of_rounding)
            continue;
        energies[axis] = 0;
        for (int other = 0; other < 3; ++other) {
            if (other != axis)
                energies[axis + other + 2] = 0;
        }
    }
}

double Instance::given(const BlockPlan& plan, int right, int number) const
{
    if (geometry == nullptr || right_sides(plan.flow) == 1)
        return plan.given_values[static_cast<std::size_t>(right) * plan.givens + number];
    const auto& [sample, face] = plan.given_places[number];
    const HexSample& hex = (*geometry)[sample];
    return (plan.discretisation == Discretisation::TwoPoint ? hex.middle : hex.centroid)[face][right];
}

LaneSolver::LaneSolver(const std::array<int, 3>& n, Discretisation discretisation, FlowCase flow)
    : plan_(n, discretisation, flow), entries_(plan_)
{
    const auto samples = static_cast<std::size_t>(plan_.samples);
    const auto rights = static_cast<std::size_t>(right_sides(flow));
    const bool two_point = discretisation == Discretisation::TwoPoint;
    local_.resize(samples * (two_point ? 6 : pair_count(plan_.local)));
    given_.resize(rights * plan_.givens);
    axes_.resize(discretisation == Discretisation::Conforming ? samples * 3 : 0);
    links_.resize(plan_.links.size());
    matrix_.resize(entries_.envelope.entries);
    border_.resize((rights + 2) * plan_.unknowns);
    solution_.resize(rights * plan_.unknowns);
}

double LaneSolver::bytes(const std::array<int, 3>& n, Discretisation discretisation)
{
    std::array<double, 3> sorted{static_cast<double>(n[0]), static_cast<double>(n[1]), static_cast<double>(n[2])};
    std::ranges::sort(sorted);
    const double samples = sorted[0] * sorted[1] * sorted[2];
    const double plane = sorted[0] * sorted[1];
    double entries = 0;
    switch (discretisation) {
    case Discretisation::TwoPoint:
        entries = samples * (plane + 7);
        break;
    case Discretisation::Mixed:
        entries = 3 * samples * 3 * plane + 21 * samples;
        break;
    case Discretisation::Conforming:
        entries = (sorted[0] + 1) * (sorted[1] + 1) * (sorted[2] + 1) * (sorted[0] + 1) * (sorted[1] + 2) +
                  36 * samples;
        break;
    }
    return entries * sizeof(Lanes);
}

Lanes* LaneSolver::right_side(std::vector<Lanes>& vector, int right)
{
    return vector.data() + static_cast<std::ptrdiff_t>(right) * plan_.unknowns;
}

void LaneSolver::solve(std::span<const Instance> instances, std::span<Answer> answers)
{
    // Lanes beyond the instances repeat the first one.
    std::array<Instance, lane_count> lanes;
    for (std::size_t lane = 0; lane < lane_count; ++lane)
        lanes[lane] = instances[lane < instances.size() ? lane : 0];
    const int rights = right_sides(plan_.flow);
    for (int right = 0; right < rights; ++right) {
        for (int number = 0; number < plan_.givens; ++number) {
            for (int lane = 0; lane < lane_count; ++lane)
                given_[static_cast<std::size_t>(right) * plan_.givens + number].at[lane] =
                    lanes[lane].given(plan_, right, number);
        }
    }
    Lanes energies[6] = {};
    Lanes lost{};
    if (plan_.discretisation == Discretisation::TwoPoint) {
        load_two_point(lanes);
        solve_two_point(energies);
    } else {
        load_local_matrices(lanes);
        solve_local(lanes, energies, lost);
    }
    for (std::size_t lane = 0; lane < instances.size(); ++lane) {
        for (int e = 0; e < 6; ++e)
            answers[lane].energies[e] = energies[e].at[lane];
        if (lanes[lane].has_zero)
            clear_rounding(answers[lane].energies);
        answers[lane].lost = lost.at[lane] != 0;
    }
}

void LaneSolver::load_two_point(std::span<const Instance> instances)
{
    if (instances.front().geometry != nullptr) {
        for (int lane = 0; lane < lane_count; ++lane) {
            const Instance& instance = instances[lane];
            for (int sample = 0; sample < plan_.samples; ++sample) {
                const Vector3 k{instance.permeability(0, sample), instance.permeability(1, sample),
                                instance.permeability(2, sample)};
                double half[6];
                half_conductances((*instance.geometry)[sample], k, half);
                for (int face = 0; face < 6; ++face)
                    local_[static_cast<std::size_t>(sample) * 6 + face].at[lane] = half[face];
            }
        }
        return;
    }
    for (int lane = 0; lane < lane_count; ++lane) {
        const Instance& instance = instances[lane];
        const std::array<double, 3> shape = brick_shape(instance);
        for (int axis = 0; axis < 3; ++axis) {
            for (int sample = 0; sample < plan_.samples; ++sample) {
                const double half = 2 * shape[axis] * instance.permeability(axis, sample);
                local_[static_cast<std::size_t>(sample) * 6 + 2 * axis].at[lane] = half;
                local_[static_cast<std::size_t>(sample) * 6 + 2 * axis + 1].at[lane] = half;
            }
        }
    }
}

void LaneSolver::solve_two_point(Lanes* energies)
{
    const int rights = right_sides(plan_.flow);
    const bool confined = rights == 1;
    const int terminals = confined ? 2 : 1;
    std::ranges::fill(matrix_, Lanes{});
    std::ranges::fill(border_, Lanes{});
    run_lanes([&]() LANES_LAMBDA {
        const LaneVector* half = vectors(local_.data());
        const LaneVector* given = vectors(given_.data());
        LaneVector* matrix = vectors(matrix_.data());
        LaneVector* border = vectors(border_.data());
        for (std::size_t n = 0; n < plan_.links.size(); ++n) {
            const BlockPlan::Link& link = plan_.links[n];
            const LaneVector& own = half[link.sample * 6 + link.face];
            LaneVector& conductance = vectors(links_.data())[n];
            if (link.other >= 0) {
                in_series(own, half[link.other * 6 + link.other_face], conductance);
                matrix[entries_.slots[n]] += conductance;
                continue;
            }
            conductance = own;
            const int unknown = plan_.unknown_of[link.sample];
            if (confined) {
                // The high side, at pressure 0, is the first terminal, the low side the second.
                border[(link.face & 1) != 0 ? unknown : plan_.unknowns + unknown] += own;
            } else {
                border[unknown] += own;
                for (int right = 0; right < rights; ++right)
                    border[(1 + right) * plan_.unknowns + unknown] += own * given[right * plan_.givens + link.given];
            }
        }
    });
    factor_network(entries_.envelope, matrix_.data(), border_.data(), terminals, confined ? 0 : rights);
    if (!confined) {
        for (int right = 0; right < rights; ++right)
            solve_network(entries_.envelope, matrix_.data(), right_side(border_, 1 + right),
                          right_side(solution_, right));
    }
    run_lanes([&]() LANES_LAMBDA {
        LaneVector* energy = vectors(energies);
        if (confined) {
            // What is left of the network is one conductance between the two terminals.
            const LaneVector* border = vectors(border_.data());
            for (int unknown = 0; unknown < plan_.unknowns; ++unknown)
                energy[0] += border[unknown] * border[plan_.unknowns + unknown];
            return;
        }
        const LaneVector* pressure = vectors(solution_.data());
        const LaneVector* given = vectors(given_.data());
        for (std::size_t n = 0; n < plan_.links.size(); ++n) {
            const BlockPlan::Link& link = plan_.links[n];
            const int unknown = plan_.unknown_of[link.sample];
            LaneVector drop[3] = {};
            for (int right = 0; right < rights; ++right) {
                const LaneVector& far = link.other >= 0
                                            ? pressure[right * plan_.unknowns + plan_.unknown_of[link.other]]
                                            : given[right * plan_.givens + link.given];
                drop[right] = pressure[right * plan_.unknowns + unknown] - far;
            }
            const LaneVector& conductance = vectors(links_.data())[n];
            for (int right = 0; right < 3; ++right)
                energy[right] += conductance * drop[right] * drop[right];
            energy[3] += conductance * drop[0] * drop[1];
            energy[4] += conductance * drop[0] * drop[2];
            energy[5] += conductance * drop[1] * drop[2];
        }
    });
}

void LaneSolver::load_local_matrices(std::span<const Instance> instances)
{
    const int pairs = pair_count(plan_.local);
    if (instances.front().geometry != nullptr) {
        for (int lane = 0; lane < lane_count; ++lane) {
            const Instance& instance = instances[lane];
            for (int sample = 0; sample < plan_.samples; ++sample) {
                const Vector3 k{instance.permeability(0, sample), instance.permeability(1, sample),
                                instance.permeability(2, sample)};
                double s[21];
                mixed_hex((*instance.geometry)[sample], k, plan_.dofs.data() + static_cast<std::ptrdiff_t>(sample) * 6,
                          s);
                for (int pair = 0; pair < pairs; ++pair)
                    local_[static_cast<std::size_t>(sample) * pairs + pair].at[lane] = s[pair];
            }
        }
        return;
    }
    // Permeabilities wait where their sample's matrix will stand.
    for (int lane = 0; lane < lane_count; ++lane) {
        const Instance& instance = instances[lane];
        const std::array<double, 3> shape = brick_shape(instance);
        for (int axis = 0; axis < 3; ++axis) {
            for (int sample = 0; sample < plan_.samples; ++sample)
                local_[static_cast<std::size_t>(sample) * pairs + axis].at[lane] =
                    shape[axis] * instance.permeability(axis, sample);
        }
    }
    run_lanes([&]() LANES_LAMBDA {
        for (int sample = 0; sample < plan_.samples; ++sample) {
            LaneVector* s = vectors(local_.data()) + static_cast<std::ptrdiff_t>(sample) * pairs;
            const LaneVector c[3] = {s[0], s[1], s[2]};
            for (int axis = 0; axis < 3 && plan_.local == 8; ++axis)
                vectors(axes_.data())[sample * 3 + axis] = c[axis];
            if (plan_.local == 6)
                mixed_brick(c, plan_.dofs.data() + static_cast<std::ptrdiff_t>(sample) * 6, s);
            else
                conforming_brick(c, s);
        }
    });
}

void LaneSolver::find_floating(int lane)
{
    FloatingParts parts(plan_);
    for (int sample = 0; sample < plan_.samples; ++sample) {
        const int* dof = plan_.dofs.data() + static_cast<std::ptrdiff_t>(sample) * plan_.local;
        if (plan_.local == 8) {
            const Lanes* c = axes_.data() + static_cast<std::ptrdiff_t>(sample) * 3;
            join_edges(parts, dof, [c, lane](int axis) { return c[axis].at[lane]; });
        } else {
            const Lanes* s = local_.data() + static_cast<std::ptrdiff_t>(sample) * pair_count(plan_.local);
            parts.join(dof, plan_.local, [s, lane](int r, int c) { return s[pair_count(r) + c].at[lane]; });
        }
    }
    for (const int unknown : parts.representatives())
        pins_.push_back({unknown, lane});
    blocked_[lane] = parts.blocked();
}

void LaneSolver::solve_local(std::span<const Instance> instances, Lanes* energies, Lanes& lost)
{
    const int rights = right_sides(plan_.flow);
    pins_.clear();
    blocked_.fill(false);
    for (int lane = 0; lane < lane_count; ++lane) {
        if (instances[lane].has_zero)
            find_floating(lane);
    }
    std::ranges::fill(matrix_, Lanes{});
    std::ranges::fill(border_, Lanes{});
    run_lanes([&]() LANES_LAMBDA {
        const LaneVector* local = vectors(local_.data());
        LaneVector* matrix = vectors(matrix_.data());
        for (std::size_t n = 0; n < entries_.slots.size(); ++n) {
            if (entries_.slots[n] >= 0)
                matrix[entries_.slots[n]] += local[n];
        }
        for (const EnvelopePlan::Coupling& coupling : entries_.couplings) {
            for (int right = 0; right < rights; ++right)
                vectors(border_.data())[right * plan_.unknowns + coupling.unknown] +=
                    local[coupling.entry] * vectors(given_.data())[right * plan_.givens + coupling.given];
        }
    });
    for (const auto& [unknown, lane] : pins_)
        matrix_[entries_.envelope.at(unknown, unknown)].at[lane] += FloatingParts::pin;
    factor_cholesky(entries_.envelope, matrix_.data(), border_.data(), rights, lost);
    for (int right = 0; right < rights; ++right)
        solve_cholesky(entries_.envelope, matrix_.data(), right_side(border_, right), right_side(solution_, right));
    if (plan_.local == 8)
        add_conforming_energies(energies);
    else
        add_mixed_energies(energies);
    for (int lane = 0; lane < lane_count; ++lane) {
        for (int e = 0; e < 6 && blocked_[lane]; ++e)
            energies[e].at[lane] = 0;
    }
}

void LaneSolver::add_mixed_energies(Lanes* energies) const
{
    const int rights = right_sides(plan_.flow);
    const int pairs = pair_count(plan_.local);
    run_lanes([&]() LANES_LAMBDA {
        const LaneVector* solution = vectors(solution_.data());
        const LaneVector* given = vectors(given_.data());
        LaneVector* energy = vectors(energies);
        for (int sample = 0; sample < plan_.samples; ++sample) {
            const int* dof = plan_.dofs.data() + static_cast<std::ptrdiff_t>(sample) * plan_.local;
            const LaneVector* s = vectors(local_.data()) + static_cast<std::ptrdiff_t>(sample) * pairs;
            // Pressures less their mean, weighted by what flows, for the matrix is blind to constants and its entries
            // may be far larger than what flows.
            LaneVector weight = {};
            for (int l = 0; l < plan_.local; ++l)
                weight += s[l * (l + 1) / 2 + l];
            weight = weight > 0.0 ? 1.0 / weight : weight;
            LaneVector x[3][8] = {};
            LaneVector flux[3][8] = {};
            for (int right = 0; right < rights; ++right) {
                const LaneVector* free = solution + static_cast<std::ptrdiff_t>(right) * plan_.unknowns;
                const LaneVector* fixed = given + static_cast<std::ptrdiff_t>(right) * plan_.givens;
                LaneVector base = {};
                for (int l = 0; l < plan_.local; ++l) {
                    if (dof[l] == sealed_dof)
                        continue;
                    x[right][l] = dof[l] >= 0 ? free[dof[l]] : fixed[given_number(dof[l])];
                    base += s[l * (l + 1) / 2 + l] * weight * x[right][l];
                }
                for (int l = 0; l < plan_.local; ++l)
                    x[right][l] -= base;
                for (int r = 0; r < plan_.local; ++r) {
                    for (int c = 0; c < r; ++c) {
                        flux[right][r] += s[r * (r + 1) / 2 + c] * x[right][c];
                        flux[right][c] += s[r * (r + 1) / 2 + c] * x[right][r];
                    }
                    flux[right][r] += s[r * (r + 1) / 2 + r] * x[right][r];
                }
                for (int l = 0; l < plan_.local; ++l) {
                    energy[right] += flux[right][l] * x[right][l];
                    if (right == 1)
                        energy[3] += flux[1][l] * x[0][l];
                    if (right == 2) {
                        energy[4] += flux[2][l] * x[0][l];
                        energy[5] += flux[2][l] * x[1][l];
                    }
                }
            }
        }
    });
}

void LaneSolver::add_conforming_energies(Lanes* energies) const
{
    // From the differences along the four edges of each axis, with the weights of two linear functions along the two
    // other axes: no term but is a square of what flows.
    constexpr double weights[4] = {1.0 / 9, 1.0 / 18, 1.0 / 18, 1.0 / 36};
    const int rights = right_sides(plan_.flow);
    run_lanes([&]() LANES_LAMBDA {
        const LaneVector* solution = vectors(solution_.data());
        const LaneVector* given = vectors(given_.data());
        LaneVector* energy = vectors(energies);
        for (int sample = 0; sample < plan_.samples; ++sample) {
            const int* dof = plan_.dofs.data() + static_cast<std::ptrdiff_t>(sample) * 8;
            LaneVector x[3][8] = {};
            for (int right = 0; right < rights; ++right) {
                const LaneVector* free = solution + static_cast<std::ptrdiff_t>(right) * plan_.unknowns;
                const LaneVector* fixed = given + static_cast<std::ptrdiff_t>(right) * plan_.givens;
                for (int l = 0; l < 8; ++l)
                    x[right][l] = dof[l] >= 0 ? free[dof[l]] : fixed[given_number(dof[l])];
            }
            for (int axis = 0; axis < 3; ++axis) {
                const LaneVector& c = vectors(axes_.data())[sample * 3 + axis];
                const int across = 1 << ((axis + 1) % 3);
                const int up = 1 << ((axis + 2) % 3);
                LaneVector drop[3][4] = {};
                LaneVector flux[3][4] = {};
                for (int right = 0; right < rights; ++right) {
                    for (int edge = 0; edge < 4; ++edge) {
                        const int low = ((edge & 1) != 0 ? across : 0) + ((edge & 2) != 0 ? up : 0);
                        drop[right][edge] = x[right][low + (1 << axis)] - x[right][low];
                    }
                    for (int edge = 0; edge < 4; ++edge) {
                        for (int other = 0; other < 4; ++other)
                            flux[right][edge] += weights[edge ^ other] * drop[right][other];
                        flux[right][edge] *= c;
                    }
                }
                for (int edge = 0; edge < 4; ++edge) {
                    for (int right = 0; right < rights; ++right)
                        energy[right] += flux[right][edge] * drop[right][edge];
                    if (rights > 1)
                        energy[3] += flux[1][edge] * drop[0][edge];
                    if (rights > 2) {
                        energy[4] += flux[2][edge] * drop[0][edge];
                        energy[5] += flux[2][edge] * drop[1][edge];
                    }
                }
            }
        }
    });
}

} // namespace Kelvane::flow
