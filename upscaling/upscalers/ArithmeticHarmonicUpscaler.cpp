#include "ArithmeticHarmonicUpscaler.h"

#include "UpscalerInfo.h"

#include <Kelvane/upscaling/UpscalerTypes.h>

namespace Kelvane {

namespace {

const UpscalerRegistration<ArithmeticHarmonicUpscaler> registration{
    {.name = ArithmeticHarmonicUpscalerType::type().str(),
     .rank = 220,
     .families = {"Permeability"},
     .summary = "Arithmetic across the flow, then harmonic along it: an upper bound.",
     .formula = "k_x = h_x m_y m_z",
     .inputs = "One fine permeability; three coarse ones (along I, J, K).",
     .special_values = "A zero or negative value is a sealed sample; an undefined one takes the mean of the "
                       "defined neighbours in the coarse cell."}};

} // namespace

} // namespace Kelvane
