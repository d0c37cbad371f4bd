#include "Envelope.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace Kelvane::flow {

Envelope::Envelope(std::vector<int> first_columns)
    : rows(static_cast<int>(first_columns.size())), first(std::move(first_columns)), last(first.size()),
      start(first.size())
{
    for (int row = rows - 2; row >= 0; --row)
        first[row] = std::min(first[row], first[row + 1]);
    for (int row = 0; row < rows; ++row) {
        start[row] = static_cast<std::ptrdiff_t>(entries) - first[row];
        entries += static_cast<std::size_t>(row - first[row] + 1);
    }
    int reach = 0;
    for (int column = 0; column < rows; ++column) {
        reach = std::max(reach, column);
        while (reach + 1 < rows && first[reach + 1] <= column)
            ++reach;
        last[column] = reach;
    }
}

double Envelope::work() const
{
    double sum = 0;
    for (int row = 0; row < rows; ++row)
        sum += 0.5 * (row - first[row]) * (row - first[row]);
    return sum;
}

namespace {

/// Sum of a[k] b[k] over from <= k < to, for `Rows` rows a at once.
template <int Rows>
LANES_INLINE void add_products(const LaneVector* const (&a)[Rows], const LaneVector* b, int from, int to,
                                 LaneVector (&sum)[Rows])
{
    for (int k = from; k < to; ++k) {
        for (int r = 0; r < Rows; ++r)
            sum[r] += a[r][k] * b[k];
    }
}

/// Calls put(row, sum) with the products of the rows after `column` with row `column` over the columns before it.
template <class Put>
LANES_INLINE void column_products(const Envelope& envelope, const LaneVector* matrix, int column, const Put& put)
{
    constexpr int block = 4;
    const LaneVector* base = matrix + envelope.start[column];
    const int last = envelope.last[column];
    int row = column + 1;
    for (; row + block - 1 <= last; row += block) {
        const LaneVector* rows[block];
        for (int r = 0; r < block; ++r)
            rows[r] = matrix + envelope.start[row + r];
        const int common = std::min(envelope.first[row + block - 1], column);
        LaneVector sum[block] = {};
        for (int r = 0; r + 1 < block; ++r) {
            for (int k = envelope.first[row + r]; k < common; ++k)
                sum[r] += rows[r][k] * base[k];
        }
        add_products(rows, base, common, column, sum);
        for (int r = 0; r < block; ++r)
            put(row + r, sum[r]);
    }
    for (; row <= last; ++row) {
        const LaneVector* rows[1] = {matrix + envelope.start[row]};
        LaneVector sum[1] = {};
        add_products(rows, base, envelope.first[row], column, sum);
        put(row, sum[0]);
    }
}

/// 1 / sqrt(pivot), 0 where the pivot does not exceed `least`.
LANES_INLINE void inverse_root(const LaneVector& pivot, const LaneVector& least, LaneVector& result)
{
    for (int lane = 0; lane < lane_count; ++lane)
        result[lane] = pivot[lane] > least[lane] ? 1 / std::sqrt(pivot[lane]) : 0.0;
}

} // namespace

void factor_cholesky(const Envelope& envelope, Lanes* matrix, Lanes* border, int borders, Lanes& lost)
{
    // A pivot below this part of its diagonal entry is nothing but rounding.
    constexpr double rounding = 4e-16;
    run_lanes([&]() LANES_LAMBDA {
        LaneVector* a = vectors(matrix);
        LaneVector* b = vectors(border);
        LaneVector failed = {};
        for (int column = 0; column < envelope.rows; ++column) {
            LaneVector* base = a + envelope.start[column];
            LaneVector pivot = base[column];
            const LaneVector least = rounding * pivot;
            for (int k = envelope.first[column]; k < column; ++k)
                pivot -= base[k] * base[k];
            failed = (pivot > least) | (least <= 0.0) ? failed : LaneVector{} + 1.0;
            LaneVector inverse;
            inverse_root(pivot, least, inverse);
            base[column] = inverse;
            column_products(envelope, a, column, [&](int row, const LaneVector& sum) LANES_LAMBDA {
                LaneVector& entry = a[envelope.start[row] + column];
                entry = (entry - sum) * inverse;
            });
            for (int n = 0; n < borders; ++n) {
                LaneVector* y = b + static_cast<std::ptrdiff_t>(n) * envelope.rows;
                LaneVector sum = y[column];
                for (int k = envelope.first[column]; k < column; ++k)
                    sum -= base[k] * y[k];
                y[column] = sum * inverse;
            }
        }
        *vectors(&lost) = failed;
    });
}

void solve_cholesky(const Envelope& envelope, const Lanes* matrix, const Lanes* y, Lanes* x)
{
    run_lanes([&]() LANES_LAMBDA {
        const LaneVector* a = vectors(matrix);
        LaneVector* solution = vectors(x);
        for (int row = 0; row < envelope.rows; ++row)
            solution[row] = -vectors(y)[row];
        for (int row = envelope.rows - 1; row >= 0; --row) {
            const LaneVector* entries = a + envelope.start[row];
            const LaneVector value = solution[row] * entries[row];
            solution[row] = value;
            for (int k = envelope.first[row]; k < row; ++k)
                solution[k] -= entries[k] * value;
        }
    });
}

void factor_network(const Envelope& envelope, Lanes* matrix, Lanes* border, int terminals, int right_sides)
{
    run_lanes([&]() LANES_LAMBDA {
        LaneVector* a = vectors(matrix);
        LaneVector* b = vectors(border);
        for (int column = 0; column < envelope.rows; ++column) {
            LaneVector* base = a + envelope.start[column];
            LaneVector pivot = {};
            column_products(envelope, a, column, [&](int row, const LaneVector& sum) LANES_LAMBDA {
                LaneVector& entry = a[envelope.start[row] + column];
                entry += sum;
                pivot += entry;
            });
            for (int n = 0; n < terminals + right_sides; ++n) {
                LaneVector* y = b + static_cast<std::ptrdiff_t>(n) * envelope.rows;
                LaneVector sum = y[column];
                for (int k = envelope.first[column]; k < column; ++k)
                    sum += base[k] * y[k];
                y[column] = sum;
                if (n < terminals)
                    pivot += sum;
            }
            LaneVector inverse;
            inverse_root(pivot, LaneVector{}, inverse);
            base[column] = inverse;
            for (int row = column + 1; row <= envelope.last[column]; ++row)
                a[envelope.start[row] + column] *= inverse;
            for (int n = 0; n < terminals + right_sides; ++n)
                b[static_cast<std::ptrdiff_t>(n) * envelope.rows + column] *= inverse;
        }
    });
}

void solve_network(const Envelope& envelope, const Lanes* matrix, const Lanes* y, Lanes* x)
{
    run_lanes([&]() LANES_LAMBDA {
        const LaneVector* a = vectors(matrix);
        LaneVector* solution = vectors(x);
        for (int row = 0; row < envelope.rows; ++row)
            solution[row] = vectors(y)[row];
        for (int row = envelope.rows - 1; row >= 0; --row) {
            const LaneVector* entries = a + envelope.start[row];
            const LaneVector value = solution[row] * entries[row];
            solution[row] = value;
            for (int k = envelope.first[row]; k < row; ++k)
                solution[k] += entries[k] * value;
        }
    });
}

} // namespace Kelvane::flow
