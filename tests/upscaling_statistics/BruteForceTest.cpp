// Every method, weight, region and ratio on random faulted grids against the definitions; what is kept between runs.

#include "Reference.h"

#include "lodex/volumes/model/Create.h"
#include "tests/volumes_model/random_grid.h"

#include <Lodex/utils/ProgressTracer.h>

#include <tbb/global_control.h>

#include <functional>
#include <random>
#include <utility>

using namespace reference;

namespace {

constexpr double powers[] = {-1, -0.6, -1e-6, 0, 1e-6, 0.4, 1};

/// Counts the runs that show progress, and stops them when told to.
struct Progress : Lodex::ProgressSink {
    Progress() : former(Lodex::ProgressTracer::set_sink(this)) {}
    ~Progress() override { Lodex::ProgressTracer::set_sink(former); }
    void begin(const Lodex::CString&) override { ++runs; }
    bool progress(double done) override
    {
        furthest = std::max(furthest, done);
        return !(done >= stop_at);
    }
    void end() override {}

    Lodex::ProgressSink* former;
    int runs = 0;
    double furthest = 0;
    double stop_at = 2;
};

class BruteForce : public StatisticsTest {
protected:
    static lodex::CornerPointGrid* random_grid(const lodex::GridSize& size, std::uint64_t seed)
    {
        lodex::GridModel model = volumes_model_tests::random_grid(size, seed);
        // Values of either sign, zeros and gaps; many equal ones.
        std::mt19937 random(static_cast<unsigned>(seed));
        std::vector<float> wild, rounded;
        for (std::int64_t cell = 0; cell < model.cells(); ++cell) {
            const unsigned n = random() % 100;
            wild.push_back(n < 5 ? 0 : n < 10 ? std::numeric_limits<float>::quiet_NaN() : n < 15 ? std::numeric_limits<float>::infinity()
                           : n < 30 ? -static_cast<float>(n) : std::pow(10.0F, static_cast<float>(random() % 1200) / 100 - 6));
            rounded.push_back(static_cast<float>(random() % 7));
        }
        model.properties.push_back({"WILD", "", std::move(wild), {}, {}, false});
        model.properties.push_back({"ROUND", "", std::move(rounded), 3.0, {}, false});
        return lodex::add_grid("G" + std::to_string(seed), std::move(model));
    }
    static Lodex::List<int> random_units(long layers, std::mt19937& random)
    {
        Lodex::List<int> units;
        for (long n = 0; n < layers; ++n)
            units.append(n == 0 ? 1 : units[static_cast<int>(n) - 1] + static_cast<int>(random() % 2));
        return units;
    }
};

} // namespace

TEST_F(BruteForce, EveryMethodWeightRegionAndRatio)
{
    std::mt19937 random(5);
    for (const lodex::GridSize& size : {lodex::GridSize{7, 6, 9}, {1, 1, 4}, {3, 1, 1}, {16, 11, 5}}) {
        const auto* grid = random_grid(size, static_cast<std::uint64_t>(size[0]));
        const auto& flags = grid->model().regions;
        const std::map<std::string, std::function<bool(std::size_t)>> regions{
            {"everywhere", [](std::size_t) { return true; }},
            {"A", [&](std::size_t cell) { return flags[0].flags[cell] != 0; }},
            {"A+C", [&](std::size_t cell) { return flags[0].flags[cell] != 0 || flags[2].flags[cell] != 0; }},
            {"all_regions",
             [&](std::size_t cell) { return std::ranges::any_of(flags, [&](const auto& r) { return r.flags[cell] != 0; }); }}};
        // POR, DEP, FAC, NODE, WILD, ROUND; NODE stands on nodes.
        const std::pair<int, int> properties[] = {{0, -1}, {1, -1}, {2, -1}, {4, -1}, {5, -1}, {0, 5}, {4, 2}, {5, 5}};
        EXPECT_FALSE(manager->execute(grid, random_units(size[2], random), 3, "Arithmetic", "everywhere", true, 1, -1));
        for (const std::string& method : methods())
            for (const auto& [region, inside] : regions)
                for (const auto& [property, denominator] : properties)
                    for (const bool weighted : {false, true}) {
                        const double power = powers[random() % std::size(powers)];
                        const Lodex::List<int> units = random_units(size[2], random);
                        ASSERT_TRUE(manager->execute(grid, units, property, method, region, weighted, power, denominator));
                        expect_same(*manager,
                                    statistics(*grid, units, property, method, inside, weighted && takes_weights(method),
                                               power, denominator),
                                    method + " " + region + " " + std::to_string(property) + "/" +
                                        std::to_string(denominator) + (weighted ? " weighted " : " ") + std::to_string(power));
                    }
    }
}

