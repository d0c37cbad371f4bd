#include <Lodex/gtools/Colormap.h>

#include <Lodex/geobase/Style.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using Lodex::Colormap;
using Lodex::Style;

namespace {

using Rgb = Colormap::Rgb;

Colormap make(const char* map, const char* low, const char* high, const char* scale = "linear")
{
    Style style("S");
    style.set_attribute("colormap", map);
    style.set_attribute("low_clip", low);
    style.set_attribute("high_clip", high);
    style.set_attribute("scale_function", scale);
    return Colormap(style);
}

/// CIE lightness L*, 0 to 100.
double lightness(const Rgb& colour)
{
    const auto linear = [](double c) { return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4); };
    const double y = 0.2126 * linear(colour[0] / 255.0) + 0.7152 * linear(colour[1] / 255.0) +
                     0.0722 * linear(colour[2] / 255.0);
    return y > 0.008856 ? 116 * std::cbrt(y) - 16 : 903.3 * y;
}

} // namespace

TEST(Colormap, EndsAndSupportPointsAreThoseOfTheTable)
{
    const Colormap map = make("viridis", "0", "1");
    EXPECT_EQ(map.colour(0), (Rgb{0x44, 0x01, 0x54}));
    EXPECT_EQ(map.colour(0.5), (Rgb{0x21, 0x91, 0x8c}));
    EXPECT_EQ(map.colour(1), (Rgb{0xfd, 0xe7, 0x25}));
    EXPECT_EQ(map.colour(-3), map.colour(0));
    EXPECT_EQ(map.colour(7), map.colour(1));
    EXPECT_EQ(make("coolwarm", "0", "1").colour(0.5), (Rgb{0xdd, 0xdd, 0xdd}));
}

TEST(Colormap, SequentialMapsGrowEvenlyLighter)
{
    for (const char* name : {"viridis", "inferno", "cividis", "grey"}) {
        const Colormap map = make(name, "0", "1");
        const double whole = lightness(map.colour(1)) - lightness(map.colour(0));
        ASSERT_GT(whole, 60) << name;
        double former = lightness(map.colour(0));
        for (int i = 1; i <= 20; ++i) {
            const double now = lightness(map.colour(i / 20.0));
            EXPECT_GT(now - former, whole / 20 * 0.25) << name << " at " << i;
            EXPECT_LT(now - former, whole / 20 * 1.7) << name << " at " << i;
            former = now;
        }
    }
}

TEST(Colormap, UnknownMapIsTheDefaultOne)
{
    EXPECT_EQ(make("no such map", "0", "1").colour(0.3), make("viridis", "0", "1").colour(0.3));
    EXPECT_EQ(make("", "0", "1").colour(0.3), make("viridis", "0", "1").colour(0.3));
}

TEST(Colormap, ValuesStandBetweenTheClips)
{
    const Colormap map = make("grey", "-5", "15");
    EXPECT_EQ(map.low_clip(), -5);
    EXPECT_EQ(map.high_clip(), 15);
    EXPECT_EQ(map.colour_of(0), map.colour(0.25));
    EXPECT_EQ(map.colour_of(-100), map.colour(0));
    EXPECT_EQ(map.colour_of(100), map.colour(1));
    EXPECT_EQ(map.colour_of(std::numeric_limits<double>::infinity()), map.colour(1));
    EXPECT_EQ(map.colour_of(std::nan("")), (Rgb{128, 128, 128}));
}

TEST(Colormap, ReversedClipsReverseTheColours)
{
    const Colormap map = make("viridis", "10", "0");
    EXPECT_EQ(map.colour_of(10), map.colour(0));
    EXPECT_EQ(map.colour_of(2.5), map.colour(0.75));
}

TEST(Colormap, LogarithmicScale)
{
    const Colormap map = make("viridis", "0.01", "10000", "log");
    EXPECT_EQ(map.colour_of(0.01), map.colour(0));
    EXPECT_EQ(map.colour_of(10), map.colour(0.5));
    EXPECT_EQ(map.colour_of(10000), map.colour(1));
    EXPECT_EQ(map.colour_of(0), map.colour(0));
    EXPECT_EQ(map.colour_of(-4), map.colour(0));
    const Colormap reversed = make("viridis", "10000", "0.01", "log");
    EXPECT_EQ(reversed.colour_of(0), reversed.colour(1));
    const Colormap impossible = make("viridis", "0", "10", "log");
    EXPECT_EQ(impossible.colour_of(5), impossible.colour(0.5)) << "no logarithm of zero: linear";
}

TEST(Colormap, EqualClipsAndMissingAttributes)
{
    const Colormap flat = make("viridis", "3", "3");
    EXPECT_EQ(flat.colour_of(2), flat.colour(0));
    EXPECT_EQ(flat.colour_of(3), flat.colour(0.5));
    EXPECT_EQ(flat.colour_of(4), flat.colour(1));
    const Colormap bare = Colormap(Style("S"));
    EXPECT_EQ(bare.low_clip(), 0);
    EXPECT_EQ(bare.high_clip(), 1);
    EXPECT_EQ(make("grey", "low", "2").low_clip(), 0) << "text that is no number";
}

TEST(Colormap, IsACopyOfTheStyle)
{
    Style style("S");
    style.set_attribute("high_clip", "2");
    const Colormap map(style);
    style.set_attribute("high_clip", "20");
    EXPECT_EQ(map.high_clip(), 2);
}
