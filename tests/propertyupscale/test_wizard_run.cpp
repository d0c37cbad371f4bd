// What the wizard sends, run by the interpreter on a small faulted field with layers.

#include "WizardRunTest.h"

#include "lodex/interpreter/Interpreter.h"

#include <Lodex/geobase/Region.h>
#include <Lodex/utils/ProgressTracer.h>

#include <chrono>
#include <ctime>

namespace {

class WizardRun : public WizardRunTest {
protected:
    /// "E", and "C" made of it by way of grids that are gone: 3 x 2 columns and runs of layers are one. "HARD VALUES"
    /// holds zero, negative and undefined values.
    WizardRun()
    {
        EXPECT_TRUE(run("lodex create example name E size 12+10+8\n"
                        "lodex sgrid_merge_multiple_sections name K sgrid E direction \"vertical\" sections "
                        "0+1+2+3+4+7 copy_regions 1\n"
                        "lodex sgrid_merge_multiple_sections name I sgrid K direction \"first axis\" sections "
                        "0+2+3+5+6+8+9+11 copy_regions 1\n"
                        "lodex sgrid_merge_multiple_sections name C sgrid I direction \"second axis\" sections "
                        "0+1+2+3+4+5+6+7+8+9 copy_regions 1\n"
                        "lodex destroy objects K+I"));
        grid("E").change([](lodex::GridModel& model) {
            const auto& poro = std::get<std::vector<float>>(model.find_property("PORO")->values);
            lodex::PropertyData hard{.name = "HARD VALUES", .values = std::vector<double>(poro.begin(), poro.end())};
            auto& values = std::get<std::vector<double>>(hard.values);
            for (std::size_t cell = 0; cell < values.size(); ++cell) {
                if (cell % 7 == 2)
                    values[cell] = 0;
                if (cell % 11 == 3)
                    values[cell] = -0.5;
                if (cell % 13 == 5)
                    values[cell] = NAN;
            }
            model.properties.push_back(std::move(hard));
        });
        messages.clear();
    }

    void open_field()
    {
        open_on("E", "C");
        choose_fine("PORO");
        choose_tensor("fine", {"PERMX", "PERMY", "PERMZ"});
        type("n_i_", "3");
        type("n_j_", "2");
        type("n_k_", "4");
        type("power_", "0.3");
    }
    void choose_fine(const QString& name) const { choose("fine_prop_cb_", name); }

