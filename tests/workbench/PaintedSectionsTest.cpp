#include "apps/workbench/PaintedSections.h"

#include <gtest/gtest.h>

using lodex::PaintedSections;
using lodex::read_painted_sections;

namespace {

TEST(PaintedSections, ReadsCountAndTriples)
{
    const PaintedSections painted = read_painted_sections(" 6 3 1 0 3 1 1 3 1 4 3 1 5 1 0 0 2 0 0");
    EXPECT_TRUE(painted[0].empty());
    EXPECT_TRUE(painted[1].empty());
    EXPECT_EQ(painted[2], (std::set<std::int64_t>{0, 1, 4, 5}));
}

TEST(PaintedSections, ReadsSeveralAxes)
{
    const PaintedSections painted = read_painted_sections("3 1 1 7 2 1 0 3 1 2");
    EXPECT_EQ(painted, (PaintedSections{{{7}, {0}, {2}}}));
}

TEST(PaintedSections, ClearingTripleTakesTheAxisBack)
{
    EXPECT_EQ(read_painted_sections(" 3 1 0 0 2 0 0 3 0 0"), PaintedSections());
    EXPECT_EQ(read_painted_sections("3 1 1 4 1 0 0 1 1 6"), (PaintedSections{{{6}, {}, {}}}));
}

TEST(PaintedSections, NothingAndBrokenTexts)
{
    EXPECT_EQ(read_painted_sections(""), PaintedSections());
    EXPECT_EQ(read_painted_sections("   "), PaintedSections());
    EXPECT_EQ(read_painted_sections("two 1 1 1"), PaintedSections());
    EXPECT_EQ(read_painted_sections("2 1 1 3"), (PaintedSections{{{3}, {}, {}}}))
        << "fewer triples than the count says";
    EXPECT_EQ(read_painted_sections("2 1 1 3 4 1 0"), (PaintedSections{{{3}, {}, {}}})) << "an axis that is none";
    EXPECT_EQ(read_painted_sections("1 1 1 3 1 1 5"), (PaintedSections{{{3}, {}, {}}}))
        << "more triples than the count says";
    EXPECT_EQ(read_painted_sections("-1 1 1 3"), PaintedSections());
}

} // namespace
