#include "sgresize/LQSGOneAxisDialog.h"

#include "sgresize/LQSGManualAxisEditorMngr.h"

#include <Lodex/qtools/QtText.h>
#include <Lodex/utils/Logger.h>
#include <Lodex/volumes/SGrid.h>
#include <Lodex/volumes/SGridCube.h>

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QVBoxLayout>

namespace Kelvane {

using Lodex::Format;
using Lodex::Logger;
using Lodex::to_cstring;

LQSGOneAxisDialog::LQSGOneAxisDialog() : LQSGSectionDialog(false) {}

QWidget* LQSGOneAxisDialog::build_options(QWidget* parent, bool copies_regions)
{
    options_ = new QWidget(parent);
    auto* layout = new QHBoxLayout(options_);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* label = new QLabel(tr("Direction"), options_);
    layout->addWidget(label);
    direction_ = new QComboBox(options_);
    direction_->setObjectName("direction_");
    for (int axis = 1; axis <= 3; ++axis)
        direction_->addItem(LQSGAxisEditorMngr::axis_text(axis));
    direction_->setToolTip(tr("Choose the axis along which you want to merge the sections."));
    label->setToolTip(direction_->toolTip());
    label->setBuddy(direction_);
    layout->addWidget(direction_);
    layout->addSpacing(24);
    layout->addStretch(1);

    copy_properties_ =
        add_option("copy_properties_", tr("Copy properties"), tr("Properties will be copied to the new Grid"));
    connect(copy_properties_, &QCheckBox::toggled, this, &LQSGOneAxisDialog::set_properties);
    copy_regions_ = add_option("copy_regions_", tr("Copy regions"), tr("Regions will be copied to the new Grid"));
    copy_regions_->setChecked(copies_regions);
    connect(copy_regions_, &QCheckBox::toggled, this, &LQSGOneAxisDialog::set_region);
    return options_;
}

QCheckBox* LQSGOneAxisDialog::add_option(const char* name, const QString& text, const QString& tip)
{
    auto* layout = static_cast<QHBoxLayout*>(options_->layout());
    auto* box = new QCheckBox(text, options_);
    box->setObjectName(name);
    box->setToolTip(tip);
    const int end = layout->count() - 1; // before the stretch
    layout->insertWidget(end, box);
    layout->insertSpacing(end + 1, 12);
    return box;
}

QGroupBox* LQSGOneAxisDialog::build_section_editor(QWidget* parent)
{
    auto* group = new QGroupBox(tr("Section Editor"), parent);
    auto* layout = new QVBoxLayout(group);
    axis_manager()->build_editor_axis(group, layout);
    connect(direction_, &QComboBox::currentTextChanged, this, &LQSGOneAxisDialog::on_axis_change);
    return group;
}

QString LQSGOneAxisDialog::axis_name() const
{
    return direction_->currentText();
}

bool LQSGOneAxisDialog::copies_properties() const
{
    return copy_properties_->isChecked();
}

bool LQSGOneAxisDialog::copies_regions() const
{
    return copy_regions_->isChecked();
}

void LQSGOneAxisDialog::updateCells() {}

void LQSGOneAxisDialog::update_pick_axis()
{
    axis_manager()->update_pick_axis();
}

void LQSGOneAxisDialog::on_axis_change(const QString& axis_name)
{
    axis_manager()->set_axis(axis_name);
    update_pick_axis();
    update_axis_edt();
    updatePaintedSections();
}

bool LQSGOneAxisDialog::update_axis_edt()
{
    LQSGManualAxisEditorMngr& manager = *axis_manager();
    manager.update_axis();
    const Lodex::SGridCube* cube = get_sgrid() ? get_sgrid()->cube() : nullptr;
    if (!cube)
        return false;
    switch (manager.axis()) {
    case 1:
        manager.update_manual_frame(cube->nu());
        return true;
    case 2:
        manager.update_manual_frame(cube->nv());
        return true;
    case 3:
        manager.update_manual_frame(cube->nw());
        return true;
    default:
        return false;
    }
}

bool LQSGOneAxisDialog::check_input() const
{
    axis_manager()->commit();
    if (sgrid_name().isEmpty()) {
        Logger::fatal(Format(to_cstring(tr("Please provide a sgrid to based the computation on\n"))));
        return false;
    }
    if (new_grid_name().isEmpty()) {
        Logger::fatal(Format(to_cstring(tr("Please provide a new sgrid name\n"))));
        return false;
    }
    return axis_manager()->check_intersections();
}

} // namespace Kelvane
