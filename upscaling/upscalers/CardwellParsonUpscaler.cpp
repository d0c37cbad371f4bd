#include "CardwellParsonUpscaler.h"

#include "UpscalerInfo.h"

#include <Kelvane/upscaling/UpscalerTypes.h>

namespace Kelvane {

namespace {

const UpscalerRegistration<CardwellParsonUpscaler> registration{
    {.name = CardwellParsonUpscalerType::type().str(),
     .rank = 230,
     .families = {"Permeability"},
     .summary = "The geometric mean of the two bounds.",
     .formula = "k_x = sqrt((m_y m_z h_x) (h_x m_y m_z))",
     .source = "W. T. Cardwell and R. L. Parsons, \"Average permeabilities of heterogeneous oil sands\","
               " Trans. AIME 160, 1945",
     .inputs = "One fine permeability; three coarse ones (along I, J, K).",
     .special_values = "A zero or negative value is a sealed sample; an undefined one takes the mean of the "
                       "defined neighbours in the coarse cell."}};

} // namespace

} // namespace Kelvane
