// Averages found in sorted lists against those of all values together.

#include "upscaling/statistics/SortedLayers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <stdexcept>

using Kelvane::Average;

TEST(SortedLayers, TheSameAsOverAllValues)
{
    std::mt19937 random(4);
    for (int round = 0; round < 300; ++round) {
        // Few or many values, many equal ones or none, either sign for the median.
        std::vector<std::vector<double>> layers(1 + random() % 8);
        const bool coarse = random() % 2 == 0;
        const unsigned most = random() % 3 == 0 ? 3 : 400;
        for (auto& layer : layers) {
            const std::size_t count = random() % 5 == 0 ? 0 : random() % most;
            for (std::size_t n = 0; n < count; ++n)
                layer.push_back(coarse ? 1.0 + random() % 5 : std::exp(random() % 10000 / 500.0 - 10));
            std::ranges::sort(layer);
        }
        const Kelvane::SortedLayers sorted(layers);
        auto negative = layers;
        for (auto& layer : negative) {
            for (double& value : layer)
                value -= coarse ? 3 : 1;
        }
        const Kelvane::SortedLayers either_sign(negative);
        const int first = static_cast<int>(random() % layers.size());
        const int last = first + static_cast<int>(random() % (layers.size() - static_cast<std::size_t>(first)));
        for (const Average method : {Average::Median, Average::MostProbable, Average::DykstraParsons}) {
            for (const bool positive : {true, false}) {
                if (!positive && method == Average::DykstraParsons)
                    continue;
                std::vector<double> all;
                for (int layer = first; layer <= last; ++layer)
                    std::ranges::copy((positive ? layers : negative)[static_cast<std::size_t>(layer)], std::back_inserter(all));
                const double expected = Kelvane::average(method, 1, all);
                const double found = (positive ? sorted : either_sign).average(method, first, last);
                EXPECT_EQ(std::isnan(found), std::isnan(expected));
                if (!std::isnan(expected)) {
                    EXPECT_NEAR(found, expected, 1e-14 * std::abs(expected) + 1e-15) << all.size();
                }
            }
        }
    }
    const Kelvane::SortedLayers one(std::vector<std::vector<double>>{{1.0}});
    EXPECT_THROW((void)one.average(Average::Sum, 0, 0), std::invalid_argument);
}
