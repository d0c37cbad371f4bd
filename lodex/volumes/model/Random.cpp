#include "Random.h"

#include <bit>
#include <cmath>
#include <cstddef>
#include <limits>

namespace lodex {

namespace exactly {

namespace {

constexpr double ln2_high = 0x1.62e42feep-1; // trailing zeros: a product with an exponent is exact
constexpr double ln2_low = 0x1.a39ef35793c76p-33;

// 2^n for a normal result.
double power_of_two(int n)
{
    return std::bit_cast<double>(static_cast<std::uint64_t>(n + 1023) << 52);
}

// Coefficients from the highest power down.
template <std::size_t N> double polynomial(const double (&coefficients)[N], double x)
{
    double result = coefficients[0];
    for (std::size_t n = 1; n < N; ++n)
        result = result * x + coefficients[n];
    return result;
}

} // namespace

double exp(double x)
{
    if (std::isnan(x))
        return x;
    if (x > 709.78)
        return std::numeric_limits<double>::infinity();
    if (x < -745)
        return 0;
    // e^x = 2^n e^r with |r| <= ln 2 / 2; the Taylor series of e^r is done to x^14, its rest is below 1e-19.
    const double n = std::floor(x * 1.4426950408889634 + 0.5);
    const double r = (x - n * ln2_high) - n * ln2_low;
    static constexpr double taylor[] = {1.0 / 87178291200,
                                        1.0 / 6227020800,
                                        1.0 / 479001600,
                                        1.0 / 39916800,
                                        1.0 / 3628800,
                                        1.0 / 362880,
                                        1.0 / 40320,
                                        1.0 / 5040,
                                        1.0 / 720,
                                        1.0 / 120,
                                        1.0 / 24,
                                        1.0 / 6,
                                        0.5,
                                        1.0,
                                        1.0};
    const double value = polynomial(taylor, r);
    const int exponent = static_cast<int>(n);
    // In two steps, since 2^n alone may be too large or too small for a normal number.
    const int half = exponent / 2;
    return value * power_of_two(half) * power_of_two(exponent - half);
}

double log(double x)
{
    if (std::isnan(x) || x < 0)
        return std::numeric_limits<double>::quiet_NaN();
    if (x == 0)
        return -std::numeric_limits<double>::infinity();
    if (std::isinf(x))
        return x;
    int exponent = 0;
    if (x < 0x1p-1022) {
        x *= 0x1p54;
        exponent = -54;
    }
    const auto bits = std::bit_cast<std::uint64_t>(x);
    exponent += static_cast<int>(bits >> 52) - 1023;
    double m = std::bit_cast<double>((bits & 0xfffffffffffffULL) | 0x3ff0000000000000ULL);
    if (m > 1.4142135623730951) {
        m /= 2;
        ++exponent;
    }
    // ln m = 2 artanh s, s = (m - 1) / (m + 1), |s| < 0.172: the series to s^21 leaves less than 1e-18.
    const double s = (m - 1) / (m + 1);
    static constexpr double series[] = {1.0 / 21, 1.0 / 19, 1.0 / 17, 1.0 / 15, 1.0 / 13,
                                        1.0 / 11, 1.0 / 9,  1.0 / 7,  1.0 / 5,  1.0 / 3};
    const double square = s * s;
    const double tail = 2 * s * square * polynomial(series, square);
    const double e = exponent;
    return e * ln2_high + (2 * s + (tail + e * ln2_low));
}

double sin_turns(double t)
{
    // To [-1/2, 1/2], then by symmetry to [-1/4, 1/4].
    t -= std::floor(t + 0.5);
    if (t > 0.25)
        t = 0.5 - t;
    else if (t < -0.25)
        t = -0.5 - t;
    const double x = 6.283185307179586 * t;
    static constexpr double taylor[] = {-1.0 / 25852016738884976640000.0,
                                        1.0 / 51090942171709440000.0,
                                        -1.0 / 121645100408832000,
                                        1.0 / 355687428096000,
                                        -1.0 / 1307674368000,
                                        1.0 / 6227020800,
                                        -1.0 / 39916800,
                                        1.0 / 362880,
                                        -1.0 / 5040,
                                        1.0 / 120,
                                        -1.0 / 6,
                                        1.0};
    return x * polynomial(taylor, x * x);
}

double cos_turns(double t)
{
    return sin_turns(t + 0.25);
}

double normal_quantile(double p)
{
    static constexpr double a[] = {-3.969683028665376e+01, 2.209460984245205e+02,  -2.759285104469687e+02,
                                   1.383577518672690e+02,  -3.066479806614716e+01, 2.506628277459239e+00};
    static constexpr double b[] = {-5.447609879822406e+01, 1.615858368580409e+02,  -1.556989798598866e+02,
                                   6.680131188771972e+01,  -1.328068155288572e+01, 1.0};
    static constexpr double c[] = {-7.784894002430293e-03, -3.223964580411365e-01, -2.400758277161838e+00,
                                   -2.549732539343734e+00, 4.374664141464968e+00,  2.938163982698783e+00};
    static constexpr double d[] = {7.784695709041462e-03, 3.224671290700398e-01, 2.445134137142996e+00,
                                   3.754408661907416e+00, 1.0};
    constexpr double tail = 0.02425;
    if (p < tail) {
        const double q = std::sqrt(-2 * log(p));
        return polynomial(c, q) / polynomial(d, q);
    }
    if (p > 1 - tail)
        return -normal_quantile(1 - p);
    const double q = p - 0.5;
    const double square = q * q;
    return q * polynomial(a, square) / polynomial(b, square);
}

} // namespace exactly

namespace {

// Finaliser of SplitMix64: every output bit depends on every input bit.
std::uint64_t mix(std::uint64_t x)
{
    x += 0x9e3779b97f4a7c15ULL;
    x = (x ^ (x >> 30)) * 0xbf58476d1ce4e5b9ULL;
    x = (x ^ (x >> 27)) * 0x94d049bb133111ebULL;
    return x ^ (x >> 31);
}

} // namespace

CounterRandom::CounterRandom(std::uint64_t seed, std::uint64_t stream)
    : key_(mix(mix(seed) ^ (stream * 0xd1342543de82ef95ULL)))
{
}

std::uint64_t CounterRandom::bits(std::uint64_t index) const
{
    return mix(key_ ^ mix(index));
}

double CounterRandom::uniform(std::uint64_t index) const
{
    // 52 random bits and half a step, so that neither 0 nor 1 comes out.
    return (static_cast<double>(bits(index) >> 12) + 0.5) * 0x1p-52;
}

double CounterRandom::normal(std::uint64_t index) const
{
    return exactly::normal_quantile(uniform(index));
}

} // namespace lodex
