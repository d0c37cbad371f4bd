#include "MedianUpscaler.h"

#include "UpscalerInfo.h"

#include <Kelvane/upscaling/UpscalerTypes.h>

namespace Kelvane {

namespace {

const UpscalerRegistration<MedianUpscaler> registration{
    {.name = MedianUpscalerType::type().str(),
     .rank = 80,
     .families = {"Porosity", "upgridder"},
     .summary = "The value in the middle, the mean of the two middle ones of an even number.",
     .formula = "median(v)",
     .inputs = "One fine property, no weights; one coarse property.",
     .special_values = "Zero and negative values are taken as they are; undefined ones are left out."}};

} // namespace

} // namespace Kelvane
