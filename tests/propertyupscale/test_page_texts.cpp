// Titles, labels and tooltips, to the letter.

#include "WizardTest.h"

#include <QGroupBox>
#include <QLabel>
#include <QMetaMethod>

#include <array>

namespace {

class WizardTexts : public WizardTest {
protected:
    /// Text of the label that leads to a field.
    [[nodiscard]] QString label(const char* name) const
    {
        const auto* field = find<QWidget>(name);
        for (const QLabel* label : dialog->findChildren<QLabel*>()) {
            if (label->buddy() == field)
                return label->text();
        }
        return "(no label)";
    }
    [[nodiscard]] QString tip(const char* name) const { return find<QWidget>(name)->toolTip(); }
    [[nodiscard]] QString text(const char* name) const { return find<QAbstractButton>(name)->text(); }
};

TEST_F(WizardTexts, TitlesInOrder)
{
    open();
    EXPECT_EQ(dialog->windowTitle(), "SGrid Upscale Property");
    EXPECT_STREQ(dialog->metaObject()->className(), "Kelvane::LQSGPropertyUpscaleDialog");
    const QStringList titles = {"Stratigraphic Grid Definitions", "Mapping Method Definition",
                                "Upscaling Method Definition",    "Property Definitions",
                                "Pre-Processing",                 "Post-Processing"};
    ASSERT_EQ(dialog->pageIds().size(), 7);
    for (int page = 0; page < titles.size(); ++page)
        EXPECT_EQ(dialog->page(page)->title(), titles[page]);
    EXPECT_EQ(dialog->currentId(), 0);
    EXPECT_TRUE(dialog->page(Dialog::Summary)->isAncestorOf(find<QTextEdit>("summary_")));
}

TEST_F(WizardTexts, SlotsByTheirNames)
{
    open_empty();
    const QMetaObject* meta = dialog->metaObject();
    for (const char* slot : {"on_fine_sgrid_name_change()", "on_coarse_sgrid_name_change()",
                             "on_property_class_change(QString)", "on_method_change(QString)", "on_help()", "on_ok()",
                             "process()", "accept()", "showPage(QWidget*)"}) {
        const int index = meta->indexOfMethod(slot);
        ASSERT_GE(index, 0) << slot;
        EXPECT_EQ(meta->method(index).methodType(), QMetaMethod::Slot) << slot;
        EXPECT_EQ(meta->method(index).access(), QMetaMethod::Public) << slot;
        EXPECT_GE(index, meta->methodOffset()) << slot << " is the toolkit's";
    }
}

TEST_F(WizardTexts, GridTexts)
{
    open();
    EXPECT_EQ(label("fine_gridSelector_"), "Fine SGrid");
    EXPECT_EQ(tip("fine_gridSelector_"), "Select the fine stratigraphic grid you want to upscale.");
    EXPECT_EQ(label("coarse_gridSelector_"), "Coarse SGrid");
    EXPECT_EQ(tip("coarse_gridSelector_"), "Select the coarse stratigraphic grid you want to upscale to.");
    for (const char* name : {"fine_region_switch_", "coarse_region_switch_"}) {
        EXPECT_EQ(text(name), "Use Regions");
        EXPECT_EQ(tip(name), "Toggle to restrict the computation\n on some regions of the grid only");
    }
    for (const char* name : {"fine_region_selector_", "coarse_region_selector_"})
        EXPECT_EQ(tip(name), "Name regions where computation is performed");
}

TEST_F(WizardTexts, MappingTexts)
{
    open();
    EXPECT_EQ(label("mapper_"), "Mapper");
    const QString help = tip("mapper_");
    EXPECT_TRUE(help.startsWith(
        "Choose the way the cells will be associated between the fine grid and the coarse grid.\n-> geometric: "));
    QStringList heads;
    const QStringList lines = help.split('\n');
    for (int i = 1; i < lines.size(); ++i) {
        if (lines[i].startsWith("->"))
            heads.append(lines[i]);
        else
            EXPECT_TRUE(lines[i].startsWith("  ")) << lines[i].toStdString();
        EXPECT_FALSE(lines[i].startsWith("->") && lines[i - 1].startsWith("->")) << "no explanation";
    }
    EXPECT_EQ(heads, (QStringList{"-> geometric: the XYZ location of the cells is used as reference.",
                                  "-> parametric: the IJK index of the cells is used as reference.",
                                  "-> stratigraphic: the XYK index of the cells is used as reference.",
                                  "-> k-constrained geometric: geometric mapping with a filter on K."}));
    EXPECT_EQ(text("fault_management_"), "Do not upscale across faults");
    EXPECT_EQ(tip("fault_management_"), "Check precisely around the faults. If the grids geometries are too \n"
                                        "different, this flag is set automatically to off.");
}

TEST_F(WizardTexts, MethodTexts)
{
    open();
    EXPECT_EQ(label("property_class_"), "Property Type");
    EXPECT_EQ(tip("property_class_"), "Choose the type of property you want to upscale:\n-static e.g. porosity\n"
                                      "-dynamic e.g. permeability\n-discrete e.g. facies");
    EXPECT_EQ(label("method_"), "Method ");
    EXPECT_EQ(tip("method_"), "Describe how the property will be upscaled inside each cell.");
    EXPECT_EQ(label("power_"), "Power value");
    EXPECT_EQ(tip("power_"), "Power value of the averaging method.");
    EXPECT_EQ(text("weight_volume_"), "Weighted by cell volume");
    EXPECT_EQ(tip("weight_volume_"), "The contribution of each cell will be weighted by its volume.");
    EXPECT_EQ(text("weight_property_switch_"), "Weighted by product of fine grid properties:");
    EXPECT_EQ(tip("weight_property_switch_"),
              "The contribution of each cell will be weighted by product of properties of the cell");
    EXPECT_EQ(label("weight_property_"), "Properties");
    EXPECT_EQ(tip("weight_property_"), "Choose the property you want to use for weight");
    const auto* weights = find<Lodex::LQGObjContextSelector>("weight_property_");
    EXPECT_EQ(weights->contextKey().str(), "properties1d");
    EXPECT_TRUE(weights->multiSelection());
}

TEST_F(WizardTexts, ButtonGroupTexts)
{
    open();
    struct Row {
        const char* group;
        const char* title;
        std::vector<std::array<const char*, 2>> buttons;
    };
    const std::vector<Row> rows = {
        {"sampling_",
         "Sampling",
         {{"Adaptive",
           "The sampling will be automatically determined and will not exceed the amount specified below."},
          {"Fixed", "The sampling will be fixed to the values specified below."}}},
        {"boundary_",
         "Boundary Conditions",
         {{"Confined", "Confined mode will output a diagonal tensor (II, JJ, KK)"},
          {"K-Confined", "K-Confined mode will output in addition IJ term. The tensor is symmetric (II, IJ, JJ, KK)"},
          {"Unconfined", "Unconfined mode will output a symmetric tensor (II, IJ, IK, JJ, JK ,KK)"}}},
        {"exact_",
         "Method",
         {{"Fast/Approximated", "Solve the pressure field with a Conjugate Gradient method: fast but approximated."},
          {"Slow/Exact", "Solve the pressue fiels with a Direct Method: slow but accurated."}}}};
    for (const Row& row : rows) {
        const auto* group = dialog->findChild<QButtonGroup*>(row.group);
        ASSERT_TRUE(group) << row.group;
        ASSERT_EQ(group->buttons().size(), static_cast<qsizetype>(row.buttons.size()));
        EXPECT_EQ(group->checkedId(), 0);
        for (int id = 0; id < group->buttons().size(); ++id) {
            ASSERT_TRUE(group->button(id)) << row.group << id;
            EXPECT_EQ(group->button(id)->text(), row.buttons[static_cast<std::size_t>(id)][0]);
            EXPECT_EQ(group->button(id)->toolTip(), row.buttons[static_cast<std::size_t>(id)][1]);
        }
        EXPECT_EQ(find<QGroupBox>(row.group + QString("frame_"))->title(), row.title);
    }
    EXPECT_EQ(label("n_i_"), "Max sampling:");
    EXPECT_EQ(label("n_j_"), " along J:");
    EXPECT_EQ(label("n_k_"), " along K:");
    EXPECT_EQ(tip("n_i_"), "Number of subdivisions of one coarse cell in I direction.");
    EXPECT_EQ(tip("n_j_"), "Number of subdivisions of one coarse cell in J direction.");
    EXPECT_EQ(tip("n_k_"), "Number of subdivisions of one coarse cell in K direction.");
}

TEST_F(WizardTexts, PropertyTexts)
{
    open();
    EXPECT_EQ(label("fine_prop_cb_"), "Fine SGrid Property");
    EXPECT_EQ(tip("fine_prop_cb_"), "Choose the property you want to upscale from.");
    EXPECT_EQ(label("coarse_prop_cb_"), "Coarse SGrid Property");
    EXPECT_EQ(tip("coarse_prop_cb_"), "Choose the upscaled property name.");
    EXPECT_EQ(list("coarse_prop_cb_")->currentText(), "porosity");
    for (const char axis : {'I', 'J', 'K'}) {
        const QString fine = QString("fine_prop_%1_cb_").arg(QChar(axis).toLower());
        const QString coarse = QString("coarse_prop_%1_cb_").arg(QChar(axis).toLower());
        EXPECT_EQ(tip(qPrintable(fine)), QString("Choose the property you want to upscale along %1.").arg(axis));
        EXPECT_EQ(tip(qPrintable(coarse)), QString("Choose the upscaled property name along %1.").arg(axis));
    }
    QStringList labels;
    for (const char* frame : {"fine_tensor_frame_", "coarse_tensor_frame_"}) {
        for (const QLabel* found : find<QWidget>(frame)->findChildren<QLabel*>())
            labels.append(found->text());
    }
    EXPECT_EQ(labels, (QStringList{"Fine SGrid Property along:", " I", " J", " K", "Coarse SGrid Property along:", " I",
                                   " J", " K"}));
}

TEST_F(WizardTexts, ProcessingTexts)
{
    open();
    EXPECT_EQ(text("zero_switch_"), "Set 0 values to ");
    EXPECT_EQ(tip("zero_value_"), "Value which replace 0.");
    EXPECT_EQ(tip("zero_switch_"),
              "0 Values will be treated as the value specified (if the method allows it), otherwise:\n"
              "-it will be ignored for static property\n");
    EXPECT_EQ(text("neg_switch_"), "Set negative values to ");
    EXPECT_EQ(tip("neg_value_"), "Value which replace negative values.");
    EXPECT_EQ(tip("neg_switch_"), "0 and negative Values will be treated as the value specified (if the method "
                                  "allows it), otherwise:\n");
    EXPECT_EQ(text("ndv_switch_"), "Set no-data values to ");
    EXPECT_EQ(tip("ndv_value_"), "Value which replace the No Data Value.");
    EXPECT_EQ(tip("ndv_switch_"), "No Data Value will be treated as the value specified (if the method allows it), "
                                  "otherwise:\n-it will be filled with mean of cells around for dynamic property");
    EXPECT_EQ(text("problem_region_"), "Create region containing problematic cells");
    EXPECT_EQ(tip("problem_region_"), "If there is some cells requiring some backup computation, or\n"
                                      "for which the value cannot be computed, create a region and add them to it.");
}

} // namespace
