#include <lodex/gridio/TextNumbers.h>

#include <algorithm>
#include <string>

namespace lodex {

namespace text_numbers {

const char* parse_long_decimal(const char* p, Decimal& number)
{
    constexpr int most_digits = 19;
    constexpr std::int32_t most_exponent = 1'000'000;
    const char* const start = p;
    number = {};
    number.negative = *p == '-';
    p += *p == '-' || *p == '+' ? 1 : 0;
    int significant = 0;
    bool point = false;
    for (;; ++p) {
        if (*p == '.' && !point) {
            point = true;
            number.integer = false;
            continue;
        }
        if (!is_digit(*p)) {
            break;
        }
        if (significant < most_digits) {
            number.digits = 10 * number.digits + static_cast<std::uint64_t>(*p - '0');
            significant += number.digits != 0 ? 1 : 0;
            number.exponent -= point ? 1 : 0;
        } else {
            number.cut = number.cut || *p != '0';
            number.exponent += point ? 0 : 1;
        }
        number.exponent = std::clamp(number.exponent, -most_exponent, most_exponent);
    }
    if ((*p | 0x20) == 'e' || (*p | 0x20) == 'd') {
        const char* q = p + 1;
        const bool negative = *q == '-';
        q += *q == '-' || *q == '+' ? 1 : 0;
        if (is_digit(*q)) {
            std::int32_t exponent = 0;
            for (; is_digit(*q); ++q) {
                exponent = std::min(10 * exponent + (*q - '0'), most_exponent);
            }
            number.exponent += negative ? -exponent : exponent;
            number.integer = false;
            p = q;
        }
    }
    number.text = {start, static_cast<std::size_t>(p - start)};
    return p;
}

namespace {

/// The token in the form that std::from_chars reads: no plus sign, e for the exponent.
std::string plain_token(const Decimal& number)
{
    std::string token(number.text);
    if (!token.empty() && token.front() == '+') {
        token.erase(0, 1);
    }
    for (char& c : token) {
        c = c == 'd' || c == 'D' || c == 'E' ? 'e' : c;
    }
    return token;
}

template <class Real> Real slow_value(const Decimal& number)
{
    const std::string token = plain_token(number);
    Real value = 0;
    const auto [end, error] = std::from_chars(token.data(), token.data() + token.size(), value);
    if (error == std::errc::result_out_of_range) {
        // Too large or too small; the magnitude of the first 19 digits tells which.
        const double size = std::log10(std::max(1.0, static_cast<double>(number.digits))) + number.exponent;
        value = size > 0 ? std::numeric_limits<Real>::infinity() : Real{0};
        value = number.negative ? -value : value;
    }
    return value;
}

} // namespace

double slow_double(const Decimal& number)
{
    return slow_value<double>(number);
}

float slow_float(const Decimal& number)
{
    return slow_value<float>(number);
}

namespace {

/// Without trailing zeros, so that equal decimals have equal parts.
void strip_zeros(std::uint64_t& digits, std::int32_t& exponent)
{
    while (digits != 0 && digits % 10 == 0) {
        digits /= 10;
        ++exponent;
    }
}

bool is_shortest_of(float magnitude, std::uint64_t digits, std::int32_t exponent)
{
    std::array<char, NumberFormatter::most_characters> text{}; // ends with zeros
    std::to_chars(text.data(), text.data() + text.size() - 1, magnitude, std::chars_format::scientific);
    Decimal back;
    parse_decimal(text.data(), back);
    strip_zeros(back.digits, back.exponent);
    return back.digits == digits && (digits == 0 || back.exponent == exponent);
}

} // namespace

bool slow_fits_float(const Decimal& number, float value)
{
    if (!std::isfinite(value)) {
        return false;
    }
    if (static_cast<double>(value) == to_double(number)) {
        return true;
    }
    if (number.cut) {
        return false;
    }
    std::uint64_t digits = number.digits;
    std::int32_t exponent = number.exponent;
    strip_zeros(digits, exponent);
    constexpr std::uint64_t most_digits = 1'000'000'000; // no float needs more than nine
    if (digits >= most_digits) {
        return false;
    }
    const float magnitude = std::fabs(value);
    if (magnitude >= std::numeric_limits<float>::min() && digits < (std::uint64_t{1} << 23)) {
        return true;
    }
    const bool power_of_two = (std::bit_cast<std::uint32_t>(magnitude) & 0x7FFFFF) == 0;
    if (magnitude < std::numeric_limits<float>::min() || exponent < -22 || exponent > 22 || power_of_two) {
        return is_shortest_of(magnitude, digits, exponent);
    }
    // Everything in units of the last decimal place: the float, half the width of the interval of reals that round to
    // it, and the nearest decimal with one place less. The scaled float is exact to 2^-52 of about 1e9.
    const double scale = powers_of_ten[static_cast<std::size_t>(std::abs(exponent))];
    const double scaled = exponent < 0 ? magnitude * scale : magnitude / scale;
    const int binary = static_cast<int>(std::bit_cast<std::uint32_t>(magnitude) >> 23) - 127 - 23;
    const double half_width = std::ldexp(exponent < 0 ? scale : 1 / scale, binary - 1);
    const double offset = std::fabs(scaled - static_cast<double>(digits));
    const double shorter = std::fabs(scaled - 10 * std::nearbyint(scaled / 10));
    constexpr double margin = 1e-5;
    if (std::fabs(offset - 0.5) > margin && std::fabs(shorter - half_width) > margin) {
        return offset < 0.5 && shorter > half_width;
    }
    return is_shortest_of(magnitude, digits, exponent);
}

} // namespace text_numbers

std::optional<std::int32_t> slow_integer(const Decimal& number)
{
    constexpr std::uint64_t most = std::uint64_t{1} << 31;
    if (number.cut) {
        return std::nullopt;
    }
    std::uint64_t digits = number.digits;
    std::int32_t exponent = number.exponent;
    for (; exponent < 0 && digits % 10 == 0 && digits != 0; ++exponent) {
        digits /= 10;
    }
    for (; exponent > 0 && digits != 0 && digits < most; --exponent) {
        digits *= 10;
    }
    if (digits == 0) {
        return 0;
    }
    if (exponent != 0 || digits > most || (digits == most && !number.negative)) {
        return std::nullopt;
    }
    const auto value = static_cast<std::int64_t>(digits);
    return static_cast<std::int32_t>(number.negative ? -value : value);
}

namespace {

/// All digits of value, at least one.
char* write_digits(char* out, std::uint64_t value)
{
    return std::to_chars(out, out + NumberFormatter::most_characters, value).ptr;
}

} // namespace

template <class Real> char* NumberFormatter::write_real(char* out, Real value)
{
    // A decimal of few digits that rounds to this number is the shortest text of it, by the same argument as in
    // fits_float. Guess its number of decimals, check by dividing (exact operands, one rounding).
    constexpr auto most_digits = static_cast<Real>(std::uint64_t{1} << (std::is_same_v<Real, float> ? 23 : 52));
    constexpr int most_decimals = std::is_same_v<Real, float> ? 10 : 15;
    constexpr int misses_to_rest = 16;
    constexpr int values_to_rest = 256;
    if (rest_ == 0) {
        const Real magnitude = std::fabs(value);
        int decimals = decimals_;
        for (int attempt = 0; attempt < 3; ++attempt) {
            decimals = std::clamp(decimals, 0, most_decimals);
            const double scale = text_numbers::powers_of_ten[static_cast<std::size_t>(decimals)];
            const double scaled = static_cast<double>(magnitude) * scale;
            if (!(scaled < static_cast<double>(most_digits) - 1)) {
                decimals -= 2;
                continue;
            }
            auto digits = static_cast<std::uint64_t>(scaled + 0.5);
            const Real back = static_cast<Real>(digits) / static_cast<Real>(scale);
            if (back != magnitude || (digits != 0 && magnitude < std::numeric_limits<Real>::min())) {
                decimals += attempt + 1;
                continue;
            }
            decimals_ = decimals;
            misses_ = 0;
            if (std::signbit(value)) {
                *out++ = '-';
            }
            const auto unit = static_cast<std::uint64_t>(scale);
            const std::uint64_t whole = digits / unit;
            std::uint64_t rest = digits % unit;
            out = write_digits(out, whole);
            if (rest != 0) {
                int places = decimals;
                while (rest % 10 == 0) {
                    rest /= 10;
                    --places;
                }
                *out++ = '.';
                for (int i = places - 1; i >= 0; --i) {
                    out[i] = static_cast<char>('0' + rest % 10);
                    rest /= 10;
                }
                out += places;
            }
            return out;
        }
        if (++misses_ >= misses_to_rest) {
            misses_ = 0;
            rest_ = values_to_rest;
            decimals_ = 3;
        }
    } else {
        --rest_;
    }
    return std::to_chars(out, out + most_characters, value).ptr;
}

template char* NumberFormatter::write_real(char* out, float value);
template char* NumberFormatter::write_real(char* out, double value);

namespace {

template <class Real> std::string shortest(Real value)
{
    std::array<char, NumberFormatter::most_characters> text{};
    return {text.data(), std::to_chars(text.data(), text.data() + text.size(), value).ptr};
}

} // namespace

double decimal_double(float value)
{
    std::array<char, NumberFormatter::most_characters> text{}; // ends with zeros
    std::to_chars(text.data(), text.data() + text.size() - 1, value);
    Decimal number;
    parse_decimal(text.data(), number);
    return to_double(number);
}

std::string shortest_text(double value)
{
    return shortest(value);
}

std::string shortest_text(float value)
{
    return shortest(value);
}

} // namespace lodex
