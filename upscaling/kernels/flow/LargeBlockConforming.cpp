#include "LargeBlockSystem.h"

#include "LargeBlockVector.h"

// Trilinear elements on a brick, applied element by element. Along each axis an element couples its four edges with the
// tensor product of the two mass matrices across: flow_e = conductance/36 sum_f [4 2 2 1](e, f) drop_f. That is between
// a ninth and once the same with the lumped masses (conductance/4 for each edge), which is a network of nodes.

namespace Kelvane::flow {
namespace {

struct Rows {
    std::array<const double*, 4> p; // rows of nodes: J side a, K side b at a + 2b
    std::array<double*, 4> out;
    const double *ci, *cj, *ck;     // conductance / 36 of the elements along each axis
    double* right;                  // 4 * count numbers
};

// out -= flow into the nodes; the drop of g over an element along each axis is `step`.
KELVANE_VECTOR_CLONES void apply_row(const Rows& rows, std::size_t count, const std::array<double, 3>& step)
{
    const double* __restrict__ p00 = rows.p[0];
    const double* __restrict__ p10 = rows.p[1];
    const double* __restrict__ p01 = rows.p[2];
    const double* __restrict__ p11 = rows.p[3];
    const double* __restrict__ ci = rows.ci;
    const double* __restrict__ cj = rows.cj;
    const double* __restrict__ ck = rows.ck;
    double* __restrict__ r00 = rows.right;
    double* __restrict__ r10 = r00 + count;
    double* __restrict__ r01 = r10 + count;
    double* __restrict__ r11 = r01 + count;
    double* __restrict__ o00 = rows.out[0];
    double* __restrict__ o10 = rows.out[1];
    double* __restrict__ o01 = rows.out[2];
    double* __restrict__ o11 = rows.out[3];
    const double si = step[0], sj = step[1], sk = step[2];
    for (std::size_t i = 0; i < count; ++i) {
        const double l00 = p00[i], l10 = p10[i], l01 = p01[i], l11 = p11[i];
        const double h00 = p00[i + 1], h10 = p10[i + 1], h01 = p01[i + 1], h11 = p11[i + 1];
        // Along I: four edges across J and K.
        const double a00 = si + (l00 - h00), a10 = si + (l10 - h10), a01 = si + (l01 - h01), a11 = si + (l11 - h11);
        const double b00 = 2 * a00 + a10, b10 = a00 + 2 * a10, b01 = 2 * a01 + a11, b11 = a01 + 2 * a11;
        const double f00 = ci[i] * (2 * b00 + b01), f10 = ci[i] * (2 * b10 + b11);
        const double f01 = ci[i] * (b00 + 2 * b01), f11 = ci[i] * (b10 + 2 * b11);
        // Along J: edges (I side, K side).
        const double d00 = sj + (l00 - l10), d10 = sj + (h00 - h10), d01 = sj + (l01 - l11), d11 = sj + (h01 - h11);
        const double e00 = 2 * d00 + d10, e10 = d00 + 2 * d10, e01 = 2 * d01 + d11, e11 = d01 + 2 * d11;
        const double g00 = cj[i] * (2 * e00 + e01), g10 = cj[i] * (2 * e10 + e11);
        const double g01 = cj[i] * (e00 + 2 * e01), g11 = cj[i] * (e10 + 2 * e11);
        // Along K: edges (I side, J side).
        const double s00 = sk + (l00 - l01), s10 = sk + (h00 - h01), s01 = sk + (l10 - l11), s11 = sk + (h10 - h11);
        const double t00 = 2 * s00 + s10, t10 = s00 + 2 * s10, t01 = 2 * s01 + s11, t11 = s01 + 2 * s11;
        const double u00 = ck[i] * (2 * t00 + t01), u10 = ck[i] * (2 * t10 + t11);
        const double u01 = ck[i] * (t00 + 2 * t01), u11 = ck[i] * (t10 + 2 * t11);
        o00[i] += f00 + g00 + u00;
        o10[i] += f10 - g00 + u01;
        o01[i] += f01 + g01 - u00;
        o11[i] += f11 - g01 - u01;
        r00[i] = g10 + u10 - f00;
        r10[i] = u11 - g10 - f10;
        r01[i] = g11 - u10 - f01;
        r11[i] = -g11 - u11 - f11;
    }
    for (std::size_t i = 0; i < count; ++i) {
        o00[i + 1] += r00[i];
        o10[i + 1] += r10[i];
        o01[i + 1] += r01[i];
        o11[i + 1] += r11[i];
    }
}

class ConformingSystem : public FlowSystem {
public:
    explicit ConformingSystem(const Samples& samples) : samples_(samples)
    {
        for (std::size_t axis = 0; axis < 3; ++axis) {
            n_[axis] = samples.n()[axis] + 1;
            coupling_[axis].resize(samples.size());
        }
        for_parts(samples.n()[2], samples.strides()[2], [&](int k) {
            for (std::size_t c = samples_.index(0, 0, k); c < samples_.index(0, 0, k + 1); ++c)
                for (std::size_t axis = 0; axis < 3; ++axis)
                    coupling_[axis][c] = samples_.conductance(axis, c) / 36;
        });
    }

