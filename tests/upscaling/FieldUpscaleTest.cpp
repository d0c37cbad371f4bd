// Every method on every coarse cell of merged field models, where these are present beside the checkout, and of the example
// field, which is always there.

#include "tests/volumes/GridFixture.h"

#include "upscaling/upscalers/UpscalerInfo.h"

#include <tbb/global_control.h>

#include <array>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <iostream>

using namespace lodex;

namespace {

class FieldUpscale : public GridFixture {
protected:
    /// Folder of the field models, empty when they are not there.
    static std::filesystem::path data()
    {
        const char* variable = std::getenv("LODEX_FIELD_DATA");
        const std::filesystem::path path = variable ? variable : SOURCE_DIR "/../shared/data";
        if (std::filesystem::exists(path / "reek" / "reek_sim_grid.grdecl"))
            return path;
        std::cout << "the field models are not here; nothing to check\n";
        return {};
    }

    /// Permeability over 12 decades with sealed, negative and undefined cells in between: property HARD.
    static void add_hard_permeability(const std::string& grid)
    {
        find_grid(grid)->change([](GridModel& m) {
            std::vector<double> values(static_cast<std::size_t>(m.cells()));
            for (std::size_t cell = 0; cell < values.size(); ++cell) {
                const double place = static_cast<double>(cell * 2654435761u % 1000003u) / 1000003.0;
                values[cell] = std::pow(10, 12 * place - 6);
                if (cell % 97 == 5)
                    values[cell] = 0;
                if (cell % 101 == 7)
                    values[cell] = -1;
                if (cell % 89 == 11)
                    values[cell] = NAN;
            }
            m.properties.push_back({.name = "HARD", .values = std::move(values)});
        });
    }

    /// All methods of all classes by one mapper; every active coarse cell that has fine cells gets a value.
    static void upscale_by_everything(const std::string& fine, const std::string& coarse, const std::string& mapper,
                                      const std::string& boundary = "Confined")
    {
        for (const Kelvane::UpscalerInfo* info : Kelvane::upscaler_infos()) {
            for (const std::string& family : info->families) {
                std::string statement = "lodex on SGrid " + fine;
                if (family == "Porosity")
                    statement += " upscale_porosity fine_porosity HARD Coarse " + coarse + " coarse_porosity R";
                else if (family == "Permeability")
                    statement += " upscale_permeability fine_Perm_I HARD fine_Perm_J HARD fine_Perm_K HARD Coarse " + coarse +
                                 (info->rank < 200 // the averages stand before the local methods
                                      ? " coarse_Perm_I R coarse_Perm_J R coarse_Perm_K R"
                                      : " coarse_Perm_I R coarse_Perm_J S coarse_Perm_K T");
                else if (family == "Indicator")
                    statement += " upscale_indicator fine_indicator HARD Coarse " + coarse + " coarse_indicator R";
                else
                    continue;
                statement += " mapper \"" + mapper + "\" upscaler \"" + info->name + "\"";
                if (family != "Indicator")
                    statement += " power 0.3";
                if (family == "Permeability")
                    statement += " n_I 8 n_J 8 n_K 8 manual_sampling 0 boundary " + boundary;
                const auto r = result(statement);
                ASSERT_EQ(r.status, StatementStatus::Done) << statement << "\n" << r.message;
                EXPECT_EQ(count(r, "done") + count(r, "no_fine_cell") + count(r, "nothing_left"), count(r, "coarse_cells")) << statement;
                EXPECT_GT(count(r, "done"), 0) << statement;
                // Whatever has a defined fine value has a value.
                EXPECT_LE(count(r, "nothing_left"), 0.05 * count(r, "coarse_cells")) << statement;
                const GridModel& m = model(coarse);
                std::int64_t finite = 0;
                for (std::int64_t cell = 0; cell < m.cells(); ++cell)
                    finite += std::isfinite(value_or_nan(*m.find_property("R"), static_cast<std::size_t>(cell)));
                EXPECT_EQ(static_cast<double>(finite), count(r, "done")) << statement;
            }
        }
    }
};

} // namespace

TEST_F(FieldUpscale, EveryMethodOnTheExampleField)
{
    ASSERT_TRUE(run("lodex create example name E size 20+16+12 seed 7"));
    add_hard_permeability("E");
    ASSERT_TRUE(run("lodex sgrid_merge_multiple_sections name K sgrid E direction \"vertical\" sections 0+1+3+5+6+11\n"
                    "lodex sgrid_merge_multiple_sections name C sgrid K direction \"first axis\" sections 0+3+4+7+8+11+12+15+16+19"));
    for (const std::string mapper : {"geometric", "parametric", "stratigraphic", "k-constrained geometric"})
        upscale_by_everything("E", "C", mapper, mapper == "parametric" ? "Unconfined" : mapper == "geometric" ? "KConfined" : "Confined");
}

TEST_F(FieldUpscale, EveryMethodOnReek)
{
    if (data().empty())
        return;
    const std::string reek = (data() / "reek/").string();
    ASSERT_TRUE(run("lodex import file \"" + reek + "reek_sim_grid.grdecl\" name Reek\n"
                    "lodex sgrid_merge_multiple_sections name K sgrid Reek direction \"vertical\" sections 0+1+2+5+6+9+10+13\n"
                    "lodex sgrid_merge_multiple_sections name I sgrid K direction \"first axis\" sections 0+3+4+7+8+11+12+15+16+39\n"
                    "lodex sgrid_merge_multiple_sections name C sgrid I direction \"second axis\" sections 0+3+4+7+8+11+12+40"));
    add_hard_permeability("Reek");
    upscale_by_everything("Reek", "C", "parametric", "Confined");
    upscale_by_everything("Reek", "C", "geometric", "Unconfined");
}

