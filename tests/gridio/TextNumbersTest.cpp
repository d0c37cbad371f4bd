#include <lodex/gridio/TextNumbers.h>

#include <bit>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <string_view>
#include <vector>

namespace lodex {
namespace {

/// The number refers to the text.
Decimal parsed(const char* text)
{
    Decimal number;
    EXPECT_EQ(*parse_decimal(text, number), '\0') << text;
    return number;
}

double reference_double(const std::string& text)
{
    return std::strtod(text.c_str(), nullptr);
}

TEST(TextNumbers, ReadsAllFormsOfOneNumber)
{
    for (const char* text : {"12.5", "+12.5", "12.50", "0012.5", "1.25e1", "1.25E+1", "1.25d1", "1.25D+01", "125e-1",
                                   "12.500000000000000000000000000", "0.000000000000000000000125e23"}) {
        EXPECT_EQ(to_double(parsed(text)), 12.5) << text;
        EXPECT_EQ(to_float(parsed(text)), 12.5F) << text;
    }
    EXPECT_EQ(to_double(parsed(".5")), 0.5);
    EXPECT_EQ(to_double(parsed("5.")), 5.0);
    EXPECT_TRUE(std::signbit(to_double(parsed("-0"))));
    EXPECT_TRUE(std::signbit(to_float(parsed("-0.000"))));
}

TEST(TextNumbers, FindsWhereANumberEnds)
{
    const auto length = [](const char* text) {
        Decimal number;
        return parse_decimal(text, number) - text;
    };
    EXPECT_EQ(length("12/"), 2);
    EXPECT_EQ(length("12*3"), 2);
    EXPECT_EQ(length("1.2.3"), 3);
    EXPECT_EQ(length("1e"), 1);
    EXPECT_EQ(length("1e+x"), 1);
    EXPECT_EQ(length("-"), 0);
    EXPECT_EQ(length("+."), 0);
    EXPECT_EQ(length("e5"), 0);
    EXPECT_EQ(length(""), 0);
}

TEST(TextNumbers, RoundsLikeTheLibrary)
{
    std::mt19937_64 random(7);
    std::array<char, 64> text{};
    for (int i = 0; i < 200'000; ++i) {
        // Decimals of 1 to 20 digits over the whole range, many of them near the middle of two floats.
        const int digits = static_cast<int>(random() % 20) + 1;
        const double value = i % 2 == 0 ? std::ldexp(static_cast<double>(random() >> 11), static_cast<int>(random() % 200) - 150)
                                        : (static_cast<double>(std::bit_cast<float>(static_cast<std::uint32_t>(random() % 0x7F000000)))
                                           * (1 + 0x1p-25));
        std::snprintf(text.data(), text.size(), i % 3 == 0 ? "%.*e" : "%.*g", digits, value);
        const Decimal number = parsed(text.data());
        EXPECT_EQ(to_double(number), reference_double(text.data())) << text.data();
        EXPECT_EQ(to_float(number), std::strtof(text.data(), nullptr)) << text.data();
    }
}

TEST(TextNumbers, RangeEnds)
{
    EXPECT_TRUE(std::isinf(to_double(parsed("1e400"))));
    EXPECT_TRUE(std::isinf(to_double(parsed("-1e99999999999"))));
    EXPECT_EQ(to_double(parsed("1e-400")), 0);
    EXPECT_EQ(to_double(parsed("4.9406564584124654e-324")), std::numeric_limits<double>::denorm_min());
    EXPECT_TRUE(std::isinf(to_float(parsed("1e39"))));
    EXPECT_EQ(to_float(parsed("1.4e-45")), std::numeric_limits<float>::denorm_min());
    EXPECT_EQ(to_float(parsed("3.4028235e38")), std::numeric_limits<float>::max());
}

TEST(TextNumbers, ThirtyTwoBitsFitWhenTheShortestTextComesBack)
{
    const auto fits = [](const char* text) {
        const Decimal number = parsed(text);
        return fits_float(number, to_float(number));
    };
    for (const char* text : {"0", "-0.0", "0.1", "0.25000000", "1726.187", "8808.052", "0.17749391", "16777216", "16777218",
                             "3.4028235e38", "1e-45", "999999", "0.100000001490116119384765625", "1e10"}) {
        EXPECT_TRUE(fits(text)) << text;
    }
    for (const char* text : {"16777217", "0.177493915", "0.17749392", "462919.5147", "5932719.51", "1e39", "1e-46", "0.123456789",
                             "3.141592653589793", "8973.952773"}) {
        EXPECT_FALSE(fits(text)) << text;
    }
}

TEST(TextNumbers, FitsAgreesWithTheLibraryOnRandomDecimals)
{
    std::mt19937_64 random(11);
    std::array<char, 64> text{};
    std::array<char, 64> shortest{};
    for (int i = 0; i < 300'000; ++i) {
        const auto value = std::bit_cast<float>(static_cast<std::uint32_t>(random() % 0x7F000000));
        const int digits = 6 + static_cast<int>(random() % 5);
        std::snprintf(text.data(), text.size(), "%.*g", digits, static_cast<double>(value) * (i % 2 == 0 ? 1 : 1 + 1e-7));
        const Decimal number = parsed(text.data());
        const float nearest = to_float(number);
        *std::to_chars(shortest.data(), shortest.data() + shortest.size() - 1, nearest, std::chars_format::scientific).ptr =
            '\0';
        const bool expected = std::isfinite(nearest)
            && (reference_double(shortest.data()) == reference_double(text.data())
                || static_cast<double>(nearest) == reference_double(text.data()));
        EXPECT_EQ(fits_float(number, nearest), expected) << text.data() << " as " << shortest.data();
    }
}

TEST(TextNumbers, WholeNumbers)
{
    EXPECT_EQ(to_integer(parsed("2147483647")), 2147483647);
    EXPECT_EQ(to_integer(parsed("-2147483648")), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(to_integer(parsed("3.000")), 3);
    EXPECT_EQ(to_integer(parsed("1E3")), 1000);
    EXPECT_EQ(to_integer(parsed("-0")), 0);
    for (const char* text : {"2147483648", "-2147483649", "1.5", "1e10", "1e-1", "99999999999999999999999"}) {
        EXPECT_EQ(to_integer(parsed(text)), std::nullopt) << text;
    }
}

template <class Real> void expect_shortest(const std::vector<Real>& values)
{
    NumberFormatter formatter;
    for (const Real value : values) {
        std::array<char, NumberFormatter::most_characters + 1> text{};
        char* const end = formatter.write(text.data(), value);
        ASSERT_LE(end - text.data(), static_cast<std::ptrdiff_t>(NumberFormatter::most_characters));
        Real back{};
        ASSERT_EQ(std::from_chars(text.data(), end, back).ptr, end) << text.data();
        EXPECT_EQ(std::memcmp(&back, &value, sizeof(Real)), 0) << text.data();
        // The library's shortest, in its notation or with its digits.
        std::array<char, 64> library{};
        const std::string_view plain(library.data(), std::to_chars(library.data(), library.data() + 64, value).ptr);
        if (plain == std::string_view(text.data(), end)) {
            continue;
        }
        const char* const library_end =
            std::to_chars(library.data(), library.data() + library.size(), value, std::chars_format::scientific).ptr;
        const auto count = [](const char* p, const char* last) {
            std::string digits;
            for (; p != last && *p != 'e'; ++p) {
                if (*p >= '0' && *p <= '9') {
                    digits += *p;
                }
            }
            digits.erase(0, digits.find_first_not_of('0'));
            digits.erase(digits.find_last_not_of('0') + 1);
            return digits;
        };
        EXPECT_EQ(count(text.data(), end), count(library.data(), library_end)) << text.data();
    }
}

TEST(TextNumbers, WritesTheShortestTextThatComesBack)
{
    std::mt19937_64 random(3);
    std::vector<float> floats = {0.0F, -0.0F, 1.0F, -1.0F, 0.1F, 1e-45F, 3.4028235e38F, 16777216.0F, 8388607.0F, 1e10F,
                                 0.001F, 1726.187F};
    std::vector<double> doubles = {0.0, -0.0, 0.1, 1e23, 4.9e-324, 1.7976931348623157e308, 4503599627370495.0,
                                   9007199254740993.0, 456510.625, 1.0 / 3};
    for (int i = 0; i < 50'000; ++i) {
        floats.push_back(std::bit_cast<float>(static_cast<std::uint32_t>(random() % 0x7F800000)));
        doubles.push_back(std::bit_cast<double>(random() % 0x7FF0000000000000));
        floats.push_back(static_cast<float>(static_cast<double>(random() % 10'000'000) / 1000));
        doubles.push_back(-static_cast<double>(random() % 10'000'000'000) / 1000);
    }
    expect_shortest(floats);
    expect_shortest(doubles);
}

} // namespace
} // namespace lodex
