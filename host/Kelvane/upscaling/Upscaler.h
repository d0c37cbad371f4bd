#pragma once

#include <Lodex/utils/FactoryLib.h>

#include <memory>

namespace Kelvane {

/// Turns the fine values of a coarse cell into one value.
class Upscaler {
public:
    virtual ~Upscaler() = default;
    /// First domain test: whether negative values can be taken, for the given power (other methods do not look at it).
    [[nodiscard]] virtual bool accepts_negative(double power) const = 0;
    /// Second domain test: whether the value 0 can be taken.
    [[nodiscard]] virtual bool accepts_zero(double power) const = 0;
};

/// Makes upscalers of one method.
class UpscalerFactory : public Lodex::Factory {
public:
    [[nodiscard]] virtual std::unique_ptr<Upscaler> create() const = 0;
};

/// Name of the domain under which FactoryLib holds the upscaler factories. Families: "Porosity", "Permeability",
/// "Indicator", "upgridder".
[[nodiscard]] Lodex::CString KelvaneGridObjUpscalerFactoriesDomain();

} // namespace Kelvane
