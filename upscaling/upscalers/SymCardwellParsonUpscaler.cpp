#include "SymCardwellParsonUpscaler.h"

#include "UpscalerInfo.h"

#include <Kelvane/upscaling/UpscalerTypes.h>

namespace Kelvane {

namespace {

const UpscalerRegistration<SymCardwellParsonUpscaler> registration{
    {.name = SymCardwellParsonUpscalerType::type().str(),
     .rank = 240,
     .families = {"Permeability"},
     .summary = "The geometric mean over the six orders of one harmonic and two arithmetic means.",
     .formula = "k_x = (product over the six orders of h_x, m_y, m_z)^(1/6)",
     .inputs = "One fine permeability; three coarse ones (along I, J, K).",
     .special_values = "A zero or negative value is a sealed sample; an undefined one takes the mean of the "
                       "defined neighbours in the coarse cell."}};

} // namespace

} // namespace Kelvane
