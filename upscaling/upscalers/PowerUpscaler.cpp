#include "PowerUpscaler.h"

#include "UpscalerInfo.h"

#include <Kelvane/upscaling/UpscalerTypes.h>

namespace Kelvane {

namespace {

const UpscalerRegistration<PowerUpscaler> registration{
    {.name = PowerUpscalerType::type().str(),
     .rank = 40,
     .families = {"Porosity", "Permeability", "upgridder"},
     .summary = "The power mean: harmonic at -1, geometric at 0, arithmetic at 1.",
     .formula = "(sum(w v^p) / sum(w))^(1/p), -1 <= p <= 1",
     .source = "A. G. Journel, C. Deutsch, A. J. Desbarats, \"Power averaging for block effective "
               "permeability\", SPE 15128, 1986",
     .inputs = "One fine property, weights, the power p; one coarse property.",
     .special_values = "Negative values are left out unless p = 1, zeros unless p > 0; undefined ones are left "
                       "out (as permeability: they take the mean of the defined neighbours in the coarse cell). "
                       "As permeability a zero or negative value is a sealed sample."}};

} // namespace

} // namespace Kelvane
