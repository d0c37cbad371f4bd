#pragma once

#include "DataTable.h"
#include "PlotData.h"

#include "apps/workbench/Watch.h"

#include <QDialog>

class QCheckBox;
class QComboBox;
class QListWidget;
class QSpinBox;
class QTabWidget;
class QTableWidget;

namespace lodex {

class CrossPlot;
class HistogramPlot;
class ProfilePlot;

/// Numbers of one grid: histogram with cumulative curve, K profile of several properties, cross plot, and the
/// statistics of the chosen property, over the active cells or those of a region. Follows the grid; closes when the
/// grid goes.
class NumbersWindow : public QDialog {
    Q_OBJECT

public:
    explicit NumbersWindow(CornerPointGrid& grid, const QString& property = {}, QWidget* parent = nullptr);

    /// Looks at the cells of a region only; an unknown one changes nothing.
    void choose_region(const QString& region);
    /// The table behind what the current page shows.
    [[nodiscard]] DataTable table() const;

private:
    void build_controls();
    void build_pages();
    void build_buttons();
    void refill();
    void refresh();
    void follow_property();
    void show_statistics(const PlotCells& cells, const PropertyData& property);
    [[nodiscard]] PlotCells cells() const;
    [[nodiscard]] const PropertyData* property(const QComboBox* list) const;

    GridWatch watch_;
    CornerPointGrid* grid_;
    QComboBox* property_;
    QComboBox* region_;
    QCheckBox* by_volume_;
    QTabWidget* pages_;
    QSpinBox* bins_;
    QCheckBox* log_bins_;
    HistogramPlot* histogram_;
    QListWidget* profile_list_;
    QCheckBox* own_ranges_;
    ProfilePlot* profile_;
    QComboBox* other_;
    QCheckBox* log_x_;
    QCheckBox* log_y_;
    CrossPlot* cross_;
    QTableWidget* statistics_;
};

} // namespace lodex
