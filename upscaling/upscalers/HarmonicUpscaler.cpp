#include "HarmonicUpscaler.h"

#include "UpscalerInfo.h"

#include <Kelvane/upscaling/UpscalerTypes.h>

namespace Kelvane {

namespace {

const UpscalerRegistration<HarmonicUpscaler> registration{
    {.name = HarmonicUpscalerType::type().str(),
     .rank = 30,
     .families = {"Porosity", "Permeability", "upgridder"},
     .summary = "The harmonic mean.",
     .formula = "sum(w) / sum(w / v)",
     .inputs = "One fine property, weights; one coarse property.",
     .special_values = "Zero and negative values are left out; undefined ones are left out (as permeability: "
                       "they take the mean of the defined neighbours in the coarse cell). As permeability a zero"
                       " or negative value is a sealed sample and makes the coarse cell 0."}};

} // namespace

} // namespace Kelvane
