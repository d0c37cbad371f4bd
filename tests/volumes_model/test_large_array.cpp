#include "lodex/volumes/model/LargeArray.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace lodex;

TEST(LargeArray, IsOfZerosAtEverySize)
{
    constexpr std::size_t step = (std::size_t{1} << 24) / sizeof(float);
    for (const std::size_t size : {std::size_t{0}, std::size_t{1}, step - 1, step, step + 1, 2 * step + 7}) {
        const std::vector<float> array = make_array<float>(size);
        ASSERT_EQ(array.size(), size);
        EXPECT_TRUE(std::ranges::all_of(array, [](float value) { return value == 0; }));
    }
}

TEST(LargeArray, IsLeftOffOnceItShallStop)
{
    const std::atomic<bool> stop = true;
    EXPECT_LT(make_array<double>(1'000'000, stop).size(), 1'000'000u);
}