    /// Every method of every class.
    template <class Call> void all_methods(Call call) const
    {
        for (const QString& kind : entries("property_class_")) {
            choose_class(kind);
            for (const QString& method : entries("method_")) {
                choose_method(method);
                choose_fine(kind == "Porosity" ? "PORO" : kind == "Permeability" ? "PERMX" : "FACIES");
                call();
            }
        }
    }
    template <class Call> void both(const char* box, Call call) const
    {
        for (const bool on : {false, true}) {
            tick(box, on);
            call();
        }
        tick(box, false);
    }
    template <class Call> void all_mappers(Call call) const
    {
        ASSERT_EQ(entries("mapper_"),
                  (QStringList{"geometric", "parametric", "stratigraphic", "k-constrained geometric"}));
        for (const QString& mapper : entries("mapper_")) {
            combo("mapper_")->setCurrentText(mapper);
            call();
        }
    }
    template <class Call> void all_buttons(const char* group, Call call) const
    {
        const auto* buttons = dialog->findChild<QButtonGroup*>(group);
        for (int id = 0; id < buttons->buttons().size(); ++id) {
            buttons->button(id)->setChecked(true);
            call();
        }
        buttons->button(0)->setChecked(true);
    }
};

/// The runs below would prove little if the choices made no difference on this field.
TEST_F(WizardRun, EveryChoiceMakesADifference)
{
    open_field();
    const auto differs = [&](const char* what, auto change) {
        const Properties before = by_library(dialog->choices()).properties;
        change();
        const Properties after = by_library(dialog->choices()).properties;
        const bool equal = std::ranges::all_of(before, [&](const auto& property) {
            return after.contains(property.first) && same(after.at(property.first), property.second);
        });
        EXPECT_FALSE(equal) << what;
    };
    const auto press = [&](const char* name) { find<QAbstractButton>(name)->setChecked(true); };
    const auto use_mapper = [&](const char* name) { combo("mapper_")->setCurrentText(name); };
    differs("parametric", [&] { use_mapper("parametric"); });
    differs("stratigraphic", [&] { use_mapper("stratigraphic"); });
    differs("k-constrained", [&] { use_mapper("k-constrained geometric"); });
    differs("geometric", [&] { use_mapper("geometric"); });
    differs("faults", [&] { tick("fault_management_"); });
    differs("volume", [&] { tick("weight_volume_"); });
    list("weight_property_")->setSelectedItems({"PERMX"});
    differs("weight", [&] { tick("weight_property_switch_"); });
    differs("weights", [&] { list("weight_property_")->setSelectedItems({"PERMX", "PERMZ"}); });
    differs("region", [&] {
        list("fine_region_selector_")->setSelectedItems({"oil_zone"});
        tick("fine_region_switch_");
    });
    tick("fine_region_switch_", false);
    choose_method("Power");
    differs("power", [&] { type("power_", "0.4"); });
    upscale_with("Permeability", "DFPressureSolver");
    differs("sampling", [&] { press("sampling_1"); });
    differs("samples", [&] { type("n_k_", "3"); });
    // Only blocks of many samples are solved in two ways; one of them is enough.
    grid("C").change([](lodex::GridModel& model) {
        lodex::RegionData one{.name = "one", .flags = std::vector<std::uint8_t>(model.active.size(), 0)};
        one.flags[model.active.size() / 2] = 1;
        model.regions.push_back(std::move(one));
    });
    list("coarse_region_selector_")->setSelectedItems({"one"});
    differs("coarse region", [&] { tick("coarse_region_switch_"); });
    for (const char* count : {"n_i_", "n_j_", "n_k_"})
        type(count, "14");
    differs("solver", [&] { press("exact_1"); });
    for (const char* count : {"n_i_", "n_j_", "n_k_"})
        type(count, "3");
    tick("coarse_region_switch_", false);
    differs("method", [&] { choose_method("MixedPressureSolver"); });
    differs("boundary", [&] { press("boundary_1"); });
    differs("boundary", [&] { press("boundary_2"); });
    differs("fine property", [&] { choose("fine_prop_k_cb_", "PERMX"); });
    choose_tensor("fine", {"HARD VALUES", "HARD VALUES", "HARD VALUES"});
    for (const char* which : {"zero", "neg", "ndv"})
        differs(which, [&] { replace_values(which, "0.02"); });
}

TEST_F(WizardRun, PorosityByEveryMethodMapperAndWeight)
{
    open_field();
    choose_class("Porosity");
    list("weight_property_")->setSelectedItems({"PERMX", "PERMZ"});
    all_mappers([&] {
        for (const QString& method : entries("method_")) {
            choose_method(method);
            both("fault_management_", [&] {
                if (!shown("weight_volume_frame_")) {
                    expect_done();
                    return;
                }
                both("weight_volume_", [&] { both("weight_property_switch_", [&] { expect_done(); }); });
            });
        }
    });
    EXPECT_EQ(runs, 4 * (4 * 4 + 4) * 2);
}

TEST_F(WizardRun, PermeabilityByEveryMethodMapperBoundaryAndSampling)
{
    open_field();
    choose_class("Permeability");
    choose_fine("PERMX");
    all_mappers([&] {
        for (const QString& method : entries("method_")) {
            choose_method(method);
            const auto all_solvers = [&] { all_buttons("exact_", [&] { expect_done(); }); };
            all_buttons("sampling_", [&] {
                all_buttons("boundary_", [&] {
                    if (shown("exact_frame_"))
                        all_solvers();
                    else
                        expect_done();
                });
            });
        }
    });
    EXPECT_EQ(runs, 4 * (11 + 2 * 2) * 2 * 3);
}

TEST_F(WizardRun, IndicatorByEveryMapper)
{
    open_field();
    upscale_with("Indicator", "Most probable");
    choose_fine("FACIES");
    choose("coarse_prop_cb_", "facies");
    all_mappers([&] { both("fault_management_", [&] { expect_done(); }); });
    EXPECT_EQ(runs, 8);
    const lodex::PropertyData* made = grid("C").model().find_property("facies");
    ASSERT_TRUE(made);
    EXPECT_TRUE(made->discrete());
    EXPECT_EQ(made->code_names, grid("E").model().find_property("FACIES")->code_names);
}

TEST_F(WizardRun, EveryMethodAcrossTheFaults)
{
    open_field();
    tick("fault_management_");
    all_mappers([&] { all_methods([&] { expect_done(); }); });
    EXPECT_EQ(runs, 4 * 22);
}

TEST_F(WizardRun, EveryMethodOfTwoGridsWithGeometryAlone)
{
    ASSERT_TRUE(run("lodex create sgrid name Plain size 3+2+2 spacing 800+900+60 origin 300+300+1980"));
    messages.clear();
    open_field();
    choose("coarse_gridSelector_", "Plain");
    ASSERT_EQ(entries("mapper_"), QStringList{"geometric"});
    both("fault_management_", [&] { all_methods([&] { expect_done(); }); });
    EXPECT_EQ(runs, 2 * 22);
}

TEST_F(WizardRun, EveryMethodAndReplacement)
{
    open_field();
    type("zero_value_", "0.02");
    type("neg_value_", "0.03");
    type("ndv_value_", "0.04");
    choose_tensor("fine", {"HARD VALUES", "PERMY", "HARD VALUES"});
    all_methods([&] {
        choose_fine("HARD VALUES");
        both("zero_switch_", [&] { both("neg_switch_", [&] { both("ndv_switch_", [&] { expect_done(); }); }); });
    });
    EXPECT_EQ(runs, 22 * 8);
}

TEST_F(WizardRun, EveryMethodInRegions)
{
    open_field();
    ASSERT_EQ(entries("coarse_region_selector_"), (QStringList{"all_regions", "oil_zone", "water_zone"}));
    all_methods([&] {
        for (const QStringList& fine :
             {QStringList{"oil_zone"}, {"oil_zone", "water_zone"}, {"all_regions", "oil_zone"}, {}}) {
            list("fine_region_selector_")->setSelectedItems(fine);
            list("coarse_region_selector_")->setSelectedItems({fine.isEmpty() ? "all_regions" : "oil_zone"});
            both("fine_region_switch_", [&] { both("coarse_region_switch_", [&] { expect_done(); }); });
        }
    });
    EXPECT_EQ(runs, 22 * 4 * 4);
}

TEST_F(WizardRun, CellsOutsideOfTheCoarseRegionKeepTheirValues)
{
    open_field();
    choose("coarse_prop_cb_", "phi");
    EXPECT_EQ(send(), Texts{});
    const Values before = properties_of("C").at("phi");
    choose_fine("PERMX");
    choose("coarse_region_selector_", "oil_zone");
    tick("coarse_region_switch_");
    const Answer answer = by_library(dialog->choices());
    EXPECT_EQ(send(), Texts{});
    const Values after = properties_of("C").at("phi");
    const auto oil = grid("C").find_region("oil_zone")->flags();
    int kept = 0, made = 0;
    for (std::size_t cell = 0; cell < after.size(); ++cell) {
        const bool in = oil[cell] && grid("C").active_flags()[cell];
        EXPECT_TRUE(same({after[cell]}, {in ? answer.properties.at("phi")[cell] : before[cell]})) << cell;
        ++(in ? made : kept);
    }
    EXPECT_GT(made, 0);
    EXPECT_GT(kept, 0);
}

TEST_F(WizardRun, ProblematicCellsMakeARegion)
{
    open_field();
    tick("problem_region_");
    all_methods([&] {
        // Values for some of the cells only, so that others have none.
        list("fine_region_selector_")->setSelectedItems({"oil_zone"});
        tick("fine_region_switch_");
        expect_done();
        const Answer answer = by_library(dialog->choices());
        const auto* region = grid("C").find_region(Lodex::CString(answer.problem_region));
        ASSERT_EQ(region != nullptr, std::ranges::find(answer.problems, 1) != answer.problems.end()) << command();
        EXPECT_TRUE(!region || std::ranges::equal(region->flags(), answer.problems)) << command();
    });
    EXPECT_TRUE(grid("C").find_region("upscaling_problems_porosity"));
    upscale_with("Porosity", "Arithmetic");
    choose_fine("PORO");
    tick("fine_region_switch_", false);
    expect_done();
    EXPECT_FALSE(grid("C").find_region("upscaling_problems_porosity")) << "a run without problems takes it away";
}

TEST_F(WizardRun, OkLeavesThePropertyOnTheCoarseGrid)
{
    open_field();
    choose("coarse_prop_cb_", "phi up");
    const Answer answer = by_library(dialog->choices());
    go_to_summary();
    const std::string text = command();
    EXPECT_FALSE(find<QTextEdit>("summary_")->toPlainText().contains("Please"));
    messages.clear();
    click(button(QWizard::HelpButton));
    EXPECT_EQ(log.texts.back(), text);
    run_deferred_deletes();
    EXPECT_TRUE(dialog.isNull());
    EXPECT_EQ(messages.of(Lodex::LogLevel::Error), Texts{});
    const Properties found = properties_of("C");
    ASSERT_TRUE(found.contains("phi up"));
    EXPECT_TRUE(same(found.at("phi up"), answer.properties.at("phi up")));
    EXPECT_EQ(lodex::Interpreter::instance().journal().back(), text);
    // What went into the journal does the same again.
    grid("C").change([](lodex::GridModel& model) { model.properties.clear(); });
    ASSERT_TRUE(run(text));
    EXPECT_TRUE(same(properties_of("C").at("phi up"), answer.properties.at("phi up")));
}

TEST_F(WizardRun, FinishOffersTheNewPropertyAtOnce)
{
    open_field();
    upscale_with("Permeability", "EFMixed");
    find<QAbstractButton>("boundary_2")->click();
    go_to_summary();
    click(button(QWizard::FinishButton));
    EXPECT_EQ(messages.of(Lodex::LogLevel::Error), Texts{});
    EXPECT_TRUE(dialog->isVisible());
    const QStringList made = {"permeability_I",    "permeability_J",    "permeability_K",
                              "permeability_I_IJ", "permeability_I_IK", "permeability_I_JK"};
    EXPECT_EQ(list("coarse_prop_i_cb_")->items(), made);
    EXPECT_EQ(list("coarse_prop_i_cb_")->currentText(), "permeability_I") << "what was typed stays";
    const Properties first = properties_of("C");
    click(button(QWizard::FinishButton));
    EXPECT_EQ(properties_of("C").size(), first.size()) << "replaced, not added";
}

TEST_F(WizardRun, WhatTheHostRefusesItRefusesInItsWords)
{
    open_field();
    upscale_with("Porosity", "Power");
    for (const auto& [power, reason] : {std::pair{"", "\"power\" is empty; the method Power needs a number"},
                                        {"1.5", "\"power\" is \"1.5\"; expected a number from -1 to 1"},
                                        {"0,5", "\"power\" is \"0,5\"; expected a number from -1 to 1"},
                                        {"half", "\"power\" is \"half\"; expected a number from -1 to 1"}}) {
        type("power_", power);
        expect_refused(reason);
        choose_class("Permeability");
        choose_method("Power");
        expect_refused(reason);
        upscale_with("Porosity", "Power");
    }
    type("power_", "-1");
    expect_done();

    choose_method("Arithmetic");
    grid("E").change([](lodex::GridModel& model) {
        lodex::PropertyData weight = lodex::constant_property(model, "W", 1);
        std::get<std::vector<float>>(weight.values)[500] = -1;
        model.properties.push_back(std::move(weight));
    });
    list("weight_property_")->setSelectedItems({"W"});
    tick("weight_property_switch_");
    expect_refused("the weight property \"W\" holds negative values");
    tick("weight_property_switch_", false);

    choose("coarse_prop_cb_", "");
    expect_refused("\"coarse_porosity\" has no value");
    choose("coarse_prop_cb_", "porosity");
    choose("coarse_gridSelector_", "E");
    expect_refused("the coarse grid is the fine grid itself");
    choose("coarse_gridSelector_", "C");

    upscale_with("Permeability", "SymCardwellParson");
    choose_fine("PERMX");
    choose_tensor("coarse", {"K", "K", "KZ"});
    expect_refused("the three coarse names must differ");
    choose_tensor("coarse", {"KX", "", "KZ"});
    expect_refused("\"coarse_Perm_J\" has no value");
    choose_tensor("coarse", {"KX", "KY", "KZ"});
    type("n_k_", "10001");
    expect_refused("\"n_K\" is \"10001\"; expected at most 10000");
    type("n_k_", "4");
    expect_done();
    EXPECT_EQ(runs, 2);
}

TEST_F(WizardRun, MappersSayWhatTheyMiss)
{
    // Layers of other names, and no record that leads from one grid to the other.
    ASSERT_TRUE(run("lodex create sgrid name Plain size 3+2+2 spacing 800+900+60 origin 300+300+1980\n"
                    "lodex on SGrid Plain set_layers units upper+lower sizes 1+1\n"
                    "lodex create sgrid name Far size 2+2+2 spacing 1+1+1 origin 9000000+0+0"));
    open_field();
    choose("coarse_gridSelector_", "Plain");
    for (const auto& [mapper, reason] :
         {std::pair{"parametric", "the grids \"E\" and \"Plain\" have no relation"},
          {"stratigraphic", "the grids \"E\" and \"Plain\" have no stratigraphic unit in common"},
          {"k-constrained geometric", "the grids \"E\" and \"Plain\" have no stratigraphic unit in common"}}) {
        combo("mapper_")->setCurrentText(mapper);
        ASSERT_EQ(combo("mapper_")->currentText(), mapper);
        for (const QString& kind : entries("property_class_")) {
            choose_class(kind);
            expect_refused(reason);
        }
    }
    combo("mapper_")->setCurrentText("geometric");
    upscale_with("Porosity", "Arithmetic");
    expect_done();
    choose("coarse_gridSelector_", "Far");
    expect_refused("do not overlap");
}

/// Wants to stop at a part of the work, and remembers what it saw.
class Stopper : public Lodex::ProgressSink {
public:
    using Clock = std::chrono::steady_clock;