TEST_F(BruteForce, OtherUnitsWorkFromWhatIsKept)
{
    std::mt19937 random(6);
    const auto* grid = random_grid({12, 9, 30}, 3);
    const auto everywhere = [](std::size_t) { return true; };
    for (const std::string& method : methods()) {
        Progress progress;
        for (int round = 0; round < 20; ++round) {
            const Lodex::List<int> units = random_units(30, random);
            ASSERT_TRUE(manager->execute(grid, units, 4, method, "everywhere", true, 0.3, -1));
            expect_same(*manager, statistics(*grid, units, 4, method, everywhere, takes_weights(method), 0.3, -1), method);
        }
        EXPECT_EQ(progress.runs, 1) << method << ": layers were worked out again";
        EXPECT_EQ(progress.furthest, 1) << method;
    }
}

TEST_F(BruteForce, KeptResultsAreTheSameToTheLastBit)
{
    const auto* grid = random_grid({12, 9, 30}, 3);
    const auto fresh = Kelvane::FlowUnitStatsManager::create();
    std::mt19937 random(7);
    for (const std::string& method : methods()) {
        for (int round = 0; round < 3; ++round) {
            const Lodex::List<int> units = random_units(30, random);
            ASSERT_TRUE(manager->execute(grid, units, 0, method, "B", true, 0.3, -1));
        }
        const Lodex::List<int> units = random_units(30, random);
        ASSERT_TRUE(manager->execute(grid, units, 0, method, "B", true, 0.3, -1));
        ASSERT_TRUE(fresh->execute(grid, units, 1, method, "B", true, 0.3, -1));
        ASSERT_TRUE(fresh->execute(grid, units, 0, method, "B", true, 0.3, -1));
        EXPECT_EQ(manager->getUnitAvrgList(), fresh->getUnitAvrgList());
        EXPECT_EQ(manager->getFlowAvrgList(), fresh->getFlowAvrgList());
    }
}

TEST_F(BruteForce, ChangesOfTheGridAreNoticed)
{
    auto* grid = random_grid({5, 5, 6}, 8);
    const Lodex::List<int> units = to_list({1, 1, 2, 2, 2, 3});
    const auto everywhere = [](std::size_t) { return true; };
    for (const std::string& method : {std::string("Arithmetic"), std::string("Median")}) {
        for (int round = 0; round < 3; ++round) {
            ASSERT_TRUE(manager->execute(grid, units, 0, method, "everywhere", false, 1, -1));
            expect_same(*manager, statistics(*grid, units, 0, method, everywhere, false, 1, -1), method);
            grid->change([](lodex::GridModel& model) { // in place: the arrays stay where they are
                for (float& value : std::get<std::vector<float>>(model.properties[0].values))
                    value += 1;
            });
        }
    }
    // A grid that goes, and another one, perhaps at the same place.
    Lodex::GeobaseLib::instance()->destroy(grid);
    Lodex::List<int> made;
    EXPECT_FALSE(manager->compute_units_from_threshold(2, Kelvane::FlowUnitStatsManager::DeviationFromMean, made))
        << "a median needs the cells";
    EXPECT_EQ(manager->getUnitAvrgList().size(), 6U) << "the results stay";
    grid = random_grid({5, 5, 6}, 9);
    ASSERT_TRUE(manager->execute(grid, units, 0, "Median", "everywhere", false, 1, -1));
    expect_same(*manager, statistics(*grid, units, 0, "Median", everywhere, false, 1, -1), "new grid");
}

