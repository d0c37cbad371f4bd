#include "LargeBlockSystem.h"

#include "LargeBlockVector.h"

#include <cmath>
#include <cstdint>

namespace Kelvane::flow {

Samples::Samples(const Block& block, const OpenAxes& open, bool through_nodes)
    : n_(block.n), open_(open), count_(block.samples()), k_{block.ki, block.kj, block.kk}
{
    const double length = std::cbrt(block.size[0]) * std::cbrt(block.size[1]) * std::cbrt(block.size[2]);
    std::array<double, 3> h{};
    for (std::size_t axis = 0; axis < 3; ++axis) {
        edge_[axis] = block.size[axis] / length;
        h[axis] = edge_[axis] / n_[axis];
    }
    bool complete = true;
    double largest = 0;
    for (const auto& values : k_)
        for (const double k : values) {
            complete = complete && k > 0 && k <= largest_finite;
            if (k <= largest_finite)
                largest = std::max(largest, k);
        }
    unit_ = largest > 0 ? std::ldexp(1.0, std::clamp(std::ilogb(largest), -1000, 1000)) : 1.0;
    for (std::size_t axis = 0; axis < 3; ++axis)
        shape_[axis] = h[(axis + 1) % 3] * h[(axis + 2) % 3] / h[axis] / unit_;
    left_ = count_;
    if (!complete)
        find_removed(through_nodes);
}

void Samples::find_removed(bool through_nodes)
{
    const int open_pairs = int{open_[0]} + int{open_[1]} + int{open_[2]};
    std::vector<std::uint8_t> seen(count_, 0);
    std::vector<std::uint8_t> removed(count_, 0);
    std::vector<std::size_t> part; // samples of the part at hand, also the queue
    const auto conducts = [&](std::size_t c) {
        return conductance(0, c) > 0 || conductance(1, c) > 0 || conductance(2, c) > 0;
    };
    left_ = 0;
    for (std::size_t start = 0; start < count_; ++start) {
        if (seen[start])
            continue;
        seen[start] = 1;
        if (!conducts(start)) {
            removed[start] = 1;
            continue;
        }
        part.assign(1, start);
        std::size_t low_faces = 0, high_faces = 0;
        for (std::size_t next = 0; next < part.size(); ++next) {
            const std::size_t c = part[next];
            const std::array<int, 3> at{static_cast<int>(c % strides()[1]),
                                        static_cast<int>(c / strides()[1] % static_cast<std::size_t>(n_[1])),
                                        static_cast<int>(c / strides()[2])};
            for (std::size_t axis = 0; axis < 3; ++axis) {
                const bool reaches = open_[axis] && (through_nodes || conductance(axis, c) > 0);
                low_faces += reaches && at[axis] == 0 ? 1 : 0;
                high_faces += reaches && at[axis] + 1 == n_[axis] ? 1 : 0;
            }
            const auto visit = [&](std::size_t d) {
                if (!seen[d]) {
                    seen[d] = 1;
                    part.push_back(d);
                }
            };
            if (through_nodes) {
                for (int k = std::max(0, at[2] - 1); k <= std::min(n_[2] - 1, at[2] + 1); ++k)
                    for (int j = std::max(0, at[1] - 1); j <= std::min(n_[1] - 1, at[1] + 1); ++j)
                        for (int i = std::max(0, at[0] - 1); i <= std::min(n_[0] - 1, at[0] + 1); ++i)
                            if (conducts(index(i, j, k)))
                                visit(index(i, j, k));
                continue;
            }
            for (std::size_t axis = 0; axis < 3; ++axis) {
                if (conductance(axis, c) == 0)
                    continue;
                const std::size_t step = strides()[axis];
                if (at[axis] > 0 && conductance(axis, c - step) > 0)
                    visit(c - step);
                if (at[axis] + 1 < n_[axis] && conductance(axis, c + step) > 0)
                    visit(c + step);
            }
        }
        // One pair of open faces holds two pressures: both must be reached. With more pairs the pressure varies along
        // each face: two contacts will do, one for elements (a face of an element has four corners).
        const bool flows = open_pairs == 1 ? low_faces > 0 && high_faces > 0
                                           : low_faces + high_faces > (through_nodes ? 0U : 1U);
        if (flows)
            left_ += part.size();
        else
            for (const std::size_t c : part)
                removed[c] = 1;
    }
    removed_ = std::move(removed);
}

namespace {

// Half conductances of two samples in series.
double in_series(double a, double b)
{
    return a > 0 && b > 0 ? 2 / (1 / a + 1 / b) : 0.0;
}

KELVANE_VECTOR_CLONES void multiply_row(std::size_t count, const double* __restrict__ x,
                                        const double* __restrict__ ground, const double* __restrict__ ti,
                                        const std::array<const double*, 4>& t,
                                        const std::array<const double*, 4>& neighbour, double* __restrict__ y)
{
    for (std::size_t i = 0; i < count; ++i)
        y[i] = ground[i] * x[i];
    for (std::size_t i = 0; i + 1 < count; ++i)
        y[i] += ti[i] * (x[i] - x[i + 1]);
    for (std::size_t i = 1; i < count; ++i)
        y[i] += ti[i - 1] * (x[i] - x[i - 1]);
    for (std::size_t side = 0; side < 4; ++side) {
        const double* __restrict__ link = t[side];
        const double* __restrict__ other = neighbour[side];
        if (link)
            for (std::size_t i = 0; i < count; ++i)
                y[i] += link[i] * (x[i] - other[i]);
    }
}

class TwoPointSystem : public FlowSystem {
public:
    explicit TwoPointSystem(const Samples& samples) : samples_(samples), network_(sample_network(samples)) {}

