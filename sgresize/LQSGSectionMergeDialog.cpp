#include "sgresize/LQSGSectionMergeDialog.h"

#include "sgresize/RegionModes.h"

#include "frame/CommandText.h"
#include "frame/DeleteAction.h"
#include "frame/Help.h"

#include <Lodex/qtools/LQNumberEdits.h>
#include <Lodex/qtools/QtText.h>
#include <Lodex/xtools/XMShell.h>

#include <QGroupBox>
#include <QRadioButton>
#include <QVBoxLayout>

#include <algorithm>

namespace Kelvane {

using Lodex::to_cstring;

LQSGSectionMergeDialog::LQSGSectionMergeDialog() = default;

LQSGSectionMergeDialog::~LQSGSectionMergeDialog() = default;

LQSGManualAxisEditorMngr* LQSGSectionMergeDialog::axis_manager() const
{
    return axis_manager_.get();
}

Lodex::XMShell* LQSGSectionMergeDialog::build_shell()
{
    return open_shell("SgridMergeSectionShell", tr("Merge SGrid Sections"),
                      tr("Create new SGrid by merging cell sections of existing SGrid"),
                      new DeleteAction<LQSGSectionMergeDialog>(this));
}

bool LQSGSectionMergeDialog::build_box(QWidget* parent, QVBoxLayout* layout)
{
    layout->addWidget(build_definition(parent));
    layout->addWidget(build_options(parent, true));
    layout->addWidget(build_region_modes(parent));
    layout->addWidget(build_graphic_attributes(parent));
    axis_manager_ = std::make_unique<LQSGMergeAxisEditorMngr>(axis_name(), this);
    layout->addWidget(build_section_editor(parent), 1);
    return true;
}

QWidget* LQSGSectionMergeDialog::build_region_modes(QWidget* parent)
{
    auto* row = new QWidget(parent);
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);

    region_mode_group_ = new QGroupBox(row);
    region_mode_group_->setObjectName("region_mode_group_");
    auto* buttons = new QVBoxLayout(region_mode_group_);
    region_modes_ = new RegionModes(region_mode_group_);
    auto* any = region_modes_->add_mode(RegionModes::AnyCell, region_mode_group_);
    auto* number = region_modes_->add_mode(RegionModes::NumberPercentile, region_mode_group_);
    auto* volume = region_modes_->add_mode(RegionModes::VolumePercentile, region_mode_group_);
    for (QRadioButton* button : {any, number, volume})
        buttons->addWidget(button);
    layout->addWidget(region_mode_group_);

    // The fields stand beside the group, not in it: switching the group off leaves them as they are.
    auto* number_percentile = region_modes_->add_percentile(RegionModes::NumberPercentile, row);
    auto* volume_percentile = region_modes_->add_percentile(RegionModes::VolumePercentile, row);

    // Each field on the line of its button: equal heights, on top the group's frame and margin and the first button.
    const int line = std::max(number_percentile->sizeHint().height(), any->sizeHint().height());
    for (QWidget* widget : std::initializer_list<QWidget*>{any, number, volume, number_percentile, volume_percentile})
        widget->setFixedHeight(line);
    auto* fields = new QVBoxLayout;
    fields->setSpacing(buttons->spacing());
    fields->addSpacing(region_mode_group_->contentsMargins().top() + buttons->contentsMargins().top() + line +
                       buttons->spacing());
    fields->addWidget(number_percentile);
    fields->addWidget(volume_percentile);
    fields->addStretch(1);
    layout->addLayout(fields);
    layout->addStretch(1);

    region_modes_->select(RegionModes::AnyCell);
    connect(region_modes_, &QButtonGroup::idReleased, this, &LQSGSectionMergeDialog::set_region_mode);
    return row;
}

void LQSGSectionMergeDialog::set_region(bool on)
{
    region_mode_group_->setEnabled(on);
}

void LQSGSectionMergeDialog::set_region_mode(int mode)
{
    region_modes_->enable_percentile(mode);
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
    if (is_executing() || !check_input())
        return false;

    std::ostringstream sections = command_stream();
    std::ostringstream properties = command_stream();
    write_lists(sections, properties);

    std::ostringstream command = command_stream();
    command << "lodex sgrid_merge_multiple_sections name " << to_cstring(new_grid_name()) << " sgrid "
            << to_cstring(sgrid_name()) << " direction \"" << axis_manager_->get_axis_direction() << "\" sections "
            << sections.str() << " copy_properties " << flag_text(copies_properties())
            << " property_sections " << properties.str() << " copy_regions " << flag_text(copies_regions());
    if (copies_regions())
        region_modes_->write(command);
    command << " copy_style " << 1;
    execute(command);
    return true;
}

} // namespace Kelvane
