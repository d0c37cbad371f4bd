// Every combination that the pages can express, against texts put together here from what each method is known to need.

#include "WizardTest.h"

#include <array>

namespace {

struct MethodRow {
    const char* name;
    bool tensor_in;
    bool tensor_out;
    bool solver;
};

constexpr std::array<MethodRow, 13> permeability_methods = {{{"Arithmetic", false, false, false},
                                                             {"Geometric", false, false, false},
                                                             {"Harmonic", false, false, false},
                                                             {"Power", false, false, false},
                                                             {"HarmonicArithmetic", false, true, false},
                                                             {"ArithmeticHarmonic", false, true, false},
                                                             {"CardwellParson", false, true, false},
                                                             {"SymCardwellParson", false, true, false},
                                                             {"DiagTensor", true, true, false},
                                                             {"EFConform", true, true, false},
                                                             {"EFMixed", true, true, false},
                                                             {"DFPressureSolver", true, true, true},
                                                             {"MixedPressureSolver", true, true, true}}};

struct AverageRow {
    const char* name;
    bool weights;
};

constexpr std::array<AverageRow, 8> porosity_methods = {{{"Arithmetic", true},
                                                         {"Geometric", true},
                                                         {"Harmonic", true},
                                                         {"Power", true},
                                                         {"Sum", false},
                                                         {"Minimum", false},
                                                         {"Maximum", false},
                                                         {"Median", false}}};

constexpr std::array<const char*, 4> mappers = {"geometric", "parametric", "stratigraphic", "k-constrained geometric"};

class CommandTable : public WizardTest {
protected:
    CommandTable()
    {
        open();
        choose("fine_prop_cb_", "PERM X");
        choose("fine_prop_i_cb_", "PORO");
        choose("fine_prop_j_cb_", "PERM X");
        choose("fine_prop_k_cb_", "NTG");
        choose("coarse_prop_cb_", "up scaled");
        choose("coarse_prop_i_cb_", "KX");
        choose("coarse_prop_j_cb_", "K Y");
        choose("coarse_prop_k_cb_", "KZ");
        list("fine_region_selector_")->setSelectedItems({"Zone A", "South"});
        list("coarse_region_selector_")->setSelectedItems({"East 1"});
        list("weight_property_")->setSelectedItems({"PORO", "PERM X"});
        type("power_", "0.5");
        type("n_i_", "3");
        type("n_j_", "4");
        type("n_k_", "5");
        type("zero_value_", "0.001");
        type("neg_value_", "0.25");
        type("ndv_value_", "100");
    }

    /// Calls for both positions of a check box.
    template <class Call> void both(const char* name, Call call) const
    {
        auto* box = find<QCheckBox>(name);
        for (const bool on : {false, true}) {
            box->setChecked(on);
            call(on);
        }
        box->setChecked(false);
    }
    /// Calls with the text of the replacements and switches at the end, once for each of their 32 combinations.
    template <class Call> void all_options(Call call) const
    {
        both("zero_switch_", [&](bool zero) {
            both("neg_switch_", [&](bool negative) {
                both("ndv_switch_", [&](bool no_data) {
                    const std::string values = std::string(" zero_like_x ") + (zero ? "1 zero_value 0.001" : "0") +
                                               " neg_like_x " + (negative ? "1 neg_value 0.25" : "0") +
                                               " ndv_like_x " + (no_data ? "1 ndv_value 100" : "0");
                    both("problem_region_", [&](bool region) {
                        both("fault_management_", [&](bool faults) {
                            call(values, std::string(" create_region_if_problems ") + (region ? "1" : "0") +
                                             " do_fault_management " + (faults ? "1" : "0"));
                        });
                    });
                });
            });
        });
    }
    /// Calls with both regions' texts.
    template <class Call> void all_regions(Call call) const
    {
        both("fine_region_switch_", [&](bool fine) {
            both("coarse_region_switch_", [&](bool coarse) {
                call(fine ? "Zone+A+South" : "everywhere", coarse ? "East+1" : "everywhere");
            });
        });
    }
    template <class Call> void all_buttons(const char* group, int count, Call call) const
    {
        for (int id = 0; id < count; ++id) {
            find<QAbstractButton>(group + QString::number(id))->setChecked(true);
            call(id);
        }
        find<QAbstractButton>(group + QString("0"))->setChecked(true);
    }

