#include "LargeBlockFrontal.h"

#include <Eigen/Dense>

#include <algorithm>
#include <cmath>
#include <limits>

namespace Kelvane::flow {
namespace {

constexpr std::size_t leaf_size = 48;
constexpr Eigen::Index panel = 96;
constexpr double least_pivot = 1e-14; // of the diagonal before elimination

constexpr std::size_t asking_size = 4096; // unknowns between two questions whether to go on

using Dense = Eigen::Map<Eigen::MatrixXd>;

void ask(const Lodex::ProgressCheck& progress, double done)
{
    if (progress && !progress(done))
        throw Lodex::Cancelled{};
}

} // namespace

struct FrontalCholesky::Progressing {
    const Lodex::ProgressCheck& check;
    double whole, done = 0;

    void add(double operations)
    {
        done += operations;
        ask(check, std::min(1.0, done / whole));
    }
};

FrontalCholesky::FrontalCholesky(std::vector<Place> places, int parity, const std::vector<MatrixEntry>& entries,
                                 const Lodex::ProgressCheck& progress)
{
    std::vector<std::uint32_t> all(places.size());
    for (std::size_t n = 0; n < all.size(); ++n)
        all[n] = static_cast<std::uint32_t>(n);
    order_.reserve(all.size());
    dissect(std::move(all), places, parity, progress);
    std::vector<std::uint32_t> rank(places.size());
    for (std::size_t n = 0; n < order_.size(); ++n)
        rank[order_[n]] = static_cast<std::uint32_t>(n);
    starts_.assign(places.size() + 1, 0);
    for (const MatrixEntry& entry : entries)
        ++starts_[std::min(rank[entry.row], rank[entry.column]) + 1];
    for (std::size_t n = 0; n < places.size(); ++n)
        starts_[n + 1] += starts_[n];
    entries_.resize(entries.size());
    std::vector<std::size_t> next(starts_.begin(), starts_.end() - 1);
    for (const MatrixEntry& entry : entries) {
        const auto [low, high] = std::minmax(rank[entry.row], rank[entry.column]);
        entries_[next[low]++] = {high, entry.value};
    }
    find_boundaries(progress);
}

// Appends the unknowns to the order, those of a separating plane after the two sides; returns their front.
std::uint32_t FrontalCholesky::dissect(std::vector<std::uint32_t> unknowns, const std::vector<Place>& places,
                                       int parity, const Lodex::ProgressCheck& progress)
{
    if (unknowns.size() > asking_size)
        ask(progress, 0);
    Front front;
    Place low{}, high{};
    if (!unknowns.empty())
        low = high = places[unknowns.front()];
    for (const std::uint32_t u : unknowns)
        for (std::size_t axis = 0; axis < 3; ++axis) {
            low[axis] = std::min(low[axis], places[u][axis]);
            high[axis] = std::max(high[axis], places[u][axis]);
        }
    std::size_t axis = 0;
    for (std::size_t other = 1; other < 3; ++other)
        if (high[other] - low[other] > high[axis] - low[axis])
            axis = other;
    int plane = (low[axis] + high[axis]) / 2;
    if ((plane - parity) % 2 != 0)
        ++plane;
    if (unknowns.size() > leaf_size && plane > low[axis] && plane < high[axis]) {
        std::vector<std::uint32_t> before, behind, on;
        for (const std::uint32_t u : unknowns)
            (places[u][axis] < plane ? before : places[u][axis] > plane ? behind : on).push_back(u);
        unknowns.clear();
        unknowns.shrink_to_fit();
        for (auto* side : {&before, &behind})
            if (!side->empty())
                front.children.push_back(dissect(std::move(*side), places, parity, progress));
        unknowns = std::move(on);
    }
    front.first = static_cast<std::uint32_t>(order_.size());
    front.own = static_cast<std::uint32_t>(unknowns.size());
    order_.insert(order_.end(), unknowns.begin(), unknowns.end());
    fronts_.push_back(std::move(front));
    return static_cast<std::uint32_t>(fronts_.size() - 1);
}

void FrontalCholesky::find_boundaries(const Lodex::ProgressCheck& progress)
{
    std::size_t stack = 0; // updates waiting for their parents
    for (Front& front : fronts_) {
        if (front.first / asking_size != (front.first + front.own) / asking_size)
            ask(progress, 0);
        const std::uint32_t end = front.first + front.own;
        for (std::size_t n = starts_[front.first]; n < starts_[end]; ++n)
            if (entries_[n].first >= end)
                front.boundary.push_back(entries_[n].first);
        for (const std::uint32_t child : front.children)
            for (const std::uint32_t later : fronts_[child].boundary)
                if (later >= end)
                    front.boundary.push_back(later);
        std::ranges::sort(front.boundary);
        front.boundary.erase(std::unique(front.boundary.begin(), front.boundary.end()), front.boundary.end());
        const std::size_t left = front.boundary.size();
        const std::size_t size = front.own + left;
        front.factor = factor_numbers_;
        factor_numbers_ += size * front.own;
        front_numbers_ = std::max(front_numbers_, size * size);
        for (const std::uint32_t child : front.children)
            stack -= fronts_[child].boundary.size() * fronts_[child].boundary.size();
        stack += left * left;
        stack_numbers_ = std::max(stack_numbers_, stack);
        operations_ += static_cast<double>(front.own) * static_cast<double>(size) * static_cast<double>(size);
    }
    bytes_ = static_cast<double>(factor_numbers_ + front_numbers_ + stack_numbers_) * sizeof(double);
}

// Eliminates the first `own` columns of a dense symmetric matrix (lower half), panel by panel.
void FrontalCholesky::eliminate(double* dense, std::size_t size, std::size_t own, Progressing& progressing)
{
    if (own == 0)
        return;
    const auto m = static_cast<Eigen::Index>(size);
    const auto s = static_cast<Eigen::Index>(own);
    Dense f(dense, m, m);
    const Eigen::VectorXd diagonal = f.diagonal().head(s);
    for (Eigen::Index first = 0; first < s; first += panel) {
        const Eigen::Index width = std::min(panel, s - first);
        for (Eigen::Index c = first; c < first + width; ++c) {
            const double pivot = f(c, c);
            const Eigen::Index below = m - c - 1;
            if (!(pivot > least_pivot * diagonal(c))) {
                f(c, c) = std::numeric_limits<double>::infinity();
                f.col(c).tail(below).setZero();
                continue;
            }
            f(c, c) = std::sqrt(pivot);
            f.col(c).tail(below) /= f(c, c);
            for (Eigen::Index d = c + 1; d < first + width; ++d)
                f.col(d).tail(m - d).noalias() -= f(d, c) * f.col(c).tail(m - d);
        }
        // The rest, some columns at a time so that a large front can be stopped.
        const Eigen::Index rest = first + width;
        constexpr Eigen::Index chunk = 512;
        for (Eigen::Index c = rest; c < m; c += chunk) {
            const Eigen::Index columns = std::min(chunk, m - c);
            const auto left = f.block(c, first, m - c, width);
            f.block(c, c, m - c, columns).noalias() -= left * left.topRows(columns).transpose();
            progressing.add(static_cast<double>(width) * static_cast<double>(columns) * static_cast<double>(m - c));
        }
    }
}

void FrontalCholesky::factorise(const Lodex::ProgressCheck& progress)
{
    Progressing progressing{progress, std::max(1.0, operations_)};
    factors_.assign(factor_numbers_, 0.0);
    std::vector<double> dense(front_numbers_);
    std::vector<double> stack(stack_numbers_); // what fronts leave to their parents, the last one's on top
    std::size_t top = 0;
    std::vector<std::uint32_t> local(order_.size());
    for (const Front& front : fronts_) {
        const std::size_t own = front.own;
        const std::size_t size = own + front.boundary.size();
        for (std::size_t n = 0; n < own; ++n)
            local[front.first + n] = static_cast<std::uint32_t>(n);
        for (std::size_t n = 0; n < front.boundary.size(); ++n)
            local[front.boundary[n]] = static_cast<std::uint32_t>(own + n);
        std::fill_n(dense.begin(), size * size, 0.0);
        for (std::size_t n = 0; n < own; ++n)
            for (std::size_t e = starts_[front.first + n]; e < starts_[front.first + n + 1]; ++e)
                dense[n * size + local[entries_[e].first]] += entries_[e].second;
        for (const std::uint32_t child : front.children)
            top -= fronts_[child].boundary.size() * fronts_[child].boundary.size();
        const double* update = stack.data() + top;
        for (const std::uint32_t child : front.children) {
            const auto& boundary = fronts_[child].boundary;
            for (std::size_t c = 0; c < boundary.size(); ++c) {
                double* column = dense.data() + local[boundary[c]] * size;
                for (std::size_t r = c; r < boundary.size(); ++r)
                    column[local[boundary[r]]] += update[c * boundary.size() + r];
            }
            update += boundary.size() * boundary.size();
        }
        eliminate(dense.data(), size, own, progressing);
        std::copy_n(dense.data(), own * size, factors_.data() + front.factor);
        const std::size_t left = size - own;
        for (std::size_t c = 0; c < left; ++c, top += left)
            std::copy_n(dense.data() + (own + c) * size + own, left, stack.data() + top);
    }
}

void FrontalCholesky::solve(std::span<double> x) const
{
    std::vector<double> v(order_.size());
    for (std::size_t n = 0; n < order_.size(); ++n)
        v[n] = x[order_[n]];
    for (const Front& front : fronts_) {
        const std::size_t size = front.own + front.boundary.size();
        for (std::size_t c = 0; c < front.own; ++c) {
            const double* column = factors_.data() + front.factor + c * size;
            const double value = v[front.first + c] /= column[c];
            for (std::size_t r = c + 1; r < front.own; ++r)
                v[front.first + r] -= column[r] * value;
            for (std::size_t r = 0; r < front.boundary.size(); ++r)
                v[front.boundary[r]] -= column[front.own + r] * value;
        }
    }
    for (std::size_t at = fronts_.size(); at-- > 0;) {
        const Front& front = fronts_[at];
        const std::size_t size = front.own + front.boundary.size();
        for (std::size_t c = front.own; c-- > 0;) {
            const double* column = factors_.data() + front.factor + c * size;
            double value = v[front.first + c];
            for (std::size_t r = c + 1; r < front.own; ++r)
                value -= column[r] * v[front.first + r];
            for (std::size_t r = 0; r < front.boundary.size(); ++r)
                value -= column[front.own + r] * v[front.boundary[r]];
            v[front.first + c] = value / column[c];
        }
    }
    for (std::size_t n = 0; n < order_.size(); ++n)
        x[order_[n]] = v[n];
}

} // namespace Kelvane::flow
