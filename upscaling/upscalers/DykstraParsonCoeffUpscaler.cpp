#include "DykstraParsonCoeffUpscaler.h"

#include "UpscalerInfo.h"

#include <Kelvane/upscaling/UpscalerTypes.h>

namespace Kelvane {

namespace {

const UpscalerRegistration<DykstraParsonCoeffUpscaler> registration{
    {.name = DykstraParsonCoeffUpscalerType::type().str(),
     .rank = 110,
     .families = {"upgridder"},
     .summary = "The Dykstra-Parsons coefficient of heterogeneity: 0 for equal values, towards 1 for wild"
                " ones.",
     .formula = "(P50 - P84.1) / P50, Pq being exceeded by q percent of the values; plotting position i /"
                " (n + 1) in descending order, linear in between, cut at the ends",
     .source = "H. Dykstra and R. L. Parsons, \"The prediction of oil recovery by waterflood\", in "
               "Secondary Recovery of Oil in the United States, API, 1950",
     .inputs = "One fine property, no weights; one number.",
     .special_values = "Zero, negative and undefined values are left out."}};

} // namespace

} // namespace Kelvane
