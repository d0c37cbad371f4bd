#include <lodex/utils/Numbers.h>

#include <gtest/gtest.h>

#include <bit>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <limits>
#include <locale>
#include <random>
#include <sstream>
#include <string>
#include <string_view>

using lodex::format_general;
using lodex::format_shortest;
using lodex::NonFinite;
using lodex::parse_double;
using lodex::parse_long;

TEST(Numbers, ReadsWhatPeopleWrite)
{
    EXPECT_EQ(parse_double("0"), 0.0);
    EXPECT_EQ(parse_double("5"), 5.0);
    EXPECT_EQ(parse_double("+5"), 5.0);
    EXPECT_EQ(parse_double("-.5"), -0.5);
    EXPECT_EQ(parse_double("+.5"), 0.5);
    EXPECT_EQ(parse_double("5."), 5.0);
    EXPECT_EQ(parse_double("1e5"), 1e5);
    EXPECT_EQ(parse_double("1E+5"), 1e5);
    EXPECT_EQ(parse_double("1e-5"), 1e-5);
    EXPECT_EQ(parse_double("0001.50"), 1.5);
    EXPECT_EQ(parse_double("1.7976931348623157e308"), std::numeric_limits<double>::max());
    EXPECT_EQ(parse_double("5e-324"), std::numeric_limits<double>::denorm_min());
    EXPECT_TRUE(std::signbit(parse_double("-0").value()));
}

TEST(Numbers, RefusesWhatIsNoNumberAsAWhole)
{
    for (const char* text : {"", " ", "+", "-", ".", "e5", "1e", "1e+", " 1", "1 ", "1\n", "1,5", "1.5.2", "++1", "+-1",
                             "-+1",
                             "--1", "0x10", "1x", "1d5", "1_000", "1'000", "five", "1;", "1+2"})
        EXPECT_FALSE(parse_double(text).has_value()) << '"' << text << '"';
    EXPECT_FALSE(parse_double(std::string_view("1\0", 2)).has_value());
}

TEST(Numbers, WordsForNonFiniteOnlyWhenAccepted)
{
    for (const char* text : {"inf", "-inf", "+INF", "Infinity", "nan", "-NaN"}) {
        EXPECT_FALSE(parse_double(text).has_value()) << text;
        EXPECT_TRUE(parse_double(text, NonFinite::Accept).has_value()) << text;
    }
    EXPECT_EQ(parse_double("-inf", NonFinite::Accept), -std::numeric_limits<double>::infinity());
    EXPECT_TRUE(std::isnan(parse_double("nan", NonFinite::Accept).value()));
    EXPECT_FALSE(parse_double("nan(7)", NonFinite::Accept).has_value());
    EXPECT_FALSE(parse_double("infx", NonFinite::Accept).has_value());
    EXPECT_EQ(parse_double("2", NonFinite::Accept), 2.0);
}

TEST(Numbers, TooLargeIsRefusedTooSmallIsZero)
{
    EXPECT_FALSE(parse_double("1e309").has_value());
    EXPECT_FALSE(parse_double("-1e400").has_value());
    EXPECT_FALSE(parse_double("1e309", NonFinite::Accept).has_value());
    EXPECT_FALSE(parse_double("1e99999999999999999999").has_value());
    EXPECT_FALSE(parse_double("1" + std::string(400, '0')).has_value());
    EXPECT_FALSE(parse_double("1" + std::string(400, '0') + "e-10").has_value());
    EXPECT_EQ(parse_double("1e-400"), 0.0);
    EXPECT_EQ(parse_double("+1e-99999999999999999999"), 0.0);
    EXPECT_EQ(parse_double("0." + std::string(400, '0') + "1"), 0.0);
    EXPECT_EQ(parse_double("0." + std::string(400, '0') + "1e+10"), 0.0);
    EXPECT_TRUE(std::signbit(parse_double("-1e-400").value()));
    EXPECT_EQ(parse_double("0e999"), 0.0);
}

TEST(Numbers, WholeNumbers)
{
    EXPECT_EQ(parse_long("0"), 0);
    EXPECT_EQ(parse_long("+12"), 12);
    EXPECT_EQ(parse_long("-12"), -12);
    EXPECT_EQ(parse_long("007"), 7);
    EXPECT_EQ(parse_long("9223372036854775807"), std::numeric_limits<long>::max());
    EXPECT_EQ(parse_long("-9223372036854775808"), std::numeric_limits<long>::min());
    for (const char* text : {"", "+", "-", "9223372036854775808", "-9223372036854775809", "1.0", "1e5", " 1", "1 ",
                             "+-1", "0x1", "one"})
        EXPECT_FALSE(parse_long(text).has_value()) << '"' << text << '"';
}

