#include "propertyupscale/UpscaleMethods.h"

#include <Kelvane/upscaling/Upscaler.h>
#include <Kelvane/upscaling/UpscalerTypes.h>
#include <Lodex/qtools/QtText.h>
#include <Lodex/utils/FactoryLib.h>
#include <Lodex/utils/PathName.h>

namespace Kelvane {

namespace {

/// Whether the text is what one of the types is called. Shown names are compared, since that is what a list holds.
template <class... Types> [[nodiscard]] bool is_any_of(const QString& text)
{
    return ((text == shown_name(Types::type())) || ...);
}

[[nodiscard]] Lodex::CString family_of(PropertyClass property_class)
{
    switch (property_class) {
    case PropertyClass::Porosity:
        return PorosityUpscalerType::type();
    case PropertyClass::Permeability:
        return PermeabilityUpscalerType::type();
    case PropertyClass::Indicator:
        return IndicatorUpscalerType::type();
    case PropertyClass::None:
        break;
    }
    return {};
}

} // namespace

QString shown_name(const Lodex::CString& path)
{
    return Lodex::to_qstring(Lodex::NamingLib::instance()->display_name(Lodex::PathName::basename(path)));
}

QStringList property_class_names()
{
    return {shown_name(PorosityUpscalerType::type()), shown_name(PermeabilityUpscalerType::type()),
            shown_name(IndicatorUpscalerType::type())};
}

PropertyClass property_class_of(const QString& text)
{
    if (is_any_of<PorosityUpscalerType>(text))
        return PropertyClass::Porosity;
    if (is_any_of<PermeabilityUpscalerType>(text))
        return PropertyClass::Permeability;
    if (is_any_of<IndicatorUpscalerType>(text))
        return PropertyClass::Indicator;
    return PropertyClass::None;
}

QStringList method_names(PropertyClass property_class)
{
    QStringList texts;
    if (property_class == PropertyClass::None)
        return texts;
    Lodex::COSNameList paths;
    Lodex::FactoryLib::instance()->list(KelvaneGridObjUpscalerFactoriesDomain(), family_of(property_class), paths);
    for (const Lodex::CString& path : paths)
        texts.append(shown_name(path));
    return texts;
}

bool takes_tensor(const QString& method)
{
    return is_any_of<DiagTensorUpscalerType, EFConformUpscalerType, EFMixedUpscalerType, DFPressureSolverUpscalerType,
                     MixedPressureSolverUpscalerType>(method);
}

bool gives_tensor(const QString& method)
{
    return takes_tensor(method) ||
           is_any_of<CardwellParsonUpscalerType, SymCardwellParsonUpscalerType, ArithmeticHarmonicUpscalerType,
                     HarmonicArithmeticUpscalerType>(method);
}

bool takes_power(const QString& method)
{
    return is_any_of<PowerUpscalerType>(method);
}

bool takes_weights(const QString& method)
{
    return !is_any_of<SumUpscalerType, MinUpscalerType, MaxUpscalerType, MedianUpscalerType>(method);
}

bool takes_boundary(const QString& method)
{
    return is_any_of<EFConformUpscalerType, EFMixedUpscalerType, DFPressureSolverUpscalerType,
                     MixedPressureSolverUpscalerType>(method);
}

bool takes_exact(const QString& method)
{
    return is_any_of<DFPressureSolverUpscalerType, MixedPressureSolverUpscalerType>(method);
}

bool summary_shows_fine_tensor(const QString& method)
{
    return is_any_of<DiagTensorUpscalerType, EFConformUpscalerType, EFMixedUpscalerType, DFPressureSolverUpscalerType,
                     MixedPressureSolverUpscalerType>(method);
}

bool summary_shows_coarse_tensor(const QString& method)
{
    return is_any_of<DiagTensorUpscalerType, EFConformUpscalerType, EFMixedUpscalerType, DFPressureSolverUpscalerType,
                     MixedPressureSolverUpscalerType, ArithmeticHarmonicUpscalerType, HarmonicArithmeticUpscalerType>(
        method);
}

bool summary_shows_boundary(const QString& method)
{
    return is_any_of<DiagTensorUpscalerType, EFConformUpscalerType, EFMixedUpscalerType, DFPressureSolverUpscalerType,
                     MixedPressureSolverUpscalerType>(method);
}

bool summary_shows_solver(const QString& method)
{
    return is_any_of<DFPressureSolverUpscalerType, MixedPressureSolverUpscalerType>(method);
}

} // namespace Kelvane
