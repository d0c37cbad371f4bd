#include "BlockPlan.h"

#include <algorithm>
#include <numeric>

namespace Kelvane::flow {

int right_sides(FlowCase flow)
{
    if (flow == FlowCase::Linear)
        return 3;
    return flow == FlowCase::Lateral ? 2 : 1;
}

bool is_given(FlowCase flow, int axis)
{
    if (flow == FlowCase::Linear)
        return true;
    return flow == FlowCase::Lateral ? axis < 2 : static_cast<int>(flow) == axis;
}

std::vector<FlowCase> flow_cases(Boundary boundary)
{
    switch (boundary) {
    case Boundary::KConfined:
        return {FlowCase::Lateral, FlowCase::FlowK};
    case Boundary::Unconfined:
        return {FlowCase::Linear};
    case Boundary::Confined:
        break;
    }
    return {FlowCase::FlowI, FlowCase::FlowJ, FlowCase::FlowK};
}

namespace {

/// Numbers points of a box in planes across its longest axis, the shortest axis fastest.
class Order {
public:
    explicit Order(const std::array<int, 3>& n)
    {
        std::iota(axes_.begin(), axes_.end(), 0);
        std::ranges::stable_sort(axes_, [&](int a, int b) { return n[a] < n[b]; });
    }
    /// Axes from the shortest to the longest.
    [[nodiscard]] const std::array<int, 3>& axes() const { return axes_; }
    /// The box's points of `count` along each axis, in this order.
    template <class Visit> void for_points(const std::array<int, 3>& count, const Visit& visit) const
    {
        std::array<int, 3> point{};
        for (point[axes_[2]] = 0; point[axes_[2]] < count[axes_[2]]; ++point[axes_[2]])
            for (point[axes_[1]] = 0; point[axes_[1]] < count[axes_[1]]; ++point[axes_[1]])
                for (point[axes_[0]] = 0; point[axes_[0]] < count[axes_[0]]; ++point[axes_[0]])
                    visit(point);
    }

private:
    std::array<int, 3> axes_{};
};

int sample_at(const std::array<int, 3>& n, int i, int j, int k)
{
    return (k * n[1] + j) * n[0] + i;
}

/// Pressures of a given value that stands at `position` (0 to 1 along each axis).
void add_given(BlockPlan& plan, int sample, int place, const std::array<double, 3>& position,
               std::vector<std::array<double, 3>>& values)
{
    plan.given_places.push_back({sample, place});
    const int axis = static_cast<int>(plan.flow);
    values.push_back(axis < 3 ? std::array<double, 3>{1 - position[axis], 0, 0} : position);
    ++plan.givens;
}

/// Number of each face (its lower sample's index, or the upper side's), -1 without one.
struct FaceNumbers {
    std::array<std::vector<int>, 3> of;
    std::array<std::array<int, 3>, 3> count;

