#include "MixedPressureSolverUpscaler.h"

#include "UpscalerInfo.h"

#include <Kelvane/upscaling/UpscalerTypes.h>

namespace Kelvane {

namespace {

const UpscalerRegistration<MixedPressureSolverUpscaler> registration{
    {.name = MixedPressureSolverUpscalerType::type().str(),
     .rank = 290,
     .families = {"Permeability"},
     .summary = "The flow in the true cell by a mixed discretisation, right for skewed cells.",
     .formula = "k_a = Q(k) / Q(1), Q being the flow of the discrete field under the boundary condition",
     .source = "P. A. Raviart and J. M. Thomas, \"A mixed finite element method for second order "
               "elliptic problems\", 1977",
     .inputs = "Three fine permeabilities (along I, J, K); three coarse ones, and with K-Confined IJ, "
               "with Unconfined IJ, IK and JK.",
     .special_values = "A zero or negative value is a sealed sample; an undefined one takes the mean of the "
                       "defined neighbours in the coarse cell."}};

} // namespace

} // namespace Kelvane
