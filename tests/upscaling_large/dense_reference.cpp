#include "dense_reference.h"

#include <Eigen/Dense>

using Kelvane::flow::Boundary;
using Kelvane::flow::Discretisation;

namespace {

using Open = std::array<bool, 3>;
using Mean = std::array<double, 3>; // flux along the axes, mean over the brick

struct Geometry {
    explicit Geometry(const Model& m) : model(m)
    {
        for (std::size_t axis = 0; axis < 3; ++axis)
            h[axis] = m.size[axis] / m.n[axis];
    }
    const Model& model;
    std::array<double, 3> h{};

    [[nodiscard]] double area(std::size_t axis) const { return h[(axis + 1) % 3] * h[(axis + 2) % 3]; }
    [[nodiscard]] double volume() const { return model.size[0] * model.size[1] * model.size[2]; }
    [[nodiscard]] Eigen::Index cell(const std::array<int, 3>& at) const
    {
        return static_cast<Eigen::Index>(model.index(at[0], at[1], at[2]));
    }
    // Pressure that falls from 1 to 0 along the direction, at the centre of the lower or upper face of a cell.
    [[nodiscard]] double at_face(std::size_t direction, std::size_t axis, std::array<int, 3> at, bool upper) const
    {
        if (direction == axis)
            return upper ? 0 : 1;
        return 1 - (at[direction] + 0.5) / model.n[direction];
    }
};

template <class Visit> void each_cell(const std::array<int, 3>& n, const Visit& visit)
{
    for (int k = 0; k < n[2]; ++k)
        for (int j = 0; j < n[1]; ++j)
            for (int i = 0; i < n[0]; ++i)
                visit(std::array<int, 3>{i, j, k});
}

Eigen::VectorXd solve(const Eigen::MatrixXd& a, const Eigen::VectorXd& b)
{
    return a.colPivHouseholderQr().solve(b);
}

Mean two_point(const Geometry& g, const Open& open, std::size_t direction)
{
    const auto& n = g.model.n;
    const auto count = static_cast<Eigen::Index>(g.model.samples());
    Eigen::MatrixXd a = Eigen::MatrixXd::Zero(count, count);
    Eigen::VectorXd b = Eigen::VectorXd::Zero(count);
    struct Face {
        Eigen::Index low, high; // -1: fixed
        double fixed, t, distance;
        std::size_t axis;
    };
    std::vector<Face> faces;
    each_cell(n, [&](const std::array<int, 3>& at) {
        for (std::size_t axis = 0; axis < 3; ++axis) {
            const double k = g.model.k[axis][static_cast<std::size_t>(g.cell(at))];
            const double half = 2 * k * g.area(axis) / g.h[axis];
            auto next = at;
            ++next[axis];
            if (next[axis] < n[axis]) {
                const double other = g.model.k[axis][static_cast<std::size_t>(g.cell(next))];
                const double t = k > 0 && other > 0 ? 2 / (1 / k + 1 / other) * g.area(axis) / g.h[axis] : 0;
                faces.push_back({g.cell(at), g.cell(next), 0, t, g.h[axis], axis});
            } else if (open[axis]) {
                faces.push_back({g.cell(at), -1, g.at_face(direction, axis, at, true), half, g.h[axis] / 2, axis});
            }
            if (at[axis] == 0 && open[axis])
                faces.push_back({-1, g.cell(at), g.at_face(direction, axis, at, false), half, g.h[axis] / 2, axis});
        }
    });
    for (const Face& f : faces)
        for (const auto& [own, other] : {std::pair{f.low, f.high}, std::pair{f.high, f.low}}) {
            if (own < 0)
                continue;
            a(own, own) += f.t;
            if (other >= 0)
                a(own, other) -= f.t;
            else
                b(own) += f.t * f.fixed;
        }
    const Eigen::VectorXd p = solve(a, b);
    Mean mean{};
    for (const Face& f : faces)
        mean[f.axis] += f.t * ((f.low < 0 ? f.fixed : p(f.low)) - (f.high < 0 ? f.fixed : p(f.high))) * f.distance;
    for (double& value : mean)
        value /= g.volume();
    return mean;
}

Mean mixed(const Geometry& g, const Open& open, std::size_t direction)
{
    const auto& n = g.model.n;
    // Number the faces that carry flow.
    std::array<std::vector<Eigen::Index>, 3> face;
    Eigen::Index faces = 0;
    const auto face_at = [&](std::size_t axis, const std::array<int, 3>& at) -> Eigen::Index& {
        const auto w0 = static_cast<std::size_t>(n[0] + 1), w1 = static_cast<std::size_t>(n[1] + 1);
        return face[axis][static_cast<std::size_t>(at[0]) +
                          w0 * (static_cast<std::size_t>(at[1]) + w1 * static_cast<std::size_t>(at[2]))];
    };
    const auto k_of = [&](std::size_t axis, const std::array<int, 3>& at) {
        return g.model.k[axis][static_cast<std::size_t>(g.cell(at))];
    };
    for (std::size_t axis = 0; axis < 3; ++axis) {
        face[axis].assign(static_cast<std::size_t>(n[0] + 1) * static_cast<std::size_t>(n[1] + 1) *
                              static_cast<std::size_t>(n[2] + 1), -1);
        auto layers = n;
        ++layers[axis];
        each_cell(layers, [&](const std::array<int, 3>& at) {
            auto low = at;
            --low[axis];
            const bool first = at[axis] == 0, last = at[axis] == n[axis];
            const bool conducts = (first || k_of(axis, low) > 0) && (last || k_of(axis, at) > 0);
            if (conducts && ((!first && !last) || open[axis]))
                face_at(axis, at) = faces++;
        });
    }
    const auto cells = static_cast<Eigen::Index>(g.model.samples());
    Eigen::MatrixXd a = Eigen::MatrixXd::Zero(faces + cells, faces + cells);
    Eigen::VectorXd b = Eigen::VectorXd::Zero(faces + cells);
    each_cell(n, [&](const std::array<int, 3>& at) {
        const Eigen::Index p = faces + g.cell(at);
        for (std::size_t axis = 0; axis < 3; ++axis) {
            auto next = at;
            ++next[axis];
            const std::array<Eigen::Index, 2> f{face_at(axis, at), face_at(axis, next)};
            const double m = g.h[axis] / g.area(axis) / k_of(axis, at);
            for (std::size_t side = 0; side < 2; ++side) {
                if (f[side] < 0)
                    continue;
                a(f[side], f[side]) += m / 3;
                if (f[1 - side] >= 0)
                    a(f[side], f[1 - side]) += m / 6;
                // Flow upwards: pressure of the cell drives its upper face and resists its lower one.
                const double sign = side == 1 ? -1 : 1;
                a(f[side], p) += sign;
                a(p, f[side]) += sign;
                const bool edge = side == 0 ? at[axis] == 0 : next[axis] == n[axis];
                if (edge)
                    b(f[side]) += sign * g.at_face(direction, axis, at, side == 1);
            }
        }
    });
    const Eigen::VectorXd x = solve(a, b);
    Mean mean{};
    each_cell(n, [&](const std::array<int, 3>& at) {
        for (std::size_t axis = 0; axis < 3; ++axis) {
            auto next = at;
            ++next[axis];
            for (const Eigen::Index f : {face_at(axis, at), face_at(axis, next)})
                if (f >= 0)
                    mean[axis] += x(f) / 2 * g.h[axis] / g.volume();
        }
    });
    return mean;
}

Mean conforming(const Geometry& g, const Open& open, std::size_t direction)
{
    const auto& n = g.model.n;
    const std::array<int, 3> nodes{n[0] + 1, n[1] + 1, n[2] + 1};
    const auto node = [&](const std::array<int, 3>& at) {
        return static_cast<Eigen::Index>(at[0] + nodes[0] * (at[1] + nodes[1] * at[2]));
    };
    const Eigen::Index count = node({0, 0, nodes[2]});
    Eigen::MatrixXd a = Eigen::MatrixXd::Zero(count, count);
    Eigen::VectorXd b = Eigen::VectorXd::Zero(count);
    const double volume = g.h[0] * g.h[1] * g.h[2];
    const auto corner = [](std::array<int, 3> at, int which) {
        return std::array<int, 3>{at[0] + which % 2, at[1] + which / 2 % 2, at[2] + which / 4};
    };
    // Derivative along an axis of the shape function of a corner at a Gauss point.
    const auto slope = [&](int which, int point, std::size_t axis) {
        double value = 1 / g.h[axis];
        for (std::size_t other = 0; other < 3; ++other) {
            const int side = which >> other & 1;
            const double x = 0.5 + ((point >> other & 1) != 0 ? 0.5 : -0.5) / std::sqrt(3.0);
            value *= other == axis ? (side == 1 ? 1 : -1) : (side == 1 ? x : 1 - x);
        }
        return value;
    };
    each_cell(n, [&](const std::array<int, 3>& at) {
        for (int p = 0; p < 8; ++p)
            for (std::size_t axis = 0; axis < 3; ++axis)
                for (int r = 0; r < 8; ++r)
                    for (int c = 0; c < 8; ++c)
                        a(node(corner(at, r)), node(corner(at, c))) +=
                            g.model.k[axis][static_cast<std::size_t>(g.cell(at))] * volume / 8 * slope(r, p, axis) *
                            slope(c, p, axis);
    });
    each_cell(nodes, [&](const std::array<int, 3>& at) {
        for (std::size_t axis = 0; axis < 3; ++axis)
            if (open[axis] && (at[axis] == 0 || at[axis] == n[axis])) {
                a.row(node(at)).setZero();
                a(node(at), node(at)) = 1;
                b(node(at)) = 1 - static_cast<double>(at[direction]) / n[direction];
            }
    });
    const Eigen::VectorXd x = solve(a, b);
    Mean mean{};
    each_cell(n, [&](const std::array<int, 3>& at) {
        for (int p = 0; p < 8; ++p)
            for (std::size_t axis = 0; axis < 3; ++axis)
                for (int c = 0; c < 8; ++c)
                    mean[axis] -= g.model.k[axis][static_cast<std::size_t>(g.cell(at))] * volume / 8 / g.volume() *
                                  slope(c, p, axis) * x(node(corner(at, c)));
    });
    return mean;
}

} // namespace

std::array<double, 6> dense_reference(const Model& model, Boundary boundary, Discretisation discretisation)
{
    const Geometry geometry(model);
    std::array<double, 6> tensor{};
    for (std::size_t direction = 0; direction < 3; ++direction) {
        Open open{true, true, true};
        if (boundary == Boundary::Confined || (boundary == Boundary::KConfined && direction == 2))
            open = {direction == 0, direction == 1, direction == 2};
        else if (boundary == Boundary::KConfined)
            open[2] = false;
        const Mean mean = discretisation == Discretisation::TwoPoint ? two_point(geometry, open, direction)
                          : discretisation == Discretisation::Mixed  ? mixed(geometry, open, direction)
                                                                     : conforming(geometry, open, direction);
        tensor[direction] = mean[direction] * model.size[direction];
        const bool couples_j = direction == 0 && open[1];
        if (couples_j)
            tensor[3] = mean[1] * model.size[direction];
        if (direction == 0 && open[1] && open[2])
            tensor[4] = mean[2] * model.size[direction];
        if (direction == 1 && open[0] && open[2])
            tensor[5] = mean[2] * model.size[direction];
    }
    return tensor;
}
