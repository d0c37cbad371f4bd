#include "CellColours.h"

#include "lodex/geobase/ProjectUnits.h"
#include "lodex/utils/Numbers.h"
#include "lodex/volumes/CornerPointGrid.h"
#include "lodex/volumes/model/PropertyTools.h"
#include "lodex/volumes/model/Statistics.h"

#include <Lodex/geobase/Property.h>
#include <Lodex/geobase/Style.h>
#include <Lodex/qtools/QtText.h>

#include <QCoreApplication>

#include <algorithm>
#include <array>
#include <cmath>

namespace lodex {

namespace {

// Colours that people with any colour vision tell apart (M. Okabe and K. Ito, 2008), the darkest left out.
constexpr std::array<QRgb, 7> distinct{0xff56b4e9, 0xffe69f00, 0xff009e73, 0xfff0e442,
                                       0xff0072b2, 0xffd55e00, 0xffcc79a7};
constexpr QRgb plain = 0xff8fa3b3;
constexpr QRgb undefined_colour = 0xff808080;
constexpr int scale_steps = 1024;
constexpr double logarithmic_from = 1000; // ratio of greatest and least value

QColor distinct_colour(std::size_t n)
{
    if (n < distinct.size())
        return QColor(distinct[n]);
    // Further ones turn round the circle of hues by the golden angle, so that neighbours in the list differ.
    const double turn = std::fmod(static_cast<double>(n) * 0.618033988749895, 1.0);
    return QColor::fromHslF(static_cast<float>(turn), 0.55f, n % 2 == 0 ? 0.45f : 0.65f);
}

QString number_text(double number)
{
    return QString::fromStdString(format_general(number, 4));
}

QString with_unit(const std::string& name, const std::string& unit)
{
    const QString text = QString::fromStdString(name);
    return unit.empty() ? text : text + QStringLiteral(" [%1]").arg(QString::fromStdString(unit));
}

} // namespace

std::vector<double> round_numbers(double low, double high, int count)
{
    std::vector<double> numbers;
    const double range = high - low;
    if (!(range > 0) || !std::isfinite(range) || count < 1)
        return numbers;
    const double wanted = range / count;
    const double decade = std::pow(10.0, std::floor(std::log10(wanted)));
    const double step = wanted <= decade       ? decade
                        : wanted <= 2 * decade ? 2 * decade
                        : wanted <= 5 * decade ? 5 * decade
                                               : 10 * decade;
    const double tolerance = 1e-9 * step;
    for (double n = std::ceil((low - tolerance) / step); n * step <= high + tolerance; ++n)
        numbers.push_back(n == 0 ? 0.0 : n * step);
    return numbers;
}

QString grouped(std::int64_t number)
{
    QString text = QString::number(number);
    for (qsizetype at = text.size() - 3; at > (number < 0 ? 1 : 0); at -= 3)
        text.insert(at, QChar(0x202f)); // narrow blank that does not break
    return text;
}

QString length_unit_text(const CornerPointGrid& grid)
{
    const auto unit = length_unit_from_word(grid.header().frame.grid_units);
    return unit ? Lodex::to_qstring(measurement_unit(*unit).name()) : QString();
}

CellColours::CellColours(const CornerPointGrid& grid, const Colouring& colouring)
{
    cells_per_layer_ = grid.header().size[0] * grid.header().size[1];
    if (colouring.kind == Colouring::Kind::Unit) {
        use_units(grid);
        return;
    }
    if (colouring.kind != Colouring::Kind::Property)
        return;
    const PropertyData* property = grid.model().find_property(colouring.property);
    if (!property || property->on_points)
        return;
    property_ = property;
    title_ = with_unit(property->name, property->unit);
    if (property->discrete())
        use_codes(*property, grid);
    else
        use_scale(*property, grid);
}

void CellColours::use_units(const CornerPointGrid& grid)
{
    if (grid.header().layers.empty())
        return;
    title_ = QCoreApplication::translate("lodex::CellColours", "unit");
    for (const LayerData& layer : grid.header().layers) {
        entry_of_layer_.insert(entry_of_layer_.end(), static_cast<std::size_t>(layer.nb_k_cells), entries_.size());
        entries_.push_back({distinct_colour(entries_.size()), QString::fromStdString(layer.unit)});
    }
}

void CellColours::use_codes(const PropertyData& property, const CornerPointGrid& grid)
{
    for (const auto& [code, count] : property_statistics(grid.model(), property).codes) {
        if (count == 0)
            continue;
        const auto name = property.code_names.find(code);
        entry_of_code_[code] = entries_.size();
        entries_.push_back({distinct_colour(entries_.size()), name == property.code_names.end()
                                                                  ? QString::number(code)
                                                                  : QString::fromStdString(name->second)});
    }
}

void CellColours::use_scale(const PropertyData& property, const CornerPointGrid& grid)
{
    Lodex::Style style(property.name);
    if (const Lodex::Property* shown = grid.property_db()->find(property.name))
        style.copy_attributes(*shown->style());
    const PropertyStatistics statistics = property_statistics(grid.model(), property);
    const double least = statistics.min.value_or(0), greatest = statistics.max.value_or(1);
    const auto complete = [&style](const char* attribute, const std::string& value) {
        if (style.attribute(attribute).empty())
            style.set_attribute(attribute, value);
    };
    complete("low_clip", format_shortest(least));
    complete("high_clip", format_shortest(greatest));
    if (least > 0 && greatest / least > logarithmic_from)
        complete("scale_function", "log");

    map_.emplace(style);
    const double low = map_->low_clip(), high = map_->high_clip();
    logarithmic_ = style.attribute("scale_function") == Lodex::CString("log") && low > 0 && high > 0 && low != high;
    scale_.reserve(scale_steps);
    for (int n = 0; n < scale_steps; ++n) {
        const auto [r, g, b] = map_->colour(n / (scale_steps - 1.0));
        scale_.push_back(qRgb(r, g, b));
    }

    if (low == high) {
        ticks_.push_back({0.5, number_text(low)});
    } else if (logarithmic_) {
        const double from = std::log10(std::min(low, high)), to = std::log10(std::max(low, high));
        for (const double exponent : round_numbers(from, to, 5)) {
            if (exponent == std::round(exponent) || to - from < 2)
                ticks_.push_back({place_of(std::pow(10.0, exponent)), number_text(std::pow(10.0, exponent))});
        }
    } else {
        for (const double number : round_numbers(std::min(low, high), std::max(low, high), 5))
            ticks_.push_back({place_of(number), number_text(number)});
    }
}

std::optional<double> CellColours::value(std::int64_t cell) const
{
    const double number = value_or_nan(*property_, static_cast<std::size_t>(cell));
    return std::isnan(number) ? std::nullopt : std::optional(number);
}

double CellColours::place_of(double number) const
{
    const double low = map_->low_clip(), high = map_->high_clip();
    if (low == high)
        return number < low ? 0 : number > high ? 1 : 0.5;
    if (logarithmic_)
        return number > 0 ? std::clamp(std::log(number / low) / std::log(high / low), 0.0, 1.0) : (low < high ? 0 : 1);
    return std::clamp((number - low) / (high - low), 0.0, 1.0);
}

QRgb CellColours::of(std::int64_t cell) const
{
    if (!entry_of_layer_.empty()) {
        const auto k = static_cast<std::size_t>(cell / cells_per_layer_);
        return k < entry_of_layer_.size() ? entries_[entry_of_layer_[k]].colour.rgb() : undefined_colour;
    }
    if (!property_)
        return plain;
    const auto number = value(cell);
    if (!number)
        return undefined_colour;
    if (map_)
        return scale_[static_cast<std::size_t>(std::lround(place_of(*number) * (scale_steps - 1)))];
    const auto entry = entry_of_code_.find(static_cast<std::int32_t>(*number));
    return entry == entry_of_code_.end() ? undefined_colour : entries_[entry->second].colour.rgb();
}

QString CellColours::value_text(std::int64_t cell) const
{
    if (!entry_of_layer_.empty()) {
        const auto k = static_cast<std::size_t>(cell / cells_per_layer_);
        return k < entry_of_layer_.size() ? entries_[entry_of_layer_[k]].text : QString();
    }
    if (!property_)
        return {};
    const auto number = value(cell);
    if (!number)
        return QCoreApplication::translate("lodex::CellColours", "undefined");
    if (map_)
        return QString::fromStdString(format_general(*number, 6));
    const auto entry = entry_of_code_.find(static_cast<std::int32_t>(*number));
    return entry == entry_of_code_.end() ? QString::number(*number) : entries_[entry->second].text;
}

QColor CellColours::scale_colour(double place) const
{
    const auto [r, g, b] = map_->colour(place);
    return {r, g, b};
}

} // namespace lodex