TEST_F(FieldUpscale, EveryMethodOnSpe9)
{
    if (data().empty())
        return;
    ASSERT_TRUE(run("lodex import file \"" + (data() / "spe9" / "SPE9_CP_SHORT.EGRID").string() + "\" name S\n"
                    "lodex sgrid_merge_multiple_sections name K sgrid S direction \"vertical\" sections 0+4+5+9+10+14\n"
                    "lodex sgrid_merge_multiple_sections name C sgrid K direction \"first axis\" sections 0+3+4+7+8+11+12+15+16+23"));
    add_hard_permeability("S");
    upscale_by_everything("S", "C", "parametric", "KConfined");
}

TEST_F(FieldUpscale, PoreVolumeIsKept)
{
    ASSERT_TRUE(run("lodex create example name E size 30+24+16 seed 3\n"
                    "lodex sgrid_merge_multiple_sections name C sgrid E direction \"vertical\" sections 0+3+4+7+8+15\n"
                    "lodex on SGrid E upscale_porosity fine_porosity PORO Coarse C coarse_porosity P mapper \"parametric\" upscaler "
                    "\"Arithmetic\" power  weight_using_volume 1"));
    const GridModel &fine = model("E"), &coarse = model("C");
    const std::span<const double> volumes = find_grid("E")->bulk_volumes();
    const Lodex::IndexRelation relation = *find_grid("C")->relation_to(*find_grid("E"));
    std::int64_t checked = 0;
    for (std::int64_t cell = 0; cell < coarse.cells(); ++cell) {
        if (!coarse.active[static_cast<std::size_t>(cell)])
            continue;
        long double pores = 0, bulk = 0;
        const std::int64_t i = cell % coarse.size[0], j = cell / coarse.size[0] % coarse.size[1], k = cell / (coarse.size[0] * coarse.size[1]);
        for (std::int64_t layer = relation[2][static_cast<std::size_t>(k)].first; layer <= relation[2][static_cast<std::size_t>(k)].last; ++layer) {
            const auto member = static_cast<std::size_t>(fine.cell_index(i, j, layer));
            if (!fine.active[member])
                continue;
            pores += static_cast<long double>(volumes[member]) * value_or_nan(*fine.find_property("PORO"), member);
            bulk += volumes[member];
        }
        const double result = value_or_nan(*coarse.find_property("P"), static_cast<std::size_t>(cell));
        if (bulk > 0) {
            EXPECT_NEAR(static_cast<double>(result * bulk / pores), 1, 1e-12) << cell;
            ++checked;
        }
    }
    EXPECT_GT(checked, 1000);
}

TEST_F(FieldUpscale, BitEqualOnOneAndTwoThreads)
{
    ASSERT_TRUE(run("lodex create example name E size 20+16+12 seed 7"));
    add_hard_permeability("E");
    ASSERT_TRUE(run("lodex sgrid_merge_multiple_sections name C sgrid E direction \"vertical\" sections 0+3+4+7+8+11"));
    for (const std::string method : {"Arithmetic", "Power", "SymCardwellParson", "EFConform", "EFMixed", "DFPressureSolver", "MixedPressureSolver"}) {
        std::array<std::vector<double>, 2> results;
        for (std::size_t n = 0; n < 2; ++n) {
            const tbb::global_control threads(tbb::global_control::max_allowed_parallelism, n + 1);
            const std::string names = method == "Arithmetic" || method == "Power" ? "coarse_Perm_I R coarse_Perm_J R coarse_Perm_K R"
                                                                                  : "coarse_Perm_I R coarse_Perm_J S coarse_Perm_K T";
            ASSERT_TRUE(run("lodex on SGrid E upscale_permeability fine_Perm_I HARD fine_Perm_J HARD fine_Perm_K HARD Coarse C " + names +
                            " mapper \"geometric\" upscaler \"" + method + "\" power -0.2 boundary Unconfined"));
            for (const PropertyData& property : model("C").properties)
                for (std::size_t cell = 0; cell < property.size(); ++cell)
                    results[n].push_back(value_or_nan(property, cell));
        }
        ASSERT_EQ(results[0].size(), results[1].size());
        EXPECT_EQ(std::memcmp(results[0].data(), results[1].data(), results[0].size() * sizeof(double)), 0) << method;
    }
}

TEST_F(FieldUpscale, WeightedAveragesAreBitEqualOnOneAndTwoThreads)
{
    ASSERT_TRUE(run("lodex create example name E size 40+32+12 seed 7\n"
                    "lodex sgrid_merge_multiple_sections name C sgrid E direction \"vertical\" sections 0+3+4+7+8+11"));
    for (const std::string mapper : {"geometric", "parametric"}) { // lists and boxes
        for (const std::string method : {"Arithmetic", "Geometric", "Harmonic", "Power", "Median"}) {
            std::array<std::vector<double>, 2> results;
            for (std::size_t n = 0; n < 2; ++n) {
                const tbb::global_control threads(tbb::global_control::max_allowed_parallelism, n + 1);
                ASSERT_TRUE(run("lodex on SGrid E upscale_porosity fine_porosity PERMX Coarse C coarse_porosity R mapper \"" + mapper +
                                "\" upscaler \"" + method + "\" power 0.4 weight_using_volume 1 weight_using_property 1 "
                                "weight_property_name PORO"));
                const PropertyData& made = *model("C").find_property("R");
                for (std::size_t cell = 0; cell < made.size(); ++cell)
                    results[n].push_back(value_or_nan(made, cell));
            }
            EXPECT_EQ(std::memcmp(results[0].data(), results[1].data(), results[0].size() * sizeof(double)), 0) << mapper << ' ' << method;
        }
    }
}
