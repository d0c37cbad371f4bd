#include "sgresize/LQSGDownscaleDialog.h"

#include "frame/CommandText.h"
#include "frame/DeleteAction.h"
#include "frame/Help.h"

#include <Lodex/qtools/QtText.h>
#include <Lodex/volumes/SGridActivityModel.h>
#include <Lodex/xtools/XMShell.h>

namespace Kelvane {

using Lodex::to_cstring;

LQSGDownscaleDialog::LQSGDownscaleDialog() = default;

LQSGDownscaleDialog::~LQSGDownscaleDialog() = default;

Lodex::XMShell* LQSGDownscaleDialog::build_shell()
{
    return open_shell("SgridDownscaleShell", tr("Create SGrid for Downscaling"),
                      tr("Create new SGrid for downscaling\nby subdividing cells of existing SGrid"),
                      new DeleteAction<LQSGDownscaleDialog>(this));
}

LQSGWholeGridDialog::Wording LQSGDownscaleDialog::wording() const
{
    return {true, tr("Properties will be copied, but not upscaled, to the new Grid."),
            tr("Regions will be copied to the new Grid. However model regions, faultblocks and layers are always "
               "preserved."),
            "_down", tr("Could not create Downgridding activity\n")};
}

void LQSGDownscaleDialog::build_axis(const QString& axis_name, QWidget* page, QVBoxLayout* layout)
{
    managers_.push_back(std::make_unique<LQSGSubdivideAxisFullEditorMngr>(axis_name, this));
    managers_.back()->build_editor_axis(page, layout);
}

const LQSGSubdivideAxisFullEditorMngr& LQSGDownscaleDialog::manager(int axis) const
{
    return *managers_.at(static_cast<std::size_t>(axis));
}

LQSGManualAxisEditorMngr& LQSGDownscaleDialog::editor(int axis) const
{
    return *managers_.at(static_cast<std::size_t>(axis));
}

bool LQSGDownscaleDialog::is_axis_enabled(int axis) const
{
    return manager(axis).is_enabled();
}

void LQSGDownscaleDialog::on_help()
{
    show_help(help_topic_key("dox_SGridDownscaleDialog"));
}

bool LQSGDownscaleDialog::process()
{
    return LQSGWholeGridDialog::process();
}

long LQSGDownscaleDialog::new_cells(int axis, long cells) const
{
    for (long row = 0; row < manager(axis).number_of_sections(); ++row) {
        const LQSGSectionSubdivideEditor& editor = *manager(axis).get_sections(row);
        const long sections = editor.to_section() - editor.from_section() + 1;
        cells += (editor.amount_section() - 1) * sections;
    }
    return cells;
}

long LQSGDownscaleDialog::write_painted_axis(int axis, std::ostream& triples) const
{
    return manager(axis).write_painted_sections(triples);
}

void LQSGDownscaleDialog::write_options(std::ostream& options) const
{
    options << " copy_properties " << flag_text(copies_properties()) << " properties "
            << to_cstring(chosen_properties());
    write_region_options(options);
}

void LQSGDownscaleDialog::write_command(int axis, const Lodex::CString& source, const Lodex::CString& result,
                                        const std::string& options, std::ostream& command) const
{
    command << "lodex sgrid_subdivide_multiple_sections name " << result << " sgrid " << source << " direction \""
            << manager(axis).get_axis_direction() << "\" sections ";
    manager(axis).write_sections(command);
    // Only the thickness along K can be vertical; the other axes have no such box.
    command << ' ' << options << " vertical_cell_thickness " << flag_text(manager(axis).is_vertical())
            << " percent_cell_thickness " << flag_text(manager(axis).is_percent()) << " model_info "
            << flag_text(uses_model());
}

bool LQSGDownscaleDialog::register_activity(Lodex::SGrid* made)
{
    return register_downgridding_activity(made);
}

bool LQSGDownscaleDialog::register_downgridding_activity(Lodex::SGrid* made)
{
    auto refinement = std::make_unique<Lodex::GridRefinementData>();
    for (int axis = 0; axis < axes; ++axis) {
        if (!is_axis_enabled(axis))
            continue;
        for (long row = 0; row < manager(axis).number_of_sections(); ++row) {
            const LQSGSectionSubdivideEditor& editor = *manager(axis).get_sections(row);
            refinement->add_modification(static_cast<Lodex::UGridIndex3d::Axis>(axis), editor.from_section(),
                                   editor.to_section(), editor.amount_section(), editor.thickness_value(),
                                   editor.strati_type_info());
        }
    }
    using Activity = Lodex::SGridDowngriddingActivityData;
    return Activity::create_downgridding_activity(get_sgrid(), made, refinement.release()) != nullptr;
}

} // namespace Kelvane