    [[nodiscard]] std::size_t size() const override { return samples_.size(); }

    void multiply(std::span<const double> x, std::span<double> y) const override
    {
        const auto& n = samples_.n();
        const auto [one, row, plane] = samples_.strides();
        (void)one;
        for_parts(n[2], plane, [&, row = row, plane = plane](int k) {
            for (int j = 0; j < n[1]; ++j) {
                const std::size_t at = samples_.index(0, j, k);
                const double* tj = network_.conductance[1].data() + at;
                const double* tk = network_.conductance[2].data() + at;
                const double* here = x.data() + at;
                const bool j_low = j > 0, j_high = j + 1 < n[1], k_low = k > 0, k_high = k + 1 < n[2];
                multiply_row(row, here, network_.ground.data() + at, network_.conductance[0].data() + at,
                             {j_low ? tj - row : nullptr, j_high ? tj : nullptr, k_low ? tk - plane : nullptr,
                              k_high ? tk : nullptr},
                             {j_low ? here - row : nullptr, j_high ? here + row : nullptr,
                              k_low ? here - plane : nullptr, k_high ? here + plane : nullptr},
                             y.data() + at);
            }
        });
    }

    void residual(std::size_t axis, std::span<const double> w, std::span<double> r) const override
    {
        multiply(w, r);
        const auto& n = samples_.n();
        const std::size_t stride = samples_.strides()[axis];
        const std::vector<double>& t = network_.conductance[axis];
        const double step = 1.0 / n[axis];
        for_parts(n[2], samples_.strides()[2], [&](int k) {
            for (int j = 0; j < n[1]; ++j)
                for (int i = 0; i < n[0]; ++i) {
                    const std::size_t c = samples_.index(i, j, k);
                    const int at = std::array<int, 3>{i, j, k}[axis];
                    // Two-point flow over the half sample: twice the conductance times half the step.
                    const double end = samples_.open()[axis] ? samples_.conductance(axis, c) : 0.0;
                    const double in = at > 0 ? t[c - stride] : end;
                    const double out = at + 1 < n[axis] ? t[c] : end;
                    r[c] = step * (in - out) - r[c];
                }
        });
    }

