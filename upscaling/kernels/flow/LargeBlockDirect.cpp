#include "LargeBlockDirect.h"

#include "LargeBlockFrontal.h"
#include "LargeBlockVector.h"

#include <cmath>
#include <limits>
#include <utility>

namespace Kelvane::flow {
namespace {

using Place = FrontalCholesky::Place;

constexpr std::uint32_t no_unknown = std::numeric_limits<std::uint32_t>::max();

// Sizes at which even the estimate of the work would take long.
constexpr double most_unknowns = 2e6;

// Unknowns of the matrix and their numbers among those of the vectors.
struct Numbering {
    std::vector<std::uint32_t> unknown_of; // by place in the vectors, no_unknown where none
    std::vector<std::size_t> vector_of;    // by unknown
    std::vector<Place> places;

    void add(std::size_t at, const Place& place)
    {
        unknown_of[at] = static_cast<std::uint32_t>(places.size());
        vector_of.push_back(at);
        places.push_back(place);
    }
};

template <class Visit> void for_each_place(const std::array<int, 3>& n, const Visit& visit)
{
    std::size_t at = 0;
    for (int k = 0; k < n[2]; ++k)
        for (int j = 0; j < n[1]; ++j)
            for (int i = 0; i < n[0]; ++i)
                visit(Place{i, j, k}, at++);
}

// The unknowns are those of the vectors.
class PlainDirect : public DirectSolver {
public:
    PlainDirect(Numbering numbering, int parity, const std::vector<MatrixEntry>& entries,
                const Lodex::ProgressCheck& progress)
        : vector_of_(std::move(numbering.vector_of)), cholesky(std::move(numbering.places), parity, entries, progress)
    {
    }
    void solve(std::span<const double> b, std::span<double> x) const override
    {
        std::vector<double> v(vector_of_.size());
        for (std::size_t n = 0; n < v.size(); ++n)
            v[n] = b[vector_of_[n]];
        cholesky.solve(v);
        std::fill(x.begin(), x.end(), 0.0);
        for (std::size_t n = 0; n < v.size(); ++n)
            x[vector_of_[n]] = v[n];
    }

private:
    std::vector<std::size_t> vector_of_;

public:
    FrontalCholesky cholesky;
};

std::unique_ptr<PlainDirect> two_point(const Samples& samples, const Lodex::ProgressCheck& progress)
{
    const Network network = sample_network(samples);
    const auto stride = samples.strides();
    std::vector<double> diagonal = network.ground;
    for (std::size_t axis = 0; axis < 3; ++axis)
        for (std::size_t c = 0; c < samples.size(); ++c)
            if (network.conductance[axis][c] > 0) {
                diagonal[c] += network.conductance[axis][c];
                diagonal[c + stride[axis]] += network.conductance[axis][c];
            }
    Numbering numbering;
    numbering.unknown_of.assign(samples.size(), no_unknown);
    for_each_place(samples.n(), [&](const Place& place, std::size_t c) {
        if (diagonal[c] > 0)
            numbering.add(c, {2 * place[0] + 1, 2 * place[1] + 1, 2 * place[2] + 1});
    });
    std::vector<MatrixEntry> entries;
    for (std::size_t c = 0; c < samples.size(); ++c) {
        const std::uint32_t own = numbering.unknown_of[c];
        if (own == no_unknown)
            continue;
        entries.push_back({own, own, diagonal[c]});
        for (std::size_t axis = 0; axis < 3; ++axis)
            if (network.conductance[axis][c] > 0)
                entries.push_back({own, numbering.unknown_of[c + stride[axis]], -network.conductance[axis][c]});
    }
    return std::make_unique<PlainDirect>(std::move(numbering), 1, entries, progress);
}

bool on_open_face(const Samples& samples, const Place& node)
{
    for (std::size_t axis = 0; axis < 3; ++axis)
        if (samples.open()[axis] && (node[axis] == 0 || node[axis] == samples.n()[axis]))
            return true;
    return false;
}

std::unique_ptr<PlainDirect> conforming(const Samples& samples, const Lodex::ProgressCheck& progress)
{
    const auto& n = samples.n();
    const std::array<int, 3> nodes{n[0] + 1, n[1] + 1, n[2] + 1};
    const auto node = [&](const Place& at) {
        return static_cast<std::size_t>(at[0]) +
               static_cast<std::size_t>(nodes[0]) *
                   (static_cast<std::size_t>(at[1]) +
                    static_cast<std::size_t>(nodes[1]) * static_cast<std::size_t>(at[2]));
    };
    std::vector<std::uint8_t> used(node({0, 0, nodes[2]}), 0);
    const auto corner = [](Place cell, unsigned which) {
        return Place{cell[0] + static_cast<int>(which & 1U), cell[1] + static_cast<int>(which >> 1U & 1U),
                     cell[2] + static_cast<int>(which >> 2U)};
    };
    for_each_place(n, [&](const Place& cell, std::size_t c) {
        if (samples.conductance(0, c) > 0 || samples.conductance(1, c) > 0 || samples.conductance(2, c) > 0)
            for (unsigned which = 0; which < 8; ++which)
                used[node(corner(cell, which))] = 1;
    });
    Numbering numbering;
    numbering.unknown_of.assign(used.size(), no_unknown);
    for_each_place(nodes, [&](const Place& at, std::size_t number) {
        if (used[number] && !on_open_face(samples, at))
            numbering.add(number, {2 * at[0], 2 * at[1], 2 * at[2]});
    });
    std::vector<MatrixEntry> entries;
    for_each_place(n, [&](const Place& cell, std::size_t c) {
        for (unsigned a = 0; a < 8; ++a)
            for (unsigned b = a; b < 8; ++b) {
                const std::uint32_t row = numbering.unknown_of[node(corner(cell, a))];
                const std::uint32_t column = numbering.unknown_of[node(corner(cell, b))];
                if (row == no_unknown || column == no_unknown)
                    continue;
                double value = 0;
                for (unsigned axis = 0; axis < 3; ++axis) {
                    double product = samples.conductance(axis, c) / 36;
                    for (unsigned other = 0; other < 3; ++other) {
                        const bool same = ((a ^ b) >> other & 1U) == 0;
                        product *= other == axis ? (same ? 1 : -1) : (same ? 2 : 1);
                    }
                    value += product;
                }
                if (value != 0)
                    entries.push_back({row, column, value});
            }
    });
    return std::make_unique<PlainDirect>(std::move(numbering), 0, entries, progress);
}

// Hybrid form: unknowns are the pressures on the faces. A sample with conductance c_a along each axis has the outward
// flows c_a [4 2; 2 4] (p - faces), and p follows from their sum being the source.
class HybridDirect : public DirectSolver {
public:
    HybridDirect(const Samples& samples, const Lodex::ProgressCheck& progress)
        : samples_(samples), numbering_(number(samples)), cholesky(numbering_.places, 0, assemble(), progress)
    {
    }

