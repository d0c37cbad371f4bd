#include "flowunit/LQTable.h"

#include "flowunit/LQFlowUnitWidget.h"

#include <QApplication>
#include <QBrush>
#include <QClipboard>
#include <QKeyEvent>
#include <QStyledItemDelegate>

namespace Kelvane {

namespace {

/// A cell that answers with the colour of the moment, so that the model never holds a stale one.
class Cell : public QTableWidgetItem {
public:
    [[nodiscard]] QVariant data(int role) const override
    {
        if (role == Qt::BackgroundRole || role == Qt::ForegroundRole) {
            const auto* table = qobject_cast<const LQTable*>(tableWidget());
            const QColor color = table ? table->cellColor(row(), column()) : QColor();
            if (!color.isValid())
                return {};
            return QBrush(role == Qt::BackgroundRole ? color : LQTable::textColorOn(color));
        }
        if (role == Qt::TextAlignmentRole)
            return QVariant(Qt::AlignCenter);
        return QTableWidgetItem::data(role);
    }
};

/// Paints a cell as the table's owner wants it.
class CellDelegate : public QStyledItemDelegate {
public:
    explicit CellDelegate(LQTable* table) : QStyledItemDelegate(table), table_(table) {}

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override
    {
        QStyledItemDelegate::initStyleOption(option, index);
        const QColor color = table_->cellColor(index.row(), index.column());
        if (!color.isValid())
            return;
        option->backgroundBrush = color;
        option->palette.setColor(QPalette::Text, LQTable::textColorOn(color));
    }

private:
    LQTable* table_;
};

} // namespace

LQTable::LQTable(LQFlowUnitWidget* owner, QWidget* parent) : QTableWidget(parent), owner_(owner)
{
    setItemDelegate(new CellDelegate(this));
    setEditTriggers(NoEditTriggers);
    setHorizontalScrollMode(ScrollPerPixel);
    setTabKeyNavigation(false);
    setWordWrap(false);
}

QColor LQTable::cellColor(int row, int column) const
{
    return owner_->getCellColor(row, column);
}

QColor LQTable::textColorOn(const QColor& background)
{
    // Relative luminance (ITU-R BT.709) of the gamma-encoded channels.
    const int luminance = 2126 * background.red() + 7152 * background.green() + 722 * background.blue();
    return luminance > 10000 * 128 ? Qt::black : Qt::white;
}

QString LQTable::cellText(int row, int column) const
{
    const QTableWidgetItem* found = item(row, column);
    return found ? found->text() : QString();
}

void LQTable::setCellText(int row, int column, const QString& text)
{
    QTableWidgetItem* found = item(row, column);
    if (!found) {
        found = new Cell;
        found->setText(text);
        setItem(row, column, found);
    } else if (found->text() != text) {
        found->setText(text);
    }
}

void LQTable::beginUpdate()
{
    signals_were_blocked_ = model()->blockSignals(true);
}

void LQTable::endUpdate()
{
    model()->blockSignals(signals_were_blocked_);
    viewport()->update();
}

void LQTable::keyPressEvent(QKeyEvent* event)
{
    if (event->matches(QKeySequence::Copy)) {
        copySelection();
        return;
    }
    event->ignore();
    owner_->keyPressed(event);
    if (!event->isAccepted())
        QTableWidget::keyPressEvent(event);
}

void LQTable::copySelection() const
{
    QString text;
    for (const QTableWidgetSelectionRange& range : selectedRanges()) {
        for (int row = range.topRow(); row <= range.bottomRow(); ++row) {
            for (int column = range.leftColumn(); column <= range.rightColumn(); ++column)
                text += cellText(row, column) + (column < range.rightColumn() ? u'\t' : u'\n');
        }
    }
    if (!text.isEmpty())
        QApplication::clipboard()->setText(text);
}

} // namespace Kelvane
