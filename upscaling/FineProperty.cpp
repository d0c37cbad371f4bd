#include "FineProperty.h"

#include <cmath>
#include <limits>

namespace Kelvane {

namespace {

constexpr double undefined = std::numeric_limits<double>::quiet_NaN();

template <class T> double as_number(T value, bool has_no_data, T no_data)
{
    const auto number = static_cast<double>(value);
    return (has_no_data && value == no_data) || !std::isfinite(number) ? undefined : number;
}

/// Calls f(values, has_no_data, no_data) with the no-data value in the type of the values; one that this type cannot hold
/// is never met.
template <class F> decltype(auto) with_values(const Lodex::Property::Values& values, const std::optional<double>& no_data, F&& f)
{
    return std::visit(
        [&](const auto& span) -> decltype(auto) {
            using T = std::remove_const_t<typename std::remove_reference_t<decltype(span)>::element_type>;
            bool has = no_data && std::isfinite(*no_data);
            if constexpr (std::is_integral_v<T>)
                has = has && *no_data >= std::numeric_limits<T>::min() && *no_data <= std::numeric_limits<T>::max() &&
                      std::trunc(*no_data) == *no_data;
            return f(span, has, has ? static_cast<T>(*no_data) : T{});
        },
        values);
}

} // namespace

FineProperty::FineProperty(const Lodex::Property& property, std::span<const std::uint8_t> region)
    : name_(property.name().str()), values_(property.values()), no_data_(property.no_data()), region_(region)
{
}

std::size_t FineProperty::size() const
{
    return std::visit([](const auto& span) { return span.size(); }, values_);
}

std::size_t FineProperty::read(std::int64_t first, std::int64_t count, std::span<const std::uint8_t> flags, double* out) const
{
    return with_values(values_, no_data_, [&](const auto& values, bool has_no_data, auto no_data) {
        std::size_t found = 0;
        const auto* const from = values.data() + first;
        const std::uint8_t* const flag = flags.data() + first;
        for (std::int64_t n = 0; n < count; ++n) {
            out[found] = as_number(from[n], has_no_data, no_data);
            if (!region_.empty() && !region_[static_cast<std::size_t>(first + n)])
                out[found] = undefined;
            found += flag[n] != 0;
        }
        return found;
    });
}

void FineProperty::read(std::span<const std::int64_t> cells, double* out) const
{
    with_values(values_, no_data_, [&](const auto& values, bool has_no_data, auto no_data) {
        for (std::size_t n = 0; n < cells.size(); ++n) {
            const auto cell = static_cast<std::size_t>(cells[n]);
            out[n] = region_.empty() || region_[cell] ? as_number(values[cell], has_no_data, no_data) : undefined;
        }
    });
}

double FineProperty::value(std::int64_t cell) const
{
    double number = 0;
    read({&cell, 1}, &number);
    return number;
}

void PreparationCounts::add(const PreparationCounts& other)
{
    negative_replaced += other.negative_replaced;
    zero_replaced += other.zero_replaced;
    undefined_replaced += other.undefined_replaced;
    undefined_left_out += other.undefined_left_out;
    refused_left_out += other.refused_left_out;
    undefined_filled += other.undefined_filled;
    sealed += other.sealed;
}

void prepare(std::span<double> values, const Preparation& preparation, PreparationCounts& counts)
{
    bool all_positive = true;
    for (const double value : values)
        all_positive = all_positive && value > 0;
    if (all_positive)
        return;
    for (double& value : values) {
        if (value < 0 && preparation.negative) {
            value = *preparation.negative;
            ++counts.negative_replaced;
        } else if (value == 0 && preparation.zero) {
            value = *preparation.zero;
            ++counts.zero_replaced;
        } else if (std::isnan(value) && preparation.undefined) {
            value = *preparation.undefined;
            ++counts.undefined_replaced;
        }
    }
}

} // namespace Kelvane