    [[nodiscard]] double energy(std::size_t a, std::span<const double> wa, std::size_t b,
                                std::span<const double> wb) const override
    {
        const auto& n = samples_.n();
        return sum_parts(n[2], samples_.strides()[2], [&](int k) {
            double plane = 0;
            for (int j = 0; j < n[1]; ++j) {
                double row = 0;
                for (int i = 0; i < n[0]; ++i)
                    row += sample_energy({i, j, k}, a, wa, b, wb);
                plane += row;
            }
            return plane;
        });
    }

    void from_profile(std::size_t axis, std::span<const double> at_faces, std::span<double> w) const override
    {
        cell_profile(samples_, axis, at_faces, w);
    }

    [[nodiscard]] KCycle preconditioner() const override { return KCycle(network_.view()); }

private:
    // The faces above a sample, and those of the brick below it.
    [[nodiscard]] double sample_energy(const std::array<int, 3>& at, std::size_t a, std::span<const double> wa,
                                       std::size_t b, std::span<const double> wb) const
    {
        const auto& n = samples_.n();
        const std::size_t c = samples_.index(at[0], at[1], at[2]);
        double sum = 0;
        for (std::size_t axis = 0; axis < 3; ++axis) {
            const double step_a = axis == a ? 1.0 / n[axis] : 0.0;
            const double step_b = axis == b ? 1.0 / n[axis] : 0.0;
            const bool last = at[axis] + 1 == n[axis];
            if (!last) {
                const std::size_t d = c + samples_.strides()[axis];
                sum += network_.conductance[axis][c] * (step_a + (wa[c] - wa[d])) * (step_b + (wb[c] - wb[d]));
            }
            if (!samples_.open()[axis])
                continue;
            const double half = 2 * samples_.conductance(axis, c);
            if (last)
                sum += half * (step_a / 2 + wa[c]) * (step_b / 2 + wb[c]);
            if (at[axis] == 0)
                sum += half * (step_a / 2 - wa[c]) * (step_b / 2 - wb[c]);
        }
        return sum;
    }

    const Samples& samples_;
    Network network_;
};

} // namespace

Network sample_network(const Samples& samples)
{
    const auto& n = samples.n();
    Network network;
    network.n = n;
    for (auto& values : network.conductance)
        values.resize(samples.size());
    network.ground.resize(samples.size());
    const auto strides = samples.strides();
    for_parts(n[2], strides[2], [&](int k) {
        for (int j = 0; j < n[1]; ++j)
            for (int i = 0; i < n[0]; ++i) {
                const std::size_t c = samples.index(i, j, k);
                const std::array<int, 3> at{i, j, k};
                double ground = 0;
                for (std::size_t axis = 0; axis < 3; ++axis) {
                    const double own = samples.conductance(axis, c);
                    const bool last = at[axis] + 1 == n[axis];
                    network.conductance[axis][c] =
                        last ? 0.0 : in_series(own, samples.conductance(axis, c + strides[axis]));
                    if (samples.open()[axis])
                        ground += 2 * own * (int{last} + int{at[axis] == 0});
                }
                network.ground[c] = ground;
            }
    });
    return network;
}

std::unique_ptr<FlowSystem> make_two_point_system(const Samples& samples)
{
    return std::make_unique<TwoPointSystem>(samples);
}

void cell_profile(const Samples& samples, std::size_t axis, std::span<const double> at_faces, std::span<double> w)
{
    const auto& n = samples.n();
    for_parts(n[2], samples.strides()[2], [&](int k) {
        for (int j = 0; j < n[1]; ++j)
            for (int i = 0; i < n[0]; ++i) {
                const auto at = static_cast<std::size_t>(std::array<int, 3>{i, j, k}[axis]);
                const double p = at_faces.empty() ? 0.0 : (at_faces[at] + at_faces[at + 1]) / 2;
                w[samples.index(i, j, k)] = p - (1 - (static_cast<double>(at) + 0.5) / n[axis]);
            }
    });
}

} // namespace Kelvane::flow
