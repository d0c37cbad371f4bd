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
        for (auto* values : {&t[0], &t[1], &t[2], &ground, &inverse_pivot, &x, &r, &spare, &more})
            values->assign(shape.size(), 0.0F);
    }

    Shape shape;
    std::array<int, 3> factor{1, 1, 1}; // fine unknowns in a coarse one along each axis
    std::vector<std::uint32_t> coarse_place; // of each place of a row within the coarse row
    std::array<std::vector<float>, 3> t;
    std::vector<float> ground, inverse_pivot;
    std::vector<float> x, r, spare, more;
    std::vector<float> kept, product; // first step of a coarse level and the matrix times it
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
    void smooth(const std::vector<float>& right, std::vector<float>& z) const;
    void solve_directly();
    [[nodiscard]] std::size_t bytes() const;
};

// Pivots of the incomplete factorisation. With E the part of a pivot that is not a conductance to a later unknown,
//   pivot = E + sum of conductances to later unknowns,
//   E = ground + sum over earlier unknowns e of t (pivot_e - t) / pivot_e,
// and pivot_e - t is again a sum without subtraction.
void KCycle::Level::factorise()
{
    std::vector<float>& rest = spare;
    const auto stride = static_cast<std::ptrdiff_t>(shape.stride());
    const auto plane_size = static_cast<std::ptrdiff_t>(shape.plane());
    const auto half = static_cast<std::ptrdiff_t>(shape.half);
    const auto eliminate = [&](int i, int j, int k) {
        const auto c = static_cast<std::ptrdiff_t>(shape.row(j, k) + shape.place(i));
        const bool even_i = i % 2 == 0;
        const bool even_k = k % 2 == 0;
        // Conductances to the six neighbours of an unknown: I-, I+, J-, J+, K-, K+.
        const auto links = [&](std::ptrdiff_t at, int jj, int kk, bool even) {
            std::array<double, 6> link{};
            const auto a = static_cast<std::size_t>(at);
            link[0] = static_cast<double>(t[0][static_cast<std::size_t>(even ? at + half : at - half - 1)]);
            link[1] = static_cast<double>(t[0][a]);
            link[2] = jj > 0 ? static_cast<double>(t[1][static_cast<std::size_t>(at - stride)]) : 0.0;
            link[3] = static_cast<double>(t[1][a]);
            link[4] = kk > 0 ? static_cast<double>(t[2][static_cast<std::size_t>(at - plane_size)]) : 0.0;
            link[5] = static_cast<double>(t[2][a]);
            return link;
        };
        // Which links lead to unknowns eliminated later.
        const auto later = [](bool even, bool even_plane) {
            return std::array<bool, 6>{even, even, false, true, even_plane, even_plane};
        };
        const std::array<double, 6> own = links(c, j, k, even_i);
        const std::array<bool, 6> own_later = later(even_i, even_k);
        double pivot_rest = static_cast<double>(ground[static_cast<std::size_t>(c)]);
        double later_sum = 0;
        for (std::size_t side = 0; side < 6; ++side) {
            if (own[side] == 0)
                continue;
            if (own_later[side]) {
                later_sum += own[side];
                continue;
            }
            // The place of an odd unknown's I neighbours: its even ones stand half + 1 and half before it.
            const std::array<std::ptrdiff_t, 6> to{-half - 1, -half, -stride, stride, -plane_size, plane_size};
            const std::ptrdiff_t e = c + to[side];
            const std::size_t back = side ^ 1U;
            const bool along_i = side < 2;
            const int e_j = j + (side == 2 ? -1 : 0);
            const int e_k = k + (side == 4 ? -1 : side == 5 ? 1 : 0);
            const std::array<double, 6> e_links = links(e, e_j, e_k, along_i != even_i);
            const std::array<bool, 6> e_later = later(along_i != even_i, e_k % 2 == 0);
            double others = static_cast<double>(rest[static_cast<std::size_t>(e)]);
            for (std::size_t s = 0; s < 6; ++s)
                if (s != back && e_later[s])
                    others += e_links[s];
            pivot_rest += own[side] * (others / (others + own[side]));
        }
        rest[static_cast<std::size_t>(c)] = static_cast<float>(pivot_rest);
        const double pivot = pivot_rest + later_sum;
        inverse_pivot[static_cast<std::size_t>(c)] = pivot > 0 ? static_cast<float>(1 / pivot) : 0.0F;
    };
    for (const int parity : {0, 1})
        for_parts((shape.n[2] + 1 - parity) / 2, shape.plane(), [&](int half_k) {
            const int k = 2 * half_k + parity;
            for (int j = 0; j < shape.n[1]; ++j)
                for (const int i_parity : {0, 1})
                    for (int i = i_parity; i < shape.n[0]; i += 2)
                        eliminate(i, j, k);
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

void KCycle::Level::smooth(const std::vector<float>& right, std::vector<float>& z) const
{
    const std::size_t plane_size = shape.plane();
    const auto here = [&](int k) { return z.data() + shape.row(0, k); };
    for_parts((shape.n[2] + 1) / 2, plane_size,
              [&](int n) { eliminate_even(plane(2 * n), right.data() + shape.row(0, 2 * n), here(2 * n)); });
    for_parts(shape.n[2] / 2, plane_size, [&](int n) {
        const int k = 2 * n + 1;
        eliminate_odd(plane(k), right.data() + shape.row(0, k), here(k), plane_of(z, k - 1), plane_of(z, k + 1));
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

// levels[l].x = approximate solution for levels[l].r, which is kept.
void KCycle::Hierarchy::cycle(std::size_t l)
{
    Level& level = *levels[l];
    if (l + 1 == levels.size()) {
        if (level.inverse.empty())
            level.smooth(level.r, level.x);
        else
            level.solve_directly();
        return;
    }
    level.smooth(level.r, level.x);
    restrict_residual(l);
    solve(l + 1);
    add_coarse(l);
    level.for_planes([&](int k) {
        residual_plane(level.plane(k), level.plane_of(level.r, k), level.around(level.x, k),
                       level.spare.data() + level.shape.row(0, k));
    });
    level.smooth(level.spare, level.more);
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
    Level& level = *hierarchy_->levels.front();
    const auto& n = level.shape.n;
    const auto row_length = static_cast<std::size_t>(n[0]);
    const auto natural = [&](int j, int k) {
        return row_length * (static_cast<std::size_t>(j) + static_cast<std::size_t>(n[1]) * static_cast<std::size_t>(k));
    };
    std::vector<double> largest_of(static_cast<std::size_t>(n[2]), 0.0);
    level.for_planes([&](int k) {
        double largest = 0;
        for (std::size_t c = natural(0, k); c < natural(0, k + 1); ++c)
            largest = std::max(largest, std::abs(right_hand_side[c]));
        largest_of[static_cast<std::size_t>(k)] = largest;
    });
    const double largest = *std::max_element(largest_of.begin(), largest_of.end());
    if (!(largest > 0) || !std::isfinite(largest)) {
        std::fill(correction.begin(), correction.end(), 0.0);
        return;
    }
    const double factor = 1 / largest;
    level.for_planes([&](int k) {
        for (int j = 0; j < n[1]; ++j) {
            const double* from = right_hand_side.data() + natural(j, k);
            float* even = level.r.data() + level.shape.row(j, k);
            float* odd = even + level.shape.half + 1;
            std::size_t i = 0;
            for (; i + 1 < row_length; i += 2) {
                even[i / 2] = static_cast<float>(from[i] * factor);
                odd[i / 2] = static_cast<float>(from[i + 1] * factor);
            }
            if (i < row_length)
                even[i / 2] = static_cast<float>(from[i] * factor);
            const float* pivot = level.inverse_pivot.data() + level.shape.row(j, k);
            for (std::size_t at = 0; at < level.shape.stride(); ++at)
                even[at] = pivot[at] > 0 ? even[at] : 0.0F;
        }
    });
    hierarchy_->cycle(0);
    const double back = largest / hierarchy_->scale;
    level.for_planes([&](int k) {
        for (int j = 0; j < n[1]; ++j) {
            double* to = correction.data() + natural(j, k);
            const float* even = level.x.data() + level.shape.row(j, k);
            const float* odd = even + level.shape.half + 1;
            std::size_t i = 0;
            for (; i + 1 < row_length; i += 2) {
                to[i] = static_cast<double>(even[i / 2]) * back;
                to[i + 1] = static_cast<double>(odd[i / 2]) * back;
            }
            if (i < row_length)
                to[i] = static_cast<double>(even[i / 2]) * back;
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
