#include "sgresize/MergeBlocks.h"

#include <gtest/gtest.h>

namespace {

using Kelvane::merge_blocks;
using Kelvane::merged_cells;
using Blocks = std::vector<Kelvane::MergeBlock>;

TEST(MergeBlocks, AWholeMultipleHasNoTail)
{
    EXPECT_EQ(merge_blocks(1, 9, 3), (Blocks{{0, 2}, {3, 5}, {6, 8}}));
    EXPECT_EQ(merge_blocks(4, 7, 4), (Blocks{{3, 6}}));
}

TEST(MergeBlocks, ASingleSectionLeftStays)
{
    EXPECT_EQ(merge_blocks(1, 10, 3), (Blocks{{0, 2}, {3, 5}, {6, 8}}));
    EXPECT_EQ(merge_blocks(3, 7, 2), (Blocks{{2, 3}, {4, 5}}));
}

TEST(MergeBlocks, TwoOrMoreLeftAreOneMoreBlock)
{
    EXPECT_EQ(merge_blocks(1, 8, 3), (Blocks{{0, 2}, {3, 5}, {6, 7}}));
    EXPECT_EQ(merge_blocks(2, 10, 5), (Blocks{{1, 5}, {6, 9}}));
}

TEST(MergeBlocks, AStepLongerThanTheRunReachesBackToTheFirstSection)
{
    EXPECT_EQ(merge_blocks(5, 7, 4), (Blocks{{0, 6}}));
    EXPECT_EQ(merge_blocks(2, 2, 2), (Blocks{{0, 1}}));
    EXPECT_EQ(merge_blocks(1, 3, 9), (Blocks{{0, 2}}));
}

TEST(MergeBlocks, OneSectionAloneGivesNoBlock)
{
    EXPECT_EQ(merge_blocks(1, 1, 2), Blocks{});
}

TEST(MergedCells, TheRunGivesWayToItsBlocks)
{
    EXPECT_EQ(merged_cells(10, 1, 10, 3), 4);
    EXPECT_EQ(merged_cells(10, 1, 9, 3), 4);
    EXPECT_EQ(merged_cells(10, 1, 8, 3), 5);
    EXPECT_EQ(merged_cells(10, 5, 7, 4), 8);
}

TEST(MergedCells, AgreesWithTheBlocksAsLongAsTheStepFitsTheRun)
{
    for (int from = 1; from <= 6; ++from) {
        for (int to = from + 1; to <= 14; ++to) {
            for (int step = 2; step <= to - from + 1; ++step) {
                long left = 14;
                for (const auto& block : merge_blocks(from, to, step))
                    left -= block.last - block.first;
                EXPECT_EQ(merged_cells(14, from, to, step), left) << from << ' ' << to << ' ' << step;
            }
        }
    }
}

TEST(MergedCells, TheDivisionIsMadeInSinglePrecision)
{
    // 2^24 + 1 has no single-precision number of its own: the half cell at the end gets lost.
    const int many = (1 << 24) + 1;
    EXPECT_EQ(merged_cells(many, 1, many, 2), 1 << 23);
    EXPECT_EQ(merged_cells(many - 2, 1, many - 2, 2), 1 << 23);
}

} // namespace
