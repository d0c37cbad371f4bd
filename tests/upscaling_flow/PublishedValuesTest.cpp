// Published results of another program, on models that stand beside the checkout or not at all: unit cubes of equal cells
// with isotropic permeability, confined flow.

#include "FlowTestTools.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>

namespace flow_test {
namespace {

/// The numbers behind PERMX in a text of keywords; empty when the file is not there.
std::vector<double> permeability_of(const std::string& file)
{
    const char* variable = std::getenv("LODEX_FIELD_DATA");
    const std::filesystem::path folder = variable ? variable : SOURCE_DIR "/../shared/data";
    std::ifstream text(folder / "tiny" / file);
    std::vector<double> numbers;
    for (std::string word; text >> word && word != "PERMX";) {
    }
    for (double number = 0; text >> number;)
        numbers.push_back(number);
    if (numbers.empty())
        std::cout << file << " is not here; nothing to check\n";
    return numbers;
}

void expect_published(const std::string& file, int side, const std::array<double, 3>& published)
{
    const std::vector<double> k = permeability_of(file);
    if (k.empty())
        return;
    ASSERT_EQ(k.size(), static_cast<std::size_t>(side * side * side));
    BlockData data;
    data.n = {side, side, side};
    data.k = {k, k, k};
    const Tensor tensor = tensor_of(data, Boundary::Confined, Discretisation::Mixed);
    for (int axis = 0; axis < 3; ++axis)
        EXPECT_NEAR(tensor[axis], published[axis], std::max(1e-2, 1e-5 * published[axis]));
}

TEST(PublishedValues, EightCells)
{
    expect_published("EightCells.grdecl", 2, {8.96511, 8.80634, 6.52958});
}

TEST(PublishedValues, TwentySevenCellsOfElevenDecades)
{
    expect_published("27cellsAniso.grdecl", 3, {10064.2, 12907.6, 203.673});
}

} // namespace
} // namespace flow_test
