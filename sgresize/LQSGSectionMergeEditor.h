#pragma once

#include "sgresize/LQSGSectionEditor.h"

namespace Kelvane {

class LQSGMergeAxisEditorMngr;

/// A run of cell sections that is merged in groups of `jump()` sections. The section to keep names the one whose
/// property values the merged cells take.
///
/// The groups start at g = from - 1 + n * jump (0-based, n = 0, 1, ...) as long as g + jump <= to; group g covers the
/// sections g to g + jump - 1. What is left behind the last whole group is not merged.
class LQSGSectionMergeEditor : public LQSGSectionEditor {
    Q_OBJECT

public:
    LQSGSectionMergeEditor(LQSGMergeAxisEditorMngr* manager, bool with_property);

    void build(QTableWidget* table, int row) override;
    void update_max(long n) override;
    void set_pick_axis(int axis) override;

    /// The step.
    [[nodiscard]] int jump() const { return step_value_->value(); }
    /// The section to keep, 1-based.
    [[nodiscard]] int ref_section() const { return property_value_->value(); }
    [[nodiscard]] LQSGridCellSectionSelectToolAction* pick_prop() const { return pick_prop_.get(); }
    [[nodiscard]] QList<QWidget*> tab_order() const override;

    /// Columns of the table.
    enum Column { FromColumn, ToColumn, StepColumn, PropertyColumn, AddColumn, RemoveColumn, ColumnCount };

public slots:
    void add_a_section() override;
    void remove_a_section() override;
    void setSpinBoxMinMax1(int) override;
    void setSpinBoxMinMax2(int) override;

private:
    /// Bounds the section to keep and the step by the run.
    void follow_run();

    bool with_property_;
    Lodex::Ref<Lodex::IntValue> step_value_;
    Lodex::Ref<Lodex::IntValue> property_value_;
    QPointer<QSpinBox> step_;
    QPointer<QSpinBox> property_section_;
    Lodex::Ref<PickTool> pick_prop_;
    LQSGMergeAxisEditorMngr* merge_manager_;
};

} // namespace Kelvane
