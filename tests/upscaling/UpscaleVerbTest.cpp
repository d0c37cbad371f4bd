// The three upscaling statements through the interpreter, on boxes whose answers are known.

#include "tests/volumes/GridFixture.h"

#include "lodex/volumes/model/CellGeometry.h"

#include <Lodex/utils/ProgressTracer.h>

#include <cmath>

using namespace lodex;

namespace {

class UpscaleVerb : public GridFixture {
protected:
    /// "Fine" of 4 x 4 x 4 unit cells (PORO = 1 ... 64, CODE = k) and "Coarse", every two layers merged.
    static void add_grids()
    {
        add_box("Fine", {4, 4, 4});
        ASSERT_TRUE(run("lodex sgrid_merge_multiple_sections name Coarse sgrid Fine direction \"vertical\" sections 0+1+2+3"));
    }
    static std::string porosity(const std::string& method, const std::string& more = {}, const std::string& mapper = "parametric")
    {
        return "lodex on SGrid Fine upscale_porosity  fine_region_name everywhere fine_porosity PORO Coarse Coarse "
               "coarse_region_name everywhere coarse_porosity P mapper \"" +
               mapper + "\" upscaler \"" + method + "\" power  " + more;
    }
    /// Permeability of a fine property onto "Coarse" by index, without what the method and the caller choose.
    static std::string by_index(const std::string& fine, const std::string& names, const std::string& method)
    {
        return "lodex on SGrid Fine upscale_permeability fine_Perm_I " + fine + " fine_Perm_J " + fine +
               " fine_Perm_K " + fine + " Coarse Coarse " + names + " mapper \"parametric\" upscaler \"" + method + "\" ";
    }
    static std::string permeability(const std::string& method, const std::string& names, const std::string& more = {})
    {
        return "lodex on SGrid Fine upscale_permeability  fine_region_name everywhere fine_Perm_I PORO fine_Perm_J PORO "
               "fine_Perm_K PORO Coarse Coarse coarse_region_name everywhere " +
               names + " mapper \"parametric\" upscaler \"" + method + "\" power  n_I 10 n_J 10 n_K 10 manual_sampling 0 " + more;
    }
};

const std::string three_names = "coarse_Perm_I KX coarse_Perm_J KY coarse_Perm_K KZ";
const std::string one_name = "coarse_Perm_I K coarse_Perm_J K coarse_Perm_K K";

} // namespace

TEST_F(UpscaleVerb, AveragesByHand)
{
    add_grids();
    // The first coarse cell is made of the values 1 and 17.
    const std::map<std::string, double> expected{{"Arithmetic", 9},   {"Geometric", std::sqrt(17)}, {"Harmonic", 2 / (1 + 1.0 / 17)},
                                                 {"Sum", 18},         {"Minimum", 1},               {"Maximum", 17},
                                                 {"Median", 9}};
    for (const std::string mapper : {"geometric", "parametric"}) {
        for (const auto& [method, value_expected] : expected) {
            ASSERT_TRUE(run(porosity(method, {}, mapper)));
            EXPECT_NEAR(value("Coarse", "P", 0, 0, 0), value_expected, 1e-12) << method << ' ' << mapper;
            ASSERT_EQ(model("Coarse").properties.size(), 1u) << "replaced, not added";
        }
        ASSERT_TRUE(run("lodex on SGrid Fine upscale_porosity fine_porosity PORO Coarse Coarse coarse_porosity P mapper \"" + mapper +
                        "\" upscaler \"Power\" power 0.5"));
        EXPECT_NEAR(value("Coarse", "P", 0, 0, 0), std::pow((1 + std::sqrt(17)) / 2, 2), 1e-12);
    }
}

TEST_F(UpscaleVerb, MostProbableKeepsCodesAndNames)
{
    add_box("Fine", {1, 1, 5});
    find_grid("Fine")->change([](GridModel& m) {
        m.properties[1].values = std::vector<std::int32_t>{3, 7, 7, 3, 3};
        m.properties[1].code_names = {{3, "sand"}, {7, "shale"}};
    });
    ASSERT_TRUE(run("lodex sgrid_merge_multiple_sections name Coarse sgrid Fine direction \"vertical\" sections 0+2+3+4"));
    const auto r = result("lodex on SGrid Fine  upscale_indicator  fine_region_name everywhere fine_indicator CODE Coarse Coarse "
                          "coarse_region_name everywhere coarse_indicator F mapper \"geometric\" upscaler \"Most probable\" "
                          "zero_like_x 0 neg_like_x 0 ndv_like_x 0 create_region_if_problems 0 do_fault_management 0");
    ASSERT_EQ(r.status, StatementStatus::Done) << r.message;
    const PropertyData& made = *model("Coarse").find_property("F");
    EXPECT_TRUE(made.discrete());
    EXPECT_EQ(made.code_names.at(3), "sand");
    EXPECT_EQ(value("Coarse", "F", 0, 0, 0), 7);
    EXPECT_EQ(value("Coarse", "F", 0, 0, 1), 3);
    EXPECT_EQ(count(r, "done"), 2);
}

