#pragma once

#include "plots/Plots.h"

#include <QDialog>
#include <QPointer>

#include <vector>

class QHBoxLayout;
class QScrollArea;

namespace Kelvane {
class LQFlowUnitPanel;
class LQFlowUnitWidget;
} // namespace Kelvane

namespace lodex {

/// One panel of the flow unit table over the K layers, layer 1 at the top: the layer means as a thin line, the flow
/// unit means as a thick one below it. Layers whose table cell is empty are gaps.
class FlowUnitPlot : public ProfilePlot {
    Q_OBJECT

public:
    /// The panel may go before the plot does.
    explicit FlowUnitPlot(Kelvane::LQFlowUnitPanel& panel, QWidget* parent = nullptr);
    /// Null once the panel has gone.
    [[nodiscard]] Kelvane::LQFlowUnitPanel* panel() const;
    /// Takes over the numbers that the table shows, for this number of K layers.
    void follow(int layers);

    /// What was averaged: a property, or a ratio of two.
    [[nodiscard]] const QString& title() const { return title_; }
    /// One number per K layer from the top; NaN where the table's cell is empty.
    [[nodiscard]] const std::vector<double>& layer_means() const { return profiles().at(LayerMeans).means; }
    /// The mean of the flow unit that each K layer is in; as layer_means().
    [[nodiscard]] const std::vector<double>& unit_means() const { return profiles().at(UnitMeans).means; }

    /// How both lines are drawn, here and in the legend.
    [[nodiscard]] static QPen layer_pen();
    [[nodiscard]] static QPen unit_pen();

protected:
    [[nodiscard]] PlotAxis x_axis() const override;
    [[nodiscard]] PlotAxis y_axis() const override;
    void paint_data(QPainter& painter) override;

private:
    enum Line { LayerMeans, UnitMeans };

    void paint_ticks(QPainter& painter) const;
    void paint_line(QPainter& painter, Line line, const QPen& pen) const;

    QPointer<QObject> panel_;
    QString title_;
};

/// Small window beside the flow unit dialog: one plot per panel of its table, side by side. Follows the table, and goes
/// when the dialog closes.
class FlowUnitProfile : public QDialog {
    Q_OBJECT

public:
    /// Shows the profile of the flow unit table in this window; one that is open already comes to the front. The window
    /// owns it. Null for a window without such a table.
    static FlowUnitProfile* show_beside(QWidget& window);

    /// One per panel, in the order of the table's columns.
    [[nodiscard]] const std::vector<FlowUnitPlot*>& plots() const { return plots_; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    FlowUnitProfile(Kelvane::LQFlowUnitWidget& area, QWidget& window);
    void place_beside(const QWidget& window);
    void refresh_later();
    void refresh();

    QPointer<Kelvane::LQFlowUnitWidget> area_;
    QScrollArea* scroll_;
    QHBoxLayout* row_;
    std::vector<FlowUnitPlot*> plots_;
    std::size_t most_ = 0; ///< plots so far
    bool refresh_pending_ = false;
};

} // namespace lodex
