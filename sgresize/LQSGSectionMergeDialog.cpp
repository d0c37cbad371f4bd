#include "sgresize/LQSGSectionMergeDialog.h"

#include "frame/CommandText.h"
#include "frame/DeleteAction.h"
#include "frame/Help.h"

#include <Lodex/qtools/LQNumberEdits.h>
#include <Lodex/qtools/QtText.h>
#include <Lodex/utils/Logger.h>
#include <Lodex/volumes/SGrid.h>
#include <Lodex/volumes/SGridCube.h>
#include <Lodex/xtools/XMShell.h>

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QRadioButton>
#include <QVBoxLayout>

#include <algorithm>

namespace Kelvane {

using Lodex::Format;
using Lodex::Logger;
using Lodex::to_cstring;

namespace {

/// How merged cells come into a region; the numbers are those of the command.
enum RegionMode { AnyCell, NumberPercentile, VolumePercentile };

constexpr double default_percentile = 50.0;

} // namespace

LQSGSectionMergeDialog::LQSGSectionMergeDialog() : LQSGSectionDialog(false) {}

LQSGSectionMergeDialog::~LQSGSectionMergeDialog() = default;

Lodex::XMShell* LQSGSectionMergeDialog::build_shell()
{
    return open_shell("SgridMergeSectionShell", tr("Merge SGrid Sections"),
                      tr("Create new SGrid by merging cell sections of existing SGrid"),
                      new DeleteAction<LQSGSectionMergeDialog>(this));
}

bool LQSGSectionMergeDialog::build_box(QWidget* parent, QVBoxLayout* layout)
{
    layout->addWidget(build_definition(parent));
    layout->addWidget(build_options(parent));
    layout->addWidget(build_region_modes(parent));
    layout->addWidget(build_graphic_attributes(parent));

    auto* sections = new QGroupBox(tr("Section Editor"), parent);
    auto* box = new QVBoxLayout(sections);
    axis_manager_ = std::make_unique<LQSGMergeAxisEditorMngr>(direction_->currentText(), this);
    axis_manager_->build_editor_axis(sections, box);
    layout->addWidget(sections, 1);

    connect(direction_, &QComboBox::currentTextChanged, this, &LQSGSectionMergeDialog::on_axis_change);
    return true;
}

QWidget* LQSGSectionMergeDialog::build_options(QWidget* parent)
{
    auto* row = new QWidget(parent);
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* label = new QLabel(tr("Direction"), row);
    layout->addWidget(label);
    direction_ = new QComboBox(row);
    direction_->setObjectName("direction_");
    for (int axis = 1; axis <= 3; ++axis)
        direction_->addItem(LQSGAxisEditorMngr::axis_text(axis));
    direction_->setToolTip(tr("Choose the axis along which you want to merge the sections."));
    label->setToolTip(direction_->toolTip());
    label->setBuddy(direction_);
    layout->addWidget(direction_);
    layout->addSpacing(24);

    copy_properties_ = new QCheckBox(tr("Copy properties"), row);
    copy_properties_->setObjectName("copy_properties_");
    copy_properties_->setToolTip(tr("Properties will be copied to the new Grid"));
    connect(copy_properties_, &QCheckBox::toggled, this, &LQSGSectionMergeDialog::set_properties);
    layout->addWidget(copy_properties_);
    layout->addSpacing(12);

    copy_regions_ = new QCheckBox(tr("Copy regions"), row);
    copy_regions_->setObjectName("copy_regions_");
    copy_regions_->setToolTip(tr("Regions will be copied to the new Grid"));
    copy_regions_->setChecked(true);
    connect(copy_regions_, &QCheckBox::toggled, this, &LQSGSectionMergeDialog::set_region);
    layout->addWidget(copy_regions_);
    layout->addStretch(1);
    return row;
}

QWidget* LQSGSectionMergeDialog::build_region_modes(QWidget* parent)
{
    auto* row = new QWidget(parent);
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);

    region_mode_group_ = new QGroupBox(row);
    region_mode_group_->setObjectName("region_mode_group_");
    auto* buttons = new QVBoxLayout(region_mode_group_);
    region_modes_ = new QButtonGroup(region_mode_group_);
    const auto add_mode = [&](RegionMode mode, const char* name, const QString& text, const QString& tip) {
        auto* button = new QRadioButton(text, region_mode_group_);
        button->setObjectName(name);
        button->setToolTip(tip);
        region_modes_->addButton(button, mode);
        buttons->addWidget(button);
        return button;
    };
    auto* any = add_mode(AnyCell, "region_mode_0", tr("from all original cells"),
                         tr("If any of the original cells is in a region, then the upscaled cell is in that region."));
    auto* number = add_mode(NumberPercentile, "region_mode_1", tr("from original cell number percentile"),
                            tr("If the user defined percentile of the original cells is in a region, "
                               "then the upscaled cell is in that region."));
    auto* volume = add_mode(VolumePercentile, "region_mode_2", tr("from original cell volume percentile"),
                            tr("If the user defined percentile of the original cell volume is in the region, "
                               "then the upscaled cell is in that region."));
    any->setChecked(true);
    layout->addWidget(region_mode_group_);

    // The fields stand beside the group, not in it: switching the group off leaves them as they are.
    const auto new_field = [&](const char* name, const QRadioButton* button) {
        auto* field = new Lodex::LQDoubleLineEdit(default_percentile, row);
        field->setObjectName(name);
        field->setToolTip(button->toolTip());
        field->setAccessibleName(button->text());
        field->setFixedWidth(field->fontMetrics().horizontalAdvance(QStringLiteral("100.0000")) + 16);
        return field;
    };
    number_percentile_ = new_field("number_percentile_", number);
    volume_percentile_ = new_field("volume_percentile_", volume);

