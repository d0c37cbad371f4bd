#pragma once

#include <cstddef>
#include <span>
#include <utility>
#include <variant>
#include <vector>

namespace Lodex {

/// Real numbers in the precision they came in: 32 bits when a file or a user gave no more, else 64.
/// Every operator computes in 64 bits; only storage differs.
class RealArray {
public:
    RealArray() = default;
    RealArray(std::vector<float> values) : values_(std::move(values)) {}
    RealArray(std::vector<double> values) : values_(std::move(values)) {}

    [[nodiscard]] std::size_t size() const
    {
        return std::visit([](const auto& v) { return v.size(); }, values_);
    }
    [[nodiscard]] bool empty() const { return size() == 0; }

    /// True when the numbers are held in 64 bits.
    [[nodiscard]] bool is_double() const { return values_.index() == 1; }

    /// Bytes of one stored number.
    [[nodiscard]] std::size_t bytes_per_value() const { return is_double() ? sizeof(double) : sizeof(float); }

    /// One number. For loops over cells use visit(), which hands out the whole array.
    [[nodiscard]] double operator[](std::size_t index) const
    {
        return std::visit([index](const auto& v) { return static_cast<double>(v[index]); }, values_);
    }

    /// Calls f with std::span<const float> or std::span<const double>.
    template <class F> decltype(auto) visit(F&& f) const
    {
        return std::visit([&f](const auto& v) -> decltype(auto) { return f(std::span(v)); }, values_);
    }
    /// Calls f with std::span<float> or std::span<double>.
    template <class F> decltype(auto) visit_mutable(F&& f)
    {
        return std::visit([&f](auto& v) -> decltype(auto) { return f(std::span(v)); }, values_);
    }

    /// Exact comparison, storage width included.
    friend bool operator==(const RealArray&, const RealArray&) = default;

private:
    std::variant<std::vector<float>, std::vector<double>> values_;
};

} // namespace Lodex
