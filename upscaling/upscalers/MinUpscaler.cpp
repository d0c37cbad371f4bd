#include "MinUpscaler.h"

#include "UpscalerInfo.h"

#include <Kelvane/upscaling/UpscalerTypes.h>

namespace Kelvane {

namespace {

const UpscalerRegistration<MinUpscaler> registration{
    {.name = MinUpscalerType::type().str(),
     .rank = 60,
     .families = {"Porosity", "upgridder"},
     .summary = "The smallest value.",
     .formula = "min(v)",
     .inputs = "One fine property, no weights; one coarse property.",
     .special_values = "Zero and negative values are taken as they are; undefined ones are left out."}};

} // namespace

} // namespace Kelvane
