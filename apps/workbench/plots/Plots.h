#pragma once

#include "PlotData.h"
#include "PlotWidget.h"

namespace lodex {

/// Bars, and the cumulative curve on the same width with its own axis to the right.
class HistogramPlot : public PlotWidget {
    Q_OBJECT

public:
    using PlotWidget::PlotWidget;
    void show_histogram(Histogram data, const QString& title, const QString& height_title);
    [[nodiscard]] const Histogram& data() const { return data_; }

protected:
    [[nodiscard]] bool has_data() const override { return data_.values > 0; }
    [[nodiscard]] PlotAxis x_axis() const override;
    [[nodiscard]] PlotAxis y_axis() const override;
    void paint_data(QPainter& painter) override;
    [[nodiscard]] qreal right_margin() const override;

private:
    Histogram data_;
    QString title_, height_title_;
    double highest_ = 1;
};

/// Means per K layer from top to bottom, one line a property. Lines of different properties are drawn each on its own
/// range when asked for.
class ProfilePlot : public PlotWidget {
    Q_OBJECT

public:
    using PlotWidget::PlotWidget;
    /// own_ranges: every line fills the width, so that shapes can be compared; the axis then has no numbers.
    void show_profiles(std::vector<Profile> profiles, bool own_ranges);
    [[nodiscard]] const std::vector<Profile>& profiles() const { return profiles_; }

protected:
    [[nodiscard]] bool has_data() const override;
    [[nodiscard]] PlotAxis x_axis() const override;
    [[nodiscard]] PlotAxis y_axis() const override;
    void paint_data(QPainter& painter) override;

private:
    std::vector<Profile> profiles_;
    bool own_ranges_ = false;
};

/// One property against another, a dot a cell.
class CrossPlot : public PlotWidget {
    Q_OBJECT

public:
    using PlotWidget::PlotWidget;
    void show_pairs(CrossPairs pairs, const QString& x_title, const QString& y_title, bool log_x, bool log_y);
    [[nodiscard]] const CrossPairs& pairs() const { return pairs_; }
    /// Draws the line where both values are the same.
    void set_diagonal(bool on) { diagonal_ = on; }

protected:
    [[nodiscard]] bool has_data() const override { return !pairs_.x.empty(); }
    [[nodiscard]] PlotAxis x_axis() const override;
    [[nodiscard]] PlotAxis y_axis() const override;
    void paint_data(QPainter& painter) override;

private:
    CrossPairs pairs_;
    QString x_title_, y_title_;
    bool log_x_ = false, log_y_ = false, diagonal_ = false;
};

} // namespace lodex
