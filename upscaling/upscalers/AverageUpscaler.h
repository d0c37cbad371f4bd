#pragma once

#include "upscaling/kernels/Averages.h"

#include <Kelvane/upscaling/Upscaler.h>

#include <optional>
#include <span>

namespace Kelvane {

/// A method that makes one value of the values of the fine cells, whatever their places.
class AverageUpscaler : public Upscaler {
public:
    /// What the method can take at this power.
    [[nodiscard]] virtual AverageRules rules(double power) const = 0;
    /// As Kelvane::average(): finite values that the rules accept, weights empty or one each; NaN when there is no answer. May
    /// reorder the values. Safe from several threads at once.
    [[nodiscard]] virtual double average(double power, std::span<double> values, std::span<const double> weights) const = 0;
    /// The kernel's method that it is; nothing for a method that stands on its own.
    [[nodiscard]] virtual std::optional<Average> kernel() const { return std::nullopt; }

    [[nodiscard]] bool accepts_negative(double power) const final { return rules(power).accepts_negative; }
    [[nodiscard]] bool accepts_zero(double power) const final { return rules(power).accepts_zero; }
};

/// A method of the averages kernel.
template <Average method> class KernelAverage : public AverageUpscaler {
public:
    [[nodiscard]] AverageRules rules(double power) const override { return rules_of(method, power); }
    [[nodiscard]] double average(double power, std::span<double> values, std::span<const double> weights) const override
    {
        return Kelvane::average(method, power, values, weights);
    }
    [[nodiscard]] std::optional<Average> kernel() const override { return method; }
};

} // namespace Kelvane
