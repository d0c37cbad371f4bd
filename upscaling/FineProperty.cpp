#include "FineProperty.h"

#include "upscaling/kernels/VectorClones.h"

#include <cmath>
#include <limits>

namespace Kelvane {

namespace {

constexpr double undefined = std::numeric_limits<double>::quiet_NaN();

template <class T> double as_number(T value, bool has_no_data, T no_data)
{
    // What is infinite minus itself is NaN, so the sum is the number where it is finite and NaN where it is not, without a
    // branch.
    const auto number = static_cast<double>(value);
    const double finite = number + (number - number);
    return has_no_data && value == no_data ? undefined : finite;
}

template <class T> [[gnu::always_inline]] inline void read_run(const T* from, std::int64_t count, bool has_no_data, T no_data, double* out)
{
    if (has_no_data) {
        for (std::int64_t n = 0; n < count; ++n)
            out[n] = as_number(from[n], true, no_data);
    } else {
        for (std::int64_t n = 0; n < count; ++n)
            out[n] = as_number(from[n], false, no_data);
    }
}

KELVANE_VECTOR_CLONES void read_values(const float* from, std::int64_t count, bool has_no_data, float no_data, double* out)
{
    read_run(from, count, has_no_data, no_data, out);
}

KELVANE_VECTOR_CLONES void read_values(const double* from, std::int64_t count, bool has_no_data, double no_data, double* out)
{
    read_run(from, count, has_no_data, no_data, out);
}

KELVANE_VECTOR_CLONES void read_values(const std::int32_t* from, std::int64_t count, bool has_no_data, std::int32_t no_data, double* out)
{
    read_run(from, count, has_no_data, no_data, out);
}

KELVANE_VECTOR_CLONES bool all_positive(const double* values, std::int64_t count)
{
    std::int64_t others = 0;
    for (std::int64_t n = 0; n < count; ++n)
        others += !(values[n] > 0);
    return others == 0;
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

void FineProperty::read(std::int64_t first, std::int64_t count, double* out) const
{
    with_values(values_, no_data_, [&](const auto& values, bool has_no_data, auto no_data) {
        read_values(values.data() + first, count, has_no_data, no_data, out);
        if (!region_.empty()) {
            for (std::int64_t n = 0; n < count; ++n)
                out[n] = region_[static_cast<std::size_t>(first + n)] ? out[n] : undefined;
        }
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

bool prepare(std::span<double> values, const Preparation& preparation, PreparationCounts& counts)
{
    if (all_positive(values.data(), static_cast<std::int64_t>(values.size())))
        return true;
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
    return false;
}

} // namespace Kelvane
