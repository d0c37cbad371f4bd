#include "CellPalette.h"

#include "lodex/geobase/ProjectUnits.h"
#include "lodex/utils/Numbers.h"
#include "lodex/volumes/CornerPointGrid.h"
#include "lodex/volumes/model/CellGeometry.h"
#include "lodex/volumes/model/PropertyTools.h"

#include <Lodex/geobase/Property.h>
#include <Lodex/geobase/Style.h>
#include <Lodex/qtools/QtText.h>

#include <QCoreApplication>

#include <tbb/blocked_range.h>
#include <tbb/parallel_for.h>
#include <tbb/parallel_reduce.h>

#include <algorithm>
#include <cmath>

namespace lodex {

namespace {

// Seven colours that people with any colour vision tell apart (M. Okabe and K. Ito, 2008), the darkest left out.
constexpr std::array<QRgb, 7> distinct{0xff56b4e9, 0xffe69f00, 0xff009e73, 0xfff0e442,
                                       0xff0072b2, 0xffd55e00, 0xffcc79a7};
constexpr std::size_t scale_steps = 1024;
constexpr double logarithmic_from = 1000; // ratio of greatest and least value
constexpr double least_gap = 0.07;        // of the scale, between its ends and the next number
constexpr std::size_t grain = 1 << 14;

CellPalette::Rgb to_rgb(const QColor& colour)
{
    return {static_cast<std::uint8_t>(colour.red()), static_cast<std::uint8_t>(colour.green()),
            static_cast<std::uint8_t>(colour.blue())};
}

QString number_text(double number)
{
    return QString::fromStdString(format_general(number, 5));
}

QString with_unit(const QString& name, const QString& unit)
{
    return unit.isEmpty() ? name : name + QStringLiteral(" [%1]").arg(unit);
}

/// Mean of the eight corner depths.
double centre_depth(const GridModel& model, std::size_t cell)
{
    const auto index = static_cast<std::int64_t>(cell);
    const auto [ni, nj, nk] = model.size;
    const std::int64_t i = index % ni, j = index / ni % nj, k = index / (ni * nj);
    double sum = 0;
    for (const std::int64_t c : {0, 1}) {
        for (const std::int64_t b : {0, 1}) {
            const auto first = static_cast<std::size_t>(((2 * k + c) * 2 * nj + 2 * j + b) * 2 * ni + 2 * i);
            sum += model.zcorn[first] + model.zcorn[first + 1];
        }
    }
    return sum / 8;
}

} // namespace

ValueRange value_range(const GridModel& model, const PropertyData& property)
{
    if (property.on_points)
        return {};
    const auto join = [](ValueRange a, const ValueRange& b) {
        if (b.min)
            a.min = std::min(a.min.value_or(*b.min), *b.min);
        if (b.max)
            a.max = std::max(a.max.value_or(*b.max), *b.max);
        a.codes.insert(b.codes.begin(), b.codes.end());
        return a;
    };
    return std::visit(
        [&](const auto& values) {
            using T = typename std::decay_t<decltype(values)>::value_type;
            const bool has_no_data = property.no_data.has_value();
            const T no_data = has_no_data ? static_cast<T>(*property.no_data) : T{};
            return tbb::parallel_reduce(
                tbb::blocked_range<std::size_t>(0, values.size(), grain), ValueRange{},
                [&](const tbb::blocked_range<std::size_t>& range, ValueRange found) {
                    T least{}, greatest{};
                    [[maybe_unused]] T former{};
                    bool any = false;
                    for (std::size_t cell = range.begin(); cell != range.end(); ++cell) {
                        const T value = values[cell];
                        if (!model.active[cell] || (has_no_data && value == no_data) ||
                            !std::isfinite(static_cast<double>(value)))
                            continue;
                        if constexpr (std::is_same_v<T, std::int32_t>) {
                            if (!any || value != former)
                                found.codes.insert(value);
                            former = value;
                        }
                        least = any ? std::min(least, value) : value;
                        greatest = any ? std::max(greatest, value) : value;
                        any = true;
                    }
                    return any ? join(std::move(found), {static_cast<double>(least), static_cast<double>(greatest), {}})
                               : found;
                },
                join);
        },
        property.values);
}

CellPalette::CellPalette(const CornerPointGrid& grid, const ColourBy& by, const ValueRange* range)
    : model_(&grid.model())
{
    switch (by.kind) {
    case ColourBy::Kind::None: break;
    case ColourBy::Kind::Unit: use_units(grid); break;
    case ColourBy::Kind::Depth: use_depth(grid); break;
    case ColourBy::Kind::Property: {
        const PropertyData* property = model_->find_property(by.property);
        if (!property || property->on_points)
            break;
        property_ = property;
        title_ = with_unit(QString::fromStdString(property->name), QString::fromStdString(property->unit));
        const ValueRange found = range ? *range : value_range(*model_, *property);
        const Lodex::Property* shown = grid.property_db()->find(property->name);
        const ColourScale wanted = shown ? read_colour_scale(*shown->style()) : ColourScale();
        if (property->discrete())
            use_codes(*property, wanted, found);
        else
            use_scale(wanted, found);
        break;
    }
    }
}

QColor CellPalette::distinct_colour(std::size_t n)
{
    if (n < distinct.size())
        return QColor(distinct[n]);
    // Further ones turn round the circle of hues by the golden angle, so that neighbours in the list differ.
    const double turn = std::fmod(static_cast<double>(n) * 0.618033988749895, 1.0);
    return QColor::fromHslF(static_cast<float>(turn), 0.55f, n % 2 == 0 ? 0.45f : 0.65f);
}

void CellPalette::use_units(const CornerPointGrid& grid)
{
    if (grid.header().layers.empty())
        return;
    title_ = QCoreApplication::translate("lodex::CellPalette", "Unit");
    for (const LayerData& layer : grid.header().layers) {
        entry_of_layer_.insert(entry_of_layer_.end(), static_cast<std::size_t>(layer.nb_k_cells), entries_.size());
        entries_.push_back({distinct_colour(entries_.size()), QString::fromStdString(layer.unit)});
    }
    for (const Entry& entry : entries_)
        entry_colours_.push_back(to_rgb(entry.colour));
}

void CellPalette::use_codes(const PropertyData& property, const ColourScale& wanted, const ValueRange& range)
{
    for (const std::int32_t code : range.codes) {
        const auto name = property.code_names.find(code);
        entry_of_code_[code] = entries_.size();
        const auto own = wanted.code_colours.find(code);
        const QColor colour = own == wanted.code_colours.end() ? distinct_colour(entries_.size())
                                                               : QColor::fromRgb(own->second);
        entry_colours_.push_back(to_rgb(colour));
        entries_.push_back(
            {colour, name == property.code_names.end() ? QString::number(code) : QString::fromStdString(name->second)});
    }
}

void CellPalette::use_depth(const CornerPointGrid& grid)
{
    const GridModel& model = grid.model();
    const auto unit = length_unit_from_word(model.frame.grid_units);
    title_ = with_unit(QCoreApplication::translate("lodex::CellPalette", "Depth"),
                       unit ? Lodex::to_qstring(measurement_unit(*unit).name()) : QString());
    using Range = std::pair<double, double>;
    const Range found = tbb::parallel_reduce(
        tbb::blocked_range<std::size_t>(0, model.active.size(), grain), Range{HUGE_VAL, -HUGE_VAL},
        [&](const tbb::blocked_range<std::size_t>& range, Range so_far) {
            for (std::size_t cell = range.begin(); cell != range.end(); ++cell) {
                const double depth = model.active[cell] ? centre_depth(model, cell) : HUGE_VAL;
                if (std::isfinite(depth))
                    so_far = {std::min(so_far.first, depth), std::max(so_far.second, depth)};
            }
            return so_far;
        },
        [](const Range& a, const Range& b) {
            return Range{std::min(a.first, b.first), std::max(a.second, b.second)};
        });
    by_depth_ = true;
    // Shallow is bright, as on a map.
    ColourScale wanted;
    wanted.function = ColourScale::Function::Linear;
    if (found.first <= found.second) {
        wanted.low = found.second;
        wanted.high = found.first;
    }
    use_scale(wanted, {});
}

void CellPalette::use_scale(const ColourScale& wanted, const ValueRange& range)
{
    low_ = wanted.low.value_or(range.min.value_or(0));
    high_ = wanted.high.value_or(range.max.value_or(1));
    grey_outside_ = wanted.grey_outside;
    const bool positive = low_ > 0 && high_ > 0 && low_ != high_;
    const bool wide = positive && std::max(low_, high_) / std::min(low_, high_) > logarithmic_from;
    logarithmic_ = positive && (wanted.function == ColourScale::Function::Logarithmic ||
                                (wanted.function == ColourScale::Function::Automatic && wide));
    Lodex::Style style("scale");
    style.set_attribute("colormap", wanted.colormap);
    style.set_attribute("low_clip", "0");
    style.set_attribute("high_clip", "1");
    const Lodex::Colormap map(style);
    scale_.reserve(scale_steps);
    for (std::size_t n = 0; n < scale_steps; ++n)
        scale_.push_back(map.colour(static_cast<double>(n) / (scale_steps - 1.0)));
    make_ticks(range);
}

void CellPalette::make_ticks(const ValueRange& found)
{
    const double from = std::min(low_, high_), to = std::max(low_, high_);
    if (from == to) {
        ticks_.push_back({0.5, number_text(from)});
        return;
    }
    std::vector<double> numbers;
    if (logarithmic_) {
        const double first = std::ceil(std::log10(from) - 1e-9), last = std::floor(std::log10(to) + 1e-9);
        const double step = std::max(1.0, std::ceil((last - first + 1) / 7));
        for (double exponent = first; exponent <= last; exponent += step)
            numbers.push_back(std::pow(10.0, exponent));
        if (numbers.size() < 3) {
            numbers.clear();
            for (double decade = first - 1; decade <= last; ++decade) {
                for (const double factor : {1.0, 2.0, 5.0})
                    numbers.push_back(factor * std::pow(10.0, decade));
            }
            std::erase_if(numbers,
                          [&](double number) { return number < from * (1 - 1e-9) || number > to * (1 + 1e-9); });
        }
    }
    if (numbers.size() < 2)
        numbers = round_ticks(from, to, 5);
    // Both ends are named, and more is said of them when values lie beyond.
    const auto end = [](double number, double nearest, bool beyond, const char* sign) {
        const bool round = std::abs(number - nearest) <= 1e-9 * std::abs(number);
        const QString text = round ? number_text(number) : QString::fromStdString(format_general(number, 4));
        return beyond ? QString::fromUtf8(sign) + text : text;
    };
    const double first = numbers.empty() ? from : numbers.front(), last = numbers.empty() ? to : numbers.back();
    ticks_.push_back({place_of(from), end(from, first, found.min && *found.min < from, "≤ ")});
    for (const double number : numbers) {
        const double place = place_of(number);
        if (place > least_gap && place < 1 - least_gap)
            ticks_.push_back({place, number_text(number)});
    }
    ticks_.push_back({place_of(to), end(to, last, found.max && *found.max > to, "≥ ")});
}

double CellPalette::place_of(double number) const
{
    if (low_ == high_)
        return number < low_ ? 0 : number > high_ ? 1 : 0.5;
    if (logarithmic_)
        return number > 0 ? std::clamp(std::log(number / low_) / std::log(high_ / low_), 0.0, 1.0)
                          : (low_ < high_ ? 0 : 1);
    return std::clamp((number - low_) / (high_ - low_), 0.0, 1.0);
}

CellPalette::Rgb CellPalette::of_number(double number) const
{
    if (!std::isfinite(number) || (grey_outside_ && (number < std::min(low_, high_) || number > std::max(low_, high_))))
        return undefined;
    return scale_[static_cast<std::size_t>(std::lround(place_of(number) * (scale_steps - 1.0)))];
}

CellPalette::Rgb CellPalette::of(std::size_t cell) const
{
    if (!entry_of_layer_.empty()) {
        const std::size_t k = cell / static_cast<std::size_t>(model_->size[0] * model_->size[1]);
        return k < entry_of_layer_.size() ? entry_colours_[entry_of_layer_[k]] : undefined;
    }
    if (by_depth_)
        return of_number(centre_depth(*model_, cell));
    if (!property_)
        return plain;
    const double number = value_or_nan(*property_, cell);
    if (is_scale())
        return of_number(number);
    const auto entry =
        std::isnan(number) ? entry_of_code_.end() : entry_of_code_.find(static_cast<std::int32_t>(number));
    return entry == entry_of_code_.end() ? undefined : entry_colours_[entry->second];
}

void CellPalette::colours(std::span<const std::uint32_t> cells, std::span<std::uint8_t> rgb) const
{
    tbb::parallel_for(tbb::blocked_range<std::size_t>(0, cells.size(), grain),
                      [&](const tbb::blocked_range<std::size_t>& range) {
                          std::uint32_t former = 0;
                          Rgb colour{};
                          for (std::size_t n = range.begin(); n != range.end(); ++n) {
                              if (n == range.begin() || cells[n] != former)
                                  colour = of(cells[n]);
                              former = cells[n];
                              std::ranges::copy(colour, rgb.begin() + static_cast<std::ptrdiff_t>(3 * n));
                          }
                      });
}

QString CellPalette::value_text(std::size_t cell) const
{
    if (!entry_of_layer_.empty()) {
        const std::size_t k = cell / static_cast<std::size_t>(model_->size[0] * model_->size[1]);
        return k < entry_of_layer_.size() ? entries_[entry_of_layer_[k]].text : QString();
    }
    if (by_depth_)
        return number_text(centre_depth(*model_, cell));
    if (!property_)
        return {};
    const double number = value_or_nan(*property_, cell);
    if (std::isnan(number))
        return QCoreApplication::translate("lodex::CellPalette", "undefined");
    if (is_scale())
        return QString::fromStdString(format_general(number, 6));
    const auto entry = entry_of_code_.find(static_cast<std::int32_t>(number));
    return entry == entry_of_code_.end() ? QString::number(number) : entries_[entry->second].text;
}

QColor CellPalette::scale_colour(double place) const
{
    const auto n = static_cast<std::size_t>(std::lround(std::clamp(place, 0.0, 1.0) * (scale_steps - 1.0)));
    const Rgb rgb = scale_[n];
    return {rgb[0], rgb[1], rgb[2]};
}

} // namespace lodex