    void solve(std::span<const double> b, std::span<double> x) const override
    {
        std::vector<double> faces(numbering_.places.size(), 0.0);
        for_each_place(samples_.n(), [&](const Place& cell, std::size_t c) {
            const Sample sample = at(cell, c);
            if (sample.whole == 0)
                return;
            for (std::size_t f = 0; f < 6; ++f)
                if (sample.face[f] != no_unknown)
                    faces[sample.face[f]] += 6 * sample.conductance[f / 2] * b[c] / sample.whole;
        });
        cholesky.solve(faces);
        for_each_place(samples_.n(), [&](const Place& cell, std::size_t c) {
            const Sample sample = at(cell, c);
            double sum = b[c];
            for (std::size_t f = 0; f < 6; ++f)
                if (sample.face[f] != no_unknown)
                    sum += 6 * sample.conductance[f / 2] * faces[sample.face[f]];
            x[c] = sample.whole > 0 ? sum / sample.whole : 0.0;
        });
    }

private:
    struct Sample {
        std::array<double, 3> conductance{};
        std::array<std::uint32_t, 6> face{}; // lower and upper one along each axis
        double whole = 0;                    // sum of all flows for p = 1, faces at 0
    };

    // Faces along the axes one after the other, each axis with one more layer than samples.
    [[nodiscard]] static std::size_t face_index(const Samples& samples, std::size_t axis, Place at)
    {
        std::size_t first = 0;
        const auto count = [&](std::size_t a, std::size_t axis_of_layer) {
            return static_cast<std::size_t>(samples.n()[a]) + (a == axis_of_layer ? 1 : 0);
        };
        for (std::size_t before = 0; before < axis; ++before)
            first += count(0, before) * count(1, before) * count(2, before);
        return first + static_cast<std::size_t>(at[0]) +
               count(0, axis) * (static_cast<std::size_t>(at[1]) + count(1, axis) * static_cast<std::size_t>(at[2]));
    }