    // Each field on the line of its button: equal heights, on top the group's frame and margin and the first button.
    const int line = std::max(number_percentile_->sizeHint().height(), any->sizeHint().height());
    for (QWidget* widget : std::initializer_list<QWidget*>{any, number, volume, number_percentile_, volume_percentile_})
        widget->setFixedHeight(line);
    auto* fields = new QVBoxLayout;
    fields->setSpacing(buttons->spacing());
    fields->addSpacing(region_mode_group_->contentsMargins().top() + buttons->contentsMargins().top() + line +
                       buttons->spacing());
    fields->addWidget(number_percentile_);
    fields->addWidget(volume_percentile_);
    fields->addStretch(1);
    layout->addLayout(fields);
    layout->addStretch(1);

    connect(region_modes_, &QButtonGroup::idReleased, this, &LQSGSectionMergeDialog::set_region_mode);
    set_region_mode(region_modes_->checkedId());
    return row;
}

void LQSGSectionMergeDialog::set_region(bool on)
{
    region_mode_group_->setEnabled(on);
}

void LQSGSectionMergeDialog::set_region_mode(int mode)
{
    number_percentile_->setEnabled(mode == NumberPercentile);
    volume_percentile_->setEnabled(mode == VolumePercentile);
}

void LQSGSectionMergeDialog::update_pick_axis()
{
    axis_manager_->update_pick_axis();
}

void LQSGSectionMergeDialog::on_axis_change(const QString& axis_name)
{
    axis_manager_->set_axis(axis_name);
    update_pick_axis();
    update_axis_edt();
    updatePaintedSections();
}

bool LQSGSectionMergeDialog::update_axis_edt()
{
    axis_manager_->update_axis();
    const Lodex::SGridCube* cube = get_sgrid() ? get_sgrid()->cube() : nullptr;
    if (!cube)
        return false;
    switch (axis_manager_->axis()) {
    case 1:
        axis_manager_->update_manual_frame(cube->nu());
        return true;
    case 2:
        axis_manager_->update_manual_frame(cube->nv());
        return true;
    case 3:
        axis_manager_->update_manual_frame(cube->nw());
        return true;
    default:
        return false;
    }
}

void LQSGSectionMergeDialog::on_help()
{
    show_help(help_document_key("LQSGSectionMerge"));
}

void LQSGSectionMergeDialog::updatePaintedSections()
{
    if (!can_paint())
        return;
    const int axis = axis_manager_->axis();
    std::ostringstream triples = command_stream();
    long count = 0;
    for (long row = 0; row < axis_manager_->number_of_sections(); ++row) {
        const LQSGSectionMergeEditor& editor = *axis_manager_->get_sections(row);
        const int step = editor.jump();
        for (int g = editor.from_section() - 1; g + step <= editor.to_section(); g += step) {
            triples << ' ' << axis << " 1 " << g << ' ' << axis << " 1 " << g + step - 1;
            count += 2;
        }
    }
    paint_sections(axis, triples.str(), count);
}

void LQSGSectionMergeDialog::updateCells() {}

void LQSGSectionMergeDialog::write_lists(std::ostream& sections, std::ostream& properties) const
{
    const long rows = axis_manager_->number_of_sections();
    for (long row = 0; row < rows; ++row) {
        const LQSGSectionMergeEditor& editor = *axis_manager_->get_sections(row);
        const int to = editor.to_section();
        const int step = editor.jump();
        for (int g = editor.from_section() - 1; g + step <= to; g += step) {
            sections << g << '+' << g + step - 1;
            properties << editor.ref_section() - 1;
            // Asks for the row's last section, not for room for a whole group: a remainder of two or more leaves a
            // separator with nothing behind it, which the command's readers expect.
            if (g + step < to - 1) {
                sections << '+';
                properties << '+';
            }
        }
        if (row + 1 < rows) {
            sections << '+';
            properties << '+';
        }
    }
}

bool LQSGSectionMergeDialog::process()
{
    if (is_executing())
        return false;
    axis_manager_->commit();
    if (sgrid_name().isEmpty()) {
        Logger::fatal(Format(to_cstring(tr("Please provide a sgrid to based the computation on\n"))));
        return false;
    }
    if (new_grid_name().isEmpty()) {
        Logger::fatal(Format(to_cstring(tr("Please provide a new sgrid name\n"))));
        return false;
    }
    if (!axis_manager_->check_intersections())
        return false;

    std::ostringstream sections = command_stream();
    std::ostringstream properties = command_stream();
    write_lists(sections, properties);

    std::ostringstream command = command_stream();
    command << "lodex sgrid_merge_multiple_sections name " << to_cstring(new_grid_name()) << " sgrid "
            << to_cstring(sgrid_name()) << " direction \"" << axis_manager_->get_axis_direction() << "\" sections "
            << sections.str() << " copy_properties " << flag_text(copy_properties_->isChecked())
            << " property_sections " << properties.str() << " copy_regions " << flag_text(copy_regions_->isChecked());
    if (copy_regions_->isChecked()) {
        const int mode = region_modes_->checkedId();
        command << " region_mode " << mode << " percentile ";
        if (mode == NumberPercentile)
            command << number_percentile_->value();
        else if (mode == VolumePercentile)
            command << volume_percentile_->value();
        else
            command << 0;
    }
    command << " copy_style " << 1;
    execute(command);
    return true;
}

} // namespace Kelvane
