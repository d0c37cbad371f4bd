#include "NumberUpscaler.h"

#include "UpscalerInfo.h"

#include <Kelvane/upscaling/UpscalerTypes.h>

namespace Kelvane {

namespace {

const UpscalerRegistration<NumberUpscaler> registration{
    {.name = NumberUpscalerType::type().str(),
     .rank = 100,
     .families = {"upgridder"},
     .summary = "How many defined values there are.",
     .formula = "count(v)",
     .inputs = "One fine property, no weights; one coarse property.",
     .special_values = "Zero and negative values are taken as they are; undefined ones are not counted."}};

} // namespace

} // namespace Kelvane
