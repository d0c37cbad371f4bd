#include "SparseSolver.h"

#include "FloatingParts.h"
#include "LocalMatrices.h"
#include "Multilevel.h"

#include <Eigen/Sparse>
#include <Eigen/SparseCholesky>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <memory>

namespace Kelvane::flow {

namespace {

using Matrix = Eigen::SparseMatrix<double>;
using Vector = Eigen::VectorXd;

void ask(const ProgressCheck& progress, double done)
{
    if (progress && !progress(done))
        throw Cancelled{};
}

std::array<double, 6> half_conductances_of(const Instance& instance, int sample)
{
    const Vector3 k{instance.permeability(0, sample), instance.permeability(1, sample),
                    instance.permeability(2, sample)};
    std::array<double, 6> half{};
    if (instance.geometry != nullptr) {
        half_conductances((*instance.geometry)[sample], k, half.data());
        return half;
    }
    const std::array<double, 3> shape = brick_shape(instance);
    for (int face = 0; face < 6; ++face)
        half[face] = 2 * shape[face / 2] * k[face / 2];
    return half;
}

/// A plan's local matrices for one instance: links are matrices of two degrees of freedom.
class LocalSystem {
public:
    LocalSystem(const BlockPlan& plan, const Instance& instance) : plan_(plan)
    {
        if (plan.discretisation == Discretisation::TwoPoint)
            load_links(instance);
        else
            load_matrices(instance);
        for (int right = 0; right < right_sides(plan.flow); ++right) {
            for (int number = 0; number < plan.givens; ++number)
                given_.push_back(instance.given(plan, right, number));
        }
    }

    /// work(degrees of freedom, how many, lower triangle)
    template <class Work> void for_elements(const Work& work) const
    {
        const int pairs = pair_count(local_);
        for (std::size_t n = 0; n < dofs_.size() / static_cast<std::size_t>(local_); ++n)
            work(dofs_.data() + n * static_cast<std::size_t>(local_), local_,
                 entries_.data() + n * static_cast<std::size_t>(pairs));
    }

    [[nodiscard]] double value(int dof, int right, const std::vector<Vector>& solution) const
    {
        return dof >= 0 ? solution[right][dof]
                        : given_[static_cast<std::size_t>(right) * plan_.givens + given_number(dof)];
    }

    /// Holds parts that reach no given value at one of their unknowns. False when nothing can flow.
    [[nodiscard]] bool pin_floating()
    {
        FloatingParts parts(plan_);
        for_elements([&](const int* dof, int local, const double* s) {
            parts.join(dof, local, [s](int r, int c) { return s[pair_count(r) + c]; });
        });
        pins_ = parts.representatives();
        return !parts.blocked();
    }

    /// Lower triangle and right-hand sides. Unknowns without connection get the equation x = 0.
    void assemble(Matrix& matrix, std::vector<Vector>& right_hand_sides) const
    {
        const int rights = right_sides(plan_.flow);
        right_hand_sides.assign(rights, Vector::Zero(plan_.unknowns));
        std::vector<Eigen::Triplet<double>> triplets;
        Vector diagonal = Vector::Zero(plan_.unknowns);
        for_elements([&](const int* dof, int local, const double* s) {
            for (int r = 0; r < local; ++r) {
                if (dof[r] >= 0)
                    diagonal[dof[r]] += s[pair_count(r) + r];
                for (int c = 0; c < r; ++c) {
                    const double entry = s[pair_count(r) + c];
                    if (dof[r] == sealed_dof || dof[c] == sealed_dof || entry == 0)
                        continue;
                    if (dof[r] >= 0 && dof[c] >= 0) {
                        triplets.emplace_back(std::max(dof[r], dof[c]), std::min(dof[r], dof[c]), entry);
                    } else if (dof[r] >= 0 || dof[c] >= 0) {
                        const int unknown = std::max(dof[r], dof[c]);
                        const int given = given_number(std::min(dof[r], dof[c]));
                        for (int right = 0; right < rights; ++right)
                            right_hand_sides[right][unknown] -=
                                entry * given_[static_cast<std::size_t>(right) * plan_.givens + given];
                    }
                }
            }
        });
        for (const int unknown : pins_)
            diagonal[unknown] = std::max(2 * diagonal[unknown], 1.0);
        for (int n = 0; n < plan_.unknowns; ++n)
            triplets.emplace_back(n, n, diagonal[n] > 0 ? diagonal[n] : 1.0);
        matrix.resize(plan_.unknowns, plan_.unknowns);
        matrix.setFromTriplets(triplets.begin(), triplets.end());
    }

