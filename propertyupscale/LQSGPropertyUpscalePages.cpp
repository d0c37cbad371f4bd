// The pages of the property upscaling wizard, but for that of the method.

#include "propertyupscale/CoarseNameObserver.h"
#include "propertyupscale/LQSGPropertyUpscaleDialog.h"
#include "propertyupscale/PageParts.h"

#include <Lodex/qtools/CommandTextValidator.h>
#include <Lodex/qtools/LQNumberEdits.h>
#include <Lodex/volumes/SGrid.h>
#include <Lodex/xtools/LQObjectSelectors.h>

#include <QAbstractButton>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLineEdit>
#include <QScreen>
#include <QShortcut>
#include <QTextEdit>
#include <QWizardPage>

#include <initializer_list>
#include <utility>

namespace Kelvane {

namespace {

/// What the field holds at first.
constexpr double first_no_data_value = 0;

} // namespace

QWizard* LQSGPropertyUpscaleDialog::dialog()
{
    if (built_)
        return this;
    built_ = true;
    setObjectName("LQSGPropertyUpscaleDialog");
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(tr("SGrid Upscale Property"));
    // The other styles put the fields on a ground of their own colour, where they drown in a dark theme.
    setWizardStyle(QWizard::ClassicStyle);

    add_page(Grids, tr("Stratigraphic Grid Definitions"), build_grids_page());
    add_page(Mapping, tr("Mapping Method Definition"), build_mapping_page());
    add_page(Method, tr("Upscaling Method Definition"), build_method_page());
    add_page(Properties, tr("Property Definitions"), build_properties_page());
    add_page(PreProcessing, tr("Pre-Processing"), build_pre_processing_page());
    add_page(PostProcessing, tr("Post-Processing"), build_post_processing_page());
    add_page(Summary, tr("Summary"), build_summary_page());
    build_buttons();
    fit_size();

    connect(fine_gridSelector_, &Lodex::LQMultiComboBox::selectionChanged, this,
            &LQSGPropertyUpscaleDialog::on_fine_sgrid_name_change);
    connect(coarse_gridSelector_, &Lodex::LQMultiComboBox::selectionChanged, this,
            &LQSGPropertyUpscaleDialog::on_coarse_sgrid_name_change);
    connect(property_class_, &QComboBox::currentTextChanged, this,
            &LQSGPropertyUpscaleDialog::on_property_class_change);
    connect(method_, &QComboBox::currentTextChanged, this, &LQSGPropertyUpscaleDialog::on_method_change);
    connect(this, &QWizard::currentIdChanged, this, [this](int id) { showPage(page(id)); });

    on_fine_sgrid_name_change();
    on_coarse_sgrid_name_change();
    on_property_class_change(property_class_->currentText());
    return this;
}

void LQSGPropertyUpscaleDialog::add_page(Page index, const QString& title, QWidget* content)
{
    auto* page = new QWizardPage(this);
    page->setTitle(title);
    auto* rows = new QVBoxLayout(page);
    rows->addWidget(content, 1);
    setPage(index, page);
}

void LQSGPropertyUpscaleDialog::build_buttons()
{
    setOption(QWizard::HaveHelpButton);
    const std::initializer_list<std::pair<QWizard::WizardButton, const char*>> names = {
        {QWizard::BackButton, "back_button"},
        {QWizard::NextButton, "next_button"},
        {QWizard::FinishButton, "finish_button"},
        {QWizard::CancelButton, "cancel_button"},
        {QWizard::HelpButton, "help_button"}};
    for (const auto& [which, name] : names)
        button(which)->setObjectName(name);
    setButtonText(QWizard::HelpButton, tr("Help"));
    button(QWizard::HelpButton)->setToolTip(tr("Launch help"));
    button(QWizard::FinishButton)->setToolTip(tr("Apply (leave window open)"));
    button(QWizard::CancelButton)->setToolTip(tr("Cancel (close window)"));
    connect(new QShortcut(QKeySequence::HelpContents, this), &QShortcut::activated, this,
            &LQSGPropertyUpscaleDialog::on_help);
}

/// All pages get the room that the fullest one needs, so that the window keeps its size from page to page.
void LQSGPropertyUpscaleDialog::fit_size()
{
    // The most that is shown together: a permeability method with boundary conditions and solvers, twice three
    // selectors.
    for (QWidget* frame : {power_frame_, weight_volume_frame_, weight_property_frame_})
        frame->hide();
    show_tensor(fine_scalar_frame_, fine_tensor_frame_, true);
    show_tensor(coarse_scalar_frame_, coarse_tensor_frame_, true);
    QSize size;
    for (const int id : pageIds())
        size = size.expandedTo(page(id)->sizeHint());
    if (const QScreen* on = screen())
        size = size.boundedTo(on->availableSize() * 3 / 4);
    for (const int id : pageIds())
        page(id)->setMinimumSize(size);
}

QWidget* LQSGPropertyUpscaleDialog::build_grids_page()
{
    auto* content = new QWidget(this);
    auto* rows = new_rows(content);
    rows->addWidget(build_grid(content,
                               {"fine_gridSelector_", tr("Fine SGrid"),
                                tr("Select the fine stratigraphic grid you want to upscale.")},
                               "fine", fine_gridSelector_, fine_regions_));
    rows->addWidget(build_grid(content,
                               {"coarse_gridSelector_", tr("Coarse SGrid"),
                                tr("Select the coarse stratigraphic grid you want to upscale to.")},
                               "coarse", coarse_gridSelector_, coarse_regions_));
    rows->addStretch(1);
    return content;
}

QWidget* LQSGPropertyUpscaleDialog::build_grid(QWidget* parent, const Texts& grid, const char* prefix,
                                               QPointer<Lodex::LQGObjSelector>& selector, RegionChoice& regions)
{
    auto* frame = new QGroupBox(parent);
    auto* cells = new QGridLayout(frame);
    cells->setColumnStretch(1, 1);

    selector = new Lodex::LQGObjSelector(Lodex::SGrid::static_type_id_(), frame);
    selector->setObjectName(grid.name);
    selector->setToolTip(grid.tip);
    cells->addWidget(label_of(selector, grid.label), 0, 0);
    cells->addWidget(selector, 0, 1);

    const QString name(prefix);
    regions.on = new_check_box(frame, name + "_region_switch_", tr("Use Regions"),
                               tr("Toggle to restrict the computation\n on some regions of the grid only"));
    cells->addWidget(regions.on, 1, 0);
    regions.names = new Lodex::LQMultiComboBox(frame);
    regions.names->setObjectName(name + "_region_selector_");
    regions.names->setToolTip(tr("Name regions where computation is performed"));
    regions.names->setAccessibleName(regions.on->text());
    regions.names->setMultiSelection(true);
    regions.names->setEnabled(false);
    cells->addWidget(regions.names, 1, 1);
    connect(regions.on, &QCheckBox::toggled, regions.names, &QWidget::setEnabled);
    regions.observer = std::make_unique<SGridObserver>(regions.names, "regions_plus", "region_0", false, true, false);
    return frame;
}

QWidget* LQSGPropertyUpscaleDialog::build_mapping_page()
{
    auto* content = new QWidget(this);
    auto* form = new_form(content);
    mapper_ = new QComboBox(content);
    mapper_->setObjectName("mapper_");
    mapper_->setToolTip(
        tr("Choose the way the cells will be associated between the fine grid and the coarse grid.\n"
           "-> geometric: the XYZ location of the cells is used as reference.\n"
           "     For each coarse cell, the fine cells whose centre lies inside it are searched.\n"
           "     Layers are ignored.\n"
           "-> parametric: the IJK index of the cells is used as reference.\n"
           "     I,J,K is mapped to I,J,K.\n"
           "     Both grids need the same areal gridding and meta model information.\n"
           "-> stratigraphic: the XYK index of the cells is used as reference.\n"
           "     Columns are selected by XY, and the cells of the right layer are kept in K.\n"
           "     Both grids need meta model information.\n"
           "-> k-constrained geometric: geometric mapping with a filter on K.\n"
           "     As geometric, and only cells of the right layer are kept."));
    form->addRow(label_of(mapper_, tr("Mapper")), mapper_);
    fault_management_ =
        new_check_box(content, "fault_management_", tr("Do not upscale across faults"),
                      tr("Check precisely around the faults. If the grids geometries are too \n"
                         "different, this flag is set automatically to off."));
    form->addRow(fault_management_);
    return content;
}

Lodex::LQMultiComboBox* LQSGPropertyUpscaleDialog::new_property_list(QWidget* parent, const Texts& texts, bool coarse,
                                                                     const QString& typed)
{
    auto* list = new Lodex::LQMultiComboBox(parent);
    list->setObjectName(texts.name);
    list->setToolTip(texts.tip);
    if (!coarse) {
        fine_properties_.push_back(
            std::make_unique<SGridObserver>(list, "properties", "all_properties", false, true, false));
        return list;
    }
    list->setEditable(true);
    list->setCompleter(nullptr); // a new name may begin like one that is there
    list->setValidator(new Lodex::CommandTextValidator(list));
    list->lineEdit()->setObjectName(QLatin1String(texts.name) + "edit");
    list->lineEdit()->setToolTip(texts.tip);
    list->setEditText(typed);
    coarse_properties_.push_back(std::make_unique<CoarseNameObserver>(list));
    return list;
}

QWidget* LQSGPropertyUpscaleDialog::build_scalar(QWidget* parent, const Texts& texts,
                                                 const QPointer<Lodex::LQMultiComboBox>& selector)
{
    auto* frame = new QWidget(parent);
    auto* form = new_form(frame);
    selector->setParent(frame);
    form->addRow(label_of(selector, texts.label), selector);
    return frame;
}

QWidget* LQSGPropertyUpscaleDialog::build_tensor(QWidget* parent, const QString& title,
                                                 const std::array<Texts, 3>& texts, const Selectors& selectors)
{
    auto* frame = new QWidget(parent);
    auto* form = new_form(frame);
    auto* heading = new QLabel(title, frame);
    heading->setBuddy(selectors[0]);
    form->addRow(heading);
    for (std::size_t axis = 0; axis < texts.size(); ++axis) {
        selectors[axis]->setParent(frame);
        form->addRow(label_of(selectors[axis], texts[axis].label), selectors[axis]);
        selectors[axis]->setAccessibleName(title + texts[axis].label);
    }
    return frame;
}

QWidget* LQSGPropertyUpscaleDialog::build_properties_page()
{
    auto* content = new QWidget(this);
    auto* rows = new_rows(content);

    const Texts fine = {"fine_prop_cb_", tr("Fine SGrid Property"),
                        tr("Choose the property you want to upscale from.")};
    const std::array<Texts, 3> fine_axes = {
        {{"fine_prop_i_cb_", tr(" I"), tr("Choose the property you want to upscale along I.")},
         {"fine_prop_j_cb_", tr(" J"), tr("Choose the property you want to upscale along J.")},
         {"fine_prop_k_cb_", tr(" K"), tr("Choose the property you want to upscale along K.")}}};
    fine_prop_cb_ = new_property_list(content, fine, false);
    fine_prop_i_cb_ = new_property_list(content, fine_axes[0], false);
    fine_prop_j_cb_ = new_property_list(content, fine_axes[1], false);
    fine_prop_k_cb_ = new_property_list(content, fine_axes[2], false);
    fine_scalar_frame_ = build_scalar(content, fine, fine_prop_cb_);
    fine_scalar_frame_->setObjectName("fine_scalar_frame_");
    fine_tensor_frame_ = build_tensor(content, tr("Fine SGrid Property along:"), fine_axes,
                                      {fine_prop_i_cb_, fine_prop_j_cb_, fine_prop_k_cb_});
    fine_tensor_frame_->setObjectName("fine_tensor_frame_");

    const Texts coarse = {"coarse_prop_cb_", tr("Coarse SGrid Property"), tr("Choose the upscaled property name.")};
    const std::array<Texts, 3> coarse_axes = {
        {{"coarse_prop_i_cb_", tr(" I"), tr("Choose the upscaled property name along I.")},
         {"coarse_prop_j_cb_", tr(" J"), tr("Choose the upscaled property name along J.")},
         {"coarse_prop_k_cb_", tr(" K"), tr("Choose the upscaled property name along K.")}}};
    // Names are the same in every language.
    coarse_prop_cb_ = new_property_list(content, coarse, true, "porosity");
    coarse_tensor_ = {new_property_list(content, coarse_axes[0], true, "permeability_I"),
                      new_property_list(content, coarse_axes[1], true, "permeability_J"),
                      new_property_list(content, coarse_axes[2], true, "permeability_K")};
    coarse_scalar_frame_ = build_scalar(content, coarse, coarse_prop_cb_);
    coarse_scalar_frame_->setObjectName("coarse_scalar_frame_");
    coarse_tensor_frame_ = build_tensor(content, tr("Coarse SGrid Property along:"), coarse_axes, coarse_tensor_);
    coarse_tensor_frame_->setObjectName("coarse_tensor_frame_");

    align_labels({fine_prop_cb_, coarse_prop_cb_});
    rows->addWidget(fine_scalar_frame_);
    rows->addWidget(fine_tensor_frame_);
    rows->addSpacing(2 * rows->spacing());
    rows->addWidget(coarse_scalar_frame_);
    rows->addWidget(coarse_tensor_frame_);
    rows->addStretch(1);
    return content;
}

QWidget* LQSGPropertyUpscaleDialog::build_pre_processing_page()
{
    auto* content = new QWidget(this);
    auto* grid = new QGridLayout(content);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setColumnStretch(1, 1);
    build_replacement(
        grid, {"zero_", tr("Set 0 values to "), tr("Value which replace 0.")},
        tr("0 Values will be treated as the value specified (if the method allows it), otherwise:\n"
           "-it will be ignored for static property\n"),
        zero_);
    build_replacement(grid, {"neg_", tr("Set negative values to "), tr("Value which replace negative values.")},
                      tr("0 and negative Values will be treated as the value specified (if the method allows it), "
                         "otherwise:\n"),
                      negative_);
    build_replacement(
        grid, {"ndv_", tr("Set no-data values to "), tr("Value which replace the No Data Value.")},
        tr("No Data Value will be treated as the value specified (if the method allows it), otherwise:\n"
           "-it will be filled with mean of cells around for dynamic property"),
        no_data_);
    // These two must be positive; what a method takes for missing values differs.
    zero_.value->setPlaceholderText(QStringLiteral("> 0"));
    negative_.value->setPlaceholderText(QStringLiteral("> 0"));
    no_data_.value->setValue(first_no_data_value);
    grid->setRowStretch(grid->rowCount(), 1);
    return content;
}

void LQSGPropertyUpscaleDialog::build_replacement(QGridLayout* grid, const Texts& texts, const QString& help,
                                                  ReplacementChoice& choice)
{
    const int row = grid->count() == 0 ? 0 : grid->rowCount();
    QWidget* parent = grid->parentWidget();
    const QString name(texts.name);
    choice.on = new_check_box(parent, name + "switch_", texts.label, help);
    choice.on->setWhatsThis(help);
    grid->addWidget(choice.on, row, 0);
    choice.value = new Lodex::LQDoubleLineEdit(parent);
    choice.value->setObjectName(name + "value_");
    choice.value->setToolTip(texts.tip);
    choice.value->setWhatsThis(help);
    choice.value->setAccessibleName(texts.label.trimmed());
    choice.value->setEnabled(false);
    grid->addWidget(choice.value, row, 1);
    connect(choice.on, &QCheckBox::toggled, choice.value, &QWidget::setEnabled);
}

QWidget* LQSGPropertyUpscaleDialog::build_post_processing_page()
{
    auto* content = new QWidget(this);
    auto* rows = new_rows(content);
    problem_region_ = new_check_box(
        content, "problem_region_", tr("Create region containing problematic cells"),
        tr("If there is some cells requiring some backup computation, or\n"
           "for which the value cannot be computed, create a region and add them to it."));
    rows->addWidget(problem_region_);
    rows->addStretch(1);
    return content;
}

QWidget* LQSGPropertyUpscaleDialog::build_summary_page()
{
    summary_ = new QTextEdit(this);
    summary_->setObjectName("summary_");
    summary_->setReadOnly(true);
    summary_->setTabChangesFocus(true);
    summary_->setAccessibleName(tr("Summary"));
    return summary_;
}

} // namespace Kelvane