TEST_F(UpscaleVerb, WeightsByVolumeAndProperties)
{
    // Layers of 1 and 3 m.
    add_box("Fine", {1, 1, 4});
    ASSERT_TRUE(run("lodex sgrid_merge_multiple_sections name Uneven sgrid Fine direction \"vertical\" sections 1+3"));
    ASSERT_TRUE(run("lodex sgrid_merge_multiple_sections name Coarse sgrid Uneven direction \"vertical\" sections 0+1"));
    find_grid("Uneven")->change([](GridModel& m) {
        m.properties = {{.name = "PORO", .values = std::vector<double>{0.1, 0.3}},
                        {.name = "Net To Gross", .values = std::vector<double>{1, 0.5}},
                        {.name = "W", .values = std::vector<double>{2, 1}}};
    });
    const std::string start = "lodex on SGrid Uneven upscale_porosity fine_porosity PORO Coarse Coarse coarse_porosity P mapper "
                              "\"parametric\" upscaler \"Arithmetic\" power  ";
    ASSERT_TRUE(run(start + "weight_using_volume 0 weight_using_property 0"));
    EXPECT_NEAR(value("Coarse", "P", 0, 0, 0), 0.2, 1e-15);
    ASSERT_TRUE(run(start + "weight_using_volume 1 weight_using_property 0"));
    EXPECT_NEAR(value("Coarse", "P", 0, 0, 0), (0.1 + 3 * 0.3) / 4, 1e-15);
    ASSERT_TRUE(run(start + "weight_using_volume 1 weight_using_property 1 weight_property_name Net+To+Gross"));
    EXPECT_NEAR(value("Coarse", "P", 0, 0, 0), (0.1 + 1.5 * 0.3) / 2.5, 1e-15);
    ASSERT_TRUE(run(start + "weight_using_volume 1 weight_using_property 1 weight_property_name Net+To+Gross+W"));
    EXPECT_NEAR(value("Coarse", "P", 0, 0, 0), (2 * 0.1 + 1.5 * 0.3) / 3.5, 1e-15);

    find_grid("Uneven")->change([](GridModel& m) { m.properties[2].values = std::vector<double>{2, -1}; });
    EXPECT_NE(error(start + "weight_using_property 1 weight_property_name W").find("the weight property \"W\" holds negative values"),
              std::string::npos);
    // An undefined weight makes the pair undefined; weights that sum to 0 leave nothing.
    find_grid("Uneven")->change([](GridModel& m) { m.properties[2].values = std::vector<double>{2, NAN}; });
    ASSERT_TRUE(run(start + "weight_using_property 1 weight_property_name W"));
    EXPECT_NEAR(value("Coarse", "P", 0, 0, 0), 0.1, 1e-15);
    find_grid("Uneven")->change([](GridModel& m) { m.properties[2].values = std::vector<double>{0, 0}; });
    ASSERT_TRUE(run(start + "weight_using_property 1 weight_property_name W create_region_if_problems 1"));
    EXPECT_TRUE(std::isnan(value("Coarse", "P", 0, 0, 0)));
    ASSERT_NE(model("Coarse").find_region("upscaling_problems_P"), nullptr);
    EXPECT_EQ(model("Coarse").find_region("upscaling_problems_P")->flags.at(0), 1);
    // A run without problems takes the region away again.
    ASSERT_TRUE(run(start + "create_region_if_problems 1"));
    EXPECT_EQ(model("Coarse").find_region("upscaling_problems_P"), nullptr);
}

TEST_F(UpscaleVerb, PreparationInItsOrder)
{
    add_box("Fine", {1, 1, 4});
    ASSERT_TRUE(run("lodex sgrid_merge_multiple_sections name Coarse sgrid Fine direction \"vertical\" sections 0+3"));
    find_grid("Fine")->change([](GridModel& m) {
        m.properties[0].values = std::vector<double>{-2, 0, NAN, 8};
    });
    const auto upscaled = [&](const std::string& method, const std::string& more) {
        const auto r = result(porosity(method, more));
        EXPECT_EQ(r.status, StatementStatus::Done) << r.message;
        return value("Coarse", "P", 0, 0, 0);
    };
    EXPECT_NEAR(upscaled("Arithmetic", ""), 2, 1e-15) << "the undefined one is left out";
    EXPECT_NEAR(upscaled("Geometric", ""), 8, 1e-14) << "what the method cannot take is left out";
    EXPECT_NEAR(upscaled("Geometric", "zero_like_x 1 zero_value 2"), 4, 1e-14);
    EXPECT_NEAR(upscaled("Geometric", "neg_like_x 1 neg_value 2"), 4, 1e-14);
    EXPECT_NEAR(upscaled("Geometric", "ndv_like_x 1 ndv_value 2"), 4, 1e-14);
    EXPECT_NEAR(upscaled("Geometric", "neg_like_x 1 neg_value 1 zero_like_x 1 zero_value 2 ndv_like_x 1 ndv_value 4"),
                std::pow(64, 0.25), 1e-13);
    EXPECT_NEAR(upscaled("Arithmetic", "ndv_like_x 1 ndv_value -2"), 1, 1e-15);
    // What stands for an undefined value is no negative value and no zero any more.
    for (const std::string value : {"0", "-3"})
        EXPECT_NEAR(upscaled("Arithmetic", "neg_like_x 1 neg_value 1 zero_like_x 1 zero_value 2 "
                                           "ndv_like_x 1 ndv_value " + value),
                    (1 + 2 + std::stod(value) + 8) / 4, 1e-15);
    const auto r = result(porosity("Geometric", "neg_like_x 1 neg_value 1"));
    EXPECT_EQ(count(r, "negative_replaced"), 1);
    EXPECT_EQ(count(r, "refused_left_out"), 1);
    EXPECT_EQ(count(r, "undefined_left_out"), 1);
}

