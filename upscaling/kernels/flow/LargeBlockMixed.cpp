#include "LargeBlockSystem.h"

#include "LargeBlockVector.h"

#include <cmath>

// Lowest-order mixed elements on a brick. The flow through a face is linear in between along the normal, so the
// fluxes of one line of samples are tied to one another and to no other line:
//
//   (m_a + m_b)/3 u_f + m_a/6 u_(f-1) + m_b/6 u_(f+1) = p_a - p_b,   m = 1 / conductance of the sample,
//
// with a and b the samples before and behind face f, one of them missing on an open face of the brick. A sample without
// conductivity closes its two faces. Each line's matrix is factorised once (L D L^T) and applied by substitution.

namespace Kelvane::flow {
namespace {

constexpr std::size_t lanes = 8; // lines along I that are swept together

// Factors of all lines along one axis: 1 / D of each face and the multiplier from it to the next one; 0 for closed
// faces.
struct LineFactors {
    std::vector<double> inverse, multiplier;
};

// Factors of one line; numbers stand `stride` apart.
template <class Conductance>
void factorise_line(int n, bool open, const Conductance& conductance, double* inverse, double* multiplier,
                    std::size_t stride)
{
    double before = 0; // conductance of the sample before the face
    double carried = 0; // off-diagonal of the previous face times its multiplier
    for (int f = 0; f <= n; ++f) {
        const double behind = f < n ? conductance(f) : 0.0;
        const bool edge = f == 0 || f == n;
        const bool active = edge ? open && (f == 0 ? behind : before) > 0 : before > 0 && behind > 0;
        const std::size_t at = static_cast<std::size_t>(f) * stride;
        inverse[at] = 0;
        multiplier[at] = 0;
        if (active) {
            const double diagonal = (before > 0 ? 1 / before : 0.0) / 3 + (behind > 0 ? 1 / behind : 0.0) / 3;
            inverse[at] = 1 / (diagonal - carried);
            const bool last = f == n || (f + 1 == n ? !open : !(conductance(f + 1) > 0));
            if (!last) {
                const double off = 1 / behind / 6;
                multiplier[at] = off * inverse[at];
                carried = off * multiplier[at];
            } else {
                carried = 0;
            }
        } else {
            carried = 0;
        }
        before = behind;
    }
}

// Sweeps over n + 1 faces of `width` lines side by side. The pressure of sample s stands at p + s * p_stride; y of the
// sample receives what flows out minus what flows in, added when `add`. `u` has (n + 1) * width numbers.
struct Lines {
    std::size_t n, width;
    const double* inverse;
    const double* multiplier;
    std::size_t factor_stride;
    const double* p;
    double* y;
    std::size_t stride;
    double* u;
};

KELVANE_VECTOR_CLONES void sweep_lines(const Lines& lines, bool add, double step)
{
    const std::size_t width = lines.width;
    const std::size_t n = lines.n;
    for (std::size_t f = 0; f <= n; ++f) {
        double* __restrict__ u = lines.u + f * width;
        const double* __restrict__ before = lines.p + (f == 0 ? 0 : f - 1) * lines.stride;
        const double* __restrict__ behind = lines.p + (f == n ? n - 1 : f) * lines.stride;
        if (f == 0)
            for (std::size_t l = 0; l < width; ++l)
                u[l] = step / 2 - behind[l];
        else if (f == n)
            for (std::size_t l = 0; l < width; ++l)
                u[l] = step / 2 + before[l];
        else
            for (std::size_t l = 0; l < width; ++l)
                u[l] = step + (before[l] - behind[l]);
        if (f > 0) {
            const double* __restrict__ multiplier = lines.multiplier + (f - 1) * lines.factor_stride;
            const double* __restrict__ last = u - width;
            for (std::size_t l = 0; l < width; ++l)
                u[l] -= multiplier[l] * last[l];
        }
    }
    for (std::size_t f = n + 1; f-- > 0;) {
        double* __restrict__ u = lines.u + f * width;
        const double* __restrict__ inverse = lines.inverse + f * lines.factor_stride;
        const double* __restrict__ multiplier = lines.multiplier + f * lines.factor_stride;
        if (f == n) {
            for (std::size_t l = 0; l < width; ++l)
                u[l] *= inverse[l];
            continue;
        }
        const double* __restrict__ next = u + width;
        double* __restrict__ y = lines.y + f * lines.stride;
        if (add)
            for (std::size_t l = 0; l < width; ++l) {
                u[l] = u[l] * inverse[l] - multiplier[l] * next[l];
                y[l] += next[l] - u[l];
            }
        else
            for (std::size_t l = 0; l < width; ++l) {
                u[l] = u[l] * inverse[l] - multiplier[l] * next[l];
                y[l] = next[l] - u[l];
            }
    }
}

KELVANE_VECTOR_CLONES void negate(double* values, std::size_t count)
{
    for (std::size_t n = 0; n < count; ++n)
        values[n] = -values[n];
}

class MixedSystem : public FlowSystem {
public:
    explicit MixedSystem(const Samples& samples) : samples_(samples)
    {
        const auto n = sizes();
        groups_ = (n[1] + lanes - 1) / lanes;
        allocate(factors_[0], n[2] * groups_ * (n[0] + 1) * lanes);
        allocate(factors_[1], n[2] * (n[1] + 1) * n[0]);
        allocate(factors_[2], (n[2] + 1) * n[1] * n[0]);
        const auto& open = samples.open();
        const auto factorise = [&](std::size_t axis, int i, int j, int k) {
            const std::size_t first = samples_.index(i, j, k);
            const std::size_t stride = samples_.strides()[axis];
            const auto [at, face_stride] = line(axis, i, j, k);
            factorise_line(
                samples_.n()[axis], open[axis],
                [&](int s) { return samples_.conductance(axis, first + static_cast<std::size_t>(s) * stride); },
                factors_[axis].inverse.data() + at, factors_[axis].multiplier.data() + at, face_stride);
        };
        for_parts(samples.n()[2], n[0] * n[1], [&](int k) {
            for (int j = 0; j < samples_.n()[1]; ++j)
                factorise(0, 0, j, k);
            for (int i = 0; i < samples_.n()[0]; ++i)
                factorise(1, i, 0, k);
        });
        for_parts(samples.n()[1], n[0] * n[2], [&](int j) {
            for (int i = 0; i < samples_.n()[0]; ++i)
                factorise(2, i, j, 0);
        });
    }

