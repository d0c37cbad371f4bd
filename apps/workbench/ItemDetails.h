#pragma once

#include "ObjectTree.h"

#include <QTreeWidget>

class QTimer;

namespace lodex {

/// What there is to know of the selected item of the tree, in two columns. Numbers that take a moment come from the
/// event loop, so that no command waits for them.
class ItemDetails final : public QTreeWidget {
    Q_OBJECT

public:
    explicit ItemDetails(QWidget* parent = nullptr);

    void show_item(const TreeItem& item);

private:
    void refresh();
    void add(const QString& what, const QString& value);
    void show_grid(const CornerPointGrid& grid);
    void show_property(const CornerPointGrid& grid, const QString& name);
    void show_region(const CornerPointGrid& grid, const QString& name);
    void show_unit(const CornerPointGrid& grid, int number);
    void show_activity(const CornerPointGrid& grid, int number);

    TreeItem item_;
    QTimer* soon_;
};

} // namespace lodex
