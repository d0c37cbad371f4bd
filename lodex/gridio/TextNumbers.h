#pragma once

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

namespace lodex {

/// A number as its digits stand in a text: (negative ? -1 : 1) * digits * 10^exponent.
struct Decimal {
    std::uint64_t digits = 0;
    std::int32_t exponent = 0;
    bool negative = false;
    bool cut = false;      ///< more than 19 significant digits: digits holds the first 19, the value is near it
    bool integer = true;   ///< written without point and exponent
    std::string_view text; ///< as written
};

namespace text_numbers {

inline constexpr std::array<double, 23> powers_of_ten = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                         1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                                         1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

inline bool is_digit(char c)
{
    return static_cast<unsigned char>(c - '0') < 10;
}

const char* parse_long_decimal(const char* p, Decimal& number);
double slow_double(const Decimal& number);
float slow_float(const Decimal& number);
bool slow_fits_float(const Decimal& number, float value);

} // namespace text_numbers

/// Reads the number that begins at p: digits with an optional sign, point and exponent (E, e, D or d). Returns the
/// first character behind it, p itself when there is none. The text must end with a character that belongs to no number.
[[gnu::always_inline]] inline const char* parse_decimal(const char* p, Decimal& number)
{
    using text_numbers::is_digit;
    const char* const start = p;
    number.negative = *p == '-';
    p += *p == '-' || *p == '+' ? 1 : 0;
    const char* const first = p;
    std::uint64_t digits = 0;
    while (is_digit(*p)) {
        digits = 10 * digits + static_cast<std::uint64_t>(*p++ - '0');
    }
    auto count = p - first;
    std::int32_t exponent = 0;
    number.integer = true;
    if (*p == '.') {
        number.integer = false;
        const char* const point = ++p;
        while (is_digit(*p)) {
            digits = 10 * digits + static_cast<std::uint64_t>(*p++ - '0');
        }
        exponent = static_cast<std::int32_t>(point - p);
        count += p - point;
    }
    if (count == 0) [[unlikely]] {
        return start;
    }
    // 19 digits always fit into 64 bits; leading zeros count here and are looked at in the long way.
    if (count > 19 || (*p | 0x20) == 'e' || (*p | 0x20) == 'd') [[unlikely]] {
        return text_numbers::parse_long_decimal(start, number);
    }
    number.digits = digits;
    number.exponent = exponent;
    number.cut = false;
    number.text = {start, static_cast<std::size_t>(p - start)};
    return p;
}

/// The nearest 64-bit number; infinite when it is out of range.
[[gnu::always_inline]] inline double to_double(const Decimal& number)
{
    // Both factors are exact, so one division or product rounds once.
    if (number.digits < (std::uint64_t{1} << 53) && number.exponent >= -22 && number.exponent <= 22 && !number.cut)
        [[likely]] {
        const auto digits = static_cast<double>(number.digits);
        const double value = number.exponent < 0
            ? digits / text_numbers::powers_of_ten[static_cast<std::size_t>(-number.exponent)]
            : digits * text_numbers::powers_of_ten[static_cast<std::size_t>(number.exponent)];
        return number.negative ? -value : value;
    }
    return text_numbers::slow_double(number);
}

/// The nearest 32-bit number; infinite when it is out of range.
[[gnu::always_inline]] inline float to_float(const Decimal& number)
{
    if (number.digits < (std::uint64_t{1} << 53) && number.exponent >= -22 && number.exponent <= 22 && !number.cut)
        [[likely]] {
        const auto digits = static_cast<double>(number.digits);
        const double value = number.exponent < 0
            ? digits / text_numbers::powers_of_ten[static_cast<std::size_t>(-number.exponent)]
            : digits * text_numbers::powers_of_ten[static_cast<std::size_t>(number.exponent)];
        // Rounding twice differs from rounding once only when the first result lies midway between two floats.
        constexpr std::uint64_t below_float = (std::uint64_t{1} << 29) - 1;
        constexpr std::uint64_t midway = std::uint64_t{1} << 28;
        if ((std::bit_cast<std::uint64_t>(value) & below_float) != midway) [[likely]] {
            const auto result = static_cast<float>(value);
            if (result >= std::numeric_limits<float>::min() || number.digits == 0) [[likely]] {
                return number.negative ? -result : result;
            }
        }
    }
    return text_numbers::slow_float(number);
}

/// True when `value`, the nearest 32-bit number, holds as much as 64 bits would: written with the fewest digits that
/// tell it apart it gives the same decimal again, or it equals the 64-bit number.
[[gnu::always_inline]] inline bool fits_float(const Decimal& number, float value)
{
    // The decimals of this many places lie further apart than floats do where digits < 2^23, so the float's interval
    // holds no other one.
    const float magnitude = number.negative ? -value : value;
    if (number.digits < (std::uint64_t{1} << 23) && !number.cut
        && ((magnitude >= std::numeric_limits<float>::min() && magnitude <= std::numeric_limits<float>::max())
            || number.digits == 0)) [[likely]] {
        return true;
    }
    return text_numbers::slow_fits_float(number, value);
}

/// The number as a 32-bit integer; nothing when it is not a whole number of that range. "2.0" and "1E2" are whole.
std::optional<std::int32_t> slow_integer(const Decimal& number);
[[gnu::always_inline]] inline std::optional<std::int32_t> to_integer(const Decimal& number)
{
    if (number.exponent == 0 && !number.cut && number.digits <= 0x7FFFFFFF) [[likely]] {
        const auto value = static_cast<std::int32_t>(number.digits);
        return number.negative ? -value : value;
    }
    return slow_integer(number);
}

/// Writes numbers with the fewest digits that give the same number back. Remembers how many decimals the last one had,
/// since neighbours in a file tend to have the same.
class NumberFormatter {
public:
    static constexpr std::size_t most_characters = 32;

    /// Writes at out (room for most_characters) and returns the end. value must be finite.
    char* write(char* out, float value) { return write_real(out, value); }
    char* write(char* out, double value) { return write_real(out, value); }
    static char* write(char* out, std::int32_t value)
    {
        if (value >= 0 && value < 10) {
            *out = static_cast<char>('0' + value);
            return out + 1;
        }
        return std::to_chars(out, out + most_characters, value).ptr;
    }

private:
    template <class Real> char* write_real(char* out, Real value);

    int decimals_ = 3;
    int misses_ = 0;
    int rest_ = 0;
};

/// The 64-bit number whose shortest text is that of the 32-bit number: 294.12f gives 294.12. value must be finite.
double decimal_double(float value);

/// The shortest text for one number: "0.25", "nan", "-inf".
std::string shortest_text(double value);
std::string shortest_text(float value);

} // namespace lodex
