#pragma once

#include "sgresize/LQSGridCellSectionSelectToolAction.h"

#include <Lodex/utils/Value.h>

#include <QList>
#include <QObject>
#include <QPointer>
#include <QPushButton>

#include <initializer_list>

class QSpinBox;
class QTableWidget;

namespace Kelvane {

class LQSGManualAxisEditorMngr;

/// One row of a section table: a run of cell sections, From to To (1-based, inclusive), with what its dialog adds to
/// it. The table owns the row's widgets, the manager owns the row.
class LQSGSectionEditor : public QObject {
    Q_OBJECT

public:
    /// The run is that of a row that no grid bounds yet.
    explicit LQSGSectionEditor(LQSGManualAxisEditorMngr* manager);
    ~LQSGSectionEditor() override;

    /// Makes the row's widgets in that row of the table and connects them.
    virtual void build(QTableWidget* table, int row) = 0;
    /// Bounds the row by n cell sections, n > 0; else does nothing.
    virtual void update_max(long n) = 0;
    /// Lets the row start behind cell section n, n > 0; else does nothing.
    virtual void set_min(long n);
    /// Points the row's pick tools to another axis.
    virtual void set_pick_axis(int axis);
    /// Takes over what has been typed but not ended with Enter.
    void commit();
    /// Cuts the row off from its widgets and from the dialog; a pick that still waits for it is called off.
    void release();

    [[nodiscard]] int from_section() const { return from_value_->value(); }
    [[nodiscard]] int to_section() const { return to_value_->value(); }
    /// Upper bound of From.
    [[nodiscard]] long max() const;
    /// Upper bound of To: the last section that the row may reach.
    [[nodiscard]] long allowed_max() const;
    [[nodiscard]] QPushButton* remove_button() const { return remove_button_; }
    [[nodiscard]] LQSGridCellSectionSelectToolAction* pick_from() const { return pick_from_.get(); }
    [[nodiscard]] LQSGridCellSectionSelectToolAction* pick_to() const { return pick_to_.get(); }
    /// The row's widgets in the order of the Tab key.
    [[nodiscard]] virtual QList<QWidget*> tab_order() const = 0;

public slots:
    virtual void add_a_section() = 0;
    virtual void remove_a_section() = 0;
    void paintSections(int);
    virtual void updateCells(int);
    /// From changed.
    virtual void setSpinBoxMinMax1(int) = 0;
    /// To changed.
    virtual void setSpinBoxMinMax2(int) = 0;

protected:
    using PickTool = LQSGridCellSectionSelectToolAction;

    // Bounds of a row that no grid bounds yet.
    static constexpr int first_section = 1;
    static constexpr int last_section = 9999;

    /// Takes a widget into the row: release() cuts it off, and it does not turn under the wheel while the table
    /// scrolls.
    void adopt(QWidget* widget);
    /// An adopted spin box that takes a typed number as a whole.
    [[nodiscard]] QSpinBox* new_box(const char* name, const QString& tip, int minimum, int maximum);
    /// The box bound to the value and a button that starts the pick tool, as one cell of the table.
    void set_picked_cell(QTableWidget* table, int row, int column, QSpinBox* box, Lodex::IntValue* value,
                         PickTool* tool);
    void set_cell(QTableWidget* table, int row, int column, QWidget* widget);
    /// The boxes, each with its pick button behind it where it has one; null boxes are left out.
    [[nodiscard]] static QList<QWidget*> with_pick_buttons(std::initializer_list<QSpinBox*> boxes);
    /// The buttons that add and remove rows, in two columns from this one on.
    void build_row_buttons(QTableWidget* table, int row, int column);
    [[nodiscard]] LQSGManualAxisEditorMngr* manager() const { return manager_; }

    Lodex::Ref<Lodex::IntValue> from_value_;
    Lodex::Ref<Lodex::IntValue> to_value_;
    QPointer<QSpinBox> from_;
    QPointer<QSpinBox> to_;
    QPointer<QPushButton> add_button_;
    QPointer<QPushButton> remove_button_;
    Lodex::Ref<PickTool> pick_from_;
    Lodex::Ref<PickTool> pick_to_;

private:
    LQSGManualAxisEditorMngr* manager_;
    QList<QPointer<QWidget>> widgets_;
    QList<Lodex::Ref<PickTool>> tools_; // those behind a button
};

} // namespace Kelvane
