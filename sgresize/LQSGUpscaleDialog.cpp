#include "sgresize/LQSGUpscaleDialog.h"

#include "sgresize/MergeBlocks.h"
#include "sgresize/RegionModes.h"

#include "frame/CommandText.h"
#include "frame/DeleteAction.h"
#include "frame/Help.h"

#include <Lodex/qtools/LQNumberEdits.h>
#include <Lodex/qtools/QtText.h>
#include <Lodex/volumes/SGridActivityModel.h>
#include <Lodex/xtools/XMShell.h>

#include <QGridLayout>
#include <QGroupBox>
#include <QRadioButton>
#include <QTableWidget>

namespace Kelvane {

using Lodex::to_cstring;

namespace {

[[nodiscard]] std::vector<MergeBlock> blocks_of(const LQSGSectionMergeEditor& row)
{
    return merge_blocks(row.from_section(), row.to_section(), row.jump());
}

} // namespace

LQSGUpscaleDialog::LQSGUpscaleDialog() = default;

LQSGUpscaleDialog::~LQSGUpscaleDialog() = default;

Lodex::XMShell* LQSGUpscaleDialog::build_shell()
{
    return open_shell("SgridUpscaleShell", tr("Create SGrid for Upscaling"),
                      tr("Create new SGrid for upscaling\nby merging cells of existing SGrid"),
                      new DeleteAction<LQSGUpscaleDialog>(this));
}

LQSGWholeGridDialog::Wording LQSGUpscaleDialog::wording() const
{
    return {false, tr("Properties will be copied, but not upscaled, to the new Grid. Not recommanded"),
            tr("Regions will be copied to the new Grid. However model regions and layers are always preserved."), "_up",
            tr("Could not create Upgridding activity\n")};
}

void LQSGUpscaleDialog::build_axis(const QString& axis_name, QWidget* page, QVBoxLayout* layout)
{
    managers_.push_back(std::make_unique<LQSGMergeAxisFullEditorMngr>(axis_name, this));
    managers_.back()->build_editor_axis(page, layout);
}

void LQSGUpscaleDialog::build_more_options(QWidget* parent)
{
    region_mode_group_ = new QGroupBox(parent);
    region_mode_group_->setObjectName("region_mode_group_");
    auto* layout = new QGridLayout(region_mode_group_);
    region_modes_ = new RegionModes(region_mode_group_);
    for (const auto mode : {RegionModes::AnyCell, RegionModes::NumberPercentile, RegionModes::VolumePercentile,
                            RegionModes::MostProbable}) {
        layout->addWidget(region_modes_->add_mode(mode, region_mode_group_), mode, 0);
        if (mode == RegionModes::NumberPercentile || mode == RegionModes::VolumePercentile)
            layout->addWidget(region_modes_->add_percentile(mode, region_mode_group_), mode, 1);
    }
    region_modes_->select(RegionModes::NumberPercentile);
    connect(region_modes_, &QButtonGroup::idReleased, this, &LQSGUpscaleDialog::set_region_mode);
    add_widget_to_extension(region_mode_group_);
}

const LQSGMergeAxisFullEditorMngr& LQSGUpscaleDialog::manager(int axis) const
{
    return *managers_.at(static_cast<std::size_t>(axis));
}

LQSGManualAxisEditorMngr& LQSGUpscaleDialog::editor(int axis) const
{
    return *managers_.at(static_cast<std::size_t>(axis));
}

bool LQSGUpscaleDialog::is_axis_enabled(int axis) const
{
    return manager(axis).is_enabled();
}

void LQSGUpscaleDialog::set_properties(bool on)
{
    for (int axis = 0; axis < axes; ++axis)
        manager(axis).table()->setColumnHidden(LQSGSectionMergeEditor::PropertyColumn, !on);
    LQSGWholeGridDialog::set_properties(on);
}

void LQSGUpscaleDialog::set_region(bool on)
{
    region_mode_group_->setEnabled(on);
    LQSGWholeGridDialog::set_region(on);
}

void LQSGUpscaleDialog::set_region_mode(int mode)
{
    region_modes_->enable_percentile(mode);
}

void LQSGUpscaleDialog::on_help()
{
    show_help(help_topic_key("dox_SGridUpscaleDialog"));
}

bool LQSGUpscaleDialog::process()
{
    return LQSGWholeGridDialog::process();
}

long LQSGUpscaleDialog::new_cells(int axis, long cells) const
{
    for (long row = 0; row < manager(axis).number_of_sections(); ++row) {
        const LQSGSectionMergeEditor& editor = *manager(axis).get_sections(row);
        cells = merged_cells(cells, editor.from_section(), editor.to_section(), editor.jump());
    }
    return cells;
}

long LQSGUpscaleDialog::write_painted_axis(int axis, std::ostream& triples) const
{
    const int number = manager(axis).axis();
    long count = 0;
    for (long row = 0; row < manager(axis).number_of_sections(); ++row) {
        for (const MergeBlock& block : blocks_of(*manager(axis).get_sections(row))) {
            triples << ' ' << number << " 1 " << block.first << ' ' << number << " 1 " << block.last;
            count += 2;
        }
    }
    return count;
}

void LQSGUpscaleDialog::write_region_mode(std::ostream& options) const
{
    region_modes_->write(options);
}

void LQSGUpscaleDialog::write_options(std::ostream& options) const
{
    write_region_options(options);
    options << " model_info " << flag_text(uses_model());
}

void LQSGUpscaleDialog::write_command(int axis, const Lodex::CString& source, const Lodex::CString& result,
                                      const std::string& options, std::ostream& command) const
{
    std::ostringstream sections = command_stream();
    std::ostringstream properties = command_stream();
    const char* separator = "";
    for (long row = 0; row < manager(axis).number_of_sections(); ++row) {
        const LQSGSectionMergeEditor& editor = *manager(axis).get_sections(row);
        for (const MergeBlock& block : blocks_of(editor)) {
            sections << separator << block.first << '+' << block.last;
            properties << separator << editor.ref_section() - 1;
            separator = "+";
        }
    }
    command << "lodex sgrid_merge_multiple_sections name " << result << " sgrid " << source << " direction \""
            << manager(axis).get_axis_direction() << "\" sections " << sections.str() << " copy_properties "
            << flag_text(copies_properties()) << " property_sections " << properties.str() << " properties "
            << to_cstring(chosen_properties()) << options;
}

bool LQSGUpscaleDialog::register_activity(Lodex::SGrid* made)
{
    return register_upgridding_activity(made);
}

bool LQSGUpscaleDialog::register_upgridding_activity(Lodex::SGrid* made)
{
    auto coarsening = std::make_unique<Lodex::GridCoarseningData>();
    for (int axis = 0; axis < axes; ++axis) {
        if (!is_axis_enabled(axis))
            continue;
        for (long row = 0; row < manager(axis).number_of_sections(); ++row) {
            const LQSGSectionMergeEditor& editor = *manager(axis).get_sections(row);
            coarsening->add_modification(static_cast<Lodex::UGridIndex3d::Axis>(axis), editor.from_section(),
                                   editor.to_section(), editor.jump());
        }
    }
    using Activity = Lodex::SGridUpgriddingActivityData;
    return Activity::create_upgridding_activity(get_sgrid(), made, coarsening.release()) != nullptr;
}

} // namespace Kelvane
