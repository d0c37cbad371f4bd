#include "sgresize/LQSGManualAxisEditorMngr.h"

#include "sgresize/ColumnLabel.h"

#include <Lodex/qtools/QtText.h>
#include <Lodex/utils/Logger.h>

#include <QHeaderView>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QTableWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace Kelvane {

using Lodex::Format;
using Lodex::Logger;
using Lodex::to_cstring;

namespace {

/// Scrolls the rows; asks for room for some rows even when there is only one.
class RowsArea : public QScrollArea {
public:
    using QScrollArea::QScrollArea;

    [[nodiscard]] QSize sizeHint() const override
    {
        const auto* table = qobject_cast<const QTableWidget*>(widget());
        const int row = table && table->rowCount() > 0 ? table->rowHeight(0) : 0;
        return {minimumWidth(), wanted_rows * row + 2 * frameWidth()};
    }

    static constexpr int least_rows = 2;

private:
    static constexpr int wanted_rows = 5;
};

} // namespace

LQSGManualAxisEditorMngr::LQSGManualAxisEditorMngr(const QString& axis_name, LQSGSectionDialog* dialog)
    : LQSGAxisEditorMngr(axis_name, dialog)
{
}

LQSGManualAxisEditorMngr::LQSGManualAxisEditorMngr(const LQSGManualAxisEditorMngr& other) : LQSGAxisEditorMngr(other) {}

LQSGManualAxisEditorMngr& LQSGManualAxisEditorMngr::operator=(const LQSGManualAxisEditorMngr& other)
{
    LQSGAxisEditorMngr::operator=(other);
    return *this;
}

LQSGManualAxisEditorMngr::~LQSGManualAxisEditorMngr() = default;

bool LQSGManualAxisEditorMngr::check_intersections()
{
    const int rows = sections_.count();
    for (int i = 0; i < rows; ++i) {
        const int a1 = section(i)->from_section();
        const int a2 = section(i)->to_section();
        for (int j = i + 1; j < rows; ++j) {
            const int b1 = section(j)->from_section();
            const int b2 = section(j)->to_section();
            const bool reaches_start = b1 <= a1 && b2 >= a1;
            const bool starts_inside = b1 > a1 && b1 <= a2;
            if (!reaches_start && !starts_inside)
                continue;
            Logger::fatal(
                Format(to_cstring(tr("Section Editor intersection: Read message & please check your data\n"))));
            // The direction is named only when the later row starts inside the earlier one.
            Format details(to_cstring(
                reaches_start ? tr("Section Editor %1 from %2 to %3 intersects Section Editor %4 from %5 to %6\n")
                              : tr("Direction %1. Section Editor %2 from %3 to %4 intersects "
                                   "Section Editor %5 from %6 to %7\n")));
            if (!reaches_start)
                details.arg(get_axis_direction());
            for (const int number : {i + 1, a1, a2, j + 1, b1, b2})
                details.arg(number);
            Logger::error(details);
            return false;
        }
    }
    return true;
}

void LQSGManualAxisEditorMngr::update_manual_frame(long nodes)
{
    for (int i = 0; i < sections_.count(); ++i)
        section(i)->update_max(nodes - 1);
}

long LQSGManualAxisEditorMngr::number_of_sections() const
{
    return sections_.count();
}

void LQSGManualAxisEditorMngr::update_axis() {}

void LQSGManualAxisEditorMngr::update_pick_axis()
{
    const int number = axis();
    for (int i = 0; i < sections_.count(); ++i)
        section(i)->set_pick_axis(number);
}

void LQSGManualAxisEditorMngr::commit()
{
    for (int i = 0; i < sections_.count(); ++i)
        section(i)->commit();
}

void LQSGManualAxisEditorMngr::set_table(QTableWidget* table)
{
    table_ = table;
}

void LQSGManualAxisEditorMngr::build_scrolled_table(QWidget* parent, QVBoxLayout* layout, const QString& header,
                                                    const QString& caption, int columns)
{
    header_ = new ColumnLabel(header, parent);
    header_->setObjectName("sections_header");
    layout->addWidget(header_);
    caption_ = new ColumnLabel(caption, parent);
    caption_->setObjectName("sections_caption");
    layout->addWidget(caption_);

    scroll_ = new RowsArea(parent);
    scroll_->setObjectName("scrollview");
    scroll_->setFocusPolicy(Qt::NoFocus);
    scroll_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    layout->addWidget(scroll_, 1);

    auto* table = new QTableWidget(0, columns);
    table->setObjectName("table");
    table->horizontalHeader()->hide();
    table->verticalHeader()->hide();
    table->setShowGrid(false);
    table->setFrameShape(QFrame::NoFrame);
    table->setSelectionMode(QAbstractItemView::NoSelection);
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table->setFocusPolicy(Qt::NoFocus);
    table->setTabKeyNavigation(false);
    table->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    table->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    table->viewport()->setBackgroundRole(QPalette::Window);
    scroll_->setWidget(table);
    set_table(table);
}

