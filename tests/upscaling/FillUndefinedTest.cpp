#include "upscaling/PermeabilityUpscaling.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace {

const double nan = std::nan("");

TEST(FillUndefined, WaveByWave)
{
    // 1 ? ? 5 in a row: the inner ones take their only neighbour each.
    std::vector<double> values{1, nan, nan, 5};
    const std::vector<std::uint8_t> all(4, 1);
    EXPECT_EQ(Kelvane::fill_undefined(values, all, {4, 1, 1}), 2);
    EXPECT_EQ(values, (std::vector<double>{1, 1, 5, 5}));
    // 3 x 3 with the middle undefined.
    values = {1, 2, 3, 4, nan, 6, 7, 8, 9};
    EXPECT_EQ(Kelvane::fill_undefined(values, std::vector<std::uint8_t>(9, 1), {1, 3, 3}), 1);
    EXPECT_EQ(values[4], 5);
}

TEST(FillUndefined, WhatNoWaveReachesTakesTheMean)
{
    std::vector<double> values{2, 4, 0, nan};
    const std::vector<std::uint8_t> passable{1, 1, 0, 1};
    EXPECT_EQ(Kelvane::fill_undefined(values, passable, {4, 1, 1}), 1);
    EXPECT_EQ(values, (std::vector<double>{2, 4, 0, 3}));
}

TEST(FillUndefined, NothingDefinedStaysAsItIs)
{
    std::vector<double> values{nan, nan};
    EXPECT_EQ(Kelvane::fill_undefined(values, std::vector<std::uint8_t>(2, 1), {2, 1, 1}), 0);
    EXPECT_TRUE(std::isnan(values[0]));
}

} // namespace
