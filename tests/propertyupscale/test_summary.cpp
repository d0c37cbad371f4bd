// The text of the last page.

#include "WizardTest.h"

#include "propertyupscale/UpscaleSummary.h"

namespace {

using Kelvane::upscale_summary;
using Kelvane::UpscaleChoices;

UpscaleChoices porosity()
{
    UpscaleChoices choices;
    choices.fine_grid = "F";
    choices.coarse_grid = "C";
    choices.property_class = "Porosity";
    choices.method = "Arithmetic";
    choices.mapper = "geometric";
    choices.fine_property = "PORO";
    choices.fine_permeability = {"KX", "KY", "KZ"};
    choices.coarse_property = "P";
    choices.coarse_permeability = {"CX", "CY", "CZ"};
    choices.sampling_texts = {"3", "0", "-1"};
    choices.weight_property = "A+B";
    choices.zero.text = "0.1";
    choices.negative.text = "x";
    choices.no_data.text = "7";
    return choices;
}

UpscaleChoices permeability(const QString& method)
{
    UpscaleChoices choices = porosity();
    choices.property_class = "Permeability";
    choices.method = method;
    return choices;
}

const QString grids = "<b>Fine grid:</b> F<br><b>Coarse grid:</b> C<br><br>";
const QString mapping = "<br> <b>Mapper:</b> geometric<br> <b> Take faults into account:</b>Off <br>";
const QString processing =
    "<br> <b>Pre-processing Options:</b> <br> <b>Set 0 to:</b> Off<br> <b>Set negative values to:</b> Off<br>"
    " <b>Set no-data values to:</b> Off<br> <br> <b>Post-processing Options:</b> Off<br> <br>";

TEST(UpscaleSummary, Porosity)
{
    EXPECT_EQ(upscale_summary(porosity()),
              grids + " <b>Fine grid property:</b><br> <b>Coarse grid property:</b> P<br>" + mapping +
                  " <b>Property type:</b> Porosity<br> <b>Method:</b> Arithmetic<br>" + processing);
}

TEST(UpscaleSummary, Indicator)
{
    UpscaleChoices choices = porosity();
    choices.property_class = "Indicator";
    choices.method = "Most probable";
    choices.weight_by_volume = true; // belongs to another class
    choices.weight_by_property = true;
    EXPECT_EQ(upscale_summary(choices),
              grids + " <b>Fine grid property:</b><br> <b>Coarse grid property:</b> P<br>" + mapping +
                  " <b>Property type:</b> Indicator<br> <b>Method:</b> Most probable<br>" + processing);
}

TEST(UpscaleSummary, RegionsAsTheyAreChosen)
{
    UpscaleChoices choices = porosity();
    choices.fine_regions = {true, "Zone A+South"};
    choices.coarse_regions = {false, "East 1"};
    EXPECT_TRUE(upscale_summary(choices).startsWith(
        "<b>Fine grid:</b> F<br><b>Coarse grid:</b> C<br> <b>Fine grid regions:</b> Zone A+South<br><br>"));
    choices.fine_regions.on = false;
    choices.coarse_regions.on = true;
    EXPECT_TRUE(upscale_summary(choices).startsWith(
        "<b>Fine grid:</b> F<br><b>Coarse grid:</b> C<br> <b>Coarse grid regions:</b> East 1<br><br>"));
    choices.fine_regions = {true, ""};
    EXPECT_TRUE(upscale_summary(choices).startsWith(
        "<b>Fine grid:</b> F<br><b>Coarse grid:</b> C<br> <b>Fine grid regions:</b> <br>"
        " <b>Coarse grid regions:</b> East 1<br><br>"));
}

TEST(UpscaleSummary, Weights)
{
    UpscaleChoices choices = porosity();
    choices.weight_by_volume = true;
    EXPECT_TRUE(upscale_summary(choices).contains(
        " <b>Method:</b> Arithmetic<br> <b>Weight by cell volume:</b> On <br><br> <b>Pre-processing"));
    choices.weight_by_property = true;
    EXPECT_TRUE(upscale_summary(choices).contains(" <b>Weight by cell volume:</b> On <br>"
                                                  " <b>Weight by product of properties:</b> A+B<br><br>"));
    choices.weight_by_volume = false;
    EXPECT_TRUE(upscale_summary(choices).contains(
        " <b>Method:</b> Arithmetic<br> <b>Weight by product of properties:</b> A+B<br><br>"));
}

TEST(UpscaleSummary, OptionsSwitchedOn)
{
    UpscaleChoices choices = porosity();
    choices.fault_management = true;
    choices.zero.on = choices.negative.on = choices.no_data.on = true;
    choices.problem_region = true;
    const QString text = upscale_summary(choices);
    EXPECT_TRUE(text.contains("<b> Take faults into account:</b>On <br> <b>Property type:</b>"));
    EXPECT_TRUE(text.endsWith("<br> <b>Pre-processing Options:</b> <br> <b>Set 0 to:</b> 0.1<br>"
                              " <b>Set negative values to:</b> x<br> <b>Set no-data values to:</b> 7<br>"
                              " <br> <b>Post-processing Options:</b> Create regions<br> <br>"));
}

/// What each permeability method shows. The command of the methods with three names here is not always the same.
TEST(UpscaleSummary, PermeabilityByMethod)
{
    struct Row {
        const char* method;
        bool fine_tensor, coarse_tensor, boundary, solver;
    };
    const Row rows[] = {{"Arithmetic", false, false, false, false},
                        {"Geometric", false, false, false, false},
                        {"Harmonic", false, false, false, false},
                        {"Power", false, false, false, false},
                        {"HarmonicArithmetic", false, true, false, false},
                        {"ArithmeticHarmonic", false, true, false, false},
                        {"CardwellParson", false, false, false, false},    // three coarse names in the command
                        {"SymCardwellParson", false, false, false, false}, // three coarse names in the command
                        {"DiagTensor", true, true, true, false},           // its boundary frame is never shown
                        {"EFConform", true, true, true, false},
                        {"EFMixed", true, true, true, false},
                        {"DFPressureSolver", true, true, true, true},
                        {"MixedPressureSolver", true, true, true, true}};
    for (const Row& row : rows) {
        const QString fine = row.fine_tensor ? "KX;KY;KZ" : "PORO";
        const QString coarse = row.coarse_tensor ? "CX;CY;CZ" : "P";
        EXPECT_EQ(upscale_summary(permeability(row.method)),
                  grids + " <b>Fine grid property:</b> " + fine + "<br> <b>Coarse grid property:</b> " + coarse +
                      "<br>" + mapping + " <b>Property type:</b> Permeability<br> <b>Method:</b> " + row.method +
                      "<br> <b>Adaptive sampling:</b> On<br> I:3  J:0 K:-1 <br>" +
                      (row.boundary ? " <b>Boundary Conditions:</b> Confined<br>" : "") +
                      (row.solver ? " <b>Solver method:</b> Approximate<br>" : "") + processing);
    }
}

TEST(UpscaleSummary, ButtonsByTheirIds)
{
    UpscaleChoices choices = permeability("DFPressureSolver");
    const auto shows = [&choices](const char* text) { return upscale_summary(choices).contains(text); };
    for (const auto& [id, text] : {std::pair{0, "<b>Adaptive sampling:</b> On<br>"},
                                   {1, "<b>Adaptive sampling:</b> Off<br>"},
                                   {-1, "<b>Adaptive sampling:</b> Off<br>"}}) {
        choices.sampling = id;
        EXPECT_TRUE(shows(text)) << id;
    }
    for (const auto& [id, text] : {std::pair{0, "<b>Boundary Conditions:</b> Confined<br>"},
                                   {1, "<b>Boundary Conditions:</b> K-Confined<br>"},
                                   {2, "<b>Boundary Conditions:</b> Unconfined<br>"},
                                   {-1, "<b>Boundary Conditions:</b> Confined<br>"}}) {
        choices.boundary = id;
        EXPECT_TRUE(shows(text)) << id;
    }
    for (const auto& [id, text] : {std::pair{0, "<b>Solver method:</b> Approximate<br>"},
                                   {1, "<b>Solver method:</b> Exact<br>"},
                                   {-1, "<b>Solver method:</b> Exact<br>"}}) {
        choices.solver = id;
        EXPECT_TRUE(shows(text)) << id;
    }
}

TEST(UpscaleSummary, NamesAreShownAsTheyStand)
{
    UpscaleChoices choices = permeability("DiagTensor");
    choices.fine_grid = "a<b>&%1";
    choices.fine_permeability = {"%2<", "%1", ">"};
    choices.sampling_texts = {"%2", "%3", "%1"};
    const QString text = upscale_summary(choices);
    EXPECT_TRUE(text.startsWith("<b>Fine grid:</b> a&lt;b&gt;&amp;%1<br>"));
    EXPECT_TRUE(text.contains("<b>Fine grid property:</b> %2&lt;;%1;&gt;<br>"));
    EXPECT_TRUE(text.contains(" I:%2  J:%3 K:%1 <br>"));
}

TEST(UpscaleSummary, ErrorBlock)
{
    EXPECT_EQ(Kelvane::summary_error_block("Please < choose"),
              "<b><font color=\"#ff0000\"> Please &lt; choose</font></b><br><br>");
}

class SummaryPage : public WizardTest {
protected:
    [[nodiscard]] QTextEdit* box() const { return find<QTextEdit>("summary_"); }
    [[nodiscard]] QString shown_text() const { return box()->toPlainText(); }
};

TEST_F(SummaryPage, NothingChosen)
{
    open_empty();
    go_to_summary();
    EXPECT_TRUE(dialog->summary_text().startsWith(
        "<b><font color=\"#ff0000\"> Please choose a fine sgrid name</font></b><br><br>"
        "<b>Fine grid:</b> <br><b>Coarse grid:</b> <br><br> <b>Fine grid property:</b><br>"
        " <b>Coarse grid property:</b> porosity<br><br> <b>Mapper:</b> <br>"));
    EXPECT_TRUE(shown_text().trimmed().startsWith("Please choose a fine sgrid name"));
    EXPECT_TRUE(box()->isReadOnly());
    EXPECT_TRUE(messages.entries.empty()) << "the summary only shows";
    EXPECT_TRUE(log.texts.empty());
}

TEST_F(SummaryPage, IsMadeAnewEachTimeItComes)
{
    open_empty();
    choose("fine_gridSelector_", "Fine");
    go_to_summary();
    EXPECT_TRUE(shown_text().trimmed().startsWith("Please choose a coarse sgrid name"));
    choose("coarse_gridSelector_", "Coarse");
    EXPECT_TRUE(shown_text().trimmed().startsWith("Please choose a coarse sgrid name"))
        << "not before it is shown again";
    click(button(QWizard::BackButton));
    next();
    EXPECT_TRUE(dialog->summary_text().startsWith("<b>Fine grid:</b> Fine<br><b>Coarse grid:</b> Coarse<br><br>"));
    EXPECT_FALSE(shown_text().contains("Please"));
}

TEST_F(SummaryPage, TheMessageIsTheOneThatFinishGives)
{
    open();
    upscale_with("Permeability", "EFMixed");
    type("n_k_", "-2");
    replace_values("zero", "0");
    go_to_summary();
    const QString message = "Please enter strictly positive interger for the sampling";
    EXPECT_TRUE(dialog->summary_text().startsWith("<b><font color=\"#ff0000\"> " + message +
                                                  "</font></b><br><br><b>Fine"));
    EXPECT_TRUE(dialog->summary_text().contains(" I:10  J:10 K:-2 <br>"));
    click(button(QWizard::FinishButton));
    EXPECT_EQ(fatal(), Texts{message.toStdString() + "\n"});
}

TEST_F(SummaryPage, TextFromTheWidgets)
{
    open();
    tick("fine_region_switch_");
    list("fine_region_selector_")->setSelectedItems({"Zone A", "South"});
    tick("coarse_region_switch_");
    choose("coarse_region_selector_", "East 1");
    combo("mapper_")->setCurrentText("stratigraphic");
    tick("fault_management_");
    upscale_with("Permeability", "MixedPressureSolver");
    find<QAbstractButton>("sampling_1")->click();
    type("n_i_", "3");
    type("n_j_", "004");
    type("n_k_", "5");
    find<QAbstractButton>("boundary_1")->click();
    find<QAbstractButton>("exact_1")->click();
    choose("fine_prop_i_cb_", "PERM X");
    choose("coarse_prop_k_cb_", "K up");
    replace_values("zero", "1e-3");
    replace_values("ndv", "0.50");
    tick("problem_region_");
    go_to_summary();
    EXPECT_EQ(dialog->summary_text(),
              "<b>Fine grid:</b> Fine<br><b>Coarse grid:</b> Coarse<br>"
              " <b>Fine grid regions:</b> Zone A+South<br> <b>Coarse grid regions:</b> East 1<br><br>"
              " <b>Fine grid property:</b> PERM X;PORO;PORO<br>"
              " <b>Coarse grid property:</b> permeability_I;permeability_J;K up<br><br>"
              " <b>Mapper:</b> stratigraphic<br> <b> Take faults into account:</b>On <br>"
              " <b>Property type:</b> Permeability<br> <b>Method:</b> MixedPressureSolver<br>"
              " <b>Adaptive sampling:</b> Off<br> I:3  J:004 K:5 <br>"
              " <b>Boundary Conditions:</b> K-Confined<br> <b>Solver method:</b> Exact<br><br>"
              " <b>Pre-processing Options:</b> <br> <b>Set 0 to:</b> 1e-3<br> <b>Set negative values to:</b> Off<br>"
              " <b>Set no-data values to:</b> 0.50<br> <br> <b>Post-processing Options:</b> Create regions<br> <br>");

    upscale_with("Porosity", "Arithmetic");
    tick("weight_volume_");
    tick("weight_property_switch_");
    list("weight_property_")->setSelectedItems({"NTG", "PERM X"});
    dialog->update_summary(box());
    EXPECT_TRUE(dialog->summary_text().contains(" <b>Fine grid property:</b><br>"));
    EXPECT_TRUE(dialog->summary_text().contains(" <b>Weight by cell volume:</b> On <br>"
                                                " <b>Weight by product of properties:</b> PERM X+NTG<br><br>"));
}

} // namespace
