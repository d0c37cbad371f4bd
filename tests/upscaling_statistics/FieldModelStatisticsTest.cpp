// Statistics of real fields against the definitions, where the models are present beside the checkout.

#include "Reference.h"

#include "lodex/interpreter/Interpreter.h"

#include <Lodex/geobase/Property.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <random>

using namespace reference;

namespace {

class FieldStatistics : public StatisticsTest {
protected:
    /// The file below the folder of field models; empty, with a note, when it is not there.
    static std::string file(const std::string& name)
    {
        const char* variable = std::getenv("LODEX_FIELD_DATA");
        const auto path = std::filesystem::path(variable ? variable : SOURCE_DIR "/../shared/data") / name;
        if (std::filesystem::exists(path))
            return path.string();
        std::cout << name << " is not here; nothing to check\n";
        return {};
    }
    static bool run(const std::string& text)
    {
        for (const auto& result : lodex::Interpreter::instance().run(text)) {
            EXPECT_EQ(result.status, lodex::StatementStatus::Done) << result.message;
            if (result.status != lodex::StatementStatus::Done)
                return false;
        }
        return true;
    }

    /// All methods without weights everywhere and with weights in a region; for the first quantity also the other way
    /// round.
    void check(const std::string& name, const std::vector<std::pair<std::string, std::string>>& quantities)
    {
        const auto* grid = lodex::find_grid(name);
        ASSERT_TRUE(grid);
        const auto& model = grid->model();
        ASSERT_FALSE(model.regions.empty());
        const auto& flags = model.regions.front().flags;
        std::mt19937 random(2);
        for (const auto& [above, below] : quantities) {
            const int property = grid->property_db()->property_index(above);
            const int denominator = below.empty() ? -1 : grid->property_db()->property_index(below);
            ASSERT_GE(property, 0) << above;
            ASSERT_TRUE(below.empty() || denominator >= 0) << below;
            for (const std::string& method : methods()) {
                for (const bool weighted : {false, true}) {
                    for (const bool everywhere : {true, false}) {
                        if (weighted == everywhere && &above != &quantities.front().first)
                            continue;
                        Lodex::List<int> units;
                        for (std::int64_t k = 0; k < model.size[2]; ++k)
                            units.append(k == 0 ? 1 : units[static_cast<int>(k) - 1] + (random() % 4 == 0 ? 1 : 0));
                        const auto inside = [&](std::size_t cell) { return everywhere || flags[cell] != 0; };
                        ASSERT_TRUE(manager->execute(grid, units, property, method,
                                                     everywhere ? Lodex::CString("everywhere") : Lodex::CString(model.regions.front().name),
                                                     weighted, 0.5, denominator));
                        expect_same(*manager,
                                    statistics(*grid, units, property, method, inside, weighted && takes_weights(method), 0.5, denominator),
                                    name + " " + above + "/" + below + " " + method + (weighted ? " weighted" : ""));
                    }
                }
            }
        }
    }
};

} // namespace

TEST_F(FieldStatistics, Reek)
{
    const std::string path = file("reek/reek_grd_w_props.roff");
    if (path.empty() || !run("lodex import file \"" + path + "\" name Reek"))
        return;
    ASSERT_TRUE(run("lodex on SGrid Reek define_region Good property PORO min 0.18"));
    check("Reek", {{"PORO", ""}, {"PORV", "PORO"}, {"FIPNUM", ""}});
}

TEST_F(FieldStatistics, Spe9)
{
    const std::string path = file("spe9/SPE9_CP_SHORT.DATA");
    if (path.empty() || !run("lodex import file \"" + path + "\" name Spe9"))
        return;
    ASSERT_TRUE(run("lodex on SGrid Spe9 define_region Good property PORO min 0.12"));
    check("Spe9", {{"PORO", ""}, {"PERMX", ""}, {"PERMX", "PORO"}});
}

TEST_F(FieldStatistics, Drogon)
{
    const std::string path = file("drogon/DROGON.EGRID");
    if (path.empty() || !run("lodex import file \"" + path + "\" name Drogon\n"
                             "lodex on SGrid Drogon import_properties file \"" + file("drogon/include/grid/drogon.poro") + "\"\n"
                             "lodex on SGrid Drogon import_properties file \"" + file("drogon/include/props/drogon.swatinit") + "\"\n"
                             "lodex on SGrid Drogon define_region Good property PORO min 0.2"))
        return;
    check("Drogon", {{"PORO", ""}, {"SWATINIT", "PORO"}});
}
