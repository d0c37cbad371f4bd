// The page of the upscaling method, with the parameters that belong to some methods only.

#include "propertyupscale/LQSGPropertyUpscaleDialog.h"
#include "propertyupscale/PageParts.h"

#include <Lodex/qtools/CommandTextValidator.h>
#include <Lodex/qtools/LQNumberEdits.h>
#include <Lodex/xtools/LQObjectSelectors.h>

#include <QButtonGroup>
#include <QComboBox>
#include <QGroupBox>
#include <QLineEdit>
#include <QRadioButton>

#include <utility>

namespace Kelvane {

namespace {

// What the fields hold at first.
constexpr const char* first_power = "1";
constexpr int first_sampling_count = 10;

/// Radio buttons one below the other, numbered from 0; the first one is chosen.
QButtonGroup* add_radio_buttons(QGroupBox* frame, QVBoxLayout* rows, const QString& prefix,
                                std::initializer_list<std::pair<QString, QString>> texts_and_tips)
{
    auto* buttons = new QButtonGroup(frame);
    buttons->setObjectName(prefix);
    for (const auto& [text, tip] : texts_and_tips) {
        auto* button = new QRadioButton(text, frame);
        const int id = static_cast<int>(buttons->buttons().size());
        button->setObjectName(prefix + QString::number(id));
        button->setToolTip(tip);
        buttons->addButton(button, id);
        rows->addWidget(button);
    }
    buttons->button(0)->setChecked(true);
    return buttons;
}

} // namespace

QWidget* LQSGPropertyUpscaleDialog::build_method_page()
{
    auto* content = new QWidget(this);
    auto* rows = new_rows(content);
    auto* lists = new QWidget(content);
    auto* form = new_form(lists);
    property_class_ = new QComboBox(lists);
    property_class_->setObjectName("property_class_");
    property_class_->setToolTip(tr("Choose the type of property you want to upscale:\n"
                                   "-static e.g. porosity\n-dynamic e.g. permeability\n-discrete e.g. facies"));
    property_class_->addItems(property_class_names());
    form->addRow(label_of(property_class_, tr("Property Type")), property_class_);
    method_ = new QComboBox(lists);
    method_->setObjectName("method_");
    method_->setToolTip(tr("Describe how the property will be upscaled inside each cell."));
    form->addRow(label_of(method_, tr("Method ")), method_);
    rows->addWidget(lists);

    rows->addWidget(build_power(content));
    align_labels({property_class_, method_, power_});
    rows->addWidget(build_volume_weight(content));
    rows->addWidget(build_property_weight(content));
    rows->addWidget(build_sampling(content));
    rows->addWidget(build_boundary(content));
    rows->addWidget(build_exact(content));
    rows->addStretch(1);
    return content;
}

QWidget* LQSGPropertyUpscaleDialog::build_power(QWidget* parent)
{
    power_frame_ = new QWidget(parent);
    power_frame_->setObjectName("power_frame_");
    auto* form = new_form(power_frame_);
    power_ = new QLineEdit(first_power, power_frame_);
    power_->setObjectName("power_");
    power_->setToolTip(tr("Power value of the averaging method."));
    power_->setValidator(new Lodex::CommandTextValidator(power_));
    form->addRow(label_of(power_, tr("Power value")), power_);
    return power_frame_;
}

QWidget* LQSGPropertyUpscaleDialog::build_volume_weight(QWidget* parent)
{
    weight_volume_frame_ = new QWidget(parent);
    weight_volume_frame_->setObjectName("weight_volume_frame_");
    auto* rows = new_rows(weight_volume_frame_);
    weight_volume_ = new_check_box(weight_volume_frame_, "weight_volume_", tr("Weighted by cell volume"),
                                   tr("The contribution of each cell will be weighted by its volume."));
    rows->addWidget(weight_volume_);
    return weight_volume_frame_;
}

QWidget* LQSGPropertyUpscaleDialog::build_property_weight(QWidget* parent)
{
    weight_property_frame_ = new QWidget(parent);
    weight_property_frame_->setObjectName("weight_property_frame_");
    auto* rows = new_rows(weight_property_frame_);
    weight_property_switch_ = new_check_box(
        weight_property_frame_, "weight_property_switch_", tr("Weighted by product of fine grid properties:"),
        tr("The contribution of each cell will be weighted by product of properties of the cell"));
    rows->addWidget(weight_property_switch_);

    auto* row = new QHBoxLayout;
    row->setContentsMargins(indent_under(weight_property_switch_), 0, 0, 0);
    weight_property_ = new Lodex::LQGObjContextSelector("properties1d", weight_property_frame_);
    weight_property_->setObjectName("weight_property_");
    weight_property_->setToolTip(tr("Choose the property you want to use for weight"));
    weight_property_->setMultiSelection(true);
    weight_property_->setEnabled(false);
    row->addWidget(label_of(weight_property_, tr("Properties")));
    row->addWidget(weight_property_, 1);
    rows->addLayout(row);
    connect(weight_property_switch_, &QCheckBox::toggled, weight_property_, &QWidget::setEnabled);
    return weight_property_frame_;
}

QWidget* LQSGPropertyUpscaleDialog::build_sampling(QWidget* parent)
{
    auto* frame = new QGroupBox(tr("Sampling"), parent);
    sampling_frame_ = frame;
    frame->setObjectName("sampling_frame_");
    auto* rows = new QVBoxLayout(frame);
    sampling_ = add_radio_buttons(frame, rows, "sampling_",
                                  {{tr("Adaptive"), tr("The sampling will be automatically determined and will not "
                                                       "exceed the amount specified below.")},
                                   {tr("Fixed"), tr("The sampling will be fixed to the values specified below.")}});

    const std::array<Texts, 3> counts = {
        {{"n_i_", tr("Max sampling:"), tr("Number of subdivisions of one coarse cell in I direction.")},
         {"n_j_", tr(" along J:"), tr("Number of subdivisions of one coarse cell in J direction.")},
         {"n_k_", tr(" along K:"), tr("Number of subdivisions of one coarse cell in K direction.")}}};
    auto* row = new QHBoxLayout;
    for (std::size_t axis = 0; axis < counts.size(); ++axis) {
        auto* field = new Lodex::LQIntLineEdit(frame);
        field->setObjectName(counts[axis].name);
        field->setToolTip(counts[axis].tip);
        field->setValue(first_sampling_count);
        field->setMinimumWidth(field->fontMetrics().horizontalAdvance(QStringLiteral("000000")));
        row->addWidget(label_of(field, counts[axis].label));
        row->addWidget(field, 1);
        sampling_counts_[axis] = field;
    }
    rows->addLayout(row);
    return frame;
}

QWidget* LQSGPropertyUpscaleDialog::build_boundary(QWidget* parent)
{
    auto* frame = new QGroupBox(tr("Boundary Conditions"), parent);
    boundary_frame_ = frame;
    frame->setObjectName("boundary_frame_");
    boundary_ = add_radio_buttons(
        frame, new QVBoxLayout(frame), "boundary_",
        {{tr("Confined"), tr("Confined mode will output a diagonal tensor (II, JJ, KK)")},
         {tr("K-Confined"),
          tr("K-Confined mode will output in addition IJ term. The tensor is symmetric (II, IJ, JJ, KK)")},
         {tr("Unconfined"), tr("Unconfined mode will output a symmetric tensor (II, IJ, IK, JJ, JK ,KK)")}});
    return frame;
}

QWidget* LQSGPropertyUpscaleDialog::build_exact(QWidget* parent)
{
    auto* frame = new QGroupBox(tr("Method"), parent);
    exact_frame_ = frame;
    frame->setObjectName("exact_frame_");
    exact_ = add_radio_buttons(
        frame, new QVBoxLayout(frame), "exact_",
        {{tr("Fast/Approximated"),
          tr("Solve the pressure field with a Conjugate Gradient method: fast but approximated.")},
         {tr("Slow/Exact"), tr("Solve the pressue fiels with a Direct Method: slow but accurated.")}});
    return frame;
}

} // namespace Kelvane