    explicit FaceNumbers(const std::array<int, 3>& n)
    {
        for (int axis = 0; axis < 3; ++axis) {
            count[axis] = n;
            ++count[axis][axis];
            of[axis].assign(static_cast<std::size_t>(count[axis][0]) * count[axis][1] * count[axis][2], sealed_dof);
        }
    }
    int& at(int axis, const std::array<int, 3>& p)
    {
        return of[axis][sample_at(count[axis], p[0], p[1], p[2])];
    }
};

void plan_two_point(BlockPlan& plan, const Order& order, std::vector<std::array<double, 3>>& values)
{
    const auto& n = plan.n;
    plan.unknown_of.assign(plan.samples, 0);
    order.for_points(n, [&](const std::array<int, 3>& p) {
        plan.unknown_of[sample_at(n, p[0], p[1], p[2])] = plan.unknowns++;
    });
    order.for_points(n, [&](const std::array<int, 3>& p) {
        const int sample = sample_at(n, p[0], p[1], p[2]);
        const std::array<int, 3> stride{1, n[0], n[0] * n[1]};
        for (int axis = 0; axis < 3; ++axis) {
            if (p[axis] + 1 < n[axis])
                plan.links.push_back({sample, 2 * axis + 1, sample + stride[axis], 2 * axis, -1});
            if (!is_given(plan.flow, axis))
                continue;
            for (int side = 0; side < 2; ++side) {
                if (p[axis] != (side == 0 ? 0 : n[axis] - 1))
                    continue;
                std::array<double, 3> position{};
                for (int a = 0; a < 3; ++a)
                    position[a] = a == axis ? side : (p[a] + 0.5) / n[a];
                plan.links.push_back({sample, 2 * axis + side, -1, -1, plan.givens});
                add_given(plan, sample, 2 * axis + side, position, values);
            }
        }
    });
}

void plan_mixed(BlockPlan& plan, const Order& order, std::vector<std::array<double, 3>>& values)
{
    const auto& n = plan.n;
    FaceNumbers faces(n);
    const auto number = [&](int axis, const std::array<int, 3>& p) {
        if (p[axis] > 0 && p[axis] < n[axis])
            faces.at(axis, p) = plan.unknowns++;
    };
    // The faces across the longest axis stand between the planes of the others.
    const int longest = order.axes()[2];
    for (int plane = 0; plane < n[longest]; ++plane) {
        for (const bool across : {true, false}) {
            std::array<int, 3> count = n;
            count[longest] = 1;
            order.for_points(count, [&](std::array<int, 3> p) {
                p[longest] = plane;
                if (across) {
                    number(longest, p);
                } else {
                    number(order.axes()[1], p);
                    number(order.axes()[0], p);
                }
            });
        }
    }
    plan.dofs.assign(static_cast<std::size_t>(plan.samples) * 6, sealed_dof);
    Order({1, 1, 1}).for_points(n, [&](const std::array<int, 3>& p) {
        const int sample = sample_at(n, p[0], p[1], p[2]);
        for (int axis = 0; axis < 3; ++axis) {
            for (int side = 0; side < 2; ++side) {
                std::array<int, 3> at = p;
                at[axis] += side;
                int& face = faces.at(axis, at);
                const bool boundary = at[axis] == 0 || at[axis] == n[axis];
                if (boundary && is_given(plan.flow, axis)) {
                    face = given_dof(plan.givens);
                    std::array<double, 3> position{};
                    for (int a = 0; a < 3; ++a)
                        position[a] = a == axis ? side : (p[a] + 0.5) / n[a];
                    add_given(plan, sample, 2 * axis + side, position, values);
                }
                plan.dofs[sample * 6 + 2 * axis + side] = face;
            }
        }
    });
}

void plan_conforming(BlockPlan& plan, const Order& order, std::vector<std::array<double, 3>>& values)
{
    const auto& n = plan.n;
    const std::array<int, 3> nodes{n[0] + 1, n[1] + 1, n[2] + 1};
    std::vector<int> number(static_cast<std::size_t>(nodes[0]) * nodes[1] * nodes[2]);
    order.for_points(nodes, [&](const std::array<int, 3>& p) {
        bool given = false;
        std::array<double, 3> position{};
        for (int axis = 0; axis < 3; ++axis) {
            given = given || (is_given(plan.flow, axis) && (p[axis] == 0 || p[axis] == n[axis]));
            position[axis] = static_cast<double>(p[axis]) / n[axis];
        }
        int& node = number[sample_at(nodes, p[0], p[1], p[2])];
        if (given) {
            node = given_dof(plan.givens);
            std::array<int, 3> low{};
            int corner = 0;
            for (int axis = 0; axis < 3; ++axis) {
                low[axis] = std::max(0, p[axis] - 1);
                corner |= (p[axis] - low[axis]) << axis;
            }
            add_given(plan, sample_at(n, low[0], low[1], low[2]), corner, position, values);
        } else {
            node = plan.unknowns++;
        }
    });
    plan.dofs.assign(static_cast<std::size_t>(plan.samples) * 8, sealed_dof);
    Order({1, 1, 1}).for_points(n, [&](const std::array<int, 3>& p) {
        for (int corner = 0; corner < 8; ++corner)
            plan.dofs[sample_at(n, p[0], p[1], p[2]) * 8 + corner] =
                number[sample_at(nodes, p[0] + (corner & 1), p[1] + ((corner >> 1) & 1), p[2] + (corner >> 2))];
    });
}

} // namespace

BlockPlan::BlockPlan(const std::array<int, 3>& n_, Discretisation discretisation_, FlowCase flow_)
    : n(n_), discretisation(discretisation_), flow(flow_), samples(n_[0] * n_[1] * n_[2]), local(1), unknowns(0),
      givens(0)
{
    const Order order(n);
    std::vector<std::array<double, 3>> values;
    switch (discretisation) {
    case Discretisation::TwoPoint:
        plan_two_point(*this, order, values);
        break;
    case Discretisation::Mixed:
        local = 6;
        plan_mixed(*this, order, values);
        break;
    case Discretisation::Conforming:
        local = 8;
        plan_conforming(*this, order, values);
        break;
    }
    for (int right = 0; right < right_sides(flow); ++right) {
        for (const auto& value : values)
            given_values.push_back(value[right]);
    }
}

Envelope BlockPlan::envelope() const
{
    std::vector<int> first(unknowns);
    std::iota(first.begin(), first.end(), 0);
    const auto join = [&](int a, int b) { first[std::max(a, b)] = std::min(first[std::max(a, b)], std::min(a, b)); };
    for (const Link& link : links) {
        if (link.other >= 0)
            join(unknown_of[link.sample], unknown_of[link.other]);
    }
    if (discretisation != Discretisation::TwoPoint) {
        for (int sample = 0; sample < samples; ++sample) {
            const int* dof = dofs.data() + static_cast<std::ptrdiff_t>(sample) * local;
            for (int r = 0; r < local; ++r) {
                for (int c = 0; c < r; ++c) {
                    if (dof[r] >= 0 && dof[c] >= 0)
                        join(dof[r], dof[c]);
                }
            }
        }
    }
    return Envelope(std::move(first));
}

EnvelopePlan::EnvelopePlan(const BlockPlan& plan) : envelope(plan.envelope())
{
    const auto slot = [&](int a, int b) {
        return static_cast<std::int32_t>(envelope.at(std::max(a, b), std::min(a, b)));
    };
    if (plan.discretisation == Discretisation::TwoPoint) {
        for (const BlockPlan::Link& link : plan.links)
            slots.push_back(link.other < 0 ? -1 : slot(plan.unknown_of[link.sample], plan.unknown_of[link.other]));
        return;
    }
    for (int sample = 0; sample < plan.samples; ++sample) {
        const int* dof = plan.dofs.data() + static_cast<std::ptrdiff_t>(sample) * plan.local;
        for (int r = 0; r < plan.local; ++r) {
            for (int c = 0; c <= r; ++c) {
                if (is_given_dof(dof[r]) && dof[c] >= 0)
                    couplings.push_back({static_cast<int>(slots.size()), dof[c], given_number(dof[r])});
                if (is_given_dof(dof[c]) && dof[r] >= 0)
                    couplings.push_back({static_cast<int>(slots.size()), dof[r], given_number(dof[c])});
                slots.push_back(dof[r] >= 0 && dof[c] >= 0 ? slot(dof[r], dof[c]) : -1);
            }
        }
    }
}

} // namespace Kelvane::flow
