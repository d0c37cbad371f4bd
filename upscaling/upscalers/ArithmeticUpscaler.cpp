#include "ArithmeticUpscaler.h"

#include "UpscalerInfo.h"

#include <Kelvane/upscaling/UpscalerTypes.h>

namespace Kelvane {

namespace {

const UpscalerRegistration<ArithmeticUpscaler> registration{
    {.name = ArithmeticUpscalerType::type().str(),
     .rank = 10,
     .families = {"Porosity", "Permeability", "upgridder"},
     .summary = "The arithmetic mean.",
     .formula = "sum(w v) / sum(w)",
     .inputs = "One fine property, weights; one coarse property.",
     .special_values = "Zero and negative values are taken as they are; undefined ones are left out (as "
                       "permeability: they take the mean of the defined neighbours in the coarse cell)."}};

} // namespace

} // namespace Kelvane
