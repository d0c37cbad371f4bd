#pragma once

#include <cstdint>

namespace lodex {

/// Random numbers and the functions that shape them, the same to the last bit on every machine: only the four basic
/// operations and the square root of 64-bit IEEE numbers are used, which are exact everywhere, never the C library's
/// functions, whose last bits differ.
namespace exactly {

/// e^x to 2 units in the last place; 0 below -745, infinite above 709.78.
[[nodiscard]] double exp(double x);
/// Natural logarithm to 2 units in the last place; NaN below 0, -infinity at 0.
[[nodiscard]] double log(double x);
/// Sine and cosine of 2 pi t, t in turns.
[[nodiscard]] double sin_turns(double t);
[[nodiscard]] double cos_turns(double t);
/// Quantile of the standard normal distribution, p in (0, 1); Acklam's rational form, relative error 1.2e-9.
[[nodiscard]] double normal_quantile(double p);

} // namespace exactly

/// Counter-based generator: the value at (seed, stream, index) needs no state, so loops may run in any order and on any
/// number of threads. SplitMix64 finaliser over the three numbers (Steele, Lea, Flood 2014).
class CounterRandom {
public:
    explicit CounterRandom(std::uint64_t seed, std::uint64_t stream = 0);

    [[nodiscard]] std::uint64_t bits(std::uint64_t index) const;
    /// In (0, 1), never at the ends.
    [[nodiscard]] double uniform(std::uint64_t index) const;
    /// Standard normal.
    [[nodiscard]] double normal(std::uint64_t index) const;

private:
    std::uint64_t key_;
};

} // namespace lodex
