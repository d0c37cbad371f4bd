#pragma once

#include "DataTable.h"

#include "lodex/volumes/PropertyComparison.h"

#include <Lodex/geobase/GeobaseLib.h>

#include <QDialog>

class QComboBox;
class QLabel;
class QPushButton;
class QTableWidget;

namespace lodex {

class CrossPlot;

/// A property of a fine grid beside one of a coarse grid: totals, statistics side by side, coarse values against the
/// means of their fine cells, and the difference as a property of the coarse grid.
class ComparisonWindow : public QDialog, private Lodex::CatalogueObserver {
    Q_OBJECT

public:
    explicit ComparisonWindow(QWidget* parent = nullptr);
    ~ComparisonWindow() override;

    /// Chooses grids and properties; an empty or unknown name leaves the choice as it is.
    void choose(const QString& fine, const QString& fine_property, const QString& coarse,
                const QString& coarse_property, const QString& mapper = {});
    [[nodiscard]] DataTable table() const;

public slots:
    /// Works everything out for the current choice.
    void compare();

signals:
    /// The user wants the difference on the coarse grid: a statement to run, and the property that it makes there.
    void difference_requested(const QString& statement, const QString& grid, const QString& property);

private:
    void object_added(Lodex::GObj*) override { refill_later(); }
    void object_removed(Lodex::GObj*) override { refill_later(); }
    void object_renamed(Lodex::GObj*, const Lodex::CString&) override { refill_later(); }
    void refill_later();
    void refill();
    void refill_properties();
    void forget_result();
    void show_difference();
    [[nodiscard]] CornerPointGrid* grid(const QComboBox* list) const;

    QComboBox *fine_, *fine_property_, *coarse_, *coarse_property_, *mapper_;
    QPushButton *compare_, *difference_;
    QLabel* verdict_;
    QTableWidget* table_;
    CrossPlot* plot_;
};

} // namespace lodex