    [[nodiscard]] std::size_t size() const override { return node(0, 0, n_[2]); }

    void multiply(std::span<const double> x, std::span<double> y) const override { balance(x, y, {0, 0, 0}); }

    void residual(std::size_t axis, std::span<const double> w, std::span<double> r) const override
    {
        std::array<double, 3> step{};
        step[axis] = 1.0 / samples_.n()[axis];
        balance(w, r, step);
        for_parts(n_[2], node(0, 0, 1), [&](int k) {
            for (std::size_t c = node(0, 0, k); c < node(0, 0, k + 1); ++c)
                r[c] = -r[c];
        });
    }

    [[nodiscard]] double energy(std::size_t a, std::span<const double> wa, std::size_t b,
                                std::span<const double> wb) const override
    {
        const auto& cells = samples_.n();
        return sum_parts(cells[2], samples_.strides()[2], [&](int k) {
            double plane = 0;
            for (int j = 0; j < cells[1]; ++j) {
                double row = 0;
                for (int i = 0; i < cells[0]; ++i)
                    row += element_energy(i, j, k, a, wa, b, wb);
                plane += row;
            }
            return plane;
        });
    }

    void from_profile(std::size_t axis, std::span<const double> at_faces, std::span<double> w) const override
    {
        for_parts(n_[2], node(0, 0, 1), [&](int k) {
            for (int j = 0; j < n_[1]; ++j)
                for (int i = 0; i < n_[0]; ++i) {
                    const auto at = static_cast<std::size_t>(std::array<int, 3>{i, j, k}[axis]);
                    const double g = 1 - static_cast<double>(at) / samples_.n()[axis];
                    w[node(i, j, k)] = fixed(i, j, k) ? 0.0 : (at_faces.empty() ? 0.0 : at_faces[at]) - g;
                }
        });
    }

    [[nodiscard]] KCycle preconditioner() const override
    {
        Network network;
        network.n = n_;
        network.ground.assign(size(), 0.0);
        for (auto& values : network.conductance)
            values.assign(size(), 0.0);
        // Each node gathers its upper edges; those to a fixed node turn into ground.
        for_parts(n_[2], node(0, 0, 1), [&](int k) {
            for (int j = 0; j < n_[1]; ++j)
                for (int i = 0; i < n_[0]; ++i) {
                    if (fixed(i, j, k))
                        continue;
                    const std::array<int, 3> at{i, j, k};
                    for (std::size_t axis = 0; axis < 3; ++axis) {
                        std::array<int, 3> other = at;
                        ++other[axis];
                        if (other[axis] < n_[axis]) {
                            const double edge = edge_conductance(axis, at);
                            (fixed(other[0], other[1], other[2]) ? network.ground[node(i, j, k)]
                                                                 : network.conductance[axis][node(i, j, k)]) += edge;
                        }
                        other[axis] -= 2;
                        if (other[axis] >= 0 && fixed(other[0], other[1], other[2]))
                            network.ground[node(i, j, k)] += edge_conductance(axis, other);
                    }
                }
        });
        return KCycle(network.view());
    }

private:
    [[nodiscard]] std::size_t node(int i, int j, int k) const
    {
        return static_cast<std::size_t>(i) +
               static_cast<std::size_t>(n_[0]) *
                   (static_cast<std::size_t>(j) + static_cast<std::size_t>(n_[1]) * static_cast<std::size_t>(k));
    }
    [[nodiscard]] bool fixed(int i, int j, int k) const
    {
        const auto& open = samples_.open();
        return (open[0] && (i == 0 || i + 1 == n_[0])) || (open[1] && (j == 0 || j + 1 == n_[1])) ||
               (open[2] && (k == 0 || k + 1 == n_[2]));
    }
    // Lumped: a quarter of the conductance of each element around the edge that starts at this node.
    [[nodiscard]] double edge_conductance(std::size_t axis, const std::array<int, 3>& at) const
    {
        const std::size_t u = (axis + 1) % 3, v = (axis + 2) % 3;
        const auto& cells = samples_.n();
        double sum = 0;
        for (int a = at[u] - 1; a <= at[u]; ++a)
            for (int b = at[v] - 1; b <= at[v]; ++b)
                if (a >= 0 && b >= 0 && a < cells[u] && b < cells[v]) {
                    std::array<int, 3> cell = at;
                    cell[u] = a;
                    cell[v] = b;
                    sum += coupling_[axis][samples_.index(cell[0], cell[1], cell[2])];
                }
        return 9 * sum;
    }

