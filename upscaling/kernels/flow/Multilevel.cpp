#include "Multilevel.h"

#include "LargeBlockVector.h"
#include "MultilevelSweeps.h"

#include <array>
#include <cmath>
#include <cstdlib>
#include <vector>

namespace Kelvane::flow {
namespace {

constexpr std::size_t direct_size = 48; // unknowns at which a level is solved directly
constexpr double weak_axis = 0.3; // an axis whose mean conductance is below this part of the largest is not coarsened
constexpr double second_step = 0.25; // a coarse residual above this part of the right-hand side takes a second step

struct Shape {
    std::array<int, 3> n{1, 1, 1};
    std::size_t half = 1;

    explicit Shape(const std::array<int, 3>& size) : n(size), half((static_cast<std::size_t>(size[0]) + 1) / 2) {}
    [[nodiscard]] std::size_t stride() const { return 2 * half + 1; }
    [[nodiscard]] std::size_t plane() const { return stride() * static_cast<std::size_t>(n[1]); }
    [[nodiscard]] std::size_t size() const { return plane() * static_cast<std::size_t>(n[2]); }
    [[nodiscard]] std::size_t row(int j, int k) const
    {
        return static_cast<std::size_t>(k) * plane() + static_cast<std::size_t>(j) * stride();
    }
    // Place of unknown i within its row.
    [[nodiscard]] std::size_t place(int i) const
    {
        const auto m = static_cast<std::size_t>(i) / 2;
        return i % 2 == 0 ? m : half + 1 + m;
    }
};

} // namespace

struct KCycle::Level {
    explicit Level(const std::array<int, 3>& size) : shape(size), zeros(shape.plane(), 0.0F)
    {
        for (auto* values : {&t[0], &t[1], &t[2], &ground, &inverse_pivot, &x, &r, &more})
            values->assign(shape.size(), 0.0F);
    }

    Shape shape;
    std::array<int, 3> factor{1, 1, 1}; // fine unknowns in a coarse one along each axis
    std::vector<std::uint32_t> coarse_place; // of each place of a row within the coarse row
    std::array<std::vector<float>, 3> t;
    std::vector<float> ground, inverse_pivot;
    std::vector<float> x, r, more;
    std::vector<float> kept, product, spare; // of a coarse level: its first step, the matrix times both steps
    std::vector<float> inverse; // dense, of the coarsest level, unknowns in natural order
    std::vector<float> zeros;

    [[nodiscard]] PlaneView plane(int k) const
    {
        const std::size_t at = shape.row(0, k);
        return {shape.half,
                static_cast<std::size_t>(shape.n[1]),
                t[0].data() + at,
                t[1].data() + at,
                t[2].data() + at,
                k == 0 ? zeros.data() : t[2].data() + at - shape.plane(),
                ground.data() + at,
                inverse_pivot.data() + at,
                zeros.data()};
    }
    [[nodiscard]] const float* plane_of(const std::vector<float>& v, int k) const
    {
        return k < 0 || k >= shape.n[2] ? zeros.data() : v.data() + shape.row(0, k);
    }
    [[nodiscard]] PlaneVector around(const std::vector<float>& v, int k) const
    {
        return {plane_of(v, k - 1), plane_of(v, k), plane_of(v, k + 1)};
    }
    template <class Work> void for_planes(const Work& each) const
    {
        for_parts(shape.n[2], shape.plane(), each);
    }