    void expect(const std::string& text)
    {
        ++walked;
        std::ostringstream said, command;
        const bool complete = dialog->check(said, command);
        if (complete && command.str() == text + '\0')
            return;
        ++failed;
        if (failed <= 5)
            ADD_FAILURE() << "expected " << text << "\n   found " << command.str() << said.str();
    }
    ~CommandTable() override { EXPECT_EQ(failed, 0) << "of " << walked; }

    int walked = 0;
    int failed = 0;
};

TEST_F(CommandTable, Porosity)
{
    choose_class("Porosity");
    for (const AverageRow& method : porosity_methods) {
        choose_method(method.name);
        for (const char* mapper : mappers) {
            combo("mapper_")->setCurrentText(mapper);
            const std::string methods =
                std::string(" mapper \"") + mapper + "\" upscaler \"" + method.name + "\" power 0.5";
            all_regions([&](const std::string& fine, const std::string& coarse) {
                const std::string head = "lodex on SGrid Fine upscale_porosity  fine_region_name " + fine +
                                         " fine_porosity PERM+X Coarse Coarse coarse_region_name " + coarse +
                                         " coarse_porosity up scaled" + methods;
                const auto weighted = [&](bool volume, bool property) {
                    const std::string weights =
                        std::string(" weight_using_volume ") + (volume ? "1" : "0") + " weight_using_property " +
                        (property ? "1 weight_property_name PORO+PERM+X" : "0");
                    all_options([&](const std::string& values, const std::string& end) {
                        expect(head + weights + values + end);
                    });
                };
                if (!method.weights) {
                    weighted(false, false);
                    return;
                }
                both("weight_volume_", [&](bool volume) {
                    both("weight_property_switch_", [&](bool property) { weighted(volume, property); });
                });
            });
        }
    }
    EXPECT_EQ(walked, (4 * 4 + 4) * 4 * 4 * 32);
}

TEST_F(CommandTable, Permeability)
{
    choose_class("Permeability");
    const std::array<const char*, 3> boundaries = {"Confined", "KConfined", "Unconfined"};
    for (const MethodRow& method : permeability_methods) {
        choose_method(method.name);
        const std::string from = method.tensor_in ? " fine_Perm_I PORO fine_Perm_J PERM X fine_Perm_K NTG"
                                                  : " fine_Perm_I PERM X fine_Perm_J PERM X fine_Perm_K PERM X";
        const std::string to = method.tensor_out
                                   ? " coarse_Perm_I KX coarse_Perm_J K Y coarse_Perm_K KZ"
                                   : " coarse_Perm_I up scaled coarse_Perm_J up scaled coarse_Perm_K up scaled";
        for (const char* mapper : mappers) {
            combo("mapper_")->setCurrentText(mapper);
            all_regions([&](const std::string& fine, const std::string& coarse) {
                const std::string head = "lodex on SGrid Fine upscale_permeability  fine_region_name " + fine + from +
                                         " Coarse Coarse coarse_region_name " + coarse + to + " mapper \"" + mapper +
                                         "\" upscaler \"" + method.name +
                                         "\" power 0.5 n_I 3 n_J 4 n_K 5 manual_sampling ";
                all_buttons("sampling_", 2, [&](int sampling) {
                    all_buttons("boundary_", 3, [&](int boundary) {
                        // What the solver does is no choice where it is not shown.
                        all_buttons("exact_", method.solver ? 2 : 1, [&](int exact) {
                            const std::string boundary_text =
                                std::string(" boundary ") + boundaries[static_cast<std::size_t>(boundary)] +
                                (method.solver ? " exact " + std::to_string(exact) : "");
                            all_options([&](const std::string& values, const std::string& end) {
                                expect(head + std::to_string(sampling) + values + boundary_text + end);
                            });
                        });
                    });
                });
            });
        }
    }
    EXPECT_EQ(walked, (11 + 2 * 2) * 4 * 4 * 6 * 32);
}

TEST_F(CommandTable, Indicator)
{
    upscale_with("Indicator", "Most probable");
    for (const char* mapper : mappers) {
        combo("mapper_")->setCurrentText(mapper);
        all_regions([&](const std::string& fine, const std::string& coarse) {
            const std::string head = "lodex on SGrid Fine upscale_indicator  fine_region_name " + fine +
                                     " fine_indicator PERM X Coarse Coarse coarse_region_name " + coarse +
                                     " coarse_indicator up scaled mapper \"" + mapper + "\" upscaler \"Most probable\"";
            all_options([&](const std::string& values, const std::string& end) { expect(head + values + end); });
        });
    }
    EXPECT_EQ(walked, 4 * 4 * 32);
}

} // namespace
