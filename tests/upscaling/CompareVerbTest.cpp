#include "tests/volumes/GridFixture.h"

#include "lodex/volumes/PropertyComparison.h"

#include <nlohmann/json.hpp>

#include <cmath>

using namespace lodex;

namespace {

class CompareVerb : public GridFixture {};

TEST(WeightedStatistics, ByHand)
{
    const WeightedStatistics s = weighted_statistics({3, 1, std::nan(""), 2}, {1, 2, 100, 1});
    EXPECT_EQ(s.count, 3);
    EXPECT_EQ(s.bulk_volume, 4);
    EXPECT_EQ(s.total, 7);
    EXPECT_EQ(s.mean, 1.75);
    EXPECT_NEAR(s.deviation, std::sqrt((2 * 0.75 * 0.75 + 0.25 * 0.25 + 1.25 * 1.25) / 4), 1e-15);
    EXPECT_EQ(s.min, 1);
    EXPECT_EQ(s.max, 3);
    EXPECT_EQ(s.p10, 1);
    EXPECT_EQ(s.p50, 1);
    EXPECT_EQ(s.p90, 3);
    EXPECT_TRUE(std::isnan(weighted_statistics({}, {}).mean));
}

TEST_F(CompareVerb, TotalsAreKeptByVolumeWeightsAndDifferencesShown)
{
    add_box("Fine", {2, 1, 4});
    ASSERT_TRUE(run("lodex sgrid_merge_multiple_sections name Coarse sgrid Fine direction \"vertical\" sections 0+1+2+3\n"
                    "lodex on SGrid Fine upscale_porosity fine_porosity PORO Coarse Coarse coarse_porosity P mapper \"parametric\" "
                    "upscaler \"Arithmetic\" power  weight_using_volume 1"));
    const auto same = nlohmann::json::parse(
        result("lodex on SGrid Fine compare_property PORO Coarse Coarse coarse_property P mapper parametric").answer);
    EXPECT_EQ(same["fine"]["total"], 36);
    EXPECT_EQ(same["coarse"]["total"], 36);
    EXPECT_EQ(same["total_change"], 0);
    EXPECT_EQ(same["compared_cells"], 4);
    EXPECT_EQ(same["largest_absolute_difference"], 0);

    find_grid("Coarse")->change([](GridModel& m) { std::get<std::vector<double>>(m.properties[0].values)[3] += 0.5; });
    const auto r = result("lodex on SGrid Fine compare_property PORO Coarse Coarse coarse_property P difference D");
    ASSERT_EQ(r.status, StatementStatus::Done) << r.message;
    const auto other = nlohmann::json::parse(r.answer);
    EXPECT_EQ(other["largest_absolute_difference"], 0.5);
    EXPECT_EQ(other["largest_at"], (std::vector<int>{2, 1, 2}));
    EXPECT_EQ(other["coarse"]["total"], 37) << "the changed cell has a volume of 2";
    EXPECT_EQ(value("Coarse", "D", 0, 0, 0), 0);
    EXPECT_EQ(value("Coarse", "D", 1, 0, 1), 0.5);
}

TEST_F(CompareVerb, BadInput)
{
    add_box("Fine", {2, 1, 4});
    add_box("Other", {2, 1, 2});
    EXPECT_NE(error("lodex on SGrid Fine compare_property NONE Coarse Other coarse_property PORO").find("there is no property \"NONE\""),
              std::string::npos);
    EXPECT_NE(error("lodex on SGrid Fine compare_property PORO Coarse Fine coarse_property PORO").find("the fine grid itself"),
              std::string::npos);
    EXPECT_NE(error("lodex on SGrid Fine compare_property PORO Coarse Other coarse_property PORO difference PORO")
                  .find("would replace the property \"PORO\" that is compared"),
              std::string::npos);
    EXPECT_NE(error("lodex on SGrid Fine compare_property PORO Coarse Other coarse_property PORO mapper wind").find("\"mapper\" is \"wind\"; expected one of \"geometric\""),
              std::string::npos);
}

} // namespace
