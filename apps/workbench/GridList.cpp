#include "GridList.h"

#include "CellColours.h"
#include "lodex/utils/Numbers.h"
#include "lodex/volumes/CornerPointGrid.h"
#include "lodex/volumes/model/CellGeometry.h"

#include <Lodex/qtools/QtText.h>

#include <QHeaderView>
#include <QMetaObject>

#include <algorithm>

namespace lodex {

namespace {

constexpr double largest_grouped = 1e12; // larger volumes are written with an exponent

QString volume_text(double volume, const QString& unit)
{
    const QString number = volume < largest_grouped ? grouped(static_cast<std::int64_t>(std::llround(volume)))
                                                    : QString::fromStdString(format_general(volume, 6));
    return unit.isEmpty() ? number : number + QChar(0xa0) + unit + QChar(0xb3);
}

} // namespace

GridList::GridList(QWidget* parent) : QTreeWidget(parent)
{
    setObjectName("gridList");
    setAccessibleName(tr("Grids"));
    setToolTip(tr("The grids of the project; the right mouse button offers what can be done with one"));
    setHeaderLabels({tr("Grid"), tr("I × J × K"), tr("Cells"), tr("Active"), tr("Bulk volume")});
    setRootIsDecorated(false);
    setUniformRowHeights(true);
    setAllColumnsShowFocus(true);
    setContextMenuPolicy(Qt::ActionsContextMenu);
    header()->setStretchLastSection(false);
    header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    header()->setSectionResizeMode(NameColumn, QHeaderView::Stretch);
    for (const int column : {SizeColumn, CellsColumn, ActiveColumn, VolumeColumn})
        headerItem()->setTextAlignment(column, Qt::AlignRight | Qt::AlignVCenter);
    connect(this, &QTreeWidget::currentItemChanged, this, [this] { emit grid_selected(selected()); });

    for (Lodex::GObj* object : Lodex::GeobaseLib::instance()->objects(Lodex::SGrid::static_type_id_()))
        add(&as_grid(object));
    Lodex::GeobaseLib::instance()->attach(this);
}

GridList::~GridList()
{
    Lodex::GeobaseLib::instance()->detach(this);
}

CornerPointGrid* GridList::selected() const
{
    const QTreeWidgetItem* item = currentItem();
    return item ? find_grid(item->text(NameColumn).toStdString()) : nullptr;
}

void GridList::select(const QString& name)
{
    if (QTreeWidgetItem* item = item_of(name))
        setCurrentItem(item);
}

QTreeWidgetItem* GridList::item_of(const QString& name) const
{
    for (int row = 0; row < topLevelItemCount(); ++row) {
        if (topLevelItem(row)->text(NameColumn) == name)
            return topLevelItem(row);
    }
    return nullptr;
}

void GridList::add(CornerPointGrid* grid)
{
    const GridModel& model = grid->model();
    auto* item = new QTreeWidgetItem;
    item->setText(NameColumn, Lodex::to_qstring(grid->name()));
    item->setText(SizeColumn, tr("%1 × %2 × %3").arg(model.size[0]).arg(model.size[1]).arg(model.size[2]));
    item->setText(CellsColumn, grouped(model.cells()));
    item->setText(ActiveColumn, grouped(std::ranges::count(model.active, 1)));
    for (const int column : {SizeColumn, CellsColumn, ActiveColumn, VolumeColumn})
        item->setTextAlignment(column, Qt::AlignRight | Qt::AlignVCenter);
    addTopLevelItem(item);
    setCurrentItem(item);
    // The volume of a large grid takes a moment; the command that makes the grid shall not wait for it.
    QMetaObject::invokeMethod(this, &GridList::show_volumes, Qt::QueuedConnection);
}

void GridList::show_volumes()
{
    for (int row = 0; row < topLevelItemCount(); ++row) {
        QTreeWidgetItem* item = topLevelItem(row);
        if (!item->text(VolumeColumn).isEmpty())
            continue;
        if (const CornerPointGrid* grid = find_grid(item->text(NameColumn).toStdString()))
            item->setText(VolumeColumn, volume_text(bulk_volume(grid->model()), length_unit_text(*grid)));
    }
}

void GridList::object_added(Lodex::GObj* object)
{
    if (object->type_id().is_a(Lodex::SGrid::static_type_id_()))
        add(&as_grid(object));
}

void GridList::object_removed(Lodex::GObj* object)
{
    if (object->type_id().is_a(Lodex::SGrid::static_type_id_()))
        delete item_of(Lodex::to_qstring(object->name()));
}

void GridList::object_renamed(Lodex::GObj* object, const Lodex::CString& former)
{
    if (!object->type_id().is_a(Lodex::SGrid::static_type_id_()))
        return;
    if (QTreeWidgetItem* item = item_of(Lodex::to_qstring(former))) {
        item->setText(NameColumn, Lodex::to_qstring(object->name()));
        if (item == currentItem())
            emit grid_selected(selected()); // its name is shown elsewhere
    }
}

} // namespace lodex
