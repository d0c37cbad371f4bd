#pragma once

#include <concepts>
#include <optional>
#include <string>
#include <string_view>

namespace lodex {

/// Whether the words "inf", "infinity" and "nan" (any case, with a sign) count as numbers.
enum class NonFinite { Refuse, Accept };

/// The number that the whole text is, whatever the user's locale: "5", "+5", "-.5", "5.", "1e5", "1E+5". Nothing for an
/// empty text, blanks or other characters around the number, hexadecimal digits, or a number beyond the largest double.
/// A number too small for a double is a zero of its sign.
[[nodiscard]] std::optional<double> parse_double(std::string_view text, NonFinite words = NonFinite::Refuse);

/// The whole number that the whole text is: digits with or without a sign. Nothing for everything else, numbers beyond
/// the range of a long included.
[[nodiscard]] std::optional<long> parse_long(std::string_view text);

/// Shortest text that reads back as the same number, C locale; whole numbers below 1e15 without exponent. "nan", "inf"
/// and "-inf" for what is not finite.
[[nodiscard]] std::string format_shortest(double value);
/// The same for a number of 32 bits: reads back as the same float.
[[nodiscard]] std::string format_shortest(float value);
template <std::integral T> [[nodiscard]] std::string format_shortest(T value)
{
    return std::to_string(value);
}

/// As the stream's default format does in the C locale: at most `digits` significant digits, no trailing zeros.
[[nodiscard]] std::string format_general(double value, int digits);

} // namespace lodex
