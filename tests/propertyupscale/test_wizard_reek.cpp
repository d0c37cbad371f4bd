// From a field model onto a merged one, where the field models are present beside the checkout.

#include "WizardRunTest.h"

#include <cstdlib>
#include <filesystem>
#include <iostream>

namespace {

class WizardReek : public WizardRunTest {
protected:
    /// Opens the wizard on "Reek" and "Coarse reek"; false when the model is not here.
    bool open_reek()
    {
        const char* variable = std::getenv("LODEX_FIELD_DATA");
        const std::filesystem::path data = variable ? variable : SOURCE_DIR "/../shared/data";
        const std::filesystem::path folder = data / "reek";
        if (!std::filesystem::exists(folder / "reek_sim_grid.roff")) {
            std::cout << "the field models are not here; nothing to check\n";
            return false;
        }
        const std::string path = folder.string() + "/";
        EXPECT_TRUE(run("lodex import file \"" + path + "reek_sim_grid.roff\" name Reek"));
        for (const char* file : {"reek_sim_poro.roff", "reek_sim_permx.roff", "reek_sim_facies2.roff"})
            EXPECT_TRUE(run("lodex on SGrid Reek import_properties file \"" + path + file + "\""));
        EXPECT_TRUE(run("lodex on SGrid Reek fill_property Net to gross lognormal 0.7+0.3 seed 5\n"
                        "lodex sgrid_merge_multiple_sections name K sgrid Reek direction \"vertical\" sections "
                        "0+1+2+5+6+9+10+13\n"
                        "lodex sgrid_merge_multiple_sections name I sgrid K direction \"first axis\" sections "
                        "0+4+5+9+10+14+15+19+20+24+25+29+30+34+35+39\n"
                        "lodex sgrid_merge_multiple_sections name Coarse reek sgrid I direction \"second axis\" "
                        "sections 0+7+8+15+16+23+24+31+32+39+40+47+48+55+56+63\n"
                        "lodex destroy objects K+I\n"
                        "lodex on SGrid Reek create_upgridding_activity result Coarse reek modifications "
                        "1+1+40+5+2+1+64+8+3+1+2+2+3+3+14+4"));
        open_on("Reek", "Coarse reek");
        return true;
    }
    void use_mapper(const char* name) const
    {
        combo("mapper_")->setCurrentText(name);
        EXPECT_EQ(combo("mapper_")->currentText(), name);
    }
    /// Calls with each active coarse cell and the fine cells that were merged to it.
    template <class Call> static void each_merged(Call call)
    {
        const lodex::GridModel &fine = grid("Reek").model(), &coarse = grid("Coarse reek").model();
        const Lodex::IndexRelation relation = *grid("Coarse reek").relation_to(grid("Reek"));
        for (std::int64_t k = 0; k < coarse.size[2]; ++k)
            for (std::int64_t j = 0; j < coarse.size[1]; ++j)
                for (std::int64_t i = 0; i < coarse.size[0]; ++i) {
                    const auto cell = static_cast<std::size_t>(coarse.cell_index(i, j, k));
                    if (!coarse.active[cell])
                        continue;
                    std::vector<std::size_t> members;
                    const auto range = [&](std::size_t axis, std::int64_t index) {
                        return relation[axis][static_cast<std::size_t>(index)];
                    };
                    for (std::int64_t c = range(2, k).first; c <= range(2, k).last; ++c)
                        for (std::int64_t b = range(1, j).first; b <= range(1, j).last; ++b)
                            for (std::int64_t a = range(0, i).first; a <= range(0, i).last; ++a) {
                                const auto member = static_cast<std::size_t>(fine.cell_index(a, b, c));
                                if (fine.active[member])
                                    members.push_back(member);
                            }
                    call(cell, members);
                }
    }
};

TEST_F(WizardReek, PorosityWeightedByVolumeAndProperty)
{
    if (!open_reek())
        return;
    for (const auto& [mapper, reason] :
         {std::pair{"stratigraphic", "grid \"Reek\" has no stratigraphic layers"},
          {"k-constrained geometric", "grid \"Reek\" has no stratigraphic layers"}}) {
        use_mapper(mapper);
        expect_refused(reason);
    }
    choose("fine_prop_cb_", "PORO");
    tick("weight_volume_");
    list("weight_property_")->setSelectedItems({"Net to gross"});
    tick("weight_property_switch_");
    for (const char* mapper : {"geometric", "parametric"}) {
        use_mapper(mapper);
        expect_done();
    }
    // By hand for the cells that were merged.
    const Properties fine = properties_of("Reek");
    const Values found = properties_of("Coarse reek").at("porosity");
    const auto volumes = grid("Reek").bulk_volumes();
    int checked = 0;
    each_merged([&](std::size_t cell, const std::vector<std::size_t>& members) {
        long double above = 0, below = 0;
        for (const std::size_t member : members) {
            const long double weight = static_cast<long double>(volumes[member]) * fine.at("Net to gross")[member];
            above += weight * fine.at("PORO")[member];
            below += weight;
        }
        EXPECT_NEAR(found[cell], static_cast<double>(above / below), 1e-12) << cell;
        ++checked;
    });
    EXPECT_EQ(checked, 8 * 8 * 4);
}

TEST_F(WizardReek, PermeabilityByEachMethod)
{
    if (!open_reek())
        return;
    choose_class("Permeability");
    choose("fine_prop_cb_", "PERMX");
    choose_tensor("fine", {"PERMX", "PERMX", "PERMX"});
    for (const char* count : {"n_i_", "n_j_", "n_k_"})
        type(count, "3");
    type("power_", "-0.4");
    const Values fine = properties_of("Reek").at("PERMX");
    const double most = *std::ranges::max_element(fine, [](double a, double b) { return !(a >= b); });
    for (const QString& method : entries("method_")) {
        choose_method(method);
        for (const char* mapper : {"geometric", "parametric"}) {
            use_mapper(mapper);
            expect_done();
        }
        const bool tensor = shown("coarse_tensor_frame_");
        const Properties coarse = properties_of("Coarse reek");
        for (const char* name : {"permeability_I", "permeability_J", "permeability_K"}) {
            const Values& values = coarse.at(tensor ? name : "porosity");
            EXPECT_EQ(finite(values), 8 * 8 * 4) << method.toStdString();
            EXPECT_TRUE(std::ranges::all_of(values, [&](double k) { return k >= 0 && k <= most * (1 + 1e-9); }))
                << method.toStdString();
        }
    }
    EXPECT_EQ(runs, 26);
}

TEST_F(WizardReek, FaciesByMostProbable)
{
    if (!open_reek())
        return;
    upscale_with("Indicator", "Most probable");
    choose("fine_prop_cb_", "FACIES");
    choose("coarse_prop_cb_", "FACIES");
    for (const char* mapper : {"geometric", "parametric"}) {
        use_mapper(mapper);
        expect_done();
    }
    const lodex::PropertyData* made = grid("Coarse reek").model().find_property("FACIES");
    ASSERT_TRUE(made && made->discrete());
    EXPECT_EQ(made->code_names, grid("Reek").model().find_property("FACIES")->code_names);
    const Values fine = properties_of("Reek").at("FACIES"), coarse = properties_of("Coarse reek").at("FACIES");
    int checked = 0;
    each_merged([&](std::size_t cell, const std::vector<std::size_t>& members) {
        std::map<double, int> counts;
        for (const std::size_t member : members)
            if (!std::isnan(fine[member]))
                ++counts[fine[member]];
        const int most = std::ranges::max_element(counts, {}, [](const auto& count) { return count.second; })->second;
        EXPECT_EQ(counts[coarse[cell]], most) << cell;
        ++checked;
    });
    EXPECT_EQ(checked, 8 * 8 * 4);
}

} // namespace
