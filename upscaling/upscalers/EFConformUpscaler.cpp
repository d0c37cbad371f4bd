#include "EFConformUpscaler.h"

#include "UpscalerInfo.h"

#include <Kelvane/upscaling/UpscalerTypes.h>

namespace Kelvane {

namespace {

const UpscalerRegistration<EFConformUpscaler> registration{
    {.name = EFConformUpscalerType::type().str(),
     .rank = 260,
     .families = {"Permeability"},
     .summary = "The pressure in the brick of the mean cell sizes by trilinear conforming finite "
                "elements: an upper bound.",
     .formula = "k_a = energy of the discrete pressure field under the boundary condition, per unit "
                "gradient and volume",
     .inputs = "Three fine permeabilities (along I, J, K); three coarse ones, and with K-Confined IJ, "
               "with Unconfined IJ, IK and JK.",
     .special_values = "A zero or negative value is a sealed sample; an undefined one takes the mean of the "
                       "defined neighbours in the coarse cell."}};

} // namespace

} // namespace Kelvane