    /// Balance of each unknown, summed from differences of pressure: what is left after rounding of the solution alone.
    void residual(int right, const std::vector<Vector>& solution, Vector& left) const
    {
        left.setZero();
        for_elements([&](const int* dof, int local, const double* s) {
            double x[8];
            differences(dof, local, s, right, solution, x);
            for (int r = 0; r < local; ++r) {
                for (int c = 0; c <= r; ++c) {
                    const double entry = s[pair_count(r) + c];
                    if (dof[r] >= 0)
                        left[dof[r]] -= entry * x[c];
                    if (dof[c] >= 0 && c != r)
                        left[dof[c]] -= entry * x[r];
                }
            }
        });
    }

    [[nodiscard]] Energies energies(const std::vector<Vector>& solution) const
    {
        constexpr int first[6] = {0, 1, 2, 0, 0, 1};
        constexpr int second[6] = {0, 1, 2, 1, 2, 2};
        Energies sum{};
        const int rights = right_sides(plan_.flow);
        for_elements([&](const int* dof, int local, const double* s) {
            double x[3][8] = {};
            for (int right = 0; right < rights; ++right)
                differences(dof, local, s, right, solution, x[right]);
            for (int e = 0; e < 6; ++e) {
                if (second[e] >= rights)
                    continue;
                for (int r = 0; r < local; ++r) {
                    for (int c = 0; c <= r; ++c) {
                        const double product = x[first[e]][r] * x[second[e]][c];
                        const double mirrored = r == c ? 0.0 : x[first[e]][c] * x[second[e]][r];
                        sum[e] += s[pair_count(r) + c] * (product + mirrored);
                    }
                }
            }
        });
        return sum;
    }

private:
    /// Pressures less their mean, weighted by the element's diagonal, for the matrix is blind to constants.
    void differences(const int* dof, int local, const double* s, int right, const std::vector<Vector>& solution,
                     double* x) const
    {
        double base = 0;
        double weight = 0;
        for (int l = 0; l < local; ++l) {
            x[l] = dof[l] == sealed_dof ? 0.0 : value(dof[l], right, solution);
            base += s[pair_count(l) + l] * x[l];
            weight += s[pair_count(l) + l];
        }
        for (int l = 0; l < local && weight > 0; ++l)
            x[l] -= base / weight;
    }

    void load_links(const Instance& instance)
    {
        local_ = 2;
        for (const BlockPlan::Link& link : plan_.links) {
            double conductance = half_conductances_of(instance, link.sample)[link.face];
            if (link.other >= 0) {
                const double own = conductance;
                in_series(own, half_conductances_of(instance, link.other)[link.other_face], conductance);
            }
            dofs_.push_back(plan_.unknown_of[link.sample]);
            dofs_.push_back(link.other >= 0 ? plan_.unknown_of[link.other] : given_dof(link.given));
            entries_.insert(entries_.end(), {conductance, -conductance, conductance});
        }
    }

    void load_matrices(const Instance& instance)
    {
        local_ = plan_.local;
        dofs_ = plan_.dofs;
        const auto pairs = static_cast<std::size_t>(pair_count(local_));
        entries_.resize(pairs * static_cast<std::size_t>(plan_.samples));
        const std::array<double, 3> shape = brick_shape(instance);
        for (int sample = 0; sample < plan_.samples; ++sample) {
            const Vector3 k{instance.permeability(0, sample), instance.permeability(1, sample),
                            instance.permeability(2, sample)};
            const int* dof = dofs_.data() + static_cast<std::ptrdiff_t>(sample) * local_;
            double* s = entries_.data() + static_cast<std::size_t>(sample) * pairs;
            const double c[3] = {shape[0] * k[0], shape[1] * k[1], shape[2] * k[2]};
            if (instance.geometry != nullptr)
                mixed_hex((*instance.geometry)[sample], k, dof, s);
            else if (local_ == 6)
                mixed_brick(c, dof, s);
            else
                conforming_brick(c, s);
        }
    }