TEST_F(UpscaleVerb, InfiniteAndNoDataValuesAreUndefined)
{
    add_box("Fine", {1, 1, 4});
    ASSERT_TRUE(run("lodex sgrid_merge_multiple_sections name Coarse sgrid Fine direction \"vertical\" sections 0+3"));
    find_grid("Fine")->change([](GridModel& m) {
        m.properties[0].values = std::vector<double>{-INFINITY, INFINITY, -99, 8};
        m.properties[0].no_data = -99;
        m.properties[1].values = std::vector<std::int32_t>{7, 7, 7, 3};
        m.properties[1].no_data = 7;
    });
    for (const std::string method : {"Arithmetic", "Minimum", "Maximum", "Sum", "Median"}) {
        const auto r = result(porosity(method, "neg_like_x 1 neg_value 1"));
        EXPECT_EQ(value("Coarse", "P", 0, 0, 0), 8) << method;
        EXPECT_EQ(count(r, "undefined_left_out"), 3) << method;
    }
    ASSERT_TRUE(run(porosity("Arithmetic", "ndv_like_x 1 ndv_value 4")));
    EXPECT_EQ(value("Coarse", "P", 0, 0, 0), 5);
    // An undefined code is left out as well, however often it stands there.
    ASSERT_TRUE(run("lodex on SGrid Fine upscale_indicator fine_indicator CODE Coarse Coarse coarse_indicator F "
                    "mapper \"geometric\" upscaler \"Most probable\""));
    EXPECT_EQ(value("Coarse", "F", 0, 0, 0), 3);
}

TEST_F(UpscaleVerb, RegionsOnBothGrids)
{
    add_grids();
    ASSERT_TRUE(run("lodex on SGrid Fine define_region Zone A property CODE max 0"));
    ASSERT_TRUE(run(porosity("Arithmetic")));
    ASSERT_TRUE(run("lodex on SGrid Coarse define_region Top property P max 24"));
    const std::string start = "lodex on SGrid Fine upscale_porosity fine_region_name ";
    const std::string rest = " coarse_porosity P mapper \"parametric\" upscaler \"Arithmetic\" power ";
    ASSERT_TRUE(run(start + "Zone+A fine_porosity PORO Coarse Coarse coarse_region_name everywhere" + rest));
    EXPECT_EQ(value("Coarse", "P", 0, 0, 0), 1) << "the second layer is outside of the fine region";
    EXPECT_TRUE(std::isnan(value("Coarse", "P", 0, 0, 1)));
    ASSERT_TRUE(run(start + "everywhere fine_porosity PORO Coarse Coarse coarse_region_name everywhere" + rest));
    ASSERT_TRUE(run(start + "everywhere fine_porosity CODE Coarse Coarse coarse_region_name Top" + rest));
    EXPECT_EQ(value("Coarse", "P", 0, 0, 0), 0.5);
    EXPECT_EQ(value("Coarse", "P", 0, 0, 1), 41) << "cells outside of the coarse region keep their value";
    EXPECT_NE(error(start + "Nowhere fine_porosity PORO Coarse Coarse" + rest).find("Nowhere"), std::string::npos);
    EXPECT_NE(error(start + "everywhere fine_porosity PORO Coarse Coarse coarse_region_name Zone+A" + rest).find("Zone"), std::string::npos);
}

