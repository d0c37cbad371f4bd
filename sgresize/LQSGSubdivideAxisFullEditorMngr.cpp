#include "sgresize/LQSGSubdivideAxisFullEditorMngr.h"

#include <QCheckBox>
#include <QFrame>
#include <QVBoxLayout>

namespace Kelvane {

LQSGSubdivideAxisFullEditorMngr::LQSGSubdivideAxisFullEditorMngr(const QString& axis_name, LQSGSectionDialog* dialog)
    : LQSGAxisEditorMngr(axis_name, dialog), LQSGSubdivideAxisEditorMngr(axis_name, dialog)
{
}

LQSGSubdivideAxisFullEditorMngr::LQSGSubdivideAxisFullEditorMngr(const LQSGSubdivideAxisFullEditorMngr& other)
    : LQSGAxisEditorMngr(other), QObject(), LQSGSubdivideAxisEditorMngr(other)
{
}

LQSGSubdivideAxisFullEditorMngr&
LQSGSubdivideAxisFullEditorMngr::operator=(const LQSGSubdivideAxisFullEditorMngr& other)
{
    LQSGSubdivideAxisEditorMngr::operator=(other);
    return *this;
}

bool LQSGSubdivideAxisFullEditorMngr::build_editor_axis(QWidget* parent, QVBoxLayout* layout)
{
    const bool areal = axis_name() == axis_text(1) || axis_name() == axis_text(2);
    const QString enable = tr("Enabled/Disabled") + axis_name();
    parts_ = build_axis_table(parent, layout, enable, enable + tr(" as subdivided axis"),
                              tr("Sections to be subdivided"),
                              {tr("From cell"), tr("To cell"), tr("Amount"), areal ? tr("Pattern") : tr("Stratigraphy"),
                               areal ? tr("Width") : tr("Thickness"), QString(), QString()});
    set_table(parts_.table);
    build_sections_panel();
    using Self = LQSGSubdivideAxisFullEditorMngr;
    connect(parts_.enable_box, &QCheckBox::toggled, parts_.frame, &QFrame::setEnabled);
    connect(parts_.enable_box, &QCheckBox::toggled, this, &Self::paintSections);
    connect(parts_.enable_box, &QCheckBox::toggled, this, qOverload<bool>(&Self::updateCells));

    if (axis_name() == axis_text(3)) {
        isochore_box_ =
            add_box(parent, "isochore_box_", tr("New cell thickness value is given as isochore"),
                    tr("If on, the cell thickness will be computed in reference to Z, else along fiber."));
    }
    percent_box_ =
        areal ? add_box(parent, "percent_box_",
                        tr("New cell width value is given as percent of the original cell width"),
                        tr("If on, the entered width represents percents of the original cell width."))
              : add_box(parent, "percent_box_",
                        tr("New cell thickness value is given as percent of the original cell thickness"),
                        tr("If on, the entered thickness represents percents of the original cell thickness."));
    return true;
}

QCheckBox* LQSGSubdivideAxisFullEditorMngr::add_box(QWidget* parent, const char* name, const QString& text,
                                                    const QString& tip)
{
    auto* row = new QHBoxLayout;
    parts_.layout->addLayout(row);
    auto* box = new QCheckBox(text, parent);
    box->setObjectName(name);
    box->setToolTip(tip);
    row->addWidget(box);
    row->addStretch(1);
    return box;
}

bool LQSGSubdivideAxisFullEditorMngr::is_vertical() const
{
    return isochore_box_ && isochore_box_->isChecked();
}

bool LQSGSubdivideAxisFullEditorMngr::is_percent() const
{
    return percent_box_ && percent_box_->isChecked();
}

void LQSGSubdivideAxisFullEditorMngr::paintSections(bool)
{
    updatePaintedSections();
}

void LQSGSubdivideAxisFullEditorMngr::updateCells(bool)
{
    updateCells();
}

} // namespace Kelvane