    explicit Stopper(double stop_at) : stop_at_(stop_at), former_(Lodex::ProgressTracer::set_sink(this)) {}
    ~Stopper() override { Lodex::ProgressTracer::set_sink(former_); }
    Stopper(const Stopper&) = delete;
    Stopper& operator=(const Stopper&) = delete;

    void begin(const Lodex::CString& text) override
    {
        title = text.str();
        look();
    }
    bool progress(double done) override
    {
        EXPECT_GE(done, last_done);
        last_done = done;
        ++calls;
        look();
        return done < stop_at_;
    }
    void end() override
    {
        look();
        ended = true;
    }

    std::string title;
    int calls = 0;
    double last_done = 0;
    double longest_pause = 0; ///< seconds between two looks at the user's wish, and from the last one to the end
    bool ended = false;

private:
    /// Seconds on an idle machine: other programs do not count, nor do the two threads add up.
    void look()
    {
        const Clock::time_point now = Clock::now();
        const std::clock_t used = std::clock();
        if (looked_)
            longest_pause = std::max(longest_pause, std::min(std::chrono::duration<double>(now - last_look_).count(),
                                                             static_cast<double>(used - last_used_) / CLOCKS_PER_SEC));
        looked_ = true;
        last_look_ = now;
        last_used_ = used;
    }

