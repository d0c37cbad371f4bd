#include <lodex/gridio/FloatFit.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <vector>

namespace lodex {
namespace {

constexpr std::size_t most = 40;

/// Rounded through 32 bits in memory, one at a time: no compiler can leave that out.
double through_memory(double value)
{
    const volatile float stored = static_cast<float>(value);
    return static_cast<double>(stored);
}

TEST(FloatFit, OneNumberThatDoesNotFitIsFoundAtEveryPlace)
{
    for (std::size_t size = 1; size <= most; ++size) {
        std::vector<double> values(size);
        for (std::size_t n = 0; n < size; ++n) {
            values[n] = 461860.625 + 50 * static_cast<double>(n);
        }
        EXPECT_TRUE(fits_float(values)) << size;
        for (std::size_t n = 0; n < size; ++n) {
            std::vector<double> other = values;
            other[n] = 0.1;
            EXPECT_FALSE(fits_float(other)) << size << " numbers, the odd one at " << n;
            other[n] = 0; // beside it the others are looked at one by one
            EXPECT_TRUE(fits_float(other));
            other[(n + 1) % size] = 5932880.0 + 1e-9;
            EXPECT_FALSE(fits_float(other)) << size << " numbers, zero at " << n;
        }
    }
    EXPECT_TRUE(fits_float(std::span<const double>()));
}

TEST(FloatFit, NarrowRoundsEveryNumber)
{
    for (std::size_t size = 1; size <= most; ++size) {
        std::vector<double> values(size);
        for (std::size_t n = 0; n < size; ++n) {
            values[n] = 0.1 + static_cast<double>(n);
        }
        std::vector<float> narrowed(size);
        narrow(values, narrowed);
        for (std::size_t n = 0; n < size; ++n) {
            EXPECT_EQ(static_cast<double>(narrowed[n]), through_memory(values[n])) << size << ", " << n;
            EXPECT_NE(static_cast<double>(narrowed[n]), values[n]) << size << ", " << n;
        }
    }
}

TEST(FloatFit, TheEdgesOfTheRange)
{
    const double denormal = std::numeric_limits<float>::denorm_min();
    const double normal = std::numeric_limits<float>::min();
    const double largest = std::numeric_limits<float>::max();
    const double infinity = std::numeric_limits<double>::infinity();
    for (const double value : {0.0, denormal, 3 * denormal, normal - denormal, normal, normal + denormal, 1.0,
                               std::ldexp(1.0, 24) + 2, largest, infinity}) {
        EXPECT_TRUE(fits_float(value)) << value;
        EXPECT_TRUE(fits_float(-value)) << value;
    }
    for (const double value : {denormal / 2, 1.5 * denormal, normal + denormal / 2, std::nextafter(1.0, 2.0),
                               std::ldexp(1.0, 24) + 1, std::nextafter(largest, infinity), 2 * largest, 1e300,
                               std::numeric_limits<double>::denorm_min(), std::nan("")}) {
        EXPECT_FALSE(fits_float(value)) << value;
        EXPECT_FALSE(fits_float(-value)) << value;
    }
}

TEST(FloatFit, RandomBitsAgreeWithRoundingOneByOne)
{
    std::mt19937_64 random(5);
    std::size_t fitting = 0;
    for (int round = 0; round < 200'000; ++round) {
        std::uint64_t bits = random();
        if (round % 2 == 0) {
            bits &= ~((std::uint64_t{1} << 29) - 1);
        }
        if (round % 4 < 2) { // about the exponents of 32 bits
            bits = (bits & ~(std::uint64_t{0x7FF} << 52)) | ((873 + random() % 281) << 52);
        }
        const double value = std::bit_cast<double>(bits);
        const bool expected = through_memory(value) == value;
        ASSERT_EQ(fits_float(value), expected) << value;
        fitting += expected ? 1 : 0;
    }
    EXPECT_GT(fitting, 10'000U);
}

} // namespace
} // namespace lodex
