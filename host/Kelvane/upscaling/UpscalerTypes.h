#pragma once

#include <Lodex/utils/CString.h>

namespace Kelvane {

/// One class per upscaler type and property class. type() is its identifier: never translated, part of commands, and the
/// last component of its registered path.
#define KELVANE_UPSCALER_TYPE(Class, Name)                                                                             \
    struct Class##UpscalerType {                                                                                       \
        [[nodiscard]] static Lodex::CString type() { return Name; }                                                    \
    };

// Property classes
KELVANE_UPSCALER_TYPE(Porosity, "Porosity")
KELVANE_UPSCALER_TYPE(Permeability, "Permeability")
KELVANE_UPSCALER_TYPE(Indicator, "Indicator")

// Averages
KELVANE_UPSCALER_TYPE(Arithmetic, "Arithmetic")
KELVANE_UPSCALER_TYPE(Geometric, "Geometric")
KELVANE_UPSCALER_TYPE(Harmonic, "Harmonic")
KELVANE_UPSCALER_TYPE(Power, "Power")
KELVANE_UPSCALER_TYPE(Sum, "Sum")
KELVANE_UPSCALER_TYPE(Min, "Minimum")
KELVANE_UPSCALER_TYPE(Max, "Maximum")
KELVANE_UPSCALER_TYPE(Median, "Median")
KELVANE_UPSCALER_TYPE(MostProbable, "Most probable")
KELVANE_UPSCALER_TYPE(Number, "Number")
KELVANE_UPSCALER_TYPE(DykstraParsonCoeff, "Dykstra-Parsons")

// Permeability from a local block
KELVANE_UPSCALER_TYPE(HarmonicArithmetic, "HarmonicArithmetic")
KELVANE_UPSCALER_TYPE(ArithmeticHarmonic, "ArithmeticHarmonic")
KELVANE_UPSCALER_TYPE(CardwellParson, "CardwellParson")
KELVANE_UPSCALER_TYPE(SymCardwellParson, "SymCardwellParson")
KELVANE_UPSCALER_TYPE(DiagTensor, "DiagTensor")
KELVANE_UPSCALER_TYPE(EFConform, "EFConform")
KELVANE_UPSCALER_TYPE(EFMixed, "EFMixed")
KELVANE_UPSCALER_TYPE(DFPressureSolver, "DFPressureSolver")
KELVANE_UPSCALER_TYPE(MixedPressureSolver, "MixedPressureSolver")

#undef KELVANE_UPSCALER_TYPE

} // namespace Kelvane
