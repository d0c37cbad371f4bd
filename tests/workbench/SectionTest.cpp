#include "apps/workbench/Section.h"

#include "lodex/volumes/model/Create.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace lodex;

namespace {

using Four = std::array<float, 4>;

/// Box of 3 x 2 x 2 cells of 100 by 50 by 10.
GridModel box()
{
    return make_box({3, 2, 2}, {100, 50, 10}, {1000, 2000, 1500});
}

template <class F> void change_coord(GridModel& model, F f)
{
    model.coord.visit_mutable([&](auto values) {
        for (std::size_t i = 0; i < values.size(); ++i)
            values[i] = f(i, static_cast<double>(values[i]));
    });
}

TEST(Section, JSectionRunsAlongI)
{
    const Section section = cut_section(box(), SectionAxis::J, 1);
    ASSERT_EQ(section.cells.size(), 6u);
    for (std::size_t n = 0; n < 6; ++n) {
        const std::int64_t i = static_cast<std::int64_t>(n) % 3, k = static_cast<std::int64_t>(n) / 3;
        EXPECT_EQ(section.cells[n].cell, i + 3 * (1 + 2 * k));
        const auto start = static_cast<float>(100 * i), top = static_cast<float>(1500 + 10 * k);
        EXPECT_EQ(section.cells[n].distance, (Four{start, start + 100, start + 100, start}));
        EXPECT_EQ(section.cells[n].depth, (Four{top, top, top + 10, top + 10}));
    }
    EXPECT_EQ(section.first_distance, 0);
    EXPECT_EQ(section.last_distance, 300);
    EXPECT_EQ(section.top, 1500);
    EXPECT_EQ(section.base, 1520);
}

TEST(Section, ISectionRunsAlongJ)
{
    const Section section = cut_section(box(), SectionAxis::I, 2);
    ASSERT_EQ(section.cells.size(), 4u);
    EXPECT_EQ(section.cells[0].cell, 2);
    EXPECT_EQ(section.cells[1].cell, 5);
    EXPECT_EQ(section.cells[2].cell, 8);
    EXPECT_EQ(section.cells[3].cell, 11);
    EXPECT_EQ(section.cells[1].distance, (Four{50, 100, 100, 50}));
    EXPECT_EQ(section.cells[2].depth, (Four{1510, 1510, 1520, 1520}));
    EXPECT_EQ(section.last_distance, 100);
}

TEST(Section, OutsideTheGridIsEmpty)
{
    const GridModel model = box();
    EXPECT_TRUE(cut_section(model, SectionAxis::J, -1).cells.empty());
    EXPECT_TRUE(cut_section(model, SectionAxis::J, 2).cells.empty());
    EXPECT_TRUE(cut_section(model, SectionAxis::I, 3).cells.empty());
    EXPECT_EQ(cut_section(model, SectionAxis::I, 0).cells.size(), 4u);
    EXPECT_EQ(cut_section(model, SectionAxis::J, 0).cells.size(), 6u);
}

TEST(Section, InactiveCellsAreLeftOut)
{
    GridModel model = box();
    model.active[static_cast<std::size_t>(model.cell_index(0, 0, 0))] = 0;
    model.active[static_cast<std::size_t>(model.cell_index(1, 0, 0))] = 0;
    model.active[static_cast<std::size_t>(model.cell_index(2, 0, 0))] = 0;
    const Section section = cut_section(model, SectionAxis::J, 0);
    ASSERT_EQ(section.cells.size(), 3u);
    EXPECT_EQ(section.cells[0].cell, model.cell_index(0, 0, 1));
    EXPECT_EQ(section.top, 1510) << "the extent is that of the active cells";
    std::ranges::fill(model.active, std::uint8_t{0});
    EXPECT_TRUE(cut_section(model, SectionAxis::J, 0).cells.empty());
}

TEST(Section, CornersAreTakenFromTheFaultedSide)
{
    GridModel model = make_box({2, 1, 1}, {100, 50, 10}, {0, 0, 1000});
    // The second cell lies 4 deeper: its eight depths stand at odd places 2 and 3 of each row.
    model.zcorn.visit_mutable([](auto depths) {
        for (std::size_t i = 0; i < depths.size(); ++i)
            depths[i] += i % 4 >= 2 ? 4 : 0;
    });
    const Section section = cut_section(model, SectionAxis::J, 0);
    ASSERT_EQ(section.cells.size(), 2u);
    EXPECT_EQ(section.cells[0].depth, (Four{1000, 1000, 1010, 1010}));
    EXPECT_EQ(section.cells[1].depth, (Four{1004, 1004, 1014, 1014}));
    EXPECT_EQ(section.base, 1014);
}

TEST(Section, LeaningPillarsMoveTheCorners)
{
    // Pillars from depth 1000 to 1010 lean by 6 along I: at the middle depth 3 of it, so the top starts at -3.
    GridModel model = make_box({1, 1, 1}, {100, 50, 10}, {0, 0, 1000});
    const bool base_is_deeper = model.coord[5] > model.coord[2];
    ASSERT_TRUE(base_is_deeper);
    const double span = model.coord[5] - model.coord[2], lean = 0.6; // per unit of depth
    change_coord(model, [&](std::size_t i, double value) { return i % 6 == 3 ? value + lean * span : value; });
    const Section section = cut_section(model, SectionAxis::J, 0);
    ASSERT_EQ(section.cells.size(), 1u);
    EXPECT_EQ(section.cells[0].distance, (Four{-3, 97, 103, 3}));
    EXPECT_EQ(section.first_distance, -3);
    EXPECT_EQ(section.last_distance, 103);
}

TEST(Section, DistanceFollowsABentLine)
{
    // Three pillars at (0,0), (300,400), (300,900): 500 and 500 apart.
    GridModel model = make_box({2, 1, 1}, {100, 50, 10}, {0, 0, 1000});
    constexpr std::array<std::array<double, 2>, 3> places{{{0, 0}, {300, 400}, {300, 900}}};
    change_coord(model, [&](std::size_t i, double value) {
        const std::size_t pillar = i / 6, part = i % 3;
        return pillar < 3 && part < 2 ? places[pillar][part] : value;
    });
    const Section section = cut_section(model, SectionAxis::J, 0);
    ASSERT_EQ(section.cells.size(), 2u);
    EXPECT_EQ(section.cells[0].distance, (Four{0, 500, 500, 0}));
    EXPECT_EQ(section.cells[1].distance, (Four{500, 1000, 1000, 500}));
}

TEST(Section, MirroredGridsStillStartAtZero)
{
    GridModel model = box();
    change_coord(model, [](std::size_t i, double value) { return i % 3 == 0 ? -value : value; });
    const Section section = cut_section(model, SectionAxis::J, 0);
    ASSERT_EQ(section.cells.size(), 6u);
    EXPECT_EQ(section.first_distance, 0);
    EXPECT_EQ(section.last_distance, 300);
}

TEST(Section, CornersThatAreNotFiniteLeaveTheCellOut)
{
    GridModel model = box();
    model.zcorn.visit_mutable(
        [](auto depths) { depths[0] = std::numeric_limits<double>::quiet_NaN(); }); // of cell 0, 0, 0
    const Section by_depth = cut_section(model, SectionAxis::J, 0);
    EXPECT_EQ(by_depth.cells.size(), 5u);
    EXPECT_EQ(by_depth.top, 1500);

    model = box();
    change_coord(model,
                 [](std::size_t i, double value) { return i == 0 ? std::numeric_limits<double>::infinity() : value; });
    const Section by_place = cut_section(model, SectionAxis::J, 1);
    EXPECT_EQ(by_place.cells.size(), 6u) << "another row of pillars";
    for (const SectionCell& cell : cut_section(model, SectionAxis::J, 0).cells) {
        for (const float distance : cell.distance)
            EXPECT_TRUE(std::isfinite(distance));
    }
}

TEST(Section, OneCellAlongAnAxis)
{
    const Section section = cut_section(make_box({1, 1, 1}, {10, 20, 30}), SectionAxis::I, 0);
    ASSERT_EQ(section.cells.size(), 1u);
    EXPECT_EQ(section.cells[0].distance, (Four{0, 20, 20, 0}));
    EXPECT_EQ(section.cells[0].depth, (Four{0, 0, 30, 30}));
}

} // namespace
