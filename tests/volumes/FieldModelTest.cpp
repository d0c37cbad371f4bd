// The merge on a faulted field model, where that is present beside the checkout.

#include "GridFixture.h"

#include "lodex/volumes/model/CellGeometry.h"

#include <cmath>
#include <cstdlib>
#include <iostream>
#include <map>

using namespace lodex;

namespace {

class FieldModel : public GridFixture {
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
    /// Imports Reek (40 x 64 x 14) with porosity, faults and three units of 5, 5 and 4 layers.
    static bool import_reek()
    {
        const std::string folder = (data() / "reek/").string();
        if (data().empty())
            return false;
        EXPECT_TRUE(run("lodex import file \"" + folder + "reek_sim_grid.grdecl\" name Reek\n"
                        "lodex on SGrid Reek import_properties file \"" + folder + "reek_sim_poro.grdecl\"\n"
                        "lodex on SGrid Reek import_properties file \"" + folder + "reek3_faults.grdecl\"\n"
                        "lodex on SGrid Reek set_layers units \"Upper\"+\"Mid\"+\"Lower\" sizes 6+4+4\n"
                        "lodex on SGrid Reek define_region Good property PORO min 0.18\n"
                        "lodex on SGrid Reek define_region Tight property PORO max 0.15"));
        return find_grid("Reek") != nullptr;
    }
    static std::string merge(const std::string& name, const std::string& direction, const std::string& sections, const std::string& more)
    {
        return "lodex sgrid_merge_multiple_sections name " + name + " sgrid Reek direction \"" + direction + "\" sections " + sections +
               " " + more;
    }
};

const std::string pairs = "0+1+2+3+4+5+6+7+8+9+10+11+12+13";

} // namespace

TEST_F(FieldModel, FourteenLayersToSevenKeepTheVolume)
{
    if (!import_reek())
        return;
    const auto r = result(merge("Coarse", "vertical", pairs, "copy_properties 1 property_sections 1"));
    ASSERT_EQ(r.status, StatementStatus::Done) << r.message;
    EXPECT_EQ(model("Coarse").size, (GridSize{40, 64, 7}));
    EXPECT_NEAR(count(r, "total_volume_after") / count(r, "total_volume_before"), 1, 1e-6);
    EXPECT_LT(count(r, "max_relative_cell_difference"), 1e-3) << "sides that are not plane";
    EXPECT_GT(count(r, "max_relative_cell_difference"), 0);

    // Volumes worked out here, cell by cell.
    const GridModel &fine = model("Reek"), &coarse = model("Coarse");
    const std::vector<double> v = cell_volumes(fine), w = cell_volumes(coarse);
    double sum_fine = 0, sum_coarse = 0, worst = 0;
    for (std::int64_t cell = 0; cell < coarse.cells(); ++cell) {
        const std::int64_t area = fine.size[0] * fine.size[1];
        const std::int64_t top = cell / area * 2 * area + cell % area;
        const double both = v[static_cast<std::size_t>(top)] + v[static_cast<std::size_t>(top + area)];
        sum_fine += both;
        sum_coarse += w[static_cast<std::size_t>(cell)];
        if (coarse.active[static_cast<std::size_t>(cell)])
            worst = std::max(worst, std::abs(w[static_cast<std::size_t>(cell)] - both) / both);
    }
    EXPECT_NEAR(sum_coarse / sum_fine, 1, 1e-6);
    EXPECT_NEAR(worst, count(r, "max_relative_cell_difference"), 1e-9);

    // Values are exactly those of the kept section (the second of each pair), or of the other one where that is inactive.
    for (std::int64_t k = 0; k < 7; ++k) {
        for (std::int64_t cell = 0; cell < 40 * 64; ++cell) {
            const std::int64_t i = cell % 40, j = cell / 40;
            const auto active = [&](std::int64_t layer) { return fine.active[static_cast<std::size_t>(fine.cell_index(i, j, layer))] != 0; };
            // Section 1 lies in the first pair alone; elsewhere first + ((1 - first) mod 2) is the second one too.
            const std::int64_t kept = 2 * k + (((1 - 2 * k) % 2) + 2) % 2;
            const std::int64_t other = kept == 2 * k ? 2 * k + 1 : 2 * k;
            if (active(kept) || active(other)) {
                ASSERT_EQ(value("Coarse", "PORO", i, j, k), value("Reek", "PORO", i, j, active(kept) ? kept : other));
            } else {
                ASSERT_TRUE(std::isnan(value("Coarse", "PORO", i, j, k)));
            }
        }
    }
    ASSERT_EQ(coarse.layers.size(), 3u);
    EXPECT_EQ(coarse.layers[0].nb_k_cells, 3);
    EXPECT_EQ(coarse.layers[1].nb_k_cells, 2);
    EXPECT_EQ(coarse.layers[2].nb_k_cells, 2);
}