    [[nodiscard]] std::size_t size() const override { return samples_.size(); }

    void multiply(std::span<const double> x, std::span<double> y) const override { balance(x, y, {0, 0, 0}); }

    void residual(std::size_t axis, std::span<const double> w, std::span<double> r) const override
    {
        std::array<double, 3> step{};
        step[axis] = 1.0 / samples_.n()[axis];
        balance(w, r, step);
        const std::size_t plane = samples_.strides()[2];
        for_parts(samples_.n()[2], plane,
                  [&](int k) { negate(r.data() + static_cast<std::size_t>(k) * plane, plane); });
    }

    [[nodiscard]] double energy(std::size_t a, std::span<const double> wa, std::size_t b,
                                std::span<const double> wb) const override
    {
        const auto& n = samples_.n();
        double sum = sum_parts(n[2], samples_.strides()[2], [&](int k) {
            double plane = 0;
            std::vector<double> u(static_cast<std::size_t>(std::max(n[0], n[1])) + 1);
            for (int j = 0; j < n[1]; ++j)
                plane += line_energy(0, 0, j, k, a, wa, b, wb, u);
            for (int i = 0; i < n[0]; ++i)
                plane += line_energy(1, i, 0, k, a, wa, b, wb, u);
            return plane;
        });
        sum += sum_parts(n[1], static_cast<std::size_t>(n[0]) * static_cast<std::size_t>(n[2]), [&](int j) {
            double plane = 0;
            std::vector<double> u(static_cast<std::size_t>(n[2]) + 1);
            for (int i = 0; i < n[0]; ++i)
                plane += line_energy(2, i, j, 0, a, wa, b, wb, u);
            return plane;
        });
        return sum;
    }

    void from_profile(std::size_t axis, std::span<const double> at_faces, std::span<double> w) const override
    {
        cell_profile(samples_, axis, at_faces, w);
    }

    // Exact integration makes the flux matrix a third to once the lumped one: A is 1 to 3 times the two-point network.
    [[nodiscard]] KCycle preconditioner() const override { return KCycle(sample_network(samples_).view()); }

private:
    static void allocate(LineFactors& factors, std::size_t count)
    {
        factors.inverse.assign(count, 0.0);
        factors.multiplier.assign(count, 0.0);
    }
    [[nodiscard]] std::array<std::size_t, 3> sizes() const
    {
        const auto& n = samples_.n();
        return {static_cast<std::size_t>(n[0]), static_cast<std::size_t>(n[1]), static_cast<std::size_t>(n[2])};
    }
    // Place of the first face of the line through (i, j, k) among the factors of the axis, and the distance between
    // faces.
    [[nodiscard]] std::pair<std::size_t, std::size_t> line(std::size_t axis, int at_i, int at_j, int at_k) const
    {
        const auto n = sizes();
        const auto i = static_cast<std::size_t>(at_i), j = static_cast<std::size_t>(at_j),
                   k = static_cast<std::size_t>(at_k);
        switch (axis) {
        case 0: return {(k * groups_ + j / lanes) * (n[0] + 1) * lanes + j % lanes, lanes};
        case 1: return {k * (n[1] + 1) * n[0] + i, n[0]};
        default: return {j * n[0] + i, n[1] * n[0]};
        }
    }