TEST_F(UpscaleVerb, PermeabilityOfTwoLayers)
{
    add_grids();
    // Two samples on top of each other, k = 1 and 17: arithmetic along, harmonic across.
    const double across = 2 / (1 + 1.0 / 17);
    for (const std::string method : {"HarmonicArithmetic", "ArithmeticHarmonic", "CardwellParson", "SymCardwellParson", "DiagTensor",
                                     "EFConform", "EFMixed", "DFPressureSolver", "MixedPressureSolver"}) {
        for (const std::string more : {"boundary Confined exact 0", "boundary Confined exact 1"}) {
            const auto r = result(permeability(method, three_names, more));
            ASSERT_EQ(r.status, StatementStatus::Done) << method << ": " << r.message;
            EXPECT_NEAR(value("Coarse", "KX", 0, 0, 0), 9, 1e-6) << method;
            EXPECT_NEAR(value("Coarse", "KY", 0, 0, 0), 9, 1e-6) << method;
            EXPECT_NEAR(value("Coarse", "KZ", 0, 0, 0), across, 1e-6) << method;
            EXPECT_EQ(count(r, "done"), 32) << method;
            EXPECT_EQ(model("Coarse").properties.size(), 3u);
        }
    }
    ASSERT_TRUE(run(permeability("Arithmetic", one_name)));
    EXPECT_NEAR(value("Coarse", "K", 0, 0, 0), 9, 1e-14);
    ASSERT_TRUE(run(permeability("Harmonic", one_name)));
    EXPECT_NEAR(value("Coarse", "K", 0, 0, 0), across, 1e-14);
}

TEST_F(UpscaleVerb, SamplesAdaptiveAndFixed)
{
    add_box("Fine", {1, 1, 3});
    ASSERT_TRUE(run("lodex sgrid_merge_multiple_sections name Coarse sgrid Fine direction \"vertical\" sections 0+2"));
    find_grid("Fine")->change([](GridModel& m) { m.properties[0].values = std::vector<double>{1, 10, 100}; });
    const auto upscaled = [&](const std::string& mapper, const std::string& sampling) {
        for (std::string statement :
             {by_index("PORO", one_name, "Arithmetic"), by_index("PORO", three_names, "HarmonicArithmetic")}) {
            statement.replace(statement.find("parametric"), 10, mapper);
            EXPECT_TRUE(run(statement + sampling));
        }
        EXPECT_NEAR(value("Coarse", "K", 0, 0, 0), value("Coarse", "KX", 0, 0, 0), 1e-12) << "the same samples";
        return value("Coarse", "K", 0, 0, 0);
    };
    for (const std::string mapper : {"geometric", "parametric"}) {
        // As many samples as there are distinct indices, at most the number given.
        EXPECT_NEAR(upscaled(mapper, "n_I 4 n_J 4 n_K 10 manual_sampling 0"), 37, 1e-12);
        EXPECT_NEAR(upscaled(mapper, "n_I 4 n_J 4 n_K 3 manual_sampling 0"), 37, 1e-12);
        // Two samples, centres at a quarter and three: the first and the last cell. One: the middle one.
        EXPECT_NEAR(upscaled(mapper, "n_I 4 n_J 4 n_K 2 manual_sampling 0"), 50.5, 1e-12);
        EXPECT_NEAR(upscaled(mapper, "n_I 4 n_J 4 n_K 1 manual_sampling 0"), 10, 1e-12);
        // Exactly ten: centres at 0.15, 0.45, ... 2.85 cells, that is three, four and three in the cells.
        EXPECT_NEAR(upscaled(mapper, "n_I 4 n_J 4 n_K 10 manual_sampling 1"), (3 * 1 + 4 * 10 + 3 * 100) / 10.0, 1e-12);
    }
}

TEST_F(UpscaleVerb, IterationsStopAtTheResidualAskedFor)
{
    add_box("Fine", {16, 16, 16});
    find_grid("Fine")->change([](GridModel& m) {
        m.properties[0] = lognormal_property(m, "PORO", 10, 2, 5);
    });
    ASSERT_TRUE(run("lodex sgrid_merge_multiple_sections name K sgrid Fine direction \"vertical\" sections 0+15\n"
                    "lodex sgrid_merge_multiple_sections name I sgrid K direction \"first axis\" sections 0+15\n"
                    "lodex sgrid_merge_multiple_sections name Coarse sgrid I direction \"second axis\" sections 0+15"));
    const auto solved = [&](const std::string& more) {
        const auto r = result(by_index("PORO", three_names, "MixedPressureSolver") +
                              "n_I 16 n_J 16 n_K 16 manual_sampling 1 " + more);
        EXPECT_EQ(r.status, StatementStatus::Done) << r.message;
        return std::array{count(r, "iterations"), count(r, "largest_residual"), value("Coarse", "KX", 0, 0, 0)};
    };
    const auto [usual, residual, fast] = solved("");
    EXPECT_GT(usual, 0);
    EXPECT_LE(residual, 1e-8);
    EXPECT_GT(residual, 0);
    const auto [fewer, rough, roughly] = solved("tolerance 1e-3");
    EXPECT_LT(fewer, usual);
    EXPECT_LE(rough, 1e-3);
    EXPECT_GT(rough, 1e-8);
    const auto [none, left, exact] = solved("exact 1");
    EXPECT_EQ(none, 0);
    EXPECT_NEAR(fast / exact, 1, 1e-7);
    EXPECT_NEAR(roughly / exact, 1, 1e-2);
}

