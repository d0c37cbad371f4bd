#pragma once

#include <cmath>
#include <cstddef>
#include <span>

namespace Kelvane {

/// Running sum with Neumaier's compensation: the error does not grow with the number of terms.
class CompensatedSum {
public:
    void add(double value)
    {
        const double next = sum_ + value;
        lost_ += std::abs(sum_) >= std::abs(value) ? (sum_ - next) + value : (value - next) + sum_;
        sum_ = next;
    }
    void add(const CompensatedSum& other)
    {
        add(other.sum_);
        add(other.lost_);
    }
    [[nodiscard]] double value() const
    {
        // An infinite sum leaves NaN in the compensation.
        return std::isfinite(lost_) ? sum_ + lost_ : sum_;
    }

private:
    double sum_ = 0;
    double lost_ = 0;
};

/// Sum by halves down to runs of 128, each on eight lanes: fast, and always in the same order.
[[nodiscard]] inline double pairwise_sum(std::span<const double> values)
{
    if (values.size() > 128) {
        const std::size_t half = (values.size() / 2 + 7) / 8 * 8;
        return pairwise_sum(values.first(half)) + pairwise_sum(values.subspan(half));
    }
    double lanes[8] = {};
    std::size_t n = 0;
    for (; n + 8 <= values.size(); n += 8)
        for (std::size_t lane = 0; lane < 8; ++lane)
            lanes[lane] += values[n + lane];
    for (; n < values.size(); ++n)
        lanes[n % 8] += values[n];
    return ((lanes[0] + lanes[1]) + (lanes[2] + lanes[3])) + ((lanes[4] + lanes[5]) + (lanes[6] + lanes[7]));
}

} // namespace Kelvane