    // y = what flows out of each sample minus what flows in, for pressure x plus a fall by step per sample.
    void balance(std::span<const double> x, std::span<double> y, const std::array<double, 3>& step) const
    {
        const auto n = sizes();
        for_parts(samples_.n()[2], samples_.strides()[2], [&](int k) {
            std::vector<double> buffer(std::max((3 * n[0] + 1) * lanes, (n[1] + 1) * n[0]));
            double* p = buffer.data();
            double* out = p + n[0] * lanes;
            double* u = out + n[0] * lanes;
            for (std::size_t group = 0; group < groups_; ++group) {
                const std::size_t first = static_cast<std::size_t>(k) * n[0] * n[1] + group * lanes * n[0];
                const std::size_t used = std::min(lanes, n[1] - group * lanes);
                for (std::size_t l = 0; l < used; ++l)
                    for (std::size_t i = 0; i < n[0]; ++i)
                        p[i * lanes + l] = x[first + l * n[0] + i];
                for (std::size_t l = used; l < lanes; ++l)
                    for (std::size_t i = 0; i < n[0]; ++i)
                        p[i * lanes + l] = 0;
                const std::size_t at = (static_cast<std::size_t>(k) * groups_ + group) * (n[0] + 1) * lanes;
                sweep_lines({n[0], lanes, factors_[0].inverse.data() + at, factors_[0].multiplier.data() + at, lanes, p,
                             out, lanes, u},
                            false, step[0]);
                for (std::size_t l = 0; l < used; ++l)
                    for (std::size_t i = 0; i < n[0]; ++i)
                        y[first + l * n[0] + i] = out[i * lanes + l];
            }
            const auto [at, face_stride] = line(1, 0, 0, k);
            const std::size_t plane = static_cast<std::size_t>(k) * n[0] * n[1];
            sweep_lines({n[1], n[0], factors_[1].inverse.data() + at, factors_[1].multiplier.data() + at, face_stride,
                         x.data() + plane, y.data() + plane, n[0], buffer.data()},
                        true, step[1]);
        });
        for_parts(samples_.n()[1], n[0] * n[2], [&](int j) {
            std::vector<double> u((n[2] + 1) * n[0]);
            const auto [at, face_stride] = line(2, 0, j, 0);
            const std::size_t row = samples_.index(0, j, 0);
            sweep_lines({n[2], n[0], factors_[2].inverse.data() + at, factors_[2].multiplier.data() + at, face_stride,
                         x.data() + row, y.data() + row, n[0] * n[1], u.data()},
                        true, step[2]);
        });
    }

    [[nodiscard]] double line_energy(std::size_t axis, int i, int j, int k, std::size_t a, std::span<const double> wa,
                                     std::size_t b, std::span<const double> wb, std::vector<double>& u) const
    {
        const auto n = static_cast<std::size_t>(samples_.n()[axis]);
        const std::size_t stride = samples_.strides()[axis];
        const std::size_t first = samples_.index(i, j, k);
        const auto [at, face_stride] = line(axis, i, j, k);
        const double* inverse = factors_[axis].inverse.data() + at;
        const double* multiplier = factors_[axis].multiplier.data() + at;
        const auto drop = [&](std::span<const double> w, std::size_t direction, std::size_t f) {
            const double step = direction == axis ? 1.0 / static_cast<double>(n) : 0.0;
            if (f == 0)
                return step / 2 - w[first];
            if (f == n)
                return step / 2 + w[first + (n - 1) * stride];
            return step + (w[first + (f - 1) * stride] - w[first + f * stride]);
        };
        u[0] = drop(wa, a, 0);
        for (std::size_t f = 1; f <= n; ++f)
            u[f] = drop(wa, a, f) - multiplier[(f - 1) * face_stride] * u[f - 1];
        double next = 0;
        double sum = 0;
        for (std::size_t f = n + 1; f-- > 0;) {
            next = u[f] * inverse[f * face_stride] - multiplier[f * face_stride] * next;
            sum += next * drop(wb, b, f);
        }
        return sum;
    }

    const Samples& samples_;
    std::array<LineFactors, 3> factors_;
    std::size_t groups_ = 0;
};

} // namespace

std::unique_ptr<FlowSystem> make_mixed_system(const Samples& samples)
{
    return std::make_unique<MixedSystem>(samples);
}

} // namespace Kelvane::flow
