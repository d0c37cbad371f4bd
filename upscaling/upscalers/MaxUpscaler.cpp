#include "MaxUpscaler.h"

#include "UpscalerInfo.h"

#include <Kelvane/upscaling/UpscalerTypes.h>

namespace Kelvane {

namespace {

const UpscalerRegistration<MaxUpscaler> registration{
    {.name = MaxUpscalerType::type().str(),
     .rank = 70,
     .families = {"Porosity", "upgridder"},
     .summary = "The largest value.",
     .formula = "max(v)",
     .inputs = "One fine property, no weights; one coarse property.",
     .special_values = "Zero and negative values are taken as they are; undefined ones are left out."}};

} // namespace

} // namespace Kelvane