/// A cell of any shape, weights of any kind, samples of any number: equal values give that value.
TEST_F(UpscaleVerb, EqualValuesComeBackOnAnyGeometry)
{
    add_box("Fine", {4, 4, 4});
    find_grid("Fine")->change([](GridModel& m) {
        // Pillars lean this way and that, layers dip and thin out.
        m.coord.visit_mutable([](auto numbers) {
            for (std::size_t n = 0; n < numbers.size(); n += 6) {
                numbers[n + 2] = 0;
                numbers[n + 5] = 10;
                numbers[n + 3] += 4 + 0.1F * static_cast<float>(n % 5);
                numbers[n + 4] += 0.1F * static_cast<float>(n % 7) - 2;
            }
        });
        m.zcorn.visit_mutable([](auto depths) {
            for (std::size_t n = 0; n < depths.size(); ++n) {
                const auto along = static_cast<float>(n % 8);
                depths[n] = depths[n] * (1 + 0.05F * along) + 0.2F * along;
            }
        });
        m.properties[0].values = std::vector<double>(64, 37.5);
        m.properties.push_back(lognormal_property(m, "W", 1, 2, 3));
    });
    const std::string pairs = "\" sections 0+1+2+3\n";
    ASSERT_TRUE(run("lodex sgrid_merge_multiple_sections name K sgrid Fine direction \"vertical" + pairs +
                    "lodex sgrid_merge_multiple_sections name Coarse sgrid K direction \"first axis" + pairs));
    const auto expect_equal = [&](const char* name, double expected, const std::string& what) {
        const PropertyData& property = *model("Coarse").find_property(name);
        for (std::size_t cell = 0; cell < property.size(); ++cell)
            EXPECT_NEAR(value_or_nan(property, cell), expected, 37.5e-8) << what << ' ' << name << ' ' << cell;
    };
    for (const std::string method : {"Arithmetic", "Geometric", "Harmonic", "Power", "Minimum", "Maximum", "Median"}) {
        ASSERT_TRUE(run("lodex on SGrid Fine upscale_porosity fine_porosity PORO Coarse Coarse coarse_porosity P "
                        "mapper \"parametric\" upscaler \"" + method + "\" power -0.3 "
                        "weight_using_volume 1 weight_using_property 1 weight_property_name W"));
        expect_equal("P", 37.5, method);
    }
    for (const std::string method : {"Arithmetic", "Geometric", "Harmonic", "Power"}) {
        ASSERT_TRUE(run(by_index("PORO", one_name, method) + "power 0.6"));
        expect_equal("K", 37.5, method);
    }
    for (const std::string method : {"HarmonicArithmetic", "ArithmeticHarmonic", "CardwellParson", "SymCardwellParson",
                                     "DiagTensor", "EFConform", "EFMixed", "DFPressureSolver", "MixedPressureSolver"}) {
        for (const std::string boundary : {"Confined", "KConfined", "Unconfined"}) {
            const auto r = result(by_index("PORO", three_names, method) +
                                  "n_I 3 n_J 2 n_K 4 manual_sampling 1 boundary " + boundary);
            ASSERT_EQ(r.status, StatementStatus::Done) << r.message;
            EXPECT_EQ(count(r, "backup"), 0) << method;
            for (const char* name : {"KX", "KY", "KZ"})
                expect_equal(name, 37.5, method + ' ' + boundary);
            for (const PropertyData& property : model("Coarse").properties)
                if (property.name.starts_with("KX_"))
                    expect_equal(property.name.c_str(), 0, method + ' ' + boundary);
        }
    }
    // The cells are no bricks, or this would say little.
    const auto lateral = [&](const std::string& method) {
        EXPECT_TRUE(run(by_index("W", three_names, method) + "n_I 3 n_J 2 n_K 4 manual_sampling 1"));
        return value("Coarse", "KX", 0, 0, 0);
    };
    EXPECT_GT(std::abs(lateral("EFMixed") / lateral("MixedPressureSolver") - 1), 1e-3);
}

TEST_F(UpscaleVerb, OffDiagonalsByBoundary)
{
    add_grids();
    ASSERT_TRUE(run(permeability("EFMixed", three_names, "boundary KConfined")));
    EXPECT_EQ(model("Coarse").properties.size(), 4u);
    EXPECT_NEAR(value("Coarse", "KX_IJ", 0, 0, 0), 0, 1e-9);
    ASSERT_TRUE(run(permeability("EFMixed", three_names, "boundary Unconfined")));
    EXPECT_EQ(model("Coarse").properties.size(), 6u);
    EXPECT_NEAR(value("Coarse", "KX_IK", 3, 3, 1), 0, 1e-9);
    EXPECT_NEAR(value("Coarse", "KX_JK", 3, 3, 1), 0, 1e-9);
    // Means know no boundary.
    ASSERT_TRUE(run(permeability("CardwellParson", "coarse_Perm_I A coarse_Perm_J B coarse_Perm_K C", "boundary Unconfined")));
    EXPECT_EQ(model("Coarse").find_property("A_IJ"), nullptr);
}

