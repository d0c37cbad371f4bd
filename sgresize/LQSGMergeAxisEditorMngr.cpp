#include "sgresize/LQSGMergeAxisEditorMngr.h"

#include "sgresize/LQSGSectionDialog.h"

#include <Lodex/qtools/QtText.h>
#include <Lodex/utils/Logger.h>
#include <Lodex/volumes/SGrid.h>
#include <Lodex/volumes/SGridActivityModel.h>

#include <QTableWidget>
#include <QVBoxLayout>

#include <memory>

namespace Kelvane {

using Lodex::Format;
using Lodex::Logger;
using Lodex::to_cstring;

LQSGMergeAxisEditorMngr::LQSGMergeAxisEditorMngr(const QString& axis_name, LQSGSectionDialog* dialog)
    : LQSGAxisEditorMngr(axis_name, dialog), LQSGManualAxisEditorMngr(axis_name, dialog)
{
}

LQSGMergeAxisEditorMngr::LQSGMergeAxisEditorMngr(const LQSGMergeAxisEditorMngr& other)
    : LQSGAxisEditorMngr(other), LQSGManualAxisEditorMngr(other)
{
}

LQSGMergeAxisEditorMngr& LQSGMergeAxisEditorMngr::operator=(const LQSGMergeAxisEditorMngr& other)
{
    LQSGManualAxisEditorMngr::operator=(other);
    return *this;
}

bool LQSGMergeAxisEditorMngr::build_editor_axis(QWidget* parent, QVBoxLayout* layout)
{
    build_scrolled_table(parent, layout,
                         tr("    From cell            To cell             With step    Section to keep"),
                         tr("Sections to be merged                                      Property"),
                         LQSGSectionMergeEditor::ColumnCount);
    build_sections_panel(true);
    return true;
}

void LQSGMergeAxisEditorMngr::build_sections_panel(bool with_property)
{
    build_first_row(std::make_unique<LQSGSectionMergeEditor>(this, with_property));
}

void LQSGMergeAxisEditorMngr::add_section(LQSGSectionMergeEditor* after, bool with_property)
{
    insert_row(after, std::make_unique<LQSGSectionMergeEditor>(this, with_property));
}

void LQSGMergeAxisEditorMngr::remove_section(LQSGSectionMergeEditor* editor)
{
    remove_row(editor);
}

LQSGSectionMergeEditor* LQSGMergeAxisEditorMngr::get_sections(long i) const
{
    return static_cast<LQSGSectionMergeEditor*>(section(i));
}

bool LQSGMergeAxisEditorMngr::check_intersections()
{
    return LQSGManualAxisEditorMngr::check_intersections() && check_units();
}

bool LQSGMergeAxisEditorMngr::check_units() const
{
    const Lodex::SGrid* grid = dialog() ? dialog()->get_sgrid() : nullptr;
    const Lodex::SGridActivityModel* model = grid ? grid->sgrid_activity_model() : nullptr;
    if (axis_name() != axis_text(3) || !model)
        return true;
    for (long row = 0; row < number_of_sections(); ++row) {
        const LQSGSectionMergeEditor& editor = *get_sections(row);
        const long step = editor.jump();
        for (long g = editor.from_section() - 1; g + step <= editor.to_section(); g += step) {
            const long top_unit = model->layer_index(g);
            const long base_unit = model->layer_index(g + step - 1);
            if (top_unit == base_unit)
                continue;
            Logger::fatal(Format(to_cstring(
                tr("Section Editor Overlaps a Stratigraphic Unit: Read message & please check your data\n"))));
            Logger::error(Format(to_cstring(tr("Section Editor %1 overlaps stratigraphic unit %2 and %3\n")))
                              .arg(row + 1)
                              .arg(top_unit + 1)
                              .arg(base_unit + 1));
            return false;
        }
    }
    return true;
}

} // namespace Kelvane
