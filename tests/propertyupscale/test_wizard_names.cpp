// Names with blanks, plus signs, keywords and letters of all kinds: read as they are meant, or refused.

#include "WizardRunTest.h"

#include <Lodex/geobase/Region.h>

namespace {

class WizardNames : public WizardRunTest {
protected:
    /// Adds a property with values of its own, whatever its name.
    static void add_values(const QString& to, const QString& name, double from)
    {
        grid(to).change([&](lodex::GridModel& model) {
            std::vector<double> values;
            for (std::int64_t cell = 0; cell < model.cells(); ++cell)
                values.push_back(from + 0.001 * static_cast<double>(cell));
            model.properties.push_back({.name = name.toStdString(), .values = std::move(values)});
        });
    }
    void choose_fine(const QString& name) const
    {
        choose("fine_prop_cb_", name);
        ASSERT_EQ(list("fine_prop_cb_")->currentText(), name);
        choose_tensor("fine", {name, name, name});
    }
    static QString letters(const char* utf8) { return QString::fromUtf8(utf8); }
};

TEST_F(WizardNames, FineNamesThatAreReadInEveryClass)
{
    const QStringList names = {"Net To Gross", "phi+e", letters("Porosité moyenne"), letters("φ²"),
                               letters("孔隙度"), "everywhere else", "a's (b) <c> & 50 %1", "-1", "1e+5", "#x"};
    for (qsizetype n = 0; n < names.size(); ++n)
        add_values("Fine", names[n], 1 + static_cast<double>(n));
    open();
    for (const QString& name : names) {
        choose_fine(name);
        for (const auto& [kind, method] : {std::pair{"Porosity", "Arithmetic"},
                                           {"Permeability", "Harmonic"},
                                           {"Permeability", "DiagTensor"},
                                           {"Indicator", "Most probable"}}) {
            upscale_with(kind, method);
            expect_done();
        }
    }
    EXPECT_EQ(runs, 4 * names.size());
}

TEST_F(WizardNames, KeywordsInFineNames)
{
    // Plus signs keep a porosity's name together; the words of the others stand alone, as the command has it.
    const std::vector<std::pair<QString, std::string>> names = {{"Coarse power", "\"fine_Perm_I\" has no value"},
                                                                {"power zero_like_x", "\"fine_Perm_I\" has no value"},
                                                                {"my Coarse", "\"Coarse\" has no value"},
                                                                {"kx mapper", "\"mapper\" has no value"},
                                                                {"kx boundary", "\"boundary\" has no value"},
                                                                {"kx power", "\"upscaler\" is \"Arithmetic power 1\""}};
    for (const auto& [name, reason] : names)
        add_values("Fine", name, static_cast<double>(name.size()));
    open();
    for (const auto& [name, reason] : names) {
        choose_fine(name);
        upscale_with("Porosity", "Arithmetic");
        expect_done();
        upscale_with("Permeability", "Arithmetic");
        expect_refused(reason);
    }
    EXPECT_EQ(runs, static_cast<int>(names.size()));
    add_values("Fine", "zone mapper", 1);
    choose_fine("zone mapper");
    upscale_with("Indicator", "Most probable");
    expect_refused("\"mapper\" has no value");
    choose_fine("Coarse power"); // power is no word of this verb, Coarse is
    expect_refused("\"fine_indicator\" has no value");
    add_values("Fine", "power", 1);
    choose_fine("power");
    expect_done();
    upscale_with("Porosity", "Arithmetic");
    expect_refused("\"fine_porosity\" has no value");
    add_values("Fine", "Total phi+e", 1); // one that no statement could have made
    choose_fine("Total phi+e");
    expect_refused("there is no property \"Total+phi+e\" on SGrid \"Fine\"");
}

TEST_F(WizardNames, NamesThatCanBeReadInTwoWays)
{
    add_values("Fine", "A B", 1);
    add_values("Fine", "A+B", 2);
    open();
    choose_fine("A B");
    upscale_with("Porosity", "Arithmetic");
    expect_refused("can be read in two ways");
    upscale_with("Permeability", "Arithmetic");
    expect_done();
    choose_fine("A+B");
    expect_refused("can be read in two ways");

    add_values("Fine", "E", 1);
    add_values("Fine", "F G", 1);
    add_values("Fine", "E F", 1);
    add_values("Fine", "G", 1);
    upscale_with("Porosity", "Arithmetic");
    choose_fine("E");
    tick("weight_property_switch_");
    list("weight_property_")->setSelectedItems({"E", "F G"});
    expect_refused("can be read in two ways");
}

TEST_F(WizardNames, WeightsAndRegionsWithBlanks)
{
    add_values("Fine", letters("Net épaisseur x"), 1);
    add_values("Fine", "my mapper", 2);
    grid("Fine").change([](lodex::GridModel& model) {
        model.properties.back().values = std::vector<double>(static_cast<std::size_t>(model.cells()), 0.5);
        for (const char* name : {"Zone mapper", "Zone Süd"}) {
            lodex::RegionData region{.name = name, .flags = {}};
            for (std::int64_t cell = 0; cell < model.cells(); ++cell)
                region.flags.push_back(cell % 3 == 0);
            model.regions.push_back(region);
        }
    });
    open();
    tick("weight_property_switch_");
    tick("fine_region_switch_");
    const QString net = letters("Net épaisseur x");
    for (const QStringList& weights : {QStringList{net}, {"my mapper"}, {"PERM X", net, "my mapper"}}) {
        for (const QStringList& regions :
             {QStringList{"Zone mapper"}, {letters("Zone Süd")}, {"Zone A", "South", "Zone mapper"}}) {
            list("weight_property_")->setSelectedItems(weights);
            list("fine_region_selector_")->setSelectedItems(regions);
            expect_done();
        }
    }
    EXPECT_EQ(runs, 9);
}

TEST_F(WizardNames, CoarseNamesThatAreTyped)
{
    open();
    choose_fine("PORO");
    for (const auto& [kind, method] : {std::pair{"Porosity", "Arithmetic"},
                                       {"Permeability", "Harmonic"},
                                       {"Indicator", "Most probable"}}) {
        upscale_with(kind, method);
        for (const QString& name : QStringList{"phi up", letters("φ oben"), letters("孔隙度"), "OLD", "old",
                                               "a's (b) <c> & 50 %1", "-1"}) {
            choose("coarse_prop_cb_", name);
            expect_done();
        }
        for (const auto& [name, reason] : std::vector<std::pair<QString, std::string>>{
                 {"a+b", "must not hold the character + ."},
                 {"a  b", "must not hold two blanks in a row."},
                 {"everywhere", "is reserved."},
                 {"  ", "has no value"},
                 {"phi Coarse", "must not hold the word \"Coarse\", which is a keyword of the command."},
                 {"mapper", "has no value"},
                 {"phi upscaler", "\"upscaler\" has no value"},
                 {"phi zero_like_x", "\"zero_like_x\" has no value"},
                 {QString("a\u200bb"), "must not hold control characters."}}) {
            choose("coarse_prop_cb_", name);
            expect_refused(reason);
        }
        // Blanks at the ends are lost on the way, as everywhere in a command.
        choose("coarse_prop_cb_", "  padded ");
        EXPECT_EQ(send(), Texts{});
        EXPECT_TRUE(grid("Coarse").model().find_property("padded"));
    }
    upscale_with("Permeability", "CardwellParson");
    choose_tensor("coarse", {"K I", "K J", letters("K верт")});
    expect_done();
    choose_tensor("coarse", {"K I", "Perm coarse_Perm_I", "K K"});
    expect_refused("must not hold the word \"coarse_Perm_I\"");
    EXPECT_EQ(runs, 22);
}

TEST_F(WizardNames, GridsOfAnyName)
{
    const std::vector<std::pair<QString, QString>> names = {{"Fine upscale_porosity", "Coarse"},
                                                            {"my fine upscale_porosity x", "my coarse grid"},
                                                            {letters("Gitter fein ü"), letters("Gitter grob ß")},
                                                            {"on SGrid", "Coarse Coarse"},
                                                            {"coarse_region_name", "-1"}};
    for (const auto& [fine, coarse] : names) {
        for (const auto& [name, size] :
             {std::pair{fine, lodex::GridSize{4, 3, 6}}, {coarse, lodex::GridSize{2, 3, 2}}}) {
            if (lodex::find_grid(name.toStdString()))
                continue;
            auto* box = add_box(name.toStdString(), size);
            box->change([](lodex::GridModel& model) { model.properties.clear(); });
        }
        add_values(fine, "phi", 0.1);
        open_on(fine, coarse);
        choose_fine("phi");
        expect_done();
        upscale_with("Permeability", "DiagTensor");
        expect_done();
        upscale_with("Indicator", "Most probable");
        expect_done();
        dialog->close();
        run_deferred_deletes();
    }
    EXPECT_EQ(runs, 15);

    add_box("power box", {2, 3, 2});
    open_on("Fine", "power box");
    expect_refused("\"Coarse\" has no value");
    upscale_with("Indicator", "Most probable");
    expect_done();
}

} // namespace