TEST_F(BruteForce, ChangesThatMeanNothingToTheStatisticsKeepThem)
{
    auto* grid = random_grid({12, 9, 30}, 21);
    auto* other = random_grid({2, 2, 2}, 22);
    std::mt19937 random(10);
    const auto inside = [&](std::size_t cell) { return grid->model().regions[0].flags[cell] != 0; };
    for (const std::string& method : {std::string("Arithmetic"), std::string("Median")}) {
        Progress progress;
        const auto runs_after = [&](const std::function<void(lodex::GridModel&)>& change) {
            grid->change(change);
            const Lodex::List<int> units = random_units(30, random);
            EXPECT_TRUE(manager->execute(grid, units, 0, method, "A", true, 1, 5));
            const bool weighted = takes_weights(method);
            expect_same(*manager, statistics(*grid, units, 0, method, inside, weighted, 1, 5), method);
            return std::exchange(progress.runs, 0);
        };
        EXPECT_EQ(runs_after([](lodex::GridModel&) {}), 1) << "the first run";
        EXPECT_EQ(runs_after([](lodex::GridModel&) {}), 0);
        EXPECT_EQ(runs_after([](lodex::GridModel& model) { model.layers = {{"U", 10}, {"V", 20}}; }), 0);
        EXPECT_EQ(runs_after([](lodex::GridModel& model) { model.properties.push_back(lodex::constant_property(model, "MORE", 1)); }), 0);
        EXPECT_EQ(runs_after([](lodex::GridModel& model) { model.properties.pop_back(); }), 0);
        EXPECT_EQ(runs_after([](lodex::GridModel& model) { model.regions[1].flags.assign(model.regions[1].flags.size(), 1); }), 0)
            << "another region";
        EXPECT_EQ(runs_after([](lodex::GridModel& model) { // the same numbers at another place
                      auto copy = model.properties;
                      model.properties = std::move(copy);
                  }),
                  0);

        // What they are made of, in place.
        EXPECT_EQ(runs_after([](lodex::GridModel& model) { std::get<std::vector<float>>(model.properties[0].values).back() += 1; }), 1);
        EXPECT_EQ(runs_after([](lodex::GridModel& model) { std::get<std::vector<float>>(model.properties[5].values).front() += 1; }), 1);
        EXPECT_EQ(runs_after([](lodex::GridModel& model) { model.regions[0].flags[77] ^= 1; }), 1);
        EXPECT_EQ(runs_after([](lodex::GridModel& model) { model.properties[5].no_data = 4; }), 1);
        EXPECT_EQ(runs_after([](lodex::GridModel& model) { model.properties[5].no_data.reset(); }), 1);
        EXPECT_EQ(runs_after([](lodex::GridModel& model) {
                      auto& values = std::get<std::vector<float>>(model.properties[0].values);
                      std::swap(values[100], values[164]);
                      std::swap(values[0], values[8]);
                  }),
                  1);
        other->notify();
        EXPECT_EQ(runs_after([](lodex::GridModel&) {}), 0);
    }
}

TEST_F(BruteForce, AGridThatChangesOrGoesStopsTheRun)
{
    struct Meanwhile : Progress {
        bool progress(double done) override
        {
            if (action)
                std::exchange(action, {})();
            return Progress::progress(done);
        }
        std::function<void()> action;
    };
    auto* grid = random_grid({6, 5, 20}, 30);
    std::mt19937 random(11);
    const Lodex::List<int> units = random_units(20, random);
    for (const int property : {0, 1}) {
        Meanwhile sink;
        sink.action = [&] {
            grid->change([](lodex::GridModel& model) {
                for (auto& data : model.properties)
                    data.values = std::vector<float>(data.size(), 4.0F); // the former arrays are gone
            });
        };
        EXPECT_FALSE(manager->execute(grid, units, property, "Median", "A", true, 1, -1));
        EXPECT_TRUE(manager->cancelled());
        ASSERT_TRUE(manager->execute(grid, units, property, "Median", "A", true, 1, -1));
        EXPECT_EQ(std::ranges::count_if(manager->getUnitAvrgList(), [](float mean) { return mean == 4 || std::isnan(mean); }), 20);
    }
    {
        Lodex::List<int> made;
        Meanwhile sink;
        sink.action = [&] { grid->notify(); };
        EXPECT_FALSE(manager->compute_units_from_threshold(1, Kelvane::FlowUnitStatsManager::DeviationFromMean, made));
    }
    Meanwhile sink;
    sink.action = [&] { Lodex::GeobaseLib::instance()->destroy(grid); };
    EXPECT_FALSE(manager->execute(grid, units, 0, "Arithmetic", "A", true, 1, -1));
    EXPECT_TRUE(manager->cancelled());
}

