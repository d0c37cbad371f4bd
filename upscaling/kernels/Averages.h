#pragma once

#include <cstdint>
#include <span>

namespace Kelvane {

/// How several values become one.
///
/// With values v and weights w (1 when there are none):
/// Arithmetic sum(w v) / sum(w); Geometric exp(sum(w ln v) / sum(w)); Harmonic sum(w) / sum(w / v);
/// Power (sum(w v^p) / sum(w))^(1/p) for p in [-1, 1], p -> 0 being Geometric. The others take no weights: Sum, Minimum,
/// Maximum; Median, the mean of the two middle values for an even number; MostProbable, the most frequent value, the
/// smallest of several; Number, the count; DykstraParsons (P50 - P84.1) / P50, where Pq is the value that q percent of the
/// values exceed, read from the values in descending order at plotting positions i / (n + 1), linear in between and cut at
/// the ends (H. Dykstra and R. L. Parsons, "The prediction of oil recovery by waterflood", 1950).
enum class Average {
    Arithmetic,
    Geometric,
    Harmonic,
    Power,
    Sum,
    Minimum,
    Maximum,
    Median,
    MostProbable,
    Number,
    DykstraParsons
};

/// What a method can take.
struct AverageRules {
    bool accepts_negative = true;
    bool accepts_zero = true;
    bool weighted = true; ///< false: weights are not looked at
    bool joinable = true; ///< PartialAverage can be used

    [[nodiscard]] bool accepts(double value) const
    {
        return value > 0 || (value == 0 && accepts_zero) || (value < 0 && accepts_negative);
    }
};

/// power is looked at for Power only.
[[nodiscard]] AverageRules rules_of(Average method, double power);

/// The average of finite values that the method accepts (see rules_of()). weights is empty or has one number per value, none
/// negative. NaN when there are no values or the weights of a weighted method sum to 0. Median, MostProbable and
/// DykstraParsons reorder the values. Sums run in a fixed order with small rounding errors; nothing overflows where the
/// result does not.
[[nodiscard]] double average(Average method, double power, std::span<double> values, std::span<const double> weights = {});

/// An average in the making, to be joined with others of the same method and power: the value equals that over all values to
/// rounding. Not for Median, MostProbable and DykstraParsons.
class PartialAverage {
public:
    /// Throws std::invalid_argument for a method that cannot be joined.
    explicit PartialAverage(Average method, double power = 1);

    /// Values and weights as average() takes them; once per object.
    void set(std::span<double> values, std::span<const double> weights = {});
    void join(const PartialAverage& other);

    [[nodiscard]] std::int64_t count() const { return count_; }
    /// NaN as average() gives it.
    [[nodiscard]] double value() const;

private:
    Average method_;
    double power_;
    std::int64_t count_ = 0;
    double weight_ = 0;      ///< of all values
    double sum_ = 0;         ///< of w v, w / v, v; smallest or largest value
    double sum_error_ = 0;   ///< what joining lost of sum_
    double log_weight_ = 0;  ///< of the positive values (Power, Geometric)
    double mean_log_ = 0;    ///< of the positive values
    double excess_ = 0;      ///< sum over the positive values of w (exp(p (ln v - mean_log)) - 1)
};

} // namespace Kelvane