    const BlockPlan& plan_;
    int local_ = 0;
    std::vector<int> dofs_;
    std::vector<double> entries_;
    std::vector<double> given_;
    std::vector<int> pins_;
};

/// z = approximate inverse times r.
using Preconditioner = std::function<void(const Vector& r, Vector& z)>;

/// The multilevel cycle for the links of a two-point plan.
Preconditioner network_cycle(const BlockPlan& plan, const LocalSystem& system)
{
    const auto count = static_cast<std::size_t>(plan.samples);
    struct Data {
        std::array<std::vector<double>, 3> conductance;
        std::vector<double> ground;
        std::vector<double> r;
        std::vector<double> z;
        std::unique_ptr<KCycle> cycle;
    };
    auto data = std::make_shared<Data>();
    for (auto& conductance : data->conductance)
        conductance.resize(count);
    data->ground.resize(count);
    data->r.resize(count);
    data->z.resize(count);
    std::size_t link = 0;
    system.for_elements([&](const int*, int, const double* s) {
        const BlockPlan::Link& at = plan.links[link++];
        if (at.other >= 0)
            data->conductance[at.face / 2][at.sample] = s[0];
        else
            data->ground[at.sample] += s[0];
    });
    data->cycle = std::make_unique<KCycle>(SevenPointMatrix{
        plan.n, {data->conductance[0], data->conductance[1], data->conductance[2]}, data->ground});
    return [data, &plan](const Vector& r, Vector& z) {
        for (int sample = 0; sample < plan.samples; ++sample)
            data->r[sample] = r[plan.unknown_of[sample]];
        data->cycle->apply(data->r, data->z);
        for (int sample = 0; sample < plan.samples; ++sample)
            z[plan.unknown_of[sample]] = data->z[sample];
    };
}

Preconditioner incomplete_cholesky(const Matrix& matrix)
{
    // In the order of the samples: without fill-in a minimum degree order only parts neighbours, which costs up to twice
    // the iterations and the reach of the caches.
    auto factor = std::make_shared<Eigen::IncompleteCholesky<double, Eigen::Lower, Eigen::NaturalOrdering<int>>>();
    factor->compute(matrix);
    if (factor->info() == Eigen::Success)
        return [factor](const Vector& r, Vector& z) { z = factor->solve(r); };
    const Vector inverse = matrix.diagonal().cwiseInverse();
    return [inverse](const Vector& r, Vector& z) { z = inverse.cwiseProduct(r); };
}

/// For the pressures on faces: incomplete factorisation before and after a cycle on the two-point network of the
/// samples, which the mixed system is spectrally close to. A face takes the pressures of its two samples, weighted by
/// their half conductances.
Preconditioner mixed_cycle(const BlockPlan& plan, const Instance& instance, const Matrix& matrix,
                           const ProgressCheck& progress)
{
    struct Data {
        explicit Data(const BlockPlan& mixed) : plan(mixed.n, Discretisation::TwoPoint, mixed.flow) {}
        BlockPlan plan;
        Preconditioner cycle;
        Preconditioner smoother;
        Eigen::SparseMatrix<double, Eigen::RowMajor> to_faces;
        Vector left, change, coarse_left, coarse_change, product;
        double damping = 1;
    };
    auto data = std::make_shared<Data>(plan);
    ask(progress, 0);
    data->cycle = network_cycle(data->plan, LocalSystem(data->plan, instance));
    ask(progress, 0);
    data->smoother = incomplete_cholesky(matrix);
    ask(progress, 0);
    std::vector<Eigen::Triplet<double>> weights;
    for (const BlockPlan::Link& link : data->plan.links) {
        if (link.other < 0)
            continue;
        const int face = plan.dofs[static_cast<std::size_t>(link.sample) * 6 + static_cast<std::size_t>(link.face)];
        const double own = half_conductances_of(instance, link.sample)[link.face];
        const double other = half_conductances_of(instance, link.other)[link.other_face];
        if (!(own + other > 0))
            continue;
        weights.emplace_back(face, data->plan.unknown_of[link.sample], own / (own + other));
        weights.emplace_back(face, data->plan.unknown_of[link.other], other / (own + other));
    }
    data->to_faces.resize(plan.unknowns, data->plan.unknowns);
    data->to_faces.setFromTriplets(weights.begin(), weights.end());
    data->coarse_change.setZero(data->plan.unknowns);
    // A smoother must not amplify: the matrix has positive entries off its diagonal, and what the factorisation leaves
    // out may make it too small by a factor, which some power iterations find.
    Vector& x = data->left;
    x = matrix.diagonal().cwiseSqrt().cwiseInverse();
    for (Eigen::Index n = 0; n < x.size(); n += 2)
        x[n] = -x[n];
    double largest = 1;
    for (int step = 0; step < 12; ++step) {
        ask(progress, 0);
        x /= x.norm();
        data->product.noalias() = matrix.selfadjointView<Eigen::Lower>() * x;
        data->smoother(data->product, x);
        largest = std::max(largest, x.norm());
    }
    data->damping = 1 / (1.1 * largest);
    return [data, &matrix](const Vector& r, Vector& z) {
        data->smoother(r, z);
        z *= data->damping;
        data->product.noalias() = matrix.selfadjointView<Eigen::Lower>() * z;
        data->left = r - data->product;
        data->coarse_left.noalias() = data->to_faces.transpose() * data->left;
        data->cycle(data->coarse_left, data->coarse_change);
        data->change.noalias() = data->to_faces * data->coarse_change;
        data->product.noalias() = matrix.selfadjointView<Eigen::Lower>() * data->change;
        const double curvature = data->change.dot(data->product);
        if (curvature > 0) {
            const double step = data->change.dot(data->left) / curvature;
            z += step * data->change;
            data->left -= step * data->product;
        }
        data->smoother(data->left, data->change);
        z += data->damping * data->change;
    };
}

/// Flexible conjugate gradients from zero.
void iterate(const Matrix& matrix, const Vector& right, const Preconditioner& precondition, double tolerance,
             Vector& x, SparseAnswer& answer, const ProgressCheck& progress)
{
    const double whole = right.norm();
    x.setZero(right.size());
    if (!(whole > 0))
        return;
    const int most = 2000 + static_cast<int>(right.size() / 10);
    Vector r = right;
    Vector z = Vector::Zero(right.size());
    Vector p;
    Vector q;
    double left = whole;
    double carried = 0;
    double best = whole;
    int since_best = 0;
    for (int step = 0; step < most && left > tolerance * whole; ++step) {
        ask(progress, std::clamp(std::log(left / whole) / std::log(tolerance), 0.0, 1.0));
        precondition(r, z);
        if (step == 0)
            p = z;
        else
            p = z - (z.dot(q) * carried) * p;
        const double fresh = r.dot(z);
        q.noalias() = matrix.selfadjointView<Eigen::Lower>() * p;
        const double curvature = p.dot(q);
        if (!(curvature > 0) || !std::isfinite(fresh) || fresh == 0)
            break;
        carried = 1 / curvature;
        x += (fresh / curvature) * p;
        r -= (fresh / curvature) * q;
        left = r.norm();
        ++answer.iterations;
        since_best = left < 0.5 * best ? 0 : since_best + 1;
        best = since_best == 0 ? left : best;
        if (since_best > 500)
            break;
    }
    answer.residual = std::max(answer.residual, left / whole);
    answer.failed = answer.failed || !(left <= tolerance * whole);
}

} // namespace

SparseAnswer solve_sparse(const BlockPlan& plan, const Instance& instance, bool exact, double tolerance,
                          const ProgressCheck& progress)
{
    SparseAnswer answer;
    ask(progress, 0);
    LocalSystem system(plan, instance);
    ask(progress, 0);
    if (instance.has_zero && !system.pin_floating())
        return answer;
    ask(progress, 0);
    Matrix matrix;
    std::vector<Vector> right_hand_sides;
    system.assemble(matrix, right_hand_sides);
    std::vector<Vector> solution(right_hand_sides.size(), Vector::Zero(plan.unknowns));
    ask(progress, 0);
    if (plan.unknowns == 0)
        return {.energies = system.energies(solution)};
    // A factorisation cannot be stopped; beyond this it takes a second and more.
    constexpr int most_factored = 15000;
    const bool factored = exact && plan.unknowns <= most_factored;
    if (exact && !factored) {
        answer.failed = true;
        tolerance = std::min(tolerance, 1e-12);
    }
    if (factored) {
        Eigen::SimplicialLDLT<Matrix, Eigen::Lower> factor(matrix);
        answer.failed = factor.info() != Eigen::Success;
        Vector left(plan.unknowns);
        for (std::size_t right = 0; right < right_hand_sides.size() && !answer.failed; ++right) {
            ask(progress, 0.5);
            const double whole = right_hand_sides[right].norm();
            // The factor is as good as its pivots; the balance summed from differences mends what contrast has cost.
            double before = std::numeric_limits<double>::infinity();
            left = right_hand_sides[right];
            for (int step = 0; step < 4; ++step) {
                const double now = left.norm();
                if (!(now < 0.1 * before))
                    break;
                before = now;
                solution[right] += factor.solve(left);
                system.residual(static_cast<int>(right), solution, left);
            }
            answer.residual = std::max(answer.residual, whole > 0 ? left.norm() / whole : 0.0);
            answer.failed = answer.failed || !solution[right].allFinite();
        }
    } else {
        const Preconditioner precondition = plan.discretisation == Discretisation::TwoPoint
                                                ? network_cycle(plan, system)
                                                : plan.discretisation == Discretisation::Mixed
                                                ? mixed_cycle(plan, instance, matrix, progress)
                                                : incomplete_cholesky(matrix);
        for (std::size_t right = 0; right < right_hand_sides.size(); ++right)
            iterate(matrix, right_hand_sides[right], precondition, tolerance, solution[right], answer, progress);
    }
    answer.energies = system.energies(solution);
    if (instance.has_zero)
        clear_rounding(answer.energies);
    for (double& energy : answer.energies) {
        if (!std::isfinite(energy)) {
            energy = 0;
            answer.failed = true;
        }
    }
    return answer;
}

} // namespace Kelvane::flow