void LQSGManualAxisEditorMngr::build_first_row(std::unique_ptr<LQSGSectionEditor> editor)
{
    const int row = table_->rowCount();
    table_->insertRow(row);
    editor->build(table_, row);
    sections_.append(std::move(editor));
    enable_remove_buttons();
    fit_table();
}

void LQSGManualAxisEditorMngr::insert_row(LQSGSectionEditor* after, std::unique_ptr<LQSGSectionEditor> editor)
{
    const int index = sections_.find(after);
    const int row = index >= 0 ? index + 1 : table_->rowCount();
    table_->insertRow(row);
    editor->build(table_, row);
    if (after) {
        editor->update_max(after->max());
        editor->set_min(after->to_section());
    }
    LQSGSectionEditor* added = sections_.insert(row, std::move(editor));
    enable_remove_buttons();
    fit_table();
    if (scroll_)
        scroll_->ensureVisible(0, table_->rowViewportPosition(row) + table_->rowHeight(row), 0, table_->rowHeight(row));
    else
        table_->scrollTo(table_->model()->index(row, 0));
    added->tab_order().first()->setFocus(Qt::OtherFocusReason);
    updatePaintedSections();
    updateCells();
}

void LQSGManualAxisEditorMngr::remove_row(LQSGSectionEditor* editor)
{
    const int index = sections_.find(editor);
    if (index < 0 || sections_.count() == 1)
        return;
    // The click that asks for this comes from inside the row: cut it off now, let it go from the event loop.
    std::unique_ptr<LQSGSectionEditor> removed = sections_.take(index);
    removed->release();
    table_->removeRow(index);
    removed.release()->deleteLater();
    enable_remove_buttons();
    fit_table();
    updatePaintedSections();
    updateCells();
}

void LQSGManualAxisEditorMngr::enable_remove_buttons() const
{
    for (int i = 0; i < sections_.count(); ++i)
        section(i)->remove_button()->setEnabled(sections_.count() > 1);
}

void LQSGManualAxisEditorMngr::fit_table()
{
    chain_tabs();
    table_->resizeRowsToContents();
    table_->resizeColumnsToContents();
    if (!scroll_) {
        // A table with titles of its own scrolls by itself, but only up and down.
        const int wide = table_->horizontalHeader()->length() + table_->verticalScrollBar()->sizeHint().width() +
                         2 * table_->frameWidth();
        table_->setMinimumWidth(std::max(table_->minimumWidth(), wide));
        return;
    }
    const QStringList titles = header_->titles();
    const bool titled = titles.size() <= table_->columnCount();
    const int gap = table_->fontMetrics().horizontalAdvance(QLatin1Char('M'));
    for (int column = 0; titled && column < titles.size(); ++column) {
        const int title = header_->fontMetrics().horizontalAdvance(titles[column]) + gap;
        table_->setColumnWidth(column, std::max(table_->columnWidth(column), title));
    }

    const int width = table_->horizontalHeader()->length();
    const int height = table_->verticalHeader()->length();
    table_->setFixedSize(width, height);
    const int frame = 2 * scroll_->frameWidth();
    scroll_->setMinimumWidth(width + scroll_->verticalScrollBar()->sizeHint().width() + frame);
    scroll_->setMinimumHeight(RowsArea::least_rows * table_->rowHeight(0) + frame);

    if (!titled)
        return;
    const int cell_margin = 3 + scroll_->frameWidth();
    QList<int> lefts;
    for (int column = 0; column < titles.size(); ++column)
        lefts.append(table_->horizontalHeader()->sectionPosition(column) + cell_margin);
    header_->set_lefts(lefts);
    // The caption names the table and, when it has a second part, the last titled column.
    if (caption_->titles().size() == 2)
        caption_->set_lefts({lefts.first(), lefts.last()});
    else
        caption_->set_lefts({lefts.first()});
}

void LQSGManualAxisEditorMngr::chain_tabs() const
{
    QWidget* last = nullptr;
    for (int i = 0; i < sections_.count(); ++i) {
        for (QWidget* widget : section(i)->tab_order()) {
            if (last)
                QWidget::setTabOrder(last, widget);
            last = widget;
        }
    }
}

} // namespace Kelvane