TEST_F(UpscaleVerb, SealedAndUndefinedSamples)
{
    add_box("Fine", {1, 1, 3});
    ASSERT_TRUE(run("lodex sgrid_merge_multiple_sections name Coarse sgrid Fine direction \"vertical\" sections 0+2"));
    find_grid("Fine")->change([](GridModel& m) { m.properties[0].values = std::vector<double>{4, -1, 8}; });
    ASSERT_TRUE(run(permeability("Arithmetic", one_name)));
    EXPECT_NEAR(value("Coarse", "K", 0, 0, 0), 4, 1e-15) << "a negative value is sealed";
    for (const std::string method : {"Geometric", "Harmonic"}) {
        ASSERT_TRUE(run(permeability(method, one_name)));
        EXPECT_EQ(value("Coarse", "K", 0, 0, 0), 0) << method;
    }
    ASSERT_TRUE(run(permeability("MixedPressureSolver", three_names)));
    EXPECT_NEAR(value("Coarse", "KX", 0, 0, 0), 4, 1e-7);
    EXPECT_EQ(value("Coarse", "KZ", 0, 0, 0), 0);
    find_grid("Fine")->change([](GridModel& m) { m.properties[0].values = std::vector<double>{4, NAN, 8}; });
    ASSERT_TRUE(run(permeability("Arithmetic", one_name)));
    EXPECT_NEAR(value("Coarse", "K", 0, 0, 0), 6, 1e-15) << "an undefined one takes the mean of its neighbours";
    find_grid("Fine")->change([](GridModel& m) { m.properties[0].values = std::vector<double>{NAN, NAN, NAN}; });
    const auto nothing = result(permeability("DFPressureSolver", three_names, "create_region_if_problems 1"));
    EXPECT_EQ(count(nothing, "nothing_left"), 1);
    EXPECT_TRUE(std::isnan(value("Coarse", "KX", 0, 0, 0)));
    EXPECT_NE(model("Coarse").find_region("upscaling_problems_KX"), nullptr);
    find_grid("Fine")->change([](GridModel& m) { m.properties[0].values = std::vector<double>{0, 0, 0}; });
    for (const std::string method : {"DFPressureSolver", "MixedPressureSolver", "EFConform", "EFMixed", "DiagTensor"}) {
        const auto r = result(permeability(method, three_names));
        EXPECT_EQ(count(r, "done"), 1) << method;
        EXPECT_EQ(value("Coarse", "KX", 0, 0, 0), 0) << method;
    }
}

TEST_F(UpscaleVerb, ANegativeNeighbourOfAnUndefinedSampleIsSealed)
{
    add_box("Fine", {1, 1, 3});
    ASSERT_TRUE(run("lodex sgrid_merge_multiple_sections name Coarse sgrid Fine direction \"vertical\" sections 0+2"));
    find_grid("Fine")->change([](GridModel& m) { m.properties[0].values = std::vector<double>{-5, NAN, 3}; });
    ASSERT_TRUE(run(permeability("Arithmetic", one_name)));
    EXPECT_NEAR(value("Coarse", "K", 0, 0, 0), (0 + 1.5 + 3) / 3, 1e-15);
}

TEST_F(UpscaleVerb, IntegersArePermeabilitiesAndTheirNoDataIsUndefined)
{
    add_box("Fine", {1, 1, 3});
    ASSERT_TRUE(run("lodex sgrid_merge_multiple_sections name Coarse sgrid Fine direction \"vertical\" sections 0+2"));
    find_grid("Fine")->change([](GridModel& m) {
        m.properties[0].values = std::vector<std::int32_t>{2, -99, 4};
        m.properties[0].no_data = -99;
    });
    ASSERT_TRUE(run(permeability("Arithmetic", one_name)));
    EXPECT_NEAR(value("Coarse", "K", 0, 0, 0), 3, 1e-15);
    ASSERT_TRUE(run(permeability("MixedPressureSolver", three_names)));
    EXPECT_NEAR(value("Coarse", "KZ", 0, 0, 0), 3 / (1.0 / 2 + 1.0 / 3 + 1.0 / 4), 1e-7);
    EXPECT_FALSE(model("Coarse").find_property("KZ")->discrete());
}

TEST_F(UpscaleVerb, PowerIsLookedAtByItsMethodAlone)
{
    add_grids();
    const std::string start = "lodex on SGrid Fine upscale_porosity fine_porosity PORO Coarse Coarse coarse_porosity P mapper "
                              "\"parametric\" upscaler ";
    for (const std::string power : {" power abc", " power 7", " power ", ""}) {
        ASSERT_TRUE(run(start + "\"Arithmetic\"" + power)) << power;
        EXPECT_NEAR(value("Coarse", "P", 0, 0, 0), 9, 1e-15) << power;
        if (power != " power ") {
            EXPECT_NE(error(start + "\"Power\"" + power).find("a number from -1 to 1"), std::string::npos) << power;
        }
    }
}

