#pragma once

#include "Watch.h"

#include <Lodex/geobase/GeobaseLib.h>

#include <QTreeWidget>

#include <map>
#include <memory>

namespace lodex {

class CornerPointGrid;

/// What an entry of the tree stands for.
struct TreeItem {
    enum class Kind { None, Grid, Properties, Regions, Units, Activities, Property, Region, Unit, Activity };

    Kind kind = Kind::None;
    QString grid;
    QString name;   ///< of the item; of a grid and of its groups empty
    int number = 0; ///< of a unit or activity, from 0: their names need not differ

    friend bool operator==(const TreeItem&, const TreeItem&) = default;
};

/// The catalogue's grids in order of creation, below each its properties, regions, units and activities. Follows the
/// catalogue and the grids by itself. A grid that comes is selected.
class ObjectTree final : public QTreeWidget, private Lodex::CatalogueObserver {
    Q_OBJECT

public:
    enum Column { NameColumn, DetailColumn };

    explicit ObjectTree(QWidget* parent = nullptr);
    ~ObjectTree() override;

    /// The grid that the selected item is or belongs to; null when nothing is selected.
    [[nodiscard]] CornerPointGrid* selected() const;
    [[nodiscard]] TreeItem item() const;
    /// Nothing happens when there is no such item.
    void select(const QString& grid);
    void select(const TreeItem& item);
    [[nodiscard]] std::vector<CornerPointGrid*> grids() const;

signals:
    /// Another grid is selected, or none (null).
    void grid_selected(lodex::CornerPointGrid* grid);
    /// Another item is selected, or what the selected one stands for changed.
    void item_selected();

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void object_added(Lodex::GObj* object) override;
    void object_removed(Lodex::GObj* object) override;
    void object_renamed(Lodex::GObj* object, const Lodex::CString& former) override;
    void add(CornerPointGrid* grid);
    void fill(QTreeWidgetItem* of_grid, const CornerPointGrid& grid);
    void refill(const CornerPointGrid& grid);
    [[nodiscard]] QTreeWidgetItem* item_of(const QString& grid) const;
    [[nodiscard]] QTreeWidgetItem* find(const TreeItem& item) const;

    std::map<const CornerPointGrid*, std::unique_ptr<GridWatch>> watches_;
    CornerPointGrid* told_ = nullptr; // what grid_selected() said last
    void tell();
};

} // namespace lodex

Q_DECLARE_METATYPE(lodex::TreeItem)
