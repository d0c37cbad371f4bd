#include "ObjectTree.h"

#include "NumberTexts.h"
#include "lodex/volumes/ActivityModel.h"
#include "lodex/volumes/CornerPointGrid.h"

#include <Lodex/qtools/QtText.h>

#include <QHeaderView>
#include <QPainter>
#include <QSignalBlocker>

#include <set>

namespace lodex {

namespace {

using Kind = TreeItem::Kind;

constexpr int item_role = Qt::UserRole;

TreeItem item_of_entry(const QTreeWidgetItem* entry)
{
    return entry ? entry->data(ObjectTree::NameColumn, item_role).value<TreeItem>() : TreeItem{};
}

} // namespace

ObjectTree::ObjectTree(QWidget* parent) : QTreeWidget(parent)
{
    setObjectName("objectTree");
    setAccessibleName(tr("Objects"));
    setToolTip(tr("The grids of the project and what belongs to them; the right mouse button offers what can be done"));
    setHeaderLabels({tr("Name"), tr("Details")});
    setUniformRowHeights(true);
    setAllColumnsShowFocus(true);
    setContextMenuPolicy(Qt::CustomContextMenu);
    setTextElideMode(Qt::ElideMiddle);
    header()->setStretchLastSection(true);
    header()->setSectionResizeMode(NameColumn, QHeaderView::Interactive);
    header()->resizeSection(NameColumn, 190);
    connect(this, &QTreeWidget::currentItemChanged, this, &ObjectTree::tell);

    for (Lodex::GObj* object : Lodex::GeobaseLib::instance()->objects(Lodex::SGrid::static_type_id_()))
        add(&as_grid(object));
    Lodex::GeobaseLib::instance()->attach(this);
}

ObjectTree::~ObjectTree()
{
    Lodex::GeobaseLib::instance()->detach(this);
}

void ObjectTree::paintEvent(QPaintEvent* event)
{
    QTreeWidget::paintEvent(event);
    if (topLevelItemCount() > 0)
        return;
    QPainter painter(viewport());
    painter.setPen(palette().color(QPalette::PlaceholderText));
    painter.drawText(viewport()->rect().adjusted(12, 12, -12, -12), Qt::AlignCenter | Qt::TextWordWrap,
                     tr("There is no grid yet.\nDrop a model file here, or choose File, Import."));
}

void ObjectTree::tell()
{
    CornerPointGrid* const grid = selected();
    if (grid != told_) {
        told_ = grid;
        emit grid_selected(grid);
    }
    emit item_selected();
}

CornerPointGrid* ObjectTree::selected() const
{
    const TreeItem item = this->item();
    return item.kind == Kind::None ? nullptr : find_grid(item.grid.toStdString());
}

TreeItem ObjectTree::item() const
{
    return item_of_entry(currentItem());
}

void ObjectTree::select(const QString& grid)
{
    select(TreeItem{.kind = Kind::Grid, .grid = grid});
}

void ObjectTree::select(const TreeItem& item)
{
    QTreeWidgetItem* const entry = find(item);
    if (!entry)
        return;
    for (QTreeWidgetItem* parent = entry->parent(); parent; parent = parent->parent())
        parent->setExpanded(true);
    setCurrentItem(entry);
}

std::vector<CornerPointGrid*> ObjectTree::grids() const
{
    std::vector<CornerPointGrid*> result;
    for (int row = 0; row < topLevelItemCount(); ++row) {
        if (CornerPointGrid* grid = find_grid(item_of_entry(topLevelItem(row)).grid.toStdString()))
            result.push_back(grid);
    }
    return result;
}

QTreeWidgetItem* ObjectTree::item_of(const QString& grid) const
{
    for (int row = 0; row < topLevelItemCount(); ++row) {
        if (item_of_entry(topLevelItem(row)).grid == grid)
            return topLevelItem(row);
    }
    return nullptr;
}

QTreeWidgetItem* ObjectTree::find(const TreeItem& item) const
{
    QTreeWidgetItem* const of_grid = item_of(item.grid);
    if (!of_grid || item.kind == Kind::None)
        return nullptr;
    if (item_of_entry(of_grid) == item)
        return of_grid;
    for (int group = 0; group < of_grid->childCount(); ++group) {
        QTreeWidgetItem* const one = of_grid->child(group);
        if (item_of_entry(one) == item)
            return one;
        for (int row = 0; row < one->childCount(); ++row) {
            if (item_of_entry(one->child(row)) == item)
                return one->child(row);
        }
    }
    return nullptr;
}

void ObjectTree::add(CornerPointGrid* grid)
{
    auto* entry = new QTreeWidgetItem;
    addTopLevelItem(entry);
    fill(entry, *grid);
    entry->setExpanded(true);
    auto watch = std::make_unique<GridWatch>();
    watch->changed = [this, grid] { refill(*grid); };
    watch->observe(grid);
    watches_[grid] = std::move(watch);
    setCurrentItem(entry);
}

void ObjectTree::fill(QTreeWidgetItem* of_grid, const CornerPointGrid& grid)
{
    const GridModel& model = grid.header();
    const QString name = Lodex::to_qstring(grid.name());
    const auto set = [](QTreeWidgetItem* entry, const QString& text, const QString& detail, const TreeItem& item) {
        entry->setText(NameColumn, text);
        entry->setToolTip(NameColumn, text);
        entry->setText(DetailColumn, detail);
        entry->setToolTip(DetailColumn, detail);
        entry->setData(NameColumn, item_role, QVariant::fromValue(item));
        return entry;
    };
    set(of_grid, name, tr("%1 × %2 × %3").arg(model.size[0]).arg(model.size[1]).arg(model.size[2]), {Kind::Grid, name});
    QFont bold = font();
    bold.setBold(true);
    of_grid->setFont(NameColumn, bold);
    const auto add_group = [&](const QString& text, std::size_t count, Kind kind) {
        return count == 0 ? nullptr : set(new QTreeWidgetItem(of_grid), text, QString::number(count), {kind, name});
    };

    if (QTreeWidgetItem* group = add_group(tr("Properties"), model.properties.size(), Kind::Properties)) {
        for (const PropertyData& property : model.properties) {
            QString detail = property.discrete() ? tr("discrete") : tr("continuous");
            if (property.on_points)
                detail = tr("on nodes");
            if (!property.unit.empty())
                detail += QStringLiteral(", ") + QString::fromStdString(property.unit);
            const QString text = QString::fromStdString(property.name);
            set(new QTreeWidgetItem(group), text, detail, {Kind::Property, name, text});
        }
    }
    if (QTreeWidgetItem* group = add_group(tr("Regions"), model.regions.size(), Kind::Regions)) {
        for (const RegionData& region : model.regions) {
            const QString text = QString::fromStdString(region.name);
            set(new QTreeWidgetItem(group), text, region.model ? tr("of the model") : QString(),
                {Kind::Region, name, text});
        }
    }
    if (QTreeWidgetItem* group = add_group(tr("Units"), model.layers.size(), Kind::Units)) {
        std::int64_t top = 1;
        int number = 0;
        for (const LayerData& layer : model.layers) {
            const QString text = QString::fromStdString(layer.unit);
            set(new QTreeWidgetItem(group), text, tr("K %1 to %2").arg(top).arg(top + layer.nb_k_cells - 1),
                {Kind::Unit, name, text, number++});
            top += layer.nb_k_cells;
        }
    }
    const auto activities = grid.activities().activities();
    if (QTreeWidgetItem* group = add_group(tr("Activities"), activities.size(), Kind::Activities)) {
        int number = 0;
        for (const Lodex::SGridActivity* activity : activities) {
            QString detail;
            switch (activity->kind()) {
            case Lodex::SGridActivity::Kind::Upgridding: detail = tr("coarsened"); break;
            case Lodex::SGridActivity::Kind::Downgridding: detail = tr("refined"); break;
            case Lodex::SGridActivity::Kind::Coarsening: detail = tr("coarsening to apply"); break;
            }
            const QString text = Lodex::to_qstring(activity->name());
            set(new QTreeWidgetItem(group), text, detail, {Kind::Activity, name, text, number++});
        }
    }
}

void ObjectTree::refill(const CornerPointGrid& grid)
{
    QTreeWidgetItem* const entry = item_of(Lodex::to_qstring(grid.name()));
    if (!entry)
        return;
    const TreeItem before = item();
    const bool inside = before.grid == Lodex::to_qstring(grid.name());
    {
        const QSignalBlocker quiet(this);
        std::set<Kind> open;
        for (int group = 0; group < entry->childCount(); ++group) {
            if (entry->child(group)->isExpanded())
                open.insert(item_of_entry(entry->child(group)).kind);
        }
        if (inside)
            setCurrentItem(entry);
        qDeleteAll(entry->takeChildren());
        fill(entry, grid);
        for (int group = 0; group < entry->childCount(); ++group)
            entry->child(group)->setExpanded(open.contains(item_of_entry(entry->child(group)).kind));
        if (inside)
            select(before);
    }
    if (inside)
        emit item_selected();
}

void ObjectTree::object_added(Lodex::GObj* object)
{
    if (object->type_id().is_a(Lodex::SGrid::static_type_id_()))
        add(&as_grid(object));
}

void ObjectTree::object_removed(Lodex::GObj* object)
{
    if (!object->type_id().is_a(Lodex::SGrid::static_type_id_()))
        return;
    watches_.erase(&as_grid(object));
    delete item_of(Lodex::to_qstring(object->name()));
}

void ObjectTree::object_renamed(Lodex::GObj* object, const Lodex::CString& former)
{
    if (!object->type_id().is_a(Lodex::SGrid::static_type_id_()))
        return;
    QTreeWidgetItem* const entry = item_of(Lodex::to_qstring(former));
    if (!entry)
        return;
    const TreeItem before = item();
    const bool inside = before.grid == Lodex::to_qstring(former);
    entry->setData(NameColumn, item_role, QVariant::fromValue(TreeItem{Kind::Grid, Lodex::to_qstring(object->name())}));
    refill(as_grid(object));
    if (!inside)
        return;
    select(TreeItem{before.kind, Lodex::to_qstring(object->name()), before.name, before.number});
    emit grid_selected(selected()); // its name is shown elsewhere
    emit item_selected();
}

} // namespace lodex
