#include "sgresize/LQSGSectionSubdivideDialog.h"

#include "frame/CommandText.h"
#include "frame/DeleteAction.h"
#include "frame/Help.h"

#include <Lodex/qtools/QtText.h>
#include <Lodex/xtools/XMShell.h>

#include <QCheckBox>
#include <QGroupBox>
#include <QVBoxLayout>

namespace Kelvane {

using Lodex::to_cstring;

LQSGSectionSubdivideDialog::LQSGSectionSubdivideDialog() = default;

LQSGSectionSubdivideDialog::~LQSGSectionSubdivideDialog() = default;

LQSGManualAxisEditorMngr* LQSGSectionSubdivideDialog::axis_manager() const
{
    return axis_manager_.get();
}

Lodex::XMShell* LQSGSectionSubdivideDialog::build_shell()
{
    return open_shell("SgridSubdivideSectionShell", tr("Subdivide SGrid Sections"),
                      tr("Create new SGrid by subdividing cell sections of existing SGrid"),
                      new DeleteAction<LQSGSectionSubdivideDialog>(this));
}

bool LQSGSectionSubdivideDialog::build_box(QWidget* parent, QVBoxLayout* layout)
{
    layout->addWidget(build_definition(parent));
    layout->addWidget(build_options(parent, false));
    isochore_ = add_option("isochore_", tr("Cell thickness as isochore"),
                           tr("If on, the thickness will be computed vertically, else along fiber."));
    layout->addWidget(build_graphic_attributes(parent));
    axis_manager_ = std::make_unique<LQSGSubdivideAxisEditorMngr>(axis_name(), this);
    layout->addWidget(build_section_editor(parent), 1);
    return true;
}

void LQSGSectionSubdivideDialog::on_help()
{
    show_help(help_document_key("LQSGSectionSubdivide"));
}

void LQSGSectionSubdivideDialog::updatePaintedSections()
{
    if (!can_paint())
        return;
    std::ostringstream triples = command_stream();
    const long count = axis_manager_->write_painted_sections(triples);
    paint_sections(axis_manager_->axis(), triples.str(), count);
}

bool LQSGSectionSubdivideDialog::process()
{
    if (is_executing() || !check_input())
        return false;

    std::ostringstream command = command_stream();
    command << "lodex sgrid_subdivide_multiple_sections name " << to_cstring(new_grid_name()) << " sgrid "
            << to_cstring(sgrid_name()) << " direction \"" << axis_manager_->get_axis_direction() << "\" sections ";
    axis_manager_->write_sections(command);
    command << " copy_properties " << flag_text(copies_properties()) << " copy_regions " << flag_text(copies_regions())
            << " copy_style " << 1 << " vertical_cell_thickness " << flag_text(isochore_->isChecked());
    execute(command);
    return true;
}

} // namespace Kelvane