    void factorise();
    void invert();
    /// z = approximate solution for r; for r - A x when x is given.
    void smooth(std::vector<float>& z, const std::vector<float>* from_x) const;
    void solve_directly();
    [[nodiscard]] std::size_t bytes() const;
};

void KCycle::Level::factorise()
{
    std::vector<float> rest(shape.size(), 0.0F);
    const PlaneView outside{shape.half, static_cast<std::size_t>(shape.n[1]), zeros.data(), zeros.data(), zeros.data(),
                            zeros.data(), zeros.data(), zeros.data(), zeros.data()};
    for (const int parity : {0, 1})
        for_parts((shape.n[2] + 1 - parity) / 2, shape.plane(), [&](int half_k) {
            const int k = 2 * half_k + parity;
            std::vector<float> scratch(shape.stride());
            const std::size_t at = shape.row(0, k);
            factorise_plane(plane(k), parity == 1, k > 0 ? plane(k - 1) : outside,
                            k + 1 < shape.n[2] ? plane(k + 1) : outside, around(rest, k), rest.data() + at,
                            inverse_pivot.data() + at, scratch.data());
        });
}

// Dense inverse by elimination; an unknown without a pivot is left out.
void KCycle::Level::invert()
{
    const auto& n = shape.n;
    const auto count = static_cast<std::size_t>(n[0]) * static_cast<std::size_t>(n[1]) * static_cast<std::size_t>(n[2]);
    const auto index = [&](int i, int j, int k) {
        return static_cast<std::size_t>(i) +
               static_cast<std::size_t>(n[0]) * (static_cast<std::size_t>(j) +
                                                 static_cast<std::size_t>(n[1]) * static_cast<std::size_t>(k));
    };
    // Conductances between all pairs and to ground; eliminating an unknown joins its neighbours in a star, and the
    // sums stay sums of positive numbers.
    std::vector<double> link(count * count, 0.0);
    std::vector<double> to_ground(count, 0.0);
    for (int k = 0; k < n[2]; ++k)
        for (int j = 0; j < n[1]; ++j)
            for (int i = 0; i < n[0]; ++i) {
                const std::size_t c = index(i, j, k);
                const std::size_t at = shape.row(j, k) + shape.place(i);
                to_ground[c] = static_cast<double>(ground[at]);
                const std::array<bool, 3> inside{i + 1 < n[0], j + 1 < n[1], k + 1 < n[2]};
                const std::array<std::size_t, 3> next{index(i + 1, j, k), index(i, j + 1, k), index(i, j, k + 1)};
                for (std::size_t axis = 0; axis < 3; ++axis)
                    if (inside[axis])
                        link[c * count + next[axis]] = link[next[axis] * count + c] =
                            static_cast<double>(t[axis][at]);
            }
    std::vector<double> pivots(count, 0.0);
    for (std::size_t c = 0; c < count; ++c) {
        double pivot = to_ground[c];
        for (std::size_t d = c + 1; d < count; ++d)
            pivot += link[c * count + d];
        pivots[c] = pivot;
        if (pivot <= 0)
            continue;
        for (std::size_t d = c + 1; d < count; ++d) {
            const double part = link[c * count + d] / pivot;
            if (part == 0)
                continue;
            to_ground[d] += part * to_ground[c];
            for (std::size_t e = c + 1; e < count; ++e)
                if (e != d)
                    link[d * count + e] += part * link[c * count + e];
        }
    }
    inverse.assign(count * count, 0.0F);
    std::vector<double> column(count);
    for (std::size_t unit = 0; unit < count; ++unit) {
        column.assign(count, 0.0);
        column[unit] = 1;
        for (std::size_t c = unit; c < count; ++c)
            if (pivots[c] > 0)
                for (std::size_t d = c + 1; d < count; ++d)
                    column[d] += link[c * count + d] / pivots[c] * column[c];
        for (std::size_t c = count; c-- > 0;) {
            double sum = column[c];
            for (std::size_t d = c + 1; d < count; ++d)
                sum += link[c * count + d] * column[d];
            column[c] = pivots[c] > 0 ? sum / pivots[c] : 0.0;
            inverse[c * count + unit] = static_cast<float>(column[c]);
        }
    }
}

void KCycle::Level::solve_directly()
{
    const auto& n = shape.n;
    std::vector<float> right;
    for (int k = 0; k < n[2]; ++k)
        for (int j = 0; j < n[1]; ++j)
            for (int i = 0; i < n[0]; ++i)
                right.push_back(r[shape.row(j, k) + shape.place(i)]);
    const float* row = inverse.data();
    for (int k = 0; k < n[2]; ++k)
        for (int j = 0; j < n[1]; ++j)
            for (int i = 0; i < n[0]; ++i, row += right.size()) {
                double sum = 0;
                for (std::size_t c = 0; c < right.size(); ++c)
                    sum += static_cast<double>(row[c]) * static_cast<double>(right[c]);
                x[shape.row(j, k) + shape.place(i)] = static_cast<float>(sum);
            }
}

void KCycle::Level::smooth(std::vector<float>& z, const std::vector<float>* from_x) const
{
    const std::size_t plane_size = shape.plane();
    const auto here = [&](int k) { return z.data() + shape.row(0, k); };
    // The right-hand side of a plane, worked out into the buffer where it is a residual.
    const auto right = [&](int k, std::vector<float>& buffer) {
        const float* own = r.data() + shape.row(0, k);
        if (!from_x)
            return own;
        buffer.resize(plane_size);
        residual_plane(plane(k), own, around(*from_x, k), buffer.data());
        return static_cast<const float*>(buffer.data());
    };
    for_parts((shape.n[2] + 1) / 2, plane_size, [&](int n) {
        std::vector<float> buffer;
        eliminate_even(plane(2 * n), right(2 * n, buffer), here(2 * n));
    });
    for_parts(shape.n[2] / 2, plane_size, [&](int n) {
        const int k = 2 * n + 1;
        std::vector<float> buffer;
        eliminate_odd(plane(k), right(k, buffer), here(k), plane_of(z, k - 1), plane_of(z, k + 1));
        substitute_odd(plane(k), here(k));
    });
    for_parts((shape.n[2] + 1) / 2, plane_size, [&](int n) {
        const int k = 2 * n;
        substitute_even(plane(k), here(k), plane_of(z, k - 1), plane_of(z, k + 1));
    });
}

std::size_t KCycle::Level::bytes() const
{
    std::size_t count = coarse_place.size();
    for (const auto* values : {&t[0], &t[1], &t[2], &ground, &inverse_pivot, &x, &r, &spare, &more, &kept, &product,
                               &inverse, &zeros})
        count += values->size();
    return count * sizeof(float);
}

struct KCycle::Hierarchy {
    std::vector<std::unique_ptr<Level>> levels;
    double scale = 1; // of the matrix