    double stop_at_;
    Lodex::ProgressSink* former_;
    bool looked_ = false;
    Clock::time_point last_look_;
    std::clock_t last_used_ = 0;
};

TEST_F(WizardRun, AMillionCellsShowProgressAndStopWithinASecond)
{
    ASSERT_TRUE(run("lodex create sgrid name Million size 100+100+100 spacing 20+20+1\n"
                    "lodex on SGrid Million fill_property K lognormal 100+2 seed 3\n"
                    "lodex sgrid_merge_multiple_sections name M1 sgrid Million direction \"vertical\" sections "
                    "0+9+10+19+20+29+30+39+40+49+50+59+60+69+70+79+80+89+90+99\n"
                    "lodex sgrid_merge_multiple_sections name M2 sgrid M1 direction \"first axis\" sections "
                    "0+9+10+19+20+29+30+39+40+49+50+59+60+69+70+79+80+89+90+99\n"
                    "lodex sgrid_merge_multiple_sections name Thousand sgrid M2 direction \"second axis\" sections "
                    "0+9+10+19+20+29+30+39+40+49+50+59+60+69+70+79+80+89+90+99\n"
                    "lodex destroy objects M1+M2\n"
                    "lodex on SGrid Thousand fill_property permeability_I value 7\n"
                    "lodex on SGrid Thousand define_region all of it property permeability_I"));
    open_on("Million", "Thousand");
    upscale_with("Permeability", "DFPressureSolver");
    combo("mapper_")->setCurrentText("geometric");
    find<QAbstractButton>("boundary_2")->click();
    tick("problem_region_");
    const Properties before = properties_of("Thousand");
    const std::size_t journal = lodex::Interpreter::instance().journal().size();
    for (const double stop_at : {0.0, 0.1, 0.6}) {
        messages.clear();
        const Stopper stopper(stop_at);
        EXPECT_TRUE(dialog->process());
        EXPECT_EQ(stopper.title, "upscale_permeability");
        EXPECT_TRUE(stopper.ended);
        EXPECT_GE(stopper.last_done, stop_at);
        EXPECT_LT(stopper.last_done, stop_at + 0.2);
        EXPECT_GE(stopper.calls, stop_at > 0.5 ? 20 : 1);
        EXPECT_LT(stopper.longest_pause, 1) << "stopped at " << stop_at;
        RecordProperty("longest_pause_" + std::to_string(stop_at), std::to_string(stopper.longest_pause));
        const Texts errors = messages.of(Lodex::LogLevel::Error);
        ASSERT_EQ(errors.size(), 1U) << stop_at;
        EXPECT_NE(errors.front().find("cancelled; nothing was changed"), std::string::npos) << errors.front();
        EXPECT_EQ(fatal(), Texts{});
        const Properties after = properties_of("Thousand");
        ASSERT_EQ(after.size(), before.size()) << stop_at;
        EXPECT_TRUE(same(after.at("permeability_I"), before.at("permeability_I")));
        EXPECT_EQ(grid("Thousand").nb_regions(), 1);
        EXPECT_EQ(lodex::Interpreter::instance().journal().size(), journal);
        EXPECT_TRUE(dialog->isVisible());
    }
}


} // namespace