TEST_F(FieldModel, RegionModesAgreeWithABruteForceCount)
{
    if (!import_reek())
        return;
    const GridModel& fine = model("Reek");
    const std::vector<double> volumes = cell_volumes(fine);
    const std::int64_t area = fine.size[0] * fine.size[1];
    for (int mode = 0; mode <= 3; ++mode) {
        const std::string name = "Mode " + std::to_string(mode);
        ASSERT_TRUE(run(merge(name, "vertical", pairs, "copy_regions 1 regions Good+Tight region_mode " + std::to_string(mode) + " percentile 50")));
        const GridModel& coarse = model(name);
        ASSERT_EQ(coarse.regions.size(), 2u);
        std::int64_t differences = 0;
        for (std::int64_t cell = 0; cell < coarse.cells(); ++cell) {
            const std::array<std::size_t, 2> parts{static_cast<std::size_t>(cell / area * 2 * area + cell % area),
                                                   static_cast<std::size_t>(cell / area * 2 * area + cell % area + area)};
            std::array<int, 2> counts{};
            std::array<double, 2> volume{};
            double all = 0;
            for (const std::size_t part : parts) {
                all += volumes[part];
                for (std::size_t r = 0; r < 2; ++r) {
                    counts[r] += fine.regions[r].flags[part];
                    volume[r] += fine.regions[r].flags[part] ? volumes[part] : 0;
                }
            }
            for (std::size_t r = 0; r < 2; ++r) {
                const bool expected = mode == 0   ? counts[r] > 0
                                      : mode == 1 ? counts[r] > 0 && counts[r] * 50. >= 50
                                      : mode == 2 ? volume[r] > 0 && volume[r] / all * 100 >= 50
                                                  : counts[r] > 0 && counts[r] == std::max(counts[0], counts[1]);
                differences += expected != (coarse.regions[r].flags[static_cast<std::size_t>(cell)] != 0);
            }
        }
        EXPECT_EQ(differences, 0) << name;
    }
}

TEST_F(FieldModel, FaultBlocksAreFoundAndNamedInOrder)
{
    if (!import_reek())
        return;
    ASSERT_TRUE(run(merge("Blocks", "vertical", pairs, "copy_fb_regions 1")));
    const GridModel& m = model("Blocks");
    ASSERT_GE(m.regions.size(), 2u);
    std::vector<int> owners(static_cast<std::size_t>(m.cells()), 0);
    for (std::size_t r = 0; r < m.regions.size(); ++r) {
        EXPECT_EQ(m.regions[r].name, "fault_block_" + std::to_string(r + 1));
        EXPECT_TRUE(m.regions[r].model);
        for (std::size_t cell = 0; cell < owners.size(); ++cell)
            owners[cell] += m.regions[r].flags[cell];
    }
    for (std::size_t cell = 0; cell < owners.size(); ++cell) {
        if (m.active[cell]) {
            ASSERT_EQ(owners[cell], 1) << "every active cell lies in exactly one block";
        }
    }
    // A second merge replaces them.
    ASSERT_TRUE(run("lodex sgrid_merge_multiple_sections name Again sgrid Blocks direction \"vertical\" sections 0+1 copy_fb_regions 1"));
    EXPECT_EQ(model("Again").regions.size(), m.regions.size());
}

TEST_F(FieldModel, MergingAlongIAndJSaysByHowMuchVolumeChanged)
{
    if (!import_reek())
        return;
    for (const char* direction : {"first axis", "second axis"}) {
        const auto r = result(merge(direction[0] == 'f' ? "I" : "J", direction, pairs, ""));
        ASSERT_EQ(r.status, StatementStatus::Done) << r.message;
        const double change = count(r, "bulk_volume_after") / count(r, "bulk_volume_before") - 1;
        EXPECT_NE(change, 0);
        EXPECT_LT(std::abs(change), 0.05);
        EXPECT_NEAR(count(r, "bulk_volume_after"), bulk_volume(model(direction[0] == 'f' ? "I" : "J")), 1e-6 * count(r, "bulk_volume_after"));
    }
    int said = 0;
    for (const std::string& line : messages.of(Lodex::LogLevel::Info))
        said += line.find("bulk volume") != std::string::npos && line.find(" %)") != std::string::npos;
    EXPECT_EQ(said, 2);
}
