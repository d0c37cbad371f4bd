#include "DiagTensorUpscaler.h"

#include "UpscalerInfo.h"

#include <Kelvane/upscaling/UpscalerTypes.h>

namespace Kelvane {

namespace {

const UpscalerRegistration<DiagTensorUpscaler> registration{
    {.name = DiagTensorUpscalerType::type().str(),
     .rank = 250,
     .families = {"Permeability"},
     .summary = "SymCardwellParson of each component along its own axis.",
     .formula = "k_a from the fine permeability along a, as SymCardwellParson",
     .inputs = "Three fine permeabilities (along I, J, K); three coarse ones.",
     .special_values = "A zero or negative value is a sealed sample; an undefined one takes the mean of the "
                       "defined neighbours in the coarse cell."}};

} // namespace

} // namespace Kelvane
