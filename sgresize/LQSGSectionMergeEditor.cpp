#include "sgresize/LQSGSectionMergeEditor.h"

#include "sgresize/LQSGMergeAxisEditorMngr.h"
#include "sgresize/SpinBoxValue.h"

#include <QPushButton>
#include <QSpinBox>
#include <QTableWidget>

#include <algorithm>

namespace Kelvane {

namespace {

constexpr int smallest_step = 2;

} // namespace

LQSGSectionMergeEditor::LQSGSectionMergeEditor(LQSGMergeAxisEditorMngr* manager, bool with_property)
    : LQSGSectionEditor(manager), with_property_(with_property),
      step_value_(new Lodex::IntValue(smallest_step)), property_value_(new Lodex::IntValue(first_section)),
      pick_prop_(new PickTool(property_value_.get(), manager->axis())), merge_manager_(manager)
{
}

void LQSGSectionMergeEditor::build(QTableWidget* table, int row)
{
    from_ = new_box("from_", tr("First cell section index"), first_section, last_section - 1);
    set_picked_cell(table, row, FromColumn, from_, from_value_.get(), pick_from_.get());
    to_ = new_box("to_", tr("Last cell section index"), smallest_step, last_section);
    set_picked_cell(table, row, ToColumn, to_, to_value_.get(), pick_to_.get());

    step_ = new_box("step_", tr("Step between first and last section"), smallest_step, smallest_step);
    new SpinBoxValue(step_, step_value_.get());
    set_cell(table, row, StepColumn, step_);

    if (with_property_) {
        property_section_ = new_box("property_section_", tr("Cell section index for property reference"),
                                    from_->value(), to_->value());
        set_picked_cell(table, row, PropertyColumn, property_section_, property_value_.get(), pick_prop_.get());
    }
    build_row_buttons(table, row, AddColumn);

    connect(from_, &QSpinBox::valueChanged, this, &LQSGSectionMergeEditor::setSpinBoxMinMax1);
    connect(from_, &QSpinBox::valueChanged, this, &LQSGSectionMergeEditor::paintSections);
    connect(from_, &QSpinBox::valueChanged, this, &LQSGSectionMergeEditor::updateCells);
    connect(to_, &QSpinBox::valueChanged, this, &LQSGSectionMergeEditor::setSpinBoxMinMax2);
    connect(to_, &QSpinBox::valueChanged, this, &LQSGSectionMergeEditor::paintSections);
    connect(to_, &QSpinBox::valueChanged, this, &LQSGSectionMergeEditor::updateCells);
    connect(step_, &QSpinBox::valueChanged, this, &LQSGSectionMergeEditor::paintSections);
    connect(step_, &QSpinBox::valueChanged, this, &LQSGSectionMergeEditor::updateCells);
}

void LQSGSectionMergeEditor::update_max(long n)
{
    if (n <= 0 || !from_ || !to_)
        return;
    // An axis of one section leaves nothing to merge; its only row is then 1 to 1, which holds no group.
    const int last = static_cast<int>(n);
    from_->setRange(first_section, std::max(last - 1, first_section));
    to_->setRange(std::min(smallest_step, last), last);
    if (property_section_)
        property_section_->setMaximum(to_->value());
    if (to_->value() > last) {
        from_->setValue(last - 1);
        to_->setValue(last);
    }
}

void LQSGSectionMergeEditor::setSpinBoxMinMax1(int)
{
    if (to_->value() <= from_->value())
        to_->setValue(from_->value() + 1);
    follow_run();
}

void LQSGSectionMergeEditor::setSpinBoxMinMax2(int)
{
    if (from_->value() >= to_->value())
        from_->setValue(to_->value() - 1);
    follow_run();
}

void LQSGSectionMergeEditor::follow_run()
{
    if (property_section_)
        property_section_->setRange(from_->value(), to_->value()); // clamps the value as well
    step_->setMaximum(std::max(to_->value() - from_->value() + 1, smallest_step));
}

void LQSGSectionMergeEditor::set_pick_axis(int axis)
{
    LQSGSectionEditor::set_pick_axis(axis);
    pick_prop_->set_axis(axis);
}

QList<QWidget*> LQSGSectionMergeEditor::tab_order() const
{
    QList<QWidget*> order = with_pick_buttons({from_, to_, step_, property_section_});
    order.append({add_button_.data(), remove_button_.data()});
    return order;
}

void LQSGSectionMergeEditor::add_a_section()
{
    if (manager())
        merge_manager_->add_section(this, with_property_);
}

void LQSGSectionMergeEditor::remove_a_section()
{
    if (manager())
        merge_manager_->remove_section(this);
}

} // namespace Kelvane
