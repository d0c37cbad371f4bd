#include "HarmonicArithmeticUpscaler.h"

#include "UpscalerInfo.h"

#include <Kelvane/upscaling/UpscalerTypes.h>

namespace Kelvane {

namespace {

const UpscalerRegistration<HarmonicArithmeticUpscaler> registration{
    {.name = HarmonicArithmeticUpscalerType::type().str(),
     .rank = 210,
     .families = {"Permeability"},
     .summary = "Harmonic along the flow, then arithmetic across it: a lower bound.",
     .formula = "k_x = m_y m_z h_x (h_a, m_a: harmonic and arithmetic means of lines along axis a, "
                "weighted by lengths and areas)",
     .inputs = "One fine permeability; three coarse ones (along I, J, K).",
     .special_values = "A zero or negative value is a sealed sample; an undefined one takes the mean of the "
                       "defined neighbours in the coarse cell."}};

} // namespace

} // namespace Kelvane
