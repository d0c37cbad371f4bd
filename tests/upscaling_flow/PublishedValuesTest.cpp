// Published results of another program. The permeabilities are those of the test models EightCells and 27cellsIso of
// the Open Porous Media initiative (Statoil ASA, 2010, CC BY-SA), the results its reference values for fixed boundary
// conditions, which are Confined here; both models are unit cubes of equal cells with isotropic permeability.

#include "FlowTestTools.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace flow_test {
namespace {

void expect_published(int side, const std::vector<double>& k, const std::array<double, 3>& published)
{
    BlockData data;
    data.n = {side, side, side};
    data.k = {k, k, k};
    const Tensor tensor = tensor_of(data, Boundary::Confined, Discretisation::Mixed);
    for (int axis = 0; axis < 3; ++axis)
        EXPECT_NEAR(tensor[axis], published[axis], std::max(1e-2, 1e-5 * published[axis]));
}

TEST(PublishedValues, EightCells)
{
    expect_published(2, {19, 2, 25, 20, 5, 4, 2, 7}, {8.96511, 8.80634, 6.52958});
}

TEST(PublishedValues, TwentySevenCellsOfElevenDecades)
{
    expect_published(3,
                     {5.29064e+06, 22820.4, 166.537, 0.0184694,   1.11066e+09, 140288,    266.893,     0.0180616,
                      1.34452e+09, 331.49,  3.57055e+08, 0.0433534, 63.1409,   0.0246061, 305422,      530.388,
                      8.9521e+08,  0.0437768, 952.768, 0.0365596,  788.934,    1.31592e+06, 1.37863,   0.0199988,
                      3.08721e+06, 0.0360105, 0.0451994},
                     {10064.2, 12907.6, 203.673});
}

} // namespace
} // namespace flow_test
