#pragma once

#include "sgresize/LQSGAxisEditorMngr.h"
#include "sgresize/LQSGSectionEditor.h"

#include <Lodex/utils/PtrList.h>

#include <QPointer>
#include <QScrollArea>
#include <QTableWidget>

#include <memory>

namespace Kelvane {

class ColumnLabel;

/// An axis whose cell sections the user lists by hand, one table row per run. Row i of the table is editor i.
///
/// A copy takes over the axis only: rows and table stay with the original, the copy has none.
class LQSGManualAxisEditorMngr : public virtual LQSGAxisEditorMngr {
    Q_DECLARE_TR_FUNCTIONS(Kelvane::LQSGManualAxisEditorMngr)

public:
    LQSGManualAxisEditorMngr(const QString& axis_name, LQSGSectionDialog* dialog);
    LQSGManualAxisEditorMngr(const LQSGManualAxisEditorMngr& other);
    LQSGManualAxisEditorMngr& operator=(const LQSGManualAxisEditorMngr& other);
    ~LQSGManualAxisEditorMngr() override;

    /// False, with a message, when two rows share a cell section.
    virtual bool check_intersections();
    /// Bounds all rows by the grid: nodes is its number of nodes along the axis, one more than its cell sections.
    virtual void update_manual_frame(long nodes);
    [[nodiscard]] virtual long number_of_sections() const;
    /// Lets each row follow a change of axis or grid, before the rows are bounded.
    virtual void update_axis();

    [[nodiscard]] QTableWidget* table() const { return table_; }
    [[nodiscard]] bool holds(const LQSGSectionEditor* editor) const { return sections_.find(editor) >= 0; }
    /// Points the pick tools of all rows to the current axis.
    void update_pick_axis();
    /// Takes over what has been typed into the rows but not ended with Enter.
    void commit();

protected:
    /// The i-th row from the top, 0-based; null outside.
    [[nodiscard]] LQSGSectionEditor* section(long i) const { return sections_.at(static_cast<int>(i)); }

    /// Shows the rows in this table, which the caller places.
    void set_table(QTableWidget* table);
    /// Builds the header line, the caption and a scrolled table of that many columns. The header holds the titles of
    /// the first columns with two blanks or more between them.
    void build_scrolled_table(QWidget* parent, QVBoxLayout* layout, const QString& header, const QString& caption,
                              int columns);
    /// The first row, whose remove button is disabled.
    void build_first_row(std::unique_ptr<LQSGSectionEditor> editor);
    /// A new row below `after`, or at the end when that is not in the list. It may reach as far as `after` may start,
    /// and starts behind it.
    void insert_row(LQSGSectionEditor* after, std::unique_ptr<LQSGSectionEditor> editor);
    /// The last row stays.
    void remove_row(LQSGSectionEditor* editor);

private:
    /// A row that is alone cannot be removed.
    void enable_remove_buttons() const;
    void fit_table();
    void chain_tabs() const;

    QPointer<QTableWidget> table_;
    QPointer<QScrollArea> scroll_;
    QPointer<ColumnLabel> header_;
    QPointer<ColumnLabel> caption_;
    Lodex::PtrList<LQSGSectionEditor> sections_;
};

} // namespace Kelvane