    bool add_coarser();
    void cycle(std::size_t l);
    void restrict_residual(std::size_t l);
    void add_coarse(std::size_t l);
    void solve(std::size_t l);
};

namespace {

// Coarsening along each axis: the strong ones by 2. (A lone strong axis by 4 takes nearly three times the iterations.)
std::array<int, 3> coarsening(const Shape& shape, const std::array<std::vector<float>, 3>& t)
{
    std::array<double, 3> strength{};
    for (std::size_t axis = 0; axis < 3; ++axis) {
        double faces = 1;
        for (std::size_t other = 0; other < 3; ++other)
            faces *= shape.n[other] - (other == axis ? 1 : 0);
        const double sum = sum_parts(shape.n[2], shape.plane(), [&](int k) {
            double plane = 0;
            const std::size_t first = shape.row(0, k);
            for (std::size_t n = first; n < first + shape.plane(); ++n)
                plane += static_cast<double>(t[axis][n]);
            return plane;
        });
        strength[axis] = faces > 0 ? sum / faces : 0.0;
    }
    const double largest = std::max({strength[0], strength[1], strength[2]});
    std::array<int, 3> factor{1, 1, 1};
    for (std::size_t axis = 0; axis < 3; ++axis)
        if (shape.n[axis] > 1 && strength[axis] > 0 && strength[axis] >= weak_axis * largest)
            factor[axis] = 2;
    return factor;
}

} // namespace

bool KCycle::Hierarchy::add_coarser()
{
    Level& fine = *levels.back();
    const Shape& shape = fine.shape;
    fine.factor = coarsening(shape, fine.t);
    if (fine.factor == std::array<int, 3>{1, 1, 1})
        return false;
    std::array<int, 3> size{};
    for (std::size_t axis = 0; axis < 3; ++axis)
        size[axis] = (shape.n[axis] + fine.factor[axis] - 1) / fine.factor[axis];
    auto level = std::make_unique<Level>(size);
    Level& coarse = *level;
    fine.coarse_place.assign(shape.stride(), static_cast<std::uint32_t>(coarse.shape.half));
    for (int i = 0; i < shape.n[0]; ++i)
        fine.coarse_place[shape.place(i)] =
            static_cast<std::uint32_t>(coarse.shape.place(i / fine.factor[0]));
    const auto& f = fine.factor;
    for_parts(size[2], shape.plane() * static_cast<std::size_t>(f[2]), [&](int coarse_k) {
        for (int k = coarse_k * f[2]; k < std::min(shape.n[2], (coarse_k + 1) * f[2]); ++k)
            for (int j = 0; j < shape.n[1]; ++j) {
                const std::size_t row = shape.row(j, k);
                const std::size_t coarse_row = coarse.shape.row(j / f[1], coarse_k);
                const bool leaves_j = (j + 1) % f[1] == 0;
                const bool leaves_k = (k + 1) % f[2] == 0;
                for (int i = 0; i < shape.n[0]; ++i) {
                    const std::size_t at = row + shape.place(i);
                    const std::size_t to = coarse_row + fine.coarse_place[shape.place(i)];
                    coarse.ground[to] += fine.ground[at];
                    if ((i + 1) % f[0] == 0)
                        coarse.t[0][to] += fine.t[0][at];
                    if (leaves_j)
                        coarse.t[1][to] += fine.t[1][at];
                    if (leaves_k)
                        coarse.t[2][to] += fine.t[2][at];
                }
            }
    });
    coarse.kept.assign(coarse.shape.size(), 0.0F);
    coarse.product.assign(coarse.shape.size(), 0.0F);
    coarse.spare.assign(coarse.shape.size(), 0.0F);
    levels.push_back(std::move(level));
    return true;
}

void KCycle::Hierarchy::restrict_residual(std::size_t l)
{
    const Level& fine = *levels[l];
    Level& coarse = *levels[l + 1];
    const auto& f = fine.factor;
    const std::size_t stride = fine.shape.stride();
    for_parts(coarse.shape.n[2], fine.shape.plane() * static_cast<std::size_t>(f[2]), [&](int coarse_k) {
        std::vector<float> row(stride);
        const int k_end = std::min(fine.shape.n[2], (coarse_k + 1) * f[2]);
        for (int coarse_j = 0; coarse_j < coarse.shape.n[1]; ++coarse_j) {
            std::fill(row.begin(), row.end(), 0.0F);
            const int j_end = std::min(fine.shape.n[1], (coarse_j + 1) * f[1]);
            for (int k = coarse_k * f[2]; k < k_end; ++k) {
                const PlaneView view = fine.plane(k);
                const PlaneVector x = fine.around(fine.x, k);
                for (int j = coarse_j * f[1]; j < j_end; ++j)
                    add_residual_row(view, static_cast<std::size_t>(j), fine.plane_of(fine.r, k), x, row.data());
            }
            float* to = coarse.r.data() + coarse.shape.row(coarse_j, coarse_k);
            std::fill(to, to + coarse.shape.stride(), 0.0F);
            for (std::size_t n = 0; n < stride; ++n)
                to[fine.coarse_place[n]] += row[n];
            to[coarse.shape.half] = 0;
        }
    });
}

void KCycle::Hierarchy::add_coarse(std::size_t l)
{
    Level& fine = *levels[l];
    const Level& coarse = *levels[l + 1];
    const auto& f = fine.factor;
    const std::size_t stride = fine.shape.stride();
    for_parts(coarse.shape.n[2], fine.shape.plane() * static_cast<std::size_t>(f[2]), [&](int coarse_k) {
        std::vector<float> row(stride);
        const int k_end = std::min(fine.shape.n[2], (coarse_k + 1) * f[2]);
        for (int coarse_j = 0; coarse_j < coarse.shape.n[1]; ++coarse_j) {
            const float* from = coarse.x.data() + coarse.shape.row(coarse_j, coarse_k);
            for (std::size_t n = 0; n < stride; ++n)
                row[n] = from[fine.coarse_place[n]];
            row[fine.shape.half] = 0;
            const int j_end = std::min(fine.shape.n[1], (coarse_j + 1) * f[1]);
            for (int k = coarse_k * f[2]; k < k_end; ++k)
                for (int j = coarse_j * f[1]; j < j_end; ++j) {
                    const std::size_t at = fine.shape.row(j, k);
                    add_row_where(fine.x.data() + at, row.data(), fine.inverse_pivot.data() + at, stride);
                }
        }
    });
}

// levels[l].x = approximate solution for levels[l].r, which is kept; on the finest of several levels x + more.
void KCycle::Hierarchy::cycle(std::size_t l)
{
    Level& level = *levels[l];
    if (l + 1 == levels.size()) {
        if (level.inverse.empty())
            level.smooth(level.x, nullptr);
        else
            level.solve_directly();
        return;
    }
    level.smooth(level.x, nullptr);
    restrict_residual(l);
    solve(l + 1);
    add_coarse(l);
    level.smooth(level.more, &level.x);
    if (l == 0)
        return; // apply() adds the two parts
    level.for_planes([&](int k) {
        const std::size_t at = level.shape.row(0, k);
        add_row(level.x.data() + at, level.more.data() + at, level.shape.plane());
    });
}

// One or two flexible steps on a coarse level.
void KCycle::Hierarchy::solve(std::size_t l)
{
    Level& level = *levels[l];
    cycle(l);
    if (l + 1 == levels.size() && !level.inverse.empty())
        return;
    const int planes = level.shape.n[2];
    const std::size_t plane = level.shape.plane();
    const auto products = [&](std::vector<float>& out, const std::vector<float>* other) {
        std::vector<std::array<double, 3>> parts(static_cast<std::size_t>(planes));
        level.for_planes([&](int k) {
            multiply_plane(level.plane(k), level.around(level.x, k), level.plane_of(level.r, k),
                           other ? level.plane_of(*other, k) : nullptr, out.data() + level.shape.row(0, k),
                           parts[static_cast<std::size_t>(k)].data());
        });
        std::array<double, 3> sums{};
        for (const auto& part : parts)
            for (std::size_t n = 0; n < 3; ++n)
                sums[n] += part[n];
        return sums;
    };
    const auto [energy, length, unused] = products(level.product, nullptr);
    if (!(energy > 0))
        return;
    const double step = length / energy;
    std::swap(level.kept, level.x);
    std::vector<std::array<double, 2>> parts(static_cast<std::size_t>(planes));
    level.for_planes([&](int k) {
        const std::size_t at = level.shape.row(0, k);
        subtract_measured(level.r.data() + at, static_cast<float>(-step), level.product.data() + at, plane,
                          parts[static_cast<std::size_t>(k)].data());
    });
    double before = 0, after = 0;
    for (const auto& part : parts) {
        before += part[0];
        after += part[1];
    }
    double first = step, second = 0;
    if (after > second_step * second_step * before) {
        cycle(l);
        const auto [second_energy, second_length, cross] = products(level.spare, &level.product);
        const double rest = second_energy - cross * cross / energy;
        if (rest > 0 && std::isfinite(rest)) {
            second = second_length / rest;
            first = step - cross * second / energy;
        }
    }
    level.for_planes([&](int k) {
        const std::size_t at = level.shape.row(0, k);
        if (second == 0)
            std::fill_n(level.x.data() + at, plane, 0.0F);
        combine(level.x.data() + at, static_cast<float>(second), static_cast<float>(first), level.kept.data() + at,
                plane);
    });
}

KCycle::KCycle(const SevenPointMatrix& matrix) : hierarchy_(std::make_unique<Hierarchy>())
{
    auto finest = std::make_unique<Level>(matrix.n);
    Level& level = *finest;
    const auto& n = matrix.n;
    double largest = 0;
    for (const auto& values : {matrix.conductance[0], matrix.conductance[1], matrix.conductance[2], matrix.ground})
        for (const double value : values)
            largest = std::max(largest, value);
    hierarchy_->scale = largest > 0 ? largest : 1;
    const double factor = 1 / hierarchy_->scale;
    for_parts(n[2], level.shape.plane(), [&](int k) {
        for (int j = 0; j < n[1]; ++j)
            for (int i = 0; i < n[0]; ++i) {
                const std::size_t at = level.shape.row(j, k) + level.shape.place(i);
                const auto c = static_cast<std::size_t>(i) +
                               static_cast<std::size_t>(n[0]) *
                                   (static_cast<std::size_t>(j) +
                                    static_cast<std::size_t>(n[1]) * static_cast<std::size_t>(k));
                const std::array<bool, 3> inside{i + 1 < n[0], j + 1 < n[1], k + 1 < n[2]};
                for (std::size_t axis = 0; axis < 3; ++axis)
                    level.t[axis][at] =
                        inside[axis] ? static_cast<float>(matrix.conductance[axis][c] * factor) : 0.0F;
                level.ground[at] = static_cast<float>(matrix.ground[c] * factor);
            }
    });
    hierarchy_->levels.push_back(std::move(finest));
    const auto size_of = [](const Level& l) {
        return static_cast<std::size_t>(l.shape.n[0]) * static_cast<std::size_t>(l.shape.n[1]) *
               static_cast<std::size_t>(l.shape.n[2]);
    };
    while (size_of(*hierarchy_->levels.back()) > direct_size && hierarchy_->add_coarser()) {
    }
    for (auto& each : hierarchy_->levels)
        each->factorise();
    if (size_of(*hierarchy_->levels.back()) <= direct_size)
        hierarchy_->levels.back()->invert();
}

KCycle::~KCycle() = default;
KCycle::KCycle(KCycle&&) noexcept = default;
KCycle& KCycle::operator=(KCycle&&) noexcept = default;

void KCycle::apply(std::span<const double> right_hand_side, std::span<double> correction)
{
    const std::size_t plane = right_hand_side.size() / static_cast<std::size_t>(hierarchy_->levels.front()->shape.n[2]);
    std::vector<double> largest_of(static_cast<std::size_t>(hierarchy_->levels.front()->shape.n[2]), 0.0);
    for_parts(static_cast<int>(largest_of.size()), plane, [&](int k) {
        double& largest = largest_of[static_cast<std::size_t>(k)];
        for (const double value : right_hand_side.subspan(static_cast<std::size_t>(k) * plane, plane))
            largest = std::max(largest, std::abs(value));
    });
    apply(right_hand_side, correction, *std::max_element(largest_of.begin(), largest_of.end()));
}

void KCycle::apply(std::span<const double> right_hand_side, std::span<double> correction, double unit)
{
    Level& level = *hierarchy_->levels.front();
    const bool two_parts = hierarchy_->levels.size() > 1;
    const auto& n = level.shape.n;
    const auto row_length = static_cast<std::size_t>(n[0]);
    const auto natural = [&](int j, int k) {
        return row_length *
               (static_cast<std::size_t>(j) + static_cast<std::size_t>(n[1]) * static_cast<std::size_t>(k));
    };
    if (!(unit > 0) || !std::isfinite(unit)) {
        std::fill(correction.begin(), correction.end(), 0.0);
        return;
    }
    level.for_planes([&](int k) {
        for (int j = 0; j < n[1]; ++j) {
            const std::size_t at = level.shape.row(j, k);
            take_row(right_hand_side.data() + natural(j, k), row_length, 1 / unit, level.inverse_pivot.data() + at,
                     level.r.data() + at);
        }
    });
    hierarchy_->cycle(0);
    const double back = unit / hierarchy_->scale;
    level.for_planes([&](int k) {
        for (int j = 0; j < n[1]; ++j) {
            const std::size_t at = level.shape.row(j, k);
            give_row(level.x.data() + at, two_parts ? level.more.data() + at : level.zeros.data(), row_length, back,
                     correction.data() + natural(j, k));
        }
    });
}

int KCycle::levels() const
{
    return static_cast<int>(hierarchy_->levels.size());
}

std::size_t KCycle::bytes() const
{
    std::size_t sum = 0;
    for (const auto& level : hierarchy_->levels)
        sum += level->bytes();
    return sum;
}

} // namespace Kelvane::flow
