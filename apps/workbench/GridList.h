#pragma once

#include <Lodex/geobase/GeobaseLib.h>

#include <QTreeWidget>

namespace lodex {

class CornerPointGrid;

/// The catalogue's grids, one a row, in order of creation. A grid that comes is selected.
class GridList final : public QTreeWidget, private Lodex::CatalogueObserver {
    Q_OBJECT

public:
    enum Column { NameColumn, SizeColumn, CellsColumn, ActiveColumn, VolumeColumn };

    explicit GridList(QWidget* parent = nullptr);
    ~GridList() override;

    /// Null when no grid is selected.
    [[nodiscard]] CornerPointGrid* selected() const;
    /// Nothing happens when there is no grid of that name.
    void select(const QString& name);

signals:
    /// Another grid is selected, or none (null).
    void grid_selected(lodex::CornerPointGrid* grid);

private:
    void object_added(Lodex::GObj* object) override;
    void object_removed(Lodex::GObj* object) override;
    void object_renamed(Lodex::GObj* object, const Lodex::CString& former) override;
    void add(CornerPointGrid* grid);
    void show_volumes();
    [[nodiscard]] QTreeWidgetItem* item_of(const QString& name) const;
};

} // namespace lodex