TEST_F(UpscaleVerb, CommandAsTheWizardComposesIt)
{
    add_box("My Fine", {4, 4, 4});
    ASSERT_TRUE(run("lodex sgrid_merge_multiple_sections name My Coarse sgrid My Fine direction \"vertical\" sections 0+1+2+3\n"
                    "lodex on SGrid My Fine fill_property perm x value 5\n"
                    "lodex on SGrid My Fine define_region Zone A property CODE max 1\n"
                    "lodex on SGrid My Fine define_region Zone B property CODE min 2"));
    std::string command = "lodex on SGrid My Fine upscale_permeability  fine_region_name Zone+A+Zone+B fine_Perm_I perm x fine_Perm_J "
                          "perm x fine_Perm_K perm x Coarse My Coarse coarse_region_name everywhere coarse_Perm_I k x coarse_Perm_J k y "
                          "coarse_Perm_K k z mapper \"k-constrained geometric\" upscaler \"DFPressureSolver\" power  n_I 2 n_J 2 n_K 2 "
                          "manual_sampling 1 zero_like_x 0 neg_like_x 0 ndv_like_x 1 ndv_value 1e-05 boundary KConfined exact 1 "
                          "create_region_if_problems 1 do_fault_management 1";
    command.push_back('\0');
    command += "whatever stands behind the end";
    EXPECT_NE(error(command).find("layers"), std::string::npos) << "the whole command is understood";
    command.replace(command.find("k-constrained "), 14, "");
    ASSERT_TRUE(run(command));
    for (const std::string name : {"k x", "k y", "k z"})
        EXPECT_NEAR(value("My Coarse", name, 3, 3, 1), 5, 1e-9);
    EXPECT_NEAR(value("My Coarse", "k x_IJ", 0, 0, 0), 0, 1e-9);
    EXPECT_EQ(model("My Coarse").properties.size(), 4u);
    EXPECT_TRUE(model("My Coarse").regions.empty()) << "no problems, no region";
}

TEST_F(UpscaleVerb, GridsWithoutCellsThatTakePart)
{
    add_grids();
    ASSERT_TRUE(run("lodex on SGrid Fine define_region Nothing property CODE min 99"));
    for (const std::string mapper : {"geometric", "parametric"}) {
        const auto r = result("lodex on SGrid Fine upscale_porosity fine_region_name Nothing fine_porosity PORO Coarse Coarse "
                              "coarse_porosity P mapper \"" + mapper + "\" upscaler \"Sum\" power  create_region_if_problems 1");
        ASSERT_EQ(r.status, StatementStatus::Done) << r.message;
        EXPECT_EQ(count(r, "nothing_left"), 32);
        EXPECT_TRUE(std::isnan(value("Coarse", "P", 0, 0, 0)));
    }
    for (const std::string grid : {"Fine", "Coarse"}) {
        find_grid(grid)->change([](GridModel& m) { std::ranges::fill(m.active, std::uint8_t{0}); });
        for (const std::string method : {"Geometric", "EFMixed", "MixedPressureSolver"}) {
            const auto r = result(permeability(method, method == "Geometric" ? one_name : three_names));
            ASSERT_EQ(r.status, StatementStatus::Done) << grid << ' ' << method << ' ' << r.message;
            EXPECT_EQ(count(r, "done"), 0) << grid << ' ' << method;
        }
    }
}

TEST_F(UpscaleVerb, BrokenGeometryOfACoarseCellDoesNoHarm)
{
    add_grids();
    find_grid("Coarse")->change([](GridModel& m) { m.zcorn.visit_mutable([](auto depths) { depths[0] = NAN; }); });
    for (const std::string method : {"EFConform", "EFMixed", "DFPressureSolver", "MixedPressureSolver"}) {
        const auto r = result(permeability(method, three_names, "boundary Unconfined"));
        ASSERT_EQ(r.status, StatementStatus::Done) << r.message;
        EXPECT_EQ(count(r, "done"), 32) << method;
        EXPECT_TRUE(std::isfinite(value("Coarse", "KX", 0, 0, 0))) << method;
    }
    ASSERT_TRUE(run(porosity("Arithmetic", "weight_using_volume 1", "geometric")));
}

