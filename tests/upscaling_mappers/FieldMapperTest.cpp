// Mappers on faulted field models and their merges, where these are present beside the checkout.

#include "MapperFixture.h"

#include "brute_force.h"

#include "lodex/gridio/GridFormat.h"

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <iostream>

using namespace lodex;

namespace {

class FieldMapper : public MapperFixture, public testing::WithParamInterface<const char*> {
protected:
    // Null when the model is not there.
    static CornerPointGrid* import()
    {
        const char* variable = std::getenv("LODEX_FIELD_DATA");
        const std::filesystem::path folder = variable ? variable : SOURCE_DIR "/../shared/data";
        const std::filesystem::path path = folder / GetParam();
        if (!std::filesystem::exists(path)) {
            std::cout << path.filename() << " is not here; nothing to check\n";
            return nullptr;
        }
        auto read = GridFormats::for_reading(path).read(path, {});
        return &add("Fine", std::move(read.model));
    }

    // Shares of the active fine cells, by volume.
    struct Agreement {
        double same = 0, other = 0, none = 0;
    };
    Agreement compare(const CornerPointGrid& fine, const CornerPointGrid& coarse, const char* mapper)
    {
        const auto expected = owners_of(match("parametric", fine, coarse)->mapping(), fine.model().cells());
        const auto found = owners_of(match(mapper, fine, coarse)->mapping(), fine.model().cells());
        Agreement result;
        double all = 0;
        for (std::size_t cell = 0; cell < expected.size(); ++cell) {
            if (expected[cell] < 0)
                continue;
            const double volume = fine.bulk_volumes()[cell];
            all += volume;
            (found[cell] == expected[cell] ? result.same : found[cell] < 0 ? result.none : result.other) += volume;
        }
        for (double* share : {&result.same, &result.other, &result.none})
            *share /= all;
        std::cout << "  " << GetParam() << " on " << coarse.name() << ", " << mapper << ": " << 100 * result.same
                  << " % of the volume in the parent, " << 100 * result.other << " % in another cell, "
                  << 100 * result.none << " % in none\n";
        return result;
    }
};

} // namespace

TEST_P(FieldMapper, MergesAreMapped)
{
    CornerPointGrid* fine = import();
    if (!fine)
        return;
    const std::int64_t layers = fine->model().size[2];
    set_layers(*fine, {{"Upper", layers / 4 * 2}, {"Lower", layers - layers / 4 * 2}});
    auto& by_k = merge("By K", *fine, 2, 2);
    for (const char* mapper : {"geometric", "k-constrained geometric", "stratigraphic"})
        EXPECT_GT(compare(*fine, by_k, mapper).same, 0.999);
    auto& by_i = merge("By I and K", by_k, 0, 2);
    auto& coarse = merge("By I, J and K", by_i, 1, 2);
    // Merged areally, a cell's surfaces are straight between the outer corners: thin cells of a bent or faulted field
    // then lie partly in the next one. Relative depth follows the bends.
    EXPECT_GT(compare(*fine, coarse, "geometric").same, 0.7);
    EXPECT_GT(compare(*fine, coarse, "k-constrained geometric").same, 0.7);
    EXPECT_GT(compare(*fine, coarse, "stratigraphic").same, 0.998);
    for (const char* mapper : {"geometric", "parametric", "k-constrained geometric", "stratigraphic"}) {
        const auto grids = match(mapper, *fine, coarse, true);
        for (const std::string& warning : grids->warnings())
            std::cout << "  " << mapper << ": " << warning << '\n';
        // Every sample is a cell that takes part.
        std::int64_t inside = 0;
        for (std::int64_t cell = 0; cell < coarse.model().cells(); cell += 7)
            for (const std::int64_t sample : samples(*grids, cell, {2, 2, 2})) {
                ASSERT_GE(sample, -1);
                ASSERT_TRUE(sample < 0 || fine->model().active[static_cast<std::size_t>(sample)]);
                inside += sample >= 0;
            }
        EXPECT_GT(inside, 0);
    }
}

TEST_P(FieldMapper, IndexAgreesWithBruteForce)
{
    const CornerPointGrid* fine = import();
    if (!fine)
        return;
    auto& coarse = merge("Coarse", merge("By I", merge("By J", *fine, 1, 3), 0, 3), 2, 3);
    const auto owners = owners_of(match("geometric", *fine, coarse)->mapping(), fine->model().cells());
    const auto cells = brute_force::corners_of(view_of(coarse.model()));
    const auto& model = fine->model();
    const std::int64_t step = std::max<std::int64_t>(1, model.cells() / 3000);
    std::int64_t asked = 0;
    for (std::int64_t cell = 0; cell < model.cells(); cell += step) {
        if (!model.active[static_cast<std::size_t>(cell)])
            continue;
        const auto centre = cell_centre(cell_corners(model, cell % model.size[0], cell / model.size[0] % model.size[1],
                                                     cell / model.size[0] / model.size[1]));
        ASSERT_EQ(owners[static_cast<std::size_t>(cell)], brute_force::find(cells, centre)) << "fine cell " << cell;
        ++asked;
    }
    EXPECT_GT(asked, 500);
}

INSTANTIATE_TEST_SUITE_P(Models, FieldMapper,
                         testing::Values("reek/reek_sim_grid.grdecl", "reek/REEK.EGRID", "spe9/SPE9.GRDECL",
                                         "drogon/DROGON.EGRID", "drogon/simgrid_with_region_zone_attr.roff"),
                         [](const auto& model) {
                             std::string name = model.param;
                             for (char& letter : name)
                                 letter = std::isalnum(static_cast<unsigned char>(letter)) ? letter : '_';
                             return name;
                         });
