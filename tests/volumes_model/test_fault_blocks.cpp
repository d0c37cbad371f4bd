#include "random_grid.h"

#include "lodex/volumes/model/Create.h"
#include "lodex/volumes/model/FaultBlocks.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using namespace lodex;
using namespace volumes_model_tests;

// Moves all corners of the columns that `moves` picks down by `by`.
template <class Picks> void move_columns(GridModel& model, double by, const Picks& picks)
{
    model.zcorn.visit_mutable([&](auto depths) {
        const auto row = static_cast<std::size_t>(2 * model.size[0]);
        const auto rows = static_cast<std::size_t>(2 * model.size[1]);
        for (std::size_t n = 0; n < depths.size(); ++n)
            if (picks(static_cast<std::int64_t>(n % row / 2), static_cast<std::int64_t>(n / row % rows / 2)))
                depths[n] += by;
    });
}

TEST(FaultBlocks, OneBlockWithoutFaults)
{
    const GridModel box = make_box({4, 3, 2}, {10, 10, 10}, {0, 0, 2000});
    const FaultBlocks blocks = find_fault_blocks(box);
    EXPECT_EQ(blocks.count, 1);
    EXPECT_EQ(blocks.column_block, std::vector<std::int32_t>(12, 0));
    EXPECT_TRUE(fault_block_regions(box).empty());
}

TEST(FaultBlocks, FaultsPartTheGridAlongIAndJ)
{
    GridModel box = make_box({4, 4, 2}, {10, 10, 10}, {0, 0, 2000});
    move_columns(box, 5, [](auto i, auto) { return i >= 2; });
    EXPECT_EQ(find_fault_blocks(box).count, 2);
    move_columns(box, 2, [](auto, auto j) { return j >= 1; });
    const FaultBlocks blocks = find_fault_blocks(box);
    EXPECT_EQ(blocks.column_block, (std::vector<std::int32_t>{0, 0, 1, 1, 2, 2, 3, 3, 2, 2, 3, 3, 2, 2, 3, 3}));
    EXPECT_EQ(blocks.cell_block(16 + 7), 3);
    const std::vector<RegionData> regions = fault_block_regions(box);
    ASSERT_EQ(regions.size(), 4U);
    std::vector<int> cells(32);
    for (std::size_t r = 0; r < 4; ++r) {
        EXPECT_EQ(regions[r].name, "fault_block_" + std::to_string(r + 1));
        EXPECT_TRUE(regions[r].model);
        for (std::size_t n = 0; n < 32; ++n) {
            cells[n] += regions[r].flags[n];
            EXPECT_EQ(regions[r].flags[n] != 0, blocks.cell_block(n) == static_cast<std::int32_t>(r));
        }
    }
    EXPECT_EQ(cells, std::vector<int>(32, 1)) << "every cell has one block";
}

TEST(FaultBlocks, AFaultThatDiesOutPartsNothing)
{
    GridModel box = make_box({4, 4, 1}, {10, 10, 10}, {0, 0, 2000});
    move_columns(box, 5, [](auto i, auto j) { return i >= 2 && j >= 1; });
    // Cells (2..3, 0) hang together with (0..1, 0), the moved ones with nothing.
    EXPECT_EQ(find_fault_blocks(box).count, 2);
    GridModel open = make_box({4, 4, 1}, {10, 10, 10}, {0, 0, 2000});
    open.zcorn.visit_mutable([](auto depths) {
        // A step between columns 1 and 2 in the rows j >= 1 that the cells further right do not take part in.
        for (std::size_t n = 0; n < depths.size(); ++n)
            if (n % 8 == 4 && n / 8 % 8 >= 2)
                depths[n] += 5;
    });
    EXPECT_EQ(find_fault_blocks(open).count, 1);
}

TEST(FaultBlocks, AnyKLayerConnects)
{
    GridModel box = make_box({2, 1, 3}, {10, 10, 10}, {0, 0, 2000});
    // Only the middle cells of the two columns fit.
    box.zcorn.visit_mutable([](auto depths) {
        depths[2] += 3;
        depths[6] += 3;
        const std::size_t last = depths.size() - 2;
        depths[last] += 3;
    });
    EXPECT_EQ(find_fault_blocks(box).count, 1);
    box.active[3] = 0;
    EXPECT_EQ(find_fault_blocks(box).count, 2) << "inactive cells connect nothing";
}

TEST(FaultBlocks, ColumnsWithoutActiveCellsHaveNone)
{
    GridModel box = make_box({3, 1, 2}, {10, 10, 10}, {0, 0, 2000});
    box.active = {0, 0, 1, 1, 0, 1};
    const FaultBlocks blocks = find_fault_blocks(box);
    EXPECT_EQ(blocks.count, 2);
    EXPECT_EQ(blocks.column_block, (std::vector<std::int32_t>{1, -1, 0})) << "numbered by the first active cell";
    const std::vector<RegionData> regions = fault_block_regions(box);
    EXPECT_EQ(regions[0].flags, (std::vector<std::uint8_t>{0, 0, 1, 0, 0, 1}));
    box.active.assign(6, 0);
    EXPECT_EQ(find_fault_blocks(box).count, 0);
    EXPECT_TRUE(fault_block_regions(box).empty());
}

TEST(FaultBlocks, ToleranceGoesWithTheDepth)
{
    GridModel box = make_box({2, 1, 1}, {10, 10, 10}, {0, 0, 1990});
    EXPECT_NEAR(coincidence_tolerance(box), 2e-3, 1e-12);
    move_columns(box, 1.5e-3, [](auto i, auto) { return i == 1; });
    EXPECT_EQ(find_fault_blocks(box).count, 1);
    EXPECT_EQ(find_fault_blocks(box, 1e-3).count, 2);
    EXPECT_EQ(find_fault_blocks(box, 0).count, 2);
    move_columns(box, 1e-3, [](auto i, auto) { return i == 1; });
    EXPECT_EQ(find_fault_blocks(box).count, 2);
}

TEST(FaultBlocks, OfTheExampleField)
{
    // Two faults cut through, the third one dies out.
    EXPECT_EQ(find_fault_blocks(make_example()).count, 3);
}

TEST(FaultBlocks, SameOnOneThreadAndTwo)
{
    const GridModel source = random_grid({60, 50, 4}, 4);
    const FaultBlocks one = on_threads(1, [&] { return find_fault_blocks(source); });
    const FaultBlocks two = on_threads(2, [&] { return find_fault_blocks(source); });
    EXPECT_EQ(one.column_block, two.column_block);
    EXPECT_GT(one.count, 1);
}

TEST(FaultBlocks, StopsAtEachStep)
{
    const GridModel source = random_grid({10, 40, 4}, 4);
    EXPECT_GE(
        cancel_at_each_step([&](const ProgressCheck& progress) { (void)find_fault_blocks(source, -1, progress); }), 5);
}

} // namespace
