// What the registered upscalers are called, which classes they serve and what they can take.

#include "upscaling/upscalers/UpscalerInfo.h"

#include <Kelvane/upscaling/Kelvane_upscaling_init.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

namespace {

using Kelvane::UpscalerInfo;
using Names = std::vector<std::string>;

class Upscalers : public testing::Test {
protected:
    Upscalers() { Kelvane::Kelvane_upscaling_init::initialize(); }

    static Names of_family(const std::string& family)
    {
        Names names;
        for (const UpscalerInfo* info : Kelvane::upscaler_infos())
            if (std::ranges::find(info->families, family) != info->families.end())
                names.push_back(info->name);
        return names;
    }
};

TEST_F(Upscalers, OfEachClassInTheirOrder)
{
    EXPECT_EQ(of_family("Porosity"),
              (Names{"Arithmetic", "Geometric", "Harmonic", "Power", "Sum", "Minimum", "Maximum", "Median"}));
    EXPECT_EQ(of_family("Permeability"),
              (Names{"Arithmetic", "Geometric", "Harmonic", "Power", "HarmonicArithmetic", "ArithmeticHarmonic",
                     "CardwellParson", "SymCardwellParson", "DiagTensor", "EFConform", "EFMixed", "DFPressureSolver",
                     "MixedPressureSolver"}));
    EXPECT_EQ(of_family("Indicator"), Names{"Most probable"});
    EXPECT_EQ(of_family("upgridder"),
              (Names{"Arithmetic", "Geometric", "Harmonic", "Power", "Sum", "Minimum", "Maximum", "Median",
                     "Most probable", "Number", "Dykstra-Parsons"}));
    EXPECT_EQ(Kelvane::make_upscaler("Indicator", "Median"), nullptr);
    EXPECT_EQ(Kelvane::make_upscaler("Nothing", "Median"), nullptr);
}

/// The two domain tests of every upscaler at some powers; only Power looks at it.
TEST_F(Upscalers, DomainTests)
{
    const auto expected = [](const std::string& name, double power) -> std::array<bool, 2> {
        if (name == "Power")
            return {power == 1, power > 0};
        if (name == "Geometric" || name == "Harmonic" || name == "Dykstra-Parsons")
            return {false, false};
        for (const char* average : {"Arithmetic", "Sum", "Minimum", "Maximum", "Median", "Most probable", "Number"})
            if (name == average)
                return {true, true};
        return {false, true}; // a zero is a sealed sample
    };
    int asked = 0;
    for (const UpscalerInfo* info : Kelvane::upscaler_infos()) {
        for (const std::string& family : info->families) {
            const auto upscaler = Kelvane::make_upscaler(family, info->name);
            ASSERT_TRUE(upscaler) << family << ' ' << info->name;
            for (const double power : {-1.0, -0.5, 0.0, 0.5, 1.0}) {
                EXPECT_EQ((std::array{upscaler->accepts_negative(power), upscaler->accepts_zero(power)}),
                          expected(info->name, power))
                    << family << ' ' << info->name << ' ' << power;
                ++asked;
            }
        }
    }
    EXPECT_EQ(asked, (8 + 13 + 1 + 11) * 5);
}

} // namespace