TEST_F(UpscaleVerb, BadInputChangesNothing)
{
    add_grids();
    ASSERT_TRUE(run("lodex on SGrid Fine fill_property PORO2 value 1"));
    const auto refuses = [&](const std::string& statement, const std::string& reason) {
        const std::string message = error(statement);
        EXPECT_NE(message.find(reason), std::string::npos) << statement << "\n" << message;
        EXPECT_TRUE(model("Coarse").properties.empty()) << statement;
        EXPECT_TRUE(model("Coarse").regions.empty()) << statement;
    };
    refuses(porosity("Cubic"), "\"upscaler\" is \"Cubic\"; expected one of \"Arithmetic\"");
    refuses(porosity("DFPressureSolver"), "\"upscaler\" is \"DFPressureSolver\"");
    refuses(porosity("Most probable"), "\"upscaler\" is \"Most probable\"");
    refuses(porosity("Arithmetic", {}, "magnetic"), "\"mapper\" is \"magnetic\"");
    refuses(porosity("Power"), "\"power\" is empty");
    refuses("lodex on SGrid Fine upscale_porosity fine_porosity PORO Coarse Coarse coarse_porosity P mapper \"parametric\" upscaler "
            "\"Power\" power 1.5",
            "\"power\" is \"1.5\"; expected a number from -1 to 1");
    refuses("lodex on SGrid Fine upscale_porosity fine_porosity NONE Coarse Coarse coarse_porosity P mapper \"parametric\" upscaler "
            "\"Sum\" power ",
            "NONE");
    refuses("lodex on SGrid Fine upscale_porosity fine_porosity PORO Coarse Fine coarse_porosity P mapper \"parametric\" upscaler "
            "\"Sum\" power ",
            "the coarse grid is the fine grid itself");
    refuses(porosity("Geometric", "ndv_like_x 1 ndv_value 0"), "\"ndv_value\" is \"0\"");
    refuses(porosity("Geometric", "ndv_like_x 1 ndv_value -1"), "\"ndv_value\" is \"-1\"");
    refuses(porosity("Geometric", "zero_like_x 1 zero_value 0"), "\"zero_value\" is \"0\"");
    refuses(porosity("Geometric", "neg_like_x 1 neg_value -3"), "\"neg_value\" is \"-3\"");
    refuses(porosity("Geometric", "neg_like_x 1"), "\"neg_value\" is missing");
    refuses(porosity("Arithmetic", "weight_using_property 1"), "\"weight_property_name\" is missing");
    refuses(permeability("EFMixed", one_name), "the three coarse names must differ");
    refuses(permeability("EFMixed", "coarse_Perm_I K coarse_Perm_J K_IJ coarse_Perm_K KZ", "boundary KConfined"),
            "\"K_IJ\" is the name of an off-diagonal permeability");
    refuses(permeability("EFMixed", "coarse_Perm_I K coarse_Perm_J KY coarse_Perm_K K_JK", "boundary Unconfined"),
            "\"K_JK\" is the name of an off-diagonal permeability");
    refuses("lodex on SGrid Fine upscale_permeability fine_Perm_I PORO fine_Perm_J PORO fine_Perm_K PORO Coarse Coarse " + three_names +
                " mapper \"parametric\" upscaler \"EFMixed\" n_I 10000 n_J 10000 n_K 10000 manual_sampling 1",
            "make 1000000000000 samples of each coarse cell; expected at most 33554432");
    refuses("lodex on SGrid Fine upscale_porosity fine_region_name Nowhere fine_porosity PORO Coarse Coarse coarse_porosity P mapper "
            "\"parametric\" upscaler \"Sum\"",
            "there is no region \"Nowhere\" on SGrid \"Fine\"");
    refuses("lodex on SGrid Fine upscale_permeability fine_Perm_I PORO fine_Perm_J PORO2 fine_Perm_K PORO Coarse Coarse " + three_names +
                " mapper \"parametric\" upscaler \"CardwellParson\"",
            "takes one fine permeability");
    refuses("lodex on SGrid Fine upscale_permeability fine_Perm_I PORO fine_Perm_J PORO fine_Perm_K PORO Coarse Coarse " + three_names +
                " mapper \"parametric\" upscaler \"EFMixed\" n_I 0",
            "\"n_I\" is \"0\"; expected at least 1");
    // Grids without the relation that a mapper needs, and grids that do not meet.
    add_box("Other", {2, 2, 2});
    const std::string other = "lodex on SGrid Fine upscale_porosity fine_porosity PORO Coarse Other coarse_porosity P mapper ";
    refuses(other + "\"parametric\" upscaler \"Sum\" power ", "Other");
    refuses(other + "\"stratigraphic\" upscaler \"Sum\" power ", "layers");
    ASSERT_TRUE(run("lodex create sgrid name Far size 2+2+2 spacing 1+1+1 origin 1000+1000+1000"));
    refuses("lodex on SGrid Fine upscale_porosity fine_porosity PORO Coarse Far coarse_porosity P mapper \"geometric\" upscaler \"Sum\" "
            "power ",
            "overlap");
}

TEST_F(UpscaleVerb, CancelLeavesTheCoarseGridAsItWas)
{
    add_grids();
    struct Stop : Lodex::ProgressSink {
        void begin(const Lodex::CString&) override {}
        bool progress(double done) override { return done < limit; }
        void end() override {}
        double limit = 0;
    } stop;
    for (const double limit : {0.0, 0.3, 0.7, 0.99}) {
        stop.limit = limit;
        Lodex::ProgressSink* former = Lodex::ProgressTracer::set_sink(&stop);
        const auto r = result(permeability("EFMixed", three_names));
        Lodex::ProgressTracer::set_sink(former);
        EXPECT_EQ(r.status, StatementStatus::Cancelled) << limit;
        EXPECT_TRUE(model("Coarse").properties.empty()) << limit;
    }
}
