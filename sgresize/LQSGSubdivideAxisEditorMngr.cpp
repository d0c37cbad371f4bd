#include "sgresize/LQSGSubdivideAxisEditorMngr.h"

#include "sgresize/LQSGSectionDialog.h"

#include <Lodex/qtools/QtText.h>
#include <Lodex/volumes/SGrid.h>
#include <Lodex/volumes/SGridActivityModel.h>

#include <memory>

namespace Kelvane {

using Lodex::to_cstring;

LQSGSubdivideAxisEditorMngr::LQSGSubdivideAxisEditorMngr(const QString& axis_name, LQSGSectionDialog* dialog)
    : LQSGAxisEditorMngr(axis_name, dialog), LQSGManualAxisEditorMngr(axis_name, dialog)
{
}

LQSGSubdivideAxisEditorMngr::LQSGSubdivideAxisEditorMngr(const LQSGSubdivideAxisEditorMngr& other)
    : LQSGAxisEditorMngr(other), LQSGManualAxisEditorMngr(other)
{
}

LQSGSubdivideAxisEditorMngr& LQSGSubdivideAxisEditorMngr::operator=(const LQSGSubdivideAxisEditorMngr& other)
{
    LQSGManualAxisEditorMngr::operator=(other);
    return *this;
}

bool LQSGSubdivideAxisEditorMngr::build_editor_axis(QWidget* parent, QVBoxLayout* layout)
{
    build_scrolled_table(
        parent, layout,
        tr("    From cell            To cell               Amount     Stratigraphy            Thickness"),
        tr("Sections to be subdivided"), LQSGSectionSubdivideEditor::ColumnCount);
    build_sections_panel();
    return true;
}

void LQSGSubdivideAxisEditorMngr::update_axis()
{
    for (long row = 0; row < number_of_sections(); ++row)
        get_sections(row)->update_strati_cb();
}

void LQSGSubdivideAxisEditorMngr::build_sections_panel()
{
    build_first_row(std::make_unique<LQSGSectionSubdivideEditor>(this));
}

void LQSGSubdivideAxisEditorMngr::add_section(LQSGSectionSubdivideEditor* after)
{
    insert_row(after, std::make_unique<LQSGSectionSubdivideEditor>(this));
}

void LQSGSubdivideAxisEditorMngr::remove_section(LQSGSectionSubdivideEditor* editor)
{
    remove_row(editor);
}

LQSGSectionSubdivideEditor* LQSGSubdivideAxisEditorMngr::get_sections(long i) const
{
    return static_cast<LQSGSectionSubdivideEditor*>(section(i));
}

const Lodex::LayerInfo* LQSGSubdivideAxisEditorMngr::layer_of(long section) const
{
    const Lodex::SGrid* grid = dialog() ? dialog()->get_sgrid() : nullptr;
    const Lodex::SGridActivityModel* model = grid ? grid->sgrid_activity_model() : nullptr;
    if (axis_name() != axis_text(3) || !model)
        return nullptr;
    return model->layer(model->layer_index(section));
}

void LQSGSubdivideAxisEditorMngr::write_sections(std::ostream& text) const
{
    const char* separator = "";
    for (long row = 0; row < number_of_sections(); ++row) {
        const LQSGSectionSubdivideEditor& editor = *get_sections(row);
        for (int section = editor.from_section() - 1; section < editor.to_section(); ++section) {
            text << separator << section << '+' << editor.amount_section() - 1 << '+' << editor.strati_type() << '+'
                 << to_cstring(editor.thickness());
            separator = "+";
        }
    }
}

long LQSGSubdivideAxisEditorMngr::write_painted_sections(std::ostream& triples) const
{
    const int number = axis();
    long count = 0;
    for (long row = 0; row < number_of_sections(); ++row) {
        const LQSGSectionSubdivideEditor& editor = *get_sections(row);
        for (int section = editor.from_section() - 1; section < editor.to_section(); ++section, ++count)
            triples << ' ' << number << " 1 " << section << ' ';
    }
    return count;
}

} // namespace Kelvane
