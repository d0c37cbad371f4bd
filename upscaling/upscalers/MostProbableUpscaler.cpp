#include "MostProbableUpscaler.h"

#include "UpscalerInfo.h"

#include <Kelvane/upscaling/UpscalerTypes.h>

namespace Kelvane {

namespace {

const UpscalerRegistration<MostProbableUpscaler> registration{
    {.name = MostProbableUpscalerType::type().str(),
     .rank = 90,
     .families = {"Indicator", "upgridder"},
     .summary = "The most frequent value, the smallest of several.",
     .formula = "mode(v)",
     .inputs = "One fine property, no weights; one coarse property of the same codes.",
     .special_values = "Zero and negative values are taken as they are; undefined ones are left out."}};

} // namespace

} // namespace Kelvane
