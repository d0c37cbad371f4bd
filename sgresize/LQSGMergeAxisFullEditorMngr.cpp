#include "sgresize/LQSGMergeAxisFullEditorMngr.h"

#include <QCheckBox>
#include <QFrame>
#include <QVBoxLayout>

namespace Kelvane {

LQSGMergeAxisFullEditorMngr::LQSGMergeAxisFullEditorMngr(const QString& axis_name, LQSGSectionDialog* dialog)
    : LQSGAxisEditorMngr(axis_name, dialog), LQSGMergeAxisEditorMngr(axis_name, dialog)
{
}

LQSGMergeAxisFullEditorMngr::LQSGMergeAxisFullEditorMngr(const LQSGMergeAxisFullEditorMngr& other)
    : LQSGAxisEditorMngr(other), QObject(), LQSGMergeAxisEditorMngr(other)
{
}

LQSGMergeAxisFullEditorMngr& LQSGMergeAxisFullEditorMngr::operator=(const LQSGMergeAxisFullEditorMngr& other)
{
    LQSGMergeAxisEditorMngr::operator=(other);
    return *this;
}

bool LQSGMergeAxisFullEditorMngr::build_editor_axis(QWidget* parent, QVBoxLayout* layout)
{
    parts_ = build_axis_table(
        parent, layout, tr("Enabled/Disabled %1").arg(axis_name()),
        tr("Enabled/Disabled %1 as merged axis").arg(axis_name()), tr("Sections to be merged"),
        {tr("From cell"), tr("To cell"), tr("With step"), tr("Property section to keep"), QString(), QString()});
    set_table(parts_.table);
    build_sections_panel(true);
    using Self = LQSGMergeAxisFullEditorMngr;
    connect(parts_.enable_box, &QCheckBox::toggled, parts_.frame, &QFrame::setEnabled);
    connect(parts_.enable_box, &QCheckBox::toggled, this, &Self::paintSections);
    connect(parts_.enable_box, &QCheckBox::toggled, this, qOverload<bool>(&Self::updateCells));
    return true;
}

void LQSGMergeAxisFullEditorMngr::paintSections(bool)
{
    updatePaintedSections();
}

void LQSGMergeAxisFullEditorMngr::updateCells(bool)
{
    updateCells();
}

} // namespace Kelvane