TEST_F(BruteForce, AStopLeavesTheFormerResults)
{
    const auto* grid = random_grid({9, 9, 40}, 4);
    std::mt19937 random(8);
    const Lodex::List<int> units = random_units(40, random);
    ASSERT_TRUE(manager->execute(grid, units, 0, "Arithmetic", "everywhere", true, 1, -1));
    const auto means = manager->getUnitAvrgList();
    Progress progress;
    for (const double stop_at : {0.0, 0.5, 1.0}) {
        progress.stop_at = stop_at;
        EXPECT_FALSE(manager->execute(grid, units, 1, "Arithmetic", "everywhere", true, 1, -1));
        EXPECT_EQ(manager->getUnitAvrgList(), means);
    }
    progress.stop_at = 2;
    EXPECT_EQ(progress.runs, 3);
    // What was kept still serves the former settings.
    ASSERT_TRUE(manager->execute(grid, random_units(40, random), 0, "Arithmetic", "everywhere", true, 1, -1));
    EXPECT_EQ(progress.runs, 3);
    EXPECT_EQ(manager->getUnitAvrgList(), means);
}

TEST_F(BruteForce, SameBitsForAnyNumberOfThreads)
{
    const auto* grid = random_grid({20, 21, 50}, 12);
    std::mt19937 random(9);
    const Lodex::List<int> units = random_units(50, random);
    for (const std::string& method : methods()) {
        std::vector<std::vector<float>> results[2];
        Lodex::List<int> made[2];
        for (const int threads : {1, 4}) {
            const tbb::global_control control(tbb::global_control::max_allowed_parallelism, static_cast<std::size_t>(threads));
            const auto one = Kelvane::FlowUnitStatsManager::create();
            ASSERT_TRUE(one->execute(grid, units, 0, method, "everywhere", true, 0.3, -1));
            results[threads / 4] = {one->getUnitAvrgList(), one->getFlowAvrgList(), one->getStatsLayers(), one->getDeltas()};
            ASSERT_TRUE(one->compute_units_from_threshold(10, Kelvane::FlowUnitStatsManager::DeviationFromMeanPercent, made[threads / 4]));
        }
        EXPECT_EQ(results[0], results[1]) << method;
        EXPECT_EQ(made[0], made[1]) << method;
    }
}

TEST_F(BruteForce, LargeLayersAreLeftSoonAfterAStop)
{
    lodex::GridModel model = lodex::make_box({400, 300, 40}, {1, 1, 1});
    model.properties.push_back(lodex::constant_property(model, "ONE", 1));
    const auto* grid = lodex::add_grid("large", std::move(model));
    Lodex::List<int> units;
    for (int k = 0; k < 40; ++k)
        units.append(k + 1);
    Progress progress;
    progress.stop_at = 0.2;
    EXPECT_FALSE(manager->execute(grid, units, 0, "Arithmetic", "everywhere", false, 1, -1));
    EXPECT_TRUE(manager->cancelled());
    EXPECT_LT(progress.furthest, 0.5);
    progress.stop_at = 2;
    EXPECT_TRUE(manager->execute(grid, units, 0, "Arithmetic", "everywhere", false, 1, -1));
    EXPECT_FALSE(manager->cancelled());
    EXPECT_EQ(manager->getFlowAvrgList(), std::vector<float>(40, 1.0F));
}
