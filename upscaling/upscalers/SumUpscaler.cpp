#include "SumUpscaler.h"

#include "UpscalerInfo.h"

#include <Kelvane/upscaling/UpscalerTypes.h>

namespace Kelvane {

namespace {

const UpscalerRegistration<SumUpscaler> registration{
    {.name = SumUpscalerType::type().str(),
     .rank = 50,
     .families = {"Porosity", "upgridder"},
     .summary = "The sum.",
     .formula = "sum(v)",
     .inputs = "One fine property, no weights; one coarse property.",
     .special_values = "Zero and negative values are taken as they are; undefined ones are left out."}};

} // namespace

} // namespace Kelvane
