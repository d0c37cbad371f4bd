#include <Lodex/gtools/Colormap.h>

#include <lodex/utils/Numbers.h>

#include <Lodex/geobase/Style.h>

#include <algorithm>
#include <cmath>
#include <span>
#include <string_view>

namespace Lodex {

namespace {

// Support points at equal distances, in between interpolated in the Oklab space (B. Ottosson, 2020), where equal steps
// look equal. viridis and inferno after S. van der Walt and N. Smith (2015, CC0), cividis after Nuñez, Anderton and
// Renslow (2018, CC0), coolwarm after K. Moreland (2009, public description).
constexpr std::array<std::uint32_t, 11> kViridis = {0x440154, 0x482475, 0x414487, 0x355f8d, 0x2a788e, 0x21918c,
                                                    0x22a884, 0x44bf70, 0x7ad151, 0xbddf26, 0xfde725};
constexpr std::array<std::uint32_t, 11> kInferno = {0x000004, 0x160b39, 0x420a68, 0x6a176e, 0x932667, 0xbc3754,
                                                    0xdd513a, 0xf37819, 0xfca50a, 0xf6d746, 0xfcffa4};
constexpr std::array<std::uint32_t, 5> kCividis = {0x00224e, 0x434e6c, 0x7d7c78, 0xbcae6c, 0xfee838};
constexpr std::array<std::uint32_t, 5> kCoolwarm = {0x3b4cc0, 0x8db0fe, 0xdddddd, 0xf4987a, 0xb40426};
constexpr std::array<std::uint32_t, 2> kGrey = {0x101010, 0xf4f4f4};

struct Table {
    std::string_view name;
    std::span<const std::uint32_t> points;
};
constexpr std::array<Table, 5> kTables = {{{"viridis", kViridis},
                                           {"inferno", kInferno},
                                           {"cividis", kCividis},
                                           {"coolwarm", kCoolwarm},
                                           {"grey", kGrey}}};

constexpr Colormap::Rgb kUndefined = {128, 128, 128};

using Triple = std::array<double, 3>;

double to_linear(std::uint32_t byte)
{
    const double c = byte / 255.0;
    return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
}

std::uint8_t to_byte(double linear)
{
    const double c = linear <= 0.0031308 ? 12.92 * linear : 1.055 * std::pow(linear, 1 / 2.4) - 0.055;
    return static_cast<std::uint8_t>(std::lround(std::clamp(c, 0.0, 1.0) * 255));
}

Triple to_oklab(std::uint32_t rgb)
{
    const double r = to_linear(rgb >> 16 & 0xff), g = to_linear(rgb >> 8 & 0xff), b = to_linear(rgb & 0xff);
    const double l = std::cbrt(0.4122214708 * r + 0.5363325363 * g + 0.0514459929 * b);
    const double m = std::cbrt(0.2119034982 * r + 0.6806995451 * g + 0.1073969566 * b);
    const double s = std::cbrt(0.0883024619 * r + 0.2817188376 * g + 0.6299787005 * b);
    return {0.2104542553 * l + 0.7936177850 * m - 0.0040720468 * s,
            1.9779984951 * l - 2.4285922050 * m + 0.4505937099 * s,
            0.0259040371 * l + 0.7827717662 * m - 0.8086757660 * s};
}

Colormap::Rgb from_oklab(const Triple& lab)
{
    const auto cube = [](double x) { return x * x * x; };
    const double l = cube(lab[0] + 0.3963377774 * lab[1] + 0.2158037573 * lab[2]);
    const double m = cube(lab[0] - 0.1055613458 * lab[1] - 0.0638541728 * lab[2]);
    const double s = cube(lab[0] - 0.0894841775 * lab[1] - 1.2914855480 * lab[2]);
    return {to_byte(4.0767416621 * l - 3.3077115913 * m + 0.2309699292 * s),
            to_byte(-1.2684380046 * l + 2.6097574011 * m - 0.3413193965 * s),
            to_byte(-0.0041960863 * l - 0.7034186147 * m + 1.7076147010 * s)};
}

std::span<const std::uint32_t> table(const CString& name)
{
    const auto it = std::ranges::find(kTables, std::string_view(name), &Table::name);
    return it == kTables.end() ? std::span<const std::uint32_t>(kViridis) : it->points;
}

double read(const Style& style, const char* attribute, double otherwise)
{
    return lodex::parse_double(style.attribute(attribute).str()).value_or(otherwise);
}

} // namespace

std::vector<CString> Colormap::names()
{
    std::vector<CString> result;
    for (const Table& each : kTables)
        result.emplace_back(each.name);
    return result;
}

Colormap::Colormap(const Style& style)
    : map_(style.attribute("colormap")), low_(read(style, "low_clip", 0)), high_(read(style, "high_clip", 1)),
      log_(style.attribute("scale_function") == CString("log") && low_ > 0 && high_ > 0)
{
}

Colormap::Rgb Colormap::colour(double place) const
{
    if (std::isnan(place))
        return kUndefined;
    const std::span<const std::uint32_t> points = table(map_);
    const double at = std::clamp(place, 0.0, 1.0) * static_cast<double>(points.size() - 1);
    const std::size_t i = std::min(static_cast<std::size_t>(at), points.size() - 2);
    const double t = at - static_cast<double>(i);
    const Triple a = to_oklab(points[i]), b = to_oklab(points[i + 1]);
    return from_oklab({std::lerp(a[0], b[0], t), std::lerp(a[1], b[1], t), std::lerp(a[2], b[2], t)});
}

Colormap::Rgb Colormap::colour_of(double value) const
{
    if (std::isnan(value))
        return kUndefined;
    if (low_ == high_)
        return colour(value < low_ ? 0.0 : value > high_ ? 1.0 : 0.5);
    // On a logarithmic scale zero and below lie beyond the smaller of the two clips.
    if (log_)
        return colour(value > 0 ? std::log(value / low_) / std::log(high_ / low_) : (low_ < high_ ? 0.0 : 1.0));
    return colour((value - low_) / (high_ - low_));
}

} // namespace Lodex