    static Numbering number(const Samples& samples)
    {
        Numbering numbering;
        const auto& n = samples.n();
        numbering.unknown_of.assign(face_index(samples, 2, {0, 0, n[2] + 1}), no_unknown);
        for (std::size_t axis = 0; axis < 3; ++axis) {
            std::array<int, 3> layers = n;
            ++layers[axis];
            for_each_place(layers, [&](const Place& at, std::size_t) {
                const bool low = at[axis] == 0, high = at[axis] == n[axis];
                if (samples.open()[axis] && (low || high))
                    return;
                const std::size_t behind = samples.index(at[0], at[1], at[2]);
                const bool conducts = (!high && samples.conductance(axis, behind) > 0) ||
                                      (!low && samples.conductance(axis, behind - samples.strides()[axis]) > 0);
                if (!conducts)
                    return;
                Place place{2 * at[0] + 1, 2 * at[1] + 1, 2 * at[2] + 1};
                --place[axis];
                numbering.add(face_index(samples, axis, at), place);
            });
        }
        return numbering;
    }

    [[nodiscard]] Sample at(const Place& cell, std::size_t c) const
    {
        Sample sample;
        for (std::size_t axis = 0; axis < 3; ++axis) {
            sample.conductance[axis] = samples_.conductance(axis, c);
            sample.whole += 12 * sample.conductance[axis];
            Place upper = cell;
            ++upper[axis];
            sample.face[2 * axis] = numbering_.unknown_of[face_index(samples_, axis, cell)];
            sample.face[2 * axis + 1] = numbering_.unknown_of[face_index(samples_, axis, upper)];
            if (sample.conductance[axis] == 0)
                sample.face[2 * axis] = sample.face[2 * axis + 1] = no_unknown;
        }
        return sample;
    }

    [[nodiscard]] std::vector<MatrixEntry> assemble() const
    {
        std::vector<MatrixEntry> entries;
        for_each_place(samples_.n(), [&](const Place& cell, std::size_t c) {
            const Sample sample = at(cell, c);
            for (std::size_t f = 0; f < 6; ++f)
                for (std::size_t g = f; g < 6; ++g) {
                    if (sample.face[f] == no_unknown || sample.face[g] == no_unknown)
                        continue;
                    const double cf = sample.conductance[f / 2], cg = sample.conductance[g / 2];
                    const double direct = f == g ? 4 * cf : f / 2 == g / 2 ? 2 * cf : 0.0;
                    entries.push_back({sample.face[f], sample.face[g], direct - 36 * cf * (cg / sample.whole)});
                }
        });
        return entries;
    }

    const Samples& samples_;
    Numbering numbering_;

public:
    FrontalCholesky cholesky;
};

template <class Solver>
std::unique_ptr<DirectSolver> factorised(std::unique_ptr<Solver> solver, const Lodex::ProgressCheck& progress)
{
    if (solver->cholesky.bytes() > DirectSolver::most_bytes ||
        solver->cholesky.operations() > DirectSolver::most_operations)
        return nullptr;
    solver->cholesky.factorise(progress);
    return solver;
}

} // namespace

std::unique_ptr<DirectSolver> DirectSolver::make(const Samples& samples, Discretisation discretisation,
                                                 const Lodex::ProgressCheck& progress)
{
    const double unknowns = static_cast<double>(samples.size()) * (discretisation == Discretisation::Mixed ? 3 : 1);
    if (unknowns > most_unknowns)
        return nullptr;
    switch (discretisation) {
    case Discretisation::Mixed: return factorised(std::make_unique<HybridDirect>(samples, progress), progress);
    case Discretisation::Conforming: return factorised(conforming(samples, progress), progress);
    case Discretisation::TwoPoint: break;
    }
    return factorised(two_point(samples, progress), progress);
}

Convergence refine(const FlowSystem& system, const DirectSolver& direct, std::size_t axis, std::span<double> w,
                   double tolerance, const Lodex::ProgressCheck& progress)
{
    std::vector<double> r(system.size()), x(system.size());
    const auto left = [&] {
        system.residual(axis, w, r);
        return std::sqrt(dot(r, r));
    };
    system.from_profile(axis, {}, x);
    system.residual(axis, x, r);
    const double whole = std::sqrt(dot(r, r));
    Convergence state;
    if (!(whole > 0)) {
        state.reached = true;
        state.energy = system.energy(axis, w, axis, w);
        return state;
    }
    double best = std::numeric_limits<double>::infinity();
    constexpr int most_steps = 10;
    for (int step = 0; step < most_steps; ++step) {
        const double now = left();
        state.residual = now / whole;
        // At least two solutions: the second one shows what rounding left in the first.
        if (step >= 2 && (state.residual <= tolerance || now > best / 2))
            break;
        best = std::min(best, now);
        if (progress && !progress(std::min(1.0, 0.2 * step)))
            throw Lodex::Cancelled{};
        direct.solve(r, x);
        add_scaled(w, 1, x);
    }
    state.reached = state.residual <= tolerance;
    state.energy = system.energy(axis, w, axis, w);
    return state;
}

} // namespace Kelvane::flow
