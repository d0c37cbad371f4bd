#include "GeometricUpscaler.h"

#include "UpscalerInfo.h"

#include <Kelvane/upscaling/UpscalerTypes.h>

namespace Kelvane {

namespace {

const UpscalerRegistration<GeometricUpscaler> registration{
    {.name = GeometricUpscalerType::type().str(),
     .rank = 20,
     .families = {"Porosity", "Permeability", "upgridder"},
     .summary = "The geometric mean.",
     .formula = "exp(sum(w ln v) / sum(w))",
     .inputs = "One fine property, weights; one coarse property.",
     .special_values = "Zero and negative values are left out; undefined ones are left out (as permeability: "
                       "they take the mean of the defined neighbours in the coarse cell). As permeability a zero"
                       " or negative value is a sealed sample and makes the coarse cell 0."}};

} // namespace

} // namespace Kelvane
