#include "random_grid.h"

#include "lodex/volumes/model/Derivation.h"

#include <gtest/gtest.h>

namespace {

using namespace lodex;
using volumes_model_tests::error_of;

using Ranges = std::vector<IndexRange>;

DerivationRecord record_of(const GridSize& source_size, std::array<Ranges, 3> ranges)
{
    return {1, "fine", source_size, std::move(ranges)};
}

TEST(Derivation, ComposesHulls)
{
    // Six sections refined to nine, then merged three by three.
    const DerivationRecord refined{1,
                                   "coarse",
                                   {1, 1, 6},
                                   {Ranges{{0, 0}}, Ranges{{0, 0}},
                                    Ranges{{0, 0}, {1, 1}, {1, 1}, {1, 1}, {2, 2}, {3, 3}, {4, 4}, {5, 5}, {5, 5}}}};
    const DerivationRecord merged{
        2, "refined", {1, 1, 9}, {Ranges{{0, 0}}, Ranges{{0, 0}}, Ranges{{0, 2}, {3, 5}, {6, 8}}}};
    const DerivationRecord both = compose_records(refined, merged);
    EXPECT_EQ(both.source_id, 1U);
    EXPECT_EQ(both.source_name, "coarse");
    EXPECT_EQ(both.source_size, (GridSize{1, 1, 6}));
    EXPECT_EQ(both.ranges[2], (Ranges{{0, 1}, {1, 3}, {4, 5}}));
    EXPECT_EQ(record_size(both), (GridSize{1, 1, 3}));
    EXPECT_NE(error_of([&] { (void)compose_records(merged, merged); }), "");
    DerivationRecord wild = merged;
    wild.ranges[2][2].last = 9;
    EXPECT_NE(error_of([&] { (void)compose_records(refined, wild); }), "");
}

TEST(Derivation, IdentityChangesNothing)
{
    const DerivationRecord step{2, "b", {2, 3, 4}, {Ranges{{0, 1}}, Ranges{{0, 0}, {1, 2}}, Ranges{{0, 3}}}};
    const DerivationRecord same = compose_records(identity_record(1, "a", {2, 3, 4}), step);
    EXPECT_EQ(same.ranges, step.ranges);
    EXPECT_EQ(same.source_id, 1U);
}

TEST(Coarsening, GroupsOfStepFromTheFirst)
{
    using M = GridModification;
    const auto sections = [](std::vector<M> list, long size = 10) {
        return merge_sections_of(list, {size, 1, 1})[0];
    };
    EXPECT_EQ(sections({{0, 1, 10, 2}}), (Ranges{{0, 1}, {2, 3}, {4, 5}, {6, 7}, {8, 9}}));
    EXPECT_EQ(sections({{0, 1, 10, 4}}), (Ranges{{0, 3}, {4, 7}, {8, 9}})) << "two are left: they merge";
    EXPECT_EQ(sections({{0, 1, 10, 3}}), (Ranges{{0, 2}, {3, 5}, {6, 8}})) << "one is left: it stays";
    EXPECT_EQ(sections({{0, 3, 4, 5}}), (Ranges{{2, 3}}));
    EXPECT_EQ(sections({{0, 10, 10, 5}}), Ranges{});
    EXPECT_EQ(sections({{0, 1, 10, 1}}), Ranges{});
    EXPECT_EQ(sections({{0, 7, 10, 2}, {0, 1, 3, 3}, {0, 7, 10, 2}}), (Ranges{{0, 2}, {6, 7}, {8, 9}}));
    EXPECT_EQ(sections({{1, 1, 1, 2}}), Ranges{});
    const std::vector<M> list{{0, 1, 4, 2}, {1, 1, 1, 1}, {2, 1, 5, 5}};
    EXPECT_EQ(coarsened_size(list, {5, 1, 5}), (GridSize{3, 1, 1}));
    EXPECT_EQ(coarsened_ranges(list, {5, 1, 5})[0], (Ranges{{0, 1}, {2, 3}, {4, 4}}));
    EXPECT_EQ(without_repeats(std::vector<M>{{0, 1, 4, 2}, {0, 1, 4, 2}, {0, 1, 4, 3}}).size(), 2U);
}

TEST(Coarsening, WrongModificationsAreNamed)
{
    const auto error = [](std::vector<GridModification> list) {
        return error_of([&] { (void)merge_sections_of(list, {10, 5, 1}); });
    };
    EXPECT_EQ(error({{0, 0, 4, 2}}), "sections 0 to 4 along I: the grid has 10 sections");
    EXPECT_EQ(error({{1, 1, 6, 2}}), "sections 1 to 6 along J: the grid has 5 sections");
    EXPECT_EQ(error({{0, 4, 3, 2}}), "sections 4 to 3 along I: the first lies behind the last");
    EXPECT_EQ(error({{0, 1, 4, 0}}), "sections 1 to 4 along I: the step 0 is below 1");
    EXPECT_EQ(error({{3, 1, 4, 2}}), "sections 1 to 4 along axis 3: there is no such axis");
    EXPECT_EQ(error({{0, 4, 8, 2}, {0, 1, 4, 2}}), "sections 1 to 4 along I and sections 4 to 8 along I overlap");
}

TEST(Refinement, EverySectionBecomesItsAmount)
{
    const std::vector<GridRefinement> list{{2, 2, 3, 3}, {0, 1, 2, 2}};
    EXPECT_EQ(refined_size(list, {2, 4, 4}), (GridSize{4, 4, 8}));
    EXPECT_EQ(refined_ranges(list, {2, 4, 4})[2],
              (Ranges{{0, 0}, {1, 1}, {1, 1}, {1, 1}, {2, 2}, {2, 2}, {2, 2}, {3, 3}}));
    EXPECT_EQ(refined_ranges(list, {2, 4, 4})[0], (Ranges{{0, 0}, {0, 0}, {1, 1}, {1, 1}}));
    EXPECT_EQ(error_of([&] {
                  (void)refined_size(list, {2, 4, 2});
              }),
              "sections 2 to 3 along K: the grid has 2 sections");
    // A size that would not fit into memory is still a size.
    EXPECT_EQ(refined_size(std::vector<GridRefinement>{{0, 1, 1, 2000000000}}, {2, 1, 1})[0], 2000000001);
}

TEST(Records, TellWhetherSizesAgree)
{
    const DerivationRecord record =
        record_of({5, 1, 4}, {Ranges{{0, 1}, {2, 3}, {4, 4}}, Ranges{{0, 0}}, Ranges{{0, 3}}});
    const std::vector<GridModification> right{{0, 1, 5, 2}, {2, 1, 4, 4}};
    const std::vector<GridModification> same_size{{0, 2, 5, 2}, {2, 1, 4, 4}};
    const std::vector<GridModification> other{{0, 1, 5, 5}};
    const std::vector<GridModification> outside{{0, 1, 6, 2}};
    EXPECT_TRUE(sizes_agree(record, right));
    EXPECT_TRUE(reproduces(record, right));
    EXPECT_TRUE(sizes_agree(record, same_size));
    EXPECT_FALSE(reproduces(record, same_size));
    EXPECT_FALSE(sizes_agree(record, other));
    EXPECT_FALSE(sizes_agree(record, outside));
    EXPECT_FALSE(reproduces(record, outside));
}

TEST(Records, AreWrittenAsShortModifications)
{
    using List = std::vector<GridModification>;
    const auto list = [](Ranges ranges, std::int64_t size) {
        return modifications_of(record_of({size, 1, 1}, {std::move(ranges), Ranges{{0, 0}}, Ranges{{0, 0}}}));
    };
    EXPECT_EQ(list({{0, 1}, {2, 3}, {4, 4}}, 5), (List{{0, 1, 4, 2}}));
    EXPECT_EQ(list({{0, 2}, {3, 5}, {6, 7}}, 8), (List{{0, 1, 8, 3}}));
    EXPECT_EQ(list({{0, 1}, {2, 4}, {5, 7}}, 8), (List{{0, 1, 2, 2}, {0, 3, 8, 3}}));
    EXPECT_EQ(list({{0, 2}, {3, 4}, {5, 7}}, 8), (List{{0, 1, 5, 3}, {0, 6, 8, 3}}));
    EXPECT_EQ(list({{0, 0}, {1, 1}}, 2), List{});
    EXPECT_EQ(list({{0, 0}, {0, 0}, {1, 1}}, 2), std::nullopt) << "a refinement";
    EXPECT_EQ(list({{0, 1}}, 3), std::nullopt) << "a section is missing";

    // What is written reads back, whatever the ranges.
    const CounterRandom random(5);
    for (std::uint64_t n = 0; n < 200; ++n) {
        Ranges ranges;
        std::int64_t next = 0;
        for (std::uint64_t g = 0; g < 12; ++g) {
            const auto length = static_cast<std::int64_t>(random.uniform(n * 12 + g) * 4) + 1;
            ranges.push_back({next, next + length - 1});
            next += length;
        }
        const DerivationRecord record = record_of({1, next, 1}, {Ranges{{0, 0}}, ranges, Ranges{{0, 0}}});
        const auto found = modifications_of(record);
        ASSERT_TRUE(found);
        EXPECT_TRUE(reproduces(record, *found));
    }
}

TEST(Records, AreWrittenAsShortRefinements)
{
    const DerivationRecord record = record_of({3, 1, 2}, {Ranges{{0, 0}, {0, 0}, {1, 1}, {1, 1}, {2, 2}},
                                                          Ranges{{0, 0}}, Ranges{{0, 0}, {1, 1}, {1, 1}, {1, 1}}});
    const auto found = refinements_of(record);
    ASSERT_TRUE(found);
    EXPECT_EQ(*found, (std::vector<GridRefinement>{{0, 1, 2, 2}, {2, 2, 2, 3}}));
    EXPECT_TRUE(reproduces(record, *found));
    EXPECT_TRUE(sizes_agree(record, *found));
    EXPECT_EQ(refinements_of(record_of({2, 1, 1}, {Ranges{{0, 1}}, Ranges{{0, 0}}, Ranges{{0, 0}}})), std::nullopt);
    EXPECT_EQ(refinements_of(record_of({2, 1, 1}, {Ranges{{0, 0}}, Ranges{{0, 0}}, Ranges{{0, 0}}})), std::nullopt);
}

} // namespace
