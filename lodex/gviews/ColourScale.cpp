#include "ColourScale.h"

#include "lodex/utils/Numbers.h"

#include <Lodex/geobase/Style.h>

#include <QColor>
#include <QStringList>

#include <charconv>
#include <cmath>
#include <sstream>
#include <utility>

namespace lodex {

namespace {

/// Passes over what does not read.
std::map<std::int32_t, std::uint32_t> read_code_colours(const std::string& text)
{
    std::map<std::int32_t, std::uint32_t> colours;
    std::istringstream words(text);
    for (std::string code, colour; words >> code >> colour;) {
        const auto number = parse_long(code);
        std::uint32_t rgb = 0;
        const char* const end = colour.data() + colour.size();
        if (!number || !std::in_range<std::int32_t>(*number) || colour.size() != 7 || colour[0] != '#' ||
            std::from_chars(colour.data() + 1, end, rgb, 16).ptr != end)
            continue;
        colours[static_cast<std::int32_t>(*number)] = rgb;
    }
    return colours;
}

std::string written(const std::map<std::int32_t, std::uint32_t>& colours)
{
    QStringList words;
    for (const auto& [code, rgb] : colours)
        words << QString::number(code) << QColor::fromRgb(rgb).name();
    return words.join(QLatin1Char(' ')).toStdString();
}

} // namespace

ColourScale read_colour_scale(const Lodex::Style& style)
{
    ColourScale scale;
    scale.colormap = style.attribute("colormap").str();
    const auto finite = [&style](const char* attribute) { return parse_double(style.attribute(attribute).str()); };
    scale.low = finite("low_clip");
    scale.high = finite("high_clip");
    const std::string function = style.attribute("scale_function").str();
    scale.function = function == "log"      ? ColourScale::Function::Logarithmic
                     : function == "linear" ? ColourScale::Function::Linear
                                            : ColourScale::Function::Automatic;
    scale.grey_outside = style.attribute("outside_clips") == Lodex::CString("grey");
    scale.code_colours = read_code_colours(style.attribute("code_colours").str());
    return scale;
}

void write_colour_scale(Lodex::Style& style, const ColourScale& scale)
{
    bool changed = false;
    const auto set = [&](const char* attribute, const std::string& value) {
        if (style.attribute(attribute).str() == value)
            return;
        style.set_attribute(attribute, value);
        changed = true;
    };
    const auto text = [](std::optional<double> number) { return number ? format_shortest(*number) : std::string(); };
    set("colormap", scale.colormap);
    set("low_clip", text(scale.low));
    set("high_clip", text(scale.high));
    set("scale_function", scale.function == ColourScale::Function::Logarithmic ? "log"
                          : scale.function == ColourScale::Function::Linear    ? "linear"
                                                                               : "");
    set("outside_clips", scale.grey_outside ? "grey" : "");
    set("code_colours", written(scale.code_colours));
    if (changed)
        style.update();
}

std::vector<double> round_ticks(double low, double high, int count)
{
    std::vector<double> numbers;
    const double range = high - low;
    if (!(range > 0) || !std::isfinite(range) || count < 1)
        return numbers;
    const double wanted = range / count;
    const double decade = std::pow(10.0, std::floor(std::log10(wanted)));
    double step = 10 * decade;
    for (const double factor : {5.0, 2.0, 1.0}) {
        if (wanted <= factor * decade)
            step = factor * decade;
    }
    const double tolerance = 1e-9 * step;
    for (double n = std::ceil((low - tolerance) / step); n * step <= high + tolerance; ++n)
        numbers.push_back(n == 0 ? 0.0 : n * step);
    return numbers;
}

} // namespace lodex
