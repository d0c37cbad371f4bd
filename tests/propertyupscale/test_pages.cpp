// What the pages show and how they follow the grids, the class and the method.

#include "WizardTest.h"

#include <Lodex/utils/COSNameList.h>
#include <Lodex/volumes/GridObjCellMapper.h>

#include <set>

namespace {

class WizardPages : public WizardTest {
protected:
    struct Frames {
        bool power, volume, property, sampling, boundary, exact;
        bool operator==(const Frames&) const = default;
    };
    [[nodiscard]] Frames frames() const
    {
        return {shown("power_frame_"),    shown("weight_volume_frame_"), shown("weight_property_frame_"),
                shown("sampling_frame_"), shown("boundary_frame_"),      shown("exact_frame_")};
    }
};

TEST_F(WizardPages, NothingIsBuiltBeforeTheHostAsks)
{
    dialog = new Dialog;
    EXPECT_TRUE(dialog->pageIds().isEmpty());
    EXPECT_FALSE(dialog->isVisible());
    dialog->dialog();
    EXPECT_EQ(dialog->pageIds().size(), 7);
    EXPECT_FALSE(dialog->isVisible());
    dialog->dialog();
    EXPECT_EQ(dialog->pageIds().size(), 7);
    delete dialog;
}

TEST_F(WizardPages, NothingIsSwitchedOnAtFirst)
{
    open_empty();
    for (const QCheckBox* box : dialog->findChildren<QCheckBox*>())
        EXPECT_FALSE(box->isChecked()) << box->objectName().toStdString();
    EXPECT_TRUE(list("fine_gridSelector_")->selectedItems().isEmpty());
    EXPECT_TRUE(list("coarse_gridSelector_")->selectedItems().isEmpty());
    EXPECT_EQ(combo("property_class_")->currentIndex(), 0);
    EXPECT_EQ(combo("method_")->currentIndex(), 0);
    EXPECT_EQ(combo("mapper_")->count(), 0);
}

TEST_F(WizardPages, SwitchesEnableWhatTheySwitch)
{
    open();
    for (const auto& [box, field] :
         {std::pair{"fine_region_switch_", "fine_region_selector_"},
          {"coarse_region_switch_", "coarse_region_selector_"},
          {"weight_property_switch_", "weight_property_"},
          {"zero_switch_", "zero_value_"},
          {"neg_switch_", "neg_value_"},
          {"ndv_switch_", "ndv_value_"}}) {
        EXPECT_FALSE(find<QWidget>(field)->isEnabledTo(dialog)) << field;
        tick(box);
        EXPECT_TRUE(find<QWidget>(field)->isEnabledTo(dialog)) << field;
        tick(box, false);
        EXPECT_FALSE(find<QWidget>(field)->isEnabledTo(dialog)) << field;
    }
}

TEST_F(WizardPages, ClassesInOrder)
{
    open();
    EXPECT_EQ(entries("property_class_"), (QStringList{"Porosity", "Permeability", "Indicator"}));
}

TEST_F(WizardPages, MethodsOfEachClassInRegistryOrder)
{
    open();
    EXPECT_EQ(entries("method_"), (QStringList{"Arithmetic", "Geometric", "Harmonic", "Power", "Sum", "Minimum",
                                               "Maximum", "Median"}));
    choose_class("Permeability");
    const QStringList permeability = entries("method_");
    EXPECT_EQ(permeability.mid(0, 4), (QStringList{"Arithmetic", "Geometric", "Harmonic", "Power"}));
    EXPECT_EQ(permeability.size(), 13);
    const QStringList local = permeability.mid(4);
    EXPECT_EQ(std::set<QString>(local.begin(), local.end()),
              (std::set<QString>{"HarmonicArithmetic", "ArithmeticHarmonic", "CardwellParson", "SymCardwellParson",
                                 "DiagTensor", "EFConform", "EFMixed", "DFPressureSolver", "MixedPressureSolver"}));
    choose_class("Indicator");
    EXPECT_EQ(entries("method_"), QStringList{"Most probable"});
    choose_class("Porosity");
    EXPECT_EQ(entries("method_").size(), 8);
    EXPECT_TRUE(messages.entries.empty());
}

TEST_F(WizardPages, AClassWithoutMethodsIsAnError)
{
    open();
    dialog->on_property_class_change("No such class");
    EXPECT_EQ(messages.of(Lodex::LogLevel::Error), Texts{"No method associated to the property class\n"});
    EXPECT_EQ(messages.entries.size(), 1U);
    EXPECT_EQ(combo("method_")->count(), 0);
}

TEST_F(WizardPages, FramesOfEachMethod)
{
    open();
    const Frames average = {false, true, true, false, false, false};
    const Frames plain = {};
    for (const char* method : {"Arithmetic", "Geometric", "Harmonic"}) {
        upscale_with("Porosity", method);
        EXPECT_EQ(frames(), average) << method;
    }
    upscale_with("Porosity", "Power");
    EXPECT_EQ(frames(), (Frames{true, true, true, false, false, false}));
    for (const char* method : {"Sum", "Minimum", "Maximum", "Median"}) {
        upscale_with("Porosity", method);
        EXPECT_EQ(frames(), plain) << method;
    }
    const Frames sampled = {false, false, false, true, false, false};
    for (const char* method : {"Arithmetic", "Geometric", "Harmonic", "HarmonicArithmetic", "ArithmeticHarmonic",
                               "CardwellParson", "SymCardwellParson", "DiagTensor"}) {
        upscale_with("Permeability", method);
        EXPECT_EQ(frames(), sampled) << method;
    }
    upscale_with("Permeability", "Power");
    EXPECT_EQ(frames(), (Frames{true, false, false, true, false, false}));
    for (const char* method : {"EFConform", "EFMixed"}) {
        upscale_with("Permeability", method);
        EXPECT_EQ(frames(), (Frames{false, false, false, true, true, false})) << method;
    }
    for (const char* method : {"DFPressureSolver", "MixedPressureSolver"}) {
        upscale_with("Permeability", method);
        EXPECT_EQ(frames(), (Frames{false, false, false, true, true, true})) << method;
    }
    upscale_with("Indicator", "Most probable");
    EXPECT_EQ(frames(), plain);
}

TEST_F(WizardPages, MethodsWithoutWeightsTakeTheTicksAway)
{
    open();
    for (const char* method : {"Sum", "Minimum", "Maximum", "Median"}) {
        upscale_with("Porosity", "Arithmetic");
        tick("weight_volume_");
        tick("weight_property_switch_");
        choose_method(method);
        EXPECT_FALSE(find<QCheckBox>("weight_volume_")->isChecked()) << method;
        EXPECT_FALSE(find<QCheckBox>("weight_property_switch_")->isChecked()) << method;
        EXPECT_NE(command().find(" weight_using_volume 0 weight_using_property 0 zero_like_x"), std::string::npos);
        choose_method("Arithmetic");
        EXPECT_FALSE(find<QCheckBox>("weight_volume_")->isChecked()) << "ticks do not come back";
    }
    // Another class only hides them.
    tick("weight_volume_");
    upscale_with("Permeability", "DiagTensor");
    EXPECT_TRUE(find<QCheckBox>("weight_volume_")->isChecked());
}

TEST_F(WizardPages, OneSelectorOrThree)
{
    open();
    const auto tensors = [this] {
        EXPECT_NE(shown("fine_scalar_frame_"), shown("fine_tensor_frame_"));
        EXPECT_NE(shown("coarse_scalar_frame_"), shown("coarse_tensor_frame_"));
        return std::pair{shown("fine_tensor_frame_"), shown("coarse_tensor_frame_")};
    };
    for (const QString& name : entries("property_class_")) {
        choose_class(name);
        for (const QString& method : entries("method_")) {
            choose_method(method);
            const bool input = name == "Permeability" &&
                               QStringList{"DiagTensor", "EFConform", "EFMixed", "DFPressureSolver",
                                           "MixedPressureSolver"}
                                   .contains(method);
            const bool output = input || (name == "Permeability" &&
                                          QStringList{"CardwellParson", "SymCardwellParson", "ArithmeticHarmonic",
                                                      "HarmonicArithmetic"}
                                              .contains(method));
            EXPECT_EQ(tensors(), std::pair(input, output)) << method.toStdString();
        }
    }
}

TEST_F(WizardPages, ListsFollowTheFineGrid)
{
    open();
    const QStringList properties = {"PORO", "PERM X", "NTG", "FACIES"};
    for (const char* name : {"fine_prop_cb_", "fine_prop_i_cb_", "fine_prop_j_cb_", "fine_prop_k_cb_"}) {
        EXPECT_EQ(list(name)->items(), properties) << name;
        EXPECT_EQ(list(name)->currentText(), "PORO") << name;
    }
    EXPECT_EQ(list("weight_property_")->items(), properties);
    EXPECT_EQ(list("fine_region_selector_")->items(), (QStringList{"all_regions", "Zone A", "South"}));
    EXPECT_TRUE(list("fine_region_selector_")->multiSelection());

    choose("fine_prop_cb_", "NTG");
    choose("fine_region_selector_", "South");
    add_property(lodex::find_grid("Fine"), "SWAT");
    EXPECT_EQ(list("fine_prop_cb_")->items().last(), "SWAT");
    EXPECT_EQ(list("fine_prop_cb_")->currentText(), "NTG");
    EXPECT_EQ(list("fine_region_selector_")->currentText(), "South");
    EXPECT_EQ(list("weight_property_")->items().last(), "SWAT");

    choose("fine_gridSelector_", "Bare");
    EXPECT_TRUE(list("fine_prop_cb_")->items().isEmpty());
    EXPECT_TRUE(list("weight_property_")->items().isEmpty());
    EXPECT_EQ(list("fine_region_selector_")->items(), QStringList{"all_regions"});

    choose("fine_gridSelector_", "Fine");
    Lodex::GeobaseLib::instance()->destroy(lodex::find_grid("Fine"));
    EXPECT_EQ(list("fine_gridSelector_")->currentText(), "");
    EXPECT_TRUE(list("fine_prop_cb_")->items().isEmpty());
    EXPECT_TRUE(list("weight_property_")->items().isEmpty());
    EXPECT_TRUE(list("fine_region_selector_")->items().isEmpty());
}

TEST_F(WizardPages, CoarseNamesStayWhatWasTyped)
{
    open();
    EXPECT_EQ(list("coarse_prop_cb_")->items(), QStringList{"OLD"});
    EXPECT_EQ(list("coarse_prop_cb_")->currentText(), "porosity");
    EXPECT_EQ(list("coarse_region_selector_")->items(), (QStringList{"all_regions", "East 1"}));

    choose("coarse_prop_cb_", "OLD"); // one of the grid's own
    choose("coarse_prop_i_cb_", "KX up");
    add_property(lodex::find_grid("Coarse"), "OTHER");
    EXPECT_EQ(list("coarse_prop_cb_")->items(), (QStringList{"OLD", "OTHER"}));
    EXPECT_EQ(list("coarse_prop_cb_")->currentText(), "OLD");
    EXPECT_EQ(list("coarse_prop_i_cb_")->currentText(), "KX up");
    choose("coarse_gridSelector_", "Fine");
    EXPECT_EQ(list("coarse_prop_cb_")->currentText(), "OLD");
    EXPECT_EQ(list("coarse_prop_cb_")->items(), (QStringList{"PORO", "PERM X", "NTG", "FACIES"}));
    choose("coarse_prop_cb_", "");
    choose("coarse_gridSelector_", "Coarse");
    EXPECT_EQ(list("coarse_prop_cb_")->currentText(), "");

    // A name may begin like one that is there.
    auto* field = find<QLineEdit>("coarse_prop_cb_edit");
    field->clear();
    QTest::keyClicks(field, "ol");
    QTest::keyClick(field, Qt::Key_Tab);
    EXPECT_EQ(list("coarse_prop_cb_")->currentText(), "ol");
    // Nor is it made one that differs in its capitals only.
    QTest::mouseClick(field, Qt::LeftButton);
    field->setFocus();
    QTest::keyClicks(field, "d");
    QTest::keyClick(field, Qt::Key_Tab);
    QTest::keyClick(field, Qt::Key_Return);
    EXPECT_EQ(list("coarse_prop_cb_")->currentText(), "old");
    EXPECT_EQ(list("coarse_prop_cb_")->items(), (QStringList{"OLD", "OTHER"})) << "nor does a typed name join the list";
}

TEST_F(WizardPages, TypedTextCannotBecomeASecondCommand)
{
    open();
    upscale_with("Porosity", "Power");
    for (const char* name : {"power_", "coarse_prop_cb_edit", "coarse_prop_i_cb_edit", "coarse_prop_j_cb_edit",
                             "coarse_prop_k_cb_edit"}) {
        auto* field = find<QLineEdit>(name);
        field->clear();
        QTest::keyClicks(field, "a;\"b");
        EXPECT_EQ(field->text(), "ab") << name;
    }
    auto* count = find<QLineEdit>("n_i_");
    count->clear();
    QTest::keyClicks(count, "1x2;");
    EXPECT_EQ(count->text(), "12");
}

TEST_F(WizardPages, MappersFollowTheGrids)
{
    const auto registered = [](const Lodex::CString& family) {
        Lodex::COSNameList paths;
        Lodex::GridObjCellMapper::mapper_list_names(paths, family);
        QStringList names;
        for (const Lodex::CString& path : paths)
            names.append(QString::fromStdString(path.str()).section('/', -1));
        return names;
    };
    const QStringList geometric = registered(Lodex::GeoSGridCellMapper::type());
    const QStringList meta = registered(Lodex::MetaSGridCellMapper::type());
    ASSERT_EQ(geometric, QStringList{"geometric"});
    ASSERT_EQ(meta, (QStringList{"parametric", "stratigraphic", "k-constrained geometric"}));

    open_empty();
    choose("fine_gridSelector_", "Fine");
    EXPECT_EQ(combo("mapper_")->count(), 0) << "both grids are needed";
    choose("coarse_gridSelector_", "Bare");
    EXPECT_EQ(entries("mapper_"), geometric);
    EXPECT_EQ(combo("mapper_")->currentText(), "geometric");
    choose("coarse_gridSelector_", "Coarse");
    EXPECT_EQ(entries("mapper_"), geometric + meta);
    combo("mapper_")->setCurrentText("stratigraphic");
    choose("fine_gridSelector_", "Coarse");
    EXPECT_EQ(combo("mapper_")->currentText(), "stratigraphic") << "stays as long as it is offered";
    choose("fine_gridSelector_", "Bare");
    EXPECT_EQ(entries("mapper_"), geometric);
    EXPECT_EQ(combo("mapper_")->currentText(), "geometric");

    // A grid that gets its layers while the wizard is open.
    choose("fine_gridSelector_", "Bare");
    set_layers(lodex::find_grid("Bare"), {1, 1});
    next();
    EXPECT_EQ(entries("mapper_"), geometric + meta);
}

TEST_F(WizardPages, InitTakesGridAndProperty)
{
    open_empty();
    CommandStub stub{{"sgrid", "Fine"}, {"property", "lodex:SGrid/Fine/property/PERM%20X"}};
    dialog->init(&stub);
    EXPECT_EQ(list("fine_gridSelector_")->currentText(), "Fine");
    for (const char* name : {"fine_prop_cb_", "fine_prop_i_cb_", "fine_prop_j_cb_", "fine_prop_k_cb_"})
        EXPECT_EQ(list(name)->currentText(), "PERM X") << name;
    EXPECT_EQ(list("coarse_gridSelector_")->currentText(), "");
    EXPECT_TRUE(messages.entries.empty());
    // The choice survives what is chosen afterwards.
    upscale_with("Permeability", "DiagTensor");
    EXPECT_EQ(list("fine_prop_k_cb_")->currentText(), "PERM X");
}

TEST_F(WizardPages, InitWithAPlainPropertyName)
{
    open_empty();
    CommandStub stub{{"sgrid", "Fine"}, {"property", "NTG"}};
    dialog->init(&stub);
    EXPECT_EQ(list("fine_prop_cb_")->currentText(), "NTG");
    EXPECT_EQ(list("fine_prop_k_cb_")->currentText(), "NTG");
}

TEST_F(WizardPages, InitPassesOverWhatIsNotThere)
{
    open_empty();
    CommandStub nothing, unknown{{"sgrid", "Nowhere"}}, property{{"property", "NTG"}};
    for (CommandStub* stub : {&nothing, &unknown, &property, static_cast<CommandStub*>(nullptr)}) {
        dialog->init(stub);
        EXPECT_EQ(list("fine_gridSelector_")->currentText(), "");
        EXPECT_EQ(list("fine_prop_cb_")->currentText(), "");
    }
    CommandStub other{{"sgrid", "Fine"}, {"property", "lodex:SGrid/Fine/property/Nothing"}};
    dialog->init(&other);
    EXPECT_EQ(list("fine_prop_cb_")->currentText(), "PORO");
    EXPECT_TRUE(messages.entries.empty());
}

std::vector<std::string> internal_errors;

void note_internal_error(const char* file, int line, const Lodex::CString& message)
{
    EXPECT_GT(line, 0);
    internal_errors.push_back(std::string(file) + ": " + message.str());
}

TEST_F(WizardPages, InitNeedsItsWidgets)
{
    const auto former = Lodex::set_internal_error_handler(&note_internal_error);
    CommandStub stub{{"sgrid", "Fine"}};
    internal_errors.clear();
    Dialog unbuilt;
    unbuilt.init(&stub);
    EXPECT_EQ(internal_errors, Texts{"xmpropertyupscale: Pointer is nil: fine_gridSelector_\n"});
    for (const char* name : {"fine_prop_k_cb_", "fine_prop_j_cb_", "fine_prop_i_cb_", "fine_prop_cb_"}) {
        auto* lame = new Dialog;
        lame->dialog();
        delete lame->findChild<QWidget*>(name);
        internal_errors.clear();
        lame->init(&stub);
        EXPECT_EQ(internal_errors, Texts{std::string("xmpropertyupscale: Pointer is nil: ") + name + "\n"});
        EXPECT_EQ(lame->findChild<Lodex::LQMultiComboBox*>("fine_gridSelector_")->currentText(), "");
        delete lame;
    }
    Lodex::set_internal_error_handler(former);
}

TEST_F(WizardPages, GridsAreFoundByTheirName)
{
    add_other_object("Other");
    EXPECT_EQ(Dialog::update_sgrid("Fine"), lodex::find_grid("Fine"));
    EXPECT_EQ(Dialog::update_sgrid("Other"), nullptr);
    EXPECT_EQ(Dialog::update_sgrid("Nowhere"), nullptr);
    EXPECT_EQ(Dialog::update_sgrid(""), nullptr);
}

TEST_F(WizardPages, EveryWidgetAPersonCanTouchHasANameOfItsOwn)
{
    open();
    std::set<QString> names;
    for (const QWidget* widget : dialog->findChildren<QWidget*>()) {
        const bool inner = widget->window() != dialog || widget->objectName().startsWith("qt_");
        if (inner || widget->focusPolicy() == Qt::NoFocus || qobject_cast<const QWizardPage*>(widget))
            continue;
        const auto* button = qobject_cast<const QAbstractButton*>(widget);
        if (button && button->isHidden() && button->objectName().startsWith("__qt__"))
            continue; // buttons that the toolkit keeps for other kinds of wizards
        EXPECT_FALSE(widget->objectName().isEmpty()) << widget->metaObject()->className();
        EXPECT_TRUE(names.insert(widget->objectName()).second) << widget->objectName().toStdString();
    }
    EXPECT_GT(names.size(), 40U);
}

} // namespace
