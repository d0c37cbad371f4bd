#include <lodex/gridio/FloatFit.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace lodex {

namespace {

constexpr std::uint64_t sign_bit = std::uint64_t{1} << 63;
/// Bits of the fraction that 32 bits have no place for.
constexpr int fraction_bits = std::numeric_limits<double>::digits - 1;
constexpr std::uint64_t lost =
    (std::uint64_t{1} << (std::numeric_limits<double>::digits - std::numeric_limits<float>::digits)) - 1;
constexpr auto smallest_normal = std::bit_cast<std::uint64_t>(static_cast<double>(std::numeric_limits<float>::min()));
/// The first power of two that is too large.
constexpr std::uint64_t too_large =
    static_cast<std::uint64_t>(std::numeric_limits<double>::max_exponent - 1 + std::numeric_limits<float>::max_exponent)
    << fraction_bits;

bool fits_outside_the_normal_range(double value)
{
    if (!(std::fabs(value) < static_cast<double>(std::numeric_limits<float>::min()))) {
        return std::isinf(value);
    }
    // Multiples of the smallest number above zero.
    constexpr int steps = std::numeric_limits<float>::digits - std::numeric_limits<float>::min_exponent;
    const double scaled = std::ldexp(value, steps);
    return std::trunc(scaled) == scaled;
}

} // namespace

bool fits_float(std::span<const double> values)
{
    constexpr std::size_t piece = 1024;
    for (std::size_t first = 0; first < values.size(); first += piece) {
        const auto part = values.subspan(first, std::min(piece, values.size() - first));
        std::uint64_t cut = 0;
        std::uint64_t outside = 0; // the highest bit: zero, small, large or no number
        for (const double value : part) {
            const std::uint64_t size = std::bit_cast<std::uint64_t>(value) & ~sign_bit;
            cut |= size & lost;
            outside |= (size - smallest_normal) | (too_large - 1 - size);
        }
        if ((outside & sign_bit) == 0) {
            if (cut != 0) {
                return false;
            }
            continue;
        }
        for (const double value : part) {
            const std::uint64_t size = std::bit_cast<std::uint64_t>(value) & ~sign_bit;
            const bool normal = size >= smallest_normal && size < too_large;
            if (normal ? (size & lost) != 0 : size != 0 && !fits_outside_the_normal_range(value)) {
                return false;
            }
        }
    }
    return true;
}

void narrow(std::span<const double> from, std::span<float> to)
{
    for (std::size_t n = 0; n < from.size(); ++n) {
        to[n] = static_cast<float>(from[n]);
    }
}

} // namespace lodex
