#include "apps/workbench/NumberTexts.h"

#include <gtest/gtest.h>

using namespace lodex;

namespace {

TEST(Grouped, PutsBlanksBetweenGroupsOfThree)
{
    const QString blank(QChar(0x202f));
    EXPECT_EQ(grouped(0), "0");
    EXPECT_EQ(grouped(999), "999");
    EXPECT_EQ(grouped(1000), "1" + blank + "000");
    EXPECT_EQ(grouped(1234567), "1" + blank + "234" + blank + "567");
    EXPECT_EQ(grouped(-123), "-123");
    EXPECT_EQ(grouped(-1234), "-1" + blank + "234");
}

} // namespace