    void balance(std::span<const double> x, std::span<double> y, const std::array<double, 3>& step) const
    {
        const auto& cells = samples_.n();
        for_parts(n_[2], node(0, 0, 1), [&](int k) {
            std::fill(y.begin() + static_cast<std::ptrdiff_t>(node(0, 0, k)),
                      y.begin() + static_cast<std::ptrdiff_t>(node(0, 0, k + 1)), 0.0);
        });
        const auto count = static_cast<std::size_t>(cells[0]);
        // Two layers of elements share a plane of nodes: even layers first, then odd ones.
        for (const int parity : {0, 1})
            for_parts((cells[2] + 1 - parity) / 2, samples_.strides()[2], [&](int half) {
                const int k = 2 * half + parity;
                std::vector<double> right(4 * count);
                for (int j = 0; j < cells[1]; ++j) {
                    const std::array<std::size_t, 4> row{node(0, j, k), node(0, j + 1, k), node(0, j, k + 1),
                                                         node(0, j + 1, k + 1)};
                    const std::size_t c = samples_.index(0, j, k);
                    apply_row({{x.data() + row[0], x.data() + row[1], x.data() + row[2], x.data() + row[3]},
                               {y.data() + row[0], y.data() + row[1], y.data() + row[2], y.data() + row[3]},
                               coupling_[0].data() + c,
                               coupling_[1].data() + c,
                               coupling_[2].data() + c,
                               right.data()},
                              count, step);
                }
            });
        clear_fixed(y);
    }

    void clear_fixed(std::span<double> y) const
    {
        const auto& open = samples_.open();
        for_parts(n_[2], node(0, 0, 1), [&](int k) {
            const bool all = open[2] && (k == 0 || k + 1 == n_[2]);
            for (int j = 0; j < n_[1]; ++j) {
                double* row = y.data() + node(0, j, k);
                if (all || (open[1] && (j == 0 || j + 1 == n_[1])))
                    std::fill_n(row, n_[0], 0.0);
                else if (open[0])
                    row[0] = row[n_[0] - 1] = 0;
            }
        });
    }

    [[nodiscard]] double element_energy(int i, int j, int k, std::size_t a, std::span<const double> wa, std::size_t b,
                                        std::span<const double> wb) const
    {
        const std::size_t c = samples_.index(i, j, k);
        const auto corner = [&](std::size_t which) {
            return node(i + static_cast<int>(which & 1U), j + static_cast<int>(which >> 1U & 1U),
                        k + static_cast<int>(which >> 2U));
        };
        double sum = 0;
        for (std::size_t axis = 0; axis < 3; ++axis) {
            if (coupling_[axis][c] == 0)
                continue;
            const std::size_t u = 1U << (axis + 1) % 3, v = 1U << (axis + 2) % 3, up = 1U << axis;
            std::array<double, 4> da{}, db{};
            for (std::size_t e = 0; e < 4; ++e) {
                const std::size_t low = (e & 1U ? u : 0) + (e & 2U ? v : 0);
                const double step = 1.0 / samples_.n()[axis];
                da[e] = (axis == a ? step : 0.0) + (wa[corner(low)] - wa[corner(low + up)]);
                db[e] = (axis == b ? step : 0.0) + (wb[corner(low)] - wb[corner(low + up)]);
            }
            for (std::size_t e = 0; e < 4; ++e)
                for (std::size_t f = 0; f < 4; ++f) {
                    const double weight = (((e ^ f) & 1U) != 0 ? 1 : 2) * (((e ^ f) & 2U) != 0 ? 1 : 2);
                    sum += coupling_[axis][c] * weight * da[e] * db[f];
                }
        }
        return sum;
    }

    const Samples& samples_;
    std::array<int, 3> n_{};
    std::array<std::vector<double>, 3> coupling_;
};

} // namespace

std::unique_ptr<FlowSystem> make_conforming_system(const Samples& samples)
{
    return std::make_unique<ConformingSystem>(samples);
}

} // namespace Kelvane::flow
