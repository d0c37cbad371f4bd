#include "Averages.h"

#include "Summation.h"
#include "VectorClones.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <vector>

namespace Kelvane {

namespace {

constexpr double undefined = std::numeric_limits<double>::quiet_NaN();

/// sum(term(n)) over all n in a fixed order: runs of 256 pairwise on lanes, the runs with compensation.
template <class Term> double sum_of(std::size_t count, const Term& term)
{
    double run[256];
    CompensatedSum sum;
    for (std::size_t first = 0; first < count; first += 256) {
        const std::size_t length = std::min<std::size_t>(256, count - first);
        for (std::size_t n = 0; n < length; ++n)
            run[n] = term(first + n);
        sum.add(pairwise_sum({run, length}));
    }
    return sum.value();
}

constexpr std::size_t lanes = 8;
constexpr std::size_t run_length = 256;

/// The lanes' sums, always added in the same order, whatever the instruction set.
double added(const double (&lane)[lanes])
{
    return ((lane[0] + lane[1]) + (lane[2] + lane[3])) + ((lane[4] + lane[5]) + (lane[6] + lane[7]));
}

KELVANE_VECTOR_CLONES double sum_of_run(const double* values, std::size_t count)
{
    double lane[lanes] = {};
    std::size_t n = 0;
    for (; n + lanes <= count; n += lanes)
        for (std::size_t l = 0; l < lanes; ++l)
            lane[l] += values[n + l];
    for (; n < count; ++n)
        lane[n % lanes] += values[n];
    return added(lane);
}

KELVANE_VECTOR_CLONES double product_of_run(const double* values, const double* weights, std::size_t count)
{
    double lane[lanes] = {};
    std::size_t n = 0;
    for (; n + lanes <= count; n += lanes)
        for (std::size_t l = 0; l < lanes; ++l)
            lane[l] += values[n + l] * weights[n + l];
    for (; n < count; ++n)
        lane[n % lanes] += values[n] * weights[n];
    return added(lane);
}

KELVANE_VECTOR_CLONES double least_of(const double* values, std::size_t count)
{
    double lane[lanes];
    for (double& least : lane)
        least = values[0];
    std::size_t n = 0;
    for (; n + lanes <= count; n += lanes)
        for (std::size_t l = 0; l < lanes; ++l)
            lane[l] = values[n + l] < lane[l] ? values[n + l] : lane[l];
    for (; n < count; ++n)
        lane[0] = values[n] < lane[0] ? values[n] : lane[0];
    return *std::ranges::min_element(lane);
}

KELVANE_VECTOR_CLONES double largest_of(const double* values, std::size_t count)
{
    double lane[lanes];
    for (double& most : lane)
        most = values[0];
    std::size_t n = 0;
    for (; n + lanes <= count; n += lanes)
        for (std::size_t l = 0; l < lanes; ++l)
            lane[l] = values[n + l] > lane[l] ? values[n + l] : lane[l];
    for (; n < count; ++n)
        lane[0] = values[n] > lane[0] ? values[n] : lane[0];
    return *std::ranges::max_element(lane);
}

double sum(std::span<const double> values)
{
    CompensatedSum all;
    for (std::size_t first = 0; first < values.size(); first += run_length)
        all.add(sum_of_run(values.data() + first, std::min(run_length, values.size() - first)));
    return all.value();
}

double product_sum(std::span<const double> values, std::span<const double> weights)
{
    CompensatedSum all;
    for (std::size_t first = 0; first < values.size(); first += run_length)
        all.add(product_of_run(values.data() + first, weights.data() + first, std::min(run_length, values.size() - first)));
    return all.value();
}

double weight_sum(std::size_t count, std::span<const double> weights)
{
    return weights.empty() ? static_cast<double>(count) : sum(weights);
}

double largest(std::span<const double> numbers)
{
    double result = 0;
    for (const double number : numbers)
        result = std::max(result, std::abs(number));
    return result;
}

/// Sums of w v and of w whose quotient is the mean, scaled down where they would not fit.
double arithmetic(std::span<const double> values, std::span<const double> weights)
{
    const auto quotient = [&](double value_scale, double weight_scale) {
        if (weights.empty())
            return sum_of(values.size(), [&](std::size_t n) { return values[n] * value_scale; }) /
                   static_cast<double>(values.size());
        return sum_of(values.size(), [&](std::size_t n) { return values[n] * value_scale * (weights[n] * weight_scale); }) /
               sum_of(values.size(), [&](std::size_t n) { return weights[n] * weight_scale; });
    };
    const double plain = weights.empty() ? sum(values) / static_cast<double>(values.size()) : product_sum(values, weights) / sum(weights);
    if (std::isfinite(plain))
        return plain;
    const double value = largest(values), weight = weights.empty() ? 1 : largest(weights);
    return quotient(1 / value / static_cast<double>(values.size()), 1 / weight) * value * static_cast<double>(values.size());
}

double harmonic(std::span<const double> values, std::span<const double> weights)
{
    const auto quotient = [&](double value_scale, double weight_scale) {
        if (weights.empty())
            return static_cast<double>(values.size()) /
                   sum_of(values.size(), [&](std::size_t n) { return 1 / (values[n] * value_scale); });
        return sum_of(values.size(), [&](std::size_t n) { return weights[n] * weight_scale; }) /
               sum_of(values.size(), [&](std::size_t n) { return weights[n] * weight_scale / (values[n] * value_scale); });
    };
    const double plain = quotient(1, 1);
    if (std::isfinite(plain) && plain > 0)
        return plain;
    const double smallest = *std::ranges::min_element(values), weight = weights.empty() ? 1 : largest(weights);
    const double upscaled = quotient(1 / smallest, 1 / weight);
    return upscaled * smallest;
}

/// Mean logarithm of the positive values about which powers are taken, so that nothing is lost for p -> 0.
struct LogMoments {
    double weight = 0;     ///< of the positive values
    double mean = 0;       ///< weighted mean of ln v over the positive values
    double excess = 0;     ///< sum of w (exp(p (ln v - mean)) - 1) over the positive values
};

LogMoments log_moments(std::span<const double> values, std::span<const double> weights, double power)
{
    LogMoments moments;
    std::vector<double> logs, log_weights;
    logs.reserve(values.size());
    if (!weights.empty())
        log_weights.reserve(values.size());
    for (std::size_t n = 0; n < values.size(); ++n) {
        if (!(values[n] > 0) || (!weights.empty() && weights[n] == 0))
            continue;
        logs.push_back(std::log(values[n]));
        if (!weights.empty())
            log_weights.push_back(weights[n]);
    }
    if (logs.empty())
        return moments;
    moments.weight = weight_sum(logs.size(), log_weights);
    moments.mean = arithmetic(logs, log_weights);
    if (power != 0) {
        moments.excess = sum_of(logs.size(), [&](std::size_t n) {
            const double term = std::expm1(power * (logs[n] - moments.mean));
            return log_weights.empty() ? term : log_weights[n] * term;
        });
    }
    return moments;
}

/// (sum(w v^p) / weight)^(1/p) from the moments; weight counts the zeros too.
double power_mean(const LogMoments& moments, double weight, double power)
{
    if (!(weight > 0))
        return undefined;
    if (moments.weight == 0)
        return 0;
    if (power == 0)
        return std::exp(moments.mean);
    // Zeros add -1 each to the sum of v^p / exp(p mean) - 1.
    const double mean_excess = (moments.excess - (weight - moments.weight)) / weight;
    return std::exp(moments.mean + std::log1p(mean_excess) / power);
}

double median(std::span<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::ranges::nth_element(values, middle);
    if (values.size() % 2 == 1)
        return *middle;
    const double below = *std::max_element(values.begin(), middle);
    return below / 2 + *middle / 2;
}

double most_probable(std::span<double> values)
{
    std::ranges::sort(values);
    double best = values.front();
    std::size_t best_count = 0;
    for (std::size_t n = 0; n < values.size();) {
        std::size_t end = n;
        while (end < values.size() && values[end] == values[n])
            ++end;
        if (end - n > best_count) {
            best_count = end - n;
            best = values[n];
        }
        n = end;
    }
    return best;
}

double dykstra_parsons(std::span<double> values)
{
    const auto count = static_cast<double>(values.size());
    const auto at = [&](std::size_t place) { return values.begin() + static_cast<std::ptrdiff_t>(place); };
    // The value at a place in descending order, 0-based and linear in between. Values before `sorted` stand at or before
    // their place already.
    std::size_t sorted = 0;
    const auto exceeded_by = [&](double part) {
        const double place = std::clamp(part * (count + 1) - 1, 0.0, count - 1);
        const auto below = static_cast<std::size_t>(place);
        std::nth_element(at(sorted), at(below), values.end(), std::greater<>());
        sorted = below;
        const double along = place - static_cast<double>(below);
        if (along == 0)
            return values[below];
        const double next = *std::max_element(at(below + 1), values.end());
        return values[below] + along * (next - values[below]);
    };
    const double middle = exceeded_by(0.5);
    return (middle - exceeded_by(0.841)) / middle;
}

} // namespace

AverageRules rules_of(Average method, double power)
{
    switch (method) {
    case Average::Arithmetic: return {};
    case Average::Geometric:
    case Average::Harmonic: return {.accepts_negative = false, .accepts_zero = false};
    case Average::Power: return {.accepts_negative = power == 1, .accepts_zero = power > 0};
    case Average::Sum:
    case Average::Minimum:
    case Average::Maximum:
    case Average::Number: return {.weighted = false};
    case Average::Median:
    case Average::MostProbable: return {.weighted = false, .joinable = false};
    case Average::DykstraParsons:
        return {.accepts_negative = false, .accepts_zero = false, .weighted = false, .joinable = false};
    }
    throw std::invalid_argument("unknown average");
}

double average(Average method, double power, std::span<double> values, std::span<const double> weights)
{
    if (values.empty())
        return undefined;
    switch (method) {
    case Average::Arithmetic: return arithmetic(values, weights);
    case Average::Harmonic: return weight_sum(values.size(), weights) > 0 ? harmonic(values, weights) : undefined;
    case Average::Geometric:
    case Average::Power: {
        if (method == Average::Power && power == 1)
            return arithmetic(values, weights);
        if (method == Average::Power && power == -1)
            return average(Average::Harmonic, 0, values, weights);
        const double p = method == Average::Power ? power : 0;
        return power_mean(log_moments(values, weights, p), weight_sum(values.size(), weights), p);
    }
    case Average::Sum: return sum(values);
    case Average::Minimum: return least_of(values.data(), values.size());
    case Average::Maximum: return largest_of(values.data(), values.size());
    case Average::Median: return median(values);
    case Average::MostProbable: return most_probable(values);
    case Average::Number: return static_cast<double>(values.size());
    case Average::DykstraParsons: return dykstra_parsons(values);
    }
    throw std::invalid_argument("unknown average");
}

PartialAverage::PartialAverage(Average method, double power) : method_(method), power_(power)
{
    if (!rules_of(method, power).joinable)
        throw std::invalid_argument("this average cannot be put together from parts");
    if (method == Average::Power && power == 1)
        method_ = Average::Arithmetic;
    if (method == Average::Power && power == -1)
        method_ = Average::Harmonic;
    if (method == Average::Geometric)
        power_ = 0;
}

void PartialAverage::set(std::span<double> values, std::span<const double> weights)
{
    count_ = static_cast<std::int64_t>(values.size());
    if (values.empty())
        return;
    switch (method_) {
    case Average::Arithmetic:
        weight_ = weight_sum(values.size(), weights);
        sum_ = weights.empty() ? sum(values) : product_sum(values, weights);
        break;
    case Average::Harmonic:
        weight_ = weight_sum(values.size(), weights);
        sum_ = sum_of(values.size(), [&](std::size_t n) { return (weights.empty() ? 1 : weights[n]) / values[n]; });
        break;
    case Average::Geometric:
    case Average::Power: {
        weight_ = weight_sum(values.size(), weights);
        const LogMoments moments = log_moments(values, weights, power_);
        log_weight_ = moments.weight;
        mean_log_ = moments.mean;
        excess_ = moments.excess;
        break;
    }
    default: sum_ = average(method_, power_, values); break;
    }
}

void PartialAverage::join(const PartialAverage& other)
{
    if (other.count_ == 0)
        return;
    if (count_ == 0) {
        *this = other;
        return;
    }
    const auto add = [&] {
        CompensatedSum total;
        total.add(sum_);
        total.add(other.sum_);
        total.add(sum_error_ + other.sum_error_);
        const double next = total.value();
        CompensatedSum lost;
        lost.add(sum_);
        lost.add(other.sum_);
        lost.add(-next);
        lost.add(sum_error_ + other.sum_error_);
        sum_ = next;
        sum_error_ = std::isfinite(lost.value()) ? lost.value() : 0;
    };
    switch (method_) {
    case Average::Minimum: sum_ = std::min(sum_, other.sum_); break;
    case Average::Maximum: sum_ = std::max(sum_, other.sum_); break;
    case Average::Geometric:
    case Average::Power: {
        const double weight = log_weight_ + other.log_weight_;
        if (weight > 0) {
            const double mean = mean_log_ + (other.mean_log_ - mean_log_) * (other.log_weight_ / weight);
            const auto about_mean = [&](const PartialAverage& part) {
                const double shift = power_ * (part.mean_log_ - mean);
                return part.log_weight_ > 0 ? part.log_weight_ * std::expm1(shift) + std::exp(shift) * part.excess_ : 0;
            };
            excess_ = about_mean(*this) + about_mean(other);
            mean_log_ = mean;
            log_weight_ = weight;
        }
        break;
    }
    default: add(); break;
    }
    weight_ += other.weight_;
    count_ += other.count_;
}

double PartialAverage::value() const
{
    if (count_ == 0)
        return undefined;
    switch (method_) {
    case Average::Arithmetic: return weight_ > 0 ? sum_ / weight_ : undefined;
    case Average::Harmonic: return weight_ > 0 ? weight_ / sum_ : undefined;
    case Average::Geometric:
    case Average::Power:
        return power_mean({.weight = log_weight_, .mean = mean_log_, .excess = excess_}, weight_, power_);
    default: return sum_;
    }
}

} // namespace Kelvane
