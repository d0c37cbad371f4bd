#include "Numbers.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>

namespace lodex {

namespace {

/// Takes one leading "+" off; false when another sign follows.
bool take_plus(std::string_view& text)
{
    if (!text.starts_with('+'))
        return true;
    text.remove_prefix(1);
    return !text.starts_with('+') && !text.starts_with('-');
}

/// True when the number, which is known to be out of range, is too small instead of too large.
bool is_tiny(std::string_view number)
{
    const std::size_t e = number.find_first_of("eE");
    const std::string_view mantissa = number.substr(0, e);
    long exponent = 0;
    if (e != std::string_view::npos) {
        std::string_view digits = number.substr(e + 1);
        if (digits.starts_with('+'))
            digits.remove_prefix(1);
        if (const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), exponent);
            error == std::errc::result_out_of_range)
            return digits.starts_with('-');
    }
    const std::size_t point = std::min(mantissa.find('.'), mantissa.size());
    const std::size_t first = std::min(mantissa.find_first_of("123456789"), mantissa.size());
    // The sign of the decimal logarithm, roughly: out of range means some three hundred decades off.
    const long decades = static_cast<long>(point) - static_cast<long>(first);
    return exponent < -decades;
}

template <class Real> std::string shortest(Real value)
{
    std::array<char, 64> text;
    const bool whole = std::abs(value) < Real(1e15) && std::trunc(value) == value;
    const auto result = whole ? std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed)
                              : std::to_chars(text.data(), text.data() + text.size(), value);
    return {text.data(), result.ptr};
}

std::string not_finite(double value)
{
    if (std::isnan(value))
        return "nan";
    return value > 0 ? "inf" : "-inf";
}

} // namespace

std::optional<double> parse_double(std::string_view text, NonFinite words)
{
    if (!take_plus(text))
        return std::nullopt;
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (end != text.data() + text.size() || error == std::errc::invalid_argument)
        return std::nullopt;
    if (error == std::errc::result_out_of_range) {
        if (!is_tiny(text))
            return std::nullopt;
        return text.starts_with('-') ? -0.0 : 0.0;
    }
    if (!std::isfinite(value) && words == NonFinite::Refuse)
        return std::nullopt;
    // from_chars takes "nan(...)" as well, which nobody writes on purpose.
    if (text.ends_with(')'))
        return std::nullopt;
    return value;
}

std::optional<long> parse_long(std::string_view text)
{
    if (!take_plus(text))
        return std::nullopt;
    long value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return value;
}

std::string format_shortest(double value)
{
    return std::isfinite(value) ? shortest(value) : not_finite(value);
}

std::string format_shortest(float value)
{
    return std::isfinite(value) ? shortest(value) : not_finite(value);
}

std::string format_general(double value, int digits)
{
    if (!std::isfinite(value))
        return not_finite(value);
    digits = std::clamp(digits, 1, std::numeric_limits<double>::max_digits10);
    std::array<char, 64> text;
    const auto result =
        std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::general, digits);
    return {text.data(), result.ptr};
}

} // namespace lodex