TEST(Numbers, ShortestText)
{
    EXPECT_EQ(format_shortest(50.0), "50");
    EXPECT_EQ(format_shortest(-0.1), "-0.1");
    EXPECT_EQ(format_shortest(0.1f), "0.1");
    EXPECT_EQ(format_shortest(static_cast<double>(0.1f)), "0.10000000149011612");
    EXPECT_EQ(format_shortest(1e6), "1000000");
    EXPECT_EQ(format_shortest(999999999999999.0), "999999999999999");
    EXPECT_EQ(format_shortest(1e15), "1e+15");
    EXPECT_EQ(format_shortest(1e-300), "1e-300");
    EXPECT_EQ(format_shortest(0.0), "0");
    EXPECT_EQ(format_shortest(-0.0), "-0");
    EXPECT_EQ(format_shortest(std::numeric_limits<double>::quiet_NaN()), "nan");
    EXPECT_EQ(format_shortest(-std::numeric_limits<double>::quiet_NaN()), "nan");
    EXPECT_EQ(format_shortest(std::numeric_limits<float>::infinity()), "inf");
    EXPECT_EQ(format_shortest(-std::numeric_limits<double>::infinity()), "-inf");
    EXPECT_EQ(format_shortest(12), "12");
    EXPECT_EQ(format_shortest(-12L), "-12");
}

TEST(Numbers, ShortestTextReadsBackAsTheSameNumber)
{
    std::mt19937_64 random(7);
    for (int n = 0; n < 20000; ++n) {
        const double value = std::bit_cast<double>(random());
        if (!std::isfinite(value))
            continue;
        const auto back = parse_double(format_shortest(value));
        ASSERT_TRUE(back.has_value()) << format_shortest(value);
        ASSERT_EQ(std::bit_cast<std::uint64_t>(*back), std::bit_cast<std::uint64_t>(value)) << format_shortest(value);
    }
    for (int n = 0; n < 20000; ++n) {
        const float value = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
        if (!std::isfinite(value))
            continue;
        const auto back = parse_double(format_shortest(value));
        ASSERT_TRUE(back.has_value()) << format_shortest(value);
        ASSERT_EQ(static_cast<float>(*back), value) << format_shortest(value);
    }
}

TEST(Numbers, GeneralTextIsWhatAStreamWrites)
{
    for (const double value : {0.0, 50.0, 0.5, 100.0 / 3.0, 1234567.0, 1e-5, -2.5e10, 123456.0}) {
        std::ostringstream stream;
        stream << value;
        EXPECT_EQ(format_general(value, 6), stream.str());
    }
    EXPECT_EQ(format_general(1.0 / 3.0, 2), "0.33");
    EXPECT_EQ(format_general(1.0 / 3.0, 0), "0.3");
    EXPECT_EQ(format_general(0.1, 99), "0.10000000000000001");
}

namespace {

class DecimalComma : public std::numpunct<char> {
public:
    DecimalComma() : numpunct(1) {} // not owned by the locale
    ~DecimalComma() override = default;

protected:
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

} // namespace

TEST(Numbers, TheLocaleOfTheUserChangesNothing)
{
    static const DecimalComma comma;
    const std::locale former = std::locale::global(std::locale(std::locale::classic(), &comma));
    for (const char* name : {"de_DE.UTF-8", "fr_FR.UTF-8", "C"}) { // as many as the machine has, for the C library
        const std::string former_name = std::setlocale(LC_ALL, nullptr);
        static_cast<void>(std::setlocale(LC_ALL, name));
        EXPECT_EQ(parse_double("1234.5"), 1234.5);
        EXPECT_FALSE(parse_double("1,5").has_value());
        EXPECT_EQ(format_shortest(1234.5), "1234.5");
        EXPECT_EQ(format_shortest(12345), "12345");
        EXPECT_EQ(format_general(1234.5, 6), "1234.5");
        std::setlocale(LC_ALL, former_name.c_str());
    }
    std::locale::global(former);
}
