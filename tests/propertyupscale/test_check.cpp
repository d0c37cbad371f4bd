// Refusals in their order, and what stands in the command where it could stand otherwise.

#include "WizardTest.h"

#include "propertyupscale/UpscaleCommand.h"

#include <locale>

namespace {

class WizardCheck : public WizardTest {};

const std::string no_fine_grid = "Please choose a fine sgrid name\n";
const std::string no_coarse_grid = "Please choose a coarse sgrid name\n";
const std::string bad_sampling = "Please enter strictly positive interger for the sampling\n";
const std::string bad_zero = "Please enter strictly positive value for treatment of 0\n";
const std::string bad_negative = "Please enter strictly positive value for treatment of negative values\n";
const std::string bad_no_data = "Please enter strictly positive value for treatment of NDV\n";

TEST_F(WizardCheck, PorosityRefusalsInOrder)
{
    open_empty();
    upscale_with("Porosity", "Geometric");
    tick("weight_property_switch_");
    choose("weight_property_", "");
    replace_values("zero", "0");
    replace_values("neg", "-1");
    replace_values("ndv", "0");
    EXPECT_EQ(refusal(), no_fine_grid);
    choose("fine_gridSelector_", "Bare");
    EXPECT_EQ(refusal(), no_coarse_grid);
    choose("coarse_gridSelector_", "Coarse");
    EXPECT_EQ(refusal(), "Please choose a fine porosity name\n");
    choose("fine_gridSelector_", "Fine");
    choose("weight_property_", "");
    EXPECT_EQ(refusal(), "Please choose a property name for weight\n");
    choose("weight_property_", "NTG");
    EXPECT_EQ(refusal(), bad_zero);
    type("zero_value_", "0.5");
    EXPECT_EQ(refusal(), bad_negative);
    type("neg_value_", "2");
    EXPECT_EQ(refusal(), bad_no_data);
    type("ndv_value_", "3e-7");
    EXPECT_EQ(command(), "lodex on SGrid Fine upscale_porosity  fine_region_name everywhere fine_porosity PORO "
                         "Coarse Coarse coarse_region_name everywhere coarse_porosity porosity "
                         "mapper \"geometric\" upscaler \"Geometric\" power 1 weight_using_volume 0 "
                         "weight_using_property 1 weight_property_name NTG zero_like_x 1 zero_value 0.5 "
                         "neg_like_x 1 neg_value 2 ndv_like_x 1 ndv_value 3e-07 "
                         "create_region_if_problems 0 do_fault_management 0");
}

TEST_F(WizardCheck, TensorRefusalsInOrder)
{
    open_empty();
    upscale_with("Permeability", "DFPressureSolver");
    type("n_j_", "0");
    replace_values("zero", "0");
    replace_values("neg", "-0.1");
    replace_values("ndv", "-5");
    EXPECT_EQ(refusal(), no_fine_grid);
    choose("fine_gridSelector_", "Fine");
    EXPECT_EQ(refusal(), no_coarse_grid);
    choose("coarse_gridSelector_", "Coarse");
    for (const char* name : {"fine_prop_cb_", "fine_prop_i_cb_", "fine_prop_j_cb_", "fine_prop_k_cb_"})
        choose(name, "");
    EXPECT_EQ(refusal(), "Please choose a fine permeability I name\n");
    choose("fine_prop_i_cb_", "PERM X");
    EXPECT_EQ(refusal(), "Please choose a fine permeability J name\n");
    choose("fine_prop_j_cb_", "NTG");
    EXPECT_EQ(refusal(), "Please choose a fine permeability K name\n");
    choose("fine_prop_k_cb_", "PORO");
    EXPECT_EQ(refusal(), bad_sampling);
    type("n_j_", "4");
    EXPECT_EQ(refusal(), bad_zero);
    type("zero_value_", "1e-3");
    EXPECT_EQ(refusal(), bad_negative);
    type("neg_value_", "1234567");
    EXPECT_EQ(refusal(), bad_no_data);
    type("ndv_value_", "0");
    find<QAbstractButton>("exact_1")->click();
    find<QAbstractButton>("boundary_2")->click();
    find<QAbstractButton>("sampling_1")->click();
    EXPECT_EQ(command(), "lodex on SGrid Fine upscale_permeability  fine_region_name everywhere fine_Perm_I PERM X "
                         "fine_Perm_J NTG fine_Perm_K PORO Coarse Coarse coarse_region_name everywhere "
                         "coarse_Perm_I permeability_I coarse_Perm_J permeability_J coarse_Perm_K permeability_K "
                         "mapper \"geometric\" upscaler \"DFPressureSolver\" power 1 n_I 10 n_J 4 n_K 10 "
                         "manual_sampling 1 zero_like_x 1 zero_value 0.001 neg_like_x 1 neg_value 1.23457e+06 "
                         "ndv_like_x 1 ndv_value 0 boundary Unconfined exact 1 create_region_if_problems 0 "
                         "do_fault_management 0");
}

TEST_F(WizardCheck, ScalarPermeabilityAndIndicatorRefusals)
{
    open_empty();
    upscale_with("Permeability", "Arithmetic");
    EXPECT_EQ(refusal(), no_fine_grid);
    choose("fine_gridSelector_", "Bare");
    EXPECT_EQ(refusal(), no_coarse_grid);
    choose("coarse_gridSelector_", "Coarse");
    EXPECT_EQ(refusal(), "Please choose a fine permeability name\n");
    upscale_with("Indicator", "Most probable");
    EXPECT_EQ(refusal(), "Please choose a fine property name\n");
    choose("fine_gridSelector_", "Fine");
    choose("fine_prop_cb_", "FACIES");
    EXPECT_EQ(command(), "lodex on SGrid Fine upscale_indicator  fine_region_name everywhere fine_indicator FACIES "
                         "Coarse Coarse coarse_region_name everywhere coarse_indicator porosity "
                         "mapper \"geometric\" upscaler \"Most probable\" zero_like_x 0 neg_like_x 0 ndv_like_x 0 "
                         "create_region_if_problems 0 do_fault_management 0");
}

TEST_F(WizardCheck, BothGridsMissingIsOneMessage)
{
    open_empty();
    EXPECT_EQ(refusal(), no_fine_grid);
    EXPECT_FALSE(dialog->process());
    EXPECT_EQ(fatal(), Texts{no_fine_grid});
    EXPECT_EQ(messages.entries.size(), 1U);
    EXPECT_TRUE(log.texts.empty());
}

TEST_F(WizardCheck, RegionsArePlusJoined)
{
    open();
    choose("fine_region_selector_", "Zone A");
    choose("coarse_region_selector_", "East 1");
    EXPECT_EQ(between(" fine_region_name ", " fine_porosity"), "everywhere") << "the switch is off";
    EXPECT_EQ(between(" coarse_region_name ", " coarse_porosity"), "everywhere");
    tick("fine_region_switch_");
    EXPECT_EQ(between(" fine_region_name ", " fine_porosity"), "Zone+A");
    EXPECT_EQ(between(" coarse_region_name ", " coarse_porosity"), "everywhere");
    tick("coarse_region_switch_");
    EXPECT_EQ(between(" coarse_region_name ", " coarse_porosity"), "East+1");
    list("fine_region_selector_")->setSelectedItems({"Zone A", "South"});
    EXPECT_EQ(between(" fine_region_name ", " fine_porosity"), "Zone+A+South");
    list("fine_region_selector_")->setSelectedItems({});
    EXPECT_EQ(between(" fine_region_name ", " fine_porosity"), "everywhere") << "on, but none chosen";
}

TEST_F(WizardCheck, OnlySomeNamesGetPlusSigns)
{
    open();
    choose("fine_prop_cb_", "PERM X");
    choose("coarse_prop_cb_", "my porosity");
    tick("weight_property_switch_");
    list("weight_property_")->setSelectedItems({"PERM X", "NTG"});
    EXPECT_EQ(between(" fine_porosity ", " Coarse "), "PERM+X");
    EXPECT_EQ(between(" coarse_porosity ", " mapper "), "my porosity");
    EXPECT_EQ(between(" weight_property_name ", " zero_like_x"), "PERM+X+NTG");
    upscale_with("Permeability", "Harmonic");
    EXPECT_EQ(between(" fine_Perm_J ", " fine_Perm_K "), "PERM X");
    EXPECT_EQ(between(" coarse_Perm_J ", " coarse_Perm_K "), "my porosity");
    upscale_with("Indicator", "Most probable");
    EXPECT_EQ(between(" fine_indicator ", " Coarse "), "PERM X");
    EXPECT_EQ(between(" coarse_indicator ", " mapper "), "my porosity");
}

TEST_F(WizardCheck, CoarseNamesAreNotAskedFor)
{
    open();
    choose("coarse_prop_cb_", "");
    EXPECT_EQ(between(" coarse_porosity ", "mapper "), " ");
    upscale_with("Permeability", "DiagTensor");
    for (const char* name : {"coarse_prop_i_cb_", "coarse_prop_j_cb_", "coarse_prop_k_cb_"})
        choose(name, "");
    EXPECT_NE(command().find(" coarse_Perm_I  coarse_Perm_J  coarse_Perm_K  mapper "), std::string::npos);
}

TEST_F(WizardCheck, OneFineNameThreeCoarseNames)
{
    open();
    upscale_with("Permeability", "CardwellParson");
    choose("fine_prop_cb_", "PERM X");
    choose("coarse_prop_i_cb_", "KX");
    choose("coarse_prop_j_cb_", "KY");
    choose("coarse_prop_k_cb_", "KZ");
    EXPECT_NE(command().find(" fine_Perm_I PERM X fine_Perm_J PERM X fine_Perm_K PERM X Coarse "), std::string::npos);
    EXPECT_NE(command().find(" coarse_Perm_I KX coarse_Perm_J KY coarse_Perm_K KZ mapper "), std::string::npos);
}

TEST_F(WizardCheck, PowerGoesOutAsTyped)
{
    open();
    upscale_with("Porosity", "Power");
    for (const QString& text : {QString("0.50"), QString("-1"), QString("abc d"), QString()}) {
        type("power_", text);
        EXPECT_EQ(between(" power ", " weight_using_volume"), text.toStdString());
    }
    upscale_with("Permeability", "DiagTensor");
    EXPECT_NE(command().find(" power  n_I "), std::string::npos);
}

TEST_F(WizardCheck, SamplingIsTestedWhateverIsSeen)
{
    open();
    upscale_with("Permeability", "Arithmetic");
    find<QWidget>("sampling_frame_")->hide();
    for (const char* name : {"n_i_", "n_j_", "n_k_"}) {
        for (const char* text : {"0", "-3", "", "-"}) {
            type(name, text);
            EXPECT_EQ(refusal(), bad_sampling) << name << ' ' << text;
        }
        type(name, "7");
    }
    EXPECT_EQ(between(" n_I ", " zero_like_x"), "7 n_J 7 n_K 7 manual_sampling 0");
    type("n_i_", "0");
    upscale_with("Porosity", "Arithmetic");
    EXPECT_TRUE(check().complete);
    upscale_with("Indicator", "Most probable");
    EXPECT_TRUE(check().complete);
}

TEST_F(WizardCheck, BoundaryStandsInEveryPermeabilityCommand)
{
    open();
    find<QAbstractButton>("boundary_1")->click();
    find<QAbstractButton>("exact_1")->click();
    choose_class("Permeability");
    for (const QString& method : entries("method_")) {
        choose_method(method);
        const bool solver = method.endsWith("PressureSolver");
        EXPECT_EQ(between(" ndv_like_x 0 boundary ", " create_region"), solver ? "KConfined exact 1" : "KConfined")
            << method.toStdString();
    }
    for (const char* other : {"Porosity", "Indicator"}) {
        choose_class(other);
        EXPECT_EQ(command().find(" boundary "), std::string::npos);
        EXPECT_EQ(command().find(" exact "), std::string::npos);
    }
}

TEST_F(WizardCheck, AnyOtherBoundaryIsConfined)
{
    Kelvane::UpscaleChoices choices;
    choices.fine_grid = "F";
    choices.coarse_grid = "C";
    choices.property_class = "Permeability";
    choices.method = "Arithmetic";
    choices.fine_property = "K";
    choices.sampling_counts = {1, 2, 3};
    for (const auto& [id, text] : {std::pair{0, " boundary Confined "},
                                   {1, " boundary KConfined "},
                                   {2, " boundary Unconfined "},
                                   {3, " boundary Confined "},
                                   {-1, " boundary Confined "}}) {
        choices.boundary = id;
        std::ostringstream said, command;
        EXPECT_TRUE(compose_upscale_command(choices, said, command));
        EXPECT_NE(command.str().find(text), std::string::npos) << id;
    }
}

TEST_F(WizardCheck, MissingValuesAskTheUpscaler)
{
    open();
    const auto answers = [this](const char* value) {
        replace_values("ndv", value);
        const Checked checked = check();
        return checked.complete ? checked.command.substr(checked.command.find("ndv_value ") + 10, 4) : checked.message;
    };
    upscale_with("Porosity", "Arithmetic");
    EXPECT_EQ(answers("0"), "0 cr");
    EXPECT_EQ(answers("-2"), "-2 c");
    EXPECT_EQ(answers(""), "0 cr") << "no number reads as 0";
    upscale_with("Porosity", "Geometric");
    EXPECT_EQ(answers("0"), bad_no_data);
    EXPECT_EQ(answers("-2"), bad_no_data);
    EXPECT_EQ(answers("0.25"), "0.25");
    upscale_with("Porosity", "Power");
    EXPECT_EQ(answers("-2"), "-2 c") << "upscalers are asked about the power 1";
    type("power_", "-1");
    EXPECT_EQ(answers("0"), "0 cr") << "whatever power is typed";
    upscale_with("Permeability", "EFMixed");
    EXPECT_EQ(answers("0"), "0 bo") << "sealed";
    EXPECT_EQ(answers("-1"), bad_no_data);
}

TEST_F(WizardCheck, WithoutAFactoryThereIsNoMessage)
{
    open();
    combo("method_")->addItem("Nobody's method");
    choose_method("Nobody's method");
    EXPECT_TRUE(check().complete) << "the factory is only asked for missing values";
    replace_values("ndv", "1");
    EXPECT_EQ(refusal(), "");
    EXPECT_FALSE(dialog->process());
    EXPECT_TRUE(messages.entries.empty());
    EXPECT_TRUE(log.texts.empty());
    dialog->update_summary(find<QTextEdit>("summary_"));
    EXPECT_TRUE(dialog->summary_text().startsWith("<b><font color=\"#ff0000\"> </font></b><br><br><b>Fine grid:</b>"));
}

TEST_F(WizardCheck, ReplacementsOnlyCountWhenSwitchedOn)
{
    open();
    type("zero_value_", "-1");
    type("neg_value_", "0");
    type("ndv_value_", "-9");
    EXPECT_EQ(between(" weight_using_property 0 ", " create_region"), "zero_like_x 0 neg_like_x 0 ndv_like_x 0");
    for (const char* value : {"0", "-1", "", "-", "1e"}) {
        replace_values("zero", value);
        EXPECT_EQ(refusal(), bad_zero) << value;
    }
    tick("zero_switch_", false);
    for (const char* value : {"0", "-1", ""}) {
        replace_values("neg", value);
        EXPECT_EQ(refusal(), bad_negative) << value;
    }
}

TEST_F(WizardCheck, TheTextEndsWithANul)
{
    open();
    EXPECT_EQ(check().behind, std::string(1, '\0'));
}

TEST_F(WizardCheck, NumbersDoNotFollowTheLocale)
{
    struct Grouping : std::numpunct<char> {
        char do_decimal_point() const override { return ','; }
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\3"; }
    };
    open();
    upscale_with("Permeability", "Arithmetic");
    type("n_i_", "12345");
    replace_values("zero", "1234.5");
    const std::string expected = command();
    const std::locale former = std::locale::global(std::locale(std::locale(), new Grouping));
    const QLocale former_locale;
    QLocale::setDefault(QLocale(QLocale::German));
    const std::string found = command();
    QLocale::setDefault(former_locale);
    std::locale::global(former);
    EXPECT_EQ(found, expected);
    EXPECT_NE(found.find(" n_I 12345 "), std::string::npos);
    EXPECT_NE(found.find(" zero_value 1234.5 "), std::string::npos);
}

TEST_F(WizardCheck, ProcessSendsTheSameTextEachTime)
{
    open();
    EXPECT_TRUE(dialog->process());
    EXPECT_TRUE(dialog->process());
    ASSERT_EQ(log.texts.size(), 2U);
    EXPECT_EQ(log.texts[0], log.texts[1]);
    EXPECT_EQ(log.texts[0], command());
    EXPECT_TRUE(log.texts[0].starts_with("lodex on SGrid Fine upscale_porosity  fine_region_name everywhere "));
}

TEST(ReplaceCharacters, UpToTheTerminatingNul)
{
    const auto replaced = [](const char* text) {
        Lodex::CopyCString copy(text);
        const int count = Kelvane::LQSGPropertyUpscaleDialog::replace(copy, ' ', '+');
        return std::to_string(count) + ":" + copy.str();
    };
    EXPECT_EQ(replaced("Zone A"), "1:Zone+A");
    EXPECT_EQ(replaced(" a  b "), "4:+a++b+");
    EXPECT_EQ(replaced("none"), "0:none");
    EXPECT_EQ(replaced(""), "0:");
    EXPECT_EQ(replaced(nullptr), "0:");
    Lodex::CopyCString text("a+b");
    EXPECT_EQ(Kelvane::LQSGPropertyUpscaleDialog::replace(text, '+', ' '), 1);
    EXPECT_EQ(text.str(), "a b");
}

} // namespace
