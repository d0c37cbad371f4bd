#pragma once

#include <span>

/// Numbers of 64 bits in 32 bits.
///
/// Not by casts to and fro in loops: g++ 12 leaves out the rounding of a pair of neighbours that it turned into vector
/// instructions, static_cast<double>(static_cast<float>(x)) being x then.
namespace lodex {

/// True when 32 bits hold all of the numbers exactly. They hold infinities, but no NaN counts as held.
[[nodiscard]] bool fits_float(std::span<const double> values);
[[nodiscard]] inline bool fits_float(double value)
{
    return fits_float(std::span<const double>(&value, 1));
}

/// The nearest numbers of 32 bits; infinity for what is too large. `to` has as many places as there are numbers.
void narrow(std::span<const double> from, std::span<float> to);

} // namespace lodex
